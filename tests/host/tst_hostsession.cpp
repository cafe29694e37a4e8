// One run of the host in-process, on a fresh embedded archive and the real
// workbench plugin: the start-up road a host of the plugin follows.
#include "kelarchiveclientinterface.h"
#include "orvexarchive.h"
#include "orvexarchiveclient.h"
#include "orvexhostoptions.h"
#include "orvexhostsession.h"
#include "orvexhosttranslations.h"
#include "orvexhostwindow.h"

#include <QDockWidget>
#include <QLabel>
#include <QPainter>
#include <QPdfWriter>
#include <QPluginLoader>
#include <QTableView>
#include <QtTest>

class tst_HostSession : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void startsOnAFreshArchive();
    void archiveClientPluginFindsTheSameArchive();
    void importedDocumentsAppearInTheList();
    void userOption();

private:
    OrvexHostOptions options(const QString &folderName) const;
    static int listedDocuments(const OrvexHostWindow *window);

    QTemporaryDir m_scratch;
};

void tst_HostSession::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    OrvexHostTranslations::install(QLocale(QLocale::English));
    QVERIFY(m_scratch.isValid());
}

OrvexHostOptions tst_HostSession::options(const QString &folderName) const
{
    OrvexHostOptions options = OrvexHostOptions::parse({QStringLiteral("orvexhost")});
    options.archiveFolder = m_scratch.filePath(folderName);
    return options;
}

int tst_HostSession::listedDocuments(const OrvexHostWindow *window)
{
    return window->findChild<QTableView *>(QStringLiteral("m_documentView"))->model()->rowCount();
}

void tst_HostSession::startsOnAFreshArchive()
{
    const OrvexHostOptions opts = options(QStringLiteral("fresh"));
    OrvexHostSession session;
    QVERIFY2(session.start(opts), qPrintable(session.errorString()));
    QCOMPARE(qEnvironmentVariable(OrvexHostSession::archiveDirVariable), opts.archiveFolder);

    // The sample archive is listed.
    OrvexHostWindow *window = session.window();
    const int documents = session.archive()->documents().size();
    QVERIFY(documents > 10);
    QCOMPARE(listedDocuments(window), documents);
    QVERIFY(window->windowTitle().contains(opts.archiveFolder));

    // The workbench is docked and its archive client went through the whole
    // connection chain with the archive's own values.
    QVERIFY(window->workbenchDock());
    QCOMPARE(window->dockWidgetArea(window->workbenchDock()), Qt::RightDockWidgetArea);
    auto *client = qobject_cast<OrvexArchiveClient *>(session.archive()->archiveClient());
    QVERIFY(client);
    QVERIFY2(client->isConnected(), qPrintable(client->getLastError()));
}

void tst_HostSession::archiveClientPluginFindsTheSameArchive()
{
    // What the workbench's archive worker does: load the client plugin from the
    // executables' folder and connect it with the host's values.
    const OrvexHostOptions opts = options(QStringLiteral("shared"));
    OrvexHostSession session;
    QVERIFY2(session.start(opts), qPrintable(session.errorString()));

    QPluginLoader loader(QCoreApplication::applicationDirPath() + QStringLiteral("/libkelarchiveclient.so"));
    auto *root = qobject_cast<kelArchiveClientInterface *>(loader.instance());
    QVERIFY2(root, qPrintable(loader.errorString()));
    std::unique_ptr<kelArchiveClientInterface> client(root->createClient(QCoreApplication::applicationDirPath()));
    QVERIFY2(client, qPrintable(root->getLastError()));
    const OrvexConnectionValues values = session.archive()->connectionValues();
    QVERIFY(client->openConnection(values.server, values.port));
    QVERIFY2(client->logIn(values.login1, values.login2, values.login3), qPrintable(client->getLastError()));
    QVERIFY(client->selectArchive(values.archiveName));

    const OrvexArchiveDocument first = session.archive()->documents().constFirst();
    QCOMPARE(client->getDocumentFileName(QString::number(first.id), QString::number(first.docsId)),
             first.fileName);
}

void tst_HostSession::importedDocumentsAppearInTheList()
{
    OrvexHostSession session;
    QVERIFY2(session.start(options(QStringLiteral("import"))), qPrintable(session.errorString()));
    const int before = listedDocuments(session.window());

    const QString pdf = m_scratch.filePath(QStringLiteral("letter.pdf"));
    {
        QPdfWriter writer(pdf);
        QPainter painter(&writer);
        painter.drawText(QPointF(200, 200), QStringLiteral("A letter for the host"));
    }
    QVERIFY(session.archive()->importFile(pdf, QStringLiteral("Letter for the host")));
    QTRY_COMPARE(listedDocuments(session.window()), before + 1);
}

void tst_HostSession::userOption()
{
    OrvexHostOptions opts = options(QStringLiteral("user"));
    opts.user = QStringLiteral("someone-else");
    OrvexHostSession session;
    QVERIFY2(session.start(opts), qPrintable(session.errorString()));
    QCOMPARE(session.archive()->user(), QStringLiteral("someone-else"));
    QCOMPARE(session.window()->findChild<QLabel *>(QStringLiteral("userLabel"))->text(),
             QStringLiteral("User: someone-else"));
}

QTEST_MAIN(tst_HostSession)
#include "tst_hostsession.moc"
