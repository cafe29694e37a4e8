// The worker with the real client library on a fresh embedded archive: the
// library is loaded from the executables' folder and finds the archive through
// ORVEX_ARCHIVE_DIR.
#include "kelarchiveclientinterface.h"
#include "orvexarchive.h"
#include "orvexarchiveworker.h"
#include "sequenceanswerer.h"

#include <QDirIterator>
#include <QTemporaryDir>
#include <QtTest>

#include <sys/stat.h>

namespace {

QByteArray readAll(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QStringList filesBelow(const QString &root)
{
    QStringList files;
    QDirIterator it(root, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext())
        files << QDir(root).relativeFilePath(it.next());
    files.sort();
    return files;
}

} // namespace

class tst_ArchiveExport : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void cleanupTestCase();

    void connectsThroughTheClientLibrary();
    void refusesWrongConnectionValues();
    void exportsIntoAFolder();
    void refusedDocument();
    void versions_data();
    void versions();

private:
    QList<OrvexArchiveDocument> pick(bool readable, int minimumVersions, int count) const;

    QTemporaryDir m_archiveDir;
    OrvexArchive *m_archive = nullptr;
    OrvexConnectionValues m_values;
    OrvexArchiveWorker *m_worker = nullptr;
    QTemporaryDir *m_target = nullptr;
};

void tst_ArchiveExport::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    m_archive = new OrvexArchive;
    QVERIFY2(m_archive->open(m_archiveDir.path()), qPrintable(m_archive->lastError()));
    m_values = m_archive->connectionValues();
    qputenv("ORVEX_ARCHIVE_DIR", QFile::encodeName(m_archiveDir.path()));
    QVERIFY(QFileInfo::exists(QCoreApplication::applicationDirPath() + QStringLiteral("/libkelarchiveclient.so")));
}

void tst_ArchiveExport::init()
{
    m_worker = new OrvexArchiveWorker;
    m_worker->setConnectionSettings(m_values.server, m_values.port, m_values.login1, m_values.login2, m_values.login3);
    m_worker->selectArchive(m_values.archiveName);
    QVERIFY2(m_worker->getLastError().isEmpty(), qPrintable(m_worker->getLastError()));
    m_target = new QTemporaryDir;
}

void tst_ArchiveExport::cleanup()
{
    delete m_worker;
    delete m_target;
}

void tst_ArchiveExport::cleanupTestCase()
{
    delete m_archive;
}

QList<OrvexArchiveDocument> tst_ArchiveExport::pick(bool readable, int minimumVersions, int count) const
{
    QList<OrvexArchiveDocument> chosen;
    for (const OrvexArchiveDocument &document : m_archive->documents())
        if (document.readable == readable && document.versions >= minimumVersions && chosen.size() < count)
            chosen << document;
    return chosen;
}

void tst_ArchiveExport::connectsThroughTheClientLibrary()
{
    QVERIFY(m_worker->getArchiveClient());
    QCOMPARE(m_worker->getCurrentArchive(), m_values.archiveName);
    QVERIFY(m_worker->doConnect(false));
    QStringList names;
    m_worker->getArchiveNames(names);
    QVERIFY(names.contains(m_values.archiveName));

    // A wrong archive name keeps the login; the right one then connects again.
    m_worker->selectArchive(QStringLiteral("no such archive"));
    QVERIFY(!m_worker->getLastError().isEmpty());
    m_worker->selectArchive(m_values.archiveName);
    QVERIFY(m_worker->doConnect(true));
}

void tst_ArchiveExport::refusesWrongConnectionValues()
{
    OrvexArchiveWorker worker;
    worker.setConnectionSettings(m_values.server, m_values.port, QStringLiteral("nobody-here"),
                                 QStringLiteral("wrong"), m_values.login3);
    worker.selectArchive(m_values.archiveName);
    QVERIFY(worker.getArchiveClient()); // loaded, but not logged in
    QVERIFY(!worker.doConnect(false));
    QVERIFY(!worker.getLastError().isEmpty());
}

void tst_ArchiveExport::exportsIntoAFolder()
{
    const QList<OrvexArchiveDocument> documents = pick(true, 1, 3);
    QCOMPARE(documents.size(), 3);
    QList<qlonglong> ids, docsIds;
    QStringList expected;
    for (const OrvexArchiveDocument &document : documents) {
        ids << document.id;
        docsIds << document.docsId;
        expected << document.fileName;
    }
    expected.sort();
    QStringList result;
    SequenceAnswerer answerer({SequenceAnswerer::press(QMessageBox::Ok)});
    QVERIFY2(m_worker->exportDocuments(ids, docsIds, {}, {}, m_target->path(), false, result, -1, false, false,
                                       false, QStringLiteral("IGNORE")),
             qPrintable(m_worker->getLastError()));
    QCOMPARE(answerer.seen().size(), 1); // the name dialog only
    QCOMPARE(filesBelow(m_target->path()), expected);
    QCOMPARE(result.size(), 3);

    for (int i = 0; i < documents.size(); ++i) {
        const QString copy = m_target->filePath(documents[i].fileName);
        const QString fetched = m_worker->getDocument(QString::number(documents[i].id));
        QVERIFY(readAll(copy).startsWith("%PDF"));
        QCOMPARE(readAll(copy), readAll(fetched));
        struct stat info;
        QCOMPARE(::stat(QFile::encodeName(copy).constData(), &info), 0);
        QCOMPARE(info.st_mode & 0777, mode_t(0666));
        if (i == 0) {
            // The client's export folder holds only what was fetched just now.
            const QString exportRoot = QFileInfo(QFileInfo(fetched).absolutePath()).absolutePath();
            QCOMPARE(filesBelow(exportRoot).size(), 1);
        }
    }
}

void tst_ArchiveExport::refusedDocument()
{
    const QList<OrvexArchiveDocument> refused = pick(false, 1, 1);
    if (refused.isEmpty())
        QSKIP("the sample archive has no document this user may not read");
    const QList<OrvexArchiveDocument> readable = pick(true, 1, 1);
    QStringList result;
    QVERIFY(!m_worker->exportDocuments({readable[0].id, refused[0].id}, {}, {}, {}, m_target->path(), false, result,
                                       -1, false, true, false, QStringLiteral("IGNORE")));
    QVERIFY(!m_worker->getLastError().isEmpty());
    QVERIFY(filesBelow(m_target->path()).isEmpty());
    QVERIFY(result.isEmpty());
}

void tst_ArchiveExport::versions_data()
{
    QTest::addColumn<bool>("alternate");
    QTest::newRow("version") << false;
    QTest::newRow("alternate") << true;
}

void tst_ArchiveExport::versions()
{
    QFETCH(bool, alternate);
    const QList<OrvexArchiveDocument> documents = pick(true, 3, 1);
    QVERIFY(!documents.isEmpty());
    const qlonglong id = documents[0].id;
    QStringList result;
    SequenceAnswerer answerer({SequenceAnswerer::press(QMessageBox::Ok)});
    QVERIFY2(m_worker->exportDocuments({id, id, id}, {}, {1, 2, 3}, {}, m_target->path(), false, result, -1, false,
                                       false, alternate, {}),
             qPrintable(m_worker->getLastError()));
    QCOMPARE(answerer.seen().size(), 1);
    // Every version arrives under a name of its own, with the archive's extension.
    const QStringList files = filesBelow(m_target->path());
    QCOMPARE(files.size(), 3);
    for (const QString &file : files)
        QVERIFY2(file.endsWith(QLatin1String(".pdf")), qPrintable(file));
    QVERIFY(readAll(m_target->filePath(files[0])) != readAll(m_target->filePath(files[2])));
}

QTEST_MAIN(tst_ArchiveExport)
#include "tst_archiveexport.moc"
