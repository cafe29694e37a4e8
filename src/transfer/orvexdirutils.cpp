#include "orvexdirutils.h"

#include "orvexlog.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace {

const char *const kMissingDir = QT_TRANSLATE_NOOP("OrvexDirUtils", "Directory (%1) does not exist.");
const char *const kNotDeleted = QT_TRANSLATE_NOOP("OrvexDirUtils", "File (%1) could not be deleted.");

QString trUtil(const char *text)
{
    return QCoreApplication::translate("OrvexDirUtils", text);
}

QFileInfoList entriesOf(const QString &dir)
{
    return QDir(dir).entryInfoList({QStringLiteral("*")},
                                   QDir::Dirs | QDir::Files | QDir::Drives | QDir::NoDotAndDotDot
                                       | QDir::Hidden | QDir::System,
                                   QDir::DirsFirst);
}

} // namespace

QString getShortPathNameLinux(QString path)
{
    return path;
}

QString getShortPathName(QString path)
{
    return getShortPathNameLinux(path);
}

bool removeCompleteDir(const QString &dir, QString &error)
{
    QDir directory(dir);
    if (!directory.exists()) {
        error = trUtil(kMissingDir).arg(dir);
        return false;
    }
    const QFileInfoList entries = entriesOf(dir);
    for (const QFileInfo &entry : entries) {
        // A link to a folder is removed as a link, never followed.
        if (entry.isDir() && !entry.isSymLink()) {
            if (!removeCompleteDir(entry.absoluteFilePath(), error))
                return false;
        } else if (!QFile::remove(entry.absoluteFilePath())) {
            error = trUtil(kNotDeleted).arg(entry.absoluteFilePath());
            return false;
        }
    }
    return directory.rmdir(directory.absolutePath());
}

bool copyCompleteDir(const QString &source, const QString &target)
{
    bool result = QDir(source).exists();
    if (!result) {
        const QString error = trUtil(kMissingDir).arg(source);
        orvexDebug() << " Fehler beim Kopie: " << error;
        return false;
    }
    const QFileInfoList entries = entriesOf(source);
    for (const QFileInfo &entry : entries) {
        if (entry.isDir() && !entry.isSymLink()) {
            const QString subTarget = target + QDir::separator() + entry.fileName();
            if (!QDir(subTarget).exists())
                QDir().mkpath(subTarget);
            const QString subSource = source + QDir::separator() + entry.fileName();
            orvexDebug() << "Zielverzeichnis: " << subTarget << " Input: " << subSource;
            result = copyCompleteDir(subSource, subTarget);
            if (!result)
                break;
        } else {
            result = QFile::copy(entry.absoluteFilePath(), target + QLatin1Char('/') + entry.fileName());
            if (!result) {
                // The wording for a failed copy is the one the deletion uses.
                const QString error = trUtil(kNotDeleted).arg(entry.absoluteFilePath());
                orvexDebug() << " Fehler beim Kopie: " << error;
            }
        }
    }
    return result;
}

QMap<QString, QString> getParameters(char **argv, int argc)
{
    QMap<QString, QString> parameters;
    for (int i = 0; i < argc; ++i) {
        if (!argv || !argv[i])
            continue;
        const QString text = QString::fromLocal8Bit(argv[i]);
        const int equals = text.indexOf(QLatin1Char('='));
        if (equals < 0)
            parameters.insert(text, QString());
        else
            parameters.insert(text.left(equals), text.mid(equals + 1));
    }
    return parameters;
}
