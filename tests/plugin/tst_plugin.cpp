// The plugin as a host sees it: loaded with QPluginLoader and used only through
// TavloDocPluginInterface, with recording doubles as the host's clients.
#include "kelarchiveclientinterface.h"
#include "orvexclipboardchooser.h"
#include "orvextranslations.h"
#include "orvexworkbenchdock.h"
#include "orvexworkbenchtab.h"
#include "recordingarchiveclient.h"
#include "recordingclassifyclient.h"
#include "tavlodocplugininterface.h"

#include <QJsonObject>
#include <QPluginLoader>
#include <QPointer>
#include <QSignalSpy>
#include <QtTest>

static QString pluginPath()
{
    return QCoreApplication::applicationDirPath() + QStringLiteral("/liborvexworkbenchplugin.so");
}

class tst_Plugin : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        auto *loader = new QPluginLoader(pluginPath(), this);
        auto *root = qobject_cast<TavloDocPluginInterface *>(loader->instance());
        QVERIFY2(root, qPrintable(loader->errorString()));
        m_plugin = root->createInstance(); // the loader's root instance is shared
        m_archive = new RecordingArchiveClient(this);
        m_archive->setConnectionValues("archive.example", 4711, "anna", "secret", "tok", {"Main", "Other"});
        m_classify = new RecordingClassifyClient(this);
        m_host = new QWidget;
    }

    void cleanup()
    {
        delete m_plugin;
        delete m_host; // owns the dock, as in a real host
    }

    void loadsLikeAHost()
    {
        QPluginLoader loader(pluginPath());
        const QJsonObject meta = loader.metaData();
        QCOMPARE(meta.value("className").toString(), QStringLiteral("Orvexworkbenchplugin"));
        QVERIFY(meta.value("MetaData").toObject().isEmpty());
        // Interface and plugin identifiers share one reverse-domain prefix.
        const QString iid = meta.value("IID").toString();
        QVERIFY2(iid.endsWith("Orvexworkbenchplugin/0.1"), qPrintable(iid));
        QCOMPARE(iid.chopped(24) + "TavloDocPluginInterface/1.0", QString(TavloDocPluginInterface_iid));
        QCOMPARE(iid.chopped(24) + "kelArchiveClientInterface/1.2", QString(kelArchiveClientInterface_iid));

        QObject *root = loader.instance();
        QVERIFY(root->qt_metacast("Orvexworkbenchplugin") && root->qt_metacast(TavloDocPluginInterface_iid));
        for (const char *method : {"requestCurrentDocIds()", "refreshParent()", "reloadProfile()", "doCommand(QString,QStringList)",
                                   "updateData()", "updateFullTextInfo(QString)", "showConfigDialog()"})
            QVERIFY2(root->metaObject()->indexOfMethod(method) >= 0, method);
        auto *p = qobject_cast<TavloDocPluginInterface *>(root);
        QCOMPARE(QStringList({p->getPluginName(), QString::number(p->pluginType()), p->neededRole()}),
                 QStringList({"Clipboard", "4", "tavloUSER"}));
        QVERIFY(p->needsArchiveClient() && p->needsClassifyClient() && !p->needsFulltextInfo());
    }

    void connectionChain_data()
    {
        QTest::addColumn<QString>("failing");
        QTest::addColumn<int>("steps");
        QTest::newRow("all steps succeed") << QString() << 4;
        QTest::newRow("open fails") << "openConnection" << 2;
        QTest::newRow("login fails") << "logIn" << 3;
        QTest::newRow("select fails") << "selectArchive" << 4;
    }

    void connectionChain()
    {
        QFETCH(QString, failing);
        QFETCH(int, steps);

        orvexworkbenchtab *tabWidget = tabs();
        m_plugin->setArchiveClient(m_archive);
        QVERIFY(!tabWidget->archiveClient()); // a client given after the dock waits for the chain
        m_archive->log().setFailing(failing);
        setArchiveData();

        // Arguments: 1 and 2 open, 3, 4 and 6 log in (in that order), 5 selects.
        QStringList calls;
        for (const CallLog::Call &call : m_archive->log().calls())
            if (call.name != "getLastError")
                calls << call.name + QVariant(call.args).toStringList().join(',');
        QCOMPARE(calls, QStringList({"resetConnection", "openConnectionarchive.example,4711", "logInanna,secret,tok",
                                     "selectArchiveMain"}).mid(0, steps));
        QCOMPARE(tabWidget->archiveClient() == m_archive, failing.isEmpty());

        // A failed chain is not retried by itself; a later call runs it again from the start.
        m_archive->log().setFailing(failing, false);
        m_archive->log().clear();
        setArchiveData();
        QCOMPARE(m_archive->log().names().first(), QStringLiteral("resetConnection"));
        QCOMPARE(tabWidget->archiveClient(), m_archive);
    }

    void clientHandover_data()
    {
        QTest::addColumn<bool>("dockFirst");
        QTest::newRow("clients before the dock") << false;
        QTest::newRow("clients after the dock") << true;
    }

    void clientHandover()
    {
        QFETCH(bool, dockFirst);
        if (dockFirst)
            tabs();
        setArchiveData(); // values stored without a client are not used when one arrives
        m_plugin->setClassifyClient(m_classify);
        m_plugin->setArchiveClient(m_archive);
        // The classification client always reaches the dock; the archive client only a
        // dock created after it (otherwise through a successful setArchiveData).
        QCOMPARE(tabs()->classifyClient(), m_classify);
        QCOMPARE(tabs()->archiveClient() == m_archive, !dockFirst);
        QVERIFY(m_archive->log().calls().isEmpty()); // handing over connects nothing
    }

    void dockIsCreatedOnceAndReparented()
    {
        QVERIFY(!m_plugin->getHoverWidget());
        QWidget second;
        QWidget *dock = m_plugin->getDockWidget(m_host);
        QCOMPARE(dock->parentWidget(), m_host);
        QCOMPARE(dock->objectName() + QString::number(dock->minimumWidth()), QStringLiteral("dockClipboard285"));
        auto *chooser = qobject_cast<orvexclipboardchooser *>(m_plugin->getHoverWidget());
        QVERIFY(chooser && chooser->parent() == dock && tabs()->chooser() == chooser);

        QCOMPARE(m_plugin->getDockWidget(&second), dock);
        QCOMPARE(dock->parentWidget(), &second);
        QCOMPARE(m_plugin->getHoverWidget(), chooser);
        QCOMPARE(m_plugin->getDockWidget(m_host)->parentWidget(), m_host); // before `second` dies

        std::unique_ptr<TavloDocPluginInterface> other(m_plugin->createInstance());
        QVERIFY(!other->getHoverWidget()); // instances share no dock
    }

    void refreshesAndCommands()
    {
        // Without a dock neither refresh does anything.
        m_plugin->setClassifyClient(m_classify);
        m_plugin->setCurrentDocIds({12}, {12});
        m_plugin->updateData();
        QVERIFY(m_classify->log().calls().isEmpty());

        // The host's updateData slot is the full reload, which works on the boards only; its
        // selection gives the light refresh, which starts with the clipboard list.
        orvexworkbenchtab *tabWidget = tabs();
        m_classify->log().clear();
        QVERIFY(QMetaObject::invokeMethod(m_plugin, "updateData"));
        QCOMPARE(m_classify->log().count("getClipboards"), 0);
        m_plugin->setCurrentDocIds({}, {});
        QVERIFY(m_classify->log().count("getClipboards") > 0);

        QSignalSpy spy(m_plugin, SIGNAL(doCommand(QString,QStringList)));
        emit tabWidget->doCommand("OPENDOC", {"4711", "it's a note", ""});
        QCOMPARE(spy.count(), 1);
        QCOMPARE(spy.first(), (QVariantList{"OPENDOC", QStringList{"4711", "it's a note", ""}}));
    }

    void destructionLeavesDockAlive()
    {
        QPointer<QWidget> dock = m_plugin->getDockWidget(m_host);
        QPointer<QWidget> chooser = m_plugin->getHoverWidget();
        QTest::ignoreMessage(QtDebugMsg, "WORKBENCH DESTROYED");
        delete m_plugin;
        m_plugin = nullptr;
        QVERIFY(dock && chooser);
        delete m_host;
        m_host = nullptr;
        QVERIFY(!dock && !chooser);
    }

    // last: installs a translator for the rest of the process
    void resourcesAndGermanCatalogue()
    {
        for (const char *path : {":/icons/lock.svg", ":/icons/tab_add.svg", ":/icons/dock_close.svg",
                                 ":/material/jquery-3.1.0.min.js", ":/material/material.min.js",
                                 ":/material/material.min.css", ":/material/material-icons.woff2",
                                 ":/material/qwebchannel.js", ":/translations/orvexworkbench_de.qm"})
            QVERIFY2(QFileInfo(path).size() > 0, path);
        QVERIFY(OrvexTranslations::install(QLocale(QLocale::German, QLocale::Germany)));
        QCOMPARE(m_plugin->getPluginName(), QStringLiteral("Zwischenablage"));
        QCOMPARE(m_plugin->getDockWidget(m_host)->windowTitle(), QStringLiteral("Zwischenablage"));
    }

private:
    orvexworkbenchtab *tabs() { return qobject_cast<orvexworkbenchdock *>(m_plugin->getDockWidget(m_host))->tabWidget(); }
    void setArchiveData() { m_plugin->setArchiveData("archive.example", 4711, "anna", "secret", "Main", "tok"); }

    TavloDocPluginInterface *m_plugin = nullptr; // a fresh instance per test
    RecordingArchiveClient *m_archive = nullptr;
    RecordingClassifyClient *m_classify = nullptr;
    QWidget *m_host = nullptr;
};

QTEST_MAIN(tst_Plugin)
#include "tst_plugin.moc"
