#include "orvexrenderahead.h"

#include "orvexarchivestore.h"
#include "orvexpdftools.h"

#include <QSqlQuery>
#include <QThread>
#include <QVariant>

#ifdef Q_OS_LINUX
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>
#endif

OrvexRenderAhead::OrvexRenderAhead(OrvexArchiveStore &store)
    : m_store(store)
{
    // One page after the other: the work waits for idle time rather than
    // taking cores from the user.
    m_pool.setMaxThreadCount(1);
    m_clock.start();
}

OrvexRenderAhead::~OrvexRenderAhead()
{
    stop();
}

void OrvexRenderAhead::start(std::function<void()> work)
{
    m_pool.start([this, work = std::move(work)] {
#ifdef Q_OS_LINUX
        // Low, but not SCHED_IDLE: this thread takes locks that others wait
        // for (Qt's environment and image plugins, the cache), and an idle
        // class thread holding one may not run again for as long as the
        // machine is busy.
        setpriority(PRIO_PROCESS, static_cast<id_t>(syscall(SYS_gettid)), 19);
#endif
        waitForReaders();
        if (!m_stopping)
            work();
    });
}

void OrvexRenderAhead::waitForReaders()
{
    // Long enough to span the gaps between the pages a board asks for.
    static constexpr qint64 QuietMs = 300;
    for (;;) {
        const qint64 lastRead = m_lastRead.load();
        const qint64 quietFor = lastRead < 0 ? QuietMs : m_clock.elapsed() - lastRead;
        if (m_stopping || quietFor >= QuietMs)
            return;
        QThread::msleep(static_cast<unsigned long>(qMin<qint64>(QuietMs - quietFor, 50)));
    }
}

void OrvexRenderAhead::render(const QList<qlonglong> &docIds)
{
    for (const qlonglong docId : docIds)
        start([this, docId] { renderOne(docId); });
}

void OrvexRenderAhead::cache(const OrvexArchiveBackend::ImageKey &key, const QString &stored, const QImage &image)
{
    // About 2 MB each while they wait.
    static constexpr int MostWaiting = 32;
    m_lastRead = m_clock.elapsed();
    if (++m_imagesWaiting > MostWaiting) {
        --m_imagesWaiting;
        start([this, key, stored] { renderInto(key, stored); });
        return;
    }
    start([this, key, image] {
        m_store.backend().cacheImage(key, OrvexPdfTools::quickPngBytes(image));
        --m_imagesWaiting;
    });
}

bool OrvexRenderAhead::waitForDone(int msecs)
{
    return m_pool.waitForDone(msecs);
}

void OrvexRenderAhead::stop()
{
    m_stopping = true;
    m_pool.clear();
    m_pool.waitForDone();
    m_stopping = false;
}

void OrvexRenderAhead::renderOne(qlonglong docId)
{
    if (!m_store.isOpen())
        return;
    QSqlDatabase db = m_store.database();
    if (!db.isOpen())
        return;
    QSqlQuery current(db);
    current.prepare(QStringLiteral("SELECT v.version, v.file FROM documents d "
                                   "JOIN versions v ON v.doc_id = d.id AND v.version = d.current_version "
                                   "WHERE d.id = ?"));
    current.addBindValue(docId);
    if (!current.exec() || !current.next())
        return;
    const OrvexArchiveBackend::ImageKey key{docId, current.value(0).toInt(), 0, CardImageSize};
    const QString stored = current.value(1).toString();
    current.finish();
    renderInto(key, stored);
}

void OrvexRenderAhead::renderInto(const OrvexArchiveBackend::ImageKey &key, const QString &stored)
{
    if (!m_store.isOpen() || !m_store.backend().cachedImage(key).isEmpty())
        return;
    OrvexArchiveBackend::LocalFile local;
    QString error;
    if (!m_store.localFile(OrvexArchiveStore::Area::Files, stored, local, error)
        || !OrvexPdfTools::looksLikePdf(local.path()))
        return;
    const QImage image = OrvexPdfTools::renderPage(local.path(), key.page, key.size, error);
    if (!image.isNull())
        m_store.backend().cacheImage(key, OrvexPdfTools::quickPngBytes(image));
}
