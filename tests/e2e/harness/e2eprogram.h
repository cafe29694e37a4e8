#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>

// One program of a real-input test (X server, window manager, host...). Its
// output goes to a log file; stop() ends it and every process it started in
// its own process group, so that nothing outlives the test.
class E2eProgram
{
public:
    explicit E2eProgram(const QString &name);
    ~E2eProgram();
    E2eProgram(const E2eProgram &) = delete;
    E2eProgram &operator=(const E2eProgram &) = delete;

    // Starts program with arguments and env; stdout stays readable (for
    // programs that report an address or display there), stderr goes to the
    // log. False when it could not be started.
    bool start(const QString &program, const QStringList &arguments, const QProcessEnvironment &env,
               const QString &logFile, bool keepStdout = false);
    // SIGTERM to its process group, SIGKILL after timeoutMs.
    void stop(int timeoutMs = 5000);
    bool isRunning() const;
    // Reads one line of stdout, waiting up to timeoutMs; empty on timeout or exit.
    QString readLine(int timeoutMs);
    QString name() const { return m_name; }
    QString logFile() const { return m_logFile; }
    qint64 pid() const;

private:
    QString m_name;
    QString m_logFile;
    QProcess *m_process = nullptr;
};
