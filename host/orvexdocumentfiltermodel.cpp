#include "orvexdocumentfiltermodel.h"

#include "orvexdocumentlistmodel.h"

#include <QRegularExpression>

OrvexDocumentFilterModel::OrvexDocumentFilterModel(QObject *parent)
    : QSortFilterProxyModel(parent)
{
    setSortCaseSensitivity(Qt::CaseInsensitive);
}

void OrvexDocumentFilterModel::setFilterText(const QString &text)
{
    if (text == m_text)
        return;
    m_text = text;
    m_words = text.toCaseFolded().split(QRegularExpression(QStringLiteral("\\s+")), Qt::SkipEmptyParts);
    // One new layout, not a removal per gap: on a long list a word can take
    // away thousands of ranges of rows.
    invalidate();
}

OrvexDocumentListModel *OrvexDocumentFilterModel::documents() const
{
    return qobject_cast<OrvexDocumentListModel *>(sourceModel());
}

bool OrvexDocumentFilterModel::filterAcceptsRow(int sourceRow, const QModelIndex &sourceParent) const
{
    if (m_words.isEmpty() || !documents())
        return true;
    // Every word in some column: the columns' texts are kept case-folded, one per line.
    const QString &text = documents()->searchText(sourceRow);
    for (const QString &word : m_words)
        if (!text.contains(word))
            return false;
    Q_UNUSED(sourceParent)
    return true;
}

bool OrvexDocumentFilterModel::lessThan(const QModelIndex &left, const QModelIndex &right) const
{
    // From the documents' fields, not through item data: a list of 100,000
    // documents sorts in well under a second.
    if (documents())
        return documents()->lessThan(left.row(), right.row(), left.column());
    return QSortFilterProxyModel::lessThan(left, right);
}
