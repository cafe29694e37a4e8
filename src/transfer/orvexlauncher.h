#pragma once

#include "orvexworkbenchglobal.h"

#include <QObject>
#include <QString>
#include <QStringList>
#include <QTimer>

class QProcess;

// Runs a desktop program for the user (the viewer of a document through
// xdg-open, the mail program) and finds out, without blocking the GUI, whether
// it worked:
// - a program that is not there or cannot be started has failed;
// - a program that exits has worked only with exit code 0;
// - a program still running after the grace period has started: launchers may
//   run the viewer themselves and return only once it is closed.
// finished() comes exactly once, and never before the call that started the
// program has returned. A program still running when its launcher goes is
// left running: it may be the viewer the user is reading in.
class ORVEXWORKBENCH_EXPORT OrvexLauncher : public QObject
{
    Q_OBJECT

public:
    enum class Purpose { OpenFile, Mail };
    static constexpr int DefaultGracePeriodMs = 5000;
    // The desktop's launchers, looked up in PATH.
    static const char *const OpenProgram;
    static const char *const MailProgram;

    explicit OrvexLauncher(Purpose purpose, QObject *parent = nullptr);
    ~OrvexLauncher() override;

    // What the program is run for (a file, or the mail's attachments), for the messages.
    void setSubject(const QString &subject);
    QString subject() const;
    void setGracePeriod(int milliseconds);

    // Starts program (a name looked up in PATH, or a path) with arguments.
    void start(const QString &program, const QStringList &arguments);

    // Programs left running by launchers that have gone; each is counted
    // until it ends and its process object is deleted.
    static int programsRunningOn();

    bool isFinished() const { return m_finished; }
    bool succeeded() const { return m_finished && m_error.isEmpty(); }
    // Why it failed, in the user's words, naming what is missing; empty on success.
    QString errorString() const { return m_error; }

signals:
    void finished(bool ok, const QString &error);

private:
    void exited(int exitCode, bool crashed);
    void notStarted(const QString &reason);
    void finish(const QString &error);
    // Lets the program run on without this launcher.
    void release();
    static QString unableToStartMail();
    // The program, for messages: its file name.
    QString programName() const;

    Purpose m_purpose;
    QString m_subject;
    QString m_program;
    QProcess *m_process = nullptr;
    QTimer m_grace;
    bool m_finished = false;
    QString m_error;
};
