// The worker with the real client library on a fresh embedded archive: the
// library is loaded from the executables' folder and finds the archive through
// ORVEX_ARCHIVE_DIR.
#include "orvexarchive.h"
#include "orvexarchiveworker.h"
#include "sequenceanswerer.h"
#include "testfiles.h"

#include <QDirIterator>
#include <QTemporaryDir>
#include <QtTest>

namespace {

QStringList filesIn(const QString &root)
{
    return QDir(root).entryList(QDir::Files, QDir::Name);
}

} // namespace

class tst_ArchiveExport : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        QVERIFY2(m_archive.open(m_archiveDir.path()), qPrintable(m_archive.lastError()));
        qputenv("ORVEX_ARCHIVE_DIR", QFile::encodeName(m_archiveDir.path()));
        const OrvexConnectionValues values = m_archive.connectionValues();
        m_worker.setConnectionSettings(values.server, values.port, values.login1, values.login2, values.login3);
        m_worker.selectArchive(values.archiveName); // loads the client library and connects
        QVERIFY2(m_worker.getArchiveClient() && m_worker.doConnect(false), qPrintable(m_worker.getLastError()));
    }

    void init() { m_target.reset(new QTemporaryDir); }

    void exportsIntoAFolder()
    {
        QList<qlonglong> ids, docsIds;
        QMap<QString, qlonglong> byName;
        for (const OrvexArchiveDocument &document : pick(1, 3)) {
            ids << document.id;
            docsIds << document.docsId;
            byName.insert(document.fileName, document.id);
        }
        QCOMPARE(byName.size(), 3);
        QStringList result;
        SequenceAnswerer answerer({SequenceAnswerer::press(QMessageBox::Ok)});
        QVERIFY2(m_worker.exportDocuments(ids, docsIds, {}, {}, m_target->path(), false, result, -1, false, false,
                                          false, "IGNORE"),
                 qPrintable(m_worker.getLastError()));
        QCOMPARE(answerer.texts().size(), 1); // the name dialog only
        QCOMPARE(filesIn(m_target->path()), byName.keys());
        for (const QString &copy : result) {
            const QString fetched = m_worker.getDocument(QString::number(byName.value(QFileInfo(copy).fileName())));
            QVERIFY(readFile(copy).startsWith("%PDF"));
            QCOMPARE(readFile(copy), readFile(fetched));
        }
    }

    void versions()
    {
        const QList<OrvexArchiveDocument> documents = pick(3, 1);
        QVERIFY(!documents.isEmpty());
        const qlonglong id = documents[0].id;
        for (const bool alternate : {false, true}) {
            QTemporaryDir target;
            QStringList result;
            SequenceAnswerer answerer({SequenceAnswerer::press(QMessageBox::Ok)});
            QVERIFY2(m_worker.exportDocuments({id, id, id}, {}, {1, 2, 3}, {}, target.path(), false, result, -1, false,
                                              false, alternate, {}),
                     qPrintable(m_worker.getLastError()));
            QCOMPARE(answerer.texts().size(), 1);
            // Every version arrives under a name of its own, with the archive's extension.
            const QStringList files = filesIn(target.path());
            QCOMPARE(files.size(), 3);
            QCOMPARE(files.filter(QRegularExpression("\\.pdf$")), files);
            QVERIFY(readFile(target.filePath(files[0])) != readFile(target.filePath(files[2])));
        }
    }

private:
    // Readable documents with at least the given number of versions.
    QList<OrvexArchiveDocument> pick(int minimumVersions, int count)
    {
        QList<OrvexArchiveDocument> chosen;
        for (const OrvexArchiveDocument &document : m_archive.documents())
            if (document.readable && document.versions >= minimumVersions && chosen.size() < count)
                chosen << document;
        return chosen;
    }

    QTemporaryDir m_archiveDir;
    OrvexArchive m_archive;
    OrvexArchiveWorker m_worker;
    std::unique_ptr<QTemporaryDir> m_target;
};

QTEST_MAIN(tst_ArchiveExport)
#include "tst_archiveexport.moc"
