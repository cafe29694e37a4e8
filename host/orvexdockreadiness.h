#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QPointer>
#include <QSet>
#include <QStringList>
#include <QTimer>

#include <functional>

class QWebEngineView;

// Tells when the workbench dock shows its final picture: the window and the
// dock are on screen, every board shown in the dock has finished loading and
// every card on it shows its thumbnail. It
// polls, because boards come and go while the dock fills its tabs, and it
// wants the answer twice in a row before it believes it.
class OrvexDockReadiness : public QObject
{
    Q_OBJECT

public:
    OrvexDockReadiness(QWidget *window, QWidget *dock, QObject *parent = nullptr);

    void start(int intervalMs = 250);
    bool isReady() const { return m_ready; }
    // What is still awaited, for the message when the wait times out.
    QString pendingDescription() const;

signals:
    void ready();

private:
    void poll();
    bool windowAndDockShown() const;
    QList<QWebEngineView *> boards() const;
    void trackLoading(QWebEngineView *board);
    // What a round of checks found still missing.
    struct Pending
    {
        int boards = 0;     // pages not loaded yet
        int cards = 0;      // cards on the boards whose thumbnails are missing
        int thumbnails = 0; // thumbnails missing on those boards
        QStringList titles; // the tabs of those boards
    };
    // Whether every board shown in the dock has finished loading: its page is set,
    // no load is in flight, the page reports that it is complete and each of
    // its cards shows its thumbnail. Answers through done, once, possibly
    // after the event loop ran.
    void checkBoardsFinishedLoading(const std::function<void(bool finished, const Pending &pending)> &done);

    QPointer<QWidget> m_window;
    QPointer<QWidget> m_dock;
    QTimer m_timer;
    QSet<QWebEngineView *> m_tracked;
    QSet<QWebEngineView *> m_loading;
    QElapsedTimer m_roundStarted;
    int m_round = 0;
    bool m_roundRunning = false;
    int m_readyRounds = 0;
    int m_boardCount = 0;
    Pending m_pending;
    bool m_ready = false;
};
