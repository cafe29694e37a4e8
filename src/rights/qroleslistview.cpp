#include "qroleslistview.h"

#include "qrolestandarditem.h"

QRolesListView::QRolesListView(QWidget *parent)
    : OrvexRoleListBase(parent)
{
}

QRolesListView::~QRolesListView() = default;

QList<QStandardItem *> QRolesListView::findItems2(const QString &text) const
{
    return findItems(text);
}

void QRolesListView::addRow2(const QList<QStandardItem *> &items)
{
    OrvexRoleListBase::addRow(items);
}

void QRolesListView::addRow(QRoleStandardItem *item)
{
    OrvexRoleListBase::addRow(item);
}

QList<QStandardItem *> QRolesListView::takeRow2(const QModelIndex &index)
{
    return takeRow(index);
}

QList<QList<QStandardItem *>> QRolesListView::takeRows2(const QModelIndexList &indexes)
{
    return takeRows(indexes);
}

bool QRolesListView::takesRowsFrom(const OrvexRoleListBase *source) const
{
    return qobject_cast<const QRolesListView *>(source) != nullptr;
}
