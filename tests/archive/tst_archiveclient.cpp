#include "archivetesthelpers.h"
#include "classifyinterface.h"
#include "orvexarchive.h"
#include "orvexarchiveclient.h"
#include "orvexarchivestore.h"
#include "orvexsamplearchive.h"

#include <QCryptographicHash>
#include <QImage>
#include <QSemaphore>
#include <QTemporaryDir>
#include <QtConcurrent>
#include <QtTest>

namespace {
const QChar kInfoSep(0xFFFD);

QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}
} // namespace

// The archive's archive client: connection chain, exports with progress and
// cancel, file names, document info, thumbnails, and uploads with the
// duplicate check, against one sample archive per run.
class tst_ArchiveClient : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void connectionChain_data();
    void connectionChain();
    void wrongArchiveKeepsConnection();
    void refusesWithoutConnection();
    void exportCurrentAndVersions();
    void exportRefusals_data();
    void exportRefusals();
    void cancelExportMidCopy();
    void cancelExportFromAnotherThread();
    void fileNamesAndInfo();
    void thumbnails_data();
    void thumbnails();
    void thumbnailOfUnreadableDocument();
    void thumbnailCache();
    void uploadWithoutDuplicates();
    void uploadOfAnExistingFile();
    void uploadWithADuplicatePage();
    void uploadFromAPoolThread();
    void cancelUpload();
    void corruptPdfUpload();
    void readOnlyDataFolder();
    void unknownUploads();
    void deleteNeedsAdministrator();

private:
    OrvexArchiveClient *client() { return static_cast<OrvexArchiveClient *>(m_archive.archiveClient()); }
    OrvexArchiveDocument document(int index) { return m_archive.documents().at(index); }
    QString samplePdf(int index, int version, const QString &extraPage = {});

    QTemporaryDir m_dir;
    QTemporaryDir m_scratch;
    OrvexArchive m_archive;
    OrvexConnectionValues m_values;
    int m_pdfs = 0;
};

void tst_ArchiveClient::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QVERIFY(m_dir.isValid());
    QVERIFY2(m_archive.open(m_dir.filePath(QStringLiteral("archive"))), qPrintable(m_archive.lastError()));
    m_values = m_archive.connectionValues();
    QVERIFY(!m_values.server.isEmpty());
}

void tst_ArchiveClient::init()
{
    client()->setChunkSize(OrvexArchiveClient::ChunkSize);
    QVERIFY2(connectClient(client(), m_values), qPrintable(client()->getLastError()));
}

void tst_ArchiveClient::cleanup()
{
    client()->resetConnection();
}

QString tst_ArchiveClient::samplePdf(int index, int version, const QString &extraPage)
{
    const QString path = m_scratch.filePath(QStringLiteral("sample-%1.pdf").arg(++m_pdfs));
    QString error;
    if (!OrvexSampleArchive::writeSamplePdf(path, index, version, extraPage, &error))
        qWarning("%s", qPrintable(error));
    return path;
}

void tst_ArchiveClient::connectionChain_data()
{
    QTest::addColumn<QString>("server");
    QTest::addColumn<int>("portOffset");
    QTest::addColumn<QString>("login1");
    QTest::addColumn<QString>("login2");
    QTest::addColumn<QString>("login3");
    QTest::addColumn<QString>("archive");
    QTest::addColumn<int>("failingStep"); // 0 none, 1 open, 2 log in, 3 select

    QTest::newRow("the archive's own values") << "" << 0 << "" << "" << "" << "" << 0;
    QTest::newRow("loopback address") << "127.0.0.1" << 0 << "" << "" << "" << "" << 0;
    QTest::newRow("another user") << "" << 0 << "jschmidt" << "" << "" << "" << 0;
    QTest::newRow("wrong server") << "archive.example.org" << 0 << "" << "" << "" << "" << 1;
    QTest::newRow("wrong port") << "" << 1 << "" << "" << "" << "" << 1;
    QTest::newRow("unknown user") << "" << 0 << "ghost" << "" << "" << "" << 2;
    QTest::newRow("wrong password") << "" << 0 << "" << "secret" << "" << "" << 2;
    QTest::newRow("wrong tenant") << "" << 0 << "" << "" << "other" << "" << 2;
    QTest::newRow("wrong archive") << "" << 0 << "" << "" << "" << "Elsewhere" << 3;
}

void tst_ArchiveClient::connectionChain()
{
    QFETCH(QString, server);
    QFETCH(int, portOffset);
    QFETCH(QString, login1);
    QFETCH(QString, login2);
    QFETCH(QString, login3);
    QFETCH(QString, archive);
    QFETCH(int, failingStep);

    OrvexArchiveClient *c = client();
    QVERIFY(c->resetConnection());
    const bool opened = c->openConnection(server.isEmpty() ? m_values.server : server, m_values.port + portOffset);
    QCOMPARE(opened, failingStep != 1);
    if (!opened) {
        QVERIFY(c->getLastError().contains(QStringLiteral("Cannot connect")));
        return;
    }
    const bool loggedIn = c->logIn(login1.isEmpty() ? m_values.login1 : login1,
                                   login2.isEmpty() ? m_values.login2 : login2,
                                   login3.isEmpty() ? m_values.login3 : login3);
    QCOMPARE(loggedIn, failingStep != 2);
    if (!loggedIn) {
        QVERIFY(c->getLastError().contains(QStringLiteral("Login failed")));
        QVERIFY(!c->isConnected());
        return;
    }
    const bool selected = c->selectArchive(archive.isEmpty() ? m_values.archiveName : archive);
    QCOMPARE(selected, failingStep != 3);
    QCOMPARE(c->isConnected(), failingStep == 0);
    if (!selected)
        QVERIFY(c->getLastError().contains(QStringLiteral("Unknown archive")));
    QStringList names;
    QVERIFY(c->getArchiveNames(names));
    QCOMPARE(names, QStringList{m_values.archiveName});
}

void tst_ArchiveClient::wrongArchiveKeepsConnection()
{
    OrvexArchiveClient *c = client();
    QVERIFY(!c->selectArchive(QStringLiteral("Elsewhere")));
    // Still logged in: another name can be tried without logging in again.
    QVERIFY(c->selectArchive(m_values.archiveName));
    QVERIFY(c->isConnected());
    QVERIFY(c->resetConnection());
    QVERIFY(!c->selectArchive(m_values.archiveName));
}

void tst_ArchiveClient::refusesWithoutConnection()
{
    OrvexArchiveClient *c = client();
    c->resetConnection();
    QString path;
    QVERIFY(!c->exportDocument(int(document(0).id), path, 1, QString()));
    QVERIFY(c->getLastError().contains(QStringLiteral("Not connected")));
    int pages = -1;
    QString format;
    QVERIFY(c->getDocumentThumbnail(int(document(0).id), 0, 800, pages, format, 0, 0, -1).isEmpty());
    QString upload;
    QVERIFY(!c->sendFile(samplePdf(0, 1), upload));
    QVERIFY(c->getDocumentFileName(QString::number(document(0).id), QString()).isEmpty());
    // Logging in needs an open connection first.
    QVERIFY(!c->logIn(m_values.login1, m_values.login2, m_values.login3));
}

void tst_ArchiveClient::exportCurrentAndVersions()
{
    // Sample document 3 has three versions.
    const OrvexArchiveDocument doc = document(2);
    QCOMPARE(doc.versions, 3);
    OrvexArchiveClient *c = client();
    QSignalSpy totals(c, &kelArchiveClientInterface::totalFileSize);
    QSignalSpy progress(c, &kelArchiveClientInterface::currentReadSize);
    c->setChunkSize(4096);

    QString current;
    QVERIFY2(c->exportDocument(int(doc.id), current, 1, QStringLiteral("IGNORE")), qPrintable(c->getLastError()));
    QCOMPARE(QFileInfo(current).fileName(), doc.fileName);
    const QByteArray bytes = readFile(current);
    QVERIFY(bytes.startsWith("%PDF-"));
    QCOMPARE(totals.size(), 1);
    QCOMPARE(totals.first().first().toString(), QString::number(bytes.size()));
    QCOMPARE(progress.size(), (bytes.size() + 4095) / 4096);
    QCOMPARE(progress.last().first().toString(), QString::number(bytes.size()));

    QCOMPARE(c->getAllVersions(int(doc.id)), (QStringList{"1", "2", "3"}));
    QString third, first, firstAlt;
    QVERIFY(c->exportDocumentVersion(int(doc.id), 3, third));
    QCOMPARE(readFile(third), bytes);
    QVERIFY(c->exportDocumentVersion(int(doc.id), 1, first));
    QVERIFY(readFile(first) != bytes);
    QCOMPARE(QFileInfo(first).fileName(), doc.fileName);
    QVERIFY(c->exportDocumentVersionAlt(int(doc.id), 1, firstAlt));
    QCOMPARE(readFile(firstAlt), readFile(first));
    QCOMPARE(QFileInfo(firstAlt).fileName(), c->getDocumentPartFileName(QString::number(doc.id), QString(), "1"));
    QVERIFY(QFileInfo(firstAlt).fileName().contains(QStringLiteral("_v1")));
    // Every export gets a folder of its own, so the caller may rename inside it.
    QVERIFY(QFileInfo(first).absolutePath() != QFileInfo(third).absolutePath());
}

void tst_ArchiveClient::exportRefusals_data()
{
    QTest::addColumn<int>("index"); // sample index, -1 for an unknown id
    QTest::addColumn<int>("version");
    QTest::addColumn<QString>("error");
    QTest::newRow("unknown document") << -1 << 0 << "Unknown document";
    QTest::newRow("unreadable document") << 4 << 0 << "may not read";
    QTest::newRow("unknown version") << 2 << 9 << "has no version";
    QTest::newRow("version zero") << 2 << -2 << "Invalid version";
}

void tst_ArchiveClient::exportRefusals()
{
    QFETCH(int, index);
    QFETCH(int, version);
    QFETCH(QString, error);
    const int id = index < 0 ? 999999 : int(document(index).id);
    QString path = QStringLiteral("untouched");
    const bool ok = version == 0 ? client()->exportDocument(id, path, 1, QString())
                                 : client()->exportDocumentVersion(id, version, path);
    QVERIFY(!ok);
    QCOMPARE(path, QStringLiteral("untouched"));
    QVERIFY2(client()->getLastError().contains(error), qPrintable(client()->getLastError()));
}

void tst_ArchiveClient::cancelExportMidCopy()
{
    OrvexArchiveClient *c = client();
    c->setChunkSize(512);
    QSignalSpy progress(c, &kelArchiveClientInterface::currentReadSize);
    // Canceled as a progress dialog would: while the copy runs, after its first chunk.
    connect(c, &kelArchiveClientInterface::currentReadSize, this, [c] { c->cancelStreaming(); });
    QString path;
    const bool ok = c->exportDocument(int(document(0).id), path, 1, QString());
    disconnect(c, &kelArchiveClientInterface::currentReadSize, this, nullptr);
    QVERIFY(!ok);
    QCOMPARE(progress.size(), 1);
    QCOMPARE(c->getLastError(), QStringLiteral("Canceled"));
    QVERIFY(path.isEmpty());
    // The next export runs again.
    QVERIFY(c->exportDocument(int(document(0).id), path, 1, QString()));
    QVERIFY(QFileInfo::exists(path));
    // The canceled copy left no partial file beside it.
    QDir exports(QFileInfo(path).absolutePath() + QStringLiteral("/.."));
    int files = 0;
    for (const QString &folder : exports.entryList(QDir::Dirs | QDir::NoDotAndDotDot))
        files += QDir(exports.filePath(folder)).entryList(QDir::Files).filter(document(0).fileName).size();
    QCOMPARE(files, 1);
}

void tst_ArchiveClient::cancelExportFromAnotherThread()
{
    OrvexArchiveClient *c = client();
    c->setChunkSize(256);
    QSemaphore started;
    QSemaphore canceled;
    // Runs on the copying thread: hold the copy after its first chunk until the
    // GUI thread has canceled.
    const auto connection = connect(c, &kelArchiveClientInterface::currentReadSize, c, [&] {
        if (started.available() == 0 && canceled.available() == 0) {
            started.release();
            canceled.acquire();
        }
    }, Qt::DirectConnection);
    QString path;
    QFuture<bool> future = QtConcurrent::run([&] { return c->exportDocument(int(document(1).id), path, 0, QString()); });
    QVERIFY(started.tryAcquire(1, 15000));
    c->cancelStreaming();
    canceled.release();
    future.waitForFinished();
    disconnect(connection);
    QVERIFY(!future.result());
    QCOMPARE(c->getLastError(), QStringLiteral("Canceled"));
}

void tst_ArchiveClient::fileNamesAndInfo()
{
    OrvexArchiveClient *c = client();
    const OrvexArchiveDocument a = document(0);
    const OrvexArchiveDocument b = document(3);
    const OrvexArchiveDocument hidden = document(4);
    QCOMPARE(c->getDocumentFileName(QString::number(a.id), QString::number(a.docsId)), a.fileName);
    QVERIFY(c->getDocumentFileName(QStringLiteral("x"), QString()).isEmpty());
    QVERIFY(c->getDocumentFileName(QString::number(hidden.id), QString()).isEmpty());
    QCOMPARE(c->getDocumentFileNames({QString::number(a.id), QString::number(b.id)}, {}),
             (QStringList{a.fileName, b.fileName}));
    // Fewer names than documents: the user may not export all of them.
    QCOMPARE(c->getDocumentFileNames({QString::number(a.id), QString::number(hidden.id), QStringLiteral("abc")}, {}),
             QStringList{a.fileName});
    QVERIFY(c->getDocumentPartFileName(QString::number(a.id), QString(), QStringLiteral("2")).isEmpty());
    QVERIFY(c->getDocumentPartFileName(QString::number(a.id), QString(), QStringLiteral("v1")).isEmpty());

    QStringList info;
    QVERIFY(c->getDocumentInfo({QString::number(a.id), QString::number(b.id)}, info));
    QCOMPARE(info.size(), 2);
    const QStringList fields = info.first().split(kInfoSep);
    QCOMPARE(fields.size(), 9);
    QCOMPARE(fields.at(0), QString::number(a.id));
    QCOMPARE(fields.at(1), a.title);
    QCOMPARE(fields.at(2), a.typeName);
    QCOMPARE(fields.at(6), QString::number(a.pages));
    QVERIFY(!c->getDocumentInfo({QString::number(a.id), QStringLiteral("999999")}, info));
    QCOMPARE(info.size(), 1);
    QVERIFY(!c->getDocumentInfo({QStringLiteral("1x")}, info));

    QStringList actions;
    QVERIFY(c->getDocumentActions({QString::number(a.id)}, actions, 0, QString()));
    QVERIFY(actions.contains(QStringLiteral("EXPORT")));
    QVERIFY(!actions.contains(QStringLiteral("DELETE")));
    QVERIFY(!c->getDocumentActions({QString::number(hidden.id)}, actions, 0, QString()));
    QVERIFY(c->moveDocToArchive(a.id, 0));
    QVERIFY(!c->moveDocToArchive(a.id, 3));
    QVERIFY(c->writeDocumentInfo(int(a.id), 0));
    QVERIFY(!c->writeDocumentInfo(999999, 0));

    const QStringList hits = c->searchDocs(a.title.section(QLatin1Char(' '), 1, 1));
    QCOMPARE(hits, QStringList{QString::number(a.id)});
    QVERIFY(c->searchDocs(hidden.title.section(QLatin1Char(' '), 1, 1)).isEmpty());
}

void tst_ArchiveClient::thumbnails_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<int>("page");
    QTest::addColumn<int>("size");
    QTest::addColumn<int>("version");
    QTest::addColumn<bool>("image");

    QTest::newRow("first page for a card") << 1 << 0 << 800 << -1 << true;
    QTest::newRow("last page, small") << 1 << -99 << 120 << -1 << true; // -99: the last page
    QTest::newRow("duplicate check size") << 3 << 0 << 1024 << -1 << true;
    QTest::newRow("old version") << 2 << 0 << 300 << 1 << true;
    QTest::newRow("page past the end") << 1 << 50 << 800 << -1 << false;
    QTest::newRow("negative page") << 1 << -1 << 800 << -1 << false;
    QTest::newRow("zero size") << 1 << 0 << 0 << -1 << false;
    QTest::newRow("unknown version") << 1 << 0 << 800 << 7 << false;
}

void tst_ArchiveClient::thumbnails()
{
    QFETCH(int, index);
    QFETCH(int, page);
    QFETCH(int, size);
    QFETCH(int, version);
    QFETCH(bool, image);
    const OrvexArchiveDocument doc = document(index);
    if (page == -99)
        page = doc.pages - 1;
    int pageCount = -1;
    QString format;
    const QByteArray bytes = client()->getDocumentThumbnail(int(doc.id), page, size, pageCount, format, 0, 0, version);
    QCOMPARE(!bytes.isEmpty(), image);
    if (!image) {
        QVERIFY(!client()->getLastError().isEmpty());
        return;
    }
    QCOMPARE(pageCount, doc.pages);
    const QImage decoded = QImage::fromData(bytes);
    QVERIFY(!decoded.isNull());
    QCOMPARE(qMax(decoded.width(), decoded.height()), size);
    QVERIFY(decoded.height() > decoded.width()); // A4 portrait
}

void tst_ArchiveClient::thumbnailOfUnreadableDocument()
{
    const OrvexArchiveDocument hidden = document(4);
    int pageCount = -1;
    QString format;
    // A card gets nothing and falls back to its own placeholder ...
    QVERIFY(client()->getDocumentThumbnail(int(hidden.id), 0, 800, pageCount, format, 0, 0, -1).isEmpty());
    QCOMPARE(pageCount, 1);
    // ... the duplicate check gets the archive's not-authorised image.
    const QByteArray placeholder = client()->getDocumentThumbnail(int(hidden.id), 0, 1024, pageCount, format, 9, 0, 1);
    QCOMPARE(placeholder, OrvexArchiveClient::notAuthorisedImage());
    QVERIFY(!QImage::fromData(placeholder).isNull());
    QCOMPARE(QString::fromLatin1(QCryptographicHash::hash(placeholder, QCryptographicHash::Md5).toHex()),
             OrvexArchiveClient::notAuthorisedImageMd5());
    // Management sees the page.
    m_archive.setUser(QStringLiteral("mmueller"));
    OrvexConnectionValues values = m_archive.connectionValues();
    QVERIFY(connectClient(client(), values));
    const QByteArray page = client()->getDocumentThumbnail(int(hidden.id), 0, 1024, pageCount, format, 9, 0, 1);
    m_archive.setUser(m_values.login1);
    QVERIFY(!page.isEmpty());
    QVERIFY(page != placeholder);
    QCOMPARE(pageCount, hidden.pages);
}

void tst_ArchiveClient::thumbnailCache()
{
    const OrvexArchiveDocument doc = document(6);
    int pageCount = 0;
    QString format;
    const QByteArray first = client()->getDocumentThumbnail(int(doc.id), 0, 222, pageCount, format, 0, 0, -1);
    QVERIFY(!first.isEmpty());
    const QString cached = m_archive.folder() + QStringLiteral("/cache/thumbs/%1/v1-p0-s222.png").arg(doc.id);
    QCOMPARE(readFile(cached), first);
    // Served from the cache: a marked cache file comes back as it is.
    QImage marked = QImage::fromData(first);
    marked.setPixelColor(0, 0, Qt::red);
    QVERIFY(marked.save(cached, "PNG"));
    const QByteArray second = client()->getDocumentThumbnail(int(doc.id), 0, 222, pageCount, format, 0, 0, -1);
    QCOMPARE(QImage::fromData(second).pixelColor(0, 0), QColor(Qt::red));
    QFile::remove(cached);
    QCOMPARE(client()->getDocumentThumbnail(int(doc.id), 0, 222, pageCount, format, 0, 0, -1), first);
}

void tst_ArchiveClient::uploadWithoutDuplicates()
{
    OrvexArchiveClient *c = client();
    const int before = m_archive.documents().size();
    // An index past the sample's documents: new text, new layout.
    const QString path = samplePdf(97, 1, QStringLiteral("Eine ganz neue Seite mit Zebrastreifen"));
    QSignalSpy totals(c, &kelArchiveClientInterface::totalFileSize);
    QSignalSpy ended(c, &kelArchiveClientInterface::saveDocEnd);
    QSignalSpy changed(&m_archive, &OrvexArchive::documentsChanged);
    QString uploadId;
    QVERIFY2(c->sendFile(path, uploadId), qPrintable(c->getLastError()));
    QVERIFY(!uploadId.isEmpty());
    QCOMPARE(totals.size(), 1);
    QCOMPARE(totals.first().first().toString(), QString::number(QFileInfo(path).size()));
    QCOMPARE(ended.size(), 1);

    const QStringList reply = c->checkDuplicates(QString(), path, uploadId, false, 0, 0, 1, 1);
    QCOMPARE(reply, QStringList{uploadId});
    QVERIFY(c->commitUpload(uploadId));
    const qlonglong id = c->getLastArchivedDocId();
    QVERIFY(id > 0);
    QCOMPARE(m_archive.documents().size(), before + 1);
    QCOMPARE(m_archive.documents().last().id, id);
    QCOMPARE(m_archive.documents().last().fileName, QFileInfo(path).fileName());
    QCOMPARE(changed.size(), 1);
    // Its text is searchable at once, and it is not pending any more.
    QCOMPARE(c->searchDocs(QStringLiteral("Zebrastreifen")), QStringList{QString::number(id)});
    QVERIFY(!c->commitUpload(uploadId));
    QVERIFY(QDir(m_archive.folder() + QStringLiteral("/uploads")).isEmpty());
}

void tst_ArchiveClient::uploadOfAnExistingFile()
{
    OrvexArchiveClient *c = client();
    const OrvexArchiveDocument original = document(5); // two versions
    QString exported;
    QVERIFY(c->exportDocumentVersion(int(original.id), 1, exported));
    const QStringList before = archiveSnapshot(m_archive.folder());

    QString uploadId;
    QVERIFY(c->sendFile(exported, uploadId));
    const QStringList reply = c->checkDuplicates(QStringLiteral("data"), exported, uploadId, true, 0, 0, 1, 1);
    QVERIFY(reply.size() > 2);
    QCOMPARE(reply.at(0), uploadId);
    const int originals = reply.at(1).toInt();
    QVERIFY(originals >= 1);
    QSet<QString> keys;
    for (int i = 0; i < originals; ++i) {
        const QString line = reply.at(2 + i);
        keys.insert(line.section(QLatin1Char(';'), 0, 0));
        QVERIFY(!QImage::fromData(QByteArray::fromBase64(line.section(QLatin1Char(';'), 1).toLatin1())).isNull());
    }
    QSet<QString> duplicatePages;
    for (int i = 2 + originals; i < reply.size(); ++i) {
        const QStringList fields = reply.at(i).split(QLatin1Char(';'));
        QCOMPARE(fields.size(), 5);
        QVERIFY2(keys.contains(fields.at(4)), qPrintable(reply.at(i)));
        if (fields.at(0) == QString::number(original.id) && fields.at(1) == QLatin1String("1"))
            duplicatePages.insert(fields.at(2));
    }
    // Every page of the exported version is found as a duplicate.
    QCOMPARE(duplicatePages.size(), original.pages);

    c->discardUpload(uploadId);
    QVERIFY(!c->commitUpload(uploadId));
    QCOMPARE(archiveSnapshot(m_archive.folder()), before);
    QVERIFY(QDir(m_archive.folder() + QStringLiteral("/uploads")).isEmpty());
}

void tst_ArchiveClient::uploadWithADuplicatePage()
{
    // The pages of sample document 8 and one new page: other bytes, same first pages.
    OrvexArchiveClient *c = client();
    const OrvexArchiveDocument original = document(7);
    const QString path = samplePdf(7, 1, QStringLiteral("Nachtrag: ein weiteres Blatt"));
    QString uploadId;
    QVERIFY(c->sendFile(path, uploadId));
    const QStringList reply = c->checkDuplicates(QString(), path, uploadId, false, 0, 0, 1, 1);
    QVERIFY(reply.size() > 2);
    const int originals = reply.at(1).toInt();
    QCOMPARE(originals, original.pages);
    QStringList hits;
    for (int i = 2 + originals; i < reply.size(); ++i)
        hits << reply.at(i);
    for (int page = 0; page < original.pages; ++page)
        QVERIFY2(hits.contains(QStringLiteral("%1;1;%2;page;page%2").arg(original.id).arg(page)),
                 qPrintable(hits.join(QLatin1Char(' '))));
    // Thumbnails of the duplicates for the dialog.
    int pageCount = 0;
    QString format;
    QVERIFY(!c->getDocumentThumbnail(int(original.id), 0, 1024, pageCount, format, 9, 0, 1).isEmpty());
    c->discardUpload(uploadId);
}

void tst_ArchiveClient::uploadFromAPoolThread()
{
    OrvexArchiveClient *c = client();
    QSignalSpy totals(c, &kelArchiveClientInterface::totalFileSize);
    QSignalSpy ended(c, &kelArchiveClientInterface::saveDocEnd);
    const QString path = samplePdf(98, 1, QStringLiteral("Vom Pool-Thread hochgeladen"));
    QStringList reply;
    // As the upload runs it: sendFile and checkDuplicates on a pool thread, the GUI thread waits.
    QFuture<void> task = QtConcurrent::run([&] {
        QString uploadId;
        if (c->sendFile(path, uploadId))
            reply = c->checkDuplicates(QString(), path, uploadId, false, 0, 0, 1, 1);
    });
    QTRY_VERIFY_WITH_TIMEOUT(task.isFinished(), 30000);
    QCOMPARE(reply.size(), 1);
    // The signals reached this thread's receivers.
    QTRY_COMPARE(ended.size(), 1);
    QCOMPARE(totals.size(), 1);
    QVERIFY(c->commitUpload(reply.first()));
}

void tst_ArchiveClient::cancelUpload()
{
    OrvexArchiveClient *c = client();
    c->setChunkSize(1000);
    const QString path = samplePdf(99, 1);
    connect(c, &kelArchiveClientInterface::currentReadSize, this, [c] { c->cancelStreaming(); });
    QSignalSpy ended(c, &kelArchiveClientInterface::saveDocEnd);
    const QStringList before = archiveSnapshot(m_archive.folder());
    QString uploadId;
    const bool ok = c->sendFile(path, uploadId);
    disconnect(c, &kelArchiveClientInterface::currentReadSize, this, nullptr);
    QVERIFY(!ok);
    QVERIFY(uploadId.isEmpty());
    QCOMPARE(ended.size(), 0);
    QCOMPARE(archiveSnapshot(m_archive.folder()), before);
    QVERIFY(QDir(m_archive.folder() + QStringLiteral("/uploads")).isEmpty());
}

void tst_ArchiveClient::corruptPdfUpload()
{
    OrvexArchiveClient *c = client();
    const QString path = m_scratch.filePath(QStringLiteral("broken.pdf"));
    QVERIFY(writeFile(path, QByteArray("%PDF-1.4\n1 0 obj << /Type /Catalog >> garbage\n").repeated(20)));
    const QStringList before = archiveSnapshot(m_archive.folder());
    const int documents = m_archive.documents().size();

    QString uploadId;
    QVERIFY(c->sendFile(path, uploadId)); // the transfer itself works
    QVERIFY(c->checkDuplicates(QString(), path, uploadId, false, 0, 0, 1, 1).isEmpty());
    QVERIFY2(c->getLastError().contains(QStringLiteral("not a readable PDF")), qPrintable(c->getLastError()));
    // Refused uploads do not linger.
    QVERIFY(!c->commitUpload(uploadId));
    QCOMPARE(archiveSnapshot(m_archive.folder()), before);

    // Committed without the check, the import refuses it as well.
    QVERIFY(c->sendFile(path, uploadId));
    const QStringList pending = archiveSnapshot(m_archive.folder());
    QVERIFY(!c->commitUpload(uploadId));
    QVERIFY(c->getLastError().contains(QStringLiteral("not a readable PDF")));
    QCOMPARE(archiveSnapshot(m_archive.folder()), pending);
    QCOMPARE(m_archive.documents().size(), documents);
    c->discardUpload(uploadId);
    QCOMPARE(archiveSnapshot(m_archive.folder()), before);
}

void tst_ArchiveClient::readOnlyDataFolder()
{
    // Tests may run as root, where permissions do not stop writes: a plain file
    // in place of the data folders makes every write into them fail.
    OrvexArchiveClient *c = client();
    const QString files = m_archive.folder() + QStringLiteral("/files");
    const QString moved = m_archive.folder() + QStringLiteral("/files.moved");
    const QString path = samplePdf(96, 1, QStringLiteral("Schreibgeschützt"));
    QString uploadId;
    QVERIFY(c->sendFile(path, uploadId));
    const QStringList before = archiveSnapshot(m_archive.folder());
    QVERIFY(QDir().rename(files, moved));
    QVERIFY(writeFile(files, "not a folder"));
    const bool committed = c->commitUpload(uploadId);
    const QString error = c->getLastError();
    const QStringList after = archiveSnapshot(m_archive.folder());
    QVERIFY(QFile::remove(files));
    QVERIFY(QDir().rename(moved, files));
    QVERIFY(!committed);
    QVERIFY2(error.contains(QStringLiteral("Cannot")), qPrintable(error));
    QCOMPARE(after, before);
    // Once the folder is back, the same upload goes through.
    QVERIFY2(c->commitUpload(uploadId), qPrintable(c->getLastError()));

    const QString uploads = m_archive.folder() + QStringLiteral("/uploads");
    QVERIFY(QDir(uploads).removeRecursively());
    QVERIFY(writeFile(uploads, "not a folder"));
    const bool sent = c->sendFile(path, uploadId);
    QVERIFY(QFile::remove(uploads));
    QVERIFY(QDir().mkpath(uploads));
    QVERIFY(!sent);
    QVERIFY(c->getLastError().contains(QStringLiteral("Cannot write")));
}

void tst_ArchiveClient::unknownUploads()
{
    OrvexArchiveClient *c = client();
    const QStringList before = archiveSnapshot(m_archive.folder());
    QVERIFY(!c->commitUpload(QStringLiteral("no-such-upload")));
    QVERIFY(c->getLastError().contains(QStringLiteral("Unknown upload")));
    QVERIFY(c->checkDuplicates(QString(), QString(), QStringLiteral("no-such-upload"), false, 0, 0, 1, 1).isEmpty());
    QVERIFY(c->checkDuplicates(QString(), QString(), QString(), false, 0, 0, 1, 1).isEmpty());
    c->discardUpload(QStringLiteral("no-such-upload"));
    QString uploadId;
    QVERIFY(!c->sendFile(m_scratch.filePath(QStringLiteral("missing.pdf")), uploadId));
    QVERIFY(c->getLastError().contains(QStringLiteral("Cannot read")));
    // Another user's upload is not ours to commit.
    const QString path = samplePdf(95, 1);
    QVERIFY(c->sendFile(path, uploadId));
    OrvexArchiveClient other(QSharedPointer<OrvexArchiveStore>(), nullptr);
    auto *second = static_cast<OrvexArchiveClient *>(c->createClient(QString()));
    OrvexConnectionValues values = m_values;
    values.login1 = QStringLiteral("jschmidt");
    QVERIFY(connectClient(second, values));
    QVERIFY(!second->commitUpload(uploadId));
    second->discardUpload(uploadId);
    delete second;
    c->discardUpload(uploadId);
    QCOMPARE(archiveSnapshot(m_archive.folder()), before);
}

void tst_ArchiveClient::deleteNeedsAdministrator()
{
    OrvexArchiveClient *c = client();
    const OrvexArchiveDocument doc = document(30);
    const QStringList before = archiveSnapshot(m_archive.folder());
    QVERIFY(!c->deleteDocument(QString::number(doc.id), {}));
    QVERIFY(c->getLastError().contains(QStringLiteral("may not delete")));
    QVERIFY(!c->deleteDocument(QStringLiteral("abc"), {}));
    QCOMPARE(archiveSnapshot(m_archive.folder()), before);

    OrvexConnectionValues values = m_values;
    values.login1 = QStringLiteral("admin");
    QVERIFY(connectClient(c, values));
    QStringList actions;
    QVERIFY(c->getDocumentActions({QString::number(doc.id)}, actions, 0, QString()));
    QVERIFY(actions.contains(QStringLiteral("DELETE")));
    QVERIFY2(c->deleteDocument(QString::number(doc.id), {}), qPrintable(c->getLastError()));
    QVERIFY(!QFileInfo::exists(m_archive.folder() + QStringLiteral("/files/%1").arg(doc.id)));
    QString path;
    QVERIFY(!c->exportDocument(int(doc.id), path, 1, QString()));
    QVERIFY(!c->deleteDocument(QString::number(doc.id), {}));
}

QTEST_MAIN(tst_ArchiveClient)
#include "tst_archiveclient.moc"
