// orvexhost as a program: what it says and how it exits when it cannot start.
#include "hostprocess.h"

#include <QtTest>

class tst_HostProcess : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void failures_data();
    void failures();
    void help();

private:
    QTemporaryDir m_scratch;
};

void tst_HostProcess::initTestCase()
{
    QVERIFY2(QFileInfo(HostProcess::hostPath()).isExecutable(), qPrintable(HostProcess::hostPath()));
    QVERIFY(m_scratch.isValid());
    QFile blocker(m_scratch.filePath(QStringLiteral("a-file")));
    QVERIFY(blocker.open(QIODevice::WriteOnly));
}

void tst_HostProcess::failures_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QString>("message"); // part of stderr

    const QString archive = m_scratch.filePath(QStringLiteral("archive"));
    const QString shot = m_scratch.filePath(QStringLiteral("never.png"));
    // Also guards against an option name that QApplication swallows (it did with --plugin).
    QTest::newRow("missing plugin")
        << QStringList{QStringLiteral("--archive"), archive, QStringLiteral("--workbench"),
                       m_scratch.filePath(QStringLiteral("libnothing.so")), QStringLiteral("--screenshot"), shot}
        << 3 << QStringLiteral("libnothing.so does not exist");
    QTest::newRow("plugin is no library")
        << QStringList{QStringLiteral("--archive"), archive, QStringLiteral("--workbench"),
                       m_scratch.filePath(QStringLiteral("a-file")), QStringLiteral("--screenshot"), shot}
        << 3 << QStringLiteral("could not be loaded");
    QTest::newRow("archive folder cannot be made")
        << QStringList{QStringLiteral("--archive"), m_scratch.filePath(QStringLiteral("a-file/archive")),
                       QStringLiteral("--screenshot"), shot}
        << 2 << QStringLiteral("a-file/archive could not be opened");
    QTest::newRow("bad timeout") << QStringList{QStringLiteral("--timeout"), QStringLiteral("never")} << 1
                                 << QStringLiteral("\"never\"");
    QTest::newRow("unknown option") << QStringList{QStringLiteral("--colour=red")} << 1
                                    << QStringLiteral("colour");
}

void tst_HostProcess::failures()
{
    QFETCH(QStringList, arguments);
    QFETCH(int, exitCode);
    QFETCH(QString, message);

    QFile::remove(m_scratch.filePath(QStringLiteral("never.png")));
    HostProcess host;
    const HostProcess::Result result = host.run(arguments, 120000);
    QVERIFY2(result.finished, HostProcess::describe(result).constData());
    QCOMPARE(result.exitStatus, QProcess::NormalExit);
    QVERIFY2(result.exitCode == exitCode, HostProcess::describe(result).constData());
    // The reason is on stderr, in one line of the host's own.
    QVERIFY2(!HostProcess::messageLine(result, message).isEmpty(), HostProcess::describe(result).constData());
    QVERIFY2(!result.out.contains(message), HostProcess::describe(result).constData());
    QVERIFY(!QFile::exists(m_scratch.filePath(QStringLiteral("never.png"))));
}

void tst_HostProcess::help()
{
    HostProcess host;
    const HostProcess::Result result = host.run({QStringLiteral("--help")}, 60000);
    QVERIFY2(result.finished && result.exitCode == 0, HostProcess::describe(result).constData());
    for (const char *option : {"--archive", "--screenshot", "--timeout", "--workbench"})
        QVERIFY2(result.out.contains(QLatin1String(option)), HostProcess::describe(result).constData());
}

QTEST_GUILESS_MAIN(tst_HostProcess)
#include "tst_hostprocess.moc"
