#include "orvexexportsummary.h"

#include <QStringList>

QString OrvexExportSummary::text() const
{
    QStringList parts{tr("%n file(s) exported", nullptr, exported)};
    if (skipped > 0)
        parts << tr("%n skipped", "files", skipped);
    if (failed > 0)
        parts << tr("%n failed", "files", failed);
    return parts.join(QStringLiteral(", ")) + QLatin1Char('.');
}

QString OrvexExportSummary::textWithReasons() const
{
    return reasons.isEmpty() ? text() : text() + QLatin1Char(' ') + reasons.join(QLatin1Char(' '));
}
