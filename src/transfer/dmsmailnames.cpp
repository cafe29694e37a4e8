#include "dmsmailnames.h"
#include "ui_dmsmailnames.h"

#include "orvexlinedelegate.h"

#include <QFileIconProvider>
#include <QFileInfo>

namespace {
// Long enough for any file name a file system accepts.
const int kMaxNameLength = 4194304;
}

dmsmailnames::dmsmailnames(QWidget *parent)
    : QDialog(parent), ui(new Ui::dmsmailnames)
{
    ui->setupUi(this);
    connect(ui->m_fileList, &QListWidget::itemChanged, this, &dmsmailnames::itemChanged);
    ui->m_fileList->setItemDelegateForColumn(
        0, new OrvexLineDelegate(QStringList(), kMaxNameLength, false, ui->m_fileList));
}

dmsmailnames::~dmsmailnames()
{
    delete ui;
}

void dmsmailnames::setFileList(const QStringList &files)
{
    ui->m_fileList->clear();
    QFileIconProvider icons;
    for (const QString &file : files) {
        const QFileInfo info(file);
        auto *item = new QListWidgetItem(icons.icon(info), info.fileName());
        item->setFlags(item->flags() | Qt::ItemIsEditable);
        item->setData(InitialNameRole, info.fileName());
        ui->m_fileList->addItem(item);
    }
}

QStringList dmsmailnames::getFileList() const
{
    QStringList names;
    for (int row = 0; row < ui->m_fileList->count(); ++row)
        names << ui->m_fileList->item(row)->text();
    return names;
}

void dmsmailnames::itemChanged(QListWidgetItem *cur)
{
    if (!cur)
        return;
    const QString suffix = QFileInfo(cur->data(InitialNameRole).toString()).suffix();
    const QString text = cur->text();
    if (!text.endsWith(suffix)) {
        const bool blocked = blockSignals(true);
        cur->setText(text + QLatin1Char('.') + suffix);
        blockSignals(blocked);
    }
}
