// The drag data object: announced formats, the per-process docs-id stream, the
// private temporary folder's life online and offline, and the mouse probe.
#include "fakeconnectionmanager.h"
#include "orvexlogindata.h"
#include "orvexmimedata.h"
#include "recordingclassifyclient.h"

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

} // namespace

class tst_Dnd : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void formats();
    void docsIdsFromStream_data();
    void docsIdsFromStream();
    void tempFolderAndPort();
    void tempFolderOnDestruction_data();
    void tempFolderOnDestruction();
    void leftButtonDown_data();
    void leftButtonDown();

private:
    QTemporaryDir m_temp;
};

void tst_Dnd::initTestCase()
{
    // The objects' folders land in a private temp folder.
    QVERIFY(m_temp.isValid());
    qputenv("TMPDIR", QFile::encodeName(m_temp.path()));
}

void tst_Dnd::init()
{
    orvexLoginData::setServerNameOverride(FakeConnectionManager::uniqueName()); // nobody there
}

void tst_Dnd::formats()
{
    const QString uri = QStringLiteral("text/x-orvex-uri");
    OrvexMimeData mime;
    QCOMPARE(mime.formats(), QStringList{uri});
    QVERIFY(mime.hasFormat(uri));
    mime.setData(uri, "stored anyway");
    mime.setData(QStringLiteral("x-application-orvex"), QByteArray());
    QCOMPARE(mime.formats(), QStringList({QStringLiteral("x-application-orvex"), uri}));
}

void tst_Dnd::docsIdsFromStream_data()
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

void tst_Dnd::docsIdsFromStream()
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

void tst_Dnd::tempFolderAndPort()
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

void tst_Dnd::tempFolderOnDestruction_data()
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

void tst_Dnd::tempFolderOnDestruction()
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

void tst_Dnd::leftButtonDown_data()
{
    QTest::addColumn<QList<int>>("buttons");
    QTest::addColumn<bool>("down");
    QTest::newRow("none") << QList<int>{} << false;
    QTest::newRow("left") << QList<int>{Qt::LeftButton} << true;
    QTest::newRow("right") << QList<int>{Qt::RightButton} << true;
    QTest::newRow("left and right") << QList<int>{Qt::LeftButton, Qt::RightButton} << false;
}

void tst_Dnd::leftButtonDown()
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

QTEST_MAIN(tst_Dnd)
#include "tst_dnd.moc"
