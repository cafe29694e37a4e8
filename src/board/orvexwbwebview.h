#pragma once

#include "orvexworkbenchglobal.h"

#include <QHash>
#include <QList>
#include <QMap>
#include <QMimeData>
#include <QMutex>
#include <QPixmap>
#include <QPointer>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QTimer>
#include <QTabBar>
#include <QWebEngineView>

#include <atomic>

class ClassifyInterface;
class QDragEnterEvent;
class QDragMoveEvent;
class QDropEvent;

class QWebChannel;
class kelArchiveClientInterface;
class OrvexArchiveWorker;
class OrvexUndoOffer;
class orvexboardjobs;
class orvexcardbridge;

// One clipboard shown as a page of cards. The page (card-webchannel.html) calls
// the board only through its bridge (orvexcardbridge), which the web channel
// publishes as "cardHandler"; the program talks to the page only through scripts.
//
// Everything that waits on a client runs on the board's own work pool
// (orvexboardjobs) and comes back to the GUI thread through queued signals.
// stop() cancels the jobs that have not started yet and waits for the running
// ones; after it, no script reaches the page and no new job starts. The scripts
// come from orvexcardscripts.
class ORVEXWORKBENCH_EXPORT orvexwbwebview : public QWebEngineView
{
    Q_OBJECT
    // The clipboard's uuid, for hosts that keep the tab shown across restarts.
    Q_PROPERTY(QString clipboardId READ getId)

public:
    explicit orvexwbwebview(QWidget *parent = nullptr);
    ~orvexwbwebview() override;

    void setWriteable(bool writeable);
    bool isWriteable() const;
    // Sends the current writeable flag to the page again.
    void updateWriteable();

    QString getId() const;
    void setId(const QString &id);
    QString getTabText() const;
    void setTabText(const QString &text);

    void setArchiveClient(kelArchiveClientInterface *client);
    // Stores the client and reloads the type and status tables from it.
    void setClassifyClient(ClassifyInterface *client);

    // Writes the translated labels into the page.
    void updateTranslations();
    // Reconciles the page with the server in the background.
    void updateCards();
    // Reloads the document-type and status tables.
    void loadClassificationInfo();

    void lock();
    bool tryLock(int timeout);

    // Read-only views for callers and tests.
    int cardCount() const;
    QStringList cardIds() const;
    QString documentIdOf(const QString &cardId) const;
    bool isStopped() const;
    // Whether a background update is running.
    bool isUpdating() const;
    static int cardLimit();
    // The longest note the archive keeps, in characters (the page's limit too).
    static constexpr int MaxNoteLength = 1024;

    // Whether a drag carrying data may be dropped here: a writeable board with
    // room for another card and the drag marker "x-application-orvex".
    bool canAcceptDrop(const QMimeData *data) const;
    // Why a drag of documents cannot be dropped here (read-only, full), for
    // the user; empty when it can or when it is no drag of documents.
    QString refusal(const QMimeData *data) const;
    // Stores each new entry on the server and shows it as a card, under a modal
    // progress dialog the user may cancel; what was added stays. notes, where
    // given, are parallel to the ids and become the new entries' notes. Sorts,
    // scrolls to the last added card and posts the snackbar message. Returns
    // the count added.
    int addDocuments(const QStringList &docIds, const QStringList &docsIds, const QStringList &notes = {});
    // Sends the scripts queued so far to the page now, in one run, each in a
    // block of its own so that one that fails does not stop the next. A
    // script run on the page after this sees what they did.
    void flushScripts();

signals:
    void doSetCardPixmap(QString cardid, QString docid, QString curpage, QString pageCount, QPixmap pix);
    void reloadCardPixmap(QString cardid, QString docid, QString curpage, QString pageCount);
    void cardData(QString id, QStringList data);
    void addNewClipboard();
    void doRemoveClipboard();
    void doCommand(QString command, QStringList args);
    void doAddCard(QString docId, QString docsId, QString comment);
    void doRemoveCard(QString id, bool doServer);
    void doUpdateComment(QString id, QString comment);
    void doSortCards();
    void reloadClipboards();
    void javascript(QString script);
    void focusTab();

public slots:
    void addClipboard();
    void clearClipboard();
    void removeClipboard();
    void searchCards(QString text);
    // Stores a card's note as the user typed it; false when the server refused it.
    bool saveCard(QString id, QString text);
    // Tells the user that a note was cut to the limit the archive keeps.
    void noteCut(QString id);
    void openDocument(QString id, QString bemerkung, QString cardid);
    void showClassification(QString id);
    QString getCardPixmap(QString cardid, QString docid, QString curpage);
    void startDrag();
    void stopDrag();
    // Drags the card's document as every document drag does (OrvexMimeData,
    // its note as remark), so that other boards and folders take it; the
    // drag timer runs meanwhile, so holding it over a tab opens that tab.
    void dragCard(QString cardId);
    void loadCardInfo(QString id);
    void exportDocuments();
    void mailDocuments();
    void setPermissions();
    QString getTranslation(QString label);
    void emitAddClipboard();
    void unlock();
    void stop();
    void doJavascript(QString jscript);
    void doReloadCardPixmap(QString cardid, QString docid, QString curpage, QString pageCount);
    void setCardPixmap(QString cardid, QString docid, QString curpage, QString pageCount, QPixmap pix);
    void setPix(QString cardid, QString javascript, QPixmap pix);
    void setCardData(QString id, QStringList data);
    void checkDrag();
    QString appendCard(QString docId, QString docsId, QString comment = QString(), bool doAdd = true);
    void reloadCards();
    void updateComment(QString id, QString comment);
    // doServer: the user removes the card. It leaves the page at once and
    // the server when the time to undo is over (or the board closes); until
    // then "Undo" in the status bar puts it back with its note and place.
    void removeCard(QString id, bool doServer);
    void sortCards();
    void doFocusTab();

protected:
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    QString countLine() const;
    // Queues a script for the page: soon, or with the next batch of images.
    void queueScript(const QString &script, bool soon);
    // One image asked for by the page is on its way to it; true when it was
    // the last one under way.
    bool imageSent();
    // Runs a script in the page, or keeps it until the page has loaded.
    void runScript(const QString &script);
    void pageLoaded();
    void runCardDrag(const QString &cardId);
    QString noteOf(const QString &cardId) const;
    // Takes the card off the page and out of the cards hash.
    void dropCard(const QString &id);
    // The two ends of a removal the user may undo.
    void commitCardRemoval(const QString &id, const QString &docId);
    void restoreCard(const QString &id, const QString &docId, const QString &note);
    // Ends every removal still open to undo: final on the server, or (when
    // the caller clears the whole clipboard there) just no longer offered.
    void settleCardRemovals(bool onServer);

    orvexboardjobs *m_jobs = nullptr;
    QMap<QString, QString> m_translations;
    bool m_writeable = true;
    QMutex m_lock;
    QPointer<kelArchiveClientInterface> m_archiveClient;
    ClassifyInterface *m_classifyClient = nullptr;
    QHash<QString, QString> m_cards;
    // Cards removed by the user that are still on the server, each with its
    // offer to undo; no reload or update brings them back meanwhile.
    QHash<QString, QPointer<OrvexUndoOffer>> m_pendingRemovals;
    QHash<QString, QString> m_documentTypes;
    QHash<QString, QString> m_statuses;
    QPointer<QTabBar> m_lastTabBar;
    int m_lastTabIndex = -1;
    QTimer m_dragTimer;
    QString m_id;
    QString m_tabText;
    std::atomic<bool> m_updating{false};
    bool m_reloading = false;
    const int m_cardLimit = 200;
    orvexcardbridge *m_bridge = nullptr;
    OrvexArchiveWorker *m_dragWorker = nullptr; // exports the cards dragged out
    bool m_cardDragRunning = false;
    QPointer<QMimeData> m_refusedDrag; // the drag last told why it cannot be dropped here
    QWebChannel *m_channel = nullptr;
    QPixmap m_placeholder; // 150 x 150, for pages without an image
    QMutex m_scriptsMutex; // guards the three below, filled by pool threads too
    QStringList m_pendingScripts;
    bool m_flushSoon = false;    // a flush is posted to the event loop
    bool m_batchStarted = false; // images wait for the batch timer
    QTimer m_flushTimer; // sends the images gathered meanwhile
    QSet<QString> m_pictured; // cards whose first image has come
    std::atomic<int> m_imagesUnderWay{0}; // asked for by the page, not yet sent to it
    bool m_pageReady = false;
    QStringList m_waitingForPage;
};
