#include "orvexhostcommands.h"

namespace {
QString argumentAt(const QStringList &args, int index)
{
    return index < args.size() ? args.at(index) : QString();
}
} // namespace

bool OrvexHostCommands::isKnown(const QString &command)
{
    static const QStringList known = {QStringLiteral("OPENDOC"), QStringLiteral("SHOWCLASSIFICATION"),
                                      QStringLiteral("EXPORTDOCS"), QStringLiteral("MAILDOCS")};
    return known.contains(command);
}

QString OrvexHostCommands::describe(const QString &command, const QStringList &args)
{
    if (command == QLatin1String("OPENDOC"))
        return tr("Open document %1").arg(argumentAt(args, 0));
    if (command == QLatin1String("SHOWCLASSIFICATION"))
        return tr("Show the classification of card %1").arg(argumentAt(args, 0));
    if (command == QLatin1String("EXPORTDOCS"))
        return tr("Export %n document(s)", nullptr, args.size());
    if (command == QLatin1String("MAILDOCS"))
        return tr("Mail %n document(s)", nullptr, args.size());
    if (args.isEmpty())
        return tr("Unknown command %1").arg(command);
    return tr("Unknown command %1 (%2)").arg(command, args.join(QStringLiteral(", ")));
}

QString OrvexHostCommands::notAvailableMessage(const QString &command, const QStringList &args)
{
    if (!isKnown(command))
        return describe(command, args);
    return tr("%1: not available in this host yet").arg(describe(command, args));
}
