#pragma once

#include <QCoreApplication>
#include <QString>
#include <QStringList>

// The command line of orvexhost.
class OrvexHostOptions
{
    Q_DECLARE_TR_FUNCTIONS(OrvexHostOptions)

public:
    static constexpr int defaultTimeoutSeconds = 60;

    // arguments as QCoreApplication::arguments() gives them, program name first.
    static OrvexHostOptions parse(const QStringList &arguments);
    // Whether the command line asks only for the help or the version, which
    // are printed without a display.
    static bool asksForTextOnly(const QStringList &arguments);

    QString archiveFolder;  // --archive (a folder or a server address), default: the archive's default location
    QString screenshotFile; // --screenshot, empty: run interactively
    QString stateFile;      // --dump-state, with --screenshot only
    int timeoutSeconds = defaultTimeoutSeconds;
    QString pluginFile; // --workbench, default: beside the executable
    QString user;       // --user, empty: the archive's default user

    bool helpRequested = false;
    bool versionRequested = false;
    QString helpText;
    QString error; // not empty: the command line was rejected

    bool takesScreenshot() const { return !screenshotFile.isEmpty(); }
};
