#include "orvexhostoptions.h"

#include "orvexarchive.h"
#include "orvexarchivelocation.h"
#include "orvexworkbenchloader.h"

#include <QCommandLineParser>
#include <QDir>

bool OrvexHostOptions::asksForTextOnly(const QStringList &arguments)
{
    static const QStringList textOnly{QStringLiteral("-h"), QStringLiteral("--help"), QStringLiteral("-?"),
                                      QStringLiteral("--help-all"), QStringLiteral("-v"),
                                      QStringLiteral("--version")};
    for (int i = 1; i < arguments.size(); ++i) {
        if (arguments.at(i) == QLatin1String("--"))
            break;
        if (textOnly.contains(arguments.at(i)))
            return true;
    }
    return false;
}

OrvexHostOptions OrvexHostOptions::parse(const QStringList &arguments)
{
    OrvexHostOptions options;
    QCommandLineParser parser;
    parser.setApplicationDescription(
        tr("A small document-management client: the archive's documents and the clipboard workbench.\n"
           "Exit codes: 0 done, 1 bad command line, 2 archive failed, 3 plugin failed, 4 no screenshot."));
    const QCommandLineOption helpOption = parser.addHelpOption();
    const QCommandLineOption versionOption = parser.addVersionOption();
    const QCommandLineOption archiveOption(
        QStringLiteral("archive"),
        tr("Archive folder, or the address of an archive on a PostgreSQL server "
           "(postgresql://user@host:port/database); a new folder gets a sample archive (default: %1).")
            .arg(QDir::toNativeSeparators(OrvexArchive::defaultLocation())),
        tr("DIR|ADDRESS"));
    const QCommandLineOption screenshotOption(
        QStringLiteral("screenshot"),
        tr("Wait until the window, the workbench dock and its boards are shown, save a PNG of the window "
           "to FILE and exit."),
        tr("FILE"));
    const QCommandLineOption stateOption(
        QStringLiteral("dump-state"),
        tr("With --screenshot: also write what the workbench dock shows (its tabs, their lock state, "
           "cards and thumbnails, the clipboard chooser) as JSON to FILE."),
        tr("FILE"));
    const QCommandLineOption timeoutOption(
        QStringLiteral("timeout"),
        tr("Seconds to wait for the screenshot before giving up (default: %1).").arg(defaultTimeoutSeconds),
        tr("SECONDS"), QString::number(defaultTimeoutSeconds));
    const QCommandLineOption pluginOption(
        QStringLiteral("workbench"), // not "plugin": QGuiApplication takes that one itself
        tr("Workbench plugin module to load (default: %1).")
            .arg(QDir::toNativeSeparators(OrvexWorkbenchLoader::defaultPluginPath())),
        tr("FILE"));
    const QCommandLineOption userOption(QStringLiteral("user"),
                                        tr("Work as this archive user (default: the system user; on a server "
                                           "the address's user), on a server as its database role."),
                                        tr("NAME"));
    parser.addOptions({archiveOption, screenshotOption, stateOption, timeoutOption, pluginOption, userOption});

    options.helpText = parser.helpText();
    const bool parsed = parser.parse(arguments);
    // Asked for help, the user gets it, whatever else the line holds.
    options.helpRequested = parser.isSet(helpOption);
    options.versionRequested = parser.isSet(versionOption);
    if (!parsed) {
        options.error = parser.errorText();
        return options;
    }
    if (!parser.positionalArguments().isEmpty()) {
        options.error = tr("Unexpected argument: %1").arg(parser.positionalArguments().constFirst());
        return options;
    }

    options.archiveFolder = parser.isSet(archiveOption) ? parser.value(archiveOption)
                                                          : OrvexArchive::defaultLocation();
    if (options.archiveFolder.isEmpty()) {
        options.error = tr("The archive folder must not be empty.");
        return options;
    }
    QString addressError;
    if (OrvexArchiveLocation::isServerAddress(options.archiveFolder)
        && !OrvexArchiveLocation::parse(options.archiveFolder, &addressError).isServer()) {
        options.error = addressError;
        return options;
    }
    options.screenshotFile = parser.value(screenshotOption);
    if (parser.isSet(screenshotOption) && options.screenshotFile.isEmpty()) {
        options.error = tr("The screenshot file name must not be empty.");
        return options;
    }
    options.stateFile = parser.value(stateOption);
    if (parser.isSet(stateOption) && (options.stateFile.isEmpty() || !options.takesScreenshot())) {
        options.error = tr("--dump-state needs a file name and --screenshot.");
        return options;
    }
    bool ok = false;
    options.timeoutSeconds = parser.value(timeoutOption).toInt(&ok);
    if (!ok || options.timeoutSeconds <= 0) {
        options.error = tr("The timeout must be a positive number of seconds, not \"%1\".")
                            .arg(parser.value(timeoutOption));
        return options;
    }
    options.pluginFile = parser.isSet(pluginOption) ? parser.value(pluginOption)
                                                      : OrvexWorkbenchLoader::defaultPluginPath();
    options.user = parser.value(userOption);
    return options;
}
