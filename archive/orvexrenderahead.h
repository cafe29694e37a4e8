#pragma once

#include <QList>
#include <QThreadPool>

class OrvexArchiveStore;

// Renders the first page of newly archived documents into the page image
// cache, at the size a card asks for, on a thread of its own at a low
// priority, so that a card board filled later finds every first page cached
// instead of waiting for the PDF renderer. Files that are no PDF are served as
// they are and need nothing.
class OrvexRenderAhead
{
public:
    // The page size a card board asks for.
    static constexpr int CardImageSize = 800;

    explicit OrvexRenderAhead(OrvexArchiveStore &store);
    ~OrvexRenderAhead();

    // The current version of each document, after the import has been committed.
    void render(const QList<qlonglong> &docIds);
    // Waits until every queued render is done; false on timeout.
    bool waitForDone(int msecs = -1);
    // Drops the renders not started yet and waits for the running one.
    void stop();

private:
    void renderOne(qlonglong docId);

    OrvexArchiveStore &m_store;
    QThreadPool m_pool;
};
