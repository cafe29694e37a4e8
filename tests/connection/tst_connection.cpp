// The Connection Manager client against a scripted local-socket server, the
// profile record's wire layout, and the profile dialog's remembered settings.
#include "fakeconnectionmanager.h"
#include "modalanswerer.h"
#include "orvexlogindata.h"
#include "orvexlogindialog.h"
#include "orvexprofiledata.h"

#include <QComboBox>
#include <QDataStream>
#include <QDialog>
#include <QSettings>
#include <QtTest>

#include <optional>

namespace {

const QString kPleaseStart = QStringLiteral(
    "The profile information could not be loaded. Please start the Connection Manager!");
const QString kNotConnected = QStringLiteral(
    "You are not connected to any profile. Please connect using the Connection Manager Orvex!");

// A block with a length in front, by default its own.
QByteArray withLength(const QByteArray &block, std::optional<qint64> length = {})
{
    return stream10([&](QDataStream &out) { out << length.value_or(block.size()); }) + block;
}

QByteArray profileReply(const QList<orvexProfileData> &profiles)
{
    return withLength(stream10([&](QDataStream &out) {
        out << QStringLiteral("CM");
        for (const orvexProfileData &p : profiles)
            out << p;
    }));
}

QByteArray useProfileRequest(qint64 id, bool trailingHash)
{
    return QStringLiteral("USEPROFILE#%1#%2#%3%4\r\n")
        .arg(QString::number(QCoreApplication::applicationPid()), QString::number(id),
             QCoreApplication::applicationFilePath(), trailingHash ? QStringLiteral("#") : QString())
        .toUtf8();
}

const QList<orvexProfileData> kProfiles = {{3, "Test"}, {5, "Produktion", "", "", "", "", false, {"main"}}};

orvexProfileData fullProfile()
{
    return {Q_INT64_C(0x123456789A), "Produktion", QStringLiteral("Hauptarchiv München"), "archiv.example",
            "main", "jdoe", true, {"main", QString()}, 4711, QKeySequence("Ctrl+K, Ctrl+P"), "EXAMPLE",
            "de", "#336699", "/srv/orvex", {"tavloUSER"}, {"ssl=1"}};
}

orvexProfileData read(const QByteArray &bytes, QDataStream::Status &status)
{
    QDataStream in(bytes);
    in.setVersion(10);
    orvexProfileData profile;
    in >> profile;
    status = in.atEnd() ? in.status() : QDataStream::ReadCorruptData;
    return profile;
}

} // namespace

class tst_Connection : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        m_settings.reset(new QSettings(QStringLiteral("vantrel gmbh"), QStringLiteral("orvexlogin")));
        QVERIFY(m_settings->fileName().contains(QStringLiteral(".qttest")));
        QCOMPARE(orvexLoginData::serverNameForUser(1000) + orvexLoginData::serverNameForUser(0xABCDEF),
                 QStringLiteral("Orvex-3e8Orvex-abcdef"));
    }

    void init()
    {
        m_settings->clear();
        m_settings->sync();
        orvexLoginData::setServerNameOverride(FakeConnectionManager::uniqueName()); // nobody there
    }

    void requests_data()
    {
        QTest::addColumn<QString>("call");      // "port", "profile <id>", "reload" or "chat"
        QTest::addColumn<QByteArray>("reply");  // "none": no Connection Manager
        QTest::addColumn<bool>("hangUp");       // after replying
        QTest::addColumn<QVariant>("result");   // the port, or whether the profile came
        QTest::addColumn<QString>("error");
        QTest::addColumn<QByteArray>("sent");   // checked when not empty
        QTest::addColumn<int>("minMs");         // rounds waited for what never comes
        const QChar sep(0xFEFF);
        const QByteArray good = profileReply(kProfiles);
        const QString none, gone = kPleaseStart;
        const QByteArray any;
        QTest::newRow("port, no line end") << "port" << QByteArray("8080\n") << false << QVariant(8080) << none << QByteArray("GETDNDPORT") << 0;
        QTest::newRow("port, up to the first NUL") << "port" << QByteArray("8081\0garbage\n", 13) << true << QVariant(8081) << none << any << 0;
        QTest::newRow("port, letters") << "port" << QByteArray("abc\n") << true << QVariant(0) << none << any << 0;
        QTest::newRow("port, endless digits") << "port" << QByteArray(1 << 20, '7') << true << QVariant(0) << none << any << 0;
        QTest::newRow("port, hangs up without a word") << "port" << QByteArray() << true << QVariant(0) << none << any << 0;
        QTest::newRow("port, no server: no connect wait") << "port" << QByteArray("none") << false << QVariant(0) << none << any << 0;
        QTest::newRow("reload, 64-bit id") << "reload" << QByteArray("OK\n") << false << QVariant() << none
                                           << QByteArray("RELOADPROFILE#9000000000\r\n") << 0;
        QTest::newRow("chat, b before a") << "chat" << QByteArray("OK\n") << false << QVariant() << none
            << (QStringLiteral("OPENCHAT") + sep + "7" + sep + "zweiter" + sep + QStringLiteral("Grüße")).toUtf8() << 0;
        QTest::newRow("profile by id, then use with #") << "profile 5" << good << false << QVariant(true) << none
            << QByteArray("GETPROFILES\r\n") + useProfileRequest(5, true) << 0;
        QTest::newRow("unknown profile is not used") << "profile 4" << good << false << QVariant(false)
            << "The profile 4 is not known to the Connection Manager." << QByteArray("GETPROFILES\r\n") << 0;
        QTest::newRow("block never complete: 501 rounds") << "profile 3" << good.left(40) << false << QVariant(false) << gone << any << 2400;
        QTest::newRow("length cut short") << "profile 3" << good.left(5) << true << QVariant(false) << gone << any << 0;
        QTest::newRow("negative length") << "profile 3" << withLength(good.mid(8), -16) << true << QVariant(false) << gone << any << 0;
        QTest::newRow("header claims 2 GB") << "profile 3" << withLength(stream10([](QDataStream &out) { out << quint32(0x7FFFFFFE); }))
                                            << true << QVariant(false) << gone << any << 0;
        QTest::newRow("text instead of a stream") << "profile 3" << QByteArray("ERROR: no profiles\n") << true << QVariant(false) << gone << any << 0;
    }

    void requests()
    {
        QFETCH(QString, call);
        QFETCH(QByteArray, reply);
        QFETCH(bool, hangUp);
        QFETCH(QVariant, result);
        QFETCH(QString, error);
        QFETCH(QByteArray, sent);
        QFETCH(int, minMs);
        QScopedPointer<FakeConnectionManager> manager;
        if (reply != "none") {
            manager.reset(new FakeConnectionManager);
            manager->setReply(reply);
            manager->setCloseAfterReply(hangUp);
        }
        orvexLoginData login;
        login.setWaitInterval(5);
        orvexProfileData profile;
        QString seen;
        QElapsedTimer clock;
        clock.start();
        if (call == "port")
            QCOMPARE(QVariant(login.getDNDPort()), result);
        else if (call == "reload")
            login.reloadProfile(9000000000LL);
        else if (call == "chat")
            login.openChat(7, QStringLiteral("Grüße"), QStringLiteral("zweiter"));
        else
            QCOMPARE(QVariant(login.getProfileById(profile, seen, call.mid(8).toLongLong())), result);
        const qint64 elapsed = clock.elapsed();
        QVERIFY2(elapsed >= minMs && elapsed < 30000, qPrintable(QString::number(elapsed)));
        QCOMPARE(seen, error);
        QCOMPARE(profile, result == QVariant(true) ? kProfiles.at(1) : orvexProfileData());
        if (!sent.isEmpty()) {
            QTest::qWait(50); // time for anything sent after the request
            QTRY_COMPARE(manager->received(0), sent);
            QCOMPARE(manager->connectionCount(), 1);
        }
    }

    void profileDialog_data()
    {
        QTest::addColumn<QByteArray>("reply"); // "none": no Connection Manager
        QTest::addColumn<bool>("asked");
        QTest::addColumn<bool>("choose");
        QTest::addColumn<QString>("error");
        QTest::newRow("chosen") << profileReply(kProfiles) << true << true << QString();
        QTest::newRow("user cancels") << profileReply(kProfiles) << true << false << kNotConnected;
        QTest::newRow("no Connection Manager") << QByteArray("none") << false << false
            << "The profile information could not be loaded. Trying to start the Connection Manager...";
    }

    void profileDialog()
    {
        QFETCH(QByteArray, reply);
        QFETCH(bool, asked);
        QFETCH(bool, choose);
        QFETCH(QString, error);
        QScopedPointer<FakeConnectionManager> manager;
        if (reply != "none") {
            manager.reset(new FakeConnectionManager);
            manager->setReply(reply);
        }
        ModalAnswerer answer([choose](QWidget *modal) {
            modal->findChild<QComboBox *>(QStringLiteral("m_cbProfiles"))->setCurrentIndex(1);
            choose ? qobject_cast<QDialog *>(modal)->accept() : qobject_cast<QDialog *>(modal)->reject();
        });
        orvexLoginData login;
        login.setAutoStart(false);
        orvexProfileData profile;
        QString seen;
        QCOMPARE(login.getProfile(profile, seen, nullptr, false), choose);
        QCOMPARE(seen, error);
        QCOMPARE(answer.answered(), asked);
        QCOMPARE(login.getIsUserCanceled(), asked && !choose);
        QCOMPARE(profile, choose ? kProfiles[1] : orvexProfileData());
        if (choose) // the list on one connection, the use request (second form) on its own
            QTRY_COMPARE(manager->received(1), useProfileRequest(5, false));
        else if (manager)
            QCOMPARE(manager->connectionCount(), 1);
    }

    void profileStream()
    {
        for (const orvexProfileData &p : {orvexProfileData(), fullProfile()}) {
            // The documented order, written item by item.
            const QByteArray expected = stream10([&](QDataStream &out) {
                out << qint64(p.id) << p.name << p.description << p.serverHost << p.archiveName
                    << p.userName << p.active << p.archives << qint64(p.serverPort) << p.shortcut
                    << p.domain << p.language << p.color << p.dataPath << p.roles << p.options;
            });
            QCOMPARE(stream10([&](QDataStream &out) { out << p; }), expected);
            QDataStream::Status status;
            QCOMPARE(read(expected, status), p);
            QCOMPARE(status, QDataStream::Ok);
        }
        // Every cut leaves the stream failed.
        const QByteArray bytes = stream10([](QDataStream &out) { out << fullProfile(); });
        QDataStream::Status status;
        for (int length = 0; length < bytes.size(); ++length) {
            read(bytes.left(length), status);
            QVERIFY2(status != QDataStream::Ok, qPrintable(QString::number(length)));
        }
        // Counts far beyond the bytes left must not be allocated up front.
        const QByteArray head = stream10([](QDataStream &out) {
            out << qint64(1) << QString() << QString() << QString() << QString() << QString() << false;
        });
        for (const QByteArray &tail : {stream10([](QDataStream &out) { out << quint32(0x7FFFFFFF); }),
                                       stream10([](QDataStream &out) {
                                           out << QStringList() << qint64(0) << quint32(0x7FFFFFFF);
                                       })}) {
            read(head + tail + QByteArray(8, '\0'), status);
            QVERIFY(status != QDataStream::Ok);
        }
    }

    void dialogSettings_data()
    {
        QTest::addColumn<QString>("remembered"); // the last profile
        QTest::addColumn<int>("index");          // preselected
        QTest::addColumn<bool>("remember");      // geometry
        QTest::addColumn<bool>("accept");
        QTest::newRow("nothing remembered, accept") << QString() << 0 << true << true;
        QTest::newRow("listed, accept, geometry not remembered") << "Produktion" << 1 << false << true;
        QTest::newRow("no longer listed, cancel") << "Alt" << 0 << true << false;
    }

    void dialogSettings()
    {
        QFETCH(QString, remembered);
        QFETCH(int, index);
        QFETCH(bool, remember);
        QFETCH(bool, accept);
        const QRect earlier(40, 50, 480, 260);
        {
            orvexLoginDialog dialog(nullptr, true);
            dialog.setGeometry(earlier);
            m_settings->setValue(QStringLiteral("geometry"), dialog.saveGeometry());
        }
        const QByteArray stored = m_settings->value(QStringLiteral("geometry")).toByteArray();
        if (!remembered.isNull())
            m_settings->setValue(QStringLiteral("lastProfile"), remembered);
        m_settings->sync();

        orvexLoginDialog dialog(nullptr, remember);
        dialog.setProfiles({QStringLiteral("Test"), QStringLiteral("Produktion"), QStringLiteral("Produktion alt")});
        QCOMPARE(dialog.getProfileIndex(), index);
        dialog.findChild<QComboBox *>()->setCurrentIndex(2);
        QSize seen;
        ModalAnswerer answer([&seen, accept](QWidget *modal) {
            seen = modal->size();
            modal->resize(300, 120);
            accept ? qobject_cast<QDialog *>(modal)->accept() : qobject_cast<QDialog *>(modal)->reject();
        });
        QCOMPARE(dialog.exec(), accept ? int(QDialog::Accepted) : int(QDialog::Rejected));
        QCOMPARE(seen == earlier.size(), remember); // exec restores only when remembering

        m_settings->sync();
        QCOMPARE(m_settings->value(QStringLiteral("lastProfile")).toString(), accept ? QStringLiteral("Produktion alt") : remembered);
        QCOMPARE(m_settings->value(QStringLiteral("geometry")).toByteArray() == stored, !remember);
    }


private:
    QScopedPointer<QSettings> m_settings;
};

QTEST_MAIN(tst_Connection)
#include "tst_connection.moc"
