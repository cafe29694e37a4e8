// How fast a board fills: from reloadCards() to 200 cards in the page, to all
// 200 thumbnails set, and the longest stall of the GUI thread meanwhile
// (measured as the lateness of a 5 ms timer). The archive double answers at
// once with the same 800-pixel page image for every document.
//
//   tests/run-gui-test.sh build/bin/bench_board [runs]
#include "orvexwbwebview.h"
#include "recordingarchiveclient.h"
#include "recordingclassifyclient.h"

#include <QApplication>
#include <QBuffer>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QImage>
#include <QLinearGradient>
#include <QPainter>
#include <QTextStream>
#include <QTimer>
#include <QWebEnginePage>
#include <QWebEngineSettings>

#include <algorithm>
#include <cstdio>
#include <ctime>

namespace {

const int kCards = 200;

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

struct Result
{
    qint64 cardsMs = -1;
    qint64 thumbnailsMs = -1;
    qint64 reloadMs = 0;          // reloadCards() itself, which runs on the GUI thread by design
    qint64 thumbnailStallMs = 0;  // after reloadCards() returned, while cards and thumbnails load
    qint64 stallCpuMs = 0;        // CPU time the GUI thread used during that longest stall
};

Result run(const QByteArray &image)
{
    RecordingClassifyClient classify;
    RecordingArchiveClient archive;
    const QString clip = classify.addClipboard(QStringLiteral("Bench"));
    for (int i = 0; i < kCards; ++i) {
        const QString docId = QString::number(10000 + i);
        classify.addDocument({docId, QStringLiteral("Document %1").arg(i), QStringLiteral("T"),
                              QStringLiteral("S"), QString(), 3});
        classify.addEntry(clip, docId, QString::number(50000 + i), QStringLiteral("note %1").arg(i));
        RecordingArchiveClient::Document document;
        document.docId = 10000 + i;
        document.pages = 3;
        document.thumbnail = image;
        archive.addDocument(document);
    }

    orvexwbwebview board;
    board.setId(clip);
    board.setArchiveClient(&archive);
    board.setClassifyClient(&classify);
    board.page()->settings()->setAttribute(QWebEngineSettings::JavascriptEnabled, true);
    board.resize(1200, 900);
    board.show();
    QEventLoop loading;
    QObject::connect(&board, &QWebEngineView::loadFinished, &loading, &QEventLoop::quit);
    board.load(QUrl(QStringLiteral("qrc:/material/card-webchannel.html")));
    loading.exec();
    board.updateTranslations();
    board.setWriteable(true);

    Result result;
    QElapsedTimer clock;
    bool measuringThumbnails = false;
    qint64 lastTick = 0;
    qint64 lastCpu = threadCpuMs();
    QTimer ticker;
    ticker.setTimerType(Qt::PreciseTimer);
    ticker.setInterval(5);
    QObject::connect(&ticker, &QTimer::timeout, [&] {
        const qint64 now = clock.elapsed();
        const qint64 cpu = threadCpuMs();
        const qint64 late = now - lastTick - 5;
        if (measuringThumbnails && late > result.thumbnailStallMs) {
            result.thumbnailStallMs = late;
            result.stallCpuMs = cpu - lastCpu;
        }
        lastTick = now;
        lastCpu = cpu;
    });

    QEventLoop done;
    bool probing = false;
    QTimer probe;
    probe.setInterval(10);
    QObject::connect(&probe, &QTimer::timeout, [&] {
        if (probing)
            return;
        probing = true;
        board.page()->runJavaScript(
            QStringLiteral("[$('#overview section').length, $('#overview img[src^=\"data:\"]').length]"),
            [&](const QVariant &answer) {
                probing = false;
                const QVariantList counts = answer.toList();
                const qint64 now = clock.elapsed();
                if (result.cardsMs < 0 && counts.value(0).toInt() >= kCards)
                    result.cardsMs = now;
                if (result.thumbnailsMs < 0 && counts.value(1).toInt() >= kCards) {
                    result.thumbnailsMs = now;
                    done.quit();
                }
            });
    });
    QTimer::singleShot(60000, &done, &QEventLoop::quit);

    clock.start();
    ticker.start();
    probe.start();
    board.reloadCards();
    lastTick = clock.elapsed(); // the synchronous part counts separately
    lastCpu = threadCpuMs();
    result.reloadMs = lastTick;
    measuringThumbnails = true;
    done.exec();
    ticker.stop();
    probe.stop();
    board.stop();
    return result;
}

} // namespace

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    const int runs = argc > 1 ? std::max(1, QString::fromLocal8Bit(argv[1]).toInt()) : 3;
    const QByteArray image = pageImage();
    std::printf("page image: 566 x 800 PNG, %d bytes; %d cards; %d runs\n", image.size(), kCards, runs);
    for (int i = 0; i < runs; ++i) {
        const Result r = run(image);
        std::printf("run %d: cards in DOM %lld ms | all thumbnails set %lld ms | "
                    "longest GUI stall while thumbnails load %lld ms (GUI thread busy %lld ms of it) | "
                    "reloadCards() itself %lld ms\n",
                    i + 1, static_cast<long long>(r.cardsMs), static_cast<long long>(r.thumbnailsMs),
                    static_cast<long long>(r.thumbnailStallMs), static_cast<long long>(r.stallCpuMs),
                    static_cast<long long>(r.reloadMs));
        std::fflush(stdout);
    }
    return 0;
}
