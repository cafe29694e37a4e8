// orvexhost as a program: how it exits, and what it says, when it cannot start.
#include "hostprocess.h"

#include <QLibraryInfo>
#include <QtTest>

class tst_HostProcess : public QObject
{
    Q_OBJECT

private slots:
    void failures_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<QString>("message"); // part of the host's line on stderr

        QFile blocker(m_scratch.filePath(QStringLiteral("a-file")));
        QVERIFY(blocker.open(QIODevice::WriteOnly));
        const QStringList archive{QStringLiteral("--archive"), m_scratch.filePath(QStringLiteral("archive")),
                                  QStringLiteral("--screenshot"), m_scratch.filePath(QStringLiteral("never.png"))};
        const QString workbench = QStringLiteral("--workbench");
        // Also guards against an option name that QApplication swallows (it did with --plugin).
        QTest::newRow("missing plugin") << archive + QStringList{workbench, m_scratch.filePath(QStringLiteral("libno.so"))}
                                        << 3 << QStringLiteral("libno.so does not exist");
        QTest::newRow("plugin is no library") << archive + QStringList{workbench, blocker.fileName()} << 3
                                              << QStringLiteral("could not be loaded");
        const QString svgPlugin = QLibraryInfo::location(QLibraryInfo::PluginsPath) + QStringLiteral("/imageformats/libqsvg.so");
        if (QFile::exists(svgPlugin))
            QTest::newRow("another Qt plugin") << archive + QStringList{workbench, svgPlugin} << 3
                                               << QStringLiteral("not a document plugin");
        QTest::newRow("archive folder cannot be made")
            << QStringList{QStringLiteral("--archive"), m_scratch.filePath(QStringLiteral("a-file/archive"))} << 2
            << QStringLiteral("a-file/archive could not be opened");
        QTest::newRow("malformed server address")
            << QStringList{QStringLiteral("--archive"), QStringLiteral("postgresql://anna@db.example.org:0/orvex")} << 1
            << QStringLiteral("no valid port");
        // A server that is not there: the reason, never a hang.
        QTest::newRow("server not reachable")
            << QStringList{QStringLiteral("--archive"), QStringLiteral("postgresql://anna@/orvex?host=%1&connect_timeout=5").arg(m_scratch.path())}
            << 2 << QStringLiteral("Cannot connect to the archive server");
        QTest::newRow("bad timeout") << QStringList{QStringLiteral("--timeout"), QStringLiteral("never")} << 1
                                     << QStringLiteral("\"never\"");
        QTest::newRow("unknown option") << QStringList{QStringLiteral("--colour=red")} << 1 << QStringLiteral("colour");
    }

    void failures()
    {
        QFETCH(QStringList, arguments);
        QFETCH(int, exitCode);
        QFETCH(QString, message);

        HostProcess host;
        const HostProcess::Result result = host.run(arguments, 120000);
        QVERIFY2(result.finished && result.exitStatus == QProcess::NormalExit && result.exitCode == exitCode,
                 HostProcess::describe(result).constData());
        QVERIFY2(!HostProcess::messageLine(result.err, message).isEmpty(), HostProcess::describe(result).constData());
        QVERIFY(!QFile::exists(m_scratch.filePath(QStringLiteral("never.png"))));
    }

    void textWithoutDisplay_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("language");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<QString>("out"); // part of stdout

        // Failed before: without a display the host aborted before it looked at its arguments.
        QTest::newRow("help") << QStringList{QStringLiteral("--help")} << "C" << 0 << "--archive <DIR|ADDRESS>";
        QTest::newRow("short help, with a wrong option") << QStringList{QStringLiteral("-h"), QStringLiteral("--colour")}
                                                         << "C" << 0 << "--screenshot <FILE>";
        QTest::newRow("version") << QStringList{QStringLiteral("--version")} << "C" << 0 << "orvexhost " ORVEXHOST_VERSION;
        QTest::newRow("German help") << QStringList{QStringLiteral("--help")} << "de_DE.UTF-8" << 0 << "Archivordner";
        QTest::newRow("German help, Qt's words") << QStringList{QStringLiteral("--help")} << "de_DE.UTF-8" << 0
                                                 << "Optionen:";
    }

    void textWithoutDisplay()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, language);
        QFETCH(int, exitCode);
        QFETCH(QString, out);

        HostProcess host;
        for (const char *name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM", "LC_ALL", "LC_MESSAGES", "LANGUAGE"})
            host.setVariable(QLatin1String(name));
        host.setVariable(QStringLiteral("LANG"), language);
        const HostProcess::Result result = host.run(arguments, 60000);
        QVERIFY2(result.finished && result.exitStatus == QProcess::NormalExit && result.exitCode == exitCode,
                 HostProcess::describe(result).constData());
        QVERIFY2(result.out.contains(out), HostProcess::describe(result).constData());
    }

private:
    QTemporaryDir m_scratch;
};

QTEST_GUILESS_MAIN(tst_HostProcess)
#include "tst_hostprocess.moc"
