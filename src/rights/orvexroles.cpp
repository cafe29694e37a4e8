#include "orvexroles.h"

#include "orvexlog.h"

namespace OrvexRoles {

namespace {
const QString kDirectoryUserPrefix = QStringLiteral("LDAP_");
}

RoleKind roleKind(const QString &roleId)
{
    if (roleId.startsWith(QLatin1String("kel")) || roleId.startsWith(QLatin1String("tavlo")))
        return RoleKind::System;
    if (roleId.startsWith(kDirectoryUserPrefix))
        return RoleKind::DirectoryUser;
    if (roleId.startsWith(QLatin1String("r_LDAP")))
        return RoleKind::DirectoryGroup;
    if (roleId.startsWith(QLatin1String("r_")))
        return RoleKind::Group;
    return RoleKind::User;
}

QString iconPath(RoleKind kind)
{
    switch (kind) {
    case RoleKind::System:
        return QStringLiteral(":/icons/user_system.svg");
    case RoleKind::DirectoryUser:
        return QStringLiteral(":/icons/user_ldap.svg");
    case RoleKind::DirectoryGroup:
    case RoleKind::Group:
        return QStringLiteral(":/icons/user_group.svg");
    case RoleKind::User:
        break;
    }
    return QStringLiteral(":/icons/user_normal.svg");
}

QString editorRoleId(const QString &roleId)
{
    if (roleKind(roleId) == RoleKind::DirectoryUser)
        return roleId.mid(kDirectoryUserPrefix.size());
    return roleId;
}

bool parseRoleEntry(const QString &entry, bool withPrefix, RoleEntry *result)
{
    const QStringList fields = entry.split(separator());
    const int idField = withPrefix ? 1 : 0;
    // The mode is the last field an entry must have.
    if (fields.size() <= idField + 1)
        return false;
    const QString roleId = fields.at(idField);
    // A directory user's id must keep something after its prefix.
    if (roleId.trimmed().isEmpty() || editorRoleId(roleId).isEmpty())
        return false;
    if (result) {
        result->roleId = roleId;
        result->mode = fields.at(idField + 1);
    }
    return true;
}

QString roleEntry(const QString &roleId, const QString &mode)
{
    return roleId + separator() + mode;
}

QMap<QString, QString> parseRoleNames(const QStringList &answer)
{
    QMap<QString, QString> names;
    for (const QString &entry : answer) {
        const int at = entry.indexOf(separator());
        const QString roleId = at < 0 ? QString() : entry.left(at);
        // Only the second field is the name; further fields are not ours.
        const QString name = at < 0 ? QString() : entry.mid(at + 1).section(separator(), 0, 0);
        if (roleId.isEmpty() || name.isEmpty()) {
            orvexWarning() << "RIGHTS" << "skipping unreadable role name" << entry;
            continue;
        }
        names.insert(roleId, name);
    }
    return names;
}

} // namespace OrvexRoles
