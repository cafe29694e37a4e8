#include "orvexrolelistbase.h"

#include "orvexlistrows.h"

#include <QDropEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QSortFilterProxyModel>
#include <QStandardItemModel>

OrvexRoleListBase::OrvexRoleListBase(QWidget *parent)
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

OrvexRoleListBase::~OrvexRoleListBase() = default;

void OrvexRoleListBase::setSortEnabled(bool enabled)
{
    m_sortEnabled = enabled;
}

bool OrvexRoleListBase::getStrgHold() const
{
    return m_strgHold;
}

void OrvexRoleListBase::setStrgHold(bool hold)
{
    m_strgHold = hold;
}

void OrvexRoleListBase::clear()
{
    m_rows->clear();
}

QList<QStandardItem *> OrvexRoleListBase::findItems(const QString &text) const
{
    return m_rows->findItems(text);
}

void OrvexRoleListBase::addRow(const QList<QStandardItem *> &items)
{
    m_rows->addRow(items, m_sortEnabled);
}

void OrvexRoleListBase::addRow(QStandardItem *item)
{
    if (item)
        m_rows->addRow({item}, m_sortEnabled);
}

int OrvexRoleListBase::rowCount() const
{
    return m_rows->rowCount();
}

QStandardItem *OrvexRoleListBase::item(int row, int column) const
{
    return m_rows->item(row, column);
}

QList<QStandardItem *> OrvexRoleListBase::takeRow(const QModelIndex &index)
{
    return m_rows->takeRow(index);
}

bool OrvexRoleListBase::removeRow(const QModelIndex &index)
{
    return m_rows->removeRow(index);
}

QList<QList<QStandardItem *>> OrvexRoleListBase::takeRows(const QModelIndexList &indexes)
{
    return m_rows->takeRows(indexes);
}

OrvexRoleListBase *OrvexRoleListBase::dropSource(QObject *source) const
{
    auto *list = qobject_cast<OrvexRoleListBase *>(source);
    return list && list != this && takesRowsFrom(list) ? list : nullptr;
}

void OrvexRoleListBase::dragMoveEvent(QDragMoveEvent *event)
{
    // Refused drags show the refusal while they hover, not only on the drop.
    if (!dropSource(event->source())) {
        event->ignore();
        return;
    }
    QListView::dragMoveEvent(event);
}

void OrvexRoleListBase::dropEvent(QDropEvent *event)
{
    OrvexRoleListBase *source = dropSource(event->source());
    if (!source) {
        event->ignore();
        return;
    }
    const QList<QList<QStandardItem *>> rows =
        source->takeRows(source->selectionModel()->selectedIndexes());
    for (const QList<QStandardItem *> &row : rows)
        addRow(row);
    // The rows are taken already; a move action would make the dragging view
    // remove its selection a second time.
    event->setDropAction(Qt::CopyAction);
    event->accept();
    emit changed();
}

void OrvexRoleListBase::keyPressEvent(QKeyEvent *event)
{
    m_strgHold = event->modifiers() == Qt::ControlModifier;
    if (event->key() == Qt::Key_Left || event->key() == Qt::Key_Right) {
        emit changeCurrent();
        event->ignore();
        return;
    }
    QListView::keyPressEvent(event);
}

void OrvexRoleListBase::mouseDoubleClickEvent(QMouseEvent *event)
{
    m_strgHold = event->modifiers() == Qt::ControlModifier;
    // With Control the second press of a double click toggles the item's
    // selection off again; the item double-clicked is still meant to move.
    const QModelIndex index = indexAt(event->pos());
    if (index.isValid() && selectionModel() && !selectionModel()->isSelected(index))
        selectionModel()->select(index, QItemSelectionModel::Select);
    QListView::mouseDoubleClickEvent(event);
}
