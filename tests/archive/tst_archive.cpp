#include "archivetesthelpers.h"
#include "classifyinterface.h"
#include "orvexarchive.h"
#include "orvexarchiveclient.h"
#include "orvexarchivestore.h"
#include "orvexarchivelocation.h"
#include "orvexarchiveschema.h"
#include "orvexarchivetranslations.h"
#include "orvexclassifyclient.h"
#include "orvexsamplearchive.h"
#include "orvexstorageerror.h"
#include "hostilenotes.h"
#include "testfiles.h"
#include "testpgserver.h"

#include <QElapsedTimer>
#include <QFileInfo>
#include <QImage>
#include <QPluginLoader>
#include <QPushButton>
#include <QSemaphore>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>
#include <QtConcurrent>
#include <QScopeGuard>
#include <QtTest>

#include <cerrno>

#include <sys/stat.h>

namespace {
const QChar kInfoSep(0xFFFD);
const QChar kSep(0xFEFF);

QMap<QString, QString> clipboardFlags(ClassifyInterface *client)
{
    QList<QPair<QString, QString>> list;
    client->getClipboards(list);
    QMap<QString, QString> flags;
    for (const auto &entry : qAsConst(list))
        flags.insert(entry.second.section(kSep, 0, 0), entry.second.section(kSep, 1));
    return flags;
}

QString clipboardId(ClassifyInterface *client, const QString &name)
{
    QList<QPair<QString, QString>> list;
    client->getClipboards(list);
    for (const auto &entry : qAsConst(list))
        if (entry.second.section(kSep, 0, 0) == name)
            return entry.first;
    return {};
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

// A page image as a card asks for it (option 9 and version 1: as the duplicate check does).
QByteArray thumbnail(kelArchiveClientInterface *client, qlonglong docId, int page, int size, int *pageCount = nullptr,
                     int option1 = 0, int version = -1)
{
    int pages = -1;
    QString format;
    return client->getDocumentThumbnail(int(docId), page, size, pageCount ? *pageCount : pages, format, option1, 0, version);
}

// A client call that must be refused; true when it wrongly went through.
using ClientCall = std::function<bool(OrvexArchiveClient *)>;

QString pluginPath()
{
    return QCoreApplication::applicationDirPath() + QStringLiteral("/libkelarchiveclient.so");
}
} // namespace

// The embedded archive against one sample archive per run, in this order: the
// classification client (clipboards, entries, notes, rights, queries), the
// archive client (connection chain, exports with progress and cancel, file
// names, thumbnails, uploads with the duplicate check), then opening archives
// and the client plugin library. Tests that change documents come after the
// ones that count them.
Q_DECLARE_METATYPE(ClientCall)

class tst_Archive : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase_data()
    {
        QTest::addColumn<bool>("server");
        QTest::newRow("embedded") << false;
        QTest::newRow("server") << true;
    }

    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        QVERIFY(m_dir.isValid());
        QElapsedTimer timer;
        timer.start();
        QVERIFY2(m_embedded.open(m_dir.filePath(QStringLiteral("archive"))), qPrintable(m_embedded.lastError()));
        qInfo("embedded sample archive created in %lld ms", timer.elapsed());
        QVERIFY2(timer.elapsed() < 20000, "creating the sample archive must stay quick");
        m_localUser = m_embedded.user();

        QString error;
        timer.start();
        m_pg = TestPgServer::instance(&error);
        QVERIFY2(m_pg, qPrintable(error));
        qInfo("test server started in %lld ms", timer.elapsed());
        timer.start();
        // Set up by the owner of the tables, worked on by the local user.
        QVERIFY2(m_pg->createSampleArchive(QStringLiteral("archive"), &error), qPrintable(error));
        QVERIFY2(m_server.open(m_pg->address(QStringLiteral("archive"), m_localUser)), qPrintable(m_server.lastError()));
        qInfo("server sample archive created in %lld ms", timer.elapsed());
    }

    void init()
    {
        QFETCH_GLOBAL(bool, server);
        m_current = server ? &m_server : &m_embedded;
        archive().setUser(m_localUser);
        m_values = archive().connectionValues();
        QVERIFY(!m_values.server.isEmpty());
        QVERIFY(classify());
        client()->setChunkSize(OrvexArchiveClient::ChunkSize);
        QVERIFY2(connectClient(client(), m_values), qPrintable(client()->getLastError()));
    }

    void cleanup()
    {
        client()->resetConnection();
    }

    // Classification client
    void clipboardsPerUser_data()
    {
        QTest::addColumn<QString>("user");
        QTest::addColumn<QString>("expected"); // name:flag, sorted by name
        QTest::newRow("local user") << QString() << "Offene Rechnungen:W,Projekt Nordlicht:R";
        QTest::newRow("management") << "mmueller" << "Offene Rechnungen:W,Projekt Nordlicht:W";
        QTest::newRow("sales") << "jschmidt" << "Offene Rechnungen:R,Projekt Nordlicht:R,Vertrieb intern:W";
        QTest::newRow("unknown user sees nothing") << "ghost" << "";
    }

    void clipboardsPerUser()
    {
        QFETCH(QString, user);
        QFETCH(QString, expected);
        if (!user.isEmpty())
            archive().setUser(user);
        const QMap<QString, QString> flags = clipboardFlags(classify());
        QStringList seen;
        for (auto it = flags.cbegin(); it != flags.cend(); ++it)
            if (!it.key().startsWith(QLatin1String("test ")))
                seen << it.key() + QLatin1Char(':') + it.value();
        QCOMPARE(seen.join(QLatin1Char(',')), expected);
    }

    void clipboardEntriesAndNotes()
    {
        const QString uuid = clipboardId(classify(), QStringLiteral("Offene Rechnungen"));
        QVERIFY(!uuid.isEmpty());
        QStringList entries, comments;
        QVERIFY(classify()->getClipboardDocuments(uuid, entries, comments));
        QCOMPARE(entries.size(), 6);
        QCOMPARE(comments.size(), entries.size());
        QCOMPARE(comments.first(), QStringLiteral("Bitte bis Monatsende prüfen"));
        // Every entry pairs a document with that document's own entry number.
        QStringList pairs;
        for (const OrvexArchiveDocument &document : archive().documents())
            pairs << QString::number(document.id) + kSep + QString::number(document.docsId);
        for (const QString &entry : qAsConst(entries))
            QVERIFY2(pairs.contains(entry), qPrintable(entry));
    }

    void clipboardLifecycle()
    {
        const QString uuid = classify()->createClipboard(QStringLiteral("  test Neue Mappe "));
        QVERIFY2(!uuid.isEmpty(), qPrintable(classifyError()));
        QCOMPARE(clipboardFlags(classify()).value(QStringLiteral("test Neue Mappe")), QStringLiteral("W"));
        // The creator holds the edit right as a role entry.
        QCOMPARE(classify()->getClipboardRoles(uuid), QStringList{uuid + kSep + m_localUser + kSep + QStringLiteral("W")});
        // Others do not see it.
        archive().setUser(QStringLiteral("jschmidt"));
        QVERIFY(!clipboardFlags(classify()).contains(QStringLiteral("test Neue Mappe")));
        archive().setUser(m_localUser);

        QVERIFY(classify()->renameClipboard(uuid, QStringLiteral("test Umbenannt")));
        QVERIFY(clipboardFlags(classify()).contains(QStringLiteral("test Umbenannt")));
        // Rights as the permissions dialog sends them: edit entries first, then view entries.
        QVERIFY2(classify()->setClipboardRoles(uuid, {QStringLiteral("r_sales") + kSep + "W", QStringLiteral("LDAP_staff") + kSep + "R",
                                                     // with the leading field, as getClipboardRoles answers
                                                     uuid + kSep + QStringLiteral("tavloUSER") + kSep + "R"}),
                 qPrintable(classifyError()));
        QCOMPARE(classify()->getClipboardRoles(uuid), (QStringList{uuid + kSep + "r_sales" + kSep + "W", uuid + kSep + "LDAP_staff" + kSep + "R",
                                                                  uuid + kSep + "tavloUSER" + kSep + "R"}));
        // The owner keeps editing; a sales member edits through r_sales; others only view.
        QCOMPARE(clipboardFlags(classify()).value(QStringLiteral("test Umbenannt")), QStringLiteral("W"));
        archive().setUser(QStringLiteral("jschmidt"));
        QVERIFY(classify()->renameClipboard(uuid, QStringLiteral("test Vertrieb")));
        archive().setUser(QStringLiteral("mmueller"));
        QCOMPARE(clipboardFlags(classify()).value(QStringLiteral("test Vertrieb")), QStringLiteral("R"));
        QVERIFY(!classify()->clearClipboard(uuid));
        archive().setUser(m_localUser);

        const OrvexArchiveDocument first = document(0), second = document(1);
        QVERIFY(classify()->addToClipboard(uuid, QString::number(first.id), QString::number(first.docsId)));
        // An empty entry id takes the document's own.
        QVERIFY(classify()->addToClipboard(uuid, QString::number(second.id), QString()));
        QStringList entries, comments;
        QVERIFY(classify()->getClipboardDocuments(uuid, entries, comments));
        QCOMPARE(entries, (QStringList{QString::number(first.id) + kSep + QString::number(first.docsId),
                                       QString::number(second.id) + kSep + QString::number(second.docsId)}));

        const QString longest(OrvexArchiveStore::MaxNoteLength, QChar(0x00e4));
        // The limit counts characters: 1024 emoji, two UTF-16 units each, were refused.
        const QString emoji = QString::fromUtf8("\xF0\x9F\x98\x80").repeated(OrvexArchiveStore::MaxNoteLength);
        QVERIFY2(classify()->setClipboardComment(uuid, QString::number(second.docsId), emoji), qPrintable(classifyError()));
        QVERIFY(classify()->getClipboardDocuments(uuid, entries, comments));
        QCOMPARE(comments.value(1), emoji);
        QVERIFY(classify()->setClipboardComment(uuid, QString::number(second.docsId), longest));
        QVERIFY(classify()->setClipboardComment(uuid, QString::number(first.docsId), QStringLiteral("it's \"quoted\"")));
        QVERIFY(classify()->getClipboardDocuments(uuid, entries, comments));
        QCOMPARE(comments, (QStringList{QStringLiteral("it's \"quoted\""), longest}));

        QVERIFY(classify()->removeFromClipboard(uuid, QString::number(first.docsId)));
        QVERIFY(classify()->getClipboardDocuments(uuid, entries, comments) && entries.size() == 1);
        QVERIFY(classify()->clearClipboard(uuid));
        QVERIFY(classify()->getClipboardDocuments(uuid, entries, comments) && entries.isEmpty() && comments.isEmpty());
        // A clipboard is full at 200 entries.
        for (int i = 0; i < OrvexArchiveStore::MaxClipboardEntries; ++i)
            QVERIFY2(classify()->addToClipboard(uuid, QString::number(first.id), QString::number(800000 + i)), qPrintable(classifyError()));
        QVERIFY(!classify()->addToClipboard(uuid, QString::number(first.id), QStringLiteral("801000")));
        QVERIFY(classifyError().contains(QStringLiteral("at most 200")));

        QVERIFY(classify()->removeClipboard(uuid));
        QVERIFY(!clipboardFlags(classify()).contains(QStringLiteral("test Vertrieb")));
        QVERIFY(!classify()->getClipboardDocuments(uuid, entries, comments));
    }

    void hostileNotesKeptExactly_data()
    {
        QTest::addColumn<QString>("note");
        for (const HostileNote &note : hostileNotes())
            QTest::newRow(note.fault) << note.text;
    }

    // Whatever a user typed is stored and answered exactly, by either backend.
    void hostileNotesKeptExactly()
    {
        QFETCH(QString, note);
        const QString uuid = classify()->createClipboard(QStringLiteral("test Notizen"));
        QVERIFY2(!uuid.isEmpty(), qPrintable(classifyError()));
        const OrvexArchiveDocument doc = document(0);
        QVERIFY(classify()->addToClipboard(uuid, QString::number(doc.id), QString::number(doc.docsId)));
        QVERIFY2(classify()->setClipboardComment(uuid, QString::number(doc.docsId), note), qPrintable(classifyError()));
        QStringList entries, comments;
        QVERIFY(classify()->getClipboardDocuments(uuid, entries, comments));
        QCOMPARE(comments, QStringList{note});
        QVERIFY(classify()->removeClipboard(uuid));
    }

    void refusedWrites_data()
    {
        QTest::addColumn<QString>("user");
        QTest::addColumn<QString>("clipboard"); // name of a sample clipboard, or "*" for an unknown uuid
        QTest::addColumn<QString>("operation");
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<QString>("error");

        const auto docs = [this]() {
            return QStringList{QString::number(archive().documents().at(7).id),
                               QString::number(archive().documents().at(7).docsId)};
        };
        const QString readOnly = QStringLiteral("Projekt Nordlicht");
        const QString own = QStringLiteral("Offene Rechnungen");
        const QString may = QStringLiteral("may not edit");
        QTest::newRow("rename read-only") << QString() << readOnly << "rename" << QStringList{"x"} << may;
        QTest::newRow("remove read-only") << QString() << readOnly << "remove" << QStringList() << may;
        QTest::newRow("add to read-only") << QString() << readOnly << "add" << docs() << may;
        QTest::newRow("remove entry read-only") << QString() << readOnly << "removeEntry" << QStringList{docs().at(1)} << may;
        QTest::newRow("clear read-only") << QString() << readOnly << "clear" << QStringList() << may;
        QTest::newRow("note read-only") << QString() << readOnly << "note" << QStringList{docs().at(1), "n"} << may;
        QTest::newRow("roles read-only") << QString() << readOnly << "roles" << QStringList{QStringLiteral("tavloUSER") + kSep + "W"} << may;
        QTest::newRow("invisible clipboard") << QString() << QStringLiteral("Vertrieb intern") << "clear" << QStringList() << "Unknown clipboard";
        QTest::newRow("unknown uuid") << QString() << "*" << "rename" << QStringList{"x"} << "Unknown clipboard";
        QTest::newRow("unknown user") << "ghost" << own << "clear" << QStringList() << "Unknown clipboard";
        QTest::newRow("empty name") << QString() << own << "rename" << QStringList{"   "} << "needs a name";
        QTest::newRow("over-long name") << QString() << own << "rename" << QStringList{QString(101, 'n')} << "at most 100";
        QTest::newRow("name with separator") << QString() << own << "rename" << QStringList{QStringLiteral("a") + kSep + "W"} << "control";
        QTest::newRow("create empty") << QString() << own << "create" << QStringList{""} << "needs a name";
        QTest::newRow("create over-long") << QString() << own << "create" << QStringList{QString(300, 'n')} << "at most 100";
        QTest::newRow("create as unknown user") << "ghost" << own << "create" << QStringList{"x"} << "Unknown user";
        QTest::newRow("non-numeric document") << QString() << own << "add" << QStringList{"12a", "5001"} << "Not a document id";
        QTest::newRow("unknown document") << QString() << own << "add" << QStringList{"999999", ""} << "Unknown document";
        QTest::newRow("non-numeric entry") << QString() << own << "add" << QStringList{docs().at(0), "x"} << "Not an entry id";
        QTest::newRow("entry of another document") << QString() << own << "add"
            << QStringList{docs().at(0), QString::number(archive().documents().at(8).docsId)} << "belongs to document";
        QTest::newRow("unreadable document") << QString() << own << "add"
            << QStringList{QString::number(archive().documents().at(4).id), QString()} << "Unknown document";
        QTest::newRow("entry already there") << QString() << own << "add"
            << QStringList{QString::number(archive().documents().at(0).id), QString()} << "already on the clipboard";
        QTest::newRow("note over 1024") << QString() << own << "note"
            << QStringList{QString::number(archive().documents().at(0).docsId), QString(1025, 'x')} << "at most 1024";
        QTest::newRow("note over 1024 emoji") << QString() << own << "note"
            << QStringList{QString::number(archive().documents().at(0).docsId),
                           QString::fromUtf8("\xF0\x9F\x98\x80").repeated(1025)} << "at most 1024";
        QTest::newRow("note on missing entry") << QString() << own << "note" << QStringList{"424242", "n"} << "not on the clipboard";
        QTest::newRow("note non-numeric entry") << QString() << own << "note" << QStringList{"abc", "n"} << "Not an entry id";
        QTest::newRow("remove missing entry") << QString() << own << "removeEntry" << QStringList{"424242"} << "not on the clipboard";
        QTest::newRow("roles without editor") << QString() << own << "roles" << QStringList{QStringLiteral("tavloUSER") + kSep + "R"} << "At least one role";
        QTest::newRow("roles unknown role") << QString() << own << "roles" << QStringList{QStringLiteral("r_nobody") + kSep + "W"} << "Unknown role";
        QTest::newRow("roles malformed") << QString() << own << "roles" << QStringList{QStringLiteral("tavloUSER") + kSep + "X"} << "Malformed";
        QTest::newRow("roles empty") << QString() << own << "roles" << QStringList() << "At least one role";
    }

    void refusedWrites()
    {
        QFETCH(QString, user);
        QFETCH(QString, clipboard);
        QFETCH(QString, operation);
        QFETCH(QStringList, args);
        QFETCH(QString, error);

        const QString uuid = clipboard == QLatin1String("*") ? QUuid::createUuid().toString(QUuid::WithoutBraces)
                                                             : clipboardId(classify(), clipboard);
        // Invisible clipboards are looked up as the user who may see them.
        QString target = uuid;
        if (target.isEmpty()) {
            archive().setUser(QStringLiteral("jschmidt"));
            target = clipboardId(classify(), clipboard);
            archive().setUser(m_localUser);
        }
        QVERIFY(!target.isEmpty());
        if (!user.isEmpty())
            archive().setUser(user);
        const QStringList before = snapshot();

        ClassifyInterface *c = classify();
        const QHash<QString, std::function<bool()>> operations{
            {"rename", [&] { return c->renameClipboard(target, args.at(0)); }},
            {"remove", [&] { return c->removeClipboard(target); }},
            {"add", [&] { return c->addToClipboard(target, args.at(0), args.at(1)); }},
            {"removeEntry", [&] { return c->removeFromClipboard(target, args.at(0)); }},
            {"clear", [&] { return c->clearClipboard(target); }},
            {"note", [&] { return c->setClipboardComment(target, args.at(0), args.at(1)); }},
            {"roles", [&] { return c->setClipboardRoles(target, args); }},
            {"create", [&] { return !c->createClipboard(args.at(0)).isEmpty(); }}};
        QVERIFY(operations.contains(operation));
        const bool ok = operations.value(operation)();
        QVERIFY(!ok);
        // On a server a user without a database role cannot even connect.
        const QString expected = onServer() && user == QLatin1String("ghost") ? QStringLiteral("role \"ghost\" does not exist") : error;
        QVERIFY2(classifyError().contains(expected), qPrintable(classifyError()));
        QCOMPARE(snapshot(), before);
    }

    void searchByEntries()
    {
        const QString uuid = clipboardId(classify(), QStringLiteral("Offene Rechnungen"));
        QStringList entries, comments, docsIds;
        QVERIFY(classify()->getClipboardDocuments(uuid, entries, comments));
        for (const QString &entry : qAsConst(entries))
            docsIds << entry.section(kSep, 1, 1);
        const QString filter = QStringLiteral("docs_id in (%1,0)").arg(docsIds.join(QLatin1Char(',')));
        const QStringList rows = classify()->searchDocuments({filter, QStringLiteral("OPT:LIMIT;1000")});
        QCOMPARE(rows.size(), entries.size() + 1); // a header, then one row per entry
        for (int i = 1; i < rows.size(); ++i) {
            const QStringList fields = rows.at(i).split(kSep);
            QCOMPARE(fields.size(), 8);
            QCOMPARE(fields.at(0).section(QLatin1Char('#'), 1), fields.at(1));
            QVERIFY(entries.contains(fields.at(0).section(QLatin1Char('#'), 0, 0) + kSep + fields.at(1)));
        }
        QCOMPARE(classify()->searchDocuments({QStringLiteral("docs_id in (0)"), QStringLiteral("OPT:LIMIT;1000")}).size(), 1);
        QCOMPARE(classify()->searchDocuments({filter, QStringLiteral("OPT:LIMIT;2")}).size(), 3);
        QCOMPARE(classify()->searchDocuments({filter, QStringLiteral("OPT:LIMIT;0")}).size(), 1);
    }

    void searchFullText_data()
    {
        QTest::addColumn<QString>("term");
        // Title words of the expected hits: every readable document whose title holds
        // one of them, and no other. Empty: the term is only in the page text.
        QTest::addColumn<QStringList>("titleWords");

        QTest::newRow("number from the title") << "RE-2026-0101" << QStringList{"RE-2026-0101"};
        QTest::newRow("two alternatives") << "RE-2026-0101 OR VE-2026-0102" << QStringList{"RE-2026-0101", "VE-2026-0102"};
        QTest::newRow("number or number.0") << "0103 OR 0103.0" << QStringList{"-0103"};
        QTest::newRow("case and umlauts") << "söhne" << QStringList{"Söhne"};
        QTest::newRow("word prefix") << "Lieferschei" << QStringList{"Lieferschein"};
        QTest::newRow("page text only") << "Klimatisierung" << QStringList{};
        QTest::newRow("nothing") << "Quantenschaum" << QStringList{"Quantenschaum"};
    }

    void searchFullText()
    {
        QFETCH(QString, term);
        QFETCH(QStringList, titleWords);

        // Search within every document's entry, as the board searches its cards.
        QString filter = QStringLiteral("docs_id in (");
        QStringList expected;
        for (const OrvexArchiveDocument &document : archive().documents()) {
            filter += QString::number(document.docsId) + QLatin1Char(',');
            for (const QString &word : qAsConst(titleWords))
                if (document.readable && document.title.contains(word, Qt::CaseInsensitive) && !expected.contains(document.title))
                    expected << document.title;
        }
        filter += QStringLiteral("0)");
        const QStringList rows = classify()->searchDocuments({QStringLiteral("OPT:SELECTION;-1"),
                                                            QStringLiteral("OPT:FULLTEXT") + kSep + term, filter,
                                                            QStringLiteral("OPT:LIMIT;1000")});
        QVERIFY2(!rows.isEmpty(), qPrintable(classifyError()));
        QStringList found;
        for (int i = 1; i < rows.size(); ++i)
            found << rows.at(i).section(kSep, 2, 2);

        if (titleWords.isEmpty()) {
            QVERIFY(!found.isEmpty());
            for (const QString &title : qAsConst(found))
                QVERIFY(!title.contains(term, Qt::CaseInsensitive));
            return;
        }
        QCOMPARE(found, expected);
    }

    void searchHidesUnreadable()
    {
        // Sample document 5 is for management only; its number is in its title and text.
        const OrvexArchiveDocument restricted = archive().documents().at(4);
        QVERIFY(!restricted.readable);
        const QString number = restricted.title.section(QLatin1Char(' '), 1, 1);
        const QString filter = QStringLiteral("docs_id in (%1,0)").arg(restricted.docsId);
        const QString fullText = QStringLiteral("OPT:FULLTEXT") + kSep + number;

        QCOMPARE(classify()->searchDocuments({fullText, filter}).size(), 1);
        // By entry it stays listed (its card keeps its place) but shows nothing of the document.
        const QStringList rows = classify()->searchDocuments({filter});
        QCOMPARE(rows.size(), 2);
        const QStringList fields = rows.at(1).split(kSep);
        QCOMPARE(fields.at(0), QStringLiteral("%1#%2").arg(restricted.id).arg(restricted.docsId));
        QVERIFY(!fields.at(2).contains(number));
        QVERIFY(fields.at(5).isEmpty());

        archive().setUser(QStringLiteral("mmueller"));
        QCOMPARE(classify()->searchDocuments({fullText, filter}).size(), 2);
    }

    void searchRefusesMalformedCriteria_data()
    {
        QTest::addColumn<QStringList>("criteria");
        QTest::newRow("non-numeric entry") << QStringList{"docs_id in (5001,abc,0)"};
        QTest::newRow("unknown criterion") << QStringList{"DROP TABLE documents"};
        QTest::newRow("bad limit") << QStringList{"OPT:LIMIT;many"};
        QTest::newRow("empty full text") << QStringList{QStringLiteral("OPT:FULLTEXT") + kSep + "  "};
        QTest::newRow("stored selection") << QStringList{"OPT:SELECTION;7"};
    }

    void searchRefusesMalformedCriteria()
    {
        QFETCH(QStringList, criteria);
        QVERIFY(classify()->searchDocuments(criteria).isEmpty());
        QVERIFY(!classifyError().isEmpty());
    }

    void cardInfo()
    {
        const OrvexArchiveDocument document = archive().documents().at(2);
        const QStringList fields = classify()->getCardInfo(QString::number(document.docsId), QString());
        QCOMPARE(fields, (QStringList{QString::number(document.id), QString::number(document.docsId), document.title,
                                      "LET", document.date, document.fileName, fields.value(6), QString::number(document.pages)}));
        QVERIFY(!fields.at(6).isEmpty());
        // Not numbers, unknown, and a document id, which is no entry id.
        for (const QString &bad : {QStringLiteral("abc"), QStringLiteral("-5"), QStringLiteral("424242"), QString::number(document.id)})
            QVERIFY2(classify()->getCardInfo(bad, QString()).isEmpty() && !classifyError().isEmpty(), qPrintable(bad));
        // An unreadable document's card says so, in the user's language.
        const QString hidden = QString::number(archive().documents().at(4).docsId);
        QVERIFY(OrvexArchiveTranslations::install(QLocale(QLocale::German, QLocale::Germany)));
        QCOMPARE(classify()->getCardInfo(hidden, QString()).value(2), QStringLiteral("Nicht berechtigt"));
        QVERIFY(!OrvexArchiveTranslations::install(QLocale::c()));
        QCOMPARE(classify()->getCardInfo(hidden, QString()).value(2), QStringLiteral("Not authorised"));
    }

    void tablesRolesAndFacts()
    {
        QStringList rows, second{QStringLiteral("stale")};
        QVERIFY(classify()->getDocumentTypes(rows, second));
        QVERIFY(rows.contains(QStringLiteral("INV") + kSep + "Invoice"));
        QCOMPARE(rows.size(), 5);
        QVERIFY(second.isEmpty());
        QVERIFY(classify()->getDocumentStatuses(rows, second));
        QVERIFY(rows.contains(QStringLiteral("NEW") + kSep + "New"));

        const QStringList roles = classify()->getAllRoles();
        for (const QString &role : {QStringLiteral("tavloUSER"), QStringLiteral("r_accounting"), QStringLiteral("r_management"),
                                    QStringLiteral("LDAP_staff"), QStringLiteral("mmueller"), m_localUser})
            QVERIFY2(roles.contains(role), qPrintable(role));
        QCOMPARE(classify()->getRoleNames({QStringLiteral("mmueller"), QStringLiteral("nobody"), QStringLiteral("r_sales")}),
                 (QStringList{QStringLiteral("mmueller") + kSep + QStringLiteral("Maria Müller"),
                              QStringLiteral("r_sales") + kSep + QStringLiteral("Vertrieb")}));
        QVERIFY(!classify()->getConnectionMode().startsWith(QLatin1String("Offline")));

        // Failed before: the sample's types, statuses and system roles stayed English in German.
        QVERIFY(OrvexArchiveTranslations::install(QLocale(QLocale::German, QLocale::Germany)));
        auto english = qScopeGuard([] { OrvexArchiveTranslations::install(QLocale::c()); });
        QVERIFY(classify()->getDocumentTypes(rows, second));
        QVERIFY(rows.contains(QStringLiteral("INV") + kSep + QStringLiteral("Rechnung")));
        QVERIFY(classify()->getDocumentStatuses(rows, second));
        QVERIFY(rows.contains(QStringLiteral("APP") + kSep + QStringLiteral("Freigegeben")));
        QCOMPARE(classify()->getRoleNames({QStringLiteral("tavloUSER"), QStringLiteral("r_sales")}),
                 (QStringList{QStringLiteral("tavloUSER") + kSep + QStringLiteral("Alle Benutzer"),
                              QStringLiteral("r_sales") + kSep + QStringLiteral("Vertrieb")})); // data stays as it is
        const OrvexArchiveDocument letter = document(2);
        QCOMPARE(letter.typeName, QStringLiteral("Schreiben"));
    }

    // Regression guard: readers on other threads while one thread writes must never
    // see a failure or a half-written state, and every write must arrive.
    void readersDuringWritesLoseNothing()
    {
        const QString uuid = classify()->createClipboard(QStringLiteral("test concurrent"));
        const QString docId = QString::number(document(1).id);
        constexpr int writes = 60;
        QAtomicInt done(0), failures(0), reads(0);
        auto *shared = static_cast<OrvexClassifyClient *>(classify());
        // Threads of their own: a pool might run a task on the waiting thread instead.
        std::vector<std::unique_ptr<QThread>> threads;
        threads.emplace_back(QThread::create([&] {
            for (int i = 0; i < writes; ++i) {
                const QString docsId = QString::number(700000 + i);
                if (!shared->addToClipboard(uuid, docId, docsId) || !shared->setClipboardComment(uuid, docsId, QStringLiteral("note %1").arg(i)))
                    failures.fetchAndAddOrdered(1000);
            }
            done.storeRelease(1);
        }));
        for (int r = 0; r < 3; ++r)
            threads.emplace_back(QThread::create([&] {
                for (int last = 0; !done.loadAcquire(); reads.fetchAndAddOrdered(1)) {
                    QStringList entries, comments;
                    if (!shared->getClipboardDocuments(uuid, entries, comments) || entries.size() != comments.size()
                        || entries.size() < last || shared->searchDocuments({QStringLiteral("docs_id in (700000,0)")}).isEmpty())
                        failures.fetchAndAddOrdered(1);
                    last = entries.size();
                }
            }));
        for (auto it = threads.rbegin(); it != threads.rend(); ++it) // the readers first, then the writer
            (*it)->start();
        for (auto &thread : threads)
            QVERIFY(thread->wait(60000));
        QCOMPARE(failures.loadAcquire(), 0);
        QVERIFY(reads.loadAcquire() > 0);
        QStringList entries, comments;
        QVERIFY(classify()->getClipboardDocuments(uuid, entries, comments));
        QCOMPARE(entries.size(), writes);
        for (int i = 0; i < writes; ++i)
            QCOMPARE(comments.at(i), QStringLiteral("note %1").arg(i));
        QVERIFY(classify()->removeClipboard(uuid));
    }

    // Archive client
    void connectionChain_data()
    {
        // server, login1, login2, login3, archive name; empty: the archive's own value
        QTest::addColumn<QStringList>("values");
        QTest::addColumn<int>("portOffset");
        QTest::addColumn<int>("failingStep");   // 0 none, 1 open, 2 log in, 3 select
        QTest::addColumn<int>("failingOnServer"); // the same on a server, -1: no such case there
        QTest::newRow("the archive's own values") << QStringList() << 0 << 0 << 0;
        QTest::newRow("loopback address") << QStringList{"127.0.0.1"} << 0 << 0 << -1;
        QTest::newRow("another user") << QStringList{"", "jschmidt"} << 0 << 0 << 0;
        // A server is reached when the user logs in.
        QTest::newRow("wrong server") << QStringList{"archive.example.org"} << 0 << 1 << 2;
        QTest::newRow("wrong port") << QStringList() << 1 << 1 << 1;
        QTest::newRow("unknown user") << QStringList{"", "ghost"} << 0 << 2 << 2;
        // The test server trusts its socket: the password is the server's business.
        QTest::newRow("wrong password") << QStringList{"", "", "secret"} << 0 << 2 << -1;
        QTest::newRow("wrong archive") << QStringList{"", "", "", "", "Elsewhere"} << 0 << 3 << 3;
    }

    void connectionChain()
    {
        QFETCH(QStringList, values);
        QFETCH(int, portOffset);
        QFETCH(int, failingStep);
        QFETCH(int, failingOnServer);
        if (onServer()) {
            if (failingOnServer < 0)
                QSKIP("Not a case on a server");
            failingStep = failingOnServer;
            if (values.value(0) == QLatin1String("archive.example.org"))
                values[0] = m_values.server.replace(m_pg->socketFolder(), QStringLiteral("/nonexistent"));
        }
        const QStringList own{m_values.server, m_values.login1, m_values.login2, m_values.login3, m_values.archiveName};
        const auto value = [&](int i) { return values.value(i).isEmpty() ? own.at(i) : values.at(i); };
        OrvexArchiveClient *c = client();
        QVERIFY(c->resetConnection());
        const bool opened = c->openConnection(value(0), m_values.port + portOffset);
        QCOMPARE(opened, failingStep != 1);
        const bool loggedIn = opened && c->logIn(value(1), value(2), value(3));
        QCOMPARE(loggedIn, failingStep != 1 && failingStep != 2);
        const bool selected = loggedIn && c->selectArchive(value(4));
        QCOMPARE(selected, failingStep == 0);
        QCOMPARE(c->isConnected(), failingStep == 0);
        const QString errors[] = {QString(), "Cannot connect", "Login failed", "Unknown archive"};
        QVERIFY2(c->getLastError().contains(errors[failingStep]), qPrintable(c->getLastError()));
        if (failingStep == 3) // still logged in: another name can be tried without logging in again
            QVERIFY(c->selectArchive(m_values.archiveName));
        if (loggedIn) {
            QStringList names;
            QVERIFY(c->getArchiveNames(names));
            QCOMPARE(names, QStringList{m_values.archiveName});
        }
    }

    void exportCurrentAndVersions()
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
        QVERIFY(!progress.isEmpty() && progress.size() <= (bytes.size() + 4095) / 4096);
        QCOMPARE(progress.last().first().toString(), QString::number(bytes.size()));

        const QString id = QString::number(doc.id);
        const QStringList records = c->getAllVersions(int(doc.id)); // current first; 1 the version, 11 its file name
        QCOMPARE(QStringList({QString::number(records.size()), records.value(0).section(kSep, 3, 3)}), QStringList({"3", QString::number(bytes.size())}));
        for (int i = 0; i < 3; ++i) {
            const QStringList f = records.value(i).split(kSep);
            QCOMPARE(f.mid(0, 2) + f.mid(7), QStringList({id, QString::number(3 - i), i ? "0" : "1", QString::number(doc.docsId), "application/pdf",
                                                          doc.fileName, c->getDocumentPartFileName(id, {}, QString::number(3 - i))}));
        }
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

    void clientRefusals_data()
    {
        QTest::addColumn<bool>("connected");
        QTest::addColumn<ClientCall>("call");
        QTest::addColumn<QString>("error"); // part of getLastError()
        const int id = int(document(0).id);
        const auto exportOf = [](int docId, int version) {
            return ClientCall([=](OrvexArchiveClient *c) {
                QString path = QStringLiteral("untouched");
                return (version == 0 ? c->exportDocument(docId, path, 1, QString()) : c->exportDocumentVersion(docId, version, path))
                    || path != QLatin1String("untouched");
            });
        };
        const auto upload = [](const QString &path) { return ClientCall([=](OrvexArchiveClient *c) { QString u; return c->sendFile(path, u); }); };
        const auto check = [](const QString &upload) {
            return ClientCall([=](OrvexArchiveClient *c) { return !c->checkDuplicates(QString(), QString(), upload, false, 0, 0, 1, 1).isEmpty(); });
        };
        const QString pdf = samplePdf(95, 1);

        QTest::newRow("export, not connected") << false << exportOf(id, 0) << "Not connected";
        QTest::newRow("thumbnail, not connected") << false
            << ClientCall([=](OrvexArchiveClient *c) { return !thumbnail(c, id, 0, 800).isEmpty(); }) << "Not connected";
        QTest::newRow("log in before opening") << false
            << ClientCall([this](OrvexArchiveClient *c) { return c->logIn(m_values.login1, m_values.login2, m_values.login3); }) << "open connection";
        QTest::newRow("export of an unknown document") << true << exportOf(999999, 0) << "Unknown document";
        QTest::newRow("export of an unreadable document") << true << exportOf(int(document(4).id), 0) << "may not read";
        QTest::newRow("export of an unknown version") << true << exportOf(int(document(2).id), 9) << "has no version";
        QTest::newRow("export of version -2") << true << exportOf(int(document(2).id), -2) << "Invalid version";
        QTest::newRow("upload of a missing file") << true << upload(m_scratch.filePath(QStringLiteral("missing.pdf"))) << "Cannot read";
        QTest::newRow("commit of an unknown upload") << true << ClientCall([](OrvexArchiveClient *c) { return c->commitUpload("no-such"); }) << "Unknown upload";
        QTest::newRow("check of an unknown upload") << true << check(QStringLiteral("no-such")) << "Unknown upload";
        QTest::newRow("check without upload") << true << check(QString()) << "No upload";
        QTest::newRow("commit of another user's upload") << true << ClientCall([=](OrvexArchiveClient *c) {
            OrvexConnectionValues other = archive().connectionValues();
            other.login1 = QStringLiteral("jschmidt");
            QString upload;
            c->sendFile(pdf, upload);
            std::unique_ptr<OrvexArchiveClient> second(static_cast<OrvexArchiveClient *>(c->createClient(QString())));
            const bool committed = !connectClient(second.get(), other) || second->commitUpload(upload);
            c->discardUpload(upload);
            return committed;
        }) << QString();
        QTest::newRow("delete, not an administrator") << true
            << ClientCall([=](OrvexArchiveClient *c) { return c->deleteDocument(QString::number(id), {}); }) << "may not delete";
        QTest::newRow("delete of a non-number") << true << ClientCall([](OrvexArchiveClient *c) { return c->deleteDocument("abc", {}); }) << "Not a document id";
    }

    void clientRefusals()
    {
        QFETCH(bool, connected);
        QFETCH(ClientCall, call);
        QFETCH(QString, error);
        OrvexArchiveClient *c = client();
        if (!connected)
            c->resetConnection();
        const QStringList before = snapshot();
        QVERIFY(!call(c));
        QVERIFY2(c->getLastError().contains(error), qPrintable(c->getLastError()));
        QCOMPARE(snapshot(), before);
        QVERIFY(noPendingUploadFiles());
    }

    void cancelStreaming_data()
    {
        QTest::addColumn<bool>("upload");
        QTest::addColumn<bool>("onPoolThread"); // as the upload calls sendFile
        QTest::newRow("export") << false << false;
        QTest::newRow("upload") << true << false;
        QTest::newRow("export on a pool thread") << false << true;
        QTest::newRow("upload on a pool thread") << true << true;
    }

    // As a progress dialog cancels: a click on its button while the copy runs, with
    // the GUI thread ticking a 5 ms timer on time all along.
    void cancelStreaming()
    {
        QFETCH(bool, upload);
        QFETCH(bool, onPoolThread);
        OrvexArchiveClient *c = client();
        c->setChunkSize(256);
        const QString source = samplePdf(97, 1);
        const QStringList before = snapshot();
        QPushButton button;
        connect(&button, &QPushButton::clicked, c, &OrvexArchiveClient::cancelStreaming);
        // The copy holds after its first chunk until the GUI thread has clicked
        // (giving up after 5 s, when the GUI thread is blocked by the copy itself).
        QSemaphore gate;
        bool held = false;
        const auto hold = connect(c, &kelArchiveClientInterface::currentReadSize, c, [&] {
            if (!std::exchange(held, true))
                gate.tryAcquire(1, 5000);
        }, Qt::DirectConnection);
        int ticks = 0;
        qint64 worstGap = 0;
        QElapsedTimer clock;
        QTimer timer;
        connect(&timer, &QTimer::timeout, this, [&] {
            worstGap = qMax(worstGap, clock.restart());
            if (++ticks == 20) {
                QTest::mouseClick(&button, Qt::LeftButton);
                gate.release();
            }
        });
        clock.start();
        timer.start(5);
        QString path, uploadId;
        const auto transfer = [&] {
            return upload ? c->sendFile(source, uploadId) : c->exportDocument(int(document(0).id), path, 1, QString());
        };
        bool ok = true;
        if (onPoolThread) {
            QFuture<bool> future = QtConcurrent::run(transfer);
            QTRY_VERIFY_WITH_TIMEOUT(future.isFinished(), 15000);
            ok = future.result();
        } else {
            ok = transfer();
        }
        timer.stop();
        disconnect(hold);
        QVERIFY(!ok && ticks >= 20 && path.isEmpty() && uploadId.isEmpty());
        QVERIFY2(worstGap < 250, qPrintable(QStringLiteral("the GUI thread stood still for %1 ms").arg(worstGap)));
        QCOMPARE(c->getLastError(), QStringLiteral("The transfer was canceled."));
        QCOMPARE(snapshot(), before);
        QVERIFY(noPendingUploadFiles());
        // The next export runs again, and the canceled one left no partial file beside it.
        QVERIFY(c->exportDocument(int(document(0).id), path, 1, QString()));
        QDir exports(QDir::cleanPath(QFileInfo(path).absolutePath() + QStringLiteral("/..")));
        int files = 0;
        for (const QString &folder : exports.entryList(QDir::Dirs | QDir::NoDotAndDotDot))
            files += QDir(exports.filePath(folder)).entryList(QDir::Files).filter(document(0).fileName).size();
        QCOMPARE(files, 1);
        QVERIFY(exports.removeRecursively());
    }

    void fileNamesAndInfo()
    {
        OrvexArchiveClient *c = client();
        const OrvexArchiveDocument a = document(0), b = document(3), hidden = document(4);
        const QString idA = QString::number(a.id), idB = QString::number(b.id), idHidden = QString::number(hidden.id);
        QCOMPARE(c->getDocumentFileName(idA, QString::number(a.docsId)), a.fileName);
        QVERIFY(c->getDocumentFileName(QStringLiteral("x"), QString()).isEmpty());
        QVERIFY(c->getDocumentFileName(idHidden, QString()).isEmpty());
        const QString multi = QString::number(document(2).id); // "id;version": that version's file, extra fields ignored
        QCOMPARE(c->getDocumentFileNames({idA, multi + ";1", multi + ";2;x", multi + ";", idB}, {}),
                 (QStringList{a.fileName, c->getDocumentPartFileName(multi, {}, "1"), c->getDocumentPartFileName(multi, {}, "2"), document(2).fileName, b.fileName}));
        // Fewer names than documents: the user may not export all of them.
        QCOMPARE(c->getDocumentFileNames({idA, idHidden, idHidden + ";1", multi + ";9", multi + ";x", "abc"}, {}), QStringList{a.fileName});
        QVERIFY(c->getAllVersions(int(hidden.id)).isEmpty());
        QVERIFY(c->getDocumentPartFileName(idA, QString(), QStringLiteral("2")).isEmpty());
        QVERIFY(c->getDocumentPartFileName(idA, QString(), QStringLiteral("v1")).isEmpty());

        QStringList info;
        QVERIFY(c->getDocumentInfo({idA, idB}, info));
        QCOMPARE(info.size(), 2);
        const QStringList fields = info.first().split(kInfoSep);
        QCOMPARE(fields, QStringList({idA, a.title, a.typeName, "pdf", a.statusName, a.date, a.fileName,
                                      QString::number(a.pages), QString::number(a.versions), QString::number(a.docsId)}));
        QVERIFY(!c->getDocumentInfo({idA, QStringLiteral("999999")}, info) && info.size() == 1);
        QVERIFY(!c->getDocumentInfo({QStringLiteral("1x")}, info));

        QStringList actions;
        QVERIFY(c->getDocumentActions({idA}, actions, 0, QString()));
        QVERIFY(actions.contains(QStringLiteral("EXPORT")) && !actions.contains(QStringLiteral("DELETE")));
        QVERIFY(!c->getDocumentActions({idHidden}, actions, 0, QString()));
        QVERIFY(c->moveDocToArchive(a.id, 0) && !c->moveDocToArchive(a.id, 3));
        QVERIFY(c->writeDocumentInfo(int(a.id), 0) && !c->writeDocumentInfo(999999, 0));
        QCOMPARE(c->searchDocs(a.title.section(QLatin1Char(' '), 1, 1)), QStringList{idA});
        QVERIFY(c->searchDocs(hidden.title.section(QLatin1Char(' '), 1, 1)).isEmpty());
    }

    void thumbnails_data()
    {
        QTest::addColumn<int>("index");
        QTest::addColumn<int>("page");
        QTest::addColumn<int>("size");
        QTest::addColumn<int>("version");
        QTest::addColumn<bool>("image");

        QTest::newRow("first page for a card") << 1 << 0 << 800 << -1 << true;
        QTest::newRow("last page, small") << 1 << -99 << 120 << -1 << true; // -99: the last page
        QTest::newRow("old version") << 2 << 0 << 300 << 1 << true;
        QTest::newRow("page past the end") << 1 << 50 << 800 << -1 << false;
        QTest::newRow("negative page") << 1 << -1 << 800 << -1 << false;
        QTest::newRow("zero size") << 1 << 0 << 0 << -1 << false;
        QTest::newRow("unknown version") << 1 << 0 << 800 << 7 << false;
    }

    void thumbnails()
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
        const QByteArray bytes = thumbnail(client(), doc.id, page, size, &pageCount, 0, version);
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

    void thumbnailOfUnreadableDocument()
    {
        const OrvexArchiveDocument hidden = document(4);
        int pageCount = -1;
        // A card gets nothing and falls back to its own placeholder ...
        QVERIFY(thumbnail(client(), hidden.id, 0, 800, &pageCount).isEmpty());
        QCOMPARE(pageCount, 1);
        // ... the duplicate check gets the archive's not-authorised image.
        const QByteArray placeholder = thumbnail(client(), hidden.id, 0, 1024, &pageCount, 9, 1);
        QCOMPARE(placeholder, OrvexArchiveClient::notAuthorisedImage());
        // The duplicates dialog recognises the placeholder by this fingerprint; it must never change.
        QCOMPARE(OrvexArchiveClient::notAuthorisedImageMd5(), QStringLiteral("91664c2266d48a8aec4e70c1e2e645c5"));
        // Management sees the page.
        archive().setUser(QStringLiteral("mmueller"));
        OrvexConnectionValues values = archive().connectionValues();
        QVERIFY(connectClient(client(), values));
        const QByteArray page = thumbnail(client(), hidden.id, 0, 1024, &pageCount, 9, 1);
        archive().setUser(m_values.login1);
        QVERIFY(!page.isEmpty());
        QVERIFY(page != placeholder);
        QCOMPARE(pageCount, hidden.pages);
    }

    void thumbnailCache()
    {
        const OrvexArchiveDocument doc = document(6);
        const QByteArray first = thumbnail(client(), doc.id, 0, 222);
        QVERIFY(!first.isEmpty());
        // Handed out at once; the cache, a file in the folder or a row on the
        // server, gets the same page compressed in the background.
        QVERIFY(sharedStore()->waitForRenderAhead(30000));
        const QString cached = archive().folder() + QStringLiteral("/cache/thumbs/%1/v1-p0-s222.png").arg(doc.id);
        const QString row = QStringLiteral(" WHERE doc_id = %1 AND version = 1 AND page = 0 AND size = 222").arg(doc.id);
        const QString database = QStringLiteral("archive");
        const auto readCache = [&] {
            return onServer() ? m_pg->rows(database, QStringLiteral("SELECT encode(png, 'hex') FROM page_images") + row).value(0).toLatin1()
                              : readFile(cached).toHex();
        };
        const QByteArray stored = QByteArray::fromHex(readCache());
        QCOMPARE(QImage::fromData(stored, "PNG").convertToFormat(QImage::Format_RGB32),
                 QImage::fromData(first).convertToFormat(QImage::Format_RGB32));
        QCOMPARE(thumbnail(client(), doc.id, 0, 222), stored);
        // Served from the cache: a marked cache entry comes back as it is.
        const QByteArray marked = readFile(samplePdf(0, 1));
        if (onServer())
            QVERIFY(m_pg->run(database, {QStringLiteral("UPDATE page_images SET png = decode('%1', 'hex')").arg(QString::fromLatin1(marked.toHex())) + row}));
        else
            QVERIFY(writeFile(cached, marked));
        QCOMPARE(thumbnail(client(), doc.id, 0, 222), marked);

        // Pages asked for faster than the background can compress them all
        // are cached all the same.
        QList<int> sizes;
        for (int size = 100; size < 140; ++size) {
            QVERIFY(!thumbnail(client(), doc.id, 0, size).isEmpty());
            sizes << size;
        }
        QVERIFY(sharedStore()->waitForRenderAhead(30000));
        const QList<int> cachedNow = cachedSizes(doc.id);
        for (const int size : qAsConst(sizes))
            QVERIFY2(cachedNow.contains(size), qPrintable(QString::number(size)));
    }

    void firstPagesRenderedAhead_data()
    {
        QTest::addColumn<bool>("upload");
        QTest::newRow("imported") << false;
        QTest::newRow("uploaded") << true;
    }

    void firstPagesRenderedAhead()
    {
        QFETCH(bool, upload);
        const QString path = samplePdf(3, 1, QStringLiteral("rendered ahead %1").arg(upload));
        qlonglong docId = 0;
        if (upload) {
            QString uploadId;
            QVERIFY2(client()->sendFile(path, uploadId), qPrintable(client()->getLastError()));
            QVERIFY2(client()->commitUpload(uploadId), qPrintable(client()->getLastError()));
            docId = client()->getLastArchivedDocId();
        } else {
            docId = archive().importFile(path);
        }
        QVERIFY2(docId > 0, qPrintable(archive().lastError()));
        const QSharedPointer<OrvexArchiveStore> store = sharedStore();
        QVERIFY(store);
        QVERIFY(store->waitForRenderAhead(30000));
        // The first page at the size of a card, and nothing else.
        QCOMPARE(cachedSizes(docId), QList<int>{800});
        QCOMPARE(QImage::fromData(thumbnail(client(), docId, 0, 800)).height(), 800);
    }

    void imageCacheBoundedLeastRecentlyUsedOut()
    {
        const OrvexArchiveDocument doc = document(7);
        const QSharedPointer<OrvexArchiveStore> store = sharedStore();
        QVERIFY(store);
        QVERIFY(store->waitForRenderAhead(30000));
        OrvexArchiveBackend &backend = store->backend();
        // The size of the page's cache entry, once the page is cached.
        const auto fetch = [&](int size) {
            if (thumbnail(client(), doc.id, 0, size).isEmpty() || !store->waitForRenderAhead(30000))
                return -1;
            return backend.cachedImage({doc.id, 1, 0, size}).size();
        };
        const int a = fetch(200);
        const int b = fetch(201);
        const int c = fetch(202);
        QVERIFY(a > 0 && b > 0 && c > 0);
        QVERIFY(fetch(200) == a); // a hit: now the most recently used
        // Room for three: everything older than the three goes, then the least
        // recently used of them.
        backend.setImageCacheLimit(a + b + c);
        const int d = fetch(60);
        QVERIFY(d > 0 && d < b);
        QCOMPARE(cachedSizes(doc.id), (QList<int>{60, 200, 202}));

        // The order of use outlives the process: another store on the same
        // archive drops the least recently used first.
        OrvexArchiveStore other;
        QString error;
        QVERIFY2(other.open(OrvexArchiveLocation::parse(localUsersLocation()), false, &error), qPrintable(error));
        const QByteArray e(a, 'e');
        other.backend().setImageCacheLimit(a + d + e.size());
        other.backend().cacheImage({doc.id, 1, 0, 99}, e);
        backend.setImageCacheLimit(OrvexArchiveBackend::DefaultImageCacheLimit);
        QCOMPARE(cachedSizes(doc.id), (QList<int>{60, 99, 200}));
        QCOMPARE(other.backend().cachedImage({doc.id, 1, 0, 99}), e);
    }

    void upload_data()
    {
        QTest::addColumn<QString>("path");
        // Lines the duplicate check must answer ("none": no duplicate at all, "refused": an empty answer).
        QTest::addColumn<QStringList>("hits");
        QTest::addColumn<bool>("onPoolThread"); // as the upload runs it, the GUI thread waiting

        // "exported": version 1 of sample document 6 (which has two versions), as it is.
        const QString exported = QStringLiteral("exported");
        QStringList sameFile, samePages;
        for (int page = 0; page < document(5).pages; ++page)
            sameFile << QStringLiteral("%1;1;%2;content;page%2").arg(document(5).id).arg(page);
        // The pages of sample document 8 and one page more: other bytes, equal page images.
        for (int page = 0; page < document(7).pages; ++page)
            samePages << QStringLiteral("%1;1;%2;page;page%2").arg(document(7).id).arg(page);
        const QString broken = m_scratch.filePath(QStringLiteral("broken.pdf"));
        QVERIFY(writeFile(broken, QByteArray("%PDF-1.4\n1 0 obj << /Type /Catalog >> garbage\n").repeated(20)));

        QTest::newRow("new file, committed") << samplePdf(97, 1, QStringLiteral("Eine neue Seite mit Zebrastreifen"))
                                             << QStringList{"none"} << true;
        QTest::newRow("an archived version") << exported << sameFile << false;
        QTest::newRow("archived pages, new bytes") << samplePdf(7, 1, QStringLiteral("Nachtrag")) << samePages << false;
        QTest::newRow("damaged PDF") << broken << QStringList{"refused"} << false;
    }

    void upload()
    {
        QFETCH(QString, path);
        QFETCH(QStringList, hits);
        QFETCH(bool, onPoolThread);
        OrvexArchiveClient *c = client();
        if (path == QLatin1String("exported"))
            QVERIFY(c->exportDocumentVersion(int(document(5).id), 1, path));
        const QStringList before = snapshot();
        QSignalSpy totals(c, &kelArchiveClientInterface::totalFileSize);
        QSignalSpy ended(c, &kelArchiveClientInterface::saveDocEnd);
        QString uploadId;
        QStringList reply{QStringLiteral("not sent")};
        const auto run = [&] {
            if (c->sendFile(path, uploadId))
                reply = c->checkDuplicates(QStringLiteral("data"), path, uploadId, false, 0, 0, 1, 1);
        };
        if (onPoolThread) {
            QFuture<void> task = QtConcurrent::run(run);
            QTRY_VERIFY_WITH_TIMEOUT(task.isFinished(), 30000);
        } else {
            run();
        }
        QVERIFY2(!uploadId.isEmpty(), qPrintable(c->getLastError()));
        // The byte counts and the end reached receivers on this thread.
        QTRY_COMPARE(ended.size(), 1);
        QCOMPARE(totals.value(0).value(0).toString(), QString::number(QFileInfo(path).size()));
        if (hits == QStringList{"refused"}) {
            QVERIFY(reply.isEmpty());
            QVERIFY2(c->getLastError().contains(QStringLiteral("not a readable PDF")), qPrintable(c->getLastError()));
            QVERIFY(!c->commitUpload(uploadId)); // the refused upload is gone
            QCOMPARE(snapshot(), before);
            // Committed without the check, the import refuses it as well.
            QVERIFY(c->sendFile(path, uploadId));
            const QStringList pending = snapshot();
            QVERIFY(!c->commitUpload(uploadId));
            QCOMPARE(snapshot(), pending);
        } else if (hits == QStringList{"none"}) {
            QCOMPARE(reply, QStringList{uploadId});
        } else {
            QVERIFY(reply.size() > 2 && reply.at(0) == uploadId);
            const int originals = reply.at(1).toInt();
            QSet<QString> keys;
            for (int i = 0; i < originals; ++i) {
                keys.insert(reply.at(2 + i).section(QLatin1Char(';'), 0, 0));
                QVERIFY(!QImage::fromData(QByteArray::fromBase64(reply.at(2 + i).section(QLatin1Char(';'), 1).toLatin1())).isNull());
            }
            const QStringList lines = reply.mid(2 + originals);
            for (const QString &line : lines)
                QVERIFY2(line.split(QLatin1Char(';')).size() == 5 && keys.contains(line.section(QLatin1Char(';'), 4)), qPrintable(line));
            for (const QString &hit : qAsConst(hits))
                QVERIFY2(lines.contains(hit), qPrintable(hit + QStringLiteral(" missing in ") + lines.join(QLatin1Char(' '))));
        }
        if (hits != QStringList{"none"}) {
            c->discardUpload(uploadId);
            QVERIFY(!c->commitUpload(uploadId));
            QCOMPARE(snapshot(), before);
            QVERIFY(noPendingUploadFiles());
            return;
        }
        // A host-given entry number right after the documents' own ones.
        const qlonglong takenDocsId = archive().documents().last().docsId + 1;
        const QString numbering = classify()->createClipboard(QStringLiteral("test numbering"));
        QVERIFY(classify()->addToClipboard(numbering, QString::number(document(0).id), QString::number(takenDocsId)));
        const int documents = archive().documents().size();
        QSignalSpy changed(&archive(), &OrvexArchive::documentsChanged);
        const QString uploaded = storedFileIdentity(QString());
        QVERIFY(!uploaded.isEmpty());
        QVERIFY(c->commitUpload(uploadId));
        const qlonglong id = c->getLastArchivedDocId();
        // The commit moved the upload into the archive rather than copying it on the GUI thread.
        QCOMPARE(storedFileIdentity(QStringLiteral("%1/v1.pdf").arg(id)), uploaded);
        const OrvexArchiveDocument added = archive().documents().last();
        QCOMPARE(changed.size(), 1);
        QCOMPARE(archive().documents().size(), documents + 1);
        QCOMPARE(added.id, id);
        QCOMPARE(added.fileName, QFileInfo(path).fileName());
        // Regression: the new document's entry number is not one a clipboard entry already uses.
        QVERIFY(added.docsId != takenDocsId);
        QVERIFY(classify()->removeClipboard(numbering));
        // Its text is searchable at once, and it is not pending any more.
        QCOMPARE(c->searchDocs(QStringLiteral("Zebrastreifen")), QStringList{QString::number(id)});
        QVERIFY(!c->commitUpload(uploadId));
        QVERIFY(noPendingUploadFiles());
    }

    void readOnlyDataFolder()
    {
        if (onServer())
            QSKIP("A folder of its own: the server's failures are tests of their own");
        // Tests may run as root, where permissions do not stop writes: a plain file
        // in place of the data folders makes every write into them fail.
        OrvexArchiveClient *c = client();
        const QString files = archive().folder() + QStringLiteral("/files");
        const QString moved = archive().folder() + QStringLiteral("/files.moved");
        const QString path = samplePdf(96, 1, QStringLiteral("Schreibgeschützt"));
        QString uploadId;
        QVERIFY(c->sendFile(path, uploadId));
        const QStringList before = snapshot();
        QVERIFY(QDir().rename(files, moved));
        QVERIFY(writeFile(files, "not a folder"));
        const bool committed = c->commitUpload(uploadId);
        const QString error = c->getLastError();
        const QStringList after = snapshot();
        QVERIFY(QFile::remove(files));
        QVERIFY(QDir().rename(moved, files));
        QVERIFY(!committed);
        // The system's reason and what was lost, nothing of the database's own words.
        const QString lost = QFileInfo(path).fileName() + QStringLiteral(" was not archived");
        QCOMPARE(error, OrvexStorageError::ofErrno(ENOTDIR) + QStringLiteral(": ") + lost);
        QCOMPARE(after, before);
        // Once the folder is back, the same upload goes through.
        QVERIFY2(c->commitUpload(uploadId), qPrintable(c->getLastError()));

        const QString uploads = archive().folder() + QStringLiteral("/uploads");
        QVERIFY(QDir(uploads).removeRecursively());
        QVERIFY(writeFile(uploads, "not a folder"));
        const bool sent = c->sendFile(path, uploadId);
        QVERIFY(QFile::remove(uploads));
        QVERIFY(QDir().mkpath(uploads));
        QVERIFY(!sent);
        QCOMPARE(c->getLastError(), OrvexStorageError::ofErrno(ENOTDIR) + QStringLiteral(": ") + lost);
    }

    void deleteAsAdministrator()
    {
        OrvexArchiveClient *c = client();
        const OrvexArchiveDocument doc = document(30);
        OrvexConnectionValues values = m_values;
        values.login1 = QStringLiteral("admin");
        QVERIFY(connectClient(c, values));
        QStringList actions;
        QVERIFY(c->getDocumentActions({QString::number(doc.id)}, actions, 0, QString()));
        QVERIFY(actions.contains(QStringLiteral("DELETE")));
        QVERIFY2(c->deleteDocument(QString::number(doc.id), {}), qPrintable(c->getLastError()));
        if (onServer())
            QVERIFY(m_pg->rows(QStringLiteral("archive"), QStringLiteral("SELECT id FROM files WHERE doc_id = ?"), {doc.id}).isEmpty());
        else
            QVERIFY(!QFileInfo::exists(archive().folder() + QStringLiteral("/files/%1").arg(doc.id)));
        QString path;
        QVERIFY(!c->exportDocument(int(doc.id), path, 1, QString()));
        QVERIFY(!c->deleteDocument(QString::number(doc.id), {}));
    }

    // Opening archives, the plugin library
    void sampleArchive()
    {
        const QStringList before = snapshot();
        QCOMPARE(before.filter(QRegularExpression(QStringLiteral("^schema_version\\|"))), (QStringList{"schema_version|1", "schema_version|2", "schema_version|3", "schema_version|4"}));
        OrvexArchive reopened;
        QVERIFY(reopened.open(localUsersLocation()));
        QVERIFY(reopened.open(localUsersLocation())); // opening again on the same object
        QSet<QString> types, statuses;
        int multiPage = 0, multiVersion = 0, unreadable = 0;
        for (const OrvexArchiveDocument &document : reopened.documents()) {
            types << document.typeName;
            statuses << document.statusName;
            multiPage += document.pages > 1;
            multiVersion += document.versions > 1;
            unreadable += !document.readable;
            QVERIFY(document.docsId > 0 && document.docsId != document.id && document.fileName.endsWith(QLatin1String(".pdf")));
        }
        QVERIFY(reopened.documents().size() >= 30 && types.size() >= 3 && statuses.size() >= 3);
        QVERIFY(multiPage >= 10 && multiVersion >= 3 && unreadable >= 1);
        const QStringList roles = reopened.classifyClient()->getAllRoles();
        QVERIFY(roles.contains(QStringLiteral("tavloUSER")) && !roles.filter(QRegularExpression(QStringLiteral("^r_"))).isEmpty()
                && !roles.filter(QRegularExpression(QStringLiteral("^LDAP_"))).isEmpty());
        // The values the host hands over are the ones the archive accepts.
        QVERIFY(connectClient(reopened.archiveClient(), reopened.connectionValues()));
        // Opening an existing archive changes nothing in it.
        QCOMPARE(snapshot(), before);
    }

    void emptyArchiveWithoutSample()
    {
        const QString location = onServer() ? m_pg->createDatabase(QStringLiteral("empty")) : m_dir.filePath(QStringLiteral("empty"));
        OrvexArchive archive;
        QVERIFY2(archive.open(location, false), qPrintable(archive.lastError()));
        QVERIFY(archive.documents().isEmpty());
        ClassifyInterface *classify = archive.classifyClient();
        QList<QPair<QString, QString>> clipboards{{QStringLiteral("stale"), QStringLiteral("stale")}};
        QVERIFY(classify->getClipboards(clipboards));
        QVERIFY(clipboards.isEmpty());
        // In a folder the local user is known at once; on a server the administrator adds users.
        if (onServer()) {
            const QString user = QString(m_localUser).replace(QLatin1Char('\''), QStringLiteral("''"));
            QVERIFY(m_pg->run(QStringLiteral("empty"), {QStringLiteral("INSERT INTO roles(id, kind, display_name) VALUES ('%1', 'user', '%1')").arg(user),
                                                        QStringLiteral("INSERT INTO role_members(role_id, member_id) VALUES ('tavloUSER', '%1')").arg(user)}));
        }
        archive.setUser(m_localUser);
        QVERIFY2(!classify->createClipboard(QStringLiteral("Erste Mappe")).isEmpty(), qPrintable(static_cast<OrvexClassifyClient *>(classify)->lastError()));
        QVERIFY(connectClient(archive.archiveClient(), archive.connectionValues()));

        const QString image = m_scratch.filePath(QStringLiteral("scan.png"));
        QVERIFY(QImage(120, 80, QImage::Format_RGB32).save(image));
        QSignalSpy changed(&archive, &OrvexArchive::documentsChanged);
        const qlonglong id = archive.importFile(image, QStringLiteral("Scan"));
        QVERIFY2(id > 0, qPrintable(archive.lastError()));
        QCOMPARE(changed.size(), 1);
        QCOMPARE(archive.documents().size(), 1);
        QCOMPARE(archive.documents().first().pages, 1);
        // Images are served as they are.
        QCOMPARE(thumbnail(archive.archiveClient(), id, 0, 800), readFile(image));
        // Suffixes follow the file's type, also when its name has none.
        const QString bareFile = m_scratch.filePath(onServer() ? QStringLiteral("server/scan") : QStringLiteral("embedded/scan"));
        QVERIFY(QDir().mkpath(QFileInfo(bareFile).absolutePath()) && QFile::copy(image, bareFile));
        const qlonglong bare = archive.importFile(bareFile);
        QStringList info;
        QVERIFY(archive.archiveClient()->getDocumentInfo({QString::number(id), QString::number(bare)}, info));
        QCOMPARE(info.value(0).section(kInfoSep, 3, 3) + info.value(1).section(kInfoSep, 3, 3), QStringLiteral("pngpng"));
        QCOMPARE(archive.archiveClient()->getAllVersions(int(bare)).value(0).split(kSep).mid(9), QStringList({"image/png", "scan", "scan_v1.png"}));
        QVERIFY(archive.importFile(m_scratch.filePath(QStringLiteral("missing.pdf"))) == 0 && !archive.lastError().isEmpty());
    }

    // An archive made before the change counters keeps its content and learns them.
    void olderArchiveIsUpgraded()
    {
        if (onServer())
            QSKIP("Archives on servers start at the current version");
        const QString folder = m_dir.filePath(QStringLiteral("older"));
        QStringList statements{QStringLiteral("CREATE TABLE schema_version(version INTEGER NOT NULL)")};
        for (int step = 0; step < 2; ++step)
            statements << OrvexArchiveSchema::step(step, OrvexArchiveBackend::Dialect::Sqlite)
                       << QStringLiteral("INSERT INTO schema_version(version) VALUES (%1)").arg(step + 1);
        statements << QStringLiteral("INSERT INTO roles(id, kind, display_name) VALUES ('tavloUSER', 'system', 'All users')")
                   << QStringLiteral("INSERT INTO clipboards(uuid, name, owner, created) VALUES ('c1', 'Alt', 'jemand', '')");
        QVERIFY(QDir().mkpath(folder));
        QVERIFY(makeDatabase(folder + QStringLiteral("/archive.sqlite"), statements));

        OrvexArchive archive;
        QVERIFY2(archive.open(folder, false), qPrintable(archive.lastError()));
        const QStringList rows = archiveSnapshot(folder);
        QCOMPARE(rows.filter(QRegularExpression(QStringLiteral("^schema_version\\|"))),
                 (QStringList{"schema_version|1", "schema_version|2", "schema_version|3", "schema_version|4"}));
        QVERIFY(rows.contains(QStringLiteral("clipboards|c1|Alt|jemand|")));
        // Its changes are counted from now on, so other processes hear of them.
        OrvexArchiveStore elsewhere;
        QString error;
        QVERIFY2(elsewhere.open(OrvexArchiveLocation::parse(folder), false, &error), qPrintable(error));
        elsewhere.watchChanges();
        QSignalSpy seen(&elsewhere, &OrvexArchiveStore::changedElsewhere);
        QVERIFY(!archive.classifyClient()->createClipboard(QStringLiteral("Neu")).isEmpty());
        QTRY_VERIFY_WITH_TIMEOUT(!seen.isEmpty(), 1000);
    }

    void unusableFolders_data()
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

    void unusableFolders()
    {
        if (onServer())
            QSKIP("Folders only; see unusableServers");
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

        const QByteArray databaseBefore = readFile(database);

        OrvexArchive archive;
        QVERIFY(!archive.open(kind == QLatin1String("none") ? QString() : folder));
        QVERIFY2(archive.lastError().contains(error), qPrintable(archive.lastError()));
        QVERIFY(!archive.isOpen() && archive.documents().isEmpty() && !archive.classifyClient() && !archive.archiveClient());
        // The plugin's clients say the same instead of connecting.
        if (kind != QLatin1String("none")) {
            qputenv(OrvexArchive::FolderVariable, folder.toLocal8Bit());
            QPluginLoader loader(pluginPath());
            auto *factory = qobject_cast<kelArchiveClientInterface *>(loader.instance());
            QVERIFY(factory && !factory->createClient(QCoreApplication::applicationDirPath()));
            qunsetenv(OrvexArchive::FolderVariable);
            QVERIFY2(factory->getLastError().contains(error), qPrintable(factory->getLastError()));
        }
        // Nothing was created or changed in a folder that is not an archive.
        QCOMPARE(readFile(database), databaseBefore);
        if (kind == QLatin1String("missing"))
            QVERIFY(!QFileInfo::exists(database));
    }

    void unusableServers_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("error");
        QTest::newRow("no such database") << "nodb" << "does not exist";
        QTest::newRow("no such role") << "norole" << "does not exist";
        QTest::newRow("foreign database") << "foreign" << "no schema version";
        QTest::newRow("newer schema") << "newer" << "schema version 99";
        QTest::newRow("no right to set up an archive") << "noright" << "refused";
        QTest::newRow("port out of range") << "badport" << "no valid port";
        QTest::newRow("no database named") << "nodbname" << "names no database";
    }

    void unusableServers()
    {
        if (!onServer())
            QSKIP("Servers only; see unusableFolders");
        QFETCH(QString, kind);
        QFETCH(QString, error);
        const QString database = QStringLiteral("bad_") + kind;
        // Tables made by the owner, as an archive of another version would be.
        const QString asOwner = QStringLiteral("SET ROLE %1").arg(QLatin1String(TestPgServer::Owner));
        const QHash<QString, QStringList> setups{
            {QStringLiteral("foreign"), {asOwner, QStringLiteral("CREATE TABLE customers(id INTEGER)"), QStringLiteral("RESET ROLE")}},
            {QStringLiteral("newer"), {asOwner, QStringLiteral("CREATE TABLE schema_version(version INTEGER)"),
                                       QStringLiteral("INSERT INTO schema_version VALUES (99)"), QStringLiteral("RESET ROLE")}},
            {QStringLiteral("noright"), {}}};
        QString location = m_pg->address(database, QLatin1String(TestPgServer::Owner));
        if (setups.contains(kind)) {
            QVERIFY(!m_pg->createDatabase(database).isEmpty());
            QVERIFY(m_pg->run(database, setups.value(kind)));
        }
        if (kind == QLatin1String("noright"))
            location = m_pg->address(database, m_localUser);
        else if (kind == QLatin1String("norole"))
            location = m_pg->address(QStringLiteral("archive"), QStringLiteral("ghost_role"));
        else if (kind == QLatin1String("badport"))
            location = QStringLiteral("postgresql://x@localhost:99999/db");
        else if (kind == QLatin1String("nodbname"))
            location = QStringLiteral("postgresql://x@localhost/");
        const QString tablesQuery = QStringLiteral("SELECT table_name FROM information_schema.tables WHERE table_schema = 'public' ORDER BY 1");
        const QStringList tablesBefore = setups.contains(kind) ? m_pg->rows(database, tablesQuery) : QStringList();

        OrvexArchive archive;
        QVERIFY(!archive.open(location));
        QVERIFY2(archive.lastError().contains(error), qPrintable(archive.lastError()));
        QVERIFY(!archive.isOpen() && archive.documents().isEmpty() && !archive.classifyClient() && !archive.archiveClient());
        // Nothing was set up in a database that is no archive.
        if (setups.contains(kind))
            QCOMPARE(m_pg->rows(database, tablesQuery), tablesBefore);
    }

    void databaseRemovedWhileOpen()
    {
        if (onServer())
            QSKIP("A file removed; a server that goes away is a fault test of its own");
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

    void pluginLoadsAndConnects()
    {
        OrvexArchive archive;
        QVERIFY(archive.open(localUsersLocation()));
        qputenv(OrvexArchive::FolderVariable, localUsersLocation().toLocal8Bit());
        QPluginLoader loader(pluginPath());
        QCOMPARE(loader.metaData().value(QStringLiteral("IID")).toString(), QStringLiteral(kelArchiveClientInterface_iid));
        auto *factory = qobject_cast<kelArchiveClientInterface *>(loader.instance());
        QVERIFY2(factory, qPrintable(loader.errorString()));
        std::unique_ptr<kelArchiveClientInterface> client(factory->createClient(QCoreApplication::applicationDirPath()));
        qunsetenv(OrvexArchive::FolderVariable);
        QVERIFY2(client, qPrintable(factory->getLastError()));
        QVERIFY2(connectClient(client.get(), archive.connectionValues()), qPrintable(client->getLastError()));

        // The same archive: what the host's archive holds, the plugin's client exports.
        const OrvexArchiveDocument document = archive.documents().first();
        QCOMPARE(client->getDocumentFileName(QString::number(document.id), QString()), document.fileName);
        QSignalSpy total(client.get(), SIGNAL(totalFileSize(QString)));
        QString path;
        QVERIFY(client->exportDocument(int(document.id), path, 1, QStringLiteral("IGNORE")));
        QVERIFY(QFileInfo(path).size() > 0);
        QCOMPARE(total.size(), 1);
        // An upload through the plugin's client reaches the host's archive object.
        QSignalSpy changed(&archive, &OrvexArchive::documentsChanged);
        const int before = archive.documents().size();
        QString uploadId;
        QVERIFY(client->sendFile(path, uploadId) && client->commitUpload(uploadId));
        QCOMPARE(changed.size(), 1);
        QCOMPARE(archive.documents().size(), before + 1);
        QCOMPARE(archive.documents().last().id, client->getLastArchivedDocId());
    }

    // Changes seen by others
    void changesMadeElsewhereArrive_data()
    {
        QTest::addColumn<QString>("change");
        QTest::addColumn<int>("topic");
        QTest::newRow("a clipboard") << "create" << int(OrvexArchiveBackend::Clipboards);
        QTest::newRow("an entry") << "add" << int(OrvexArchiveBackend::Clipboards);
        QTest::newRow("a note") << "note" << int(OrvexArchiveBackend::Clipboards);
        QTest::newRow("rights") << "rights" << int(OrvexArchiveBackend::Clipboards);
        QTest::newRow("a document") << "import" << int(OrvexArchiveBackend::Documents);
    }

    // Another process on the same archive (a store of its own, as another host
    // has) hears of every change within a second.
    void changesMadeElsewhereArrive()
    {
        QFETCH(QString, change);
        QFETCH(int, topic);
        OrvexArchiveStore elsewhere;
        QString error;
        QVERIFY2(elsewhere.open(OrvexArchiveLocation::parse(localUsersLocation()), false, &error), qPrintable(error));
        elsewhere.watchChanges();
        QSignalSpy seen(&elsewhere, &OrvexArchiveStore::changedElsewhere);

        const QString uuid = clipboardId(classify(), QStringLiteral("Offene Rechnungen"));
        const OrvexArchiveDocument doc = document(9);
        const QHash<QString, std::function<bool()>> changes{
            {"create", [&] { return !classify()->createClipboard(QStringLiteral("test seen elsewhere")).isEmpty(); }},
            {"add", [&] { return classify()->addToClipboard(uuid, QString::number(doc.id), QString::number(doc.docsId)); }},
            {"note", [&] { return classify()->setClipboardComment(uuid, QString::number(doc.docsId), QStringLiteral("Gesehen")); }},
            {"rights", [&] { return classify()->setClipboardRoles(uuid, {m_localUser + kSep + "W", QStringLiteral("tavloUSER") + kSep + "R"}); }},
            {"import", [&] { return archive().importFile(samplePdf(30, 1), QStringLiteral("Anderswo archiviert")) > 0; }}};
        QElapsedTimer clock;
        clock.start();
        QVERIFY2(changes.value(change)(), qPrintable(classifyError() + archive().lastError()));
        QTRY_VERIFY_WITH_TIMEOUT(!seen.isEmpty(), 1000);
        qInfo("seen after %lld ms", clock.elapsed());
        QVERIFY(seen.last().first().toInt() & topic);
    }

    // The changes a process makes itself are not reported to it as news.
    void ownChangesAreNoNews()
    {
        QSharedPointer<OrvexArchiveStore> own(new OrvexArchiveStore);
        QString error;
        QVERIFY2(own->open(OrvexArchiveLocation::parse(localUsersLocation()), false, &error), qPrintable(error));
        own->watchChanges();
        QSignalSpy seen(own.data(), &OrvexArchiveStore::changedElsewhere);
        OrvexClassifyClient client(own);
        client.setUser(m_localUser);
        QVERIFY2(!client.createClipboard(QStringLiteral("test own change")).isEmpty(), qPrintable(client.lastError()));
        QTest::qWait(400); // longer than the watchers gather changes
        QVERIFY(seen.isEmpty());
        // A change made elsewhere right after is news again.
        QVERIFY(!classify()->createClipboard(QStringLiteral("test other change")).isEmpty());
        QTRY_VERIFY_WITH_TIMEOUT(!seen.isEmpty(), 1000);
    }

private:
    OrvexArchive &archive() { return *m_current; }
    bool onServer() const { return m_current == &m_server; }
    // Every row of every table, read as the superuser or through a connection of its own.
    QStringList snapshot()
    {
        if (!onServer())
            return archiveSnapshot(archive().folder());
        QStringList rows;
        // The page image cache changes whenever a page is shown; it is not the archive's content.
        for (const QString &table : m_pg->rows(QStringLiteral("archive"),
                                               QStringLiteral("SELECT table_name FROM information_schema.tables "
                                                              "WHERE table_schema = 'public' AND table_name <> 'page_images'")))
            for (const QString &row : m_pg->rows(QStringLiteral("archive"), QStringLiteral("SELECT * FROM %1").arg(table)))
                rows << table + QLatin1Char('|') + row;
        rows.sort();
        return rows;
    }

    // No file of a pending upload is kept (in the folder, or on the server).
    bool noPendingUploadFiles()
    {
        if (!onServer())
            return QDir(archive().folder() + QStringLiteral("/uploads")).isEmpty();
        return m_pg->rows(QStringLiteral("archive"), QStringLiteral("SELECT name FROM files WHERE name LIKE 'uploads/%'")).isEmpty();
    }

    // The archive as the local user opens it (on a server: as its role).
    QString localUsersLocation() { return onServer() ? m_pg->address(QStringLiteral("archive"), m_localUser) : archive().folder(); }
    // What a stored file is, so that a moved file is told from a copy: its
    // inode, or its row on the server. An empty name: the one pending upload.
    QString storedFileIdentity(const QString &name)
    {
        if (onServer())
            return m_pg->rows(QStringLiteral("archive"), QStringLiteral("SELECT id FROM files WHERE name LIKE ?"),
                              {name.isEmpty() ? QStringLiteral("uploads/%") : QStringLiteral("files/") + name}).value(0);
        const QDir uploads(archive().folder() + QStringLiteral("/uploads"));
        const QString path = name.isEmpty() ? uploads.filePath(uploads.entryList(QDir::Files).value(0))
                                            : archive().folder() + QStringLiteral("/files/") + name;
        struct stat info = {};
        return ::stat(QFile::encodeName(path).constData(), &info) == 0 ? QString::number(info.st_ino) : QString();
    }

    ClassifyInterface *classify() { return archive().classifyClient(); }
    QString classifyError() { return static_cast<OrvexClassifyClient *>(classify())->lastError(); }
    OrvexArchiveClient *client() { return static_cast<OrvexArchiveClient *>(archive().archiveClient()); }
    OrvexArchiveDocument document(int index) { return archive().documents().at(index); }
    QString samplePdf(int index, int version, const QString &extraPage = {})
    {
        const QString path = m_scratch.filePath(QStringLiteral("sample-%1.pdf").arg(++m_pdfs));
        QString error;
        if (!OrvexSampleArchive::writeSamplePdf(path, index, version, extraPage, &error))
            qWarning("%s", qPrintable(error));
        return path;
    }

    // The sizes of the page images cached for a document's first page.
    QList<int> cachedSizes(qlonglong docId)
    {
        QList<int> sizes;
        if (onServer()) {
            for (const QString &size : m_pg->rows(QStringLiteral("archive"),
                                                 QStringLiteral("SELECT size FROM page_images WHERE doc_id = ? AND page = 0"),
                                                 {docId}))
                sizes << size.toInt();
        } else {
            const QRegularExpression name(QStringLiteral("^v\\d+-p0-s(\\d+)\\.png$"));
            for (const QString &file : QDir(archive().folder() + QStringLiteral("/cache/thumbs/%1").arg(docId)).entryList(QDir::Files))
                if (const QRegularExpressionMatch match = name.match(file); match.hasMatch())
                    sizes << match.captured(1).toInt();
        }
        std::sort(sizes.begin(), sizes.end());
        return sizes;
    }

    QSharedPointer<OrvexArchiveStore> sharedStore()
    {
        QString error;
        const QSharedPointer<OrvexArchiveStore> store = OrvexArchiveStore::shared(localUsersLocation(), false, &error);
        if (!store)
            qWarning("%s", qPrintable(error));
        return store;
    }

    QTemporaryDir m_dir;
    QTemporaryDir m_scratch;
    OrvexArchive m_embedded;
    OrvexArchive m_server;
    OrvexArchive *m_current = &m_embedded;
    TestPgServer *m_pg = nullptr;
    OrvexConnectionValues m_values;
    QString m_localUser;
    int m_pdfs = 0;
};

QTEST_MAIN(tst_Archive)
#include "tst_archive.moc"
