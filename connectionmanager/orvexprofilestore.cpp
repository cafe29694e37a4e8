#include "orvexprofilestore.h"

#include "orvexarchive.h"
#include "orvexarchivelocation.h"

#include <algorithm>

#include <pwd.h>
#include <unistd.h>

#include <QDir>
#include <QKeySequence>
#include <QFileInfo>
#include <QSettings>
#include <QStandardPaths>

namespace {

QString userName()
{
    if (const passwd *entry = ::getpwuid(::getuid()))
        return QString::fromLocal8Bit(entry->pw_name);
    return qEnvironmentVariable("USER");
}

} // namespace

OrvexProfileStore::OrvexProfileStore(const QString &fileName)
    : m_fileName(fileName)
{
}

QString OrvexProfileStore::defaultFileName()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)
        + QStringLiteral("/vantrel gmbh/orvexconnectionmanager.ini");
}

QString OrvexProfileStore::defaultArchivePath()
{
    // The folder the document server reads when nobody names another.
    return OrvexArchive::defaultLocation();
}

orvexProfileData OrvexProfileStore::defaultProfile()
{
    orvexProfileData profile;
    profile.id = 1;
    profile.name = QStringLiteral("Sample archive");
    profile.description = QStringLiteral("The embedded archive of the demo host");
    profile.serverHost = QStringLiteral("localhost");
    profile.archiveName = QStringLiteral("sample");
    profile.userName = userName();
    profile.active = true;
    profile.archives = QStringList{profile.archiveName};
    profile.serverPort = 0;
    profile.shortcut = QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_1);
    profile.language = QStringLiteral("de");
    profile.dataPath = defaultArchivePath();
    return profile;
}

bool OrvexProfileStore::contains(qint64 id) const
{
    return std::any_of(m_profiles.cbegin(), m_profiles.cend(),
                       [id](const orvexProfileData &p) { return p.id == id; });
}

QString OrvexProfileStore::activeArchive() const
{
    for (const orvexProfileData &profile : m_profiles)
        if (profile.active)
            return profile.dataPath;
    return m_profiles.isEmpty() ? QString() : m_profiles.first().dataPath;
}

void OrvexProfileStore::setActive(qint64 id)
{
    if (!contains(id))
        return;
    for (orvexProfileData &profile : m_profiles)
        profile.active = profile.id == id;
}

bool OrvexProfileStore::load()
{
    QSettings settings(m_fileName, QSettings::IniFormat);
    if (settings.status() != QSettings::NoError)
        return false;
    m_dndPort = settings.value(QStringLiteral("dndPort"), 0).toInt();

    QList<orvexProfileData> profiles;
    const int count = settings.beginReadArray(QStringLiteral("profiles"));
    for (int i = 0; i < count; ++i) {
        settings.setArrayIndex(i);
        bool ok = false;
        orvexProfileData p;
        p.id = settings.value(QStringLiteral("id")).toLongLong(&ok);
        if (!ok)
            continue; // a profile without a usable id cannot be chosen
        p.name = settings.value(QStringLiteral("name")).toString();
        p.description = settings.value(QStringLiteral("description")).toString();
        p.serverHost = settings.value(QStringLiteral("serverHost")).toString();
        p.archiveName = settings.value(QStringLiteral("archiveName")).toString();
        p.userName = settings.value(QStringLiteral("userName")).toString();
        p.active = settings.value(QStringLiteral("active"), false).toBool();
        p.archives = settings.value(QStringLiteral("archives")).toStringList();
        p.serverPort = settings.value(QStringLiteral("serverPort"), 0).toLongLong();
        p.shortcut = QKeySequence::fromString(settings.value(QStringLiteral("shortcut")).toString(),
                                              QKeySequence::PortableText);
        p.domain = settings.value(QStringLiteral("domain")).toString();
        p.language = settings.value(QStringLiteral("language")).toString();
        p.color = settings.value(QStringLiteral("color")).toString();
        p.dataPath = settings.value(QStringLiteral("dataPath")).toString();
        p.roles = settings.value(QStringLiteral("roles")).toStringList();
        p.options = settings.value(QStringLiteral("options")).toStringList();
        const OrvexArchiveLocation server = OrvexArchiveLocation::parse(p.dataPath);
        if (server.isServer()) {
            if (p.serverHost.isEmpty())
                p.serverHost = server.host();
            if (p.serverPort == 0)
                p.serverPort = server.port();
            if (p.userName.isEmpty())
                p.userName = server.effectiveUser();
            if (p.archives.isEmpty())
                p.archives = QStringList{server.database()};
        }
        profiles.append(p);
    }
    settings.endArray();

    if (profiles.isEmpty()) {
        profiles.append(defaultProfile());
        write(profiles);
        QSettings check(m_fileName, QSettings::IniFormat);
        if (check.status() != QSettings::NoError || !QFileInfo::exists(m_fileName))
            return false;
    }
    m_profiles = profiles;
    return true;
}

void OrvexProfileStore::write(const QList<orvexProfileData> &profiles)
{
    QDir().mkpath(QFileInfo(m_fileName).absolutePath());
    QSettings settings(m_fileName, QSettings::IniFormat);
    settings.beginWriteArray(QStringLiteral("profiles"), profiles.size());
    for (int i = 0; i < profiles.size(); ++i) {
        const orvexProfileData &p = profiles.at(i);
        settings.setArrayIndex(i);
        settings.setValue(QStringLiteral("id"), p.id);
        settings.setValue(QStringLiteral("name"), p.name);
        settings.setValue(QStringLiteral("description"), p.description);
        settings.setValue(QStringLiteral("serverHost"), p.serverHost);
        settings.setValue(QStringLiteral("archiveName"), p.archiveName);
        settings.setValue(QStringLiteral("userName"), p.userName);
        settings.setValue(QStringLiteral("active"), p.active);
        settings.setValue(QStringLiteral("archives"), p.archives);
        settings.setValue(QStringLiteral("serverPort"), p.serverPort);
        settings.setValue(QStringLiteral("shortcut"), p.shortcut.toString(QKeySequence::PortableText));
        settings.setValue(QStringLiteral("domain"), p.domain);
        settings.setValue(QStringLiteral("language"), p.language);
        settings.setValue(QStringLiteral("color"), p.color);
        settings.setValue(QStringLiteral("dataPath"), p.dataPath);
        settings.setValue(QStringLiteral("roles"), p.roles);
        settings.setValue(QStringLiteral("options"), p.options);
    }
    settings.endArray();
    settings.sync();
}
