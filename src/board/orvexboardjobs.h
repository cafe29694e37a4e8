#pragma once

#include "orvexworkbenchglobal.h"

#include <QFuture>
#include <QHash>
#include <QList>
#include <QObject>
#include <QPixmap>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <QThreadPool>

#include <atomic>
#include <functional>

class ClassifyInterface;
class kelArchiveClientInterface;

// The board's background work: a pool of its own, the future of every job
// started on it, and the jobs. A job works on values copied on the GUI thread
// and on the borrowed clients, never touches the page, and reports only through
// its signals, which the board relays to its own. stop() cancels the jobs that
// have not started and waits for the running ones, which check the stopped flag
// between their steps and return early.
class ORVEXWORKBENCH_EXPORT orvexboardjobs : public QObject
{
    Q_OBJECT

public:
    explicit orvexboardjobs(QObject *parent = nullptr);
    ~orvexboardjobs() override;

    // How soon a job runs: among the jobs waiting, those of a higher priority
    // start first, and jobs of one priority in the order they came.
    enum Priority {
        Background = 0, // card info, updates, the first pages of the cards
        Finish = 1,     // the last step of an image already fetched
        User = 2        // what the user asked for just now (a page step)
    };
    // Runs job on the pool and keeps its future; false once stopped.
    bool start(std::function<void()> job, Priority priority = Background);
    // Safe to call more than once.
    void stop();
    bool isStopped() const;

    // The jobs, each called on a pool thread.

    // The fields of one card, unless the client answers fewer than five.
    void loadCardInfo(ClassifyInterface *client, const QString &cardId);
    // Reconciles the cards (card id -> document id) with the clipboard on the
    // server: new entries added, notes updated, the info of every card sent,
    // cards gone from the server taken off the page. A failed query changes
    // nothing. False when stopped before the end.
    bool updateCards(ClassifyInterface *client, const QString &clipboardId,
                     const QHash<QString, QString> &cards);
    // One page of a document scaled for its card; the placeholder when the
    // client has no image for it or the bytes are none. False when nothing
    // was sent (stopped, or no client).
    bool fetchThumbnail(const QPointer<kelArchiveClientInterface> &client, const QString &cardId,
                        const QString &docId, const QString &page, const QPixmap &placeholder);
    // Sends the image to the page as PNG, after the script that prepares the card.
    void sendThumbnail(const QString &cardId, const QString &script, const QPixmap &pix);
    // Whether the calling thread is sending an image's script just now: such
    // a script touches only its own card and may reach the page together
    // with others of its kind.
    static bool isSendingThumbnail();

signals:
    void cardData(QString id, QStringList data);
    void doAddCard(QString docId, QString docsId, QString comment);
    void doUpdateComment(QString id, QString comment);
    void doRemoveCard(QString id, bool doServer);
    void doSetCardPixmap(QString cardid, QString docid, QString curpage, QString pageCount, QPixmap pix);
    void javascript(QString script);

private:
    QThreadPool m_workPool;
    // Constructed and destroyed with the board; no job runs on it.
    QThreadPool m_secondPool;
    QList<QFuture<void>> m_futures;
    std::atomic<bool> m_stopped{false};
};
