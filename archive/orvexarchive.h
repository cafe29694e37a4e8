#pragma once

#include "orvexarchiveglobal.h"

#include <QList>
#include <QObject>
#include <QSharedPointer>
#include <QString>

class ClassifyInterface;
class kelArchiveClientInterface;
class OrvexArchiveStore;
class OrvexArchiveClient;
class OrvexClassifyClient;

// One document as the host's document list shows it.
struct OrvexArchiveDocument
{
    qlonglong id = 0;
    QString title;
    QString typeName;
    QString statusName;
    int pages = 0;
    int versions = 0;
    QString fileName;
    qlonglong docsId = 0; // the document's entry number: what drags carry beside the id
    QString date;         // yyyy-MM-dd
    bool readable = true; // false: the current user may not see the document
};

// The six values a host passes to TavloDocPluginInterface::setArchiveData, in that order.
struct OrvexConnectionValues
{
    QString server;
    int port = 0;
    QString login1;
    QString login2;
    QString archiveName;
    QString login3;
};

// The archive: in a folder (an SQLite database with the documents' files
// beside it), or on a PostgreSQL server (postgresql://user@host:port/database,
// worked on as the database role of user()). It hands out the two clients a
// host gives the workbench; both act as user(). The clients are owned by this
// object. Everything in one process that opens the same archive as the same
// user (this object, clients of the plugin library) shares one store, so
// documentsChanged() also reports uploads made by those clients; once
// watchChanges() has run, it also reports documents others archived, and the
// classification client's clipboardsChanged() the clipboards others changed.
class ORVEXARCHIVE_EXPORT OrvexArchive : public QObject
{
    Q_OBJECT

public:
    explicit OrvexArchive(QObject *parent = nullptr);
    ~OrvexArchive() override;

    static QString defaultLocation(); // under the user's data folder
    // Where clients made by the plugin library look for the archive (else
    // defaultLocation()): a folder or a server address.
    static constexpr const char *FolderVariable = "ORVEX_ARCHIVE_DIR";

    // Opens (and migrates) the archive at location, a folder or a server
    // address; an empty or missing folder and an empty database get a fresh
    // archive, filled with the sample documents when createSampleWhenNew.
    bool open(const QString &location, bool createSampleWhenNew = true);
    QString lastError() const;
    // The folder, or the server address (without password).
    QString folder() const;
    bool isOpen() const;
    bool isServer() const;
    // Open for reading only: this process cannot change the archive (a
    // read-only folder, database file or mount). Every write then fails with
    // "The archive is read-only".
    bool isReadOnly() const;

    QString user() const;
    // Default: the operating-system user, on a server the address's user. On a
    // server another user works as the database role of that name (its
    // password from the client library's usual places, such as ~/.pgpass).
    void setUser(const QString &userId);

    // Starts reporting changes that others make (see above); the calling
    // thread needs an event loop.
    void watchChanges();

    OrvexConnectionValues connectionValues() const; // values the archive's own checks accept
    QList<OrvexArchiveDocument> documents() const;

    ClassifyInterface *classifyClient();        // acts as user()
    kelArchiveClientInterface *archiveClient(); // not yet connected

    // Import a local file as a new document (the host's own upload path); 0 on failure.
    qlonglong importFile(const QString &filePath, const QString &title = {});

signals:
    void documentsChanged();

private:
    QSharedPointer<OrvexArchiveStore> m_store;
    OrvexClassifyClient *m_classify = nullptr;
    OrvexArchiveClient *m_archiveClient = nullptr;
    QString m_lastError;
    QString m_user;
};
