#include "orvexhostuploader.h"

#include "orvexarchiveworker.h"
#include "orvexfilecopy.h"

#include <QAbstractItemView>
#include <QDir>
#include <QDragMoveEvent>
#include <QDropEvent>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QMessageBox>
#include <QMimeData>
#include <QSet>
#include <QTimer>
#include <QUrl>

Q_DECLARE_LOGGING_CATEGORY(lcHost)

OrvexHostUploader::OrvexHostUploader(OrvexArchiveWorker *worker, QObject *parent)
    : QObject(parent)
    , m_worker(worker)
    , m_lastFolder(QDir::homePath())
{
}

void OrvexHostUploader::setParentWidget(QWidget *parent)
{
    m_parentWidget = parent;
}

void OrvexHostUploader::acceptDropsOn(QAbstractItemView *view)
{
    m_viewport = view->viewport();
    view->setAcceptDrops(true);
    view->viewport()->setAcceptDrops(true);
    view->viewport()->installEventFilter(this);
}

QStringList OrvexHostUploader::localFiles(const QMimeData *data)
{
    QStringList files;
    if (!data || !data->hasUrls())
        return files;
    const QList<QUrl> urls = data->urls();
    for (const QUrl &url : urls) {
        if (url.isLocalFile() && !files.contains(url.toLocalFile()))
            files << url.toLocalFile();
    }
    return files;
}

QString OrvexHostUploader::refusal(const QString &path)
{
    // Unreadable and empty files are the worker's to report; anything else must be a PDF.
    const QFileInfo info(path);
    QFile file(path);
    if (!info.isFile() || info.size() == 0 || !file.open(QIODevice::ReadOnly))
        return QString();
    if (file.read(5) != "%PDF-")
        return tr("%1 is not a PDF document.").arg(QDir::toNativeSeparators(path));
    return QString();
}

OrvexHostUploader::Outcome OrvexHostUploader::archiveFiles(const QStringList &paths)
{
    Outcome outcome;
    if (m_busy) {
        // The worker's dialogs keep events flowing: a drop may arrive meanwhile.
        outcome.failures << tr("Another upload is still running.");
        outcome.notAttempted = paths.size();
        emit finished(outcome.archived, summary(outcome));
        return outcome;
    }
    m_busy = true;
    m_worker->setFileCount(paths.size());
    for (int i = 0; i < paths.size(); ++i) {
        const QString &path = paths.at(i);
        m_worker->setFinishedCount(i);
        const QString refused = refusal(path);
        if (!refused.isEmpty()) {
            outcome.failures << refused;
            continue;
        }
        if (m_worker->uploadFile(m_worker->getCurrentArchive(), path, false)) {
            outcome.archived << m_worker->getLastArchivedDocId();
            continue;
        }
        if (m_worker->isDuplicateCanceled()) {
            // The user decided: a discarded duplicate or a cancel ends the batch.
            outcome.stopReason = m_worker->getLastError();
            outcome.notAttempted = paths.size() - i - 1;
            break;
        }
        outcome.failures << m_worker->getLastError();
    }
    if (m_worker->progressDialog())
        m_worker->progressDialog()->hide();
    m_worker->setFileCount(0);
    m_worker->setFinishedCount(0);
    m_busy = false;
    qCInfo(lcHost).noquote() << "UPLOAD BATCH" << paths.size() << "archived" << outcome.archived.size()
                             << "failed" << outcome.failures.size() << "left" << outcome.notAttempted;

    if (!outcome.failures.isEmpty()) {
        QMessageBox::warning(m_parentWidget, tr("Archive files"),
                             tr("These files could not be archived:") + QStringLiteral("\n\n")
                                 + outcome.failures.join(QLatin1Char('\n')));
    }
    emit finished(outcome.archived, summary(outcome));
    return outcome;
}

QString OrvexHostUploader::summary(const Outcome &outcome)
{
    QStringList parts;
    parts << tr("%n document(s) archived.", nullptr, outcome.archived.size());
    if (!outcome.failures.isEmpty())
        parts << tr("%n file(s) failed.", nullptr, outcome.failures.size());
    if (!outcome.stopReason.isEmpty())
        parts << outcome.stopReason;
    if (outcome.notAttempted > 0)
        parts << tr("%n file(s) not uploaded.", nullptr, outcome.notAttempted);
    return parts.join(QLatin1Char(' '));
}

void OrvexHostUploader::chooseAndArchiveFiles()
{
    if (m_busy)
        return;
    const QStringList files = QFileDialog::getOpenFileNames(m_parentWidget, tr("Archive files"), m_lastFolder,
                                                            tr("PDF documents (*.pdf);;All files (*)"));
    if (files.isEmpty())
        return;
    m_lastFolder = QFileInfo(files.constFirst()).absolutePath();
    archiveFiles(files);
}

bool OrvexHostUploader::eventFilter(QObject *watched, QEvent *event)
{
    // The viewport alone is compared: its events also come while the view
    // around it is being destroyed, when it is no item view any more.
    if (!m_viewport || watched != m_viewport)
        return QObject::eventFilter(watched, event);
    switch (event->type()) {
    case QEvent::DragEnter:
    case QEvent::DragMove: {
        auto *drag = static_cast<QDragMoveEvent *>(event);
        // Drags of this application (documents of the list itself) are no uploads;
        // their data is not even looked at, it would export the documents.
        if (!drag->source() && !m_busy && !localFiles(drag->mimeData()).isEmpty()) {
            drag->setDropAction(Qt::CopyAction);
            drag->accept();
        } else {
            drag->ignore();
        }
        return true;
    }
    case QEvent::Drop: {
        auto *drop = static_cast<QDropEvent *>(event);
        const QStringList files = drop->source() ? QStringList() : localFiles(drop->mimeData());
        if (files.isEmpty() || m_busy) {
            drop->ignore();
            return true;
        }
        drop->setDropAction(Qt::CopyAction);
        drop->accept();
        // After the drop has returned, so that the other application is not held
        // while the files go to the archive.
        QTimer::singleShot(0, this, [this, files] { archiveFiles(files); });
        return true;
    }
    default:
        return QObject::eventFilter(watched, event);
    }
}
