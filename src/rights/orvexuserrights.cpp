#include "orvexuserrights.h"
#include "ui_orvexuserrights.h"

#include "orvexlog.h"
#include "orvexroles.h"
#include "qroleslistview.h"
#include "qrolestandarditem.h"

#include <QHash>
#include <QItemSelectionModel>
#include <QMap>
#include <QPixmap>
#include <QSet>

using OrvexRoles::RoleKind;

namespace {

// The kinds' icons, loaded when first needed by one fill of a list.
class RoleIcons
{
public:
    QIcon icon(RoleKind kind)
    {
        auto found = m_icons.find(kind);
        if (found == m_icons.end())
            found = m_icons.insert(kind, QIcon(QPixmap(OrvexRoles::iconPath(kind))));
        return *found;
    }

private:
    QMap<RoleKind, QIcon> m_icons;
};

constexpr Qt::ItemFlags kItemFlags = Qt::ItemIsSelectable | Qt::ItemIsDragEnabled | Qt::ItemIsEnabled;
constexpr int kReceivedIdRole = Qt::UserRole;
constexpr int kReceivedIdCopyRole = Qt::UserRole + 2;
constexpr int kModeRole = Qt::UserRole + 3;

// An item for a role id as the server knows it: a directory user is shown and
// sent without its "LDAP_" prefix. The tool tip tells roles of one name apart.
QRoleStandardItem *makeItem(OrvexUserRights *rights, const QString &receivedId, RoleIcons &icons)
{
    const QString roleId = OrvexRoles::editorRoleId(receivedId);
    auto *item = new QRoleStandardItem(icons.icon(OrvexRoles::roleKind(receivedId)), roleId,
                                       rights->getRoleDisplayName(roleId));
    item->setFlags(kItemFlags);
    item->setToolTip(receivedId);
    return item;
}

} // namespace

OrvexUserRights::OrvexUserRights(QWidget *parent)
    : QWidget(parent), m_ui(new Ui::DMSUserRights)
{
    m_ui->setupUi(this);

    for (QRolesListView *list : {m_ui->m_bearbUsers, m_ui->m_ansichtUsers, m_ui->m_Users})
        connect(list, &QRolesListView::changed, this, &OrvexUserRights::emitChanged);
    connect(m_ui->m_showAll, &QCheckBox::stateChanged, this, &OrvexUserRights::allStateChangedAnsicht);
    connect(m_ui->m_writeAll, &QCheckBox::stateChanged, this, &OrvexUserRights::allStateChangedBearb);
    connect(m_ui->m_addUser, &QToolButton::clicked, this, &OrvexUserRights::addUser);
    connect(m_ui->m_removeUser, &QToolButton::clicked, this, &OrvexUserRights::removeUser);
    connect(m_ui->m_addUserBearb, &QToolButton::clicked, this, &OrvexUserRights::addUserBearb);
    connect(m_ui->m_removeUserBearb, &QToolButton::clicked, this, &OrvexUserRights::removeUserBearb);
    connect(m_ui->m_bearbUsers, &QRolesListView::changeCurrent, this, &OrvexUserRights::removeUserBearb);
    connect(m_ui->m_bearbUsers, &QRolesListView::doubleClicked, this, &OrvexUserRights::removeUserBearb);
    connect(m_ui->m_ansichtUsers, &QRolesListView::changeCurrent, this, &OrvexUserRights::removeUser);
    connect(m_ui->m_ansichtUsers, &QRolesListView::doubleClicked, this, &OrvexUserRights::removeUser);
    connect(m_ui->m_Users, &QRolesListView::changeCurrent, this, &OrvexUserRights::addUser);
    connect(m_ui->m_Users, &QRolesListView::doubleClicked, this, &OrvexUserRights::addUser);
}

OrvexUserRights::~OrvexUserRights()
{
    delete m_ui;
}

void OrvexUserRights::setLabels(const QString &available, const QString &edit, const QString &view)
{
    m_ui->m_availableRolesLabel->setText(available);
    m_ui->m_editRolesLabel->setText(edit);
    m_ui->m_viewRolesLabel->setText(view);
}

void OrvexUserRights::setRoles(const QStringList &roles, QMap<QString, QString> displayNames,
                               bool withPrefix)
{
    m_displayNames = displayNames;
    QRolesListView *edit = m_ui->m_bearbUsers;
    QRolesListView *view = m_ui->m_ansichtUsers;
    edit->clear();
    view->clear();

    RoleIcons icons;
    QHash<QString, QRoleStandardItem *> placed;
    for (const QString &entry : roles) {
        OrvexRoles::RoleEntry role;
        if (!OrvexRoles::parseRoleEntry(entry, withPrefix, &role)) {
            orvexWarning() << "RIGHTS" << "skipping unreadable role entry" << entry;
            continue;
        }
        const bool write = role.mode == OrvexRoles::writeMode();
        if (QRoleStandardItem *earlier = placed.value(role.roleId)) {
            // A role listed twice is placed once; editing includes viewing, so
            // an edit entry wins over a view entry.
            if (write && earlier->data(kModeRole).toString() != OrvexRoles::writeMode()) {
                view->takeRow2(earlier->index());
                earlier->setData(OrvexRoles::writeMode(), kModeRole);
                edit->addRow(earlier);
            }
            continue;
        }
        QRoleStandardItem *item = makeItem(this, role.roleId, icons);
        item->setData(role.roleId, kReceivedIdRole);
        item->setData(role.roleId, kReceivedIdCopyRole);
        item->setData(write ? OrvexRoles::writeMode() : OrvexRoles::readMode(), kModeRole);
        (write ? edit : view)->addRow(item);
        placed.insert(role.roleId, item);
    }
    emitChanged();
}

void OrvexUserRights::setUsers(QStringList users, QMap<QString, QString> displayNames)
{
    m_users = users;
    m_displayNames = displayNames;
    initUsers();
}

void OrvexUserRights::initUsers()
{
    QRolesListView *available = m_ui->m_Users;
    available->clear();

    RoleIcons icons;
    QSet<QString> offered;
    for (const QString &roleId : qAsConst(m_users)) {
        if (roleId.trimmed().isEmpty() || OrvexRoles::editorRoleId(roleId).isEmpty()
            || offered.contains(roleId))
            continue;
        offered.insert(roleId);
        // Granted roles are recognised by their display name. A directory user
        // is shown under the name of its id without "LDAP_", so that name
        // counts as well.
        if (isGranted(m_displayNames.value(roleId, roleId)) || isGranted(itemTextFor(roleId)))
            continue;
        available->addRow(makeItem(this, roleId, icons));
    }
}

void OrvexUserRights::addWriteUser(QStringList roleIds)
{
    for (const QString &roleId : qAsConst(roleIds)) {
        if (moveNamed(m_ui->m_Users, m_ui->m_bearbUsers, m_displayNames.value(roleId, roleId)))
            emitChanged();
    }
}

QStringList OrvexUserRights::getReadRoles()
{
    return entriesOf(m_ui->m_ansichtUsers, OrvexRoles::readMode());
}

QStringList OrvexUserRights::getWriteRoles()
{
    return entriesOf(m_ui->m_bearbUsers, OrvexRoles::writeMode());
}

QStringList OrvexUserRights::getReadWriteRoles()
{
    return getWriteRoles() + getReadRoles();
}

void OrvexUserRights::resetRoles()
{
    m_ui->m_bearbUsers->clear();
    m_ui->m_ansichtUsers->clear();
    checkUserState();
}

void OrvexUserRights::emitChanged()
{
    checkUserState();
    m_modified = true;
    emit changed();
}

QString OrvexUserRights::getRoleDisplayName(QString roleId)
{
    if (!m_displayNames.contains(roleId))
        m_displayNames.insert(roleId, roleId);
    return m_displayNames.value(roleId);
}

bool OrvexUserRights::isModified() const
{
    return m_modified;
}

// Setting the boxes re-enters allStateChangedAnsicht/allStateChangedBearb,
// which then find the all-users role where it belongs already.
void OrvexUserRights::checkUserState()
{
    const QString allName = allUsersName();
    m_ui->m_showAll->setChecked(!m_ui->m_ansichtUsers->findItems2(allName).isEmpty());
    m_ui->m_writeAll->setChecked(!m_ui->m_bearbUsers->findItems2(allName).isEmpty());
}

void OrvexUserRights::allStateChangedAnsicht(int state)
{
    QRolesListView *available = m_ui->m_Users;
    QRolesListView *view = m_ui->m_ansichtUsers;
    const QString allName = allUsersName();
    if (state == Qt::Checked) {
        available->setUpdatesEnabled(false);
        view->setUpdatesEnabled(false);
        if (!moveNamed(available, view, allName))
            moveNamed(m_ui->m_bearbUsers, view, allName);
        available->setUpdatesEnabled(true);
        view->setUpdatesEnabled(true);
        emitChanged();
    } else if (state == Qt::Unchecked) {
        available->setUpdatesEnabled(false);
        view->setUpdatesEnabled(false);
        const bool moved = moveNamed(view, available, allName);
        available->setUpdatesEnabled(true);
        view->setUpdatesEnabled(true);
        if (moved)
            emitChanged();
    }
}

void OrvexUserRights::allStateChangedBearb(int state)
{
    QRolesListView *available = m_ui->m_Users;
    QRolesListView *edit = m_ui->m_bearbUsers;
    const QString allName = allUsersName();
    if (state == Qt::Checked) {
        available->setUpdatesEnabled(false);
        edit->setUpdatesEnabled(false);
        if (!moveNamed(available, edit, allName))
            moveNamed(m_ui->m_ansichtUsers, edit, allName);
        available->setUpdatesEnabled(true);
        edit->setUpdatesEnabled(true);
        emitChanged();
    } else if (state == Qt::Unchecked) {
        available->setUpdatesEnabled(false);
        edit->setUpdatesEnabled(false);
        const bool moved = moveNamed(edit, available, allName);
        available->setUpdatesEnabled(true);
        edit->setUpdatesEnabled(true);
        if (moved)
            emitChanged();
    }
}

void OrvexUserRights::addUser()
{
    auto *list = qobject_cast<QRolesListView *>(sender());
    if (list && !list->getStrgHold())
        moveUsers(m_ui->m_Users, m_ui->m_bearbUsers);
    else
        moveUsers(m_ui->m_Users, m_ui->m_ansichtUsers);
}

void OrvexUserRights::addUserBearb()
{
    moveUsers(m_ui->m_Users, m_ui->m_bearbUsers);
}

void OrvexUserRights::removeUser()
{
    moveUsers(m_ui->m_ansichtUsers, m_ui->m_Users);
}

void OrvexUserRights::removeUserBearb()
{
    moveUsers(m_ui->m_bearbUsers, m_ui->m_Users);
}

void OrvexUserRights::moveUsers(QRolesListView *from, QRolesListView *to)
{
    const QModelIndexList selected = from->selectionModel()->selectedIndexes();
    from->setUpdatesEnabled(false);
    to->setUpdatesEnabled(false);
    const QList<QList<QStandardItem *>> rows = from->takeRows2(selected);
    for (const QList<QStandardItem *> &row : rows)
        to->addRow2(row);
    from->setUpdatesEnabled(true);
    to->setUpdatesEnabled(true);
    emitChanged();
}

bool OrvexUserRights::moveNamed(QRolesListView *from, QRolesListView *to, const QString &text)
{
    const QList<QStandardItem *> found = from->findItems2(text);
    if (found.isEmpty())
        return false;
    to->addRow2(from->takeRow2(found.first()->index()));
    return true;
}

QStringList OrvexUserRights::entriesOf(QRolesListView *list, const QString &mode)
{
    QStringList entries;
    for (int row = 0; row < list->rowCount(); ++row) {
        // Only role items carry an id that the server knows.
        if (auto *role = dynamic_cast<QRoleStandardItem *>(list->item(row, 0)))
            entries << OrvexRoles::roleEntry(role->roleId(), mode);
    }
    return entries;
}

QString OrvexUserRights::allUsersName() const
{
    return m_displayNames.value(OrvexRoles::allUsersRoleId(), OrvexRoles::allUsersRoleId());
}

QString OrvexUserRights::itemTextFor(const QString &roleId) const
{
    const QString editorId = OrvexRoles::editorRoleId(roleId);
    return m_displayNames.value(editorId, editorId);
}

bool OrvexUserRights::isGranted(const QString &text) const
{
    return !m_ui->m_bearbUsers->findItems2(text).isEmpty()
        || !m_ui->m_ansichtUsers->findItems2(text).isEmpty();
}
