#include "orvexsnackbarfilter.h"

#include "qsnackbarevent.h"

#include <QCoreApplication>

OrvexSnackbarFilter::OrvexSnackbarFilter(QObject *parent) : QObject(parent)
{
    if (QCoreApplication::instance())
        QCoreApplication::instance()->installEventFilter(this);
}

OrvexSnackbarFilter::~OrvexSnackbarFilter()
{
    if (QCoreApplication::instance())
        QCoreApplication::instance()->removeEventFilter(this);
}

int OrvexSnackbarFilter::displayMilliseconds(const QString &text)
{
    // About a reading speed of 15 characters a second, within 4 and 12 seconds.
    return qBound(4000, int(text.size()) * 1000 / 15, 12000);
}

bool OrvexSnackbarFilter::eventFilter(QObject *watched, QEvent *event)
{
    // An application-wide filter sees every event: keep the test cheap.
    if (event->type() != QSnackbarEvent::snackbarType() || watched != QCoreApplication::instance())
        return QObject::eventFilter(watched, event);
    const auto *snackbar = static_cast<QSnackbarEvent *>(event);
    const QString text = snackbar->getText();
    if (!text.isEmpty())
        emit this->snackbar(text, displayMilliseconds(text), snackbar->action());
    return true;
}
