// The drag data object: announced formats, the per-process docs-id stream, the
// private temporary folder's life, the mouse probe, and the URLs and files it makes.
#include "../transfer/sequenceanswerer.h"
#include "fakeconnectionmanager.h"
#include "modalanswerer.h"
#include "orvexarchiveworker.h"
#include "orvexlogindata.h"
#include "orvexmimedata.h"
#include "orvextranslations.h"
#include "recordingarchiveclient.h"
#include "recordingclassifyclient.h"
#include "snackbarcatcher.h"

#include <QDataStream>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QWidget>
#include <QtTest>

namespace {

QByteArray docsIdStream(const QStringList &ids)
{
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    for (const QString &id : ids)
        out << id;
    return bytes;
}

struct DraggedMime : OrvexMimeData // plays the mouse through the seam
{
    Qt::MouseButtons buttons;
    Qt::MouseButtons pressedMouseButtons() const override { return buttons; }
};

struct RecordArchive : RecordingArchiveClient // version records: field 1 the version, 11 the file
{
    QStringList getAllVersions(int docId) override
    {
        const QString record = QStringLiteral("v|%1||||||||||%2").replace('|', QChar(0xFEFF));
        return docId == 4711 ? QStringList{record.arg(2).arg("a.pdf"), record.arg(3).arg("scan.tif")} : QStringList();
    }
};

struct Request // for the dragged documents: a drop target's format, or copyTo
{
    QStringList entries, docsIds, expected;
    QString mode, request;
    QMap<QString, QString> remarks;
    int buttons;
    QString shown = {}; // title and text of the box shown
    QString told = {};  // the host's status line after an export
};

} // namespace

Q_DECLARE_METATYPE(Request)


class tst_Dnd : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        // The objects' folders land in a private temp folder.
        QVERIFY(m_temp.isValid());
        qputenv("TMPDIR", QFile::encodeName(m_temp.path()));
        RecordingArchiveClient::Document document;
        for (int docId : {4711, 12, 13}) {
            document.docId = docId;
            document.fileName = docId == 4711 ? "Rechnung März.pdf" : "";
            document.versions = docId == 4711 ? QMap<int, QByteArray>{{3, "third"}} : QMap<int, QByteArray>();
            document.readable = docId != 13; // an archive that refuses
            m_archive.addDocument(document);
        }
        m_worker.setArchiveClient(&m_archive);
        m_worker.selectArchive("Archive");
        QVERIFY(OrvexTranslations::install(QLocale(QLocale::English))); // the plural forms
    }

    void init()
    {
        orvexLoginData::setServerNameOverride(FakeConnectionManager::uniqueName()); // nobody there
    }

    void formats()
    {
        const QString uri = QStringLiteral("text/x-orvex-uri");
        OrvexMimeData mime;
        QCOMPARE(mime.formats(), QStringList{uri});
        QVERIFY(mime.hasFormat(uri));
        mime.setData(uri, "stored anyway");
        mime.setData(QStringLiteral("x-application-orvex"), QByteArray());
        QCOMPARE(mime.formats(), QStringList({QStringLiteral("x-application-orvex"), uri}));
    }

    void docsIdsFromStream_data()
    {
        QTest::addColumn<QString>("format");
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QList<qlonglong>>("docsIds");
        const QString pid = QString::number(QCoreApplication::applicationPid());
        const QString own = QStringLiteral("x-vantrel-orvexdocument") + pid;
        QByteArray cut = docsIdStream({"11", "12345"});
        cut.chop(3);
        QByteArray hostile = docsIdStream({"4"}) + QByteArray::fromHex("7ffffffe0031");

        QTest::newRow("ids") << own << docsIdStream({"1", "9000000000"}) << QList<qlonglong>{1, 9000000000LL};
        QTest::newRow("non-numeric keeps its place") << own << docsIdStream({"5", "abc", "", "99999999999999999999", "7"})
                                                     << QList<qlonglong>{5, 0, 0, 0, 7};
        QTest::newRow("empty") << own << QByteArray() << QList<qlonglong>{};
        QTest::newRow("another process") << QStringLiteral("x-vantrel-orvexdocument%1").arg(pid.toLongLong() + 1)
                                         << docsIdStream({"1"}) << QList<qlonglong>{};
        QTest::newRow("case differs") << QStringLiteral("X-Vantrel-OrvexDocument") + pid << docsIdStream({"1"})
                                      << QList<qlonglong>{};
        QTest::newRow("last item cut off") << own << cut << QList<qlonglong>{11};
        QTest::newRow("length of 2 GB") << own << hostile << QList<qlonglong>{4};
    }

    void docsIdsFromStream()
    {
        QFETCH(QString, format);
        QFETCH(QByteArray, bytes);
        QFETCH(QList<qlonglong>, docsIds);
        OrvexMimeData mime;
        // Lists of other lengths are the drop side's to check; the stream stands alone.
        mime.setDocIds({"4711;3", "4712", "4713"});
        mime.setDocsIds({"1001"});
        mime.setData(format, bytes);
        QCOMPARE(mime.getDocsIdsFromMimeData(), docsIds);
        QCOMPARE(mime.getDocIds().size(), 3);
        QCOMPARE(mime.getDocsIds(), QStringList{"1001"});
    }

    void tempFolderAndPort()
    {
        OrvexMimeData without; // no Connection Manager: port 0, at once
        QCOMPARE(without.getDndPort(), qint64(0));

        FakeConnectionManager manager;
        manager.setReply("47011\n");
        OrvexMimeData first;
        OrvexMimeData second; // most likely within the same millisecond
        QCOMPARE(first.getDndPort(), qint64(47011));
        QCOMPARE(manager.received(0), QByteArray("GETDNDPORT"));

        QVERIFY(QRegularExpression(QStringLiteral("^zuldnd\\d{8}-\\d{9}$")).match(first.getTempDirName()).hasMatch());
        QCOMPARE(first.getTempDir(), QDir::tempPath() + QLatin1Char('/') + first.getTempDirName() + QLatin1Char('/'));
        QVERIFY(first.getTempDir().startsWith(m_temp.path()));
        for (const OrvexMimeData *mime : {&without, &first, &second})
            QVERIFY(QFileInfo(mime->getTempDir()).isDir());
        QVERIFY(first.getTempDir() != second.getTempDir());
    }

    void tempFolderOnDestruction_data()
    {
        QTest::addColumn<QString>("mode"); // null: no classification client
        QTest::addColumn<bool>("withSubfolder");
        QTest::addColumn<bool>("filesStay");
        QTest::addColumn<bool>("folderStays");
        QTest::newRow("no client") << QString() << false << false << false;
        QTest::newRow("online") << "Online" << false << false << false;
        QTest::newRow("offline") << "Offline (no server)" << false << true << true;
        QTest::newRow("offline in lower case") << "offline" << false << false << false;
        QTest::newRow("online with a subfolder") << "Online" << true << false << true;
    }

    void tempFolderOnDestruction()
    {
        QFETCH(QString, mode);
        QFETCH(bool, withSubfolder);
        QFETCH(bool, filesStay);
        QFETCH(bool, folderStays);
        RecordingClassifyClient client;
        client.setConnectionMode(mode);
        auto *mime = new OrvexMimeData;
        if (!mode.isNull())
            mime->setClassifyClient(&client);
        const QString dir = mime->getTempDir();
        QStringList files = {dir + "Rechnung 4711.pdf", dir + "b.txt"};
        if (withSubfolder && QDir(dir).mkdir("sub"))
            files << dir + "sub/inner.txt";
        for (const QString &path : files) {
            QFile file(path);
            QVERIFY(file.open(QIODevice::WriteOnly));
        }
        delete mime;
        QCOMPARE(QFile::exists(files[0]), filesStay);
        QCOMPARE(QFile::exists(files[1]), filesStay);
        QCOMPARE(QFileInfo(dir).isDir(), folderStays);
        if (withSubfolder)
            QVERIFY(QFile::exists(files[2])); // never descended into
    }

    void leftButtonDown_data()
    {
        QTest::addColumn<QList<int>>("buttons");
        QTest::addColumn<bool>("down");
        QTest::newRow("none") << QList<int>{} << false;
        QTest::newRow("left") << QList<int>{Qt::LeftButton} << true;
        QTest::newRow("right") << QList<int>{Qt::RightButton} << true;
        QTest::newRow("left and right") << QList<int>{Qt::LeftButton, Qt::RightButton} << false;
    }

    void leftButtonDown()
    {
        QFETCH(QList<int>, buttons);
        QFETCH(bool, down);
        QWidget window;
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        for (int button : buttons)
            QTest::mousePress(window.windowHandle(), Qt::MouseButton(button), {}, QPoint(5, 5));
        OrvexMimeData mime;
        const bool result = mime.getLButtonDown();
        for (int button : buttons)
            QTest::mouseRelease(window.windowHandle(), Qt::MouseButton(button), {}, QPoint(5, 5));
        QCOMPARE(result, down);
    }

    void materialise_data()
    {
        QTest::addColumn<Request>("r");
        QTest::newRow("4711;3 offline") << Request{{"4711;3"}, {}, {"4711_3_Invoice.tif?openmode=4&docid=4711&version=3"}, "Offline", "text/x-orvex-uri", {{"4711#3", "Invoice"}, {"4711", "-"}}, Qt::LeftButton};
        QTest::newRow("12 online, dropped") << Request{{"12", "4711"}, {"1", "2"}, {"12_.pdf?openmode=4&docid=12", "4711_.pdf?openmode=4&docid=4711"}, "Online", "text/x-orvex-uri", {}, Qt::NoButton};
        QTest::newRow("A.PDF") << Request{{"4711"}, {"1"}, {"4711_A.PDF?openmode=4&docid=4711"}, "Online", "text/uri-list", {{"4711", "A/.PDF"}}, Qt::RightButton};
        QTest::newRow("empty suffix") << Request{{"4713"}, {}, {"4713_.?openmode=4&docid=4713"}, "Offline", "text/x-orvex-uri", {}, Qt::LeftButton};
        QTest::newRow("archive names") << Request{{"4711", "12"}, {"1", "2"}, {"Rechnung März.pdf?openmode=4&docid=4711", "12?openmode=4&docid=12"}, "Online", "text/uri-list", {}, Qt::NoButton};
        QTest::newRow("permission denied") << Request{{"4711", "13"}, {"1", "2"}, {}, "Online", "text/uri-list", {}, Qt::NoButton, "WarningPermission denied."};
        QTest::newRow("stream of another length") << Request{{"4711"}, {"1", "2"}, {}, "Online", "text/uri-list", {}, Qt::NoButton};
        QTest::newRow("bad entries left out") << Request{{"abc", "4711;x", "", "12"}, {}, {"12_.pdf?openmode=4&docid=12"}, "Online", "text/uri-list", {}, Qt::LeftButton};
        QTest::newRow("copied once") << Request{{"4711", "12"}, {"1", "2"}, {"12", "Rechnung März.pdf"}, "Online", "copyTo", {}, Qt::NoButton, "Export documents...", "2 files exported."};
        QTest::newRow("versions mixed with current ones could not be exported")
            << Request{{"4711;3", "12"}, {"1", "2"}, {"12_Brief.", "Rechnung März.pdf"}, "Online", "copyTo", {{"12", "Brief"}}, Qt::NoButton, "Export documents...", "2 files exported."};
        QTest::newRow("copy refused") << Request{{"13"}, {}, {}, "Online", "copyTo", {}, Qt::NoButton, "Failed to export: No permission to read document 13"};
        QTest::newRow("copy without entries") << Request{{"abc", ""}, {}, {}, "Online", "copyTo", {}, Qt::NoButton};
    }

    void materialise()
    {
        QFETCH(Request, r);
        m_classify.setConnectionMode(r.mode);
        m_classify.setServer("LocalHost", 4711, 7);
        FakeConnectionManager manager;
        manager.setReply("47011\n");
        DraggedMime mime; // filled as the host fills a drag
        mime.setUrls(QUrl::fromStringList(r.entries));
        mime.setData(OrvexMimeData::documentStreamFormat(), docsIdStream(r.docsIds));
        mime.setArchiveClient(&m_worker);
        mime.setClassifyClient(&m_classify);
        mime.setBemerkungen(r.remarks);
        mime.buttons = Qt::MouseButtons(r.buttons);
        ModalAnswerer box(QMessageBox::Ok);
        QTemporaryDir first, second;
        QStringList got; // copyTo: the files written; otherwise the URLs' file names and queries up to the archive
        SnackbarCatcher status;
        if (r.request == "copyTo") {
            mime.copyTo(first.path());
            ModalAnswerer again(QMessageBox::Ok);
            mime.copyTo(second.path()); // answered by the first export
            got = QDir(first.path()).entryList(QDir::Files) + QDir(second.path()).entryList(QDir::Files);
        } else { // asked the way the platform asks while it drags and when it drops
            got = r.request == "text/uri-list" ? QUrl::toStringList(mime.urls()) : QString::fromUtf8(mime.data(r.request)).split("\r\n");
            got.replaceInStrings(QRegularExpression("^http://localhost:47011/openDoc/(.+)&archive=Archive&host=" + QSysInfo::machineHostName()
                                                    + "&port=4711&profileId=7$"), "\\1");
        }
        QCOMPARE(box.seenTitle() + box.seenText(), r.shown);
        QCOMPARE(got, r.expected);
        if (!r.told.isEmpty())
            QTRY_COMPARE(status.texts, QStringList{"app:" + r.told});
        else
            QCOMPARE(status.texts, QStringList());
    }

    // However often a drop target probes while the button is held, the user hears
    // of missing rights once per drag.
    void permissionDeniedOncePerDrag()
    {
        m_classify.setConnectionMode("Online");
        SequenceAnswerer boxes({SequenceAnswerer::press(QMessageBox::Ok), SequenceAnswerer::press(QMessageBox::Ok)});
        for (int drag = 0; drag < 2; ++drag) {
            DraggedMime mime;
            mime.setUrls(QUrl::fromStringList({"4711", "13"}));
            mime.setData(OrvexMimeData::documentStreamFormat(), docsIdStream({"1", "2"}));
            mime.setArchiveClient(&m_worker);
            mime.setClassifyClient(&m_classify);
            mime.buttons = Qt::LeftButton;
            for (int probe = 0; probe < 3; ++probe) {
                QVERIFY(mime.urls().isEmpty());
                QVERIFY(mime.data("text/x-orvex-uri").isEmpty());
            }
            mime.buttons = Qt::NoButton; // dropped
            QVERIFY(mime.urls().isEmpty());
        }
        QCOMPARE(boxes.texts(), QStringList({"Warning: Permission denied.", "Warning: Permission denied."}));
    }

private:
    QTemporaryDir m_temp;
    RecordArchive m_archive;
    RecordingClassifyClient m_classify;
    OrvexArchiveWorker m_worker;
};

QTEST_MAIN(tst_Dnd)
#include "tst_dnd.moc"
