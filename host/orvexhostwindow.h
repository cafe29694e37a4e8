#pragma once

#include <QList>
#include <QMainWindow>
#include <QStringList>

class ClassifyInterface;
class kelArchiveClientInterface;
class OrvexArchiveWorker;
class OrvexDocumentListView;
class OrvexHostUploader;
class OrvexDocumentFilterModel;
class OrvexHostCommands;
class OrvexDocumentListModel;
class OrvexSnackbarFilter;
class OrvexStatusBarOffer;
class QDockWidget;
class QLabel;
class TavloDocPluginInterface;
struct OrvexArchiveDocument;
struct OrvexConnectionValues;
namespace Ui {
class OrvexHostWindow;
}

// The demo host's main window: the archive's documents in a sortable,
// filterable list, and the workbench dock on the right.
class OrvexHostWindow : public QMainWindow
{
    Q_OBJECT

public:
    explicit OrvexHostWindow(QWidget *parent = nullptr);
    ~OrvexHostWindow() override;

    // Replaces the listed documents; the selection is kept for documents that remain.
    void setDocuments(const QList<OrvexArchiveDocument> &documents);
    void setArchiveFolder(const QString &folder, bool readOnly = false);
    void setUserName(const QString &user);

    // Hands the workbench the host's clients and connection, then docks its
    // widget on the right, the way any host of the plugin does.
    QDockWidget *installWorkbench(TavloDocPluginInterface *plugin, ClassifyInterface *classifyClient,
                                  kelArchiveClientInterface *archiveClient,
                                  const OrvexConnectionValues &connection);

    TavloDocPluginInterface *workbench() const { return m_workbench; }
    QDockWidget *workbenchDock() const { return m_workbenchDock; }
    OrvexDocumentListView *documentView() const;
    // Archives files picked or dropped onto the list; nullptr before installWorkbench.
    OrvexHostUploader *uploader() const { return m_uploader; }
    // Carries out the workbench's commands; null until the workbench is installed.
    OrvexHostCommands *commands() const { return m_commands; }
    QList<qlonglong> selectedDocumentIds() const;
    void selectDocuments(const QList<qlonglong> &ids);

    // Settings keys of the layout (the host's organisation and application).
    static constexpr const char *GeometryKey = "window/geometry";
    static constexpr const char *StateKey = "window/state"; // docks, their widths
    static constexpr const char *ListHeaderKey = "window/documentListHeader";
    static constexpr const char *ClipboardKey = "workbench/lastClipboard"; // the uuid of the tab shown
    // Brings back the layout the window had when it was last closed: its
    // geometry, the dock's place and width, the list's order and the
    // clipboard tab shown, if that clipboard is still there. Call after
    // installWorkbench and before showing the window.
    void restoreLayout();
    void saveLayout() const;
    // The clipboard of the workbench tab shown, by uuid; empty without one.
    QString currentClipboard() const;
    bool showClipboard(const QString &uuid);

    // Called when a drag of documents starts from the document list: shows the
    // workbench's clipboard chooser beside the dock. False without one.
    bool showClipboardChooser();

signals:
    // The user or the workbench asked for a fresh document list.
    void reloadRequested();

public slots:
    // A command raised by the workbench (doCommand).
    void carryOutWorkbenchCommand(const QString &command, const QStringList &args);
    // The host's data changed (an import, an upload): the workbench's light
    // refresh, so its tabs and cards follow the archive.
    void refreshWorkbench();

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    class QTabWidget *clipboardTabs() const;
    // The workbench asks which documents are selected (requestCurrentDocIds).
    void sendCurrentDocIds();
    void updateDocumentCount();
    // After an upload: the list reloaded with the new documents selected.
    void showArchivedDocuments(const QList<qlonglong> &docIds, const QString &summary);
    void reload();

    Ui::OrvexHostWindow *ui;
    OrvexDocumentListModel *m_model;
    OrvexDocumentFilterModel *m_filterModel;
    QLabel *m_countLabel;
    QLabel *m_userLabel;
    OrvexSnackbarFilter *m_snackbars;
    OrvexStatusBarOffer *m_offer = nullptr;
    TavloDocPluginInterface *m_workbench = nullptr;
    QDockWidget *m_workbenchDock = nullptr;
    OrvexArchiveWorker *m_archiveWorker = nullptr;
    OrvexHostUploader *m_uploader = nullptr;
    OrvexHostCommands *m_commands = nullptr;
};
