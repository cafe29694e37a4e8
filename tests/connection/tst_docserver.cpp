// The drag-and-drop document server of the Connection Manager stand-in,
// fetched over loopback from a fresh sample archive: what it delivers, what it
// refuses and why, and the executable serving the port it reports.
#include "kelarchiveclientinterface.h"
#include "orvexarchive.h"
#include "orvexdocumentserver.h"
#include "orvexlogindata.h"

#include <QImage>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <httplib.h>

#include <algorithm>
#include <future>
#include <memory>

namespace {

struct Answer
{
    int status = -1; // -1: no answer at all
    QByteArray body, type, disposition;
    qint64 length = -1;
};

// Sends target exactly as given (no encoding, no normalising on the way).
Answer fetch(int port, const QByteArray &target, const QByteArray &method = "GET")
{
    httplib::Client client("127.0.0.1", port);
    client.set_url_encode(false);
    client.set_read_timeout(30);
    const httplib::Result result = method == "POST" ? client.Post(target.constData(), "x", "text/plain")
                                                    : client.Get(target.constData());
    Answer answer;
    if (result) {
        answer.status = result->status;
        answer.body = QByteArray::fromStdString(result->body);
        answer.type = QByteArray::fromStdString(result->get_header_value("Content-Type"));
        answer.disposition = QByteArray::fromStdString(result->get_header_value("Content-Disposition"));
        if (result->has_header("Content-Length"))
            answer.length = QByteArray::fromStdString(result->get_header_value("Content-Length")).toLongLong();
    }
    return answer;
}

// The way a drop target fetches a URL (its headers as sent, not decoded).
Answer fetchUrl(int port, const QByteArray &target)
{
    QNetworkAccessManager manager;
    const QUrl url = QUrl::fromEncoded("http://127.0.0.1:" + QByteArray::number(port) + target);
    std::unique_ptr<QNetworkReply> reply(manager.get(QNetworkRequest(url)));
    QSignalSpy finished(reply.get(), &QNetworkReply::finished);
    Answer answer;
    if (finished.wait(30000)) {
        answer.status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
        answer.body = reply->readAll();
        answer.type = reply->rawHeader("Content-Type");
        answer.disposition = reply->rawHeader("Content-Disposition");
        answer.length = reply->header(QNetworkRequest::ContentLengthHeader).toLongLong();
    }
    return answer;
}

QByteArray openDoc(qlonglong docId, const QByteArray &rest = {}, const QByteArray &name = "a.pdf")
{
    return "/openDoc/" + name + "?openmode=4&docid=" + QByteArray::number(docId) + rest;
}

} // namespace

class tst_DocServer : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        QVERIFY2(m_archive.open(m_dir.filePath("archive")), qPrintable(m_archive.lastError()));
        m_client = m_archive.archiveClient();
        const OrvexConnectionValues values = m_archive.connectionValues();
        QVERIFY(m_client->openConnection(values.server, values.port));
        QVERIFY(m_client->logIn(values.login1, values.login2, values.login3));
        QVERIFY(m_client->selectArchive(values.archiveName));
        QImage image(40, 30, QImage::Format_RGB32);
        image.fill(Qt::darkCyan);
        QVERIFY(image.save(m_dir.filePath("scan.png")));
        m_image = m_archive.importFile(m_dir.filePath("scan.png"), "Scan");
        QVERIFY2(m_image > 0, qPrintable(m_archive.lastError()));
        for (const OrvexArchiveDocument &document : m_archive.documents()) {
            if (!document.readable)
                m_forbidden = document.id;
            else if (document.versions >= 2 && !m_versioned.id)
                m_versioned = document;
            else if (document.versions == 1 && !m_document.id && document.fileName.endsWith(".pdf"))
                m_document = document;
        }
        QVERIFY(m_document.id > 0 && m_versioned.id > 0 && m_forbidden > 0);
        QString error;
        QVERIFY2(m_server.start(0, &error), qPrintable(error));
    }

    void delivers_data()
    {
        QTest::addColumn<QByteArray>("target");
        QTest::addColumn<qlonglong>("docId");
        QTest::addColumn<int>("version");
        QTest::addColumn<QByteArray>("type");
        QTest::addColumn<QString>("fileName");
        const qlonglong doc = m_document.id, versioned = m_versioned.id;
        const QByteArray tail = "&archive=Orvex%20Archiv&host=desk7&port=7411&profileId=1";
        QTest::newRow("current, every parameter") << openDoc(doc, tail) << doc << 0 << QByteArray("application/pdf") << "a.pdf";
        QTest::newRow("first version") << openDoc(versioned, "&version=1") << versioned << 1
                                       << QByteArray("application/pdf") << "a.pdf";
        QTest::newRow("spaces and umlauts") << openDoc(doc, {}, "Rechnung%20M%C3%A4rz%20(Kopie)%20%C3%9F.pdf") << doc << 0
                                            << QByteArray("application/pdf") << "Rechnung März (Kopie) ß.pdf";
        // The type follows the archive's file, not the name in the URL.
        QTest::newRow("image named pdf") << openDoc(m_image) << m_image << 0 << QByteArray("image/png") << "a.pdf";
    }

    void delivers()
    {
        QFETCH(QByteArray, target);
        QFETCH(qlonglong, docId);
        QFETCH(int, version);
        QFETCH(QByteArray, type);
        QFETCH(QString, fileName);
        const QByteArray expected = exported(docId, version);
        QVERIFY(!expected.isEmpty());
        const Answer answer = fetchUrl(m_server.port(), target);
        QCOMPARE(answer.status, 200);
        QCOMPARE(answer.type, type);
        QCOMPARE(answer.length, qint64(expected.size()));
        QVERIFY(answer.body == expected);
        QVERIFY2(answer.disposition.contains("filename*=UTF-8''" + QUrl::toPercentEncoding(fileName)),
                 answer.disposition.constData());
        QVERIFY(std::all_of(answer.disposition.cbegin(), answer.disposition.cend(), [](char c) { return c > 0; }));
    }

    void parallelRequests()
    {
        // More requests at once than the server has threads, each with a client of its own.
        const QList<qlonglong> ids{m_document.id, m_versioned.id, m_image, m_forbidden, m_document.id,
                                   m_versioned.id, m_image, m_forbidden};
        std::vector<std::future<Answer>> answers;
        for (const qlonglong id : ids)
            answers.push_back(std::async(std::launch::async, [this, id] { return fetch(m_server.port(), openDoc(id)); }));
        for (int i = 0; i < ids.size(); ++i) {
            const Answer answer = answers[size_t(i)].get();
            QCOMPARE(answer.status, ids[i] == m_forbidden ? 403 : 200);
            QVERIFY(answer.status == 403 || answer.body == exported(ids[i], 0));
        }
    }

    void refuses_data()
    {
        QTest::addColumn<QByteArray>("target");
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("reason");
        const QByteArray query = "?openmode=4&docid=" + QByteArray::number(m_document.id);
        const QByteArray trick = "Paths with \".\" or \"..\" segments are not served.";
        const QByteArray slashes = "Encoded slashes and backslashes are not served.";
        const QByteArray number = "must be a positive whole number";
        const auto row = [](const char *name, const QByteArray &target, int status, const QByteArray &reason) {
            QTest::newRow(name) << target << status << reason;
        };
        row("dot-dot after the name", "/openDoc/a.pdf/../../../etc/passwd" + query, 400, trick);
        row("encoded dot-dot", "/openDoc/%2e%2E" + query, 400, trick);
        row("encoded slash", "/openDoc/..%2Farchive.sqlite" + query, 400, slashes);
        row("two segments", "/openDoc/files/1.pdf" + query, 400, "must be a single path segment");
        row("broken escape", "/openDoc/a%zz.pdf" + query, 400, "broken percent escape");
        row("header injection", "/openDoc/a%0D%0ASet-Cookie:%20x=1.pdf" + query, 400, "control characters");
        row("the database", "/archive.sqlite", 404, "Nothing is served here");
        row("unknown parameter", "/openDoc/a.pdf" + query + "&path=/etc/passwd", 400, "Unknown parameter \"path\"");
        row("docid twice", openDoc(m_document.id, "&docid=" + QByteArray::number(m_forbidden)), 400, "more than once");
        row("no docid", "/openDoc/a.pdf?openmode=4&version=1", 400, "(docid) is missing");
        row("docid negative", openDoc(-m_document.id), 400, number);
        row("version zero", openDoc(m_document.id, "&version=0"), 400, number);
        row("other open mode", "/openDoc/a.pdf?openmode=3&docid=1", 400, "Only openmode=4");
        row("unknown document", openDoc(999999), 404, "Document 999999 does not exist");
        row("unknown version", openDoc(m_versioned.id, "&version=99"), 404, "has no version 99");
        row("forbidden", openDoc(m_forbidden), 403, "may not read document " + QByteArray::number(m_forbidden));
    }

    void refuses()
    {
        QFETCH(QByteArray, target);
        QFETCH(int, status);
        QFETCH(QByteArray, reason);
        const Answer answer = fetch(m_server.port(), target);
        QCOMPARE(answer.status, status);
        QCOMPARE(answer.type, QByteArray("text/plain; charset=utf-8"));
        QVERIFY2(answer.body.contains(reason), answer.body.constData());
        QCOMPARE(fetch(m_server.port(), target, "POST").status, 405);
    }

    void archiveNotThereYet()
    {
        // The server must not create an archive in an empty folder, which would
        // keep the host from creating its sample archive there.
        QTemporaryDir empty;
        OrvexDocumentServer server(empty.path());
        QVERIFY(server.start(0));
        Answer answer = fetch(server.port(), openDoc(1));
        QCOMPARE(answer.status, 503);
        QVERIFY2(answer.body.contains("There is no archive in"), answer.body.constData());
        QVERIFY(QDir(empty.path()).isEmpty(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden));
        // Once an archive is there, the same server serves it.
        OrvexArchive archive;
        QVERIFY(archive.open(empty.path(), false));
        const qlonglong id = archive.importFile(m_dir.filePath("scan.png"), "Later");
        QVERIFY2(id > 0, qPrintable(archive.lastError()));
        QCOMPARE(fetch(server.port(), openDoc(id)).status, 200);
        // Files but no database: the server cannot serve, and leaves them alone.
        QTemporaryDir damaged;
        QVERIFY(QFile(damaged.filePath("notes.txt")).open(QIODevice::WriteOnly));
        OrvexDocumentServer other(damaged.path());
        QVERIFY(other.start(0));
        answer = fetch(other.port(), openDoc(1));
        QCOMPARE(answer.status, 503);
        QCOMPARE(QDir(damaged.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList{"notes.txt"});
    }

    void executable()
    {
        const QString name = QString("orvex-docserver-test-%1").arg(QCoreApplication::applicationPid());
        QProcess process;
        process.start(QCoreApplication::applicationDirPath() + "/orvexconnectionmanager",
                      {"--name", name, "--profiles", m_dir.filePath("cm.ini"), "--port", "0", "--archive", m_archive.folder()});
        QVERIFY(process.waitForStarted(15000));
        orvexLoginData::setServerNameOverride(name);
        orvexLoginData login;
        login.setWaitInterval(20);
        int port = 0;
        QTRY_VERIFY_WITH_TIMEOUT((port = login.getDNDPort()) > 0, 15000);
        orvexLoginData::setServerNameOverride(QString());
        const QByteArray target = openDoc(m_versioned.id, "&profileId=1", "Brief%20an%20M%C3%BCller.pdf");
        const Answer answer = fetch(port, target);
        QCOMPARE(answer.status, 200);
        QVERIFY(answer.body == exported(m_versioned.id, 0));
        QCOMPARE(fetch(port, openDoc(m_forbidden)).status, 403);
        process.terminate();
        QVERIFY(process.waitForFinished(15000));
    }

private:
    QByteArray exported(qlonglong docId, int version)
    {
        QString path;
        const bool ok = version > 0 ? m_client->exportDocumentVersion(int(docId), version, path)
                                    : m_client->exportDocument(int(docId), path, 1, QString());
        QFile file(path);
        return ok && file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    QTemporaryDir m_dir;
    OrvexArchive m_archive;
    OrvexDocumentServer m_server{m_dir.filePath("archive")};
    kelArchiveClientInterface *m_client = nullptr;
    OrvexArchiveDocument m_document;  // readable, one version
    OrvexArchiveDocument m_versioned; // readable, several versions
    qlonglong m_forbidden = 0;        // the archive user may not read it
    qlonglong m_image = 0;
};

QTEST_MAIN(tst_DocServer)
#include "tst_docserver.moc"
