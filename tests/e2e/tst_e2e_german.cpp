// The host as a German user starts it (LANG=de_DE.UTF-8): the archive's
// names, Qt's own buttons and the workbench's empty state speak German, and a
// card's menu at the dock's left edge opens inside the dock.
#include "e2etest.h"

namespace {
const QString kOpen = QStringLiteral("Offene Rechnungen");
} // namespace

class tst_E2eGerman : public E2eTest
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        desktop().setVariable(QStringLiteral("LANG"), QStringLiteral("de_DE.UTF-8"));
        QVERIFY2(startProduct(), qPrintable(lastError()));
    }

    // Failed before: the menu opened leftward from its button and its left part
    // ("okument öffnen") lay outside the dock.
    void cardMenuAtTheLeftEdge()
    {
        QVERIFY(showTab(kOpen));
        const QRect board = tree().extents(currentBoard());
        // The card nearest the dock's left edge, in view.
        qlonglong leftmost = 0;
        int left = INT_MAX;
        for (const E2eArchive::Entry &entry : archive().entries(kOpen)) {
            const E2eNode heading = card(entry.docId);
            if (heading.isValid() && isOnBoard(heading) && tree().extents(heading).left() < left) {
                left = tree().extents(heading).left();
                leftmost = entry.docId;
            }
        }
        QVERIFY2(leftmost, "no card in view");
        QVERIFY2(left - board.left() < 60, "the leftmost card is not at the dock's edge");
        const E2eNode menu = cardPart(leftmost, QStringLiteral("push button"), QStringLiteral("Kartenmenü"));
        QVERIFY2(menu.isValid(), "no button named Kartenmenü on the card");
        input().click(centreOf(menu));
        const E2eNode open = waitForNode(QStringLiteral("menu item"), QStringLiteral("Dokument öffnen"), 10000,
                                         currentBoard());
        QVERIFY2(open.isValid(), "the card's menu did not open");
        // Every entry of the menu lies wholly inside the dock's board.
        for (const QString &item : {QStringLiteral("Dokument öffnen"), QStringLiteral("Karte entfernen"),
                                    QStringLiteral("Klassifizierung anzeigen")}) {
            const E2eNode node = waitForNode(QStringLiteral("menu item"), item, 5000, currentBoard());
            QVERIFY2(node.isValid(), qPrintable(item));
            E2E_VERIFY2_SOON(board.contains(tree().extents(node)), 5000,
                             qPrintable(QStringLiteral("%1 at %2,%3 %4x%5 beyond the board at %6,%7")
                                            .arg(item)
                                            .arg(tree().extents(node).x())
                                            .arg(tree().extents(node).y())
                                            .arg(tree().extents(node).width())
                                            .arg(tree().extents(node).height())
                                            .arg(board.x())
                                            .arg(board.y())));
        }
        input().key(QStringLiteral("Escape"));
    }

    // Failed before: types and statuses of the archive, "All users" and Qt's
    // own buttons stayed English.
    void namesAndButtonsInGerman()
    {
        QVERIFY2(waitForNode(QStringLiteral("cell"), QStringLiteral("Rechnung"), 10000).isValid(),
                 "no document of type Rechnung in the list");
        QVERIFY(waitForNode(QStringLiteral("cell"), QStringLiteral("Freigegeben"), 10000).isValid());

        // The question before a clipboard is removed has Qt's buttons, in German.
        QVERIFY(showTab(kOpen));
        const E2eNode menu = waitForNode(QStringLiteral("push button"), QStringLiteral("Menü der Zwischenablage"),
                                         10000, currentBoard());
        QVERIFY2(menu.isValid(), "no clipboard menu");
        input().click(centreOf(menu));
        const E2eNode remove = waitForNode(QStringLiteral("menu item"), QStringLiteral("Zwischenablage entfernen"),
                                           10000, currentBoard());
        QVERIFY(remove.isValid());
        input().click(centreOf(remove));
        QVERIFY2(waitForNode(QStringLiteral("push button"), QStringLiteral("Ja"), 10000).isValid(),
                 "no button Ja in the question");
        const E2eNode no = waitForNode(QStringLiteral("push button"), QStringLiteral("Nein"), 10000);
        QVERIFY2(no.isValid(), "no button Nein in the question");
        input().click(centreOf(no));
        E2E_VERIFY_SOON(tab(kOpen).isValid(), 10000);
        QVERIFY(archive().clipboardNames().contains(kOpen));
    }

    // Failed before: a filter that matched no clipboard left the board of a hidden tab in view.
    void filterMatchingNothing()
    {
        const QRect board = tree().extents(currentBoard());
        const E2eNode filter = waitForNode(QStringLiteral("text"), QStringLiteral("Zwischenablagen filtern"), 10000);
        QVERIFY2(filter.isValid(), "no clipboard filter");
        input().click(centreOf(filter));
        input().type(QStringLiteral("zzz"));
        const E2eNode empty = waitForNode(QStringLiteral("label"), QStringLiteral("Keine Zwischenablage passt"), 10000);
        QVERIFY2(empty.isValid(), "no empty state");
        // In the board's place, covering it.
        QVERIFY(tree().extents(empty).adjusted(-2, -2, 2, 2).contains(board));
        input().key(QStringLiteral("ctrl+a"));
        input().key(QStringLiteral("BackSpace"));
        E2E_VERIFY_SOON(!tree().hasState(empty, E2eAccessibility::Showing) || tree().extents(empty).isEmpty(), 10000);
    }
};

QTEST_MAIN(tst_E2eGerman)
#include "tst_e2e_german.moc"
