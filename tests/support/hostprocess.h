#pragma once

#include <QCoreApplication>
#include <QDir>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTemporaryDir>

// Runs build/bin/orvexhost as a separate process, with configuration, data and
// cache folders of its own so that a run never touches the user's.
class HostProcess
{
public:
    struct Result
    {
        bool started = false;
        bool finished = false;
        int exitCode = -1;
        QProcess::ExitStatus exitStatus = QProcess::NormalExit;
        QString out;
        QString err;
    };

    static QString hostPath()
    {
        return QDir(QCoreApplication::applicationDirPath()).filePath(QStringLiteral("orvexhost"));
    }

    // Where the run keeps its settings and data; fresh per HostProcess.
    QString homeFolder() const { return m_home.path(); }

    Result run(const QStringList &arguments, int timeoutMs = 180000)
    {
        QProcess process;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("XDG_CONFIG_HOME"), m_home.filePath(QStringLiteral("config")));
        env.insert(QStringLiteral("XDG_DATA_HOME"), m_home.filePath(QStringLiteral("data")));
        env.insert(QStringLiteral("XDG_CACHE_HOME"), m_home.filePath(QStringLiteral("cache")));
        env.insert(QStringLiteral("XDG_RUNTIME_DIR"), m_home.path()); // private (0700), as Qt wants it
        env.insert(QStringLiteral("QT_LOGGING_RULES"), QStringLiteral("orvex.workbench.debug=false"));
        env.remove(QStringLiteral("ORVEX_ARCHIVE_DIR"));
        process.setProcessEnvironment(env);
        process.start(hostPath(), arguments);

        Result result;
        result.started = process.waitForStarted(30000);
        if (result.started) {
            result.finished = process.waitForFinished(timeoutMs);
            if (!result.finished) {
                process.kill();
                process.waitForFinished(10000);
            }
        }
        result.exitCode = process.exitCode();
        result.exitStatus = process.exitStatus();
        result.out = QString::fromLocal8Bit(process.readAllStandardOutput());
        result.err = QString::fromLocal8Bit(process.readAllStandardError());
        return result;
    }

    // The line of the host's own message (it starts with "orvexhost: ") that
    // contains text, or an empty string.
    static QString messageLine(const Result &result, const QString &text)
    {
        const QStringList lines = (result.err + QLatin1Char('\n') + result.out).split(QLatin1Char('\n'));
        for (const QString &line : lines) {
            if (line.startsWith(QLatin1String("orvexhost: ")) && line.contains(text))
                return line;
        }
        return {};
    }

    // A readable account of a run for failure messages.
    static QByteArray describe(const Result &result)
    {
        return QStringLiteral("started=%1 finished=%2 exit=%3 crashed=%4\nstdout:\n%5\nstderr:\n%6")
            .arg(result.started)
            .arg(result.finished)
            .arg(result.exitCode)
            .arg(result.exitStatus == QProcess::CrashExit)
            .arg(result.out, result.err.right(4000))
            .toLocal8Bit();
    }

private:
    QTemporaryDir m_home;
};
