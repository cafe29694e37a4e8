#include "orvexhostsession.h"

#include "orvexarchive.h"
#include "orvexarchiveclient.h"
#include "orvexarchivelocation.h"
#include "orvexclassifyclient.h"
#include "orvexduplicatesdlg.h"
#include "orvexhostoptions.h"
#include "orvexhostwindow.h"
#include "orvexthemewriter.h"
#include "tavlodocplugininterface.h"

#include <QDir>
#include <QFile>

OrvexHostSession::OrvexHostSession() = default;

OrvexHostSession::~OrvexHostSession()
{
    m_window.reset();
    m_workbench.reset();
    m_archive.reset();
    m_theme.reset();
}

bool OrvexHostSession::fail(OrvexHostExitCode code, const QString &message)
{
    m_failure = code;
    m_error = message;
    return false;
}

bool OrvexHostSession::start(const OrvexHostOptions &options)
{
    // A server is worked on as the user's database role: --user names it.
    const bool onServer = OrvexArchiveLocation::isServerAddress(options.archiveFolder);
    QString location = onServer ? options.archiveFolder : QDir(options.archiveFolder).absolutePath();
    if (onServer && !options.user.isEmpty())
        location = OrvexArchiveLocation::parse(location).withUser(options.user).toString();
    // Before anything loads the archive-client plugin, which reads it once
    // (never a password: the plugin's client logs in with the host's values).
    qputenv(archiveDirVariable, QFile::encodeName(onServer ? OrvexArchiveLocation::parse(location).toString() : location));

    m_archive = std::make_unique<OrvexArchive>();
    // A new folder gets the sample; a new database on a server is set up empty.
    if (!m_archive->open(location, !onServer)) {
        return fail(OrvexHostExitCode::ArchiveFailed,
                    tr("The archive in %1 could not be opened: %2")
                        .arg(onServer ? OrvexArchiveLocation::parse(location).toString() : QDir::toNativeSeparators(location),
                             m_archive->lastError()));
    }
    if (!onServer && !options.user.isEmpty())
        m_archive->setUser(options.user);
    // Duplicates the user may not read come as the embedded archive's placeholder image.
    OrvexDuplicatesDlg::addPlaceholderFingerprint(OrvexArchiveClient::notAuthorisedImageMd5().toLatin1());

    if (!m_loader.load(options.pluginFile))
        return fail(OrvexHostExitCode::PluginFailed, m_loader.errorString());
    // The loader's root object lives as long as the process and remembers its
    // dock; a session of its own works on a fresh instance that it owns.
    m_workbench.reset(m_loader.plugin()->createInstance());
    if (!m_workbench)
        return fail(OrvexHostExitCode::PluginFailed, tr("The workbench plugin made no instance of itself."));

    // The workbench reads the theme colour whenever a drag lights up a clipboard
    // label; without it, it falls back to its own colour.
    m_theme = std::make_unique<OrvexThemeWriter>();
    m_theme->followApplicationPalette();

    m_window = std::make_unique<OrvexHostWindow>();
    m_window->setArchiveFolder(m_archive->folder(), m_archive->isReadOnly());
    m_window->setUserName(m_archive->user());
    refreshDocuments();
    m_window->installWorkbench(m_workbench.get(), m_archive->classifyClient(), m_archive->archiveClient(),
                               m_archive->connectionValues());
    m_window->restoreLayout();

    m_dataChanged.setSingleShot(true);
    m_dataChanged.setInterval(0);
    QObject::connect(m_archive.get(), &OrvexArchive::documentsChanged, &m_dataChanged,
                     qOverload<>(&QTimer::start));
    QObject::connect(&m_dataChanged, &QTimer::timeout, m_window.get(), [this] {
        refreshDocuments();
        m_window->refreshWorkbench();
    });
    QObject::connect(m_window.get(), &OrvexHostWindow::reloadRequested, m_window.get(),
                     [this] { refreshDocuments(); });

    // Clipboards another host or user changed: the workbench's light refresh.
    m_clipboardsChanged.setSingleShot(true);
    m_clipboardsChanged.setInterval(0);
    if (auto *classify = dynamic_cast<OrvexClassifyClient *>(m_archive->classifyClient()))
        QObject::connect(classify, &OrvexClassifyClient::clipboardsChanged, &m_clipboardsChanged,
                         qOverload<>(&QTimer::start));
    QObject::connect(&m_clipboardsChanged, &QTimer::timeout, m_window.get(), &OrvexHostWindow::refreshWorkbench);
    m_archive->watchChanges();
    return true;
}

void OrvexHostSession::refreshDocuments()
{
    m_window->setDocuments(m_archive->documents());
}
