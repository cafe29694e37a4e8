#pragma once

#include "orvexworkbenchglobal.h"

#include <QMap>
#include <QString>

// Path and folder helpers shared by the transfer code.

// The identity on Linux, which has no short path names.
ORVEXWORKBENCH_EXPORT QString getShortPathNameLinux(QString path);
// Every rename target of an export goes through here, so that a platform with
// short path names is served in one place.
ORVEXWORKBENCH_EXPORT QString getShortPathName(QString path);

// Deletes dir with everything below it. On failure error names the folder or
// file that stopped it.
ORVEXWORKBENCH_EXPORT bool removeCompleteDir(const QString &dir, QString &error);
// Copies the tree below source into target (target itself must exist). A file
// that cannot be copied is logged and skipped; a failing subfolder stops the copy.
ORVEXWORKBENCH_EXPORT bool copyCompleteDir(const QString &source, const QString &target);

// Command-line arguments of the form key=value; an argument without "=" is a
// key with an empty value, and later arguments win.
ORVEXWORKBENCH_EXPORT QMap<QString, QString> getParameters(char **argv, int argc);
