#include "orvexdocumentserver.h"

#include "orvexarchive.h"
#include "orvexcmlog.h"
#include "orvexdocrequest.h"
#include "orvexdocumentarchive.h"

#include <QFile>
#include <QMimeDatabase>
#include <QUrl>

#include <httplib.h>

#include <cerrno>
#include <chrono>
#include <cstring>

namespace {

// Bytes handed to the connection per read of the file.
constexpr qint64 kChunkSize = 64 * 1024;
// Requests in parallel; a drop fetches a few documents at once, not hundreds.
constexpr size_t kThreads = 4;
constexpr int kStartTimeoutMs = 5000;

const char *reasonPhrase(int status)
{
    switch (status) {
    case 200: return "OK";
    case 206: return "Partial Content";
    case 400: return "Bad Request";
    case 403: return "Forbidden";
    case 404: return "Not Found";
    case 405: return "Method Not Allowed";
    case 413: return "Payload Too Large";
    case 414: return "URI Too Long";
    case 416: return "Range Not Satisfiable";
    case 500: return "Internal Server Error";
    case 503: return "Service Unavailable";
    default: return status >= 500 ? "Server Error" : "Error";
    }
}

void answerText(httplib::Response &response, int status, const QString &reason)
{
    response.status = status;
    const QString body = QStringLiteral("%1 %2: %3\n").arg(status).arg(QLatin1String(reasonPhrase(status)), reason);
    response.set_content(body.toStdString(), "text/plain; charset=utf-8");
}

// Request targets go into the log as they came, but never with raw control
// characters or at any length.
QByteArray forLog(const std::string &target)
{
    QByteArray text;
    for (const char c : target.substr(0, 300)) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte == 0x7f)
            text += '%' + QByteArray::number(byte, 16).rightJustified(2, '0').toUpper();
        else
            text += c;
    }
    return target.size() > 300 ? text + "..." : text;
}

// "inline" with the name twice: plain ASCII for old clients, and UTF-8 (RFC 6266).
std::string contentDisposition(const QString &name)
{
    QString ascii;
    for (const QChar c : name)
        ascii += (c.unicode() < 0x20 || c.unicode() > 0x7e || c == QLatin1Char('"') || c == QLatin1Char('\\'))
            ? QLatin1Char('_')
            : c;
    return QStringLiteral("inline; filename=\"%1\"; filename*=UTF-8''%2")
        .arg(ascii, QString::fromLatin1(QUrl::toPercentEncoding(name)))
        .toStdString();
}

// One delivery in progress: the exported document and the open file. It lives
// until the answer is sent and goes on the thread that handled the request.
struct Delivery
{
    std::unique_ptr<OrvexDocumentArchive::Document> document;
    QFile file;
};

} // namespace

OrvexDocumentServer::OrvexDocumentServer(const QString &archiveFolder, const QString &user)
    : m_archive(std::make_unique<OrvexDocumentArchive>(archiveFolder, user))
{
}

OrvexDocumentServer::~OrvexDocumentServer()
{
    stop();
}

QString OrvexDocumentServer::defaultArchiveFolder()
{
    const QString fromEnvironment = qEnvironmentVariable(OrvexArchive::FolderVariable);
    return fromEnvironment.trimmed().isEmpty() ? OrvexArchive::defaultLocation() : fromEnvironment;
}

QString OrvexDocumentServer::archiveFolder() const
{
    return m_archive->folder();
}

bool OrvexDocumentServer::isRunning() const
{
    return m_http && m_http->is_running();
}

bool OrvexDocumentServer::start(int port, QString *error)
{
    const auto fail = [error](const QString &reason) {
        if (error)
            *error = reason;
        return false;
    };
    if (m_http)
        return fail(QStringLiteral("the document server already runs on port %1").arg(m_port));
    if (port < 0 || port > 65535)
        return fail(QStringLiteral("invalid port %1").arg(port));

    auto http = std::make_unique<httplib::Server>();
    http->new_task_queue = [] { return new httplib::ThreadPool(kThreads); };
    // Every request, whatever its method, is answered here; the library's routing is not used.
    http->set_pre_routing_handler([this](const httplib::Request &request, httplib::Response &response) {
        handle(request, response);
        return httplib::Server::HandlerResponse::Handled;
    });
    // Requests the library refuses itself (bad request line, too long) get a reason too.
    http->set_error_handler([](const httplib::Request &, httplib::Response &response) {
        if (response.body.empty())
            answerText(response, response.status, QStringLiteral("The request was refused."));
    });
    http->set_exception_handler([](const httplib::Request &, httplib::Response &response, std::exception_ptr) {
        answerText(response, 500, QStringLiteral("The request could not be handled."));
    });
    http->set_logger([](const httplib::Request &request, const httplib::Response &response) {
        qCInfo(lcManager).noquote() << "HTTP" << QString::fromStdString(request.method.substr(0, 20))
                                    << forLog(request.target) << response.status;
    });

    int bound = port;
    errno = 0;
    if (port == 0)
        bound = http->bind_to_any_port(Address);
    else if (!http->bind_to_port(Address, port))
        bound = -1;
    if (bound <= 0) {
        const int code = errno;
        return fail(QStringLiteral("cannot listen on %1:%2%3")
                        .arg(QLatin1String(Address))
                        .arg(port)
                        .arg(code ? QStringLiteral(": ") + QString::fromLocal8Bit(std::strerror(code)) : QString()));
    }

    m_http = std::move(http);
    m_port = bound;
    httplib::Server *server = m_http.get();
    m_listener = std::thread([server] { server->listen_after_bind(); });
    // stop() only reaches a server that has begun to listen.
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(kStartTimeoutMs);
    while (!m_http->is_running() && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    if (!m_http->is_running()) {
        stop();
        return fail(QStringLiteral("the document server did not start"));
    }
    qCInfo(lcManager).noquote() << "DOCUMENT SERVER" << QStringLiteral("http://%1:%2/openDoc/").arg(QLatin1String(Address)).arg(m_port)
                                << "ARCHIVE" << m_archive->folder();
    return true;
}

void OrvexDocumentServer::stop()
{
    if (!m_http)
        return;
    m_http->stop();
    if (m_listener.joinable())
        m_listener.join();
    m_http.reset();
    qCInfo(lcManager) << "DOCUMENT SERVER STOPPED" << m_port;
}

void OrvexDocumentServer::handle(const httplib::Request &request, httplib::Response &response)
{
    response.set_header("Cache-Control", "no-store");
    response.set_header("X-Content-Type-Options", "nosniff");
    const OrvexDocRequest docRequest =
        OrvexDocRequest::parse(QByteArray::fromStdString(request.method), QByteArray::fromStdString(request.target));
    if (!docRequest.isValid()) {
        if (docRequest.status == 405)
            response.set_header("Allow", "GET, HEAD");
        answerText(response, docRequest.status, docRequest.error);
        return;
    }

    auto delivery = std::make_shared<Delivery>();
    delivery->document = m_archive->fetch(docRequest.docId, docRequest.version);
    const OrvexDocumentArchive::Document &document = *delivery->document;
    if (document.status != 200) {
        answerText(response, document.status, document.error);
        return;
    }
    delivery->file.setFileName(document.filePath);
    if (!delivery->file.open(QIODevice::ReadOnly)) {
        answerText(response, 500, QStringLiteral("The export of document %1 cannot be read: %2")
                                      .arg(docRequest.docId)
                                      .arg(delivery->file.errorString()));
        return;
    }

    // The type comes from the archive's own file (name, then content), never
    // from the informational name in the URL.
    static const QMimeDatabase mimeDatabase; // thread-safe
    const QString type = mimeDatabase.mimeTypeForFile(document.filePath).name();
    // The status stays unset: the library answers 200, or 206 for a range.
    response.set_header("Content-Disposition",
                        contentDisposition(docRequest.name.isEmpty() ? document.fileName : docRequest.name));
    // The file goes out in chunks as the connection takes them (ranges
    // included); the provider runs on this request's thread.
    response.set_content_provider(
        size_t(document.size), type.toStdString(),
        [delivery](size_t offset, size_t length, httplib::DataSink &sink) {
            QFile &file = delivery->file;
            if (file.pos() != qint64(offset) && !file.seek(qint64(offset)))
                return false;
            const QByteArray chunk = file.read(qMin<qint64>(qint64(length), kChunkSize));
            if (chunk.isEmpty())
                return false;
            return sink.write(chunk.constData(), size_t(chunk.size()));
        });
}
