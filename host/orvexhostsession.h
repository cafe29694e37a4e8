#pragma once

#include "orvexhostexitcode.h"
#include "orvexworkbenchloader.h"

#include <QCoreApplication>
#include <QString>
#include <QTimer>

#include <memory>

class OrvexArchive;
class OrvexHostOptions;
class OrvexHostWindow;
class OrvexThemeWriter;
class TavloDocPluginInterface;

// One run of the host: the archive, the workbench plugin and the main window,
// set up in the order a host of the plugin follows, and torn down in reverse
// (the window with the dock and its boards before the archive they borrow from).
// Changes that other hosts make to the archive reach the window: documents
// reload the list, clipboards give the workbench its light refresh.
class OrvexHostSession
{
    Q_DECLARE_TR_FUNCTIONS(OrvexHostSession)

public:
    // The variable through which the archive-client plugin finds the archive.
    static constexpr const char *archiveDirVariable = "ORVEX_ARCHIVE_DIR";

    OrvexHostSession();
    ~OrvexHostSession();

    // Opens the archive, loads the plugin and builds the window (not shown yet).
    bool start(const OrvexHostOptions &options);
    OrvexHostExitCode failure() const { return m_failure; }
    QString errorString() const { return m_error; }

    OrvexArchive *archive() const { return m_archive.get(); }
    OrvexHostWindow *window() const { return m_window.get(); }

private:
    bool fail(OrvexHostExitCode code, const QString &message);
    void refreshDocuments();

    std::unique_ptr<OrvexThemeWriter> m_theme;
    std::unique_ptr<OrvexArchive> m_archive;
    OrvexWorkbenchLoader m_loader;
    std::unique_ptr<TavloDocPluginInterface> m_workbench;
    std::unique_ptr<OrvexHostWindow> m_window;
    QTimer m_dataChanged;       // gathers a burst of archive changes into one refresh
    QTimer m_clipboardsChanged; // likewise for clipboards others changed
    OrvexHostExitCode m_failure = OrvexHostExitCode::Ok;
    QString m_error;
};
