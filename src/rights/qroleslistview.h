#pragma once

#include "orvexrolelistbase.h"

class QRoleStandardItem;

// The role lists of the rights editor. Behaves like QUserListView for role
// items; four operations carry the suffix "2" (findItems2, addRow2, takeRow2,
// takeRows2), and drops are taken only from another QRolesListView.
class ORVEXWORKBENCH_EXPORT QRolesListView : public OrvexRoleListBase
{
    Q_OBJECT

public:
    explicit QRolesListView(QWidget *parent = nullptr);
    ~QRolesListView() override;

    QList<QStandardItem *> findItems2(const QString &text) const;
    void addRow2(const QList<QStandardItem *> &items);
    void addRow(QRoleStandardItem *item);
    // The index may be one of the proxy or of the item model.
    QList<QStandardItem *> takeRow2(const QModelIndex &index);
    QList<QList<QStandardItem *>> takeRows2(const QModelIndexList &indexes);

private:
    bool takesRowsFrom(const OrvexRoleListBase *source) const override;
};
