#include "archivetesthelpers.h"
#include "classifyinterface.h"
#include "orvexarchive.h"
#include "orvexarchivestore.h"
#include "orvexclassifyclient.h"

#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QThread>
#include <QtTest>

namespace {
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

QStringList docsIdsOf(const QStringList &rows)
{
    QStringList ids;
    for (int i = 1; i < rows.size(); ++i)
        ids << rows.at(i).section(kSep, 0, 0).section(QLatin1Char('#'), 1);
    return ids;
}
} // namespace

// Clipboards, entries, notes, rights and queries of the archive's classification
// client, against one sample archive per run.
class tst_ArchiveClassify : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void clipboardsPerUser_data();
    void clipboardsPerUser();
    void clipboardEntriesAndNotes();
    void createRenameRemove();
    void addRemoveClearAndNotes();
    void clipboardLimit();
    void refusedWrites_data();
    void refusedWrites();
    void rightsRoundTrip();
    void searchByEntries();
    void searchFullText_data();
    void searchFullText();
    void searchHidesUnreadable();
    void searchRefusesMalformedCriteria_data();
    void searchRefusesMalformedCriteria();
    void cardInfo();
    void tablesRolesAndFacts();
    void readersDuringWritesLoseNothing();

private:
    ClassifyInterface *client() { return m_archive.classifyClient(); }
    QString lastError() { return static_cast<OrvexClassifyClient *>(client())->lastError(); }
    OrvexArchiveDocument documentWith(const QString &titlePart);

    QTemporaryDir m_dir;
    OrvexArchive m_archive;
    QString m_localUser;
};

void tst_ArchiveClassify::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QVERIFY(m_dir.isValid());
    QElapsedTimer timer;
    timer.start();
    QVERIFY2(m_archive.open(m_dir.filePath(QStringLiteral("archive"))), qPrintable(m_archive.lastError()));
    qInfo("sample archive created in %lld ms", timer.elapsed());
    QVERIFY2(timer.elapsed() < 20000, "creating the sample archive must stay quick");
    m_localUser = m_archive.user();
    QVERIFY(client());
}

void tst_ArchiveClassify::init()
{
    m_archive.setUser(m_localUser);
}

OrvexArchiveDocument tst_ArchiveClassify::documentWith(const QString &titlePart)
{
    for (const OrvexArchiveDocument &document : m_archive.documents())
        if (document.title.contains(titlePart))
            return document;
    return {};
}

void tst_ArchiveClassify::clipboardsPerUser_data()
{
    QTest::addColumn<QString>("user");
    QTest::addColumn<QString>("expected"); // name:flag, sorted by name
    QTest::newRow("local user") << QString() << "Offene Rechnungen:W,Projekt Nordlicht:R";
    QTest::newRow("management") << "mmueller" << "Offene Rechnungen:W,Projekt Nordlicht:W";
    QTest::newRow("sales") << "jschmidt" << "Offene Rechnungen:R,Projekt Nordlicht:R,Vertrieb intern:W";
    QTest::newRow("unknown user sees nothing") << "ghost" << "";
}

void tst_ArchiveClassify::clipboardsPerUser()
{
    QFETCH(QString, user);
    QFETCH(QString, expected);
    if (!user.isEmpty())
        m_archive.setUser(user);
    const QMap<QString, QString> flags = clipboardFlags(client());
    QStringList seen;
    for (auto it = flags.cbegin(); it != flags.cend(); ++it)
        if (!it.key().startsWith(QLatin1String("test ")))
            seen << it.key() + QLatin1Char(':') + it.value();
    QCOMPARE(seen.join(QLatin1Char(',')), expected);
}

void tst_ArchiveClassify::clipboardEntriesAndNotes()
{
    const QString uuid = clipboardId(client(), QStringLiteral("Offene Rechnungen"));
    QVERIFY(!uuid.isEmpty());
    QStringList entries, comments;
    QVERIFY(client()->getClipboardDocuments(uuid, entries, comments));
    QCOMPARE(entries.size(), 6);
    QCOMPARE(comments.size(), entries.size());
    QCOMPARE(comments.first(), QStringLiteral("Bitte bis Monatsende prüfen"));
    QHash<qlonglong, qlonglong> docsIdOf;
    for (const OrvexArchiveDocument &document : m_archive.documents())
        docsIdOf.insert(document.id, document.docsId);
    for (const QString &entry : qAsConst(entries)) {
        const QStringList fields = entry.split(kSep);
        QCOMPARE(fields.size(), 2);
        QVERIFY2(docsIdOf.contains(fields.at(0).toLongLong()), qPrintable(entry));
        QCOMPARE(fields.at(1).toLongLong(), docsIdOf.value(fields.at(0).toLongLong()));
    }
}

void tst_ArchiveClassify::createRenameRemove()
{
    const QString uuid = client()->createClipboard(QStringLiteral("  test Neue Mappe "));
    QVERIFY2(!uuid.isEmpty(), qPrintable(lastError()));
    QCOMPARE(clipboardFlags(client()).value(QStringLiteral("test Neue Mappe")), QStringLiteral("W"));
    // The creator holds the edit right as a role entry.
    QCOMPARE(client()->getClipboardRoles(uuid), QStringList{uuid + kSep + m_localUser + kSep + QStringLiteral("W")});
    // Others do not see it.
    m_archive.setUser(QStringLiteral("jschmidt"));
    QVERIFY(!clipboardFlags(client()).contains(QStringLiteral("test Neue Mappe")));
    m_archive.setUser(m_localUser);

    QVERIFY(client()->renameClipboard(uuid, QStringLiteral("test Umbenannt")));
    QVERIFY(clipboardFlags(client()).contains(QStringLiteral("test Umbenannt")));
    QVERIFY(client()->removeClipboard(uuid));
    QVERIFY(!clipboardFlags(client()).contains(QStringLiteral("test Umbenannt")));
    QStringList entries, comments;
    QVERIFY(!client()->getClipboardDocuments(uuid, entries, comments));
    QVERIFY(!client()->removeClipboard(uuid));
}

void tst_ArchiveClassify::addRemoveClearAndNotes()
{
    const QString uuid = client()->createClipboard(QStringLiteral("test entries"));
    const QList<OrvexArchiveDocument> documents = m_archive.documents();
    const OrvexArchiveDocument first = documents.at(0);
    const OrvexArchiveDocument second = documents.at(1);
    QVERIFY(client()->addToClipboard(uuid, QString::number(first.id), QString::number(first.docsId)));
    // An empty entry id takes the document's own.
    QVERIFY(client()->addToClipboard(uuid, QString::number(second.id), QString()));
    QStringList entries, comments;
    QVERIFY(client()->getClipboardDocuments(uuid, entries, comments));
    QCOMPARE(entries, (QStringList{QString::number(first.id) + kSep + QString::number(first.docsId),
                                   QString::number(second.id) + kSep + QString::number(second.docsId)}));

    const QString longest(OrvexArchiveStore::MaxNoteLength, QChar(0x00e4));
    QVERIFY(client()->setClipboardComment(uuid, QString::number(second.docsId), longest));
    QVERIFY(client()->setClipboardComment(uuid, QString::number(first.docsId), QStringLiteral("it's \"quoted\"")));
    QVERIFY(client()->getClipboardDocuments(uuid, entries, comments));
    QCOMPARE(comments, (QStringList{QStringLiteral("it's \"quoted\""), longest}));

    QVERIFY(client()->removeFromClipboard(uuid, QString::number(first.docsId)));
    QVERIFY(!client()->removeFromClipboard(uuid, QString::number(first.docsId)));
    QVERIFY(client()->getClipboardDocuments(uuid, entries, comments));
    QCOMPARE(entries.size(), 1);
    QVERIFY(client()->clearClipboard(uuid));
    QVERIFY(client()->getClipboardDocuments(uuid, entries, comments));
    QVERIFY(entries.isEmpty());
    QVERIFY(comments.isEmpty());
}

void tst_ArchiveClassify::clipboardLimit()
{
    const QString uuid = client()->createClipboard(QStringLiteral("test full"));
    const QString docId = QString::number(m_archive.documents().first().id);
    for (int i = 0; i < OrvexArchiveStore::MaxClipboardEntries; ++i)
        QVERIFY2(client()->addToClipboard(uuid, docId, QString::number(800000 + i)), qPrintable(lastError()));
    QVERIFY(!client()->addToClipboard(uuid, docId, QStringLiteral("801000")));
    QVERIFY(lastError().contains(QStringLiteral("at most 200")));
    QVERIFY(client()->removeClipboard(uuid));
}

void tst_ArchiveClassify::refusedWrites_data()
{
    QTest::addColumn<QString>("user");
    QTest::addColumn<QString>("clipboard"); // name of a sample clipboard, or "*" for an unknown uuid
    QTest::addColumn<QString>("operation");
    QTest::addColumn<QStringList>("args");
    QTest::addColumn<QString>("error");

    const auto docs = [this]() {
        return QStringList{QString::number(m_archive.documents().at(7).id),
                           QString::number(m_archive.documents().at(7).docsId)};
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
        << QStringList{docs().at(0), QString::number(m_archive.documents().at(8).docsId)} << "belongs to document";
    QTest::newRow("unreadable document") << QString() << own << "add"
        << QStringList{QString::number(m_archive.documents().at(4).id), QString()} << "Unknown document";
    QTest::newRow("entry already there") << QString() << own << "add"
        << QStringList{QString::number(m_archive.documents().at(0).id), QString()} << "already on the clipboard";
    QTest::newRow("note over 1024") << QString() << own << "note"
        << QStringList{QString::number(m_archive.documents().at(0).docsId), QString(1025, 'x')} << "at most 1024";
    QTest::newRow("note on missing entry") << QString() << own << "note" << QStringList{"424242", "n"} << "not on the clipboard";
    QTest::newRow("note non-numeric entry") << QString() << own << "note" << QStringList{"abc", "n"} << "Not an entry id";
    QTest::newRow("remove missing entry") << QString() << own << "removeEntry" << QStringList{"424242"} << "not on the clipboard";
    QTest::newRow("roles without editor") << QString() << own << "roles" << QStringList{QStringLiteral("tavloUSER") + kSep + "R"} << "At least one role";
    QTest::newRow("roles unknown role") << QString() << own << "roles" << QStringList{QStringLiteral("r_nobody") + kSep + "W"} << "Unknown role";
    QTest::newRow("roles malformed") << QString() << own << "roles" << QStringList{QStringLiteral("tavloUSER") + kSep + "X"} << "Malformed";
    QTest::newRow("roles empty") << QString() << own << "roles" << QStringList() << "At least one role";
}

void tst_ArchiveClassify::refusedWrites()
{
    QFETCH(QString, user);
    QFETCH(QString, clipboard);
    QFETCH(QString, operation);
    QFETCH(QStringList, args);
    QFETCH(QString, error);

    const QString uuid = clipboard == QLatin1String("*") ? QUuid::createUuid().toString(QUuid::WithoutBraces)
                                                         : clipboardId(client(), clipboard);
    // Invisible clipboards are looked up as the user who may see them.
    QString target = uuid;
    if (target.isEmpty()) {
        m_archive.setUser(QStringLiteral("jschmidt"));
        target = clipboardId(client(), clipboard);
        m_archive.setUser(m_localUser);
    }
    QVERIFY(!target.isEmpty());
    if (!user.isEmpty())
        m_archive.setUser(user);
    const QStringList before = archiveSnapshot(m_archive.folder());

    bool ok = true;
    if (operation == QLatin1String("rename"))
        ok = client()->renameClipboard(target, args.at(0));
    else if (operation == QLatin1String("remove"))
        ok = client()->removeClipboard(target);
    else if (operation == QLatin1String("add"))
        ok = client()->addToClipboard(target, args.at(0), args.at(1));
    else if (operation == QLatin1String("removeEntry"))
        ok = client()->removeFromClipboard(target, args.at(0));
    else if (operation == QLatin1String("clear"))
        ok = client()->clearClipboard(target);
    else if (operation == QLatin1String("note"))
        ok = client()->setClipboardComment(target, args.at(0), args.at(1));
    else if (operation == QLatin1String("roles"))
        ok = client()->setClipboardRoles(target, args);
    else if (operation == QLatin1String("create"))
        ok = !client()->createClipboard(args.at(0)).isEmpty();
    else
        QFAIL("unknown operation");

    QVERIFY(!ok);
    QVERIFY2(lastError().contains(error), qPrintable(lastError()));
    QCOMPARE(archiveSnapshot(m_archive.folder()), before);
}

void tst_ArchiveClassify::rightsRoundTrip()
{
    const QString uuid = client()->createClipboard(QStringLiteral("test rights"));
    // As the permissions dialog sends them: edit entries first, then view entries.
    QVERIFY2(client()->setClipboardRoles(uuid, {QStringLiteral("r_sales") + kSep + "W",
                                                 QStringLiteral("LDAP_staff") + kSep + "R",
                                                 // with the leading field, as getClipboardRoles answers
                                                 uuid + kSep + QStringLiteral("tavloUSER") + kSep + "R"}),
             qPrintable(lastError()));
    QCOMPARE(client()->getClipboardRoles(uuid),
             (QStringList{uuid + kSep + "r_sales" + kSep + "W", uuid + kSep + "LDAP_staff" + kSep + "R",
                          uuid + kSep + "tavloUSER" + kSep + "R"}));
    // The owner keeps editing; a sales member edits through r_sales; others only view.
    QCOMPARE(clipboardFlags(client()).value(QStringLiteral("test rights")), QStringLiteral("W"));
    m_archive.setUser(QStringLiteral("jschmidt"));
    QCOMPARE(clipboardFlags(client()).value(QStringLiteral("test rights")), QStringLiteral("W"));
    QVERIFY(client()->renameClipboard(uuid, QStringLiteral("test rights 2")));
    m_archive.setUser(QStringLiteral("mmueller"));
    QCOMPARE(clipboardFlags(client()).value(QStringLiteral("test rights 2")), QStringLiteral("R"));
    QVERIFY(!client()->clearClipboard(uuid));
    m_archive.setUser(m_localUser);
    QVERIFY(client()->removeClipboard(uuid));
}

void tst_ArchiveClassify::searchByEntries()
{
    const QString uuid = clipboardId(client(), QStringLiteral("Offene Rechnungen"));
    QStringList entries, comments;
    QVERIFY(client()->getClipboardDocuments(uuid, entries, comments));
    QString filter = QStringLiteral("docs_id in (");
    QStringList expected;
    for (const QString &entry : qAsConst(entries)) {
        filter += entry.section(kSep, 1, 1) + QLatin1Char(',');
        expected << entry.section(kSep, 1, 1);
    }
    filter += QStringLiteral("0)");

    const QStringList rows = client()->searchDocuments({filter, QStringLiteral("OPT:LIMIT;1000")});
    QCOMPARE(rows.size(), entries.size() + 1);
    QCOMPARE(rows.first().split(kSep).size(), 8);
    QStringList found = docsIdsOf(rows);
    found.sort();
    expected.sort();
    QCOMPARE(found, expected);
    for (int i = 1; i < rows.size(); ++i) {
        const QStringList fields = rows.at(i).split(kSep);
        QCOMPARE(fields.size(), 8);
        QCOMPARE(fields.at(0).section(QLatin1Char('#'), 1), fields.at(1));
        QVERIFY(entries.contains(fields.at(0).section(QLatin1Char('#'), 0, 0) + kSep + fields.at(1)));
    }

    QCOMPARE(client()->searchDocuments({QStringLiteral("docs_id in (0)"), QStringLiteral("OPT:LIMIT;1000")}).size(), 1);
    QCOMPARE(client()->searchDocuments({filter, QStringLiteral("OPT:LIMIT;2")}).size(), 3);
    QCOMPARE(client()->searchDocuments({filter, QStringLiteral("OPT:LIMIT;0")}).size(), 1);
}

void tst_ArchiveClassify::searchFullText_data()
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

void tst_ArchiveClassify::searchFullText()
{
    QFETCH(QString, term);
    QFETCH(QStringList, titleWords);

    // Search within every document's entry, as the board searches its cards.
    QString filter = QStringLiteral("docs_id in (");
    QStringList expected;
    for (const OrvexArchiveDocument &document : m_archive.documents()) {
        filter += QString::number(document.docsId) + QLatin1Char(',');
        for (const QString &word : qAsConst(titleWords))
            if (document.readable && document.title.contains(word, Qt::CaseInsensitive) && !expected.contains(document.title))
                expected << document.title;
    }
    filter += QStringLiteral("0)");
    const QStringList rows = client()->searchDocuments({QStringLiteral("OPT:SELECTION;-1"),
                                                        QStringLiteral("OPT:FULLTEXT") + kSep + term, filter,
                                                        QStringLiteral("OPT:LIMIT;1000")});
    QVERIFY2(!rows.isEmpty(), qPrintable(lastError()));
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

void tst_ArchiveClassify::searchHidesUnreadable()
{
    // Sample document 5 is for management only; its number is in its title and text.
    const OrvexArchiveDocument restricted = m_archive.documents().at(4);
    QVERIFY(!restricted.readable);
    const QString number = restricted.title.section(QLatin1Char(' '), 1, 1);
    const QString filter = QStringLiteral("docs_id in (%1,0)").arg(restricted.docsId);
    const QString fullText = QStringLiteral("OPT:FULLTEXT") + kSep + number;

    QCOMPARE(client()->searchDocuments({fullText, filter}).size(), 1);
    // By entry it stays listed (its card keeps its place) but shows nothing of the document.
    const QStringList rows = client()->searchDocuments({filter});
    QCOMPARE(rows.size(), 2);
    const QStringList fields = rows.at(1).split(kSep);
    QCOMPARE(fields.at(0), QStringLiteral("%1#%2").arg(restricted.id).arg(restricted.docsId));
    QVERIFY(!fields.at(2).contains(number));
    QVERIFY(fields.at(5).isEmpty());

    m_archive.setUser(QStringLiteral("mmueller"));
    QCOMPARE(client()->searchDocuments({fullText, filter}).size(), 2);
}

void tst_ArchiveClassify::searchRefusesMalformedCriteria_data()
{
    QTest::addColumn<QStringList>("criteria");
    QTest::newRow("non-numeric entry") << QStringList{"docs_id in (5001,abc,0)"};
    QTest::newRow("unknown criterion") << QStringList{"DROP TABLE documents"};
    QTest::newRow("bad limit") << QStringList{"OPT:LIMIT;many"};
    QTest::newRow("negative limit") << QStringList{"OPT:LIMIT;-3"};
    QTest::newRow("empty full text") << QStringList{QStringLiteral("OPT:FULLTEXT") + kSep + "  "};
    QTest::newRow("stored selection") << QStringList{"OPT:SELECTION;7"};
}

void tst_ArchiveClassify::searchRefusesMalformedCriteria()
{
    QFETCH(QStringList, criteria);
    QVERIFY(client()->searchDocuments(criteria).isEmpty());
    QVERIFY(!lastError().isEmpty());
}

void tst_ArchiveClassify::cardInfo()
{
    const OrvexArchiveDocument document = m_archive.documents().at(2);
    const QStringList fields = client()->getCardInfo(QString::number(document.docsId), QString());
    QCOMPARE(fields.size(), 8);
    QCOMPARE(fields.at(0), QString::number(document.id));
    QCOMPARE(fields.at(1), QString::number(document.docsId));
    QCOMPARE(fields.at(2), document.title);
    QCOMPARE(fields.at(3), QStringLiteral("LET"));
    QCOMPARE(fields.at(4), document.date);
    QCOMPARE(fields.at(5), document.fileName);
    QVERIFY(!fields.at(6).isEmpty());
    QCOMPARE(fields.at(7), QString::number(document.pages));

    QVERIFY(client()->getCardInfo(QStringLiteral("abc"), QString()).isEmpty());
    QVERIFY(client()->getCardInfo(QStringLiteral("-5"), QString()).isEmpty());
    QVERIFY(client()->getCardInfo(QStringLiteral("424242"), QString()).isEmpty());
    QVERIFY(!lastError().isEmpty());
    // A document id is not an entry id.
    QVERIFY(client()->getCardInfo(QString::number(document.id), QString()).isEmpty());
}

void tst_ArchiveClassify::tablesRolesAndFacts()
{
    QStringList rows, second{QStringLiteral("stale")};
    QVERIFY(client()->getDocumentTypes(rows, second));
    QVERIFY(rows.contains(QStringLiteral("INV") + kSep + "Invoice"));
    QCOMPARE(rows.size(), 5);
    QVERIFY(second.isEmpty());
    QVERIFY(client()->getDocumentStatuses(rows, second));
    QVERIFY(rows.contains(QStringLiteral("NEW") + kSep + "New"));

    const QStringList roles = client()->getAllRoles();
    for (const QString &role : {QStringLiteral("tavloUSER"), QStringLiteral("r_accounting"), QStringLiteral("r_management"),
                                QStringLiteral("LDAP_staff"), QStringLiteral("mmueller"), m_localUser})
        QVERIFY2(roles.contains(role), qPrintable(role));
    QCOMPARE(client()->getRoleNames({QStringLiteral("mmueller"), QStringLiteral("nobody"), QStringLiteral("r_sales")}),
             (QStringList{QStringLiteral("mmueller") + kSep + QStringLiteral("Maria Müller"),
                          QStringLiteral("r_sales") + kSep + QStringLiteral("Vertrieb")}));

    QCOMPARE(client()->getServerHost(), QStringLiteral("localhost"));
    QCOMPARE(client()->getServerPort(), m_archive.connectionValues().port);
    QCOMPARE(client()->getProfileId(), 1);
    QVERIFY(!client()->getConnectionMode().startsWith(QLatin1String("Offline")));
}

// Regression guard: readers on other threads while one thread writes must never
// see a failure or a half-written state, and every write must arrive.
void tst_ArchiveClassify::readersDuringWritesLoseNothing()
{
    const QString uuid = client()->createClipboard(QStringLiteral("test concurrent"));
    const OrvexArchiveDocument document = m_archive.documents().at(1);
    constexpr int writes = 60;
    QAtomicInt done(0);
    QAtomicInt readFailures(0);
    QAtomicInt reads(0);

    OrvexClassifyClient *shared = static_cast<OrvexClassifyClient *>(client());
    // Threads of their own: a pool might run a task on the waiting thread instead.
    QScopedPointer<QThread> writer(QThread::create([&] {
        for (int i = 0; i < writes; ++i) {
            const QString docsId = QString::number(700000 + i);
            if (!shared->addToClipboard(uuid, QString::number(document.id), docsId)
                || !shared->setClipboardComment(uuid, docsId, QStringLiteral("note %1").arg(i)))
                readFailures.fetchAndAddOrdered(1000);
        }
        done.storeRelease(1);
    }));
    QList<QThread *> readers;
    for (int r = 0; r < 3; ++r) {
        readers << QThread::create([&] {
            int last = 0;
            while (!done.loadAcquire()) {
                QStringList entries, comments;
                if (!shared->getClipboardDocuments(uuid, entries, comments) || entries.size() != comments.size()
                    || entries.size() < last)
                    readFailures.fetchAndAddOrdered(1);
                last = entries.size();
                const QStringList rows = shared->searchDocuments({QStringLiteral("docs_id in (700000,0)")});
                if (rows.isEmpty())
                    readFailures.fetchAndAddOrdered(1);
                reads.fetchAndAddOrdered(1);
            }
        });
    }
    for (QThread *reader : qAsConst(readers))
        reader->start();
    writer->start();
    QVERIFY(writer->wait(60000));
    for (QThread *reader : qAsConst(readers)) {
        QVERIFY(reader->wait(60000));
        delete reader;
    }
    QCOMPARE(readFailures.loadAcquire(), 0);
    QVERIFY(reads.loadAcquire() > 0);
    QStringList entries, comments;
    QVERIFY(client()->getClipboardDocuments(uuid, entries, comments));
    QCOMPARE(entries.size(), writes);
    for (int i = 0; i < writes; ++i)
        QCOMPARE(comments.at(i), QStringLiteral("note %1").arg(i));
    QVERIFY(client()->removeClipboard(uuid));
}

QTEST_MAIN(tst_ArchiveClassify)
#include "tst_archiveclassify.moc"
