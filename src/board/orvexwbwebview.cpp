#include "orvexwbwebview.h"

#include "classifyinterface.h"
#include "kelarchiveclientinterface.h"
#include "orvexarchiveworker.h"
#include "orvexboardjobs.h"
#include "orvexcardbridge.h"
#include "orvexcardscripts.h"
#include "orvexcbrights.h"
#include "orvexlog.h"
#include "orvexmimedata.h"
#include "orvexundooffer.h"
#include "qsnackbarevent.h"

#include <QApplication>
#include <QCursor>
#include <QDrag>
#include <QDragMoveEvent>
#include <QDropEvent>
#include <QFile>
#include <QIcon>
#include <QLocale>
#include <QMessageBox>
#include <QProgressDialog>
#include <QThread>
#include <QUuid>
#include <QVector>
#include <QWebChannel>
#include <QWebEnginePage>

#include <algorithm>
#include <utility>

namespace {

const QChar kSep(0xFEFF);
// How long the cards' first images gather before they go to the page.
const int kImageBatchMs = 200;
// Set on a pool thread while it sends the image of a page the user turned to,
// or the last image under way, which waits for no others.
thread_local bool t_urgentImage = false;
// Set on the GUI thread while it tells the page that a card's image is loading.
thread_local bool t_imageLoading = false;
const QString kDragMarker = QStringLiteral("x-application-orvex");

// Page labels: the English text is the key, the element id is derived from it.
const char *const kPageLabels[] = {
    QT_TRANSLATE_NOOP("orvexwbwebview", "New Clipboard"),
    QT_TRANSLATE_NOOP("orvexwbwebview", "Clear Clipboard"),
    QT_TRANSLATE_NOOP("orvexwbwebview", "Remove Clipboard"),
    QT_TRANSLATE_NOOP("orvexwbwebview", "Export Documents"),
    QT_TRANSLATE_NOOP("orvexwbwebview", "Mail Documents"),
    QT_TRANSLATE_NOOP("orvexwbwebview", "Permissions"),
    QT_TRANSLATE_NOOP("orvexwbwebview", "Drop Document here"),
    QT_TRANSLATE_NOOP("orvexwbwebview", "Search..."),
    // Accessible names of the icon buttons and the thumbnails.
    QT_TRANSLATE_NOOP("orvexwbwebview", "Run search"),
    QT_TRANSLATE_NOOP("orvexwbwebview", "Clear search"),
    QT_TRANSLATE_NOOP("orvexwbwebview", "Clipboard menu"),
    QT_TRANSLATE_NOOP("orvexwbwebview", "Card menu"),
    QT_TRANSLATE_NOOP("orvexwbwebview", "Remove Card"),
    QT_TRANSLATE_NOOP("orvexwbwebview", "First page"),
    QT_TRANSLATE_NOOP("orvexwbwebview", "Previous page"),
    QT_TRANSLATE_NOOP("orvexwbwebview", "Next page"),
    QT_TRANSLATE_NOOP("orvexwbwebview", "Last page"),
    QT_TRANSLATE_NOOP("orvexwbwebview", "Page %1 of %2"),
};

// Only ids that may stand in a script are taken (see orvexcardscripts::isId).
bool isId(const QString &text)
{
    return orvexcardscripts::isId(text);
}

const QString &cardTemplate()
{
    static const QString text = [] {
        QFile file(QStringLiteral(":/material/card-module.html"));
        if (!file.open(QIODevice::ReadOnly))
            return QString();
        return QString::fromUtf8(file.readAll());
    }();
    return text;
}

} // namespace

orvexwbwebview::orvexwbwebview(QWidget *parent)
    : QWebEngineView(parent)
    , m_id(QUuid::createUuid().toString())
{
    m_dragTimer.setInterval(200);
    connect(&m_dragTimer, &QTimer::timeout, this, &orvexwbwebview::checkDrag);

    setAttribute(Qt::WA_MouseTracking);

    m_bridge = new orvexcardbridge(this);
    m_channel = new QWebChannel(page());
    page()->setWebChannel(m_channel);
    m_channel->registerObject(QStringLiteral("cardHandler"), m_bridge);

    // The jobs report from pool threads; relayed directly, their signals reach
    // the queued connections below as if the board had sent them.
    m_jobs = new orvexboardjobs(this);
    connect(m_jobs, &orvexboardjobs::cardData, this, &orvexwbwebview::cardData, Qt::DirectConnection);
    connect(m_jobs, &orvexboardjobs::doAddCard, this, &orvexwbwebview::doAddCard, Qt::DirectConnection);
    connect(m_jobs, &orvexboardjobs::doUpdateComment, this, &orvexwbwebview::doUpdateComment,
            Qt::DirectConnection);
    connect(m_jobs, &orvexboardjobs::doRemoveCard, this, &orvexwbwebview::doRemoveCard, Qt::DirectConnection);
    connect(m_jobs, &orvexboardjobs::doSetCardPixmap, this, &orvexwbwebview::doSetCardPixmap,
            Qt::DirectConnection);
    connect(m_jobs, &orvexboardjobs::javascript, this, &orvexwbwebview::javascript, Qt::DirectConnection);

    // Called on the emitting thread: doJavascript() hands the scripts of the
    // pool threads to the GUI thread, the cards' images in batches.
    connect(this, &orvexwbwebview::javascript, this, &orvexwbwebview::doJavascript, Qt::DirectConnection);
    m_flushTimer.setSingleShot(true);
    m_flushTimer.setInterval(kImageBatchMs);
    connect(&m_flushTimer, &QTimer::timeout, this, &orvexwbwebview::flushScripts);
    // Scripts sent before the page is there wait for it: a board may learn its
    // cards while its page still loads.
    connect(this, &QWebEngineView::loadStarted, this, [this] { m_pageReady = false; });
    connect(this, &QWebEngineView::loadFinished, this, &orvexwbwebview::pageLoaded);
    // appendCard has default arguments; the three-argument form is picked by signature.
    connect(this, SIGNAL(doAddCard(QString,QString,QString)), this,
            SLOT(appendCard(QString,QString,QString)), Qt::QueuedConnection);
    connect(this, &orvexwbwebview::doRemoveCard, this, &orvexwbwebview::removeCard);
    connect(this, &orvexwbwebview::reloadCardPixmap, this, &orvexwbwebview::doReloadCardPixmap,
            Qt::QueuedConnection);
    connect(this, &orvexwbwebview::doSetCardPixmap, this, &orvexwbwebview::setCardPixmap,
            Qt::QueuedConnection);
    connect(this, &orvexwbwebview::cardData, this, &orvexwbwebview::setCardData,
            Qt::QueuedConnection);
    connect(this, &orvexwbwebview::doUpdateComment, this, &orvexwbwebview::updateComment,
            Qt::QueuedConnection);
    connect(this, &orvexwbwebview::doSortCards, this, &orvexwbwebview::sortCards,
            Qt::QueuedConnection);

    for (const char *label : kPageLabels)
        m_translations.insert(QString::fromLatin1(label), tr(label));

    // Rendered here because icons and the pixmap cache belong to the GUI thread;
    // the work pool only copies it.
    m_placeholder = QIcon(QStringLiteral(":/material/visibility_off.svg")).pixmap(150, 150);
}

orvexwbwebview::~orvexwbwebview()
{
    stop();
    settleCardRemovals(true);
    if (m_archiveClient)
        m_archiveClient->resetConnection();
    m_channel->deregisterObject(m_bridge);
    orvexDebug() << "WEBVIEW DESTROYED";
}

// --- plain members ---------------------------------------------------------

void orvexwbwebview::setWriteable(bool writeable)
{
    m_writeable = writeable;
    updateWriteable();
}

bool orvexwbwebview::isWriteable() const
{
    return m_writeable;
}

void orvexwbwebview::updateWriteable()
{
    emit javascript(orvexcardscripts::writeable(m_writeable));
}

QString orvexwbwebview::getId() const
{
    return m_id;
}

void orvexwbwebview::setId(const QString &id)
{
    m_id = id;
}

QString orvexwbwebview::getTabText() const
{
    return m_tabText;
}

void orvexwbwebview::setTabText(const QString &text)
{
    m_tabText = text;
}

void orvexwbwebview::setArchiveClient(kelArchiveClientInterface *client)
{
    m_archiveClient = client;
    if (m_dragWorker)
        m_dragWorker->setArchiveClient(client);
}

void orvexwbwebview::setClassifyClient(ClassifyInterface *client)
{
    m_classifyClient = client;
    loadClassificationInfo();
}

void orvexwbwebview::updateTranslations()
{
    for (auto it = m_translations.cbegin(); it != m_translations.cend(); ++it)
        doJavascript(orvexcardscripts::translation(it.key(), it.value()));
}

void orvexwbwebview::lock()
{
    m_lock.lock();
}

bool orvexwbwebview::tryLock(int timeout)
{
    return m_lock.tryLock(timeout);
}

int orvexwbwebview::cardCount() const
{
    return m_cards.size();
}

QStringList orvexwbwebview::cardIds() const
{
    return m_cards.keys();
}

QString orvexwbwebview::documentIdOf(const QString &cardId) const
{
    return m_cards.value(cardId);
}

bool orvexwbwebview::isStopped() const
{
    return m_jobs->isStopped();
}

bool orvexwbwebview::isUpdating() const
{
    return m_updating;
}

int orvexwbwebview::cardLimit()
{
    return 200;
}

// --- script bridge ---------------------------------------------------------

void orvexwbwebview::doJavascript(QString jscript)
{
    if (isStopped())
        return;
    const bool image = orvexboardjobs::isSendingThumbnail() || t_imageLoading;
    if (!image && QThread::currentThread() != thread()) {
        // In its place among the other signals the job sends.
        QMetaObject::invokeMethod(this, [this, jscript] { doJavascript(jscript); }, Qt::QueuedConnection);
        return;
    }
    queueScript(jscript, !image || t_urgentImage);
}

void orvexwbwebview::queueScript(const QString &script, bool soon)
{
    // Scripts reach the page in the order they were sent, gathered into one
    // run per turn of the event loop: the page lays out and paints once for
    // many of them. The cards' first images (and their loading texts) wait
    // for others up to kImageBatchMs; everything else, and a page the user
    // turned to, goes with the next turn, taking along what waits.
    QMutexLocker locker(&m_scriptsMutex);
    m_pendingScripts << script;
    if (soon) {
        if (!std::exchange(m_flushSoon, true))
            QMetaObject::invokeMethod(this, &orvexwbwebview::flushScripts, Qt::QueuedConnection);
    } else if (!std::exchange(m_batchStarted, true)) {
        QMetaObject::invokeMethod(this, [this] {
            if (!m_flushTimer.isActive())
                m_flushTimer.start();
        }, Qt::QueuedConnection);
    }
}

void orvexwbwebview::flushScripts()
{
    m_flushTimer.stop();
    QStringList scripts;
    {
        QMutexLocker locker(&m_scriptsMutex);
        scripts = std::exchange(m_pendingScripts, {});
        m_flushSoon = false;
        m_batchStarted = false;
    }
    if (isStopped() || scripts.isEmpty())
        return;
    if (scripts.size() == 1) {
        runScript(scripts.first());
        return;
    }
    int length = 0;
    for (const QString &script : qAsConst(scripts))
        length += script.size() + 24;
    QString batch;
    batch.reserve(length);
    for (const QString &script : qAsConst(scripts))
        batch += QStringLiteral("try{") + script + QStringLiteral("\n}catch(e){}");
    batch += QStringLiteral("null;");
    runScript(batch);
}

void orvexwbwebview::runScript(const QString &script)
{
    if (m_pageReady)
        page()->runJavaScript(script);
    else
        m_waitingForPage << script;
}

void orvexwbwebview::pageLoaded()
{
    m_pageReady = true;
    const QStringList scripts = std::exchange(m_waitingForPage, {});
    for (const QString &script : scripts)
        page()->runJavaScript(script);
}

QString orvexwbwebview::getTranslation(QString label)
{
    return m_translations.value(label, label);
}

void orvexwbwebview::addClipboard()
{
    // The delay lets the page's menu close before the tab set opens its dialog.
    QTimer::singleShot(100, this, &orvexwbwebview::emitAddClipboard);
}

void orvexwbwebview::emitAddClipboard()
{
    emit addNewClipboard();
}

void orvexwbwebview::removeClipboard()
{
    if (m_writeable)
        emit doRemoveClipboard();
}

void orvexwbwebview::doFocusTab()
{
    emit focusTab();
}

void orvexwbwebview::unlock()
{
    m_lock.unlock();
}

void orvexwbwebview::sortCards()
{
    emit javascript(orvexcardscripts::sortCards());
}

void orvexwbwebview::stop()
{
    m_jobs->stop();
}

// --- drags -----------------------------------------------------------------

void orvexwbwebview::startDrag()
{
    orvexDebug() << "WEBVIEW" << "START DRAG";
    m_dragTimer.start();
}

void orvexwbwebview::stopDrag()
{
    orvexDebug() << "WEBVIEW" << "STOP DRAG";
    m_dragTimer.stop();
}

void orvexwbwebview::dragCard(QString cardId)
{
    if (isStopped() || m_cardDragRunning || !m_cards.contains(cardId))
        return;
    // The page's call arrives inside the web channel's message handling; the
    // drag runs its own event loop, so it starts on a fresh turn.
    QTimer::singleShot(0, this, [this, cardId] { runCardDrag(cardId); });
}

QString orvexwbwebview::noteOf(const QString &cardId) const
{
    QStringList entries, notes;
    if (!m_classifyClient || !m_classifyClient->getClipboardDocuments(m_id, entries, notes))
        return QString();
    for (int i = 0; i < entries.size(); ++i) {
        if (entries.at(i).section(kSep, 1, 1) == cardId)
            return notes.value(i);
    }
    return QString();
}

void orvexwbwebview::runCardDrag(const QString &cardId)
{
    // Released meanwhile, or the card went away: no drag, and the preview closes.
    if (isStopped() || !m_cards.contains(cardId) || !(QGuiApplication::mouseButtons() & Qt::LeftButton)) {
        emit javascript(orvexcardscripts::dragFinished());
        return;
    }
    if (!m_dragWorker) {
        m_dragWorker = new OrvexArchiveWorker(this);
        m_dragWorker->setArchiveClient(m_archiveClient);
        m_dragWorker->setParentWidget(this);
    }
    OrvexMimeData::Document document;
    document.docId = m_cards.value(cardId).toLongLong();
    document.docsId = cardId.toLongLong();
    document.remark = noteOf(cardId);
    OrvexMimeData *data = OrvexMimeData::create({document}, m_classifyClient, m_dragWorker);

    auto *drag = new QDrag(this);
    drag->setMimeData(data);
    drag->setPixmap(OrvexMimeData::dragBadge(1, palette()));
    connect(drag, &QDrag::targetChanged, data, &OrvexMimeData::setCurrentWidget);
    m_cardDragRunning = true;
    startDrag();
    drag->exec(Qt::CopyAction, Qt::CopyAction);
    stopDrag();
    m_cardDragRunning = false;
    // The drag is Qt's now: a target may still ask for its data after the
    // drop, and the platform deletes it once the transfer is over.
    emit javascript(orvexcardscripts::dragFinished());
}

void orvexwbwebview::checkDrag()
{
    const QPoint position = QCursor::pos();
    auto *tabBar = qobject_cast<QTabBar *>(QApplication::widgetAt(position));
    if (!tabBar)
        return;
    const int index = tabBar->tabAt(tabBar->mapFromGlobal(position));
    if (tabBar == m_lastTabBar && index == m_lastTabIndex && !tabBar->hasFocus()) {
        tabBar->setCurrentIndex(index);
        tabBar->raise();
    } else {
        m_lastTabBar = tabBar;
        m_lastTabIndex = index;
    }
}

// --- drops -----------------------------------------------------------------

bool orvexwbwebview::canAcceptDrop(const QMimeData *data) const
{
    return m_writeable && !isStopped() && m_cards.size() < m_cardLimit && data
           && data->hasFormat(kDragMarker);
}

QString orvexwbwebview::refusal(const QMimeData *data) const
{
    if (!data || !data->hasFormat(kDragMarker) || isStopped())
        return QString();
    if (!m_writeable)
        return tr("Clipboard %1 is read-only: documents cannot be added to it.").arg(m_tabText);
    if (m_cards.size() >= m_cardLimit)
        return tr("Clipboard %1 is full: it holds at most %2 documents.").arg(m_tabText).arg(m_cardLimit);
    return QString();
}

void orvexwbwebview::dragEnterEvent(QDragEnterEvent *event)
{
    // Document drags stay with the board: the page has no use for them, and
    // asking their data for URLs would make it export documents.
    if (event->mimeData() && event->mimeData()->hasFormat(kDragMarker)) {
        // A card over its own board goes nowhere; elsewhere the user learns
        // at once why a board will not take the documents, once per drag
        // however often it comes back over the board.
        const QString reason = event->source() == this ? QString() : refusal(event->mimeData());
        auto *data = const_cast<QMimeData *>(event->mimeData());
        if (!reason.isEmpty() && m_refusedDrag != data) {
            m_refusedDrag = data;
            QSnackbarEvent(reason).send();
        }
        event->acceptProposedAction();
        return;
    }
    QWebEngineView::dragEnterEvent(event);
}

void orvexwbwebview::dragMoveEvent(QDragMoveEvent *event)
{
    if (event->source() == this || !canAcceptDrop(event->mimeData())) {
        event->ignore();
        return;
    }
    orvexDebug() << "DRAG ENTER ACCEPT";
    event->setDropAction(event->proposedAction());
    event->accept();
}

void orvexwbwebview::dropEvent(QDropEvent *event)
{
    const QMimeData *data = event->mimeData();
    if (event->source() == this || !canAcceptDrop(data)) {
        event->ignore();
        return;
    }
    orvexDebug() << "DROP EVENT";
    QStringList docIds, docsIds;
    OrvexMimeData::readIdLists(data, docIds, docsIds);
    // A card from another board brings its note along; a list's remarks are
    // only the names its files would get.
    QStringList notes;
    const auto *own = qobject_cast<const OrvexMimeData *>(data);
    if (own && qobject_cast<orvexwbwebview *>(event->source())) {
        const QMap<QString, QString> remarks = own->getBemerkungen();
        for (const QString &docId : qAsConst(docIds))
            notes << remarks.value(docId);
    }
    event->setDropAction(event->proposedAction());
    event->accept();
    if (docIds.isEmpty()) {
        QSnackbarEvent(tr("Nothing was added to clipboard %1: the dragged data names no documents.").arg(m_tabText))
            .send();
        return;
    }
    addDocuments(docIds, docsIds, notes);
}

int orvexwbwebview::addDocuments(const QStringList &docIds, const QStringList &docsIds, const QStringList &notes)
{
    if (isStopped() || !m_writeable || !m_classifyClient || docIds.size() != docsIds.size())
        return 0;
    orvexDebug() << "TRY ADD DOCIDS TO CLIPBOARD" << docIds << docsIds;

    QProgressDialog progress(tr("Appending Documents..."), tr("Cancel"), 0, docIds.size(), this);
    progress.setWindowModality(Qt::WindowModal);
    progress.setMinimumDuration(0);
    progress.show();

    int added = 0;
    int already = 0;
    int leftOut = 0;
    int refused = 0;
    int invalid = 0;
    QString lastCard;
    for (int i = 0; i < docIds.size(); ++i) {
        progress.setValue(i);
        if (progress.wasCanceled())
            break;
        const QString &docId = docIds.at(i);
        const QString &docsId = docsIds.at(i);
        if (m_cards.contains(docsId)) {
            ++already;
            continue;
        }
        // Refused before the server sees them: an entry there without a card
        // here would be one the user never saw added.
        if (!isId(docId) || !isId(docsId)) {
            orvexWarning() << "DROP ENTRY REFUSED" << docId << docsId;
            ++invalid;
            continue;
        }
        if (m_cards.size() >= m_cardLimit) {
            for (int rest = i; rest < docIds.size(); ++rest)
                ++(m_cards.contains(docsIds.at(rest)) ? already : leftOut);
            break;
        }
        orvexDebug() << "ADD DOCIDS TO  CLIPBOARD " << docId << docsId;
        if (m_classifyClient->addToClipboard(m_id, docId, docsId)) {
            const QString note = notes.value(i);
            if (!note.isEmpty() && !m_classifyClient->setClipboardComment(m_id, docsId, note))
                orvexWarning() << "NOTE NOT STORED" << docsId;
            appendCard(docId, docsId, note, true);
            lastCard = docsId;
            ++added;
        } else {
            ++refused;
        }
        if (isStopped())
            break;
    }
    progress.close();

    if (!lastCard.isEmpty())
        emit javascript(orvexcardscripts::scrollToCard(lastCard));
    // One message for the whole drop, saying why what was not added was not.
    QStringList reasons;
    if (already > 0)
        reasons << tr("%n already on it", nullptr, already);
    if (leftOut > 0)
        reasons << tr("%n left out: it holds at most %1 documents", nullptr, leftOut).arg(m_cardLimit);
    if (refused > 0)
        reasons << tr("%n refused by the archive", nullptr, refused);
    if (invalid > 0)
        reasons << tr("%n without a valid id", nullptr, invalid);
    QString message = tr("Added %1 document(s) to clipboard %2").arg(QString::number(added), m_tabText);
    if (!reasons.isEmpty())
        message += QStringLiteral(" (") + reasons.join(QStringLiteral("; ")) + QLatin1Char(')');
    QSnackbarEvent(message).send();
    return added;
}

// --- cards -----------------------------------------------------------------

QString orvexwbwebview::countLine() const
{
    return orvexcardscripts::countLine(m_cards.size(), m_cardLimit);
}

QString orvexwbwebview::appendCard(QString docId, QString docsId, QString comment, bool doAdd)
{
    if (isStopped())
        return QString();
    if (m_cards.size() >= m_cardLimit)
        return QString();
    if (m_cards.contains(docsId) || m_pendingRemovals.contains(docsId))
        return QString();
    if (!isId(docId) || !isId(docsId)) {
        orvexWarning() << "APPEND CARD REFUSED" << docId << docsId;
        return QString();
    }
    m_cards.insert(docsId, docId);

    const orvexcardscripts::CardTexts texts{tr("Loading..."), tr("Notice..."), tr("Open Document"),
                                            tr("Remove Card"), tr("Show Classification")};
    const QString html = orvexcardscripts::cardHtml(cardTemplate(), docId, docsId, comment, texts);
    const QString script = orvexcardscripts::appendCard(html, docId, docsId);
    if (doAdd) {
        emit javascript(script);
        m_jobs->start([this, docsId] { loadCardInfo(docsId); });
    }
    emit javascript(countLine());
    return script;
}

void orvexwbwebview::removeCard(QString id, bool doServer)
{
    if (!isId(id)) {
        orvexWarning() << "REMOVE CARD REFUSED" << id;
        return;
    }
    if (doServer && m_cards.contains(id) && !m_writeable) {
        QSnackbarEvent(tr("Clipboard %1 is read-only: cards cannot be removed from it.").arg(m_tabText)).send();
        return;
    }
    if (doServer && m_cards.contains(id) && !isStopped()) {
        const QString docId = m_cards.value(id);
        const QString note = noteOf(id);
        dropCard(id);
        auto *offer = new OrvexUndoOffer(
            tr("Card %1 removed from clipboard %2.").arg(docId, m_tabText),
            [this, id, docId] { commitCardRemoval(id, docId); },
            [this, id, docId, note] { restoreCard(id, docId, note); }, this);
        m_pendingRemovals.insert(id, offer);
        offer->offer();
        return;
    }
    if (doServer && m_classifyClient)
        m_classifyClient->removeFromClipboard(m_id, id);
    dropCard(id);
}

void orvexwbwebview::dropCard(const QString &id)
{
    m_cards.remove(id);
    m_pictured.remove(id);
    queueScript(orvexcardscripts::maxPageQuery(id), true);
    orvexDebug() << "REMOVE CARD!";
    queueScript(orvexcardscripts::removeCard(id), true);
    orvexDebug() << "CARDIDS: " << m_cards.size();
    emit javascript(countLine());
}

void orvexwbwebview::commitCardRemoval(const QString &id, const QString &docId)
{
    // No longer pending: the whole clipboard was cleared meanwhile.
    if (!m_pendingRemovals.remove(id))
        return;
    if (m_classifyClient && m_classifyClient->removeFromClipboard(m_id, id))
        return;
    orvexWarning() << "REMOVE CARD refused" << id;
    // Still on the server: the next update brings the card back.
    QSnackbarEvent(tr("Card %1 could not be removed from clipboard %2.").arg(docId, m_tabText)).send();
    updateCards();
}

void orvexwbwebview::restoreCard(const QString &id, const QString &docId, const QString &note)
{
    m_pendingRemovals.remove(id);
    if (isStopped())
        return;
    if (appendCard(docId, id, note, true).isEmpty()) {
        // No room on the board: the entry must not stay on the server unseen.
        QSnackbarEvent(tr("Card %1 cannot come back: clipboard %2 is full.").arg(docId, m_tabText)).send();
        if (m_classifyClient)
            m_classifyClient->removeFromClipboard(m_id, id);
        return;
    }
    // Back in its place among the others, and in view.
    emit javascript(orvexcardscripts::scrollToCard(id));
}

void orvexwbwebview::settleCardRemovals(bool onServer)
{
    const QList<QPointer<OrvexUndoOffer>> offers = m_pendingRemovals.values();
    if (!onServer)
        m_pendingRemovals.clear(); // what is no longer pending is not committed
    for (const QPointer<OrvexUndoOffer> &offer : offers)
        if (offer)
            offer->commitNow();
    m_pendingRemovals.clear();
}

void orvexwbwebview::clearClipboard()
{
    // The server's clearing below takes the entries of the pending removals along.
    settleCardRemovals(false);
    // On a read-only board the server decides; the page stays as it is.
    if (m_writeable) {
        const QStringList ids = m_cards.keys();
        for (const QString &id : ids)
            removeCard(id, false);
    }
    if (m_classifyClient)
        m_classifyClient->clearClipboard(m_id);
}

bool orvexwbwebview::saveCard(QString id, QString text)
{
    if (!m_classifyClient || !isId(id))
        return false;
    if (m_classifyClient->setClipboardComment(m_id, id, text))
        return true;
    // The page keeps the note as typed and offers it again when its field is left.
    QSnackbarEvent(tr("The note could not be saved. Leave its field again to try once more.")).send();
    return false;
}

void orvexwbwebview::noteCut(QString id)
{
    if (!m_cards.contains(id))
        return;
    QSnackbarEvent(tr("A note holds at most %1 characters: the rest was left out.").arg(MaxNoteLength)).send();
}

void orvexwbwebview::updateComment(QString id, QString comment)
{
    if (!isId(id))
        return;
    emit javascript(orvexcardscripts::note(id, comment));
    emit javascript(orvexcardscripts::readOnly(id, m_writeable));
}

void orvexwbwebview::loadCardInfo(QString id)
{
    m_jobs->loadCardInfo(m_classifyClient, id);
}

void orvexwbwebview::setCardData(QString id, QStringList data)
{
    if (!isId(id))
        return;
    const QString status = m_statuses.value(data.value(6), tr("Unkown"));
    const QString type = m_documentTypes.value(data.value(3), tr("Unkown"));
    emit javascript(orvexcardscripts::cardData(id, status, type, data.value(2)));
}

void orvexwbwebview::loadClassificationInfo()
{
    if (!m_classifyClient)
        return;
    m_documentTypes.clear();
    m_statuses.clear();
    const auto fill = [](const QStringList &rows, QHash<QString, QString> &table) {
        for (const QString &row : rows) {
            const QStringList parts = row.split(kSep);
            // A row without a name is left out: its key shows as unknown.
            if (parts.size() >= 2)
                table.insert(parts.at(0), parts.at(1));
        }
    };
    QStringList rows, second;
    if (m_classifyClient->getDocumentTypes(rows, second))
        fill(rows, m_documentTypes);
    rows.clear();
    second.clear();
    if (m_classifyClient->getDocumentStatuses(rows, second))
        fill(rows, m_statuses);
}

void orvexwbwebview::reloadCards()
{
    if (m_reloading || isStopped())
        return;
    m_reloading = true;

    QString script;
    QStringList entries, comments;
    if (m_classifyClient && m_classifyClient->getClipboardDocuments(m_id, entries, comments)) {
        QProgressDialog progress(tr("Loading clipboard..."), QString(), 0, entries.size(), this);
        progress.setWindowModality(Qt::WindowModal);
        progress.setMinimumDuration(3000);
        // The cards are taken in the server's order (the first 200), and their
        // scripts put in the order the page shows them, the newest entry
        // first, so that the cards on screen ask for their images first.
        QVector<QPair<qlonglong, QString>> cards;
        cards.reserve(entries.size());
        for (int i = 0; i < entries.size(); ++i) {
            const QStringList parts = entries.at(i).split(kSep);
            const QString card = appendCard(parts.value(0), parts.value(1), comments.value(i), false);
            if (!card.isEmpty())
                cards.append({parts.value(1).toLongLong(), card});
            progress.setValue(i);
        }
        std::stable_sort(cards.begin(), cards.end(),
                         [](const QPair<qlonglong, QString> &a, const QPair<qlonglong, QString> &b) {
                             return a.first > b.first;
                         });
        for (const auto &card : qAsConst(cards))
            script += card.second;
    }
    emit javascript(script);
    sortCards();
    updateCards();
    m_reloading = false;
}

void orvexwbwebview::updateCards()
{
    if (m_updating || isStopped())
        return;
    m_updating = true;
    // The job works on a copy taken here: the hash itself belongs to the GUI thread.
    const QHash<QString, QString> cards = m_cards;
    const QString clipboardId = m_id;
    const bool started = m_jobs->start([this, clipboardId, cards] {
        if (m_jobs->updateCards(m_classifyClient, clipboardId, cards)) {
            sortCards();
            m_updating = false;
        }
    });
    if (!started)
        m_updating = false;
}

void orvexwbwebview::searchCards(QString text)
{
    if (isStopped())
        return;
    if (text == QLatin1String("*")) {
        const QStringList ids = m_cards.keys();
        emit javascript(orvexcardscripts::showCards(ids, QSet<QString>(ids.cbegin(), ids.cend())));
        return;
    }
    if (!m_classifyClient || m_cards.isEmpty())
        return;

    QString term = text;
    term.replace(QLocale().decimalPoint(), QLatin1Char('.'));
    term = term.trimmed();
    bool isInteger = false;
    term.toLongLong(&isInteger);
    if (isInteger && !term.contains(QLatin1Char('.')))
        term = term + QStringLiteral(" OR ") + term + QStringLiteral(".0");

    QString filter = QStringLiteral("docs_id in (");
    for (auto it = m_cards.cbegin(); it != m_cards.cend(); ++it)
        filter += it.key() + QLatin1Char(',');
    filter += QLatin1String("0)");

    const QStringList criteria{QStringLiteral("OPT:SELECTION;-1"),
                               QStringLiteral("OPT:FULLTEXT") + kSep + term, filter,
                               QStringLiteral("OPT:LIMIT;1000")};
    orvexDebug() << "DOCFILTER:" << criteria;
    const QStringList rows = m_classifyClient->searchDocuments(criteria);
    // Not even the header row: the search failed, and the board stays as it is.
    if (rows.isEmpty())
        return;

    QSet<QString> found;
    for (int r = 1; r < rows.size(); ++r)
        found.insert(rows.at(r).split(kSep).value(0).split(QLatin1Char('#')).value(1));
    emit javascript(orvexcardscripts::showCards(m_cards.keys(), found));
}

// --- hand-over to the host ---------------------------------------------------

void orvexwbwebview::openDocument(QString id, QString bemerkung, QString cardid)
{
    emit doCommand(QStringLiteral("OPENDOC"), {id, bemerkung, cardid});
}

void orvexwbwebview::showClassification(QString id)
{
    emit doCommand(QStringLiteral("SHOWCLASSIFICATION"), {id});
}

void orvexwbwebview::exportDocuments()
{
    emit doCommand(QStringLiteral("EXPORTDOCS"), m_cards.keys());
}

void orvexwbwebview::mailDocuments()
{
    emit doCommand(QStringLiteral("MAILDOCS"), m_cards.keys());
}

void orvexwbwebview::setPermissions()
{
    if (!m_classifyClient || !m_writeable)
        return;
    // On the heap: when the board goes while the dialog is open, the dialog
    // goes with it and the wait ends.
    QPointer<orvexcbrights> dialog(new orvexcbrights(m_id, m_classifyClient, this));
    const int result = dialog->exec();
    if (!dialog)
        return;
    const QStringList roles = dialog->getRoles();
    const bool nobodyEdits = dialog->getWriteRoles().isEmpty();
    delete dialog;
    if (result != QDialog::Accepted)
        return;
    if (nobodyEdits) {
        // Nobody could edit the clipboard any more: refuse and store nothing.
        QPointer<QMessageBox> box(new QMessageBox(QMessageBox::Critical, tr("Error"),
                                                  tr("The Card must be editable at least from a role!"),
                                                  QMessageBox::Ok, this));
        box->exec();
        if (!box)
            return;
        delete box;
    } else {
        m_classifyClient->setClipboardRoles(m_id, roles);
    }
    emit reloadClipboards();
}

// --- thumbnails ------------------------------------------------------------

QString orvexwbwebview::getCardPixmap(QString cardid, QString docid, QString curpage)
{
    if (isStopped())
        return QString();
    if (!isId(cardid) || !isId(docid) || !isId(curpage)) {
        orvexWarning() << "CARD PIXMAP REFUSED" << cardid << docid << curpage;
        return QString();
    }
    // A card's first image waits its turn; a page the user turns to goes first.
    const auto priority = curpage != QLatin1String("0") || m_pictured.contains(cardid)
                              ? orvexboardjobs::User
                              : orvexboardjobs::Background;
    if (m_archiveClient && m_jobs->start([this, cardid, docid, curpage] {
            if (!m_jobs->fetchThumbnail(m_archiveClient, cardid, docid, curpage, m_placeholder))
                imageSent();
        }, priority))
        ++m_imagesUnderWay;
    t_imageLoading = true;
    emit javascript(orvexcardscripts::thumbnailLoading(cardid));
    t_imageLoading = false;
    return QString();
}

void orvexwbwebview::setCardPixmap(QString cardid, QString docid, QString curpage, QString pageCount,
                                   QPixmap pix)
{
    Q_UNUSED(docid)
    Q_UNUSED(curpage)
    if (isStopped() || !isId(cardid)) {
        imageSent();
        return;
    }
    const QString script = orvexcardscripts::thumbnailPages(cardid, orvexcardscripts::pageCount(pageCount));
    // Once fetched, an image is finished before the next one is fetched.
    const bool urgent = m_pictured.contains(cardid);
    if (m_cards.contains(cardid))
        m_pictured.insert(cardid);
    m_jobs->start([this, cardid, script, pix, urgent] {
        const bool last = imageSent();
        t_urgentImage = urgent || last;
        setPix(cardid, script, pix);
        t_urgentImage = false;
    }, urgent ? orvexboardjobs::User : orvexboardjobs::Finish);
}

bool orvexwbwebview::imageSent()
{
    // Images set by others than the page's requests are not counted.
    int underWay = m_imagesUnderWay.load();
    while (underWay > 0 && !m_imagesUnderWay.compare_exchange_weak(underWay, underWay - 1)) {
    }
    return underWay <= 1;
}

void orvexwbwebview::setPix(QString cardid, QString javascript, QPixmap pix)
{
    m_jobs->sendThumbnail(cardid, javascript, pix);
}

void orvexwbwebview::doReloadCardPixmap(QString cardid, QString docid, QString curpage, QString pageCount)
{
    if (!isId(cardid) || !isId(docid) || !isId(curpage))
        return;
    emit javascript(
        orvexcardscripts::reloadThumbnail(cardid, docid, curpage, orvexcardscripts::pageCount(pageCount)));
}
