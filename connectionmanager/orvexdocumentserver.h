#pragma once

#include <QString>

#include <memory>
#include <thread>

namespace httplib {
class Server;
struct Request;
struct Response;
} // namespace httplib

class OrvexDocumentArchive;

// The drag-and-drop document server: delivers archive documents over HTTP on
// the loopback interface at the URLs that document drags hand out
// ("http://localhost:<port>/openDoc/<name>?openmode=4&docid=<id>..."), see
// OrvexDocRequest for the accepted form. The answer carries the file with its
// content type and length, or a status with a plain-text reason. Requests are
// handled on the HTTP library's own threads (see OrvexDocumentArchive for how
// they reach the archive) and logged under the stand-in's category.
class OrvexDocumentServer
{
public:
    static constexpr const char *Address = "127.0.0.1";

    // archiveFolder: where the archive is (see defaultArchiveFolder());
    // user: the archive user documents are read as, empty for the default.
    explicit OrvexDocumentServer(const QString &archiveFolder, const QString &user = {});
    ~OrvexDocumentServer();

    OrvexDocumentServer(const OrvexDocumentServer &) = delete;
    OrvexDocumentServer &operator=(const OrvexDocumentServer &) = delete;

    // Listens on Address:port (0: any free port) and serves in the background.
    // False, with a readable reason, when the port cannot be had.
    bool start(int port, QString *error = nullptr);
    // Stops listening and waits for the requests in progress.
    void stop();
    bool isRunning() const;
    int port() const { return m_port; }
    QString archiveFolder() const;

    // The environment's archive folder (ORVEX_ARCHIVE_DIR), else the archive's default location.
    static QString defaultArchiveFolder();

private:
    void handle(const httplib::Request &request, httplib::Response &response);

    std::unique_ptr<OrvexDocumentArchive> m_archive;
    std::unique_ptr<httplib::Server> m_http;
    std::thread m_listener;
    int m_port = 0;
};
