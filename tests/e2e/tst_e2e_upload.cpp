// A host on a fresh sample archive: files dropped onto its list, and a document dragged out of it.
#include "dropdelivery.h"
#include "kelarchiveclientinterface.h"
#include "modalanswerer.h"
#include "orvexarchive.h"
#include "orvexdocumentlistview.h"
#include "orvexhostoptions.h"
#include "orvexhostsession.h"
#include "orvexhostuploader.h"
#include "orvexhostwindow.h"
#include "orvexlogindata.h"
#include "orvexmimedata.h"

#include <QNetworkReply>
#include <QPainter>
#include <QPdfWriter>
#include <QProcess>
#include <QPushButton>
#include <QStatusBar>
#include <QtTest>

class tst_E2eUpload : public QObject
{
    Q_OBJECT
    QTemporaryDir m_dir;
    OrvexHostSession m_session;
    qlonglong m_sample = 0; // a document the user may read

    QString sampleFile()
    {
        QString path;
        return m_session.archive()->archiveClient()->exportDocument(int(m_sample), path, 1, {}) ? path : "";
    }

private slots:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        OrvexHostOptions options = OrvexHostOptions::parse({QStringLiteral("orvexhost")});
        options.archiveFolder = m_dir.filePath(QStringLiteral("archive"));
        QVERIFY2(m_session.start(options), qPrintable(m_session.errorString()));
        m_session.window()->show();
        for (const OrvexArchiveDocument &document : m_session.archive()->documents())
            m_sample = m_sample || !document.readable ? m_sample : document.id;
        QFile notes(m_dir.filePath("notes.pdf")), empty(m_dir.filePath("empty.pdf"));
        QVERIFY(notes.open(QIODevice::WriteOnly) && notes.write("notes") && empty.open(QIODevice::WriteOnly));
    }

    void archiveFiles_data()
    {
        QTest::addColumn<QStringList>("files"); // "new:text" makes a PDF, "sample" exports m_sample
        QTest::addColumn<int>("archived");
        QTest::addColumn<QStringList>("reported"); // in the warning box or the status bar
        QTest::newRow("new file") << QStringList{"new:A letter"} << 1 << QStringList();
        QTest::newRow("non-PDF and empty named, the rest archived")
            << QStringList{"notes.pdf", "empty.pdf", "new:Second letter"} << 1
            << QStringList{"notes.pdf is not a PDF document.", "empty.pdf is empty."};
        QTest::newRow("sample again: duplicate shown, Cancel All ends the batch")
            << QStringList{"sample", "new:Never archived"} << 0
            << QStringList{"was not archived: it duplicates archived documents.", "not uploaded."};
    }

    void archiveFiles()
    {
        QFETCH(QStringList, files);
        QFETCH(int, archived);
        QFETCH(QStringList, reported);
        QList<QUrl> urls;
        for (const QString &file : qAsConst(files)) {
            QString path = file == QLatin1String("sample") ? sampleFile() : m_dir.filePath(file);
            if (file.startsWith(QLatin1String("new:"))) {
                QPdfWriter writer(path = m_dir.filePath(QString::number(qHash(file)) + ".pdf"));
                QPainter(&writer).drawText(QPointF(200, 200), file);
            }
            urls << QUrl::fromLocalFile(path);
        }
        QMimeData drop;
        drop.setUrls(urls);
        OrvexHostWindow *window = m_session.window();
        const int before = m_session.archive()->documents().size();
        QSignalSpy finished(window->uploader(), &OrvexHostUploader::finished);
        QStringList buttons; // of the duplicates dialog
        ModalAnswerer answer([&buttons](QWidget *modal) {
            if (auto *box = qobject_cast<QMessageBox *>(modal))
                return box->button(QMessageBox::Ok)->click();
            for (const QPushButton *button : modal->findChildren<QPushButton *>())
                buttons << button->text();
            modal->findChild<QPushButton *>(QStringLiteral("m_bCancelAll"))->click();
        });
        QVERIFY(deliverDrop(window->documentView()->viewport(), &drop));
        QTRY_COMPARE_WITH_TIMEOUT(finished.count(), 1, 60000);

        const auto ids = finished.at(0).at(0).value<QList<qlonglong>>(); // listed and selected
        QCOMPARE(ids.size(), archived);
        QCOMPARE(m_session.archive()->documents().size(), before + archived);
        QVERIFY(!archived || window->selectedDocumentIds() == ids);
        QCOMPARE(answer.seenClass() == "OrvexDuplicatesDlg", files.contains(QLatin1String("sample")));
        // Failed before: the button that archives the file anyway read "do_archive".
        QVERIFY2(buttons.isEmpty() || (buttons.contains(QStringLiteral("Archive Anyway"))
                                       && buttons.contains(QStringLiteral("Discard"))),
                 qPrintable(buttons.join(QStringLiteral(", "))));
        const QString shown = answer.seenText() + window->statusBar()->currentMessage();
        for (const QString &text : qAsConst(reported))
            QVERIFY2(shown.contains(text), qPrintable(shown));
    }

    void draggedDocumentOpensThroughTheStandIn()
    {
        const QString name = QStringLiteral("orvex-e2e-upload-%1").arg(QCoreApplication::applicationPid());
        QProcess standIn;
        standIn.start(QCoreApplication::applicationDirPath() + "/orvexconnectionmanager",
                      {"--name", name, "--profiles", m_dir.filePath("cm.ini"), "--port", "0", "--archive",
                       m_session.archive()->folder()});
        orvexLoginData::setServerNameOverride(name);
        orvexLoginData login;
        login.setWaitInterval(20);
        QTRY_VERIFY_WITH_TIMEOUT(login.getDNDPort() > 0, 15000);
        m_session.window()->selectDocuments({m_sample});
        QScopedPointer<OrvexMimeData> data(m_session.window()->documentView()->createSelectionMimeData());
        orvexLoginData::setServerNameOverride(QString());
        // What a drop target gets after the release, fetched as a browser or file manager would.
        // The stand-in listens on 127.0.0.1; the name in the URL need not
        // resolve there on every machine (containers), so ask loopback directly.
        QUrl url = data->getUrlList(true).value(0);
        url.setHost(QStringLiteral("127.0.0.1"));
        QNetworkAccessManager network;
        QScopedPointer<QNetworkReply> reply(network.get(QNetworkRequest(url)));
        QTRY_VERIFY_WITH_TIMEOUT(reply->isFinished(), 15000);
        QCOMPARE(reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt(), 200);
        QFile original(sampleFile());
        QVERIFY(original.open(QIODevice::ReadOnly) && reply->readAll() == original.readAll());
    }
};

QTEST_MAIN(tst_E2eUpload)
#include "tst_e2e_upload.moc"
