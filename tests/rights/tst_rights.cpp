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
#include <QDrag>
#include <QMimeData>
#include <QPushButton>
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

// Enters, moves and drops on target's viewport while a drag from source runs, so
// that the events name their source the way they do in use. Returns whether the
// hovering drag and the drop were accepted.
QPair<bool, bool> dropDuringDrag(QAbstractItemView *source, QAbstractItemView *target)
{
    auto *drag = new QDrag(source);
    QMimeData *mime = source->model()->mimeData(source->selectionModel()->selectedIndexes());
    drag->setMimeData(mime ? mime : new QMimeData);
    QPair<bool, bool> accepted;
    QTimer::singleShot(0, target, [&] {
        const QPoint at = target->viewport()->rect().center();
        const Qt::DropActions actions = Qt::CopyAction | Qt::MoveAction;
        QDragEnterEvent enter(at, actions, drag->mimeData(), Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(target->viewport(), &enter);
        QDragMoveEvent move(at, actions, drag->mimeData(), Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(target->viewport(), &move);
        QDropEvent drop(at, actions, drag->mimeData(), Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(target->viewport(), &drop);
        accepted = {move.isAccepted(), drop.isAccepted()};
        QDrag::cancel();
    });
    drag->exec(Qt::CopyAction | Qt::MoveAction);
    return accepted;
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
        auto *model = new QStandardItemModel(parent);
        for (const QString &text : items)
            model->appendRow(new QStandardItem(text));
        list = new QListView(parent);
        list->setModel(model);
    }
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
    void init()
    {
        m_rights = new OrvexUserRights;
        m_rights->resize(600, 400);
        m_rights->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_rights));
    }

    void cleanup() { delete m_rights; }

    void drop_data()
    {
        QTest::addColumn<QString>("target");
        QTest::addColumn<QString>("source");
        QTest::addColumn<bool>("accepted");
        QTest::newRow("role list from role list") << "roles" << "roles" << true;
        QTest::newRow("user list from user list") << "users" << "users" << true;
        QTest::newRow("role list from user list") << "roles" << "users" << false;
        QTest::newRow("role list from plain list") << "roles" << "plain" << false;
        QTest::newRow("role list from itself") << "roles" << "self" << false;
    }

    void drop()
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
        // Several rows, not adjacent in the source model: taking them top-down would move the wrong ones.
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
            QCOMPARE(texts(to).count("echo"), 1);
        }
    }

    void roleKinds()
    {
        // The prefix rules are case-sensitive on purpose: "ldap_" is a plain user.
        for (const auto &row : QList<QPair<QString, QString>>{{"kelADMIN", "system"}, {"Kelvin", "normal"},
                 {"LDAP_jdoe", "ldap"}, {"ldap_jdoe", "normal"}, {"r_LDAPstaff", "group"}}) {
            m_rights->setRoles({entry({row.first, "R"})}, {}, false);
            m_rights->setUsers({row.first + "2"}, {});
            const QImage expected = QIcon(QPixmap(":/icons/user_" + row.second + ".svg")).pixmap(16, 16).toImage();
            QVERIFY(!expected.isNull());
            QCOMPARE(view()->item(0)->icon().pixmap(16, 16).toImage(), expected);
            QCOMPARE(available()->item(0)->icon().pixmap(16, 16).toImage(), expected);
        }
    }

    void setRoles_data()
    {
        QTest::addColumn<QStringList>("entries");
        QTest::addColumn<bool>("withPrefix");
        QTest::addColumn<QStringList>("editTexts");
        QTest::addColumn<QStringList>("viewTexts");
        QTest::addColumn<QStringList>("wire");
        QTest::addColumn<QStringList>("availableTexts"); // granted roles are left out by display name
        const QString salesW = entry({"sales", "W"});
        const QStringList everyone{"Alice", "All users", "Bob", "carol", "John Doe", "Sales"};
        QTest::newRow("leading field, edit") << QStringList{entry({"x", "sales", "W"})} << true
                                             << QStringList{"sales"} << QStringList() << QStringList{salesW} << everyone;
        QTest::newRow("directory user, prefix cut") << QStringList{entry({"LDAP_jdoe", "R"}), entry({"LDAP_kim", "W"})}
                                                    << false << QStringList{"kim"} << QStringList{"John Doe"}
                                                    << QStringList{entry({"kim", "W"}), entry({"jdoe", "R"})}
                                                    << QStringList{"Alice", "All users", "Bob", "carol", "Sales"};
        QTest::newRow("unreadable entries skipped")
            << QStringList{"", "x", entry({"x", "alice"}), entry({"x", "", "W"}), entry({"x", " ", "R"}),
                           entry({"x", "LDAP_", "R"}), entry({"x", "bob", "W", "extra"})}
            << true << QStringList{"Bob"} << QStringList() << QStringList{entry({"bob", "W"})}
            << QStringList{"Alice", "All users", "carol", "John Doe", "Sales"};
        QTest::newRow("duplicates placed once, edit wins")
            << QStringList{entry({"bob", "R"}), entry({"bob", "R"}), entry({"alice", "R"}), entry({"alice", "W"}),
                           entry({"carol", "W"}), entry({"carol", "R"})}
            << false << QStringList{"Alice", "carol"} << QStringList{"Bob"}
            << QStringList{entry({"alice", "W"}), entry({"carol", "W"}), entry({"bob", "R"})}
            << QStringList{"All users", "John Doe", "Sales"};
    }

    void setRoles()
    {
        QFETCH(QStringList, entries);
        QFETCH(bool, withPrefix);
        QFETCH(QStringList, editTexts);
        QFETCH(QStringList, viewTexts);
        QFETCH(QStringList, wire);
        QFETCH(QStringList, availableTexts);
        QSignalSpy changed(m_rights, &OrvexUserRights::changed);
        m_rights->setRoles(entries, kNames, withPrefix);
        QCOMPARE(changed.count(), 1);
        // Offered ids may repeat or be empty: each is offered once, the empty ones never.
        m_rights->setUsers(kAllRoles + QStringList{"", "bob", " ", "LDAP_"}, kNames);
        QCOMPARE(texts(edit()), editTexts);
        QCOMPARE(texts(view()), viewTexts);
        QCOMPARE(texts(available()), availableTexts);
        QCOMPARE(m_rights->getReadWriteRoles(), wire);
    }

    void moves_data()
    {
        QTest::addColumn<QString>("mode"); // where the all-users role starts: "" available, "R" view, "W" edit
        QTest::addColumn<bool>("named");   // whether the all-users role has a display name
        QTest::addColumn<QString>("from");
        QTest::addColumn<QString>("action"); // "double", "left", "right", or a button's or box's name
        QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
        QTest::addColumn<QString>("to");
        const Qt::KeyboardModifiers none, ctrl(Qt::ControlModifier);
        const QString av = "m_Users", ed = "m_bearbUsers", vi = "m_ansichtUsers";
        // The double click's asymmetry: Control picks the view list from the available list,
        // and only Control leaves the view list.
        QTest::newRow("available, double click -> edit") << "" << true << av << "double" << none << ed;
        QTest::newRow("available, Ctrl double click -> view") << "" << true << av << "double" << ctrl << vi;
        QTest::newRow("available, Ctrl+Left -> view") << "" << true << av << "left" << ctrl << vi;
        QTest::newRow("available, Ctrl+Shift+Left -> edit") << "" << true << av << "left" << (ctrl | Qt::ShiftModifier) << ed;
        QTest::newRow("available, view button -> view") << "" << true << av << "m_addUser" << none << vi;
        QTest::newRow("edit, double click -> available") << "W" << true << ed << "double" << none << av;
        QTest::newRow("view, Ctrl double click -> available") << "R" << true << vi << "double" << ctrl << av;
        // The all-users boxes exclude each other and follow the lists.
        QTest::newRow("tick visible: available -> view") << "" << true << av << "m_showAll" << none << vi;
        QTest::newRow("tick editable: view -> edit") << "R" << true << vi << "m_writeAll" << none << ed;
        QTest::newRow("untick visible: view -> available") << "R" << true << vi << "m_showAll" << none << av;
        QTest::newRow("no display name: view -> edit") << "R" << false << vi << "m_writeAll" << none << ed;
    }

    void moves()
    {
        QFETCH(QString, mode);
        QFETCH(bool, named);
        QFETCH(QString, from);
        QFETCH(QString, action);
        QFETCH(Qt::KeyboardModifiers, modifiers);
        QFETCH(QString, to);
        QStringList granted{entry({"x", "r_sales", "W"}), entry({"x", "bob", "W"}), entry({"x", "alice", "R"}),
                            entry({"x", "carol", "R"})};
        if (!mode.isEmpty())
            granted << entry({"x", "tavloUSER", mode});
        Names names = kNames;
        if (!named)
            names.remove("tavloUSER");
        fill(granted, names);
        const QString allName = names.value("tavloUSER", "tavloUSER");
        QCOMPARE(box("m_showAll")->isChecked(), mode == "R");
        QCOMPARE(box("m_writeAll")->isChecked(), mode == "W");
        QRolesListView *source = list(qPrintable(from));
        QRolesListView *target = list(qPrintable(to));
        const int total = edit()->rowCount() + view()->rowCount() + available()->rowCount();
        QCheckBox *check = box(qPrintable(action));
        const QStringList moving = check ? QStringList{allName} : texts(source).mid(0, action == "double" ? 1 : 2);
        QSignalSpy changed(m_rights, &OrvexUserRights::changed);
        const QPoint at = source->visualRect(source->model()->index(0, 0)).center();
        if (check) {
            check->click();
        } else if (action == "double") {
            QTest::mouseClick(source->viewport(), Qt::LeftButton, modifiers, at);
            QTest::mousePress(source->viewport(), Qt::LeftButton, modifiers, at);
            QTest::mouseDClick(source->viewport(), Qt::LeftButton, modifiers, at);
        } else {
            select(source, moving);
            source->setStrgHold(false); // a button ignores what the list remembers
            if (action == "left" || action == "right")
                QTest::keyClick(source, action == "left" ? Qt::Key_Left : Qt::Key_Right, modifiers);
            else
                QTest::mouseClick(m_rights->findChild<QToolButton *>(action), Qt::LeftButton);
        }
        for (const QString &text : moving) {
            QVERIFY2(texts(target).contains(text), qPrintable(text));
            QVERIFY2(!texts(source).contains(text), qPrintable(text));
        }
        QCOMPARE(edit()->rowCount() + view()->rowCount() + available()->rowCount(), total);
        QVERIFY(changed.count() >= 1);
        // Setting the boxes re-enters their slots, which must leave the role where it is.
        QCOMPARE(box("m_showAll")->isChecked(), texts(view()).contains(allName));
        QCOMPARE(box("m_writeAll")->isChecked(), texts(edit()).contains(allName));
    }

    void addWriteUserAndReset()
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

    void dialog_data()
    {
        QTest::addColumn<QStringList>("rights"); // the clipboard's rights, leading field included
        QTest::addColumn<QString>("broken");     // an operation answering short records or failing
        QTest::addColumn<QStringList>("roles");  // getRoles()
        QTest::addColumn<QStringList>("availableTexts");
        const QStringList everyone{"Alice", "All users", "Bob", "carol", "jdoe", "Sales"};
        QTest::newRow("no rights") << QStringList() << "" << QStringList() << everyone;
        QTest::newRow("role unknown to getAllRoles")
            << QStringList{entry({"c", "zed", "W"}), entry({"c", "bob", "R"})} << ""
            << QStringList{entry({"zed", "W"}), entry({"bob", "R"})} << QStringList{"Alice", "All users", "carol", "jdoe", "Sales"};
        QTest::newRow("names without separator")
            << QStringList{entry({"c", "alice", "W"})} << "short:getRoleNames" << QStringList{entry({"alice", "W"})}
            << QStringList{"bob", "carol", "jdoe", "r_sales", "tavloUSER"};
        QTest::newRow("no roles from the server") << QStringList{entry({"c", "alice", "W"})} << "fail:getAllRoles"
                                                  << QStringList{entry({"alice", "W"})} << QStringList();
    }

    void dialog()
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
        QCOMPARE(dialog.getRoles(), roles);
        QCOMPARE(dialog.getWriteRoles(), roles.filter(S + QString("W")));
        QCOMPARE(texts(dialog.findChild<QRolesListView *>("m_Users")), availableTexts);
    }

    void dialogAcceptedAfterMoves()
    {
        orvexcbrights empty(QString("none"), nullptr, nullptr); // no client: empty lists, no crash
        QVERIFY(empty.getRoles().isEmpty());

        RecordingClassifyClient client;
        client.setAllRoles(kAllRoles);
        const QString clipboard = client.addClipboard("Projects");
        client.setRawClipboardRoles(clipboard, {entry({clipboard, "bob", "W"})});
        orvexcbrights dialog(clipboard, &client, nullptr);
        ModalAnswerer answer([](QWidget *modal) {
            modal->findChild<QCheckBox *>("m_showAll")->click();
            modal->findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Ok)->click();
        });
        QCOMPARE(dialog.exec(), int(QDialog::Accepted));
        QVERIFY(answer.answered());
        QCOMPARE(dialog.getRoles(), QStringList({entry({"bob", "W"}), entry({"tavloUSER", "R"})}));
    }


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

QTEST_MAIN(tst_Rights)
#include "tst_rights.moc"
