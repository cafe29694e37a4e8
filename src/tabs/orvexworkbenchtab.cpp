#include "orvexworkbenchtab.h"

#include "classifyinterface.h"
#include "orvexclipboardchooser.h"
#include "orvexlog.h"
#include "orvexundooffer.h"
#include "orvexwbwebview.h"
#include "qsnackbarevent.h"

#include <QCursor>
#include <QEventLoop>
#include <QHash>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPointer>
#include <QSet>
#include <QStackedWidget>
#include <QStyle>
#include <QTabBar>
#include <QTimer>
#include <QUrl>
#include <QWebEngineSettings>


namespace {
const QChar kFieldSeparator(0xFEFF);
const int kRecreateDelay = 100;
// A page that never reports its load must not freeze the dock for good.
const int kPageLoadTimeout = 60000;
const char kBoardPage[] = "qrc:/material/card-webchannel.html";

QString fieldAt(const QStringList &fields, int index)
{
    return index < fields.size() ? fields.at(index) : QString();
}
} // namespace

orvexworkbenchtab::orvexworkbenchtab(QWidget *parent)
    : QTabWidget(parent)
{
    setStyleSheet(fullSheet());
    setTabsClosable(true);
    setMovable(false);
    setMouseTracking(true);
    connectTabBar();
    tabBar()->installEventFilter(this);
    addAddTab();

    // Stands in for the boards while the filter leaves no tab.
    m_noMatch = new QLabel(tr("No clipboard matches"), this);
    m_noMatch->setObjectName(QStringLiteral("m_noMatch"));
    m_noMatch->setAccessibleName(m_noMatch->text());
    m_noMatch->setAlignment(Qt::AlignCenter);
    m_noMatch->setAutoFillBackground(true);
    m_noMatch->hide();
}

orvexworkbenchtab::~orvexworkbenchtab()
{
    orvexDebug() << "DESTROY TAB";
    m_destroying = true;
    disconnectTabBar();
    disconnect(this, &QTabWidget::currentChanged, this, &orvexworkbenchtab::reloadCards);
    stop();
    orvexDebug() << "TAB DESTROYED";
    // The corner widget is a member: take it out of the tab widget before it goes.
    setCornerWidget(nullptr, Qt::TopRightCorner);
}

QString orvexworkbenchtab::fullSheet()
{
    return QStringLiteral("QTabBar::tab:disabled {width:0px;height:0px;margin:0px;padding:0px;border:none;}  "
                          "QTabBar QToolButton {background-color:#FFFFFF;} "
                          "QTabBar QToolButton:hover { background-color:#404244;border:none;}");
}

QString orvexworkbenchtab::buttonOnlySheet()
{
    return QStringLiteral("QTabBar QToolButton {background-color:#FFFFFF;} "
                          "QTabBar QToolButton:hover { background-color:#404244;border:none;}");
}

void orvexworkbenchtab::connectTabBar()
{
    QTabBar *bar = tabBar();
    connect(bar, &QTabBar::currentChanged, this, &orvexworkbenchtab::setNewTabTitle);
    connect(bar, &QTabBar::tabBarClicked, this, &orvexworkbenchtab::setNewTabTitle);
    connect(bar, &QTabBar::tabBarDoubleClicked, this, &orvexworkbenchtab::editNewTabTitle);
    connect(bar, &QTabBar::tabCloseRequested, this, &orvexworkbenchtab::removeClipboard);
}

void orvexworkbenchtab::disconnectTabBar()
{
    QTabBar *bar = tabBar();
    disconnect(bar, &QTabBar::currentChanged, this, &orvexworkbenchtab::setNewTabTitle);
    disconnect(bar, &QTabBar::tabBarClicked, this, &orvexworkbenchtab::setNewTabTitle);
    disconnect(bar, &QTabBar::tabBarDoubleClicked, this, &orvexworkbenchtab::editNewTabTitle);
    disconnect(bar, &QTabBar::tabCloseRequested, this, &orvexworkbenchtab::removeClipboard);
}

void orvexworkbenchtab::addAddTab()
{
    connect(&m_cornerWidget, &orvexwbcornerwidget::addTab,
            this, qOverload<>(&orvexworkbenchtab::addNewClipboard));
    connect(&m_cornerWidget, &orvexwbcornerwidget::filterChanged, this, &orvexworkbenchtab::tabFilterChanged);
    setCornerWidget(&m_cornerWidget, Qt::TopRightCorner);
}

orvexwbwebview *orvexworkbenchtab::boardAt(int index) const
{
    return qobject_cast<orvexwbwebview *>(widget(index));
}

QList<orvexwbwebview *> orvexworkbenchtab::boards() const
{
    QList<orvexwbwebview *> result;
    for (const auto &entry : m_boards)
        result << entry.second;
    return result;
}

void orvexworkbenchtab::setChooser(orvexclipboardchooser *chooser)
{
    m_chooser = chooser;
    reloadClipboards();
}

void orvexworkbenchtab::setArchiveClient(kelArchiveClientInterface *client)
{
    m_archiveClient = client;
    for (const auto &entry : qAsConst(m_boards))
        entry.second->setArchiveClient(client);
}

void orvexworkbenchtab::setClassifyClient(ClassifyInterface *client)
{
    m_classifyClient = client;
}

void orvexworkbenchtab::updateData()
{
    reloadClipboards();
    for (const auto &entry : qAsConst(m_boards))
        entry.second->updateCards();
}

void orvexworkbenchtab::reloadData()
{
    for (const auto &entry : qAsConst(m_boards)) {
        entry.second->loadClassificationInfo();
        entry.second->updateCards();
    }
}

void orvexworkbenchtab::stop()
{
    orvexDebug() << "STOP STARTED";
    // Removals still open to undo become final now: closing must not lose them.
    settleRemovals();
    for (const auto &entry : qAsConst(m_boards)) {
        entry.second->blockSignals(true);
        entry.second->stop();
    }
    orvexDebug() << "TAP STOP FINISHED";
}

void orvexworkbenchtab::reloadCards()
{
    orvexwbwebview *board = boardAt(currentIndex());
    if (!board)
        return;
    // A board shown for the first time gets its page now. It learns its cards
    // at once (a drop onto it is judged by them); its scripts wait for the page.
    if (m_unloaded.removeAll(board) > 0) {
        board->load(QUrl(QString::fromLatin1(kBoardPage)));
        board->updateTranslations();
        board->updateWriteable();
    }
    board->reloadCards();
}

void orvexworkbenchtab::focusTab()
{
    orvexDebug() << "FOCUS TAB";
    auto *board = qobject_cast<orvexwbwebview *>(sender());
    if (board && indexOf(board) >= 0)
        showTab(indexOf(board));
}

void orvexworkbenchtab::showTab(int index)
{
    // While a name is edited the tab bar's signals are blocked: switching now
    // would move the bar but not the board. The editing ends first.
    setNewTabTitle();
    setCurrentIndex(index);
}

void orvexworkbenchtab::setLoaded(bool isLoaded)
{
    orvexDebug() << "ISLOADED" << (isLoaded ? "true" : "false");
    if (qobject_cast<orvexwbwebview *>(sender()) && isLoaded && !m_loaded)
        m_loaded = true;
}

void orvexworkbenchtab::enterBusy()
{
    ++m_busy;
}

void orvexworkbenchtab::leaveBusy()
{
    if (--m_busy > 0 || !m_reloadPending || m_destroying)
        return;
    m_reloadPending = false;
    QTimer::singleShot(0, this, &orvexworkbenchtab::reloadClipboards);
}

void orvexworkbenchtab::reloadClipboards()
{
    if (m_destroying)
        return;
    if (m_busy > 0) {
        // A page is loading in a nested event loop: the boards list is not
        // complete yet, so a diff now would create the same tab twice.
        m_reloadPending = true;
        return;
    }
    // Creating a board waits for its page in a nested event loop, in which
    // the tab set itself may be deleted.
    QPointer<orvexworkbenchtab> self(this);
    enterBusy();
    if (m_classifyClient) {
        QList<QPair<QString, QString>> clipboards;
        const bool listed = m_classifyClient->getClipboards(clipboards);
        if (!listed) {
            // Without an answer the server's list is unknown: keep the tabs
            // rather than take them all away.
            orvexWarning() << "RELOAD CLIPBOARDS failed; keeping" << m_boards.size() << "tabs";
        } else {
            QHash<QString, QPointer<orvexwbwebview>> open;
            QSet<orvexwbwebview *> duplicates;
            for (const auto &entry : qAsConst(m_boards)) {
                const QString uuid = entry.second->getId();
                if (open.contains(uuid))
                    duplicates.insert(entry.second);
                else
                    open.insert(uuid, entry.second);
            }

            if (m_chooser)
                m_chooser->clearClipboards();

            QSet<QString> listedIds;
            for (const auto &clipboard : qAsConst(clipboards)) {
                const QString &uuid = clipboard.first;
                const QStringList fields = clipboard.second.split(kFieldSeparator);
                const QString name = fieldAt(fields, 0);
                const bool writeable = fieldAt(fields, 1) == QLatin1String("W");
                orvexDebug() << "ADD CLIPBOARD" << m_chooser;
                if (uuid.isEmpty() || listedIds.contains(uuid)) {
                    orvexWarning() << "ADD CLIPBOARD skips a malformed or repeated entry" << uuid << name;
                    continue;
                }
                listedIds.insert(uuid);
                // Removed here, gone on the server once the time to undo is over.
                if (m_removing.contains(uuid))
                    continue;
                if (!open.contains(uuid)) {
                    addNewClipboard(uuid, name, false, writeable);
                } else if (orvexwbwebview *board = open.value(uuid)) {
                    board->setTabText(name);
                    board->setWriteable(writeable);
                    if (m_chooser)
                        m_chooser->addClipboard(name, board);
                }
                if (!self || m_destroying)
                    return;
                open.remove(uuid);
            }

            for (int i = 0; i < count(); ++i) {
                orvexwbwebview *board = boardAt(i);
                if (board && i != m_editingIndex)
                    QTabWidget::setTabText(i, titleFor(board->getTabText()));
                decorateTab(i);
            }

            QSet<orvexwbwebview *> gone = duplicates;
            for (const auto &board : qAsConst(open))
                if (board)
                    gone.insert(board);
            for (int i = count() - 1; i >= 0; --i) {
                if (gone.contains(boardAt(i)))
                    dropTab(i);
            }
        }
    }
    if (m_boards.isEmpty())
        addNewClipboard(QString(), QString(), true, true);
    if (self)
        leaveBusy();
}

void orvexworkbenchtab::decorateTab(int index)
{
    orvexwbwebview *board = boardAt(index);
    if (!board)
        return;
    const auto closeSide = static_cast<QTabBar::ButtonPosition>(
        style()->styleHint(QStyle::SH_TabBar_CloseButtonPosition, nullptr, tabBar()));
    QWidget *closeButton = tabBar()->tabButton(index, closeSide);
    // The lock says why documents cannot be dropped here, also to a screen reader.
    if (board->isWriteable()) {
        setTabIcon(index, QIcon());
        setTabToolTip(index, QString());
        if (closeButton)
            closeButton->show();
    } else {
        setTabIcon(index, QIcon(QStringLiteral("://icons/lock.svg")));
        setTabToolTip(index, tr("Read-only: you may view this clipboard but not change it."));
        if (closeButton)
            closeButton->hide();
    }
}

void orvexworkbenchtab::dropTab(int index)
{
    disposeBoard(takeTab(index));
}

orvexwbwebview *orvexworkbenchtab::takeTab(int index)
{
    orvexwbwebview *board = boardAt(index);
    if (index == m_editingIndex)
        cancelRename();
    else if (m_editingIndex > index)
        --m_editingIndex;
    for (int i = 0; i < m_boards.size(); ++i) {
        if (m_boards.at(i).second == board) {
            m_boards.removeAt(i);
            break;
        }
    }
    removeTab(index);
    return board;
}

void orvexworkbenchtab::disposeBoard(orvexwbwebview *board)
{
    if (!board)
        return;
    m_unloaded.removeAll(board);
    // A board resets the archive client's connection when it goes, which is
    // meant for the end of the workbench, not for one removed clipboard.
    board->stop();
    board->blockSignals(true);
    board->setArchiveClient(nullptr);
    board->deleteLater();
}

QString orvexworkbenchtab::titleFor(const QString &name) const
{
    return name.isEmpty() ? tr("(unnamed)") : name;
}

QString orvexworkbenchtab::nextNewClipboardName() const
{
    const QString base = tr("New Clipboard");
    int counter = 0;
    bool baseTaken = false;
    for (const auto &entry : m_boards) {
        const QString name = entry.second->getTabText();
        if (name == base)
            baseTaken = true;
        if (!name.startsWith(base))
            continue;
        // Only the English words are taken out, so with a translation the
        // rest does not read as a number and the counter stays at 0 or 1.
        QString rest = name;
        rest.remove(QStringLiteral("New Clipboard"));
        rest.remove(QLatin1Char('('));
        rest.remove(QLatin1Char(')'));
        bool ok = false;
        const int number = rest.toInt(&ok);
        if (ok)
            counter = qMax(counter, number + 1);
    }
    if (counter == 0 && baseTaken)
        counter = 1;
    return counter > 0 ? base + QStringLiteral(" (") + QString::number(counter) + QLatin1Char(')') : base;
}

void orvexworkbenchtab::addNewClipboard()
{
    addNewClipboard(QString(), QString(), true, true);
}

void orvexworkbenchtab::addNewClipboard(QString uuid)
{
    addNewClipboard(uuid, QString(), true, true);
}

void orvexworkbenchtab::addNewClipboard(QString uuid, QString name)
{
    addNewClipboard(uuid, name, true, true);
}

void orvexworkbenchtab::addNewClipboard(QString uuid, QString name, bool focus)
{
    addNewClipboard(uuid, name, focus, true);
}

void orvexworkbenchtab::addNewClipboard(QString uuid, QString name, bool focus, bool writeable)
{
    if (m_destroying)
        return;
    orvexDebug() << "ADD CLIPBOARD" << sender();
    m_cornerWidget.clearFilter();

    auto *board = new orvexwbwebview(this);
    board->setContextMenuPolicy(Qt::CustomContextMenu);
    if (!uuid.isEmpty())
        board->setId(uuid);
    if (m_archiveClient)
        board->setArchiveClient(m_archiveClient);
    if (m_classifyClient)
        board->setClassifyClient(m_classifyClient);
    connect(board, &orvexwbwebview::addNewClipboard, this, qOverload<>(&orvexworkbenchtab::addNewClipboard));
    connect(board, &orvexwbwebview::doRemoveClipboard, this, &orvexworkbenchtab::doRemoveClipboard);
    connect(board, &orvexwbwebview::doCommand, this, &orvexworkbenchtab::doCommand);
    connect(board, &orvexwbwebview::reloadClipboards, this, &orvexworkbenchtab::reloadClipboards);
    connect(board, &orvexwbwebview::focusTab, this, &orvexworkbenchtab::focusTab);

    board->page()->settings()->setAttribute(QWebEngineSettings::JavascriptEnabled, true);

    // A clipboard that is not shown now gets its page when it is (reloadCards()),
    // so that the one shown loads and fills without sharing the machine.
    const bool deferred = !focus && count() > 0 && !uuid.isEmpty();
    if (!deferred && !waitForPage(board, uuid))
        return; // the tab set or the board went away meanwhile
    disconnect(board, &QWebEngineView::loadFinished, this, &orvexworkbenchtab::setLoaded);

    if (!name.isEmpty() || !uuid.isEmpty()) {
        // A clipboard that has a uuid exists on the server already, even when
        // the server gave it no name.
        board->setTabText(name);
    } else {
        board->setTabText(nextNewClipboardName());
        const QString created =
            m_classifyClient ? m_classifyClient->createClipboard(board->getTabText()) : QString();
        // Without a uuid from the server the board keeps its own id and stays a tab.
        if (!created.isEmpty())
            board->setId(created);
    }

    m_boards.append(qMakePair(board->getId(), board));
    const int index = addTab(board, titleFor(board->getTabText()));
    if (focus)
        showTab(index);

    if (!deferred) {
        orvexDebug() << "UPDATE TRANSLATIONS";
        board->updateTranslations();
    }
    board->setWriteable(writeable);
    decorateTab(index);
    if (m_chooser)
        m_chooser->addClipboard(name, board);
    if (deferred)
        m_unloaded.append(board);
}

bool orvexworkbenchtab::waitForPage(orvexwbwebview *board, const QString &uuid)
{
    // Scripts may only reach the page once it has loaded, so wait for it here.
    m_loaded = false;
    connect(board, &QWebEngineView::loadFinished, this, &orvexworkbenchtab::setLoaded);
    QPointer<orvexworkbenchtab> self(this);
    QPointer<orvexwbwebview> guard(board);
    QEventLoop loop;
    QTimer timeout;
    timeout.setSingleShot(true);
    connect(board, &QWebEngineView::loadFinished, &loop, &QEventLoop::quit);
    connect(&timeout, &QTimer::timeout, &loop, &QEventLoop::quit);
    // The board goes with the tab set, and whoever deletes either ends the
    // wait at once rather than when the timeout runs out.
    connect(board, &QObject::destroyed, &loop, &QEventLoop::quit);
    enterBusy();
    board->load(QUrl(QString::fromLatin1(kBoardPage)));
    timeout.start(kPageLoadTimeout);
    loop.exec();
    if (!self)
        return false; // the tab set went away meanwhile, and the board with it
    leaveBusy();
    if (!guard || m_destroying)
        return false;
    if (!timeout.isActive())
        orvexWarning() << "ADD CLIPBOARD page load timed out" << uuid;
    return true;
}

void orvexworkbenchtab::removeClipboard(int index)
{
    orvexwbwebview *board = boardAt(index);
    if (!board || !board->isWriteable() || !m_classifyClient)
        return;
    // On the heap: when the tab set goes while the question is open, the box
    // goes with it and the question ends.
    QPointer<QMessageBox> question(new QMessageBox(QMessageBox::Question, tr("Remove Clipboard"),
                                                   tr("Remove Clipboard ") + tabText(index) + QStringLiteral(" ?"),
                                                   QMessageBox::Yes | QMessageBox::No, this));
    question->setDefaultButton(QMessageBox::Yes);
    const int answer = question->exec();
    if (!question)
        return;
    delete question;
    if (answer != QMessageBox::Yes || m_destroying)
        return;
    // The question ran an event loop: the tab may have moved or gone.
    index = indexOf(board);
    if (index < 0)
        return;

    // The tab goes at once; the clipboard goes on the server only when the
    // time to undo is over (or the workbench closes). Until then the board
    // stays as it is, ready to come back in its place.
    const int cornerHeight = m_cornerWidget.height();
    const QString uuid = board->getId();
    takeTab(index);
    // Keeps the tab bar from shrinking when its last tabs go.
    m_cornerWidget.setMinimumHeight(cornerHeight);
    setMinimumHeight(cornerHeight);
    m_removing.insert(uuid);
    refillChooser();
    QPointer<orvexwbwebview> kept(board);
    auto *offer = new OrvexUndoOffer(
        tr("Clipboard %1 removed.").arg(titleFor(board->getTabText())),
        [this, kept, uuid, index] { commitRemoval(kept, uuid, index); },
        [this, kept, uuid, index] { restoreTab(kept, uuid, index); }, this);
    m_offers.removeAll(QPointer<OrvexUndoOffer>());
    m_offers << offer;
    offer->offer();
    if (m_boards.isEmpty())
        QTimer::singleShot(kRecreateDelay, this, qOverload<>(&orvexworkbenchtab::addNewClipboard));
}

void orvexworkbenchtab::commitRemoval(orvexwbwebview *board, const QString &uuid, int index)
{
    m_removing.remove(uuid);
    if (!m_classifyClient || !m_classifyClient->removeClipboard(uuid)) {
        orvexWarning() << "REMOVE CLIPBOARD refused" << uuid;
        if (board && !m_destroying) {
            restoreTab(board, uuid, index);
            QSnackbarEvent(tr("Clipboard %1 could not be removed.").arg(titleFor(board->getTabText()))).send();
        }
        return;
    }
    if (board) {
        board->clearClipboard();
        disposeBoard(board);
    }
}

void orvexworkbenchtab::restoreTab(orvexwbwebview *board, const QString &uuid, int index)
{
    m_removing.remove(uuid);
    if (!board || m_destroying)
        return;
    index = qBound(0, index, count());
    // The boards list keeps the order of the tabs.
    m_boards.insert(index, qMakePair(uuid, board));
    insertTab(index, board, titleFor(board->getTabText()));
    decorateTab(index);
    setCurrentIndex(index);
    refillChooser();
}

void orvexworkbenchtab::settleRemovals()
{
    const QList<QPointer<OrvexUndoOffer>> offers = m_offers;
    m_offers.clear();
    for (const QPointer<OrvexUndoOffer> &offer : offers)
        if (offer)
            offer->commitNow();
}

void orvexworkbenchtab::refillChooser()
{
    if (!m_chooser)
        return;
    m_chooser->clearClipboards();
    for (const auto &entry : qAsConst(m_boards))
        m_chooser->addClipboard(entry.second->getTabText(), entry.second);
}

void orvexworkbenchtab::doRemoveClipboard()
{
    // The board that asks is the one to go, whichever tab is current.
    auto *board = qobject_cast<orvexwbwebview *>(sender());
    removeClipboard(board ? indexOf(board) : currentIndex());
}

void orvexworkbenchtab::editNewTabTitle(int)
{
    if (m_editingIndex != -1)
        return;
    QTabBar *bar = tabBar();
    const int index = bar->tabAt(bar->mapFromGlobal(QCursor::pos()));
    orvexwbwebview *board = boardAt(index);
    if (!board || !board->isWriteable())
        return;

    setCurrentIndex(index);
    m_editingIndex = index;
    const QString title = tabText(index);
    // An unnamed clipboard shows a placeholder that is not its name.
    const bool unnamed = board->getTabText().isEmpty() && title == titleFor(QString());
    m_renameEditor = new QLineEdit(unnamed ? QString() : title, bar);
    m_renameEditor->setObjectName(QStringLiteral("m_renameEditor"));
    m_renameEditor->setToolTip(tr("At most %1 characters").arg(MaxNameLength));
    m_nameLimitTold = false;
    m_renameEditor->installEventFilter(this);
    connect(m_renameEditor, &QLineEdit::textEdited, this, &orvexworkbenchtab::limitNewTabTitle);
    connect(m_renameEditor, &QLineEdit::editingFinished, this, &orvexworkbenchtab::setNewTabTitle);
    connect(m_renameEditor, &QLineEdit::returnPressed, this, &orvexworkbenchtab::setNewTabTitle);
    QTabWidget::setTabText(index, QString());
    bar->blockSignals(true);
    bar->setTabButton(index, QTabBar::LeftSide, m_renameEditor);
    m_renameEditor->setFocus(Qt::OtherFocusReason);
    m_renameEditor->selectAll();
}

void orvexworkbenchtab::setNewTabTitle()
{
    if (m_editingIndex == -1)
        return;
    QTabBar *bar = tabBar();
    const int index = m_editingIndex;
    if (auto *editor = qobject_cast<QLineEdit *>(bar->tabButton(index, QTabBar::LeftSide))) {
        m_editingIndex = -1;
        m_renameEditor = nullptr;
        editor->removeEventFilter(this);
        editor->disconnect(this);
        bar->setTabButton(index, QTabBar::LeftSide, nullptr);
        editor->hide();
        editor->deleteLater();
        const orvexwbwebview *board = boardAt(index);
        const QString text = editor->text();
        if (board && text != board->getTabText() && text.trimmed().isEmpty()) {
            QSnackbarEvent(tr("A clipboard needs a name: %1 keeps its name.").arg(titleFor(board->getTabText())))
                .send();
            setTabText(index, board->getTabText());
        } else {
            setTabText(index, text);
        }
    }
    bar->blockSignals(false);
}

void orvexworkbenchtab::limitNewTabTitle(const QString &text)
{
    if (!m_renameEditor || text.size() <= MaxNameLength)
        return;
    // What was just typed or pasted ends at the cursor: that is cut, never a
    // character in half.
    const int cursor = m_renameEditor->cursorPosition();
    int keep = qMax(0, cursor - (text.size() - MaxNameLength));
    if (keep > 0 && text.at(keep - 1).isHighSurrogate())
        --keep;
    const QString limited = text.left(keep) + text.mid(cursor);
    m_renameEditor->setText(limited.left(MaxNameLength));
    m_renameEditor->setCursorPosition(qMin(keep, MaxNameLength));
    if (!m_nameLimitTold) {
        m_nameLimitTold = true;
        QSnackbarEvent(tr("A clipboard name has at most %n characters.", nullptr, MaxNameLength)).send();
    }
}

void orvexworkbenchtab::cancelRename()
{
    if (m_editingIndex == -1)
        return;
    if (m_renameEditor) {
        // Finishing with the clipboard's own name changes nothing on the server.
        orvexwbwebview *board = boardAt(m_editingIndex);
        m_renameEditor->setText(board ? board->getTabText() : QString());
    }
    setNewTabTitle();
    m_editingIndex = -1;
    tabBar()->blockSignals(false);
}

bool orvexworkbenchtab::eventFilter(QObject *watched, QEvent *event)
{
    if (m_editingIndex == -1)
        return QTabWidget::eventFilter(watched, event);
    if (watched == m_renameEditor && event->type() == QEvent::KeyPress) {
        const auto *key = static_cast<QKeyEvent *>(event);
        if (key->key() == Qt::Key_Escape) {
            cancelRename();
            return true;
        }
        // Ctrl+Tab switches tabs: the editing ends first, as on Return.
        if ((key->key() == Qt::Key_Tab || key->key() == Qt::Key_Backtab)
            && key->modifiers().testFlag(Qt::ControlModifier))
            setNewTabTitle();
    } else if (watched == tabBar()
               && (event->type() == QEvent::MouseButtonPress || event->type() == QEvent::Wheel)) {
        // A click or a wheel turn on the tab bar may switch tabs, which with the
        // bar's signals blocked would move the bar but not the board: the
        // editing ends first, keeping the typed name as Return would.
        setNewTabTitle();
    }
    return QTabWidget::eventFilter(watched, event);
}

void orvexworkbenchtab::setTabText(int index, const QString &text)
{
    orvexwbwebview *board = boardAt(index);
    if (!board) {
        QTabWidget::setTabText(index, text);
        return;
    }
    if (text == board->getTabText()) {
        QTabWidget::setTabText(index, titleFor(text));
        return;
    }
    if (text.isEmpty()) {
        QTabWidget::setTabText(index, titleFor(board->getTabText()));
        return;
    }
    if (m_classifyClient && m_classifyClient->renameClipboard(board->getId(), text))
        board->setTabText(text);
    else
        QSnackbarEvent(tr("Clipboard %1 could not be renamed.").arg(titleFor(board->getTabText()))).send();
    // Shown even when refused: the next reload brings back the server's name.
    QTabWidget::setTabText(index, text);
}

void orvexworkbenchtab::tabFilterChanged(QString text)
{
    const int cornerHeight = m_cornerWidget.height();
    m_cornerWidget.setMinimumHeight(cornerHeight);
    setMinimumHeight(cornerHeight);
    int firstShown = -1;
    if (text.isEmpty()) {
        for (int i = 0; i < count(); ++i)
            setTabEnabled(i, true);
        firstShown = count() > 0 ? 0 : -1;
    } else {
        const QString wanted = text.toLower();
        for (int i = count() - 1; i >= 0; --i) {
            orvexwbwebview *board = boardAt(i);
            const bool shown = board && board->getTabText().toLower().contains(wanted);
            setTabEnabled(i, shown);
            if (shown)
                firstShown = i;
        }
    }
    // The board shown belongs to a tab the filter keeps, or to none.
    if (firstShown >= 0 && !isTabEnabled(currentIndex()))
        setCurrentIndex(firstShown);
    m_noMatch->setVisible(firstShown < 0 && count() > 0);
    placeNoMatch();
    m_cornerWidget.setMinimumHeight(cornerHeight);
    setMinimumHeight(cornerHeight);
    setStyleSheet(fullSheet());
}

void orvexworkbenchtab::placeNoMatch()
{
    if (!m_noMatch->isVisible())
        return;
    const auto *pages = findChild<QStackedWidget *>(QString(), Qt::FindDirectChildrenOnly);
    m_noMatch->setGeometry(pages ? pages->geometry() : rect());
    m_noMatch->raise();
}

bool orvexworkbenchtab::event(QEvent *event)
{
    if (event->type() == QEvent::Show) {
        QTimer::singleShot(1, this, &orvexworkbenchtab::reloadCards);
        disconnect(this, &QTabWidget::currentChanged, this, &orvexworkbenchtab::reloadCards);
        connect(this, &QTabWidget::currentChanged, this, &orvexworkbenchtab::reloadCards);
        setStyleSheet(fullSheet());
    }
    const bool handled = QTabWidget::event(event);
    if (event->type() == QEvent::Resize || event->type() == QEvent::LayoutRequest)
        placeNoMatch();
    if (event->type() == QEvent::EnabledChange)
        setStyleSheet(isEnabled() ? fullSheet() : buttonOnlySheet());
    return handled;
}
