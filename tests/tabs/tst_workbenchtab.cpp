// The clipboard tab set with real card boards against the recording clients:
// the diff with the server list, creating, numbering, renaming, filtering and
// removing clipboards, a refresh during a page load and the shutdown.
#include "boardpage.h"
#include "germancatalogue.h"
#include "modalanswerer.h"
#include "orvexclipboardchooser.h"
#include "orvexclipboardlabel.h"
#include "orvexwbcornerwidget.h"
#include "orvexwbwebview.h"
#include "orvexundooffer.h"
#include "orvexworkbenchtab.h"
#include "recordingarchiveclient.h"
#include "recordingclassifyclient.h"
#include "snackbarcatcher.h"

#include <QClipboard>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QSignalSpy>
#include <QTabBar>
#include <QToolButton>
#include <QVBoxLayout>
#include <QWheelEvent>
#include <QtConcurrent>
#include <QtTest>

namespace {
const QChar kSep(0xFEFF);
const int kLong = 20000; // page loads on a loaded machine
} // namespace

class tst_WorkbenchTab : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); }
    void init()
    {
        m_classify = new RecordingClassifyClient(this);
        m_archive = new RecordingArchiveClient(this);
        m_window = new QWidget;
        m_window->resize(1200, 500);
        m_tabs = new orvexworkbenchtab(m_window);
        (new QVBoxLayout(m_window))->addWidget(m_tabs);
        m_chooser = new orvexclipboardchooser(m_window);
    }

    void cleanup()
    {
        delete m_window;
        delete m_classify;
        delete m_archive;
    }

    // A dock of several clipboards: only the tab shown gets its page and cards
    // at the start; another gets them when it is shown, its cards known at once.
    void hiddenBoardsFillWhenShown()
    {
        QStringList clips;
        for (int c = 0; c < 3; ++c) {
            clips << m_classify->addClipboard(QString("Clipboard %1").arg(c + 1), true);
            for (int i = 0; i < 3; ++i)
                m_classify->addEntry(clips.last(), QString::number(100 + c * 10 + i), QString::number(1000 + c * 10 + i));
        }
        start();
        QCOMPARE(m_tabs->count(), 3);
        QTRY_COMPARE_WITH_TIMEOUT(m_tabs->boardAt(0)->cardCount(), 3, kLong);
        QTRY_COMPARE_WITH_TIMEOUT(BoardPage::run(m_tabs->boardAt(0), "$('#overview section').length").toInt(), 3, kLong);
        for (int i = 1; i < 3; ++i) {
            QVERIFY(m_tabs->boardAt(i)->url().isEmpty());
            QCOMPARE(m_tabs->boardAt(i)->cardCount(), 0);
        }
        m_tabs->setCurrentIndex(2);
        QCOMPARE(m_tabs->boardAt(2)->cardCount(), 3); // a drop is judged by them at once
        QCOMPARE(m_tabs->boardAt(2)->getId(), clips.at(2));
        // The cards reach the page once it is there, with its labels.
        QTRY_COMPARE_WITH_TIMEOUT(BoardPage::run(m_tabs->boardAt(2), "$('#overview section').length").toInt(), 3, kLong);
        QCOMPARE(BoardPage::run(m_tabs->boardAt(2), "$('#trans-Search').text()").toString(), QString("Search..."));
        QVERIFY(m_tabs->boardAt(1)->url().isEmpty());
    }

    void serverListDiff()
    {
        const QString renamed = m_classify->addClipboard("Old name", true);
        const QString locked = m_classify->addClipboard("Becomes read-only", true);
        const QString unlocked = m_classify->addClipboard("Becomes writeable", false);
        const QString removed = m_classify->addClipboard("Removed elsewhere", true);
        m_classify->addEntry(renamed, "17", "1017");
        start();
        QCOMPARE(tabs(), QStringList({"Old name", "Becomes read-only", "Becomes writeable (R)", "Removed elsewhere"}));
        QCOMPARE(labels(), QStringList({"Old name", "Becomes read-only", "Removed elsewhere"})); // writeable only
        QTRY_COMPARE_WITH_TIMEOUT(m_tabs->boardAt(0)->cardIds(), QStringList{"1017"}, kLong); // the current tab's cards
        m_tabs->setCurrentIndex(1);
        QPointer<orvexwbwebview> removedBoard = m_tabs->boardAt(3);
        orvexwbwebview *renamedBoard = m_tabs->boardAt(0);

        m_classify->renameClipboard(renamed, "New name");
        m_classify->setClipboardFlags(locked, "R");
        m_classify->setClipboardFlags(unlocked, "W");
        m_classify->removeClipboard(removed);
        const QString added = m_classify->addClipboard("Added elsewhere", false);
        m_classify->log().clear();
        m_tabs->updateData();

        QCOMPARE(tabs(), QStringList({"New name", "Becomes read-only (R)", "Becomes writeable", "Added elsewhere (R)"}));
        QCOMPARE(m_tabs->boardAt(0), renamedBoard); // renamed in place
        QCOMPARE(m_tabs->boardAt(3)->getId(), added);
        QCOMPARE(m_tabs->currentIndex(), 1); // an added tab is not focused
        QCOMPARE(labels(), QStringList({"New name", "Becomes writeable"}));
        // The removed clipboard's board goes without resetting the archive client's connection.
        QTRY_VERIFY_WITH_TIMEOUT(!removedBoard, kLong);
        QCOMPARE(m_archive->log().count("resetConnection"), 0);
        QCOMPARE(calls("createClipboard") + calls("renameClipboard") + calls("removeClipboard"), 0);
    }

    void malformedServerEntries()
    {
        const QString dup = "{00000000-0000-0000-0000-00000000000d}";
        m_classify->setRawClipboards({{"u-noflag", "No flag field"}, {"u-emptyflag", "Empty flag" + QString(kSep)},
                                      {"u-lower", "Lower-case flag" + QString(kSep) + "w"},
                                      {dup, "Duplicate" + QString(kSep) + "W"}, {dup, "Duplicate again" + QString(kSep) + "W"},
                                      {QString(), "No uuid" + QString(kSep) + "W"}, {"u-noname", QString(kSep) + "W"},
                                      {"u-extra", "Extra fields" + QString(kSep) + "W" + kSep + "x"}});
        start();
        QCOMPARE(tabs(), QStringList({"No flag field (R)", "Empty flag (R)", "Lower-case flag (R)", "Duplicate",
                                      "(unnamed)", "Extra fields"}));
        // An empty name is the server's, not a request to create one; a second reload keeps the same boards: nothing is torn down and rebuilt.
        const QList<orvexwbwebview *> before = m_tabs->boards();
        m_tabs->updateData();
        QCOMPARE(m_tabs->boards(), before);
        QCOMPARE(calls("createClipboard"), 0);
    }

    void noClipboardLeft()
    {
        start();
        QCOMPARE(tabs(), QStringList{"New Clipboard"});
        QCOMPARE(m_tabs->boardAt(0)->getId(), m_classify->clipboards().first().uuid);
        m_tabs->updateData(); // finds it on the server
        QCOMPARE(calls("createClipboard"), 1);

        m_classify->removeClipboard(m_tabs->boardAt(0)->getId()); // removed elsewhere: a new one
        m_tabs->updateData();
        QCOMPARE(calls("createClipboard"), 2);
        QCOMPARE(m_tabs->boardAt(0)->getId(), m_classify->clipboards().first().uuid);

        OrvexUndoOffer::setMilliseconds(300);
        auto restore = qScopeGuard([] { OrvexUndoOffer::setMilliseconds(OrvexUndoOffer::DefaultMilliseconds); });
        {
            ModalAnswerer yes(QMessageBox::Yes); // removed by the user: a new one 100 ms later
            QTest::mouseClick(closeButton(0), Qt::LeftButton);
            QVERIFY(yes.answered());
        }
        QCOMPARE(m_tabs->count(), 0);
        QTRY_COMPARE_WITH_TIMEOUT(tabs(), QStringList{"New Clipboard"}, kLong);
        QCOMPARE(calls("createClipboard"), 3);
        QTRY_COMPARE(m_classify->clipboards().size(), 1); // once the time to undo is over
    }

    void serverFailingEveryCall()
    {
        for (const char *op : {"getClipboards", "createClipboard", "removeClipboard", "renameClipboard",
                               "getClipboardDocuments", "getDocumentTypes", "getDocumentStatuses",
                               "searchDocuments", "getCardInfo"})
            m_classify->log().setFailing(op);
        start();
        QCOMPARE(tabs(), QStringList{"New Clipboard"}); // one to work in, without a server id
        orvexwbwebview *board = m_tabs->boardAt(0);
        m_tabs->updateData(); // a failing reload keeps the tabs instead of churning them
        QCOMPARE(m_tabs->boards(), QList<orvexwbwebview *>{board});
        clickAdd(); // adding still gives a tab; removing fails and brings it back
        OrvexUndoOffer::setMilliseconds(300);
        auto restore = qScopeGuard([] { OrvexUndoOffer::setMilliseconds(OrvexUndoOffer::DefaultMilliseconds); });
        ModalAnswerer yes(QMessageBox::Yes);
        QTest::mouseClick(closeButton(1), Qt::LeftButton);
        QTRY_COMPARE(calls("removeClipboard"), 1);
        QCOMPARE(tabs(), QStringList({"New Clipboard", "New Clipboard (1)"}));
        QCOMPARE(calls("createClipboard"), 2);
        // The server answering again lists neither: one new clipboard.
        m_classify->log().setFailing("getClipboards", false);
        m_tabs->updateData();
        QCOMPARE(tabs(), QStringList{"New Clipboard"});
    }

    void reloadDuringPageLoadCreatesNoDuplicate()
    {
        m_classify->addClipboard("First");
        start();
        m_classify->addClipboard("Second");
        m_classify->addClipboard("Third");
        // The second refresh arrives while the first waits for a page to load.
        QTimer::singleShot(0, m_tabs, [this] { m_tabs->updateData(); });
        m_tabs->updateData();
        QTRY_COMPARE_WITH_TIMEOUT(calls("getClipboards"), 3, kLong);
        QTest::qWait(50); // let a pending reload run if there is one
        QCOMPARE(tabs(), QStringList({"First", "Second", "Third"}));
    }

    void numbering_data()
    {
        QTest::addColumn<bool>("german");
        QTest::addColumn<QStringList>("existing");
        QTest::addColumn<QString>("expected");
        const QString nc = "New Clipboard", de = "Neue Zwischenablage";
        QTest::newRow("base and 3") << false << QStringList{nc, nc + " (3)"} << nc + " (4)";
        QTest::newRow("none of ours") << false << QStringList{"Inbox"} << nc;
        QTest::newRow("highest wins") << false << QStringList{nc + " (7)", nc + " (2)"} << nc + " (8)";
        QTest::newRow("not a number") << false << QStringList{nc + " (x)"} << nc;
        // Only the English words are taken out before reading the number, so translated
        // numbered names never parse.
        QTest::newRow("German, base and 3") << true << QStringList{de, de + " (3)"} << de + " (1)";
        QTest::newRow("German, English names do not count") << true << QStringList{nc, nc + " (4)"} << de;
    }

    void numbering()
    {
        QFETCH(bool, german);
        QFETCH(QStringList, existing);
        QFETCH(QString, expected);
        const GermanCatalogue catalogue(german);
        QVERIFY(catalogue.isLoaded());
        for (const QString &name : qAsConst(existing))
            m_classify->addClipboard(name);
        start();
        clickAdd();
        QCOMPARE(tabs(), existing + QStringList{expected});
        QCOMPARE(m_tabs->currentIndex(), existing.size()); // focused
        QCOMPARE(m_classify->clipboards().last().name, expected);
    }

    void removeClipboard_data()
    {
        QTest::addColumn<int>("answer");
        QTest::addColumn<bool>("serverFails");
        QTest::addColumn<bool>("fromMenu"); // the board's menu, else the tab's close button
        QTest::addColumn<int>("current");   // the tab shown meanwhile
        QTest::addColumn<QString>("then");  // "undo", "wait" (the time to undo runs out) or "close"
        QTest::addColumn<bool>("removed");
        QTest::newRow("yes") << int(QMessageBox::Yes) << false << false << 1 << "wait" << true;
        QTest::newRow("no") << int(QMessageBox::No) << false << false << 1 << "wait" << false;
        QTest::newRow("yes, server refuses") << int(QMessageBox::Yes) << true << false << 1 << "wait" << false;
        QTest::newRow("yes, from the board's menu") << int(QMessageBox::Yes) << false << true << 1 << "wait" << true;
        // Failed before: a removal could not be taken back.
        QTest::newRow("yes, then undo") << int(QMessageBox::Yes) << false << false << 1 << "undo" << false;
        QTest::newRow("yes, then the workbench closes") << int(QMessageBox::Yes) << false << false << 1 << "close" << true;
        QTest::newRow("the menu of a board not current offered to remove the current one")
            << int(QMessageBox::Yes) << false << true << 0 << "wait" << true;
    }

    void removeClipboard()
    {
        QFETCH(int, answer);
        QFETCH(bool, serverFails);
        QFETCH(bool, fromMenu);
        QFETCH(int, current);
        QFETCH(QString, then);
        QFETCH(bool, removed);
        m_classify->addClipboard("Keep");
        const QString doomed = m_classify->addClipboard("Doomed");
        m_classify->addClipboard("After");
        m_classify->addEntry(doomed, "17", "1017", "its note");
        start();
        m_classify->log().setFailing("removeClipboard", serverFails);
        m_tabs->setCurrentIndex(current);
        QPointer<orvexwbwebview> board = m_tabs->boardAt(1);
        OrvexUndoOffer::setMilliseconds(300);
        auto restore = qScopeGuard([] { OrvexUndoOffer::setMilliseconds(OrvexUndoOffer::DefaultMilliseconds); });

        SnackbarCatcher snackbars;
        ModalAnswerer answerer(static_cast<QMessageBox::StandardButton>(answer));
        if (fromMenu)
            QMetaObject::invokeMethod(board, "removeClipboard");
        else
            QTest::mouseClick(closeButton(1), Qt::LeftButton);
        QVERIFY(answerer.answered());
        QCOMPARE(answerer.seenText(), QStringLiteral("Remove Clipboard Doomed ?"));
        if (answer == QMessageBox::Yes) {
            // Gone from the tabs and the chooser at once, still on the server, and offered to undo.
            QCOMPARE(tabs(), QStringList({"Keep", "After"}));
            QCOMPARE(labels(), QStringList({"Keep", "After"}));
            QCOMPARE(calls("removeClipboard"), 0);
            QTRY_COMPARE(snackbars.texts.value(0), QStringLiteral("app:Clipboard Doomed removed."));
            QVERIFY(snackbars.lastAction());
            QCOMPARE(snackbars.lastAction()->text(), QStringLiteral("Undo"));
            // A refresh meanwhile does not bring it back.
            m_tabs->updateData();
            QCOMPARE(tabs(), QStringList({"Keep", "After"}));
        }
        if (then == "undo") {
            snackbars.lastAction()->trigger();
        } else if (then == "close") {
            delete m_window;
            m_window = nullptr;
            QCOMPARE(calls("removeClipboard"), 1);
            QVERIFY(!m_classify->hasClipboard(doomed));
            return;
        } else {
            QTest::qWait(500);
        }
        QTRY_VERIFY(!snackbars.lastAction()); // the offer is over either way
        QCOMPARE(calls("removeClipboard"), answer == QMessageBox::Yes && then == "wait" ? 1 : 0);
        QCOMPARE(tabs(), removed ? QStringList({"Keep", "After"}) : QStringList({"Keep", "Doomed", "After"}));
        QCOMPARE(m_classify->hasClipboard(doomed), !removed);
        if (removed) {
            QTRY_VERIFY_WITH_TIMEOUT(!board, kLong);
        } else {
            // The same board, in its place, with its card and note.
            QCOMPARE(m_tabs->boardAt(1), board.data());
            QVERIFY(!board->isStopped());
            QCOMPARE(board->cardIds(), QStringList{"1017"});
            QCOMPARE(m_classify->clipboard(doomed).entries.value(0).comment, QStringLiteral("its note"));
            QCOMPARE(labels(), QStringList({"Keep", "Doomed", "After"}));
        }
        if (serverFails)
            QVERIFY(snackbars.texts.contains(QStringLiteral("app:Clipboard Doomed could not be removed.")));
        QTest::qWait(150); // never a replacement while others are left
        QCOMPARE(calls("createClipboard"), 0);
    }

    void rename_data()
    {
        QTest::addColumn<QString>("typed"); // "<clear>" empties the field, "<paste>" pastes 150 characters
        QTest::addColumn<QString>("finish"); // "return", "escape" or "focus" (moved elsewhere)
        QTest::addColumn<bool>("serverFails");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("serverName"); // also the board's, and the title after a reload
        QTest::addColumn<QString>("told");       // the one message in the status bar, if any
        const QString longName(130, 'x');
        const QString limit = QStringLiteral("A clipboard name has at most 100 characters.");
        QTest::newRow("new name") << "Projects" << "return" << false << "Projects" << "Projects" << "";
        // Failed before: an empty name reverted without a word, a long one was
        // shown on the tab but never saved, a refused one looked renamed.
        QTest::newRow("empty name refused") << "<clear>" << "return" << false << "Inbox" << "Inbox"
                                            << "A clipboard needs a name: Inbox keeps its name.";
        QTest::newRow("blank name refused") << "   " << "return" << false << "Inbox" << "Inbox"
                                            << "A clipboard needs a name: Inbox keeps its name.";
        QTest::newRow("typed beyond 100") << longName << "return" << false << longName.left(100) << longName.left(100)
                                          << limit;
        QTest::newRow("pasted beyond 100") << "<paste>" << "return" << false << QString(100, 'p') << QString(100, 'p')
                                           << limit;
        QTest::newRow("escape restores") << "Never mind" << "escape" << false << "Inbox" << "Inbox" << "";
        QTest::newRow("focus loss commits") << "Elsewhere" << "focus" << false << "Elsewhere" << "Elsewhere" << "";
        QTest::newRow("server refuses: tab keeps the text") << "Refused" << "return" << true << "Refused" << "Inbox"
                                                            << "Clipboard Inbox could not be renamed.";
    }

    void rename()
    {
        QFETCH(QString, typed);
        QFETCH(QString, finish);
        QFETCH(bool, serverFails);
        QFETCH(QString, title);
        QFETCH(QString, serverName);
        QFETCH(QString, told);
        m_classify->addClipboard("Other");
        const QString inbox = m_classify->addClipboard("Inbox");
        start();
        QApplication::setActiveWindow(m_window); // no window manager under Xvfb to do it
        m_classify->log().setFailing("renameClipboard", serverFails);
        SnackbarCatcher snackbars;

        QLineEdit *editor = startRename(1);
        QVERIFY(editor);
        QTRY_VERIFY(editor->hasFocus());
        QCOMPARE(editor->selectedText(), QStringLiteral("Inbox"));
        if (typed == "<clear>") {
            QTest::keyClick(editor, Qt::Key_Backspace);
        } else if (typed == "<paste>") {
            QApplication::clipboard()->setText(QString(150, 'p'));
            QTest::keyClick(editor, Qt::Key_V, Qt::ControlModifier);
        } else {
            QTest::keyClicks(editor, typed);
        }
        if (finish == "focus")
            filterField()->setFocus();
        else
            QTest::keyClick(editor, finish == "escape" ? Qt::Key_Escape : Qt::Key_Return);

        QTRY_COMPARE(m_tabs->tabText(1), title);
        const bool renamed = title != "Inbox";
        QCOMPARE(m_classify->log().callsOf("renameClipboard").size(), renamed ? 1 : 0);
        QCOMPARE(m_classify->clipboard(inbox).name, serverName);
        // The editor is gone; the tab bar works again; a reload shows the server's name.
        QTRY_VERIFY(!m_tabs->tabBar()->findChild<QLineEdit *>("m_renameEditor"));
        QVERIFY(!m_tabs->tabBar()->signalsBlocked());
        m_tabs->updateData();
        QCOMPARE(m_tabs->tabText(1), serverName);
        QCoreApplication::sendPostedEvents();
        QCOMPARE(snackbars.texts, told.isEmpty() ? QStringList() : QStringList{QStringLiteral("app:") + told});
    }

    // The tab bar and the board shown agree, whatever ends a rename.
    void renameEndsBeforeAnotherTabShows_data()
    {
        QTest::addColumn<QString>("action");
        QTest::addColumn<int>("shown"); // the tab current afterwards; -1: the one clicked
        QTest::newRow("a click on another tab moved the bar but not the board") << "click" << -1;
        QTest::newRow("the wheel on the tab bar") << "wheel" << 0;
        QTest::newRow("Ctrl+Tab") << "ctrl+tab" << 2;
        QTest::newRow("a new clipboard") << "add" << 3;
    }

    void renameEndsBeforeAnotherTabShows()
    {
        QFETCH(QString, action);
        QFETCH(int, shown);
        m_classify->addClipboard("Other");
        const QString inbox = m_classify->addClipboard("Inbox");
        m_classify->addClipboard("Third");
        start();
        QApplication::setActiveWindow(m_window);
        QLineEdit *editor = startRename(1);
        QVERIFY(editor);
        QTRY_VERIFY(editor->hasFocus());
        QTest::keyClicks(editor, "Projects");

        QTabBar *bar = m_tabs->tabBar();
        if (action == "click") {
            // The editor widens its tab, and the bar may scroll: a tab that shows.
            shown = bar->rect().intersects(bar->tabRect(0)) ? 0 : 2;
            const QRect visible = bar->tabRect(shown) & bar->rect();
            QVERIFY(!visible.isEmpty());
            QTest::mouseClick(bar, Qt::LeftButton, Qt::NoModifier, visible.center());
        } else if (action == "wheel") {
            const QPoint at = bar->tabRect(0).center();
            QWheelEvent wheel(at, bar->mapToGlobal(at), QPoint(), QPoint(0, 120), Qt::NoButton, Qt::NoModifier,
                              Qt::NoScrollPhase, false);
            QApplication::sendEvent(bar, &wheel);
        } else if (action == "ctrl+tab") {
            QTest::keyClick(editor, Qt::Key_Tab, Qt::ControlModifier);
        } else {
            clickAdd();
        }

        QCOMPARE(m_tabs->currentIndex(), shown);
        QCOMPARE(m_tabs->currentWidget(), m_tabs->widget(shown)); // the board shown is the tab's
        QCOMPARE(m_tabs->tabText(1), QStringLiteral("Projects"));   // kept as Return keeps it
        QCOMPARE(m_classify->clipboard(inbox).name, QStringLiteral("Projects"));
        QTRY_VERIFY(!bar->findChild<QLineEdit *>("m_renameEditor"));
        QVERIFY(!bar->signalsBlocked());
    }

    // Whoever deletes the tab set while it waits ends the wait at once, and
    // nothing touches what is gone.
    void destroyedWhileWaiting_data()
    {
        QTest::addColumn<QString>("wait");
        QTest::newRow("a new board's page loading: the dock stalled for 60 s") << "page";
        QTest::newRow("the question before a removal") << "question";
    }

    void destroyedWhileWaiting()
    {
        QFETCH(QString, wait);
        m_classify->addClipboard("One");
        start();
        QElapsedTimer clock;
        clock.start();
        QPointer<QWidget> window = m_window;
        const auto destroy = [this] {
            delete m_window;
            m_window = nullptr;
        };
        if (wait == "page") {
            QTimer::singleShot(0, m_window, destroy); // runs inside the wait
            clickAdd();
        } else {
            ModalAnswerer whileAsking([&destroy](QWidget *) { destroy(); });
            QTest::mouseClick(closeButton(0), Qt::LeftButton);
            QVERIFY(whileAsking.answered());
        }
        QVERIFY(!window);
        QVERIFY2(clock.elapsed() < 10000, qPrintable(QString::number(clock.elapsed())));
        QCOMPARE(calls("removeClipboard"), 0);
    }

    void readOnlyIsProtected()
    {
        m_classify->addClipboard("Mine");
        m_classify->addClipboard("Theirs", false);
        start();
        QVERIFY(!startRename(1));
        QCOMPARE(m_tabs->tabText(1), QStringLiteral("Theirs"));
        // Double-clicking beside the tabs renames nothing either: the cursor decides, not the index.
        QTabBar *bar = m_tabs->tabBar();
        QCursor::setPos(bar->mapToGlobal(QPoint(bar->width() + 40, bar->height() / 2)));
        emit bar->tabBarDoubleClicked(0);
        QVERIFY(!bar->findChild<QLineEdit *>("m_renameEditor"));
        // Even asked directly, a read-only clipboard is not removed and no question shows.
        m_tabs->setCurrentIndex(1);
        emit bar->tabCloseRequested(1);
        QMetaObject::invokeMethod(m_tabs, "doRemoveClipboard");
        QCOMPARE(calls("removeClipboard"), 0);
        QCOMPARE(tabs(), QStringList({"Mine", "Theirs (R)"}));
    }

    void filter_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QList<bool>>("enabled"); // Inbox, Invoices 2026, Archive
        QTest::addColumn<int>("current");         // -1: the empty state instead of a board
        QTest::newRow("prefix") << "in" << QList<bool>{true, true, false} << 0;
        QTest::newRow("inside the name") << "2026" << QList<bool>{false, true, false} << 1;
        // Failed before: the board of the hidden tab next to Inbox came into view.
        QTest::newRow("only the last") << "arch" << QList<bool>{false, false, true} << 2;
        // Failed before: no word that nothing matched, and a hidden tab's board in view.
        QTest::newRow("nothing") << "zzz" << QList<bool>{false, false, false} << -1;
    }

    void filter()
    {
        QFETCH(QString, typed);
        QFETCH(QList<bool>, enabled);
        QFETCH(int, current);
        m_classify->addClipboard("Inbox");
        m_classify->addClipboard("Invoices 2026");
        m_classify->addClipboard("Archive", false);
        start();
        QTest::keyClicks(filterField(), typed);
        QList<bool> seen;
        for (int i = 0; i < m_tabs->count(); ++i) // filtered tabs are disabled, not removed
            seen << m_tabs->isTabEnabled(i);
        QCOMPARE(seen, enabled);
        auto *noMatch = m_tabs->findChild<QLabel *>("m_noMatch");
        QVERIFY(noMatch);
        QCOMPARE(noMatch->isVisible(), current < 0);
        if (current >= 0) {
            QCOMPARE(m_tabs->currentIndex(), current);
        } else {
            QCOMPARE(noMatch->text(), QStringLiteral("No clipboard matches"));
            // It covers the board, so none is seen.
            const QRect board(m_tabs->currentWidget()->mapTo(m_tabs, QPoint()), m_tabs->currentWidget()->size());
            QVERIFY(noMatch->geometry().contains(board));
            m_window->resize(900, 400); // and stays over it
            QTRY_VERIFY(noMatch->geometry().contains(QRect(m_tabs->currentWidget()->mapTo(m_tabs, QPoint()),
                                                           m_tabs->currentWidget()->size())));
        }
        // Adding a clipboard clears the filter: every tab shows again.
        clickAdd();
        QVERIFY(filterField()->text().isEmpty());
        for (int i = 0; i < m_tabs->count(); ++i)
            QVERIFY(m_tabs->isTabEnabled(i));
        QCOMPARE(m_tabs->currentIndex(), 3);
        QVERIFY(!noMatch->isVisible());
    }

    void stopStopsEveryBoard()
    {
        const QString one = m_classify->addClipboard("One");
        m_classify->addClipboard("Two");
        m_classify->addEntry(one, "17", "1017");
        start();
        QTRY_COMPARE_WITH_TIMEOUT(m_tabs->boardAt(0)->cardCount(), 1, kLong);

        // An update job is inside the server call when stop() comes.
        orvexwbwebview *board = m_tabs->boardAt(0);
        CallLog &log = m_classify->log();
        const QString call = "getClipboardDocuments";
        log.setStalled(call);
        // The first update may still be running; ask until a new one is inside.
        QElapsedTimer clock;
        clock.start();
        bool inside = false;
        while (!inside && clock.elapsed() < kLong) {
            board->updateCards();
            inside = log.waitStalled(call, 100);
            QCoreApplication::processEvents();
        }
        QVERIFY(inside);
        QAtomicInt released = 0;
        // The GUI thread waits inside stop(), so the release comes from elsewhere.
        QFuture<void> releaser = QtConcurrent::run([&log, &released, call] {
            QThread::msleep(200);
            released = 1;
            log.release(call);
        });
        m_tabs->stop();
        QCOMPARE(int(released), 1); // stop() waited for the running job
        releaser.waitForFinished();
        for (orvexwbwebview *each : m_tabs->boards())
            QVERIFY(each->isStopped());
        // No new work starts.
        log.setStalled(call, false);
        log.clear();
        m_tabs->reloadData();
        m_tabs->boardAt(0)->reloadCards();
        QTest::qWait(200);
        QCOMPARE(calls("getClipboardDocuments") + calls("searchDocuments"), 0);
        // Stopped boards go quietly, each giving its connection back.
        delete m_window;
        m_window = nullptr;
        QCOMPARE(m_archive->log().count("resetConnection"), 2);
    }


private:
    void start() // as the dock does it: clients first, then the chooser
    {
        m_tabs->setClassifyClient(m_classify);
        m_tabs->setArchiveClient(m_archive);
        m_tabs->setChooser(m_chooser);
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window));
    }

    // Each tab's title, with " (R)" for a read-only clipboard and " (?)" where the
    // board's flag, the lock icon and the close button disagree.
    QStringList tabs() const
    {
        QStringList result;
        for (int i = 0; i < m_tabs->count(); ++i) {
            const bool writeable = m_tabs->boardAt(i)->isWriteable();
            const bool agree = m_tabs->tabIcon(i).isNull() == writeable && closeButton(i)->isVisible() == writeable;
            result << m_tabs->tabText(i) + (writeable ? "" : " (R)") + (agree ? "" : " (?)");
        }
        return result;
    }

    QStringList labels() const
    {
        QStringList result;
        for (orvexclipboardlabel *label : m_chooser->labels())
            result << label->text();
        return result;
    }

    void clickAdd() { QTest::mouseClick(m_tabs->cornerControls()->findChild<QToolButton *>("m_addTab"), Qt::LeftButton); }
    QWidget *closeButton(int index) const { return m_tabs->tabBar()->tabButton(index, QTabBar::RightSide); }
    QLineEdit *filterField() const { return m_tabs->cornerControls()->findChild<QLineEdit *>("m_tabFilter"); }
    int calls(const char *name) const { return m_classify->log().count(name); }
    QLineEdit *startRename(int index);

    RecordingClassifyClient *m_classify = nullptr;
    RecordingArchiveClient *m_archive = nullptr;
    QWidget *m_window = nullptr;
    orvexworkbenchtab *m_tabs = nullptr;
    orvexclipboardchooser *m_chooser = nullptr;
};

QLineEdit *tst_WorkbenchTab::startRename(int index)
{
    QTabBar *bar = m_tabs->tabBar();
    const QPoint centre = bar->tabRect(index).center();
    QCursor::setPos(bar->mapToGlobal(centre)); // the tab under the cursor is the one renamed
    QTest::mouseDClick(bar, Qt::LeftButton, Qt::NoModifier, centre);
    return bar->findChild<QLineEdit *>("m_renameEditor");
}



QTEST_MAIN(tst_WorkbenchTab)
#include "tst_workbenchtab.moc"
