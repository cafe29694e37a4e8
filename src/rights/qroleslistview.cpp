#include "qroleslistview.h"

#include "orvexlistrows.h"
#include "qrolestandarditem.h"

#include <QDropEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QSortFilterProxyModel>
#include <QStandardItemModel>

QRolesListView::QRolesListView(QWidget *parent)
    : QListView(parent),
      m_model(new QStandardItemModel(this)),
      m_proxy(new QSortFilterProxyModel(this)),
      m_rows(std::make_unique<OrvexListRows>(m_model, m_proxy))
{
    m_proxy->setSourceModel(m_model);
    m_proxy->setDynamicSortFilter(true);
    m_proxy->setSortCaseSensitivity(Qt::CaseInsensitive);
    setModel(m_proxy);
}

QRolesListView::~QRolesListView() = default;

void QRolesListView::setSortEnabled(bool enabled)
{
    m_sortEnabled = enabled;
}

bool QRolesListView::getStrgHold() const
{
    return m_strgHold;
}

void QRolesListView::setStrgHold(bool hold)
{
    m_strgHold = hold;
}

void QRolesListView::clear()
{
    m_rows->clear();
}

QList<QStandardItem *> QRolesListView::findItems2(const QString &text) const
{
    return m_rows->findItems(text);
}

void QRolesListView::addRow2(const QList<QStandardItem *> &items)
{
    m_rows->addRow(items, m_sortEnabled);
}

void QRolesListView::addRow(QRoleStandardItem *item)
{
    if (item)
        m_rows->addRow({item}, m_sortEnabled);
}

int QRolesListView::rowCount() const
{
    return m_rows->rowCount();
}

QStandardItem *QRolesListView::item(int row, int column) const
{
    return m_rows->item(row, column);
}

QList<QStandardItem *> QRolesListView::takeRow2(const QModelIndex &index)
{
    return m_rows->takeRow(index);
}

bool QRolesListView::removeRow(const QModelIndex &index)
{
    return m_rows->removeRow(index);
}

QList<QList<QStandardItem *>> QRolesListView::takeRows2(const QModelIndexList &indexes)
{
    return m_rows->takeRows(indexes);
}

QRolesListView *QRolesListView::dropSource(QObject *source) const
{
    auto *list = qobject_cast<QRolesListView *>(source);
    return list == this ? nullptr : list;
}

void QRolesListView::dragMoveEvent(QDragMoveEvent *event)
{
    // Refused drags show the refusal while they hover, not only on the drop.
    if (!dropSource(event->source())) {
        event->ignore();
        return;
    }
    QListView::dragMoveEvent(event);
}

void QRolesListView::dropEvent(QDropEvent *event)
{
    QRolesListView *source = dropSource(event->source());
    if (!source) {
        event->ignore();
        return;
    }
    const QList<QList<QStandardItem *>> rows =
        source->takeRows2(source->selectionModel()->selectedIndexes());
    for (const QList<QStandardItem *> &row : rows)
        addRow2(row);
    // The rows are taken already; a move action would make the dragging view
    // remove its selection a second time.
    event->setDropAction(Qt::CopyAction);
    event->accept();
    emit changed();
}

void QRolesListView::keyPressEvent(QKeyEvent *event)
{
    m_strgHold = event->modifiers() == Qt::ControlModifier;
    if (event->key() == Qt::Key_Left || event->key() == Qt::Key_Right) {
        emit changeCurrent();
        event->ignore();
        return;
    }
    QListView::keyPressEvent(event);
}

void QRolesListView::mouseDoubleClickEvent(QMouseEvent *event)
{
    m_strgHold = event->modifiers() == Qt::ControlModifier;
    // With Control the second press of a double click toggles the item's
    // selection off again; the item double-clicked is still meant to move.
    const QModelIndex index = indexAt(event->pos());
    if (index.isValid() && selectionModel() && !selectionModel()->isSelected(index))
        selectionModel()->select(index, QItemSelectionModel::Select);
    QListView::mouseDoubleClickEvent(event);
}
