#pragma once

#include "orvexworkbenchglobal.h"

#include <QAction>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QTimer>

#include <functional>

// A removal the user may still take back. The removal is shown at once, but
// what makes it final (the server call) waits: offer() tells the user in the
// status bar (a snackbar message with an "Undo" action) and then exactly one
// of the two happens:
// - the user takes the action in time: undo runs;
// - the time is up, or commitNow() is called (the workbench closes): commit runs.
// Either way the action goes, which ends the offer in the host's status bar,
// and the offer deletes itself later.
class ORVEXWORKBENCH_EXPORT OrvexUndoOffer : public QObject
{
    Q_OBJECT

public:
    static constexpr int DefaultMilliseconds = 10000;

    OrvexUndoOffer(const QString &message, std::function<void()> commit, std::function<void()> undo,
                   QObject *parent = nullptr);
    ~OrvexUndoOffer() override;

    // How long the offer stands; tests shorten it.
    static void setMilliseconds(int milliseconds);
    static int milliseconds();

    // Posts the message with its action and starts the time.
    void offer();
    void commitNow();
    void undo();
    bool isSettled() const { return m_settled; }
    QString message() const { return m_message; }
    QAction *action() const { return m_action; }

signals:
    // After commit or undo has run.
    void settled(bool undone);

private:
    void settle(bool undone);

    QString m_message;
    std::function<void()> m_commit;
    std::function<void()> m_undo;
    QPointer<QAction> m_action;
    QTimer m_timer;
    bool m_settled = false;
};
