// The plugin as a host sees it: loaded with QPluginLoader and used only through
// TavloDocPluginInterface, with recording doubles as the host's clients.
#include "classifyinterface.h"
#include "kelarchiveclientinterface.h"
#include "orvexclipboardchooser.h"
#include "orvextranslations.h"
#include "orvexworkbenchdock.h"
#include "orvexworkbenchtab.h"
#include "recordingarchiveclient.h"
#include "recordingclassifyclient.h"
#include "tavlodocplugininterface.h"

#include <QBoxLayout>
#include <QJsonObject>
#include <QMainWindow>
#include <QPluginLoader>
#include <QPointer>
#include <QSignalSpy>
#include <QtTest>

class tst_Plugin : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void loadsLikeAHost();
    void identity();
    void createInstanceMakesAnIndependentPlugin();
    void connectionChain_data();
    void connectionChain();
    void archiveDataWithoutClientOnlyStores();
    void dockIsCreatedOnceAndReparented();
    void hoverWidgetBeforeDock();
    void clientsGivenBeforeTheDockReachIt();
    void archiveClientAfterDockWaitsForConnection();
    void classifyClientAfterDockIsForwarded();
    void refreshesAreCrossWired_data();
    void refreshesAreCrossWired();
    void commandsAreRelayedUnchanged_data();
    void commandsAreRelayedUnchanged();
    void destructionLeavesDockAlive();
    void dockForm();
    void resourcesAreCompiledIn_data();
    void resourcesAreCompiledIn();
    void germanCatalogue(); // last: installs a translator for the rest of the process

private:
    TavloDocPluginInterface *plugin() const;
    static orvexworkbenchdock *dockOf(QWidget *widget);

    QPluginLoader *m_loader = nullptr;
    TavloDocPluginInterface *m_plugin = nullptr; // a fresh instance per test
    RecordingArchiveClient *m_archive = nullptr;
    RecordingClassifyClient *m_classify = nullptr;
    QWidget *m_host = nullptr;
};

static QString pluginPath()
{
    return QCoreApplication::applicationDirPath() + QStringLiteral("/liborvexworkbenchplugin.so");
}

void tst_Plugin::init()
{
    m_loader = new QPluginLoader(pluginPath(), this);
    auto *root = qobject_cast<TavloDocPluginInterface *>(m_loader->instance());
    QVERIFY2(root, qPrintable(m_loader->errorString()));
    // The loader's root instance is shared; every test works on its own copy.
    m_plugin = root->createInstance();
    m_archive = new RecordingArchiveClient(this);
    m_archive->setConnectionValues(QStringLiteral("archive.example"), 4711, QStringLiteral("anna"),
                                   QStringLiteral("secret"), QStringLiteral("tok"),
                                   {QStringLiteral("Main"), QStringLiteral("Other")});
    m_classify = new RecordingClassifyClient(this);
    m_host = new QWidget;
}

void tst_Plugin::cleanup()
{
    delete m_plugin;
    m_plugin = nullptr;
    delete m_host; // owns the dock, as in a real host
    m_host = nullptr;
}

TavloDocPluginInterface *tst_Plugin::plugin() const
{
    return m_plugin;
}

orvexworkbenchdock *tst_Plugin::dockOf(QWidget *widget)
{
    return qobject_cast<orvexworkbenchdock *>(widget);
}

void tst_Plugin::loadsLikeAHost()
{
    QPluginLoader loader(pluginPath());
    const QJsonObject meta = loader.metaData();
    QCOMPARE(meta.value(QStringLiteral("className")).toString(), QStringLiteral("Orvexworkbenchplugin"));
    const QString iid = meta.value(QStringLiteral("IID")).toString();
    QVERIFY2(iid.endsWith(QStringLiteral("Orvexworkbenchplugin/0.1")), qPrintable(iid));
    QVERIFY(meta.value(QStringLiteral("MetaData")).toObject().isEmpty());

    QObject *root = loader.instance();
    QVERIFY2(root, qPrintable(loader.errorString()));
    QVERIFY(root->qt_metacast("Orvexworkbenchplugin"));
    QVERIFY(root->qt_metacast(TavloDocPluginInterface_iid));
    QVERIFY(QByteArray(TavloDocPluginInterface_iid).endsWith("TavloDocPluginInterface/1.0"));
    // Interface and plugin identifiers share one reverse-domain prefix.
    QCOMPARE(iid.chopped(int(qstrlen("Orvexworkbenchplugin/0.1"))),
             QString::fromLatin1(TavloDocPluginInterface_iid).chopped(int(qstrlen("TavloDocPluginInterface/1.0"))));
    QVERIFY(QByteArray(kelArchiveClientInterface_iid).endsWith("kelArchiveClientInterface/1.2"));

    const QMetaObject *meta0 = root->metaObject();
    for (const char *signal : {"requestCurrentDocIds()", "refreshParent()", "reloadProfile()",
                               "doCommand(QString,QStringList)"}) {
        const int index = meta0->indexOfSignal(signal);
        QVERIFY2(index >= 0, signal);
    }
    for (const char *slot : {"updateData()", "updateFullTextInfo(QString)", "showConfigDialog()"}) {
        const int index = meta0->indexOfSlot(slot);
        QVERIFY2(index >= 0, slot);
    }
}

void tst_Plugin::identity()
{
    TavloDocPluginInterface *p = plugin();
    QCOMPARE(p->getPluginName(), QStringLiteral("Clipboard"));
    QCOMPARE(p->pluginType(), 4);
    QCOMPARE(p->getVersion(), QStringLiteral("1.0"));
    QCOMPARE(p->getBuild(), QStringLiteral("1000"));
    QCOMPARE(p->getInternalName(), QStringLiteral("orvexworkbenchplugin"));
    QCOMPARE(p->neededRole(), QStringLiteral("tavloUSER"));
    QVERIFY(p->needsClassifyClient());
    QVERIFY(p->needsArchiveClient());
    QVERIFY(!p->needsFulltextInfo());
    QVERIFY(!p->hasConfigDialog());
    QVERIFY(!p->getDialog());
    QVERIFY(p->getPluginPixmap().isNull());
    QVERIFY(p->getDocumentActions().isEmpty());
    QVERIFY(p->getMenuActions().isEmpty());
    p->setOptions({{QStringLiteral("key"), QStringLiteral("value")}});
    QVERIFY(p->getOptions().isEmpty());
}

void tst_Plugin::createInstanceMakesAnIndependentPlugin()
{
    TavloDocPluginInterface *other = plugin()->createInstance();
    QVERIFY(other);
    QVERIFY(other != plugin());
    QCOMPARE(QByteArray(other->metaObject()->className()), QByteArray("Orvexworkbenchplugin"));
    plugin()->getDockWidget(m_host);
    QVERIFY(!other->getHoverWidget());
    delete other;
}

void tst_Plugin::connectionChain_data()
{
    QTest::addColumn<QString>("failing");
    QTest::addColumn<QStringList>("expectedCalls");
    QTest::addColumn<bool>("dockGetsClient");

    const QString reset = QStringLiteral("resetConnection");
    const QString open = QStringLiteral("openConnection");
    const QString login = QStringLiteral("logIn");
    const QString select = QStringLiteral("selectArchive");
    QTest::newRow("all steps succeed") << QString() << QStringList{reset, open, login, select} << true;
    QTest::newRow("open fails") << open << QStringList{reset, open} << false;
    QTest::newRow("login fails") << login << QStringList{reset, open, login} << false;
    QTest::newRow("select fails") << select << QStringList{reset, open, login, select} << false;
}

void tst_Plugin::connectionChain()
{
    QFETCH(QString, failing);
    QFETCH(QStringList, expectedCalls);
    QFETCH(bool, dockGetsClient);

    auto *dock = dockOf(plugin()->getDockWidget(m_host));
    QVERIFY(dock);
    plugin()->setArchiveClient(m_archive);
    QVERIFY(!dock->tabWidget()->archiveClient());
    if (!failing.isEmpty())
        m_archive->log().setFailing(failing);

    plugin()->setArchiveData(QStringLiteral("archive.example"), 4711, QStringLiteral("anna"),
                             QStringLiteral("secret"), QStringLiteral("Main"), QStringLiteral("tok"));

    QStringList calls = m_archive->log().names();
    calls.removeAll(QStringLiteral("getLastError"));
    QCOMPARE(calls, expectedCalls);
    // Arguments: 1 and 2 open, 3, 4 and 6 log in (in that order), 5 selects.
    QCOMPARE(m_archive->log().last(QStringLiteral("openConnection")).args,
             (QVariantList{QStringLiteral("archive.example"), 4711}));
    if (expectedCalls.contains(QStringLiteral("logIn")))
        QCOMPARE(m_archive->log().last(QStringLiteral("logIn")).args,
                 (QVariantList{QStringLiteral("anna"), QStringLiteral("secret"), QStringLiteral("tok")}));
    if (expectedCalls.contains(QStringLiteral("selectArchive")))
        QCOMPARE(m_archive->log().last(QStringLiteral("selectArchive")).args,
                 QVariantList{QStringLiteral("Main")});
    QCOMPARE(dock->tabWidget()->archiveClient() == m_archive, dockGetsClient);

    // A failed chain is not retried by itself; a later call runs it again from the start.
    m_archive->log().setFailing(failing, false);
    m_archive->log().clear();
    plugin()->setArchiveData(QStringLiteral("archive.example"), 4711, QStringLiteral("anna"),
                             QStringLiteral("secret"), QStringLiteral("Main"), QStringLiteral("tok"));
    QCOMPARE(m_archive->log().names().first(), QStringLiteral("resetConnection"));
    QCOMPARE(dock->tabWidget()->archiveClient(), m_archive);
}

void tst_Plugin::archiveDataWithoutClientOnlyStores()
{
    auto *dock = dockOf(plugin()->getDockWidget(m_host));
    plugin()->setArchiveData(QStringLiteral("archive.example"), 4711, QStringLiteral("anna"),
                             QStringLiteral("secret"), QStringLiteral("Main"), QStringLiteral("tok"));
    QVERIFY(!dock->tabWidget()->archiveClient());

    // A client given afterwards is not connected with the stored values: it
    // waits for the next setArchiveData.
    plugin()->setArchiveClient(m_archive);
    QVERIFY(m_archive->log().calls().isEmpty());
    QVERIFY(!dock->tabWidget()->archiveClient());
}

void tst_Plugin::dockIsCreatedOnceAndReparented()
{
    QMainWindow second;
    QWidget *first = plugin()->getDockWidget(m_host);
    QVERIFY(first);
    QCOMPARE(first->parentWidget(), m_host);
    QCOMPARE(first->objectName(), QStringLiteral("dockClipboard"));
    QCOMPARE(first->windowTitle(), QStringLiteral("Clipboard"));
    QCOMPARE(first->minimumWidth(), 285);

    QWidget *again = plugin()->getDockWidget(m_host);
    QCOMPARE(again, first);
    QCOMPARE(again->parentWidget(), m_host);

    QWidget *moved = plugin()->getDockWidget(&second);
    QCOMPARE(moved, first);
    QCOMPARE(moved->parentWidget(), &second);
    // Back to the host before `second` goes away with the dock in it.
    QCOMPARE(plugin()->getDockWidget(m_host)->parentWidget(), m_host);
}

void tst_Plugin::hoverWidgetBeforeDock()
{
    QVERIFY(!plugin()->getHoverWidget());
    QWidget *dock = plugin()->getDockWidget(m_host);
    auto *chooser = qobject_cast<orvexclipboardchooser *>(plugin()->getHoverWidget());
    QVERIFY(chooser);
    QCOMPARE(chooser->parent(), dock);
    QCOMPARE(dockOf(dock)->tabWidget()->chooser(), chooser);
    plugin()->getDockWidget(m_host);
    QCOMPARE(plugin()->getHoverWidget(), chooser);
}

void tst_Plugin::clientsGivenBeforeTheDockReachIt()
{
    plugin()->setClassifyClient(m_classify);
    plugin()->setArchiveClient(m_archive);
    auto *dock = dockOf(plugin()->getDockWidget(m_host));
    QCOMPARE(dock->tabWidget()->classifyClient(), m_classify);
    QCOMPARE(dock->tabWidget()->archiveClient(), m_archive);
    // Handing the clients over does not connect anything.
    QVERIFY(m_archive->log().calls().isEmpty());
}

void tst_Plugin::archiveClientAfterDockWaitsForConnection()
{
    auto *dock = dockOf(plugin()->getDockWidget(m_host));
    plugin()->setArchiveClient(m_archive);
    QVERIFY(!dock->tabWidget()->archiveClient());

    m_archive->log().setFailing(QStringLiteral("logIn"));
    plugin()->setArchiveData(QStringLiteral("archive.example"), 4711, QStringLiteral("anna"),
                             QStringLiteral("secret"), QStringLiteral("Main"), QStringLiteral("tok"));
    QVERIFY(!dock->tabWidget()->archiveClient());

    m_archive->log().setFailing(QStringLiteral("logIn"), false);
    plugin()->setArchiveData(QStringLiteral("archive.example"), 4711, QStringLiteral("anna"),
                             QStringLiteral("secret"), QStringLiteral("Main"), QStringLiteral("tok"));
    QCOMPARE(dock->tabWidget()->archiveClient(), m_archive);
    QVERIFY(m_archive->isConnected());
}

void tst_Plugin::classifyClientAfterDockIsForwarded()
{
    auto *dock = dockOf(plugin()->getDockWidget(m_host));
    QVERIFY(!dock->tabWidget()->classifyClient());
    plugin()->setClassifyClient(m_classify);
    QCOMPARE(dock->tabWidget()->classifyClient(), m_classify);
}

void tst_Plugin::refreshesAreCrossWired_data()
{
    QTest::addColumn<bool>("hostSelection"); // setCurrentDocIds, else the host's updateData
    QTest::addColumn<QList<int>>("docIds");
    QTest::addColumn<bool>("clipboardListReloaded");

    QTest::newRow("selection, empty lists") << true << QList<int>() << true;
    QTest::newRow("selection, some ids") << true << QList<int>{12, 13} << true;
    QTest::newRow("host update") << false << QList<int>() << false;
}

void tst_Plugin::refreshesAreCrossWired()
{
    QFETCH(bool, hostSelection);
    QFETCH(QList<int>, docIds);
    QFETCH(bool, clipboardListReloaded);

    // Without a dock neither refresh does anything.
    plugin()->setClassifyClient(m_classify);
    plugin()->setCurrentDocIds(docIds, docIds);
    plugin()->updateData();
    QVERIFY(m_classify->log().calls().isEmpty());

    plugin()->getDockWidget(m_host);
    m_classify->log().clear();
    if (hostSelection)
        plugin()->setCurrentDocIds(docIds, docIds);
    else
        QVERIFY(QMetaObject::invokeMethod(plugin(), "updateData")); // as a slot, as hosts call it

    // The light refresh starts with the clipboard list; the full reload works on the boards.
    QCOMPARE(m_classify->log().count(QStringLiteral("getClipboards")) > 0, clipboardListReloaded);
}

void tst_Plugin::commandsAreRelayedUnchanged_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<QStringList>("args");

    QTest::newRow("open") << "OPENDOC" << QStringList{"4711", "it's a note", "12"};
    QTest::newRow("classification") << "SHOWCLASSIFICATION" << QStringList{"12"};
    QTest::newRow("export") << "EXPORTDOCS" << QStringList{"3", "1", "2"};
    QTest::newRow("mail, no cards") << "MAILDOCS" << QStringList();
    QTest::newRow("unknown word") << "SOMETHINGELSE" << QStringList{""};
}

void tst_Plugin::commandsAreRelayedUnchanged()
{
    QFETCH(QString, command);
    QFETCH(QStringList, args);

    auto *dock = dockOf(plugin()->getDockWidget(m_host));
    QSignalSpy hostSide(plugin(), &TavloDocPluginInterface::doCommand);
    QSignalSpy stringSide(plugin(), SIGNAL(doCommand(QString,QStringList)));
    emit dock->tabWidget()->doCommand(command, args);

    QCOMPARE(hostSide.count(), 1);
    QCOMPARE(hostSide.first().at(0).toString(), command);
    QCOMPARE(hostSide.first().at(1).toStringList(), args);
    QCOMPARE(stringSide.count(), 1);
}

void tst_Plugin::destructionLeavesDockAlive()
{
    QPointer<QWidget> dock = plugin()->getDockWidget(m_host);
    QPointer<QWidget> chooser = plugin()->getHoverWidget();
    QTest::ignoreMessage(QtDebugMsg, "WORKBENCH DESTROYED");
    delete m_plugin;
    m_plugin = nullptr;
    QVERIFY(dock);
    QVERIFY(chooser);
    delete m_host;
    m_host = nullptr;
    QVERIFY(!dock);
    QVERIFY(!chooser);
}

void tst_Plugin::dockForm()
{
    auto *dock = dockOf(plugin()->getDockWidget(m_host));
    QVERIFY(dock->testAttribute(Qt::WA_MouseTracking));
    QWidget *contents = dock->widget();
    QVERIFY(contents);
    QCOMPARE(contents->objectName(), QStringLiteral("dockWidgetContents"));
    auto *layout = qobject_cast<QVBoxLayout *>(contents->layout());
    QVERIFY(layout);
    QCOMPARE(layout->objectName(), QStringLiteral("verticalLayout"));
    QCOMPARE(layout->spacing(), 0);
    QCOMPARE(layout->contentsMargins(), QMargins(0, 0, 0, 0));
    QCOMPARE(dock->tabWidget()->objectName(), QStringLiteral("tabWidget"));
    QCOMPARE(dock->tabWidget()->parentWidget(), contents);
    QCOMPARE(layout->indexOf(dock->tabWidget()), 0);
}

void tst_Plugin::resourcesAreCompiledIn_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("lock icon") << ":/icons/lock.svg";
    QTest::newRow("add icon") << ":/icons/tab_add.svg";
    QTest::newRow("close icon") << ":/icons/dock_close.svg";
    QTest::newRow("jQuery") << ":/material/jquery.min.js";
    QTest::newRow("MDL script") << ":/material/material.min.js";
    QTest::newRow("MDL styles") << ":/material/material.min.css";
    QTest::newRow("icon font") << ":/material/material-icons.woff2";
    QTest::newRow("web channel script") << ":/material/qwebchannel.js";
    QTest::newRow("German catalogue") << ":/translations/orvexworkbench_de.qm";
}

void tst_Plugin::resourcesAreCompiledIn()
{
    QFETCH(QString, path);
    QFile file(path);
    QVERIFY2(file.open(QIODevice::ReadOnly), qPrintable(path));
    QVERIFY(file.size() > 0);
}

void tst_Plugin::germanCatalogue()
{
    QVERIFY(OrvexTranslations::install(QLocale(QLocale::German, QLocale::Germany)));
    QCOMPARE(plugin()->getPluginName(), QStringLiteral("Zwischenablage"));
    QCOMPARE(plugin()->getDockWidget(m_host)->windowTitle(), QStringLiteral("Zwischenablage"));
}

QTEST_MAIN(tst_Plugin)
#include "tst_plugin.moc"
