// The card board with its real page in QtWebEngine: every check reads the DOM
// back through runJavaScript, against the recording client doubles.
#include "boardpage.h"
#include "dropdelivery.h"
#include "germancatalogue.h"
#include "modalanswerer.h"
#include "orvexcardscripts.h"
#include "orvextranslations.h"
#include "orvexundooffer.h"
#include "orvexwbwebview.h"
#include "recordingarchiveclient.h"
#include "recordingclassifyclient.h"
#include "snackbarcatcher.h"

#include <QPointer>
#include <QProgressDialog>
#include <QSignalSpy>
#include <QTabBar>
#include <QTabWidget>
#include <QThread>
#include <QWebEnginePage>
#include <QScopeGuard>
#include <QtTest>

#include <algorithm>
#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <thread>

namespace {

const QChar kSep(0xFEFF);
const int kTimeout = BoardPage::Timeout;

// Whether an operation the board must keep off the GUI thread ever ran on it.
struct GuiThreadWatch
{
    std::atomic<int> onGuiThread{0};
    void note() { onGuiThread += QThread::currentThread() == qApp->thread() ? 1 : 0; }
};

class ArchiveDouble : public RecordingArchiveClient
{
public:
    GuiThreadWatch watch;
    std::optional<int> pageCount; // answered instead of the document's
    QByteArray getDocumentThumbnail(int docId, int page, int size, int &pages, QString &format,
                                    int option1, int option2, int version) override
    {
        watch.note();
        const QByteArray image = RecordingArchiveClient::getDocumentThumbnail(docId, page, size, pages, format,
                                                                              option1, option2, version);
        if (pageCount)
            pages = *pageCount;
        return image;
    }
};

class ClassifyDouble : public RecordingClassifyClient
{
public:
    GuiThreadWatch watch;
    QStringList getCardInfo(QString docsId, QString option) override
    {
        watch.note();
        return RecordingClassifyClient::getCardInfo(docsId, option);
    }
    QStringList searchDocuments(QStringList criteria) override
    {
        // Only the user's own search runs on the GUI thread; the update must not.
        if (!criteria.contains("OPT:SELECTION;-1"))
            watch.note();
        return RecordingClassifyClient::searchDocuments(criteria);
    }
    std::function<void()> onAdd; // runs inside each addToClipboard
    bool addToClipboard(QString clipboardId, QString docId, QString docsId) override
    {
        if (onAdd)
            onAdd();
        return RecordingClassifyClient::addToClipboard(clipboardId, docId, docsId);
    }
};

QVariant js(QWebEngineView *view, const QString &script) { return BoardPage::run(view, script); }

QString text(QWebEngineView *v, const QString &sel) { return js(v, QString("$('%1').text()").arg(sel)).toString(); }
QString value(QWebEngineView *v, const QString &sel) { return js(v, QString("$('%1').val()").arg(sel)).toString(); }
bool visible(QWebEngineView *v, const QString &sel) { return js(v, QString("$('%1').is(':visible')").arg(sel)).toBool(); }
bool has(QWebEngineView *v, const QString &sel, const QString &attr)
{
    return js(v, QString("$('%1').is('[%2]')").arg(sel, attr)).toBool();
}
int sections(QWebEngineView *v) { return js(v, "$('#overview section').length").toInt(); }
QString order(QWebEngineView *v)
{
    return js(v, "$('#overview section').map(function(){return $(this).attr('data-docsid');}).get().join(',')").toString();
}

QImage imageOf(QWebEngineView *view, const QString &cardId)
{
    const QString source = js(view, QString("$('#img-%1').attr('src') || ''").arg(cardId)).toString();
    const QString prefix = "data:image/png;base64,";
    if (!source.startsWith(prefix))
        return QImage();
    return QImage::fromData(QByteArray::fromBase64(source.mid(prefix.size()).toLatin1()), "PNG");
}

// Releases a stalled operation from another thread while the GUI thread is
// blocked in the call under test.
struct DelayedRelease
{
    DelayedRelease(CallLog &log, const QString &op)
        : m_thread([this, &log, op] { std::this_thread::sleep_for(std::chrono::milliseconds(300)); released = true; log.release(op); })
    {
    }
    ~DelayedRelease() { m_thread.join(); }
    std::atomic<bool> released{false};
    std::thread m_thread;
};

QtMessageHandler previousHandler = nullptr;
std::atomic<int> channelWarnings{0};

// The web channel warns about each published property without a change signal.
void countChannelWarnings(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    if (message.contains(QLatin1String("has no notify signal")))
        ++channelWarnings;
    previousHandler(type, context, message);
}

} // namespace

class tst_Board : public QObject
{
    Q_OBJECT

public:
    static void initMain() { previousHandler = qInstallMessageHandler(countChannelWarnings); }

private slots:
    void init()
    {
        QStandardPaths::setTestModeEnabled(true);
        m_classify = new ClassifyDouble;
        m_archive = new ArchiveDouble;
        m_classify->setDocumentType("T1", "Invoice");
        m_classify->setDocumentType("T2", "Letter");
        m_classify->setDocumentStatus("S1", "Approved");
        m_clip = m_classify->addClipboard("Work");
    }

    void cleanup()
    {
        for (const QPointer<orvexwbwebview> &board : qAsConst(m_boards)) {
            if (board)
                board->stop();
            delete board;
        }
        m_boards.clear();
        delete m_classify;
        delete m_archive;
        QLocale::setDefault(QLocale::c());
    }

    void cardsShowFieldsNotesAndOrder()
    {
        orvexwbwebview *board = boardWith(4);
        QTRY_COMPARE_WITH_TIMEOUT(text(board, "#status-503"), QString("Approved"), kTimeout);
        QCOMPARE(text(board, "#doctype-500"), QString("Invoice"));
        QCOMPARE(text(board, "#status-502"), QString("Unkown"));
        QCOMPARE(value(board, "#textarea-501"), QString("Note of one"));
        QTRY_COMPARE_WITH_TIMEOUT(order(board), QString("503,502,501,500"), kTimeout);
        QCOMPARE(m_classify->watch.onGuiThread.load(), 0);
    }

    void countLineAndDropZoneFollowCards()
    {
        orvexwbwebview *board = createBoard();
        QTRY_VERIFY_WITH_TIMEOUT(visible(board, "#drop_zone"), kTimeout);
        addCards(2); // on the server only, as a drop stores them

        QVERIFY(!board->appendCard("100", "500").isEmpty());
        QTRY_COMPARE_WITH_TIMEOUT(text(board, "#info"), QString("1 / 200 (max)"), kTimeout);
        QVERIFY(!visible(board, "#drop_zone"));
        QTRY_COMPARE_WITH_TIMEOUT(text(board, "#comment-500"), QString("Title 0"), kTimeout); // info on the pool
        QVERIFY(!board->appendCard("101", "501", "hello").isEmpty());
        QTRY_COMPARE_WITH_TIMEOUT(text(board, "#info"), QString("2 / 200 (max)"), kTimeout);
        QCOMPARE(value(board, "#textarea-501"), QString("hello"));

        // Without cards the drop zone shows again; the update's removal leaves the server alone.
        board->removeCard("501", false);
        QTRY_COMPARE_WITH_TIMEOUT(sections(board), 1, kTimeout);
        QVERIFY(!visible(board, "#drop_zone"));
        board->removeCard("500", false);
        QTRY_VERIFY_WITH_TIMEOUT(visible(board, "#drop_zone"), kTimeout);
        QCOMPARE(count("removeFromClipboard"), 0);
    }

    // The scripts of one turn of the event loop reach the page in one run: a
    // removal right after an addition still wins, and a script that fails
    // does not stop the next.
    void scriptsOfOneTurnKeepTheirOrder()
    {
        orvexwbwebview *board = createBoard();
        addCards(2);
        QVERIFY(!board->appendCard("100", "500").isEmpty());
        board->removeCard("500", false);
        emit board->javascript(QStringLiteral("throw new Error('a script fails');"));
        QVERIFY(!board->appendCard("101", "501").isEmpty());
        QTRY_COMPARE_WITH_TIMEOUT(text(board, "#info"), QString("1 / 200 (max)"), kTimeout);
        QCOMPARE(order(board), QString("501"));
    }

    // Failed before: a card's close button removed card and note at once, with no way back.
    void cardRemovalCanBeUndone_data()
    {
        QTest::addColumn<QString>("then"); // "undo", "wait" (the time runs out), "close" (the board goes), "clear"
        QTest::addColumn<bool>("serverFails");
        QTest::addColumn<bool>("removed"); // from the server in the end
        QTest::addColumn<QString>("told"); // the last status message
        QTest::newRow("undo") << "undo" << false << false << "";
        QTest::newRow("time runs out") << "wait" << false << true << "";
        QTest::newRow("board closes") << "close" << false << true << "";
        QTest::newRow("clipboard cleared meanwhile") << "clear" << false << true << "";
        QTest::newRow("server refuses") << "wait" << true << false
                                        << "Card 101 could not be removed from clipboard Work.";
    }
    void cardRemovalCanBeUndone()
    {
        QFETCH(QString, then);
        QFETCH(bool, serverFails);
        QFETCH(bool, removed);
        QFETCH(QString, told);
        OrvexUndoOffer::setMilliseconds(then == "undo" ? 60000 : 2500); // long enough for the checks meanwhile
        auto restore = qScopeGuard([] { OrvexUndoOffer::setMilliseconds(OrvexUndoOffer::DefaultMilliseconds); });
        orvexwbwebview *board = boardWith(4);
        board->setTabText("Work");
        QTRY_COMPARE_WITH_TIMEOUT(order(board), QString("503,502,501,500"), kTimeout);
        m_classify->log().setFailing("removeFromClipboard", serverFails);
        SnackbarCatcher snackbars;

        js(board, "$('#removebutton-501').click()"); // the card with a note, between two others
        QTRY_COMPARE_WITH_TIMEOUT(order(board), QString("503,502,500"), kTimeout);
        QTRY_COMPARE(snackbars.texts.value(0), QStringLiteral("app:Card 101 removed from clipboard Work."));
        QVERIFY(snackbars.lastAction());
        QCOMPARE(snackbars.lastAction()->text(), QStringLiteral("Undo"));
        QTRY_COMPARE_WITH_TIMEOUT(text(board, "#info"), QString("3 / 200 (max)"), kTimeout);
        // Still on the server meanwhile, and neither an update nor a reload brings it back.
        QCOMPARE(count("removeFromClipboard"), 0);
        BoardPage::runUpdate(board);
        board->reloadCards();
        QTest::qWait(200);
        QCOMPARE(order(board), QString("503,502,500"));

        if (then == "undo") {
            snackbars.lastAction()->trigger();
        } else if (then == "close") {
            m_boards.removeAll(board);
            delete board;
            QCOMPARE(count("removeFromClipboard"), 1);
            QCOMPARE(m_classify->clipboard(m_clip).entries.size(), 3);
            return;
        } else if (then == "clear") {
            // The clearing takes the entry along: no second removal, no failure told.
            board->clearClipboard();
            QTRY_VERIFY(!snackbars.lastAction());
            QCOMPARE(count("removeFromClipboard"), 0);
            QCOMPARE(m_classify->clipboard(m_clip).entries.size(), 0);
            QTest::qWait(200);
            QCOMPARE(snackbars.texts.size(), 1);
            return;
        }
        QTRY_VERIFY_WITH_TIMEOUT(!snackbars.lastAction(), kTimeout); // the offer is over either way
        QCOMPARE(count("removeFromClipboard"), then == "wait" ? 1 : 0);
        QCOMPARE(m_classify->clipboard(m_clip).entries.size(), removed ? 3 : 4);
        if (!told.isEmpty())
            QTRY_COMPARE(snackbars.texts.last(), QStringLiteral("app:") + told);
        if (removed) {
            QTest::qWait(200);
            QCOMPARE(order(board), QString("503,502,500"));
            return;
        }
        // Back in its place, with its note and its info lines.
        QTRY_COMPARE_WITH_TIMEOUT(order(board), QString("503,502,501,500"), kTimeout);
        QTRY_COMPARE_WITH_TIMEOUT(value(board, "#textarea-501"), QString("Note of one"), kTimeout);
        QTRY_COMPARE_WITH_TIMEOUT(text(board, "#comment-501"), QString("Title 1"), kTimeout);
        QTRY_COMPARE_WITH_TIMEOUT(text(board, "#info"), QString("4 / 200 (max)"), kTimeout);
    }

    void limitAndDuplicatesAreRefused()
    {
        for (int i = 0; i < 201; ++i)
            m_classify->addEntry(m_clip, QString::number(1000 + i), QString::number(5000 + i));
        orvexwbwebview *board = createBoard();
        waitForCards(board, 200, false);
        QTRY_COMPARE_WITH_TIMEOUT(text(board, "#info"), QString("200 / 200 (max)"), kTimeout);
        QVERIFY(board->appendCard("9999", "9999").isEmpty());
        board->removeCard("5000", false);
        QVERIFY(!board->appendCard("9999", "9999").isEmpty());
        QVERIFY(board->appendCard("9999", "9999").isEmpty()); // the same id again
        QTRY_COMPARE_WITH_TIMEOUT(js(board, "$('[id=section-9999]').length").toInt(), 1, kTimeout);
        QCOMPARE(sections(board), 200);
    }

    void badIdsAreRefusedBeforeAnyScript_data()
    {
        QTest::addColumn<QString>("id");
        QTest::newRow("script") << "1');alert('x";
        QTest::newRow("empty") << "";
        QTest::newRow("decimal") << "7.5";
    }

    void badIdsAreRefusedBeforeAnyScript()
    {
        QFETCH(QString, id);
        orvexwbwebview *board = createBoard(true, false);
        QSignalSpy scripts(board, &orvexwbwebview::javascript);

        QVERIFY(board->appendCard(id, "7").isEmpty());
        QVERIFY(board->appendCard("7", id).isEmpty());
        board->removeCard(id, true);
        board->updateComment(id, "x");
        board->setCardData(id, {"7", id, "t", "T1", "", "", "S1"});
        QVERIFY(board->getCardPixmap(id, "7", "0").isEmpty());
        QVERIFY(board->getCardPixmap("7", id, "0").isEmpty());
        QVERIFY(board->getCardPixmap("7", "7", id).isEmpty());
        board->doReloadCardPixmap(id, "7", "0", "1");
        board->doReloadCardPixmap("7", id, "0", "1");
        board->saveCard(id, "note");

        QCOMPARE(scripts.count(), 0);
        board->searchCards("anything"); // nor does an empty board search
        QCOMPARE(board->cardCount(), 0);
        QCOMPARE(count("removeFromClipboard") + count("setClipboardComment") + count("searchDocuments"), 0);
        QCOMPARE(m_archive->log().count("getDocumentThumbnail"), 0);
    }

    void malformedServerAnswers()
    {
        addCards(3);
        // Types without names and no statuses at all: both lines read unknown.
        m_classify->log().setShortRecords("getDocumentTypes");
        m_classify->log().setFailing("getDocumentStatuses");
        orvexwbwebview *board = createBoard();
        waitForCards(board, 3);
        QCOMPARE(text(board, "#doctype-500"), QString("Unkown"));
        QCOMPARE(text(board, "#status-500"), QString("Unkown"));

        // Short card info leaves the lines empty; missing fields of card data count as empty.
        m_classify->log().setShortRecords("getCardInfo");
        m_classify->addEntry(m_clip, "104", "504");
        QVERIFY(!board->appendCard("104", "504").isEmpty());
        QTRY_COMPARE_WITH_TIMEOUT(count("getCardInfo"), 1, kTimeout);
        board->setCardData("504", {"x"});
        QTRY_COMPARE_WITH_TIMEOUT(text(board, "#status-504"), QString("Unkown"), kTimeout);
        QCOMPARE(text(board, "#comment-504"), QString());

        // Entries without an entry id give no card; search rows without "#" match none.
        m_classify->log().setShortRecords("getClipboardDocuments");
        m_classify->log().setShortRecords("searchDocuments");
        orvexwbwebview *other = createBoard();
        QTRY_VERIFY_WITH_TIMEOUT(count("getClipboardDocuments") >= 2, kTimeout);
        QCOMPARE(other->cardCount(), 0);
        board->searchCards("Title");
        QTRY_VERIFY_WITH_TIMEOUT(!visible(board, "#overview section"), kTimeout);
        QCOMPARE(m_classify->clipboard(m_clip).entries.size(), 4);
    }

    void readOnlySwitch_data()
    {
        QTest::addColumn<bool>("writeable");
        QTest::newRow("writeable") << true;
        QTest::newRow("read-only") << false;
    }

    void readOnlySwitch()
    {
        QFETCH(bool, writeable);
        orvexwbwebview *board = boardWith(2, !writeable);

        // The flag switches the menu; the next update carries the per-card switch.
        board->setWriteable(writeable);
        board->updateCards();
        for (const QString item : {"#clippermission", "#clearclip", "#removeclip"})
            QTRY_COMPARE_WITH_TIMEOUT(has(board, item, "disabled"), !writeable, kTimeout);
        for (const QString card : {"500", "501"}) {
            QTRY_COMPARE_WITH_TIMEOUT(has(board, "#textarea-" + card, "readonly"), !writeable, kTimeout);
            QTRY_COMPARE_WITH_TIMEOUT(has(board, "#removecard-" + card, "disabled"), !writeable, kTimeout);
        }

        // Removing the clipboard and clearing the page need a writeable board; the
        // server is asked to clear either way. The last command shows that the channel delivered all.
        QSignalSpy remove(board, &orvexwbwebview::doRemoveClipboard);
        QSignalSpy commands(board, &orvexwbwebview::doCommand);
        js(board, "removeClipboard(); clearClipboard(); exportDocuments();");
        QTRY_COMPARE_WITH_TIMEOUT(commands.count(), 1, kTimeout);
        QCOMPARE(remove.count(), writeable ? 1 : 0);
        QCOMPARE(m_classify->log().last("clearClipboard").args, QVariantList({m_clip}));
        QTRY_COMPARE_WITH_TIMEOUT(sections(board), writeable ? 0 : 2, kTimeout);
        if (!writeable) {
            board->setPermissions(); // no dialog on a read-only board
            QCOMPARE(count("getAllRoles"), 0);
            // Nor are its cards removed when the page asks.
            board->setTabText("Work");
            SnackbarCatcher snackbars;
            board->removeCard("501", true);
            QTRY_COMPARE(snackbars.texts, QStringList{"app:Clipboard Work is read-only: cards cannot be removed from it."});
            QCOMPARE(sections(board), 2);
            QCOMPARE(count("removeFromClipboard"), 0);
        }
    }

    void notes()
    {
        orvexwbwebview *board = boardWith(2);

        // Leaving an edited note field saves it.
        typeNote(board, "500", "Check the total");
        QTRY_COMPARE_WITH_TIMEOUT(count("setClipboardComment"), 1, kTimeout);
        QCOMPARE(m_classify->log().last("setClipboardComment").args, QVariantList({m_clip, "500", "Check the total"}));

        // Notes at and beyond the field's limit reach the server unchanged, and come
        // back whole, apostrophe included, with the next update.
        const QString longNote = QString(1500, 'n') + "'s end";
        board->saveCard("501", longNote);
        QCOMPARE(m_classify->clipboard(m_clip).entries.at(1).comment, longNote);
        m_classify->setClipboardComment(m_clip, "500", "Anna's copy");
        board->updateCards();
        QTRY_COMPARE_WITH_TIMEOUT(value(board, "#textarea-500"), QString("Anna's copy"), kTimeout);
        QTRY_COMPARE_WITH_TIMEOUT(value(board, "#textarea-501"), longNote, kTimeout);
    }

    // What the user typed into a note field stays there until it is saved.
    void notesLeftAsTyped_data()
    {
        QTest::addColumn<QString>("stored");  // the note on the server
        QTest::addColumn<QString>("typed");   // null: the field is entered and left without an edit
        QTest::addColumn<bool>("changedElsewhere"); // an update brings another note while it is typed
        QTest::addColumn<bool>("refused");    // the server refuses to save
        QTest::newRow("leaving an unedited field saved it") << "Anna's" << QString() << false << false;
        QTest::newRow("C:\\temp\\new was saved back as tab and line feed")
            << "C:\\temp\\new" << QString() << false << false;
        QTest::newRow("an update replaced the note being typed") << "old" << "my words" << true << false;
        QTest::newRow("a refused note was replaced by the next update") << "old" << "my words" << true << true;
    }

    void notesLeftAsTyped()
    {
        QFETCH(QString, stored);
        QFETCH(QString, typed);
        QFETCH(bool, changedElsewhere);
        QFETCH(bool, refused);
        addCards(1);
        m_classify->setClipboardComment(m_clip, "500", stored);
        orvexwbwebview *board = createBoard();
        waitForCards(board, 1);
        QTRY_COMPARE_WITH_TIMEOUT(value(board, "#textarea-500"), stored, kTimeout);
        const auto saves = [this](const QString &text) {
            int saved = 0;
            for (const CallLog::Call &call : m_classify->log().callsOf("setClipboardComment"))
                saved += call.args.value(2).toString() == text ? 1 : 0;
            return saved;
        };

        if (typed.isNull()) {
            typeNote(board, "500", typed);
            runUpdate(board);
            QCOMPARE(count("setClipboardComment"), 1); // the test's own
            QCOMPARE(value(board, "#textarea-500"), stored);
            return;
        }
        typeNote(board, "500", typed, false);
        if (changedElsewhere) {
            m_classify->setClipboardComment(m_clip, "500", "changed elsewhere");
            runUpdate(board);
            QCOMPARE(value(board, "#textarea-500"), stored + typed);
        }
        m_classify->log().setFailing("setClipboardComment", refused);
        SnackbarCatcher snackbars;
        typeNote(board, "500", QString());
        QTRY_COMPARE_WITH_TIMEOUT(saves(stored + typed), 1, kTimeout);
        QTRY_COMPARE(snackbars.texts.size(), refused ? 1 : 0); // the user is told
        QCOMPARE(m_classify->clipboard(m_clip).entries.at(0).comment,
                 refused ? QString("changed elsewhere") : stored + typed);
        // Refused, the note stays as typed, and leaving the field again offers it again.
        runUpdate(board);
        QCOMPARE(value(board, "#textarea-500"), stored + typed);
        if (!refused)
            return;
        m_classify->log().setFailing("setClipboardComment", false);
        typeNote(board, "500", QString());
        QTRY_COMPARE_WITH_TIMEOUT(saves(stored + typed), 2, kTimeout);
        QCOMPARE(m_classify->clipboard(m_clip).entries.at(0).comment, stored + typed);
    }

    // Texts from the server and the catalogue are shown as the characters
    // they are: markup in them is not parsed.
    void textsShownAsText()
    {
        const QString markup = "<b>bold</b> & <img src=x onerror=\"window.hacked=1\"> &amp;";
        m_classify->setDocumentType("T1", markup);
        addCards(1);
        m_classify->addDocument({"100", markup + " title", "T1", "S1", "", 1});
        orvexwbwebview *board = createBoard();
        QTRY_COMPARE_WITH_TIMEOUT(text(board, "#doctype-500"), markup, kTimeout);
        QTRY_COMPARE_WITH_TIMEOUT(text(board, "#comment-500"), markup + " title", kTimeout);
        board->doJavascript(orvexcardscripts::translation("Permissions", markup));
        QTRY_COMPARE_WITH_TIMEOUT(text(board, "#trans-Permissions"), markup, kTimeout);
        QCOMPARE(js(board, "$('b, img:not([id^=img-])').length").toInt(), 0);
        QCOMPARE(js(board, "typeof window.hacked").toString(), QString("undefined"));
    }

    void search_data()
    {
        QTest::addColumn<QString>("locale");
        QTest::addColumn<QString>("input");
        QTest::addColumn<QString>("term");
        QTest::addColumn<QStringList>("shown");
        QTest::newRow("integer also as decimal") << "C" << "20" << "20 OR 20.0" << QStringList{"502"};
        QTest::newRow("words, trimmed") << "C" << "  Title 1 " << "Title 1" << QStringList{"501"};
        QTest::newRow("German decimal comma") << "de_DE" << "12,5" << "12.5" << QStringList();
    }

    void search()
    {
        QFETCH(QString, locale);
        QFETCH(QString, input);
        QFETCH(QString, term);
        QFETCH(QStringList, shown);
        QLocale::setDefault(QLocale(locale));
        orvexwbwebview *board = boardWith(3);
        m_classify->log().clear();

        board->searchCards(input);
        const QStringList criteria{"OPT:SELECTION;-1", "OPT:FULLTEXT" + QString(kSep) + term,
                                   "docs_id in (" + board->cardIds().join(',') + ",0)", "OPT:LIMIT;1000"};
        QCOMPARE(count("searchDocuments"), 1);
        QCOMPARE(m_classify->log().last("searchDocuments").args.value(0).toStringList(), criteria);
        for (const QString &id : board->cardIds())
            QTRY_COMPARE_WITH_TIMEOUT(visible(board, "#section-" + id), shown.contains(id), kTimeout);

        // "*" shows every card again without asking the server.
        board->searchCards("*");
        QTRY_COMPARE_WITH_TIMEOUT(js(board, "$('#overview section:visible').length").toInt(), 3, kTimeout);
        QCOMPARE(count("searchDocuments"), 1);
    }

    void backgroundUpdateReconciles()
    {
        orvexwbwebview *board = boardWith(3);

        // Meanwhile on the server: one entry gone, one new, one note changed.
        m_classify->removeFromClipboard(m_clip, "502");
        m_classify->addDocument({"777", "Fresh", "T2", "S1", "", 1});
        m_classify->addEntry(m_clip, "777", "900", "new note");
        m_classify->setClipboardComment(m_clip, "500", "changed");
        m_classify->log().clear();

        board->updateCards();
        QTRY_COMPARE_WITH_TIMEOUT(order(board), QString("900,501,500"), kTimeout);
        QTRY_COMPARE_WITH_TIMEOUT(text(board, "#comment-900"), QString("Fresh"), kTimeout);
        QTRY_COMPARE_WITH_TIMEOUT(value(board, "#textarea-500"), QString("changed"), kTimeout);
        QCOMPARE(value(board, "#textarea-900"), QString("new note"));
        // A card that vanished on the server is only taken off the page.
        QCOMPARE(count("removeFromClipboard"), 0);
        QCOMPARE(m_classify->watch.onGuiThread.load(), 0);

    }

    // A failed query is no empty clipboard and no empty search result.
    void failedQueriesLeaveTheCards_data()
    {
        QTest::addColumn<QStringList>("failing");
        QTest::addColumn<QString>("search"); // empty: the background update and a reload
        QTest::newRow("entries failed, search worked: every card went")
            << QStringList{"getClipboardDocuments"} << QString();
        QTest::newRow("both failed") << QStringList{"getClipboardDocuments", "searchDocuments"} << QString();
        QTest::newRow("the search failed") << QStringList{"searchDocuments"} << QString();
        QTest::newRow("the user's search failed: every card was hidden")
            << QStringList{"searchDocuments"} << "Title 1";
    }

    void failedQueriesLeaveTheCards()
    {
        QFETCH(QStringList, failing);
        QFETCH(QString, search);
        orvexwbwebview *board = boardWith(3);
        m_classify->setClipboardComment(m_clip, "500", "changed");
        for (const QString &operation : failing)
            m_classify->log().setFailing(operation);
        if (!search.isEmpty()) {
            board->searchCards(search);
            QCOMPARE(count("searchDocuments", "OPT:SELECTION;-1"), 1);
        } else {
            runUpdate(board);
            board->reloadCards();
        }
        QCOMPARE(sections(board), 3);
        QCOMPARE(js(board, "$('#overview section:visible').length").toInt(), 3);
        QCOMPARE(board->cardCount(), 3);
        QCOMPARE(count("removeFromClipboard"), 0);
    }

    // A page count that is missing, negative or not a number leaves the card
    // usable, with one page.
    void pageCountFallback_data()
    {
        QTest::addColumn<int>("pages");
        QTest::newRow("negative: the card stayed on Loading... for good") << -3;
        QTest::newRow("none") << 0;
    }

    void pageCountFallback()
    {
        QFETCH(int, pages);
        m_archive->pageCount = pages;
        orvexwbwebview *board = boardWith(1);
        QTRY_VERIFY_WITH_TIMEOUT(!imageOf(board, "500").isNull(), kTimeout);
        QTRY_VERIFY_WITH_TIMEOUT(visible(board, "#img-500"), kTimeout);
        QVERIFY(!visible(board, "#spinner-500"));
        QCOMPARE(js(board, "String($('#img-500').data('maxpage'))").toString(), QString("1"));
        QVERIFY(has(board, "#btn-next-500", "disabled"));
        board->doReloadCardPixmap("500", "100", "0", QString::number(pages));
        QTRY_COMPARE_WITH_TIMEOUT(m_archive->log().count("getDocumentThumbnail"), 2, kTimeout);
        QCOMPARE(js(board, "String($('#img-500').data('maxpage'))").toString(), QString("1"));
    }

    // The page reaches the board's operations and nothing of the view itself.
    void pageReachesOnlyItsOperations()
    {
        orvexwbwebview *board = createBoard(true, false);
        QTRY_VERIFY_WITH_TIMEOUT(js(board, "cardHandler !== null").toBool(), kTimeout);
        // Leaves out what the channel gives every published object, and the
        // second name of each method, its signature.
        const QString operations = js(board, R"(
            var own = ['unwrapQObject', 'unwrapProperties', 'propertyUpdate', 'signalEmitted', 'deleteLater'];
            Object.keys(cardHandler).filter(function (k) {
                return typeof cardHandler[k] === 'function' && own.indexOf(k) < 0 && k.indexOf('(') < 0;
            }).sort().join(','))").toString();
        QStringList expected{"addClipboard", "clearClipboard", "removeClipboard", "exportDocuments",
                             "mailDocuments", "setPermissions", "removeCard", "openDocument",
                             "showClassification", "saveCard", "noteCut", "searchCards", "getCardPixmap",
                             "startDrag", "stopDrag", "dragCard"};
        expected.sort();
        QCOMPARE(operations, expected.join(','));
        const QString reachable = js(board, R"(
            ['close', 'load', 'setUrl', 'reload', 'url', 'title', 'zoomFactor', 'windowTitle',
             'getTranslation', 'doJavascript', 'appendCard', 'unlock', 'stop', 'setPix'].filter(
                function (k) { return typeof cardHandler[k] !== 'undefined'; }).join(','))").toString();
        QCOMPARE(reachable, QString());
        QCOMPARE(channelWarnings.load(), 0);
    }

    void hostCommands_data()
    {
        QTest::addColumn<QString>("script");
        QTest::addColumn<QString>("command");
        QTest::addColumn<QStringList>("args");
        QTest::newRow("open") << "openDocument(501,101)" << "OPENDOC" << QStringList{"101", "Title 1", "501"};
        QTest::newRow("classification") << "showClassification(500)" << "SHOWCLASSIFICATION" << QStringList{"500"};
        QTest::newRow("export") << "exportDocuments()" << "EXPORTDOCS" << QStringList{"500", "501"};
    }

    void hostCommands()
    {
        QFETCH(QString, script);
        QFETCH(QString, command);
        QFETCH(QStringList, args);
        orvexwbwebview *board = boardWith(2);
        QTRY_COMPARE_WITH_TIMEOUT(text(board, "#comment-501"), QString("Title 1"), kTimeout);

        QSignalSpy commands(board, &orvexwbwebview::doCommand);
        js(board, script);
        QTRY_COMPARE_WITH_TIMEOUT(commands.count(), 1, kTimeout);
        QCOMPARE(commands.first().at(0).toString(), command);
        QStringList sent = commands.first().at(1).toStringList();
        std::sort(sent.begin(), sent.end()); // hash order
        std::sort(args.begin(), args.end());
        QCOMPARE(sent, args);
    }

    void permissions_data()
    {
        QTest::addColumn<QStringList>("rights");
        QTest::addColumn<bool>("accept");
        QTest::addColumn<QStringList>("stored");
        const QString w = QString(kSep) + 'W', r = QString(kSep) + 'R', lead = "x" + QString(kSep);
        QTest::newRow("accepted") << QStringList{lead + "anna" + r, lead + "team" + w} << true
                                  << QStringList{"team" + w, "anna" + r};
        QTest::newRow("nobody may edit") << QStringList{lead + "anna" + r} << true << QStringList();
        QTest::newRow("rejected") << QStringList{lead + "team" + w} << false << QStringList();
    }

    void permissions()
    {
        QFETCH(QStringList, rights);
        QFETCH(bool, accept);
        QFETCH(QStringList, stored);
        m_classify->setAllRoles({"anna", "team", "bob"});
        m_classify->setRawClipboardRoles(m_clip, rights);
        orvexwbwebview *board = createBoard(true, false);
        QSignalSpy reload(board, &orvexwbwebview::reloadClipboards);
        QSignalSpy commands(board, &orvexwbwebview::doCommand);
        std::unique_ptr<ModalAnswerer> boxAnswer;
        ModalAnswerer dialogAnswer([&](QWidget *modal) {
            boxAnswer.reset(new ModalAnswerer(QMessageBox::Ok));
            accept ? qobject_cast<QDialog *>(modal)->accept() : qobject_cast<QDialog *>(modal)->reject();
        });
        // The page's menu entry opens the dialog; the command after it shows when the call is done.
        js(board, "permissions(); mailDocuments();");
        QTRY_COMPARE_WITH_TIMEOUT(commands.count(), 1, kTimeout);
        QVERIFY(dialogAnswer.answered());
        QCOMPARE(reload.count(), accept ? 1 : 0);

        QCOMPARE(boxAnswer->answered(), accept && stored.isEmpty()); // the error box
        if (stored.isEmpty()) {
            QCOMPARE(count("setClipboardRoles"), 0);
            QCOMPARE(m_classify->clipboard(m_clip).roles, rights);
        } else {
            QCOMPARE(m_classify->log().last("setClipboardRoles").args, QVariantList({m_clip, stored}));
        }
    }

    // Deleting a board while its permissions dialog waits ends the wait, and
    // nothing touches the board afterwards.
    void destroyedWhileItsDialogIsOpen()
    {
        m_classify->setAllRoles({"anna"});
        orvexwbwebview *board = createBoard(true, false);
        QPointer<orvexwbwebview> guard(board);
        ModalAnswerer closing([board](QWidget *) { delete board; });
        board->setPermissions();
        QVERIFY(closing.answered());
        QVERIFY(!guard);
        QCOMPARE(count("setClipboardRoles"), 0);
    }

    void thumbnailsAndPageButtons()
    {
        orvexwbwebview *board = boardWith(2);
        QTRY_VERIFY_WITH_TIMEOUT(!imageOf(board, "500").isNull(), kTimeout);
        const auto buttons = [&] {
            QString state;
            for (const QString button : {"first", "prev", "next", "last"})
                state += has(board, QString("#btn-%1-500").arg(button), "disabled") ? '-' : '+';
            return state;
        };
        QCOMPARE(buttons(), QString("--++"));
        QCOMPARE(m_archive->watch.onGuiThread.load(), 0);

        // Every page change fetches again.
        const QImage first = imageOf(board, "500");
        js(board, "$('#btn-next-500').click()");
        QTRY_VERIFY_WITH_TIMEOUT(imageOf(board, "500") != first, kTimeout);
        QTRY_COMPARE_WITH_TIMEOUT(buttons(), QString("++++"), kTimeout);
        // The thumbnail tells its page to a screen reader, and the page buttons have names.
        QTRY_COMPARE_WITH_TIMEOUT(js(board, "$('#img-500').attr('alt')").toString(), QString("Page 2 of 3"), kTimeout);
        QCOMPARE(js(board, "$('#' + $('#btn-next-500').attr('aria-labelledby')).text()").toString(), QString("Next page"));
        js(board, "$('#btn-last-500').click()");
        QTRY_COMPARE_WITH_TIMEOUT(buttons(), QString("++--"), kTimeout);
        QCOMPARE(m_archive->log().last("getDocumentThumbnail").args.value(1).toInt(), 2);
    }

    void placeholderForMissingImages_data()
    {
        QTest::addColumn<bool>("readable");
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("no right to see it") << false << QByteArray();
        QTest::newRow("bytes that are no image") << true << QByteArray("not an image at all");
    }

    void placeholderForMissingImages()
    {
        QFETCH(bool, readable);
        QFETCH(QByteArray, bytes);
        RecordingArchiveClient::Document document;
        document.docId = 300;
        document.pages = 4;
        document.readable = readable;
        document.thumbnail = bytes;
        m_archive->addDocument(document);
        m_classify->addEntry(m_clip, "300", "600");

        orvexwbwebview *board = createBoard();
        waitForCards(board, 1, false);
        QTRY_VERIFY_WITH_TIMEOUT(!imageOf(board, "600").isNull(), kTimeout);
        QCOMPARE(imageOf(board, "600").size(), QSize(150, 150));
        QVERIFY(!has(board, "#btn-next-600", "disabled"));
    }

    // The cards on screen (the newest entries, at the top) get their images
    // first, and a page the user turns to goes before the first pages still waiting.
    void imagesComeTopDownAndPageStepsFirst()
    {
        addCards(12, 3);
        m_archive->log().setStalled("getDocumentThumbnail");
        orvexwbwebview *board = createBoard();
        waitForCards(board, 12, false);
        const int threads = qMin(QThread::idealThreadCount(), 12);
        QTRY_COMPARE_WITH_TIMEOUT(m_archive->log().count("getDocumentThumbnail"), threads, kTimeout);
        QVERIFY(board->getCardPixmap("500", "100", "1").isEmpty()); // the bottom card, next page
        m_archive->log().setStalled("getDocumentThumbnail", false);
        m_archive->log().release("getDocumentThumbnail");
        QTRY_COMPARE_WITH_TIMEOUT(m_archive->log().count("getDocumentThumbnail"), 13, kTimeout);

        QList<int> firstPages;
        int pageStep = -1;
        const QList<CallLog::Call> calls = m_archive->log().callsOf("getDocumentThumbnail");
        for (int i = 0; i < calls.size(); ++i) {
            if (calls.at(i).args.value(1).toInt() == 1)
                pageStep = i;
            else
                firstPages << calls.at(i).args.value(0).toInt();
        }
        QList<int> newest = firstPages.mid(0, threads);
        std::sort(newest.begin(), newest.end(), std::greater<int>());
        QCOMPARE(newest.first(), 111);
        QCOMPARE(newest.last(), 111 - threads + 1);
        QVERIFY2(pageStep >= threads && pageStep < 2 * threads, qPrintable(QString::number(pageStep)));
        QTRY_COMPARE_WITH_TIMEOUT(js(board, "$('#overview img[src^=\"data:\"]').length").toInt(), 12, kTimeout);
    }

    void stopCancelsQueuedFetches()
    {
        addCards(20, 1);
        m_archive->log().setStalled("getDocumentThumbnail");
        orvexwbwebview *board = createBoard();
        waitForCards(board, 20, false);
        // Every pool thread is inside a fetch; the other fetches wait in the queue.
        const int threads = qMin(QThread::idealThreadCount(), 20);
        QTRY_COMPARE_WITH_TIMEOUT(m_archive->log().count("getDocumentThumbnail"), threads, kTimeout);
        {
            DelayedRelease release(m_archive->log(), "getDocumentThumbnail");
            board->stop();
            QVERIFY(release.released);
        }
        // The queued fetches never ran; the answers of the running ones reach no page.
        QCOMPARE(m_archive->log().count("getDocumentThumbnail"), threads);
        QCOMPARE(js(board, "$('#overview img[src^=\"data:\"]').length").toInt(), 0);
    }

    void stopWaitsForRunningUpdate()
    {
        orvexwbwebview *board = boardWith(2);
        m_classify->log().setStalled("getClipboardDocuments");
        QTRY_VERIFY_WITH_TIMEOUT((board->updateCards(), m_classify->log().waitStalled("getClipboardDocuments", 100)),
                                 kTimeout);
        const int searches = count("searchDocuments");
        {
            DelayedRelease release(m_classify->log(), "getClipboardDocuments");
            board->stop();
            QVERIFY(release.released); // stop() returned only after the job had finished
        }
        // Stopped inside, the job asked nothing further; later calls reach neither page nor server.
        QCOMPARE(count("searchDocuments"), searches);
        board->stop(); // safe twice
        board->doJavascript("window.afterStop = 1;null;");
        emit board->javascript("window.afterStop = 2;null;");
        board->updateTranslations();
        QVERIFY(board->appendCard("105", "999").isEmpty());
        board->reloadCards();
        board->updateCards();
        const int fetches = m_archive->log().count("getDocumentThumbnail");
        QVERIFY(board->getCardPixmap("500", "100", "1").isEmpty());
        // The probe runs after anything sent before it.
        QCOMPARE(js(board, "typeof window.afterStop").toString(), QString("undefined"));
        QCOMPARE(sections(board), 2);
        QCOMPARE(m_archive->log().count("getDocumentThumbnail"), fetches);
    }

    void destroyingMidUpdate()
    {
        orvexwbwebview *board = boardWith(3);
        m_classify->log().setStalled("searchDocuments");
        m_classify->removeFromClipboard(m_clip, "500");
        QTRY_VERIFY_WITH_TIMEOUT((board->updateCards(), m_classify->log().waitStalled("searchDocuments", 100)), kTimeout);
        {
            DelayedRelease release(m_classify->log(), "searchDocuments");
            delete board;
            QVERIFY(release.released);
        }
        QCOMPARE(m_archive->log().count("resetConnection"), 1);
        // What the job emitted on its way out dies with the board.
        const int calls = m_classify->log().calls().size();
        QTest::qWait(200);
        QCOMPARE(m_classify->log().calls().size(), calls);
    }

    void drops_data()
    {
        QTest::addColumn<bool>("writeable");
        QTest::addColumn<int>("preset"); // cards 500.. on the board before the drop
        QTest::addColumn<QString>("docIds");
        QTest::addColumn<QString>("docsIds");
        QTest::addColumn<int>("cancelAt"); // the user cancels during this server call
        QTest::addColumn<int>("refuseFrom"); // the server refuses from this call on; 0: never
        QTest::addColumn<QStringList>("added");
        QTest::addColumn<QString>("message"); // the status message that ends the drop
        const QString added2 = QStringLiteral("Added 2 document(s) to clipboard Board");
        QTest::newRow("added") << true << 0 << "100;101" << "500;501" << 0 << 0 << QStringList{"500", "501"} << added2;
        // Regression: a refusing board gave no reason.
        QTest::newRow("read-only") << false << 0 << "100" << "500" << 0 << 0 << QStringList()
                                   << "Clipboard Board is read-only: documents cannot be added to it.";
        QTest::newRow("full board") << true << 200 << "900" << "900" << 0 << 0 << QStringList()
                                    << "Clipboard Board is full: it holds at most 200 documents.";
        // Failed before: what was not added, and why, went unsaid.
        QTest::newRow("duplicate skipped") << true << 1 << "100;101" << "500;501" << 0 << 0 << QStringList{"501"}
                                           << "Added 1 document(s) to clipboard Board (1 already on it)";
        QTest::newRow("all there already") << true << 2 << "100;101" << "500;501" << 0 << 0 << QStringList()
                                           << "Added 0 document(s) to clipboard Board (2 already on it)";
        QTest::newRow("partly full") << true << 198 << "100;900;901;902;903" << "500;900;901;902;903" << 0 << 0
                                     << QStringList{"900", "901"}
                                     << "Added 2 document(s) to clipboard Board (1 already on it; "
                                        "2 left out: it holds at most 200 documents)";
        QTest::newRow("server refuses") << true << 0 << "100;101;102" << "500;501;502" << 0 << 2
                                        << QStringList{"500"}
                                        << "Added 1 document(s) to clipboard Board (2 refused by the archive)";
        QTest::newRow("lists differ") << true << 0 << "100" << "500;501" << 0 << 0 << QStringList()
                                      << "Nothing was added to clipboard Board: the dragged data names no documents.";
        QTest::newRow("bad ids") << true << 0 << "100;x1;102;103" << "500;501;;5 03" << 0 << 0 << QStringList{"500"}
                                 << "Added 1 document(s) to clipboard Board (3 without a valid id)";
        QTest::newRow("cancel keeps") << true << 0 << "100;101;102" << "500;501;502" << 2 << 0
                                      << QStringList{"500", "501"} << added2;
    }

    void drops()
    {
        QFETCH(bool, writeable);
        QFETCH(int, preset);
        QFETCH(QString, docIds);
        QFETCH(QString, docsIds);
        QFETCH(int, cancelAt);
        QFETCH(int, refuseFrom);
        QFETCH(QStringList, added);
        QFETCH(QString, message);
        const bool accepted = writeable && preset < orvexwbwebview::cardLimit();
        orvexwbwebview *board = createBoard(writeable);
        board->setTabText(QStringLiteral("Board"));
        for (int i = 0; i < preset; ++i)
            board->appendCard(QString::number(100 + i), QString::number(500 + i), {}, false);
        m_classify->onAdd = [this, board, cancelAt, refuseFrom, adds = 0]() mutable {
            if (++adds == cancelAt)
                board->findChild<QProgressDialog *>()->cancel();
            if (adds == refuseFrom)
                m_classify->log().setFailing("addToClipboard");
        };
        // Plain data, as a drag from another process or application brings it; a NUL ends the text.
        QMimeData data;
        data.setData("x-application-orvex-docids", docIds.toUtf8() + '\0' + "999");
        data.setData("x-application-orvex-docsids", docsIds.toUtf8());
        SnackbarCatcher snackbars;
        QVERIFY(!deliverDrop(board, &data)); // without the marker, even readable ids are not taken
        data.setData("x-application-orvex", QByteArray());
        QCOMPARE(deliverDrop(board, &data), accepted);
        // A refusal is told once per drag, however often the drag comes back over the board.
        if (!accepted)
            deliverDrop(board, &data);
        QTRY_COMPARE_WITH_TIMEOUT(snackbars.texts, QStringList{"app:" + message}, kTimeout);
        QTest::qWait(50);
        QCOMPARE(snackbars.texts.size(), 1);
        // The server is asked for exactly the cards that appear, and those it refused.
        QCOMPARE(count("addToClipboard"), added.size() + (refuseFrom ? docIds.count(';') + 2 - refuseFrom : 0));
        QCOMPARE(board->cardCount(), preset + added.size());
        for (const QString &id : added)
            QTRY_COMPARE_WITH_TIMEOUT(text(board, "#main-" + id), board->documentIdOf(id), kTimeout);
    }

    // Failed before: the menu of a card at the board's left edge opened leftward
    // and was cut off; near the bottom it ran out of the scrolling area.
    void menusOpenInsideTheView_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<bool>("nearTheBottom"); // its card scrolled to the bottom of the area
        QTest::addColumn<int>("width");          // of the board
        QTest::addColumn<bool>("german");        // the longer German texts
        QTest::newRow("card at the left edge") << "btn_505_btn" << false << 460 << true;
        QTest::newRow("card at the right edge") << "btn_504_btn" << false << 460 << true;
        QTest::newRow("card near the bottom") << "btn_501_btn" << true << 460 << false;
        QTest::newRow("clipboard menu") << "main-menu" << false << 460 << false;
        // Failed before: in a dock of its least width the menu button itself lay outside the view.
        QTest::newRow("clipboard menu, narrow dock") << "main-menu" << false << 270 << false;
    }
    void menusOpenInsideTheView()
    {
        QFETCH(QString, button);
        QFETCH(bool, nearTheBottom);
        QFETCH(int, width);
        QFETCH(bool, german);
        const GermanCatalogue catalogue(german);
        QVERIFY(catalogue.isLoaded());
        orvexwbwebview *board = boardWith(6);
        board->resize(width, 560); // at most two cards a row, as in a dock
        QTRY_COMPARE_WITH_TIMEOUT(js(board, "window.innerWidth").toInt(), width, kTimeout);
        const QString buttonInView = QString("(function () { var r = document.getElementById('%1').getBoundingClientRect();"
                                             " return r.left >= 0 && r.right <= document.documentElement.clientWidth; })()")
                                         .arg(button);
        // The button in view, as the user sees it: its card at the top of the
        // area, or scrolled down until the button sits just above the area's bottom.
        js(board, QString("var s = document.querySelector('.mdl-layout__content');"
                          "var b = document.getElementById('%1');"
                          "if (%2) s.scrollTop += b.getBoundingClientRect().bottom - s.getBoundingClientRect().bottom + 24;"
                          "else if ($(b).closest('section').length) $(b).closest('section')[0].scrollIntoView(); null;")
                      .arg(button, nearTheBottom ? "true" : "false"));
        QVERIFY(js(board, buttonInView).toBool());
        js(board, QString("document.getElementById('%1').click(); null;").arg(button));
        // The menu lies in the view and, for a card, in the scrolling area.
        const QString area = button == "main-menu" ? "document.documentElement" : "document.querySelector('.mdl-layout__content')";
        const QString inside = QString("(function () {"
                                       "  var m = document.querySelector('ul[for=\"%1\"]').parentElement;"
                                       "  var r = m.getBoundingClientRect(), a = %2.getBoundingClientRect();"
                                       "  var w = document.documentElement.clientWidth, h = document.documentElement.clientHeight;"
                                       "  return m.classList.contains('is-visible') && r.width > 100 && r.left >= Math.max(0, a.left)"
                                       "    && r.right <= Math.min(w, a.right) && r.top >= Math.max(0, a.top)"
                                       "    && r.bottom <= Math.min(h, a.bottom) ? 'inside' : JSON.stringify(r) + ' in ' + JSON.stringify(a);"
                                       "})()").arg(button, area);
        QTRY_COMPARE_WITH_TIMEOUT(js(board, inside).toString(), QString("inside"), kTimeout);
        // And nothing lies over it: each entry is what the user's pointer meets
        // there (failed before: the card beside it covered its right part).
        const QString uncovered = QString("(function () {"
                                          "  var hidden = [];"
                                          "  document.querySelectorAll('ul[for=\"%1\"] > li').forEach(function (li) {"
                                          "    var r = li.getBoundingClientRect();"
                                          "    [r.left + 4, (r.left + r.right) / 2, r.right - 4].forEach(function (x) {"
                                          "      var hit = document.elementFromPoint(x, (r.top + r.bottom) / 2);"
                                          "      if (!hit || !li.contains(hit)) hidden.push(li.textContent + ' at ' + Math.round(x));"
                                          "    });"
                                          "  });"
                                          "  return hidden.join(', ');"
                                          "})()").arg(button);
        QTRY_COMPARE_WITH_TIMEOUT(js(board, uncovered).toString(), QString(), kTimeout);
        // Closed, its card goes back among the others.
        js(board, "$(document).trigger($.Event('keydown', {key: 'Escape'})); null;");
        QTRY_COMPARE_WITH_TIMEOUT(js(board, "document.querySelectorAll('.orvex-card--menu-open').length").toInt(), 0,
                                  kTimeout);
    }

    // Regression: the enlarged preview (the focused thumbnail) stayed open after a card drag and on Escape.
    void previewCloses_data()
    {
        QTest::addColumn<QString>("script");
        QTest::newRow("Escape") << "$(document).trigger($.Event('keydown', {key: 'Escape'}));";
        QTest::newRow("card drag ended") << "dragFinished();";
        // The page's own drag is cancelled and handed to the board, which has nothing to
        // do without a held button; the preview closes all the same.
        QTest::newRow("card drag started")
            << "document.getElementById('section-500').dispatchEvent(new DragEvent('dragstart', {bubbles: true, cancelable: true}));";
    }
    void previewCloses()
    {
        QFETCH(QString, script);
        orvexwbwebview *board = boardWith(1);
        const QString previewOpen = QStringLiteral("$(document.activeElement).hasClass('orvex-card__figure')");
        js(board, "$('#img-500').closest('figure').focus(); null;");
        QTRY_VERIFY_WITH_TIMEOUT(js(board, previewOpen).toBool(), kTimeout);
        js(board, script + "null;");
        QTRY_VERIFY_WITH_TIMEOUT(!js(board, previewOpen).toBool(), kTimeout);
    }

    // Holding a dragged card over another tab for two ticks switches to it.
    void holdingADragOverATabSwitchesToIt()
    {
        orvexwbwebview *board = createBoard();
        QTabWidget tabs;
        tabs.addTab(new QWidget, "One");
        tabs.addTab(new QWidget, "Two");
        tabs.show();
        QVERIFY(QTest::qWaitForWindowExposed(&tabs));
        QCursor::setPos(tabs.tabBar()->mapToGlobal(tabs.tabBar()->tabRect(1).center()));
        board->startDrag();
        QTRY_COMPARE_WITH_TIMEOUT(tabs.currentIndex(), 1, kTimeout);
        board->stopDrag();
    }

    // Last: installs the German catalogue for the rest of the process.
    void germanTexts()
    {
        QVERIFY(OrvexTranslations::install(QLocale(QLocale::German, QLocale::Germany)));
        orvexwbwebview *board = boardWith(1);
        QTRY_COMPARE_WITH_TIMEOUT(text(board, "#trans-Permissions"), QString("Berechtigungen"), kTimeout);
        QCOMPARE(text(board, "#trans-Nextpage"), QString("Nächste Seite"));
        QCOMPARE(text(board, "#trans-DropDocumenthere"), QString("Dokument hier ablegen"));
        QCOMPARE(js(board, "$('label[for=textarea-500]').text()").toString(), QString("Notiz..."));
        board->setCardData("500", {});
        QTRY_COMPARE_WITH_TIMEOUT(text(board, "#status-500"), QString("Unbekannt"), kTimeout);
    }

private:
    // Built the way the tab set builds a board.
    orvexwbwebview *createBoard(bool writeable = true, bool reload = true)
    {
        auto *board = new orvexwbwebview;
        m_boards << board;
        board->setId(m_clip);
        board->setArchiveClient(m_archive);
        board->setClassifyClient(m_classify);
        BoardPage::load(board, writeable);
        if (reload)
            board->reloadCards();
        return board;
    }

    // Documents 100.. in entries 500..; entry 501 has a note, 502 an unknown status.
    void addCards(int count, int pages = 3)
    {
        for (int i = 0; i < count; ++i) {
            const QString docId = QString::number(100 + i);
            m_classify->addDocument({docId, QString("Title %1").arg(i), i % 2 ? "T2" : "T1", i == 2 ? "S9" : "S1",
                                     QString("body text %1 number %2").arg(i).arg(i * 10), pages});
            RecordingArchiveClient::Document document;
            document.docId = 100 + i;
            document.pages = pages;
            m_archive->addDocument(document);
            m_classify->addEntry(m_clip, docId, QString::number(500 + i), i == 1 ? "Note of one" : "");
        }
    }

    void waitForCards(orvexwbwebview *board, int count, bool withInfo = true)
    {
        QTRY_COMPARE_WITH_TIMEOUT(sections(board), count, kTimeout);
        // The info lines come last, from the update job's search rows.
        if (withInfo && count > 0)
            QTRY_COMPARE_WITH_TIMEOUT(text(board, "#comment-500"), QString("Title 0"), kTimeout);
    }

    orvexwbwebview *boardWith(int cards, bool writeable = true)
    {
        addCards(cards);
        orvexwbwebview *board = createBoard(writeable);
        waitForCards(board, cards);
        return board;
    }
    int count(const QString &operation) { return m_classify->log().count(operation); }
    // Calls of the operation whose first argument lists the criterion.
    int count(const QString &operation, const QString &criterion)
    {
        int calls = 0;
        for (const CallLog::Call &call : m_classify->log().callsOf(operation))
            calls += call.args.value(0).toStringList().contains(criterion) ? 1 : 0;
        return calls;
    }

    void runUpdate(orvexwbwebview *board) { BoardPage::runUpdate(board); }

    // Types at the end of the note field as the page's editing does (null:
    // nothing), then leaves the field unless told to stay.
    void typeNote(orvexwbwebview *board, const QString &cardId, const QString &typed, bool leave = true)
    {
        QString script = QString("var a = document.getElementById('textarea-%1'); a.focus();").arg(cardId);
        if (!typed.isNull())
            script += QString("a.selectionStart = a.selectionEnd = a.value.length;"
                              "document.execCommand('insertText', false, '%1');").arg(typed);
        if (leave)
            // Leaves the field as a click elsewhere does: the focus goes, and the
            // field's own blur handler runs once (an unfocused page sends no blur).
            script += "var h = a.onblur; a.onblur = null; a.blur(); a.onblur = h; h.call(a, new FocusEvent('blur'));";
        js(board, script);
    }

    ClassifyDouble *m_classify = nullptr;
    ArchiveDouble *m_archive = nullptr;
    QString m_clip;
    QList<QPointer<orvexwbwebview>> m_boards;
};

QTEST_MAIN(tst_Board)
#include "tst_board.moc"
