#pragma once

#include "orvexmimedata.h"

#include <QList>
#include <QMap>
#include <QPointer>
#include <QTableView>

class ClassifyInterface;
class OrvexArchiveWorker;
class orvexclipboardlabel;

// The host's document list as a drag source: dragging selected documents
// starts a drag whose data object is an OrvexMimeData, which a clipboard board
// turns into cards and a foreign target into document URLs or files.
class OrvexDocumentListView : public QTableView
{
    Q_OBJECT

public:
    // One dragged document: ids, the version picked and the remark naming its file.
    using Entry = OrvexMimeData::Document;

    explicit OrvexDocumentListView(QWidget *parent = nullptr);

    // Borrowed: the data objects of later drags carry them.
    void setClients(ClassifyInterface *classifyClient, OrvexArchiveWorker *archiveWorker);
    // Drags of docId carry this version from now on; 0 goes back to the current one.
    void setChosenVersion(qlonglong docId, qlonglong version);

    // The selected documents the user may read, in the list's order.
    QList<Entry> selectedEntries() const;
    OrvexMimeData *createSelectionMimeData() const;

signals:
    // Around the drag's own event loop: the host shows the clipboard chooser meanwhile.
    void documentDragStarted();
    void documentDragFinished(Qt::DropAction action);

protected:
    void startDrag(Qt::DropActions supportedActions) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    ClassifyInterface *m_classifyClient = nullptr;
    QPointer<OrvexArchiveWorker> m_archiveWorker;
    QMap<qlonglong, qlonglong> m_chosenVersions;
    QPointer<orvexclipboardlabel> m_droppedOnLabel;
};
