#pragma once

#include "orvexarchive.h"

#include <QAbstractTableModel>
#include <QList>

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

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

private:
    QVariant displayValue(const OrvexArchiveDocument &document, int column) const;
    QString toolTip(const OrvexArchiveDocument &document) const;

    QList<OrvexArchiveDocument> m_documents;
};
