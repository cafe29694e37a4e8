#pragma once

#include <QAtomicInt>
#include <QCoreApplication>
#include <QString>

#include <functional>

class OrvexArchiveSession;
class OrvexContentHash;

// Copies a file in chunks with the byte counts of a transfer (the first
// chunk's, then at most one per 50 ms, and the last); cancel() stops it between
// two chunks and the partial file is removed. Called on the GUI thread, the copy
// runs on a thread of its own while the caller waits in a local event loop that
// also delivers user input (so a Cancel button works), and the byte counts reach
// GUI objects queued. Called on any other thread, the copy runs right there.
// One transfer at a time.
class OrvexArchiveTransfer
{
    Q_DECLARE_TR_FUNCTIONS(OrvexArchiveClient)

public:
    static constexpr int ChunkSize = 64 * 1024;
    // Called on the copying thread with a byte count as decimal text.
    using ByteCount = std::function<void(const QString &bytes)>;

    OrvexArchiveTransfer(OrvexArchiveSession &session, ByteCount totalBytes, ByteCount bytesDone);

    void setChunkSize(int bytes);
    // Copies from to to, feeding hash when given; false when canceled or
    // failing, with the reason kept in the session, and then to is gone. A
    // failed write names the system's reason and notStored ("Rechnung.pdf was
    // not archived").
    bool copy(const QString &from, const QString &to, qint64 total, OrvexContentHash *hash,
              const QString &notStored);
    void cancel();

private:
    bool copyChunked(const QString &from, const QString &to, qint64 total, OrvexContentHash *hash,
                     const QString &notStored);
    // Runs copy as the class comment describes.
    bool stream(const std::function<bool()> &copy);

    OrvexArchiveSession &m_session;
    ByteCount m_totalBytes;
    ByteCount m_bytesDone;
    QAtomicInt m_chunkSize{ChunkSize};
    QAtomicInt m_cancel;
    QAtomicInt m_streaming;
};
