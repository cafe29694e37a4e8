#pragma once

#include "orvexarchivebackend.h"

#include <QElapsedTimer>
#include <QImage>
#include <QList>
#include <QThreadPool>

#include <atomic>
#include <functional>

class OrvexArchiveStore;

// Renders the first page of newly archived documents into the page image
// cache, at the size a card asks for, on a thread of its own at a low
// priority, so that a card board filled later finds every first page cached
// instead of waiting for the PDF renderer. Files that are no PDF are served as
// they are and need nothing. While readers are asking for pages, the work
// waits: a board being filled has the cores to itself.
class OrvexRenderAhead
{
public:
    // The page size a card board asks for.
    static constexpr int CardImageSize = 800;

    explicit OrvexRenderAhead(OrvexArchiveStore &store);
    ~OrvexRenderAhead();

    // The current version of each document, after the import has been committed.
    void render(const QList<qlonglong> &docIds);
    // Compresses a page image rendered for a reader into the cache, once
    // readers have paused. When more pages come than wait in memory, the page
    // is rendered again later from the stored file (the archive's name for it).
    void cache(const OrvexArchiveBackend::ImageKey &key, const QString &stored, const QImage &image);
    // Waits until every queued render is done; false on timeout.
    bool waitForDone(int msecs = -1);
    // Drops the renders not started yet and waits for the running one.
    void stop();

private:
    void renderOne(qlonglong docId);
    void renderInto(const OrvexArchiveBackend::ImageKey &key, const QString &stored);
    void start(std::function<void()> work);
    // Returns once no reader has handed in a page for a while, or on stop().
    void waitForReaders();

    OrvexArchiveStore &m_store;
    QThreadPool m_pool;
    std::atomic<int> m_imagesWaiting{0}; // handed to cache(), not yet stored
    QElapsedTimer m_clock;
    std::atomic<qint64> m_lastRead{-1}; // m_clock's time of the last cache()
    std::atomic<bool> m_stopping{false};
};
