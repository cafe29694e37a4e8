#pragma once

#include "calllog.h"
#include "classifyinterface.h"

#include <QMap>
#include <QMutex>
#include <QObject>

// In-memory classification client for tests: clipboards with entries, notes
// and rights, documents with card fields and text, roles with display names.
// Every call is logged with its arguments (log()); the log's switches make any
// operation fail, answer short records or stall.
//
// Card info and search rows have the fields
//   0 docId, 1 docsId, 2 title, 3 type key, 4 date, 5 file name, 6 status key, 7 pages
// (search rows carry "docId#docsId" in field 0 instead of the plain id).
class RecordingClassifyClient : public QObject, public ClassifyInterface
{
    Q_OBJECT

public:
    struct Document
    {
        QString docId;
        QString title;
        QString typeKey;
        QString statusKey;
        QString text; // full text, searched case-insensitively
        int pages = 1;
    };
    struct Entry
    {
        QString docId;
        QString docsId;
        QString comment;
    };
    struct Clipboard
    {
        QString uuid;
        QString name;
        QString flags; // "W" = writeable
        QList<Entry> entries;
        QStringList roles; // as getClipboardRoles answers: leading U+FEFF role U+FEFF R/W
    };

    explicit RecordingClassifyClient(QObject *parent = nullptr);

    CallLog &log() { return m_log; }

    // Filling the store.
    void addDocument(const Document &document) { locked([&] { m_documents.insert(document.docId, document); }); }
    QString addClipboard(const QString &name, bool writeable = true, const QString &uuid = {});
    QString addEntry(const QString &clipboardId, const QString &docId, const QString &docsId = {},
                     const QString &comment = {});
    void setClipboardFlags(const QString &clipboardId, const QString &flags);
    void setRawClipboards(const QList<QPair<QString, QString>> &raw) // overrides getClipboards' answer
    {
        locked([&] { m_useRawClipboards = true; m_rawClipboards = raw; });
    }
    void setAllRoles(const QStringList &roles) { locked([&] { m_allRoles = roles; }); }
    void setRoleName(const QString &roleId, const QString &displayName) { locked([&] { m_roleNames.insert(roleId, displayName); }); }
    void setRawClipboardRoles(const QString &clipboardId, const QStringList &entries);
    void setDocumentType(const QString &key, const QString &name) { locked([&] { m_types.insert(key, name); }); }
    void setDocumentStatus(const QString &key, const QString &name) { locked([&] { m_statuses.insert(key, name); }); }
    void setConnectionMode(const QString &mode) { locked([&] { m_connectionMode = mode; }); }
    void setServer(const QString &host, int port, qlonglong profileId)
    {
        locked([&] { m_serverHost = host; m_serverPort = port; m_profileId = profileId; });
    }

    // Reading the store.
    QList<Clipboard> clipboards() const { return locked([&] { return m_clipboards; }); }
    Clipboard clipboard(const QString &uuid) const;
    bool hasClipboard(const QString &uuid) const { return locked([&] { return indexOf(uuid) >= 0; }); }
    QStringList cardInfoOf(const QString &docsId) const;

    // ClassifyInterface
    QStringList searchDocuments(QStringList criteria) override;
    QStringList getAllRoles() override { return answer(QStringLiteral("getAllRoles"), m_allRoles); }
    QString getConnectionMode() override { return answer(QStringLiteral("getConnectionMode"), m_connectionMode); }
    QStringList getCardInfo(QString docsId, QString option) override;
    bool getDocumentTypes(QStringList &rows, QStringList &second) override;
    bool getDocumentStatuses(QStringList &rows, QStringList &second) override;
    QString getServerHost() override { return answer(QStringLiteral("getServerHost"), m_serverHost); }
    int getServerPort() override { return answer(QStringLiteral("getServerPort"), m_serverPort); }
    qlonglong getProfileId() override { return answer(QStringLiteral("getProfileId"), m_profileId); }
    QString createClipboard(QString name) override;
    bool removeClipboard(QString uuid) override;
    bool renameClipboard(QString uuid, QString name) override;
    bool getClipboards(QList<QPair<QString, QString>> &clipboards) override;
    bool getClipboardDocuments(QString clipboardId, QStringList &entries,
                               QStringList &comments) override;
    bool addToClipboard(QString clipboardId, QString docId, QString docsId) override;
    bool removeFromClipboard(QString clipboardId, QString docsId) override;
    bool clearClipboard(QString clipboardId) override;
    bool setClipboardComment(QString clipboardId, QString docsId, QString text) override;
    QStringList getClipboardRoles(QString clipboardId) override;
    bool setClipboardRoles(QString clipboardId, QStringList roles) override;
    QStringList getRoleNames(QStringList roleIds) override;

private:
    // Log the call, stall if asked; true when the operation is set to fail.
    bool enter(const QString &name, const QVariantList &args);
    int indexOf(const QString &uuid) const; // caller holds m_mutex
    template<typename Work>
    auto locked(Work work) const -> decltype(work())
    {
        QMutexLocker locker(&m_mutex);
        return work();
    }
    // Logs the call and answers value, read under the lock; empty when set to fail.
    template<typename T>
    T answer(const QString &name, const T &value)
    {
        return enter(name, {}) ? T() : locked([&] { return value; });
    }
    // Logs the call (whose first argument is the clipboard's id) and runs
    // change on that clipboard under the lock; an empty answer when the
    // operation is set to fail or there is no such clipboard.
    template<typename Change>
    auto onClipboard(const QString &name, const QVariantList &args, Change change) -> decltype(change(std::declval<Clipboard &>()))
    {
        if (enter(name, args))
            return {};
        QMutexLocker locker(&m_mutex);
        const int index = indexOf(args.value(0).toString());
        if (index < 0)
            return {};
        return change(m_clipboards[index]);
    }
    QStringList cardFields(const Entry &entry) const; // caller holds m_mutex
    static bool tableRows(const QMap<QString, QString> &table, bool shortRows, QStringList &rows);

    CallLog m_log;
    mutable QMutex m_mutex;
    QMap<QString, Document> m_documents;
    QList<Clipboard> m_clipboards;
    bool m_useRawClipboards = false;
    QList<QPair<QString, QString>> m_rawClipboards;
    QStringList m_allRoles;
    QMap<QString, QString> m_roleNames;
    QMap<QString, QString> m_types;
    QMap<QString, QString> m_statuses;
    QString m_connectionMode = QStringLiteral("Online");
    QString m_serverHost = QStringLiteral("localhost");
    int m_serverPort = 4711;
    qlonglong m_profileId = 1;
    int m_nextDocsId = 1000;
};
