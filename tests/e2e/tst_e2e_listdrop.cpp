// Documents dragged with the mouse from the host's list onto clipboards: onto
// a board, onto a board that refuses them, and onto the chooser strip.
#include "e2etest.h"

namespace {
const QString kOpen = QStringLiteral("Offene Rechnungen");      // writeable, current at start
const QString kReadOnly = QStringLiteral("Projekt Nordlicht");  // the user may only view it
const QString kSecond = QStringLiteral("Zweite Ablage");        // writeable, made for the chooser
const QString kFull = QStringLiteral("Volle Ablage");           // writeable, 200 cards
const QString kAlmost = QStringLiteral("Fast voll");            // writeable, 198 cards
} // namespace

class tst_E2eListDrop : public E2eTest
{
    Q_OBJECT

    // Readable documents not yet on the clipboard whose rows are in view.
    QList<qlonglong> rowsNotIn(const QString &clipboard, int count)
    {
        QList<qlonglong> ids;
        for (const E2eArchive::Document &document : archive().documentsNotIn(clipboard)) {
            if (ids.size() < count && documentCell(document.id).isValid())
                ids << document.id;
        }
        return ids;
    }

    bool hasDocuments(const QString &clipboard, const QList<qlonglong> &ids)
    {
        QSet<qlonglong> present;
        for (const E2eArchive::Entry &entry : archive().entries(clipboard))
            present.insert(entry.docId);
        for (qlonglong id : ids)
            if (!present.contains(id))
                return false;
        return true;
    }

private slots:
    void initTestCase()
    {
        QVERIFY2(startProduct([](E2eArchive &archive) {
                     return !archive.createClipboard(kSecond).isEmpty() && !archive.createClipboard(kFull).isEmpty()
                         && archive.fill(kFull, 200) && !archive.createClipboard(kAlmost).isEmpty()
                         && archive.fill(kAlmost, 198);
                 }),
                 qPrintable(lastError()));
    }

    // Failed before: the rows were not drag-enabled, so pressing one and moving only extended the selection.
    void dropRowsOntoABoard_data()
    {
        QTest::addColumn<int>("rows");
        QTest::newRow("one row") << 1;
        QTest::newRow("three rows picked with Ctrl") << 3;
    }
    void dropRowsOntoABoard()
    {
        QFETCH(int, rows);
        QVERIFY(showTab(kOpen));
        const QList<qlonglong> ids = rowsNotIn(kOpen, rows);
        QCOMPARE(ids.size(), rows);
        const int before = archive().entries(kOpen).size();
        selectRows(ids);
        input().drag(rowPoint(ids.last()), boardDropPoint());

        E2E_VERIFY_SOON(archive().entries(kOpen).size() == before + rows, 30000);
        QVERIFY(hasDocuments(kOpen, ids));
        for (qlonglong id : ids)
            E2E_VERIFY2_SOON(card(id).isValid(), 20000, qPrintable(QString::number(id)));
        QVERIFY2(waitForStatus(QStringLiteral("Added %1 document(s) to clipboard %2").arg(rows).arg(kOpen)),
                 qPrintable(statusText()));
    }

    // Failed before: no drag started from the list; once it did, the board refused it without saying why.
    void refusedBoards_data()
    {
        QTest::addColumn<QString>("clipboard");
        QTest::addColumn<QString>("reason");
        QTest::newRow("read-only") << kReadOnly << QStringLiteral("Clipboard %1 is read-only").arg(kReadOnly);
        QTest::newRow("full") << kFull << QStringLiteral("Clipboard %1 is full").arg(kFull);
    }
    void refusedBoards()
    {
        QFETCH(QString, clipboard);
        QFETCH(QString, reason);
        QVERIFY(showTab(clipboard));
        const QList<qlonglong> ids = rowsNotIn(clipboard, 1);
        QCOMPARE(ids.size(), 1);
        const QList<E2eArchive::Entry> before = archive().entries(clipboard);
        selectRows(ids);
        input().drag(rowPoint(ids.first()), boardDropPoint(), 600);
        QVERIFY2(waitForStatus(reason), qPrintable(statusText()));
        // Nothing arrives later either.
        QTest::qWait(1500);
        QCOMPARE(archive().entries(clipboard).size(), before.size());
    }

    // Failed before: the status bar said only how many were added, not which
    // were not and why.
    void partlyTaken_data()
    {
        QTest::addColumn<QString>("clipboard");
        QTest::addColumn<bool>("onItAlready"); // rows of documents the clipboard holds, else new ones
        QTest::addColumn<QString>("told");
        QTest::newRow("already on it") << kOpen << true
                                       << QStringLiteral("Added 0 document(s) to clipboard %1 (2 already on it)").arg(kOpen);
        QTest::newRow("left out") << kAlmost << false
                                  << QStringLiteral("Added 2 document(s) to clipboard %1 (1 left out: it holds at most "
                                                    "200 documents)").arg(kAlmost);
    }
    void partlyTaken()
    {
        QFETCH(QString, clipboard);
        QFETCH(bool, onItAlready);
        QFETCH(QString, told);
        QVERIFY(showTab(clipboard));
        QList<qlonglong> ids;
        if (onItAlready) {
            for (const E2eArchive::Entry &entry : archive().entries(clipboard))
                if (ids.size() < 2 && documentCell(entry.docId).isValid())
                    ids << entry.docId;
        } else {
            ids = rowsNotIn(clipboard, 3);
        }
        QCOMPARE(ids.size(), onItAlready ? 2 : 3);
        const int before = archive().entries(clipboard).size();
        selectRows(ids);
        input().drag(rowPoint(ids.last()), boardDropPoint());
        QVERIFY2(waitForStatus(told), qPrintable(statusText()));
        QCOMPARE(archive().entries(clipboard).size(), onItAlready ? before : 200);
    }

    // Failed before: no drag started from the list, so the chooser strip never appeared.
    void dropOntoTheChooser()
    {
        QVERIFY(showTab(kOpen));
        const QList<qlonglong> ids = rowsNotIn(kSecond, 2);
        QCOMPARE(ids.size(), 2);
        selectRows(ids);
        // Start the drag and move towards the dock; the strip shows the writeable clipboards.
        input().drag(rowPoint(ids.first()), rowPoint(ids.first()) + QPoint(60, 0), 200, false);
        const E2eNode label = waitForNode(QStringLiteral("label"), kSecond, 10000);
        const bool shown = label.isValid();
        const QPoint target = shown ? centreOf(label) : QPoint();
        QVERIFY2(!shown || !tree().find(host(), QStringLiteral("label"), kReadOnly).isValid(),
                 "a read-only clipboard got a label");
        input().dropAt(shown ? target : boardDropPoint(), 400);
        QVERIFY2(shown, "no chooser label appeared during the drag");

        E2E_VERIFY_SOON(hasDocuments(kSecond, ids), 30000);
        QVERIFY2(waitForStatus(QStringLiteral("Added 2 document(s) to clipboard %1").arg(kSecond)),
                 qPrintable(statusText()));
    }
};

QTEST_MAIN(tst_E2eListDrop)
#include "tst_e2e_listdrop.moc"
