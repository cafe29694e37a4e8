#include "orvexdocumentlistmodel.h"

#include <QCollator>
#include <QFont>
#include <QGuiApplication>
#include <QPalette>

OrvexDocumentListModel::OrvexDocumentListModel(QObject *parent)
    : QAbstractTableModel(parent)
{
}

void OrvexDocumentListModel::setDocuments(const QList<OrvexArchiveDocument> &documents)
{
    beginResetModel();
    m_documents = documents;
    m_searchTexts.clear();
    m_searchTexts.reserve(documents.size());
    m_rows.clear();
    m_rows.reserve(documents.size());
    for (int row = 0; row < m_documents.size(); ++row) {
        const OrvexArchiveDocument &document = m_documents.at(row);
        QStringList texts;
        for (int column = 0; column < ColumnCount; ++column)
            texts << displayValue(document, column).toString();
        m_searchTexts << texts.join(QLatin1Char('\n')).toCaseFolded();
        m_rows.insert(document.id, row);
    }
    endResetModel();
}

int OrvexDocumentListModel::rowOfDocument(qlonglong id) const
{
    return m_rows.value(id, -1);
}

bool OrvexDocumentListModel::lessThan(int a, int b, int column) const
{
    const OrvexArchiveDocument &left = m_documents.at(a);
    const OrvexArchiveDocument &right = m_documents.at(b);
    switch (column) {
    case IdColumn:
        return left.id < right.id;
    case PagesColumn:
        return left.pages < right.pages;
    case DateColumn:
        return left.date < right.date;
    default: {
        // The C locale collates byte by byte, without numbers.
        static const QCollator collator = [] {
            QLocale locale;
            if (locale.language() == QLocale::C)
                locale = QLocale(QLocale::English);
            QCollator c(locale);
            c.setNumericMode(true);
            c.setCaseSensitivity(Qt::CaseInsensitive);
            return c;
        }();
        return collator.compare(displayValue(left, column).toString(), displayValue(right, column).toString()) < 0;
    }
    }
}

int OrvexDocumentListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_documents.size();
}

int OrvexDocumentListModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

Qt::ItemFlags OrvexDocumentListModel::flags(const QModelIndex &index) const
{
    Qt::ItemFlags flags = QAbstractTableModel::flags(index);
    // Rows are what the user drags onto clipboards and folders; a document the
    // user may not read stays selectable but cannot be dragged.
    if (index.isValid() && index.row() < m_documents.size() && m_documents.at(index.row()).readable)
        flags |= Qt::ItemIsDragEnabled;
    return flags;
}

QVariant OrvexDocumentListModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    const OrvexArchiveDocument &document = m_documents.at(index.row());
    switch (role) {
    case Qt::DisplayRole:
        return displayValue(document, index.column());
    case Qt::ToolTipRole:
        return toolTip(document);
    case Qt::TextAlignmentRole:
        if (index.column() == IdColumn || index.column() == PagesColumn)
            return int(Qt::AlignRight | Qt::AlignVCenter);
        return {};
    case Qt::ForegroundRole:
        if (!document.readable)
            return QGuiApplication::palette().brush(QPalette::Disabled, QPalette::Text);
        return {};
    case Qt::FontRole:
        if (!document.readable) {
            QFont font;
            font.setItalic(true);
            return font;
        }
        return {};
    case DocumentIdRole:
        return document.id;
    case DocsIdRole:
        return document.docsId;
    case ReadableRole:
        return document.readable;
    default:
        return {};
    }
}

QVariant OrvexDocumentListModel::displayValue(const OrvexArchiveDocument &document, int column) const
{
    // Numbers stay numbers so that the list sorts them by value, not as text.
    switch (column) {
    case IdColumn:
        return document.id;
    case TitleColumn:
        return document.title;
    case TypeColumn:
        return document.typeName;
    case StatusColumn:
        return document.statusName;
    case PagesColumn:
        return document.pages;
    case DateColumn:
        return document.date;
    default:
        return {};
    }
}

QString OrvexDocumentListModel::toolTip(const OrvexArchiveDocument &document) const
{
    QStringList lines;
    lines << document.title.toHtmlEscaped();
    if (!document.fileName.isEmpty())
        lines << tr("File: %1").arg(document.fileName.toHtmlEscaped());
    lines << tr("%n version(s)", nullptr, document.versions);
    if (!document.readable)
        lines << tr("You may not read this document.");
    return lines.join(QStringLiteral("<br>"));
}

QVariant OrvexDocumentListModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QAbstractTableModel::headerData(section, orientation, role);
    switch (section) {
    case IdColumn:
        return tr("Id");
    case TitleColumn:
        return tr("Title");
    case TypeColumn:
        return tr("Type");
    case StatusColumn:
        return tr("Status");
    case PagesColumn:
        return tr("Pages");
    case DateColumn:
        return tr("Date");
    default:
        return {};
    }
}
