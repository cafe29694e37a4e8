// The role lists, the rights editor and the permissions dialog, driven as a
// user drives them: real drops during a running drag, keys, double clicks,
// buttons and check boxes.
#include "modalanswerer.h"
#include "orvexcbrights.h"
#include "orvexroles.h"
#include "orvexuserrights.h"
#include "qroleslistview.h"
#include "qrolestandarditem.h"
#include "quserlistview.h"
#include "recordingclassifyclient.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QGroupBox>
#include <QLayout>
#include <QPushButton>
#include <QDrag>
#include <QLabel>
#include <QMimeData>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QToolButton>
#include <QtTest>

using Names = QMap<QString, QString>;
Q_DECLARE_METATYPE(Names)

namespace {
const QChar S(0xFEFF);
const Names kNames{{"tavloUSER", "All users"}, {"r_sales", "Sales"}, {"alice", "Alice"},
                   {"bob", "Bob"}, {"jdoe", "John Doe"}};
const QStringList kAllRoles{"tavloUSER", "r_sales", "alice", "bob", "LDAP_jdoe", "carol"};

QString entry(const QStringList &fields) { return fields.join(S); }

QStringList texts(QAbstractItemView *list)
{
    QStringList result;
    for (int row = 0; row < list->model()->rowCount(); ++row)
        result << list->model()->index(row, 0).data().toString();
    return result;
}

void select(QAbstractItemView *list, const QStringList &wanted)
{
    list->clearSelection();
    for (int row = 0; row < list->model()->rowCount(); ++row) {
        const QModelIndex index = list->model()->index(row, 0);
        if (wanted.contains(index.data().toString()))
            list->selectionModel()->select(index, QItemSelectionModel::Select);
    }
}

// Enters, moves and drops on target while a drag from source runs, so that the
// events name their source the way they do in use. The drop must reach the
// target's viewport; returns whether the hovering drag and the drop were accepted.
QPair<bool, bool> dropDuringDrag(QAbstractItemView *source, QAbstractItemView *target)
{
    struct DropSeen : QObject
    {
        bool seen = false;
        bool eventFilter(QObject *, QEvent *event) override
        {
            seen = seen || event->type() == QEvent::Drop;
            return false;
        }
    } dropSeen;
    target->viewport()->installEventFilter(&dropSeen);
    auto *drag = new QDrag(source);
    QMimeData *mime = source->model()->mimeData(source->selectionModel()->selectedIndexes());
    drag->setMimeData(mime ? mime : new QMimeData);
    bool moveAccepted = false, accepted = false;
    QTimer::singleShot(0, target, [&] {
        const QPoint at = target->viewport()->rect().center();
        const Qt::DropActions actions = Qt::CopyAction | Qt::MoveAction;
        QDragEnterEvent enter(at, actions, drag->mimeData(), Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(target->viewport(), &enter);
        QDragMoveEvent move(at, actions, drag->mimeData(), Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(target->viewport(), &move);
        moveAccepted = move.isAccepted();
        QDropEvent drop(at, actions, drag->mimeData(), Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(target->viewport(), &drop);
        accepted = drop.isAccepted();
        QDrag::cancel();
    });
    drag->exec(Qt::CopyAction | Qt::MoveAction);
    target->viewport()->removeEventFilter(&dropSeen);
    if (!dropSeen.seen)
        qWarning("the drop did not reach the target");
    return {moveAccepted, dropSeen.seen && accepted};
}

QAbstractItemView *makeList(const QString &kind, const QStringList &items, QWidget *parent)
{
    QAbstractItemView *list = nullptr;
    if (kind == "roles") {
        auto *roles = new QRolesListView(parent);
        for (const QString &text : items)
            roles->addRow(new QRoleStandardItem(QIcon(), text, text));
        list = roles;
    } else if (kind == "users") {
        auto *users = new QUserListView(parent);
        for (const QString &text : items)
            users->addRow(new QStandardItem(text));
        list = users;
    } else {
        list = new QListView(parent);
        auto *model = new QStandardItemModel(list);
        for (const QString &text : items)
            model->appendRow(new QStandardItem(text));
        list->setModel(model);
    }
    list->setDragEnabled(true);
    list->setDragDropOverwriteMode(true);
    list->setDragDropMode(QAbstractItemView::DragDrop);
    list->setSelectionMode(QAbstractItemView::ExtendedSelection);
    return list;
}
} // namespace

class tst_Rights : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); }
    void init();
    void cleanup() { delete m_rights; }

    void takeRowsBottomUp();
    void cloneCopiesIconIdTextAndUserData();
    void drop_data();
    void drop();
    void strgHold_data();
    void strgHold();

    void form();
    void roleKinds_data();
    void roleKinds();
    void setRoles_data();
    void setRoles();
    void availableLeavesOutGranted_data();
    void availableLeavesOutGranted();
    void gestures_data();
    void gestures();
    void allUsersBoxes_data();
    void allUsersBoxes();
    void addWriteUserAndReset();

    void dialog_data();
    void dialog();
    void dialogAcceptedAfterMoves();

private:
    QRolesListView *list(const char *name) const { return m_rights->findChild<QRolesListView *>(name); }
    QRolesListView *edit() const { return list("m_bearbUsers"); }
    QRolesListView *view() const { return list("m_ansichtUsers"); }
    QRolesListView *available() const { return list("m_Users"); }
    QCheckBox *box(const char *name) const { return m_rights->findChild<QCheckBox *>(name); }
    void fill(const QStringList &granted, const Names &names = kNames)
    {
        m_rights->setRoles(granted, names, true);
        m_rights->setUsers(kAllRoles, names);
    }

    OrvexUserRights *m_rights = nullptr;
};

void tst_Rights::init()
{
    m_rights = new OrvexUserRights;
    m_rights->resize(600, 400);
    m_rights->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_rights));
}

void tst_Rights::takeRowsBottomUp()
{
    QRolesListView list;
    for (const char *text : {"delta", "alpha", "charlie", "bravo"}) // source rows 0..3
        list.addRow(new QRoleStandardItem(QIcon(), text, text));
    QCOMPARE(texts(&list), QStringList({"alpha", "bravo", "charlie", "delta"}));
    QStandardItemModel foreign;
    foreign.appendRow(new QStandardItem("foreign"));
    const QModelIndex alpha = list.model()->index(0, 0);
    // Proxy indexes in any order, one twice, plus an index of another model.
    const auto taken = list.takeRows2({list.model()->index(3, 0), alpha, list.model()->index(2, 0),
                                       alpha, foreign.index(0, 0)});
    QStringList takenTexts;
    for (const auto &row : taken)
        takenTexts << row.value(0)->text();
    QCOMPARE(takenTexts, QStringList({"charlie", "alpha", "delta"})); // source rows 2, 1, 0
    QCOMPARE(texts(&list), QStringList{"bravo"});
    QCOMPARE(foreign.rowCount(), 1);
    for (const auto &row : taken)
        qDeleteAll(row);
}

void tst_Rights::cloneCopiesIconIdTextAndUserData()
{
    QRoleStandardItem item(QIcon(":/icons/user_ldap.svg"), "jdoe", "John Doe");
    item.setData("one", Qt::UserRole + 1);
    item.setData("LDAP_jdoe", Qt::UserRole);
    std::unique_ptr<QRoleStandardItem> copy(item.clone());
    QCOMPARE(copy->roleId(), QString("jdoe"));
    QCOMPARE(copy->text(), QString("John Doe"));
    QCOMPARE(copy->icon().cacheKey(), item.icon().cacheKey());
    QCOMPARE(copy->data(Qt::UserRole + 1).toString(), QString("one"));
    QVERIFY(!copy->data(Qt::UserRole).isValid());
}

void tst_Rights::drop_data()
{
    QTest::addColumn<QString>("target");
    QTest::addColumn<QString>("source");
    QTest::addColumn<bool>("accepted");
    QTest::newRow("role list from role list") << "roles" << "roles" << true;
    QTest::newRow("user list from user list") << "users" << "users" << true;
    QTest::newRow("role list from user list") << "roles" << "users" << false;
    QTest::newRow("user list from role list") << "users" << "roles" << false;
    QTest::newRow("role list from plain list") << "roles" << "plain" << false;
    QTest::newRow("role list from itself") << "roles" << "self" << false;
    QTest::newRow("user list from itself") << "users" << "self" << false;
}

void tst_Rights::drop()
{
    QFETCH(QString, target);
    QFETCH(QString, source);
    QFETCH(bool, accepted);
    QWidget window;
    auto *to = makeList(target, {"echo"}, &window);
    auto *from = source == "self" ? to : makeList(source, {"delta", "alpha", "charlie", "bravo"}, &window);
    to->move(300, 0);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    select(from, {"delta", "alpha", "charlie", "echo"});
    const QStringList before = texts(from);
    QSignalSpy changed(to, SIGNAL(changed()));

    QCOMPARE(dropDuringDrag(from, to), qMakePair(accepted, accepted));
    QCOMPARE(changed.count(), accepted ? 1 : 0);
    if (accepted) {
        QCOMPARE(texts(to), QStringList({"alpha", "charlie", "delta", "echo"}));
        QCOMPARE(texts(from), QStringList{"bravo"});
    } else {
        QCOMPARE(texts(from), before);
        if (from != to)
            QCOMPARE(texts(to), QStringList{"echo"});
    }
}

void tst_Rights::strgHold_data()
{
    QTest::addColumn<int>("key"); // 0: a double click
    QTest::addColumn<int>("modifiers");
    QTest::addColumn<bool>("changeCurrent");
    QTest::addColumn<bool>("strgHold");
    const int ctrl = Qt::ControlModifier, ctrlShift = Qt::ControlModifier | Qt::ShiftModifier;
    QTest::newRow("Right") << int(Qt::Key_Right) << 0 << true << false;
    QTest::newRow("Ctrl+Left") << int(Qt::Key_Left) << ctrl << true << true;
    QTest::newRow("Ctrl+Shift+Right") << int(Qt::Key_Right) << ctrlShift << true << false;
    QTest::newRow("Ctrl+Down") << int(Qt::Key_Down) << ctrl << false << true;
    QTest::newRow("Down") << int(Qt::Key_Down) << 0 << false << false;
    QTest::newRow("double click") << 0 << 0 << false << false;
    QTest::newRow("Ctrl double click") << 0 << ctrl << false << true;
    QTest::newRow("Ctrl+Shift double click") << 0 << ctrlShift << false << false;
}

void tst_Rights::strgHold()
{
    QFETCH(int, key);
    QFETCH(int, modifiers);
    QFETCH(bool, changeCurrent);
    QFETCH(bool, strgHold);
    QUserListView list;
    for (const char *text : {"a", "b", "c"})
        list.addRow(new QStandardItem(text));
    list.show();
    QVERIFY(QTest::qWaitForWindowExposed(&list));
    list.setCurrentIndex(list.model()->index(0, 0));
    list.setStrgHold(!strgHold);
    QSignalSpy changeCurrentSpy(&list, &QUserListView::changeCurrent);
    QSignalSpy doubleClicked(&list, &QUserListView::doubleClicked);
    const auto mods = Qt::KeyboardModifiers(modifiers);
    if (key) {
        QTest::keyClick(&list, Qt::Key(key), mods);
        QCOMPARE(list.currentIndex().row() == 0, changeCurrent); // sideways arrows never move it
    } else {
        const QPoint at = list.visualRect(list.model()->index(0, 0)).center();
        QTest::mousePress(list.viewport(), Qt::LeftButton, mods, at);
        QTest::mouseDClick(list.viewport(), Qt::LeftButton, mods, at);
        QCOMPARE(doubleClicked.count(), 1);
    }
    QCOMPARE(changeCurrentSpy.count(), changeCurrent ? 1 : 0);
    QCOMPARE(list.getStrgHold(), strgHold);
}

void tst_Rights::form()
{
    QVERIFY(m_rights->findChild<QGroupBox *>("m_groupUserRights"));
    for (const char *layout : {"verticalLayout", "verticalLayout_5", "horizontalLayout_2", "horizontalLayout_5"})
        QVERIFY2(m_rights->findChild<QLayout *>(layout), layout);
    for (QRolesListView *list : {edit(), view(), available()})
        QVERIFY(list && list->dragEnabled() && list->dragDropMode() == QAbstractItemView::DragDrop);
    const auto image = [](const QIcon &icon) { return icon.pixmap(16, 16).toImage(); };
    const QImage previous = image(QIcon(":/icons/resultset_previous.png"));
    const QImage next = image(QIcon(":/icons/resultset_next.png"));
    QVERIFY(!previous.isNull() && previous != next);
    // The arrows point from the available list towards the granted lists and back.
    for (const char *add : {"m_addUser", "m_addUserBearb"})
        QCOMPARE(image(m_rights->findChild<QToolButton *>(add)->icon()), previous);
    for (const char *remove : {"m_removeUser", "m_removeUserBearb"})
        QCOMPARE(image(m_rights->findChild<QToolButton *>(remove)->icon()), next);
    m_rights->setLabels("A", "E", "V");
    QStringList labels;
    for (const char *label : {"m_availableRolesLabel", "m_editRolesLabel", "m_viewRolesLabel"})
        labels << m_rights->findChild<QLabel *>(label)->text();
    QCOMPARE(labels, QStringList({"A", "E", "V"}));
}

void tst_Rights::roleKinds_data()
{
    QTest::addColumn<QString>("roleId");
    QTest::addColumn<QString>("icon");
    const QString system = ":/icons/user_system.svg", group = ":/icons/user_group.svg";
    const QString ldap = ":/icons/user_ldap.svg", user = ":/icons/user_normal.svg";
    for (const auto &row : QList<QPair<QString, QString>>{
             {"tavloUSER", system}, {"kelADMIN", system}, {"Kelvin", user}, {"LDAP_jdoe", ldap},
             {"ldap_jdoe", user}, {"r_LDAPstaff", group}, {"r_sales", group}, {"alice", user}})
        QTest::newRow(qPrintable(row.first)) << row.first << row.second;
}

void tst_Rights::roleKinds()
{
    QFETCH(QString, roleId);
    QFETCH(QString, icon);
    QCOMPARE(OrvexRoles::iconPath(OrvexRoles::roleKind(roleId)), icon);
    m_rights->setRoles({entry({roleId, "R"})}, {}, false);
    m_rights->setUsers({roleId + "2"}, {});
    const QImage expected = QIcon(QPixmap(icon)).pixmap(16, 16).toImage();
    QVERIFY(!expected.isNull());
    QCOMPARE(view()->item(0)->icon().pixmap(16, 16).toImage(), expected);
    QCOMPARE(available()->item(0)->icon().pixmap(16, 16).toImage(), expected);
}

void tst_Rights::setRoles_data()
{
    QTest::addColumn<QStringList>("entries");
    QTest::addColumn<bool>("withPrefix");
    QTest::addColumn<QStringList>("editTexts");
    QTest::addColumn<QStringList>("viewTexts");
    QTest::addColumn<QStringList>("wire");
    const QString salesW = entry({"sales", "W"}), salesR = entry({"sales", "R"});
    QTest::newRow("leading field, edit") << QStringList{entry({"x", "sales", "W"})} << true
                                         << QStringList{"sales"} << QStringList() << QStringList{salesW};
    QTest::newRow("no leading field, view") << QStringList{salesR} << false << QStringList() << QStringList{"sales"}
                                            << QStringList{salesR};
    QTest::newRow("other mode is view") << QStringList{entry({"sales", "X"})} << false << QStringList()
                                        << QStringList{"sales"} << QStringList{salesR};
    QTest::newRow("edit entries first") << QStringList{entry({"bob", "R"}), entry({"r_sales", "W"})} << false
                                        << QStringList{"Sales"} << QStringList{"Bob"}
                                        << QStringList{entry({"r_sales", "W"}), entry({"bob", "R"})};
    QTest::newRow("directory user, prefix cut") << QStringList{entry({"LDAP_jdoe", "R"}), entry({"LDAP_kim", "W"})}
                                                << false << QStringList{"kim"} << QStringList{"John Doe"}
                                                << QStringList{entry({"kim", "W"}), entry({"jdoe", "R"})};
    QTest::newRow("unreadable entries skipped")
        << QStringList{"", "x", entry({"x", "alice"}), entry({"x", "", "W"}), entry({"x", " ", "R"}),
                       entry({"x", "LDAP_", "R"}), entry({"x", "bob", "W", "extra"})}
        << true << QStringList{"Bob"} << QStringList() << QStringList{entry({"bob", "W"})};
    QTest::newRow("duplicates placed once, edit wins")
        << QStringList{entry({"bob", "R"}), entry({"bob", "R"}), entry({"alice", "R"}), entry({"alice", "W"}),
                       entry({"carol", "W"}), entry({"carol", "R"})}
        << false << QStringList{"Alice", "carol"} << QStringList{"Bob"}
        << QStringList{entry({"alice", "W"}), entry({"carol", "W"}), entry({"bob", "R"})};
}

void tst_Rights::setRoles()
{
    QFETCH(QStringList, entries);
    QFETCH(bool, withPrefix);
    QFETCH(QStringList, editTexts);
    QFETCH(QStringList, viewTexts);
    QFETCH(QStringList, wire);
    QSignalSpy changed(m_rights, &OrvexUserRights::changed);
    QVERIFY(!m_rights->isModified());
    m_rights->setRoles(entries, kNames, withPrefix);
    QCOMPARE(texts(edit()), editTexts);
    QCOMPARE(texts(view()), viewTexts);
    QCOMPARE(m_rights->getReadWriteRoles(), wire);
    QCOMPARE(changed.count(), 1);
    QVERIFY(m_rights->isModified());
    // Ids without a display name are shown by the id, which becomes their name.
    for (QRolesListView *list : {edit(), view()}) {
        for (int row = 0; row < list->rowCount(); ++row) {
            auto *item = dynamic_cast<QRoleStandardItem *>(list->item(row));
            QVERIFY(item);
            QCOMPARE(m_rights->getRoleDisplayName(item->roleId()), item->text());
            QCOMPARE(item->flags(), Qt::ItemIsSelectable | Qt::ItemIsDragEnabled | Qt::ItemIsEnabled);
            QVERIFY(item->data(Qt::UserRole).toString().endsWith(item->roleId()));
            QCOMPARE(item->data(Qt::UserRole + 2), item->data(Qt::UserRole));
            QCOMPARE(item->data(Qt::UserRole + 3).toString(), QString(list == edit() ? "W" : "R"));
        }
    }
}

void tst_Rights::availableLeavesOutGranted_data()
{
    QTest::addColumn<QStringList>("granted");
    QTest::addColumn<QStringList>("users");
    QTest::addColumn<QStringList>("availableTexts");
    QTest::newRow("nothing granted") << QStringList() << kAllRoles
                                     << QStringList{"Alice", "All users", "Bob", "carol", "John Doe", "Sales"};
    QTest::newRow("granted left out by name") << QStringList{entry({"x", "alice", "W"}), entry({"x", "carol", "R"})}
                                              << kAllRoles << QStringList{"All users", "Bob", "John Doe", "Sales"};
    QTest::newRow("granted directory user left out")
        << QStringList{entry({"x", "LDAP_jdoe", "R"})} << kAllRoles
        << QStringList{"Alice", "All users", "Bob", "carol", "Sales"};
    QTest::newRow("duplicate and empty ids") << QStringList() << QStringList{"bob", "", "bob", " ", "LDAP_"}
                                             << QStringList{"Bob"};
}

void tst_Rights::availableLeavesOutGranted()
{
    QFETCH(QStringList, granted);
    QFETCH(QStringList, users);
    QFETCH(QStringList, availableTexts);
    m_rights->setRoles(granted, kNames, true);
    m_rights->setUsers(users, kNames);
    QCOMPARE(texts(available()), availableTexts);
    for (int row = 0; row < available()->rowCount(); ++row)
        QVERIFY(!available()->item(row)->data(Qt::UserRole).isValid());
}

void tst_Rights::gestures_data()
{
    QTest::addColumn<QString>("from");
    QTest::addColumn<QString>("gesture");
    QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
    QTest::addColumn<QString>("to");
    const Qt::KeyboardModifiers none, ctrl(Qt::ControlModifier);
    const QString av = "m_Users", ed = "m_bearbUsers", vi = "m_ansichtUsers";
    QTest::newRow("available, double click -> edit") << av << "double" << none << ed;
    QTest::newRow("available, Ctrl double click -> view") << av << "double" << ctrl << vi;
    QTest::newRow("available, Right -> edit") << av << "right" << none << ed;
    QTest::newRow("available, Ctrl+Left -> view") << av << "left" << ctrl << vi;
    QTest::newRow("available, view button -> view") << av << "m_addUser" << none << vi;
    QTest::newRow("available, edit button -> edit") << av << "m_addUserBearb" << none << ed;
    QTest::newRow("edit, double click -> available") << ed << "double" << none << av;
    QTest::newRow("edit, Ctrl+Right -> available") << ed << "right" << ctrl << av;
    QTest::newRow("edit, button -> available") << ed << "m_removeUserBearb" << none << av;
    QTest::newRow("view, Ctrl double click -> available") << vi << "double" << ctrl << av;
    QTest::newRow("view, Left -> available") << vi << "left" << none << av;
    QTest::newRow("view, button -> available") << vi << "m_removeUser" << none << av;
}

void tst_Rights::gestures()
{
    QFETCH(QString, gesture);
    QFETCH(Qt::KeyboardModifiers, modifiers);
    QFETCH(QString, from);
    QFETCH(QString, to);
    fill({entry({"x", "r_sales", "W"}), entry({"x", "bob", "W"}), entry({"x", "alice", "R"}), entry({"x", "carol", "R"})});
    QRolesListView *source = list(qPrintable(from));
    QRolesListView *target = list(qPrintable(to));
    const int total = edit()->rowCount() + view()->rowCount() + available()->rowCount();
    const QStringList moving = texts(source).mid(0, gesture == "double" ? 1 : 2);
    QSignalSpy changed(m_rights, &OrvexUserRights::changed);
    const QPoint at = source->visualRect(source->model()->index(0, 0)).center();
    if (gesture == "double") {
        QTest::mouseClick(source->viewport(), Qt::LeftButton, modifiers, at);
        QTest::mousePress(source->viewport(), Qt::LeftButton, modifiers, at);
        QTest::mouseDClick(source->viewport(), Qt::LeftButton, modifiers, at);
    } else {
        select(source, moving);
        source->setStrgHold(false); // a button ignores what the list remembers
        if (gesture == "left" || gesture == "right")
            QTest::keyClick(source, gesture == "left" ? Qt::Key_Left : Qt::Key_Right, modifiers);
        else
            QTest::mouseClick(m_rights->findChild<QToolButton *>(gesture), Qt::LeftButton);
    }
    for (const QString &text : moving) {
        QVERIFY2(texts(target).contains(text), qPrintable(text));
        QVERIFY2(!texts(source).contains(text), qPrintable(text));
    }
    QCOMPARE(edit()->rowCount() + view()->rowCount() + available()->rowCount(), total);
    QVERIFY(changed.count() >= 1);
}

void tst_Rights::allUsersBoxes_data()
{
    QTest::addColumn<Names>("names");
    QTest::addColumn<QString>("mode"); // where the all-users role starts: "", "R" or "W"
    QTest::addColumn<QString>("action");
    QTest::addColumn<QString>("ends");  // where it ends: "available", "view", "edit"
    const Names unnamed{{"bob", "Bob"}};
    QTest::newRow("tick visible: available -> view") << kNames << "" << "m_showAll" << "view";
    QTest::newRow("tick editable: available -> edit") << kNames << "" << "m_writeAll" << "edit";
    QTest::newRow("tick editable: view -> edit") << kNames << "R" << "m_writeAll" << "edit";
    QTest::newRow("tick visible: edit -> view") << kNames << "W" << "m_showAll" << "view";
    QTest::newRow("untick visible: view -> available") << kNames << "R" << "m_showAll" << "available";
    QTest::newRow("untick editable: edit -> available") << kNames << "W" << "m_writeAll" << "available";
    QTest::newRow("no display name: view -> edit") << unnamed << "R" << "m_writeAll" << "edit";
    QTest::newRow("button: available -> view") << kNames << "" << "m_addUser" << "view";
    QTest::newRow("button: edit -> available") << kNames << "W" << "m_removeUserBearb" << "available";
}

void tst_Rights::allUsersBoxes()
{
    QFETCH(Names, names);
    QFETCH(QString, mode);
    QFETCH(QString, action);
    QFETCH(QString, ends);
    fill(mode.isEmpty() ? QStringList{entry({"x", "bob", "W"})}
                        : QStringList{entry({"x", "bob", "W"}), entry({"x", "tavloUSER", mode})},
         names);
    const QString allName = names.value("tavloUSER", "tavloUSER");
    QCOMPARE(box("m_showAll")->isChecked(), mode == "R");
    QCOMPARE(box("m_writeAll")->isChecked(), mode == "W");
    if (auto *check = box(qPrintable(action))) {
        check->click();
    } else {
        QRolesListView *from = mode.isEmpty() ? available() : mode == "R" ? view() : edit();
        select(from, {allName});
        m_rights->findChild<QToolButton *>(action)->click();
    }
    // The boxes follow the lists; setting them re-enters the slots, which
    // must leave the role where it is.
    QCOMPARE(texts(available()).contains(allName), ends == "available");
    QCOMPARE(texts(view()).contains(allName), ends == "view");
    QCOMPARE(texts(edit()).contains(allName), ends == "edit");
    QCOMPARE(box("m_showAll")->isChecked(), ends == "view");
    QCOMPARE(box("m_writeAll")->isChecked(), ends == "edit");
    QCOMPARE(texts(edit()).contains("Bob"), true);
}

void tst_Rights::addWriteUserAndReset()
{
    m_rights->setUsers({"alice"}, kNames);
    box("m_showAll")->click(); // without the all-users role the box cannot stay ticked
    QVERIFY(!box("m_showAll")->isChecked());
    fill({});
    QSignalSpy changed(m_rights, &OrvexUserRights::changed);
    m_rights->addWriteUser({"alice", "carol", "nobody", "tavloUSER"});
    QCOMPARE(changed.count(), 4); // moving the all-users role re-enters through the ticked box
    QCOMPARE(texts(edit()), QStringList({"Alice", "All users", "carol"}));
    QVERIFY(box("m_writeAll")->isChecked());
    m_rights->resetRoles();
    QVERIFY(texts(edit()).isEmpty() && !box("m_writeAll")->isChecked());
    QVERIFY(m_rights->getReadWriteRoles().isEmpty());
}

void tst_Rights::dialog_data()
{
    QTest::addColumn<QStringList>("rights"); // the clipboard's rights, leading field included
    QTest::addColumn<QString>("broken");     // an operation answering short records or failing
    QTest::addColumn<QStringList>("roles");  // getRoles()
    QTest::addColumn<QStringList>("availableTexts");
    const QStringList everyone{"Alice", "All users", "Bob", "carol", "jdoe", "Sales"};
    QTest::newRow("no rights") << QStringList() << "" << QStringList() << everyone;
    QTest::newRow("rights") << QStringList{entry({"c", "alice", "R"}), entry({"c", "r_sales", "W"})} << ""
                            << QStringList{entry({"r_sales", "W"}), entry({"alice", "R"})}
                            << QStringList{"All users", "Bob", "carol", "jdoe"};
    QTest::newRow("role unknown to getAllRoles")
        << QStringList{entry({"c", "zed", "W"}), entry({"c", "bob", "R"})} << ""
        << QStringList{entry({"zed", "W"}), entry({"bob", "R"})} << QStringList{"Alice", "All users", "carol", "jdoe", "Sales"};
    QTest::newRow("bad entries skipped")
        << QStringList{"c", entry({"c", "", "W"}), entry({"c", "bob"}), entry({"c", "bob", "R"}), entry({"c", "bob", "R"})}
        << "" << QStringList{entry({"bob", "R"})} << QStringList{"Alice", "All users", "carol", "jdoe", "Sales"};
    QTest::newRow("names without separator")
        << QStringList{entry({"c", "alice", "W"})} << "short:getRoleNames" << QStringList{entry({"alice", "W"})}
        << QStringList{"bob", "carol", "jdoe", "r_sales", "tavloUSER"};
    QTest::newRow("rights without fields") << QStringList{entry({"c", "alice", "W"})} << "short:getClipboardRoles"
                                           << QStringList() << everyone;
    QTest::newRow("no roles from the server") << QStringList{entry({"c", "alice", "W"})} << "fail:getAllRoles"
                                              << QStringList{entry({"alice", "W"})} << QStringList();
}

void tst_Rights::dialog()
{
    QFETCH(QString, broken);
    QFETCH(QStringList, rights);
    QFETCH(QStringList, roles);
    QFETCH(QStringList, availableTexts);
    RecordingClassifyClient client;
    client.setAllRoles(kAllRoles);
    for (auto it = kNames.begin(); it != kNames.end(); ++it)
        client.setRoleName(it.key(), it.value());
    const QString clipboard = client.addClipboard("Projects");
    client.setRawClipboardRoles(clipboard, rights);
    if (broken.startsWith("short:"))
        client.log().setShortRecords(broken.mid(6));
    else if (broken.startsWith("fail:"))
        client.log().setFailing(broken.mid(5));

    orvexcbrights dialog(clipboard, &client, nullptr);
    QCOMPARE(dialog.windowTitle(), QString("Clipboard Permissions"));
    QVERIFY(dialog.isModal());
    QCOMPARE(client.log().names(), QStringList({"getAllRoles", "getRoleNames", "getClipboardRoles"}));
    QCOMPARE(client.log().last("getRoleNames").args.value(0).toStringList(), client.getAllRoles());
    QCOMPARE(client.log().last("getClipboardRoles").args, QVariantList{clipboard});
    QCOMPARE(dialog.getRoles(), roles);
    QCOMPARE(dialog.getWriteRoles(), roles.filter(S + QString("W")));
    QCOMPARE(texts(dialog.findChild<QRolesListView *>("m_Users")), availableTexts);
}

void tst_Rights::dialogAcceptedAfterMoves()
{
    orvexcbrights empty(QString("none"), nullptr, nullptr); // no client: empty lists, no crash
    QVERIFY(empty.getRoles().isEmpty());

    RecordingClassifyClient client;
    client.setAllRoles(kAllRoles);
    const QString clipboard = client.addClipboard("Projects");
    client.setRawClipboardRoles(clipboard, {entry({clipboard, "bob", "W"})});
    orvexcbrights dialog(clipboard, &client, nullptr);
    ModalAnswerer answer([](QWidget *modal) {
        auto *rights = modal->findChild<OrvexUserRights *>("m_rightsWidget");
        rights->findChild<QCheckBox *>("m_showAll")->click();
        modal->findChild<QDialogButtonBox *>("buttonBox")->button(QDialogButtonBox::Ok)->click();
    });
    QCOMPARE(dialog.exec(), int(QDialog::Accepted));
    QVERIFY(answer.answered());
    QCOMPARE(dialog.getRoles(), QStringList({entry({"bob", "W"}), entry({"tavloUSER", "R"})}));
}

QTEST_MAIN(tst_Rights)
#include "tst_rights.moc"
