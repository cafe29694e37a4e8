// The archive under load, on both engines in one run: a data set of generated
// PDFs with text (100,000 by default), on which concurrent clients (20 by
// default), each an archive user with a clipboard of its own, repeat the
// clipboard operations: list (the clipboard's entries and their card rows, as
// a board shows them), add, note, remove, search (full text within the
// clipboard, as the board's search) and thumbnail (a card's page image, from
// the cache; "first image" is its first rendering), each after a user's pause
// (100 ms on average; --think 0 runs flat out). It
// prints p50 and p95 per operation and engine, and how long the host's
// document list takes to open on the whole data set.
//
//   bench_archive [--documents N] [--clients N] [--rounds N] [--think MS] [--cache DIR]
//                 [--engine embedded|server|both]
//
// The data set is made once and kept in the cache folder (default
// /var/tmp/orvex-bench-archive, or ORVEX_BENCH_CACHE): the embedded archive,
// and the data folder of a private PostgreSQL server that holds the same
// archive (copied with the migration command's copy), started for each run.
#include "classifyinterface.h"
#include "kelarchiveclientinterface.h"
#include "orvexarchive.h"
#include "orvexarchivecopy.h"
#include "orvexarchivelocation.h"
#include "orvexarchivestore.h"
#include "orvexcontenthash.h"
#include "orvexdocumentlistmodel.h"
#include "orvexdocumentlistview.h"
#include "orvexhostwindow.h"
#include "testpgserver.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDate>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QLineEdit>
#include <QMutex>
#include <QRandomGenerator>
#include <QSqlError>
#include <QSqlQuery>
#include <QTextStream>
#include <QThread>
#include <QVariant>

#include <algorithm>
#include <memory>

namespace {
QTextStream out(stdout);
const QChar kSep(0xFEFF);
const char *const kOperations[] = {"list", "add", "note", "remove", "search", "thumbnail", "first image"};
constexpr int kShownCards = 10; // cards whose page images a client shows
constexpr int kEntriesPerClipboard = 100;
constexpr int kUsers = 50; // the most clients a data set serves

const char *const kWords[] = {"Rechnung", "Lieferschein", "Angebot", "Vertrag", "Mahnung", "Gutschrift",
                              "Wartung", "Druckerflotte", "Kopierpapier", "Klimatisierung", "Fuhrpark",
                              "Leasing", "Softwarelizenz", "Reinigung", "Messestand", "Prüfung", "Honorar",
                              "Versicherung", "Miete", "Strom", "Heizung", "Transport", "Zoll", "Beratung",
                              "Schulung", "Reparatur", "Ersatzteil", "Büromöbel", "Telefon", "Porto"};
const char *const kCompanies[] = {"Nordlicht", "Baumann", "Helios", "Kranich", "Seeberg", "Lindner",
                                  "Falkenstein", "Ostwind", "Rautenberg", "Adler", "Berger", "Cordes"};

// A small PDF of one to three pages with the given lines of text on each.
QByteArray pdf(const QStringList &lines, int pages)
{
    QByteArray file = "%PDF-1.4\n";
    QList<int> offsets;
    const auto object = [&](const QByteArray &body) {
        offsets << file.size();
        file += QByteArray::number(offsets.size()) + " 0 obj\n" + body + "\nendobj\n";
    };
    QByteArray kids;
    for (int page = 0; page < pages; ++page)
        kids += QByteArray::number(4 + page * 2) + " 0 R ";
    object("<< /Type /Catalog /Pages 2 0 R >>");
    object("<< /Type /Pages /Kids [" + kids + "] /Count " + QByteArray::number(pages) + " >>");
    object("<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica /Encoding /WinAnsiEncoding >>");
    for (int page = 0; page < pages; ++page) {
        QByteArray text = "BT /F1 14 Tf 72 770 Td 18 TL";
        for (const QString &line : lines)
            text += " (" + line.toLatin1().replace('(', ' ').replace(')', ' ') + " - Seite " + QByteArray::number(page + 1) + ") '";
        text += " ET";
        object("<< /Type /Page /Parent 2 0 R /MediaBox [0 0 595 842] /Contents " + QByteArray::number(5 + page * 2)
               + " 0 R /Resources << /Font << /F1 3 0 R >> >> >>");
        object("<< /Length " + QByteArray::number(text.size()) + " >>\nstream\n" + text + "\nendstream");
    }
    const int xref = file.size();
    file += "xref\n0 " + QByteArray::number(offsets.size() + 1) + "\n0000000000 65535 f \n";
    for (int offset : offsets)
        file += QByteArray::number(offset).rightJustified(10, '0') + " 00000 n \n";
    file += "trailer\n<< /Size " + QByteArray::number(offsets.size() + 1) + " /Root 1 0 R >>\nstartxref\n"
            + QByteArray::number(xref) + "\n%%EOF\n";
    return file;
}

QString userName(int client)
{
    return QStringLiteral("bench%1").arg(client + 1, 2, 10, QLatin1Char('0'));
}

// The embedded archive with documents documents, written straight into its
// tables and files: the same rows an import makes, without inspecting each file.
bool generate(const QString &folder, int documents, QString &error)
{
    OrvexArchive archive;
    if (!archive.open(folder, false)) {
        error = archive.lastError();
        return false;
    }
    const QSharedPointer<OrvexArchiveStore> store = OrvexArchiveStore::shared(folder, false, &error);
    QRandomGenerator random(4711);
    QElapsedTimer clock;
    clock.start();
    const int batch = 5000;
    for (int first = 0; first < documents; first += batch) {
        const bool ok = store->write([&](QSqlDatabase &db, QString &stepError) {
            if (first == 0) {
                QSqlQuery role(db);
                role.prepare(QStringLiteral("INSERT INTO roles(id, kind, display_name, password_hash) VALUES (?, ?, ?, ?)"));
                QSqlQuery member(db);
                member.prepare(QStringLiteral("INSERT INTO role_members(role_id, member_id) VALUES (?, ?)"));
                for (const QString &group : {QStringLiteral("r_bench"), QStringLiteral("r_management")}) {
                    role.addBindValue(group);
                    role.addBindValue(QStringLiteral("group"));
                    role.addBindValue(group);
                    role.addBindValue(QVariant(QVariant::String));
                    if (!role.exec())
                        return false;
                }
                for (int client = 0; client < kUsers; ++client) {
                    role.addBindValue(userName(client));
                    role.addBindValue(QStringLiteral("user"));
                    role.addBindValue(QStringLiteral("Benchmark %1").arg(client + 1));
                    // The embedded archive's login takes its local password.
                    role.addBindValue(OrvexArchiveStore::passwordHash(userName(client), store->setting(QStringLiteral("local_password"))));
                    if (!role.exec())
                        return false;
                    for (const QString &group : {QStringLiteral("tavloUSER"), QStringLiteral("r_bench")}) {
                        member.addBindValue(group);
                        member.addBindValue(userName(client));
                        if (!member.exec())
                            return false;
                    }
                }
            }
            QSqlQuery doc(db), version(db), hash(db);
            doc.prepare(QStringLiteral("INSERT INTO documents(id, docs_id, type_key, status_key, title, file_name, doc_date, "
                                       "current_version, read_role, owner, created) VALUES (?, ?, ?, ?, ?, ?, ?, 1, ?, 'bench01', ?)"));
            version.prepare(QStringLiteral("INSERT INTO versions(doc_id, version, file, size, sha256, pages, created) "
                                           "VALUES (?, 1, ?, ?, ?, ?, ?)"));
            hash.prepare(QStringLiteral("INSERT INTO page_hashes(doc_id, version, page, hash) VALUES (?, 1, ?, ?)"));
            const char *const types[] = {"INV", "CON", "LET", "DEL", "OFF"};
            const char *const statuses[] = {"NEW", "INP", "APP", "ARC"};
            for (int i = first; i < qMin(documents, first + batch); ++i) {
                const qlonglong id = 1001 + i;
                const QString company = QString::fromUtf8(kCompanies[random.bounded(12)]);
                QStringList words;
                for (int w = 0; w < 12; ++w)
                    words << QString::fromUtf8(kWords[random.bounded(30)]);
                const QString number = QStringLiteral("BN-%1").arg(i + 1, 6, 10, QLatin1Char('0'));
                const QString title = QStringLiteral("%1 %2 %3").arg(words.first(), number, company);
                const QStringList lines{title, words.mid(1, 6).join(QLatin1Char(' ')), words.mid(7).join(QLatin1Char(' '))};
                const int pages = 1 + random.bounded(3);
                const QByteArray bytes = pdf(lines, pages);
                const QString name = QStringLiteral("%1/v1.pdf").arg(id);
                const QString path = folder + QStringLiteral("/files/") + name;
                QDir().mkpath(QFileInfo(path).absolutePath());
                QFile file(path);
                if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
                    stepError = QStringLiteral("Cannot write %1").arg(path);
                    return false;
                }
                OrvexContentHash content;
                content.addData(bytes.constData(), bytes.size());
                const QString date = QDate(2020, 1, 1).addDays(i % 2000).toString(Qt::ISODate);
                doc.addBindValue(id);
                doc.addBindValue(id + 100000000);
                doc.addBindValue(QLatin1String(types[i % 5]));
                doc.addBindValue(QLatin1String(statuses[i % 4]));
                doc.addBindValue(title);
                doc.addBindValue(number + QStringLiteral(".pdf"));
                doc.addBindValue(date);
                doc.addBindValue(i % 10 == 9 ? QVariant(QStringLiteral("r_management")) : QVariant(QVariant::String));
                doc.addBindValue(date);
                version.addBindValue(id);
                version.addBindValue(name);
                version.addBindValue(bytes.size());
                version.addBindValue(content.hex());
                version.addBindValue(pages);
                version.addBindValue(date);
                if (!doc.exec() || !version.exec()) {
                    stepError = doc.lastError().text() + version.lastError().text();
                    return false;
                }
                for (int page = 0; page < pages; ++page) {
                    QByteArray fingerprint(128, Qt::Uninitialized);
                    for (char &byte : fingerprint)
                        byte = char(random.bounded(256));
                    hash.addBindValue(id);
                    hash.addBindValue(page);
                    hash.addBindValue(fingerprint);
                    if (!hash.exec())
                        return false;
                }
                if (!store->backend().indexText(db, id, title, lines.join(QLatin1Char('\n')), stepError))
                    return false;
            }
            return true;
        }, &error);
        if (!ok)
            return false;
        out << "  generated " << qMin(documents, first + batch) << " documents (" << clock.elapsed() / 1000 << " s)" << Qt::endl;
    }
    return true;
}

// Each client's clipboard, filled with entries of random readable documents.
bool prepareClipboards(const QString &location, bool server, int clients, int documents, QStringList &uuids,
                       QString &error)
{
    uuids.clear();
    for (int client = 0; client < clients; ++client) {
        OrvexArchive archive;
        const QString as = server ? OrvexArchiveLocation::parse(location).withUser(userName(client)).toString() : location;
        if (!archive.open(as, false)) {
            error = archive.lastError();
            return false;
        }
        archive.setUser(userName(client));
        ClassifyInterface *classify = archive.classifyClient();
        QList<QPair<QString, QString>> clipboards;
        classify->getClipboards(clipboards);
        for (const auto &clipboard : qAsConst(clipboards))
            classify->removeClipboard(clipboard.first);
        const QString uuid = classify->createClipboard(QStringLiteral("Bench %1").arg(client + 1));
        if (uuid.isEmpty()) {
            error = QStringLiteral("No clipboard for %1").arg(userName(client));
            return false;
        }
        QRandomGenerator random(quint32(client + 1));
        for (int added = 0; added < kEntriesPerClipboard;) {
            const qlonglong id = 1001 + random.bounded(documents);
            if (id % 10 == 0) // 1001 + 9 + k*10: for management only
                continue;
            added += classify->addToClipboard(uuid, QString::number(id), QString()) ? 1 : 0;
        }
        uuids << uuid;
    }
    return true;
}

struct Latencies
{
    QMutex mutex;
    QHash<QString, QVector<double>> ms;
    void add(const QString &operation, double value)
    {
        QMutexLocker locker(&mutex);
        ms[operation] << value;
    }
};

double percentile(QVector<double> values, double p)
{
    if (values.isEmpty())
        return 0;
    std::sort(values.begin(), values.end());
    return values.at(qMin(values.size() - 1, int(p * values.size())));
}

// One client: rounds of the six operations on its own clipboard, as its own user.
void runClient(const QString &location, bool server, int client, const QString &uuid, int rounds, int documents,
               int think, Latencies &latencies)
{
    OrvexArchive archive;
    const QString as = server ? OrvexArchiveLocation::parse(location).withUser(userName(client)).toString() : location;
    if (!archive.open(as, false))
        return;
    archive.setUser(userName(client));
    ClassifyInterface *classify = archive.classifyClient();
    kelArchiveClientInterface *files = archive.archiveClient();
    const OrvexConnectionValues values = archive.connectionValues();
    if (!files->openConnection(values.server, values.port) || !files->logIn(values.login1, values.login2, values.login3)
        || !files->selectArchive(values.archiveName))
        return;
    QRandomGenerator random(quint32(100 + client));
    QElapsedTimer clock;
    const auto measure = [&](const char *operation, const std::function<void()> &work) {
        // A user between two actions.
        if (think > 0)
            QThread::msleep(random.bounded(2 * think));
        clock.start();
        work();
        latencies.add(QLatin1String(operation), clock.nsecsElapsed() / 1e6);
    };
    const auto thumbnail = [&](int docId) {
        int pages = 0;
        QString format;
        files->getDocumentThumbnail(docId, 0, 800, pages, format, 0, 0, -1);
    };
    // The page images of the cards in view: rendered once, then from the cache.
    QStringList shown, notes;
    classify->getClipboardDocuments(uuid, shown, notes);
    shown = shown.mid(0, kShownCards);
    for (const QString &entry : qAsConst(shown))
        measure("first image", [&] { thumbnail(entry.section(kSep, 0, 0).toInt()); });
    for (int round = 0; round < rounds; ++round) {
        QStringList entries, notes;
        measure("list", [&] {
            classify->getClipboardDocuments(uuid, entries, notes);
            QString filter = QStringLiteral("docs_id in (");
            for (const QString &entry : qAsConst(entries))
                filter += entry.section(kSep, 1, 1) + QLatin1Char(',');
            classify->searchDocuments({filter + QStringLiteral("0)"), QStringLiteral("OPT:LIMIT;1000")});
        });
        if (entries.isEmpty())
            continue;
        qlonglong id = 0;
        do
            id = 1001 + random.bounded(documents);
        while (id % 10 == 0);
        measure("add", [&] { classify->addToClipboard(uuid, QString::number(id), QString()); });
        const QString entry = entries.at(random.bounded(entries.size()));
        measure("note", [&] {
            classify->setClipboardComment(uuid, entry.section(kSep, 1, 1), QStringLiteral("Runde %1").arg(round));
        });
        measure("remove", [&] { classify->removeFromClipboard(uuid, QString::number(id + 100000000)); });
        QString filter = QStringLiteral("docs_id in (");
        for (const QString &e : qAsConst(entries))
            filter += e.section(kSep, 1, 1) + QLatin1Char(',');
        const QString word = QString::fromUtf8(kWords[random.bounded(30)]);
        measure("search", [&] {
            classify->searchDocuments({QStringLiteral("OPT:SELECTION;-1"), QStringLiteral("OPT:FULLTEXT") + kSep + word,
                                       filter + QStringLiteral("0)"), QStringLiteral("OPT:LIMIT;1000")});
        });
        if (!shown.isEmpty()) {
            const int card = shown.at(random.bounded(shown.size())).section(kSep, 0, 0).toInt();
            measure("thumbnail", [&] { thumbnail(card); });
        }
    }
}

void run(const QString &title, const QString &location, bool server, int clients, int rounds, int documents,
         int think, QHash<QString, QPair<double, double>> &results)
{
    QStringList uuids;
    QString error;
    if (!prepareClipboards(location, server, clients, documents, uuids, error)) {
        out << title << ": " << error << Qt::endl;
        return;
    }
    Latencies latencies;
    QElapsedTimer clock;
    clock.start();
    std::vector<std::unique_ptr<QThread>> threads;
    for (int client = 0; client < clients; ++client)
        threads.emplace_back(QThread::create(runClient, location, server, client, uuids.at(client), rounds, documents,
                                             think, std::ref(latencies)));
    for (auto &thread : threads)
        thread->start();
    for (auto &thread : threads)
        thread->wait();
    const qint64 elapsed = clock.elapsed();
    int total = 0;
    for (const char *operation : kOperations) {
        const QVector<double> values = latencies.ms.value(QLatin1String(operation));
        total += values.size();
        results.insert(QLatin1String(operation), {percentile(values, 0.5), percentile(values, 0.95)});
    }
    out << "  " << title << ": " << total << " operations by " << clients << " clients in " << elapsed << " ms" << Qt::endl;
}

// From opening the archive until the host's document list is shown with its first rows.
qint64 listOpenTime(const QString &location)
{
    QElapsedTimer clock;
    clock.start();
    OrvexArchive archive;
    if (!archive.open(location, false))
        return -1;
    const qint64 opened = clock.elapsed();
    const QList<OrvexArchiveDocument> documents = archive.documents();
    const qint64 read = clock.elapsed();
    OrvexHostWindow window;
    window.resize(1200, 800);
    window.setDocuments(documents);
    const qint64 listed = clock.elapsed();
    window.show();
    QApplication::processEvents();
    window.documentView()->viewport()->repaint();
    const qint64 total = clock.elapsed();
    out << "  list open on " << location << ": archive " << opened << " ms, rows read " << read - opened
        << " ms, model " << listed - read << " ms, shown " << total - listed << " ms" << Qt::endl;
    // What a user does next: filter by a word, sort by title.
    clock.start();
    if (auto *filter = window.findChild<QLineEdit *>(QStringLiteral("m_filter")))
        filter->setText(QStringLiteral("nordlicht"));
    QApplication::processEvents();
    const qint64 filtered = clock.elapsed();
    window.documentView()->sortByColumn(OrvexDocumentListModel::TitleColumn, Qt::AscendingOrder);
    QApplication::processEvents();
    out << "  filtered in " << filtered << " ms, sorted by title in " << clock.elapsed() - filtered << " ms" << Qt::endl;
    return total;
}
} // namespace

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QCommandLineParser parser;
    parser.addHelpOption();
    const QCommandLineOption documentsOption(QStringLiteral("documents"), QStringLiteral("Documents in the data set."),
                                             QStringLiteral("N"), QStringLiteral("100000"));
    const QCommandLineOption clientsOption(QStringLiteral("clients"), QStringLiteral("Concurrent clients."),
                                           QStringLiteral("N"), QStringLiteral("20"));
    const QCommandLineOption roundsOption(QStringLiteral("rounds"), QStringLiteral("Rounds of the operations per client."),
                                          QStringLiteral("N"), QStringLiteral("25"));
    const QCommandLineOption cacheOption(QStringLiteral("cache"), QStringLiteral("Folder of the kept data sets."),
                                         QStringLiteral("DIR"),
                                         qEnvironmentVariable("ORVEX_BENCH_CACHE", QStringLiteral("/var/tmp/orvex-bench-archive")));
    const QCommandLineOption thinkOption(QStringLiteral("think"),
                                         QStringLiteral("A client's pause before an operation, on average (0: none)."),
                                         QStringLiteral("MS"), QStringLiteral("100"));
    const QCommandLineOption engineOption(QStringLiteral("engine"), QStringLiteral("embedded, server or both."),
                                          QStringLiteral("ENGINE"), QStringLiteral("both"));
    parser.addOptions({documentsOption, clientsOption, roundsOption, cacheOption, thinkOption, engineOption});
    parser.process(app);
    const int documents = parser.value(documentsOption).toInt();
    const int clients = qBound(1, parser.value(clientsOption).toInt(), kUsers);
    const int rounds = qMax(0, parser.value(roundsOption).toInt()); // 0: the list only
    const QString engine = parser.value(engineOption);
    const int think = qMax(0, parser.value(thinkOption).toInt());
    const QString cache = QDir(parser.value(cacheOption)).absoluteFilePath(QStringLiteral("n%1").arg(documents));
    const QString embedded = cache + QStringLiteral("/embedded");

    QString error;
    if (!QFileInfo::exists(embedded + QStringLiteral("/.complete"))) {
        out << "Making the data set in " << embedded << Qt::endl;
        QDir(embedded).removeRecursively();
        if (!generate(embedded, documents, error)) {
            out << "Cannot make the data set: " << error << Qt::endl;
            return 1;
        }
        QFile(embedded + QStringLiteral("/.complete")).open(QIODevice::WriteOnly);
    }

    QHash<QString, QPair<double, double>> embeddedResults, serverResults;
    qint64 embeddedList = -1, serverList = -1;
    if (engine != QLatin1String("server")) {
        embeddedList = listOpenTime(embedded);
        if (rounds > 0)
            run(QStringLiteral("embedded"), embedded, false, clients, rounds, documents, think, embeddedResults);
    }

    TestPgServer pg;
    if (engine != QLatin1String("embedded")) {
        if (!pg.start(&error, cache + QStringLiteral("/server"))) {
            out << "No server: " << error << Qt::endl;
            return 1;
        }
        const QString owner = pg.address(QStringLiteral("bench"), QLatin1String(TestPgServer::Owner));
        if (!QFileInfo::exists(cache + QStringLiteral("/server/.complete"))) {
            out << "Copying the data set onto the server" << Qt::endl;
            pg.run(QStringLiteral("postgres"), {QStringLiteral("DROP DATABASE IF EXISTS bench")});
            pg.createDatabase(QStringLiteral("bench"));
            OrvexArchiveStore source, target;
            QElapsedTimer clock;
            clock.start();
            if (!source.open(OrvexArchiveLocation::parse(embedded), false, &error)
                || !target.open(OrvexArchiveLocation::parse(owner), false, &error)) {
                out << error << Qt::endl;
                return 1;
            }
            OrvexArchiveCopy copy(source, target, [](const QString &line) {
                if (!line.contains(QLatin1String("000 rows")) || line.contains(QLatin1String("0000 rows")))
                    out << "  " << line << Qt::endl;
            });
            if (!copy.copy(error) || !pg.createArchiveUsers(QStringLiteral("bench"), &error)) {
                out << "Cannot copy: " << error << Qt::endl;
                return 1;
            }
            pg.run(QStringLiteral("bench"), {QStringLiteral("VACUUM ANALYZE")});
            out << "  copied in " << clock.elapsed() / 1000 << " s" << Qt::endl;
            QFile(cache + QStringLiteral("/server/.complete")).open(QIODevice::WriteOnly);
        }
        const QString server = pg.address(QStringLiteral("bench"), userName(0));
        serverList = listOpenTime(server);
        if (rounds > 0)
            run(QStringLiteral("server"), server, true, clients, rounds, documents, think, serverResults);
    }

    out << Qt::endl << "Latency in ms per operation, " << documents << " documents, " << clients << " clients, "
        << rounds << " rounds each, " << think << " ms pauses on average" << Qt::endl;
    out << QStringLiteral("%1 %2 %3 %4 %5").arg(QStringLiteral("operation"), -10).arg(QStringLiteral("embedded p50"), 13)
               .arg(QStringLiteral("p95"), 8).arg(QStringLiteral("server p50"), 12).arg(QStringLiteral("p95"), 8)
        << Qt::endl;
    for (const char *operation : kOperations) {
        const auto e = embeddedResults.value(QLatin1String(operation));
        const auto s = serverResults.value(QLatin1String(operation));
        out << QStringLiteral("%1 %2 %3 %4 %5").arg(QLatin1String(operation), -10).arg(e.first, 13, 'f', 1)
                   .arg(e.second, 8, 'f', 1).arg(s.first, 12, 'f', 1).arg(s.second, 8, 'f', 1)
            << Qt::endl;
    }
    out << QStringLiteral("%1 %2 %3").arg(QStringLiteral("list open"), -10).arg(embeddedList, 13).arg(serverList, 21)
        << " (ms, the host's document list)" << Qt::endl;
    return 0;
}
