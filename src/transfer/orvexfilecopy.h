#pragma once

#include "orvexworkbenchglobal.h"

#include <QDialog>
#include <QElapsedTimer>

namespace Ui {
class OrvexFileCopy;
}

// Non-modal progress dialog for a running transfer: the current file in
// percent, a speed-and-time line, a counter of finished files and Cancel.
// The archive client's byte-count signals (decimal text) feed the QString
// slots; the transfer itself runs in the caller's thread, so every progress
// update lets the dialog repaint once.
class ORVEXWORKBENCH_EXPORT OrvexFileCopy : public QDialog
{
    Q_OBJECT

public:
    explicit OrvexFileCopy(QWidget *parent = nullptr);
    ~OrvexFileCopy() override;

    void setText(const QString &text);
    void setFinishedFilesCount(int count);

    // The file counter below the bar; shown only when a batch has two or more files.
    void setTotalVisible(bool visible);
    void setTotalMaximum(int maximum);
    void setTotalValue(int value);

    // The arithmetic behind the display. percentOf() is the truncated percentage
    // of current in total; speedLine() is the speed and time line for current
    // bytes after elapsedMs milliseconds at that percentage (percent > 0).
    static int percentOf(qint64 current, qint64 total);
    static QString speedLine(qint64 current, qint64 elapsedMs, int percent);

signals:
    void cancelClicked();

public slots:
    void setProgressMax(QString max);
    void setProgressValue(QString value);
    void setProgressMax(qlonglong max);
    void setProgressValue(qlonglong value);
    void copyFinished();
    void emitCancelClicked();

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    Ui::OrvexFileCopy *ui;
    int m_finishedFiles = 0;
    QElapsedTimer m_timer;
    QElapsedTimer m_timer2; // reserved
    qint64 m_currentBytes = 0;
    qint64 m_totalBytes = 1;
};
