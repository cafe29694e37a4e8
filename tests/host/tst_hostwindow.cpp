// The host's main window with the real workbench plugin, loaded from its
// module like in the product, and recording doubles as the archive's clients.
#include "kelarchiveclientinterface.h"
#include "orvexarchive.h"
#include "orvexdocumentlistmodel.h"
#include "orvexhostcommands.h"
#include "orvexhosttranslations.h"
#include "orvexhostwindow.h"
#include "orvexworkbenchdock.h"
#include "orvexworkbenchloader.h"
#include "orvexworkbenchtab.h"
#include "recordingarchiveclient.h"
#include "recordingclassifyclient.h"
#include "tavlodocplugininterface.h"

#include <QDockWidget>
#include <QHeaderView>
#include <QLabel>
#include <QLibraryInfo>
#include <QLineEdit>
#include <QMenu>
#include <QSignalSpy>
#include <QStatusBar>
#include <QTableView>
#include <QtTest>

static OrvexArchiveDocument doc(qlonglong id, const QString &title, const QString &type, int pages)
{
    OrvexArchiveDocument d;
    d.id = id;
    d.docsId = id;
    d.title = title;
    d.typeName = type;
    d.statusName = QStringLiteral("Open");
    d.pages = pages;
    return d;
}

static QList<OrvexArchiveDocument> sampleDocuments()
{
    return {doc(9, QStringLiteral("Invoice nine"), QStringLiteral("Invoice"), 2),
            doc(10, QStringLiteral("Invoice ten"), QStringLiteral("Invoice"), 12),
            doc(112, QStringLiteral("Delivery note"), QStringLiteral("Delivery"), 1),
            doc(3, QStringLiteral("Contract"), QStringLiteral("Contract"), 30)};
}

class tst_HostWindow : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void workbenchIsDockedOnTheRight();
    void connectionValuesReachTheArchiveClientInOrder();
    void commandsAreShownInTheStatusBar_data();
    void commandsAreShownInTheStatusBar();
    void commandsTravelUpFromTheTabSet();
    void filterEditFiltersTheList();
    void headerClickSortsByValue();
    void newDocumentsKeepTheSelection();
    void workbenchAsksForTheSelection();
    void workbenchAsksForARefresh();
    void reloadAsksForFreshDocuments();
    void loaderRefusesWhatIsNoWorkbench_data();
    void loaderRefusesWhatIsNoWorkbench();
    void germanTexts(); // last: installs translators for the rest of the process

private:
    QList<qlonglong> shownIds() const;
    void installWorkbench();

    OrvexWorkbenchLoader m_loader;
    TavloDocPluginInterface *m_plugin = nullptr; // a fresh instance per test
    RecordingArchiveClient *m_archive = nullptr;
    RecordingClassifyClient *m_classify = nullptr;
    OrvexHostWindow *m_window = nullptr;
    OrvexConnectionValues m_connection;
};

void tst_HostWindow::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    // English texts with their plural forms, whatever the machine's locale.
    OrvexHostTranslations::install(QLocale(QLocale::English));
    QVERIFY2(m_loader.load(OrvexWorkbenchLoader::defaultPluginPath()), qPrintable(m_loader.errorString()));
    m_connection = {QStringLiteral("localhost"), 4711, QStringLiteral("anna"), QStringLiteral("secret"),
                    QStringLiteral("Main"), QStringLiteral("token")};
}

void tst_HostWindow::init()
{
    m_plugin = m_loader.plugin()->createInstance();
    m_archive = new RecordingArchiveClient(this);
    m_archive->setConnectionValues(m_connection.server, m_connection.port, m_connection.login1,
                                   m_connection.login2, m_connection.login3,
                                   {QStringLiteral("Other"), m_connection.archiveName});
    m_classify = new RecordingClassifyClient(this);
    m_window = new OrvexHostWindow;
    m_window->setDocuments(sampleDocuments());
}

void tst_HostWindow::cleanup()
{
    delete m_window; // owns the dock, which borrows the clients
    m_window = nullptr;
    delete m_plugin;
    m_plugin = nullptr;
    delete m_archive;
    delete m_classify;
}

void tst_HostWindow::installWorkbench()
{
    QVERIFY(m_window->installWorkbench(m_plugin, m_classify, m_archive, m_connection));
}

QList<qlonglong> tst_HostWindow::shownIds() const
{
    const auto *view = m_window->findChild<QTableView *>(QStringLiteral("m_documentView"));
    QList<qlonglong> ids;
    for (int row = 0; row < view->model()->rowCount(); ++row)
        ids << view->model()->index(row, 0).data(OrvexDocumentListModel::DocumentIdRole).toLongLong();
    return ids;
}

void tst_HostWindow::workbenchIsDockedOnTheRight()
{
    installWorkbench();
    QDockWidget *dock = m_window->workbenchDock();
    QVERIFY(qobject_cast<orvexworkbenchdock *>(dock));
    QCOMPARE(dock->objectName(), QStringLiteral("dockClipboard"));
    QCOMPARE(dock->parentWidget(), m_window);
    QCOMPARE(m_window->dockWidgetArea(dock), Qt::RightDockWidgetArea);
    QCOMPARE(m_window->workbench(), m_plugin);

    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window));
    QVERIFY(dock->isVisible());
    QVERIFY(dock->width() >= dock->minimumWidth());
    // The dock can be hidden and brought back from the View menu.
    auto *viewMenu = m_window->findChild<QMenu *>(QStringLiteral("menuView"));
    QVERIFY(viewMenu->actions().contains(dock->toggleViewAction()));
    dock->toggleViewAction()->trigger();
    QVERIFY(!dock->isVisible());
    dock->toggleViewAction()->trigger();
    QVERIFY(dock->isVisible());
}

void tst_HostWindow::connectionValuesReachTheArchiveClientInOrder()
{
    installWorkbench();
    QVERIFY(m_archive->isConnected());
    const CallLog &log = m_archive->log();
    QCOMPARE(log.last(QStringLiteral("openConnection")).args,
             (QVariantList{m_connection.server, m_connection.port}));
    QCOMPARE(log.last(QStringLiteral("logIn")).args,
             (QVariantList{m_connection.login1, m_connection.login2, m_connection.login3}));
    QCOMPARE(log.last(QStringLiteral("selectArchive")).args, QVariantList{m_connection.archiveName});
    // The dock works with the host's clients.
    auto *dock = qobject_cast<orvexworkbenchdock *>(m_window->workbenchDock());
    QCOMPARE(dock->tabWidget()->archiveClient(), m_archive);
    QCOMPARE(dock->tabWidget()->classifyClient(), m_classify);
}

void tst_HostWindow::commandsAreShownInTheStatusBar_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<QStringList>("args");

    QTest::newRow("open") << QStringLiteral("OPENDOC")
                          << QStringList{QStringLiteral("12"), QStringLiteral("a note"), QStringLiteral("7")};
    QTest::newRow("classification") << QStringLiteral("SHOWCLASSIFICATION") << QStringList{QStringLiteral("7")};
    QTest::newRow("export") << QStringLiteral("EXPORTDOCS") << QStringList{QStringLiteral("7"), QStringLiteral("8")};
    QTest::newRow("mail") << QStringLiteral("MAILDOCS") << QStringList{QStringLiteral("7")};
    QTest::newRow("unknown word") << QStringLiteral("SHRED") << QStringList();
}

void tst_HostWindow::commandsAreShownInTheStatusBar()
{
    QFETCH(QString, command);
    QFETCH(QStringList, args);

    installWorkbench();
    m_window->show();
    m_window->statusBar()->showMessage(QStringLiteral("before"));
    emit m_plugin->doCommand(command, args);
    const QString shown = m_window->statusBar()->currentMessage();
    QCOMPARE(shown, OrvexHostCommands::notAvailableMessage(command, args));
    QVERIFY(!shown.isEmpty());
    // The message stays until something replaces it.
    QTest::qWait(100);
    QCOMPARE(m_window->statusBar()->currentMessage(), shown);
}

void tst_HostWindow::commandsTravelUpFromTheTabSet()
{
    // Boards raise their commands through the tab set; the host must hear them
    // through the plugin alone.
    installWorkbench();
    auto *dock = qobject_cast<orvexworkbenchdock *>(m_window->workbenchDock());
    emit dock->tabWidget()->doCommand(QStringLiteral("EXPORTDOCS"),
                                      {QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("3")});
    QCOMPARE(m_window->statusBar()->currentMessage(),
             QStringLiteral("Export 3 documents: not available in this host yet"));
}

void tst_HostWindow::filterEditFiltersTheList()
{
    m_window->show();
    auto *filter = m_window->findChild<QLineEdit *>(QStringLiteral("m_filter"));
    auto *count = m_window->findChild<QLabel *>(QStringLiteral("countLabel"));
    QCOMPARE(count->text(), QStringLiteral("4 documents"));

    QTest::keyClicks(filter, QStringLiteral("invoice"));
    QCOMPARE(shownIds(), (QList<qlonglong>{9, 10}));
    QCOMPARE(count->text(), QStringLiteral("2 of 4 documents"));
    QTest::keyClicks(filter, QStringLiteral(" ten"));
    QCOMPARE(shownIds(), QList<qlonglong>{10});

    // Documents that arrive while a filter is set are filtered too.
    auto documents = sampleDocuments();
    documents << doc(50, QStringLiteral("Invoice ten, second copy"), QStringLiteral("Invoice"), 3);
    m_window->setDocuments(documents);
    QCOMPARE(shownIds(), (QList<qlonglong>{10, 50}));
    QCOMPARE(count->text(), QStringLiteral("2 of 5 documents"));

    filter->clear();
    QCOMPARE(shownIds().size(), 5);
    QCOMPARE(count->text(), QStringLiteral("5 documents"));
}

void tst_HostWindow::headerClickSortsByValue()
{
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window));
    QCOMPARE(shownIds(), (QList<qlonglong>{3, 9, 10, 112}));
    auto *view = m_window->findChild<QTableView *>(QStringLiteral("m_documentView"));
    QHeaderView *header = view->horizontalHeader();
    const int x = header->sectionViewportPosition(OrvexDocumentListModel::PagesColumn)
                  + header->sectionSize(OrvexDocumentListModel::PagesColumn) / 2;
    QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, QPoint(x, header->height() / 2));
    QCOMPARE(header->sortIndicatorSection(), int(OrvexDocumentListModel::PagesColumn));
    const QList<qlonglong> ascending{112, 9, 10, 3};
    QList<qlonglong> descending = ascending;
    std::reverse(descending.begin(), descending.end());
    QCOMPARE(shownIds(), header->sortIndicatorOrder() == Qt::AscendingOrder ? ascending : descending);
}

void tst_HostWindow::newDocumentsKeepTheSelection()
{
    m_window->show();
    m_window->selectDocuments({9, 112});
    QCOMPARE(m_window->selectedDocumentIds().size(), 2);
    auto documents = sampleDocuments();
    documents.removeAt(0); // 9 is gone
    documents << doc(200, QStringLiteral("New"), QStringLiteral("Invoice"), 1);
    m_window->setDocuments(documents);
    QCOMPARE(m_window->selectedDocumentIds(), QList<qlonglong>{112});
}

void tst_HostWindow::workbenchAsksForTheSelection()
{
    installWorkbench();
    m_window->show();
    m_window->selectDocuments({10});
    // The plugin answers the host's document selection with a light refresh
    // of the clipboards, which asks the classification client again.
    m_classify->log().clear();
    emit m_plugin->requestCurrentDocIds();
    QCOMPARE(m_classify->log().count(QStringLiteral("getClipboards")), 1);
}

void tst_HostWindow::workbenchAsksForARefresh()
{
    installWorkbench();
    QSignalSpy reloads(m_window, &OrvexHostWindow::reloadRequested);
    emit m_plugin->refreshParent();
    QCOMPARE(reloads.count(), 1);
}

void tst_HostWindow::reloadAsksForFreshDocuments()
{
    installWorkbench();
    QSignalSpy reloads(m_window, &OrvexHostWindow::reloadRequested);
    auto *reload = m_window->findChild<QAction *>(QStringLiteral("actionReload"));
    QVERIFY(reload);
    reload->trigger();
    QCOMPARE(reloads.count(), 1);
}

void tst_HostWindow::loaderRefusesWhatIsNoWorkbench_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("message"); // part of the error text

    QTest::newRow("missing") << QStringLiteral("/nonexistent/liborvexworkbenchplugin.so")
                             << QStringLiteral("does not exist");
    QTest::newRow("not a library") << QFINDTESTDATA("tst_hostwindow.cpp") << QStringLiteral("could not be loaded");
    QTest::newRow("another Qt plugin")
        << QLibraryInfo::location(QLibraryInfo::PluginsPath) + QStringLiteral("/imageformats/libqsvg.so")
        << QStringLiteral("not a document plugin");
}

void tst_HostWindow::loaderRefusesWhatIsNoWorkbench()
{
    QFETCH(QString, file);
    QFETCH(QString, message);
    if (QTest::currentDataTag() == QByteArray("another Qt plugin") && !QFileInfo::exists(file))
        QSKIP("Qt's SVG image plugin is not installed");

    OrvexWorkbenchLoader loader;
    QVERIFY(!loader.load(file));
    QVERIFY(!loader.plugin());
    QVERIFY2(loader.errorString().contains(message), qPrintable(loader.errorString()));
    QVERIFY2(loader.errorString().contains(QFileInfo(file).fileName()), qPrintable(loader.errorString()));
}

void tst_HostWindow::germanTexts()
{
    QVERIFY(OrvexHostTranslations::install(QLocale(QLocale::German, QLocale::Germany)));
    OrvexHostWindow window;
    window.setDocuments(sampleDocuments());
    const auto *view = window.findChild<QTableView *>(QStringLiteral("m_documentView"));
    QCOMPARE(view->model()->headerData(OrvexDocumentListModel::TitleColumn, Qt::Horizontal).toString(),
             QStringLiteral("Titel"));
    QCOMPARE(window.findChild<QMenu *>(QStringLiteral("menuFile"))->title(), QStringLiteral("&Datei"));
    QCOMPARE(window.findChild<QLabel *>(QStringLiteral("countLabel"))->text(), QStringLiteral("4 Dokumente"));
    QCOMPARE(OrvexHostCommands::notAvailableMessage(QStringLiteral("MAILDOCS"), {QStringLiteral("1")}),
             QStringLiteral("1 Dokument per E-Mail versenden: in diesem Host noch nicht verfügbar"));
}

QTEST_MAIN(tst_HostWindow)
#include "tst_hostwindow.moc"
