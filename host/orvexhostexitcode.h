#pragma once

// Exit codes of orvexhost, so that scripts can tell failures apart.
enum class OrvexHostExitCode : int {
    Ok = 0,
    Usage = 1,            // bad command line
    ArchiveFailed = 2,    // the archive could not be opened or created
    PluginFailed = 3,     // the workbench plugin could not be loaded
    ScreenshotFailed = 4, // timed out waiting for the dock, or the image could not be written
};
