// orvexarchive-migrate: the sample archive onto a server and back again, and
// the copies that it refuses.
#include "archivetesthelpers.h"
#include "classifyinterface.h"
#include "orvexarchive.h"
#include "testpgserver.h"

#include <QDirIterator>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

namespace {
struct Run
{
    int exitCode = -1;
    QString output;
};

// Rows of an archive folder as the other engine keeps them too: without the
// embedded engine's change counters and the passwords a server does not keep.
QStringList comparable(const QString &folder)
{
    QStringList rows;
    for (const QString &row : archiveSnapshot(folder)) {
        if (row.startsWith(QLatin1String("revisions|")))
            continue;
        rows << (row.startsWith(QLatin1String("roles|")) ? row.section(QLatin1Char('|'), 0, 3) : row);
    }
    return rows;
}

// Every file under folder/files with its bytes.
QMap<QString, QByteArray> storedFiles(const QString &folder)
{
    QMap<QString, QByteArray> files;
    QDirIterator it(folder + QStringLiteral("/files"), QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        QFile file(it.next());
        file.open(QIODevice::ReadOnly);
        files.insert(it.filePath().mid(folder.size()), file.readAll());
    }
    return files;
}
} // namespace


class tst_Migrate : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QString error;
        m_pg = TestPgServer::instance(&error);
        QVERIFY2(m_pg, qPrintable(error));
        m_sample = m_dir.filePath(QStringLiteral("sample"));
        OrvexArchive archive;
        QVERIFY2(archive.open(m_sample), qPrintable(archive.lastError()));
    }

    void roundTrip()
    {
        const QString server = m_pg->createDatabase(QStringLiteral("moved"));
        const QStringList before = comparable(m_sample);
        const Run there = migrate({m_sample, server});
        QVERIFY2(there.exitCode == 0, qPrintable(there.output));
        const int versions = before.filter(QRegularExpression(QStringLiteral("^versions\\|"))).size();
        QVERIFY(versions > 36);
        QVERIFY2(there.output.contains(QStringLiteral("files: %1 checked, every content hash matches").arg(versions)),
                 qPrintable(there.output));
        QVERIFY2(!there.output.contains(QStringLiteral("DIFFERENT")), qPrintable(there.output));
        // The sample's users need login roles on the server; the command names them.
        QVERIFY2(there.output.contains(QStringLiteral("mmueller")), qPrintable(there.output));
        // The source is untouched.
        QCOMPARE(comparable(m_sample), before);

        // On the server the archive works for its users as it did in the folder.
        QVERIFY(m_pg->createArchiveUsers(QStringLiteral("moved")));
        OrvexArchive moved;
        QVERIFY2(moved.open(m_pg->address(QStringLiteral("moved"), QStringLiteral("jschmidt"))), qPrintable(moved.lastError()));
        QList<QPair<QString, QString>> clipboards;
        QVERIFY(moved.classifyClient()->getClipboards(clipboards));
        QCOMPARE(clipboards.size(), 3);
        OrvexArchive sample;
        QVERIFY(sample.open(m_sample));
        QCOMPARE(moved.documents().size(), sample.documents().size());

        // And back into a folder: the same rows and the same files.
        const QString back = m_dir.filePath(QStringLiteral("back"));
        const Run home = migrate({server, back});
        QVERIFY2(home.exitCode == 0, qPrintable(home.output));
        QCOMPARE(comparable(back), before);
        QCOMPARE(storedFiles(back), storedFiles(m_sample));
    }

    void refusals_data()
    {
        QTest::addColumn<QString>("source"); // "sample" for the sample folder
        QTest::addColumn<QString>("target"); // "server:NAME" a new database, "used" one that holds an archive
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<QString>("message");
        QTest::newRow("target holds an archive") << "sample" << "used" << 2 << "holds an archive already";
        QTest::newRow("source is no archive") << "empty" << "server:fromnothing" << 2 << "There is no archive";
        QTest::newRow("malformed address") << "sample" << "postgresql://x@host:0/db" << 1 << "no valid port";
        QTest::newRow("one argument") << "sample" << QString() << 1 << "give SOURCE and TARGET";
    }

    void refusals()
    {
        QFETCH(QString, source);
        QFETCH(QString, target);
        QFETCH(int, exitCode);
        QFETCH(QString, message);
        if (source == QLatin1String("sample"))
            source = m_sample;
        else
            source = m_dir.filePath(source);
        QString database;
        if (target == QLatin1String("used")) {
            database = target;
            target = m_pg->createDatabase(database);
            OrvexArchive used;
            QVERIFY(used.open(target)); // a sample archive of its own
        } else if (target.startsWith(QLatin1String("server:"))) {
            database = target.mid(7);
            target = m_pg->createDatabase(database);
        }
        const QString countSql = QStringLiteral("SELECT (SELECT COUNT(*) FROM documents), (SELECT COUNT(*) FROM clipboards)");
        const QStringList before = database.isEmpty() ? QStringList() : m_pg->rows(database, countSql);
        const Run run = migrate(target.isEmpty() ? QStringList{source} : QStringList{source, target});
        QVERIFY2(run.exitCode == exitCode, qPrintable(run.output));
        QVERIFY2(run.output.contains(message), qPrintable(run.output));
        if (!before.isEmpty())
            QCOMPARE(m_pg->rows(database, countSql), before);
    }

private:
    Run migrate(const QStringList &arguments)
    {
        QProcess process;
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.start(QCoreApplication::applicationDirPath() + QStringLiteral("/orvexarchive-migrate"), arguments);
        Run run;
        if (!process.waitForFinished(120000))
            return run;
        run.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
        run.output = QString::fromLocal8Bit(process.readAll());
        return run;
    }

    TestPgServer *m_pg = nullptr;
    QTemporaryDir m_dir;
    QString m_sample;
};

QTEST_MAIN(tst_Migrate)
#include "tst_migrate.moc"
