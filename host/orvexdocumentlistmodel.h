#pragma once

#include "orvexarchive.h"

#include <QAbstractTableModel>
#include <QHash>
#include <QList>
#include <QVector>

// The archive's documents as the rows of the host's document list.
class OrvexDocumentListModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column { IdColumn, TitleColumn, TypeColumn, StatusColumn, PagesColumn, DateColumn, ColumnCount };
    enum Role {
        DocumentIdRole = Qt::UserRole + 1, // qlonglong
        DocsIdRole,                        // qlonglong, the entry number drags carry
        ReadableRole,                      // bool
    };

    explicit OrvexDocumentListModel(QObject *parent = nullptr);

    void setDocuments(const QList<OrvexArchiveDocument> &documents);
    const QList<OrvexArchiveDocument> &documents() const { return m_documents; }
    // Row of the document with this id, or -1.
    int rowOfDocument(qlonglong id) const;

    // The texts of a row's columns, case-folded and separated by a line break
    // (which no filter word holds): what the filter looks in.
    const QString &searchText(int row) const { return m_searchTexts.at(row); }
    // Whether row a comes before row b when sorted by column: numbers by
    // value, texts as people read them ("Invoice 9" before "Invoice 10").
    bool lessThan(int a, int b, int column) const;

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

private:
    QVariant displayValue(const OrvexArchiveDocument &document, int column) const;
    QString toolTip(const OrvexArchiveDocument &document) const;

    QList<OrvexArchiveDocument> m_documents;
    QVector<QString> m_searchTexts;
    QHash<qlonglong, int> m_rows; // document id -> row
};
