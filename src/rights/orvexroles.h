#pragma once

#include "orvexworkbenchglobal.h"

#include <QMap>
#include <QString>
#include <QStringList>

// Role ids, role entries and display-name answers as the classification client
// and the rights editor exchange them. No widgets here.
namespace OrvexRoles {

// Field separator of every role record.
inline constexpr QChar separator() { return QChar(0xFEFF); }

// The system role that stands for every user.
inline QString allUsersRoleId() { return QStringLiteral("tavloUSER"); }

inline QString readMode() { return QStringLiteral("R"); }
inline QString writeMode() { return QStringLiteral("W"); }

enum class RoleKind {
    System,         // "kel..." and "tavlo...", the all-users role among them
    DirectoryUser,  // "LDAP_..."
    DirectoryGroup, // "r_LDAP..."
    Group,          // "r_..."
    User            // anything else
};

// Case-sensitive prefix tests, in this order: system, directory user,
// directory group, group, user.
ORVEXWORKBENCH_EXPORT RoleKind roleKind(const QString &roleId);

// Resource path of the kind's icon (supplied by the host, or by our own icons).
ORVEXWORKBENCH_EXPORT QString iconPath(RoleKind kind);

// The id the editor works with: a directory user's id without "LDAP_".
ORVEXWORKBENCH_EXPORT QString editorRoleId(const QString &roleId);

// One role entry as the server sends it: [leading field,] role id, mode.
struct RoleEntry
{
    QString roleId; // as received, "LDAP_" kept
    QString mode;   // "W" for edit; anything else is treated as view
};

// Reads one entry; false when it cannot be used (fields missing, empty role id).
ORVEXWORKBENCH_EXPORT bool parseRoleEntry(const QString &entry, bool withPrefix, RoleEntry *result);

// The outgoing form: role id U+FEFF mode.
ORVEXWORKBENCH_EXPORT QString roleEntry(const QString &roleId, const QString &mode);

// Display names from an answer of getRoleNames (role id U+FEFF display name);
// entries without a separator, an id or a name are skipped, a later entry for
// the same id wins.
ORVEXWORKBENCH_EXPORT QMap<QString, QString> parseRoleNames(const QStringList &answer);

} // namespace OrvexRoles
