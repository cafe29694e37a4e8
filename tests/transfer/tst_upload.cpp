// Upload with duplicate check: the worker against the recording client (reply
// layouts, answers, failures) and against a fresh embedded archive.
#include "classifyinterface.h"
#include "modalanswerer.h"
#include "orvexarchive.h"
#include "orvexarchiveworker.h"
#include "orvexduplicatesdlg.h"
#include "orvexfilecopy.h"
#include "recordingarchiveclient.h"

#include <QLabel>
#include <QPainter>
#include <QPdfWriter>
#include <QPushButton>
#include <QTemporaryDir>
#include <QtTest>

namespace {
enum Answer { NoDialog, Archive, Discard, CancelAll };

QString writeFile(const QTemporaryDir &dir, const QString &name, const QByteArray &content)
{
    QFile file(dir.filePath(name));
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size() ? file.fileName() : QString();
}

// Answers the duplicates dialog and keeps its count label and first caption.
ModalAnswerer *answerDialog(Answer how, QStringList *seen)
{
    return new ModalAnswerer([=](QWidget *modal) {
        auto *caption = modal->findChild<QLabel *>(QStringLiteral("m_docid"));
        (void)QTest::qWaitFor([&] { return caption->text() != QLatin1String("Docid"); }, 5000);
        *seen << modal->findChild<QLabel *>(QStringLiteral("m_totallabel"))->text() << caption->text();
        if (how == CancelAll)
            modal->findChild<QPushButton *>(QStringLiteral("m_bCancelAll"))->click();
        else
            how == Archive ? static_cast<QDialog *>(modal)->accept() : static_cast<QDialog *>(modal)->reject();
    });
}
} // namespace

class tst_Upload : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); }
    void recording_data();
    void recording();
    void cancelInTheMiddle();
    void embeddedArchive();

private:
    QTemporaryDir m_dir;
};

void tst_Upload::recording_data()
{
    QTest::addColumn<QStringList>("reply"); // fixed duplicate-check reply; empty: the client's own
    QTest::addColumn<QString>("failing");
    QTest::addColumn<int>("answer");
    QTest::addColumn<QStringList>("seen");  // count label and caption of the dialog
    const QString id = QStringLiteral("upload-1");
    const QString image = QStringLiteral("k;") + QString::fromLatin1(QByteArray("\x89PNG").toBase64());
    const QStringList none;
    QTest::newRow("only an upload id") << QStringList{id} << QString() << int(NoDialog) << none;
    QTest::newRow("lines of 4 and 6 fields skipped")
        << QStringList{id, "1", image, "7;2;0;x;k", "8;1;0;k", "9;1;0;x;k;y", "x;1;0;x;k"} << QString()
        << int(Archive) << QStringList{"Found 1 duplicates", "DocId: 7 / Version: 2 / Page: 1"};
    QTest::newRow("no valid duplicate") << QStringList{id, "0", "8;1;3;k"} << QString() << int(Archive)
                                        << QStringList{"Found 0 duplicates", ""};
    QTest::newRow("discard") << none << QString() << int(Discard)
                             << QStringList{"Found 1 duplicates", "DocId: 5 / Version: 0 / Page: 2"};
    QTest::newRow("cancel all") << none << QString() << int(CancelAll)
                                << QStringList{"Found 1 duplicates", "DocId: 5 / Version: 0 / Page: 2"};
    QTest::newRow("failing send") << none << "sendFile" << int(NoDialog) << none;
    QTest::newRow("failing check") << none << "checkDuplicates" << int(NoDialog) << none;
    QTest::newRow("failing commit") << QStringList{id} << "commitUpload" << int(NoDialog) << none;
    QTest::newRow("garbage count") << QStringList{id, "two", image, "7;1;0;x;k"} << QString() << int(NoDialog) << none;
    QTest::newRow("count beyond the lines") << QStringList{id, "9", image} << QString() << int(NoDialog) << none;
    QTest::newRow("bad Base64") << QStringList{id, "1", "k;@@@", "7;1;0;x;k"} << QString() << int(NoDialog) << none;
}

void tst_Upload::recording()
{
    QFETCH(QStringList, reply);
    QFETCH(QString, failing);
    QFETCH(int, answer);
    QFETCH(QStringList, seen);
    RecordingArchiveClient client;
    RecordingArchiveClient::Document same;
    same.docId = 5;
    same.content = "same content";
    client.addDocument(same);
    if (!reply.isEmpty())
        client.setDuplicateReply(reply);
    client.log().setFailing(failing);
    OrvexArchiveWorker worker;
    worker.setArchiveClient(&client);
    worker.setFileCount(answer == CancelAll ? 3 : 1);
    const bool archives = failing.isEmpty() && (answer == NoDialog ? reply.size() == 1 : answer == Archive);
    QStringList shown;
    std::unique_ptr<ModalAnswerer> answerer(answerDialog(Answer(answer), &shown));
    QCOMPARE(worker.uploadFile(QStringLiteral("data"), writeFile(m_dir, "a.pdf", "same content"), true), archives);
    QCOMPARE(shown, seen);
    QCOMPARE(client.documentIds().size(), archives ? 2 : 1);
    QVERIFY(client.pendingUploads().isEmpty()); // nothing half-archived
    QCOMPARE(worker.getLastError().isEmpty(), archives);
    QCOMPARE(worker.isDuplicateCanceled(), answer == Discard || answer == CancelAll);
    QCOMPARE(worker.getLastArchivedDocId(), archives ? client.getLastArchivedDocId() : 0);
    QVERIFY(!worker.progressDialog()->isVisible());
    if (answer != NoDialog)
        QCOMPARE(client.log().last("checkDuplicates").args.mid(2), (QVariantList{"upload-1", true, 0, 0, 1, 1}));
}

void tst_Upload::cancelInTheMiddle()
{
    RecordingArchiveClient client;
    client.setChunkSize(16);
    client.log().setStalled(QStringLiteral("sendFile:chunk"));
    OrvexArchiveWorker worker;
    worker.setArchiveClient(&client);
    // The GUI thread runs on while the pool thread streams: the user cancels there.
    QTimer::singleShot(0, [&] {
        QVERIFY(client.log().waitStalled(QStringLiteral("sendFile:chunk"), 15000));
        worker.progressDialog()->emitCancelClicked();
        client.log().release(QStringLiteral("sendFile:chunk"));
    });
    QVERIFY(!worker.uploadFile({}, writeFile(m_dir, "b.pdf", QByteArray(4096, 'b')), false));
    QVERIFY(worker.isCanceled() && worker.isDuplicateCanceled());
    QCOMPARE(client.log().names(), (QStringList{"sendFile", "cancelStreaming", "getLastError"}));
    QVERIFY(client.pendingUploads().isEmpty());
}

void tst_Upload::embeddedArchive()
{
    OrvexArchive archive;
    QVERIFY2(archive.open(m_dir.filePath(QStringLiteral("archive"))), qPrintable(archive.lastError()));
    const OrvexConnectionValues values = archive.connectionValues();
    OrvexArchiveWorker worker;
    worker.setArchiveClient(archive.archiveClient());
    worker.setConnectionSettings(values.server, values.port, values.login1, values.login2, values.login3);
    worker.selectArchive(values.archiveName);
    const OrvexArchiveDocument sample = archive.documents().first();
    const int count = archive.documents().size();
    const QString uploads = m_dir.filePath(QStringLiteral("archive/uploads"));

    // A sample document's own file comes back as its duplicate; Discard archives nothing.
    QStringList shown;
    std::unique_ptr<ModalAnswerer> answerer(answerDialog(Discard, &shown));
    QVERIFY(!worker.uploadFile({}, worker.getDocument(QString::number(sample.id)), false));
    QVERIFY(shown.value(1).startsWith(QStringLiteral("DocId: %1 / Version: ").arg(sample.id)));

    // Bad input: empty, not a file, not a PDF; all refused with a reason.
    for (const QString &path : {writeFile(m_dir, "empty.pdf", {}), m_dir.path(), writeFile(m_dir, "c.pdf", "%PDF-no")}) {
        QVERIFY(!worker.uploadFile({}, path, false));
        QVERIFY2(!worker.getLastError().isEmpty(), qPrintable(path));
    }
    QCOMPARE(archive.documents().size(), count);
    QVERIFY(QDir(uploads).entryList(QDir::Files).isEmpty());

    // A new file becomes a document that the full-text search finds.
    const QString newFile = m_dir.filePath(QStringLiteral("new.pdf"));
    QPdfWriter pdf(newFile);
    QPainter painter(&pdf);
    painter.setFont(QFont(QStringLiteral("Sans"), 40));
    painter.drawText(QRect(0, 0, pdf.width(), pdf.height()), Qt::AlignCenter, QStringLiteral("Quokkaxylophon"));
    painter.end();
    answerer.reset(answerDialog(Archive, &shown));
    QVERIFY2(worker.uploadFile({}, newFile, false), qPrintable(worker.getLastError()));
    const QStringList rows = archive.classifyClient()->searchDocuments(
        {QStringLiteral("OPT:FULLTEXT") + QChar(0xFEFF) + QStringLiteral("Quokkaxylophon")});
    QCOMPARE(rows.size(), 2);
    QVERIFY(rows.at(1).startsWith(QString::number(worker.getLastArchivedDocId()) + QLatin1Char('#')));
}

QTEST_MAIN(tst_Upload)
#include "tst_upload.moc"
