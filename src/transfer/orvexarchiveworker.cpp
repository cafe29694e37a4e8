#include "orvexarchiveworker.h"

#include "dmsmailnames.h"
#include "kelarchiveclientinterface.h"
#include "orvexdirutils.h"
#include "orvexduplicatereply.h"
#include "orvexduplicatesdlg.h"
#include "orvexfilecopy.h"
#include "orvexlauncher.h"
#include "orvexlog.h"

#include <QCoreApplication>
#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QMessageBox>
#include <QPushButton>
#include <QPluginLoader>
#include <QProcess>
#include <QRegularExpression>
#include <QtConcurrent>

namespace {

QList<qlonglong> unknownEntries(int count)
{
    QList<qlonglong> entries;
    entries.reserve(count);
    for (int i = 0; i < count; ++i)
        entries << -1;
    return entries;
}

QStringList decimal(const QList<qlonglong> &numbers)
{
    QStringList texts;
    texts.reserve(numbers.size());
    for (qlonglong number : numbers)
        texts << QString::number(number);
    return texts;
}

// A name the archive or the user supplies becomes one file name: no folder
// part, no NUL. Empty when nothing usable is left.
QString plainFileName(QString name)
{
    name.remove(QChar(0));
    name.replace(QLatin1Char('/'), QLatin1Char('_'));
    if (name.trimmed().isEmpty() || name == QLatin1String(".") || name == QLatin1String(".."))
        return {};
    return name;
}

void keepResponsive()
{
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}

} // namespace

OrvexArchiveWorker::OrvexArchiveWorker(QObject *parent)
    : QObject(parent), m_fileCopy(new OrvexFileCopy)
{
    connect(m_fileCopy.get(), &OrvexFileCopy::cancelClicked, this, &OrvexArchiveWorker::cancelStreaming);
}

OrvexArchiveWorker::~OrvexArchiveWorker()
{
    if (m_ownsClient)
        delete m_client;
}

void OrvexArchiveWorker::setConnectionSettings(QString server, int port, QString login1,
                                               QString login2, QString login3)
{
    m_server = server;
    m_port = port;
    m_login1 = login1;
    m_login2 = login2;
    m_login3 = login3;
}

void OrvexArchiveWorker::selectArchive(QString name)
{
    m_archiveName = name;
    doDisconnect();
    // A wrong name keeps the connection, so that another name needs no new login.
    doConnect(true);
}

bool OrvexArchiveWorker::doConnect(bool keepOnArchiveFailure)
{
    if (!m_client) {
        const QString folder = applicationFolder();
        const QString path = folder + QDir::separator() + QLatin1String(ClientLibraryName);
        QPluginLoader loader(path);
        if (!loader.load()) {
            m_lastError = tr("Failed to load the plugin: %1 Error: %2").arg(path, loader.errorString());
            orvexWarning() << "ARCHIVE WORKER" << m_lastError;
            return false;
        }
        QObject *root = loader.instance();
        auto *factory = root ? qobject_cast<kelArchiveClientInterface *>(root) : nullptr;
        if (!factory) {
            m_lastError = tr("Failed to load the archive client: ");
            orvexWarning() << "ARCHIVE WORKER" << m_lastError << path;
            loader.unload();
            return false;
        }
        kelArchiveClientInterface *client = factory->createClient(folder);
        if (!client) {
            m_lastError = tr("Failed to load the archive client.");
            orvexWarning() << "ARCHIVE WORKER" << m_lastError << path;
            return false;
        }
        adoptClient(client, true);
    }

    if (!m_client->openConnection(m_server, m_port)) {
        m_lastError = m_client->getLastError();
        m_client->resetConnection();
        return false;
    }
    if (!m_client->logIn(m_login1, m_login2, m_login3)) {
        m_lastError = m_client->getLastError();
        m_client->resetConnection();
        return false;
    }
    if (m_client->selectArchive(m_archiveName))
        return true;
    m_lastError = m_client->getLastError();
    if (!keepOnArchiveFailure)
        m_client->resetConnection();
    return false;
}

void OrvexArchiveWorker::doDisconnect()
{
    if (m_client)
        m_client->resetConnection();
}

void OrvexArchiveWorker::setArchiveClient(kelArchiveClientInterface *client)
{
    if (client == m_client)
        return;
    if (m_client) {
        m_client->disconnect(m_fileCopy.get());
        if (m_ownsClient)
            delete m_client;
    }
    m_client = nullptr;
    m_ownsClient = false;
    if (client)
        adoptClient(client, false);
}

void OrvexArchiveWorker::adoptClient(kelArchiveClientInterface *client, bool owned)
{
    m_client = client;
    m_ownsClient = owned;
    connect(m_client, &kelArchiveClientInterface::totalFileSize, m_fileCopy.get(),
            QOverload<QString>::of(&OrvexFileCopy::setProgressMax));
    connect(m_client, &kelArchiveClientInterface::currentReadSize, m_fileCopy.get(),
            QOverload<QString>::of(&OrvexFileCopy::setProgressValue));
    connect(m_client, &kelArchiveClientInterface::saveDocEnd, m_fileCopy.get(), &OrvexFileCopy::copyFinished);
}

kelArchiveClientInterface *OrvexArchiveWorker::getArchiveClient() const
{
    return m_client;
}

QString OrvexArchiveWorker::getCurrentArchive() const
{
    return m_archiveName;
}

QString OrvexArchiveWorker::getLastError() const
{
    return m_lastError;
}

void OrvexArchiveWorker::setParentWidget(QWidget *parent)
{
    m_parentWidget = parent;
}

void OrvexArchiveWorker::closeFileDialog()
{
}

void OrvexArchiveWorker::setApplicationFolder(const QString &folder)
{
    m_applicationFolder = folder;
}

QString OrvexArchiveWorker::applicationFolder() const
{
    return m_applicationFolder.isEmpty() ? QCoreApplication::applicationDirPath() : m_applicationFolder;
}

bool OrvexArchiveWorker::requireClient()
{
    if (m_client)
        return true;
    m_lastError = tr("No archive client is connected.");
    return false;
}

bool OrvexArchiveWorker::getArchiveNames(QStringList &names)
{
    if (!requireClient())
        return false;
    return m_client->getArchiveNames(names);
}

QStringList OrvexArchiveWorker::getAllVersions(QString docId)
{
    if (!requireClient())
        return {};
    return m_client->getAllVersions(docId.toInt());
}

QStringList OrvexArchiveWorker::searchDocs(QString query)
{
    if (!requireClient())
        return {};
    return m_client->searchDocs(query);
}

QString OrvexArchiveWorker::getDocument(const QString &docId)
{
    if (!requireClient())
        return {};
    QString path;
    if (!m_client->exportDocument(docId.toInt(), path, 0, QStringLiteral("IGNORE"))) {
        m_lastError = m_client->getLastError();
        return {};
    }
    return path;
}

bool OrvexArchiveWorker::getDocumentInfo(const QStringList &docIds, QStringList &info)
{
    if (!requireClient())
        return false;
    return m_client->getDocumentInfo(docIds, info);
}

bool OrvexArchiveWorker::getDocumentActions(const QStringList &docIds, QStringList &actions, int mode,
                                            const QString &option)
{
    if (!requireClient())
        return false;
    return m_client->getDocumentActions(docIds, actions, mode, option);
}

bool OrvexArchiveWorker::deleteDocument(const QString &docId, const QStringList &options)
{
    if (!requireClient())
        return false;
    if (m_client->deleteDocument(docId, options))
        return true;
    m_lastError = m_client->getLastError();
    QMessageBox::critical(m_parentWidget, tr("Error"), m_lastError, QMessageBox::Ok);
    return false;
}

bool OrvexArchiveWorker::writeDocumentInfo(int docId, int mode)
{
    if (!requireClient())
        return false;
    return m_client->writeDocumentInfo(docId, mode);
}

bool OrvexArchiveWorker::moveDocToArchive(qlonglong docId, int target)
{
    if (!requireClient())
        return false;
    return m_client->moveDocToArchive(docId, target);
}

void OrvexArchiveWorker::setFileCount(int count)
{
    m_fileCount = count;
}

void OrvexArchiveWorker::setFinishedCount(int count)
{
    m_finishedCount = count;
}

bool OrvexArchiveWorker::isCanceled() const
{
    return m_canceled;
}

bool OrvexArchiveWorker::isDuplicateCanceled() const
{
    return m_duplicateCanceled;
}

qlonglong OrvexArchiveWorker::getLastArchivedDocId() const
{
    return m_lastArchivedDocId;
}

OrvexFileCopy *OrvexArchiveWorker::progressDialog() const
{
    return m_fileCopy.get();
}

void OrvexArchiveWorker::cancelStreaming()
{
    m_canceled = true;
    if (m_client)
        m_client->cancelStreaming();
}

void OrvexArchiveWorker::wireProgress(OrvexFileCopy *dialog)
{
    connect(m_client, &kelArchiveClientInterface::totalFileSize, dialog,
            QOverload<QString>::of(&OrvexFileCopy::setProgressMax));
    connect(m_client, &kelArchiveClientInterface::currentReadSize, dialog,
            QOverload<QString>::of(&OrvexFileCopy::setProgressValue));
    connect(dialog, &OrvexFileCopy::cancelClicked, this, &OrvexArchiveWorker::cancelStreaming);
}

void OrvexArchiveWorker::deleteFiles(const QStringList &files) const
{
    for (const QString &file : files)
        QFile::remove(file);
}

bool OrvexArchiveWorker::exportDocuments(QList<qlonglong> docIds, QList<qlonglong> docsIds,
                                         QList<qlonglong> versions, QMap<QString, QString> remarks,
                                         QString targetDir, bool openMode, QStringList &resultFiles,
                                         int purpose, bool offline, bool skipNameDialog,
                                         bool alternateVersion, QString option)
{
    m_offlineArchive = offline;
    m_canceled = false;
    m_launches.clear();
    m_exportSummary = OrvexExportSummary();
    if (!requireClient())
        return false;
    if (docIds.isEmpty())
        return true;
    if (!versions.isEmpty() && versions.size() != docIds.size()) {
        m_lastError = tr("%1 versions were given for %2 documents.").arg(versions.size()).arg(docIds.size());
        return false;
    }
    if (!openMode && !QFileInfo(targetDir).isDir()) {
        m_lastError = tr("The folder %1 does not exist.").arg(QDir::toNativeSeparators(targetDir));
        return false;
    }

    OrvexFileCopy progress;
    progress.setWindowTitle(tr("Exportiere Dokument..."));
    wireProgress(&progress);
    progress.setText(tr("Downloading ..."));
    progress.show();

    const int count = docIds.size();
    if (docsIds.size() != count)
        docsIds = unknownEntries(count);
    if (count < 2) {
        progress.setTotalVisible(false);
    } else {
        progress.setTotalMaximum(count);
        progress.setTotalValue(0);
        progress.setTotalVisible(true);
    }
    // Full until the first measured progress of a file shows the finished files.
    progress.setTotalValue(count);

    const int exportPurpose = purpose == -1 ? (openMode ? 0 : 1) : purpose;
    QStringList fetched;
    QStringList opened;
    // Online, fetched files are temporary: a copy export that stops leaves none behind.
    const auto abandon = [&]() {
        if (!openMode && !offline)
            deleteFiles(fetched);
        return false;
    };

    for (int i = 0; i < count; ++i) {
        if (isCanceled())
            return abandon();
        progress.setFinishedFilesCount(i);
        keepResponsive();

        QString path;
        bool ok;
        if (versions.isEmpty() || versions.at(i) < 0)
            ok = m_client->exportDocument(int(docIds.at(i)), path, exportPurpose, option);
        else if (alternateVersion)
            ok = m_client->exportDocumentVersionAlt(int(docIds.at(i)), int(versions.at(i)), path);
        else
            ok = m_client->exportDocumentVersion(int(docIds.at(i)), int(versions.at(i)), path);
        if (!ok) {
            m_lastError = m_client->getLastError();
            orvexDebug() << "EXPORT FAILED" << docIds.at(i) << m_lastError;
            return abandon();
        }

        if (!openMode) {
            fetched << path;
            continue;
        }
        const QString named = getNewFileName(path, remarks, docIds.at(i), docsIds.at(i),
                                             versions.isEmpty() ? -1 : versions.at(i), true);
        resultFiles << named;
        ++m_exportSummary.exported;
        opened << named;
    }
    if (openMode) {
        // Only now: no event is processed between a launch and the return,
        // so the caller learns of every outcome through launches().
        for (const QString &file : qAsConst(opened))
            launch(OrvexLauncher::Purpose::OpenFile, file, QLatin1String(OrvexLauncher::OpenProgram), {file});
        return true;
    }

    QStringList destinations = fetched;
    if (!offline) {
        if (versions.isEmpty()) {
            const QStringList names = m_client->getDocumentFileNames(decimal(docIds), decimal(docsIds));
            if (names.size() != fetched.size()) {
                QMessageBox::warning(m_parentWidget, tr("Warning"),
                                     tr("Unable to export documents. Permissions missmatch."),
                                     QMessageBox::Ok);
            }
            // Names pair with files by position; files beyond the last name keep theirs.
            for (int i = 0; i < fetched.size() && i < names.size(); ++i) {
                const QString name = plainFileName(names.at(i));
                if (name.isEmpty())
                    continue;
                const QString renamed = QFileInfo(fetched.at(i)).absolutePath() + QLatin1Char('/') + name;
                if (renamed == fetched.at(i) || QFile::rename(fetched.at(i), getShortPathName(renamed)))
                    fetched[i] = renamed;
            }
        } else {
            for (int i = 0; i < fetched.size(); ++i)
                fetched[i] = getNewFileName(fetched.at(i), remarks, docIds.at(i), docsIds.at(i),
                                            versions.at(i), true);
        }
        destinations = fetched;

        if (!skipNameDialog) {
            dmsmailnames names(m_parentWidget);
            names.setWindowTitle(tr("Export documents..."));
            names.setFileList(fetched);
            if (names.exec() != QDialog::Accepted) {
                deleteFiles(fetched);
                m_exportSummary.skipped = fetched.size();
                m_exportSummary.reasons << tr("The file names were not confirmed.");
                return true;
            }
            destinations = names.getFileList();
        }
    }

    if (!targetDir.endsWith(QDir::separator()))
        targetDir += QDir::separator();
    // A declined overwrite leaves out that one file: the files after it are
    // still written, new ones at once and existing ones after asking.
    for (int i = 0; i < fetched.size(); ++i) {
        const QString source = QDir::toNativeSeparators(fetched.at(i));
        QString name = plainFileName(QFileInfo(destinations.value(i)).fileName());
        if (name.isEmpty())
            name = QFileInfo(fetched.at(i)).fileName();
        const QString destination = QDir::toNativeSeparators(targetDir + QStringLiteral("%1").arg(name));

        const auto copyOne = [&]() {
            // Online the fetched file is temporary: moving it saves writing every byte twice.
            const bool moved = !offline && QFile::rename(source, destination);
            QFile copied(source);
            if (!moved && !copied.copy(destination)) {
                ++m_exportSummary.failed;
                m_exportSummary.reasons << tr("%1 could not be saved (%2).").arg(name, copied.errorString());
                QMessageBox::critical(nullptr, tr("Error"), tr("The file could not be saved!"));
                return;
            }
            QFile::setPermissions(destination, QFileDevice::Permissions(0x666));
            resultFiles << destination;
            ++m_exportSummary.exported;
        };

        if (!QFileInfo::exists(destination) && !QFileInfo(destination).isSymLink()) {
            copyOne();
        } else {
            const auto answer = QMessageBox::question(
                nullptr, tr("File exists"), tr("The file %1 already exists, overwrite?").arg(destination),
                QMessageBox::Yes | QMessageBox::No, QMessageBox::No);
            QFile old(destination);
            if (answer != QMessageBox::Yes) {
                ++m_exportSummary.skipped;
                m_exportSummary.reasons << tr("%1 already exists and was kept.").arg(name);
            } else if (old.remove()) {
                copyOne();
            } else {
                ++m_exportSummary.failed;
                m_exportSummary.reasons << tr("%1 could not be overwritten (%2).").arg(name, old.errorString());
                QMessageBox::critical(nullptr, tr("Error"), tr("The file could not be overwritten."));
            }
        }
        if (!offline)
            QFile::remove(fetched.at(i));
    }
    return true;
}

OrvexExportSummary OrvexArchiveWorker::exportSummary() const
{
    return m_exportSummary;
}

QString OrvexArchiveWorker::getNewFileName(QString filePath, QMap<QString, QString> remarks,
                                           qlonglong docId, qlonglong docsId, qlonglong version,
                                           bool rename)
{
    const QFileInfo info(filePath);
    const QString suffix = info.completeSuffix();
    const QString dir = QDir::toNativeSeparators(info.absolutePath() + QDir::separator());
    if (m_offlineArchive || !m_client)
        return filePath;

    QString name = version < 1
        ? m_client->getDocumentFileName(QString::number(docId), QString::number(docsId))
        : m_client->getDocumentPartFileName(QString::number(docId), QString::number(docsId),
                                            QString::number(version));
    name = plainFileName(name);
    if (name.isEmpty()) {
        QString remark = remarks.value(QString::number(docId));
        const QString versionKey = QString::number(docId) + QLatin1Char('#') + QString::number(version);
        if (version > 0 && remarks.contains(versionKey))
            remark = remarks.value(versionKey);
        name = getOfflineFileName(filePath, remark, docId, version) + QLatin1Char('.') + suffix;
    }

    const QString dotSuffix = QLatin1Char('.') + suffix;
    QString base = name;
    if (name.endsWith(dotSuffix))
        base.remove(dotSuffix); // every occurrence, not only the last

    // The fetched file itself does not block its own name.
    const QString self = info.canonicalFilePath();
    const auto taken = [&self](const QString &path) {
        const QFileInfo other(path);
        return other.exists() && (self.isEmpty() || other.canonicalFilePath() != self);
    };
    QString candidate = dir + base;
    int counter = 0;
    do {
        ++counter;
        if (taken(candidate + dotSuffix))
            candidate = dir + base + QLatin1Char('_') + QString::number(counter);
    } while (taken(candidate + dotSuffix));

    const QString result = candidate + dotSuffix;
    if (!rename)
        return result;
    if (!self.isEmpty() && QFileInfo(result).canonicalFilePath() == self)
        return result;
    if (QFile::rename(filePath, getShortPathName(result)))
        return result;
    return filePath;
}

QString OrvexArchiveWorker::getOfflineFileName(QString filePath, QString remark, qlonglong docId,
                                               qlonglong version)
{
    QString result = QString::number(docId) + QLatin1Char('_');
    if (version >= 0)
        result += QString::number(version) + QLatin1Char('_');
    if (!remark.isEmpty())
        result += remark;
    // No extension here: the caller appends the one of the fetched file.
    Q_UNUSED(filePath)
    static const QRegularExpression illegal(QStringLiteral("[^a-zA-Z0-9äüöÄÜÖß._-]"));
    result.remove(illegal);
    result = result.trimmed();
    return result.left(100);
}

bool OrvexArchiveWorker::mailDocuments(QList<qlonglong> docIds, QList<qlonglong> docsIds,
                                       QList<qlonglong> versions, QMap<QString, QString> remarks,
                                       QString mailCommand, bool offline)
{
    m_offlineArchive = offline;
    m_canceled = false;
    m_launches.clear();
    if (!requireClient())
        return false;
    if (!versions.isEmpty() && versions.size() != docIds.size()) {
        m_lastError = tr("%1 versions were given for %2 documents.").arg(versions.size()).arg(docIds.size());
        return false;
    }

    OrvexFileCopy progress;
    progress.setWindowTitle(tr("Send Document(s)..."));
    wireProgress(&progress);
    progress.setText(QStringLiteral("Downloading ..."));
    progress.show();
    const int count = docIds.size();
    if (count < 2) {
        progress.setTotalVisible(false);
    } else {
        progress.setTotalMaximum(count);
        progress.setTotalValue(0);
        progress.setTotalVisible(true);
    }
    if (docsIds.size() != count)
        docsIds = unknownEntries(count);

    QString mailto = QStringLiteral("mailto:?subject=&body=");
    QStringList attachments;
    QList<qlonglong> done;
    for (int i = 0; i < count; ++i) {
        const qlonglong docId = docIds.at(i);
        const qlonglong version = versions.isEmpty() ? -1 : versions.at(i);
        progress.setTotalValue(i);
        progress.setFinishedFilesCount(i);
        keepResponsive();

        QString path;
        bool ok;
        if (versions.isEmpty()) {
            if (done.contains(docId))
                continue; // each document is attached once
            ok = m_client->exportDocument(int(docId), path, 2, QStringLiteral("IGNORE"));
        } else {
            ok = m_client->exportDocumentVersion(int(docId), int(versions.at(i)), path);
            if (isCanceled())
                return false;
        }
        if (!ok) {
            m_lastError = m_client->getLastError();
            return false;
        }
        path = getNewFileName(path, remarks, docId, docsIds.at(i), version, true);
        mailto += QStringLiteral("&attach=") + path;
        attachments << path;
        done << docId;
    }

    // The mail program reads the attachments after this call: they stay.
    const QString subject = attachments.join(QLatin1Char('\n'));
    if (mailCommand.isEmpty()) {
        launch(OrvexLauncher::Purpose::Mail, subject, QLatin1String(OrvexLauncher::MailProgram), {mailto});
        return true;
    }
    QStringList quoted;
    for (const QString &attachment : qAsConst(attachments))
        quoted << QLatin1Char('"') + attachment + QLatin1Char('"');
    const QString command = mailCommand.arg(quoted.join(QLatin1Char(',')));
    QStringList arguments = QProcess::splitCommand(command);
    const QString program = arguments.isEmpty() ? QString() : arguments.takeFirst();
    launch(OrvexLauncher::Purpose::Mail, subject, program, arguments);
    return true;
}

OrvexLauncher *OrvexArchiveWorker::launch(OrvexLauncher::Purpose purpose, const QString &subject,
                                          const QString &program, const QStringList &arguments)
{
    auto *launcher = new OrvexLauncher(purpose, this);
    launcher->setSubject(subject);
    connect(launcher, &OrvexLauncher::finished, launcher, [launcher](bool ok, const QString &error) {
        if (!ok)
            orvexWarning() << "LAUNCH FAILED" << error;
        launcher->deleteLater();
    });
    m_launches << launcher;
    launcher->start(program, arguments);
    return launcher;
}

QList<OrvexLauncher *> OrvexArchiveWorker::launches() const
{
    QList<OrvexLauncher *> alive;
    for (const QPointer<OrvexLauncher> &launcher : m_launches)
        if (launcher)
            alive << launcher;
    return alive;
}

bool OrvexArchiveWorker::askArchiveUnreadableDuplicates(const QString &shownFile)
{
    QMessageBox question(QMessageBox::Question, tr("Duplicate Check"),
                         tr("The archive reports that %1 may duplicate archived documents, but its answer "
                            "could not be read.").arg(shownFile),
                         QMessageBox::NoButton, m_parentWidget);
    question.setInformativeText(tr("Archive the file anyway?"));
    QPushButton *archive = question.addButton(tr("Archive Anyway"), QMessageBox::AcceptRole);
    question.addButton(tr("Discard"), QMessageBox::RejectRole);
    question.setDefaultButton(archive);
    question.exec();
    return question.clickedButton() == archive;
}

bool OrvexArchiveWorker::abandonUpload(const QString &uploadId, const QString &error)
{
    m_lastError = error;
    if (!uploadId.isEmpty())
        m_client->discardUpload(uploadId);
    m_fileCopy->hide();
    return false;
}

bool OrvexArchiveWorker::uploadFile(QString archiveData, QString filePath, bool flag)
{
    // The GUI runs on while a file streams: a second upload must not start inside
    // the first, nor clear its flags.
    if (m_uploading) {
        m_lastError = tr("Another upload is still running.");
        return false;
    }
    m_canceled = false;
    m_duplicateCanceled = false;
    if (!requireClient())
        return false;
    const QFileInfo info(filePath);
    const QString shown = QDir::toNativeSeparators(filePath);
    if (!info.isFile() || !info.isReadable()) {
        m_lastError = tr("The file %1 cannot be read.").arg(shown);
        return false;
    }
    if (info.size() == 0) {
        m_lastError = tr("The file %1 is empty.").arg(shown);
        return false;
    }

    OrvexFileCopy *progress = m_fileCopy.get();
    if (m_fileCount < 2) {
        progress->setTotalMaximum(1);
        progress->setTotalValue(0);
        progress->setTotalVisible(false);
    } else {
        progress->setTotalMaximum(m_fileCount);
        progress->setTotalValue(m_finishedCount);
        progress->setTotalVisible(true);
    }
    progress->setWindowTitle(tr("Archiviere Dokument..."));
    progress->setText(tr("Uploading %1...").arg(info.fileName()));
    progress->setFinishedFilesCount(m_finishedCount);
    progress->show();

    // The task writes only into these; the GUI thread reads them once the task is done.
    QStringList reply;
    QString sentId;
    kelArchiveClientInterface *client = m_client;
    auto *loop = new QEventLoop(this);
    QFuture<void> task = QtConcurrent::run([=, &reply, &sentId]() {
        QString uploadId;
        if (client->sendFile(filePath, uploadId))
            sentId = uploadId;
        // A failed send has nothing to check, and asking would replace the client's reason.
        if (!sentId.isEmpty())
            reply = client->checkDuplicates(archiveData, filePath, sentId, flag, 0, 0, 1, 1);
        // Queued: it reaches the loop even when the task ends before exec() starts.
        QMetaObject::invokeMethod(loop, "quit", Qt::QueuedConnection);
    });
    m_uploading = true;
    orvexDebug() << "UPLOAD STARTED" << filePath;
    loop->exec();
    task.waitForFinished(); // at once, unless someone else ended the loop
    m_uploading = false;
    loop->deleteLater();

    const OrvexDuplicateReply parsed = OrvexDuplicateReply::parse(reply);
    const QString uploadId = parsed.uploadId();
    if (uploadId.trimmed().isEmpty()) {
        QString error = m_client->getLastError();
        if (error.isEmpty())
            error = tr("The archive did not accept %1.").arg(shown);
        // A cancel ends the caller's batch too.
        if (m_canceled)
            m_duplicateCanceled = true;
        orvexDebug() << "UPLOAD FAILED" << filePath << error;
        // When the check failed after the file had arrived, the archive keeps nothing of it.
        return abandonUpload(sentId, error);
    }
    if (m_canceled) {
        m_duplicateCanceled = true;
        return abandonUpload(uploadId, tr("The upload of %1 was canceled.").arg(shown));
    }
    if (parsed.reportsDuplicates()) {
        const QList<OrvexDuplicateHit> hits = parsed.duplicates();
        bool archive = false;
        if (hits.isEmpty()) {
            // The archive found something, but nothing of it can be shown: the user decides.
            archive = askArchiveUnreadableDuplicates(shown);
        } else {
            QList<thumbData> duplicates;
            for (const OrvexDuplicateHit &hit : hits) {
                int pageCount = 0;
                QString format;
                const QByteArray image = m_client->getDocumentThumbnail(hit.docId.toInt(), hit.page, 1024, pageCount,
                                                                        format, 9, 0, hit.version);
                duplicates << thumbData{tr("DocId: %1 / Version: %2 / Page: %3").arg(hit.docId).arg(hit.version)
                                            .arg(hit.page + 1),
                                        hit.originalKey, image};
            }
            OrvexDuplicatesDlg dialog(m_parentWidget);
            connect(&dialog, &OrvexDuplicatesDlg::cancelAll, progress, &OrvexFileCopy::emitCancelClicked);
            dialog.setCancelAllVisible(m_fileCount > 1);
            // The accept text is a key for the catalogues: one that names it
            // gives the words, else the English ones show, never the key.
            const QString archiveText = tr("do_archive");
            dialog.setButtonNames(archiveText == QLatin1String("do_archive") ? tr("Archive Anyway") : archiveText,
                                  tr("Discard"));
            dialog.setOriginals(parsed.originals());
            dialog.setDuplicates(duplicates);
            archive = dialog.exec() == QDialog::Accepted;
        }
        if (!archive || m_canceled) {
            m_duplicateCanceled = true;
            return abandonUpload(uploadId, tr("%1 was not archived: it duplicates archived documents.").arg(shown));
        }
    }

    if (!m_client->commitUpload(uploadId))
        return abandonUpload(uploadId, m_client->getLastError());
    m_lastArchivedDocId = m_client->getLastArchivedDocId();
    orvexDebug() << "UPLOAD ARCHIVED" << filePath << m_lastArchivedDocId;
    if (m_fileCount - 1 <= m_finishedCount)
        progress->hide();
    return true;
}
