// The Connection Manager client against a scripted local-socket server.
#include "fakeconnectionmanager.h"
#include "modalanswerer.h"
#include "orvexlogindata.h"
#include "orvexprofiledata.h"

#include <QComboBox>
#include <QDataStream>
#include <QDialog>
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

} // namespace

class tst_LoginData : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); }
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
};

void tst_LoginData::init()
{
    QSettings(QStringLiteral("vantrel gmbh"), QStringLiteral("orvexlogin")).clear();
    orvexLoginData::setServerNameOverride(FakeConnectionManager::uniqueName()); // nobody there
}

void tst_LoginData::serverName_data()
{
    QTest::addColumn<quint32>("uid");
    QTest::addColumn<QString>("name");
    QTest::newRow("root") << 0u << "Orvex-0";
    QTest::newRow("first user") << 1000u << "Orvex-3e8";
    QTest::newRow("lower-case hex") << 0xABCDEFu << "Orvex-abcdef";
}

void tst_LoginData::serverName()
{
    QFETCH(quint32, uid);
    QFETCH(QString, name);
    QCOMPARE(orvexLoginData::serverNameForUser(uid), name);
}

void tst_LoginData::requestBytes_data()
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

void tst_LoginData::requestBytes()
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

void tst_LoginData::dndPortReplies_data()
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

void tst_LoginData::dndPortReplies()
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

void tst_LoginData::waitsEndAfterTheirRounds_data()
{
    QTest::addColumn<bool>("listing");
    QTest::addColumn<QByteArray>("reply");
    QTest::newRow("no server: no connect wait") << false << QByteArray("none");
    QTest::newRow("port line never comes: 500 rounds") << false << QByteArray();
    QTest::newRow("block never complete: 501 rounds") << true << profileReply(kProfiles).left(40);
}

void tst_LoginData::waitsEndAfterTheirRounds()
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

void tst_LoginData::profileListFailures_data()
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

void tst_LoginData::profileListFailures()
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

void tst_LoginData::profileDialog_data()
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

void tst_LoginData::profileDialog()
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

QTEST_MAIN(tst_LoginData)
#include "tst_logindata.moc"
