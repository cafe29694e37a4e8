// The host's main window with the real workbench plugin module: first with
// recording doubles as the clients, then as a whole session on a fresh archive.
#include "dropdelivery.h"
#include "orvexarchive.h"
#include "orvexarchiveclient.h"
#include "orvexclipboardlabel.h"
#include "orvexdocumentlistview.h"
#include "orvexhostoptions.h"
#include "orvexhostsession.h"
#include "orvexhosttranslations.h"
#include "orvexhostwindow.h"
#include "orvexsnackbarfilter.h"
#include "orvexmimedata.h"
#include "orvexthemewriter.h"
#include "orvexwbwebview.h"
#include "orvexworkbenchdock.h"
#include "orvexworkbenchloader.h"
#include "orvexworkbenchtab.h"
#include "modalanswerer.h"
#include "recordingarchiveclient.h"
#include "recordingclassifyclient.h"
#include "qsnackbarevent.h"
#include "tavlodocplugininterface.h"

#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPainter>
#include <QPdfWriter>
#include <QPushButton>
#include <QSettings>
#include <QStatusBar>
#include <QTableView>
#include <QWebEnginePage>
#include <QtTest>

static OrvexArchiveDocument doc(qlonglong id, const QString &title)
{
    OrvexArchiveDocument d;
    d.id = id;
    d.title = title;
    return d;
}

static int listed(const QMainWindow *window)
{
    return window->findChild<QTableView *>(QStringLiteral("m_documentView"))->model()->rowCount();
}

class tst_HostWindow : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        OrvexHostTranslations::install(QLocale(QLocale::English));
        QVERIFY2(m_loader.load(OrvexWorkbenchLoader::defaultPluginPath()), qPrintable(m_loader.errorString()));
    }

    void init()
    {
        m_plugin = m_loader.plugin()->createInstance();
        m_archive = new RecordingArchiveClient(this);
        // Archive names other than the fifth value are refused: a swapped value fails the chain.
        m_archive->setConnectionValues(m_connection.server, m_connection.port, m_connection.login1,
                                       m_connection.login2, m_connection.login3, {m_connection.archiveName});
        m_classify = new RecordingClassifyClient(this);
        m_window = new OrvexHostWindow;
        m_window->setDocuments({doc(9, QStringLiteral("Invoice nine")), doc(10, QStringLiteral("Invoice ten")),
                                doc(3, QStringLiteral("Contract"))});
        QVERIFY(m_window->installWorkbench(m_plugin, m_classify, m_archive, m_connection));
    }

    void cleanup()
    {
        delete m_window; // owns the dock, which borrows the clients
        delete m_plugin;
        delete m_archive;
        delete m_classify;
    }

    void workbenchGetsClientsAndConnection()
    {
        QVERIFY2(m_archive->isConnected(), qPrintable(m_archive->getLastError()));
        const CallLog &log = m_archive->log();
        QCOMPARE(log.last(QStringLiteral("openConnection")).args, (QVariantList{m_connection.server, m_connection.port}));
        QCOMPARE(log.last(QStringLiteral("logIn")).args,
                 (QVariantList{m_connection.login1, m_connection.login2, m_connection.login3}));
        auto *dock = qobject_cast<orvexworkbenchdock *>(m_window->workbenchDock());
        QVERIFY(dock && dock->tabWidget()->archiveClient() == m_archive);
        QCOMPARE(m_window->dockWidgetArea(dock), Qt::RightDockWidgetArea);
    }

    void statusBarShowsCommandsAndSnackbars()
    {
        m_window->show();
        // Boards raise commands through the tab set; the host hears them from the plugin alone.
        auto *dock = qobject_cast<orvexworkbenchdock *>(m_window->workbenchDock());
        ModalAnswerer answer(QMessageBox::Ok);
        emit dock->tabWidget()->doCommand(QStringLiteral("SHOWCLASSIFICATION"), {QStringLiteral("7")});
        QCOMPARE(m_window->statusBar()->currentMessage(),
                 QStringLiteral("The archive knows no document for the card(s) 7."));
        QVERIFY(answer.answered()); // a failure is told in a box too
        emit dock->tabWidget()->doCommand(QStringLiteral("SHRED"), {QStringLiteral("7")});
        QCOMPARE(m_window->statusBar()->currentMessage(), QStringLiteral("Unknown command SHRED (7)"));
        // The workbench's snackbar texts are shown for a while, then cleared.
        QSnackbarEvent(QStringLiteral("Added 2 document(s)")).send();
        QTRY_COMPARE(m_window->statusBar()->currentMessage(), QStringLiteral("Added 2 document(s)"));
        QTRY_VERIFY_WITH_TIMEOUT(m_window->statusBar()->currentMessage().isEmpty(), 15000);
    }

    // Failed before: a message's action (Undo) never reached the user.
    void statusBarOffersAnAction()
    {
        m_window->show();
        auto *button = m_window->statusBar()->findChild<QPushButton *>(QStringLiteral("statusAction"));
        QVERIFY(button && !button->isVisible());
        const auto offer = [](QAction *action) {
            QSnackbarEvent event(QStringLiteral("Card 12 removed."));
            event.setAction(action);
            event.send();
        };

        // Shown with the message, as long as the action exists, even past the usual time.
        auto *undo = new QAction(QStringLiteral("Undo"), this);
        QSignalSpy triggered(undo, &QAction::triggered);
        offer(undo);
        QTRY_VERIFY(button->isVisible());
        QCOMPARE(button->text(), QStringLiteral("Undo"));
        QCOMPARE(button->accessibleName(), QStringLiteral("Undo"));
        QCOMPARE(m_window->statusBar()->currentMessage(), QStringLiteral("Card 12 removed."));
        QTest::qWait(OrvexSnackbarFilter::displayMilliseconds(QStringLiteral("Card 12 removed.")) + 200);
        QCOMPARE(m_window->statusBar()->currentMessage(), QStringLiteral("Card 12 removed."));
        QTest::mouseClick(button, Qt::LeftButton);
        QCOMPARE(triggered.count(), 1);
        // The offer ends with its action: the message and the button go.
        delete undo;
        QVERIFY(!button->isVisible());
        QVERIFY(m_window->statusBar()->currentMessage().isEmpty());

        // Another message ends the offer too; the action is left alone.
        QAction other(QStringLiteral("Undo"));
        offer(&other);
        QTRY_VERIFY(button->isVisible());
        QSnackbarEvent(QStringLiteral("Added 1 document(s)")).send();
        QTRY_COMPARE(m_window->statusBar()->currentMessage(), QStringLiteral("Added 1 document(s)"));
        QVERIFY(!button->isVisible());
    }

    void filterEditFiltersTheList()
    {
        m_window->show();
        auto *filter = m_window->findChild<QLineEdit *>(QStringLiteral("m_filter"));
        auto *count = m_window->findChild<QLabel *>(QStringLiteral("countLabel"));
        QTest::keyClicks(filter, QStringLiteral("invoice"));
        QCOMPARE(count->text(), QStringLiteral("2 of 3 documents"));

        // Documents that arrive while a filter is set are filtered too, the selection is kept.
        m_window->selectDocuments({10});
        m_window->setDocuments({doc(10, QStringLiteral("Invoice ten")), doc(50, QStringLiteral("Invoice fifty")),
                                doc(51, QStringLiteral("Letter"))});
        QCOMPARE(count->text(), QStringLiteral("2 of 3 documents"));
        QCOMPARE(m_window->selectedDocumentIds(), QList<qlonglong>{10});
    }

    void documentDragShowsTheChooser()
    {
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window));
        QWidget *chooser = m_plugin->getHoverWidget();
        QVERIFY(chooser && !chooser->isVisible());
        QVERIFY(m_window->showClipboardChooser());
        QVERIFY(chooser->isVisible());
        // Beside the dock, not over the boards the documents may be dropped on.
        const QWidget *dock = m_window->workbenchDock();
        QVERIFY(!chooser->geometry().intersects(QRect(dock->mapToGlobal(QPoint()), dock->size())));
        // Shown through its own show(): with nobody over it, it hides itself again.
        QTRY_VERIFY_WITH_TIMEOUT(!chooser->isVisible(), 15000);
    }

    void themeColourReachesTheChooser()
    {
        const orvexclipboardlabel reader(QStringLiteral("Inbox"), nullptr);
        const QPalette original = QApplication::palette();
        {
            OrvexThemeWriter theme;
            QVERIFY2(theme.followApplicationPalette(), qPrintable(theme.errorString()));
            QPalette palette = original;
            palette.setColor(QPalette::Highlight, QColor(0x8b, 0, 0));
            QApplication::setPalette(palette);
            QCOMPARE(reader.getCurrentTheme(), QStringLiteral("#8b0000"));
            QApplication::setPalette(original);
            // A second writer in the process finds the segment taken and writes into it.
            OrvexThemeWriter second;
            QVERIFY2(second.write(QColor(0xff, 0xcc, 0)), qPrintable(second.errorString()));
            QCOMPARE(reader.getCurrentTheme(), QStringLiteral("#ffcc00"));
        }
        // Gone with its writers: no stale colour is left behind.
        QCOMPARE(reader.getCurrentTheme(), QStringLiteral("#308cc6"));
    }

    // A running host on a fresh archive: imports show up in the list, documents
    // dragged from the list become entries on the archive server and cards on the board.
    void sessionOnAFreshArchive()
    {
        QTemporaryDir scratch;
        OrvexHostOptions options = OrvexHostOptions::parse({QStringLiteral("orvexhost")});
        options.archiveFolder = scratch.filePath(QStringLiteral("archive"));
        OrvexHostSession session;
        QVERIFY2(session.start(options), qPrintable(session.errorString()));
        auto *client = qobject_cast<OrvexArchiveClient *>(session.archive()->archiveClient());
        QVERIFY2(client && client->isConnected(), qPrintable(session.archive()->archiveClient()->getLastError()));
        const int documents = session.archive()->documents().size();
        const QString pdf = scratch.filePath(QStringLiteral("letter.pdf"));
        {
            QPdfWriter writer(pdf);
            QPainter(&writer).drawText(QPointF(200, 200), QStringLiteral("A letter for the host"));
        }
        QVERIFY(session.archive()->importFile(pdf, QStringLiteral("Letter for the host")) > 0);
        QTRY_COMPARE(listed(session.window()), documents + 1);

        session.window()->show();
        orvexwbwebview *board = nullptr;
        for (orvexwbwebview *candidate : session.window()->findChildren<orvexwbwebview *>())
            board = candidate->isWriteable() ? candidate : board;
        QVERIFY(board);
        QStringList entries, comments;
        QVERIFY(session.archive()->classifyClient()->getClipboardDocuments(board->getId(), entries, comments));
        QList<qlonglong> ids; // three documents not yet in the clipboard
        for (const OrvexArchiveDocument &document : session.archive()->documents()) {
            const QString entry = QString::number(document.id) + QChar(0xFEFF) + QString::number(document.docsId);
            if (document.readable && !entries.contains(entry) && ids.size() < 3)
                ids << document.id;
        }
        session.window()->selectDocuments(ids);
        OrvexDocumentListView *list = session.window()->documentView();
        list->setChosenVersion(ids.at(1), 2);
        std::unique_ptr<OrvexMimeData> data(list->createSelectionMimeData());
        QVERIFY(data);
        const QStringList docIds = data->getDocIds(), docsIds = data->getDocsIds();
        QCOMPARE(docIds.size(), 3);
        QVERIFY(data->getBemerkungen().contains(QString::number(ids.at(1)) + QStringLiteral("#2")));

        QVERIFY(deliverDrop(board, data.get(), board->rect().center()));
        QTRY_COMPARE(session.window()->statusBar()->currentMessage(),
                     QStringLiteral("Added 3 document(s) to clipboard %1").arg(board->getTabText()));
        QVERIFY(session.archive()->classifyClient()->getClipboardDocuments(board->getId(), entries, comments));
        for (int i = 0; i < 3; ++i)
            QVERIFY(entries.contains(docIds.at(i) + QChar(0xFEFF) + docsIds.at(i)));
        const QString script = QStringLiteral("['%1'].map(function(id){return $('#main-' + id).text();}).join(';')")
                                   .arg(docsIds.join(QStringLiteral("','")));
        auto shown = std::make_shared<QString>(); // outlives the page's late answers
        QTRY_COMPARE_WITH_TIMEOUT(([&] {
            board->page()->runJavaScript(script, [shown](const QVariant &text) { *shown = text.toString(); });
            return *shown;
        }()), docIds.join(QLatin1Char(';')), 20000);
    }

    // Failed before: the window's size, the dock's width and the clipboard shown were forgotten.
    void layoutSurvivesARestart()
    {
        QSettings().clear(); // test mode: the test's own settings
        RecordingClassifyClient classify;
        classify.addClipboard(QStringLiteral("Inbox"));
        const QString shown = classify.addClipboard(QStringLiteral("Tax 2026"));
        classify.addClipboard(QStringLiteral("Letters"));
        // A host run: a plugin instance and a window over the same clients.
        struct Run
        {
            std::unique_ptr<TavloDocPluginInterface> plugin;
            std::unique_ptr<OrvexHostWindow> window;
        };
        const auto start = [&](Run &run) {
            run.plugin.reset(m_loader.plugin()->createInstance());
            run.window = std::make_unique<OrvexHostWindow>();
            QVERIFY(run.window->installWorkbench(run.plugin.get(), &classify, m_archive, m_connection));
            run.window->restoreLayout();
            run.window->show();
            QVERIFY(QTest::qWaitForWindowExposed(run.window.get()));
        };

        Run first;
        start(first);
        first.window->resize(1000, 640);
        first.window->resizeDocks({first.window->workbenchDock()}, {420}, Qt::Horizontal);
        QVERIFY(first.window->showClipboard(shown));
        QTRY_COMPARE(first.window->workbenchDock()->width(), 420);
        QVERIFY(first.window->close());
        first.window.reset();

        Run second;
        start(second);
        QCOMPARE(second.window->size(), QSize(1000, 640));
        QTRY_COMPARE(second.window->workbenchDock()->width(), 420);
        QCOMPARE(second.window->currentClipboard(), shown);

        // A clipboard that has gone meanwhile leaves the first tab shown.
        second.window->close();
        second.window.reset();
        QVERIFY(classify.removeClipboard(shown));
        Run third;
        start(third);
        QVERIFY(!third.window->currentClipboard().isEmpty());
        QVERIFY(third.window->currentClipboard() != shown);
    }

    // last: installs translators for the rest of the process
    void germanTexts()
    {
        QVERIFY(OrvexHostTranslations::install(QLocale(QLocale::German, QLocale::Germany)));
        OrvexHostWindow window;
        window.setDocuments({doc(1, QStringLiteral("Brief"))});
        QCOMPARE(window.findChild<QMenu *>(QStringLiteral("menuFile"))->title(), QStringLiteral("&Datei"));
        QCOMPARE(window.findChild<QLabel *>(QStringLiteral("countLabel"))->text(), QStringLiteral("1 Dokument"));
    }

private:
    OrvexWorkbenchLoader m_loader;
    TavloDocPluginInterface *m_plugin = nullptr; // a fresh instance per test
    RecordingArchiveClient *m_archive = nullptr;
    RecordingClassifyClient *m_classify = nullptr;
    OrvexHostWindow *m_window = nullptr;
    const OrvexConnectionValues m_connection{QStringLiteral("localhost"), 4711, QStringLiteral("anna"),
                                             QStringLiteral("secret"), QStringLiteral("Main"),
                                             QStringLiteral("token")};
};

QTEST_MAIN(tst_HostWindow)
#include "tst_hostwindow.moc"
