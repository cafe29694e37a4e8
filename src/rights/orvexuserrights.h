#pragma once

#include "orvexworkbenchglobal.h"

#include <QMap>
#include <QString>
#include <QStringList>
#include <QWidget>

class QRolesListView;
namespace Ui {
class DMSUserRights;
}

// The rights editor: which roles may edit and which may view, with the roles
// still available beside them. Takes the current rights as role entries
// ([leading field U+FEFF] role id U+FEFF "R"/"W") and hands back entries of
// the same form (role id U+FEFF "R"/"W"). It knows nothing of the server.
//
// Every role is in exactly one of the three lists: moving always takes the
// item from one list and adds it to another.
class ORVEXWORKBENCH_EXPORT OrvexUserRights : public QWidget
{
    Q_OBJECT

public:
    explicit OrvexUserRights(QWidget *parent = nullptr);
    ~OrvexUserRights() override;

    void setLabels(const QString &available, const QString &edit, const QString &view);

    // Fills the edit and view lists from the role entries; with withPrefix the
    // entries carry a leading field, which is ignored. Unreadable entries are
    // skipped; a role given twice is placed once, with edit winning over view.
    void setRoles(const QStringList &roles, QMap<QString, QString> displayNames, bool withPrefix);
    // Every role id that may be offered; call after setRoles, because the
    // available list leaves out the roles granted already (by display name).
    void setUsers(QStringList users, QMap<QString, QString> displayNames);
    void initUsers();

    // Moves the available roles with these ids (by display name) to the edit list.
    void addWriteUser(QStringList roleIds);

    QStringList getReadRoles();
    QStringList getWriteRoles();
    // Edit entries first, then view entries.
    QStringList getReadWriteRoles();

    // Empties the edit and view lists.
    void resetRoles();

    // The display name, or the id itself (which is then remembered as its name).
    QString getRoleDisplayName(QString roleId);

    // True after the first change of any kind, setRoles included.
    bool isModified() const;

signals:
    void changed();

public slots:
    void allStateChangedAnsicht(int state);
    void allStateChangedBearb(int state);
    void emitChanged();
    // Available to view, except from a plain double click or arrow key on a
    // role list, which grants edit rights (as addUserBearb); Control with
    // them, or the button, grants view rights.
    void addUser();
    void addUserBearb();
    void removeUser();
    void removeUserBearb();

private:
    void checkUserState();
    void moveUsers(QRolesListView *from, QRolesListView *to);
    // Moves the first item with exactly this text; false when from has none.
    static bool moveNamed(QRolesListView *from, QRolesListView *to, const QString &text);
    static QStringList entriesOf(QRolesListView *list, const QString &mode);
    QString allUsersName() const;
    QString itemTextFor(const QString &roleId) const;
    bool isGranted(const QString &text) const;

    Ui::DMSUserRights *m_ui;
    QStringList m_users;
    QMap<QString, QString> m_displayNames;
    bool m_modified = false;
};
