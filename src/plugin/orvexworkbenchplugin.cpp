#include "orvexworkbenchplugin.h"

#include "classifyinterface.h"
#include "kelarchiveclientinterface.h"
#include "orvexclipboardchooser.h"
#include "orvexlog.h"
#include "orvextranslations.h"
#include "orvexworkbenchdock.h"

Orvexworkbenchplugin::Orvexworkbenchplugin(QObject *parent)
    : TavloDocPluginInterface(parent)
{
    OrvexTranslations::install();
}

Orvexworkbenchplugin::~Orvexworkbenchplugin()
{
    // The dock belongs to the widget the host gave it, the chooser to the dock.
    orvexDebug() << "WORKBENCH DESTROYED";
}

QWidget *Orvexworkbenchplugin::getDockWidget(QWidget *parent)
{
    if (!m_dock) {
        m_dock = new orvexworkbenchdock(parent);
        m_dock->setObjectName(QStringLiteral("dockClipboard"));
        m_dock->setWindowTitle(tr("Clipboard"));
        m_dock->setMinimumWidth(285);
        if (m_classifyClient)
            m_dock->setClassifyClient(m_classifyClient);
        if (m_archiveClient)
            m_dock->setArchiveClient(m_archiveClient);
        connect(m_dock, SIGNAL(doCommand(QString,QStringList)),
                this, SIGNAL(doCommand(QString,QStringList)));
        m_hoverWidget = new orvexclipboardchooser(m_dock);
        m_dock->setChooser(m_hoverWidget);
    }
    if (m_dock->parentWidget() != parent)
        m_dock->setParent(parent);
    return m_dock;
}

QDialog *Orvexworkbenchplugin::getDialog()
{
    return nullptr;
}

QPixmap Orvexworkbenchplugin::getPluginPixmap()
{
    return QPixmap();
}

QString Orvexworkbenchplugin::getPluginName()
{
    return tr("Clipboard");
}

int Orvexworkbenchplugin::pluginType()
{
    return 4;
}

QList<QAction *> Orvexworkbenchplugin::getDocumentActions()
{
    return {};
}

QList<QAction *> Orvexworkbenchplugin::getMenuActions()
{
    return {};
}

bool Orvexworkbenchplugin::needsClassifyClient()
{
    return true;
}

bool Orvexworkbenchplugin::needsArchiveClient()
{
    return true;
}

bool Orvexworkbenchplugin::needsFulltextInfo()
{
    return false;
}

void Orvexworkbenchplugin::setArchiveData(QString text1, int number, QString text3, QString text4,
                                          QString text5, QString text6)
{
    m_text1 = text1;
    m_number = number;
    m_text3 = text3;
    m_text4 = text4;
    m_text5 = text5;
    m_text6 = text6;
    if (!m_archiveClient)
        return;

    m_archiveClient->resetConnection();
    if (!m_archiveClient->openConnection(m_text1, m_number))
        return;
    if (!m_archiveClient->logIn(m_text3, m_text4, m_text6))
        return;
    if (!m_archiveClient->selectArchive(m_text5))
        return;

    m_connected = true;
    if (m_dock)
        m_dock->setArchiveClient(m_archiveClient);
}

void Orvexworkbenchplugin::setArchiveClient(kelArchiveClientInterface *client)
{
    // Reaches an existing dock only through a successful setArchiveData.
    m_archiveClient = client;
}

void Orvexworkbenchplugin::setClassifyClient(ClassifyInterface *client)
{
    m_classifyClient = client;
    if (m_dock)
        m_dock->setClassifyClient(client);
}

void Orvexworkbenchplugin::setCurrentDocIds(QList<int>, QList<int>)
{
    // The host's document selection only tells that its data may have changed:
    // a light refresh of the clipboards.
    if (m_dock)
        m_dock->updateData();
}

void Orvexworkbenchplugin::setFieldData(QMap<int, QString>, QList<QVariant>)
{
}

QString Orvexworkbenchplugin::neededRole()
{
    return QStringLiteral("tavloUSER");
}

void Orvexworkbenchplugin::setOptions(QMap<QString, QString>)
{
}

QMap<QString, QString> Orvexworkbenchplugin::getOptions()
{
    return {};
}

bool Orvexworkbenchplugin::hasConfigDialog()
{
    return false;
}

QString Orvexworkbenchplugin::getVersion()
{
    return QStringLiteral("1.0");
}

QString Orvexworkbenchplugin::getBuild()
{
    return QStringLiteral("1000");
}

QString Orvexworkbenchplugin::getInternalName()
{
    return QStringLiteral("orvexworkbenchplugin");
}

TavloDocPluginInterface *Orvexworkbenchplugin::createInstance()
{
    return new Orvexworkbenchplugin;
}

QWidget *Orvexworkbenchplugin::getHoverWidget()
{
    return m_hoverWidget;
}

void Orvexworkbenchplugin::updateData()
{
    // The host's full update: every board reloads its classification and cards.
    if (m_dock)
        m_dock->reloadData();
}

void Orvexworkbenchplugin::updateFullTextInfo(QString)
{
}

void Orvexworkbenchplugin::showConfigDialog()
{
}
