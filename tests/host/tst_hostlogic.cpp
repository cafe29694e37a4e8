// The host's logic without its window: the document list model and its
// filter and sorting, the texts of workbench commands, the command line.
#include "orvexarchive.h"
#include "orvexdocumentfiltermodel.h"
#include "orvexdocumentlistmodel.h"
#include "orvexhostcommands.h"
#include "orvexhostoptions.h"
#include "orvexhosttranslations.h"
#include "orvexworkbenchloader.h"

#include <QSignalSpy>
#include <QtTest>

using Model = OrvexDocumentListModel;

static OrvexArchiveDocument doc(qlonglong id, const QString &title, const QString &type, const QString &status,
                                int pages, const QString &date = {})
{
    OrvexArchiveDocument d;
    d.id = id;
    d.docsId = id * 10;
    d.title = title;
    d.typeName = type;
    d.statusName = status;
    d.pages = pages;
    d.versions = 1;
    d.date = date;
    return d;
}

static QList<OrvexArchiveDocument> sampleDocuments()
{
    return {
        doc(9, QStringLiteral("Invoice 9 Müller"), QStringLiteral("Invoice"), QStringLiteral("Paid"), 2, QStringLiteral("2024-03-01")),
        doc(10, QStringLiteral("Invoice 10 Schmidt"), QStringLiteral("Invoice"), QStringLiteral("Open"), 12, QStringLiteral("2023-11-20")),
        doc(112, QStringLiteral("Delivery note"), QStringLiteral("Delivery"), QStringLiteral("Archived"), 1, QStringLiteral("2024-07-15")),
        doc(3, QStringLiteral("Contract Meyer"), QStringLiteral("Contract"), QStringLiteral("Paid"), 30, QStringLiteral("2022-01-05")),
    };
}

class tst_HostLogic : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void modelShowsTheDocumentFields();
    void modelHandlesEmptyAndSparseDocuments();
    void modelResetsOnNewDocuments();
    void filter_data();
    void filter();
    void sorting_data();
    void sorting();
    void filterKeepsSortOrder();

    void commandTexts_data();
    void commandTexts();

    void options_data();
    void options();
    void optionDefaults();

private:
    static QList<qlonglong> idsInViewOrder(const QAbstractItemModel &model);
};

void tst_HostLogic::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    // English texts with their plural forms, whatever the machine's locale.
    OrvexHostTranslations::install(QLocale(QLocale::English));
}

QList<qlonglong> tst_HostLogic::idsInViewOrder(const QAbstractItemModel &model)
{
    QList<qlonglong> ids;
    for (int row = 0; row < model.rowCount(); ++row)
        ids << model.index(row, Model::IdColumn).data(Model::DocumentIdRole).toLongLong();
    return ids;
}

void tst_HostLogic::modelShowsTheDocumentFields()
{
    Model model;
    model.setDocuments(sampleDocuments());
    QCOMPARE(model.rowCount(), 4);
    QCOMPARE(model.columnCount(), int(Model::ColumnCount));
    const QStringList headers = {QStringLiteral("Id"), QStringLiteral("Title"), QStringLiteral("Type"),
                                 QStringLiteral("Status"), QStringLiteral("Pages"), QStringLiteral("Date")};
    for (int column = 0; column < headers.size(); ++column)
        QCOMPARE(model.headerData(column, Qt::Horizontal).toString(), headers.at(column));

    const QModelIndex row = model.index(1, 0);
    QCOMPARE(row.siblingAtColumn(Model::IdColumn).data().toLongLong(), 10);
    QCOMPARE(row.siblingAtColumn(Model::TitleColumn).data().toString(), QStringLiteral("Invoice 10 Schmidt"));
    QCOMPARE(row.siblingAtColumn(Model::TypeColumn).data().toString(), QStringLiteral("Invoice"));
    QCOMPARE(row.siblingAtColumn(Model::StatusColumn).data().toString(), QStringLiteral("Open"));
    QCOMPARE(row.siblingAtColumn(Model::PagesColumn).data().toInt(), 12);
    QCOMPARE(row.siblingAtColumn(Model::DateColumn).data().toString(), QStringLiteral("2023-11-20"));
    // Every column of a row answers the ids, so a selection of any cell yields the document.
    QCOMPARE(row.siblingAtColumn(Model::StatusColumn).data(Model::DocumentIdRole).toLongLong(), 10);
    QCOMPARE(row.siblingAtColumn(Model::TitleColumn).data(Model::DocsIdRole).toLongLong(), 100);
    QCOMPARE(model.rowOfDocument(112), 2);
    QCOMPARE(model.rowOfDocument(4711), -1);
}

void tst_HostLogic::modelHandlesEmptyAndSparseDocuments()
{
    Model model;
    QCOMPARE(model.rowCount(), 0);
    QVERIFY(!model.index(0, 0).data().isValid());

    OrvexArchiveDocument sparse; // nothing but defaults
    OrvexArchiveDocument secret = doc(5, QStringLiteral("<b>Salaries</b>"), {}, {}, 0);
    secret.readable = false;
    model.setDocuments({sparse, secret});
    QCOMPARE(model.rowCount(), 2);
    for (int column = 0; column < model.columnCount(); ++column)
        QVERIFY(model.index(0, column).data(Qt::ToolTipRole).isValid());
    QVERIFY(!model.index(0, Model::ColumnCount).isValid());
    QCOMPARE(model.index(1, 0).data(Model::ReadableRole).toBool(), false);
    QVERIFY(model.index(1, 0).data(Qt::FontRole).value<QFont>().italic());
    // The tool tip is rich text: titles are escaped.
    QVERIFY(model.index(1, 0).data(Qt::ToolTipRole).toString().contains(QStringLiteral("&lt;b&gt;Salaries")));
}

void tst_HostLogic::modelResetsOnNewDocuments()
{
    Model model;
    model.setDocuments(sampleDocuments());
    QSignalSpy reset(&model, &QAbstractItemModel::modelReset);
    model.setDocuments(sampleDocuments().mid(1));
    QCOMPARE(reset.count(), 1);
    QCOMPARE(model.rowCount(), 3);
    QCOMPARE(model.rowOfDocument(9), -1);
}

void tst_HostLogic::filter_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QList<qlonglong>>("expected"); // in id order

    QTest::newRow("empty shows all") << QString() << QList<qlonglong>{3, 9, 10, 112};
    QTest::newRow("blanks show all") << QStringLiteral("   ") << QList<qlonglong>{3, 9, 10, 112};
    QTest::newRow("type") << QStringLiteral("invoice") << QList<qlonglong>{9, 10};
    QTest::newRow("case-insensitive") << QStringLiteral("PAID") << QList<qlonglong>{3, 9};
    QTest::newRow("umlaut") << QStringLiteral("müller") << QList<qlonglong>{9};
    QTest::newRow("every word must match") << QStringLiteral("invoice paid") << QList<qlonglong>{9};
    QTest::newRow("words in any column") << QStringLiteral("paid 2022") << QList<qlonglong>{3};
    QTest::newRow("words in any order") << QStringLiteral("schmidt open") << QList<qlonglong>{10};
    QTest::newRow("id digits") << QStringLiteral("112") << QList<qlonglong>{112};
    QTest::newRow("digits in id and date") << QStringLiteral("11") << QList<qlonglong>{10, 112};
    QTest::newRow("page count") << QStringLiteral("30") << QList<qlonglong>{3};
    QTest::newRow("no match") << QStringLiteral("zzz") << QList<qlonglong>{};
    QTest::newRow("one word fails") << QStringLiteral("invoice zzz") << QList<qlonglong>{};
    QTest::newRow("regex characters are plain text") << QStringLiteral("in.oice") << QList<qlonglong>{};
}

void tst_HostLogic::filter()
{
    QFETCH(QString, text);
    QFETCH(QList<qlonglong>, expected);

    Model model;
    model.setDocuments(sampleDocuments());
    OrvexDocumentFilterModel proxy;
    proxy.setSourceModel(&model);
    proxy.sort(Model::IdColumn);
    proxy.setFilterText(text);
    QCOMPARE(idsInViewOrder(proxy), expected);
    QCOMPARE(proxy.filterText(), text);

    // Clearing the filter brings every document back.
    proxy.setFilterText(QString());
    QCOMPARE(proxy.rowCount(), 4);
}

void tst_HostLogic::sorting_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<Qt::SortOrder>("order");
    QTest::addColumn<QList<qlonglong>>("expected");

    // Numbers sort by value (a text sort would put 10 and 112 before 3 and 9).
    QTest::newRow("id") << int(Model::IdColumn) << Qt::AscendingOrder << QList<qlonglong>{3, 9, 10, 112};
    QTest::newRow("id descending") << int(Model::IdColumn) << Qt::DescendingOrder << QList<qlonglong>{112, 10, 9, 3};
    QTest::newRow("pages") << int(Model::PagesColumn) << Qt::AscendingOrder << QList<qlonglong>{112, 9, 10, 3};
    // Titles: "Invoice 9" before "Invoice 10".
    QTest::newRow("title") << int(Model::TitleColumn) << Qt::AscendingOrder << QList<qlonglong>{3, 112, 9, 10};
    QTest::newRow("date") << int(Model::DateColumn) << Qt::AscendingOrder << QList<qlonglong>{3, 10, 9, 112};
    // Equal types keep the archive's order (the sort is stable).
    QTest::newRow("type") << int(Model::TypeColumn) << Qt::AscendingOrder << QList<qlonglong>{3, 112, 9, 10};
}

void tst_HostLogic::sorting()
{
    QFETCH(int, column);
    QFETCH(Qt::SortOrder, order);
    QFETCH(QList<qlonglong>, expected);

    Model model;
    model.setDocuments(sampleDocuments());
    OrvexDocumentFilterModel proxy;
    proxy.setSourceModel(&model);
    proxy.sort(column, order);
    QCOMPARE(idsInViewOrder(proxy), expected);
}

void tst_HostLogic::filterKeepsSortOrder()
{
    Model model;
    model.setDocuments(sampleDocuments());
    OrvexDocumentFilterModel proxy;
    proxy.setSourceModel(&model);
    proxy.sort(Model::PagesColumn, Qt::DescendingOrder);
    proxy.setFilterText(QStringLiteral("invoice"));
    QCOMPARE(idsInViewOrder(proxy), (QList<qlonglong>{10, 9}));
    // New documents arrive filtered and sorted.
    auto documents = sampleDocuments();
    documents << doc(77, QStringLiteral("Invoice 77"), QStringLiteral("Invoice"), QStringLiteral("Open"), 5);
    model.setDocuments(documents);
    QCOMPARE(idsInViewOrder(proxy), (QList<qlonglong>{10, 77, 9}));
}

void tst_HostLogic::commandTexts_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<QStringList>("args");
    QTest::addColumn<bool>("known");
    QTest::addColumn<QString>("message");

    const QString notYet = QStringLiteral(": not available in this host yet");
    QTest::newRow("open") << QStringLiteral("OPENDOC")
                          << QStringList{QStringLiteral("12"), QStringLiteral("note"), QStringLiteral("7")} << true
                          << QStringLiteral("Open document 12") + notYet;
    QTest::newRow("open without arguments") << QStringLiteral("OPENDOC") << QStringList() << true
                                            << QStringLiteral("Open document ") + notYet;
    QTest::newRow("classification") << QStringLiteral("SHOWCLASSIFICATION") << QStringList{QStringLiteral("7")}
                                    << true << QStringLiteral("Show the classification of card 7") + notYet;
    QTest::newRow("export") << QStringLiteral("EXPORTDOCS")
                            << QStringList{QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("3")} << true
                            << QStringLiteral("Export 3 documents") + notYet;
    QTest::newRow("export one") << QStringLiteral("EXPORTDOCS") << QStringList{QStringLiteral("1")} << true
                                << QStringLiteral("Export 1 document") + notYet;
    QTest::newRow("mail none") << QStringLiteral("MAILDOCS") << QStringList() << true
                               << QStringLiteral("Mail 0 documents") + notYet;
    QTest::newRow("unknown") << QStringLiteral("PRINTDOCS") << QStringList{QStringLiteral("1"), QStringLiteral("2")}
                             << false << QStringLiteral("Unknown command PRINTDOCS (1, 2)");
    QTest::newRow("lower case is another word") << QStringLiteral("opendoc") << QStringList() << false
                                                << QStringLiteral("Unknown command opendoc");
    QTest::newRow("empty") << QString() << QStringList() << false << QStringLiteral("Unknown command ");
}

void tst_HostLogic::commandTexts()
{
    QFETCH(QString, command);
    QFETCH(QStringList, args);
    QFETCH(bool, known);
    QFETCH(QString, message);

    QCOMPARE(OrvexHostCommands::isKnown(command), known);
    QCOMPARE(OrvexHostCommands::notAvailableMessage(command, args), message);
}

void tst_HostLogic::options_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("archive"); // empty: the default
    QTest::addColumn<QString>("screenshot");
    QTest::addColumn<int>("timeout");
    QTest::addColumn<QString>("user");
    QTest::addColumn<QString>("error"); // part of the error text; empty: accepted

    const QString defaultArchive = OrvexArchive::defaultLocation();
    QTest::newRow("nothing") << QStringList() << defaultArchive << QString() << 60 << QString() << QString();
    QTest::newRow("archive and screenshot")
        << QStringList{QStringLiteral("--archive"), QStringLiteral("/tmp/a"), QStringLiteral("--screenshot"),
                       QStringLiteral("shot.png")}
        << QStringLiteral("/tmp/a") << QStringLiteral("shot.png") << 60 << QString() << QString();
    QTest::newRow("equals form and user")
        << QStringList{QStringLiteral("--archive=/tmp/b"), QStringLiteral("--user=anna"),
                       QStringLiteral("--timeout=5")}
        << QStringLiteral("/tmp/b") << QString() << 5 << QStringLiteral("anna") << QString();
    QTest::newRow("empty screenshot name") << QStringList{QStringLiteral("--screenshot=")} << QString() << QString()
                                           << 60 << QString() << QStringLiteral("screenshot");
    QTest::newRow("empty archive") << QStringList{QStringLiteral("--archive=")} << QString() << QString() << 60
                                   << QString() << QStringLiteral("archive folder");
    QTest::newRow("timeout not a number") << QStringList{QStringLiteral("--timeout"), QStringLiteral("soon")}
                                          << QString() << QString() << 60 << QString() << QStringLiteral("soon");
    QTest::newRow("timeout zero") << QStringList{QStringLiteral("--timeout=0")} << QString() << QString() << 60
                                  << QString() << QStringLiteral("timeout");
    QTest::newRow("missing value") << QStringList{QStringLiteral("--archive")} << QString() << QString() << 60
                                   << QString() << QStringLiteral("archive");
    QTest::newRow("unknown option") << QStringList{QStringLiteral("--bogus")} << QString() << QString() << 60
                                    << QString() << QStringLiteral("bogus");
    QTest::newRow("stray argument") << QStringList{QStringLiteral("demo.png")} << QString() << QString() << 60
                                    << QString() << QStringLiteral("demo.png");
}

void tst_HostLogic::options()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, archive);
    QFETCH(QString, screenshot);
    QFETCH(int, timeout);
    QFETCH(QString, user);
    QFETCH(QString, error);

    const OrvexHostOptions options = OrvexHostOptions::parse(QStringList{QStringLiteral("orvexhost")} + arguments);
    if (!error.isEmpty()) {
        QVERIFY2(options.error.contains(error, Qt::CaseInsensitive), qPrintable(options.error));
        return;
    }
    QVERIFY2(options.error.isEmpty(), qPrintable(options.error));
    QCOMPARE(options.archiveFolder, archive);
    QCOMPARE(options.screenshotFile, screenshot);
    QCOMPARE(options.takesScreenshot(), !screenshot.isEmpty());
    QCOMPARE(options.timeoutSeconds, timeout);
    QCOMPARE(options.user, user);
}

void tst_HostLogic::optionDefaults()
{
    const OrvexHostOptions options = OrvexHostOptions::parse({QStringLiteral("orvexhost")});
    QCOMPARE(options.pluginFile, OrvexWorkbenchLoader::defaultPluginPath());
    QVERIFY(options.pluginFile.endsWith(QStringLiteral("/liborvexworkbenchplugin.so")));
    QVERIFY(!options.helpRequested);
    for (const char *option : {"--archive", "--screenshot", "--timeout", "--workbench", "--user"})
        QVERIFY2(options.helpText.contains(QLatin1String(option)), option);
    QVERIFY(OrvexHostOptions::parse({QStringLiteral("orvexhost"), QStringLiteral("--help")}).helpRequested);
}

QTEST_MAIN(tst_HostLogic)
#include "tst_hostlogic.moc"
