// The Connection Manager stand-in, spoken to by the real client and by raw
// sockets, and its executable's single-instance rule.
#include "orvexconnectionmanager.h"
#include "orvexlogindata.h"
#include "orvexprofiledata.h"
#include "orvexprofilestore.h"

#include <QLocalSocket>
#include <QProcess>
#include <QTemporaryDir>
#include <QSettings>
#include <QtTest>

namespace {

QString uniqueName()
{
    static int counter = 0;
    return QStringLiteral("orvex-cm-test-%1-%2").arg(QCoreApplication::applicationPid()).arg(++counter);
}

// Sends raw bytes on a connection of its own; returns what came back before
// the server hung up or went quiet.
QByteArray exchange(const QString &name, const QList<QByteArray> &pieces)
{
    QLocalSocket socket;
    socket.connectToServer(name);
    if (!socket.waitForConnected(5000))
        return "NOT CONNECTED";
    for (const QByteArray &piece : pieces) {
        socket.write(piece);
        socket.flush();
        QTest::qWait(30);
    }
    QByteArray reply;
    for (int quiet = 0; quiet < 20 && socket.state() == QLocalSocket::ConnectedState; ++quiet) {
        QTest::qWait(10);
        if (socket.bytesAvailable() > 0)
            quiet = 0;
        reply += socket.readAll();
    }
    return reply + socket.readAll();
}

} // namespace

class tst_ConnectionManager : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        QVERIFY(m_dir.isValid());
    }

    void init()
    {
        m_store.reset(new OrvexProfileStore(m_dir.filePath(uniqueName() + QStringLiteral(".ini"))));
        QVERIFY(m_store->load());
        m_manager.reset(new OrvexConnectionManager(m_store.data(), 45123));
        m_name = uniqueName();
        QString error;
        QVERIFY2(m_manager->start(m_name, &error), qPrintable(error));
        orvexLoginData::setServerNameOverride(m_name);
    }

    void cleanup()
    {
        QLoggingCategory::setFilterRules(QString());
        m_manager.reset();
        orvexLoginData::setServerNameOverride(QString());
    }

    void defaultProfileFile()
    {
        const QString file = m_dir.filePath(QStringLiteral("sub/dir/profiles.ini"));
        OrvexProfileStore store(file);
        QVERIFY(store.load());
        QCOMPARE(store.profiles(), QList<orvexProfileData>{OrvexProfileStore::defaultProfile()});
        OrvexProfileStore again(file); // written, and read back the same
        QVERIFY(again.load());
        QCOMPARE(again.profiles(), store.profiles());
    }

    // A profile whose archive is on a server: the address fills what the file leaves open.
    void serverProfile()
    {
        const QString file = m_dir.filePath(QStringLiteral("server.ini"));
        {
            QSettings settings(file, QSettings::IniFormat);
            settings.beginWriteArray(QStringLiteral("profiles"), 2);
            settings.setArrayIndex(0);
            settings.setValue(QStringLiteral("id"), 1);
            settings.setValue(QStringLiteral("dataPath"), QStringLiteral("/srv/orvex/archive"));
            settings.setArrayIndex(1);
            settings.setValue(QStringLiteral("id"), 2);
            settings.setValue(QStringLiteral("active"), true);
            settings.setValue(QStringLiteral("userName"), QStringLiteral("anna"));
            settings.setValue(QStringLiteral("dataPath"), QStringLiteral("postgresql://team@db.example.org:5433/orvex"));
            settings.endArray();
        }
        OrvexProfileStore store(file);
        QVERIFY(store.load());
        const orvexProfileData server = store.profiles().at(1);
        QCOMPARE(QStringList({server.serverHost, QString::number(server.serverPort), server.userName, server.archives.join(',')}),
                 QStringList({"db.example.org", "5433", "anna", "orvex"}));
        QCOMPARE(store.profiles().at(0).serverHost, QString());
        // The document server serves the active profile's archive.
        QCOMPARE(store.activeArchive(), QStringLiteral("postgresql://team@db.example.org:5433/orvex"));
    }

    void answersTheClient()
    {
        orvexLoginData login;
        QCOMPARE(login.getDNDPort(), 45123);

        QSignalSpy used(m_manager.data(), &OrvexConnectionManager::profileUsed);
        orvexProfileData profile;
        QString error;
        QVERIFY2(login.getProfileById(profile, error, 1), qPrintable(error));
        QCOMPARE(profile, m_store->profiles().constFirst());
        QTRY_COMPARE(used.count(), 1);
        QCOMPARE(used[0], QVariantList({qint64(QCoreApplication::applicationPid()), qint64(1),
                                         QCoreApplication::applicationFilePath(), true}));
        QVERIFY(!login.getProfileById(profile, error, 99));

        QSignalSpy reloaded(m_manager.data(), &OrvexConnectionManager::profileReloaded);
        login.reloadProfile(1);
        login.reloadProfile(42);
        QCOMPARE(reloaded, QList<QVariantList>({{qint64(1), true}, {qint64(42), false}}));

        QSignalSpy chat(m_manager.data(), &OrvexConnectionManager::chatRequested);
        login.openChat(7, QStringLiteral("Grüße"), QStringLiteral("zweiter"));
        QCOMPARE(chat, QList<QVariantList>({{qint64(7), QStringLiteral("Grüße"), QStringLiteral("zweiter")}}));
    }

    void rawRequests_data()
    {
        QTest::addColumn<QList<QByteArray>>("pieces");
        QTest::addColumn<QByteArray>("reply");
        QTest::addColumn<int>("invalid");
        QTest::newRow("port in pieces") << QList<QByteArray>{"GETDN", "DPORT"} << QByteArray("45123\n") << 0;
        QTest::newRow("reload unknown") << QList<QByteArray>{"RELOADPROFILE#4", "2\r\n"}
                                        << QByteArray("UNKNOWN PROFILE\n") << 0;
        QTest::newRow("use, second form: no reply") << QList<QByteArray>{"USEPROFILE#77#1#/bin/a#b\r\n"}
                                                    << QByteArray() << 0;
        QTest::newRow("unknown word") << QList<QByteArray>{"HELLO\r\n"} << QByteArray("ERROR\n") << 1;
        QTest::newRow("endless line") << QList<QByteArray>{"GETPROFILES", QByteArray(70000, 'S')}
                                      << QByteArray("ERROR\n") << 1;
        // Regression: a line over the limit was taken when its end came with it.
        QTest::newRow("whole line over the limit") << QList<QByteArray>{"USEPROFILE#77#1#" + QByteArray(70000, 'p') + "\r\n"}
                                                   << QByteArray("ERROR\n") << 1;
    }

    void rawRequests()
    {
        QFETCH(QList<QByteArray>, pieces);
        QFETCH(QByteArray, reply);
        QFETCH(int, invalid);
        QSignalSpy refused(m_manager.data(), &OrvexConnectionManager::invalidRequest);
        QSignalSpy used(m_manager.data(), &OrvexConnectionManager::profileUsed);
        QCOMPARE(exchange(m_name, pieces), reply);
        QCOMPARE(refused.count(), invalid);
        if (pieces[0].startsWith("USEPROFILE") && !invalid) {
            QTRY_COMPARE(used.count(), 1);
            QCOMPARE(used[0], QVariantList({qint64(77), qint64(1), QStringLiteral("/bin/a#b"), false}));
        }
        QCOMPARE(orvexLoginData().getDNDPort(), 45123); // still serving
    }

    // Regression: a client that sent 200,000 GETPROFILES without reading made
    // the Connection Manager buffer 64 MB of replies.
    void clientThatDoesNotReadIsDropped()
    {
        QLoggingCategory::setFilterRules(QStringLiteral("orvex.connectionmanager.info=false")); // a line per request
        m_manager->setDrainTimeout(300);
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("CLIENT DROPPED: \\d+ bytes of replies unread")));
        QSignalSpy dropped(m_manager.data(), &OrvexConnectionManager::clientDropped);
        QSignalSpy listed(m_manager.data(), &OrvexConnectionManager::profilesListed);
        QLocalSocket socket;
        socket.setReadBufferSize(1024); // Qt would take every reply off the connection
        socket.connectToServer(m_name);
        QVERIFY(socket.waitForConnected(5000));
        socket.write(QByteArray("GETPROFILES\r\n").repeated(200000));
        QTRY_COMPARE_WITH_TIMEOUT(dropped.count(), 1, 30000);
        QVERIFY(dropped[0][0].toLongLong() <= OrvexConnectionManager::MaxUnreadReplies + replySize());
        QVERIFY(listed.count() < 200000);
        QTRY_COMPARE(socket.state(), QLocalSocket::UnconnectedState);
        QCOMPARE(orvexLoginData().getDNDPort(), 45123); // the others are still served
    }

    void requestsWaitForAClientThatReadsLate()
    {
        QLoggingCategory::setFilterRules(QStringLiteral("orvex.connectionmanager.info=false"));
        constexpr int count = 20000; // several times MaxUnreadReplies of replies
        QSignalSpy dropped(m_manager.data(), &OrvexConnectionManager::clientDropped);
        QLocalSocket socket;
        socket.setReadBufferSize(1024);
        socket.connectToServer(m_name);
        QVERIFY(socket.waitForConnected(5000));
        socket.write(QByteArray("GETPROFILES\r\n").repeated(count));
        QTest::qWait(200); // the replies pile up unread meanwhile
        socket.setReadBufferSize(0);
        QByteArray received;
        const qint64 expected = qint64(count) * replySize();
        QElapsedTimer timer;
        timer.start();
        while (received.size() < expected && timer.elapsed() < 30000 && socket.state() == QLocalSocket::ConnectedState) {
            QTest::qWait(5); // the manager runs on this thread too
            received += socket.readAll();
        }
        QCOMPARE(qint64(received.size()), expected);
        QCOMPARE(dropped.count(), 0);
    }

    void executable()
    {
        const QString bin = QCoreApplication::applicationDirPath() + QStringLiteral("/orvexconnectionmanager");
        const QString name = uniqueName();
        const QStringList args = {"--name", name, "--profiles", m_dir.filePath(QStringLiteral("exe.ini"))};
        QProcess first;
        first.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        first.start(bin, args + QStringList{"--port", "45130"});
        QVERIFY(first.waitForStarted(15000));
        orvexLoginData::setServerNameOverride(name);
        orvexLoginData login;
        login.setWaitInterval(20);
        QTRY_COMPARE_WITH_TIMEOUT(login.getDNDPort(), 45130, 15000);

        QProcess second; // also refused while the first is busy with nobody
        second.start(bin, args);
        QVERIFY(second.waitForFinished(15000));
        QCOMPARE(second.exitCode(), 1);
        QVERIFY(second.readAllStandardError().contains("already running"));
        QCOMPARE(login.getDNDPort(), 45130);

        first.terminate(); // SIGTERM: a clean exit that frees the name
        QVERIFY(first.waitForFinished(15000));
        QCOMPARE(first.exitCode(), 0);
        QVERIFY(!QFile::exists(QDir::tempPath() + QLatin1Char('/') + name));
        second.start(bin, args + QStringList{"--port", "70000"});
        QVERIFY(second.waitForFinished(15000));
        QCOMPARE(second.exitCode(), 2); // invalid port
    }


private:
    qint64 replySize() const
    {
        return OrvexConnectionManager::profileListReply(OrvexConnectionManager::replyHeader(), m_store->profiles()).size();
    }

    QTemporaryDir m_dir;
    QScopedPointer<OrvexProfileStore> m_store;
    QScopedPointer<OrvexConnectionManager> m_manager;
    QString m_name;
};

QTEST_GUILESS_MAIN(tst_ConnectionManager)
#include "tst_connectionmanager.moc"
