#pragma once

#include <QColor>
#include <QCoreApplication>
#include <QObject>
#include <QSharedMemory>

// Publishes the host's theme colour to the workbench, which reads it from the
// shared-memory segment "keltheme" + the process id as one QString streamed
// with QDataStream. The segment lives as long as this object.
class OrvexThemeWriter : public QObject
{
    Q_OBJECT

public:
    explicit OrvexThemeWriter(QObject *parent = nullptr);
    ~OrvexThemeWriter() override;

    static QString segmentKey(qint64 processId = QCoreApplication::applicationPid());

    // Writes the colour's name ("#rrggbb"); false, with errorString(), when the
    // segment cannot be made or locked.
    bool write(const QColor &colour);
    // Writes the application palette's highlight colour now and again
    // whenever the application palette changes.
    bool followApplicationPalette();

    QString colour() const { return m_colour; }
    QString errorString() const { return m_error; }

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    bool makeSegment(int size);
    bool fail(const QString &what);

    QSharedMemory m_segment;
    QString m_colour;
    QString m_error;
    bool m_following = false;
};
