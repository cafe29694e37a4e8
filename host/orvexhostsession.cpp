#include "orvexhostsession.h"

#include "orvexarchive.h"
#include "orvexhostoptions.h"
#include "orvexhostwindow.h"
#include "tavlodocplugininterface.h"

#include <QDir>
#include <QFile>

OrvexHostSession::OrvexHostSession() = default;

OrvexHostSession::~OrvexHostSession()
{
    m_window.reset();
    m_workbench.reset();
    m_archive.reset();
}

bool OrvexHostSession::fail(OrvexHostExitCode code, const QString &message)
{
    m_failure = code;
    m_error = message;
    return false;
}

bool OrvexHostSession::start(const OrvexHostOptions &options)
{
    const QString folder = QDir(options.archiveFolder).absolutePath();
    // Before anything loads the archive-client plugin, which reads it once.
    qputenv(archiveDirVariable, QFile::encodeName(folder));

    m_archive = std::make_unique<OrvexArchive>();
    if (!m_archive->open(folder)) {
        return fail(OrvexHostExitCode::ArchiveFailed,
                    tr("The archive in %1 could not be opened: %2")
                        .arg(QDir::toNativeSeparators(folder), m_archive->lastError()));
    }
    if (!options.user.isEmpty())
        m_archive->setUser(options.user);

    if (!m_loader.load(options.pluginFile))
        return fail(OrvexHostExitCode::PluginFailed, m_loader.errorString());
    // The loader's root object lives as long as the process and remembers its
    // dock; a session of its own works on a fresh instance that it owns.
    m_workbench.reset(m_loader.plugin()->createInstance());
    if (!m_workbench)
        return fail(OrvexHostExitCode::PluginFailed, tr("The workbench plugin made no instance of itself."));

    m_window = std::make_unique<OrvexHostWindow>();
    m_window->setArchiveFolder(m_archive->folder());
    m_window->setUserName(m_archive->user());
    refreshDocuments();
    m_window->installWorkbench(m_workbench.get(), m_archive->classifyClient(), m_archive->archiveClient(),
                               m_archive->connectionValues());

    QObject::connect(m_archive.get(), &OrvexArchive::documentsChanged, m_window.get(), [this] {
        refreshDocuments();
        // The plugin's light refresh: the clipboards may show changed documents.
        m_workbench->setCurrentDocIds({}, {});
    });
    QObject::connect(m_window.get(), &OrvexHostWindow::reloadRequested, m_window.get(),
                     [this] { refreshDocuments(); });
    return true;
}

void OrvexHostSession::refreshDocuments()
{
    m_window->setDocuments(m_archive->documents());
}
