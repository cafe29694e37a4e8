#include "orvexdocumentfiltermodel.h"

#include <QCollator>
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
    m_words = text.split(QRegularExpression(QStringLiteral("\\s+")), Qt::SkipEmptyParts);
    invalidateFilter();
}

bool OrvexDocumentFilterModel::filterAcceptsRow(int sourceRow, const QModelIndex &sourceParent) const
{
    if (m_words.isEmpty())
        return true;
    const QAbstractItemModel *model = sourceModel();
    QStringList texts;
    for (int column = 0; column < model->columnCount(sourceParent); ++column)
        texts << model->index(sourceRow, column, sourceParent).data(filterRole()).toString();
    for (const QString &word : m_words) {
        bool found = false;
        for (const QString &text : qAsConst(texts)) {
            if (text.contains(word, Qt::CaseInsensitive)) {
                found = true;
                break;
            }
        }
        if (!found)
            return false;
    }
    return true;
}

bool OrvexDocumentFilterModel::lessThan(const QModelIndex &left, const QModelIndex &right) const
{
    const QVariant a = left.data(sortRole());
    const QVariant b = right.data(sortRole());
    if (a.type() == QVariant::String && b.type() == QVariant::String) {
        // Titles such as "Invoice 9" and "Invoice 10" sort the way people read them.
        static const QCollator collator = [] {
            // The C locale collates byte by byte, without numbers.
            QLocale locale;
            if (locale.language() == QLocale::C)
                locale = QLocale(QLocale::English);
            QCollator c(locale);
            c.setNumericMode(true);
            c.setCaseSensitivity(Qt::CaseInsensitive);
            return c;
        }();
        return collator.compare(a.toString(), b.toString()) < 0;
    }
    return QSortFilterProxyModel::lessThan(left, right);
}
