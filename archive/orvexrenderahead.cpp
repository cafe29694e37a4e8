#include "orvexrenderahead.h"

#include "orvexarchivestore.h"
#include "orvexpdftools.h"

#include <QSqlQuery>
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
}

OrvexRenderAhead::~OrvexRenderAhead()
{
    stop();
}

void OrvexRenderAhead::render(const QList<qlonglong> &docIds)
{
    for (const qlonglong docId : docIds)
        m_pool.start([this, docId] {
#ifdef Q_OS_LINUX
            // Linux takes a thread's nice value per thread.
            setpriority(PRIO_PROCESS, static_cast<id_t>(syscall(SYS_gettid)), 10);
#endif
            renderOne(docId);
        });
}

bool OrvexRenderAhead::waitForDone(int msecs)
{
    return m_pool.waitForDone(msecs);
}

void OrvexRenderAhead::stop()
{
    m_pool.clear();
    m_pool.waitForDone();
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
    OrvexArchiveBackend::LocalFile local;
    QString error;
    if (!m_store.localFile(OrvexArchiveStore::Area::Files, stored, local, error)
        || !OrvexPdfTools::looksLikePdf(local.path()))
        return;
    const QImage image = OrvexPdfTools::renderPage(local.path(), 0, CardImageSize, error);
    if (!image.isNull())
        m_store.backend().cacheImage(key, OrvexPdfTools::quickPngBytes(image));
}
