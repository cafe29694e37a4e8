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

// A list of items shown sorted through a proxy. Rows move between lists of this
// class by drag and drop (taken from the source, never copied); Left and Right
// ask the owner to move the selection (changeCurrent()), and the view remembers
// whether the last key press or double click came with Control alone.
class ORVEXWORKBENCH_EXPORT QUserListView : public QListView
{
    Q_OBJECT

public:
    explicit QUserListView(QWidget *parent = nullptr);
    ~QUserListView() override;

    void setSortEnabled(bool enabled);
    bool getStrgHold() const;
    void setStrgHold(bool hold);

    void clear();
    QList<QStandardItem *> findItems(const QString &text) const;
    void addRow(const QList<QStandardItem *> &items);
    void addRow(QStandardItem *item);
    int rowCount() const;
    // (row, column) as shown, that is of the proxy.
    QStandardItem *item(int row, int column = 0) const;
    // The index may be one of the proxy or of the item model.
    QList<QStandardItem *> takeRow(const QModelIndex &index);
    bool removeRow(const QModelIndex &index);
    QList<QList<QStandardItem *>> takeRows(const QModelIndexList &indexes);

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
    QUserListView *dropSource(QObject *source) const;

    QStandardItemModel *m_model;
    QSortFilterProxyModel *m_proxy;
    std::unique_ptr<OrvexListRows> m_rows;
    bool m_strgHold = false;
    bool m_sortEnabled = true;
};
