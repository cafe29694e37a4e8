#pragma once

#include "orvexworkbenchglobal.h"

#include <QLabel>
#include <QPointer>

class orvexwbwebview;

// One clipboard in the chooser strip. It lights up in the host's theme colour
// while a drag hovers over it.
class ORVEXWORKBENCH_EXPORT orvexclipboardlabel : public QLabel
{
    Q_OBJECT

public:
    explicit orvexclipboardlabel(const QString &text, orvexwbwebview *board, QWidget *parent = nullptr);
    ~orvexclipboardlabel() override;

    orvexwbwebview *board() const;

    // The host's theme colour from the shared-memory segment "keltheme" + the
    // process id, or "#308cc6" when the host gives none.
    QString getCurrentTheme() const;
    // "black" on light colours, "white" on dark ones.
    static QString textColourFor(const QColor &background);

    static QString restingSheet();

protected:
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragLeaveEvent(QDragLeaveEvent *event) override;
    void dropEvent(QDropEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    QPointer<orvexwbwebview> m_board;
};
