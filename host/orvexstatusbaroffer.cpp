#include "orvexstatusbaroffer.h"

#include <QAction>
#include <QPushButton>
#include <QStatusBar>

OrvexStatusBarOffer::OrvexStatusBarOffer(QStatusBar *statusBar)
    : QObject(statusBar), m_statusBar(statusBar), m_button(new QPushButton(statusBar))
{
    m_button->setObjectName(QStringLiteral("statusAction"));
    m_button->setFlat(true);
    m_button->hide();
    // Permanent, so that the message does not hide it.
    statusBar->insertPermanentWidget(0, m_button);
    m_button->hide();
    connect(m_button, &QPushButton::clicked, this, [this] {
        if (m_action)
            m_action->trigger();
    });
    connect(statusBar, &QStatusBar::messageChanged, this, [this](const QString &message) {
        if (m_action && message != m_text)
            end();
    });
}

void OrvexStatusBarOffer::show(const QString &text, QAction *action)
{
    end();
    if (!action)
        return;
    m_action = action;
    m_text = text;
    connect(action, &QObject::destroyed, this, [this] {
        if (m_statusBar->currentMessage() == m_text)
            m_statusBar->clearMessage();
        end();
    });
    m_button->setText(action->text());
    m_button->setAccessibleName(action->text());
    // No time limit: the offer ends when the action goes.
    m_statusBar->showMessage(text);
    m_button->show();
}

void OrvexStatusBarOffer::end()
{
    if (m_action)
        m_action->disconnect(this);
    m_action = nullptr;
    m_text.clear();
    m_button->hide();
}
