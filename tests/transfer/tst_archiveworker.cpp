// The archive worker against the recording archive client: connection and
// client loading, forwarding, file naming, export into real folders and mailing.
#include "kelarchiveclientinterface.h"
#include "orvexarchiveworker.h"
#include "orvexfilecopy.h"
#include "recordingarchiveclient.h"
#include "sequenceanswerer.h"

#include <QDesktopServices>
#include <QDirIterator>
#include <QListWidget>
#include <QPluginLoader>
#include <QProgressBar>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <sys/stat.h>
#include <thread>
#include <unistd.h>

using Step = SequenceAnswerer::Step;
using Remarks = QMap<QString, QString>;
using Ids = QList<qlonglong>;

namespace {

const QString kLibrary = QStringLiteral("libkelarchiveclient.so");

// The recording client with file names for the rights check that the test
// chooses, to feed the export names its fetch could not produce.
class NamingClient : public RecordingArchiveClient
{
public:
    QStringList namesForRightsCheck;
    bool presetNames = false;

    QStringList getDocumentFileNames(QStringList docIds, QStringList docsIds) override
    {
        const QStringList names = RecordingArchiveClient::getDocumentFileNames(docIds, docsIds);
        return presetNames ? namesForRightsCheck : names;
    }
};

QByteArray readAll(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void writeFile(const QString &path, const QByteArray &content)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(content);
}

QStringList filesBelow(const QString &root)
{
    QStringList files;
    QDirIterator it(root, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext())
        files << QDir(root).relativeFilePath(it.next());
    files.sort();
    return files;
}

// Renames the first item of the name dialog, then accepts it.
Step renameFirst(const QString &name)
{
    return [name](QWidget *modal) {
        auto *list = modal->findChild<QListWidget *>(QStringLiteral("m_fileList"));
        list->item(0)->setText(name);
        static_cast<QDialog *>(modal)->accept();
    };
}

} // namespace

class tst_ArchiveWorker : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void connectsAndSelects();
    void connectionFailures_data();
    void connectionFailures();
    void loaderFailures_data();
    void loaderFailures();
    void loadsTheClientLibrary();
    void forwards();
    void deleteDocumentReportsFailure();
    void withoutClient();

    void offlineFileName_data();
    void offlineFileName();
    void newFileName_data();
    void newFileName();
    void newFileNameLeavesNamesAloneOffline();

    void exportCopies();
    void exportPurpose_data();
    void exportPurpose();
    void nameDialog_data();
    void nameDialog();
    void overwriteAndGoOn_data();
    void overwriteAndGoOn();
    void rightsCheck_data();
    void rightsCheck();
    void fetchFails_data();
    void fetchFails();
    void cancelInTheMiddle();
    void unwritableTarget();
    void missingTarget();
    void versions_data();
    void versions();
    void offlineExport();
    void openMode();

    void mailWithCommand();
    void mailVersionsEach();
    void mailCommandWithoutPlaceholder();
    void mailCommandMissing();
    void mailWithDesktopLauncher();
    void mailFetchFails();

public slots:
    void recordOpenedUrl(const QUrl &url) { m_opened << url; }

private:
    void addDocument(int id, const QString &name, const QByteArray &content, QMap<int, QByteArray> versions = {});
    bool exportDocs(const Ids &ids, QStringList &result, const QList<Step> &answers = {},
                    const QString &target = QString());
    QString mailScript(const QString &outFile);
    // Cancels the export's progress dialog once the first chunk of a fetch is in.
    std::thread cancelAfterFirstChunk(const QString &operation);
    QString fetchFolder() const { return m_client->exportFolder(); }

    NamingClient *m_client = nullptr;
    OrvexArchiveWorker *m_worker = nullptr;
    QTemporaryDir *m_dir = nullptr;
    QString m_target;
    QWidget *m_parent = nullptr;
    QList<SequenceAnswerer::Seen> m_seen;
    QList<QUrl> m_opened;
};

void tst_ArchiveWorker::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
}

void tst_ArchiveWorker::init()
{
    m_client = new NamingClient;
    m_client->setConnectionValues(QStringLiteral("srv"), 4711, QStringLiteral("anna"), QStringLiteral("pw"),
                                  QStringLiteral("tok"), {QStringLiteral("Main"), QStringLiteral("Other")});
    addDocument(101, QStringLiteral("report.pdf"), QByteArray(100 * 1024, 'r'));
    addDocument(102, QStringLiteral("letter.odt"), QByteArray(50 * 1024, 'l'));
    addDocument(104, QStringLiteral("plan.pdf"), "current", {{1, "version one"}, {2, "version two"}});
    addDocument(105, QStringLiteral("a.txt"), "new a");
    addDocument(106, QStringLiteral("b.txt"), "new b");
    addDocument(4711, QString(), "x", {{2, "v2"}, {3, "v3"}});
    m_worker = new OrvexArchiveWorker;
    m_worker->setArchiveClient(m_client);
    m_parent = new QWidget;
    m_worker->setParentWidget(m_parent);
    m_dir = new QTemporaryDir;
    m_target = m_dir->filePath(QStringLiteral("target"));
    QDir().mkpath(m_target);
    m_seen.clear();
    m_opened.clear();
}

void tst_ArchiveWorker::cleanup()
{
    delete m_worker;
    delete m_client;
    delete m_parent;
    QFile::setPermissions(m_target, QFileDevice::Permissions(0x7777));
    delete m_dir;
}

void tst_ArchiveWorker::addDocument(int id, const QString &name, const QByteArray &content,
                                    QMap<int, QByteArray> versions)
{
    RecordingArchiveClient::Document document;
    document.docId = id;
    document.fileName = name;
    document.content = content;
    document.versions = versions;
    m_client->addDocument(document);
}

bool tst_ArchiveWorker::exportDocs(const Ids &ids, QStringList &result, const QList<Step> &answers,
                                   const QString &target)
{
    SequenceAnswerer answerer(answers);
    Ids docsIds;
    for (qlonglong id : ids)
        docsIds << id + 1000;
    const bool ok = m_worker->exportDocuments(ids, docsIds, {}, {}, target.isNull() ? m_target : target, false,
                                              result, -1, false, false, false, QStringLiteral("IGNORE"));
    m_seen = answerer.seen();
    return ok;
}

// ---- connection --------------------------------------------------------

void tst_ArchiveWorker::connectsAndSelects()
{
    m_worker->setConnectionSettings(QStringLiteral("srv"), 4711, QStringLiteral("anna"), QStringLiteral("pw"),
                                    QStringLiteral("tok"));
    // A wrong name keeps the login, so that the next name needs none.
    m_worker->selectArchive(QStringLiteral("Nope"));
    QCOMPARE(m_client->log().names().last(), QStringLiteral("getLastError"));
    m_client->log().clear();
    m_worker->selectArchive(QStringLiteral("Main"));
    QCOMPARE(m_client->log().names(), (QStringList{"resetConnection", "openConnection", "logIn", "selectArchive"}));
    QCOMPARE(m_client->log().last("openConnection").args, (QVariantList{"srv", 4711}));
    QCOMPARE(m_client->log().last("logIn").args, (QVariantList{"anna", "pw", "tok"}));
    QCOMPARE(m_client->log().last("selectArchive").args, QVariantList{"Main"});
    QVERIFY(m_client->isConnected());
    QCOMPARE(m_worker->getCurrentArchive(), QStringLiteral("Main"));
    QVERIFY(m_worker->doConnect(false));
    m_worker->doDisconnect();
    QVERIFY(!m_client->isConnected());
}

void tst_ArchiveWorker::connectionFailures_data()
{
    QTest::addColumn<QString>("server");
    QTest::addColumn<QString>("login");
    QTest::addColumn<QString>("archive");
    QTest::addColumn<bool>("keep");
    QTest::addColumn<QStringList>("calls");
    QTest::addColumn<QString>("error");
    QTest::newRow("server") << "bad" << "anna" << "Main" << true
                            << QStringList{"openConnection", "getLastError", "resetConnection"} << "Cannot connect to bad:4711";
    QTest::newRow("login") << "srv" << "bob" << "Main" << true
                           << QStringList{"openConnection", "logIn", "getLastError", "resetConnection"} << "Login failed for bob";
    QTest::newRow("archive, keep") << "srv" << "anna" << "Nope" << true
                                   << QStringList{"openConnection", "logIn", "selectArchive", "getLastError"} << "Unknown archive Nope";
    QTest::newRow("archive, drop") << "srv" << "anna" << "Nope" << false
                                   << QStringList{"openConnection", "logIn", "selectArchive", "getLastError", "resetConnection"}
                                   << "Unknown archive Nope";
}

void tst_ArchiveWorker::connectionFailures()
{
    QFETCH(QString, server);
    QFETCH(QString, login);
    QFETCH(QString, archive);
    QFETCH(bool, keep);
    QFETCH(QStringList, calls);
    QFETCH(QString, error);
    m_worker->setConnectionSettings(server, 4711, login, QStringLiteral("pw"), QStringLiteral("tok"));
    m_worker->selectArchive(archive);
    m_client->log().clear();
    QVERIFY(!m_worker->doConnect(keep));
    QCOMPARE(m_client->log().names(), calls);
    QCOMPARE(m_worker->getLastError(), error);
}

void tst_ArchiveWorker::loaderFailures_data()
{
    QTest::addColumn<QString>("library"); // what lies in the folder as the client library
    QTest::addColumn<QString>("error");   // empty: the loader's own message
    QTest::newRow("no file") << QString() << QString();
    QTest::newRow("not a library") << QStringLiteral("garbage") << QString();
    QTest::newRow("plugin of another kind") << QStringLiteral("liborvexworkbenchplugin.so")
                                            << QStringLiteral("Failed to load the archive client: ");
    QTest::newRow("hands out no client") << QStringLiteral("libtstkelarchiveclient.so")
                                         << QStringLiteral("Failed to load the archive client.");
}

void tst_ArchiveWorker::loaderFailures()
{
    QFETCH(QString, library);
    QFETCH(QString, error);
    QTemporaryDir folder;
    const QString path = folder.filePath(kLibrary);
    if (library == QLatin1String("garbage"))
        writeFile(path, "this is not a shared library");
    else if (!library.isEmpty())
        QVERIFY(QFile::copy(QCoreApplication::applicationDirPath() + QLatin1Char('/') + library, path));
    if (error.isEmpty()) {
        QPluginLoader probe(path);
        QVERIFY(!probe.load());
        error = QStringLiteral("Failed to load the plugin: %1 Error: %2").arg(path, probe.errorString());
    }
    qputenv("ORVEX_TEST_NO_CLIENT", "1");
    OrvexArchiveWorker worker;
    worker.setApplicationFolder(folder.path());
    worker.setConnectionSettings(QStringLiteral("srv"), 1, QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c"));
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("ARCHIVE WORKER")));
    const bool connected = worker.doConnect(false);
    qunsetenv("ORVEX_TEST_NO_CLIENT");
    QVERIFY(!connected);
    QCOMPARE(worker.getLastError(), error);
    QVERIFY(!worker.getArchiveClient());
}

void tst_ArchiveWorker::loadsTheClientLibrary()
{
    QTemporaryDir folder;
    OrvexArchiveWorker worker;
    worker.setApplicationFolder(folder.path());
    worker.setConnectionSettings(QStringLiteral("srv"), 1, QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c"));
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("ARCHIVE WORKER")));
    QVERIFY(!worker.doConnect(true));
    // A later call tries again.
    QVERIFY(QFile::copy(QCoreApplication::applicationDirPath() + QStringLiteral("/libtstkelarchiveclient.so"),
                        folder.filePath(kLibrary)));
    worker.selectArchive(QStringLiteral("Archive"));
    QVERIFY2(worker.doConnect(false), qPrintable(worker.getLastError()));
    kelArchiveClientInterface *client = worker.getArchiveClient();
    QVERIFY(client);
    QCOMPARE(client->objectName(), folder.path()); // handed the application folder

    // The client's byte counts reach the worker's own progress dialog.
    const QString path = worker.getDocument(QStringLiteral("7"));
    QCOMPARE(QFileInfo(path).size(), qint64(300 * 1024));
    auto *bar = worker.progressDialog()->findChild<QProgressBar *>(QStringLiteral("m_Progress"));
    QCOMPARE(bar->maximum(), 100);
    QVERIFY(worker.getDocument(QStringLiteral("8")).isEmpty());
    QCOMPARE(worker.getLastError(), QStringLiteral("Unknown document 8"));
}

void tst_ArchiveWorker::forwards()
{
    // Decimal id texts become numbers on the way to the client.
    QCOMPARE(m_worker->getAllVersions(QStringLiteral("104")), (QStringList{"1", "2"}));
    QCOMPARE(m_client->log().last("getAllVersions").args, QVariantList{104});
    const QString path = m_worker->getDocument(QStringLiteral("102"));
    QCOMPARE(readAll(path), QByteArray(50 * 1024, 'l'));
    QCOMPARE(m_client->log().last("exportDocument").args.mid(2), (QVariantList{0, "IGNORE"}));
}

void tst_ArchiveWorker::deleteDocumentReportsFailure()
{
    QVERIFY(m_worker->deleteDocument(QStringLiteral("101"), {QStringLiteral("x")}));
    QCOMPARE(m_client->log().last("deleteDocument").args, (QVariantList{"101", QStringList{"x"}}));
    SequenceAnswerer answerer({SequenceAnswerer::press(QMessageBox::Ok)});
    QVERIFY(!m_worker->deleteDocument(QStringLiteral("101"), {}));
    QCOMPARE(answerer.seen().size(), 1);
    QCOMPARE(answerer.seen().first().text, QStringLiteral("Unknown document 101"));
    QCOMPARE(answerer.seen().first().parent, m_parent);
    QCOMPARE(m_worker->getLastError(), QStringLiteral("Unknown document 101"));
}

void tst_ArchiveWorker::withoutClient()
{
    OrvexArchiveWorker worker;
    QStringList result;
    QVERIFY(!worker.exportDocuments({101}, {}, {}, {}, m_target, false, result, -1, false, true, false, {}));
    QVERIFY(!worker.getLastError().isEmpty());
    QVERIFY(!worker.mailDocuments({101}, {}, {}, {}, QStringLiteral("true"), false));
    QVERIFY(worker.getDocument(QStringLiteral("1")).isEmpty());
    worker.cancelStreaming(); // no client to tell: only the flag
    QVERIFY(worker.isCanceled());
}

// ---- naming --------------------------------------------------------------

void tst_ArchiveWorker::offlineFileName_data()
{
    QTest::addColumn<QString>("remark");
    QTest::addColumn<qlonglong>("version");
    QTest::addColumn<QString>("expected");
    QTest::newRow("example") << "Invoice 03/2021" << qlonglong(2) << "4711_2_Invoice032021";
    QTest::newRow("no version") << "Remark" << qlonglong(-1) << "4711_Remark";
    QTest::newRow("version 0") << "Remark" << qlonglong(0) << "4711_0_Remark";
    QTest::newRow("no remark") << "" << qlonglong(-1) << "4711_";
    QTest::newRow("only illegal characters") << "/?* :\\\"<>|" << qlonglong(-1) << "4711_";
    QTest::newRow("umlauts stay") << QStringLiteral("Grüße Öl-Maß_1.2") << qlonglong(-1) << QStringLiteral("4711_GrüßeÖl-Maß_1.2");
    QTest::newRow("NUL and slashes") << QString::fromUtf8("a\0b/c", 5) << qlonglong(-1) << "4711_abc";
    QTest::newRow("cut at 100") << QString(150, QLatin1Char('x')) << qlonglong(-1) << "4711_" + QString(95, QLatin1Char('x'));
}

void tst_ArchiveWorker::offlineFileName()
{
    QFETCH(QString, remark);
    QFETCH(qlonglong, version);
    QFETCH(QString, expected);
    QCOMPARE(m_worker->getOfflineFileName(QStringLiteral("/tmp/tmp123.pdf"), remark, 4711, version), expected);
}

void tst_ArchiveWorker::newFileName_data()
{
    QTest::addColumn<QString>("fetched");
    QTest::addColumn<QString>("archiveName");
    QTest::addColumn<qlonglong>("version");
    QTest::addColumn<Remarks>("remarks");
    QTest::addColumn<QStringList>("existing"); // files already in the fetch folder
    QTest::addColumn<QString>("expected");
    const Remarks invoice{{"4711", "Invoice 03/2021"}};
    const Remarks both{{"4711", "plain"}, {"4711#2", "versioned"}};
    QTest::newRow("example") << "tmp123.pdf" << "" << qlonglong(2) << invoice << QStringList() << "4711_2_Invoice032021.pdf";
    QTest::newRow("example, taken") << "tmp123.pdf" << "" << qlonglong(2) << invoice
                                    << QStringList{"4711_2_Invoice032021.pdf"} << "4711_2_Invoice032021_1.pdf";
    QTest::newRow("taken twice") << "tmp123.pdf" << "" << qlonglong(2) << invoice
                                 << QStringList{"4711_2_Invoice032021.pdf", "4711_2_Invoice032021_1.pdf"}
                                 << "4711_2_Invoice032021_2.pdf";
    QTest::newRow("no extension") << "tmp123" << "" << qlonglong(-1) << Remarks{{"4711", "Remark"}} << QStringList() << "4711_Remark.";
    QTest::newRow("archive name") << "tmp.pdf" << "Rechnung.pdf" << qlonglong(-1) << Remarks() << QStringList() << "Rechnung.pdf";
    QTest::newRow("archive name, no extension") << "tmp.pdf" << "Rechnung" << qlonglong(-1) << Remarks() << QStringList() << "Rechnung.pdf";
    QTest::newRow("report.pdf.pdf") << "tmp.pdf" << "report.pdf.pdf" << qlonglong(-1) << Remarks() << QStringList() << "report.pdf";
    QTest::newRow("every occurrence") << "tmp.pdf" << "a.pdf.b.pdf" << qlonglong(-1) << Remarks() << QStringList() << "a.b.pdf";
    QTest::newRow("complete suffix") << "tmp.tar.gz" << "backup.tar.gz" << qlonglong(-1) << Remarks() << QStringList() << "backup.tar.gz";
    QTest::newRow("suffix case matters") << "tmp.pdf" << "Scan.PDF" << qlonglong(-1) << Remarks() << QStringList() << "Scan.PDF.pdf";
    QTest::newRow("part name") << "tmp.pdf" << "Plan.pdf" << qlonglong(3) << Remarks() << QStringList() << "Plan.pdf";
    QTest::newRow("versioned remark wins") << "tmp.pdf" << "" << qlonglong(2) << both << QStringList() << "4711_2_versioned.pdf";
    QTest::newRow("plain remark otherwise") << "tmp.pdf" << "" << qlonglong(3) << both << QStringList() << "4711_3_plain.pdf";
    QTest::newRow("only illegal remark") << "tmp.pdf" << "" << qlonglong(-1) << Remarks{{"4711", "?*/"}} << QStringList() << "4711_.pdf";
    QTest::newRow("long remark") << "tmp.pdf" << "" << qlonglong(-1) << Remarks{{"4711", QString(150, 'y')}}
                                 << QStringList() << "4711_" + QString(95, 'y') + ".pdf";
    QTest::newRow("own name is no collision") << "Rechnung.pdf" << "Rechnung.pdf" << qlonglong(-1) << Remarks() << QStringList()
                                              << "Rechnung.pdf";
    QTest::newRow("slashes stay in the folder") << "tmp.pdf" << "../../evil.pdf" << qlonglong(-1) << Remarks() << QStringList()
                                                << ".._.._evil.pdf";
    QTest::newRow("NUL only") << "tmp.pdf" << QString(QChar(0)) << qlonglong(-1) << Remarks() << QStringList() << "4711_.pdf";
}

void tst_ArchiveWorker::newFileName()
{
    QFETCH(QString, fetched);
    QFETCH(QString, archiveName);
    QFETCH(qlonglong, version);
    QFETCH(Remarks, remarks);
    QFETCH(QStringList, existing);
    QFETCH(QString, expected);
    addDocument(4711, archiveName, "x", {{2, "v2"}, {3, "v3"}});
    const QString folder = m_dir->filePath(QStringLiteral("fetch"));
    const QString path = folder + QLatin1Char('/') + fetched;
    writeFile(path, "fetched");
    for (const QString &name : existing)
        writeFile(folder + QLatin1Char('/') + name, "other");

    // Without renaming only the name is computed.
    QCOMPARE(m_worker->getNewFileName(path, remarks, 4711, 9, version, false), folder + QLatin1Char('/') + expected);
    QVERIFY(QFileInfo::exists(path));
    const QString result = m_worker->getNewFileName(path, remarks, 4711, 9, version, true);
    QCOMPARE(result, folder + QLatin1Char('/') + expected);
    QCOMPARE(readAll(result), QByteArray("fetched"));
    if (version < 1)
        QCOMPARE(m_client->log().last("getDocumentFileName").args, (QVariantList{"4711", "9"}));
    else
        QCOMPARE(m_client->log().last("getDocumentPartFileName").args, (QVariantList{"4711", "9", QString::number(version)}));
}

void tst_ArchiveWorker::newFileNameLeavesNamesAloneOffline()
{
    QStringList none;
    QVERIFY(m_worker->exportDocuments({}, {}, {}, {}, m_target, false, none, -1, true, true, false, {}));
    const QString path = m_dir->filePath(QStringLiteral("tmp.pdf"));
    writeFile(path, "x");
    QCOMPARE(m_worker->getNewFileName(path, {}, 101, -1, -1, true), path);
    QVERIFY(QFileInfo::exists(path));
    QCOMPARE(m_client->log().count("getDocumentFileName"), 0);
}

// ---- export --------------------------------------------------------------

void tst_ArchiveWorker::exportCopies()
{
    QStringList result;
    QVERIFY(exportDocs({101, 102}, result, {SequenceAnswerer::press(QMessageBox::Ok)}));
    QCOMPARE(m_seen.size(), 1);
    QCOMPARE(m_seen.first().title, QStringLiteral("Export documents..."));
    QCOMPARE(result, (QStringList{m_target + "/report.pdf", m_target + "/letter.odt"}));
    QCOMPARE(readAll(m_target + "/report.pdf"), QByteArray(100 * 1024, 'r'));
    QCOMPARE(readAll(m_target + "/letter.odt"), QByteArray(50 * 1024, 'l'));
    struct stat info;
    QCOMPARE(::stat(QFile::encodeName(result.first()).constData(), &info), 0);
    QCOMPARE(info.st_mode & 0777, mode_t(0666));
    QVERIFY2(filesBelow(fetchFolder()).isEmpty(), qPrintable(filesBelow(fetchFolder()).join(',')));
    QCOMPARE(m_client->log().last("getDocumentFileNames").args,
             (QVariantList{QStringList{"101", "102"}, QStringList{"1101", "1102"}}));
    QCOMPARE(m_client->log().last("exportDocument").args.mid(2), (QVariantList{1, "IGNORE"}));
}

void tst_ArchiveWorker::exportPurpose_data()
{
    QTest::addColumn<int>("purpose");
    QTest::addColumn<bool>("openMode");
    QTest::addColumn<int>("expected");
    QTest::newRow("copy chooses 1") << -1 << false << 1;
    QTest::newRow("open chooses 0") << -1 << true << 0;
    QTest::newRow("given") << 7 << false << 7;
}

void tst_ArchiveWorker::exportPurpose()
{
    QFETCH(int, purpose);
    QFETCH(bool, openMode);
    QFETCH(int, expected);
    QDesktopServices::setUrlHandler(QStringLiteral("file"), this, "recordOpenedUrl");
    QStringList result;
    QVERIFY(m_worker->exportDocuments({101}, {}, {}, {}, m_target, openMode, result, purpose, false, true, false,
                                      QStringLiteral("opt")));
    QDesktopServices::unsetUrlHandler(QStringLiteral("file"));
    QCOMPARE(m_client->log().last("exportDocument").args.mid(2), (QVariantList{expected, "opt"}));
}

void tst_ArchiveWorker::nameDialog_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QStringList>("files");
    QTest::newRow("renamed") << "Angebot" << QStringList{"Angebot.pdf", "letter.odt"};
    QTest::newRow("folder part dropped") << "../../escape.pdf" << QStringList{"escape.pdf", "letter.odt"};
    QTest::newRow("NUL removed") << QString::fromUtf8("a\0b.pdf", 7) << QStringList{"ab.pdf", "letter.odt"};
    QTest::newRow("rejected") << QString() << QStringList();
}

void tst_ArchiveWorker::nameDialog()
{
    QFETCH(QString, typed);
    QFETCH(QStringList, files);
    QStringList result;
    const Step step = typed.isNull() ? SequenceAnswerer::press(QMessageBox::Cancel) : renameFirst(typed);
    QVERIFY(exportDocs({101, 102}, result, {step}));
    QCOMPARE(filesBelow(m_target), files);
    QCOMPARE(result.size(), files.size());
    QVERIFY(filesBelow(fetchFolder()).isEmpty()); // temporary files are gone either way
    QVERIFY(filesBelow(m_dir->path()).size() == files.size()); // nothing written beside the target
}

void tst_ArchiveWorker::overwriteAndGoOn_data()
{
    // report.pdf and a.txt exist in the target; letter.odt and b.txt do not.
    QTest::addColumn<bool>("reportIsAFolder");  // removing it fails
    QTest::addColumn<QList<int>>("answers");     // to the questions, in order
    QTest::addColumn<QStringList>("boxes");
    QTest::addColumn<QStringList>("files");      // target content afterwards: name=content
    const QString question = QStringLiteral("File exists: The file %1 already exists, overwrite?");
    const QStringList asked{question.arg("TARGET/report.pdf"), question.arg("TARGET/a.txt")};
    QTest::newRow("all yes") << false << QList<int>{QMessageBox::Yes, QMessageBox::Yes} << asked
                             << QStringList{"a.txt=new a", "b.txt=new b", "letter.odt=l", "report.pdf=r"};
    // After a No, new files are no longer copied; existing ones are still offered.
    QTest::newRow("no, then yes") << false << QList<int>{QMessageBox::No, QMessageBox::Yes} << asked
                                  << QStringList{"a.txt=new a", "report.pdf=old"};
    QTest::newRow("yes, then no") << false << QList<int>{QMessageBox::Yes, QMessageBox::No} << asked
                                  << QStringList{"a.txt=old", "letter.odt=l", "report.pdf=r"};
    QTest::newRow("removal fails") << true << QList<int>{QMessageBox::Yes, QMessageBox::Ok, QMessageBox::Yes}
                                   << QStringList{asked[0], "Error: The file could not be overwritten.", asked[1]}
                                   << QStringList{"a.txt=new a", "report.pdf/inside=old"};
}

void tst_ArchiveWorker::overwriteAndGoOn()
{
    QFETCH(bool, reportIsAFolder);
    QFETCH(QList<int>, answers);
    QFETCH(QStringList, boxes);
    QFETCH(QStringList, files);
    writeFile(m_target + (reportIsAFolder ? "/report.pdf/inside" : "/report.pdf"), "old");
    writeFile(m_target + "/a.txt", "old");
    QList<Step> steps;
    for (int answer : answers)
        steps << SequenceAnswerer::press(QMessageBox::StandardButton(answer));
    QStringList result;
    QVERIFY(exportDocs({101, 102, 105, 106}, result, QList<Step>{SequenceAnswerer::press(QMessageBox::Ok)} + steps));
    QStringList seen;
    for (const auto &box : m_seen.mid(1))
        seen << QString(box.title + ": " + box.text).replace(m_target, "TARGET");
    QCOMPARE(seen, boxes);
    // Long uniform contents (the archive's documents) are shown by their first character.
    QStringList content;
    for (const QString &file : filesBelow(m_target)) {
        const QByteArray bytes = readAll(m_target + '/' + file);
        content << file + '=' + QString::fromLatin1(bytes.size() > 10 ? bytes.left(1) : bytes);
    }
    QCOMPARE(content, files);
    QVERIFY(filesBelow(fetchFolder()).isEmpty());
}

void tst_ArchiveWorker::rightsCheck_data()
{
    QTest::addColumn<bool>("fail");
    QTest::addColumn<QStringList>("names"); // what the rights check answers
    QTest::addColumn<bool>("warned");
    QTest::addColumn<QStringList>("files");
    QTest::newRow("mismatch: no names") << true << QStringList() << true << QStringList{"letter.odt", "report.pdf"};
    QTest::newRow("mismatch: fewer names") << false << QStringList{"Erster.pdf"} << true
                                           << QStringList{"Erster.pdf", "letter.odt"};
    QTest::newRow("names with folders") << false << QStringList{"sub/dir/x.pdf", "../y.odt"} << false
                                        << QStringList{".._y.odt", "sub_dir_x.pdf"};
    QTest::newRow("unusable names") << false << QStringList{QString(QChar(0)), ".."} << false
                                    << QStringList{"letter.odt", "report.pdf"};
}

void tst_ArchiveWorker::rightsCheck()
{
    QFETCH(bool, fail);
    QFETCH(QStringList, names);
    QFETCH(bool, warned);
    QFETCH(QStringList, files);
    m_client->log().setFailing(QStringLiteral("getDocumentFileNames"), fail);
    m_client->presetNames = !fail;
    m_client->namesForRightsCheck = names;
    QStringList result;
    QVERIFY(exportDocs({101, 102}, result,
                       {SequenceAnswerer::press(QMessageBox::Ok), SequenceAnswerer::press(QMessageBox::Ok)}));
    QCOMPARE(m_seen.size(), warned ? 2 : 1);
    if (warned) {
        QCOMPARE(m_seen.first().title, QStringLiteral("Warning"));
        QCOMPARE(m_seen.first().text, QStringLiteral("Unable to export documents. Permissions missmatch."));
        QCOMPARE(m_seen.first().parent, m_parent);
    }
    QCOMPARE(filesBelow(m_target), files);
    QCOMPARE(filesBelow(m_dir->path()).size(), files.size());
}

void tst_ArchiveWorker::fetchFails_data()
{
    QTest::addColumn<qlonglong>("second");
    QTest::addColumn<QString>("error");
    QTest::newRow("unknown document") << qlonglong(999) << "Unknown document 999";
    QTest::newRow("refused") << qlonglong(103) << "No permission to read document 103";
}

void tst_ArchiveWorker::fetchFails()
{
    QFETCH(qlonglong, second);
    QFETCH(QString, error);
    RecordingArchiveClient::Document refused;
    refused.docId = 103;
    refused.fileName = QStringLiteral("secret.pdf");
    refused.readable = false;
    m_client->addDocument(refused);
    QStringList result;
    QVERIFY(!exportDocs({101, second}, result));
    QCOMPARE(m_worker->getLastError(), error);
    QVERIFY(m_seen.isEmpty());
    QVERIFY(result.isEmpty());
    QVERIFY(filesBelow(m_target).isEmpty());
    QVERIFY(filesBelow(fetchFolder()).isEmpty()); // the first document's fetch is not left behind
}

std::thread tst_ArchiveWorker::cancelAfterFirstChunk(const QString &operation)
{
    const QString stall = operation + QStringLiteral(":chunk");
    m_client->setChunkSize(1024);
    m_client->log().setStalled(stall);
    return std::thread([this, stall] {
        if (!m_client->log().waitStalled(stall, 15000))
            return;
        // Delivered by the progress dialog's own event pass at the next chunk.
        QMetaObject::invokeMethod(qApp, [] {
            for (QWidget *widget : QApplication::topLevelWidgets())
                if (auto *dialog = qobject_cast<OrvexFileCopy *>(widget); dialog && dialog->isVisible())
                    dialog->emitCancelClicked();
        }, Qt::QueuedConnection);
        m_client->log().release(stall);
    });
}

void tst_ArchiveWorker::cancelInTheMiddle()
{
    std::thread canceller = cancelAfterFirstChunk(QStringLiteral("exportDocument"));
    QStringList result;
    const bool ok = exportDocs({101, 102}, result);
    canceller.join();
    QVERIFY(!ok);
    QVERIFY(m_worker->isCanceled());
    QCOMPARE(m_client->log().count("cancelStreaming"), 1);
    QCOMPARE(m_client->log().count("exportDocument"), 1); // the second document is never asked for
    QVERIFY(filesBelow(m_target).isEmpty());
    QVERIFY(filesBelow(fetchFolder()).isEmpty());

    // The next export starts uncanceled.
    m_client->setChunkSize(64 * 1024);
    QVERIFY(exportDocs({102}, result, {SequenceAnswerer::press(QMessageBox::Ok)}));
    QVERIFY(!m_worker->isCanceled());
    QCOMPARE(filesBelow(m_target), QStringList{"letter.odt"});
}

void tst_ArchiveWorker::unwritableTarget()
{
    // Root writes anywhere its permissions allow; /proc refuses new files even to root.
    QString target = m_target;
    if (geteuid() == 0)
        target = QStringLiteral("/proc");
    else
        QVERIFY(QFile::setPermissions(m_target, QFileDevice::ReadOwner | QFileDevice::ExeOwner));
    QStringList result;
    QVERIFY(exportDocs({101, 102}, result, {SequenceAnswerer::press(QMessageBox::Ok)}, target));
    QCOMPARE(m_seen.size(), 3);
    QCOMPARE(m_seen.at(1).title, QStringLiteral("Error"));
    QCOMPARE(m_seen.at(1).text, QStringLiteral("The file could not be saved!"));
    QVERIFY(result.isEmpty());
    QVERIFY(filesBelow(fetchFolder()).isEmpty());
}

void tst_ArchiveWorker::missingTarget()
{
    QStringList result;
    QVERIFY(!exportDocs({101}, result, {}, m_dir->filePath(QStringLiteral("missing"))));
    QCOMPARE(m_worker->getLastError(), QStringLiteral("The folder %1 does not exist.").arg(m_dir->filePath("missing")));
    QCOMPARE(m_client->log().count("exportDocument"), 0);
    QVERIFY(m_seen.isEmpty());
}

void tst_ArchiveWorker::versions_data()
{
    QTest::addColumn<bool>("alternate");
    QTest::addColumn<QString>("operation");
    QTest::newRow("version") << false << "exportDocumentVersion";
    QTest::newRow("alternate") << true << "exportDocumentVersionAlt";
}

void tst_ArchiveWorker::versions()
{
    QFETCH(bool, alternate);
    QFETCH(QString, operation);
    addDocument(4711, QString(), "x", {{2, "v2"}});
    QStringList result;
    SequenceAnswerer answerer({SequenceAnswerer::press(QMessageBox::Ok), SequenceAnswerer::press(QMessageBox::Yes)});
    QVERIFY(m_worker->exportDocuments({104, 104, 4711}, {1, 2, 3}, {1, 2, 2}, {{"4711#2", "Notiz 7"}}, m_target,
                                      false, result, -1, false, false, alternate, {}));
    QCOMPARE(m_client->log().count(operation), 3);
    QCOMPARE(m_client->log().callsOf(operation).at(1).args.mid(0, 2), (QVariantList{104, 2}));
    QCOMPARE(m_client->log().count("getDocumentFileNames"), 0);
    // Both versions are named plan.pdf by the archive, each in its own fetch folder;
    // the second asks before it overwrites the first. The third is named from its remark.
    QCOMPARE(answerer.seen().size(), 2);
    QCOMPARE(filesBelow(m_target), (QStringList{"4711_2_Notiz7.", "plan.pdf"}));
    QCOMPARE(readAll(m_target + "/plan.pdf"), QByteArray("version two"));

    QVERIFY(!m_worker->exportDocuments({104, 104}, {}, {1}, {}, m_target, false, result, -1, false, true, alternate, {}));
    QVERIFY(m_worker->getLastError().contains(QStringLiteral("1 versions were given for 2 documents")));
}

void tst_ArchiveWorker::offlineExport()
{
    QStringList result;
    SequenceAnswerer answerer;
    QVERIFY(m_worker->exportDocuments({101, 104}, {}, {-1, 2}, {}, m_target, false, result, -1, true, false, false, {}));
    QVERIFY(answerer.seen().isEmpty()); // no name dialog offline
    QCOMPARE(filesBelow(m_target), (QStringList{"plan.pdf", "report.pdf"}));
    QCOMPARE(m_client->log().count("getDocumentFileNames"), 0);
    QCOMPARE(m_client->log().count("getDocumentPartFileName"), 0);
    QCOMPARE(filesBelow(fetchFolder()).size(), 2); // fetched files are kept offline
}

void tst_ArchiveWorker::openMode()
{
    QDesktopServices::setUrlHandler(QStringLiteral("file"), this, "recordOpenedUrl");
    QStringList result;
    SequenceAnswerer answerer;
    QVERIFY(m_worker->exportDocuments({101, 4711}, {5}, {}, {{"4711", "Notiz"}}, m_target, true, result, -1, false,
                                      false, false, {}));
    QDesktopServices::unsetUrlHandler(QStringLiteral("file"));
    QVERIFY(answerer.seen().isEmpty());
    QCOMPARE(QFileInfo(result.value(0)).fileName(), QStringLiteral("report.pdf"));
    QCOMPARE(QFileInfo(result.value(1)).fileName(), QStringLiteral("4711_Notiz."));
    QCOMPARE(m_opened, (QList<QUrl>{QUrl::fromLocalFile(result[0]), QUrl::fromLocalFile(result[1])}));
    // A docs id list of the wrong length counts as unknown entries.
    QCOMPARE(m_client->log().last("getDocumentFileName").args, (QVariantList{"4711", "-1"}));
    QVERIFY(filesBelow(m_target).isEmpty());
    QVERIFY(QFileInfo::exists(result[0]) && QFileInfo::exists(result[1])); // the viewer reads them later
}

// ---- mailing -------------------------------------------------------------

QString tst_ArchiveWorker::mailScript(const QString &outFile)
{
    const QString script = m_dir->filePath(QStringLiteral("mailer.sh"));
    writeFile(script, QStringLiteral("#!/bin/sh\nfor a in \"$@\"; do printf '%s\\n' \"$a\"; done > \"%1.part\"\n"
                                     "mv \"%1.part\" \"%1\"\n").arg(outFile).toUtf8());
    QFile::setPermissions(script, QFileDevice::Permissions(0x7755));
    return script;
}

void tst_ArchiveWorker::mailWithCommand()
{
    const QString out = m_dir->filePath(QStringLiteral("args"));
    const QString script = mailScript(out);
    QVERIFY(m_worker->mailDocuments({101, 102, 101}, {}, {}, {}, script + QStringLiteral(" --attach %1"), false));
    QTRY_VERIFY_WITH_TIMEOUT(QFileInfo::exists(out), 15000);
    const QString report = fetchFolder() + "/101_0/report.pdf";
    const QString letter = fetchFolder() + "/102_0/letter.odt";
    QCOMPARE(QString::fromUtf8(readAll(out)), QStringLiteral("--attach\n%1,%2\n").arg(report, letter));
    QCOMPARE(m_client->log().count("exportDocument"), 2); // each document once
    QCOMPARE(m_client->log().last("exportDocument").args.mid(2), (QVariantList{2, "IGNORE"}));
    QVERIFY(QFileInfo::exists(report) && QFileInfo::exists(letter)); // the mail program reads them later
}

void tst_ArchiveWorker::mailVersionsEach()
{
    const QString out = m_dir->filePath(QStringLiteral("args"));
    QVERIFY(m_worker->mailDocuments({104, 104}, {}, {1, 2}, {}, mailScript(out) + QStringLiteral(" %1"), false));
    QTRY_VERIFY_WITH_TIMEOUT(QFileInfo::exists(out), 15000);
    QCOMPARE(m_client->log().count("exportDocumentVersion"), 2);
    QCOMPARE(readAll(out).count(','), 1);
}

void tst_ArchiveWorker::mailCommandWithoutPlaceholder()
{
    const QString out = m_dir->filePath(QStringLiteral("args"));
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("QString::arg: Argument missing")));
    QVERIFY(m_worker->mailDocuments({101}, {}, {}, {}, mailScript(out) + QStringLiteral(" --new"), false));
    QTRY_VERIFY_WITH_TIMEOUT(QFileInfo::exists(out), 15000);
    QCOMPARE(readAll(out), QByteArray("--new\n"));
}

void tst_ArchiveWorker::mailCommandMissing()
{
    SequenceAnswerer answerer({SequenceAnswerer::press(QMessageBox::Ok)});
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("MAIL COMMAND FAILED")));
    QVERIFY(m_worker->mailDocuments({101}, {}, {}, {}, QStringLiteral("/nonexistent/mailer %1"), false));
    QCOMPARE(answerer.texts(),
             QStringList{"E-Mail Command: The e-mail could not be created, unable to start Mail-Client!"});
}

void tst_ArchiveWorker::mailWithDesktopLauncher()
{
    const QString out = m_dir->filePath(QStringLiteral("args"));
    const QString bin = m_dir->filePath(QStringLiteral("bin"));
    QDir().mkpath(bin);
    QVERIFY(QFile::rename(mailScript(out), bin + QStringLiteral("/xdg-email")));
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", QFile::encodeName(bin) + ':' + path);
    const bool ok = m_worker->mailDocuments({101}, {}, {}, {}, QString(), false);
    qputenv("PATH", path);
    QVERIFY(ok);
    QTRY_VERIFY_WITH_TIMEOUT(QFileInfo::exists(out), 15000);
    QCOMPARE(QString::fromUtf8(readAll(out)),
             QStringLiteral("mailto:?subject=&body=&attach=%1\n").arg(fetchFolder() + "/101_0/report.pdf"));
}

void tst_ArchiveWorker::mailFetchFails()
{
    QVERIFY(!m_worker->mailDocuments({101, 999}, {}, {}, {}, QStringLiteral("true"), false));
    QCOMPARE(m_worker->getLastError(), QStringLiteral("Unknown document 999"));

    // A cancel while a version streams ends the mailing.
    std::thread canceller = cancelAfterFirstChunk(QStringLiteral("exportDocumentVersion"));
    addDocument(104, QStringLiteral("plan.pdf"), "x", {{1, QByteArray(8192, 'p')}});
    const bool ok = m_worker->mailDocuments({104}, {}, {1}, {}, QStringLiteral("true"), false);
    canceller.join();
    QVERIFY(!ok);
    QVERIFY(m_worker->isCanceled());
}

QTEST_MAIN(tst_ArchiveWorker)
#include "tst_archiveworker.moc"
