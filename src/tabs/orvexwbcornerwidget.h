#pragma once

#include "orvexworkbenchglobal.h"

#include <QWidget>

namespace Ui {
class orvexwbcornerwidget;
}

// Sits in the top-right corner of the clipboard tab bar: a filter field that
// narrows the tabs by title and a button that adds a clipboard.
class ORVEXWORKBENCH_EXPORT orvexwbcornerwidget : public QWidget
{
    Q_OBJECT

public:
    explicit orvexwbcornerwidget(QWidget *parent = nullptr);
    ~orvexwbcornerwidget() override;

    QString filterText() const;

signals:
    void addTab();
    void filterChanged(QString text);

public slots:
    // Empties the filter field; an already empty field raises no filterChanged.
    void clearFilter();

private slots:
    void doEmitAddTab();

private:
    Ui::orvexwbcornerwidget *ui;
};
