#include "orvexcbrights.h"
#include "ui_orvexcbrights.h"

#include "classifyinterface.h"
#include "orvexlog.h"
#include "orvexroles.h"

orvexcbrights::orvexcbrights(const QString &clipboardId, ClassifyInterface *classifyClient,
                             QWidget *parent)
    : QDialog(parent),
      m_ui(new Ui::orvexcbrights),
      m_classifyClient(classifyClient),
      m_clipboardId(clipboardId)
{
    m_ui->setupUi(this);
    loadRights();
}

orvexcbrights::~orvexcbrights()
{
    delete m_ui;
}

QStringList orvexcbrights::getRoles()
{
    return m_ui->m_rightsWidget->getReadWriteRoles();
}

QStringList orvexcbrights::getWriteRoles()
{
    return m_ui->m_rightsWidget->getWriteRoles();
}

// The clipboard's rights go in before the offered roles: the available list
// leaves out, by display name, what the edit and view lists hold already.
void orvexcbrights::loadRights()
{
    if (!m_classifyClient) {
        orvexWarning() << "RIGHTS" << "no classification client for clipboard" << m_clipboardId;
        return;
    }
    const QStringList allRoles = m_classifyClient->getAllRoles();
    const QMap<QString, QString> displayNames =
        OrvexRoles::parseRoleNames(m_classifyClient->getRoleNames(allRoles));
    m_ui->m_rightsWidget->setRoles(m_classifyClient->getClipboardRoles(m_clipboardId),
                                   displayNames, true);
    m_ui->m_rightsWidget->setUsers(allRoles, displayNames);
}
