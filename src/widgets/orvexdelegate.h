#pragma once

#include "orvexworkbenchglobal.h"

#include <QStringList>
#include <QStyledItemDelegate>

// Item delegate for free text: edits a cell in an orvexcompletertextedit, which
// offers the given completions and holds at most maxLength characters
// (0 = unlimited). Line breaks are kept; the editor commits when it loses the
// focus or on Tab, and Escape drops the change. OrvexLineDelegate is the
// single-line member of the family.
class ORVEXWORKBENCH_EXPORT OrvexDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    explicit OrvexDelegate(QObject *parent = nullptr);
    OrvexDelegate(const QStringList &completions, int maxLength, QObject *parent = nullptr);

    void setCompletions(const QStringList &completions);
    QStringList completions() const;
    void setMaxLength(int length);
    int maxLength() const;

    QWidget *createEditor(QWidget *parent, const QStyleOptionViewItem &option,
                          const QModelIndex &index) const override;
    void setEditorData(QWidget *editor, const QModelIndex &index) const override;
    void setModelData(QWidget *editor, QAbstractItemModel *model,
                      const QModelIndex &index) const override;
    void updateEditorGeometry(QWidget *editor, const QStyleOptionViewItem &option,
                              const QModelIndex &index) const override;

private:
    QStringList m_completions;
    int m_maxLength = 0;
};
