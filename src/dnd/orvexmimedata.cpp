#include "orvexmimedata.h"

#include "classifyinterface.h"
#include "kelarchiveclientinterface.h"
#include "orvexarchiveworker.h"
#include "orvexdragids.h"
#include "orvexlog.h"
#include "orvexlogindata.h"
#include "qsnackbarevent.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QHostInfo>
#include <QMessageBox>
#include <QPainter>

namespace {
const QString kDragMarker = QStringLiteral("x-application-orvex");
const QString kOrvexUriFormat = QStringLiteral("text/x-orvex-uri");
const QString kUriListFormat = QStringLiteral("text/uri-list");
const QString kDocIdsFormat = QStringLiteral("x-application-orvex-docids");
const QString kDocsIdsFormat = QStringLiteral("x-application-orvex-docsids");
const QChar kVersionSep(0xFEFF);
const QChar kInfoSep(0xFFFD);

QByteArray joinedUrls(const QList<QUrl> &urls)
{
    QStringList texts;
    for (const QUrl &url : urls)
        texts << url.toString();
    return texts.join(QStringLiteral("\r\n")).toUtf8();
}

QVariantList urlVariants(const QList<QUrl> &urls)
{
    QVariantList list;
    for (const QUrl &url : urls)
        list << QVariant(url);
    return list;
}

// A file name goes into the URL as it is, except for the characters that
// would end the path or start a fragment and so cut off the query.
QString urlPathName(QString name)
{
    return name.replace(QLatin1Char('%'), QLatin1String("%25"))
        .replace(QLatin1Char('?'), QLatin1String("%3F"))
        .replace(QLatin1Char('#'), QLatin1String("%23"));
}

bool isOffline(ClassifyInterface *client)
{
    return client && client->getConnectionMode().startsWith(QLatin1String("Offline"));
}
} // namespace

OrvexMimeData::OrvexMimeData()
{
    orvexLoginData loginData;

    // Two objects made within the same millisecond would share a folder, and the
    // first one destroyed would empty it under the other; the next free
    // millisecond keeps the name's form and the folder private.
    const QDir temp(QDir::tempPath());
    QDateTime stamp = QDateTime::currentDateTime();
    for (int attempt = 0; attempt < 1000; ++attempt, stamp = stamp.addMSecs(1)) {
        m_tempDirName = QStringLiteral("zuldnd") + stamp.toString(QStringLiteral("yyyyMMdd-hhmmsszzz"));
        if (!temp.exists(m_tempDirName))
            break;
    }
    temp.mkdir(m_tempDirName); // a failure shows later, when an export into it fails
    m_tempDir = QDir::tempPath() + QDir::separator() + m_tempDirName + QDir::separator();

    m_dndPort = loginData.getDNDPort();
}

OrvexMimeData::~OrvexMimeData()
{
    orvexDebug() << "DESTROY MIME" << m_tempDir;
    // Offline, exported files stay: the host may still need them without a
    // server to fetch them from again.
    if (m_classifyClient
        && m_classifyClient->getConnectionMode().startsWith(QLatin1String("Offline"))) {
        return;
    }
    const QDir dir(m_tempDir);
    const QFileInfoList files = dir.entryInfoList(QDir::Files | QDir::NoDotAndDotDot, QDir::NoSort);
    for (const QFileInfo &file : files)
        QFile::remove(file.absoluteFilePath());
    QDir().rmdir(m_tempDir);
}

void OrvexMimeData::setDocIds(const QStringList &docIds)
{
    m_docIds = docIds;
}

QStringList &OrvexMimeData::getDocIds()
{
    return m_docIds;
}

void OrvexMimeData::setDocsIds(const QStringList &docsIds)
{
    m_docsIds = docsIds;
}

QStringList &OrvexMimeData::getDocsIds()
{
    return m_docsIds;
}

void OrvexMimeData::setArchiveClient(OrvexArchiveWorker *worker)
{
    m_archiveWorker = worker;
}

OrvexArchiveWorker *OrvexMimeData::getArchiveWorker()
{
    return m_archiveWorker;
}

void OrvexMimeData::setClassifyClient(ClassifyInterface *client)
{
    m_classifyClient = client;
}

void OrvexMimeData::setBemerkungen(QMap<QString, QString> remarks)
{
    m_remarks = std::move(remarks);
}

bool OrvexMimeData::getLButtonDown() const
{
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
    const Qt::MouseButtons buttons = pressedMouseButtons();
    return buttons == Qt::LeftButton || buttons == Qt::RightButton;
}

Qt::MouseButtons OrvexMimeData::pressedMouseButtons() const
{
    return QGuiApplication::mouseButtons();
}

void OrvexMimeData::setCurrentWidget(QObject *widget)
{
    orvexDebug() << "TARGET: " << widget;
    QCoreApplication::processEvents(QEventLoop::AllEvents);
    m_targetOutside = widget == nullptr;
}

QString OrvexMimeData::documentStreamFormat()
{
    return QStringLiteral("x-vantrel-orvexdocument")
        + QString::number(QCoreApplication::applicationPid());
}

QList<qlonglong> OrvexMimeData::getDocsIdsFromMimeData() const
{
    const QString key = documentStreamFormat();
    if (!formats().contains(key, Qt::CaseSensitive))
        return {};
    return OrvexDragIds::fromDocumentStream(data(key));
}

OrvexMimeData *OrvexMimeData::create(const QList<Document> &documents, ClassifyInterface *classifyClient,
                                     OrvexArchiveWorker *archiveWorker)
{
    auto *data = new OrvexMimeData;
    QStringList docIds, docsIds;
    QList<QUrl> documentEntries;
    QMap<QString, QString> remarks;
    QByteArray stream;
    QDataStream out(&stream, QIODevice::WriteOnly);
    for (const Document &document : documents) {
        const QString docId = QString::number(document.docId);
        const QString docsId = QString::number(document.docsId);
        docIds << docId;
        docsIds << docsId;
        out << docsId;
        const QString versioned =
            document.version > 0 ? docId + QLatin1Char(';') + QString::number(document.version) : docId;
        documentEntries << QUrl(versioned);
        if (!document.remark.isEmpty())
            remarks.insert(QString(versioned).replace(QLatin1Char(';'), QLatin1Char('#')), document.remark);
    }
    data->setData(kDragMarker, QByteArray());
    data->setDocIds(docIds);
    data->setDocsIds(docsIds);
    data->setData(documentStreamFormat(), stream);
    data->setUrls(documentEntries);
    data->setBemerkungen(remarks);
    data->setArchiveClient(archiveWorker);
    data->setClassifyClient(classifyClient);
    return data;
}

QPixmap OrvexMimeData::dragBadge(int count, const QPalette &palette)
{
    QPixmap badge(48, 24);
    badge.fill(palette.color(QPalette::Highlight));
    QPainter painter(&badge);
    painter.setPen(palette.color(QPalette::HighlightedText));
    painter.drawText(badge.rect(), Qt::AlignCenter, QString::number(count));
    return badge;
}

void OrvexMimeData::readIdLists(const QMimeData *data, QStringList &docIds, QStringList &docsIds)
{
    docIds.clear();
    docsIds.clear();
    if (!data)
        return;
    // Within this process only the program's own data object carries the
    // marker; a drag from another process or application arrives as plain
    // QMimeData and has to be read from the id formats.
    if (auto *own = qobject_cast<const OrvexMimeData *>(data)) {
        docIds = own->m_docIds;
        docsIds = own->m_docsIds;
    } else {
        docIds = OrvexDragIds::fromIdFormat(data->data(kDocIdsFormat));
        docsIds = OrvexDragIds::fromIdFormat(data->data(kDocsIdsFormat));
    }
    if (docIds.size() != docsIds.size()) {
        // Which document belongs to which entry is unknown: nothing is added.
        orvexWarning() << "DROP REFUSED: id lists differ in length" << docIds << docsIds;
        docIds.clear();
        docsIds.clear();
    }
}

QStringList OrvexMimeData::formats() const
{
    QStringList list = QMimeData::formats();
    list.removeAll(kOrvexUriFormat);
    list.append(kOrvexUriFormat);
    return list;
}

QVariant OrvexMimeData::retrieveData(const QString &mimeType, QVariant::Type type) const
{
    const bool uriList = mimeType == kUriListFormat;
    if (!uriList && mimeType != kOrvexUriFormat)
        return QMimeData::retrieveData(mimeType, type);

    // While the button that drives the drag is held the target only probes:
    // cheap URLs, no names from the archive.
    if (getLButtonDown()) {
        orvexDebug() << "LBUTTON DOWN.";
        const QList<QUrl> urls = getUrlList(false);
        return uriList ? QVariant(urlVariants(urls)) : QVariant(joinedUrls(urls));
    }

    orvexDebug() << "LBUTTON UP, do export.";
    if (uriList)
        return urlVariants(getUrlList(true));
    orvexDebug() << "Export x-orvex-uri";
    return joinedUrls(getUrlList(false));
}

QList<QUrl> OrvexMimeData::getUrlList(bool exportNames) const
{
    QList<QUrl> urls;
    const auto done = [&urls]() {
        orvexDebug() << "END GETURL LIST";
        return urls;
    };

    QStringList entries;
    const QVariantList stored = QMimeData::retrieveData(kUriListFormat, QVariant::List).toList();
    for (const QVariant &entry : stored)
        entries << entry.toString();
    const QList<qlonglong> docsIds = getDocsIdsFromMimeData();
    if (!m_classifyClient || !m_archiveWorker || !m_archiveWorker->getArchiveClient()) {
        // The drag owner sets both before the platform sees the data; without
        // them there is no server to point a URL at.
        orvexWarning() << "GETURL LIST without classification client or archive";
        return done();
    }
    kelArchiveClientInterface *client = m_archiveWorker->getArchiveClient();
    const bool offline = isOffline(m_classifyClient);

    QStringList docsIdTexts;
    QStringList names;
    if (docsIds.size() == entries.size()) {
        for (qlonglong docsId : qAsConst(docsIds))
            docsIdTexts << QString::number(docsId);
        names = client->getDocumentFileNames(entries, docsIdTexts);
        if (names.size() != docsIdTexts.size()) {
            // A target may probe many times while the button is held: the user
            // hears of it once per drag.
            if (!m_permissionDenied) {
                m_permissionDenied = true;
                QMessageBox::warning(nullptr, tr("Warning"), tr("Permission denied."), QMessageBox::Ok);
            }
            return done();
        }
    } else {
        // Without a matching document stream the entries count as outside any clipboard.
        for (int i = 0; i < entries.size(); ++i)
            docsIdTexts << QStringLiteral("-1");
        if (exportNames)
            return done();
    }

    QString host = m_classifyClient->getServerHost();
    if (host.toLower() == QLatin1String("localhost"))
        host = QHostInfo::localHostName();
    const QString serverPart = QStringLiteral("&archive=") + m_archiveWorker->getCurrentArchive()
        + QStringLiteral("&host=") + host + QStringLiteral("&port=")
        + QString::number(m_classifyClient->getServerPort()) + QStringLiteral("&profileId=")
        + QString::number(m_classifyClient->getProfileId());

    for (int i = 0; i < entries.size(); ++i) {
        const OrvexDragIds::Entry entry = OrvexDragIds::entry(entries.at(i));
        if (!entry.isValid()) {
            orvexWarning() << "GETURL LIST: not a document entry:" << entries.at(i);
            continue;
        }
        QString name;
        if (!exportNames)
            name = readableName(entry.docId, entry.version, entry.remarkKey, offline);
        else if (entry.version.isEmpty())
            name = names.at(i);
        else
            name = client->getDocumentPartFileName(entry.docId, docsIdTexts.at(i), entry.version);

        QString text = QStringLiteral("http://localhost:") + QString::number(m_dndPort)
            + QStringLiteral("/openDoc/") + urlPathName(name) + QStringLiteral("?openmode=4&docid=")
            + entry.docId;
        if (!entry.version.isEmpty())
            text += QStringLiteral("&version=") + entry.version;
        urls << QUrl(text + serverPart, QUrl::TolerantMode);
    }
    return done();
}

QString OrvexMimeData::readableName(const QString &docId, const QString &version,
                                    const QString &remarkKey, bool offline) const
{
    QString suffix;
    if (!offline) {
        suffix = QStringLiteral("pdf");
    } else {
        // The version records tell the stored file, and so its type.
        const QStringList records = m_archiveWorker->getAllVersions(docId);
        for (const QString &record : records) {
            const QStringList fields = record.split(kVersionSep);
            if (!version.isEmpty() && fields.value(1) != version)
                continue;
            suffix = QFileInfo(fields.value(11)).suffix();
            break;
        }
        if (suffix.isEmpty() && version.isEmpty()) {
            QStringList info;
            m_archiveWorker->getDocumentInfo(QStringList{docId}, info);
            if (!info.isEmpty())
                suffix = info.first().split(kInfoSep).value(3);
        }
    }

    QString name = docId;
    if (!version.isEmpty())
        name += QLatin1Char('_') + version;
    name += QLatin1Char('_') + m_remarks.value(remarkKey);
    if (!name.toUpper().endsWith(QLatin1Char('.') + suffix.toUpper()))
        name += QLatin1Char('.') + suffix;
    for (const QChar c : {QLatin1Char('/'), QLatin1Char('\\'), QLatin1Char(';'), QLatin1Char('#')})
        name.remove(c);
    return name;
}

QVariant OrvexMimeData::getFiles(const QString &mimeType, QVariant::Type type) const
{
    QList<qlonglong> docsIds = getDocsIdsFromMimeData();
    if (!m_cachedFiles.isNull())
        return m_cachedFiles;

    QList<qlonglong> docIds;
    QList<qlonglong> versions;
    if (m_exportPending) {
        const QVariantList stored = QMimeData::retrieveData(mimeType, type).toList();
        // An entry that is no document reference is left out, and with it its
        // docs id, so the two lists stay side by side.
        const bool paired = docsIds.size() == stored.size();
        QList<qlonglong> pairedDocsIds;
        bool versioned = false;
        for (int i = 0; i < stored.size(); ++i) {
            const OrvexDragIds::Entry entry = OrvexDragIds::entry(stored.at(i).toUrl().toString());
            if (!entry.isValid()) {
                orvexWarning() << "GET FILES: not a document entry:" << stored.at(i).toUrl().toString();
                continue;
            }
            docIds << entry.docId.toLongLong();
            // -1: the current version, for the entries of a drag that names no version.
            versions << (entry.version.isEmpty() ? -1 : entry.version.toLongLong());
            versioned = versioned || !entry.version.isEmpty();
            if (paired)
                pairedDocsIds << docsIds.at(i);
        }
        if (paired)
            docsIds = pairedDocsIds;
        if (!versioned)
            versions.clear();
    }

    QStringList files;
    if (!docIds.isEmpty()) {
        if (!m_archiveWorker) {
            QMessageBox::critical(nullptr, tr("Failed to export: "),
                                  tr("There is no connection to the archive."), QMessageBox::Ok);
        } else if (m_archiveWorker->exportDocuments(docIds, docsIds, versions, m_remarks, m_tempDir, false, files,
                                                    -1, isOffline(m_classifyClient), false, false,
                                                    QStringLiteral("IGNORE"))) {
            // The drop target shows nothing of it: the host's status line tells what was written.
            QSnackbarEvent(m_archiveWorker->exportSummary().textWithReasons()).send();
        } else if (!m_archiveWorker->isCanceled()) {
            QMessageBox::critical(nullptr, tr("Failed to export: "), m_archiveWorker->getLastError(),
                                  QMessageBox::Ok);
        }
    }

    QVariantList urls;
    for (const QString &file : qAsConst(files))
        urls << QUrl::fromLocalFile(QDir::toNativeSeparators(file).trimmed());
    m_cachedFiles = urls;
    m_exportPending = false;
    return m_cachedFiles;
}

void OrvexMimeData::copyTo(const QString &folder)
{
    const QString tempDir = m_tempDir;
    m_tempDir = folder;
    const QVariant result = getFiles(kUriListFormat, QVariant::List);
    m_tempDir = tempDir;
    orvexDebug() << "COPY TO:" << result;
}
