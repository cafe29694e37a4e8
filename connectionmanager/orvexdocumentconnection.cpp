#include "orvexdocumentconnection.h"

#include "orvexcmlog.h"
#include "orvexdocrequest.h"
#include "orvexhostheader.h"

#include <QMimeDatabase>
#include <QTcpSocket>
#include <QTimer>
#include <QUrl>

#include <sys/socket.h>

namespace {

// Bytes read from the file per write, and at most waiting in the socket.
constexpr qint64 kChunkSize = 64 * 1024;
constexpr qint64 kWriteAhead = 256 * 1024;
// Bytes taken from the socket per read while the head arrives.
constexpr qint64 kReadSize = 16 * 1024;
// After the answer: how long the client may take to hang up.
constexpr int kLingerMs = 1000;

// Request targets go into the log as they came, but never with raw control
// characters or at any length.
QByteArray forLog(const QByteArray &target)
{
    if (target.isEmpty())
        return "-";
    QByteArray text;
    for (const char c : target.left(300)) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte >= 0x7f)
            text += '%' + QByteArray::number(byte, 16).rightJustified(2, '0').toUpper();
        else
            text += c;
    }
    return target.size() > 300 ? text + "..." : text;
}

// "inline" with the name twice: plain ASCII for old clients, and UTF-8 (RFC 6266).
QByteArray contentDisposition(const QString &name)
{
    QByteArray ascii;
    for (const QChar c : name)
        ascii += (c.unicode() < 0x20 || c.unicode() > 0x7e || c == QLatin1Char('"') || c == QLatin1Char('\\'))
            ? '_'
            : char(c.unicode());
    return "inline; filename=\"" + ascii + "\"; filename*=UTF-8''" + QUrl::toPercentEncoding(name);
}

} // namespace

OrvexDocumentConnection::OrvexDocumentConnection(QTcpSocket *socket, qint64 peerUid,
                                                 const OrvexDocumentPolicy &policy, QObject *parent)
    : QObject(parent)
    , m_socket(socket)
    , m_deadline(new QTimer(this))
    , m_policy(policy)
    , m_peerUid(peerUid)
{
    m_socket->setParent(this);
    m_deadline->setSingleShot(true);
    connect(m_deadline, &QTimer::timeout, this, [this] {
        if (m_phase == Phase::ReadingHead)
            answer(OrvexHttpResponse::text(408, QStringLiteral("The request did not arrive within %1 ms.")
                                                    .arg(m_policy.requestDeadlineMs)));
        else
            abort(); // a client that stopped taking its answer, or does not hang up
    });
    connect(m_socket, &QTcpSocket::readyRead, this, &OrvexDocumentConnection::readHead);
    connect(m_socket, &QTcpSocket::bytesWritten, this, &OrvexDocumentConnection::writeMore);
    connect(m_socket, &QTcpSocket::disconnected, this, &OrvexDocumentConnection::finish);
    // Counted once from the start: a byte now and then does not buy more time.
    m_deadline->start(m_policy.requestDeadlineMs);
    readHead();
}

OrvexDocumentConnection::~OrvexDocumentConnection() = default;

void OrvexDocumentConnection::readHead()
{
    if (m_phase != Phase::ReadingHead) {
        // Nothing after the head is used; it is taken only so that it does not pile up.
        m_socket->skip(m_socket->bytesAvailable());
        return;
    }
    while (m_socket->bytesAvailable() > 0 && m_reader.state() == OrvexHttpHeadReader::Reading)
        m_reader.feed(m_socket->read(kReadSize));
    if (m_reader.state() == OrvexHttpHeadReader::Failed) {
        if (!refusedForeignUser())
            answer(OrvexHttpResponse::text(m_reader.errorStatus(), m_reader.error()));
    } else if (m_reader.state() == OrvexHttpHeadReader::Complete) {
        headComplete();
    }
}

bool OrvexDocumentConnection::refusedForeignUser()
{
    if (m_peerUid == m_policy.ownerUid)
        return false;
    answer(OrvexHttpResponse::text(403, QStringLiteral("Only the user who runs this server is served.")),
           QStringLiteral("foreign user %1").arg(m_peerUid));
    return true;
}

void OrvexDocumentConnection::headComplete()
{
    m_phase = Phase::Fetching;
    m_deadline->stop();
    const OrvexHttpHead &head = m_reader.head();
    m_headRequest = head.method == "HEAD";
    if (refusedForeignUser())
        return;
    const QByteArray host = head.field("host");
    if (head.fieldCount("host") != 1 || !OrvexHostHeader::isLocal(host, m_policy.port, m_policy.machineName)) {
        answer(OrvexHttpResponse::text(403, QStringLiteral("Only requests for this machine are served.")),
               QStringLiteral("host \"%1\"").arg(QString::fromLatin1(forLog(host.left(100)))));
        return;
    }
    const OrvexDocRequest request = OrvexDocRequest::parse(head.method, head.target);
    if (!request.isValid()) {
        OrvexHttpResponse response = OrvexHttpResponse::text(request.status, request.error);
        if (request.status == 405)
            response.addField("Allow", "GET, HEAD");
        answer(response);
        return;
    }
    const QByteArray length = head.field("content-length");
    if ((!length.isEmpty() && length != "0") || head.fieldCount("transfer-encoding") > 0) {
        answer(OrvexHttpResponse::text(413, QStringLiteral("Requests with a body are not served.")));
        return;
    }
    m_rangeHeader = head.field("range");
    m_requestName = request.name;
    emit documentRequested(this, request.docId, request.version);
}

void OrvexDocumentConnection::deliver(const std::shared_ptr<OrvexDocumentArchive::Document> &document)
{
    if (m_phase != Phase::Fetching || !document)
        return;
    m_document = document;
    if (document->status != 200) {
        answer(OrvexHttpResponse::text(document->status, document->error));
        return;
    }
    m_file.setFileName(document->filePath);
    if (!m_file.open(QIODevice::ReadOnly)) {
        answer(OrvexHttpResponse::text(500, QStringLiteral("The export of the document cannot be read: %1")
                                                .arg(m_file.errorString())));
        return;
    }
    // The type comes from the archive's own file (name, then content), never
    // from the informational name in the URL.
    static const QMimeDatabase mimeDatabase; // thread-safe
    const QByteArray type = mimeDatabase.mimeTypeForFile(document->filePath).name().toUtf8();
    OrvexHttpResponse response = OrvexHttpResponse::file(m_file.size(), type, m_rangeHeader);
    if (response.status != 416)
        response.addField("Content-Disposition", contentDisposition(m_requestName.isEmpty() ? document->fileName : m_requestName));
    answer(response);
}

void OrvexDocumentConnection::answer(const OrvexHttpResponse &response, const QString &note)
{
    m_phase = Phase::Writing;
    log(response.status, note);
    m_response = response;
    m_response.addField("Cache-Control", "no-store");
    m_response.addField("X-Content-Type-Options", "nosniff");
    m_socket->write(m_response.headBytes());
    if (m_headRequest)
        m_response.body.clear();
    m_nextPiece = 0;
    m_pieceDone = 0;
    writeMore();
}

void OrvexDocumentConnection::writeMore()
{
    if (m_phase != Phase::Writing)
        return;
    while (m_socket->bytesToWrite() < kWriteAhead && m_nextPiece < m_response.body.size()) {
        const OrvexHttpResponse::Piece &piece = m_response.body.at(m_nextPiece);
        if (!piece.bytes.isEmpty()) {
            m_socket->write(piece.bytes);
            ++m_nextPiece;
            continue;
        }
        const qint64 remaining = piece.length - m_pieceDone;
        if (remaining > 0) {
            const qint64 position = piece.offset + m_pieceDone;
            if (m_file.pos() != position && !m_file.seek(position)) {
                abort();
                return;
            }
            const QByteArray chunk = m_file.read(qMin(remaining, kChunkSize));
            if (chunk.isEmpty()) {
                // The file went shorter than announced: the answer cannot be completed.
                qCWarning(lcManager).noquote() << "HTTP ANSWER CUT" << m_file.fileName() << m_file.errorString();
                abort();
                return;
            }
            m_socket->write(chunk);
            m_pieceDone += chunk.size();
        }
        if (m_pieceDone >= piece.length) {
            ++m_nextPiece;
            m_pieceDone = 0;
        }
    }
    if (m_nextPiece < m_response.body.size() || m_socket->bytesToWrite() > 0) {
        m_deadline->start(m_policy.stallTimeoutMs); // the client took something: it gets more time
        return;
    }
    closeGracefully();
}

void OrvexDocumentConnection::closeGracefully()
{
    m_phase = Phase::Closing;
    m_file.close();
    m_document.reset();
    // The client reads the whole answer before it sees the end; closing at once
    // with its unread bytes still here would reset the connection instead.
    ::shutdown(int(m_socket->socketDescriptor()), SHUT_WR);
    m_socket->skip(m_socket->bytesAvailable());
    m_deadline->start(kLingerMs);
}

void OrvexDocumentConnection::abort()
{
    if (m_phase == Phase::Done)
        return;
    m_socket->abort();
    finish();
}

void OrvexDocumentConnection::finish()
{
    if (m_phase == Phase::Done)
        return;
    m_phase = Phase::Done;
    m_deadline->stop();
    m_file.close();
    emit finished(this);
}

void OrvexDocumentConnection::log(int status, const QString &note) const
{
    const OrvexHttpHead &head = m_reader.head();
    const QByteArray method = head.method.isEmpty() ? QByteArray("-") : forLog(head.method.left(20));
    qCInfo(lcManager).noquote() << "HTTP" << method << forLog(head.target) << status << note;
}
