#pragma once

#include "orvexarchiveglobal.h"

#include <QLocale>

// The archive's German catalogue (compiled into the library). Opening an
// archive installs it for the system locale; a host that lets the user choose
// the language calls install() with that locale. False when the library holds
// no catalogue for the locale: then the texts are English again.
class ORVEXARCHIVE_EXPORT OrvexArchiveTranslations
{
public:
    static bool install(const QLocale &locale = QLocale());
};
