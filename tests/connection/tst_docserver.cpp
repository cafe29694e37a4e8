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

#include <future>
#include <memory>

namespace {

struct Answer
{
    int status = -1; // -1: no answer at all
    QByteArray body;
    QByteArray type;
    QByteArray disposition;
    qint64 length = -1;
};

// Sends target exactly as given (no encoding, no normalising on the way).
Answer fetchRaw(int port, const QByteArray &target, const char *method = "GET")
{
    httplib::Client client("127.0.0.1", port);
    client.set_url_encode(false);
    client.set_connection_timeout(10);
    client.set_read_timeout(30);
    httplib::Result result = qstrcmp(method, "HEAD") == 0   ? client.Head(target.constData())
        : qstrcmp(method, "POST") == 0                      ? client.Post(target.constData(), "x", "text/plain")
        : qstrcmp(method, "DELETE") == 0                    ? client.Delete(target.constData())
                                                            : client.Get(target.constData());
    Answer answer;
    if (!result)
        return answer;
    answer.status = result->status;
    answer.body = QByteArray::fromStdString(result->body);
    answer.type = QByteArray::fromStdString(result->get_header_value("Content-Type"));
    answer.disposition = QByteArray::fromStdString(result->get_header_value("Content-Disposition"));
    if (result->has_header("Content-Length"))
        answer.length = QByteArray::fromStdString(result->get_header_value("Content-Length")).toLongLong();
    return answer;
}

// The way a drop target fetches the URL a drag hands out.
Answer fetchUrl(const QUrl &url)
{
    QNetworkAccessManager manager;
    std::unique_ptr<QNetworkReply> reply(manager.get(QNetworkRequest(url)));
    QSignalSpy finished(reply.get(), &QNetworkReply::finished);
    Answer answer;
    if (!finished.wait(30000))
        return answer;
    answer.status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    answer.body = reply->readAll();
    answer.type = reply->rawHeader("Content-Type");
    answer.disposition = reply->rawHeader("Content-Disposition");
    answer.length = reply->header(QNetworkRequest::ContentLengthHeader).toLongLong();
    return answer;
}

QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

class tst_DocServer : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void delivers_data();
    void delivers();
    void nameWithSpacesAndUmlauts();
    void headAndRange();
    void parallelRequests();
    void refuses_data();
    void refuses();
    void archiveNotThereYet();
    void executable();

private:
    QByteArray exported(qlonglong docId, int version);

    QTemporaryDir m_dir;
    OrvexArchive m_archive;
    kelArchiveClientInterface *m_client = nullptr;
    std::unique_ptr<OrvexDocumentServer> m_server;
    OrvexArchiveDocument m_document;  // readable, one version
    OrvexArchiveDocument m_versioned; // readable, several versions
    qlonglong m_forbidden = 0;        // the archive user may not read it
    qlonglong m_unknown = 0;
    qlonglong m_image = 0;
};

void tst_DocServer::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QVERIFY(m_dir.isValid());
    QVERIFY2(m_archive.open(m_dir.filePath(QStringLiteral("archive"))), qPrintable(m_archive.lastError()));
    m_client = m_archive.archiveClient();
    const OrvexConnectionValues values = m_archive.connectionValues();
    QVERIFY(m_client->openConnection(values.server, values.port));
    QVERIFY(m_client->logIn(values.login1, values.login2, values.login3));
    QVERIFY(m_client->selectArchive(values.archiveName));

    QImage image(40, 30, QImage::Format_RGB32);
    image.fill(Qt::darkCyan);
    const QString imagePath = m_dir.filePath(QStringLiteral("scan.png"));
    QVERIFY(image.save(imagePath));
    m_image = m_archive.importFile(imagePath, QStringLiteral("Scan"));
    QVERIFY2(m_image > 0, qPrintable(m_archive.lastError()));

    for (const OrvexArchiveDocument &document : m_archive.documents()) {
        m_unknown = qMax(m_unknown, document.id + 1000);
        if (!document.readable)
            m_forbidden = document.id;
        else if (document.versions >= 2 && m_versioned.id == 0)
            m_versioned = document;
        else if (document.versions == 1 && m_document.id == 0 && document.fileName.endsWith(QLatin1String(".pdf")))
            m_document = document;
    }
    QVERIFY(m_document.id > 0);
    QVERIFY(m_versioned.id > 0);
    QVERIFY(m_forbidden > 0);

    m_server = std::make_unique<OrvexDocumentServer>(m_archive.folder());
    QString error;
    QVERIFY2(m_server->start(0, &error), qPrintable(error));
    QVERIFY(m_server->port() > 0);
}

void tst_DocServer::cleanupTestCase()
{
    m_server.reset();
}

QByteArray tst_DocServer::exported(qlonglong docId, int version)
{
    QString path;
    const bool ok = version > 0 ? m_client->exportDocumentVersion(int(docId), version, path)
                                : m_client->exportDocument(int(docId), path, 1, QString());
    return ok ? readFile(path) : QByteArray();
}

void tst_DocServer::delivers_data()
{
    QTest::addColumn<QByteArray>("target");
    QTest::addColumn<qlonglong>("docId");
    QTest::addColumn<int>("version");
    QTest::addColumn<QByteArray>("type");
    QTest::addColumn<QString>("fileName");

    const QByteArray doc = QByteArray::number(m_document.id);
    const QByteArray versioned = QByteArray::number(m_versioned.id);
    const QByteArray tail = "&archive=Orvex%20Archiv&host=desk7&port=7411&profileId=1";
    QTest::newRow("current") << "/openDoc/" + doc + "_.pdf?openmode=4&docid=" + doc + tail << m_document.id << 0
                             << QByteArray("application/pdf") << QString::fromLatin1(doc + "_.pdf");
    QTest::newRow("first version") << "/openDoc/v1.pdf?openmode=4&docid=" + versioned + "&version=1" + tail
                                   << m_versioned.id << 1 << QByteArray("application/pdf") << QStringLiteral("v1.pdf");
    QTest::newRow("last version") << "/openDoc/v.pdf?openmode=4&docid=" + versioned + "&version="
            + QByteArray::number(m_versioned.versions)
                                  << m_versioned.id << m_versioned.versions << QByteArray("application/pdf")
                                  << QStringLiteral("v.pdf");
    QTest::newRow("only the id") << "/openDoc/a.pdf?docid=" + doc << m_document.id << 0
                                 << QByteArray("application/pdf") << QStringLiteral("a.pdf");
    QTest::newRow("no name: the archive's") << "/openDoc/?&docid=" + doc + "&" << m_document.id << 0
                                            << QByteArray("application/pdf") << m_document.fileName;
    // The type follows the archive's file, not the name in the URL.
    QTest::newRow("image named pdf") << "/openDoc/scan.pdf?openmode=4&docid=" + QByteArray::number(m_image)
                                     << m_image << 0 << QByteArray("image/png") << QStringLiteral("scan.pdf");
}

void tst_DocServer::delivers()
{
    QFETCH(QByteArray, target);
    QFETCH(qlonglong, docId);
    QFETCH(int, version);
    QFETCH(QByteArray, type);
    QFETCH(QString, fileName);

    const QByteArray expected = exported(docId, version);
    QVERIFY(expected.size() > 0);
    const Answer answer = fetchRaw(m_server->port(), target);
    QCOMPARE(answer.status, 200);
    QCOMPARE(answer.type, type);
    QCOMPARE(answer.length, qint64(expected.size()));
    QVERIFY(answer.body == expected);
    QVERIFY2(answer.disposition.contains("filename*=UTF-8''" + QUrl::toPercentEncoding(fileName)),
             answer.disposition.constData());
}

void tst_DocServer::nameWithSpacesAndUmlauts()
{
    // Built the way a drag builds it: the text as it is, parsed tolerantly.
    const QString name = QStringLiteral("Rechnung März 2026 (Kopie) ß.pdf");
    const QUrl url(QStringLiteral("http://localhost:%1/openDoc/%2?openmode=4&docid=%3&archive=Orvex Archiv"
                                  "&host=desk7&port=7411&profileId=1")
                       .arg(m_server->port())
                       .arg(name)
                       .arg(m_document.id));
    QVERIFY(url.toEncoded().contains("M%C3%A4rz%202026"));
    const Answer answer = fetchUrl(url);
    QCOMPARE(answer.status, 200);
    QCOMPARE(answer.type, QByteArray("application/pdf"));
    QVERIFY(answer.body == exported(m_document.id, 0));
    QVERIFY2(answer.disposition.contains("filename*=UTF-8''Rechnung%20M%C3%A4rz%202026%20%28Kopie%29%20%C3%9F.pdf"),
             answer.disposition.constData());
    QVERIFY2(answer.disposition.contains("filename=\"Rechnung M_rz 2026 (Kopie) _.pdf\""), answer.disposition.constData());
}

void tst_DocServer::headAndRange()
{
    const QByteArray target = "/openDoc/a.pdf?openmode=4&docid=" + QByteArray::number(m_document.id);
    const QByteArray expected = exported(m_document.id, 0);
    const Answer head = fetchRaw(m_server->port(), target, "HEAD");
    QCOMPARE(head.status, 200);
    QCOMPARE(head.length, qint64(expected.size()));
    QVERIFY(head.body.isEmpty());

    httplib::Client client("127.0.0.1", m_server->port());
    const httplib::Result part = client.Get(target.constData(), {{"Range", "bytes=100-199"}});
    QVERIFY(part);
    QCOMPARE(part->status, 206);
    QVERIFY(QByteArray::fromStdString(part->body) == expected.mid(100, 100));
}

void tst_DocServer::parallelRequests()
{
    // More requests at once than the server has threads, each with a client of its own.
    const QList<qlonglong> ids{m_document.id, m_versioned.id, m_image,     m_forbidden, m_document.id,
                               m_versioned.id, m_image,       m_document.id, m_forbidden, m_versioned.id};
    std::vector<std::future<Answer>> answers;
    for (const qlonglong id : ids)
        answers.push_back(std::async(std::launch::async, [port = m_server->port(), id] {
            return fetchRaw(port, "/openDoc/a?openmode=4&docid=" + QByteArray::number(id));
        }));
    for (int i = 0; i < ids.size(); ++i) {
        const Answer answer = answers[size_t(i)].get();
        QCOMPARE(answer.status, ids[i] == m_forbidden ? 403 : 200);
        if (answer.status == 200)
            QVERIFY(answer.body == exported(ids[i], 0));
    }
}

void tst_DocServer::refuses_data()
{
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<QByteArray>("target");
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("reason");

    const QByteArray doc = QByteArray::number(m_document.id);
    const QByteArray query = "?openmode=4&docid=" + doc;
    const QByteArray get = "GET";
    const QByteArray trick = "Paths with \".\" or \"..\" segments are not served.";
    const QByteArray slashes = "Encoded slashes and backslashes are not served.";
    const QByteArray number = "must be a positive whole number";

    QTest::newRow("dot-dot as the name") << get << "/openDoc/../archive.sqlite" + query << 400 << trick;
    QTest::newRow("dot-dot after the name") << get << "/openDoc/a.pdf/../../../etc/passwd" + query << 400 << trick;
    QTest::newRow("dot-dot before the route") << get << "/files/../openDoc/a.pdf" + query << 400 << trick;
    QTest::newRow("encoded dot-dot") << get << "/openDoc/%2e%2E" + query << 400 << trick;
    QTest::newRow("encoded slash") << get << "/openDoc/..%2Farchive.sqlite" + query << 400 << slashes;
    QTest::newRow("encoded slash in a name") << get << "/openDoc/a%2fb.pdf" + query << 400 << slashes;
    QTest::newRow("encoded backslash") << get << "/openDoc/..%5C..%5Carchive.sqlite" + query << 400 << slashes;
    QTest::newRow("two segments") << get << "/openDoc/files/1.pdf" + query << 400
                                  << QByteArray("must be a single path segment");
    QTest::newRow("broken escape") << get << "/openDoc/a%zz.pdf" + query << 400 << QByteArray("broken percent escape");
    QTest::newRow("header injection") << get << "/openDoc/a%0D%0ASet-Cookie:%20x=1.pdf" + query << 400
                                      << QByteArray("control characters");
    QTest::newRow("the database") << get << QByteArray("/archive.sqlite") << 404 << QByteArray("Nothing is served here");
    QTest::newRow("route without name") << get << "/openDoc" + query << 404 << QByteArray("Nothing is served here");

    QTest::newRow("unknown parameter") << get << "/openDoc/a.pdf" + query + "&path=/etc/passwd" << 400
                                       << QByteArray("Unknown parameter \"path\"");
    QTest::newRow("parameter in other case") << get << "/openDoc/a.pdf?openmode=4&DOCID=" + doc << 400
                                             << QByteArray("Unknown parameter \"DOCID\"");
    QTest::newRow("docid twice") << get << "/openDoc/a.pdf" + query + "&docid=" + QByteArray::number(m_forbidden)
                                 << 400 << QByteArray("docid is given more than once");
    QTest::newRow("no docid") << get << QByteArray("/openDoc/a.pdf?openmode=4&version=1") << 400
                              << QByteArray("(docid) is missing");
    QTest::newRow("docid letters") << get << QByteArray("/openDoc/a.pdf?openmode=4&docid=abc") << 400 << number;
    QTest::newRow("docid negative") << get << "/openDoc/a.pdf?openmode=4&docid=-" + doc << 400 << number;
    QTest::newRow("docid with a blank") << get << "/openDoc/a.pdf?openmode=4&docid=%20" + doc << 400 << number;
    QTest::newRow("docid overflowing") << get << QByteArray("/openDoc/a.pdf?openmode=4&docid=99999999999999999999")
                                       << 400 << number;
    QTest::newRow("version letters") << get << "/openDoc/a.pdf" + query + "&version=abc" << 400 << number;
    QTest::newRow("version zero") << get << "/openDoc/a.pdf" + query + "&version=0" << 400 << number;
    QTest::newRow("version too big") << get << "/openDoc/a.pdf" + query + "&version=3000000000" << 400 << number;
    QTest::newRow("other open mode") << get << "/openDoc/a.pdf?openmode=3&docid=" + doc << 400
                                     << QByteArray("Only openmode=4");
    QTest::newRow("port not a number") << get << "/openDoc/a.pdf" + query + "&port=http" << 400
                                       << QByteArray("The port must be a number");
    QTest::newRow("post") << QByteArray("POST") << "/openDoc/a.pdf" + query << 405 << QByteArray("not POST");

    QTest::newRow("unknown document") << get << "/openDoc/a.pdf?openmode=4&docid=" + QByteArray::number(m_unknown)
                                      << 404 << "Document " + QByteArray::number(m_unknown) + " does not exist";
    QTest::newRow("unknown version") << get
                                     << "/openDoc/a.pdf?openmode=4&docid=" + QByteArray::number(m_versioned.id)
            + "&version=99"
                                     << 404 << QByteArray("has no version 99");
    QTest::newRow("forbidden") << get << "/openDoc/a.pdf?openmode=4&docid=" + QByteArray::number(m_forbidden) << 403
                               << "may not read document " + QByteArray::number(m_forbidden);
    QTest::newRow("forbidden version") << get
                                       << "/openDoc/a.pdf?openmode=4&docid=" + QByteArray::number(m_forbidden)
            + "&version=1"
                                       << 403 << QByteArray("may not read");
}

void tst_DocServer::refuses()
{
    QFETCH(QByteArray, method);
    QFETCH(QByteArray, target);
    QFETCH(int, status);
    QFETCH(QByteArray, reason);

    const Answer answer = fetchRaw(m_server->port(), target, method.constData());
    QCOMPARE(answer.status, status);
    QCOMPARE(answer.type, QByteArray("text/plain; charset=utf-8"));
    QVERIFY2(answer.body.contains(reason), answer.body.constData());
    QVERIFY(!answer.body.contains("%PDF"));
}

void tst_DocServer::archiveNotThereYet()
{
    // Regression: the server must not create an archive in an empty folder,
    // which would keep the host from creating its sample archive there.
    QTemporaryDir empty;
    QVERIFY(empty.isValid());
    OrvexDocumentServer server(empty.path());
    QVERIFY(server.start(0));
    const QByteArray target = "/openDoc/a.pdf?openmode=4&docid=1";
    Answer answer = fetchRaw(server.port(), target);
    QCOMPARE(answer.status, 503);
    QVERIFY2(answer.body.contains("There is no archive in"), answer.body.constData());
    QVERIFY(QDir(empty.path()).isEmpty(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden));

    // Once an archive is there, the same server serves it.
    OrvexArchive archive;
    QVERIFY(archive.open(empty.path(), false));
    QString exportedPath;
    QVERIFY(m_client->exportDocument(int(m_document.id), exportedPath, 1, QString()));
    const QString source = m_dir.filePath(QStringLiteral("later.pdf"));
    QVERIFY(QFile::copy(exportedPath, source));
    const qlonglong id = archive.importFile(source, QStringLiteral("Later"));
    QVERIFY2(id > 0, qPrintable(archive.lastError()));
    answer = fetchRaw(server.port(), "/openDoc/a.pdf?openmode=4&docid=" + QByteArray::number(id));
    QCOMPARE(answer.status, 200);
    QVERIFY(answer.body == readFile(source));

    // Files but no database: the server says why it cannot serve, and leaves them alone.
    QTemporaryDir damaged;
    QFile stray(damaged.filePath(QStringLiteral("notes.txt")));
    QVERIFY(stray.open(QIODevice::WriteOnly));
    stray.close();
    OrvexDocumentServer other(damaged.path());
    QVERIFY(other.start(0));
    answer = fetchRaw(other.port(), target);
    QCOMPARE(answer.status, 503);
    QVERIFY2(answer.body.contains("cannot be opened"), answer.body.constData());
    QCOMPARE(QDir(damaged.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList{"notes.txt"});
}

void tst_DocServer::executable()
{
    const QString name = QStringLiteral("orvex-docserver-test-%1").arg(QCoreApplication::applicationPid());
    QProcess process;
    process.start(QCoreApplication::applicationDirPath() + QStringLiteral("/orvexconnectionmanager"),
                  {"--name", name, "--profiles", m_dir.filePath(QStringLiteral("cm.ini")), "--port", "0",
                   "--archive", m_archive.folder()});
    QVERIFY(process.waitForStarted(15000));
    orvexLoginData::setServerNameOverride(name);
    orvexLoginData login;
    login.setWaitInterval(20);
    int port = 0;
    QTRY_VERIFY_WITH_TIMEOUT((port = login.getDNDPort()) > 0, 15000);
    orvexLoginData::setServerNameOverride(QString());
    QVERIFY(port != m_server->port());

    const QString query = QStringLiteral("?openmode=4&docid=%1&archive=Orvex Archiv&host=desk7&port=7411&profileId=1");
    Answer answer = fetchUrl(QUrl(QStringLiteral("http://localhost:%1/openDoc/Brief an Müller.pdf").arg(port)
                                  + query.arg(m_versioned.id)));
    QCOMPARE(answer.status, 200);
    QVERIFY(answer.body == exported(m_versioned.id, 0));
    answer = fetchUrl(QUrl(QStringLiteral("http://localhost:%1/openDoc/x.pdf").arg(port) + query.arg(m_forbidden)));
    QCOMPARE(answer.status, 403);

    process.terminate();
    QVERIFY(process.waitForFinished(15000));
    QCOMPARE(process.exitCode(), 0);
    // Every request is logged with its method, path and status.
    const QByteArray log = process.readAllStandardError();
    QVERIFY2(log.contains("HTTP GET /openDoc/Brief%20an%20M%C3%BCller.pdf?openmode=4&docid="
                          + QByteArray::number(m_versioned.id)),
             log.constData());
    QVERIFY2(log.contains("&profileId=1 200"), log.constData());
    QVERIFY2(log.contains("/openDoc/x.pdf?openmode=4&docid=" + QByteArray::number(m_forbidden)), log.constData());
    QVERIFY2(log.contains(" 403"), log.constData());
}

QTEST_MAIN(tst_DocServer)
#include "tst_docserver.moc"
