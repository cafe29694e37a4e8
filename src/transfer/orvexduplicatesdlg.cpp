#include "orvexduplicatesdlg.h"
#include "ui_orvexduplicatesdlg.h"

#include "orvexlog.h"
#include "orvexplaceholderimage.h"

#include <QCoreApplication>
#include <QPushButton>
#include <QSettings>
#include <QTimer>

const char *const OrvexDuplicatesDlg::SettingsOrganisation = "Vantrel GmbH";
const char *const OrvexDuplicatesDlg::GeometryKey = "dupDialogGeometry";
const char *const OrvexDuplicatesDlg::ShowDifferencesKey = "showDupDifferences";

namespace {

QSettings dialogSettings()
{
    return QSettings(QString::fromLatin1(OrvexDuplicatesDlg::SettingsOrganisation),
                     QCoreApplication::applicationName());
}

const QString kImageStyle = QStringLiteral("QLabel { background-color: grey; }");

// Images are kept at this distance from the label's edges.
constexpr int kImageMargin = 11;

} // namespace

OrvexDuplicatesDlg::OrvexDuplicatesDlg(QWidget *parent)
    : QDialog(parent),
      m_blinkTimer(new QTimer(this)),
      m_ui(new Ui::OrvexDuplicatesDlg),
      m_showTimer(new QTimer(this))
{
    m_ui->setupUi(this);
    m_blinkTimer->setObjectName(QStringLiteral("m_blinkTimer"));
    m_blinkTimer->setInterval(BlinkInterval);
    m_showTimer->setObjectName(QStringLiteral("m_showTimer"));
    m_showTimer->setSingleShot(true);
    m_showTimer->setInterval(LayoutDelay);

    QSettings settings = dialogSettings();
    restoreGeometry(settings.value(QLatin1String(GeometryKey)).toByteArray());

    m_ui->m_origThumb->setStyleSheet(kImageStyle);
    m_ui->m_dupThumb->setStyleSheet(kImageStyle);
    m_ui->c_showDiffs->setChecked(settings.value(QLatin1String(ShowDifferencesKey), true).toBool());

    connect(m_ui->c_showDiffs, &QCheckBox::clicked, this, &OrvexDuplicatesDlg::saveDiffSetting);
    connect(m_ui->m_bCancelAll, &QPushButton::clicked, this, &OrvexDuplicatesDlg::doCancelAll);
    connect(m_ui->b_next, &QPushButton::clicked, this, &OrvexDuplicatesDlg::goNext);
    connect(m_ui->b_prev, &QPushButton::clicked, this, &OrvexDuplicatesDlg::goPrev);
    connect(m_blinkTimer, &QTimer::timeout, this, &OrvexDuplicatesDlg::showDiffs);
    connect(m_showTimer, &QTimer::timeout, this, &OrvexDuplicatesDlg::updateCurrent);

    m_ui->m_norights->setText(tr("You are not authorized to display this duplicate."));
    m_ui->m_norights->hide();
    m_ui->m_totallabel->setText(tr("Found %1 duplicates").arg(0));
}

OrvexDuplicatesDlg::~OrvexDuplicatesDlg()
{
    QSettings settings = dialogSettings();
    settings.setValue(QLatin1String(GeometryKey), saveGeometry());
    delete m_ui;
}

void OrvexDuplicatesDlg::setDuplicates(const QList<thumbData> &duplicates)
{
    m_duplicates = duplicates;
    m_current = 0;
    m_ui->m_totallabel->setText(tr("Found %1 duplicates").arg(m_duplicates.size()));
    if (m_started) {
        updateNavigation();
        m_ui->m_docid->setText(currentCaption());
        showCurrent();
    }
}

void OrvexDuplicatesDlg::setOriginals(const QMap<QString, QByteArray> &originals)
{
    m_originals = originals;
    if (m_started)
        showCurrent();
}

void OrvexDuplicatesDlg::setButtonNames(const QString &acceptText, const QString &rejectText)
{
    if (QPushButton *ok = m_ui->buttonBox->button(QDialogButtonBox::Ok))
        ok->setText(acceptText);
    if (QPushButton *cancel = m_ui->buttonBox->button(QDialogButtonBox::Cancel))
        cancel->setText(rejectText);
}

bool OrvexDuplicatesDlg::addPlaceholderFingerprint(const QByteArray &md5Hex)
{
    return OrvexPlaceholderImage::addFingerprint(md5Hex);
}

bool OrvexDuplicatesDlg::isPlaceholderImage(const QByteArray &imageBytes)
{
    return OrvexPlaceholderImage::isPlaceholder(imageBytes);
}

void OrvexDuplicatesDlg::showEvent(QShowEvent *event)
{
    QDialog::showEvent(event);
    if (!m_started) {
        m_started = true;
        // Wait for the first layout before images are scaled to the labels.
        QTimer::singleShot(LayoutDelay, this, &OrvexDuplicatesDlg::start);
    } else if (!m_blinkTimer->isActive()) {
        m_blinkTimer->start();
    }
}

void OrvexDuplicatesDlg::hideEvent(QHideEvent *event)
{
    m_blinkTimer->stop();
    QDialog::hideEvent(event);
}

void OrvexDuplicatesDlg::start()
{
    // Scaled contents would stretch the page images; they are scaled by hand,
    // keeping their aspect ratio.
    m_ui->m_origThumb->setScaledContents(false);
    m_ui->m_dupThumb->setScaledContents(false);
    showCurrent();
    m_ui->m_docid->setText(currentCaption());
    updateNavigation();
    if (isVisible())
        m_blinkTimer->start();
}

void OrvexDuplicatesDlg::resizeEvent(QResizeEvent *event)
{
    QDialog::resizeEvent(event);
    if (m_started)
        showCurrent();
}

void OrvexDuplicatesDlg::showCurrent()
{
    m_showTimer->start();
}

void OrvexDuplicatesDlg::updateCurrent()
{
    m_blinkPhase = false;
    if (m_current < 0 || m_current >= m_duplicates.size()) {
        m_dupPixmap = QPixmap();
        m_origPixmap = QPixmap();
        m_origBlinkPixmap = QPixmap();
        m_ui->m_dupThumb->clear();
        m_ui->m_origThumb->clear();
        m_notAuthorized = false;
        m_ui->m_norights->hide();
        m_ui->c_showDiffs->setEnabled(true);
        return;
    }

    const thumbData &duplicate = m_duplicates.at(m_current);
    m_dupPixmap = scaledFor(QImage::fromData(duplicate.image), m_ui->m_dupThumb);
    m_ui->m_dupThumb->setPixmap(m_dupPixmap);
    // A key the originals do not hold leaves the original side empty, which
    // also keeps the blink off.
    const QImage original = QImage::fromData(m_originals.value(duplicate.originalKey));
    m_origPixmap = scaledFor(original, m_ui->m_origThumb);
    m_ui->m_origThumb->setPixmap(m_origPixmap);
    // In the blink the original stands in the duplicate's place, at its scale,
    // so that only real differences flicker.
    m_origBlinkPixmap = scaledFor(original, m_ui->m_dupThumb);

    m_notAuthorized = OrvexPlaceholderImage::isPlaceholder(duplicate.image);
    m_ui->m_norights->setVisible(m_notAuthorized);
    m_ui->c_showDiffs->setEnabled(!m_notAuthorized);
    if (m_notAuthorized)
        orvexDebug() << "DUPLICATES" << "not authorised to show" << duplicate.caption;
}

void OrvexDuplicatesDlg::updateNavigation()
{
    m_ui->b_next->setEnabled(m_current + 1 < m_duplicates.size());
    m_ui->b_prev->setEnabled(m_current > 0 && !m_duplicates.isEmpty());
}

QString OrvexDuplicatesDlg::currentCaption() const
{
    if (m_current < 0 || m_current >= m_duplicates.size())
        return QString();
    return m_duplicates.at(m_current).caption;
}

QPixmap OrvexDuplicatesDlg::scaledFor(const QImage &image, const QLabel *label) const
{
    if (image.isNull())
        return QPixmap();
    const QSize box(qMax(1, label->width() - kImageMargin), qMax(1, label->height() - kImageMargin));
    return QPixmap::fromImage(image.scaled(box, Qt::KeepAspectRatio, Qt::SmoothTransformation));
}

bool OrvexDuplicatesDlg::holdsImage(const QLabel *label)
{
    return !label->pixmap(Qt::ReturnByValue).isNull();
}

void OrvexDuplicatesDlg::goNext()
{
    if (m_current + 1 >= m_duplicates.size())
        return;
    ++m_current;
    updateNavigation();
    m_blinkPhase = false;
    m_ui->m_dupThumb->clear();
    showCurrent();
    m_ui->m_docid->setText(currentCaption());
}

void OrvexDuplicatesDlg::goPrev()
{
    if (m_current <= 0)
        return;
    m_current = qMin(m_current, m_duplicates.size()) - 1;
    updateNavigation();
    m_blinkPhase = false;
    m_ui->m_dupThumb->clear();
    showCurrent();
    m_ui->m_docid->setText(currentCaption());
}

void OrvexDuplicatesDlg::showDiffs()
{
    const bool blinking = m_ui->c_showDiffs->isEnabled() && m_ui->c_showDiffs->isChecked();
    if (blinking && holdsImage(m_ui->m_dupThumb) && holdsImage(m_ui->m_origThumb)) {
        m_ui->m_dupThumb->setPixmap(m_blinkPhase ? m_dupPixmap : m_origBlinkPixmap);
        m_blinkPhase = !m_blinkPhase;
    } else if (!m_ui->c_showDiffs->isChecked() && m_blinkPhase) {
        m_ui->m_dupThumb->setPixmap(m_dupPixmap);
        m_blinkPhase = false;
    }
}

void OrvexDuplicatesDlg::saveDiffSetting()
{
    QSettings settings = dialogSettings();
    settings.setValue(QLatin1String(ShowDifferencesKey), m_ui->c_showDiffs->isChecked());
    settings.sync();
}

void OrvexDuplicatesDlg::setCancelAllVisible(bool visible)
{
    m_ui->m_bCancelAll->setVisible(visible);
}

void OrvexDuplicatesDlg::doCancelAll()
{
    emit cancelAll();
    reject();
}
