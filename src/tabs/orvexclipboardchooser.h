#pragma once

#include "orvexworkbenchglobal.h"

#include <QWidget>

// The frameless strip of clipboard labels the host shows while documents are dragged.
class ORVEXWORKBENCH_EXPORT orvexclipboardchooser : public QWidget
{
    Q_OBJECT

public:
    explicit orvexclipboardchooser(QWidget *parent = nullptr);
    ~orvexclipboardchooser() override;
};
