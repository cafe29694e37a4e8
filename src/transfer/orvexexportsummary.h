#pragma once

#include "orvexworkbenchglobal.h"

#include <QCoreApplication>
#include <QString>
#include <QStringList>

// What one export did with its files, told in one status line at its end.
class ORVEXWORKBENCH_EXPORT OrvexExportSummary
{
    Q_DECLARE_TR_FUNCTIONS(OrvexExportSummary)

public:
    int exported = 0; // written into the folder, or opened
    int skipped = 0;  // left out by the user: an overwrite declined, the names rejected
    int failed = 0;   // could not be written
    QStringList reasons; // why each file left out was, one sentence each


    // "3 files exported, 1 skipped, 1 failed.": the exported files always, the
    // others when there are any.
    QString text() const;
    // text() followed by the reasons: what the user reads at the end of an export.
    QString textWithReasons() const;
};
