#include "modalanswerer.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDialog>

ModalAnswerer::ModalAnswerer(QMessageBox::StandardButton button, QObject *parent)
    : ModalAnswerer(
          [button](QWidget *modal) {
              if (auto *box = qobject_cast<QMessageBox *>(modal)) {
                  if (QAbstractButton *b = box->button(button)) {
                      b->click();
                      return;
                  }
                  box->done(button);
                  return;
              }
              if (auto *dialog = qobject_cast<QDialog *>(modal)) {
                  const bool accept = button == QMessageBox::Ok || button == QMessageBox::Yes
                      || button == QMessageBox::Save || button == QMessageBox::Open;
                  accept ? dialog->accept() : dialog->reject();
                  return;
              }
              modal->close();
          },
          parent)
{
}

ModalAnswerer::ModalAnswerer(Action action, QObject *parent)
    : QObject(parent), m_action(std::move(action))
{
    m_timer.setInterval(10);
    connect(&m_timer, &QTimer::timeout, this, &ModalAnswerer::poll);
    m_timer.start();
}

void ModalAnswerer::poll()
{
    QWidget *modal = QApplication::activeModalWidget();
    if (!modal || !modal->isVisible())
        return;
    m_timer.stop();
    m_className = QString::fromLatin1(modal->metaObject()->className());
    m_title = modal->windowTitle();
    if (auto *box = qobject_cast<QMessageBox *>(modal))
        m_text = box->text();
    m_answered = true;
    m_action(modal);
}
