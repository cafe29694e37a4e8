#include "orvexdocumentlistview.h"

#include "orvexarchiveworker.h"
#include "orvexclipboardlabel.h"
#include "orvexdocumentlistmodel.h"
#include "orvexwbwebview.h"

#include <QApplication>
#include <QDrag>
#include <QHeaderView>
#include <QItemSelectionModel>

#include <algorithm>

OrvexDocumentListView::OrvexDocumentListView(QWidget *parent)
    : QTableView(parent)
{
    setDragEnabled(true);
    setDragDropMode(QAbstractItemView::DragOnly);
    setDefaultDropAction(Qt::CopyAction);
}

void OrvexDocumentListView::setClients(ClassifyInterface *classifyClient, OrvexArchiveWorker *archiveWorker)
{
    m_classifyClient = classifyClient;
    m_archiveWorker = archiveWorker;
}

void OrvexDocumentListView::setChosenVersion(qlonglong docId, qlonglong version)
{
    if (version > 0)
        m_chosenVersions.insert(docId, version);
    else
        m_chosenVersions.remove(docId);
}

QList<OrvexDocumentListView::Entry> OrvexDocumentListView::selectedEntries() const
{
    QList<Entry> entries;
    if (!selectionModel())
        return entries;
    QModelIndexList rows = selectionModel()->selectedRows();
    std::sort(rows.begin(), rows.end(),
              [](const QModelIndex &a, const QModelIndex &b) { return a.row() < b.row(); });
    for (const QModelIndex &index : qAsConst(rows)) {
        // A document the user may not read can neither become a card nor a file.
        if (!index.data(OrvexDocumentListModel::ReadableRole).toBool())
            continue;
        Entry entry;
        entry.docId = index.data(OrvexDocumentListModel::DocumentIdRole).toLongLong();
        entry.docsId = index.data(OrvexDocumentListModel::DocsIdRole).toLongLong();
        entry.version = m_chosenVersions.value(entry.docId);
        entry.remark = index.sibling(index.row(), OrvexDocumentListModel::TitleColumn).data().toString();
        entries << entry;
    }
    return entries;
}

OrvexMimeData *OrvexDocumentListView::createSelectionMimeData() const
{
    const QList<Entry> entries = selectedEntries();
    return entries.isEmpty() ? nullptr : OrvexMimeData::create(entries, m_classifyClient, m_archiveWorker);
}

bool OrvexDocumentListView::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Drop) {
        if (auto *label = qobject_cast<orvexclipboardlabel *>(watched))
            m_droppedOnLabel = label;
    }
    return QTableView::eventFilter(watched, event);
}

void OrvexDocumentListView::startDrag(Qt::DropActions supportedActions)
{
    Q_UNUSED(supportedActions)
    OrvexMimeData *data = createSelectionMimeData();
    if (!data)
        return;
    const QStringList docIds = data->getDocIds();
    const QStringList docsIds = data->getDocsIds();
    const int count = docIds.size();
    auto *drag = new QDrag(this);
    drag->setMimeData(data);
    connect(drag, &QDrag::targetChanged, data, &OrvexMimeData::setCurrentWidget);

    drag->setPixmap(OrvexMimeData::dragBadge(count, palette()));

    emit documentDragStarted();
    // A label of the chooser stands for its clipboard but only lights up: a
    // drop there is watched for and carried out here, as if onto the board.
    m_droppedOnLabel.clear();
    qApp->installEventFilter(this);
    const Qt::DropAction action = drag->exec(Qt::CopyAction, Qt::CopyAction);
    qApp->removeEventFilter(this);
    if (m_droppedOnLabel && m_droppedOnLabel->board())
        m_droppedOnLabel->board()->addDocuments(docIds, docsIds);
    emit documentDragFinished(action);
}
