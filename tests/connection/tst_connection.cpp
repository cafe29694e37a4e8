// The Connection Manager client against a scripted local-socket server, the
// profile record's wire layout, and the profile dialog's remembered settings.
#include "fakeconnectionmanager.h"
#include "modalanswerer.h"
#include "orvexlogindata.h"
#include "orvexlogindialog.h"
#include "orvexprofiledata.h"
#include "orvextranslations.h"

#include <QComboBox>
#include <QDataStream>
#include <QDialog>
#include <QLabel>
#include <QSettings>
#include <QtTest>

namespace {

const QString kPleaseStart = QStringLiteral(
    "The profile information could not be loaded. Please start the Connection Manager!");
const QString kNotConnected = QStringLiteral(
    "You are not connected to any profile. Please connect using the Connection Manager Orvex!");

orvexProfileData makeProfile(qint64 id, const QString &name)
{
    orvexProfileData p;
    p.id = id;
    p.name = name;
    p.archives = QStringList{QStringLiteral("main")};
    p.shortcut = QKeySequence(QStringLiteral("Ctrl+%1").arg(id));
    return p;
}

QByteArray withLength(const QByteArray &block)
{
    return stream10([&](QDataStream &out) { out << qint64(block.size()); }) + block;
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

const QList<orvexProfileData> kProfiles = {makeProfile(3, QStringLiteral("Test")),
                                           makeProfile(5, QStringLiteral("Produktion"))};

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
    void initTestCase();
    void init();
    void serverName_data();
    void serverName();
    void requestBytes_data();
    void requestBytes();
    void dndPortReplies_data();
    void dndPortReplies();
    void waitsEndAfterTheirRounds_data();
    void waitsEndAfterTheirRounds();
    void profileListFailures_data();
    void profileListFailures();
    void profileDialog_data();
    void profileDialog();
    void wireOrderAndRoundTrip();
    void cutOrHostileStreamsFail();
    void lastProfileSelection_data();
    void lastProfileSelection();
    void acceptAndRejectStore_data();
    void acceptAndRejectStore();
    void germanTextsAndFlags(); // last: installs the German catalogue

private:
    QScopedPointer<QSettings> m_settings;
};

void tst_Connection::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    m_settings.reset(new QSettings(QStringLiteral("vantrel gmbh"), QStringLiteral("orvexlogin")));
    QVERIFY(m_settings->fileName().contains(QStringLiteral(".qttest")));
}

void tst_Connection::init()
{
    m_settings->clear();
    m_settings->sync();
    orvexLoginData::setServerNameOverride(FakeConnectionManager::uniqueName()); // nobody there
}

void tst_Connection::serverName_data()
{
    QTest::addColumn<quint32>("uid");
    QTest::addColumn<QString>("name");
    QTest::newRow("root") << 0u << "Orvex-0";
    QTest::newRow("first user") << 1000u << "Orvex-3e8";
    QTest::newRow("lower-case hex") << 0xABCDEFu << "Orvex-abcdef";
}

void tst_Connection::serverName()
{
    QFETCH(quint32, uid);
    QFETCH(QString, name);
    QCOMPARE(orvexLoginData::serverNameForUser(uid), name);
}

void tst_Connection::requestBytes_data()
{
    QTest::addColumn<int>("request");
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<QByteArray>("bytes");
    const QChar sep(0xFEFF);
    QTest::newRow("dnd port, no line end") << 0 << QByteArray("1\n") << QByteArray("GETDNDPORT");
    QTest::newRow("reload, 64-bit id") << 1 << QByteArray("OK\n") << QByteArray("RELOADPROFILE#9000000000\r\n");
    QTest::newRow("chat, b before a") << 2 << QByteArray("OK\n")
        << (QStringLiteral("OPENCHAT") + sep + "7" + sep + "zweiter" + sep + QStringLiteral("Grüße")).toUtf8();
    QTest::newRow("profile by id, then use with #") << 3 << profileReply(kProfiles)
        << QByteArray("GETPROFILES\r\n") + useProfileRequest(5, true);
    QTest::newRow("unknown profile is not used") << 4 << profileReply(kProfiles)
        << QByteArray("GETPROFILES\r\n");
}

void tst_Connection::requestBytes()
{
    QFETCH(int, request);
    QFETCH(QByteArray, reply);
    QFETCH(QByteArray, bytes);
    FakeConnectionManager manager;
    manager.setReply(reply);
    orvexLoginData login;
    orvexProfileData profile;
    QString error;
    switch (request) {
    case 0: QCOMPARE(login.getDNDPort(), 1); break;
    case 1: login.reloadProfile(9000000000LL); break;
    case 2: login.openChat(7, QStringLiteral("Grüße"), QStringLiteral("zweiter")); break;
    case 3:
        QVERIFY(login.getProfileById(profile, error, 5));
        QCOMPARE(profile, kProfiles.at(1));
        break;
    case 4:
        QVERIFY(!login.getProfileById(profile, error, 4));
        QVERIFY(!error.isEmpty());
        QTest::qWait(50);
        break;
    }
    QTRY_COMPARE(manager.received(0), bytes);
    QCOMPARE(manager.connectionCount(), 1);
}

void tst_Connection::dndPortReplies_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<int>("port");
    QTest::newRow("digits") << QByteArray("8080\n") << 8080;
    QTest::newRow("digits, no line end") << QByteArray("47011") << 47011;
    QTest::newRow("up to the first NUL") << QByteArray("8081\0garbage\n", 13) << 8081;
    QTest::newRow("letters") << QByteArray("abc\n") << 0;
    QTest::newRow("not a port") << QByteArray("65536\n") << 0;
    QTest::newRow("endless digits") << QByteArray(1 << 20, '7') << 0;
    QTest::newRow("hangs up without a word") << QByteArray() << 0;
}

void tst_Connection::dndPortReplies()
{
    QFETCH(QByteArray, reply);
    QFETCH(int, port);
    FakeConnectionManager manager;
    manager.setReply(reply);
    manager.setCloseAfterReply(true);
    QElapsedTimer clock;
    clock.start();
    QCOMPARE(orvexLoginData().getDNDPort(), port);
    QVERIFY(clock.elapsed() < 20000); // a reply, or hanging up, ends the wait
}

void tst_Connection::waitsEndAfterTheirRounds_data()
{
    QTest::addColumn<bool>("listing");
    QTest::addColumn<QByteArray>("reply");
    QTest::newRow("no server: no connect wait") << false << QByteArray("none");
    QTest::newRow("port line never comes: 500 rounds") << false << QByteArray();
    QTest::newRow("block never complete: 501 rounds") << true << profileReply(kProfiles).left(40);
}

void tst_Connection::waitsEndAfterTheirRounds()
{
    QFETCH(bool, listing);
    QFETCH(QByteArray, reply);
    QScopedPointer<FakeConnectionManager> manager;
    if (reply != "none") {
        manager.reset(new FakeConnectionManager); // keeps the line open
        manager->setReply(reply);
    }
    orvexLoginData login;
    login.setWaitInterval(5);
    orvexProfileData profile;
    QString error;
    QElapsedTimer clock;
    clock.start();
    if (listing) {
        QVERIFY(!login.getProfileById(profile, error, 3));
        QCOMPARE(error, kPleaseStart);
    } else {
        QCOMPARE(login.getDNDPort(), 0);
    }
    const qint64 elapsed = clock.elapsed();
    QVERIFY2(elapsed >= (manager ? 2400 : 0) && elapsed < 30000, qPrintable(QString::number(elapsed)));
}

void tst_Connection::profileListFailures_data()
{
    QTest::addColumn<QByteArray>("reply");
    const QByteArray good = profileReply(kProfiles);
    QTest::newRow("length cut short") << good.left(5);
    QTest::newRow("block cut short") << good.left(good.size() - 3);
    QTest::newRow("negative length") << stream10([](QDataStream &out) { out << qint64(-16); }) + good.mid(8);
    QTest::newRow("huge length") << stream10([](QDataStream &out) { out << (Q_INT64_C(1) << 62); }) + good.mid(8);
    QTest::newRow("header claims 2 GB") << withLength(stream10([](QDataStream &out) { out << quint32(0x7FFFFFFE); }));
    QTest::newRow("text instead of a stream") << QByteArray("ERROR: no profiles\n");
}

void tst_Connection::profileListFailures()
{
    QFETCH(QByteArray, reply);
    FakeConnectionManager manager;
    manager.setReply(reply);
    manager.setCloseAfterReply(true);
    orvexLoginData login;
    orvexProfileData profile;
    QString error;
    QVERIFY(!login.getProfileById(profile, error, 3));
    QCOMPARE(error, kPleaseStart);
    QCOMPARE(profile, orvexProfileData());
}

void tst_Connection::profileDialog_data()
{
    QTest::addColumn<QByteArray>("reply"); // "none": no Connection Manager
    QTest::addColumn<bool>("asked");
    QTest::addColumn<bool>("choose");
    QTest::addColumn<QString>("error");
    QTest::newRow("chosen") << profileReply(kProfiles) << true << true << QString();
    QTest::newRow("user cancels") << profileReply(kProfiles) << true << false << kNotConnected;
    QTest::newRow("no profiles") << profileReply({}) << false << false << kNotConnected;
    QTest::newRow("no Connection Manager") << QByteArray("none") << false << false
        << "The profile information could not be loaded. Trying to start the Connection Manager...";
}

void tst_Connection::profileDialog()
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

void tst_Connection::wireOrderAndRoundTrip()
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
}

void tst_Connection::cutOrHostileStreamsFail()
{
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

void tst_Connection::lastProfileSelection_data()
{
    QTest::addColumn<QString>("remembered");
    QTest::addColumn<int>("index");
    QTest::newRow("nothing remembered") << QString() << 0;
    QTest::newRow("remembered and listed") << "Produktion" << 1;
    QTest::newRow("no longer listed") << "Alt" << 0;
    QTest::newRow("case differs") << "produktion" << 0;
}

void tst_Connection::lastProfileSelection()
{
    QFETCH(QString, remembered);
    QFETCH(int, index);
    if (!remembered.isNull())
        m_settings->setValue(QStringLiteral("lastProfile"), remembered);
    m_settings->sync();
    orvexLoginDialog dialog(nullptr, false);
    QCOMPARE(dialog.getProfileIndex(), -1);
    dialog.setProfiles({QStringLiteral("Test"), QStringLiteral("Produktion"), QStringLiteral("Produktion alt")});
    QCOMPARE(dialog.getProfileIndex(), index);
}

void tst_Connection::acceptAndRejectStore_data()
{
    QTest::addColumn<bool>("remember");
    QTest::addColumn<bool>("accept");
    QTest::newRow("accept, geometry remembered") << true << true;
    QTest::newRow("accept, geometry not remembered") << false << true;
    QTest::newRow("cancel, geometry remembered") << true << false;
    QTest::newRow("cancel, geometry not remembered") << false << false;
}

void tst_Connection::acceptAndRejectStore()
{
    QFETCH(bool, remember);
    QFETCH(bool, accept);
    const QRect earlier(40, 50, 480, 260);
    {
        orvexLoginDialog dialog(nullptr, true);
        dialog.setGeometry(earlier);
        m_settings->setValue(QStringLiteral("geometry"), dialog.saveGeometry());
    }
    const QByteArray stored = m_settings->value(QStringLiteral("geometry")).toByteArray();
    m_settings->setValue(QStringLiteral("lastProfile"), QStringLiteral("Test"));
    m_settings->sync();

    orvexLoginDialog dialog(nullptr, remember);
    dialog.setProfiles({QStringLiteral("Test"), QStringLiteral("Produktion")});
    dialog.findChild<QComboBox *>()->setCurrentIndex(1);
    QSize seen;
    ModalAnswerer answer([&seen, accept](QWidget *modal) {
        seen = modal->size();
        modal->resize(300, 120);
        accept ? qobject_cast<QDialog *>(modal)->accept() : qobject_cast<QDialog *>(modal)->reject();
    });
    QCOMPARE(dialog.exec(), accept ? int(QDialog::Accepted) : int(QDialog::Rejected));
    QCOMPARE(seen == earlier.size(), remember); // exec restores only when remembering

    m_settings->sync();
    QCOMPARE(m_settings->value(QStringLiteral("lastProfile")).toString(),
             accept ? QStringLiteral("Produktion") : QStringLiteral("Test"));
    QCOMPARE(m_settings->value(QStringLiteral("geometry")).toByteArray() == stored, !remember);
}

void tst_Connection::germanTextsAndFlags()
{
    QWidget parent;
    QPixmap icon(8, 8);
    icon.fill(Qt::red);
    parent.setWindowIcon(QIcon(icon));
    orvexLoginDialog dialog(&parent, false); // made before: retranslated on the change event
    QVERIFY(dialog.windowFlags().testFlag(Qt::WindowStaysOnTopHint) && !dialog.windowIcon().isNull());
    QCOMPARE(dialog.windowTitle(), QStringLiteral("Orvex - Login"));
    QVERIFY(OrvexTranslations::install(QLocale(QLocale::German, QLocale::Germany)));
    QTRY_COMPARE(dialog.windowTitle(), QStringLiteral("Orvex - Anmeldung"));
    QCOMPARE(dialog.findChild<QLabel *>()->text(), QStringLiteral("Profil wählen:"));
    QCOMPARE(QCoreApplication::translate("orvexLoginData",
                 "The profile information could not be loaded. Please start the Connection Manager!"),
             QStringLiteral("Die Profilinformationen konnten nicht geladen werden. Bitte starten Sie den Connection Manager!"));
}

QTEST_MAIN(tst_Connection)
#include "tst_connection.moc"
