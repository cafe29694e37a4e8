#pragma once

#include <QAbstractButton>
#include <QApplication>
#include <QDialog>
#include <QMessageBox>
#include <QPointer>
#include <QTimer>

#include <functional>

// Answers the modal dialogs and message boxes a call opens, one step per
// dialog in order, and records what each showed. Dialogs beyond the steps are
// rejected (No for a message box) so that nothing blocks; seen() tells.
class SequenceAnswerer : public QObject
{
public:
    using Step = std::function<void(QWidget *modal)>;
    struct Seen
    {
        QString title;
        QString text;
        QWidget *parent = nullptr;
    };

    explicit SequenceAnswerer(QList<Step> steps = {}) : m_steps(std::move(steps))
    {
        m_timer.setInterval(10);
        connect(&m_timer, &QTimer::timeout, this, &SequenceAnswerer::poll);
        m_timer.start();
    }

    static Step press(QMessageBox::StandardButton button)
    {
        return [button](QWidget *modal) {
            if (auto *box = qobject_cast<QMessageBox *>(modal)) {
                if (QAbstractButton *b = box->button(button))
                    b->click();
                else if (box->escapeButton())
                    box->escapeButton()->click();
                else
                    box->close();
                return;
            }
            auto *dialog = qobject_cast<QDialog *>(modal);
            button == QMessageBox::Ok || button == QMessageBox::Yes ? dialog->accept() : dialog->reject();
        };
    }

    QList<Seen> seen() const { return m_seen; }
    QStringList texts() const
    {
        QStringList result;
        for (const Seen &seen : m_seen)
            result << seen.title + QLatin1String(": ") + seen.text;
        return result;
    }

private:
    void poll()
    {
        QWidget *modal = QApplication::activeModalWidget();
        if (!modal || !modal->isVisible() || modal == m_last)
            return;
        m_last = modal;
        Seen seen{modal->windowTitle(), QString(), modal->parentWidget()};
        if (auto *box = qobject_cast<QMessageBox *>(modal))
            seen.text = box->text();
        m_seen << seen;
        const Step step = m_steps.isEmpty() ? press(QMessageBox::No) : m_steps.takeFirst();
        step(modal);
    }

    QTimer m_timer;
    QList<Step> m_steps;
    QList<Seen> m_seen;
    QPointer<QWidget> m_last;
};
