#pragma once

#include <QList>
#include <QModelIndexList>

class QSortFilterProxyModel;
class QStandardItem;
class QStandardItemModel;

// The row work behind the two role list views: an item model seen through a
// sorting proxy. Indexes may come from either model; an index of any other
// model, or an invalid one, is ignored.
class OrvexListRows
{
public:
    OrvexListRows(QStandardItemModel *model, QSortFilterProxyModel *proxy);

    void clear();
    QList<QStandardItem *> findItems(const QString &text) const;
    void addRow(const QList<QStandardItem *> &items, bool sort);
    int rowCount() const;
    QStandardItem *item(int row, int column) const;
    QList<QStandardItem *> takeRow(const QModelIndex &index);
    bool removeRow(const QModelIndex &index);
    // Takes the rows from the bottom up, so that the row numbers still to be
    // taken stay valid; the result lists them in descending row order. A row
    // named by several indexes is taken once.
    QList<QList<QStandardItem *>> takeRows(const QModelIndexList &indexes);

private:
    QModelIndex toSource(const QModelIndex &index) const;

    QStandardItemModel *m_model;
    QSortFilterProxyModel *m_proxy;
};
