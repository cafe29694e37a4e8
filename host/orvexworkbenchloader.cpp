#include "orvexworkbenchloader.h"

#include "tavlodocplugininterface.h"

#include <QDir>
#include <QFileInfo>

QString OrvexWorkbenchLoader::defaultPluginPath()
{
    return QDir(QCoreApplication::applicationDirPath()).filePath(QStringLiteral("liborvexworkbenchplugin.so"));
}

bool OrvexWorkbenchLoader::load(const QString &fileName)
{
    m_plugin = nullptr;
    const QString path = QFileInfo(fileName).absoluteFilePath();
    if (!QFileInfo::exists(path)) {
        m_error = tr("The workbench plugin %1 does not exist.").arg(QDir::toNativeSeparators(path));
        return false;
    }
    m_loader.setFileName(path);
    QObject *root = m_loader.instance();
    if (!root) {
        m_error = tr("The workbench plugin %1 could not be loaded: %2")
                      .arg(QDir::toNativeSeparators(path), m_loader.errorString());
        return false;
    }
    m_plugin = qobject_cast<TavloDocPluginInterface *>(root);
    if (!m_plugin) {
        m_error = tr("%1 is a Qt plugin, but not a document plugin (%2).")
                      .arg(QDir::toNativeSeparators(path), QString::fromLatin1(TavloDocPluginInterface_iid));
        return false;
    }
    m_error.clear();
    return true;
}
