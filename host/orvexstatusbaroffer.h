#pragma once

#include <QAction>
#include <QObject>
#include <QPointer>
#include <QString>

class QPushButton;
class QStatusBar;

// A message in the status bar with an action beside it, such as "Undo": the
// action's text on a button after the message. Both stay as long as the action
// exists and no other message has replaced the text; the button triggers the
// action. The action belongs to whoever offers it.
class OrvexStatusBarOffer : public QObject
{
    Q_OBJECT

public:
    explicit OrvexStatusBarOffer(QStatusBar *statusBar);

    void show(const QString &text, QAction *action);
    QPushButton *button() const { return m_button; }
    QAction *action() const { return m_action; }

private:
    void end();

    QStatusBar *m_statusBar;
    QPushButton *m_button;
    QPointer<QAction> m_action;
    QString m_text;
};
