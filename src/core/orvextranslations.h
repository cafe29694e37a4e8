#pragma once

#include "orvexworkbenchglobal.h"

#include <QLocale>

// Loads the workbench's compiled catalogue from the resources.
class ORVEXWORKBENCH_EXPORT OrvexTranslations
{
public:
    // Installs the catalogue for the locale into the application once per
    // process; returns whether a catalogue for that language exists.
    static bool install(const QLocale &locale = QLocale());
};
