#include "orvexwbcornerwidget.h"
#include "ui_orvexwbcornerwidget.h"

orvexwbcornerwidget::orvexwbcornerwidget(QWidget *parent)
    : QWidget(parent), ui(new Ui::orvexwbcornerwidget)
{
    ui->setupUi(this);
    connect(ui->m_addTab, &QToolButton::clicked, this, &orvexwbcornerwidget::doEmitAddTab);
    // Every keystroke re-filters the tabs.
    connect(ui->m_tabFilter, &QLineEdit::textChanged, this, &orvexwbcornerwidget::filterChanged);
}

orvexwbcornerwidget::~orvexwbcornerwidget()
{
    delete ui;
}

QString orvexwbcornerwidget::filterText() const
{
    return ui->m_tabFilter->text();
}

void orvexwbcornerwidget::clearFilter()
{
    ui->m_tabFilter->setText(QString());
}

void orvexwbcornerwidget::doEmitAddTab()
{
    emit addTab();
}
