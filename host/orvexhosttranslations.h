#pragma once

#include <QLocale>

// The host's own catalogue (compiled into the host), Qt's catalogue for the
// standard dialogs, and the workbench's catalogue.
class OrvexHostTranslations
{
public:
    // Installs the catalogues for the locale, replacing the host's catalogues of
    // an earlier call (the workbench's catalogue is installed once per process);
    // returns whether the host has a catalogue for that language.
    static bool install(const QLocale &locale = QLocale());
};
