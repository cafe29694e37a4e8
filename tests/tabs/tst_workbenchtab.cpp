// The clipboard tab set with real card boards against the recording clients:
// the diff with the server list, creating, numbering, renaming, filtering and
// removing clipboards, the refreshes and the shutdown.
#include "modalanswerer.h"
#include "orvexclipboardchooser.h"
#include "orvexclipboardlabel.h"
#include "orvexwbcornerwidget.h"
#include "orvexwbwebview.h"
#include "orvexworkbenchtab.h"
#include "recordingarchiveclient.h"
#include "recordingclassifyclient.h"

#include <QLineEdit>
#include <QPointer>
#include <QScopeGuard>
#include <QSignalSpy>
#include <QTabBar>
#include <QToolButton>
#include <QTranslator>
#include <QVBoxLayout>
#include <QtConcurrent>
#include <QtTest>

namespace {
const QChar kSep(0xFEFF);
const int kLong = 20000; // page loads on a loaded machine

QStringList messages;
QtMessageHandler previousHandler = nullptr;
void recordMessage(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    messages << text;
    if (previousHandler)
        previousHandler(type, context, text);
}
} // namespace

class tst_WorkbenchTab : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void startShowsServerClipboards();
    void startWithoutClipboardsCreatesOne();
    void newClipboardNumbering_data();
    void newClipboardNumbering();
    void numberingContinuesInOneSession();
    void numberingWithTranslation_data();
    void numberingWithTranslation();
    void reloadFollowsServer();
    void everythingRemovedOnServer();
    void malformedServerEntries();
    void serverFailingEveryCall();
    void reloadDuringPageLoadCreatesNoDuplicate();
    void removeClipboard_data();
    void removeClipboard();
    void removeFromTheBoardMenu();
    void removeLastClipboard();
    void readOnlyClipboardCannotBeRemoved();
    void rename_data();
    void rename();
    void renameRefusedByServer();
    void renameReadOnlyRefused();
    void renameCommitsOnFocusLoss();
    void renameEscapeRestores();
    void filter_data();
    void filter();
    void addingClearsFilter();
    void sheetFollowsEnabledState();
    void boardSignalsReachTheTabSet();
    void refreshes();
    void archiveClientReachesEveryBoard();
    void stopStopsEveryBoard();
    void destructionOrder();

private:
    // The tab set as the dock holds it: clients first, then the chooser.
    void start();
    QStringList titles() const;
    int indexOfTitle(const QString &title) const;
    QLineEdit *startRename(int index);
    void clickAdd();
    QWidget *closeButton(int index) const;

    RecordingClassifyClient *m_classify = nullptr;
    RecordingArchiveClient *m_archive = nullptr;
    QWidget *m_window = nullptr;
    orvexworkbenchtab *m_tabs = nullptr;
    orvexclipboardchooser *m_chooser = nullptr;
};

void tst_WorkbenchTab::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
}

void tst_WorkbenchTab::init()
{
    m_classify = new RecordingClassifyClient(this);
    m_archive = new RecordingArchiveClient(this);
    m_window = new QWidget;
    m_window->resize(1200, 500);
    auto *layout = new QVBoxLayout(m_window);
    m_tabs = new orvexworkbenchtab(m_window);
    layout->addWidget(m_tabs);
    m_chooser = new orvexclipboardchooser(m_window);
}

void tst_WorkbenchTab::cleanup()
{
    delete m_window;
    m_window = nullptr;
    m_tabs = nullptr;
    m_chooser = nullptr;
    delete m_classify;
    delete m_archive;
}

void tst_WorkbenchTab::start()
{
    m_tabs->setClassifyClient(m_classify);
    m_tabs->setArchiveClient(m_archive);
    m_tabs->setChooser(m_chooser);
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window));
}

QStringList tst_WorkbenchTab::titles() const
{
    QStringList result;
    for (int i = 0; i < m_tabs->count(); ++i)
        result << m_tabs->tabText(i);
    return result;
}

int tst_WorkbenchTab::indexOfTitle(const QString &title) const
{
    return titles().indexOf(title);
}

QWidget *tst_WorkbenchTab::closeButton(int index) const
{
    return m_tabs->tabBar()->tabButton(index, QTabBar::RightSide);
}

void tst_WorkbenchTab::clickAdd()
{
    auto *add = m_tabs->cornerControls()->findChild<QToolButton *>(QStringLiteral("m_addTab"));
    QVERIFY(add);
    QVERIFY(add->isVisible());
    QTest::mouseClick(add, Qt::LeftButton);
}

QLineEdit *tst_WorkbenchTab::startRename(int index)
{
    QTabBar *bar = m_tabs->tabBar();
    const QPoint centre = bar->tabRect(index).center();
    // The tab under the mouse cursor is the one renamed.
    QCursor::setPos(bar->mapToGlobal(centre));
    QTest::mouseDClick(bar, Qt::LeftButton, Qt::NoModifier, centre);
    return bar->findChild<QLineEdit *>(QStringLiteral("m_renameEditor"));
}

void tst_WorkbenchTab::startShowsServerClipboards()
{
    const QString inbox = m_classify->addClipboard(QStringLiteral("Inbox"), true);
    const QString shared = m_classify->addClipboard(QStringLiteral("Shared"), false);
    m_classify->addEntry(inbox, QStringLiteral("17"), QStringLiteral("1017"));
    start();

    QCOMPARE(titles(), (QStringList{QStringLiteral("Inbox"), QStringLiteral("Shared")}));
    QCOMPARE(m_tabs->boardAt(0)->getId(), inbox);
    QCOMPARE(m_tabs->boardAt(1)->getId(), shared);
    QVERIFY(m_tabs->boardAt(0)->isWriteable());
    QVERIFY(!m_tabs->boardAt(1)->isWriteable());
    QCOMPARE(m_tabs->boardAt(0)->getTabText(), QStringLiteral("Inbox"));
    // Read-only: lock icon and no close button.
    QVERIFY(m_tabs->tabIcon(0).isNull());
    QVERIFY(closeButton(0)->isVisible());
    QVERIFY(!m_tabs->tabIcon(1).isNull());
    QVERIFY(!closeButton(1)->isVisible());
    QCOMPARE(m_tabs->styleSheet(), orvexworkbenchtab::fullSheet());
    QCOMPARE(m_tabs->cornerWidget(Qt::TopRightCorner), m_tabs->cornerControls());

    // Only writeable clipboards get a label in the chooser.
    const QList<orvexclipboardlabel *> labels = m_chooser->labels();
    QCOMPARE(labels.size(), 1);
    QCOMPARE(labels.first()->text(), QStringLiteral("Inbox"));
    QCOMPARE(labels.first()->board(), m_tabs->boardAt(0));
    QCOMPARE(m_classify->log().count(QStringLiteral("createClipboard")), 0);

    // Showing the tab set loads the current clipboard's cards.
    QCOMPARE(m_tabs->currentIndex(), 0);
    QTRY_COMPARE_WITH_TIMEOUT(m_tabs->boardAt(0)->cardIds(), QStringList{QStringLiteral("1017")}, kLong);
}

void tst_WorkbenchTab::startWithoutClipboardsCreatesOne()
{
    start();
    QCOMPARE(titles(), QStringList{QStringLiteral("New Clipboard")});
    QCOMPARE(m_classify->log().count(QStringLiteral("createClipboard")), 1);
    QCOMPARE(m_classify->log().last(QStringLiteral("createClipboard")).args,
             QVariantList{QStringLiteral("New Clipboard")});
    const QList<RecordingClassifyClient::Clipboard> server = m_classify->clipboards();
    QCOMPARE(server.size(), 1);
    QCOMPARE(m_tabs->boardAt(0)->getId(), server.first().uuid);
    QVERIFY(m_tabs->boardAt(0)->isWriteable());
    QCOMPARE(m_tabs->currentIndex(), 0);
    // The chooser entry of a new clipboard carries the (empty) name it was asked with.
    QCOMPARE(m_chooser->labels().size(), 1);
    QVERIFY(m_chooser->labels().first()->text().isEmpty());

    // The next reload finds it on the server: no second clipboard, label named.
    m_tabs->updateData();
    QCOMPARE(m_tabs->count(), 1);
    QCOMPARE(m_classify->log().count(QStringLiteral("createClipboard")), 1);
    QCOMPARE(m_chooser->labels().first()->text(), QStringLiteral("New Clipboard"));
}

void tst_WorkbenchTab::newClipboardNumbering_data()
{
    QTest::addColumn<QStringList>("existing");
    QTest::addColumn<QString>("expected");

    QTest::newRow("base and 3") << QStringList{"New Clipboard", "New Clipboard (3)"} << "New Clipboard (4)";
    QTest::newRow("only base") << QStringList{"New Clipboard"} << "New Clipboard (1)";
    QTest::newRow("none of ours") << QStringList{"Inbox"} << "New Clipboard";
    QTest::newRow("numbered without base") << QStringList{"New Clipboard (1)"} << "New Clipboard (2)";
    QTest::newRow("highest wins") << QStringList{"New Clipboard (7)", "New Clipboard (2)"} << "New Clipboard (8)";
    QTest::newRow("not a number") << QStringList{"New Clipboard (x)"} << "New Clipboard";
    QTest::newRow("not a number, base") << QStringList{"New Clipboard", "New Clipboard (x)"} << "New Clipboard (1)";
    QTest::newRow("case differs") << QStringList{"new clipboard"} << "New Clipboard";
    QTest::newRow("number without brackets") << QStringList{"New Clipboard 5"} << "New Clipboard (6)";
}

void tst_WorkbenchTab::newClipboardNumbering()
{
    QFETCH(QStringList, existing);
    QFETCH(QString, expected);

    for (const QString &name : qAsConst(existing))
        m_classify->addClipboard(name);
    start();
    QCOMPARE(m_tabs->count(), existing.size());

    clickAdd();
    QCOMPARE(m_classify->log().count(QStringLiteral("createClipboard")), 1);
    QCOMPARE(m_classify->log().last(QStringLiteral("createClipboard")).args, QVariantList{expected});
    QCOMPARE(m_tabs->count(), existing.size() + 1);
    QCOMPARE(m_tabs->tabText(existing.size()), expected);
    // A clipboard the user adds is focused and has the server's uuid.
    QCOMPARE(m_tabs->currentIndex(), existing.size());
    QCOMPARE(m_tabs->boardAt(existing.size())->getId(), m_classify->clipboards().last().uuid);
}

void tst_WorkbenchTab::numberingContinuesInOneSession()
{
    start();
    clickAdd();
    clickAdd();
    QCOMPARE(titles(), (QStringList{"New Clipboard", "New Clipboard (1)", "New Clipboard (2)"}));
    QCOMPARE(m_classify->clipboards().size(), 3);
}

void tst_WorkbenchTab::numberingWithTranslation_data()
{
    QTest::addColumn<QStringList>("existing");
    QTest::addColumn<QString>("expected");

    const QString base = QStringLiteral("Neue Zwischenablage");
    // Only the English words are taken out before reading the number, so
    // translated numbered names never parse.
    QTest::newRow("base and 3") << QStringList{base, base + " (3)"} << base + " (1)";
    QTest::newRow("only numbered") << QStringList{base + " (3)"} << base;
    QTest::newRow("English names do not count") << QStringList{"New Clipboard", "New Clipboard (4)"} << base;
}

void tst_WorkbenchTab::numberingWithTranslation()
{
    QFETCH(QStringList, existing);
    QFETCH(QString, expected);

    QTranslator german;
    QVERIFY(german.load(QStringLiteral(":/translations/orvexworkbench_de.qm")));
    QCoreApplication::installTranslator(&german);
    auto removeTranslator = qScopeGuard([&german] { QCoreApplication::removeTranslator(&german); });
    QCOMPARE(QCoreApplication::translate("orvexworkbenchtab", "New Clipboard"), QStringLiteral("Neue Zwischenablage"));

    for (const QString &name : qAsConst(existing))
        m_classify->addClipboard(name);
    start();
    clickAdd();
    QCOMPARE(m_classify->log().last(QStringLiteral("createClipboard")).args, QVariantList{expected});
    QCOMPARE(m_tabs->tabText(m_tabs->count() - 1), expected);
}

void tst_WorkbenchTab::reloadFollowsServer()
{
    const QString renamed = m_classify->addClipboard(QStringLiteral("Old name"), true);
    const QString locked = m_classify->addClipboard(QStringLiteral("Becomes read-only"), true);
    const QString unlocked = m_classify->addClipboard(QStringLiteral("Becomes writeable"), false);
    const QString removed = m_classify->addClipboard(QStringLiteral("Removed elsewhere"), true);
    start();
    QCOMPARE(m_tabs->count(), 4);
    m_tabs->setCurrentIndex(1);
    QPointer<orvexwbwebview> removedBoard = m_tabs->boardAt(3);
    orvexwbwebview *renamedBoard = m_tabs->boardAt(0);

    m_classify->renameClipboard(renamed, QStringLiteral("New name"));
    m_classify->setClipboardFlags(locked, QStringLiteral("R"));
    m_classify->setClipboardFlags(unlocked, QStringLiteral("W"));
    m_classify->removeClipboard(removed);
    const QString added = m_classify->addClipboard(QStringLiteral("Added elsewhere"), false);
    m_classify->log().clear();

    m_tabs->updateData();

    QCOMPARE(titles(), (QStringList{"New name", "Becomes read-only", "Becomes writeable", "Added elsewhere"}));
    QCOMPARE(m_tabs->boardAt(0), renamedBoard); // the same board, renamed in place
    QCOMPARE(renamedBoard->getTabText(), QStringLiteral("New name"));
    QCOMPARE(m_tabs->boardAt(3)->getId(), added);
    // The added tab is not focused.
    QCOMPARE(m_tabs->currentIndex(), 1);

    QVERIFY(!m_tabs->boardAt(1)->isWriteable());
    QVERIFY(!m_tabs->tabIcon(1).isNull());
    QVERIFY(!closeButton(1)->isVisible());
    QVERIFY(m_tabs->boardAt(2)->isWriteable());
    QVERIFY(m_tabs->tabIcon(2).isNull());
    QVERIFY(closeButton(2)->isVisible());
    QVERIFY(!m_tabs->tabIcon(3).isNull());
    QVERIFY(!closeButton(3)->isVisible());

    // The removed clipboard's board is stopped and disposed of, without touching
    // the archive client's connection.
    QTRY_VERIFY_WITH_TIMEOUT(!removedBoard, kLong);
    QCOMPARE(m_archive->log().count(QStringLiteral("resetConnection")), 0);

    QStringList labelTexts;
    for (orvexclipboardlabel *label : m_chooser->labels())
        labelTexts << label->text();
    QCOMPARE(labelTexts, (QStringList{"New name", "Becomes writeable"}));
    QCOMPARE(m_classify->log().count(QStringLiteral("createClipboard")), 0);
    QCOMPARE(m_classify->log().count(QStringLiteral("renameClipboard")), 0);
}

void tst_WorkbenchTab::everythingRemovedOnServer()
{
    const QString first = m_classify->addClipboard(QStringLiteral("First"));
    const QString second = m_classify->addClipboard(QStringLiteral("Second"));
    start();
    m_classify->removeClipboard(first);
    m_classify->removeClipboard(second);

    m_tabs->updateData();
    // None left: one new clipboard is created on the server.
    QCOMPARE(titles(), QStringList{QStringLiteral("New Clipboard")});
    QCOMPARE(m_classify->clipboards().size(), 1);
    QCOMPARE(m_tabs->boardAt(0)->getId(), m_classify->clipboards().first().uuid);
}

void tst_WorkbenchTab::malformedServerEntries()
{
    const QString dup = QStringLiteral("{00000000-0000-0000-0000-00000000000d}");
    m_classify->setRawClipboards({
        {QStringLiteral("u-noflag"), QStringLiteral("No flag field")},
        {QStringLiteral("u-emptyflag"), QStringLiteral("Empty flag") + kSep},
        {QStringLiteral("u-lower"), QStringLiteral("Lower-case flag") + kSep + QStringLiteral("w")},
        {dup, QStringLiteral("Duplicate") + kSep + QStringLiteral("W")},
        {dup, QStringLiteral("Duplicate again") + kSep + QStringLiteral("W")},
        {QString(), QStringLiteral("No uuid") + kSep + QStringLiteral("W")},
        {QStringLiteral("u-noname"), kSep + QStringLiteral("W")},
        {QStringLiteral("u-extra"), QStringLiteral("Extra fields") + kSep + QStringLiteral("W") + kSep + QStringLiteral("x")},
    });
    start();

    QCOMPARE(titles(), (QStringList{"No flag field", "Empty flag", "Lower-case flag", "Duplicate",
                                    "(unnamed)", "Extra fields"}));
    const QList<bool> writeable{false, false, false, true, true, true};
    for (int i = 0; i < writeable.size(); ++i) {
        QCOMPARE(m_tabs->boardAt(i)->isWriteable(), writeable.at(i));
        QCOMPARE(m_tabs->tabIcon(i).isNull(), writeable.at(i));
    }
    // An empty name is the server's name, not a request to create a clipboard.
    QCOMPARE(m_tabs->boardAt(4)->getTabText(), QString());
    QCOMPARE(m_classify->log().count(QStringLiteral("createClipboard")), 0);
    QCOMPARE(m_chooser->labels().size(), 3);

    // A second reload keeps the same boards: nothing is torn down and rebuilt.
    const QList<orvexwbwebview *> before = m_tabs->boards();
    m_tabs->updateData();
    QCOMPARE(m_tabs->boards(), before);
    QCOMPARE(m_classify->log().count(QStringLiteral("createClipboard")), 0);
}

void tst_WorkbenchTab::serverFailingEveryCall()
{
    for (const char *op : {"getClipboards", "createClipboard", "removeClipboard", "renameClipboard",
                           "getClipboardDocuments", "getDocumentTypes", "getDocumentStatuses",
                           "searchDocuments", "getCardInfo"})
        m_classify->log().setFailing(QString::fromLatin1(op));
    start();

    // One clipboard to work in, without a server id.
    QCOMPARE(titles(), QStringList{QStringLiteral("New Clipboard")});
    orvexwbwebview *board = m_tabs->boardAt(0);
    QCOMPARE(m_classify->log().count(QStringLiteral("createClipboard")), 1);

    // Reloads that fail keep the tabs instead of churning them.
    m_tabs->updateData();
    m_tabs->reloadData();
    QCOMPARE(m_tabs->count(), 1);
    QCOMPARE(m_tabs->boardAt(0), board);
    QCOMPARE(m_classify->log().count(QStringLiteral("createClipboard")), 1);

    // Adding still gives a tab; removing fails and leaves it.
    clickAdd();
    QCOMPARE(titles(), (QStringList{"New Clipboard", "New Clipboard (1)"}));
    {
        ModalAnswerer yes(QMessageBox::Yes);
        QTest::mouseClick(closeButton(1), Qt::LeftButton);
        QVERIFY(yes.answered());
    }
    QCOMPARE(m_tabs->count(), 2);

    // Existing tabs survive when the server starts failing later.
    m_classify->log().setFailing(QStringLiteral("getClipboards"), false);
    m_tabs->updateData();
    QCOMPARE(m_tabs->count(), 1); // neither board is on the server: one new one
    QCOMPARE(m_tabs->tabText(0), QStringLiteral("New Clipboard"));
}

void tst_WorkbenchTab::reloadDuringPageLoadCreatesNoDuplicate()
{
    m_classify->addClipboard(QStringLiteral("First"));
    start();
    m_classify->addClipboard(QStringLiteral("Second"));
    m_classify->addClipboard(QStringLiteral("Third"));

    // The second refresh arrives while the first waits for a page to load.
    QTimer::singleShot(0, m_tabs, [this] { m_tabs->updateData(); });
    m_tabs->updateData();
    QTRY_COMPARE_WITH_TIMEOUT(m_classify->log().count(QStringLiteral("getClipboards")), 3, kLong);
    QTest::qWait(50); // let a pending reload run if there is one
    QCOMPARE(titles(), (QStringList{"First", "Second", "Third"}));
}

void tst_WorkbenchTab::removeClipboard_data()
{
    QTest::addColumn<int>("answer");
    QTest::addColumn<bool>("serverFails");
    QTest::addColumn<bool>("removed");

    QTest::newRow("yes") << int(QMessageBox::Yes) << false << true;
    QTest::newRow("no") << int(QMessageBox::No) << false << false;
    QTest::newRow("yes, server refuses") << int(QMessageBox::Yes) << true << false;
}

void tst_WorkbenchTab::removeClipboard()
{
    QFETCH(int, answer);
    QFETCH(bool, serverFails);
    QFETCH(bool, removed);

    m_classify->addClipboard(QStringLiteral("Keep"));
    const QString doomed = m_classify->addClipboard(QStringLiteral("Doomed"));
    start();
    if (serverFails)
        m_classify->log().setFailing(QStringLiteral("removeClipboard"));
    QPointer<orvexwbwebview> board = m_tabs->boardAt(1);
    const int cornerHeight = m_tabs->cornerControls()->height();

    ModalAnswerer answerer(static_cast<QMessageBox::StandardButton>(answer));
    QTest::mouseClick(closeButton(1), Qt::LeftButton);
    QVERIFY(answerer.answered());
    QCOMPARE(answerer.seenTitle(), QStringLiteral("Remove Clipboard"));
    QCOMPARE(answerer.seenText(), QStringLiteral("Remove Clipboard Doomed ?"));

    const bool asked = answer == QMessageBox::Yes;
    QCOMPARE(m_classify->log().count(QStringLiteral("removeClipboard")), asked ? 1 : 0);
    if (asked)
        QCOMPARE(m_classify->log().last(QStringLiteral("removeClipboard")).args, QVariantList{doomed});
    QCOMPARE(titles(), removed ? QStringList({"Keep"}) : QStringList({"Keep", "Doomed"}));
    QCOMPARE(m_classify->hasClipboard(doomed), !removed);
    if (removed) {
        QCOMPARE(m_tabs->boards().size(), 1);
        QCOMPARE(m_tabs->minimumHeight(), cornerHeight);
        QTRY_VERIFY_WITH_TIMEOUT(!board, kLong);
    } else {
        QVERIFY(board);
        QVERIFY(!board->isStopped());
    }
    // Never a replacement while others are left.
    QTest::qWait(150);
    QCOMPARE(m_classify->log().count(QStringLiteral("createClipboard")), 0);
}

void tst_WorkbenchTab::removeFromTheBoardMenu()
{
    m_classify->addClipboard(QStringLiteral("One"));
    const QString two = m_classify->addClipboard(QStringLiteral("Two"));
    start();
    m_tabs->setCurrentIndex(1);

    // The board's menu removes the current clipboard.
    ModalAnswerer yes(QMessageBox::Yes);
    QMetaObject::invokeMethod(m_tabs->boardAt(1), "removeClipboard");
    QVERIFY(yes.answered());
    QCOMPARE(titles(), QStringList{QStringLiteral("One")});
    QVERIFY(!m_classify->hasClipboard(two));
}

void tst_WorkbenchTab::removeLastClipboard()
{
    const QString only = m_classify->addClipboard(QStringLiteral("Only one"));
    start();

    QElapsedTimer clock;
    {
        ModalAnswerer yes(QMessageBox::Yes);
        QTest::mouseClick(closeButton(0), Qt::LeftButton);
        QVERIFY(yes.answered());
    }
    clock.start();
    QCOMPARE(m_tabs->count(), 0);
    QVERIFY(!m_classify->hasClipboard(only));
    QCOMPARE(m_classify->log().count(QStringLiteral("createClipboard")), 0);

    // A replacement follows 100 ms later.
    QTRY_COMPARE_WITH_TIMEOUT(m_tabs->count(), 1, kLong);
    QVERIFY(clock.elapsed() >= 90);
    QCOMPARE(m_tabs->tabText(0), QStringLiteral("New Clipboard"));
    QCOMPARE(m_classify->log().count(QStringLiteral("createClipboard")), 1);
    QCOMPARE(m_classify->clipboards().size(), 1);
}

void tst_WorkbenchTab::readOnlyClipboardCannotBeRemoved()
{
    m_classify->addClipboard(QStringLiteral("Mine"));
    m_classify->addClipboard(QStringLiteral("Theirs"), false);
    start();
    m_tabs->setCurrentIndex(1);
    QVERIFY(!closeButton(1)->isVisible());

    // Even asked directly, a read-only clipboard is not removed and no question shows.
    emit m_tabs->tabBar()->tabCloseRequested(1);
    QMetaObject::invokeMethod(m_tabs, "doRemoveClipboard");
    QCOMPARE(m_classify->log().count(QStringLiteral("removeClipboard")), 0);
    QCOMPARE(m_tabs->count(), 2);
}

void tst_WorkbenchTab::rename_data()
{
    QTest::addColumn<QString>("typed"); // "<clear>" empties the field
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("boardName");
    QTest::addColumn<bool>("serverCall");

    QTest::newRow("new name") << "Projects" << "Projects" << "Projects" << true;
    QTest::newRow("empty text restores") << "<clear>" << "Inbox" << "Inbox" << false;
    QTest::newRow("same name") << "Inbox" << "Inbox" << "Inbox" << false;
    QTest::newRow("case change is a rename") << "INBOX" << "INBOX" << "INBOX" << true;
    const QString longName(300, QLatin1Char('x'));
    QTest::newRow("cut to 254") << longName << longName.left(254) << longName.left(254) << true;
}

void tst_WorkbenchTab::rename()
{
    QFETCH(QString, typed);
    QFETCH(QString, title);
    QFETCH(QString, boardName);
    QFETCH(bool, serverCall);

    m_classify->addClipboard(QStringLiteral("Other"));
    const QString inbox = m_classify->addClipboard(QStringLiteral("Inbox"));
    start();
    QCOMPARE(m_tabs->currentIndex(), 0);

    QLineEdit *editor = startRename(1);
    QVERIFY(editor);
    QCOMPARE(m_tabs->currentIndex(), 1);
    QCOMPARE(editor->text(), QStringLiteral("Inbox"));
    QCOMPARE(editor->selectedText(), QStringLiteral("Inbox"));
    QCOMPARE(editor->maxLength(), 254);
    QVERIFY(m_tabs->tabText(1).isEmpty());
    QVERIFY(m_tabs->tabBar()->signalsBlocked());

    if (typed == QLatin1String("<clear>"))
        QTest::keyClick(editor, Qt::Key_Backspace);
    else
        QTest::keyClicks(editor, typed);
    QTest::keyClick(editor, Qt::Key_Return);

    QCOMPARE(m_tabs->tabText(1), title);
    QCOMPARE(m_tabs->boardAt(1)->getTabText(), boardName);
    QCOMPARE(m_classify->log().count(QStringLiteral("renameClipboard")), serverCall ? 1 : 0);
    if (serverCall)
        QCOMPARE(m_classify->log().last(QStringLiteral("renameClipboard")).args, (QVariantList{inbox, title}));
    QCOMPARE(m_classify->clipboard(inbox).name, boardName);
    QVERIFY(!m_tabs->tabBar()->signalsBlocked());
    QVERIFY(!m_tabs->tabBar()->tabButton(1, QTabBar::LeftSide));
    // The editor is gone; the tab bar works again.
    QTRY_VERIFY(!m_tabs->tabBar()->findChild<QLineEdit *>(QStringLiteral("m_renameEditor")));
    QSignalSpy changed(m_tabs->tabBar(), &QTabBar::currentChanged);
    m_tabs->setCurrentIndex(0);
    QCOMPARE(changed.count(), 1);
}

void tst_WorkbenchTab::renameRefusedByServer()
{
    const QString inbox = m_classify->addClipboard(QStringLiteral("Inbox"));
    start();
    m_classify->log().setFailing(QStringLiteral("renameClipboard"));

    QLineEdit *editor = startRename(0);
    QVERIFY(editor);
    QTest::keyClicks(editor, QStringLiteral("Refused"));
    QTest::keyClick(editor, Qt::Key_Return);

    // The tab keeps the new text; the board and the server keep the old name.
    QCOMPARE(m_tabs->tabText(0), QStringLiteral("Refused"));
    QCOMPARE(m_tabs->boardAt(0)->getTabText(), QStringLiteral("Inbox"));
    QCOMPARE(m_classify->clipboard(inbox).name, QStringLiteral("Inbox"));
    // Until the next reload.
    m_tabs->updateData();
    QCOMPARE(m_tabs->tabText(0), QStringLiteral("Inbox"));
}

void tst_WorkbenchTab::renameReadOnlyRefused()
{
    m_classify->addClipboard(QStringLiteral("Mine"));
    m_classify->addClipboard(QStringLiteral("Theirs"), false);
    start();

    QVERIFY(!startRename(1));
    QCOMPARE(m_tabs->tabText(1), QStringLiteral("Theirs"));
    QVERIFY(!m_tabs->tabBar()->signalsBlocked());
    // Double-clicking beside the tabs renames nothing either.
    QTabBar *bar = m_tabs->tabBar();
    const QPoint outside(bar->width() + 40, bar->height() / 2);
    QCursor::setPos(bar->mapToGlobal(outside));
    emit bar->tabBarDoubleClicked(0); // the argument is ignored: the cursor decides
    QVERIFY(!bar->findChild<QLineEdit *>(QStringLiteral("m_renameEditor")));
}

void tst_WorkbenchTab::renameCommitsOnFocusLoss()
{
    const QString inbox = m_classify->addClipboard(QStringLiteral("Inbox"));
    start();
    // There is no window manager under Xvfb to activate the window.
    QApplication::setActiveWindow(m_window);
    QCOMPARE(QApplication::activeWindow(), m_window);

    QLineEdit *editor = startRename(0);
    QVERIFY(editor);
    QTRY_VERIFY(editor->hasFocus());
    QTest::keyClicks(editor, QStringLiteral("Elsewhere"));
    // Moving the focus away finishes the edit.
    m_tabs->cornerControls()->findChild<QLineEdit *>(QStringLiteral("m_tabFilter"))->setFocus();
    QTRY_COMPARE(m_tabs->tabText(0), QStringLiteral("Elsewhere"));
    QCOMPARE(m_classify->clipboard(inbox).name, QStringLiteral("Elsewhere"));
    QCOMPARE(m_classify->log().count(QStringLiteral("renameClipboard")), 1);
}

void tst_WorkbenchTab::renameEscapeRestores()
{
    m_classify->addClipboard(QStringLiteral("Inbox"));
    start();

    QLineEdit *editor = startRename(0);
    QVERIFY(editor);
    QTest::keyClicks(editor, QStringLiteral("Never mind"));
    QTest::keyClick(editor, Qt::Key_Escape);
    QCOMPARE(m_tabs->tabText(0), QStringLiteral("Inbox"));
    QCOMPARE(m_classify->log().count(QStringLiteral("renameClipboard")), 0);
    QVERIFY(!m_tabs->tabBar()->signalsBlocked());
}

void tst_WorkbenchTab::filter_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QList<bool>>("enabled"); // Inbox, Invoices 2026, Archive

    QTest::newRow("prefix") << "in" << QList<bool>{true, true, false};
    QTest::newRow("other case") << "INV" << QList<bool>{false, true, false};
    QTest::newRow("inside the name") << "2026" << QList<bool>{false, true, false};
    QTest::newRow("matches nothing") << "zzz" << QList<bool>{false, false, false};
    QTest::newRow("blank matches blank") << " " << QList<bool>{false, true, false};
}

void tst_WorkbenchTab::filter()
{
    QFETCH(QString, typed);
    QFETCH(QList<bool>, enabled);

    m_classify->addClipboard(QStringLiteral("Inbox"));
    m_classify->addClipboard(QStringLiteral("Invoices 2026"));
    m_classify->addClipboard(QStringLiteral("Archive"), false);
    start();
    auto *field = m_tabs->cornerControls()->findChild<QLineEdit *>(QStringLiteral("m_tabFilter"));

    QTest::keyClicks(field, typed);
    for (int i = 0; i < enabled.size(); ++i)
        QCOMPARE(m_tabs->isTabEnabled(i), enabled.at(i));
    QCOMPARE(m_tabs->styleSheet(), orvexworkbenchtab::fullSheet());
    // Hidden tabs are disabled, not removed.
    QCOMPARE(m_tabs->count(), 3);
    QCOMPARE(m_tabs->minimumHeight(), m_tabs->cornerControls()->height());

    // Emptying the field shows every tab again.
    field->selectAll();
    QTest::keyClick(field, Qt::Key_Backspace);
    for (int i = 0; i < enabled.size(); ++i)
        QVERIFY(m_tabs->isTabEnabled(i));
}

void tst_WorkbenchTab::addingClearsFilter()
{
    m_classify->addClipboard(QStringLiteral("Inbox"));
    m_classify->addClipboard(QStringLiteral("Archive"));
    start();
    auto *field = m_tabs->cornerControls()->findChild<QLineEdit *>(QStringLiteral("m_tabFilter"));
    QTest::keyClicks(field, QStringLiteral("arch"));
    QVERIFY(!m_tabs->isTabEnabled(0));

    clickAdd();
    QVERIFY(field->text().isEmpty());
    QCOMPARE(m_tabs->count(), 3);
    for (int i = 0; i < m_tabs->count(); ++i)
        QVERIFY(m_tabs->isTabEnabled(i));
    QCOMPARE(m_tabs->currentIndex(), 2);
}

void tst_WorkbenchTab::sheetFollowsEnabledState()
{
    m_classify->addClipboard(QStringLiteral("Inbox"));
    start();
    QCOMPARE(m_tabs->styleSheet(), orvexworkbenchtab::fullSheet());
    m_window->setEnabled(false);
    QCOMPARE(m_tabs->styleSheet(), orvexworkbenchtab::buttonOnlySheet());
    m_window->setEnabled(true);
    QCOMPARE(m_tabs->styleSheet(), orvexworkbenchtab::fullSheet());
}

void tst_WorkbenchTab::boardSignalsReachTheTabSet()
{
    m_classify->addClipboard(QStringLiteral("One"));
    m_classify->addClipboard(QStringLiteral("Two"));
    start();
    orvexwbwebview *two = m_tabs->boardAt(1);

    QSignalSpy commands(m_tabs, &orvexworkbenchtab::doCommand);
    emit two->doCommand(QStringLiteral("EXPORTDOCS"), {QStringLiteral("5"), QStringLiteral("6")});
    QCOMPARE(commands.count(), 1);
    QCOMPARE(commands.first().at(0).toString(), QStringLiteral("EXPORTDOCS"));
    QCOMPARE(commands.first().at(1).toStringList(), (QStringList{"5", "6"}));

    QCOMPARE(m_tabs->currentIndex(), 0);
    emit two->focusTab();
    QCOMPARE(m_tabs->currentIndex(), 1);

    // The board's menu asks for a new clipboard.
    emit two->addNewClipboard();
    QCOMPARE(m_tabs->count(), 3);
    QCOMPARE(m_tabs->currentIndex(), 2);

    // A board asks for the list to be re-read (after changing rights, say).
    m_classify->renameClipboard(m_tabs->boardAt(0)->getId(), QStringLiteral("Renamed"));
    emit two->reloadClipboards();
    QCOMPARE(m_tabs->tabText(0), QStringLiteral("Renamed"));
}

void tst_WorkbenchTab::refreshes()
{
    const QString one = m_classify->addClipboard(QStringLiteral("One"));
    const QString two = m_classify->addClipboard(QStringLiteral("Two"));
    m_classify->addEntry(one, QStringLiteral("17"), QStringLiteral("1017"));
    m_classify->addEntry(two, QStringLiteral("18"), QStringLiteral("1018"));
    start();
    // Give both boards their cards, so that their updates have work to do.
    QTRY_COMPARE_WITH_TIMEOUT(m_tabs->boardAt(0)->cardCount(), 1, kLong);
    m_tabs->setCurrentIndex(1);
    QTRY_COMPARE_WITH_TIMEOUT(m_tabs->boardAt(1)->cardCount(), 1, kLong);
    QTRY_VERIFY_WITH_TIMEOUT(m_classify->log().count(QStringLiteral("searchDocuments")) >= 2, kLong);
    QTest::qWait(100);

    // Light refresh: the list, then every board's update.
    m_classify->log().clear();
    m_tabs->updateData();
    QCOMPARE(m_classify->log().count(QStringLiteral("getClipboards")), 1);
    QTRY_COMPARE_WITH_TIMEOUT(m_classify->log().count(QStringLiteral("searchDocuments")), 2, kLong);
    QCOMPARE(m_classify->log().count(QStringLiteral("getDocumentTypes")), 0);

    // Full reload: the classification tables and the update, no list.
    m_classify->log().clear();
    m_tabs->reloadData();
    QCOMPARE(m_classify->log().count(QStringLiteral("getDocumentTypes")), 2);
    QCOMPARE(m_classify->log().count(QStringLiteral("getDocumentStatuses")), 2);
    QTRY_COMPARE_WITH_TIMEOUT(m_classify->log().count(QStringLiteral("searchDocuments")), 2, kLong);
    QCOMPARE(m_classify->log().count(QStringLiteral("getClipboards")), 0);
}

void tst_WorkbenchTab::archiveClientReachesEveryBoard()
{
    m_classify->addClipboard(QStringLiteral("One"));
    m_classify->addClipboard(QStringLiteral("Two"));
    m_tabs->setClassifyClient(m_classify);
    m_tabs->setChooser(m_chooser);
    QCOMPARE(m_tabs->count(), 2);
    QVERIFY(!m_tabs->archiveClient());

    // Given later (after the connection chain), it reaches the open boards.
    m_tabs->setArchiveClient(m_archive);
    QCOMPARE(m_tabs->archiveClient(), m_archive);
    // A board gives its archive client's connection back when it goes.
    delete m_window;
    m_window = nullptr;
    QCOMPARE(m_archive->log().count(QStringLiteral("resetConnection")), 2);
}

void tst_WorkbenchTab::stopStopsEveryBoard()
{
    const QString one = m_classify->addClipboard(QStringLiteral("One"));
    m_classify->addClipboard(QStringLiteral("Two"));
    m_classify->addEntry(one, QStringLiteral("17"), QStringLiteral("1017"));
    start();
    QTRY_COMPARE_WITH_TIMEOUT(m_tabs->boardAt(0)->cardCount(), 1, kLong);

    // An update job is inside the server call when stop() comes.
    orvexwbwebview *board = m_tabs->boardAt(0);
    CallLog &log = m_classify->log();
    const QString call = QStringLiteral("getClipboardDocuments");
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
    // stop() waited for the running job.
    QCOMPARE(int(released), 1);
    releaser.waitForFinished();
    for (orvexwbwebview *each : m_tabs->boards()) {
        QVERIFY(each->isStopped());
        QVERIFY(each->signalsBlocked());
    }
    // No new work starts.
    log.setStalled(call, false);
    m_classify->log().clear();
    m_tabs->reloadData();
    m_tabs->boardAt(0)->reloadCards();
    QTest::qWait(200);
    QCOMPARE(m_classify->log().count(QStringLiteral("getClipboardDocuments")), 0);
    QCOMPARE(m_classify->log().count(QStringLiteral("searchDocuments")), 0);
}

void tst_WorkbenchTab::destructionOrder()
{
    m_classify->addClipboard(QStringLiteral("One"));
    m_classify->addClipboard(QStringLiteral("Two"));
    start();

    messages.clear();
    QLoggingCategory::setFilterRules(QStringLiteral("orvex.workbench.debug=true"));
    previousHandler = qInstallMessageHandler(recordMessage);
    delete m_window;
    m_window = nullptr;
    qInstallMessageHandler(previousHandler);

    QStringList tags;
    for (const QString &message : qAsConst(messages))
        for (const char *tag : {"DESTROY TAB", "STOP STARTED", "STOP", "TAP STOP FINISHED", "TAB DESTROYED",
                                "WEBVIEW DESTROYED"})
            if (message == QLatin1String(tag))
                tags << message;
    // Both boards are stopped before the tab set is done, and go after it
    // (a board stops itself once more on its way out).
    QCOMPARE(tags, (QStringList{"DESTROY TAB", "STOP STARTED", "STOP", "STOP", "TAP STOP FINISHED",
                                "TAB DESTROYED", "STOP", "WEBVIEW DESTROYED", "STOP", "WEBVIEW DESTROYED"}));
}

QTEST_MAIN(tst_WorkbenchTab)
#include "tst_workbenchtab.moc"
