#pragma once

#include "orvexworkbenchglobal.h"

#include <QIcon>
#include <QStandardItem>
#include <QString>

// A list item for one role: the display name as its text, the role kind's icon,
// and the role id the rights editor sends back to the server.
// Items made from a clipboard's current rights also carry the id as received
// at Qt::UserRole and Qt::UserRole + 2, and "W" or "R" at Qt::UserRole + 3.
class ORVEXWORKBENCH_EXPORT QRoleStandardItem : public QStandardItem
{
public:
    QRoleStandardItem(const QIcon &icon, const QString &roleId, const QString &text);
    ~QRoleStandardItem() override;

    QString roleId() const;

    // A copy with the icon, role id, text and the Qt::UserRole + 1 data.
    // Deliberately not QStandardItem::clone(): the models never clone items,
    // and moving between lists takes the item itself.
    QRoleStandardItem *clone();
    using QStandardItem::clone;

private:
    QString m_roleId;
};
