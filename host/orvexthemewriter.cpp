#include "orvexthemewriter.h"

#include <QDataStream>
#include <QGuiApplication>
#include <QLoggingCategory>
#include <QPalette>

#include <cstring>

Q_DECLARE_LOGGING_CATEGORY(lcHost)

namespace {
// Room for any colour name, so a later colour never needs a new segment
// while a reader might be attached to the old one.
constexpr int segmentCapacity = 256;
} // namespace

OrvexThemeWriter::OrvexThemeWriter(QObject *parent) : QObject(parent), m_segment(segmentKey()) {}

OrvexThemeWriter::~OrvexThemeWriter()
{
    if (m_following && QCoreApplication::instance())
        QCoreApplication::instance()->removeEventFilter(this);
}

QString OrvexThemeWriter::segmentKey(qint64 processId)
{
    return QStringLiteral("keltheme") + QString::number(processId);
}

bool OrvexThemeWriter::fail(const QString &what)
{
    m_error = QStringLiteral("%1: %2").arg(what, m_segment.errorString());
    qCWarning(lcHost).noquote() << "THEME" << m_error;
    return false;
}

bool OrvexThemeWriter::makeSegment(int size)
{
    if (m_segment.isAttached()) {
        if (m_segment.size() >= size)
            return true;
        m_segment.detach();
    }
    if (m_segment.create(size))
        return true;
    if (m_segment.error() != QSharedMemory::AlreadyExists)
        return fail(QStringLiteral("cannot create the theme segment"));
    // Left behind by an earlier process that had our id: take it over, or
    // drop it (the last detach removes it) and make a fresh one.
    if (m_segment.attach()) {
        if (m_segment.size() >= size)
            return true;
        m_segment.detach();
    }
    return m_segment.create(size) || fail(QStringLiteral("cannot create the theme segment"));
}

bool OrvexThemeWriter::write(const QColor &colour)
{
    QByteArray bytes;
    {
        QDataStream stream(&bytes, QIODevice::WriteOnly);
        stream << colour.name();
    }
    if (!makeSegment(qMax(segmentCapacity, bytes.size())))
        return false;
    if (!m_segment.lock())
        return fail(QStringLiteral("cannot lock the theme segment"));
    auto *data = static_cast<char *>(m_segment.data());
    std::memset(data, 0, size_t(m_segment.size()));
    std::memcpy(data, bytes.constData(), size_t(bytes.size()));
    m_segment.unlock();
    m_colour = colour.name();
    m_error.clear();
    return true;
}

bool OrvexThemeWriter::followApplicationPalette()
{
    if (!m_following && QCoreApplication::instance()) {
        QCoreApplication::instance()->installEventFilter(this);
        m_following = true;
    }
    return write(QGuiApplication::palette().color(QPalette::Active, QPalette::Highlight));
}

bool OrvexThemeWriter::eventFilter(QObject *watched, QEvent *event)
{
    // An application-wide filter sees every event: keep the test cheap.
    if (event->type() == QEvent::ApplicationPaletteChange && watched == QCoreApplication::instance())
        write(QGuiApplication::palette().color(QPalette::Active, QPalette::Highlight));
    return QObject::eventFilter(watched, event);
}
