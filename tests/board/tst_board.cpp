// The card board with its real page in QtWebEngine: every check reads the DOM
// back through runJavaScript, against the recording client doubles.
#include "orvextranslations.h"
#include "modalanswerer.h"
#include "orvexwbwebview.h"
#include "recordingarchiveclient.h"
#include "recordingclassifyclient.h"

#include <QBuffer>
#include <QElapsedTimer>
#include <QImage>
#include <QPointer>
#include <QSet>
#include <QSignalSpy>
#include <QThread>
#include <QWebEnginePage>
#include <QWebEngineSettings>
#include <QtTest>

#include <atomic>
#include <memory>
#include <thread>

namespace {

const QChar kSep(0xFEFF);
const int kTimeout = 20000;

// Remembers on which threads the operations a board must keep off the GUI thread ran.
class ThreadLog
{
public:
    void note(const QString &operation)
    {
        QMutexLocker locker(&m_mutex);
        m_threads.insert(operation, QThread::currentThread());
    }
    bool ranOnGuiThread(const QString &operation) const
    {
        QMutexLocker locker(&m_mutex);
        const QList<QThread *> threads = m_threads.values(operation);
        return threads.contains(qApp->thread());
    }
    int count(const QString &operation) const
    {
        QMutexLocker locker(&m_mutex);
        return m_threads.count(operation);
    }

private:
    mutable QMutex m_mutex;
    QMultiHash<QString, QThread *> m_threads;
};

class ArchiveDouble : public RecordingArchiveClient
{
public:
    ThreadLog threads;
    QByteArray getDocumentThumbnail(int docId, int page, int size, int &pageCount, QString &format,
                                    int option1, int option2, int version) override
    {
        threads.note(QStringLiteral("getDocumentThumbnail"));
        return RecordingArchiveClient::getDocumentThumbnail(docId, page, size, pageCount, format,
                                                            option1, option2, version);
    }
};

class ClassifyDouble : public RecordingClassifyClient
{
public:
    ThreadLog threads;
    QStringList getCardInfo(QString docsId, QString option) override
    {
        threads.note(QStringLiteral("getCardInfo"));
        return RecordingClassifyClient::getCardInfo(docsId, option);
    }
    QStringList searchDocuments(QStringList criteria) override
    {
        threads.note(QStringLiteral("searchDocuments"));
        return RecordingClassifyClient::searchDocuments(criteria);
    }
};

// Runs a script in the page and waits for its result.
QVariant js(QWebEngineView *view, const QString &script)
{
    auto state = std::make_shared<QPair<bool, QVariant>>(false, QVariant());
    view->page()->runJavaScript(script, [state](const QVariant &result) {
        state->first = true;
        state->second = result;
    });
    if (!QTest::qWaitFor([state] { return state->first; }, kTimeout))
        qWarning() << "script did not answer:" << script;
    return state->second;
}

QString text(QWebEngineView *view, const QString &selector)
{
    return js(view, QStringLiteral("$('%1').text()").arg(selector)).toString();
}

bool visible(QWebEngineView *view, const QString &selector)
{
    return js(view, QStringLiteral("$('%1').is(':visible')").arg(selector)).toBool();
}

bool attribute(QWebEngineView *view, const QString &selector, const QString &name)
{
    return js(view, QStringLiteral("$('%1').is('[%2]')").arg(selector, name)).toBool();
}

int sections(QWebEngineView *view)
{
    return js(view, QStringLiteral("$('#overview section').length")).toInt();
}

QImage imageOf(QWebEngineView *view, const QString &cardId)
{
    const QString source =
        js(view, QStringLiteral("$('#img-%1').attr('src') || ''").arg(cardId)).toString();
    const QString prefix = QStringLiteral("data:image/png;base64,");
    if (!source.startsWith(prefix))
        return QImage();
    return QImage::fromData(QByteArray::fromBase64(source.mid(prefix.size()).toLatin1()), "PNG");
}

// Releases a stalled operation from another thread after a delay, while the
// GUI thread is blocked in the call under test.
class DelayedRelease
{
public:
    DelayedRelease(CallLog &log, const QString &operation, int delayMs)
        : m_thread([this, &log, operation, delayMs] {
              std::this_thread::sleep_for(std::chrono::milliseconds(delayMs));
              released = true;
              log.release(operation);
          })
    {
    }
    ~DelayedRelease() { m_thread.join(); }
    std::atomic<bool> released{false};

private:
    std::thread m_thread;
};

} // namespace

class tst_Board : public QObject
{
    Q_OBJECT

public:
    static void initMain();

private slots:
    void init();
    void cleanup();

    void cardsShowFieldsNotesAndOrder();
    void countLineAndDropZoneFollowCards();
    void limitAndDuplicatesAreRefused();
    void badIdsAreRefusedBeforeAnyScript_data();
    void badIdsAreRefusedBeforeAnyScript();
    void malformedServerAnswersDoNotCrash();
    void readOnlySwitch_data();
    void readOnlySwitch();
    void clipboardMenuForwards();
    void clearClipboard_data();
    void clearClipboard();
    void notesAreSavedWhole();
    void apostropheInUpdatedNoteBreaksOnlyItsScript();
    void search_data();
    void search();
    void searchFromThePage();
    void searchOnEmptyBoardDoesNothing();
    void backgroundUpdateReconciles();
    void failedServerAnswersKeepTheCards();
    void hostCommands_data();
    void hostCommands();
    void permissions_data();
    void permissions();
    void thumbnailsArriveWithPageButtons();
    void placeholderForMissingImages_data();
    void placeholderForMissingImages();
    void pageButtonsFetchEachPage();
    void translations();
    void noScriptRunsAfterStop();
    void stopCancelsQueuedFetches();
    void stopWaitsForRunningUpdate();
    void destroyingMidUpdate();
    void germanTexts(); // last: installs the German catalogue for the rest of the process

private:
    orvexwbwebview *createBoard(bool writeable = true, bool reload = true);
    void addCards(int count, int pages = 3);
    QString docsId(int i) const { return QString::number(500 + i); }
    QString docId(int i) const { return QString::number(100 + i); }
    void waitForCards(orvexwbwebview *board, int count);

    ClassifyDouble *m_classify = nullptr;
    ArchiveDouble *m_archive = nullptr;
    QString m_clip;
    QList<QPointer<orvexwbwebview>> m_boards;
};

static QtMessageHandler previousHandler = nullptr;

// The web channel names every widget property of the published board that has
// no change signal; those lines would drown the test's own output.
static void filterChannelNoise(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    if (message.contains(QLatin1String("has no notify signal and is not constant")))
        return;
    previousHandler(type, context, message);
}

void tst_Board::initMain()
{
    previousHandler = qInstallMessageHandler(filterChannelNoise);
}

void tst_Board::init()
{
    QStandardPaths::setTestModeEnabled(true);
    QLocale::setDefault(QLocale::c());
    m_classify = new ClassifyDouble;
    m_archive = new ArchiveDouble;
    m_classify->setDocumentType(QStringLiteral("T1"), QStringLiteral("Invoice"));
    m_classify->setDocumentType(QStringLiteral("T2"), QStringLiteral("Letter"));
    m_classify->setDocumentStatus(QStringLiteral("S1"), QStringLiteral("Approved"));
    m_clip = m_classify->addClipboard(QStringLiteral("Work"));
}

void tst_Board::cleanup()
{
    for (const QPointer<orvexwbwebview> &board : qAsConst(m_boards)) {
        if (board) {
            board->stop();
            delete board;
        }
    }
    m_boards.clear();
    delete m_classify;
    delete m_archive;
    QLocale::setDefault(QLocale::c());
}

// Built the way the tab set builds a board.
orvexwbwebview *tst_Board::createBoard(bool writeable, bool reload)
{
    auto *board = new orvexwbwebview;
    m_boards << board;
    board->setContextMenuPolicy(Qt::CustomContextMenu);
    board->setId(m_clip);
    board->setArchiveClient(m_archive);
    board->setClassifyClient(m_classify);
    board->page()->settings()->setAttribute(QWebEngineSettings::JavascriptEnabled, true);
    board->resize(1000, 700);
    board->show();
    QSignalSpy loaded(board, &QWebEngineView::loadFinished);
    board->load(QUrl(QStringLiteral("qrc:/material/card-webchannel.html")));
    if (!loaded.wait(kTimeout) || !loaded.first().first().toBool())
        qWarning() << "card page did not load";
    board->updateTranslations();
    board->setWriteable(writeable);
    if (reload)
        board->reloadCards();
    return board;
}

void tst_Board::addCards(int count, int pages)
{
    for (int i = 0; i < count; ++i) {
        const QString type = i % 2 ? QStringLiteral("T2") : QStringLiteral("T1");
        const QString status = i == 2 ? QStringLiteral("S-unknown") : QStringLiteral("S1");
        m_classify->addDocument({docId(i), QStringLiteral("Title %1").arg(i), type, status,
                                 QStringLiteral("body text %1 number %2").arg(i).arg(i * 10), pages});
        RecordingArchiveClient::Document document;
        document.docId = 100 + i;
        document.pages = pages;
        m_archive->addDocument(document);
        m_classify->addEntry(m_clip, docId(i), docsId(i),
                             i == 1 ? QStringLiteral("Note of one") : QString());
    }
}

void tst_Board::waitForCards(orvexwbwebview *board, int count)
{
    QTRY_COMPARE_WITH_TIMEOUT(sections(board), count, kTimeout);
}

void tst_Board::cardsShowFieldsNotesAndOrder()
{
    addCards(4);
    orvexwbwebview *board = createBoard();
    waitForCards(board, 4);

    // Info lines come from the update job's search rows.
    QTRY_COMPARE_WITH_TIMEOUT(text(board, QStringLiteral("#comment-500")), QStringLiteral("Title 0"), kTimeout);
    QTRY_COMPARE_WITH_TIMEOUT(text(board, QStringLiteral("#status-503")), QStringLiteral("Approved"), kTimeout);
    QCOMPARE(text(board, QStringLiteral("#doctype-500")), QStringLiteral("Invoice"));
    QCOMPARE(text(board, QStringLiteral("#doctype-501")), QStringLiteral("Letter"));
    QCOMPARE(text(board, QStringLiteral("#status-502")), QStringLiteral("Unkown"));
    QCOMPARE(text(board, QStringLiteral("#main-501")), QStringLiteral("101"));
    QCOMPARE(js(board, QStringLiteral("$('#textarea-501').val()")).toString(), QStringLiteral("Note of one"));
    QCOMPARE(js(board, QStringLiteral("$('#textarea-500').val()")).toString(), QString());
    QCOMPARE(js(board, QStringLiteral("$('#textarea-500').attr('maxlength')")).toString(), QStringLiteral("1024"));
    QCOMPARE(text(board, QStringLiteral("#spinner-500")).isEmpty(), false);
    // Largest entry id first.
    QTRY_COMPARE_WITH_TIMEOUT(
        js(board, QStringLiteral("$('#overview section').map(function(){return $(this).attr('data-docsid');}).get().join(',')"))
            .toString(),
        QStringLiteral("503,502,501,500"), kTimeout);
    QCOMPARE(board->cardCount(), 4);
    QCOMPARE(board->documentIdOf(docsId(2)), docId(2));
    // A reload adds the cards in one script; their info comes from the update, not per card.
    QCOMPARE(m_classify->log().count(QStringLiteral("getCardInfo")), 0);
    QVERIFY(!m_classify->threads.ranOnGuiThread(QStringLiteral("searchDocuments")));
}

void tst_Board::countLineAndDropZoneFollowCards()
{
    orvexwbwebview *board = createBoard();
    QTRY_VERIFY_WITH_TIMEOUT(visible(board, QStringLiteral("#drop_zone")), kTimeout);

    addCards(2);
    QVERIFY(!board->appendCard(docId(0), docsId(0)).isEmpty());
    QTRY_COMPARE_WITH_TIMEOUT(text(board, QStringLiteral("#info")), QStringLiteral("1 / 200 (max)"), kTimeout);
    QVERIFY(!visible(board, QStringLiteral("#drop_zone")));
    // A card added on its own loads its info on the work pool.
    QTRY_COMPARE_WITH_TIMEOUT(text(board, QStringLiteral("#comment-500")), QStringLiteral("Title 0"), kTimeout);
    QVERIFY(!m_classify->threads.ranOnGuiThread(QStringLiteral("getCardInfo")));

    QVERIFY(!board->appendCard(docId(1), docsId(1), QStringLiteral("hello")).isEmpty());
    QTRY_COMPARE_WITH_TIMEOUT(text(board, QStringLiteral("#info")), QStringLiteral("2 / 200 (max)"), kTimeout);
    QCOMPARE(js(board, QStringLiteral("$('#textarea-501').val()")).toString(), QStringLiteral("hello"));

    // The card's own close button removes it on the server too.
    js(board, QStringLiteral("$('#removebutton-501').click()"));
    QTRY_COMPARE_WITH_TIMEOUT(sections(board), 1, kTimeout);
    QCOMPARE(m_classify->log().last(QStringLiteral("removeFromClipboard")).args,
             QVariantList({m_clip, docsId(1)}));
    QCOMPARE(text(board, QStringLiteral("#info")), QStringLiteral("1 / 200 (max)"));

    board->removeCard(docsId(0), false);
    QTRY_VERIFY_WITH_TIMEOUT(visible(board, QStringLiteral("#drop_zone")), kTimeout);
    QCOMPARE(text(board, QStringLiteral("#info")), QStringLiteral("0 / 200 (max)"));
    QCOMPARE(m_classify->log().count(QStringLiteral("removeFromClipboard")), 1);
    QCOMPARE(board->cardCount(), 0);
}

void tst_Board::limitAndDuplicatesAreRefused()
{
    for (int i = 0; i < 201; ++i)
        m_classify->addEntry(m_clip, QString::number(1000 + i), QString::number(5000 + i));
    orvexwbwebview *board = createBoard();
    waitForCards(board, 200);
    QCOMPARE(board->cardCount(), 200);
    QTRY_COMPARE_WITH_TIMEOUT(text(board, QStringLiteral("#info")), QStringLiteral("200 / 200 (max)"), kTimeout);

    QVERIFY(board->appendCard(QStringLiteral("9999"), QStringLiteral("9999")).isEmpty());
    board->removeCard(QStringLiteral("5000"), false);
    // The same entry twice yields one card.
    QVERIFY(!board->appendCard(QStringLiteral("9999"), QStringLiteral("9999")).isEmpty());
    QVERIFY(board->appendCard(QStringLiteral("9999"), QStringLiteral("9999")).isEmpty());
    QTRY_COMPARE_WITH_TIMEOUT(js(board, QStringLiteral("$('[id=section-9999]').length")).toInt(), 1, kTimeout);
    QCOMPARE(sections(board), 200);
    QCOMPARE(text(board, QStringLiteral("#info")), QStringLiteral("200 / 200 (max)"));
}

void tst_Board::badIdsAreRefusedBeforeAnyScript_data()
{
    QTest::addColumn<QString>("id");
    QTest::newRow("letters") << "abc";
    QTest::newRow("script") << "1');alert('x";
    QTest::newRow("empty") << "";
    QTest::newRow("negative") << "-5";
    QTest::newRow("decimal") << "7.5";
    QTest::newRow("blank inside") << "1 2";
}

void tst_Board::badIdsAreRefusedBeforeAnyScript()
{
    QFETCH(QString, id);
    const QString good = QStringLiteral("7");
    orvexwbwebview *board = createBoard(true, false);
    QSignalSpy scripts(board, &orvexwbwebview::javascript);

    QVERIFY(board->appendCard(id, good).isEmpty());
    QVERIFY(board->appendCard(good, id).isEmpty());
    board->removeCard(id, true);
    board->updateComment(id, QStringLiteral("x"));
    board->setCardData(id, {good, id, QStringLiteral("t"), QStringLiteral("T1"), QString(), QString(),
                            QStringLiteral("S1")});
    QVERIFY(board->getCardPixmap(id, good, QStringLiteral("0")).isEmpty());
    QVERIFY(board->getCardPixmap(good, id, QStringLiteral("0")).isEmpty());
    QVERIFY(board->getCardPixmap(good, good, id).isEmpty());
    board->doReloadCardPixmap(id, good, QStringLiteral("0"), QStringLiteral("1"));
    board->doReloadCardPixmap(good, id, QStringLiteral("0"), QStringLiteral("1"));
    board->saveCard(id, QStringLiteral("note"));

    QCOMPARE(scripts.count(), 0);
    QCOMPARE(board->cardCount(), 0);
    QCOMPARE(m_classify->log().count(QStringLiteral("removeFromClipboard")), 0);
    QCOMPARE(m_classify->log().count(QStringLiteral("setClipboardComment")), 0);
    QCOMPARE(m_archive->log().count(QStringLiteral("getDocumentThumbnail")), 0);
}

void tst_Board::malformedServerAnswersDoNotCrash()
{
    addCards(3);
    m_classify->log().setShortRecords(QStringLiteral("getDocumentTypes"));
    m_classify->log().setFailing(QStringLiteral("getDocumentStatuses"));
    orvexwbwebview *board = createBoard(true, false);
    // Types without names and no statuses at all: both lines read unknown.
    board->reloadCards();
    waitForCards(board, 3);
    QTRY_COMPARE_WITH_TIMEOUT(text(board, QStringLiteral("#comment-500")), QStringLiteral("Title 0"), kTimeout);
    QCOMPARE(text(board, QStringLiteral("#doctype-500")), QStringLiteral("Unkown"));
    QCOMPARE(text(board, QStringLiteral("#status-500")), QStringLiteral("Unkown"));

    // Short card info leaves the lines empty; short data counts missing fields as empty.
    m_classify->log().setShortRecords(QStringLiteral("getCardInfo"));
    m_classify->addEntry(m_clip, QStringLiteral("104"), QStringLiteral("504"));
    QVERIFY(!board->appendCard(QStringLiteral("104"), QStringLiteral("504")).isEmpty());
    waitForCards(board, 4);
    QTRY_COMPARE_WITH_TIMEOUT(m_classify->log().count(QStringLiteral("getCardInfo")), 1, kTimeout);
    QCOMPARE(text(board, QStringLiteral("#comment-504")), QString());
    board->setCardData(QStringLiteral("504"), {QStringLiteral("x")});
    QTRY_COMPARE_WITH_TIMEOUT(text(board, QStringLiteral("#status-504")), QStringLiteral("Unkown"), kTimeout);
    QCOMPARE(text(board, QStringLiteral("#comment-504")), QString());

    // Entries without an entry id give no card, and search rows without "#" match none.
    m_classify->log().setShortRecords(QStringLiteral("getClipboardDocuments"));
    m_classify->log().setShortRecords(QStringLiteral("searchDocuments"));
    orvexwbwebview *other = createBoard();
    QTRY_VERIFY_WITH_TIMEOUT(m_classify->log().count(QStringLiteral("getClipboardDocuments")) >= 2, kTimeout);
    QCOMPARE(other->cardCount(), 0);
    board->searchCards(QStringLiteral("Title"));
    for (const QString &id : board->cardIds())
        QTRY_VERIFY_WITH_TIMEOUT(!visible(board, QStringLiteral("#section-") + id), kTimeout);
    QCOMPARE(m_classify->clipboard(m_clip).entries.size(), 4);
}

void tst_Board::readOnlySwitch_data()
{
    QTest::addColumn<bool>("writeable");
    QTest::newRow("writeable") << true;
    QTest::newRow("read-only") << false;
}

void tst_Board::readOnlySwitch()
{
    QFETCH(bool, writeable);
    addCards(2);
    orvexwbwebview *board = createBoard(!writeable);
    waitForCards(board, 2);
    QTRY_COMPARE_WITH_TIMEOUT(text(board, QStringLiteral("#comment-501")), QStringLiteral("Title 1"), kTimeout);

    // Switch and let the next update carry the per-card switch.
    board->setWriteable(writeable);
    QCOMPARE(board->isWriteable(), writeable);
    board->updateCards();
    for (const QString &item : {QStringLiteral("#clippermission"), QStringLiteral("#clearclip"),
                                QStringLiteral("#removeclip")})
        QTRY_COMPARE_WITH_TIMEOUT(attribute(board, item, QStringLiteral("disabled")), !writeable, kTimeout);
    for (const QString &card : {QStringLiteral("500"), QStringLiteral("501")}) {
        QTRY_COMPARE_WITH_TIMEOUT(attribute(board, QStringLiteral("#textarea-") + card, QStringLiteral("readonly")),
                                  !writeable, kTimeout);
        QTRY_COMPARE_WITH_TIMEOUT(attribute(board, QStringLiteral("#removecard-") + card, QStringLiteral("disabled")),
                                  !writeable, kTimeout);
        QCOMPARE(attribute(board, QStringLiteral("#removebutton-") + card, QStringLiteral("disabled")), !writeable);
    }
    // Searching stays possible either way.
    QVERIFY(!attribute(board, QStringLiteral("#searchtext"), QStringLiteral("readonly")));

    // The page's menu entry; the command after it shows that the channel has delivered both.
    QSignalSpy remove(board, &orvexwbwebview::doRemoveClipboard);
    QSignalSpy commands(board, &orvexwbwebview::doCommand);
    js(board, QStringLiteral("removeClipboard(); exportDocuments();"));
    QTRY_COMPARE_WITH_TIMEOUT(commands.count(), 1, kTimeout);
    board->removeClipboard();
    QCOMPARE(remove.count(), writeable ? 2 : 0);

    // The permissions dialog is only for writeable boards.
    if (!writeable) {
        board->setPermissions();
        QCOMPARE(m_classify->log().count(QStringLiteral("getAllRoles")), 0);
    }
}

void tst_Board::clipboardMenuForwards()
{
    orvexwbwebview *board = createBoard(true, false);
    QSignalSpy add(board, &orvexwbwebview::addNewClipboard);
    QSignalSpy focus(board, &orvexwbwebview::focusTab);
    QElapsedTimer timer;
    timer.start();
    board->addClipboard();
    QCOMPARE(add.count(), 0);
    QVERIFY(add.wait(kTimeout));
    QVERIFY(timer.elapsed() >= 90);

    // The page's menu entry reaches the same slot.
    js(board, QStringLiteral("addClipboard()"));
    QTRY_COMPARE_WITH_TIMEOUT(add.count(), 2, kTimeout);

    board->doFocusTab();
    QCOMPARE(focus.count(), 1);
    QVERIFY(board->tryLock(0));
    board->unlock();
}

void tst_Board::clearClipboard_data()
{
    QTest::addColumn<bool>("writeable");
    QTest::newRow("writeable") << true;
    QTest::newRow("read-only") << false;
}

void tst_Board::clearClipboard()
{
    QFETCH(bool, writeable);
    addCards(3);
    orvexwbwebview *board = createBoard(writeable);
    waitForCards(board, 3);

    js(board, QStringLiteral("clearClipboard()"));
    QTRY_COMPARE_WITH_TIMEOUT(m_classify->log().count(QStringLiteral("clearClipboard")), 1, kTimeout);
    QCOMPARE(m_classify->log().last(QStringLiteral("clearClipboard")).args, QVariantList({m_clip}));
    // Entries go in one server call, not one by one.
    QCOMPARE(m_classify->log().count(QStringLiteral("removeFromClipboard")), 0);
    if (writeable) {
        QTRY_COMPARE_WITH_TIMEOUT(sections(board), 0, kTimeout);
        QTRY_VERIFY_WITH_TIMEOUT(visible(board, QStringLiteral("#drop_zone")), kTimeout);
        QCOMPARE(board->cardCount(), 0);
    } else {
        // The server decides; the page keeps its cards.
        QCOMPARE(sections(board), 3);
        QCOMPARE(board->cardCount(), 3);
    }
}

void tst_Board::notesAreSavedWhole()
{
    addCards(2);
    orvexwbwebview *board = createBoard();
    waitForCards(board, 2);
    QTRY_COMPARE_WITH_TIMEOUT(text(board, QStringLiteral("#comment-500")), QStringLiteral("Title 0"), kTimeout);

    // Leaving the note field saves it.
    js(board, QStringLiteral("$('#textarea-500').val('Check the total');"
                             "document.getElementById('textarea-500').dispatchEvent(new FocusEvent('blur'))"));
    QTRY_COMPARE_WITH_TIMEOUT(m_classify->log().count(QStringLiteral("setClipboardComment")), 1, kTimeout);
    QCOMPARE(m_classify->log().last(QStringLiteral("setClipboardComment")).args,
             QVariantList({m_clip, docsId(0), QStringLiteral("Check the total")}));

    // Notes at and beyond the field's limit reach the server unchanged.
    const QString longNote = QString(1500, QLatin1Char('n')) + QStringLiteral("'s end");
    board->saveCard(docsId(1), longNote);
    QCOMPARE(m_classify->clipboard(m_clip).entries.at(1).comment, longNote);

    // Read back by the next update, an apostrophe survives the round trip.
    m_classify->setClipboardComment(m_clip, docsId(0), QStringLiteral("Anna's copy"));
    board->updateCards();
    QTRY_COMPARE_WITH_TIMEOUT(js(board, QStringLiteral("$('#textarea-500').val()")).toString(),
                              QStringLiteral("Anna's copy"), kTimeout);
    QTRY_COMPARE_WITH_TIMEOUT(js(board, QStringLiteral("$('#textarea-501').val().length")).toInt(),
                              longNote.size(), kTimeout);
}

void tst_Board::apostropheInUpdatedNoteBreaksOnlyItsScript()
{
    addCards(2);
    orvexwbwebview *board = createBoard();
    waitForCards(board, 2);
    board->updateComment(docsId(0), QStringLiteral("plain"));
    QTRY_COMPARE_WITH_TIMEOUT(js(board, QStringLiteral("$('#textarea-500').val()")).toString(),
                              QStringLiteral("plain"), kTimeout);
    QTRY_VERIFY_WITH_TIMEOUT(js(board, QStringLiteral("$('#textarea-500').parent().hasClass('is-dirty')")).toBool(), kTimeout);
    // An unescaped apostrophe ends the script string: that one script fails, the next one runs.
    board->updateComment(docsId(0), QStringLiteral("it's"));
    board->updateComment(docsId(1), QString());
    QTRY_VERIFY_WITH_TIMEOUT(!js(board, QStringLiteral("$('#textarea-501').parent().hasClass('is-dirty')")).toBool(), kTimeout);
    QCOMPARE(js(board, QStringLiteral("$('#textarea-500').val()")).toString(), QStringLiteral("plain"));
}

void tst_Board::search_data()
{
    QTest::addColumn<QString>("locale");
    QTest::addColumn<QString>("input");
    QTest::addColumn<QString>("term");
    QTest::addColumn<QStringList>("shown");

    QTest::newRow("integer also as decimal") << "C" << "20" << "20 OR 20.0" << QStringList{"502"};
    QTest::newRow("words, trimmed") << "C" << "  Title 1 " << "Title 1" << QStringList{"501"};
    QTest::newRow("German decimal comma") << "de_DE" << "12,5" << "12.5" << QStringList();
    QTest::newRow("decimal point stays") << "C" << "12.5" << "12.5" << QStringList();
    QTest::newRow("common word") << "C" << "body" << "body" << QStringList{"500", "501", "502"};
}

void tst_Board::search()
{
    QFETCH(QString, locale);
    QFETCH(QString, input);
    QFETCH(QString, term);
    QFETCH(QStringList, shown);
    addCards(3);
    QLocale::setDefault(QLocale(locale));
    orvexwbwebview *board = createBoard();
    waitForCards(board, 3);
    QTRY_VERIFY_WITH_TIMEOUT(!m_classify->log().callsOf(QStringLiteral("searchDocuments")).isEmpty(), kTimeout);
    m_classify->log().clear();

    board->searchCards(input);
    QCOMPARE(m_classify->log().count(QStringLiteral("searchDocuments")), 1);
    QString filter = QStringLiteral("docs_id in (");
    for (const QString &id : board->cardIds())
        filter += id + QLatin1Char(',');
    filter += QLatin1String("0)");
    const QStringList criteria{QStringLiteral("OPT:SELECTION;-1"), QStringLiteral("OPT:FULLTEXT") + kSep + term,
                               filter, QStringLiteral("OPT:LIMIT;1000")};
    QCOMPARE(m_classify->log().last(QStringLiteral("searchDocuments")).args.value(0).toStringList(), criteria);

    for (const QString &id : board->cardIds())
        QTRY_COMPARE_WITH_TIMEOUT(visible(board, QStringLiteral("#section-") + id), shown.contains(id), kTimeout);

    // "*" shows every card again without asking the server.
    board->searchCards(QStringLiteral("*"));
    for (const QString &id : board->cardIds())
        QTRY_VERIFY_WITH_TIMEOUT(visible(board, QStringLiteral("#section-") + id), kTimeout);
    QCOMPARE(m_classify->log().count(QStringLiteral("searchDocuments")), 1);
}

void tst_Board::searchFromThePage()
{
    addCards(3);
    orvexwbwebview *board = createBoard();
    waitForCards(board, 3);
    QTRY_VERIFY_WITH_TIMEOUT(m_classify->log().count(QStringLiteral("searchDocuments")) >= 1, kTimeout);
    const int before = m_classify->log().count(QStringLiteral("searchDocuments"));

    QVERIFY(attribute(board, QStringLiteral("#search-button"), QStringLiteral("disabled")));
    QVERIFY(attribute(board, QStringLiteral("#reset-button"), QStringLiteral("disabled")));
    // Typing enables the search button; Enter searches.
    js(board, QStringLiteral("$('#searchtext').val('Title 2').trigger('input')"));
    QVERIFY(!attribute(board, QStringLiteral("#search-button"), QStringLiteral("disabled")));
    js(board, QStringLiteral("$('#searchtext').trigger($.Event('keydown', {keyCode: 13}))"));
    QTRY_COMPARE_WITH_TIMEOUT(m_classify->log().count(QStringLiteral("searchDocuments")), before + 1, kTimeout);
    QTRY_VERIFY_WITH_TIMEOUT(!visible(board, QStringLiteral("#section-500")), kTimeout);
    QVERIFY(visible(board, QStringLiteral("#section-502")));
    QVERIFY(!attribute(board, QStringLiteral("#reset-button"), QStringLiteral("disabled")));

    // Emptying the field resets: every card shows, both buttons are disabled again.
    js(board, QStringLiteral("$('#searchtext').val('').trigger('input')"));
    QTRY_VERIFY_WITH_TIMEOUT(visible(board, QStringLiteral("#section-500")), kTimeout);
    QVERIFY(attribute(board, QStringLiteral("#search-button"), QStringLiteral("disabled")));
    QVERIFY(attribute(board, QStringLiteral("#reset-button"), QStringLiteral("disabled")));
    QCOMPARE(m_classify->log().count(QStringLiteral("searchDocuments")), before + 1);
}

void tst_Board::searchOnEmptyBoardDoesNothing()
{
    orvexwbwebview *board = createBoard();
    QSignalSpy scripts(board, &orvexwbwebview::javascript);
    m_classify->log().clear();
    board->searchCards(QStringLiteral("anything"));
    QCOMPARE(m_classify->log().count(QStringLiteral("searchDocuments")), 0);
    QCOMPARE(scripts.count(), 0);
}

void tst_Board::backgroundUpdateReconciles()
{
    addCards(3);
    orvexwbwebview *board = createBoard();
    waitForCards(board, 3);
    QTRY_COMPARE_WITH_TIMEOUT(text(board, QStringLiteral("#comment-502")), QStringLiteral("Title 2"), kTimeout);

    // Meanwhile on the server: one entry gone, one new, one note changed.
    m_classify->removeFromClipboard(m_clip, docsId(2));
    m_classify->addDocument({QStringLiteral("777"), QStringLiteral("Fresh"), QStringLiteral("T2"),
                             QStringLiteral("S1"), QString(), 1});
    m_classify->addEntry(m_clip, QStringLiteral("777"), QStringLiteral("900"), QStringLiteral("new note"));
    m_classify->setClipboardComment(m_clip, docsId(0), QStringLiteral("changed"));
    m_classify->log().clear();

    board->updateCards();
    QTRY_COMPARE_WITH_TIMEOUT(js(board, QStringLiteral("$('#section-502').length")).toInt(), 0, kTimeout);
    QTRY_COMPARE_WITH_TIMEOUT(text(board, QStringLiteral("#comment-900")), QStringLiteral("Fresh"), kTimeout);
    QTRY_COMPARE_WITH_TIMEOUT(js(board, QStringLiteral("$('#textarea-500').val()")).toString(),
                              QStringLiteral("changed"), kTimeout);
    QCOMPARE(js(board, QStringLiteral("$('#textarea-900').val()")).toString(), QStringLiteral("new note"));
    QTRY_COMPARE_WITH_TIMEOUT(text(board, QStringLiteral("#info")), QStringLiteral("3 / 200 (max)"), kTimeout);
    QTRY_COMPARE_WITH_TIMEOUT(
        js(board, QStringLiteral("$('#overview section').map(function(){return $(this).attr('data-docsid');}).get().join(',')"))
            .toString(),
        QStringLiteral("900,501,500"), kTimeout);
    QCOMPARE(board->cardCount(), 3);
    // A card that vanished on the server is only taken off the page.
    QCOMPARE(m_classify->log().count(QStringLiteral("removeFromClipboard")), 0);
    QCOMPARE(m_classify->log().last(QStringLiteral("searchDocuments")).args.value(0).toStringList(),
             QStringList({QStringLiteral("docs_id in (500,501,900,0)"), QStringLiteral("OPT:LIMIT;1000")}));
    QVERIFY(!m_classify->threads.ranOnGuiThread(QStringLiteral("searchDocuments")));
}

void tst_Board::failedServerAnswersKeepTheCards()
{
    addCards(3);
    orvexwbwebview *board = createBoard();
    waitForCards(board, 3);
    QTRY_COMPARE_WITH_TIMEOUT(text(board, QStringLiteral("#comment-502")), QStringLiteral("Title 2"), kTimeout);

    m_classify->log().setFailing(QStringLiteral("getClipboardDocuments"));
    m_classify->log().setFailing(QStringLiteral("searchDocuments"));
    const int searches = m_classify->threads.count(QStringLiteral("searchDocuments"));
    board->updateCards();
    QTRY_COMPARE_WITH_TIMEOUT(m_classify->threads.count(QStringLiteral("searchDocuments")), searches + 1, kTimeout);
    // The update can run again, so the first one has finished.
    QTRY_VERIFY_WITH_TIMEOUT((board->updateCards(), m_classify->threads.count(QStringLiteral("searchDocuments")) > searches + 1), kTimeout);
    QCOMPARE(sections(board), 3);
    QCOMPARE(board->cardCount(), 3);

    // A reload that fails adds nothing and keeps what is there.
    board->reloadCards();
    QCOMPARE(board->cardCount(), 3);
    QCOMPARE(sections(board), 3);
}

void tst_Board::hostCommands_data()
{
    QTest::addColumn<QString>("script");
    QTest::addColumn<QString>("command");
    QTest::addColumn<QStringList>("args");
    QTest::newRow("open") << "openDocument(501,101)" << "OPENDOC" << QStringList{"101", "Title 1", "501"};
    QTest::newRow("classification") << "showClassification(500)" << "SHOWCLASSIFICATION" << QStringList{"500"};
    QTest::newRow("export") << "exportDocuments()" << "EXPORTDOCS" << QStringList{"500", "501"};
    QTest::newRow("mail") << "mailDocuments()" << "MAILDOCS" << QStringList{"500", "501"};
}

void tst_Board::hostCommands()
{
    QFETCH(QString, script);
    QFETCH(QString, command);
    QFETCH(QStringList, args);
    addCards(2);
    orvexwbwebview *board = createBoard();
    waitForCards(board, 2);
    QTRY_COMPARE_WITH_TIMEOUT(text(board, QStringLiteral("#comment-501")), QStringLiteral("Title 1"), kTimeout);

    QSignalSpy commands(board, &orvexwbwebview::doCommand);
    js(board, script);
    QTRY_COMPARE_WITH_TIMEOUT(commands.count(), 1, kTimeout);
    QCOMPARE(commands.first().at(0).toString(), command);
    QStringList sent = commands.first().at(1).toStringList();
    if (command.endsWith(QLatin1String("DOCS")))
        std::sort(sent.begin(), sent.end());
    QCOMPARE(sent, args);
}

void tst_Board::permissions_data()
{
    QTest::addColumn<QStringList>("rights");
    QTest::addColumn<bool>("accept");
    QTest::addColumn<QStringList>("stored");
    QTest::addColumn<bool>("error");

    const QString w = QString(kSep) + QLatin1Char('W');
    const QString r = QString(kSep) + QLatin1Char('R');
    const QString lead = QStringLiteral("x") + kSep;
    QTest::newRow("accepted") << QStringList{lead + "anna" + r, lead + "team" + w} << true
                              << QStringList{"team" + w, "anna" + r} << false;
    QTest::newRow("nobody may edit") << QStringList{lead + "anna" + r} << true << QStringList() << true;
    QTest::newRow("rejected") << QStringList{lead + "team" + w} << false << QStringList() << false;
}

void tst_Board::permissions()
{
    QFETCH(QStringList, rights);
    QFETCH(bool, accept);
    QFETCH(QStringList, stored);
    QFETCH(bool, error);
    m_classify->setAllRoles({QStringLiteral("anna"), QStringLiteral("team"), QStringLiteral("bob")});
    m_classify->setRawClipboardRoles(m_clip, rights);
    orvexwbwebview *board = createBoard(true, false);
    QSignalSpy reload(board, &orvexwbwebview::reloadClipboards);

    std::unique_ptr<ModalAnswerer> boxAnswer;
    QString dialogClass;
    ModalAnswerer dialogAnswer([&](QWidget *modal) {
        dialogClass = QString::fromLatin1(modal->metaObject()->className());
        boxAnswer.reset(new ModalAnswerer(QMessageBox::Ok));
        auto *dialog = qobject_cast<QDialog *>(modal);
        accept ? dialog->accept() : dialog->reject();
    });
    // The page's menu entry opens the dialog through the channel.
    js(board, QStringLiteral("permissions()"));
    QTRY_VERIFY_WITH_TIMEOUT(dialogAnswer.answered(), kTimeout);
    QCOMPARE(dialogClass, QStringLiteral("orvexcbrights"));
    if (accept)
        QTRY_COMPARE_WITH_TIMEOUT(reload.count(), 1, kTimeout);
    QCOMPARE(m_classify->log().last(QStringLiteral("getClipboardRoles")).args, QVariantList({m_clip}));

    if (error) {
        QTRY_VERIFY_WITH_TIMEOUT(boxAnswer && boxAnswer->answered(), kTimeout);
        QCOMPARE(boxAnswer->seenTitle(), QCoreApplication::translate("orvexwbwebview", "Error"));
        QCOMPARE(boxAnswer->seenText(), QCoreApplication::translate(
                                            "orvexwbwebview", "The Card must be editable at least from a role!"));
    } else {
        QVERIFY(!boxAnswer || !boxAnswer->answered());
    }
    if (stored.isEmpty()) {
        QCOMPARE(m_classify->log().count(QStringLiteral("setClipboardRoles")), 0);
        QCOMPARE(m_classify->clipboard(m_clip).roles, rights);
    } else {
        QCOMPARE(m_classify->log().last(QStringLiteral("setClipboardRoles")).args,
                 QVariantList({m_clip, stored}));
    }
    if (!accept) {
        // Rejecting reloads nothing: a later command still arrives first.
        QSignalSpy commands(board, &orvexwbwebview::doCommand);
        js(board, QStringLiteral("mailDocuments()"));
        QTRY_COMPARE_WITH_TIMEOUT(commands.count(), 1, kTimeout);
        QCOMPARE(reload.count(), 0);
    }
}

void tst_Board::thumbnailsArriveWithPageButtons()
{
    addCards(2, 3);
    orvexwbwebview *board = createBoard();
    waitForCards(board, 2);

    QTRY_VERIFY_WITH_TIMEOUT(!imageOf(board, docsId(0)).isNull(), kTimeout);
    QTRY_VERIFY_WITH_TIMEOUT(visible(board, QStringLiteral("#img-500")), kTimeout);
    QVERIFY(!visible(board, QStringLiteral("#spinner-500")));
    QCOMPARE(imageOf(board, docsId(0)).height(), 800);
    QCOMPARE(js(board, QStringLiteral("String($('#img-500').data('maxpage'))")).toString(), QStringLiteral("3"));
    QVERIFY(attribute(board, QStringLiteral("#btn-first-500"), QStringLiteral("disabled")));
    QVERIFY(attribute(board, QStringLiteral("#btn-prev-500"), QStringLiteral("disabled")));
    QVERIFY(!attribute(board, QStringLiteral("#btn-next-500"), QStringLiteral("disabled")));
    QVERIFY(!attribute(board, QStringLiteral("#btn-last-500"), QStringLiteral("disabled")));

    const CallLog::Call call = m_archive->log().callsOf(QStringLiteral("getDocumentThumbnail")).first();
    QCOMPARE(call.args.value(2).toInt(), 800);
    QCOMPARE(call.args.mid(5), QVariantList({0, 0, -1}));
    QVERIFY(!m_archive->threads.ranOnGuiThread(QStringLiteral("getDocumentThumbnail")));
}

void tst_Board::placeholderForMissingImages_data()
{
    QTest::addColumn<bool>("readable");
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("no right to see it") << false << QByteArray();
    QTest::newRow("bytes that are no image") << true << QByteArray("not an image at all");
}

void tst_Board::placeholderForMissingImages()
{
    QFETCH(bool, readable);
    QFETCH(QByteArray, bytes);
    m_classify->addDocument({QStringLiteral("300"), QStringLiteral("Secret"), QStringLiteral("T1"),
                             QStringLiteral("S1"), QString(), 4});
    RecordingArchiveClient::Document document;
    document.docId = 300;
    document.pages = 4;
    document.readable = readable;
    document.thumbnail = bytes;
    m_archive->addDocument(document);
    m_classify->addEntry(m_clip, QStringLiteral("300"), QStringLiteral("600"));

    orvexwbwebview *board = createBoard();
    waitForCards(board, 1);
    QTRY_VERIFY_WITH_TIMEOUT(!imageOf(board, QStringLiteral("600")).isNull(), kTimeout);
    QCOMPARE(imageOf(board, QStringLiteral("600")).size(), QSize(150, 150));
    // The page count the archive reported still counts.
    QCOMPARE(js(board, QStringLiteral("String($('#img-600').data('maxpage'))")).toString(), QStringLiteral("4"));
    QVERIFY(!attribute(board, QStringLiteral("#btn-next-600"), QStringLiteral("disabled")));
}

void tst_Board::pageButtonsFetchEachPage()
{
    addCards(1, 3);
    orvexwbwebview *board = createBoard();
    waitForCards(board, 1);
    QTRY_VERIFY_WITH_TIMEOUT(!imageOf(board, docsId(0)).isNull(), kTimeout);
    QTRY_VERIFY_WITH_TIMEOUT(!attribute(board, QStringLiteral("#btn-next-500"), QStringLiteral("disabled")), kTimeout);
    const QImage first = imageOf(board, docsId(0));

    js(board, QStringLiteral("$('#btn-next-500').click()"));
    QTRY_COMPARE_WITH_TIMEOUT(m_archive->log().count(QStringLiteral("getDocumentThumbnail")), 2, kTimeout);
    QCOMPARE(m_archive->log().last(QStringLiteral("getDocumentThumbnail")).args.value(1).toInt(), 1);
    QTRY_VERIFY_WITH_TIMEOUT(imageOf(board, docsId(0)) != first, kTimeout);
    QTRY_VERIFY_WITH_TIMEOUT(!attribute(board, QStringLiteral("#btn-prev-500"), QStringLiteral("disabled")), kTimeout);
    QVERIFY(!attribute(board, QStringLiteral("#btn-next-500"), QStringLiteral("disabled")));

    js(board, QStringLiteral("$('#btn-last-500').click()"));
    QTRY_COMPARE_WITH_TIMEOUT(m_archive->log().count(QStringLiteral("getDocumentThumbnail")), 3, kTimeout);
    QCOMPARE(m_archive->log().last(QStringLiteral("getDocumentThumbnail")).args.value(1).toInt(), 2);
    QTRY_VERIFY_WITH_TIMEOUT(attribute(board, QStringLiteral("#btn-next-500"), QStringLiteral("disabled")), kTimeout);
    QVERIFY(attribute(board, QStringLiteral("#btn-last-500"), QStringLiteral("disabled")));
    QVERIFY(!attribute(board, QStringLiteral("#btn-first-500"), QStringLiteral("disabled")));

    // The host can ask for a page again with a new page count.
    board->doReloadCardPixmap(docsId(0), docId(0), QStringLiteral("0"), QStringLiteral("3"));
    QTRY_COMPARE_WITH_TIMEOUT(m_archive->log().count(QStringLiteral("getDocumentThumbnail")), 4, kTimeout);
    QCOMPARE(m_archive->log().last(QStringLiteral("getDocumentThumbnail")).args.value(1).toInt(), 0);
}

void tst_Board::translations()
{
    orvexwbwebview *board = createBoard(true, false);
    QCOMPARE(board->getTranslation(QStringLiteral("Permissions")),
             QCoreApplication::translate("orvexwbwebview", "Permissions"));
    QCOMPARE(board->getTranslation(QStringLiteral("No such label")), QStringLiteral("No such label"));
    QTRY_COMPARE_WITH_TIMEOUT(text(board, QStringLiteral("#trans-DropDocumenthere")),
                              QCoreApplication::translate("orvexwbwebview", "Drop Document here"), kTimeout);
    QCOMPARE(text(board, QStringLiteral("#trans-Search")), QCoreApplication::translate("orvexwbwebview", "Search..."));

    // The page answers the bridge's own calls.
    QTRY_VERIFY_WITH_TIMEOUT(js(board, QStringLiteral("cardHandler !== null")).toBool(), kTimeout);
}

void tst_Board::noScriptRunsAfterStop()
{
    addCards(2);
    orvexwbwebview *board = createBoard();
    waitForCards(board, 2);
    QSignalSpy commands(board, &orvexwbwebview::doCommand);

    board->stop();
    board->stop(); // safe twice
    QVERIFY(board->isStopped());
    board->doJavascript(QStringLiteral("window.afterStop = 1;null;"));
    emit board->javascript(QStringLiteral("window.afterStop = 2;null;"));
    board->updateTranslations();
    QVERIFY(board->appendCard(docId(5), QStringLiteral("999")).isEmpty());
    board->reloadCards();
    board->updateCards();
    const int fetches = m_archive->log().count(QStringLiteral("getDocumentThumbnail"));
    QVERIFY(board->getCardPixmap(docsId(0), docId(0), QStringLiteral("1")).isEmpty());

    // Scripts of the probe run in order after anything sent before them.
    QCOMPARE(js(board, QStringLiteral("typeof window.afterStop")).toString(), QStringLiteral("undefined"));
    QCOMPARE(sections(board), 2);
    QCOMPARE(m_archive->log().count(QStringLiteral("getDocumentThumbnail")), fetches);
}

void tst_Board::stopCancelsQueuedFetches()
{
    addCards(20, 1);
    m_archive->log().setStalled(QStringLiteral("getDocumentThumbnail"));
    orvexwbwebview *board = createBoard();
    waitForCards(board, 20);
    // Every pool thread is inside a fetch; the other fetches wait in the queue.
    const int threads = qMin(QThread::idealThreadCount(), 20);
    QTRY_COMPARE_WITH_TIMEOUT(m_archive->log().count(QStringLiteral("getDocumentThumbnail")), threads, kTimeout);
    QTRY_COMPARE_WITH_TIMEOUT(js(board, QStringLiteral("$('#spinner-500').is(':visible')")).toBool(), true, kTimeout);

    QElapsedTimer timer;
    timer.start();
    {
        DelayedRelease release(m_archive->log(), QStringLiteral("getDocumentThumbnail"), 300);
        board->stop();
        QVERIFY(release.released);
    }
    QVERIFY(timer.elapsed() >= 250);
    // The queued fetches never ran, and the answers of the running ones reach no page.
    QCOMPARE(m_archive->log().count(QStringLiteral("getDocumentThumbnail")), threads);
    QCOMPARE(js(board, QStringLiteral("$('#overview img[src^=\"data:\"]').length")).toInt(), 0);
}

void tst_Board::stopWaitsForRunningUpdate()
{
    addCards(2);
    orvexwbwebview *board = createBoard();
    waitForCards(board, 2);
    QTRY_VERIFY_WITH_TIMEOUT(m_classify->log().count(QStringLiteral("searchDocuments")) >= 1, kTimeout);
    // A finished job leaves nothing to wait for.
    QTRY_VERIFY_WITH_TIMEOUT((board->updateCards(), m_classify->log().count(QStringLiteral("searchDocuments")) >= 2), kTimeout);

    m_classify->log().setStalled(QStringLiteral("getClipboardDocuments"));
    QTRY_VERIFY_WITH_TIMEOUT((board->updateCards(), m_classify->log().waitStalled(QStringLiteral("getClipboardDocuments"), 100)), kTimeout);
    const int searches = m_classify->log().count(QStringLiteral("searchDocuments"));
    {
        DelayedRelease release(m_classify->log(), QStringLiteral("getClipboardDocuments"), 300);
        board->stop();
        // stop() returned only after the job had been let go and had finished.
        QVERIFY(release.released);
    }
    // Stopped inside, the job asked nothing further.
    QCOMPARE(m_classify->log().count(QStringLiteral("searchDocuments")), searches);
}

void tst_Board::destroyingMidUpdate()
{
    addCards(3);
    orvexwbwebview *board = createBoard();
    waitForCards(board, 3);
    QTRY_VERIFY_WITH_TIMEOUT(m_classify->log().count(QStringLiteral("searchDocuments")) >= 1, kTimeout);

    m_classify->log().setStalled(QStringLiteral("searchDocuments"));
    m_classify->removeFromClipboard(m_clip, docsId(0));
    QTRY_VERIFY_WITH_TIMEOUT((board->updateCards(), m_classify->log().waitStalled(QStringLiteral("searchDocuments"), 100)), kTimeout);
    QSignalSpy destroyed(board, &QObject::destroyed);
    {
        DelayedRelease release(m_classify->log(), QStringLiteral("searchDocuments"), 200);
        delete board;
        QVERIFY(release.released);
    }
    QCOMPARE(destroyed.count(), 1);
    QCOMPARE(m_archive->log().count(QStringLiteral("resetConnection")), 1);
    // Whatever the job still emitted is dropped with the board.
    const int calls = m_classify->log().calls().size();
    QTest::qWait(200);
    QCOMPARE(m_classify->log().calls().size(), calls);
}

void tst_Board::germanTexts()
{
    QVERIFY(OrvexTranslations::install(QLocale(QLocale::German, QLocale::Germany)));
    addCards(1);
    orvexwbwebview *board = createBoard();
    waitForCards(board, 1);
    QTRY_COMPARE_WITH_TIMEOUT(text(board, QStringLiteral("#trans-Permissions")), QStringLiteral("Berechtigungen"), kTimeout);
    QCOMPARE(board->getTranslation(QStringLiteral("Search...")), QStringLiteral("Suchen..."));
    QCOMPARE(text(board, QStringLiteral("#trans-DropDocumenthere")), QStringLiteral("Dokument hier ablegen"));
    QCOMPARE(js(board, QStringLiteral("$('label[for=textarea-500]').text()")).toString(), QStringLiteral("Notiz..."));
    QTRY_COMPARE_WITH_TIMEOUT(text(board, QStringLiteral("#status-500")), QStringLiteral("Approved"), kTimeout);
    board->setCardData(QStringLiteral("500"), {});
    QTRY_COMPARE_WITH_TIMEOUT(text(board, QStringLiteral("#status-500")), QStringLiteral("Unbekannt"), kTimeout);
}

QTEST_MAIN(tst_Board)
#include "tst_board.moc"
