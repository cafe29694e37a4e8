#pragma once

#include "orvexarchiveglobal.h"

#include "classifyinterface.h"

#include <QMutex>
#include <QObject>
#include <QSharedPointer>

#include <functional>

class OrvexArchiveStore;
class QSqlDatabase;

// The archive's classification client: clipboards, their entries, notes and
// rights, document queries with full text, roles and connection facts, all
// as the acting user. Rights are checked here, on the archive's side: a user
// sees the clipboards one of its roles may view, and every change needs an edit
// right ("W") on the clipboard; its owner always keeps that right. On a server
// the client works as the user's database role, and the server enforces the
// same rules itself. Safe to call from any thread.
//
// Card and search rows hold the fields
//   0 docId, 1 docsId, 2 title, 3 type key, 4 date, 5 file name, 6 status key, 7 pages
// (search rows carry "docId#docsId" in field 0). A document the user may not
// read keeps its ids but shows no title, type, status or file name.
class ORVEXARCHIVE_EXPORT OrvexClassifyClient : public QObject, public ClassifyInterface
{
    Q_OBJECT

public:
    explicit OrvexClassifyClient(QSharedPointer<OrvexArchiveStore> store, QObject *parent = nullptr);

    QString user() const;
    void setUser(const QString &userId);
    QString lastError() const;

    // ClassifyInterface
    QStringList searchDocuments(QStringList criteria) override;
    QStringList getAllRoles() override;
    QString getConnectionMode() override;
    QStringList getCardInfo(QString docsId, QString option) override;
    bool getDocumentTypes(QStringList &rows, QStringList &second) override;
    bool getDocumentStatuses(QStringList &rows, QStringList &second) override;
    QString getServerHost() override;
    int getServerPort() override;
    qlonglong getProfileId() override;
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

signals:
    // Others (another host, another user) changed clipboards, their entries
    // or rights; reported once the archive watches for changes.
    void clipboardsChanged();

private:
    enum class Right { None, View, Edit };
    Right rightOn(QSqlDatabase &db, const QString &uuid, const QString &user);
    // Checks that the clipboard exists and the user holds at least needed; sets the error.
    bool require(QSqlDatabase &db, const QString &uuid, Right needed, QString &error);
    bool validName(const QString &name, QString &error) const;
    bool tableRows(const QString &table, QStringList &rows);
    bool fail(const QString &error);
    bool writeAs(const std::function<bool(QSqlDatabase &, QString &)> &work);
    // The store the acting user works on (on a server: as its own role);
    // null, with the reason, when it cannot be had.
    QSharedPointer<OrvexArchiveStore> store(QString &error) const;
    // The calling thread's connection to store().
    QSqlDatabase database(QString &error) const;

    QSharedPointer<OrvexArchiveStore> m_store;
    mutable QMutex m_mutex;
    QString m_user;
    QString m_storeError;
    QString m_lastError;
};
