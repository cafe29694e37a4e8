#pragma once

#include "orvexworkbenchglobal.h"

#include <QAction>
#include <QEvent>
#include <QPointer>
#include <QString>

class QObject;

// A short message for the host to show transiently (a "snackbar"). The
// workbench posts it; the host picks it up, typically with an event filter on
// the application object, and shows getText().
//
// A message may offer an action, such as "Undo": the host then shows a button
// with the action's text beside the message, keeps both while the action
// exists and triggers the action when the button is pressed. The action
// belongs to the sender, which deletes it when the offer ends; the host then
// takes the message and the button away.
class ORVEXWORKBENCH_EXPORT QSnackbarEvent : public QEvent
{
public:
    explicit QSnackbarEvent(const QString &text = QString());
    ~QSnackbarEvent() override;

    // The event type, registered with Qt once per process.
    static QEvent::Type snackbarType();

    QString getText() const;
    void setText(const QString &text);
    QAction *action() const;
    void setAction(QAction *action);

    // Posts a copy of this event to the receiver, or to the application object
    // when none is given. Does nothing without a receiver and application.
    void send(QObject *receiver = nullptr) const;

private:
    QString m_text;
    QPointer<QAction> m_action;
};
