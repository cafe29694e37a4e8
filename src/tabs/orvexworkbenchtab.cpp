#include "orvexworkbenchtab.h"

#include "classifyinterface.h"

orvexworkbenchtab::orvexworkbenchtab(QWidget *parent)
    : QTabWidget(parent)
{
}

orvexworkbenchtab::~orvexworkbenchtab() = default;

void orvexworkbenchtab::setChooser(orvexclipboardchooser *chooser)
{
    m_chooser = chooser;
}

void orvexworkbenchtab::setArchiveClient(kelArchiveClientInterface *client)
{
    m_archiveClient = client;
}

void orvexworkbenchtab::setClassifyClient(ClassifyInterface *client)
{
    m_classifyClient = client;
}

void orvexworkbenchtab::updateData()
{
    reloadClipboards();
}

void orvexworkbenchtab::reloadData()
{
}

void orvexworkbenchtab::stop()
{
}

void orvexworkbenchtab::reloadClipboards()
{
    // Tabs for the listed clipboards arrive with the tab set's own work.
    if (!m_classifyClient)
        return;
    QList<QPair<QString, QString>> clipboards;
    m_classifyClient->getClipboards(clipboards);
}
