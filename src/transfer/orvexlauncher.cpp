#include "orvexlauncher.h"

#include "orvexlog.h"

#include <QFileInfo>
#include <QMutex>
#include <QProcess>
#include <QSet>
#include <QStandardPaths>

namespace {
// The processes of programs that run on after their launcher, until they end.
QMutex g_runningOnMutex;
QSet<QProcess *> g_runningOn;
} // namespace

const char *const OrvexLauncher::OpenProgram = "xdg-open";
const char *const OrvexLauncher::MailProgram = "xdg-email";

OrvexLauncher::OrvexLauncher(Purpose purpose, QObject *parent)
    : QObject(parent), m_purpose(purpose)
{
    m_grace.setSingleShot(true);
    m_grace.setInterval(DefaultGracePeriodMs);
    connect(&m_grace, &QTimer::timeout, this, [this] {
        orvexDebug() << "LAUNCHER RUNS ON" << m_program;
        release();
        finish(QString());
    });
}

OrvexLauncher::~OrvexLauncher()
{
    release();
}

void OrvexLauncher::setSubject(const QString &subject)
{
    m_subject = subject;
}

QString OrvexLauncher::subject() const
{
    return m_subject;
}

void OrvexLauncher::setGracePeriod(int milliseconds)
{
    m_grace.setInterval(milliseconds);
}

QString OrvexLauncher::unableToStartMail()
{
    return tr("The e-mail could not be created, unable to start Mail-Client!");
}

QString OrvexLauncher::programName() const
{
    return QFileInfo(m_program).fileName();
}

void OrvexLauncher::start(const QString &program, const QStringList &arguments)
{
    m_program = program;
    const QString path = program.contains(QLatin1Char('/')) ? program : QStandardPaths::findExecutable(program);
    if (path.isEmpty() || !QFileInfo(path).isFile()) {
        orvexWarning() << "LAUNCHER NOT FOUND" << program;
        const QString name = programName();
        QString error;
        if (m_purpose == Purpose::Mail) {
            error = program == QLatin1String(MailProgram)
                ? tr("No mail program is set up (%1).").arg(name)
                : unableToStartMail() + QLatin1Char(' ') + tr("%1 was not found.").arg(program);
        } else {
            const QString suffix = QFileInfo(m_subject).suffix();
            error = suffix.isEmpty() ? tr("No program to open %1 is set up (%2).")
                                           .arg(QFileInfo(m_subject).fileName(), name)
                                     : tr("No program to open %1 files is set up (%2).").arg(suffix.toUpper(), name);
        }
        // Told once the caller has returned, like every other outcome.
        QTimer::singleShot(0, this, [this, error] { finish(error); });
        return;
    }

    m_process = new QProcess;
    // No pipes: a viewer left running must never block on a full one.
    m_process->setStandardOutputFile(QProcess::nullDevice());
    m_process->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process->setStandardInputFile(QProcess::nullDevice());
    connect(m_process, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            notStarted(m_process->errorString());
    });
    connect(m_process, qOverload<int, QProcess::ExitStatus>(&QProcess::finished), this,
            [this](int exitCode, QProcess::ExitStatus status) { exited(exitCode, status == QProcess::CrashExit); });
    orvexDebug() << "LAUNCHER START" << path << arguments;
    m_process->start(path, arguments);
    m_grace.start();
}

void OrvexLauncher::notStarted(const QString &reason)
{
    orvexWarning() << "LAUNCHER NOT STARTED" << m_program << reason;
    const QString name = programName();
    const QString error = m_purpose == Purpose::Mail
        ? unableToStartMail() + QLatin1Char(' ') + tr("%1 could not be started (%2).").arg(name, reason)
        : tr("%1 could not be opened: %2 could not be started (%3).")
              .arg(QFileInfo(m_subject).fileName(), name, reason);
    // Errors come from inside QProcess::start: report on a fresh turn.
    QTimer::singleShot(0, this, [this, error] { finish(error); });
}

void OrvexLauncher::exited(int exitCode, bool crashed)
{
    orvexDebug() << "LAUNCHER EXITED" << m_program << exitCode << (crashed ? "crashed" : "");
    if (!crashed && exitCode == 0) {
        finish(QString());
        return;
    }
    const QString name = programName();
    const QString file = QFileInfo(m_subject).fileName();
    QString error;
    if (m_purpose == Purpose::Mail)
        error = crashed ? tr("The mail program %1 crashed.").arg(name)
                        : tr("The mail program %1 ended with exit code %2.").arg(name).arg(exitCode);
    else
        error = crashed ? tr("%1 could not be opened: %2 crashed.").arg(file, name)
                        : tr("%1 could not be opened: %2 ended with exit code %3.").arg(file, name).arg(exitCode);
    finish(error);
}

void OrvexLauncher::finish(const QString &error)
{
    if (m_finished)
        return;
    m_finished = true;
    m_error = error;
    m_grace.stop();
    emit finished(error.isEmpty(), error);
}

void OrvexLauncher::release()
{
    if (!m_process)
        return;
    QProcess *process = m_process;
    m_process = nullptr;
    process->disconnect(this);
    if (process->state() == QProcess::NotRunning) {
        process->deleteLater();
        return;
    }
    // Deleting a QProcess ends its program: it goes once the program has.
    {
        QMutexLocker locker(&g_runningOnMutex);
        g_runningOn.insert(process);
    }
    connect(process, &QObject::destroyed, [process] {
        QMutexLocker locker(&g_runningOnMutex);
        g_runningOn.remove(process);
    });
    connect(process, qOverload<int, QProcess::ExitStatus>(&QProcess::finished), process, &QObject::deleteLater);
}

int OrvexLauncher::programsRunningOn()
{
    QMutexLocker locker(&g_runningOnMutex);
    return g_runningOn.size();
}
