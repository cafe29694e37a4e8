#pragma once

#include "orvexdocumentconnection.h"

#include <QString>

#include <memory>

class OrvexDocumentArchive;
class OrvexDocumentListener;
class QThread;

// The drag-and-drop document server: delivers archive documents over HTTP on
// the loopback interface at the URLs that document drags hand out
// ("http://localhost:<port>/openDoc/<name>?openmode=4&docid=<id>..."), see
// OrvexDocRequest for the accepted form. The answer carries the file with its
// content type and length (or the byte ranges asked for), or a status with a
// plain-text reason.
//
// Only the operating-system user who runs the server is served, and only
// requests that name this machine in their Host header (a web page that
// points a name of its own at the loopback address is refused); everybody
// else gets 403 and one log line. Connections are read on an I/O thread of
// the server's own, event by event, so slow clients hold no worker: a request
// head must arrive whole, within limits of size and count, before a deadline.
// Documents are fetched on a few worker threads (see OrvexDocumentArchive for
// how they reach the archive). Requests are logged under the stand-in's
// category.
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

    // Time a client has for its whole request head (default 10 s); set before start().
    void setRequestDeadline(int milliseconds);

    // Listens on Address:port (0: any free port) and serves in the background.
    // False, with a readable reason, when the port cannot be had.
    bool start(int port, QString *error = nullptr);
    // Stops listening, drops the connections and waits for the workers.
    void stop();
    bool isRunning() const;
    int port() const { return m_port; }
    QString archiveFolder() const;

    // The environment's archive folder (ORVEX_ARCHIVE_DIR), else the archive's default location.
    static QString defaultArchiveFolder();

private:
    std::unique_ptr<OrvexDocumentArchive> m_archive;
    OrvexDocumentPolicy m_policy;
    std::unique_ptr<QThread> m_thread;
    OrvexDocumentListener *m_listener = nullptr; // lives on m_thread
    int m_port = 0;
};
