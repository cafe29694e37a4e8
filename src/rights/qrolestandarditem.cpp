#include "qrolestandarditem.h"

QRoleStandardItem::QRoleStandardItem(const QIcon &icon, const QString &roleId, const QString &text)
    : QStandardItem(icon, text), m_roleId(roleId)
{
}

QRoleStandardItem::~QRoleStandardItem() = default;

QString QRoleStandardItem::roleId() const
{
    return m_roleId;
}

QRoleStandardItem *QRoleStandardItem::clone()
{
    auto *copy = new QRoleStandardItem(data(Qt::DecorationRole).value<QIcon>(), m_roleId, text());
    copy->setData(data(Qt::UserRole + 1), Qt::UserRole + 1);
    return copy;
}
