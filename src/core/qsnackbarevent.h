#pragma once

#include "orvexworkbenchglobal.h"

#include <QEvent>
#include <QString>

class QObject;

// A short message for the host to show transiently (a "snackbar"). The
// workbench posts it; the host picks it up, typically with an event filter on
// the application object, and shows getText().
class ORVEXWORKBENCH_EXPORT QSnackbarEvent : public QEvent
{
public:
    explicit QSnackbarEvent(const QString &text = QString());
    ~QSnackbarEvent() override;

    // The event type, registered with Qt once per process.
    static QEvent::Type snackbarType();

    QString getText() const;
    void setText(const QString &text);

    // Posts a copy of this event to the receiver, or to the application object
    // when none is given. Does nothing without a receiver and application.
    void send(QObject *receiver = nullptr) const;

private:
    QString m_text;
};
