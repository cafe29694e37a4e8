#include "qsnackbarevent.h"

#include "orvexlog.h"

#include <QCoreApplication>

QSnackbarEvent::QSnackbarEvent(const QString &text)
    : QEvent(snackbarType()), m_text(text)
{
}

QSnackbarEvent::~QSnackbarEvent() = default;

QEvent::Type QSnackbarEvent::snackbarType()
{
    static const QEvent::Type type = static_cast<QEvent::Type>(QEvent::registerEventType());
    return type;
}

QString QSnackbarEvent::getText() const
{
    return m_text;
}

void QSnackbarEvent::setText(const QString &text)
{
    m_text = text;
}

QAction *QSnackbarEvent::action() const
{
    return m_action;
}

void QSnackbarEvent::setAction(QAction *action)
{
    m_action = action;
}

void QSnackbarEvent::send(QObject *receiver) const
{
    QObject *target = receiver ? receiver : QCoreApplication::instance();
    if (!target) {
        orvexWarning() << "SNACKBAR without receiver:" << m_text;
        return;
    }
    // Posted events are owned and deleted by Qt, so the copy goes on the heap.
    auto *copy = new QSnackbarEvent(m_text);
    copy->setAction(m_action);
    QCoreApplication::postEvent(target, copy);
}
