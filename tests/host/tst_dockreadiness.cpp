// When the host believes the workbench dock is ready for its screenshot, with
// real web views standing in for the boards.
#include "orvexdockreadiness.h"
#include "orvexhostexitcode.h"
#include "orvexhosttranslations.h"
#include "orvexscreenshotjob.h"

#include <QDockWidget>
#include <QImage>
#include <QMainWindow>
#include <QSignalSpy>
#include <QTabWidget>
#include <QTcpServer>
#include <QTcpSocket>
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
    void initTestCase();
    void init();
    void cleanup();

    void waitsForEveryBoardToLoad();
    void waitsForCardThumbnails();
    void screenshotShowsTheBoards();
    void screenshotTimesOutWithReason();

private:
    QWebEngineView *addBoard(const QString &html = {});

    QMainWindow *m_window = nullptr;
    QDockWidget *m_dock = nullptr;
    QTabWidget *m_tabs = nullptr;
    QTemporaryDir m_scratch;
};

void tst_DockReadiness::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    OrvexHostTranslations::install(QLocale(QLocale::English));
}

void tst_DockReadiness::init()
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

void tst_DockReadiness::cleanup()
{
    delete m_window;
    m_window = nullptr;
}

QWebEngineView *tst_DockReadiness::addBoard(const QString &html)
{
    auto *board = new QWebEngineView;
    m_tabs->addTab(board, QStringLiteral("Board %1").arg(m_tabs->count() + 1));
    if (!html.isEmpty())
        board->setHtml(html, QUrl(QStringLiteral("qrc:/test/")));
    return board;
}

void tst_DockReadiness::waitsForEveryBoardToLoad()
{
    // The second board's image is held back by the server, like a thumbnail
    // that is still being rendered: the dock is not ready before it arrives.
    QTcpServer server;
    QVERIFY(server.listen(QHostAddress::LocalHost));
    QList<QTcpSocket *> held;
    connect(&server, &QTcpServer::newConnection, this, [&] {
        while (QTcpSocket *socket = server.nextPendingConnection())
            held << socket;
    });
    const QString base = QStringLiteral("http://127.0.0.1:%1/").arg(server.serverPort());

    addBoard(redPage);
    QWebEngineView *slow = addBoard();
    slow->setHtml(QStringLiteral("<html><body><img src='thumb.svg'></body></html>"), QUrl(base));
    m_window->show();

    OrvexDockReadiness readiness(m_window, m_dock);
    QSignalSpy ready(&readiness, &OrvexDockReadiness::ready);
    readiness.start(50);
    QTRY_VERIFY_WITH_TIMEOUT(!held.isEmpty(), 15000);
    QTest::qWait(1000);
    QCOMPARE(ready.count(), 0);
    QCOMPARE(readiness.pendingDescription(), QStringLiteral("1 of 2 boards to finish loading"));

    for (QTcpSocket *socket : qAsConst(held)) {
        socket->write("HTTP/1.0 200 OK\r\nContent-Type: image/svg+xml\r\nConnection: close\r\n\r\n"
                      "<svg xmlns='http://www.w3.org/2000/svg' width='8' height='8'/>");
        socket->disconnectFromHost();
    }
    QTRY_COMPARE_WITH_TIMEOUT(ready.count(), 1, 15000);
}

void tst_DockReadiness::waitsForCardThumbnails()
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

void tst_DockReadiness::screenshotShowsTheBoards()
{
    QWebEngineView *board = addBoard(redPage);
    m_window->show();
    const QString file = m_scratch.filePath(QStringLiteral("shot.png"));
    OrvexScreenshotJob job(m_window, m_dock, file, 30000);
    QSignalSpy finished(&job, &OrvexScreenshotJob::finished);
    job.start();
    QTRY_COMPARE_WITH_TIMEOUT(finished.count(), 1, 30000);
    QCOMPARE(finished.at(0).at(0).toInt(), int(OrvexHostExitCode::Ok));
    QVERIFY(finished.at(0).at(1).toString().contains(file));

    const QImage image(file);
    QVERIFY(!image.isNull());
    QCOMPARE(image.size(), m_window->size() * m_window->devicePixelRatioF());
    // The board's page is in the picture, not an empty widget.
    const QPoint centre = board->mapTo(m_window, board->rect().center());
    QCOMPARE(image.pixelColor(centre * m_window->devicePixelRatioF()), QColor(Qt::red));
}

void tst_DockReadiness::screenshotTimesOutWithReason()
{
    addBoard(); // never loads
    m_window->show();
    const QString file = m_scratch.filePath(QStringLiteral("never.png"));
    OrvexScreenshotJob job(m_window, m_dock, file, 1500);
    QSignalSpy finished(&job, &OrvexScreenshotJob::finished);
    job.start();
    QTRY_COMPARE_WITH_TIMEOUT(finished.count(), 1, 15000);
    QCOMPARE(finished.at(0).at(0).toInt(), int(OrvexHostExitCode::ScreenshotFailed));
    QCOMPARE(finished.at(0).at(1).toString(),
             QStringLiteral("No screenshot: gave up after 1 second waiting for 1 of 1 board to finish loading."));
    QVERIFY(!QFile::exists(file));
}

QTEST_MAIN(tst_DockReadiness)
#include "tst_dockreadiness.moc"
