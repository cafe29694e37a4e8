#pragma once

#include <QList>
#include <QObject>
#include <QPointer>
#include <QStringList>

class OrvexArchiveWorker;
class QAbstractItemView;
class QMimeData;
class QWidget;

// Archives local files through the archive worker, one at a time: files the
// user picks in a file dialog or drops from outside the application onto the
// document list. The worker shows the progress and the duplicates the archive
// finds; a batch ends early when the user cancels it (in the progress dialog or
// the duplicates dialog). Failures are collected and reported once at the end.
class OrvexHostUploader : public QObject
{
    Q_OBJECT

public:
    // What a batch did, in the order of the files.
    struct Outcome
    {
        QList<qlonglong> archived; // ids of the new documents
        QStringList failures;      // one reason per file that could not be archived
        QString stopReason;        // why the batch ended early (empty when it ran through)
        int notAttempted = 0;      // files left when it ended early
    };

    // worker is borrowed and must outlive the uploader.
    explicit OrvexHostUploader(OrvexArchiveWorker *worker, QObject *parent = nullptr);

    // The widget that message boxes and the file dialog open over.
    void setParentWidget(QWidget *parent);
    // Files dropped from other applications onto the view's list are archived.
    void acceptDropsOn(QAbstractItemView *view);

    bool isBusy() const { return m_busy; }
    // Archives the files one by one and reports the result (finished()).
    Outcome archiveFiles(const QStringList &paths);
    // The local files among the URLs of a drag; empty when there are none.
    static QStringList localFiles(const QMimeData *data);
    // One line for the status bar.
    static QString summary(const Outcome &outcome);

public slots:
    // Lets the user pick files and archives them.
    void chooseAndArchiveFiles();

signals:
    void finished(const QList<qlonglong> &archivedDocIds, const QString &summary);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    // Empty when the file may go to the archive; else why not.
    static QString refusal(const QString &path);

    OrvexArchiveWorker *m_worker;
    QPointer<QWidget> m_parentWidget;
    QPointer<QWidget> m_viewport; // of the view that takes dropped files
    QString m_lastFolder;
    bool m_busy = false;
};
