#pragma once

#include "orvexdelegate.h"

// Single-line member of the delegate family: a QLineEdit editor with the
// delegate's completions and maximum length. With numeric input on, the editor
// takes numbers only (MyDoubleValidator, either decimal separator) and the
// model receives a double; input that is not yet a number leaves the cell as it was.
class ORVEXWORKBENCH_EXPORT OrvexLineDelegate : public OrvexDelegate
{
    Q_OBJECT

public:
    explicit OrvexLineDelegate(QObject *parent = nullptr);
    OrvexLineDelegate(const QStringList &completions, int maxLength, bool numeric,
                      QObject *parent = nullptr);

    void setNumeric(bool numeric);
    bool isNumeric() const;
    // Range and decimals of numeric input (default: any number, 2 decimals).
    void setNumericRange(double bottom, double top, int decimals);

    QWidget *createEditor(QWidget *parent, const QStyleOptionViewItem &option,
                          const QModelIndex &index) const override;
    void setEditorData(QWidget *editor, const QModelIndex &index) const override;
    void setModelData(QWidget *editor, QAbstractItemModel *model,
                      const QModelIndex &index) const override;

private:
    bool m_numeric = false;
    double m_bottom;
    double m_top;
    int m_decimals = 2;
};
