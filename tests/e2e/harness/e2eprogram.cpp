#include "e2eprogram.h"

#include <QDeadlineTimer>
#include <QThread>

#include <csignal>
#include <sys/types.h>
#include <unistd.h>

namespace {
// Its own process group, so that stop() reaches what the program starts
// (the D-Bus session activates the accessibility bus and registry).
class GroupProcess : public QProcess
{
protected:
    void setupChildProcess() override { ::setpgid(0, 0); }
};
} // namespace

E2eProgram::E2eProgram(const QString &name)
    : m_name(name)
{
}

E2eProgram::~E2eProgram()
{
    stop();
}

bool E2eProgram::start(const QString &program, const QStringList &arguments, const QProcessEnvironment &env,
                       const QString &logFile, bool keepStdout)
{
    stop();
    m_logFile = logFile;
    m_process = new GroupProcess;
    m_process->setProcessEnvironment(env);
    m_process->setStandardErrorFile(logFile, QIODevice::Append);
    if (!keepStdout)
        m_process->setStandardOutputFile(logFile, QIODevice::Append);
    m_process->start(program, arguments);
    if (!m_process->waitForStarted(10000)) {
        delete m_process;
        m_process = nullptr;
        return false;
    }
    return true;
}

void E2eProgram::stop(int timeoutMs)
{
    if (!m_process)
        return;
    const qint64 group = m_process->processId();
    if (m_process->state() != QProcess::NotRunning && group > 0) {
        ::kill(pid_t(-group), SIGTERM);
        if (!m_process->waitForFinished(timeoutMs)) {
            ::kill(pid_t(-group), SIGKILL);
            m_process->waitForFinished(5000);
        }
    }
    // Children that outlived the leader (a bus launcher) get the same signal.
    if (group > 0 && ::kill(pid_t(-group), 0) == 0) {
        ::kill(pid_t(-group), SIGTERM);
        QThread::msleep(200);
        ::kill(pid_t(-group), SIGKILL);
    }
    delete m_process;
    m_process = nullptr;
}

bool E2eProgram::isRunning() const
{
    return m_process && m_process->state() == QProcess::Running;
}

QString E2eProgram::readLine(int timeoutMs)
{
    if (!m_process)
        return {};
    QDeadlineTimer deadline(timeoutMs);
    while (!m_process->canReadLine()) {
        if (deadline.hasExpired() || m_process->state() == QProcess::NotRunning)
            return {};
        m_process->waitForReadyRead(int(qMax<qint64>(1, deadline.remainingTime())));
    }
    return QString::fromLocal8Bit(m_process->readLine()).trimmed();
}

qint64 E2eProgram::pid() const
{
    return m_process ? m_process->processId() : 0;
}
