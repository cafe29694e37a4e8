#pragma once

#include "orvexworkbenchglobal.h"

#include <QList>
#include <QTimer>
#include <QWidget>

class QLayout;
class QScrollArea;
class QToolButton;
class QVBoxLayout;
class orvexclipboardlabel;
class orvexwbwebview;
namespace Ui {
class orvexclipboardchooser;
}

// The frameless strip the host shows while documents are dragged: one large
// label per writeable clipboard in a vertically scrolling list, with scroll
// buttons that scroll while a drag hovers over them. It hides itself once the
// mouse has left it and no button is held.
class ORVEXWORKBENCH_EXPORT orvexclipboardchooser : public QWidget
{
    Q_OBJECT

public:
    explicit orvexclipboardchooser(QWidget *parent = nullptr);
    ~orvexclipboardchooser() override;

    // Takes every label out of the list and disposes of it.
    void clearClipboards();
    // Adds a label for a writeable board; read-only boards get none.
    void addClipboard(const QString &name, orvexwbwebview *board);

    QList<orvexclipboardlabel *> labels() const;
    QToolButton *scrollUpButton() const;
    QToolButton *scrollDownButton() const;
    QScrollArea *scrollArea() const;

    bool eventFilter(QObject *object, QEvent *event) override;

public slots:
    void sliderRangeChanged(int min, int max);
    void doScrollDown();
    void doScrollUp();
    // Shows the strip and gives the user 1.5 s to reach it before the first hide check.
    void show();
    void doHide();

protected:
    void showEvent(QShowEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dragLeaveEvent(QDragLeaveEvent *event) override;

private:
    static void clearLayout(QLayout *layout);
    bool cursorInside(const QWidget *widget) const;

    QTimer m_hideTimer;
    QTimer m_scrollUpTimer;
    QTimer m_scrollDownTimer;
    QWidget *m_listWidget = nullptr;
    QVBoxLayout *m_listLayout = nullptr;
    Ui::orvexclipboardchooser *ui;
};
