// The archive worker against the recording archive client: connection and
// client loading, file naming, export into real folders and mailing.
#include "germancatalogue.h"
#include "orvexarchiveworker.h"
#include "orvexfilecopy.h"
#include "orvextranslations.h"
#include "recordingarchiveclient.h"
#include "sequenceanswerer.h"
#include "testfiles.h"

#include <QDirIterator>
#include <QListWidget>
#include <QTemporaryDir>
#include <QtTest>

#include <optional>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

using Step = SequenceAnswerer::Step;
using Ids = QList<qlonglong>;
using Remarks = QMap<QString, QString>;

struct Connection { QString server, login, archive; bool keep; QString error; bool dropped; };
struct Naming { QString fetched, archiveName; qlonglong version; Remarks remarks; QString expected; QStringList existing; };
struct Mail { Ids ids; QString command, expected; };
Q_DECLARE_METATYPE(Connection)
Q_DECLARE_METATYPE(Naming)
Q_DECLARE_METATYPE(Mail)

namespace {

const Step ok = SequenceAnswerer::press(QMessageBox::Ok);

// Answers the rights check with names the test chooses.
class NamingClient : public RecordingArchiveClient
{
public:
    std::optional<QStringList> names;
    QStringList getDocumentFileNames(QStringList docIds, QStringList docsIds) override
    {
        const QStringList own = RecordingArchiveClient::getDocumentFileNames(docIds, docsIds);
        return names ? *names : own;
    }
};

using Doc = RecordingArchiveClient::Document;


} // namespace

class tst_ArchiveWorker : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        QVERIFY(OrvexTranslations::install(QLocale(QLocale::English))); // the plural forms
    }

    void init()
    {
        m_client = new NamingClient;
        m_client->setConnectionValues("srv", 4711, "anna", "pw", "tok", {"Main", "Other"});
        m_client->addDocument(Doc{101, "report.pdf", QByteArray(100 * 1024, 'r')});
        m_client->addDocument(Doc{102, "letter.odt", QByteArray(50 * 1024, 'l')});
        m_client->addDocument(Doc{103, "secret.pdf", "x", {}, 1, false});
        m_client->addDocument(Doc{104, "plan.pdf", "current", {{1, "version one"}, {2, QByteArray(8192, '2')}}});
        m_client->addDocument(Doc{105, "a.txt", "new a"});
        m_client->addDocument(Doc{106, "b.txt", "new b"});
        m_client->addDocument(Doc{4711, QString(), "x", {{2, "v2"}, {3, "v3"}}});
        m_worker = new OrvexArchiveWorker;
        m_worker->setArchiveClient(m_client);
        m_dir = new QTemporaryDir;
        m_target = m_dir->filePath("target");
        QDir().mkpath(m_target);
    }

    void cleanup()
    {
        delete m_worker;
        delete m_client;
        QFile::setPermissions(m_target, QFileDevice::Permissions(0x7777));
        delete m_dir;
    }

    void connection_data()
    {
        QTest::addColumn<Connection>("c");
        QTest::newRow("connects") << Connection{"srv", "anna", "Main", false, "", false};
        QTest::newRow("server") << Connection{"bad", "anna", "Main", true, "Cannot connect to bad:4711", true};
        QTest::newRow("archive, keep") << Connection{"srv", "anna", "Nope", true, "Unknown archive Nope", false};
        QTest::newRow("archive, drop") << Connection{"srv", "anna", "Nope", false, "Unknown archive Nope", true};
    }

    void connection()
    {
        QFETCH(Connection, c);
        m_worker->setConnectionSettings(c.server, 4711, c.login, "pw", "tok");
        m_worker->selectArchive(c.archive);
        m_client->log().clear();
        QCOMPARE(m_worker->doConnect(c.keep), c.error.isEmpty());
        QCOMPARE(m_worker->getLastError(), c.error);
        QCOMPARE(m_client->log().count("resetConnection"), int(c.dropped)); // the connection is given up
        QCOMPARE(m_client->isConnected(), c.error.isEmpty());
    }

    void loader_data()
    {
        QTest::addColumn<QString>("library"); // what lies in the folder as the client library
        QTest::addColumn<bool>("noClient");   // the library hands out no client
        QTest::addColumn<QString>("error");   // start of the error, %1 = path; empty: loads
        const QString loaderError = "Failed to load the plugin: %1 Error: ";
        QTest::newRow("no file") << "" << false << loaderError;
        QTest::newRow("plugin of another kind") << "liborvexworkbenchplugin.so" << false
                                                << "Failed to load the archive client: ";
        QTest::newRow("hands out no client") << "libtstkelarchiveclient.so" << true
                                             << "Failed to load the archive client.";
        QTest::newRow("loads") << "libtstkelarchiveclient.so" << false << "";
    }

    void loader()
    {
        QFETCH(QString, library);
        QFETCH(bool, noClient);
        QFETCH(QString, error);
        QTemporaryDir folder;
        const QString path = folder.filePath("libkelarchiveclient.so");
        if (library == "garbage")
            QVERIFY(writeFile(path, "this is not a shared library"));
        else if (!library.isEmpty())
            QVERIFY(QFile::copy(QCoreApplication::applicationDirPath() + '/' + library, path));
        if (noClient)
            qputenv("ORVEX_TEST_NO_CLIENT", "1");
        OrvexArchiveWorker worker;
        worker.setApplicationFolder(folder.path());
        worker.setConnectionSettings("srv", 1, "a", "b", "c");
        if (!error.isEmpty())
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression("ARCHIVE WORKER"));
        worker.selectArchive("Archive"); // loads the library and connects
        qunsetenv("ORVEX_TEST_NO_CLIENT");
        if (!error.isEmpty()) {
            QVERIFY2(worker.getLastError().startsWith(error.replace("%1", path)), qPrintable(worker.getLastError()));
            QVERIFY(!worker.getArchiveClient());
            return;
        }
        QVERIFY2(worker.doConnect(false), qPrintable(worker.getLastError()));
        QCOMPARE(worker.getArchiveClient()->objectName(), folder.path()); // handed the application folder
        QCOMPARE(QFileInfo(worker.getDocument("7")).size(), qint64(300 * 1024));
    }

    void withoutClientAndDelete()
    {
        OrvexArchiveWorker worker; // no client: refusals, no crash
        QStringList result;
        QVERIFY(!worker.exportDocuments({101}, {}, {}, {}, m_target, false, result, -1, false, true, false, {}));
        QVERIFY(!worker.mailDocuments({101}, {}, {}, {}, "true", false));
        QVERIFY(m_worker->deleteDocument("101", {"x"}));
        SequenceAnswerer answerer({ok});
        QVERIFY(!m_worker->deleteDocument("101", {}));
        QCOMPARE(answerer.texts(), QStringList{"Error: Unknown document 101"});
    }

    void fileName_data()
    {
        QTest::addColumn<Naming>("n"); // existing: files already in the fetch folder
        const Remarks invoice{{"4711", "Invoice 03/2021"}};
        const QString example = "4711_2_Invoice032021";
        QTest::newRow("example") << Naming{"tmp123.pdf", "", 2, invoice, example + ".pdf", {}};
        QTest::newRow("taken twice") << Naming{"tmp123.pdf", "", 2, invoice, example + "_2.pdf",
                                               {example + ".pdf", example + "_1.pdf"}};
        QTest::newRow("no extension") << Naming{"tmp123", "", -1, {{"4711", "Remark"}}, "4711_Remark.", {}};
        QTest::newRow("versioned remark wins")
            << Naming{"tmp.pdf", "", 2, {{"4711", "plain"}, {"4711#2", "versioned"}}, "4711_2_versioned.pdf", {}};
        QTest::newRow("cut at 100") << Naming{"tmp.pdf", "", -1, {{"4711", QString(150, 'y')}}, "4711_" + QString(95, 'y') + ".pdf", {}};
        QTest::newRow("archive name") << Naming{"tmp.pdf", "Rechnung.pdf", -1, {}, "Rechnung.pdf", {}};
        QTest::newRow("report.pdf.pdf") << Naming{"tmp.pdf", "report.pdf.pdf", -1, {}, "report.pdf", {}};
        QTest::newRow("complete suffix") << Naming{"tmp.tar.gz", "backup.tar.gz", -1, {}, "backup.tar.gz", {}};
        QTest::newRow("own name is no collision") << Naming{"Rechnung.pdf", "Rechnung.pdf", -1, {}, "Rechnung.pdf", {}};
        QTest::newRow("slashes stay in the folder") << Naming{"tmp.pdf", "../../evil.pdf", -1, {}, ".._.._evil.pdf", {}};
    }

    void fileName()
    {
        QFETCH(Naming, n);
        m_client->addDocument(Doc{4711, n.archiveName, "x", {{2, "v2"}, {3, "v3"}}});
        const QString folder = m_dir->filePath("fetch") + '/';
        QVERIFY(writeFile(folder + n.fetched, "fetched"));
        for (const QString &name : n.existing)
            QVERIFY(writeFile(folder + name, "other"));
        QCOMPARE(m_worker->getNewFileName(folder + n.fetched, n.remarks, 4711, 9, n.version, true), folder + n.expected);
        QCOMPARE(readFile(folder + n.expected), QByteArray("fetched"));
    }

    void nameDialog_data()
    {
        QTest::addColumn<QString>("typed"); // empty: accepted as offered; null: rejected
        QTest::addColumn<QStringList>("files");
        QTest::newRow("renamed") << "Angebot" << QStringList{"Angebot.pdf", "letter.odt"};
        QTest::newRow("folder part dropped") << "../../escape.pdf" << QStringList{"escape.pdf", "letter.odt"};
        QTest::newRow("rejected") << QString() << QStringList();
    }

    void nameDialog()
    {
        QFETCH(QString, typed);
        QFETCH(QStringList, files);
        const Step rename = [typed](QWidget *modal) {
            if (!typed.isEmpty())
                modal->findChild<QListWidget *>("m_fileList")->item(0)->setText(typed);
            static_cast<QDialog *>(modal)->accept();
        };
        QStringList result;
        QVERIFY(exportDocs({101, 102}, result, {typed.isNull() ? SequenceAnswerer::press(QMessageBox::Cancel) : rename}));
        QCOMPARE(m_seen, QStringList{"Export documents...: "});
        QCOMPARE(filesBelow(m_target), files);
        QCOMPARE(result.size(), files.size());
        QCOMPARE(m_worker->exportSummary().text(),
                 typed.isNull() ? QString("0 files exported, 2 skipped.") : QString("2 files exported."));
        for (const QString &file : result) {
            QCOMPARE(readFile(file), file.endsWith(".odt") ? QByteArray(50 * 1024, 'l') : QByteArray(100 * 1024, 'r'));
            struct stat info;
            QCOMPARE(::stat(QFile::encodeName(file).constData(), &info), 0);
            QCOMPARE(info.st_mode & 0777, mode_t(0666));
        }
        QCOMPARE(filesBelow(m_dir->path()).size(), files.size()); // nothing beside the target, no temporary left
        QVERIFY(filesBelow(fetchFolder()).isEmpty());
        QCOMPARE(m_client->log().last("getDocumentFileNames").args,
                 (QVariantList{QStringList{"101", "102"}, QStringList{"1101", "1102"}}));
    }

    void overwriteAndGoOn_data()
    {
        // report.pdf and a.txt exist in the target; letter.odt and b.txt do not.
        QTest::addColumn<bool>("reportIsAFolder"); // removing it fails
        QTest::addColumn<QList<int>>("answers");    // to the questions, in order
        QTest::addColumn<QStringList>("boxes");
        QTest::addColumn<QStringList>("files");     // target content afterwards: name=content
        QTest::addColumn<QString>("summary");
        const QString question = "File exists: The file TARGET/%1 already exists, overwrite?";
        const QStringList asked{question.arg("report.pdf"), question.arg("a.txt")};
        QTest::newRow("all yes") << false << QList<int>{QMessageBox::Yes, QMessageBox::Yes} << asked
                                 << QStringList{"a.txt=new a", "b.txt=new b", "letter.odt=l", "report.pdf=r"}
                                 << "4 files exported.";
        // A No keeps that one file; the new files after it are written all the same.
        QTest::newRow("after a No, every later new file was skipped silently")
            << false << QList<int>{QMessageBox::No, QMessageBox::Yes} << asked
            << QStringList{"a.txt=new a", "b.txt=new b", "letter.odt=l", "report.pdf=old"}
            << "3 files exported, 1 skipped.";
        QTest::newRow("no to both") << false << QList<int>{QMessageBox::No, QMessageBox::No} << asked
                                    << QStringList{"a.txt=old", "b.txt=new b", "letter.odt=l", "report.pdf=old"}
                                    << "2 files exported, 2 skipped.";
        QTest::newRow("removal fails") << true << QList<int>{QMessageBox::Yes, QMessageBox::Ok, QMessageBox::Yes}
                                       << QStringList{asked[0], "Error: The file could not be overwritten.", asked[1]}
                                       << QStringList{"a.txt=new a", "b.txt=new b", "letter.odt=l",
                                                      "report.pdf/inside=old"}
                                       << "3 files exported, 1 failed.";
    }

    void overwriteAndGoOn()
    {
        QFETCH(bool, reportIsAFolder);
        QFETCH(QList<int>, answers);
        QFETCH(QStringList, boxes);
        QFETCH(QStringList, files);
        QFETCH(QString, summary);
        QVERIFY(writeFile(m_target + (reportIsAFolder ? "/report.pdf/inside" : "/report.pdf"), "old"));
        QVERIFY(writeFile(m_target + "/a.txt", "old"));
        QList<Step> steps{ok};
        for (int answer : answers)
            steps << SequenceAnswerer::press(QMessageBox::StandardButton(answer));
        QStringList result;
        QVERIFY(exportDocs({101, 102, 105, 106}, result, steps));
        QCOMPARE(m_seen.mid(1).replaceInStrings(m_target, "TARGET"), boxes);
        // Long uniform contents (the archive's documents) are shown by their first character.
        QStringList content;
        for (const QString &file : filesBelow(m_target)) {
            const QByteArray bytes = readFile(m_target + '/' + file);
            content << file + '=' + QString::fromLatin1(bytes.size() > 10 ? bytes.left(1) : bytes);
        }
        QCOMPARE(content, files);
        QVERIFY(filesBelow(fetchFolder()).isEmpty());
        QCOMPARE(m_worker->exportSummary().text(), summary);
    }

    void summaryText_data()
    {
        QTest::addColumn<int>("exported");
        QTest::addColumn<int>("skipped");
        QTest::addColumn<int>("failed");
        QTest::addColumn<bool>("german");
        QTest::addColumn<QString>("text");
        QTest::newRow("one") << 1 << 0 << 0 << false << "1 file exported.";
        QTest::newRow("none, all counted") << 0 << 2 << 1 << false << "0 files exported, 2 skipped, 1 failed.";
        QTest::newRow("German, one") << 1 << 1 << 0 << true << "1 Datei exportiert, 1 übersprungen.";
        QTest::newRow("German, more") << 3 << 0 << 2 << true << "3 Dateien exportiert, 2 fehlgeschlagen.";
    }

    void summaryText()
    {
        QFETCH(int, exported);
        QFETCH(int, skipped);
        QFETCH(int, failed);
        QFETCH(bool, german);
        QFETCH(QString, text);
        const GermanCatalogue catalogue(german);
        QVERIFY(catalogue.isLoaded());
        OrvexExportSummary summary;
        summary.exported = exported;
        summary.skipped = skipped;
        summary.failed = failed;
        QCOMPARE(summary.text(), text);
    }

    void rightsCheck_data()
    {
        QTest::addColumn<QStringList>("names"); // what the rights check answers
        QTest::addColumn<QStringList>("files");
        QTest::newRow("mismatch") << QStringList{"Erster.pdf"} << QStringList{"Erster.pdf", "letter.odt"};
        QTest::newRow("names with folders") << QStringList{"sub/dir/x.pdf", "../y.odt"}
                                            << QStringList{".._y.odt", "sub_dir_x.pdf"};
        QTest::newRow("unusable names") << QStringList{QString(QChar(0)), ".."} << QStringList{"letter.odt", "report.pdf"};
    }

    void rightsCheck()
    {
        QFETCH(QStringList, names);
        QFETCH(QStringList, files);
        m_client->names = names;
        QStringList result;
        QVERIFY(exportDocs({101, 102}, result, {ok, ok}));
        QStringList expected{"Export documents...: "};
        if (names.size() != 2)
            expected.prepend("Warning: Unable to export documents. Permissions missmatch.");
        QCOMPARE(m_seen, expected);
        QCOMPARE(filesBelow(m_target), files);
        QCOMPARE(filesBelow(m_dir->path()).size(), files.size());
    }

    void exportRefused_data()
    {
        QTest::addColumn<Ids>("ids");
        QTest::addColumn<Ids>("versions");
        QTest::addColumn<QString>("target");
        QTest::addColumn<QString>("error");
        QTest::newRow("missing folder") << Ids{101} << Ids{} << "missing" << "The folder DIR/missing does not exist.";
        QTest::newRow("refused document") << Ids{101, 103} << Ids{} << "target" << "No permission to read document 103";
        QTest::newRow("versions do not match") << Ids{104, 104} << Ids{1} << "target"
                                               << "1 versions were given for 2 documents.";
    }

    void exportRefused()
    {
        QFETCH(Ids, ids);
        QFETCH(Ids, versions);
        QFETCH(QString, target);
        QFETCH(QString, error);
        SequenceAnswerer answerer;
        QStringList result;
        QVERIFY(!m_worker->exportDocuments(ids, {}, versions, {}, m_dir->filePath(target), false, result, -1, false,
                                           false, false, {}));
        QCOMPARE(m_worker->getLastError(), error.replace("DIR", m_dir->path()));
        QVERIFY(answerer.texts().isEmpty());
        QVERIFY(result.isEmpty());
        QVERIFY(filesBelow(m_dir->path()).isEmpty());
        QVERIFY(filesBelow(fetchFolder()).isEmpty()); // the first document's fetch is not left behind
    }

    void cancelInTheMiddle()
    {
        std::thread canceller = cancelAfterFirstChunk("exportDocument");
        QStringList result;
        const bool done = exportDocs({101, 102}, result);
        canceller.join();
        QVERIFY(!done);
        QVERIFY(m_worker->isCanceled());
        QCOMPARE(m_client->log().count("cancelStreaming"), 1);
        QCOMPARE(m_client->log().count("exportDocument"), 1); // the second document is never asked for
        QVERIFY(filesBelow(m_dir->path()).isEmpty());
        QVERIFY(filesBelow(fetchFolder()).isEmpty());
        // The next export starts uncanceled.
        QVERIFY(exportDocs({102}, result, {ok}));
        QCOMPARE(filesBelow(m_target), QStringList{"letter.odt"});
    }

    void unwritableTarget()
    {
        // Root writes anywhere its permissions allow; /proc refuses new files even to root.
        QString target = m_target;
        if (geteuid() == 0)
            target = "/proc";
        else
            QVERIFY(QFile::setPermissions(m_target, QFileDevice::ReadOwner | QFileDevice::ExeOwner));
        QStringList result;
        QVERIFY(exportDocs({101, 102}, result, {ok}, target));
        const QString error = "Error: The file could not be saved!";
        QCOMPARE(m_seen.mid(1), (QStringList{error, error}));
        QCOMPARE(m_worker->exportSummary().text(), QString("0 files exported, 2 failed."));
        QVERIFY(result.isEmpty());
        QVERIFY(filesBelow(fetchFolder()).isEmpty());
    }

    void versions()
    {
        // The alternate call; the plain one is exercised with the real client.
        QStringList result;
        SequenceAnswerer answerer({ok, SequenceAnswerer::press(QMessageBox::Yes)});
        QVERIFY(m_worker->exportDocuments({104, 104, 4711}, {1, 2, 3}, {1, 2, 2}, {{"4711#2", "Notiz 7"}}, m_target,
                                          false, result, -1, false, false, true, {}));
        QCOMPARE(m_client->log().count("exportDocumentVersionAlt"), 3);
        QCOMPARE(m_client->log().count("getDocumentFileNames"), 0);
        // Both versions are named plan.pdf by the archive, each in its own fetch folder;
        // the second asks before it overwrites the first. The third is named from its remark.
        QCOMPARE(answerer.texts().size(), 2);
        QCOMPARE(filesBelow(m_target), (QStringList{"4711_2_Notiz7.", "plan.pdf"}));
        QCOMPARE(readFile(m_target + "/plan.pdf"), QByteArray(8192, '2'));
    }

    // A drag may name a version for some documents and none for others.
    void mixedVersions()
    {
        QStringList result;
        SequenceAnswerer answerer({ok});
        QVERIFY2(m_worker->exportDocuments({104, 101}, {1, 2}, {2, -1}, {}, m_target, false, result, -1, false,
                                           false, false, {}),
                 qPrintable(m_worker->getLastError()));
        QCOMPARE(m_client->log().count("exportDocumentVersion"), 1);
        QCOMPARE(m_client->log().last("exportDocument").args.value(0).toInt(), 101); // its current version
        QCOMPARE(filesBelow(m_target), (QStringList{"plan.pdf", "report.pdf"}));
        QCOMPARE(readFile(m_target + "/plan.pdf"), QByteArray(8192, '2'));
        QCOMPARE(m_worker->exportSummary().text(), QString("2 files exported."));
    }

    void offlineExport()
    {
        QStringList result;
        SequenceAnswerer answerer;
        QVERIFY(m_worker->exportDocuments({101, 104}, {}, {-1, 2}, {}, m_target, false, result, -1, true, false,
                                          false, {}));
        QVERIFY(answerer.texts().isEmpty()); // no name dialog offline
        QCOMPARE(filesBelow(m_target), (QStringList{"plan.pdf", "report.pdf"}));
        QCOMPARE(m_client->log().count("getDocumentFileNames") + m_client->log().count("getDocumentPartFileName"), 0);
        QCOMPARE(filesBelow(fetchFolder()).size(), 2); // fetched files are kept offline
    }

    // A fake desktop launcher in the scratch folder's bin: each run writes its
    // arguments, one a line, into a file of its own, out-<process id>.
    QString fakeLauncher(const QString &name, const QString &out)
    {
        const QString launcher = m_dir->filePath("bin/" + name);
        writeFile(launcher, QString("#!/bin/sh\nfor a in \"$@\"; do printf '%s\\n' \"$a\"; done > \"%1.$$\"\n"
                                    "mv \"%1.$$\" \"%1-$$\"\n").arg(out).toUtf8());
        QFile::setPermissions(launcher, QFileDevice::Permissions(0x7755));
        return launcher;
    }

    // What the runs of a fake launcher were given, sorted.
    static QStringList launcherCalls(const QString &out)
    {
        QStringList calls;
        const QFileInfo info(out);
        for (const QFileInfo &file : QDir(info.path()).entryInfoList({info.fileName() + "-*"}, QDir::Files))
            calls << QString::fromUtf8(readFile(file.filePath()));
        calls.sort();
        return calls;
    }

    // Every launch of the last call has told its outcome: the errors, in order.
    // A launcher deletes itself once it has told its outcome: each is heard
    // from as it finishes, in whatever order they do.
    QStringList launchErrors()
    {
        const QList<OrvexLauncher *> launchers = m_worker->launches();
        QVector<QString> errors(launchers.size());
        int pending = 0;
        QList<QMetaObject::Connection> heard;
        for (int i = 0; i < launchers.size(); ++i) {
            if (launchers.at(i)->isFinished()) {
                errors[i] = launchers.at(i)->errorString();
                continue;
            }
            ++pending;
            heard << connect(launchers.at(i), &OrvexLauncher::finished, this,
                             [&errors, &pending, i](bool, const QString &error) {
                                 errors[i] = error;
                                 --pending;
                             });
        }
        const bool finished = QTest::qWaitFor([&pending] { return pending == 0; }, 10000);
        for (const QMetaObject::Connection &connection : heard)
            disconnect(connection);
        return finished ? errors.toList() : QStringList{"did not finish"};
    }

    void openMode()
    {
        const QString out = m_dir->filePath("opened");
        fakeLauncher("xdg-open", out);
        const QByteArray path = qgetenv("PATH");
        qputenv("PATH", QFile::encodeName(m_dir->filePath("bin")) + ':' + path);
        QStringList result;
        SequenceAnswerer answerer;
        const bool done = m_worker->exportDocuments({101, 4711}, {5}, {}, {{"4711", "Notiz"}}, m_target, true, result,
                                                    -1, false, false, false, "opt");
        qputenv("PATH", path);
        QVERIFY(done);
        QVERIFY(answerer.texts().isEmpty());
        QCOMPARE(m_worker->launches().size(), 2);
        QCOMPARE(launchErrors(), (QStringList{"", ""}));
        QCOMPARE(launcherCalls(out), (QStringList{result[0] + '\n', result[1] + '\n'}));
        QCOMPARE(QFileInfo(result[0]).fileName() + ' ' + QFileInfo(result[1]).fileName(), QString("report.pdf 4711_Notiz."));
        QVERIFY(QFileInfo::exists(result[0]) && QFileInfo::exists(result[1])); // the viewer reads them later
        QVERIFY(filesBelow(m_target).isEmpty());
        // A docs id list of the wrong length counts as unknown entries.
        QCOMPARE(m_client->log().last("getDocumentFileName").args, (QVariantList{"4711", "-1"}));
    }

    void mail_data()
    {
        // MAILER: a script that writes its arguments, one a line; expected: its output, F = the fetch folder.
        QTest::addColumn<Mail>("m");
        QTest::newRow("command, each document once")
            << Mail{{101, 102, 101}, "MAILER --attach %1", "--attach\nF/101_0/report.pdf,F/102_0/letter.odt\n"};
        QTest::newRow("desktop launcher") << Mail{{101}, "", "mailto:?subject=&body=&attach=F/101_0/report.pdf\n"};
    }

    void mail()
    {
        QFETCH(Mail, m);
        const QString out = m_dir->filePath("args");
        const QString mailer = fakeLauncher("xdg-email", out);
        const QByteArray path = qgetenv("PATH");
        qputenv("PATH", QFile::encodeName(m_dir->filePath("bin")) + ':' + path);
        SequenceAnswerer answerer;
        const bool done = m_worker->mailDocuments(m.ids, {}, {}, {}, m.command.replace("MAILER", mailer), false);
        qputenv("PATH", path);
        QVERIFY(done);
        QCOMPARE(launchErrors(), QStringList{QString()});
        QVERIFY(answerer.texts().isEmpty()); // told by the caller, not by a box of its own
        QCOMPARE(launcherCalls(out), QStringList{m.expected.replace("F/", fetchFolder() + '/')});
    }

    void mailStops()
    {
        QVERIFY(!m_worker->mailDocuments({101, 999}, {}, {}, {}, "true", false));
        QCOMPARE(m_worker->getLastError(), QString("Unknown document 999"));
        // A cancel while a version streams ends the mailing.
        std::thread canceller = cancelAfterFirstChunk("exportDocumentVersion");
        const bool done = m_worker->mailDocuments({104}, {}, {2}, {}, "true", false);
        canceller.join();
        QVERIFY(!done);
        QVERIFY(m_worker->isCanceled());
    }

private:
    // Exports as copies into target (the test's folder by default), answering the dialogs.
    bool exportDocs(const Ids &ids, QStringList &result, const QList<Step> &answers = {}, QString target = {})
    {
        SequenceAnswerer answerer(answers);
        Ids docsIds;
        for (qlonglong id : ids)
            docsIds << id + 1000;
        const bool done = m_worker->exportDocuments(ids, docsIds, {}, {}, target.isNull() ? m_target : target,
                                                    false, result, -1, false, false, false, "IGNORE");
        m_seen = answerer.texts();
        return done;
    }

    // Cancels the progress dialog once the first chunk of the operation is in.
    std::thread cancelAfterFirstChunk(const QString &operation)
    {
        const QString stall = operation + ":chunk";
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

    QString fetchFolder() const { return m_client->exportFolder(); }

    NamingClient *m_client = nullptr;
    OrvexArchiveWorker *m_worker = nullptr;
    QTemporaryDir *m_dir = nullptr;
    QString m_target;
    QStringList m_seen; // "title: text" of the dialogs the last exportDocs met
};

QTEST_MAIN(tst_ArchiveWorker)
#include "tst_archiveworker.moc"
