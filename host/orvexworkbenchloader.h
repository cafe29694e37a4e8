#pragma once

#include <QCoreApplication>
#include <QPluginLoader>
#include <QString>

class TavloDocPluginInterface;

// Loads the workbench plugin module the way a foreign host does: by file name
// with QPluginLoader, used only through TavloDocPluginInterface.
class OrvexWorkbenchLoader
{
    Q_DECLARE_TR_FUNCTIONS(OrvexWorkbenchLoader)

public:
    // liborvexworkbenchplugin.so beside the executable.
    static QString defaultPluginPath();

    bool load(const QString &fileName);
    TavloDocPluginInterface *plugin() const { return m_plugin; }
    QString errorString() const { return m_error; }

private:
    QPluginLoader m_loader;
    TavloDocPluginInterface *m_plugin = nullptr;
    QString m_error;
};
