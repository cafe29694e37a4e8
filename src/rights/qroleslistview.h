#pragma once

#include "orvexworkbenchglobal.h"

#include <QList>
#include <QListView>
#include <QModelIndexList>

#include <memory>

class OrvexListRows;
class QSortFilterProxyModel;
class QStandardItem;
class QStandardItemModel;
class QRoleStandardItem;

// The role lists of the rights editor. Behaves like QUserListView for role
// items; four operations carry the suffix "2" (findItems2, addRow2, takeRow2,
// takeRows2), and drops are taken only from another QRolesListView.
class ORVEXWORKBENCH_EXPORT QRolesListView : public QListView
{
    Q_OBJECT

public:
    explicit QRolesListView(QWidget *parent = nullptr);
    ~QRolesListView() override;

    void setSortEnabled(bool enabled);
    bool getStrgHold() const;
    void setStrgHold(bool hold);

    void clear();
    QList<QStandardItem *> findItems2(const QString &text) const;
    void addRow2(const QList<QStandardItem *> &items);
    void addRow(QRoleStandardItem *item);
    int rowCount() const;
    // (row, column) as shown, that is of the proxy.
    QStandardItem *item(int row, int column = 0) const;
    // The index may be one of the proxy or of the item model.
    QList<QStandardItem *> takeRow2(const QModelIndex &index);
    bool removeRow(const QModelIndex &index);
    QList<QList<QStandardItem *>> takeRows2(const QModelIndexList &indexes);

signals:
    void changed();
    void changeCurrent();

protected:
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dropEvent(QDropEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;

private:
    // Rows come only from another list of this class.
    QRolesListView *dropSource(QObject *source) const;

    QStandardItemModel *m_model;
    QSortFilterProxyModel *m_proxy;
    std::unique_ptr<OrvexListRows> m_rows;
    bool m_strgHold = false;
    bool m_sortEnabled = true;
};
