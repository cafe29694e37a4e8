#pragma once

#include <QMessageBox>
#include <QObject>
#include <QPointer>
#include <QTimer>

#include <functional>

// Answers the next modal widget (dialog or message box) that code under test
// opens, so that no test blocks on it. Create one before the call that opens the
// dialog; it polls for QApplication::activeModalWidget() and acts once.
//
//   ModalAnswerer answer(QMessageBox::Yes);
//   board.removeClipboard();
//   QVERIFY(answer.answered());
class ModalAnswerer : public QObject
{
    Q_OBJECT

public:
    using Action = std::function<void(QWidget *modal)>;

    // Clicks the message box's button, or accepts (Ok/Yes/Save...) or rejects a plain dialog.
    explicit ModalAnswerer(QMessageBox::StandardButton button, QObject *parent = nullptr);
    // Runs any action on the modal widget (fill fields, then accept...).
    explicit ModalAnswerer(Action action, QObject *parent = nullptr);

    bool answered() const { return m_answered; }
    QString seenTitle() const { return m_title; }
    QString seenText() const { return m_text; }   // message box text, if it was one
    QString seenClass() const { return m_className; }

private:
    void poll();

    Action m_action;
    QTimer m_timer;
    bool m_answered = false;
    QString m_title;
    QString m_text;
    QString m_className;
};
