// Notes come back exactly as typed. Each note of the hostile table is typed
// into a card of the real page, saved, brought back by a reload and by the
// background update, and read again after a restart of the embedded archive;
// the note field's value is compared character for character every time.
#include "boardpage.h"
#include "classifyinterface.h"
#include "hostilenotes.h"
#include "orvexarchive.h"
#include "orvexarchiveworker.h"
#include "orvexmimedata.h"
#include "orvexwbwebview.h"
#include "recordingarchiveclient.h"
#include "recordingclassifyclient.h"
#include "snackbarcatcher.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QPainter>
#include <QPdfWriter>
#include <QTemporaryDir>
#include <QUrlQuery>
#include <QtTest>

#include <memory>

namespace {

const int kTimeout = BoardPage::Timeout;
const QChar kSep(0xFEFF);

QString noteOf(QWebEngineView *board, const QString &cardId)
{
    const QVariant value = BoardPage::run(board, QStringLiteral("$('#textarea-%1').val()").arg(cardId));
    return value.isValid() ? value.toString() : QStringLiteral("<no card %1>").arg(cardId);
}

// Types the note into the card's field and leaves it. The text goes in through
// the page's editing, as typed or pasted text does (input events, the limit);
// it travels into the page as JSON, not through the scripts under test. Under
// Xvfb the page never holds the system focus, so leaving the field is told to
// it with the blur event that a click elsewhere would bring.
// With pieces > 1 the note goes in as that many insertions one after another.
void type(orvexwbwebview *board, const QString &cardId, const QString &note, int pieces = 1)
{
    QJsonArray parts;
    const int size = (note.size() + pieces - 1) / pieces;
    for (int at = 0; at < note.size() || parts.isEmpty(); at += qMax(1, size))
        parts.append(note.mid(at, size));
    const QString json = QString::fromUtf8(QJsonDocument(parts).toJson(QJsonDocument::Compact));
    BoardPage::run(board, QStringLiteral("var area = document.getElementById('textarea-%1');"
                                         "area.focus();"
                                         "%2.forEach(function (part) { document.execCommand('insertText', false, part); });"
                                         "area.dispatchEvent(new FocusEvent('blur'));")
                              .arg(cardId, json));
}

// The note the archive holds for an entry.
QString storedNote(ClassifyInterface *client, const QString &clipboardId, const QString &cardId)
{
    QStringList entries, notes;
    if (!client->getClipboardDocuments(clipboardId, entries, notes))
        return QStringLiteral("<no answer>");
    for (int i = 0; i < entries.size(); ++i) {
        if (entries.at(i).section(kSep, 1, 1) == cardId)
            return notes.value(i);
    }
    return QStringLiteral("<no entry %1>").arg(cardId);
}

} // namespace

class tst_Notes : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        QVERIFY(m_scratch.isValid());
        m_folder = m_scratch.filePath(QStringLiteral("archive"));
        OrvexArchive archive;
        QVERIFY2(archive.open(m_folder, false), qPrintable(archive.lastError()));
        const QString pdf = m_scratch.filePath(QStringLiteral("letter.pdf"));
        {
            QPdfWriter writer(pdf);
            QPainter painter(&writer);
            painter.drawText(100, 100, QStringLiteral("A letter"));
        }
        const qlonglong docId = archive.importFile(pdf, QStringLiteral("Letter"));
        QVERIFY2(docId > 0, qPrintable(archive.lastError()));
        ClassifyInterface *classify = archive.classifyClient();
        m_archiveClipboard = classify->createClipboard(QStringLiteral("Notes"));
        QVERIFY(!m_archiveClipboard.isEmpty());
        QVERIFY(classify->addToClipboard(m_archiveClipboard, QString::number(docId), QString()));
        QStringList entries, notes;
        QVERIFY(classify->getClipboardDocuments(m_archiveClipboard, entries, notes));
        m_archiveCard = entries.value(0).section(kSep, 1, 1);
    }

    void cleanup()
    {
        delete m_board;
        m_board = nullptr;
    }

    void roundTrip_data()
    {
        QTest::addColumn<QString>("note");
        for (const HostileNote &note : hostileNotes())
            QTest::newRow(note.fault) << note.text;
    }

    void roundTrip()
    {
        QFETCH(QString, note);
        RecordingClassifyClient server;
        RecordingArchiveClient thumbnails;
        const QString clip = server.addClipboard(QStringLiteral("Work"));
        for (const QString docId : {"100", "101"}) {
            server.addDocument({docId, QStringLiteral("Title ") + docId, QString(), QString(), QString(), 1});
            RecordingArchiveClient::Document document;
            document.docId = docId.toInt();
            thumbnails.addDocument(document);
        }
        server.addEntry(clip, QStringLiteral("100"), QStringLiteral("500"));
        orvexwbwebview *board = newBoard(&server, clip, &thumbnails);
        BoardPage::runUpdate(board);
        QCOMPARE(noteOf(board, "500"), QString());

        // Typed and saved: the server holds it as typed.
        type(board, "500", note);
        QTRY_COMPARE_WITH_TIMEOUT(server.clipboard(clip).entries.value(0).comment, note, kTimeout);
        QCOMPARE(noteOf(board, "500"), note);
        QCOMPARE(server.log().count("setClipboardComment"), 1);

        // Reloaded: the card is built again from the server's note. Read at
        // once, the field shows what the card was built with, before the
        // update that follows a reload puts the note in again.
        board->removeCard("500", false);
        QTRY_COMPARE_WITH_TIMEOUT(BoardPage::run(board, "$('#section-500').length").toInt(), 0, kTimeout);
        board->reloadCards();
        QCOMPARE(noteOf(board, "500"), note);
        BoardPage::runUpdate(board);
        QCOMPARE(noteOf(board, "500"), note);

        // The background update: the note changed elsewhere and back, and the
        // same note on a card it adds.
        server.setClipboardComment(clip, "500", QStringLiteral("changed elsewhere"));
        BoardPage::runUpdate(board);
        QCOMPARE(noteOf(board, "500"), QStringLiteral("changed elsewhere"));
        server.setClipboardComment(clip, "500", note);
        BoardPage::runUpdate(board);
        QCOMPARE(noteOf(board, "500"), note);
        server.addEntry(clip, QStringLiteral("101"), QStringLiteral("501"), note);
        BoardPage::runUpdate(board);
        QCOMPARE(noteOf(board, "501"), note);
        QCOMPARE(noteOf(board, "500"), note);

        // Nothing was saved beyond the one edit (and the two changes made
        // elsewhere), and nothing in a note ran.
        QCOMPARE(server.log().count("setClipboardComment"), 1 + 2);
        QCOMPARE(BoardPage::run(board, "typeof window.hacked").toString(), QStringLiteral("undefined"));
        QCOMPARE(BoardPage::run(board, "$('#overview img:not([id^=img-])').length").toInt(), 0);
    }

    // The embedded archive keeps the note, and a board made after the archive
    // was closed and opened again shows it.
    void restart_data() { roundTrip_data(); }

    void restart()
    {
        QFETCH(QString, note);
        auto archive = std::make_unique<OrvexArchive>();
        QVERIFY(archive->open(m_folder, false));
        QVERIFY(archive->classifyClient()->setClipboardComment(m_archiveClipboard, m_archiveCard, QString()));
        orvexwbwebview *board = newBoard(archive->classifyClient(), m_archiveClipboard);
        BoardPage::runUpdate(board);
        QCOMPARE(noteOf(board, m_archiveCard), QString());
        type(board, m_archiveCard, note);
        QTRY_COMPARE_WITH_TIMEOUT(storedNote(archive->classifyClient(), m_archiveClipboard, m_archiveCard), note,
                                  kTimeout);

        cleanup();
        archive.reset();
        archive = std::make_unique<OrvexArchive>();
        QVERIFY(archive->open(m_folder, false));
        QCOMPARE(storedNote(archive->classifyClient(), m_archiveClipboard, m_archiveCard), note);
        // As built from the archive, then after the update that follows.
        board = newBoard(archive->classifyClient(), m_archiveClipboard);
        QCOMPARE(noteOf(board, m_archiveCard), note);
        BoardPage::runUpdate(board);
        QCOMPARE(noteOf(board, m_archiveCard), note);
        cleanup(); // before the archive whose client it uses
    }

    // A note names a file when the archive knows no name: whatever it holds,
    // the file gets a name of its own in the folder it was fetched into.
    void exportNames_data() { roundTrip_data(); }

    void exportNames()
    {
        QFETCH(QString, note);
        RecordingArchiveClient client;
        RecordingArchiveClient::Document document;
        document.docId = 4711;
        client.addDocument(document);
        OrvexArchiveWorker worker;
        worker.setArchiveClient(&client);
        QTemporaryDir folder;
        const QString fetched = folder.filePath(QStringLiteral("fetched.pdf"));
        QFile file(fetched);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.close();

        const QString named = worker.getNewFileName(fetched, {{QStringLiteral("4711"), note}}, 4711, 1, -1, true);
        QVERIFY2(QFileInfo::exists(named), qPrintable(named));
        QCOMPARE(QFileInfo(named).absolutePath(), QFileInfo(fetched).absolutePath());
        QVERIFY2(QFileInfo(named).fileName().startsWith(QStringLiteral("4711_")), qPrintable(named));
        QVERIFY(named.endsWith(QStringLiteral(".pdf")));

        // A card dragged out carries its note as the remark that names the
        // document's URL: one URL, whose query the note does not cut off.
        RecordingClassifyClient classify;
        classify.setConnectionMode(QStringLiteral("Online"));
        classify.setServer(QStringLiteral("archive.example"), 4711, 7);
        std::unique_ptr<OrvexMimeData> drag(OrvexMimeData::create({{4711, 1, 0, note}}, &classify, &worker));
        const QStringList urls = QString::fromUtf8(drag->data(QStringLiteral("text/x-orvex-uri"))).split("\r\n");
        QCOMPARE(urls.size(), 1);
        QVERIFY2(!urls.first().contains(QLatin1Char('\n')), qPrintable(urls.first()));
        const QUrl url(urls.first());
        QVERIFY2(url.isValid(), qPrintable(urls.first()));
        QVERIFY2(url.path().startsWith(QStringLiteral("/openDoc/4711_")), qPrintable(url.path()));
        QCOMPARE(QUrlQuery(url).queryItemValue(QStringLiteral("docid")), QStringLiteral("4711"));
        QCOMPARE(QUrlQuery(url).queryItemValue(QStringLiteral("host")), QStringLiteral("archive.example"));
    }

    // Typing stops at 1024 characters, an emoji counting once, and never cuts
    // one in half; a note that is longer already does not grow.
    void typingStopsAtTheLimit_data()
    {
        QTest::addColumn<QString>("before"); // the note the server holds
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("after");
        const QString emoji = QString::fromUtf8("\xF0\x9F\x98\x80");
        QTest::newRow("letters") << QString() << QString(1100, 'a') << QString(1024, 'a');
        QTest::newRow("emoji were cut at 512") << QString() << emoji.repeated(1030) << emoji.repeated(1024);
        QTest::newRow("cut where it was typed") << QStringLiteral("end") << QString(1030, 'b')
                                                << QString(1021, 'b') + QStringLiteral("end");
        QTest::newRow("a longer note does not grow") << QString(1100, 'c') << QStringLiteral("d")
                                                     << QString(1100, 'c');
    }

    void typingStopsAtTheLimit()
    {
        QFETCH(QString, before);
        QFETCH(QString, typed);
        QFETCH(QString, after);
        RecordingClassifyClient server;
        const QString clip = server.addClipboard(QStringLiteral("Work"));
        server.addDocument({QStringLiteral("100"), QStringLiteral("Title"), QString(), QString(), QString(), 1});
        server.addEntry(clip, QStringLiteral("100"), QStringLiteral("500"), before);
        orvexwbwebview *board = newBoard(&server, clip);
        BoardPage::runUpdate(board);
        QCOMPARE(noteOf(board, "500"), before);
        BoardPage::run(board, "var a = document.getElementById('textarea-500'); a.selectionStart = a.selectionEnd = 0;");
        SnackbarCatcher snackbars;
        type(board, "500", typed, 2); // cut at the second piece, and no more is said at later ones
        QTRY_COMPARE_WITH_TIMEOUT(noteOf(board, "500"), after, kTimeout);
        if (after != before)
            QTRY_COMPARE_WITH_TIMEOUT(server.clipboard(clip).entries.value(0).comment, after, kTimeout);
        // Failed before: the cut passed without a word.
        QTRY_VERIFY(!snackbars.texts.isEmpty());
        QTest::qWait(100);
        QCOMPARE(snackbars.texts,
                 QStringList{QStringLiteral("app:A note holds at most 1024 characters: the rest was left out.")});
    }

private:
    // A board on the clipboard, its cards reloaded; the update that follows
    // the reload may still be running.
    orvexwbwebview *newBoard(ClassifyInterface *classify, const QString &clipboardId,
                             kelArchiveClientInterface *archive = nullptr)
    {
        delete m_board;
        m_board = new orvexwbwebview;
        m_board->setId(clipboardId);
        m_board->setArchiveClient(archive);
        m_board->setClassifyClient(classify);
        if (BoardPage::load(m_board))
            m_board->reloadCards();
        return m_board;
    }

    QTemporaryDir m_scratch;
    QString m_folder;
    QString m_archiveClipboard;
    QString m_archiveCard;
    orvexwbwebview *m_board = nullptr;
};

QTEST_MAIN(tst_Notes)
#include "tst_notes.moc"
