#include "orvexclipboardlabel.h"

#include "orvexlog.h"
#include "orvexwbwebview.h"

#include <QApplication>
#include <QColor>
#include <QCoreApplication>
#include <QDataStream>
#include <QDragEnterEvent>
#include <QSharedMemory>

namespace {
const char kDefaultTheme[] = "#308cc6";
const int kLightnessLimit = 124;
}

orvexclipboardlabel::orvexclipboardlabel(const QString &text, orvexwbwebview *board, QWidget *parent)
    : QLabel(text, parent), m_board(board)
{
    setAcceptDrops(true);
    QFont labelFont = QApplication::font();
    labelFont.setWeight(QFont::Bold);
    const qreal pointSize = QApplication::font().pointSizeF();
    if (pointSize > 0)
        labelFont.setPointSize(int(pointSize * 1.2));
    setFont(labelFont);
    setStyleSheet(QStringLiteral("QLabel { background-color: white;  margin: 4px; padding: 4px;};"));
}

orvexclipboardlabel::~orvexclipboardlabel() = default;

orvexwbwebview *orvexclipboardlabel::board() const
{
    return m_board;
}

QString orvexclipboardlabel::restingSheet()
{
    return QStringLiteral("QLabel { background-color: white; color: black;  margin: 4px; padding: 4px;};");
}

QString orvexclipboardlabel::textColourFor(const QColor &background)
{
    return background.lightness() > kLightnessLimit ? QStringLiteral("black") : QStringLiteral("white");
}

QString orvexclipboardlabel::getCurrentTheme() const
{
    QSharedMemory segment(QStringLiteral("keltheme") + QString::number(QCoreApplication::applicationPid()));
    QString colour;
    if (segment.attach(QSharedMemory::ReadOnly)) {
        QByteArray bytes;
        if (segment.lock()) {
            bytes = QByteArray(static_cast<const char *>(segment.constData()), segment.size());
            segment.unlock();
        }
        segment.detach();
        QDataStream stream(bytes);
        stream >> colour;
        if (stream.status() != QDataStream::Ok)
            colour.clear();
    }
    // A colour Qt cannot read would give an unreadable highlight.
    if (colour.isEmpty() || !QColor::isValidColor(colour))
        colour = QString::fromLatin1(kDefaultTheme);
    orvexDebug() << "READ COLOR: " << colour;
    return colour;
}

void orvexclipboardlabel::dragEnterEvent(QDragEnterEvent *event)
{
    const QColor theme(getCurrentTheme());
    setStyleSheet(QStringLiteral("QLabel { background-color: %1; color: %2; margin: 4px; padding: 4px;};")
                      .arg(theme.name(), textColourFor(theme)));
    event->acceptProposedAction();
}

void orvexclipboardlabel::dragLeaveEvent(QDragLeaveEvent *event)
{
    setStyleSheet(restingSheet());
    QLabel::dragLeaveEvent(event);
}

void orvexclipboardlabel::dropEvent(QDropEvent *event)
{
    orvexDebug() << "DROPPED TO" << text();
    QLabel::dropEvent(event);
}

void orvexclipboardlabel::hideEvent(QHideEvent *event)
{
    orvexDebug() << "LABEL HIDE EVENT";
    setStyleSheet(restingSheet());
    QLabel::hideEvent(event);
}
