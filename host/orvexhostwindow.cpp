#include "orvexhostwindow.h"
#include "ui_orvexhostwindow.h"

#include "classifyinterface.h"
#include "kelarchiveclientinterface.h"
#include "orvexarchive.h"
#include "orvexarchiveworker.h"
#include "orvexdocumentfiltermodel.h"
#include "orvexdocumentlistview.h"
#include "orvexdocumentlistmodel.h"
#include "orvexhostcommands.h"
#include "orvexhostuploader.h"
#include "orvexhoverwidgetpresenter.h"
#include "orvexsnackbarfilter.h"
#include "orvexstatusbaroffer.h"
#include "tavlodocplugininterface.h"

#include <QCloseEvent>
#include <QDir>
#include <QDockWidget>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QLabel>
#include <QLoggingCategory>
#include <QSettings>
#include <QStatusBar>
#include <QTabWidget>

Q_LOGGING_CATEGORY(lcHost, "orvex.host")

namespace {
// Bumped when the window's docks change, so that an old state is not applied.
constexpr int kStateVersion = 1;
// The property by which a workbench board names its clipboard.
const char kClipboardIdProperty[] = "clipboardId";
} // namespace

OrvexHostWindow::OrvexHostWindow(QWidget *parent)
    : QMainWindow(parent)
    , ui(new Ui::OrvexHostWindow)
    , m_model(new OrvexDocumentListModel(this))
    , m_filterModel(new OrvexDocumentFilterModel(this))
    , m_countLabel(new QLabel(this))
    , m_userLabel(new QLabel(this))
    , m_snackbars(new OrvexSnackbarFilter(this))
{
    ui->setupUi(this);
    m_filterModel->setSourceModel(m_model);
    ui->m_documentView->setModel(m_filterModel);
    ui->m_documentView->sortByColumn(OrvexDocumentListModel::IdColumn, Qt::AscendingOrder);

    // Sized by the rows in view only, and rows of one line: an archive of
    // 100,000 documents opens without measuring each of them.
    QHeaderView *header = ui->m_documentView->horizontalHeader();
    header->setResizeContentsPrecision(0);
    header->setSectionResizeMode(QHeaderView::ResizeToContents);
    header->setSectionResizeMode(OrvexDocumentListModel::TitleColumn, QHeaderView::Stretch);
    QHeaderView *rows = ui->m_documentView->verticalHeader();
    rows->setSectionResizeMode(QHeaderView::Fixed);
    rows->setDefaultSectionSize(fontMetrics().height() + 8);

    m_countLabel->setObjectName(QStringLiteral("countLabel"));
    m_userLabel->setObjectName(QStringLiteral("userLabel"));
    statusBar()->addPermanentWidget(m_countLabel);
    statusBar()->addPermanentWidget(m_userLabel);
    m_userLabel->hide();

    connect(ui->m_filter, &QLineEdit::textChanged, m_filterModel, &OrvexDocumentFilterModel::setFilterText);
    connect(m_filterModel, &QAbstractItemModel::rowsInserted, this, &OrvexHostWindow::updateDocumentCount);
    connect(m_filterModel, &QAbstractItemModel::rowsRemoved, this, &OrvexHostWindow::updateDocumentCount);
    connect(m_filterModel, &QAbstractItemModel::modelReset, this, &OrvexHostWindow::updateDocumentCount);
    connect(m_filterModel, &QAbstractItemModel::layoutChanged, this, &OrvexHostWindow::updateDocumentCount);
    connect(ui->actionFilter, &QAction::triggered, this, [this] {
        ui->m_filter->setFocus(Qt::ShortcutFocusReason);
        ui->m_filter->selectAll();
    });
    connect(ui->actionReload, &QAction::triggered, this, &OrvexHostWindow::reload);
    m_offer = new OrvexStatusBarOffer(statusBar());
    connect(m_snackbars, &OrvexSnackbarFilter::snackbar, this,
            [this](const QString &text, int timeoutMs, QAction *action) {
                if (action)
                    m_offer->show(text, action);
                else
                    statusBar()->showMessage(text, timeoutMs);
            });
    // The status bar paints its message itself; as its accessible name a
    // screen reader (and the real-input tests) can read it too.
    connect(statusBar(), &QStatusBar::messageChanged, statusBar(), &QWidget::setAccessibleName);
    connect(ui->actionQuit, &QAction::triggered, this, &QWidget::close);
    updateDocumentCount();
}

OrvexHostWindow::~OrvexHostWindow()
{
    delete ui;
}

void OrvexHostWindow::setDocuments(const QList<OrvexArchiveDocument> &documents)
{
    const QList<qlonglong> selected = selectedDocumentIds();
    m_model->setDocuments(documents);
    selectDocuments(selected);
}

void OrvexHostWindow::setArchiveFolder(const QString &folder, bool readOnly)
{
    setWindowTitle(readOnly ? tr("Orvex Host – %1 (read-only)").arg(QDir::toNativeSeparators(folder))
                            : tr("Orvex Host – %1").arg(QDir::toNativeSeparators(folder)));
}

void OrvexHostWindow::setUserName(const QString &user)
{
    m_userLabel->setText(tr("User: %1").arg(user));
    m_userLabel->setVisible(!user.isEmpty());
}

QDockWidget *OrvexHostWindow::installWorkbench(TavloDocPluginInterface *plugin, ClassifyInterface *classifyClient,
                                               kelArchiveClientInterface *archiveClient,
                                               const OrvexConnectionValues &connection)
{
    m_workbench = plugin;
    m_commands = new OrvexHostCommands(classifyClient, connection, this);
    connect(m_commands, &OrvexHostCommands::message, this,
            [this](const QString &text) { statusBar()->showMessage(text); });
    connect(plugin, &TavloDocPluginInterface::doCommand, this, &OrvexHostWindow::carryOutWorkbenchCommand);
    connect(plugin, &TavloDocPluginInterface::requestCurrentDocIds, this, &OrvexHostWindow::sendCurrentDocIds);
    connect(plugin, &TavloDocPluginInterface::refreshParent, this, &OrvexHostWindow::reloadRequested);
    plugin->setArchiveClient(archiveClient);
    plugin->setClassifyClient(classifyClient);
    // Documents dragged from the list export through this worker, with the host's own client.
    m_archiveWorker = new OrvexArchiveWorker(this);
    m_archiveWorker->setArchiveClient(archiveClient);
    m_archiveWorker->setParentWidget(this);
    ui->m_documentView->setClients(classifyClient, m_archiveWorker);
    connect(ui->m_documentView, &OrvexDocumentListView::documentDragStarted, this,
            [this] { showClipboardChooser(); });
    // Files picked or dropped from the desktop are archived through the same worker.
    m_uploader = new OrvexHostUploader(m_archiveWorker, this);
    m_uploader->setParentWidget(this);
    m_uploader->acceptDropsOn(ui->m_documentView);
    connect(ui->actionArchiveFiles, &QAction::triggered, m_uploader, &OrvexHostUploader::chooseAndArchiveFiles);
    connect(m_uploader, &OrvexHostUploader::finished, this, &OrvexHostWindow::showArchivedDocuments);
    ui->actionArchiveFiles->setEnabled(true);
    plugin->setArchiveData(connection.server, connection.port, connection.login1, connection.login2,
                           connection.archiveName, connection.login3);

    QWidget *widget = plugin->getDockWidget(this);
    m_workbenchDock = qobject_cast<QDockWidget *>(widget);
    if (!m_workbenchDock) {
        // A plugin may hand over a plain widget; the host gives it a dock of its own.
        m_workbenchDock = new QDockWidget(plugin->getPluginName(), this);
        m_workbenchDock->setObjectName(QStringLiteral("dockWorkbench"));
        m_workbenchDock->setWidget(widget);
    }
    addDockWidget(Qt::RightDockWidgetArea, m_workbenchDock);
    resizeDocks({m_workbenchDock}, {qMax(m_workbenchDock->minimumWidth(), width() * 2 / 5)}, Qt::Horizontal);

    QAction *toggle = m_workbenchDock->toggleViewAction();
    ui->menuView->addSeparator();
    ui->menuView->addAction(toggle);
    const QList<QAction *> pluginActions = plugin->getMenuActions();
    if (!pluginActions.isEmpty()) {
        ui->menuView->addSeparator();
        ui->menuView->addActions(pluginActions);
    }
    return m_workbenchDock;
}

QTabWidget *OrvexHostWindow::clipboardTabs() const
{
    return m_workbenchDock ? m_workbenchDock->findChild<QTabWidget *>() : nullptr;
}

QString OrvexHostWindow::currentClipboard() const
{
    const QTabWidget *tabs = clipboardTabs();
    const QWidget *board = tabs ? tabs->currentWidget() : nullptr;
    return board ? board->property(kClipboardIdProperty).toString() : QString();
}

bool OrvexHostWindow::showClipboard(const QString &uuid)
{
    QTabWidget *tabs = clipboardTabs();
    if (!tabs || uuid.isEmpty())
        return false;
    for (int i = 0; i < tabs->count(); ++i) {
        if (tabs->widget(i)->property(kClipboardIdProperty).toString() == uuid && tabs->isTabEnabled(i)) {
            tabs->setCurrentIndex(i);
            return true;
        }
    }
    return false;
}

void OrvexHostWindow::restoreLayout()
{
    const QSettings settings;
    restoreGeometry(settings.value(QLatin1String(GeometryKey)).toByteArray());
    restoreState(settings.value(QLatin1String(StateKey)).toByteArray(), kStateVersion);
    ui->m_documentView->horizontalHeader()->restoreState(settings.value(QLatin1String(ListHeaderKey)).toByteArray());
    showClipboard(settings.value(QLatin1String(ClipboardKey)).toString());
}

void OrvexHostWindow::saveLayout() const
{
    QSettings settings;
    settings.setValue(QLatin1String(GeometryKey), saveGeometry());
    settings.setValue(QLatin1String(StateKey), saveState(kStateVersion));
    settings.setValue(QLatin1String(ListHeaderKey), ui->m_documentView->horizontalHeader()->saveState());
    if (m_workbenchDock)
        settings.setValue(QLatin1String(ClipboardKey), currentClipboard());
}

void OrvexHostWindow::closeEvent(QCloseEvent *event)
{
    saveLayout();
    QMainWindow::closeEvent(event);
}

void OrvexHostWindow::sendCurrentDocIds()
{
    if (!m_workbench)
        return;
    QList<int> docIds;
    QList<int> docsIds;
    const QModelIndexList rows = ui->m_documentView->selectionModel()->selectedRows();
    for (const QModelIndex &index : rows) {
        docIds << int(index.data(OrvexDocumentListModel::DocumentIdRole).toLongLong());
        docsIds << int(index.data(OrvexDocumentListModel::DocsIdRole).toLongLong());
    }
    m_workbench->setCurrentDocIds(docIds, docsIds);
}

OrvexDocumentListView *OrvexHostWindow::documentView() const
{
    return ui->m_documentView;
}

QList<qlonglong> OrvexHostWindow::selectedDocumentIds() const
{
    QList<qlonglong> ids;
    const QModelIndexList rows = ui->m_documentView->selectionModel()->selectedRows();
    for (const QModelIndex &index : rows)
        ids << index.data(OrvexDocumentListModel::DocumentIdRole).toLongLong();
    return ids;
}

void OrvexHostWindow::selectDocuments(const QList<qlonglong> &ids)
{
    QItemSelection selection;
    for (qlonglong id : ids) {
        const int row = m_model->rowOfDocument(id);
        if (row < 0)
            continue;
        const QModelIndex index = m_filterModel->mapFromSource(m_model->index(row, 0));
        if (index.isValid())
            selection.select(index, index);
    }
    ui->m_documentView->selectionModel()->select(
        selection, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
}

void OrvexHostWindow::carryOutWorkbenchCommand(const QString &command, const QStringList &args)
{
    // The outcome stays in the status bar until the next message; the log keeps every command.
    qCInfo(lcHost).noquote() << "COMMAND" << command << args.join(QStringLiteral(", "));
    if (m_commands)
        m_commands->carryOut(command, args);
    else
        statusBar()->showMessage(OrvexHostCommands::describe(command, args));
}

bool OrvexHostWindow::showClipboardChooser()
{
    return m_workbench && OrvexHoverWidgetPresenter::present(m_workbench->getHoverWidget(), m_workbenchDock);
}

void OrvexHostWindow::refreshWorkbench()
{
    sendCurrentDocIds();
}

void OrvexHostWindow::updateDocumentCount()
{
    const int total = m_model->rowCount();
    const int shown = m_filterModel->rowCount();
    if (shown == total)
        m_countLabel->setText(tr("%n document(s)", nullptr, total));
    else
        m_countLabel->setText(tr("%1 of %n document(s)", nullptr, total).arg(shown));
}

void OrvexHostWindow::showArchivedDocuments(const QList<qlonglong> &docIds, const QString &summary)
{
    statusBar()->showMessage(summary);
    if (docIds.isEmpty())
        return;
    emit reloadRequested();
    selectDocuments(docIds);
    const QModelIndexList rows = ui->m_documentView->selectionModel()->selectedRows();
    if (!rows.isEmpty())
        ui->m_documentView->scrollTo(rows.constFirst());
}

void OrvexHostWindow::reload()
{
    emit reloadRequested();
    if (!m_workbench)
        return;
    // The clipboard list may have changed too, which only the light refresh reloads.
    sendCurrentDocIds();
    m_workbench->updateData();
}
