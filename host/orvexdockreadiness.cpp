#include "orvexdockreadiness.h"

#include <QSharedPointer>
#include <QWebEnginePage>
#include <QWebEngineView>
#include <QWindow>

namespace {
// A round of page queries that has not answered by then is given up and asked again.
constexpr int staleRoundMs = 5000;
constexpr int roundsNeeded = 2;
} // namespace

OrvexDockReadiness::OrvexDockReadiness(QWidget *window, QWidget *dock, QObject *parent)
    : QObject(parent), m_window(window), m_dock(dock)
{
    connect(&m_timer, &QTimer::timeout, this, &OrvexDockReadiness::poll);
}

void OrvexDockReadiness::start(int intervalMs)
{
    m_ready = false;
    m_readyRounds = 0;
    m_timer.start(intervalMs);
    poll();
}

QString OrvexDockReadiness::boardFinishedScript()
{
    return QStringLiteral(
        "(function () {"
        " if (document.readyState !== 'complete') return false;"
        " for (var i = 0; i < document.images.length; ++i)"
        "  if (!document.images[i].complete) return false;"
        " return true;"
        "})();");
}

QString OrvexDockReadiness::pendingDescription() const
{
    if (!m_window)
        return tr("the window was closed");
    if (!m_dock)
        return tr("the workbench dock to be shown");
    if (!windowAndDockShown())
        return m_window->isVisible() ? tr("the workbench dock to be shown") : tr("the window to be shown");
    if (m_pendingBoards > 0)
        return tr("%1 of %n board(s) to finish loading", nullptr, m_boardCount).arg(m_pendingBoards);
    return tr("the boards to settle");
}

bool OrvexDockReadiness::windowAndDockShown() const
{
    if (!m_window || !m_dock || !m_window->isVisible() || !m_dock->isVisible())
        return false;
    const QWindow *handle = m_window->windowHandle();
    return handle && handle->isExposed();
}

QList<QWebEngineView *> OrvexDockReadiness::boards() const
{
    return m_dock ? m_dock->findChildren<QWebEngineView *>() : QList<QWebEngineView *>();
}

void OrvexDockReadiness::trackLoading(QWebEngineView *board)
{
    if (m_tracked.contains(board))
        return;
    m_tracked.insert(board);
    connect(board, &QWebEngineView::loadStarted, this, [this, board] { m_loading.insert(board); });
    connect(board, &QWebEngineView::loadFinished, this, [this, board] { m_loading.remove(board); });
    connect(board, &QObject::destroyed, this, [this, board] {
        m_tracked.remove(board);
        m_loading.remove(board);
    });
}

void OrvexDockReadiness::checkBoardsFinishedLoading(const std::function<void(bool, int)> &done)
{
    const QList<QWebEngineView *> views = boards();
    m_boardCount = views.size();
    int pending = 0;
    QList<QWebEngineView *> toAsk;
    for (QWebEngineView *view : views) {
        trackLoading(view);
        if (m_loading.contains(view) || view->url().isEmpty())
            ++pending;
        else
            toAsk << view;
    }
    if (toAsk.isEmpty()) {
        done(pending == 0, pending);
        return;
    }

    // Each page answers on its own; the last answer decides.
    struct Tally
    {
        int outstanding;
        int pending;
    };
    auto tally = QSharedPointer<Tally>::create(Tally{int(toAsk.size()), pending});
    for (QWebEngineView *view : qAsConst(toAsk)) {
        view->page()->runJavaScript(boardFinishedScript(), [tally, done](const QVariant &finished) {
            if (!finished.toBool())
                ++tally->pending;
            if (--tally->outstanding == 0)
                done(tally->pending == 0, tally->pending);
        });
    }
}

void OrvexDockReadiness::poll()
{
    if (m_ready)
        return;
    if (!windowAndDockShown()) {
        m_readyRounds = 0;
        return;
    }
    if (m_roundRunning && m_roundStarted.elapsed() < staleRoundMs)
        return;

    const int round = ++m_round;
    m_roundRunning = true;
    m_roundStarted.start();
    QPointer<OrvexDockReadiness> self(this);
    checkBoardsFinishedLoading([self, round](bool finished, int pending) {
        if (!self || round != self->m_round || self->m_ready)
            return;
        self->m_roundRunning = false;
        self->m_pendingBoards = pending;
        self->m_readyRounds = finished ? self->m_readyRounds + 1 : 0;
        if (self->m_readyRounds >= roundsNeeded) {
            self->m_ready = true;
            self->m_timer.stop();
            emit self->ready();
        }
    });
}
