#pragma once

#include "qsnackbarevent.h"

#include <QCoreApplication>
#include <QObject>
#include <QStringList>

// Collects the snackbar messages posted while it lives, as "app:<text>" for
// those sent to the application (where a host picks them up) and
// "object:<text>" for those sent to another receiver.
class SnackbarCatcher : public QObject
{
public:
    SnackbarCatcher() { QCoreApplication::instance()->installEventFilter(this); }
    ~SnackbarCatcher() override { QCoreApplication::instance()->removeEventFilter(this); }

    QStringList texts;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QSnackbarEvent::snackbarType()) {
            texts << (watched == QCoreApplication::instance() ? QStringLiteral("app:") : QStringLiteral("object:"))
                         + static_cast<QSnackbarEvent *>(event)->getText();
        }
        return false;
    }
};
