#pragma once

#include "orvexarchivebackend.h"

#include <QAtomicInt>
#include <QCoreApplication>
#include <QString>

#include <functional>
#include <memory>

class OrvexArchiveSession;
class OrvexContentHash;
class QIODevice;

// Copies a file in chunks with the byte counts of a transfer (the first
// chunk's, then at most one per 50 ms, and the last); cancel() stops it between
// two chunks and what was written is thrown away. Called on the GUI thread, the
// copy runs on a thread of its own while the caller waits in a local event loop
// that also delivers user input (so a Cancel button works), and the byte counts
// reach GUI objects queued. Called on any other thread, the copy runs right
// there. One transfer at a time.
//
// Source and sink are opened on the copying thread (a stored file on a server
// is read and written through that thread's connection).
class OrvexArchiveTransfer
{
    Q_DECLARE_TR_FUNCTIONS(OrvexArchiveClient)

public:
    static constexpr int ChunkSize = 64 * 1024;
    // Called on the copying thread with a byte count as decimal text.
    using ByteCount = std::function<void(const QString &bytes)>;
    using OpenSource = std::function<std::unique_ptr<QIODevice>(QString &error)>;
    using OpenSink = std::function<std::unique_ptr<OrvexArchiveBackend::Sink>(QString &error)>;

    OrvexArchiveTransfer(OrvexArchiveSession &session, ByteCount totalBytes, ByteCount bytesDone);

    void setChunkSize(int bytes);
    // Copies the source's total bytes into the sink, feeding hash when given;
    // false when canceled or failing, with the reason kept in the session,
    // and then nothing of it is kept. sourceName names the source in errors;
    // a failed write names the system's or server's reason and notStored
    // ("Rechnung.pdf was not archived").
    bool copy(const OpenSource &openSource, const QString &sourceName, const OpenSink &openSink, qint64 total,
              OrvexContentHash *hash, const QString &notStored);
    void cancel();

    // A local file to read, and one to write.
    static OpenSource localFile(const QString &path);
    static OpenSink newLocalFile(const QString &path);

private:
    bool copyChunked(const OpenSource &openSource, const QString &sourceName, const OpenSink &openSink, qint64 total,
                     OrvexContentHash *hash, const QString &notStored);
    // Runs copy as the class comment describes.
    bool stream(const std::function<bool()> &copy);

    OrvexArchiveSession &m_session;
    ByteCount m_totalBytes;
    ByteCount m_bytesDone;
    QAtomicInt m_chunkSize{ChunkSize};
    QAtomicInt m_cancel;
    QAtomicInt m_streaming;
};
