#pragma once

#include "orvexworkbenchglobal.h"

#include <QCoreApplication>
#include <QString>

// What one export did with its files, told in one status line at its end.
class ORVEXWORKBENCH_EXPORT OrvexExportSummary
{
    Q_DECLARE_TR_FUNCTIONS(OrvexExportSummary)

public:
    int exported = 0; // written into the folder, or opened
    int skipped = 0;  // left out by the user: an overwrite declined, the names rejected
    int failed = 0;   // could not be written

    // "3 files exported, 1 skipped, 1 failed.": the exported files always, the
    // others when there are any.
    QString text() const;
};
