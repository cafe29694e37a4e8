// Clipboards made, renamed, filtered and removed with mouse and keyboard.
#include "e2etest.h"

class tst_E2eClipboards : public E2eTest
{
    Q_OBJECT

    // A tab the filter hides is disabled and takes no room.
    bool tabShown(const QString &title)
    {
        const E2eNode node = tab(title);
        return tree().extents(node).width() > 1 && tree().hasState(node, E2eAccessibility::Enabled);
    }

private slots:
    void initTestCase() { QVERIFY2(startProduct(), qPrintable(lastError())); }
    void cleanup() { E2eTest::cleanup(); }
    void cleanupTestCase() { stopAll(); }

    // Failed before: the "+" button, the tab filter and the board's menu button had no accessible names.
    void createRenameFilterRemove()
    {
        const QString name = QStringLiteral("Ablage Sued");
        const QStringList before = archive().clipboardNames();
        const E2eNode add = waitForNode(QStringLiteral("push button"), QStringLiteral("Add New Clipboard"), 10000);
        QVERIFY2(add.isValid(), "no button named \"Add New Clipboard\"");
        input().click(centreOf(add));
        E2E_VERIFY_SOON(archive().clipboardNames().contains(QStringLiteral("New Clipboard")), 15000);
        QVERIFY(waitFor([&] { return isCurrentTab(QStringLiteral("New Clipboard")); }, 15000));

        // A double click on the tab opens its title for editing; Return keeps the new one.
        input().doubleClick(centreOf(tab(QStringLiteral("New Clipboard"))));
        input().key(QStringLiteral("ctrl+a"));
        input().type(name);
        input().key(QStringLiteral("Return"));
        E2E_VERIFY2_SOON(archive().clipboardNames().contains(name), 15000,
                         qPrintable(archive().clipboardNames().join(", ")));
        QVERIFY(!archive().clipboardNames().contains(QStringLiteral("New Clipboard")));
        E2E_VERIFY_SOON(tab(name).isValid(), 10000);

        // The filter keeps the tabs whose title contains the text, in any case.
        const E2eNode filter = waitForNode(QStringLiteral("text"), QStringLiteral("Filter clipboards"), 10000);
        QVERIFY2(filter.isValid(), "no field named \"Filter clipboards\"");
        input().click(centreOf(filter));
        input().type(QStringLiteral("SUED"));
        E2E_VERIFY_SOON(!tabShown(QStringLiteral("Offene Rechnungen")), 10000);
        QVERIFY(tabShown(name));
        input().key(QStringLiteral("ctrl+a"));
        input().key(QStringLiteral("BackSpace"));
        E2E_VERIFY_SOON(tabShown(QStringLiteral("Offene Rechnungen")), 10000);

        // Removed through the board's menu, confirmed in the question that follows.
        QVERIFY(showTab(name));
        const E2eNode menu = waitForNode(QStringLiteral("push button"), QStringLiteral("Clipboard menu"), 10000,
                                         currentBoard());
        QVERIFY2(menu.isValid(), "no button named \"Clipboard menu\" on the board");
        input().click(centreOf(menu));
        const E2eNode remove = waitForNode(QStringLiteral("menu item"), QStringLiteral("Remove Clipboard"), 10000,
                                           currentBoard());
        QVERIFY2(remove.isValid(), "no menu item \"Remove Clipboard\"");
        input().click(centreOf(remove));
        const E2eNode yes = waitForNode(QStringLiteral("push button"), QStringLiteral("Yes"), 10000);
        QVERIFY2(yes.isValid(), "no question before removing");
        input().click(centreOf(yes));
        E2E_VERIFY_SOON(!archive().clipboardNames().contains(name), 15000);
        E2E_VERIFY_SOON(!tab(name).isValid(), 10000);
        QCOMPARE(archive().clipboardNames(), before);
    }
};

QTEST_MAIN(tst_E2eClipboards)
#include "tst_e2e_clipboards.moc"
