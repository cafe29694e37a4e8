// The host's document list (filter and sort), without a window.
#include "orvexarchive.h"
#include "orvexdocumentfiltermodel.h"
#include "orvexdocumentlistmodel.h"
#include "orvexhosttranslations.h"

#include <QtTest>

using Model = OrvexDocumentListModel;

static OrvexArchiveDocument doc(qlonglong id, const QString &title, const QString &type, const QString &status,
                                int pages, const QString &date)
{
    OrvexArchiveDocument d;
    d.id = id;
    d.title = title;
    d.typeName = type;
    d.statusName = status;
    d.pages = pages;
    d.date = date;
    return d;
}

static QList<qlonglong> idsInViewOrder(const QAbstractItemModel &model)
{
    QList<qlonglong> ids;
    for (int row = 0; row < model.rowCount(); ++row)
        ids << model.index(row, Model::TitleColumn).data(Model::DocumentIdRole).toLongLong();
    return ids;
}

class tst_HostLogic : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        OrvexHostTranslations::install(QLocale(QLocale::English)); // plural forms
        m_model.setDocuments({
            doc(9, QStringLiteral("Invoice 9 Müller"), QStringLiteral("Invoice"), QStringLiteral("Paid"), 2, QStringLiteral("2024-03-01")),
            doc(10, QStringLiteral("Invoice 10 Schmidt"), QStringLiteral("Invoice"), QStringLiteral("Open"), 12, QStringLiteral("2023-11-20")),
            doc(112, QStringLiteral("Delivery note"), QStringLiteral("Delivery"), QStringLiteral("Archived"), 1, QStringLiteral("2024-07-15")),
            doc(3, QStringLiteral("Contract Meyer"), QStringLiteral("Contract"), QStringLiteral("Paid"), 30, QStringLiteral("2022-01-05")),
        });
        m_proxy.setSourceModel(&m_model);
    }

    void filter_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QList<qlonglong>>("expected"); // in id order

        QTest::newRow("case-insensitive umlaut") << QStringLiteral("MÜLLER") << QList<qlonglong>{9};
        QTest::newRow("words in any column and order") << QStringLiteral("2022 paid") << QList<qlonglong>{3};
        QTest::newRow("digits in id and date") << QStringLiteral("11") << QList<qlonglong>{10, 112};
        QTest::newRow("one word fails") << QStringLiteral("invoice zzz") << QList<qlonglong>{};
        QTest::newRow("regex characters are plain text") << QStringLiteral("in.oice") << QList<qlonglong>{};
    }

    void filter()
    {
        QFETCH(QString, text);
        QFETCH(QList<qlonglong>, expected);

        m_proxy.sort(Model::IdColumn);
        m_proxy.setFilterText(text);
        QCOMPARE(idsInViewOrder(m_proxy), expected);
        m_proxy.setFilterText(QString());
        QCOMPARE(m_proxy.rowCount(), 4);
    }

    void sorting_data()
    {
        QTest::addColumn<int>("column");
        QTest::addColumn<Qt::SortOrder>("order");
        QTest::addColumn<QList<qlonglong>>("expected");

        // Numbers sort by value (a text sort would put 10 and 112 before 3 and 9).
        QTest::newRow("id") << int(Model::IdColumn) << Qt::AscendingOrder << QList<qlonglong>{3, 9, 10, 112};
        QTest::newRow("pages descending") << int(Model::PagesColumn) << Qt::DescendingOrder
                                          << QList<qlonglong>{3, 10, 9, 112};
        // Titles the way people read them: "Invoice 9" before "Invoice 10", also in the C locale.
        QTest::newRow("title") << int(Model::TitleColumn) << Qt::AscendingOrder << QList<qlonglong>{3, 112, 9, 10};
    }

    void sorting()
    {
        QFETCH(int, column);
        QFETCH(Qt::SortOrder, order);
        QFETCH(QList<qlonglong>, expected);

        m_proxy.sort(column, order);
        QCOMPARE(idsInViewOrder(m_proxy), expected);
    }

    // Regression: no row had the drag flag, so pressing a row and moving only extended the selection.
    void onlyReadableRowsDrag()
    {
        Model model;
        OrvexArchiveDocument hidden = doc(7, QStringLiteral("Secret"), {}, {}, 1, {});
        hidden.readable = false;
        model.setDocuments({doc(5, QStringLiteral("Open"), {}, {}, 1, {}), hidden});
        OrvexDocumentFilterModel proxy;
        proxy.setSourceModel(&model);
        for (int column = 0; column < Model::ColumnCount; ++column) {
            QVERIFY(proxy.index(0, column).flags() & Qt::ItemIsDragEnabled);
            QVERIFY(!(proxy.index(1, column).flags() & Qt::ItemIsDragEnabled));
            QVERIFY(proxy.index(1, column).flags() & Qt::ItemIsSelectable);
        }
    }

private:
    Model m_model;
    OrvexDocumentFilterModel m_proxy;
};

QTEST_MAIN(tst_HostLogic)
#include "tst_hostlogic.moc"
