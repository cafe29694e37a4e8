#pragma once

#include <QObject>
#include <QPointer>
#include <QTimer>

class OrvexDockReadiness;

// Saves a PNG of the window once the window, the dock and the dock's boards
// are ready, or gives up after the timeout. Reports through finished with the
// process exit code to use and a message for the user.
class OrvexScreenshotJob : public QObject
{
    Q_OBJECT

public:
    OrvexScreenshotJob(QWidget *window, QWidget *dock, const QString &fileName, int timeoutMs,
                       QObject *parent = nullptr);

    // With a file name: after the screenshot, also write what the dock shows
    // (OrvexDockState) as JSON, the hover widget's labels included.
    void setStateFile(const QString &fileName, QWidget *hoverWidget);
    void start();

signals:
    void finished(int exitCode, const QString &message);

private:
    void save();
    void giveUp();

    QPointer<QWidget> m_window;
    QPointer<QWidget> m_dock;
    QPointer<QWidget> m_hoverWidget;
    QString m_fileName;
    QString m_stateFileName;
    int m_timeoutMs;
    OrvexDockReadiness *m_readiness;
    QTimer m_timeout;
    bool m_done = false;
};
