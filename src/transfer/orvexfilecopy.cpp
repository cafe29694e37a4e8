#include "orvexfilecopy.h"
#include "ui_orvexfilecopy.h"

#include <QCloseEvent>
#include <QCoreApplication>

OrvexFileCopy::OrvexFileCopy(QWidget *parent)
    : QDialog(parent), ui(new Ui::OrvexFileCopy)
{
    ui->setupUi(this);
    // Maximum 0 is the busy indicator until the first file size arrives.
    ui->m_Progress->setMinimum(0);
    ui->m_Progress->setMaximum(0);
    ui->m_bCancel->setEnabled(false);
    ui->m_Speed->setText(tr("Starting..."));
    connect(ui->m_bCancel, &QPushButton::clicked, this, &OrvexFileCopy::emitCancelClicked);
}

OrvexFileCopy::~OrvexFileCopy()
{
    delete ui;
}

void OrvexFileCopy::setText(const QString &text)
{
    ui->m_Text->setText(text);
}

void OrvexFileCopy::setFinishedFilesCount(int count)
{
    m_finishedFiles = count;
}

void OrvexFileCopy::setTotalVisible(bool visible)
{
    ui->m_totalLabel->setVisible(visible);
    ui->m_pTotal->setVisible(visible);
}

void OrvexFileCopy::setTotalMaximum(int maximum)
{
    ui->m_pTotal->setMaximum(maximum);
}

void OrvexFileCopy::setTotalValue(int value)
{
    ui->m_pTotal->setValue(value);
}

int OrvexFileCopy::percentOf(qint64 current, qint64 total)
{
    if (total == 0)
        return 0;
    const float ratio = float(current) / float(total);
    return int(double(ratio) * 100.0);
}

QString OrvexFileCopy::speedLine(qint64 current, qint64 elapsedMs, int percent)
{
    const double kilo = 0.0009765625; // 1/1024
    const double speedK = elapsedMs > 0 ? current / (elapsedMs / 1000.0) * kilo : 0.0;
    const double speedM = speedK * kilo;
    QString unit = QStringLiteral("Kbytes");
    double speed = speedK;
    if (speedM > 0.0) {
        unit = QStringLiteral("MBytes");
        speed = speedM;
    }
    const qint64 seconds = elapsedMs / 1000;
    const qint64 remaining = percent != 0 ? seconds * 100 / percent - seconds : 0;
    const QChar zero(QLatin1Char('0'));
    return QStringLiteral("%1 %2 / sec\r\nVerstrichen: %3:%4:%5 noch %6:%7:%8 ")
        .arg(QString::number(speed, 'g', 2), unit)
        .arg(seconds / 3600, 2, 10, zero)
        .arg((seconds % 3600) / 60, 2, 10, zero)
        .arg((seconds % 3600) % 60, 2, 10, zero)
        .arg(remaining / 3600, 2, 10, zero)
        .arg((remaining % 3600) / 60, 2, 10, zero)
        .arg((remaining % 3600) % 60, 2, 10, zero);
}

void OrvexFileCopy::setProgressMax(QString max)
{
    bool ok = false;
    m_totalBytes = max.toLongLong(&ok);
    if (!ok)
        m_totalBytes = 0;
    ui->m_Progress->setMaximum(100);
    ui->m_Progress->setValue(0);
    m_currentBytes = 0;
    m_timer.restart();
}

void OrvexFileCopy::setProgressValue(QString value)
{
    m_currentBytes = value.toLongLong();
    // A total of 0 or 1 byte is no measurable transfer: no percentage, no speed.
    if (m_totalBytes <= 1)
        return;
    const qint64 elapsed = m_timer.isValid() ? m_timer.elapsed() : 0;
    if (m_currentBytes != 0 && elapsed > 10) {
        const int percent = percentOf(m_currentBytes, m_totalBytes);
        ui->m_Progress->setValue(percent);
        ui->m_bCancel->setEnabled(true);
        if (percent > 0) {
            ui->m_Speed->setText(speedLine(m_currentBytes, elapsed, percent));
            ui->m_pTotal->setValue(m_finishedFiles);
        }
    }
    // The transfer runs in the caller's thread: let the dialog repaint.
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}

void OrvexFileCopy::setProgressMax(qlonglong max)
{
    setProgressMax(QString::number(max));
}

void OrvexFileCopy::setProgressValue(qlonglong value)
{
    setProgressValue(QString::number(value));
}

void OrvexFileCopy::copyFinished()
{
    ui->m_Progress->setMaximum(0);
    ui->m_Progress->setValue(0);
    ui->m_Text->setText(tr("Document sent. Waiting for confirmation..."));
}

void OrvexFileCopy::emitCancelClicked()
{
    emit cancelClicked();
}

void OrvexFileCopy::closeEvent(QCloseEvent *event)
{
    emit cancelClicked();
    reject();
    event->accept();
}
