#include "orvexdockreadiness.h"

#include "orvexboardprobe.h"

#include <QSharedPointer>
#include <QWebEnginePage>
#include <QWebEngineView>
#include <QWindow>

#include <algorithm>

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

QString OrvexDockReadiness::pendingDescription() const
{
    if (!m_window)
        return tr("the window was closed");
    if (!m_dock)
        return tr("the workbench dock to be shown");
    if (!windowAndDockShown())
        return m_window->isVisible() ? tr("the workbench dock to be shown") : tr("the window to be shown");
    if (m_pending.boards > 0)
        return tr("%1 of %n board(s) to finish loading", nullptr, m_boardCount).arg(m_pending.boards);
    if (m_pending.thumbnails > 0) {
        QStringList titles;
        for (const QString &title : m_pending.titles)
            titles << tr("\"%1\"").arg(title);
        return tr("the thumbnails of %1 of %n card(s) on %2", nullptr, m_pending.cards)
            .arg(m_pending.thumbnails)
            .arg(titles.join(QStringLiteral(", ")));
    }
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

void OrvexDockReadiness::checkBoardsFinishedLoading(const std::function<void(bool, const Pending &)> &done)
{
    // Only the boards on screen make the picture: the others get their page
    // when their tab is shown.
    QList<QWebEngineView *> views = boards();
    views.erase(std::remove_if(views.begin(), views.end(), [](QWebEngineView *view) { return !view->isVisible(); }),
                views.end());
    m_boardCount = views.size();
    auto pending = QSharedPointer<Pending>::create();
    QList<QWebEngineView *> toAsk;
    for (QWebEngineView *view : views) {
        trackLoading(view);
        if (m_loading.contains(view) || view->url().isEmpty())
            ++pending->boards;
        else
            toAsk << view;
    }
    if (toAsk.isEmpty()) {
        done(pending->boards == 0, *pending);
        return;
    }

    // Each page answers on its own; the last answer decides.
    auto outstanding = QSharedPointer<int>::create(int(toAsk.size()));
    for (QWebEngineView *view : qAsConst(toAsk)) {
        const QString title = OrvexBoardProbe::tabTitleOf(view);
        OrvexBoardProbe::probe(view, [pending, outstanding, done, title](const OrvexBoardState &state) {
            if (!state.answered || !state.complete) {
                ++pending->boards;
            } else if (state.thumbnails < state.cards) {
                pending->cards += state.cards;
                pending->thumbnails += state.cards - state.thumbnails;
                pending->titles << title;
            }
            if (--*outstanding == 0)
                done(pending->boards == 0 && pending->thumbnails == 0, *pending);
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
    checkBoardsFinishedLoading([self, round](bool finished, const Pending &pending) {
        if (!self || round != self->m_round || self->m_ready)
            return;
        self->m_roundRunning = false;
        self->m_pending = pending;
        self->m_readyRounds = finished ? self->m_readyRounds + 1 : 0;
        if (self->m_readyRounds >= roundsNeeded) {
            self->m_ready = true;
            self->m_timer.stop();
            emit self->ready();
        }
    });
}
