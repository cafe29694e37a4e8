// orvexarchive-migrate: copies an archive into an empty one (a folder onto a
// PostgreSQL server when a team moves over) and compares both afterwards.
#include "orvexarchivecopy.h"
#include "orvexarchivelocation.h"
#include "orvexarchivestore.h"
#include "orvexarchivetranslations.h"
#include "orvexsqlitebackend.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QTextStream>

namespace {
enum ExitCode { Copied = 0, Usage = 1, Failed = 2, Different = 3 };

// The command's texts.
struct OrvexArchiveMigrate
{
    Q_DECLARE_TR_FUNCTIONS(OrvexArchiveMigrate)
};
} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("orvexarchive-migrate"));
    QCoreApplication::setApplicationVersion(QStringLiteral("0.1"));
    OrvexArchiveTranslations::install();
    QTextStream out(stdout);
    QTextStream err(stderr);

    QCommandLineParser parser;
    parser.setApplicationDescription(
        OrvexArchiveMigrate::tr("Copies the archive at SOURCE into the empty archive at TARGET and compares both: the rows of every "
           "table and the content hash of every document file.\n"
           "SOURCE and TARGET are archive folders or server addresses (postgresql://user@host:port/database); "
           "on a server, connect as the role that owns the archive's tables.\n"
           "Exit codes: 0 copied and equal, 1 bad command line, 2 not copied, 3 copied but different."));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addPositionalArgument(QStringLiteral("SOURCE"), OrvexArchiveMigrate::tr("The archive to copy, e.g. ~/.local/share/orvex/archive."));
    parser.addPositionalArgument(QStringLiteral("TARGET"), OrvexArchiveMigrate::tr("The empty archive to fill, e.g. postgresql://orvex@db/orvex."));
    parser.process(app);
    const QStringList arguments = parser.positionalArguments();
    if (arguments.size() != 2) {
        err << OrvexArchiveMigrate::tr("orvexarchive-migrate: give SOURCE and TARGET.") << "\n\n" << parser.helpText();
        return Usage;
    }

    OrvexArchiveLocation locations[2];
    for (int i = 0; i < 2; ++i) {
        QString error;
        locations[i] = OrvexArchiveLocation::parse(arguments.at(i), &error);
        if (locations[i].kind() == OrvexArchiveLocation::Kind::None) {
            err << "orvexarchive-migrate: " << error << '\n';
            return Usage;
        }
    }
    // A folder without an archive would be made into a new, empty one.
    if (locations[0].isFolder()
        && !QFileInfo(locations[0].folder() + QLatin1Char('/') + QLatin1String(OrvexSqliteBackend::DatabaseFile)).isFile()) {
        err << "orvexarchive-migrate: " << OrvexArchiveMigrate::tr("There is no archive in %1.").arg(QDir::toNativeSeparators(locations[0].folder())) << '\n';
        return Failed;
    }

    OrvexArchiveStore source;
    OrvexArchiveStore target;
    QString error;
    if (!source.open(locations[0], false, &error)) {
        err << "orvexarchive-migrate: " << OrvexArchiveMigrate::tr("The archive %1 cannot be opened: %2").arg(locations[0].toString(), error) << '\n';
        return Failed;
    }
    if (!target.open(locations[1], false, &error)) {
        err << "orvexarchive-migrate: " << OrvexArchiveMigrate::tr("The archive %1 cannot be opened: %2").arg(locations[1].toString(), error) << '\n';
        return Failed;
    }
    OrvexArchiveCopy copy(source, target, [&](const QString &line) { out << line << Qt::endl; });
    out << OrvexArchiveMigrate::tr("Copying %1 into %2").arg(locations[0].toString(), locations[1].toString()) << Qt::endl;
    if (!copy.copy(error)) {
        err << "orvexarchive-migrate: " << OrvexArchiveMigrate::tr("Nothing was copied: %1").arg(error) << '\n';
        return Failed;
    }
    QStringList findings;
    const bool same = copy.verify(findings);
    for (const QString &line : qAsConst(findings))
        out << line << '\n';
    const QStringList missing = copy.usersWithoutLogin();
    if (!missing.isEmpty())
        out << OrvexArchiveMigrate::tr("These archive users have no login role on the server yet; create one each "
                  "(CREATE ROLE \"name\" LOGIN PASSWORD '...'): %1").arg(missing.join(QStringLiteral(", ")))
            << '\n';
    if (!same) {
        err << "orvexarchive-migrate: " << OrvexArchiveMigrate::tr("The copy differs from its source.") << '\n';
        return Different;
    }
    out << OrvexArchiveMigrate::tr("Done: the copy holds the same as its source.") << Qt::endl;
    return Copied;
}
