#pragma once

#include "orvexworkbenchglobal.h"
#include "orvexwbcornerwidget.h"

#include <QList>
#include <QMutex>
#include <QPair>
#include <QPointer>
#include <QSet>
#include <QStringList>
#include <QTabWidget>

class ClassifyInterface;
class kelArchiveClientInterface;
class orvexclipboardchooser;
class orvexwbwebview;
class OrvexUndoOffer;
class QLabel;
class QLineEdit;

// The tab set inside the workbench dock: one tab per clipboard, each showing a
// card board. Keeps the tabs in step with the server's clipboard list, creates,
// renames, filters and removes clipboards, and refills the chooser strip.
class ORVEXWORKBENCH_EXPORT orvexworkbenchtab : public QTabWidget
{
    Q_OBJECT

public:
    // The longest clipboard name the archive keeps.
    static constexpr int MaxNameLength = 100;

    explicit orvexworkbenchtab(QWidget *parent = nullptr);
    ~orvexworkbenchtab() override;

    void setChooser(orvexclipboardchooser *chooser);
    void setArchiveClient(kelArchiveClientInterface *client);
    void setClassifyClient(ClassifyInterface *client);
    // Light refresh: the clipboard list, then the cards of every board.
    void updateData();
    // Full reload: the classification tables and the cards of every board.
    void reloadData();
    // Stops every board's background work; nothing runs on a board afterwards.
    void stop();
    // Renames the clipboard of the tab on the server. The tab shows the text
    // even when the server refuses; an empty text restores the clipboard's name.
    void setTabText(int index, const QString &text);

    bool event(QEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

    orvexclipboardchooser *chooser() const { return m_chooser; }
    kelArchiveClientInterface *archiveClient() const { return m_archiveClient; }
    ClassifyInterface *classifyClient() const { return m_classifyClient; }
    orvexwbcornerwidget *cornerControls() { return &m_cornerWidget; }
    orvexwbwebview *boardAt(int index) const;
    QList<orvexwbwebview *> boards() const;

    // The style sheets of the tab bar: with the full sheet disabled tabs take
    // no room, which is how the filter hides them.
    static QString fullSheet();
    static QString buttonOnlySheet();

signals:
    void doCommand(QString command, QStringList args);

private slots:
    void setLoaded(bool isLoaded);
    void reloadClipboards();
    void focusTab();
    void editNewTabTitle(int index);
    void addNewClipboard(QString uuid, QString name, bool focus, bool writeable);
    void addNewClipboard(QString uuid, QString name, bool focus);
    void addNewClipboard(QString uuid, QString name);
    void addNewClipboard(QString uuid);
    void addNewClipboard();
    void removeClipboard(int index);
    void doRemoveClipboard();
    void setNewTabTitle();
    void addAddTab();
    void tabFilterChanged(QString text);
    void reloadCards();

private:
    // Brackets code that runs a nested event loop; a clipboard-list reload
    // asked for meanwhile runs once the outermost bracket closes.
    void enterBusy();
    void leaveBusy();
    QString nextNewClipboardName() const;
    // Makes the tab current, ending a rename in progress first.
    void showTab(int index);
    QString titleFor(const QString &name) const;
    void decorateTab(int index);
    // Lays the empty state of the filter over the boards' area.
    void placeNoMatch();
    // Takes the tab away and disposes of its board; keeps a rename in
    // progress on another tab pointing at the right one.
    void dropTab(int index);
    orvexwbwebview *takeTab(int index);
    void disposeBoard(orvexwbwebview *board);
    // A removal's two ends: final on the server, or the tab back in its place.
    void commitRemoval(orvexwbwebview *board, const QString &uuid, int index);
    void restoreTab(orvexwbwebview *board, const QString &uuid, int index);
    // Makes every removal still open to undo final.
    void settleRemovals();
    void refillChooser();
    void cancelRename();
    // Keeps the name being typed to what the archive accepts; says so once.
    void limitNewTabTitle(const QString &text);
    void connectTabBar();
    void disconnectTabBar();
    // Loads the board's page in a nested event loop; false when the tab set or
    // the board went away meanwhile (then nothing of the tab set may be touched).
    bool waitForPage(orvexwbwebview *board, const QString &uuid);

    orvexclipboardchooser *m_chooser = nullptr;
    kelArchiveClientInterface *m_archiveClient = nullptr;
    ClassifyInterface *m_classifyClient = nullptr;
    QLineEdit *m_renameEditor = nullptr;
    int m_editingIndex = -1;
    bool m_nameLimitTold = false;
    orvexwbcornerwidget m_cornerWidget;
    QList<QPair<QString, orvexwbwebview *>> m_boards;
    bool m_loaded = false;
    QMutex m_lock;

    QLabel *m_noMatch = nullptr;
    // Clipboards removed from the tabs whose removal may still be undone.
    QSet<QString> m_removing;
    QList<QPointer<OrvexUndoOffer>> m_offers;

    int m_busy = 0;
    bool m_reloadPending = false;
    bool m_destroying = false;
    QList<orvexwbwebview *> m_unloaded; // boards of tabs not shown yet, without their page
};
