#pragma once

#include <QList>
#include <QPair>
#include <QString>
#include <QStringList>

// The host's classification client: document queries, clipboards, cards, roles
// and connection facts. The host owns it; the workbench only borrows it.
// Records are QStringLists whose elements hold fields separated by U+FEFF.
// Failures come back as false or an empty result.
class ClassifyInterface
{
public:
    virtual ~ClassifyInterface() = default;

    // Row 0 of the answer is a header; every other row's field 0 is "docId#docsId".
    virtual QStringList searchDocuments(QStringList criteria) = 0;
    virtual QStringList getAllRoles() = 0;
    // Starts with "Offline" while the host works without its archive server.
    virtual QString getConnectionMode() = 0;
    virtual QStringList getCardInfo(QString docsId, QString option) = 0;
    virtual bool getDocumentTypes(QStringList &rows, QStringList &second) = 0;
    virtual bool getDocumentStatuses(QStringList &rows, QStringList &second) = 0;
    virtual QString getServerHost() = 0;
    virtual int getServerPort() = 0;
    virtual qlonglong getProfileId() = 0;
    // Empty uuid = not created.
    virtual QString createClipboard(QString name) = 0;
    virtual bool removeClipboard(QString uuid) = 0;
    virtual bool renameClipboard(QString uuid, QString name) = 0;
    // first = uuid, second = name U+FEFF flags ("W" = writeable).
    virtual bool getClipboards(QList<QPair<QString, QString>> &clipboards) = 0;
    // entries: "docId U+FEFF docsId"; comments parallel by index.
    virtual bool getClipboardDocuments(QString clipboardId, QStringList &entries,
                                       QStringList &comments) = 0;
    virtual bool addToClipboard(QString clipboardId, QString docId, QString docsId) = 0;
    virtual bool removeFromClipboard(QString clipboardId, QString docsId) = 0;
    virtual bool clearClipboard(QString clipboardId) = 0;
    virtual bool setClipboardComment(QString clipboardId, QString docsId, QString text) = 0;
    // Entries of three fields: leading field, role id, "R" or "W".
    virtual QStringList getClipboardRoles(QString clipboardId) = 0;
    virtual bool setClipboardRoles(QString clipboardId, QStringList roles) = 0;
    // One entry per role: role id U+FEFF display name.
    virtual QStringList getRoleNames(QStringList roleIds) = 0;
};
