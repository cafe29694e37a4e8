// Upload with duplicate check, against the recording client and a fresh embedded archive.
#include "classifyinterface.h"
#include "modalanswerer.h"
#include "orvexarchive.h"
#include "orvexarchiveworker.h"
#include "orvexfilecopy.h"
#include "recordingarchiveclient.h"

#include <QLabel>
#include <QPainter>
#include <QPdfWriter>
#include <QPushButton>
#include <QTemporaryDir>
#include <QtTest>

namespace {
enum Answer { NoDialog, Archive, Discard, CancelAll, CancelStream };

QString writeFile(const QTemporaryDir &dir, const QString &name, const QByteArray &content)
{
    QFile file(dir.filePath(name));
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size() ? file.fileName() : QString();
}

// Answers the duplicates dialog and keeps its count label and first caption,
// or the question asked when no duplicate can be shown and keeps its title.
ModalAnswerer *answerDialog(Answer how, QStringList *seen)
{
    return new ModalAnswerer([=](QWidget *modal) {
        if (auto *question = qobject_cast<QMessageBox *>(modal)) {
            *seen << question->windowTitle();
            for (QAbstractButton *button : question->buttons()) {
                if (question->buttonRole(button) == (how == Archive ? QMessageBox::AcceptRole : QMessageBox::RejectRole))
                    button->click();
            }
            return;
        }
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
    QTemporaryDir m_dir;
private slots:
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); }
    void recording_data()
    {
        QTest::addColumn<QStringList>("reply"); // fixed duplicate-check reply; empty: the client's own
        QTest::addColumn<QString>("failing");
        QTest::addColumn<int>("answer");
        QTest::addColumn<QStringList>("seen");  // count label and caption of the dialog
        const QString id = QStringLiteral("upload-1");
        const QString image = QStringLiteral("k;") + QString::fromLatin1(QByteArray("\x89PNG").toBase64());
        const QStringList none, own{"Found 1 duplicates", "DocId: 5 / Version: 0 / Page: 2"};
        QTest::newRow("only an upload id") << QStringList{id} << QString() << int(NoDialog) << none;
        QTest::newRow("lines of 4 and 6 fields skipped")
            << QStringList{id, "1", image, "7;2;0;x;k", "8;1;0;k", "9;1;0;x;k;y", "x;1;0;x;k"} << QString()
            << int(Archive) << QStringList{"Found 1 duplicates", "DocId: 7 / Version: 2 / Page: 1"};
        // Unreadable duplicates: nothing is discarded without the user's answer.
        const QStringList asked{"Duplicate Check"};
        QTest::newRow("no valid duplicate, archived anyway") << QStringList{id, "0", "8;1;3;k"} << QString() << int(Archive) << asked;
        QTest::newRow("no valid duplicate, discarded") << QStringList{id, "0", "8;1;3;k"} << QString() << int(Discard) << asked;
        QTest::newRow("absurd count does not wrap") << QStringList{id, "2147483647", "k;aGVsbG8="} << QString() << int(Archive) << asked;
        QTest::newRow("discard") << none << QString() << int(Discard) << own;
        QTest::newRow("cancel all") << none << QString() << int(CancelAll) << own;
        QTest::newRow("stream cancelled in the middle") << none << QString() << int(CancelStream) << none;
        QTest::newRow("failing send") << none << "sendFile" << int(NoDialog) << none;
        QTest::newRow("dies after the send") << none << "checkDuplicates" << int(NoDialog) << none;
        QTest::newRow("failing commit") << QStringList{id} << "commitUpload" << int(NoDialog) << none;
        // A slightly malformed reply still shows the duplicates it names.
        const QStringList seven{"Found 1 duplicates", "DocId: 7 / Version: 1 / Page: 1"};
        QTest::newRow("garbage count shows the duplicates") << QStringList{id, "two", image, "7;1;0;x;k"} << QString() << int(Archive) << seven;
        QTest::newRow("bad Base64 shows the duplicates") << QStringList{id, "1", "k;@@@", "7;1;0;x;k"} << QString() << int(Discard) << seven;
        QTest::newRow("absurd count shows the duplicates") << QStringList{id, "2147483647", image, "7;1;0;x;k"} << QString()
                                                           << int(Archive) << seven;
    }

    void recording()
    {
        QFETCH(QStringList, reply);
        QFETCH(QString, failing);
        QFETCH(int, answer);
        QFETCH(QStringList, seen);
        RecordingArchiveClient client;
        client.addDocument([] { RecordingArchiveClient::Document d; d.docId = 5; d.content = "same content"; return d; }());
        if (!reply.isEmpty())
            client.setDuplicateReply(reply);
        client.log().setFailing(failing);
        OrvexArchiveWorker worker;
        worker.setArchiveClient(&client);
        if (answer == CancelStream) { // the GUI thread runs on while the pool thread streams: the user cancels
            client.setChunkSize(4);
            client.log().setStalled(QStringLiteral("sendFile:chunk"));
            QTimer::singleShot(0, [&] {
                QVERIFY(client.log().waitStalled(QStringLiteral("sendFile:chunk"), 15000));
                worker.progressDialog()->emitCancelClicked();
                client.log().release(QStringLiteral("sendFile:chunk"));
            });
        }
        worker.setFileCount(answer == CancelAll ? 3 : 1);
        const bool archives = failing.isEmpty() && (answer == NoDialog ? reply.size() == 1 : answer == Archive);
        QStringList shown;
        std::unique_ptr<ModalAnswerer> answerer(answerDialog(Answer(answer), &shown));
        QCOMPARE(worker.uploadFile(QStringLiteral("data"), writeFile(m_dir, "a.pdf", "same content"), true), archives);
        QCOMPARE(shown, seen);
        QCOMPARE(client.documentIds().size(), archives ? 2 : 1);
        QVERIFY(client.pendingUploads().isEmpty()); // nothing half-archived
        QCOMPARE(worker.getLastError().isEmpty() && !worker.progressDialog()->isVisible(), archives);
        QCOMPARE(worker.isDuplicateCanceled(), answer >= Discard);
        QCOMPARE(worker.getLastArchivedDocId(), archives ? client.getLastArchivedDocId() : 0);
    }

    void embeddedArchive()
    {
        OrvexArchive archive;
        QVERIFY(archive.open(m_dir.filePath(QStringLiteral("archive"))));
        const OrvexConnectionValues v = archive.connectionValues();
        OrvexArchiveWorker worker;
        worker.setArchiveClient(archive.archiveClient());
        worker.setConnectionSettings(v.server, v.port, v.login1, v.login2, v.login3);
        worker.selectArchive(v.archiveName);
        const qlonglong sample = archive.documents().first().id;
        const int count = archive.documents().size();

        // A sample document's own file comes back as its duplicate; Discard archives nothing.
        QStringList shown;
        std::unique_ptr<ModalAnswerer> answerer(answerDialog(Discard, &shown));
        QVERIFY(!worker.uploadFile({}, worker.getDocument(QString::number(sample)), false));
        QVERIFY(shown.value(1).startsWith(QStringLiteral("DocId: %1 / Version: ").arg(sample)));

        // Bad input: empty, not a file, not a PDF; all refused with a reason.
        for (const QString &path : {writeFile(m_dir, "empty.pdf", {}), m_dir.path(), writeFile(m_dir, "c.pdf", "%PDF-no")})
            QVERIFY(!worker.uploadFile({}, path, false) && !worker.getLastError().isEmpty());
        QCOMPARE(archive.documents().size(), count);
        QVERIFY(QDir(m_dir.filePath(QStringLiteral("archive/uploads"))).isEmpty());

        // A new file becomes a document that the full-text search finds.
        const QString newFile = m_dir.filePath(QStringLiteral("new.pdf"));
        QPdfWriter pdf(newFile);
        QPainter painter(&pdf);
        painter.setFont(QFont(QStringLiteral("Sans"), 40));
        painter.drawText(QRect(0, 0, pdf.width(), pdf.height()), Qt::AlignCenter, QStringLiteral("Quokkaxylophon"));
        painter.end();
        answerer.reset(answerDialog(Archive, &shown));
        QVERIFY2(worker.uploadFile({}, newFile, false), qPrintable(worker.getLastError()));
        const QStringList rows = archive.classifyClient()->searchDocuments({QStringLiteral("OPT:FULLTEXT\uFEFFQuokkaxylophon")});
        QCOMPARE(rows.value(1).section(QLatin1Char('#'), 0, 0), QString::number(worker.getLastArchivedDocId()));
        QCOMPARE(rows.size(), 2);
    }
};

QTEST_MAIN(tst_Upload)
#include "tst_upload.moc"
