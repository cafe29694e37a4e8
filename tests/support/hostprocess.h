#pragma once

#include <QCoreApplication>
#include <QMap>
#include <QProcess>
#include <QTemporaryDir>

// Runs build/bin/orvexhost, or another program, as a separate process, with
// configuration, data, cache and runtime folders of its own so that a run never
// touches the user's.
class HostProcess
{
public:
    explicit HostProcess(const QString &program = QCoreApplication::applicationDirPath() + QStringLiteral("/orvexhost"))
        : m_program(program)
    {
    }

    // Changes the environment the program starts with: an empty value removes the variable.
    void setVariable(const QString &name, const QString &value = QString()) { m_variables.insert(name, value); }

    struct Result
    {
        bool finished = false;
        int exitCode = -1;
        QProcess::ExitStatus exitStatus = QProcess::NormalExit;
        QString out;
        QString err;
    };

    Result run(const QStringList &arguments, int timeoutMs)
    {
        QProcess process;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        for (const char *name : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME"})
            env.insert(QLatin1String(name), m_home.filePath(QLatin1String(name)));
        env.insert(QStringLiteral("XDG_RUNTIME_DIR"), m_home.path()); // private (0700), as Qt wants it
        env.remove(QStringLiteral("ORVEX_ARCHIVE_DIR"));
        for (auto it = m_variables.cbegin(); it != m_variables.cend(); ++it) {
            if (it.value().isEmpty())
                env.remove(it.key());
            else
                env.insert(it.key(), it.value());
        }
        process.setProcessEnvironment(env);
        process.start(m_program, arguments);
        Result result;
        result.finished = process.waitForFinished(timeoutMs);
        if (!result.finished)
            process.kill();
        process.waitForFinished(10000);
        result.exitCode = process.exitCode();
        result.exitStatus = process.exitStatus();
        result.out = QString::fromLocal8Bit(process.readAllStandardOutput());
        result.err = QString::fromLocal8Bit(process.readAllStandardError());
        return result;
    }

    // The host's own line (it starts with "orvexhost: ") that contains text.
    static QString messageLine(const QString &output, const QString &text)
    {
        for (const QString &line : output.split(QLatin1Char('\n'))) {
            if (line.startsWith(QLatin1String("orvexhost: ")) && line.contains(text))
                return line;
        }
        return {};
    }

    static QByteArray describe(const Result &result)
    {
        return QStringLiteral("finished=%1 exit=%2 crashed=%3\nstdout:\n%4\nstderr:\n%5")
            .arg(result.finished)
            .arg(result.exitCode)
            .arg(result.exitStatus == QProcess::CrashExit)
            .arg(result.out, result.err.right(4000))
            .toLocal8Bit();
    }

private:
    QString m_program;
    QTemporaryDir m_home;
    QMap<QString, QString> m_variables;
};
