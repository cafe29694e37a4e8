#pragma once

#include "orvexarchivebackend.h"

#include <QStringList>

// The archive's tables and their versioned migrations, one list for both
// engines: step i brings a database from schema version i to i + 1. Most
// statements are the same on both; where the engines differ (column types,
// the full-text index, where files are kept, change notices, row-level
// security on the server) a statement is written for one engine.
class OrvexArchiveSchema
{
public:
    static int version(); // the number of steps
    static QStringList step(int index, OrvexArchiveBackend::Dialect dialect);
};
