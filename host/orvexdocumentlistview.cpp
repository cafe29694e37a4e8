#include "orvexdocumentlistview.h"

#include "orvexarchiveworker.h"
#include "orvexclipboardlabel.h"
#include "orvexdocumentlistmodel.h"
#include "orvexmimedata.h"
#include "orvexwbwebview.h"

#include <QApplication>
#include <QDataStream>
#include <QDrag>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QPainter>
#include <QUrl>

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

OrvexMimeData *OrvexDocumentListView::createMimeData(const QList<Entry> &entries, ClassifyInterface *classifyClient,
                                                     OrvexArchiveWorker *archiveWorker)
{
    auto *data = new OrvexMimeData;
    QStringList docIds, docsIds;
    QList<QUrl> documentEntries;
    QMap<QString, QString> remarks;
    QByteArray stream;
    QDataStream out(&stream, QIODevice::WriteOnly);
    for (const Entry &entry : entries) {
        const QString docId = QString::number(entry.docId);
        const QString docsId = QString::number(entry.docsId);
        docIds << docId;
        docsIds << docsId;
        out << docsId;
        const QString versioned = entry.version > 0 ? docId + QLatin1Char(';') + QString::number(entry.version) : docId;
        documentEntries << QUrl(versioned);
        if (!entry.remark.isEmpty())
            remarks.insert(QString(versioned).replace(QLatin1Char(';'), QLatin1Char('#')), entry.remark);
    }
    data->setData(QStringLiteral("x-application-orvex"), QByteArray());
    data->setDocIds(docIds);
    data->setDocsIds(docsIds);
    data->setData(OrvexMimeData::documentStreamFormat(), stream);
    data->setUrls(documentEntries);
    data->setBemerkungen(remarks);
    data->setArchiveClient(archiveWorker);
    data->setClassifyClient(classifyClient);
    return data;
}

OrvexMimeData *OrvexDocumentListView::createSelectionMimeData() const
{
    const QList<Entry> entries = selectedEntries();
    return entries.isEmpty() ? nullptr : createMimeData(entries, m_classifyClient, m_archiveWorker);
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

    QPixmap badge(48, 24);
    badge.fill(palette().color(QPalette::Highlight));
    QPainter painter(&badge);
    painter.setPen(palette().color(QPalette::HighlightedText));
    painter.drawText(badge.rect(), Qt::AlignCenter, QString::number(count));
    painter.end();
    drag->setPixmap(badge);

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
