// The Connection Manager stand-in: its request parser, its profile file, the
// server driven by the real client, and the executable's single-instance rule.
#include "orvexcmrequestparser.h"
#include "orvexconnectionmanager.h"
#include "orvexlogindata.h"
#include "orvexprofiledata.h"
#include "orvexprofilestore.h"

#include <QDir>
#include <QLocalSocket>
#include <QProcess>
#include <QSettings>
#include <QTemporaryDir>
#include <QtTest>

Q_DECLARE_METATYPE(QList<QStringList>)

namespace {

QString uniqueName()
{
    static int counter = 0;
    return QStringLiteral("orvex-cm-test-%1-%2").arg(QCoreApplication::applicationPid()).arg(++counter);
}

// Sends raw bytes on a connection of its own and collects what comes back.
QByteArray exchange(const QString &name, const QByteArray &request, int expectedBytes)
{
    QLocalSocket socket;
    socket.connectToServer(name);
    if (!socket.waitForConnected(5000))
        return "NOT CONNECTED";
    socket.write(request);
    socket.flush();
    QByteArray reply;
    QElapsedTimer clock;
    clock.start();
    while (reply.size() < expectedBytes && clock.elapsed() < 15000
           && socket.state() == QLocalSocket::ConnectedState) {
        QCoreApplication::processEvents();
        socket.waitForReadyRead(10);
        reply += socket.readAll();
    }
    reply += socket.readAll();
    return reply;
}

} // namespace

class tst_ConnectionManager : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanup();

    void parser_data();
    void parser();
    void parserOpenChatEndsWhenQuiet();
    void parserRefusesEndlessLines();

    void storeCreatesDefaultProfile();
    void storeReadsProfiles();

    void answersTheClient();
    void logsUseReloadAndChat();
    void garbageIsAnsweredAndDropped_data();
    void garbageIsAnsweredAndDropped();
    void requestsInPieces();
    void secondInstanceInProcessIsRefused();
    void staleSocketFileIsReplaced();

    void executable();

private:
    QString m_bin;
    QTemporaryDir m_dir;
};

void tst_ConnectionManager::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QVERIFY(m_dir.isValid());
    m_bin = QCoreApplication::applicationDirPath() + QStringLiteral("/orvexconnectionmanager");
}

void tst_ConnectionManager::cleanup()
{
    orvexLoginData::setServerNameOverride(QString());
}

void tst_ConnectionManager::parser_data()
{
    QTest::addColumn<QList<QByteArray>>("chunks");
    QTest::addColumn<QList<int>>("kinds");
    QTest::addColumn<QList<QStringList>>("args");

    using R = OrvexCmRequest;
    QTest::newRow("port") << QList<QByteArray>{"GETDNDPORT"} << QList<int>{R::DndPort}
                          << QList<QStringList>{{}};
    QTest::newRow("port in pieces") << QList<QByteArray>{"GET", "DND", "PORT"}
                                    << QList<int>{R::DndPort} << QList<QStringList>{{}};
    QTest::newRow("profiles") << QList<QByteArray>{"GETPROFILES\r", "\n"} << QList<int>{R::Profiles}
                              << QList<QStringList>{{}};
    QTest::newRow("list then use, one chunk")
        << QList<QByteArray>{"GETPROFILES\r\nUSEPROFILE#12#3#/opt/orvex/host#\r\n"}
        << QList<int>{R::Profiles, R::UseProfile}
        << QList<QStringList>{{}, {"12", "3", "/opt/orvex/host"}};
    QTest::newRow("use, second form, path with #")
        << QList<QByteArray>{"USEPROFILE#12#3#/opt/a#b/host\r\n"} << QList<int>{R::UseProfile}
        << QList<QStringList>{{"12", "3", "/opt/a#b/host"}};
    QTest::newRow("use, non-numeric process") << QList<QByteArray>{"USEPROFILE#x#3#/p#\r\n"}
                                              << QList<int>{R::Invalid} << QList<QStringList>{{}};
    QTest::newRow("use, fields missing") << QList<QByteArray>{"USEPROFILE#12\r\n"}
                                         << QList<int>{R::Invalid} << QList<QStringList>{{}};
    QTest::newRow("reload") << QList<QByteArray>{"RELOADPROFILE#9000000000\r\n"}
                            << QList<int>{R::ReloadProfile} << QList<QStringList>{{"9000000000"}};
    QTest::newRow("reload, letters") << QList<QByteArray>{"RELOADPROFILE#abc\r\n"}
                                     << QList<int>{R::Invalid} << QList<QStringList>{{}};
    QTest::newRow("profiles with a tail") << QList<QByteArray>{"GETPROFILESX\r\n"}
                                          << QList<int>{R::Invalid} << QList<QStringList>{{}};
    QTest::newRow("garbage") << QList<QByteArray>{"HELLO\r\n"} << QList<int>{R::Invalid}
                             << QList<QStringList>{{}};
    QTest::newRow("binary") << QList<QByteArray>{QByteArray("\0\xff\x01", 3)}
                            << QList<int>{R::Invalid} << QList<QStringList>{{}};
    QTest::newRow("stray line ends between requests")
        << QList<QByteArray>{"GETDNDPORT\r\n\r\nGETDNDPORT"} << QList<int>{R::DndPort, R::DndPort}
        << QList<QStringList>{{}, {}};
}

void tst_ConnectionManager::parser()
{
    QFETCH(QList<QByteArray>, chunks);
    QFETCH(QList<int>, kinds);
    QFETCH(QList<QStringList>, args);

    OrvexCmRequestParser parser;
    QList<OrvexCmRequest> requests;
    for (const QByteArray &chunk : chunks) {
        parser.append(chunk);
        OrvexCmRequest request;
        while (parser.next(request))
            requests.append(request);
    }
    QCOMPARE(requests.size(), kinds.size());
    for (int i = 0; i < requests.size(); ++i) {
        QCOMPARE(int(requests.at(i).kind), kinds.at(i));
        if (requests.at(i).kind != OrvexCmRequest::Invalid)
            QCOMPARE(requests.at(i).args, args.at(i));
    }
    QVERIFY(!parser.hasUnterminated());
}

void tst_ConnectionManager::parserOpenChatEndsWhenQuiet()
{
    const QChar sep(0xFEFF);
    OrvexCmRequestParser parser;
    OrvexCmRequest request;
    parser.append((QStringLiteral("OPENCHAT") + sep + QStringLiteral("7") + sep).toUtf8());
    QVERIFY(!parser.next(request)); // could still grow
    parser.append((QStringLiteral("zweiter") + sep + QStringLiteral("Grüße")).toUtf8());
    QVERIFY(!parser.next(request));
    QVERIFY(parser.hasUnterminated());
    QVERIFY(parser.takeUnterminated(request));
    QCOMPARE(request.kind, OrvexCmRequest::OpenChat);
    QCOMPARE(request.args, QStringList({"7", QStringLiteral("Grüße"), "zweiter"}));
    QVERIFY(!parser.hasUnterminated());

    parser.append("OPENCHAT\xef\xbb\xbfseven");
    QVERIFY(parser.takeUnterminated(request));
    QCOMPARE(request.kind, OrvexCmRequest::Invalid);
}

void tst_ConnectionManager::parserRefusesEndlessLines()
{
    OrvexCmRequestParser parser;
    OrvexCmRequest request;
    parser.append("RELOADPROFILE#");
    parser.append(QByteArray(OrvexCmRequestParser::kMaxRequestSize, '1'));
    QVERIFY(parser.next(request));
    QCOMPARE(request.kind, OrvexCmRequest::Invalid);
    QVERIFY(!parser.next(request));
}

void tst_ConnectionManager::storeCreatesDefaultProfile()
{
    const QString file = m_dir.filePath(QStringLiteral("sub/dir/profiles.ini"));
    OrvexProfileStore store(file);
    QVERIFY(store.load());
    QVERIFY(QFile::exists(file));
    QCOMPARE(store.profiles().size(), 1);
    const orvexProfileData profile = store.profiles().constFirst();
    QCOMPARE(profile, OrvexProfileStore::defaultProfile());
    QCOMPARE(profile.dataPath, OrvexProfileStore::defaultArchivePath());
    QVERIFY(!profile.name.isEmpty());
    QCOMPARE(store.dndPort(), 0);

    // What was written reads back the same, empty lists included.
    OrvexProfileStore again(file);
    QVERIFY(again.load());
    QCOMPARE(again.profiles(), store.profiles());
}

void tst_ConnectionManager::storeReadsProfiles()
{
    const QString file = m_dir.filePath(QStringLiteral("two.ini"));
    {
        QSettings ini(file, QSettings::IniFormat);
        ini.setValue(QStringLiteral("dndPort"), 50123);
        ini.beginWriteArray(QStringLiteral("profiles"), 3);
        ini.setArrayIndex(0);
        ini.setValue(QStringLiteral("id"), 7);
        ini.setValue(QStringLiteral("name"), QStringLiteral("Produktion"));
        ini.setValue(QStringLiteral("archives"), QStringList{"a", "b"});
        ini.setValue(QStringLiteral("shortcut"), QStringLiteral("Ctrl+P"));
        ini.setArrayIndex(1);
        ini.setValue(QStringLiteral("id"), QStringLiteral("not a number"));
        ini.setValue(QStringLiteral("name"), QStringLiteral("Kaputt"));
        ini.setArrayIndex(2);
        ini.setValue(QStringLiteral("id"), 8);
        ini.endArray();
    }
    OrvexProfileStore store(file);
    QVERIFY(store.load());
    QCOMPARE(store.dndPort(), 50123);
    QCOMPARE(store.profiles().size(), 2); // the one without a usable id is left out
    QCOMPARE(store.profiles().at(0).name, QStringLiteral("Produktion"));
    QCOMPARE(store.profiles().at(0).archives, QStringList({"a", "b"}));
    QCOMPARE(store.profiles().at(0).shortcut, QKeySequence(Qt::CTRL | Qt::Key_P));
    QCOMPARE(store.profiles().at(1).id, qint64(8));
    QVERIFY(store.contains(8));
    QVERIFY(!store.contains(1));
}

void tst_ConnectionManager::answersTheClient()
{
    OrvexProfileStore store(m_dir.filePath(QStringLiteral("answers.ini")));
    QVERIFY(store.load());
    OrvexConnectionManager manager(&store, 45123);
    const QString name = uniqueName();
    QString error;
    QVERIFY2(manager.start(name, &error), qPrintable(error));
    orvexLoginData::setServerNameOverride(name);

    orvexLoginData login;
    QSignalSpy portSpy(&manager, &OrvexConnectionManager::dndPortRequested);
    QCOMPARE(login.getDNDPort(), 45123);
    QCOMPARE(portSpy.count(), 1);

    QSignalSpy used(&manager, &OrvexConnectionManager::profileUsed);
    orvexProfileData profile;
    QVERIFY2(login.getProfileById(profile, error, 1), qPrintable(error));
    QCOMPARE(profile, store.profiles().constFirst());
    QTRY_COMPARE(used.count(), 1);
    QCOMPARE(used.at(0).at(0).toLongLong(), QCoreApplication::applicationPid());
    QCOMPARE(used.at(0).at(1).toLongLong(), 1);
    QCOMPARE(used.at(0).at(2).toString(), QCoreApplication::applicationFilePath());
    QCOMPARE(used.at(0).at(3).toBool(), true);

    QVERIFY(!login.getProfileById(profile, error, 99));
}

void tst_ConnectionManager::logsUseReloadAndChat()
{
    OrvexProfileStore store(m_dir.filePath(QStringLiteral("logs.ini")));
    QVERIFY(store.load());
    OrvexConnectionManager manager(&store, 45124);
    const QString name = uniqueName();
    QVERIFY(manager.start(name));
    orvexLoginData::setServerNameOverride(name);
    orvexLoginData login;

    QSignalSpy reloaded(&manager, &OrvexConnectionManager::profileReloaded);
    login.reloadProfile(1);
    login.reloadProfile(42);
    QCOMPARE(reloaded.count(), 2);
    QCOMPARE(reloaded.at(0), QVariantList({qint64(1), true}));
    QCOMPARE(reloaded.at(1), QVariantList({qint64(42), false}));
    QCOMPARE(exchange(name, "RELOADPROFILE#42\r\n", 16), QByteArray("UNKNOWN PROFILE\n"));

    QSignalSpy chat(&manager, &OrvexConnectionManager::chatRequested);
    login.openChat(7, QStringLiteral("Grüße"), QStringLiteral("zweiter"));
    QCOMPARE(chat.count(), 1);
    QCOMPARE(chat.at(0), QVariantList({qint64(7), QStringLiteral("Grüße"), QStringLiteral("zweiter")}));

    // The second form of the use request, as the profile dialog path sends it.
    QSignalSpy used(&manager, &OrvexConnectionManager::profileUsed);
    exchange(name, "USEPROFILE#77#1#/usr/bin/orvexhost\r\n", 0);
    QTRY_COMPARE(used.count(), 1);
    QCOMPARE(used.at(0), QVariantList({qint64(77), qint64(1), QStringLiteral("/usr/bin/orvexhost"), false}));
    QVERIFY(store.profiles().constFirst().active);
}

void tst_ConnectionManager::garbageIsAnsweredAndDropped_data()
{
    QTest::addColumn<QByteArray>("request");
    QTest::newRow("unknown word") << QByteArray("HELLO WORLD\r\n");
    QTest::newRow("binary") << QByteArray("\x00\x01\x02\xff", 4);
    QTest::newRow("bad reload") << QByteArray("RELOADPROFILE#-\r\n");
}

void tst_ConnectionManager::garbageIsAnsweredAndDropped()
{
    QFETCH(QByteArray, request);
    OrvexProfileStore store(m_dir.filePath(QStringLiteral("garbage.ini")));
    QVERIFY(store.load());
    OrvexConnectionManager manager(&store, 45125);
    const QString name = uniqueName();
    QVERIFY(manager.start(name));
    QSignalSpy invalid(&manager, &OrvexConnectionManager::invalidRequest);
    QCOMPARE(exchange(name, request, 6), QByteArray("ERROR\n"));
    QCOMPARE(invalid.count(), 1);

    // The server keeps serving others.
    orvexLoginData::setServerNameOverride(name);
    QCOMPARE(orvexLoginData().getDNDPort(), 45125);
}

void tst_ConnectionManager::requestsInPieces()
{
    OrvexProfileStore store(m_dir.filePath(QStringLiteral("pieces.ini")));
    QVERIFY(store.load());
    OrvexConnectionManager manager(&store, 45126);
    const QString name = uniqueName();
    QVERIFY(manager.start(name));

    QLocalSocket socket;
    socket.connectToServer(name);
    QVERIFY(socket.waitForConnected(5000));
    QSignalSpy listed(&manager, &OrvexConnectionManager::profilesListed);
    socket.write("GETPRO");
    socket.flush();
    QTest::qWait(100);
    QCOMPARE(listed.count(), 0);
    socket.write("FILES\r\n");
    socket.flush();
    QTRY_COMPARE(listed.count(), 1);
    const QByteArray expected =
        OrvexConnectionManager::profileListReply(OrvexConnectionManager::replyHeader(), store.profiles());
    QTRY_COMPARE(socket.bytesAvailable(), qint64(expected.size()));
    QCOMPARE(socket.readAll(), expected);
}

void tst_ConnectionManager::secondInstanceInProcessIsRefused()
{
    OrvexProfileStore store(m_dir.filePath(QStringLiteral("second.ini")));
    QVERIFY(store.load());
    const QString name = uniqueName();
    auto first = std::make_unique<OrvexConnectionManager>(&store, 45127);
    QVERIFY(first->start(name));
    OrvexConnectionManager second(&store, 45128);
    QString error;
    QVERIFY(!second.start(name, &error));
    QVERIFY2(error.contains(QStringLiteral("already running")), qPrintable(error));
    QVERIFY(!second.isListening());

    orvexLoginData::setServerNameOverride(name);
    QCOMPARE(orvexLoginData().getDNDPort(), 45127); // the first one still answers

    first.reset(); // gone: the name is free again
    QVERIFY2(second.start(name, &error), qPrintable(error));
    QCOMPARE(orvexLoginData().getDNDPort(), 45128);
}

void tst_ConnectionManager::staleSocketFileIsReplaced()
{
    // A killed instance leaves its socket file behind, without a listener.
    const QString name = uniqueName();
    QFile stale(QDir::tempPath() + QLatin1Char('/') + name);
    QVERIFY(stale.open(QIODevice::WriteOnly));
    stale.close();
    OrvexProfileStore store(m_dir.filePath(QStringLiteral("stale.ini")));
    QVERIFY(store.load());
    OrvexConnectionManager manager(&store, 45129);
    QString error;
    QVERIFY2(manager.start(name, &error), qPrintable(error));
    orvexLoginData::setServerNameOverride(name);
    QCOMPARE(orvexLoginData().getDNDPort(), 45129);
}

void tst_ConnectionManager::executable()
{
    QVERIFY2(QFileInfo(m_bin).isExecutable(), qPrintable(m_bin));
    const QString name = uniqueName();
    const QString profiles = m_dir.filePath(QStringLiteral("executable.ini"));
    const QStringList args = {QStringLiteral("--name"), name, QStringLiteral("--profiles"), profiles};

    QProcess first;
    first.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    first.start(m_bin, args + QStringList{QStringLiteral("--port"), QStringLiteral("45130")});
    QVERIFY(first.waitForStarted(15000));
    orvexLoginData::setServerNameOverride(name);
    orvexLoginData login;
    login.setWaitInterval(20);
    QTRY_COMPARE_WITH_TIMEOUT(login.getDNDPort(), 45130, 15000);
    QVERIFY(QFile::exists(profiles)); // the default profile was written

    QProcess second;
    second.start(m_bin, args);
    QVERIFY(second.waitForFinished(15000));
    QCOMPARE(second.exitStatus(), QProcess::NormalExit);
    QCOMPARE(second.exitCode(), 1);
    QVERIFY2(second.readAllStandardError().contains("already running"), "a clear message");
    QCOMPARE(login.getDNDPort(), 45130);

    QProcess badPort;
    badPort.start(m_bin, QStringList{QStringLiteral("--name"), uniqueName(), QStringLiteral("--port"),
                                     QStringLiteral("70000"), QStringLiteral("--profiles"), profiles});
    QVERIFY(badPort.waitForFinished(15000));
    QCOMPARE(badPort.exitCode(), 2);

    first.terminate(); // SIGTERM: a clean exit that removes the socket
    QVERIFY(first.waitForFinished(15000));
    QCOMPARE(first.exitStatus(), QProcess::NormalExit);
    QCOMPARE(first.exitCode(), 0);
    QVERIFY(!QFile::exists(QDir::tempPath() + QLatin1Char('/') + name));
    QCOMPARE(login.getDNDPort(), 0);
}

QTEST_GUILESS_MAIN(tst_ConnectionManager)
#include "tst_connectionmanager.moc"
