#include "orvexlogindialog.h"
#include "ui_orvexlogindialog.h"

#include <QEvent>
#include <QSettings>

namespace {
const QString kLastProfileKey = QStringLiteral("lastProfile");
const QString kGeometryKey = QStringLiteral("geometry");
} // namespace

orvexLoginDialog::orvexLoginDialog(QWidget *parent, bool rememberGeometry)
    : QDialog(parent)
    , m_rememberGeometry(rememberGeometry)
    , ui(new Ui::orvexLoginDialog)
    , m_settings(new QSettings(QStringLiteral("vantrel gmbh"), QStringLiteral("orvexlogin")))
{
    setAttribute(Qt::WA_AlwaysStackOnTop);
    setWindowFlags(windowFlags() | Qt::WindowStaysOnTopHint);
    ui->setupUi(this);
    if (parent)
        setWindowIcon(parent->windowIcon());
}

orvexLoginDialog::~orvexLoginDialog()
{
    delete ui;
    delete m_settings;
}

void orvexLoginDialog::setProfiles(QStringList names)
{
    ui->m_cbProfiles->clear();
    ui->m_cbProfiles->insertItems(0, names);
    if (!m_settings->contains(kLastProfileKey))
        return;
    const int index = ui->m_cbProfiles->findText(m_settings->value(kLastProfileKey).toString(),
                                                 Qt::MatchExactly | Qt::MatchCaseSensitive);
    if (index >= 0)
        ui->m_cbProfiles->setCurrentIndex(index);
}

int orvexLoginDialog::getProfileIndex() const
{
    return ui->m_cbProfiles->currentIndex();
}

int orvexLoginDialog::exec()
{
    if (m_rememberGeometry && m_settings->contains(kGeometryKey))
        restoreGeometry(m_settings->value(kGeometryKey).toByteArray());
    return QDialog::exec();
}

void orvexLoginDialog::accept()
{
    storeGeometry();
    m_settings->setValue(kLastProfileKey, ui->m_cbProfiles->currentText());
    QDialog::accept();
}

void orvexLoginDialog::reject()
{
    storeGeometry();
    QDialog::reject();
}

void orvexLoginDialog::storeGeometry()
{
    if (m_rememberGeometry)
        m_settings->setValue(kGeometryKey, saveGeometry());
}

void orvexLoginDialog::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange)
        ui->retranslateUi(this);
    QDialog::changeEvent(event);
}
