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

// A list of items shown sorted through a proxy. Rows move between lists of the
// same kind by drag and drop (taken from the source, never copied); Left and
// Right ask the owner to move the selection (changeCurrent()), and the view
// remembers whether the last key press or double click came with Control alone.
//
// The row operations are protected: each subclass publishes them under its own
// names and decides which lists it takes dropped rows from.
class ORVEXWORKBENCH_EXPORT OrvexRoleListBase : public QListView
{
    Q_OBJECT

public:
    ~OrvexRoleListBase() override;

    void setSortEnabled(bool enabled);
    bool getStrgHold() const;
    void setStrgHold(bool hold);

    void clear();
    int rowCount() const;
    // (row, column) as shown, that is of the proxy.
    QStandardItem *item(int row, int column = 0) const;
    // The index may be one of the proxy or of the item model.
    bool removeRow(const QModelIndex &index);

signals:
    void changed();
    void changeCurrent();

protected:
    explicit OrvexRoleListBase(QWidget *parent = nullptr);

    QList<QStandardItem *> findItems(const QString &text) const;
    void addRow(const QList<QStandardItem *> &items);
    void addRow(QStandardItem *item);
    // The index may be one of the proxy or of the item model.
    QList<QStandardItem *> takeRow(const QModelIndex &index);
    QList<QList<QStandardItem *>> takeRows(const QModelIndexList &indexes);

    void dragMoveEvent(QDragMoveEvent *event) override;
    void dropEvent(QDropEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;

private:
    // Whether rows dropped from source, another list than this one, are taken.
    virtual bool takesRowsFrom(const OrvexRoleListBase *source) const = 0;
    OrvexRoleListBase *dropSource(QObject *source) const;

    QStandardItemModel *m_model;
    QSortFilterProxyModel *m_proxy;
    std::unique_ptr<OrvexListRows> m_rows;
    bool m_strgHold = false;
    bool m_sortEnabled = true;
};
