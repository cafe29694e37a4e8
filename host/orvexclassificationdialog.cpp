#include "orvexclassificationdialog.h"
#include "ui_orvexclassificationdialog.h"

#include <QHeaderView>

OrvexClassificationDialog::OrvexClassificationDialog(QWidget *parent)
    : QDialog(parent), ui(new Ui::OrvexClassificationDialog)
{
    ui->setupUi(this);
    ui->m_fields->header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
}

OrvexClassificationDialog::~OrvexClassificationDialog()
{
    delete ui;
}

void OrvexClassificationDialog::setHeading(const QString &heading)
{
    ui->m_heading->setText(heading);
}

void OrvexClassificationDialog::setFields(const QList<QPair<QString, QString>> &fields)
{
    ui->m_fields->clear();
    for (const auto &field : fields)
        new QTreeWidgetItem(ui->m_fields, {field.first, field.second});
}

QList<QPair<QString, QString>> OrvexClassificationDialog::fields() const
{
    QList<QPair<QString, QString>> result;
    for (int i = 0; i < ui->m_fields->topLevelItemCount(); ++i) {
        const QTreeWidgetItem *item = ui->m_fields->topLevelItem(i);
        result.append({item->text(0), item->text(1)});
    }
    return result;
}
