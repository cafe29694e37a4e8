#pragma once

#include "orvexworkbenchglobal.h"

#include <QList>
#include <QMap>
#include <QMimeData>
#include <QPalette>
#include <QPixmap>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <QVariant>

class ClassifyInterface;
class OrvexArchiveWorker;

// The data object of every drag of archive documents. The drag owner fills it
// (marker format "x-application-orvex", the parallel docIds and docsIds lists,
// the per-process docs-id stream, "text/uri-list" entries, remarks, worker and
// classification client); a board that receives the drop reads the lists back.
// Each object owns a private temporary folder for files it may export.
class ORVEXWORKBENCH_EXPORT OrvexMimeData : public QMimeData
{
    Q_OBJECT

public:
    // One dragged document: ids, the version picked (0 = the current one) and
    // the remark that names its file on export.
    struct Document
    {
        qlonglong docId = 0;
        qlonglong docsId = 0;
        qlonglong version = 0;
        QString remark;
    };

    OrvexMimeData();
    ~OrvexMimeData() override;

    // The data object of a drag of documents, filled as every document drag
    // is: marker, id lists, docs-id stream, entries, remarks, worker and client.
    static OrvexMimeData *create(const QList<Document> &documents, ClassifyInterface *classifyClient,
                                 OrvexArchiveWorker *archiveWorker);
    // The picture under the cursor of such a drag: the number of documents.
    static QPixmap dragBadge(int count, const QPalette &palette);

    void setDocIds(const QStringList &docIds);
    QStringList &getDocIds();
    void setDocsIds(const QStringList &docsIds);
    QStringList &getDocsIds();
    // Takes the archive worker; the name says client for the drag owners' sake.
    void setArchiveClient(OrvexArchiveWorker *worker);
    OrvexArchiveWorker *getArchiveWorker();
    void setClassifyClient(ClassifyInterface *client);
    // Remark per document entry, keyed "docId#version" or the bare document id.
    void setBemerkungen(QMap<QString, QString> remarks);

    // Whether exactly the left, or exactly the right, mouse button is held.
    bool getLButtonDown() const;

    // Docs ids from this process's document stream ("x-vantrel-orvexdocument" + pid).
    QList<qlonglong> getDocsIdsFromMimeData() const;
    // The stored formats, then "text/x-orvex-uri", which is produced on request.
    QStringList formats() const override;

    // The stream format of this process.
    static QString documentStreamFormat();
    // The parallel id lists a drop carries: read from the program's own data
    // object, or for foreign data from the two id formats. Empty when the lists
    // do not pair up.
    static void readIdLists(const QMimeData *data, QStringList &docIds, QStringList &docsIds);

    // One local document URL per dragged document; with exportNames the file
    // names are the archive's, and a rights mismatch gives no URLs at all.
    QList<QUrl> getUrlList(bool exportNames) const;
    // Exports the dragged documents into the drag's folder once; later calls
    // answer the same list of file URLs.
    QVariant getFiles(const QString &mimeType, QVariant::Type type) const;
    // Exports the dragged documents into folder (only the first export writes).
    void copyTo(const QString &folder);

    // Read access for the drop side and for tests.
    bool isTargetOutside() const { return m_targetOutside; }
    ClassifyInterface *getClassifyClient() const { return m_classifyClient; }
    QMap<QString, QString> getBemerkungen() const { return m_remarks; }
    QString getTempDir() const { return m_tempDir; }
    QString getTempDirName() const { return m_tempDirName; }
    qint64 getDndPort() const { return m_dndPort; }

protected:
    // "text/uri-list" and "text/x-orvex-uri": local URLs while the drag's button
    // is held, the archive's file names once it is released.
    QVariant retrieveData(const QString &mimeType, QVariant::Type type) const override;
    // The buttons held right now; the seam through which tests play the mouse.
    virtual Qt::MouseButtons pressedMouseButtons() const;

public slots:
    // The drag owner reports the current drop target; nullptr means a target
    // outside this application.
    void setCurrentWidget(QObject *widget);

private:
    // Name of a document's URL when the archive is not asked: ids, remark and
    // a suffix, online "pdf", offline the stored file's.
    QString readableName(const QString &docId, const QString &version, const QString &remarkKey,
                         bool offline) const;

    bool m_targetOutside = false;
    QStringList m_docIds;
    QStringList m_docsIds;
    OrvexArchiveWorker *m_archiveWorker = nullptr; // not owned
    ClassifyInterface *m_classifyClient = nullptr; // not owned
    QMap<QString, QString> m_remarks;
    QString m_tempDir;
    mutable bool m_exportPending = true;
    QString m_tempDirName;
    mutable QVariant m_cachedFiles;
    qint64 m_dndPort = 0;
    mutable bool m_permissionDenied = false; // the user has been told
};
