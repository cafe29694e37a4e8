#include "orvexwbwebview.h"

#include "classifyinterface.h"
#include "kelarchiveclientinterface.h"
#include "orvexcardbridge.h"
#include "orvexcbrights.h"
#include "orvexlog.h"
#include "orvexmimedata.h"
#include "qsnackbarevent.h"

#include <QApplication>
#include <QBuffer>
#include <QCursor>
#include <QDragMoveEvent>
#include <QDropEvent>
#include <QFile>
#include <QIcon>
#include <QImage>
#include <QLocale>
#include <QMessageBox>
#include <QProgressDialog>
#include <QRegularExpression>
#include <QUuid>
#include <QWebChannel>
#include <QWebEnginePage>
#include <QtConcurrent>

#include <algorithm>

namespace {

const QChar kSep(0xFEFF);
const QString kDragMarker = QStringLiteral("x-application-orvex");
const QString kDocIdsFormat = QStringLiteral("x-application-orvex-docids");
const QString kDocsIdsFormat = QStringLiteral("x-application-orvex-docsids");

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
};

// Card and document ids end up unquoted in page handlers (removeCard(123)), so
// anything but a plain number is refused before a script is built from it.
bool isNumber(const QString &id)
{
    static const QRegularExpression number(QStringLiteral("^[0-9]{1,18}$"));
    return number.match(id).hasMatch();
}

QString at(const QStringList &list, int index)
{
    return index >= 0 && index < list.size() ? list.at(index) : QString();
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

    connect(this, &orvexwbwebview::javascript, this, &orvexwbwebview::doJavascript);
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
    if (m_archiveClient)
        m_archiveClient->resetConnection();
    m_channel->deregisterObject(m_bridge);
    orvexDebug() << "WEBVIEW DESTROYED";
}

template<typename Job>
bool orvexwbwebview::startJob(Job &&job)
{
    if (m_stopped)
        return false;
    m_futures.erase(std::remove_if(m_futures.begin(), m_futures.end(),
                                   [](const QFuture<void> &future) { return future.isFinished(); }),
                    m_futures.end());
    m_futures.append(QtConcurrent::run(&m_workPool, std::forward<Job>(job)));
    return true;
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
    emit javascript(m_writeable ? QStringLiteral("setWriteable(true);null;")
                                : QStringLiteral("setWriteable(false);null;"));
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
}

void orvexwbwebview::setClassifyClient(ClassifyInterface *client)
{
    m_classifyClient = client;
    loadClassificationInfo();
}

void orvexwbwebview::updateTranslations()
{
    for (auto it = m_translations.cbegin(); it != m_translations.cend(); ++it) {
        QString labelId = it.key();
        labelId.remove(QLatin1Char(' ')).remove(QLatin1Char('.'));
        doJavascript(QStringLiteral("document.getElementById('trans-") + labelId
                     + QStringLiteral("').innerHTML ='") + it.value() + QStringLiteral("';"));
    }
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
    return m_stopped;
}

int orvexwbwebview::cardLimit()
{
    return 200;
}

// --- script bridge ---------------------------------------------------------

void orvexwbwebview::doJavascript(QString jscript)
{
    if (m_stopped)
        return;
    page()->runJavaScript(jscript);
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
    emit javascript(QStringLiteral("sortCards();null;"));
}

void orvexwbwebview::stop()
{
    m_stopped = true;
    orvexDebug() << "STOP";
    const QList<QFuture<void>> futures = m_futures;
    for (QFuture<void> future : futures) {
        if (future.isFinished())
            continue;
        orvexDebug() << "WAIT FOR FUTURE";
        // A job still queued is taken out of the pool and never runs; a running
        // one sees the stopped flag and returns early.
        future.cancel();
        future.waitForFinished();
    }
    orvexDebug() << "STOPPED";
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

namespace {

// One of the id formats: UTF-8 text, ";"-separated, ending at the first NUL.
QStringList idsOfFormat(const QMimeData *data, const QString &format)
{
    QByteArray bytes = data->data(format);
    const int nul = bytes.indexOf('\0');
    if (nul >= 0)
        bytes.truncate(nul);
    const QString text = QString::fromUtf8(bytes).trimmed();
    // Empty parts stay, so that one missing id cannot shift the pairs after it.
    return text.isEmpty() ? QStringList() : text.split(QLatin1Char(';'));
}

} // namespace

bool orvexwbwebview::canAcceptDrop(const QMimeData *data) const
{
    return m_writeable && !m_stopped && m_cards.size() < m_cardLimit && data
           && data->hasFormat(kDragMarker);
}

void orvexwbwebview::dropLists(const QMimeData *data, QStringList &docIds, QStringList &docsIds)
{
    docIds.clear();
    docsIds.clear();
    if (!data)
        return;
    // Within this process only the program's own data object carries the
    // marker; a drag from another process or application arrives as plain
    // QMimeData and has to be read from the id formats.
    if (auto *own = qobject_cast<const OrvexMimeData *>(data)) {
        auto *mutableOwn = const_cast<OrvexMimeData *>(own);
        docIds = mutableOwn->getDocIds();
        docsIds = mutableOwn->getDocsIds();
    } else {
        docIds = idsOfFormat(data, kDocIdsFormat);
        docsIds = idsOfFormat(data, kDocsIdsFormat);
    }
    if (docIds.size() != docsIds.size()) {
        // Which document belongs to which entry is unknown: nothing is added.
        orvexWarning() << "DROP REFUSED: id lists differ in length" << docIds << docsIds;
        docIds.clear();
        docsIds.clear();
    }
}

void orvexwbwebview::dragEnterEvent(QDragEnterEvent *event)
{
    // Document drags stay with the board: the page has no use for them, and
    // asking their data for URLs would make it export documents.
    if (event->mimeData() && event->mimeData()->hasFormat(kDragMarker)) {
        event->acceptProposedAction();
        return;
    }
    QWebEngineView::dragEnterEvent(event);
}

void orvexwbwebview::dragMoveEvent(QDragMoveEvent *event)
{
    if (!canAcceptDrop(event->mimeData())) {
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
    if (!m_writeable || m_stopped || !data || !data->hasFormat(kDragMarker)) {
        event->ignore();
        return;
    }
    orvexDebug() << "DROP EVENT";
    QStringList docIds, docsIds;
    dropLists(data, docIds, docsIds);
    event->setDropAction(event->proposedAction());
    event->accept();
    addDocuments(docIds, docsIds);
}

int orvexwbwebview::addDocuments(const QStringList &docIds, const QStringList &docsIds)
{
    if (m_stopped || !m_writeable || !m_classifyClient || docIds.size() != docsIds.size())
        return 0;
    orvexDebug() << "TRY ADD DOCIDS TO CLIPBOARD" << docIds << docsIds;

    QProgressDialog progress(tr("Appending Documents..."), tr("Cancel"), 0, docIds.size(), this);
    progress.setWindowModality(Qt::WindowModal);
    progress.setMinimumDuration(0);
    progress.show();

    int added = 0;
    QString lastCard;
    for (int i = 0; i < docIds.size(); ++i) {
        progress.setValue(i);
        if (progress.wasCanceled())
            break;
        const QString &docId = docIds.at(i);
        const QString &docsId = docsIds.at(i);
        if (m_cards.contains(docsId))
            continue;
        // Refused before the server sees them: an entry there without a card
        // here would be one the user never saw added.
        if (!isNumber(docId) || !isNumber(docsId)) {
            orvexWarning() << "DROP ENTRY REFUSED" << docId << docsId;
            continue;
        }
        if (m_cards.size() >= m_cardLimit)
            break;
        orvexDebug() << "ADD DOCIDS TO  CLIPBOARD " << docId << docsId;
        if (m_classifyClient->addToClipboard(m_id, docId, docsId)) {
            appendCard(docId, docsId, QString(), true);
            lastCard = docsId;
            ++added;
        }
        if (m_stopped)
            break;
    }
    progress.close();

    if (!lastCard.isEmpty()) {
        emit javascript(QStringLiteral("sortCards(); var container = $('.mdl-layout__content'); "
                                       "var scrollTo = $('#section-")
                        + lastCard
                        + QStringLiteral("'); container.animate({scrollTop: scrollTo.offset().top - "
                                         "container.offset().top + container.scrollTop()});null;"));
    }
    QSnackbarEvent(tr("Added %1 document(s) to clipboard %2").arg(QString::number(added), m_tabText)).send();
    return added;
}

// --- cards -----------------------------------------------------------------

QString orvexwbwebview::countLine() const
{
    const int count = m_cards.size();
    return QStringLiteral("$('#info').text('") + QString::number(count) + QStringLiteral(" / ")
           + QString::number(m_cardLimit) + QStringLiteral(" (max)');$('#drop_zone').")
           + (count >= 1 ? QStringLiteral("hide") : QStringLiteral("show")) + QStringLiteral("();null;");
}

QString orvexwbwebview::appendCard(QString docId, QString docsId, QString comment, bool doAdd)
{
    if (m_stopped)
        return QString();
    if (m_cards.size() >= m_cardLimit)
        return QString();
    if (m_cards.contains(docsId))
        return QString();
    if (!isNumber(docId) || !isNumber(docsId)) {
        orvexWarning() << "APPEND CARD REFUSED" << docId << docsId;
        return QString();
    }
    m_cards.insert(docsId, docId);

    QString html = cardTemplate();
    html.replace(QLatin1String("###card-id###"), docsId)
        .replace(QLatin1String("###main-text###"), docId)
        .replace(QLatin1String("###LOADING###"), tr("Loading..."))
        .replace(QLatin1String("###NOTICE###"), tr("Notice..."))
        .replace(QLatin1String("###OPEN###"), tr("Open Document"))
        .replace(QLatin1String("###REMOVECARD###"), tr("Remove Card"))
        .replace(QLatin1String("###SHOWCLASSIFY###"), tr("Show Classification"))
        // Last, so that a note can never supply a placeholder of its own.
        .replace(QLatin1String("###COMMENT###"),
                 QString(comment).replace(QLatin1String("'"), QLatin1String("\\'")));
    html = html.simplified();

    const QString script = QStringLiteral("$('#overview').append('") + html
                           + QStringLiteral("');getCardPixmap('") + docsId + QStringLiteral("','")
                           + docId + QStringLiteral("','0','img-") + docsId
                           + QStringLiteral("');checkButtons(") + docsId + QStringLiteral(");");
    if (doAdd) {
        emit javascript(script);
        startJob([this, docsId] { loadCardInfo(docsId); });
    }
    emit javascript(countLine());
    return script;
}

void orvexwbwebview::removeCard(QString id, bool doServer)
{
    if (!isNumber(id)) {
        orvexWarning() << "REMOVE CARD REFUSED" << id;
        return;
    }
    if (doServer && m_classifyClient)
        m_classifyClient->removeFromClipboard(m_id, id);
    m_cards.remove(id);
    page()->runJavaScript(QStringLiteral("$('#img-") + id + QStringLiteral("').data('maxpage');"));
    orvexDebug() << "REMOVE CARD!";
    page()->runJavaScript(QStringLiteral("$('#section-") + id + QStringLiteral("').remove();null;"));
    orvexDebug() << "CARDIDS: " << m_cards.size();
    emit javascript(countLine());
}

void orvexwbwebview::clearClipboard()
{
    // On a read-only board the server decides; the page stays as it is.
    if (m_writeable) {
        const QStringList ids = m_cards.keys();
        for (const QString &id : ids)
            removeCard(id, false);
    }
    if (m_classifyClient)
        m_classifyClient->clearClipboard(m_id);
}

void orvexwbwebview::saveCard(QString id, QString text)
{
    if (!m_classifyClient || !isNumber(id))
        return;
    m_classifyClient->setClipboardComment(m_id, id, text);
}

QString orvexwbwebview::readOnlyScript(const QString &id) const
{
    if (m_writeable)
        return QStringLiteral("$('input[type=\"text\"], textarea').removeAttr('readonly');"
                              "$('#searchtext').removeAttr('readonly');")
               + QStringLiteral("$(\"#removecard-") + id + QStringLiteral("\").removeAttr('disabled');")
               + QStringLiteral("$(\"#removebutton-") + id + QStringLiteral("\").removeAttr('disabled');");
    return QStringLiteral("$('input[type=\"text\"], textarea').attr('readonly','readonly');"
                          "$('#searchtext').removeAttr('readonly');")
           + QStringLiteral("$(\"#removecard-") + id + QStringLiteral("\").attr('disabled','disabled');")
           + QStringLiteral("$(\"#removebutton-") + id + QStringLiteral("\").attr('disabled','disabled');");
}

void orvexwbwebview::updateComment(QString id, QString comment)
{
    if (!isNumber(id))
        return;
    // Deliberately unescaped: the notes that reach this point come from the
    // update job, which has escaped them already.
    const QString &text = comment;
    const QString dirty = text.isEmpty() ? QStringLiteral("removeClass('is-dirty')")
                                         : QStringLiteral("addClass('is-dirty')");
    emit javascript(QStringLiteral("$('#textarea-") + id + QStringLiteral("').parent().") + dirty
                    + QStringLiteral(";$('#textarea-") + id + QStringLiteral("').val('") + text
                    + QStringLiteral("');null;"));
    emit javascript(readOnlyScript(id));
}

void orvexwbwebview::loadCardInfo(QString id)
{
    if (m_stopped || !m_classifyClient)
        return;
    const QStringList fields = m_classifyClient->getCardInfo(id, QString());
    if (fields.size() < 5)
        return;
    emit cardData(id, fields);
}

void orvexwbwebview::setCardData(QString id, QStringList data)
{
    if (!isNumber(id))
        return;
    QString status = tr("Unkown");
    QString type = tr("Unkown");
    const QString comment = at(data, 2).replace(QLatin1String("'"), QLatin1String("\\'"));
    const QString statusKey = at(data, 6);
    const QString typeKey = at(data, 3);
    if (m_statuses.contains(statusKey))
        status = m_statuses.value(statusKey);
    if (m_documentTypes.contains(typeKey))
        type = m_documentTypes.value(typeKey);
    emit javascript(QStringLiteral("$('#status-") + id + QStringLiteral("').text('") + status
                    + QStringLiteral("');$('#doctype-") + id + QStringLiteral("').text('") + type
                    + QStringLiteral("');$('#comment-") + id + QStringLiteral("').text('") + comment
                    + QStringLiteral("');null;"));
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
    if (m_reloading || m_stopped)
        return;
    m_reloading = true;

    QString script;
    QStringList entries, comments;
    if (m_classifyClient && m_classifyClient->getClipboardDocuments(m_id, entries, comments)) {
        QProgressDialog progress(tr("Loading clipboard..."), QString(), 0, entries.size(), this);
        progress.setWindowModality(Qt::WindowModal);
        progress.setMinimumDuration(3000);
        for (int i = 0; i < entries.size(); ++i) {
            const QStringList parts = entries.at(i).split(kSep);
            script += appendCard(at(parts, 0), at(parts, 1), at(comments, i), false);
            progress.setValue(i);
        }
    }
    emit javascript(script);
    sortCards();
    updateCards();
    m_reloading = false;
}

void orvexwbwebview::updateCards()
{
    if (m_updating || m_stopped)
        return;
    m_updating = true;
    // The job works on a copy taken here: the hash itself belongs to the GUI thread.
    const QHash<QString, QString> cards = m_cards;
    if (!startJob([this, cards] { updateCardsWorker(cards); }))
        m_updating = false;
}

void orvexwbwebview::updateCardsWorker(const QHash<QString, QString> &cards)
{
    QHash<QString, QString> stale = cards;
    if (m_stopped)
        return;

    ClassifyInterface *client = m_classifyClient;
    if (!cards.isEmpty() && client) {
        QString filter = QStringLiteral("docs_id in (");
        QStringList entries, comments;
        if (client->getClipboardDocuments(m_id, entries, comments)) {
            for (int i = 0; i < entries.size(); ++i) {
                const QStringList parts = entries.at(i).split(kSep);
                const QString docId = at(parts, 0);
                const QString docsId = at(parts, 1);
                if (!isNumber(docId) || !isNumber(docsId))
                    continue;
                filter += docsId + QLatin1Char(',');
                const QString comment = at(comments, i).replace(QLatin1String("'"), QLatin1String("\\'"));
                if (!cards.contains(docsId))
                    emit doAddCard(docId, docsId, comment);
                else
                    emit doUpdateComment(docsId, comment);
                if (m_stopped)
                    break;
            }
        }
        filter += QLatin1String("0)");

        if (!m_stopped) {
            const QStringList rows =
                client->searchDocuments({filter, QStringLiteral("OPT:LIMIT;1000")});
            // An answer without even its header row is a failed query, not an
            // empty clipboard: the cards stay.
            if (!rows.isEmpty()) {
                for (int r = 1; r < rows.size() && !m_stopped; ++r) {
                    const QStringList fields = rows.at(r).split(kSep);
                    const QString cardId = at(at(fields, 0).split(QLatin1Char('#')), 1);
                    stale.remove(cardId);
                    emit cardData(cardId, fields);
                }
                for (auto it = stale.cbegin(); it != stale.cend() && !m_stopped; ++it)
                    emit doRemoveCard(it.key(), false);
            }
        }
    }

    if (!m_stopped) {
        sortCards();
        m_updating = false;
    }
}

void orvexwbwebview::searchCards(QString text)
{
    if (m_stopped)
        return;
    QString script;
    if (text == QLatin1String("*")) {
        for (auto it = m_cards.cbegin(); it != m_cards.cend(); ++it)
            script += QStringLiteral("$('#section-") + it.key() + QStringLiteral("').show();");
        script += QLatin1String("componentHandler.upgradeDom();null;");
        emit javascript(script);
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

    QSet<QString> found;
    for (int r = 1; r < rows.size(); ++r)
        found.insert(at(at(rows.at(r).split(kSep), 0).split(QLatin1Char('#')), 1));

    for (auto it = m_cards.cbegin(); it != m_cards.cend(); ++it)
        script += QStringLiteral("$('#section-") + it.key()
                  + (found.contains(it.key()) ? QStringLiteral("').show();") : QStringLiteral("').hide();"));
    script += QLatin1String("componentHandler.upgradeDom();null;");
    emit javascript(script);
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
    orvexcbrights dialog(m_id, m_classifyClient, this);
    if (dialog.exec() != QDialog::Accepted)
        return;
    if (dialog.getWriteRoles().isEmpty()) {
        // Nobody could edit the clipboard any more: refuse and store nothing.
        QMessageBox::critical(this, tr("Error"), tr("The Card must be editable at least from a role!"),
                              QMessageBox::Ok);
    } else {
        m_classifyClient->setClipboardRoles(m_id, dialog.getRoles());
    }
    emit reloadClipboards();
}

// --- thumbnails ------------------------------------------------------------

QString orvexwbwebview::getCardPixmap(QString cardid, QString docid, QString curpage)
{
    if (m_stopped)
        return QString();
    if (!isNumber(cardid) || !isNumber(docid) || !isNumber(curpage)) {
        orvexWarning() << "CARD PIXMAP REFUSED" << cardid << docid << curpage;
        return QString();
    }
    if (m_archiveClient)
        startJob([this, cardid, docid, curpage] { getCardPixmapWorker(cardid, docid, curpage); });
    emit javascript(QStringLiteral("$('#img-") + cardid + QStringLiteral("').hide();$('#spinner-")
                    + cardid + QStringLiteral("').show();"));
    return QString();
}

void orvexwbwebview::getCardPixmapWorker(QString cardid, QString docid, QString curpage)
{
    if (m_stopped)
        return;
    kelArchiveClientInterface *client = m_archiveClient.data();
    if (!client)
        return;
    int pageCount = 0;
    QString unused;
    const QByteArray bytes =
        client->getDocumentThumbnail(docid.toInt(), curpage.toInt(), 800, pageCount, unused, 0, 0, -1);
    QPixmap pix;
    if (!bytes.isEmpty()) {
        const QImage image = QImage::fromData(bytes);
        if (!image.isNull())
            pix = QPixmap::fromImage(image);
    }
    // Nothing to see, or bytes that are no image: the card shows the placeholder.
    if (pix.isNull())
        pix = m_placeholder;
    emit doSetCardPixmap(cardid, docid, curpage, QString::number(pageCount), pix);
}

void orvexwbwebview::setCardPixmap(QString cardid, QString docid, QString curpage, QString pageCount,
                                   QPixmap pix)
{
    Q_UNUSED(docid)
    Q_UNUSED(curpage)
    if (m_stopped || !isNumber(cardid) || !isNumber(pageCount))
        return;
    const QString script = QStringLiteral("$('#img-") + cardid + QStringLiteral("').data('maxpage','")
                           + pageCount + QStringLiteral("');checkButtons(") + cardid
                           + QStringLiteral(");$('#img-") + cardid + QStringLiteral("').show();$('#spinner-")
                           + cardid + QStringLiteral("').hide();");
    startJob([this, cardid, script, pix] { setPix(cardid, script, pix); });
}

void orvexwbwebview::setPix(QString cardid, QString javascript, QPixmap pix)
{
    if (m_stopped)
        return;
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    pix.save(&buffer, "PNG");
    const QString url = QStringLiteral("data:image/png;base64,") + QString::fromLatin1(bytes.toBase64());
    emit this->javascript(javascript + QStringLiteral("setCardPixmap('img-") + cardid + QStringLiteral("','")
                          + url + QStringLiteral("');"));
    buffer.close();
    bytes.clear();
}

void orvexwbwebview::doReloadCardPixmap(QString cardid, QString docid, QString curpage, QString pageCount)
{
    if (!isNumber(cardid) || !isNumber(docid) || !isNumber(curpage) || !isNumber(pageCount))
        return;
    emit javascript(QStringLiteral("getCardPixmap('") + cardid + QStringLiteral("','") + docid
                    + QStringLiteral("','") + curpage + QStringLiteral("','img-") + cardid
                    + QStringLiteral("');$('#img-") + cardid + QStringLiteral("').data('maxpage','")
                    + pageCount + QStringLiteral("');checkButtons(") + cardid + QStringLiteral(");"));
}
