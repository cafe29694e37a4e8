#pragma once

#include <QList>
#include <QString>
#include <QVariantList>

// What the user's work left in an archive folder, read from its database
// (read-only, as another program would) and its files; and, before the
// product starts, the set-up a test needs (the sample archive, a full
// clipboard) written through the archive library and SQL.
class E2eArchive
{
public:
    struct Entry
    {
        qlonglong docId = 0;
        qlonglong docsId = 0;
        QString note;
    };
    struct Document
    {
        qlonglong id = 0;
        qlonglong docsId = 0;
        QString title;
        QString fileName;   // the readable name exports give the file
        QString storedFile; // absolute path of the current version's file
        int pages = 0;
    };

    explicit E2eArchive(const QString &folder);
    ~E2eArchive();

    // Creates the sample archive in a new folder, as the host does on first start.
    static bool createSample(const QString &folder, QString *error);

    QString folder() const { return m_folder; }
    QStringList clipboardNames() const;
    QString clipboardId(const QString &name) const;
    // The clipboard's entries in their order; empty for an unknown clipboard.
    QList<Entry> entries(const QString &clipboardName) const;
    // Who may view ("role:R") or edit ("role:W") the clipboard, sorted.
    QStringList rights(const QString &clipboardName) const;
    QList<Document> documents() const;
    Document document(qlonglong docId) const;
    // Documents every user may read (no read role), ordered by id.
    QList<Document> readableDocuments() const;
    // The readable documents that are on no entry of the clipboard.
    QList<Document> documentsNotIn(const QString &clipboardName) const;

    // Set-up only (before the host runs). A new writeable clipboard of the
    // archive's user, made as the host makes one; its uuid, empty on failure.
    QString createClipboard(const QString &name) const;
    // Fills the clipboard with entries up to count: the archive's first
    // document, then further entries of it under numbers no document uses
    // (the board shows them as cards of that document).
    bool fill(const QString &clipboardName, int count) const;
    // One statement with bound values.
    bool execute(const QString &sql, const QVariantList &values = {}, QString *error = nullptr) const;

private:
    QVariantList rows(const QString &sql, const QVariantList &values, int columns) const;

    QString m_folder;
    QString m_connection;
};
