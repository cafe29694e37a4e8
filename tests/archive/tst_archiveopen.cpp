#include "archivetesthelpers.h"
#include "classifyinterface.h"
#include "orvexarchive.h"
#include "orvexarchiveclient.h"
#include "orvexclassifyclient.h"

#include <QPluginLoader>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QThread>
#include <QtConcurrent>
#include <QtTest>

namespace {
bool writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

bool makeDatabase(const QString &path, const QStringList &statements)
{
    const QString name = QStringLiteral("make-") + path;
    bool ok = true;
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
        db.setDatabaseName(path);
        ok = db.open();
        for (const QString &sql : statements) {
            QSqlQuery query(db);
            ok = ok && query.exec(sql);
        }
        db.close();
    }
    QSqlDatabase::removeDatabase(name);
    return ok;
}

QString pluginPath()
{
    return QCoreApplication::applicationDirPath() + QStringLiteral("/libkelarchiveclient.so");
}
} // namespace

// Opening archives: new, existing, damaged or missing databases; and the client
// plugin library loaded as the archive worker loads it.
class tst_ArchiveOpen : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void sampleArchive();
    void reopenKeepsEverything();
    void emptyArchiveWithoutSample();
    void unusableFolders_data();
    void unusableFolders();
    void databaseRemovedWhileOpen();
    void pluginLoadsAndConnects();
    void pluginReportsAnUnusableArchive();

private:
    QTemporaryDir m_dir;
    QString m_sample;
};

void tst_ArchiveOpen::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QVERIFY(m_dir.isValid());
    m_sample = m_dir.filePath(QStringLiteral("sample"));
    OrvexArchive archive;
    QVERIFY2(archive.open(m_sample), qPrintable(archive.lastError()));
}

void tst_ArchiveOpen::sampleArchive()
{
    OrvexArchive archive;
    QVERIFY(archive.open(m_sample));
    const QList<OrvexArchiveDocument> documents = archive.documents();
    QVERIFY(documents.size() >= 30);
    QSet<QString> types, statuses;
    int multiPage = 0, multiVersion = 0, unreadable = 0;
    for (const OrvexArchiveDocument &document : documents) {
        types.insert(document.typeName);
        statuses.insert(document.statusName);
        multiPage += document.pages > 1;
        multiVersion += document.versions > 1;
        unreadable += !document.readable;
        QVERIFY(document.docsId > 0 && document.docsId != document.id);
        QVERIFY(document.fileName.endsWith(QLatin1String(".pdf")));
    }
    QVERIFY(types.size() >= 3);
    QVERIFY(statuses.size() >= 3);
    QVERIFY(multiPage >= 10);
    QVERIFY(multiVersion >= 3);
    QVERIFY(unreadable >= 1);

    const QStringList roles = archive.classifyClient()->getAllRoles();
    QVERIFY(roles.contains(QStringLiteral("tavloUSER")));
    QVERIFY(!roles.filter(QRegularExpression(QStringLiteral("^r_"))).isEmpty());
    QVERIFY(!roles.filter(QRegularExpression(QStringLiteral("^LDAP_"))).isEmpty());

    // The values the host hands over are the ones the archive accepts.
    QVERIFY(connectClient(archive.archiveClient(), archive.connectionValues()));
}

void tst_ArchiveOpen::reopenKeepsEverything()
{
    const QStringList before = archiveSnapshot(m_sample);
    {
        OrvexArchive archive;
        QVERIFY(archive.open(m_sample));
        QVERIFY(archive.open(m_sample)); // opening again on the same object
    }
    QCOMPARE(archiveSnapshot(m_sample), before);
    QCOMPARE(before.filter(QRegularExpression(QStringLiteral("^schema_version\\|"))), QStringList{"schema_version|1"});
}

void tst_ArchiveOpen::emptyArchiveWithoutSample()
{
    const QString folder = m_dir.filePath(QStringLiteral("empty"));
    OrvexArchive archive;
    QVERIFY2(archive.open(folder, false), qPrintable(archive.lastError()));
    QVERIFY(archive.documents().isEmpty());
    ClassifyInterface *classify = archive.classifyClient();
    QList<QPair<QString, QString>> clipboards{{QStringLiteral("stale"), QStringLiteral("stale")}};
    QVERIFY(classify->getClipboards(clipboards));
    QVERIFY(clipboards.isEmpty());
    // The local user is known, so it can work at once.
    QVERIFY(!classify->createClipboard(QStringLiteral("Erste Mappe")).isEmpty());
    QVERIFY(connectClient(archive.archiveClient(), archive.connectionValues()));

    QTemporaryDir scratch;
    const QString image = scratch.filePath(QStringLiteral("scan.png"));
    QImage picture(120, 80, QImage::Format_RGB32);
    picture.fill(Qt::darkCyan);
    QVERIFY(picture.save(image));
    QSignalSpy changed(&archive, &OrvexArchive::documentsChanged);
    const qlonglong id = archive.importFile(image, QStringLiteral("Scan"));
    QVERIFY2(id > 0, qPrintable(archive.lastError()));
    QCOMPARE(changed.size(), 1);
    QCOMPARE(archive.documents().size(), 1);
    QCOMPARE(archive.documents().first().pages, 1);
    int pages = 0;
    QString format;
    // Images are served as they are.
    QFile original(image);
    QVERIFY(original.open(QIODevice::ReadOnly));
    QCOMPARE(archive.archiveClient()->getDocumentThumbnail(int(id), 0, 800, pages, format, 0, 0, -1), original.readAll());
    QVERIFY(archive.importFile(scratch.filePath(QStringLiteral("missing.pdf"))) == 0);
    QVERIFY(!archive.lastError().isEmpty());
}

void tst_ArchiveOpen::unusableFolders_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("error");
    QTest::newRow("garbage database") << "garbage" << "not an archive database";
    QTest::newRow("foreign database") << "foreign" << "no schema version";
    QTest::newRow("newer schema") << "newer" << "schema version 99";
    QTest::newRow("damaged schema table") << "damaged" << "damaged";
    QTest::newRow("database missing") << "missing" << "database is missing";
    QTest::newRow("folder is a file") << "file" << "is not a folder";
    QTest::newRow("database is a folder") << "dbfolder" << "is not a database file";
    QTest::newRow("no folder") << "none" << "No archive folder";
}

void tst_ArchiveOpen::unusableFolders()
{
    QFETCH(QString, kind);
    QFETCH(QString, error);
    const QString folder = m_dir.filePath(QStringLiteral("bad-") + kind);
    const QString database = folder + QStringLiteral("/archive.sqlite");
    QDir().mkpath(folder);
    if (kind == QLatin1String("garbage"))
        QVERIFY(writeFile(database, QByteArray("this is no database at all ").repeated(200)));
    else if (kind == QLatin1String("foreign"))
        QVERIFY(makeDatabase(database, {QStringLiteral("CREATE TABLE customers(id INTEGER)")}));
    else if (kind == QLatin1String("newer"))
        QVERIFY(makeDatabase(database, {QStringLiteral("CREATE TABLE schema_version(version INTEGER)"),
                                        QStringLiteral("INSERT INTO schema_version VALUES (99)")}));
    else if (kind == QLatin1String("damaged"))
        QVERIFY(makeDatabase(database, {QStringLiteral("CREATE TABLE schema_version(level INTEGER)")}));
    else if (kind == QLatin1String("missing"))
        QVERIFY(QDir().mkpath(folder + QStringLiteral("/files/1001")));
    else if (kind == QLatin1String("file"))
        QVERIFY(QDir(folder).removeRecursively() && writeFile(folder, "plain file"));
    else if (kind == QLatin1String("dbfolder"))
        QVERIFY(QDir().mkpath(database));

    const QByteArray databaseBefore = QFileInfo(database).isFile() ? [&] {
        QFile file(database);
        file.open(QIODevice::ReadOnly);
        return file.readAll();
    }() : QByteArray();

    OrvexArchive archive;
    QVERIFY(!archive.open(kind == QLatin1String("none") ? QString() : folder));
    QVERIFY2(archive.lastError().contains(error), qPrintable(archive.lastError()));
    QVERIFY(!archive.isOpen());
    QVERIFY(archive.documents().isEmpty());
    QVERIFY(archive.classifyClient() == nullptr);
    QVERIFY(archive.archiveClient() == nullptr);
    QCOMPARE(archive.connectionValues().port, 0);
    // Nothing was created or changed in a folder that is not an archive.
    if (QFileInfo(database).isFile()) {
        QFile file(database);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), databaseBefore);
    }
    if (kind == QLatin1String("missing"))
        QVERIFY(!QFileInfo::exists(database));
}

void tst_ArchiveOpen::databaseRemovedWhileOpen()
{
    const QString folder = m_dir.filePath(QStringLiteral("vanishing"));
    OrvexArchive archive;
    QVERIFY(archive.open(folder, false));
    auto *classify = static_cast<OrvexClassifyClient *>(archive.classifyClient());
    for (const QString &suffix : {QString(), QStringLiteral("-wal"), QStringLiteral("-shm")})
        QFile::remove(folder + QStringLiteral("/archive.sqlite") + suffix);
    // A thread that opens its own connection now finds no database, and says so
    // instead of creating an empty one.
    bool ok = true;
    QScopedPointer<QThread> thread(QThread::create([&] {
        QList<QPair<QString, QString>> clipboards;
        ok = classify->getClipboards(clipboards);
    }));
    thread->start();
    QVERIFY(thread->wait(30000));
    QVERIFY(!ok);
    QVERIFY2(classify->lastError().contains(QStringLiteral("Cannot open the archive database")),
             qPrintable(classify->lastError()));
    QVERIFY(!QFileInfo::exists(folder + QStringLiteral("/archive.sqlite")));
}

void tst_ArchiveOpen::pluginLoadsAndConnects()
{
    OrvexArchive archive;
    QVERIFY(archive.open(m_sample));
    qputenv("ORVEX_ARCHIVE_DIR", m_sample.toLocal8Bit());

    QPluginLoader loader(pluginPath());
    QCOMPARE(loader.metaData().value(QStringLiteral("IID")).toString(), QStringLiteral(kelArchiveClientInterface_iid));
    QObject *root = loader.instance();
    QVERIFY2(root, qPrintable(loader.errorString()));
    auto *factory = qobject_cast<kelArchiveClientInterface *>(root);
    QVERIFY(factory);
    kelArchiveClientInterface *client = factory->createClient(QCoreApplication::applicationDirPath());
    QVERIFY2(client, qPrintable(factory->getLastError()));
    QVERIFY2(connectClient(client, archive.connectionValues()), qPrintable(client->getLastError()));

    // The same archive: what the host's archive holds, the plugin's client exports.
    const OrvexArchiveDocument document = archive.documents().first();
    QCOMPARE(client->getDocumentFileName(QString::number(document.id), QString()), document.fileName);
    QSignalSpy total(client, SIGNAL(totalFileSize(QString)));
    QString path;
    QVERIFY(client->exportDocument(int(document.id), path, 1, QStringLiteral("IGNORE")));
    QVERIFY(QFileInfo(path).size() > 0);
    QCOMPARE(total.size(), 1);
    delete client;
    qunsetenv("ORVEX_ARCHIVE_DIR");
}

void tst_ArchiveOpen::pluginReportsAnUnusableArchive()
{
    const QString folder = m_dir.filePath(QStringLiteral("plugin-garbage"));
    QVERIFY(QDir().mkpath(folder));
    QVERIFY(writeFile(folder + QStringLiteral("/archive.sqlite"), QByteArray(4096, 'x')));
    qputenv("ORVEX_ARCHIVE_DIR", folder.toLocal8Bit());
    QPluginLoader loader(pluginPath());
    auto *factory = qobject_cast<kelArchiveClientInterface *>(loader.instance());
    QVERIFY(factory);
    QVERIFY(factory->createClient(QCoreApplication::applicationDirPath()) == nullptr);
    QVERIFY2(factory->getLastError().contains(QStringLiteral("not an archive database")),
             qPrintable(factory->getLastError()));
    qunsetenv("ORVEX_ARCHIVE_DIR");
}

QTEST_MAIN(tst_ArchiveOpen)
#include "tst_archiveopen.moc"
