// The server enforces the clipboard rights itself: plain SQL through psql, as
// an archive user's own database role and without the archive library, sees
// only the clipboards that user may view and changes only those it may edit.
#include "orvexarchive.h"
#include "testpgserver.h"

#include <QProcess>
#include <QtTest>

namespace {
const QString kDatabase = QStringLiteral("rights");
} // namespace

class tst_ServerRights : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QString error;
        m_pg = TestPgServer::instance(&error);
        QVERIFY2(m_pg, qPrintable(error));
        QVERIFY2(m_pg->createSampleArchive(kDatabase, &error), qPrintable(error));
        QVERIFY2(m_pg->run(kDatabase, {QStringLiteral("DO $$ BEGIN CREATE ROLE outsider LOGIN; "
                                                      "EXCEPTION WHEN duplicate_object THEN NULL; END $$")}, &error),
                 qPrintable(error));
        m_localUser = OrvexArchive().user();
    }

    void asTheUsersRole_data()
    {
        QTest::addColumn<QString>("user");      // "local": the user who runs the tests
        QTest::addColumn<QString>("clipboard"); // its uuid stands for %1 in the statement
        QTest::addColumn<QString>("sql");
        QTest::addColumn<QString>("answer");    // psql's output, or the start of its error
        QTest::addColumn<bool>("changes");      // the clipboards' tables change

        const QString hidden = QStringLiteral("Vertrieb intern");      // jschmidt's, for sales only
        const QString viewOnly = QStringLiteral("Projekt Nordlicht");  // management edits, everybody views
        const QString own = QStringLiteral("Offene Rechnungen");       // the local user's
        const QString refused = QStringLiteral("ERROR:  new row violates row-level security policy");
        const QString denied = QStringLiteral("ERROR:  permission denied");

        // A clipboard the user may not view does not exist for it.
        QTest::newRow("hidden clipboard") << "local" << hidden << "SELECT count(*) FROM clipboards WHERE uuid = '%1'" << "0" << false;
        QTest::newRow("hidden entries") << "local" << hidden << "SELECT count(*) FROM clipboard_entries WHERE clipboard = '%1'" << "0" << false;
        QTest::newRow("hidden rights") << "local" << hidden << "SELECT count(*) FROM clipboard_rights WHERE clipboard = '%1'" << "0" << false;
        QTest::newRow("hidden notes") << "local" << hidden << "SELECT count(*) FROM clipboard_entries WHERE note <> '' AND clipboard = '%1'" << "0" << false;
        QTest::newRow("hidden, changed blindly") << "local" << hidden << "UPDATE clipboard_entries SET note = 'x' WHERE clipboard = '%1'" << "UPDATE 0" << false;
        QTest::newRow("listing shows only the viewable") << "jschmidt" << hidden << "SELECT count(*) FROM clipboards" << "3" << false;

        // A clipboard the user may only view: read, never changed.
        QTest::newRow("view-only: entries readable") << "local" << viewOnly << "SELECT count(*) > 0 FROM clipboard_entries WHERE clipboard = '%1'" << "t" << false;
        QTest::newRow("view-only: add an entry") << "local" << viewOnly
            << "INSERT INTO clipboard_entries(clipboard, docs_id, doc_id, note, position) SELECT '%1', docs_id, id, '', 99 FROM documents WHERE id = 1001"
            << refused << false;
        QTest::newRow("view-only: write a note") << "local" << viewOnly << "UPDATE clipboard_entries SET note = 'x' WHERE clipboard = '%1'" << "UPDATE 0" << false;
        QTest::newRow("view-only: remove entries") << "local" << viewOnly << "DELETE FROM clipboard_entries WHERE clipboard = '%1'" << "DELETE 0" << false;
        QTest::newRow("view-only: grant itself edit") << "local" << viewOnly
            << QStringLiteral("INSERT INTO clipboard_rights(clipboard, role_id, mode) VALUES ('%1', current_user, 'W')") << refused << false;
        QTest::newRow("view-only: raise all users to edit") << "local" << viewOnly
            << "UPDATE clipboard_rights SET mode = 'W' WHERE clipboard = '%1'" << "UPDATE 0" << false;
        QTest::newRow("view-only: rename") << "local" << viewOnly << "UPDATE clipboards SET name = 'x' WHERE uuid = '%1'" << "UPDATE 0" << false;
        QTest::newRow("view-only: remove") << "local" << viewOnly << "DELETE FROM clipboards WHERE uuid = '%1'" << "DELETE 0" << false;
        // What no user may do anywhere.
        QTest::newRow("take over as owner") << "local" << viewOnly << "UPDATE clipboards SET owner = current_user WHERE uuid = '%1'" << denied << false;
        QTest::newRow("create for somebody else") << "local" << viewOnly
            << "INSERT INTO clipboards(uuid, name, owner, created) VALUES ('x-%1', 'x', 'mmueller', '')" << refused << false;
        QTest::newRow("join a group") << "local" << viewOnly << "INSERT INTO role_members(role_id, member_id) VALUES ('r_management', current_user)" << denied << false;
        QTest::newRow("a role that is no archive user") << "outsider" << viewOnly << "SELECT count(*) FROM clipboards" << "0" << false;
        QTest::newRow("a role that is no archive user adds") << "outsider" << viewOnly
            << "INSERT INTO clipboards(uuid, name, owner, created) VALUES ('y-%1', 'y', current_user, '')" << refused << false;
        // A document for management only: its text and file stay with management.
        const QString restricted = QStringLiteral("(SELECT id FROM documents WHERE read_role = 'r_management' ORDER BY id LIMIT 1)");
        QTest::newRow("restricted text") << "local" << own << QStringLiteral("SELECT count(*) FROM doc_text WHERE doc_id = ") + restricted << "0" << false;
        QTest::newRow("restricted file") << "local" << own
            << QStringLiteral("SELECT count(*) FROM file_chunks c JOIN files f ON f.id = c.file_id WHERE f.doc_id = ") + restricted << "0" << false;
        QTest::newRow("restricted text, management") << "mmueller" << own << QStringLiteral("SELECT count(*) FROM doc_text WHERE doc_id = ") + restricted << "1" << false;

        // Where the user may edit, it does.
        QTest::newRow("own clipboard: a note") << "local" << own << "UPDATE clipboard_entries SET note = note || '!' WHERE clipboard = '%1'" << "UPDATE 6" << true;
        QTest::newRow("edit through a group") << "mmueller" << viewOnly << "UPDATE clipboard_entries SET note = note || '!' WHERE clipboard = '%1'" << "UPDATE 4" << true;
    }

    void asTheUsersRole()
    {
        QFETCH(QString, user);
        QFETCH(QString, clipboard);
        QFETCH(QString, sql);
        QFETCH(QString, answer);
        QFETCH(bool, changes);
        if (user == QLatin1String("local"))
            user = m_localUser;
        const QString uuid = uuidOf(clipboard);
        QVERIFY(!uuid.isEmpty());
        const QStringList before = clipboardTables();
        const QString output = psql(user, QString(sql).replace(QStringLiteral("%1"), uuid));
        QVERIFY2(output.startsWith(answer), qPrintable(output));
        QCOMPARE(clipboardTables() != before, changes);
    }

    void ownerAndAllUsersRules_data()
    {
        QTest::addColumn<QStringList>("setup"); // as the superuser; %1 the clipboard's uuid
        QTest::addColumn<QString>("user");
        QTest::addColumn<QString>("answer");    // to a note written on every entry of the clipboard

        // "Vertrieb intern" is jschmidt's; r_sales may edit it.
        QTest::newRow("the owner edits without any right") << QStringList{"DELETE FROM clipboard_rights WHERE clipboard = '%1'"}
                                                           << "jschmidt" << "UPDATE 2";
        QTest::newRow("visible to all: views, does not edit") << QStringList{"INSERT INTO clipboard_rights VALUES ('%1', 'tavloUSER', 'R')"}
                                                              << "mmueller" << "UPDATE 0";
        QTest::newRow("editable by all: edits") << QStringList{"INSERT INTO clipboard_rights VALUES ('%1', 'tavloUSER', 'W')"}
                                                << "mmueller" << "UPDATE 2";
        QTest::newRow("no right: not even seen") << QStringList() << "mmueller" << "UPDATE 0";
    }

    void ownerAndAllUsersRules()
    {
        QFETCH(QStringList, setup);
        QFETCH(QString, user);
        QFETCH(QString, answer);
        const QString uuid = uuidOf(QStringLiteral("Vertrieb intern"));
        const QStringList rights = m_pg->rows(kDatabase, QStringLiteral("SELECT role_id, mode FROM clipboard_rights WHERE clipboard = ?"), {uuid});
        for (QString &statement : setup)
            statement = statement.arg(uuid);
        QVERIFY(m_pg->run(kDatabase, setup));
        const QString output = psql(user, QStringLiteral("UPDATE clipboard_entries SET note = 'seen' WHERE clipboard = '%1'").arg(uuid));
        // Back to the sample's rights.
        QStringList restore{QStringLiteral("DELETE FROM clipboard_rights WHERE clipboard = '%1'").arg(uuid)};
        for (const QString &right : rights)
            restore << QStringLiteral("INSERT INTO clipboard_rights VALUES ('%1', '%2', '%3')").arg(uuid, right.section(QLatin1Char('|'), 0, 0), right.section(QLatin1Char('|'), 1));
        QVERIFY(m_pg->run(kDatabase, restore));
        QCOMPARE(output, answer);
    }

private:
    // psql as user; its output (the command tag or the rows) or its error.
    QString psql(const QString &user, const QString &sql)
    {
        QProcess process;
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.start(m_pg->binary(QStringLiteral("psql")),
                      {QStringLiteral("-X"), QStringLiteral("-A"), QStringLiteral("-t"), QStringLiteral("-v"),
                       QStringLiteral("ON_ERROR_STOP=1"), QStringLiteral("-h"), m_pg->socketFolder(), QStringLiteral("-p"),
                       QString::number(m_pg->port()), QStringLiteral("-U"), user, QStringLiteral("-d"), kDatabase,
                       QStringLiteral("-c"), sql});
        if (!process.waitForFinished(30000))
            return QStringLiteral("psql did not finish");
        return QString::fromLocal8Bit(process.readAll()).trimmed();
    }

    // The clipboards' rows, their entries and rights, as the superuser sees them.
    QStringList clipboardTables()
    {
        QStringList rows;
        for (const QString &table : {QStringLiteral("clipboards"), QStringLiteral("clipboard_entries"), QStringLiteral("clipboard_rights")})
            for (const QString &row : m_pg->rows(kDatabase, QStringLiteral("SELECT * FROM %1").arg(table)))
                rows << table + QLatin1Char('|') + row;
        rows.sort();
        return rows;
    }

    QString uuidOf(const QString &name)
    {
        return m_pg->rows(kDatabase, QStringLiteral("SELECT uuid FROM clipboards WHERE name = ?"), {name}).value(0);
    }

    TestPgServer *m_pg = nullptr;
    QString m_localUser;
};

QTEST_MAIN(tst_ServerRights)
#include "tst_serverrights.moc"
