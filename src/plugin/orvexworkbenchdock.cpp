#include "orvexworkbenchdock.h"
#include "ui_orvexworkbenchdock.h"

#include "orvexworkbenchtab.h"

orvexworkbenchdock::orvexworkbenchdock(QWidget *parent)
    : QDockWidget(parent), ui(new Ui::orvexworkbenchdock)
{
    ui->setupUi(this);
    setAttribute(Qt::WA_MouseTracking);
    connect(ui->tabWidget, SIGNAL(doCommand(QString,QStringList)),
            this, SIGNAL(doCommand(QString,QStringList)));
}

orvexworkbenchdock::~orvexworkbenchdock()
{
    delete ui;
}

void orvexworkbenchdock::setChooser(orvexclipboardchooser *chooser)
{
    ui->tabWidget->setChooser(chooser);
}

void orvexworkbenchdock::updateData()
{
    ui->tabWidget->updateData();
}

void orvexworkbenchdock::reloadData()
{
    ui->tabWidget->reloadData();
}

void orvexworkbenchdock::setArchiveClient(kelArchiveClientInterface *client)
{
    ui->tabWidget->setArchiveClient(client);
}

void orvexworkbenchdock::setClassifyClient(ClassifyInterface *client)
{
    ui->tabWidget->setClassifyClient(client);
}

orvexworkbenchtab *orvexworkbenchdock::tabWidget() const
{
    return ui->tabWidget;
}
