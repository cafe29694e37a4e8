// Loads the installed workbench plugin the way a host does, and lets the
// workbench library load the archive client that ships beside it.
#include <classifyinterface.h>
#include <kelarchiveclientinterface.h>
#include <orvexarchiveworker.h>
#include <orvexmimedata.h>
#include <tavlodocplugininterface.h>

#include <QApplication>
#include <QFileInfo>
#include <QPluginLoader>
#include <QTextStream>

int main(int argc, char *argv[])
{
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts); // the plugin brings QtWebEngine
    QApplication app(argc, argv);
    QTextStream out(stdout);
    QPluginLoader loader(QStringLiteral(WORKBENCH_PLUGIN));
    auto *plugin = qobject_cast<TavloDocPluginInterface *>(loader.instance());
    if (!plugin) {
        out << "not loaded: " << loader.errorString() << '\n';
        return 1;
    }
    OrvexArchiveWorker worker;
    worker.setApplicationFolder(QFileInfo(loader.fileName()).path());
    worker.doConnect(false); // no archive server: only loading the client counts here
    out << "plugin " << loader.fileName() << ' ' << plugin->getInternalName() << ' '
        << loader.metaData().value("IID").toString() << '\n'
        << "archive client " << (worker.getArchiveClient() ? QStringLiteral("loaded") : worker.getLastError()) << '\n'
        << "drag formats " << OrvexMimeData().formats().join(' ') << '\n';
    return 0;
}
