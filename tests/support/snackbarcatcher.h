#pragma once

#include "qsnackbarevent.h"

#include <QAction>
#include <QCoreApplication>
#include <QList>
#include <QPointer>
#include <QStringList>

// Records the snackbar messages posted while it exists: "app:<text>" for
// those to the application (the host's), "object:<text>" for others, and the
// action each offers (null for none).
class SnackbarCatcher : public QObject
{
public:
    SnackbarCatcher() { QCoreApplication::instance()->installEventFilter(this); }
    ~SnackbarCatcher() override { QCoreApplication::instance()->removeEventFilter(this); }

    QStringList texts;
    QList<QPointer<QAction>> actions;

    // The action offered with the last message that has one.
    QAction *lastAction() const
    {
        for (int i = actions.size() - 1; i >= 0; --i)
            if (actions.at(i))
                return actions.at(i);
        return nullptr;
    }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QSnackbarEvent::snackbarType()) {
            const auto *snackbar = static_cast<QSnackbarEvent *>(event);
            texts << QStringLiteral("%1:%2").arg(watched == QCoreApplication::instance() ? "app" : "object",
                                                 snackbar->getText());
            actions << snackbar->action();
        }
        return false;
    }
};
