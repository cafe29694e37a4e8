#include "orvexdocumentserver.h"

#include "orvexarchive.h"
#include "orvexcmlog.h"
#include "orvexdocumentarchive.h"
#include "orvexdocumentlistener.h"

#include <QHostInfo>
#include <QThread>

#include <unistd.h>

OrvexDocumentServer::OrvexDocumentServer(const QString &archiveFolder, const QString &user)
    : m_archive(std::make_unique<OrvexDocumentArchive>(archiveFolder, user))
{
    m_policy.ownerUid = qint64(::geteuid());
}

OrvexDocumentServer::~OrvexDocumentServer()
{
    stop();
}

QString OrvexDocumentServer::defaultArchiveFolder()
{
    const QString fromEnvironment = qEnvironmentVariable(OrvexArchive::FolderVariable);
    return fromEnvironment.trimmed().isEmpty() ? OrvexArchive::defaultLocation() : fromEnvironment;
}

QString OrvexDocumentServer::archiveFolder() const
{
    return m_archive->folder();
}

void OrvexDocumentServer::setRequestDeadline(int milliseconds)
{
    m_policy.requestDeadlineMs = qMax(1, milliseconds);
}

bool OrvexDocumentServer::isRunning() const
{
    return m_listener != nullptr;
}

bool OrvexDocumentServer::start(int port, QString *error)
{
    const auto fail = [error](const QString &reason) {
        if (error)
            *error = reason;
        return false;
    };
    if (m_listener)
        return fail(QStringLiteral("the document server already runs on port %1").arg(m_port));
    if (port < 0 || port > 65535)
        return fail(QStringLiteral("invalid port %1").arg(port));

    m_policy.machineName = QHostInfo::localHostName();
    m_thread = std::make_unique<QThread>();
    m_thread->setObjectName(QStringLiteral("document server"));
    m_thread->start();
    // The listener is used and destroyed on its thread only, and makes its
    // sockets there.
    auto *listener = new OrvexDocumentListener(m_archive.get(), m_policy);
    listener->moveToThread(m_thread.get());
    bool listening = false;
    QString reason;
    QMetaObject::invokeMethod(
        listener, [&] { listening = listener->listen(QString::fromLatin1(Address), port, &reason); },
        Qt::BlockingQueuedConnection);
    if (listening)
        m_listener = listener;
    else
        QMetaObject::invokeMethod(listener, [listener] { delete listener; }, Qt::BlockingQueuedConnection);
    if (!listening) {
        m_thread->quit();
        m_thread->wait();
        m_thread.reset();
        return fail(reason);
    }
    m_port = m_listener->port();
    qCInfo(lcManager).noquote() << "DOCUMENT SERVER" << QStringLiteral("http://%1:%2/openDoc/").arg(QLatin1String(Address)).arg(m_port)
                                << "ARCHIVE" << m_archive->folder();
    return true;
}

void OrvexDocumentServer::stop()
{
    if (!m_listener)
        return;
    OrvexDocumentListener *listener = m_listener;
    QMetaObject::invokeMethod(listener, [listener] { delete listener; }, Qt::BlockingQueuedConnection);
    m_listener = nullptr;
    m_thread->quit();
    m_thread->wait();
    m_thread.reset();
    qCInfo(lcManager) << "DOCUMENT SERVER STOPPED" << m_port;
}
