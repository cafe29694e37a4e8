#pragma once

#include <QAbstractButton>
#include <QApplication>
#include <QDialog>
#include <QMessageBox>
#include <QPointer>
#include <QTimer>

#include <functional>

// Answers the modal dialogs and message boxes a call opens, one step per
// dialog in order, and records "title: text" of each. Dialogs beyond the steps
// are rejected (No for a message box) so that nothing blocks.
class SequenceAnswerer : public QObject
{
public:
    using Step = std::function<void(QWidget *modal)>;

    explicit SequenceAnswerer(QList<Step> steps = {}) : m_steps(std::move(steps))
    {
        connect(&m_timer, &QTimer::timeout, this, &SequenceAnswerer::poll);
        m_timer.start(10);
    }

    // A message box's button (else its escape button, else close), or accept/reject of a dialog.
    static Step press(QMessageBox::StandardButton button)
    {
        return [button](QWidget *modal) {
            auto *box = qobject_cast<QMessageBox *>(modal);
            if (QAbstractButton *b = box ? (box->button(button) ? box->button(button) : box->escapeButton()) : nullptr)
                b->click();
            else if (box)
                box->close();
            else if (button == QMessageBox::Ok || button == QMessageBox::Yes)
                static_cast<QDialog *>(modal)->accept();
            else
                static_cast<QDialog *>(modal)->reject();
        };
    }

    QStringList texts() const { return m_texts; }

private:
    void poll()
    {
        QWidget *modal = QApplication::activeModalWidget();
        if (!modal || !modal->isVisible() || modal == m_last)
            return;
        m_last = modal;
        auto *box = qobject_cast<QMessageBox *>(modal);
        m_texts << modal->windowTitle() + QLatin1String(": ") + (box ? box->text() : QString());
        (m_steps.isEmpty() ? press(QMessageBox::No) : m_steps.takeFirst())(modal);
    }

    QTimer m_timer;
    QList<Step> m_steps;
    QStringList m_texts;
    QPointer<QWidget> m_last;
};
