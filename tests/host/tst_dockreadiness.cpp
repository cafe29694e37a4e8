// When the host believes the workbench dock is ready for its screenshot, with
// real web views standing in for the boards.
#include "orvexdockreadiness.h"
#include "orvexhostexitcode.h"
#include "orvexhosttranslations.h"
#include "orvexscreenshotjob.h"

#include <QDockWidget>
#include <QMainWindow>
#include <QTabWidget>
#include <QWebEngineView>
#include <QtTest>

namespace {
const QString redPage = QStringLiteral(
    "<html><body style='margin:0;background:#ff0000'><p>board</p></body></html>");
}

class tst_DockReadiness : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        OrvexHostTranslations::install(QLocale(QLocale::English));
    }

    void init()
    {
        m_window = new QMainWindow;
        m_window->resize(900, 600);
        m_window->setCentralWidget(new QWidget);
        m_dock = new QDockWidget(QStringLiteral("Clipboard"), m_window);
        m_tabs = new QTabWidget(m_dock);
        m_dock->setWidget(m_tabs);
        m_window->addDockWidget(Qt::RightDockWidgetArea, m_dock);
        m_window->resizeDocks({m_dock}, {450}, Qt::Horizontal);
    }

    void cleanup()
    {
        delete m_window;
    }

    void waitsForCardThumbnails()
    {
        // Two cards as a board shows them: one thumbnail arrived, one not yet sent.
        QByteArray png;
        QBuffer buffer(&png);
        QImage(8, 8, QImage::Format_RGB32).save(&buffer, "PNG");
        const QString thumbnail = QStringLiteral("data:image/png;base64,") + QString::fromLatin1(png.toBase64());
        QWebEngineView *board = addBoard(QStringLiteral("<html><body><div id='overview'>"
                                                        "<section data-docsid='7'><img id='img-7' src='%1'></section>"
                                                        "<section data-docsid='8'><img id='img-8'></section>"
                                                        "</div></body></html>")
                                             .arg(thumbnail));
        m_tabs->setTabText(0, QStringLiteral("Inbox"));
        m_window->show();

        OrvexDockReadiness readiness(m_window, m_dock);
        QSignalSpy ready(&readiness, &OrvexDockReadiness::ready);
        readiness.start(50);
        QTRY_COMPARE_WITH_TIMEOUT(readiness.pendingDescription(),
                                  QStringLiteral("the thumbnails of 1 of 2 cards on \"Inbox\""), 15000);
        QTest::qWait(500);
        QCOMPARE(ready.count(), 0);
        board->page()->runJavaScript(QStringLiteral("document.getElementById('img-8').src = '%1';").arg(thumbnail));
        QTRY_COMPARE_WITH_TIMEOUT(ready.count(), 1, 15000);
    }

    void tabsNotShownDoNotCount()
    {
        // A tab not shown yet has no page: its board gets one when it is shown.
        addBoard(redPage);
        QWebEngineView *hidden = addBoard();
        m_window->show();
        OrvexDockReadiness readiness(m_window, m_dock);
        QSignalSpy ready(&readiness, &OrvexDockReadiness::ready);
        readiness.start(50);
        QTRY_COMPARE_WITH_TIMEOUT(ready.count(), 1, 15000);
        QVERIFY(hidden->url().isEmpty());
    }

    void screenshot()
    {
        // A board that never loads: the job gives up, says why, and writes no file.
        QWebEngineView *board = addBoard();
        m_window->show();
        const QString file = m_scratch.filePath(QStringLiteral("shot.png"));
        auto shoot = [&](int timeout) {
            OrvexScreenshotJob job(m_window, m_dock, file, timeout);
            QSignalSpy finished(&job, &OrvexScreenshotJob::finished);
            job.start();
            return QTest::qWaitFor([&] { return finished.count() == 1; }, 30000) ? finished.at(0) : QVariantList();
        };
        const QVariantList failed = shoot(1500);
        QCOMPARE(failed.value(0).toInt(), int(OrvexHostExitCode::ScreenshotFailed));
        QCOMPARE(failed.value(1).toString(),
                 QStringLiteral("No screenshot: gave up after 1 second waiting for 1 of 1 board to finish loading."));
        QVERIFY(!QFile::exists(file));

        board->setHtml(redPage, QUrl(QStringLiteral("qrc:/test/")));
        QCOMPARE(shoot(30000).value(0).toInt(), int(OrvexHostExitCode::Ok));
        const QImage image(file);
        QCOMPARE(image.size(), m_window->size() * m_window->devicePixelRatioF());
        // The board's page is in the picture, not an empty widget.
        const QPoint centre = board->mapTo(m_window, board->rect().center());
        QCOMPARE(image.pixelColor(centre * m_window->devicePixelRatioF()), QColor(Qt::red));
    }

private:
    QWebEngineView *addBoard(const QString &html = {})
    {
        auto *board = new QWebEngineView;
        m_tabs->addTab(board, QStringLiteral("Board %1").arg(m_tabs->count() + 1));
        if (!html.isEmpty())
            board->setHtml(html, QUrl(QStringLiteral("qrc:/test/")));
        return board;
    }

    QMainWindow *m_window = nullptr;
    QDockWidget *m_dock = nullptr;
    QTabWidget *m_tabs = nullptr;
    QTemporaryDir m_scratch;
};

QTEST_MAIN(tst_DockReadiness)
#include "tst_dockreadiness.moc"
