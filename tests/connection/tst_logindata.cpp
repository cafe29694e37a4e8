// The Connection Manager client against a scripted local-socket server: the
// exact request bytes, the replies it copes with, and the waits it keeps.
#include "fakeconnectionmanager.h"
#include "modalanswerer.h"
#include "orvexlogindata.h"
#include "orvexprofiledata.h"

#include <QComboBox>
#include <QDataStream>
#include <QDialog>
#include <QElapsedTimer>
#include <QSettings>
#include <QtTest>

#include <unistd.h>

namespace {

const QString kPleaseStart = QStringLiteral(
    "The profile information could not be loaded. Please start the Connection Manager!");
const QString kTryingToStart = QStringLiteral(
    "The profile information could not be loaded. Trying to start the Connection Manager...");
const QString kNotConnected = QStringLiteral(
    "You are not connected to any profile. Please connect using the Connection Manager Orvex!");

orvexProfileData makeProfile(qint64 id, const QString &name)
{
    orvexProfileData p;
    p.id = id;
    p.name = name;
    p.serverHost = QStringLiteral("archive.example");
    p.serverPort = 9000 + id;
    p.archives = QStringList{QStringLiteral("main"), QStringLiteral("Ablage")};
    p.shortcut = QKeySequence(QStringLiteral("Ctrl+Alt+%1").arg(id));
    p.roles = QStringList{QStringLiteral("tavloUSER")};
    return p;
}

QByteArray stream10(const std::function<void(QDataStream &)> &write)
{
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    out.setVersion(10);
    write(out);
    return bytes;
}

// Block length, header text and records, as the Connection Manager sends them.
QByteArray profileReply(const QList<orvexProfileData> &profiles, const QString &header = QStringLiteral("CM"))
{
    const QByteArray block = stream10([&](QDataStream &out) {
        out << header;
        for (const orvexProfileData &p : profiles)
            out << p;
    });
    return stream10([&](QDataStream &out) { out << qint64(block.size()); }) + block;
}

QByteArray useProfileRequest(qint64 id, bool trailingHash)
{
    return QStringLiteral("USEPROFILE#%1#%2#%3%4\r\n")
        .arg(QString::number(QCoreApplication::applicationPid()), QString::number(id),
             QCoreApplication::applicationFilePath(),
             trailingHash ? QStringLiteral("#") : QString())
        .toUtf8();
}

} // namespace

class tst_LoginData : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void serverName_data();
    void serverName();
    void serverNameOverrides();

    void dndPortReplies_data();
    void dndPortReplies();
    void dndPortWithoutServer();
    void oneLineReplyThatNeverComesEndsAfterItsRounds();

    void oneLineRequestsAreSentByteForByte_data();
    void oneLineRequestsAreSentByteForByte();

    void profileById();
    void profileByIdUnknown();
    void profileListFailures_data();
    void profileListFailures();
    void profileListBlockNeverCompleteEndsAfterItsRounds();
    void profileListCutKeepsWholeRecords();

    void profileChosenInDialog();
    void profileDialogCancelled();
    void profileWithoutManager();
    void profileListEmpty();
};

void tst_LoginData::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
}

void tst_LoginData::init()
{
    QSettings(QStringLiteral("vantrel gmbh"), QStringLiteral("orvexlogin")).clear();
    orvexLoginData::setServerNameOverride(QString());
}

void tst_LoginData::serverName_data()
{
    QTest::addColumn<quint32>("uid");
    QTest::addColumn<QString>("name");
    QTest::newRow("root") << 0u << "Orvex-0";
    QTest::newRow("first user") << 1000u << "Orvex-3e8";
    QTest::newRow("lower-case hex") << 0xABCDEFu << "Orvex-abcdef";
    QTest::newRow("largest") << 0xFFFFFFFFu << "Orvex-ffffffff";
}

void tst_LoginData::serverName()
{
    QFETCH(quint32, uid);
    QFETCH(QString, name);
    QCOMPARE(orvexLoginData::serverNameForUser(uid), name);
}

void tst_LoginData::serverNameOverrides()
{
    const QString own = orvexLoginData::serverNameForUser(quint32(::getuid()));
    qunsetenv("ORVEX_CONNECTION_MANAGER");
    QCOMPARE(orvexLoginData::serverName(), own);
    qputenv("ORVEX_CONNECTION_MANAGER", "orvex-env");
    QCOMPARE(orvexLoginData::serverName(), QStringLiteral("orvex-env"));
    orvexLoginData::setServerNameOverride(QStringLiteral("orvex-override"));
    QCOMPARE(orvexLoginData::serverName(), QStringLiteral("orvex-override"));
    orvexLoginData::setServerNameOverride(QString());
    qunsetenv("ORVEX_CONNECTION_MANAGER");
    QCOMPARE(orvexLoginData::serverName(), own);
}

void tst_LoginData::dndPortReplies_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<bool>("hangUp");
    QTest::addColumn<int>("port");
    QTest::newRow("digits and line end") << QByteArray("8080\n") << false << 8080;
    QTest::newRow("digits, no line end") << QByteArray("47011") << false << 47011;
    QTest::newRow("windows line end") << QByteArray("443\r\n") << false << 443;
    QTest::newRow("up to the first NUL") << QByteArray("8081\0garbage\n", 13) << false << 8081;
    QTest::newRow("only the first line") << QByteArray("81\n82\n") << false << 81;
    QTest::newRow("letters") << QByteArray("abc\n") << false << 0;
    QTest::newRow("digits then letters") << QByteArray("80x\n") << false << 0;
    QTest::newRow("negative") << QByteArray("-80\n") << false << 0;
    QTest::newRow("beyond the port range") << QByteArray("65536\n") << false << 0;
    QTest::newRow("beyond int") << QByteArray("99999999999999999999\n") << false << 0;
    QTest::newRow("empty line") << QByteArray("\n") << false << 0;
    QTest::newRow("binary garbage") << QByteArray("\xff\xfe\x00\x01", 4) << false << 0;
    QTest::newRow("endless digits") << QByteArray(1 << 20, '7') << false << 0;
    QTest::newRow("hangs up without a word") << QByteArray() << true << 0;
    QTest::newRow("replies and hangs up") << QByteArray("9000\n") << true << 9000;
}

void tst_LoginData::dndPortReplies()
{
    QFETCH(QByteArray, reply);
    QFETCH(bool, hangUp);
    QFETCH(int, port);

    FakeConnectionManager manager;
    manager.setReply(reply);
    manager.setCloseAfterReply(hangUp);
    orvexLoginData login;
    QElapsedTimer clock;
    clock.start();
    QCOMPARE(login.getDNDPort(), port);
    QVERIFY2(clock.elapsed() < 20000, "a reply that came must end the wait");
    QCOMPARE(manager.received(0), QByteArray("GETDNDPORT"));
}

void tst_LoginData::dndPortWithoutServer()
{
    orvexLoginData::setServerNameOverride(FakeConnectionManager::uniqueName());
    orvexLoginData login; // default waits: a missing server must not cost them
    QElapsedTimer clock;
    clock.start();
    QCOMPARE(login.getDNDPort(), 0);
    QVERIFY(clock.elapsed() < 5000);

    login.setConnectTimeout(100);
    QCOMPARE(login.getDNDPort(), 0);
    login.reloadProfile(1); // nothing to send to; must simply return
    login.openChat(1, QStringLiteral("a"), QStringLiteral("b"));
}

void tst_LoginData::oneLineReplyThatNeverComesEndsAfterItsRounds()
{
    FakeConnectionManager manager; // listens, reads, never answers
    orvexLoginData login;
    login.setWaitInterval(5);
    QElapsedTimer clock;
    clock.start();
    QCOMPARE(login.getDNDPort(), 0);
    const qint64 elapsed = clock.elapsed();
    // 500 rounds of 5 ms: at least 2.5 s, and not much more than the rounds take.
    QVERIFY2(elapsed >= 2400, qPrintable(QString::number(elapsed)));
    QVERIFY2(elapsed < 30000, qPrintable(QString::number(elapsed)));
}

void tst_LoginData::oneLineRequestsAreSentByteForByte_data()
{
    QTest::addColumn<int>("request");
    QTest::addColumn<QByteArray>("bytes");
    const QChar sep(0xFEFF);
    QTest::newRow("reload") << 0 << QByteArray("RELOADPROFILE#42\r\n");
    QTest::newRow("reload, 64-bit id") << 1 << QByteArray("RELOADPROFILE#9000000000\r\n");
    QTest::newRow("chat, b before a")
        << 2
        << (QStringLiteral("OPENCHAT") + sep + QStringLiteral("7") + sep + QStringLiteral("zweiter")
            + sep + QStringLiteral("Grüße"))
               .toUtf8();
    QTest::newRow("dnd port") << 3 << QByteArray("GETDNDPORT");
}

void tst_LoginData::oneLineRequestsAreSentByteForByte()
{
    QFETCH(int, request);
    QFETCH(QByteArray, bytes);

    FakeConnectionManager manager;
    manager.setReply("OK\n");
    orvexLoginData login;
    switch (request) {
    case 0: login.reloadProfile(42); break;
    case 1: login.reloadProfile(9000000000LL); break;
    case 2: login.openChat(7, QStringLiteral("Grüße"), QStringLiteral("zweiter")); break;
    case 3: login.getDNDPort(); break;
    }
    QCOMPARE(manager.connectionCount(), 1);
    QCOMPARE(manager.received(0), bytes);
}

void tst_LoginData::profileById()
{
    FakeConnectionManager manager;
    const QList<orvexProfileData> profiles = {makeProfile(3, QStringLiteral("Test")),
                                              makeProfile(5, QStringLiteral("Produktion"))};
    manager.setReply(profileReply(profiles));
    orvexLoginData login;
    orvexProfileData profile;
    QString error;
    QVERIFY(login.getProfileById(profile, error, 5));
    QVERIFY(error.isEmpty());
    QCOMPARE(profile, profiles.at(1));
    QCOMPARE(manager.connectionCount(), 1);
    QTRY_COMPARE(manager.received(0), QByteArray("GETPROFILES\r\n") + useProfileRequest(5, true));
}

void tst_LoginData::profileByIdUnknown()
{
    FakeConnectionManager manager;
    manager.setReply(profileReply({makeProfile(3, QStringLiteral("Test"))}));
    orvexLoginData login;
    orvexProfileData profile;
    QString error;
    QVERIFY(!login.getProfileById(profile, error, 4));
    QVERIFY(!error.isEmpty());
    QCOMPARE(profile, orvexProfileData());
    QTest::qWait(50);
    QCOMPARE(manager.received(0), QByteArray("GETPROFILES\r\n")); // nothing used
}

void tst_LoginData::profileListFailures_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<bool>("hangUp");

    const QByteArray good = profileReply({makeProfile(1, QStringLiteral("A"))});
    QTest::newRow("no server reply, hang up") << QByteArray() << true;
    QTest::newRow("length cut short") << good.left(5) << true;
    QTest::newRow("block cut short") << good.left(good.size() - 3) << true;
    QTest::newRow("negative block length")
        << stream10([](QDataStream &out) { out << qint64(-16); }) + good.mid(8) << false;
    QTest::newRow("huge block length")
        << stream10([](QDataStream &out) { out << qint64(Q_INT64_C(1) << 62); }) + good.mid(8) << true;
    QTest::newRow("header claims 2 GB")
        << stream10([](QDataStream &out) { out << qint64(8) << quint32(0x7FFFFFFE) << quint32(0); })
        << false;
    QTest::newRow("text where the stream should be") << QByteArray("ERROR: no profiles\n") << true;
}

void tst_LoginData::profileListFailures()
{
    QFETCH(QByteArray, reply);
    QFETCH(bool, hangUp);

    FakeConnectionManager manager;
    manager.setReply(reply);
    manager.setCloseAfterReply(hangUp);
    orvexLoginData login;
    login.setWaitInterval(5);
    orvexProfileData profile;
    QString error;
    QVERIFY(!login.getProfileById(profile, error, 1));
    QCOMPARE(error, kPleaseStart);
    QCOMPARE(profile, orvexProfileData());
}

void tst_LoginData::profileListBlockNeverCompleteEndsAfterItsRounds()
{
    // Only the length and half of the block arrive; the server keeps the line open.
    FakeConnectionManager manager;
    const QByteArray good = profileReply({makeProfile(1, QStringLiteral("A"))});
    manager.setReply(good.left(8 + (good.size() - 8) / 2));
    orvexLoginData login;
    login.setWaitInterval(5);
    orvexProfileData profile;
    QString error;
    QElapsedTimer clock;
    clock.start();
    QVERIFY(!login.getProfileById(profile, error, 1));
    const qint64 elapsed = clock.elapsed();
    QCOMPARE(error, kPleaseStart);
    QVERIFY2(elapsed >= 2400, qPrintable(QString::number(elapsed))); // 501 rounds of 5 ms
    QVERIFY2(elapsed < 30000, qPrintable(QString::number(elapsed)));
}

void tst_LoginData::profileListCutKeepsWholeRecords()
{
    // The block length covers a second record that is cut in its middle: the
    // whole first record is still usable, the broken one is not.
    const orvexProfileData first = makeProfile(1, QStringLiteral("A"));
    const orvexProfileData second = makeProfile(2, QStringLiteral("B"));
    QByteArray block = stream10([&](QDataStream &out) { out << QStringLiteral("CM") << first << second; });
    block.chop(10);
    const QByteArray reply = stream10([&](QDataStream &out) { out << qint64(block.size()); }) + block;

    orvexLoginData login;
    orvexProfileData profile;
    QString error;
    {
        FakeConnectionManager manager;
        manager.setReply(reply);
        QVERIFY(login.getProfileById(profile, error, 1));
        QCOMPARE(profile, first);
    }
    {
        FakeConnectionManager manager;
        manager.setReply(reply);
        profile = orvexProfileData();
        QVERIFY(!login.getProfileById(profile, error, 2));
        QCOMPARE(profile, orvexProfileData());
    }
}

void tst_LoginData::profileChosenInDialog()
{
    FakeConnectionManager manager;
    const QList<orvexProfileData> profiles = {makeProfile(3, QStringLiteral("Test")),
                                              makeProfile(5, QStringLiteral("Produktion"))};
    manager.setReply(profileReply(profiles));
    orvexLoginData login;
    orvexProfileData profile;
    QString error;
    QStringList offered;
    ModalAnswerer answer([&offered](QWidget *modal) {
        auto *box = modal->findChild<QComboBox *>(QStringLiteral("m_cbProfiles"));
        for (int i = 0; i < box->count(); ++i)
            offered << box->itemText(i);
        box->setCurrentIndex(1);
        qobject_cast<QDialog *>(modal)->accept();
    });
    QVERIFY(login.getProfile(profile, error, nullptr, false));
    QVERIFY(answer.answered());
    QCOMPARE(answer.seenClass(), QStringLiteral("orvexLoginDialog"));
    QCOMPARE(offered, QStringList({QStringLiteral("Test"), QStringLiteral("Produktion")}));
    QCOMPARE(profile, profiles.at(1));
    QVERIFY(!login.getIsUserCanceled());
    // The list on one connection, the use request (second form) on its own.
    QCOMPARE(manager.received(0), QByteArray("GETPROFILES\r\n"));
    QTRY_COMPARE(manager.connectionCount(), 2);
    QTRY_COMPARE(manager.received(1), useProfileRequest(5, false));
    QCOMPARE(QSettings(QStringLiteral("vantrel gmbh"), QStringLiteral("orvexlogin"))
                 .value(QStringLiteral("lastProfile")),
             QVariant(QStringLiteral("Produktion")));
}

void tst_LoginData::profileDialogCancelled()
{
    FakeConnectionManager manager;
    manager.setReply(profileReply({makeProfile(3, QStringLiteral("Test"))}));
    orvexLoginData login;
    orvexProfileData profile;
    QString error;
    ModalAnswerer answer(QMessageBox::Cancel);
    QVERIFY(!login.getProfile(profile, error, nullptr, false));
    QVERIFY(answer.answered());
    QVERIFY(login.getIsUserCanceled());
    QCOMPARE(error, kNotConnected);
    QCOMPARE(profile, orvexProfileData());
    QTest::qWait(50);
    QCOMPARE(manager.connectionCount(), 1); // nothing used
}

void tst_LoginData::profileWithoutManager()
{
    orvexLoginData::setServerNameOverride(FakeConnectionManager::uniqueName());
    orvexLoginData login;
    login.setAutoStart(false);
    orvexProfileData profile;
    QString error;
    QVERIFY(!login.getProfile(profile, error, nullptr, false));
    QCOMPARE(error, kTryingToStart);
    QVERIFY(!login.getIsUserCanceled());
}

void tst_LoginData::profileListEmpty()
{
    FakeConnectionManager manager;
    manager.setReply(profileReply({}));
    orvexLoginData login;
    orvexProfileData profile;
    QString error;
    QVERIFY(!login.getProfile(profile, error, nullptr, false)); // no dialog to answer
    QCOMPARE(error, kNotConnected);
    QVERIFY(!login.getIsUserCanceled());
}

QTEST_MAIN(tst_LoginData)
#include "tst_logindata.moc"
