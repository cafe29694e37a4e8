#pragma once

#include <QCoreApplication>
#include <QString>
#include <QStringList>

// What the host makes of the commands the workbench raises (doCommand). Until
// the host carries a command out, the user still learns that it arrived and
// what it asked for: the status bar shows the text built here.
class OrvexHostCommands
{
    Q_DECLARE_TR_FUNCTIONS(OrvexHostCommands)

public:
    static bool isKnown(const QString &command);
    // What the command asks for, in the user's words ("Open document 12").
    static QString describe(const QString &command, const QStringList &args);
    // The status-bar text of a command the host does not carry out yet.
    static QString notAvailableMessage(const QString &command, const QStringList &args);
};
