#include "orvexboardjobs.h"

#include "classifyinterface.h"
#include "kelarchiveclientinterface.h"
#include "orvexcardscripts.h"
#include "orvexlog.h"

#include <QBuffer>
#include <QFutureInterface>
#include <QImage>
#include <QRunnable>

#include <algorithm>

namespace {
const QChar kSep(0xFEFF);
thread_local bool t_sendingThumbnail = false;
} // namespace

orvexboardjobs::orvexboardjobs(QObject *parent)
    : QObject(parent)
{
}

orvexboardjobs::~orvexboardjobs()
{
    // The board stops its jobs before it goes; this is for any other owner.
    if (!m_stopped)
        stop();
}

namespace {
// A pool job with a future that stop() can cancel and wait for; a job
// cancelled before it starts returns at once.
class BoardJob final : public QRunnable
{
public:
    explicit BoardJob(std::function<void()> job)
        : m_job(std::move(job))
    {
        m_state.reportStarted();
    }
    QFuture<void> future() { return m_state.future(); }
    void run() override
    {
        if (!m_state.isCanceled())
            m_job();
        m_state.reportFinished();
    }

private:
    std::function<void()> m_job;
    QFutureInterface<void> m_state;
};
} // namespace

bool orvexboardjobs::start(std::function<void()> job, Priority priority)
{
    if (m_stopped)
        return false;
    m_futures.erase(std::remove_if(m_futures.begin(), m_futures.end(),
                                   [](const QFuture<void> &future) { return future.isFinished(); }),
                    m_futures.end());
    auto *runnable = new BoardJob(std::move(job));
    m_futures.append(runnable->future());
    m_workPool.start(runnable, priority);
    return true;
}

void orvexboardjobs::stop()
{
    m_stopped = true;
    orvexDebug() << "STOP";
    const QList<QFuture<void>> futures = m_futures;
    for (QFuture<void> future : futures) {
        if (future.isFinished())
            continue;
        orvexDebug() << "WAIT FOR FUTURE";
        // A job still queued is taken out of the pool and never runs; a running
        // one sees the stopped flag and returns early.
        future.cancel();
        future.waitForFinished();
    }
    orvexDebug() << "STOPPED";
}

bool orvexboardjobs::isStopped() const
{
    return m_stopped;
}

void orvexboardjobs::loadCardInfo(ClassifyInterface *client, const QString &cardId)
{
    if (m_stopped || !client)
        return;
    const QStringList fields = client->getCardInfo(cardId, QString());
    if (fields.size() < 5)
        return;
    emit cardData(cardId, fields);
}

bool orvexboardjobs::updateCards(ClassifyInterface *client, const QString &clipboardId,
                                 const QHash<QString, QString> &cards)
{
    QHash<QString, QString> stale = cards;
    if (m_stopped)
        return false;

    if (!cards.isEmpty() && client) {
        QString filter = QStringLiteral("docs_id in (");
        QStringList entries, comments;
        const bool listed = client->getClipboardDocuments(clipboardId, entries, comments);
        if (listed) {
            for (int i = 0; i < entries.size(); ++i) {
                const QStringList parts = entries.at(i).split(kSep);
                const QString docId = parts.value(0);
                const QString docsId = parts.value(1);
                if (!orvexcardscripts::isId(docId) || !orvexcardscripts::isId(docsId))
                    continue;
                filter += docsId + QLatin1Char(',');
                // The note goes on as the server holds it; the script that
                // carries it into the page encodes it.
                const QString comment = comments.value(i);
                if (!cards.contains(docsId))
                    emit doAddCard(docId, docsId, comment);
                else
                    emit doUpdateComment(docsId, comment);
                if (m_stopped)
                    break;
            }
        } else {
            // Without the server's entries the info lines of the cards shown are
            // still refreshed, but which cards are gone is unknown: none goes.
            for (auto it = cards.cbegin(); it != cards.cend(); ++it)
                filter += it.key() + QLatin1Char(',');
        }
        filter += QLatin1String("0)");

        if (!m_stopped) {
            const QStringList rows = client->searchDocuments({filter, QStringLiteral("OPT:LIMIT;1000")});
            // An answer without even its header row is a failed query, not an
            // empty clipboard: the cards stay.
            if (!rows.isEmpty()) {
                for (int r = 1; r < rows.size() && !m_stopped; ++r) {
                    const QStringList fields = rows.at(r).split(kSep);
                    const QString cardId = fields.value(0).split(QLatin1Char('#')).value(1);
                    stale.remove(cardId);
                    emit cardData(cardId, fields);
                }
                for (auto it = stale.cbegin(); listed && it != stale.cend() && !m_stopped; ++it)
                    emit doRemoveCard(it.key(), false);
            }
        }
    }
    return !m_stopped;
}

bool orvexboardjobs::fetchThumbnail(const QPointer<kelArchiveClientInterface> &client, const QString &cardId,
                                    const QString &docId, const QString &page, const QPixmap &placeholder)
{
    if (m_stopped)
        return false;
    kelArchiveClientInterface *archive = client.data();
    if (!archive)
        return false;
    int pageCount = 0;
    QString unused;
    const QByteArray bytes =
        archive->getDocumentThumbnail(docId.toInt(), page.toInt(), 800, pageCount, unused, 0, 0, -1);
    QPixmap pix;
    if (!bytes.isEmpty()) {
        const QImage image = QImage::fromData(bytes);
        if (!image.isNull())
            pix = QPixmap::fromImage(image);
    }
    // Nothing to see, or bytes that are no image: the card shows the placeholder.
    if (pix.isNull())
        pix = placeholder;
    emit doSetCardPixmap(cardId, docId, page, QString::number(pageCount), pix);
    return true;
}

void orvexboardjobs::sendThumbnail(const QString &cardId, const QString &script, const QPixmap &pix)
{
    if (m_stopped)
        return;
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    pix.save(&buffer, "PNG");
    buffer.close();
    t_sendingThumbnail = true;
    emit javascript(script + orvexcardscripts::thumbnailImage(cardId, bytes));
    t_sendingThumbnail = false;
}

bool orvexboardjobs::isSendingThumbnail()
{
    return t_sendingThumbnail;
}
