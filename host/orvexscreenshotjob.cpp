#include "orvexscreenshotjob.h"

#include "orvexdockreadiness.h"
#include "orvexdockstate.h"
#include "orvexhostexitcode.h"

#include <QDir>
#include <QFileInfo>
#include <QImageWriter>
#include <QPixmap>
#include <QWidget>

OrvexScreenshotJob::OrvexScreenshotJob(QWidget *window, QWidget *dock, const QString &fileName, int timeoutMs,
                                       QObject *parent)
    : QObject(parent)
    , m_window(window)
    , m_dock(dock)
    , m_fileName(QFileInfo(fileName).absoluteFilePath())
    , m_timeoutMs(timeoutMs)
    , m_readiness(new OrvexDockReadiness(window, dock, this))
{
    m_timeout.setSingleShot(true);
    connect(&m_timeout, &QTimer::timeout, this, &OrvexScreenshotJob::giveUp);
    // The last readiness answer may come from inside a page callback: grab on a fresh turn.
    connect(m_readiness, &OrvexDockReadiness::ready, this, [this] { QTimer::singleShot(0, this, &OrvexScreenshotJob::save); });
}

void OrvexScreenshotJob::setStateFile(const QString &fileName, QWidget *hoverWidget)
{
    m_stateFileName = fileName.isEmpty() ? QString() : QFileInfo(fileName).absoluteFilePath();
    m_hoverWidget = hoverWidget;
}

void OrvexScreenshotJob::start()
{
    m_timeout.start(m_timeoutMs);
    m_readiness->start();
}

void OrvexScreenshotJob::save()
{
    if (m_done)
        return;
    m_done = true;
    m_timeout.stop();
    if (!m_window) {
        emit finished(int(OrvexHostExitCode::ScreenshotFailed), tr("The window was closed before the screenshot."));
        return;
    }
    const QPixmap image = m_window->grab();
    QImageWriter writer(m_fileName, "png");
    if (image.isNull() || !writer.write(image.toImage())) {
        emit finished(int(OrvexHostExitCode::ScreenshotFailed),
                      tr("Could not write the screenshot %1: %2")
                          .arg(QDir::toNativeSeparators(m_fileName), writer.errorString()));
        return;
    }
    const QString saved = tr("Screenshot saved to %1").arg(QDir::toNativeSeparators(m_fileName));
    if (m_stateFileName.isEmpty()) {
        emit finished(int(OrvexHostExitCode::Ok), saved);
        return;
    }
    QPointer<OrvexScreenshotJob> self(this);
    OrvexDockState::collect(m_dock, m_hoverWidget, [self, saved](const QJsonObject &state) {
        if (!self)
            return;
        QString error;
        if (!OrvexDockState::write(state, self->m_stateFileName, &error)) {
            emit self->finished(int(OrvexHostExitCode::ScreenshotFailed), error);
            return;
        }
        emit self->finished(int(OrvexHostExitCode::Ok),
                            tr("%1, the dock's state to %2")
                                .arg(saved, QDir::toNativeSeparators(self->m_stateFileName)));
    });
}

void OrvexScreenshotJob::giveUp()
{
    if (m_done)
        return;
    m_done = true;
    emit finished(int(OrvexHostExitCode::ScreenshotFailed),
                  tr("No screenshot: gave up after %n second(s) waiting for %1.", nullptr, m_timeoutMs / 1000)
                      .arg(m_readiness->pendingDescription()));
}
