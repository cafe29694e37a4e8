#include "orvexundooffer.h"

#include "orvexlog.h"
#include "qsnackbarevent.h"

#include <QAction>

namespace {
int g_milliseconds = OrvexUndoOffer::DefaultMilliseconds;
} // namespace

OrvexUndoOffer::OrvexUndoOffer(const QString &message, std::function<void()> commit, std::function<void()> undo,
                               QObject *parent)
    : QObject(parent), m_message(message), m_commit(std::move(commit)), m_undo(std::move(undo))
{
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &OrvexUndoOffer::commitNow);
}

OrvexUndoOffer::~OrvexUndoOffer()
{
    // The owner settles its offers while it can still run them; one left here
    // would run on a half-destroyed owner.
    if (!m_settled)
        orvexWarning() << "UNDO OFFER DROPPED" << m_message;
}

void OrvexUndoOffer::setMilliseconds(int milliseconds)
{
    g_milliseconds = milliseconds;
}

int OrvexUndoOffer::milliseconds()
{
    return g_milliseconds;
}

void OrvexUndoOffer::offer()
{
    if (m_settled || m_action)
        return;
    m_action = new QAction(tr("Undo"), this);
    m_action->setObjectName(QStringLiteral("undoAction"));
    connect(m_action, &QAction::triggered, this, &OrvexUndoOffer::undo);
    QSnackbarEvent event(m_message);
    event.setAction(m_action);
    event.send();
    m_timer.start(g_milliseconds);
}

void OrvexUndoOffer::commitNow()
{
    settle(false);
}

void OrvexUndoOffer::undo()
{
    settle(true);
}

void OrvexUndoOffer::settle(bool undone)
{
    if (m_settled)
        return;
    m_settled = true;
    m_timer.stop();
    // Going first: the host takes the message and its button away. Later, as
    // the action may be the sender of this very call.
    if (m_action)
        m_action->deleteLater();
    orvexDebug() << (undone ? "UNDO" : "COMMIT") << m_message;
    if (undone)
        m_undo();
    else
        m_commit();
    emit settled(undone);
    deleteLater();
}
