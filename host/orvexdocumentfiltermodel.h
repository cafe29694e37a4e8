#pragma once

#include <QSortFilterProxyModel>
#include <QStringList>

class OrvexDocumentListModel;

// Sorting and filtering of the document list. The filter text is split into
// words; a document is shown when every word occurs, case-insensitively, in at
// least one of its columns ("invoice 2024" finds invoices of 2024).
class OrvexDocumentFilterModel : public QSortFilterProxyModel
{
    Q_OBJECT

public:
    explicit OrvexDocumentFilterModel(QObject *parent = nullptr);

    QString filterText() const { return m_text; }

public slots:
    void setFilterText(const QString &text);

protected:
    bool filterAcceptsRow(int sourceRow, const QModelIndex &sourceParent) const override;
    bool lessThan(const QModelIndex &left, const QModelIndex &right) const override;

private:
    OrvexDocumentListModel *documents() const;

    QString m_text;
    QStringList m_words;
};
