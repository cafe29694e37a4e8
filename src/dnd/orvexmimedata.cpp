#include "orvexmimedata.h"

#include "classifyinterface.h"
#include "orvexlog.h"
#include "orvexlogindata.h"

#include <QCoreApplication>
#include <QDataStream>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QGuiApplication>

namespace {
const QString kOrvexUriFormat = QStringLiteral("text/x-orvex-uri");
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
    const Qt::MouseButtons buttons = QGuiApplication::mouseButtons();
    return buttons == Qt::LeftButton || buttons == Qt::RightButton;
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
    QList<qlonglong> docsIds;
    const QString key = documentStreamFormat();
    if (!formats().contains(key, Qt::CaseSensitive))
        return docsIds;
    const QByteArray bytes = data(key);
    QDataStream in(bytes);
    while (!in.atEnd()) {
        QString docsId;
        in >> docsId;
        if (in.status() != QDataStream::Ok)
            break; // a cut-off last item is no id
        docsIds.append(docsId.toLongLong(nullptr, 10));
    }
    return docsIds;
}

QStringList OrvexMimeData::formats() const
{
    QStringList list = QMimeData::formats();
    list.removeAll(kOrvexUriFormat);
    list.append(kOrvexUriFormat);
    return list;
}
