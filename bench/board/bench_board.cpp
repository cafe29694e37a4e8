// How fast boards fill, measured against what the machine can do at best.
//
// Board with the double: from reloadCards() to 200 cards in the page and to
// all 200 thumbnails set, the longest stall of the GUI thread meanwhile
// (the lateness of a 5 ms timer, with the CPU time the GUI thread used in it)
// and the longest stretch the GUI thread itself was busy, and one page step.
// The double answers at once with the same 800-pixel page image for every
// document. The limit: decoding, PNG-encoding and base64-encoding the run's
// page images on a pool of the board's size with nothing else running.
//
// Board on the embedded archive (200 imported PDFs, kept between runs under
// the temporary folder): cold (no page image cached yet, poppler renders
// during the fill) and warm, against the encoding limit of its images and
// poppler's own time for the same pages.
//
// Dock: ten clipboards of 200 cards in the tab set; the time until the shown
// board's cards are in the page, and, showing the other tabs one by one, until
// each one's are.
//
//   tests/run-gui-test.sh build/bin/bench_board [runs [double|archive|dock]]
#include "orvexarchive.h"
#include "orvexarchivestore.h"
#include "orvexclipboardchooser.h"
#include "orvexpdftools.h"
#include "orvexrendering.h"
#include "orvexsamplearchive.h"
#include "orvexwbwebview.h"
#include "orvexworkbenchtab.h"
#include "classifyinterface.h"
#include "kelarchiveclientinterface.h"
#include "recordingarchiveclient.h"
#include "recordingclassifyclient.h"

#include <QApplication>
#include <QBuffer>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QImage>
#include <QLinearGradient>
#include <QPainter>
#include <QThreadPool>
#include <QTimer>
#include <QWebEnginePage>
#include <QWebEngineSettings>
#include <QtConcurrent>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <unistd.h>
#include <functional>
#include <limits>

namespace {

const int kCards = 200;
const int kDockClipboards = 10;

// CPU time the calling thread has used, to tell a busy GUI thread from one the
// system did not schedule.
qint64 threadCpuMs()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return qint64(now.tv_sec) * 1000 + now.tv_nsec / 1000000;
}

// A page as a scanner or a PDF renderer would deliver it: text lines on white.
QByteArray pageImage()
{
    QImage image(566, 800, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    QLinearGradient band(0, 0, 566, 0);
    band.setColorAt(0, QColor(30, 80, 160));
    band.setColorAt(1, QColor(120, 170, 230));
    painter.fillRect(0, 0, 566, 90, band);
    painter.setPen(Qt::black);
    QFont font = painter.font();
    font.setPixelSize(13);
    painter.setFont(font);
    for (int line = 0; line < 40; ++line)
        painter.drawText(40, 130 + line * 16,
                         QStringLiteral("Line %1 of the page: invoice position, amount %2.%3 EUR")
                             .arg(line + 1).arg(line * 37 % 1000).arg(line * 7 % 100, 2, 10, QLatin1Char('0')));
    painter.end();
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes;
}

// CPU time (ms) of this process and of each process it started (the page
// renderers), from /proc.
struct ProcessCpu
{
    qint64 own = 0;
    QHash<qint64, qint64> children; // pid -> ms

    // What the renderers used since before: processes that ended meanwhile are lost.
    qint64 childrenSince(const ProcessCpu &before) const
    {
        qint64 used = 0;
        for (auto it = children.cbegin(); it != children.cend(); ++it)
            used += it.value() - before.children.value(it.key(), 0);
        return used;
    }
};

ProcessCpu processCpu()
{
    const auto readStat = [](const QString &path, qint64 &parent, qint64 &ticks) {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly))
            return false;
        const QByteArray line = file.readAll();
        // Fields after the command name, which may hold blanks: state, ppid, ..., utime (14), stime (15).
        const QList<QByteArray> fields = line.mid(line.lastIndexOf(')') + 2).split(' ');
        if (fields.size() < 13)
            return false;
        parent = fields.at(1).toLongLong();
        ticks = fields.at(11).toLongLong() + fields.at(12).toLongLong();
        return true;
    };
    const qint64 hz = sysconf(_SC_CLK_TCK);
    QHash<qint64, qint64> parents, ticks;
    for (const QString &entry : QDir(QStringLiteral("/proc")).entryList(QDir::Dirs)) {
        bool number = false;
        const qint64 pid = entry.toLongLong(&number);
        qint64 parent = 0, used = 0;
        if (number && readStat(QStringLiteral("/proc/%1/stat").arg(pid), parent, used)) {
            parents.insert(pid, parent);
            ticks.insert(pid, used);
        }
    }
    ProcessCpu cpu;
    const qint64 self = QCoreApplication::applicationPid();
    for (auto it = parents.cbegin(); it != parents.cend(); ++it) {
        qint64 up = it.key();
        while (up > 1 && up != self)
            up = parents.value(up, 0);
        if (up != self)
            continue;
        const qint64 ms = ticks.value(it.key()) * 1000 / hz;
        if (it.key() == self)
            cpu.own = ms;
        else
            cpu.children.insert(it.key(), ms);
    }
    return cpu;
}

// Runs work(i) for i in 0..count-1 on a pool of the board's size; wall time in ms.
qint64 onPool(int count, const std::function<void(int)> &work)
{
    QThreadPool pool; // as the board's: one thread per core
    QElapsedTimer clock;
    clock.start();
    for (int i = 0; i < count; ++i)
        QtConcurrent::run(&pool, [&work, i] { work(i); });
    // Not the futures' waitForFinished(), which would run queued work on this
    // thread as a third worker.
    pool.waitForDone();
    return clock.elapsed();
}

// The least the board can spend on its images: decode, encode as PNG, base64.
qint64 encodingLimit(const QList<QByteArray> &images)
{
    return onPool(images.size(), [&images](int i) {
        const QImage image = QImage::fromData(images.at(i));
        QByteArray png;
        QBuffer buffer(&png);
        buffer.open(QIODevice::WriteOnly);
        image.save(&buffer, "PNG");
        const QByteArray url = QByteArrayLiteral("data:image/png;base64,") + png.toBase64();
        Q_UNUSED(url)
    });
}

// Waits in an event loop (not spinning, which would take a core from the
// boards) until condition holds, testing it every 5 ms.
void waitFor(const std::function<bool()> &condition, int timeoutMs)
{
    if (condition())
        return;
    QEventLoop loop;
    QElapsedTimer clock;
    clock.start();
    QTimer poll;
    poll.setInterval(5);
    bool testing = false; // condition() may wait for the page itself
    QObject::connect(&poll, &QTimer::timeout, &loop, [&] {
        if (testing)
            return;
        testing = true;
        if (condition() || clock.elapsed() >= timeoutMs)
            loop.quit();
        testing = false;
    });
    poll.start();
    loop.exec();
}

QVariant evaluate(QWebEnginePage *page, const QString &script)
{
    QVariant result;
    bool done = false;
    page->runJavaScript(script, [&](const QVariant &answer) {
        result = answer;
        done = true;
    });
    waitFor([&] { return done; }, 10000);
    return result;
}

// Watches the GUI thread with a 5 ms timer: the longest lateness and the GUI
// thread's CPU time within it, and the most CPU time it used between two ticks.
class StallWatch
{
public:
    StallWatch()
    {
        m_ticker.setTimerType(Qt::PreciseTimer);
        m_ticker.setInterval(5);
        QObject::connect(&m_ticker, &QTimer::timeout, [this] { tick(); });
    }
    void start()
    {
        m_clock.start();
        m_lastTick = 0;
        m_lastCpu = threadCpuMs();
        m_ticker.start();
    }
    void stop() { m_ticker.stop(); }
    qint64 longestStall = 0;
    qint64 longestStallCpu = 0;
    qint64 longestBusy = 0; // CPU time the GUI thread used between two ticks

private:
    void tick()
    {
        const qint64 now = m_clock.elapsed();
        const qint64 cpu = threadCpuMs();
        const qint64 late = now - m_lastTick - 5;
        if (late > longestStall) {
            longestStall = late;
            longestStallCpu = cpu - m_lastCpu;
        }
        longestBusy = std::max(longestBusy, cpu - m_lastCpu);
        m_lastTick = now;
        m_lastCpu = cpu;
    }
    QTimer m_ticker;
    QElapsedTimer m_clock;
    qint64 m_lastTick = 0;
    qint64 m_lastCpu = 0;
};

struct Fill
{
    qint64 cardsMs = -1;
    qint64 thumbnailsMs = -1;
    qint64 reloadMs = 0; // reloadCards() itself, which runs on the GUI thread by design
    qint64 stallMs = 0;
    qint64 stallCpuMs = 0;
    qint64 busyMs = 0;
    qint64 ownCpuMs = 0;      // CPU time of this process while the board fills
    qint64 rendererCpuMs = 0; // and of the page renderers
    qint64 idleCpuMs = 0;     // both, in the second after the board has filled
    qint64 stepMs = -1;      // next page on a card until its image shows
    qint64 stepAgainMs = -1; // the same page once more (its image cached by then)
};

// Times one page step on the first card: next page until its image is set.
qint64 pageStep(QWebEnginePage *page, const QString &cardId, const QString &docId, const QString &step)
{
    evaluate(page, QStringLiteral(
                       "(function(){var img=document.getElementById('img-%1');window.benchStep=-1;"
                       "var t0=performance.now();var seen=new MutationObserver(function(){"
                       "var src=img.getAttribute('src')||'';if(src.indexOf('data:')===0){"
                       "window.benchStep=performance.now()-t0;seen.disconnect();}});"
                       "seen.observe(img,{attributes:true,attributeFilter:['src']});%3('%2','%1');})();null;")
                       .arg(cardId, docId, step));
    qint64 ms = -1;
    waitFor([&] {
        ms = qint64(evaluate(page, QStringLiteral("window.benchStep")).toDouble());
        return ms >= 0;
    }, 10000);
    return ms;
}

// Loads the page into a board as the tab set does and fills it.
Fill fillBoard(kelArchiveClientInterface *archive, ClassifyInterface *classify, const QString &clipboard,
               const QString &firstCard, const QString &firstDoc)
{
    orvexwbwebview board;
    board.setId(clipboard);
    board.setArchiveClient(archive);
    board.setClassifyClient(classify);
    board.page()->settings()->setAttribute(QWebEngineSettings::JavascriptEnabled, true);
    board.resize(1200, 900);
    board.show();
    QEventLoop loading;
    QObject::connect(&board, &QWebEngineView::loadFinished, &loading, &QEventLoop::quit);
    board.load(QUrl(QStringLiteral("qrc:/material/card-webchannel.html")));
    loading.exec();
    board.updateTranslations();
    board.setWriteable(true);

    Fill result;
    StallWatch watch;
    QEventLoop done;
    // The page notes when the last card and the last image arrive; asking it
    // for counts every few milliseconds would take the renderer's time.
    evaluate(board.page(), QStringLiteral(
        "(function(){var overview=document.getElementById('overview');"
        "var sections=overview.getElementsByTagName('section');var pictured=new Set();"
        "window.benchFill={cards:-1,images:-1};"
        "var seen=new MutationObserver(function(records){var fill=window.benchFill;"
        "if(fill.cards<0&&sections.length>=%1)fill.cards=Date.now();"
        "records.forEach(function(r){if(r.type==='attributes'&&(r.target.getAttribute('src')||'').indexOf('data:')===0)"
        "pictured.add(r.target.id);});"
        "if(fill.images<0&&pictured.size>=%1){fill.images=Date.now();seen.disconnect();}});"
        "seen.observe(overview,{childList:true,subtree:true,attributes:true,attributeFilter:['src']});})();null;")
        .arg(kCards));
    qint64 start = 0;
    bool probing = false;
    QTimer probe;
    probe.setInterval(50);
    QObject::connect(&probe, &QTimer::timeout, [&] {
        if (probing)
            return;
        probing = true;
        board.page()->runJavaScript(QStringLiteral("[window.benchFill.cards, window.benchFill.images]"),
                                    [&](const QVariant &answer) {
            probing = false;
            const QVariantList times = answer.toList();
            if (result.cardsMs < 0 && times.value(0).toDouble() > 0)
                result.cardsMs = qint64(times.value(0).toDouble()) - start;
            if (result.thumbnailsMs < 0 && times.value(1).toDouble() > 0) {
                result.thumbnailsMs = qint64(times.value(1).toDouble()) - start;
                done.quit();
            }
        });
    });
    QTimer::singleShot(120000, &done, &QEventLoop::quit);

    const ProcessCpu before = processCpu();
    start = QDateTime::currentMSecsSinceEpoch(); // the page's clock
    probe.start();
    board.reloadCards();
    result.reloadMs = QDateTime::currentMSecsSinceEpoch() - start;
    watch.start(); // the synchronous part counts separately
    done.exec();
    watch.stop();
    probe.stop();
    const ProcessCpu after = processCpu();
    result.ownCpuMs = after.own - before.own;
    result.rendererCpuMs = after.childrenSince(before);
    waitFor([] { return false; }, 1000);
    const ProcessCpu idle = processCpu();
    result.idleCpuMs = idle.own - after.own + idle.childrenSince(after);

    result.stallMs = watch.longestStall;
    result.stallCpuMs = watch.longestStallCpu;
    result.busyMs = watch.longestBusy;
    if (result.thumbnailsMs >= 0) {
        result.stepMs = pageStep(board.page(), firstCard, firstDoc, QStringLiteral("nextPage"));
        pageStep(board.page(), firstCard, firstDoc, QStringLiteral("prevPage"));
        result.stepAgainMs = pageStep(board.page(), firstCard, firstDoc, QStringLiteral("nextPage"));
    }
    board.stop();
    return result;
}

double ratio(qint64 a, qint64 b)
{
    return b > 0 ? double(a) / double(b) : 0.0;
}

void printFill(const char *name, const Fill &fill)
{
    std::printf("  %s: cards in DOM %lld ms | all thumbnails %lld ms | reloadCards() %lld ms\n"
                "  %s: longest GUI stall %lld ms (GUI thread busy %lld ms of it) | longest GUI-thread busy stretch %lld ms\n"
                "  %s: page step %lld ms, same page again %lld ms | CPU while filling: board process %lld ms, "
                "page renderer %lld ms; in the second after %lld ms\n",
                name, static_cast<long long>(fill.cardsMs), static_cast<long long>(fill.thumbnailsMs),
                static_cast<long long>(fill.reloadMs), name, static_cast<long long>(fill.stallMs),
                static_cast<long long>(fill.stallCpuMs), static_cast<long long>(fill.busyMs), name,
                static_cast<long long>(fill.stepMs), static_cast<long long>(fill.stepAgainMs),
                static_cast<long long>(fill.ownCpuMs), static_cast<long long>(fill.rendererCpuMs),
                static_cast<long long>(fill.idleCpuMs));
}

// ---- the double ---------------------------------------------------------------

struct Doubles
{
    RecordingClassifyClient classify;
    RecordingArchiveClient archive;
    QStringList clipboards;
};

void fillDoubles(Doubles &doubles, const QByteArray &image, int clipboards)
{
    for (int c = 0; c < clipboards; ++c) {
        const QString clip = doubles.classify.addClipboard(QStringLiteral("Bench %1").arg(c + 1));
        doubles.clipboards << clip;
        for (int i = 0; i < kCards; ++i) {
            const int n = c * kCards + i;
            const QString docId = QString::number(10000 + n);
            doubles.classify.addDocument({docId, QStringLiteral("Document %1").arg(n), QStringLiteral("T"),
                                          QStringLiteral("S"), QString(), 3});
            RecordingArchiveClient::Document document;
            document.docId = 10000 + n;
            document.pages = 3;
            document.thumbnail = image;
            doubles.archive.addDocument(document);
            doubles.classify.addEntry(clip, docId, QString::number(50000 + n), QStringLiteral("note %1").arg(n));
        }
    }
}

// ---- the embedded archive -----------------------------------------------------

struct RealArchive
{
    QString folder;
    QList<qlonglong> docIds;
    QList<qlonglong> docsIds;
};

QString archiveFolder()
{
    return QDir::tempPath() + QStringLiteral("/orvex-bench-board-archive");
}

// 200 distinct PDFs of one to five pages, imported once and kept.
bool prepareArchive(RealArchive &real)
{
    real.folder = archiveFolder();
    const QString ready = real.folder + QStringLiteral("/.bench-ready");
    if (!QFile::exists(ready)) {
        QDir(real.folder).removeRecursively();
        OrvexArchive archive;
        if (!archive.open(real.folder, false)) {
            std::printf("cannot create %s: %s\n", qPrintable(real.folder), qPrintable(archive.lastError()));
            return false;
        }
        QTemporaryDir scratch;
        QElapsedTimer clock;
        clock.start();
        for (int i = 0; i < kCards; ++i) {
            const QString path = scratch.filePath(QStringLiteral("bench-%1.pdf").arg(i));
            QString error;
            if (!OrvexSampleArchive::writeSamplePdf(path, i % 30, 1, QStringLiteral("Bench page %1").arg(i), &error)
                || archive.importFile(path, QStringLiteral("Bench %1").arg(i)) == 0) {
                std::printf("cannot import: %s %s\n", qPrintable(error), qPrintable(archive.lastError()));
                return false;
            }
        }
        QString error;
        const QSharedPointer<OrvexArchiveStore> store = OrvexArchiveStore::shared(real.folder, false, &error);
        const qint64 imported = clock.elapsed();
        if (store)
            store->waitForRenderAhead();
        std::printf("archive: %d PDFs imported in %lld ms, first pages rendered ahead %lld ms later\n", kCards,
                    static_cast<long long>(imported), static_cast<long long>(clock.elapsed() - imported));
        QFile marker(ready);
        marker.open(QIODevice::WriteOnly);
    }
    OrvexArchive archive;
    if (!archive.open(real.folder, false))
        return false;
    for (const OrvexArchiveDocument &document : archive.documents()) {
        real.docIds << document.id;
        real.docsIds << document.docsId;
    }
    return real.docIds.size() >= kCards;
}

// Warm means cached: the archive stores what a cold fetch rendered in the
// background, after handing it out.
void waitForCache(const RealArchive &real)
{
    QString error;
    if (const QSharedPointer<OrvexArchiveStore> store = OrvexArchiveStore::shared(real.folder, false, &error))
        store->waitForRenderAhead();
}

bool connectClient(kelArchiveClientInterface *client, const OrvexConnectionValues &values)
{
    client->resetConnection();
    return client->openConnection(values.server, values.port) && client->logIn(values.login1, values.login2, values.login3)
        && client->selectArchive(values.archiveName);
}

struct RealFigures
{
    qint64 encodingMs = 0;
    qint64 renderMs = 0;
    qint64 clientColdMs = 0; // the archive client alone, on a pool of the board's size
    qint64 clientWarmMs = 0;
    Fill cold;
    Fill warm;
};

RealFigures measureArchive(const RealArchive &real)
{
    RealFigures figures;
    const auto clearCache = [&] { QDir(real.folder + QStringLiteral("/cache")).removeRecursively(); };
    const auto fetchAll = [&](kelArchiveClientInterface *client) {
        return onPool(kCards, [&](int i) {
            int pages = 0;
            QString format;
            client->getDocumentThumbnail(int(real.docIds.at(i)), 0, 800, pages, format, 0, 0, -1);
        });
    };
    // The limits for the same pages: poppler alone, and the encoding of its
    // images; taken before and after the fills, the better of the two.
    figures.encodingMs = figures.renderMs = std::numeric_limits<qint64>::max();
    const auto measureLimits = [&](kelArchiveClientInterface *client) {
        figures.renderMs = std::min(figures.renderMs, onPool(kCards, [&](int i) {
            QString error;
            OrvexPdfTools::renderPage(real.folder + QStringLiteral("/files/%1/v1.pdf").arg(real.docIds.at(i)), 0,
                                      800, error);
        }));
        QList<QByteArray> images;
        for (int i = 0; i < kCards; ++i) {
            int pages = 0;
            QString format;
            images << client->getDocumentThumbnail(int(real.docIds.at(i)), 0, 800, pages, format, 0, 0, -1);
            if (images.last().isEmpty())
                std::printf("  no page image for document %lld: %s\n", real.docIds.at(i),
                            qPrintable(client->getLastError()));
        }
        figures.encodingMs = std::min(figures.encodingMs, encodingLimit(images));
    };
    {
        clearCache();
        OrvexArchive archive;
        archive.open(real.folder, false);
        kelArchiveClientInterface *client = archive.archiveClient();
        connectClient(client, archive.connectionValues());
        figures.clientColdMs = fetchAll(client);
        waitForCache(real);
        figures.clientWarmMs = fetchAll(client);
        measureLimits(client);
    }

    // Cold: nothing cached, as if the pages had never been rendered.
    clearCache();
    OrvexArchive archive;
    archive.open(real.folder, false);
    kelArchiveClientInterface *client = archive.archiveClient();
    connectClient(client, archive.connectionValues());
    ClassifyInterface *classify = archive.classifyClient();
    const QString clipboard = classify->createClipboard(QStringLiteral("Bench %1").arg(QDateTime::currentMSecsSinceEpoch()));
    for (int i = 0; i < kCards; ++i)
        classify->addToClipboard(clipboard, QString::number(real.docIds.at(i)), QString::number(real.docsIds.at(i)));
    const QString firstCard = QString::number(real.docsIds.first());
    const QString firstDoc = QString::number(real.docIds.first());

    // A board resets the client's connection when it goes.
    figures.cold = fillBoard(client, classify, clipboard, firstCard, firstDoc);
    waitForCache(real);
    connectClient(client, archive.connectionValues());
    figures.warm = fillBoard(client, classify, clipboard, firstCard, firstDoc);
    connectClient(client, archive.connectionValues());
    classify->removeClipboard(clipboard);
    measureLimits(client);
    return figures;
}

// ---- the dock -----------------------------------------------------------------

struct DockFigures
{
    qint64 shownMs = -1;  // the shown board's cards in its page
    qint64 switchMs = -1; // the slowest of the other tabs: shown, until its cards are in its page
    qint64 busyMs = 0;
};

int cardsOnPage(orvexwbwebview *board)
{
    return evaluate(board->page(), QStringLiteral("document.querySelectorAll('#overview section').length")).toInt();
}

DockFigures measureDock(const QByteArray &image)
{
    Doubles doubles;
    fillDoubles(doubles, image, kDockClipboards);
    DockFigures figures;
    QWidget window;
    window.resize(1200, 900);
    orvexworkbenchtab tabs(&window);
    tabs.resize(1200, 900);
    orvexclipboardchooser chooser;
    tabs.setArchiveClient(&doubles.archive);
    tabs.setClassifyClient(&doubles.classify);
    window.show();
    StallWatch watch;
    QElapsedTimer clock;
    clock.start();
    watch.start();
    tabs.setChooser(&chooser);
    waitFor([&] {
        orvexwbwebview *shown = qobject_cast<orvexwbwebview *>(tabs.currentWidget());
        return shown && cardsOnPage(shown) >= kCards;
    }, 60000);
    figures.shownMs = clock.elapsed();
    watch.stop();
    figures.busyMs = watch.longestBusy;
    // The other tabs, each shown once its predecessor has all its images.
    for (int index = 1; index < tabs.count(); ++index) {
        orvexwbwebview *previous = tabs.boardAt(index - 1);
        waitFor([&] {
            return evaluate(previous->page(), QStringLiteral("$('#overview img[src^=\"data:\"]').length")).toInt()
                >= kCards;
        }, 60000);
        clock.restart();
        tabs.setCurrentIndex(index);
        waitFor([&] { return cardsOnPage(tabs.boardAt(index)) >= kCards; }, 60000);
        figures.switchMs = std::max(figures.switchMs, clock.elapsed());
    }
    tabs.stop();
    return figures;
}

} // namespace

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    const QString sceneGraph = OrvexRendering::chooseSceneGraph(); // as the host does
    const int runs = argc > 1 ? std::max(1, QString::fromLocal8Bit(argv[1]).toInt()) : 3;
    const QString only = argc > 2 ? QString::fromLocal8Bit(argv[2]) : QString();
    const auto part = [&only](const char *name) { return only.isEmpty() || only == QLatin1String(name); };
    const QByteArray image = pageImage();
    RealArchive real;
    const bool haveArchive = part("archive") && prepareArchive(real);
    std::printf("page image: 566 x 800 PNG, %d bytes; %d cards; pool of %d threads; %d runs; pages drawn by %s\n",
                image.size(), kCards, QThread::idealThreadCount(), runs,
                sceneGraph.isEmpty() ? "OpenGL" : qPrintable(sceneGraph));
    std::printf("aims: cards <= 500 ms; thumbnails <= 1.5 x limit (warm archive: its limit; cold: 1.5 x limit "
                "+ poppler); GUI-thread busy stretch <= 16 ms; page step <= 150 ms warm; dock <= 2000 ms\n");
    for (int run = 1; run <= runs; ++run) {
        std::printf("run %d\n", run);
        if (part("double")) {
            Doubles doubles;
            fillDoubles(doubles, image, 1);
            QList<QByteArray> images;
            for (int i = 0; i < kCards; ++i)
                images << image;
            // Taken before and after the fill; the better of the two is the limit.
            const ProcessCpu limitStart = processCpu();
            qint64 limit = encodingLimit(images);
            const qint64 limitCpu = processCpu().own - limitStart.own;
            const Fill fill = fillBoard(&doubles.archive, &doubles.classify, doubles.clipboards.first(),
                                        QStringLiteral("50000"), QStringLiteral("10000"));
            limit = std::min(limit, encodingLimit(images));
            printFill("double", fill);
            std::printf("  double: encoding limit %lld ms (CPU %lld ms) | thumbnails / limit %.2f (aim 1.5)\n",
                        static_cast<long long>(limit), static_cast<long long>(limitCpu),
                        ratio(fill.thumbnailsMs, limit));
        }
        if (haveArchive) {
            const RealFigures figures = measureArchive(real);
            printFill("archive cold", figures.cold);
            printFill("archive warm", figures.warm);
            std::printf("  archive: encoding limit %lld ms, poppler %lld ms | warm thumbnails / limit %.2f (aim 1.5) | "
                        "cold thumbnails / (1.5 x limit + poppler) %.2f (aim 1.0)\n",
                        static_cast<long long>(figures.encodingMs), static_cast<long long>(figures.renderMs),
                        ratio(figures.warm.thumbnailsMs, figures.encodingMs),
                        ratio(figures.cold.thumbnailsMs, figures.encodingMs * 3 / 2 + figures.renderMs));
            std::printf("  archive client alone: 200 first pages cold %lld ms, warm %lld ms\n",
                        static_cast<long long>(figures.clientColdMs), static_cast<long long>(figures.clientWarmMs));
        }
        if (part("dock")) {
            const DockFigures dock = measureDock(image);
            std::printf("  dock of %d x %d cards: shown board's cards in DOM %lld ms (aim 2000) | another tab shown: "
                        "its cards in DOM after at most %lld ms | longest GUI-thread busy stretch %lld ms\n",
                        kDockClipboards, kCards, static_cast<long long>(dock.shownMs),
                        static_cast<long long>(dock.switchMs), static_cast<long long>(dock.busyMs));
        }
        std::fflush(stdout);
    }
    return 0;
}
