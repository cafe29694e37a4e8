// orvexconnectionmanager: the Connection Manager stand-in for the demo and tests.
#include "orvexarchive.h"
#include "orvexconnectionmanager.h"
#include "orvexdocumentserver.h"
#include "orvexlogindata.h"
#include "orvexprofilestore.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QSettings>
#include <QSocketNotifier>

#include <csignal>
#include <cstdio>
#include <unistd.h>

namespace {

int g_signalPipe[2] = {-1, -1};

void onTerminationSignal(int)
{
    const char byte = 1;
    [[maybe_unused]] const auto written = ::write(g_signalPipe[1], &byte, 1);
}

// SIGTERM and SIGINT end the event loop, so that the socket file and the lock
// are removed as on a normal exit.
void quitOnTerminationSignals(QCoreApplication &app)
{
    if (::pipe(g_signalPipe) != 0)
        return;
    auto *notifier = new QSocketNotifier(g_signalPipe[0], QSocketNotifier::Read, &app);
    QObject::connect(notifier, &QSocketNotifier::activated, &app, &QCoreApplication::quit);
    std::signal(SIGTERM, onTerminationSignal);
    std::signal(SIGINT, onTerminationSignal);
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("orvexconnectionmanager"));
    QCoreApplication::setApplicationVersion(QStringLiteral("0.1"));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Connection Manager stand-in: serves the connection profiles, the drag-and-drop port\n"
        "and, on that port, the archive's documents at http://localhost:<port>/openDoc/..."));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption nameOption(
        QStringLiteral("name"), QStringLiteral("Local socket name (default: %1).").arg(orvexLoginData::serverName()),
        QStringLiteral("name"), orvexLoginData::serverName());
    const QCommandLineOption portOption(
        QStringLiteral("port"),
        QStringLiteral("Drag-and-drop document server port on 127.0.0.1, 0 for any free one "
                       "(default: the profile file's dndPort, else %1).")
            .arg(OrvexConnectionManager::kDefaultDndPort),
        QStringLiteral("port"));
    const QCommandLineOption archiveOption(
        QStringLiteral("archive"),
        QStringLiteral("Archive the documents are served from: a folder or a server address "
                       "postgresql://user@host:port/database (default: ORVEX_ARCHIVE_DIR, else the active "
                       "profile's archive, else %1).")
            .arg(OrvexArchive::defaultLocation()),
        QStringLiteral("dir|address"));
    const QCommandLineOption userOption(
        QStringLiteral("user"),
        QStringLiteral("Archive user the documents are read as (default: the operating-system user)."),
        QStringLiteral("name"));
    const QCommandLineOption profilesOption(
        QStringLiteral("profiles"),
        QStringLiteral("Profile file (default: %1).").arg(OrvexProfileStore::defaultFileName()),
        QStringLiteral("file"), OrvexProfileStore::defaultFileName());
    parser.addOptions({nameOption, portOption, profilesOption, archiveOption, userOption});
    parser.process(app);

    OrvexProfileStore store(parser.value(profilesOption));
    if (!store.load()) {
        std::fprintf(stderr, "orvexconnectionmanager: cannot read or create the profile file %s\n",
                     qPrintable(store.fileName()));
        return 2;
    }
    int port = store.dndPort() > 0 ? store.dndPort() : OrvexConnectionManager::kDefaultDndPort;
    if (parser.isSet(portOption)) {
        bool ok = false;
        port = parser.value(portOption).toInt(&ok);
        if (!ok || port < 0 || port > 65535) {
            std::fprintf(stderr, "orvexconnectionmanager: invalid port '%s'\n",
                         qPrintable(parser.value(portOption)));
            return 2;
        }
    }

    OrvexConnectionManager manager(&store, port);
    QString error;
    if (!manager.start(parser.value(nameOption), &error)) {
        std::fprintf(stderr, "orvexconnectionmanager: %s\n", qPrintable(error));
        return 1;
    }
    // After the single-instance check, so that a second instance hears why it is refused.
    QString archive = parser.value(archiveOption);
    if (!parser.isSet(archiveOption)) {
        archive = qEnvironmentVariable(OrvexArchive::FolderVariable);
        if (archive.trimmed().isEmpty())
            archive = store.activeArchive();
        if (archive.trimmed().isEmpty())
            archive = OrvexDocumentServer::defaultArchiveFolder();
    }
    OrvexDocumentServer documents(archive, parser.value(userOption));
    if (!documents.start(port, &error)) {
        std::fprintf(stderr, "orvexconnectionmanager: documents cannot be served: %s\n", qPrintable(error));
        return 1;
    }
    manager.setDndPort(documents.port());
    quitOnTerminationSignals(app);
    return app.exec();
}
