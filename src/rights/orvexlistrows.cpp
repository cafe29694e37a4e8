#include "orvexlistrows.h"

#include <QSortFilterProxyModel>
#include <QStandardItemModel>

#include <algorithm>

OrvexListRows::OrvexListRows(QStandardItemModel *model, QSortFilterProxyModel *proxy)
    : m_model(model), m_proxy(proxy)
{
}

void OrvexListRows::clear()
{
    m_proxy->invalidate();
    m_model->clear();
}

QList<QStandardItem *> OrvexListRows::findItems(const QString &text) const
{
    return m_model->findItems(text, Qt::MatchExactly, 0);
}

void OrvexListRows::addRow(const QList<QStandardItem *> &items, bool sort)
{
    if (items.isEmpty())
        return;
    m_model->appendRow(items);
    if (sort)
        m_proxy->sort(0, Qt::AscendingOrder);
}

int OrvexListRows::rowCount() const
{
    return m_model->rowCount();
}

QStandardItem *OrvexListRows::item(int row, int column) const
{
    const QModelIndex source = m_proxy->mapToSource(m_proxy->index(row, column));
    if (!source.isValid())
        return nullptr;
    return m_model->item(source.row(), source.column());
}

QModelIndex OrvexListRows::toSource(const QModelIndex &index) const
{
    if (!index.isValid())
        return {};
    if (index.model() == m_proxy)
        return m_proxy->mapToSource(index);
    if (index.model() == m_model)
        return index;
    return {};
}

QList<QStandardItem *> OrvexListRows::takeRow(const QModelIndex &index)
{
    const QModelIndex source = toSource(index);
    if (!source.isValid())
        return {};
    return m_model->takeRow(source.row());
}

bool OrvexListRows::removeRow(const QModelIndex &index)
{
    const QModelIndex source = toSource(index);
    if (!source.isValid())
        return false;
    return m_model->removeRow(source.row());
}

QList<QList<QStandardItem *>> OrvexListRows::takeRows(const QModelIndexList &indexes)
{
    QModelIndexList sources;
    sources.reserve(indexes.size());
    for (const QModelIndex &index : indexes) {
        const QModelIndex source = toSource(index);
        if (source.isValid())
            sources << source;
    }
    std::sort(sources.begin(), sources.end());

    QList<QList<QStandardItem *>> taken;
    int lastRow = -1;
    while (!sources.isEmpty()) {
        const QModelIndex source = sources.takeLast();
        // Several columns of one row (or the same index twice) name that row once.
        if (source.row() == lastRow)
            continue;
        lastRow = source.row();
        taken << m_model->takeRow(source.row());
    }
    return taken;
}
