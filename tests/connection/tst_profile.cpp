// The profile record's wire layout and the profile dialog's remembered settings.
#include "modalanswerer.h"
#include "orvexlogindialog.h"
#include "orvexprofiledata.h"
#include "orvextranslations.h"

#include <QComboBox>
#include <QDataStream>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QSettings>
#include <QtTest>

namespace {

orvexProfileData fullProfile()
{
    orvexProfileData p;
    p.id = Q_INT64_C(0x123456789A);
    p.name = QStringLiteral("Produktion");
    p.description = QStringLiteral("Hauptarchiv München");
    p.serverHost = QStringLiteral("archiv.example");
    p.archiveName = QStringLiteral("main");
    p.userName = QStringLiteral("jdoe");
    p.active = true;
    p.archives = QStringList{QStringLiteral("main"), QString(), QStringLiteral("Ablage")};
    p.serverPort = 4711;
    p.shortcut = QKeySequence(QStringLiteral("Ctrl+K, Ctrl+P"));
    p.domain = QStringLiteral("EXAMPLE");
    p.language = QStringLiteral("de");
    p.color = QStringLiteral("#336699");
    p.dataPath = QStringLiteral("/srv/orvex");
    p.roles = QStringList{QStringLiteral("tavloUSER"), QStringLiteral("r_buchhaltung")};
    p.options = QStringList{QStringLiteral("ssl=1")};
    return p;
}

QByteArray written(const orvexProfileData &profile)
{
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    out.setVersion(10);
    out << profile;
    return bytes;
}

} // namespace

class tst_Profile : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void wireOrder();
    void roundTrip_data();
    void roundTrip();
    void cutAnywhereFails();
    void hostileCounts_data();
    void hostileCounts();

    void dialogForm();
    void lastProfileSelection_data();
    void lastProfileSelection();
    void acceptAndRejectStore_data();
    void acceptAndRejectStore();
    void execRestoresGeometryOnlyWhenRemembering_data();
    void execRestoresGeometryOnlyWhenRemembering();
    void germanTexts(); // last: installs the German catalogue

private:
    QSettings *settings() { return m_settings.data(); }
    QScopedPointer<QSettings> m_settings;
};

void tst_Profile::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    m_settings.reset(new QSettings(QStringLiteral("vantrel gmbh"), QStringLiteral("orvexlogin")));
    QVERIFY2(m_settings->fileName().contains(QStringLiteral(".qttest")),
             qPrintable(m_settings->fileName()));
}

void tst_Profile::init()
{
    settings()->clear();
    settings()->sync();
}

void tst_Profile::wireOrder()
{
    // The record written field by field in the documented order, by hand.
    const orvexProfileData p = fullProfile();
    QByteArray expected;
    QDataStream out(&expected, QIODevice::WriteOnly);
    out.setVersion(10);
    out << qint64(p.id) << p.name << p.description << p.serverHost << p.archiveName << p.userName
        << p.active << p.archives << qint64(p.serverPort) << p.shortcut << p.domain << p.language
        << p.color << p.dataPath << p.roles << p.options;
    QCOMPARE(written(p), expected);
    // The first eight bytes are the id, big-endian.
    QCOMPARE(expected.left(8), QByteArray::fromHex("000000123456789a"));
}

void tst_Profile::roundTrip_data()
{
    QTest::addColumn<orvexProfileData>("profile");
    QTest::newRow("default") << orvexProfileData();
    QTest::newRow("every field") << fullProfile();
    orvexProfileData negative = fullProfile();
    negative.id = -1;
    negative.serverPort = std::numeric_limits<qint64>::max();
    negative.shortcut = QKeySequence(Qt::Key_F5);
    negative.name = QString();
    QTest::newRow("extremes, one key, null text") << negative;
}

void tst_Profile::roundTrip()
{
    QFETCH(orvexProfileData, profile);
    const QByteArray bytes = written(profile);
    QDataStream in(bytes);
    in.setVersion(10);
    orvexProfileData read;
    in >> read;
    QCOMPARE(in.status(), QDataStream::Ok);
    QVERIFY(in.atEnd());
    QCOMPARE(read, profile);
    QCOMPARE(written(read), bytes);
}

void tst_Profile::cutAnywhereFails()
{
    const QByteArray bytes = written(fullProfile());
    for (int length = 0; length < bytes.size(); ++length) {
        QDataStream in(bytes.left(length));
        in.setVersion(10);
        orvexProfileData read;
        in >> read;
        QVERIFY2(in.status() != QDataStream::Ok, qPrintable(QString::number(length)));
    }
}

void tst_Profile::hostileCounts_data()
{
    QTest::addColumn<QByteArray>("bytes");
    // id, five empty texts, flag: everything up to the first list.
    QByteArray head;
    {
        QDataStream out(&head, QIODevice::WriteOnly);
        out.setVersion(10);
        out << qint64(1);
        for (int i = 0; i < 5; ++i)
            out << QString();
        out << false;
    }
    auto withCount = [&](quint32 count) {
        QByteArray bytes = head;
        QDataStream out(&bytes, QIODevice::Append);
        out << count << quint32(0);
        return bytes;
    };
    QTest::newRow("list of 2^31-1 texts") << withCount(0x7FFFFFFF);
    QTest::newRow("list of 2^32-1 texts") << withCount(0xFFFFFFFF);
    QByteArray keys = head;
    {
        QDataStream out(&keys, QIODevice::Append);
        out << QStringList() << qint64(0) << quint32(0x7FFFFFFF) << quint32(1);
    }
    QTest::newRow("key sequence of 2^31-1 keys") << keys;
    QByteArray text = head.left(8);
    {
        QDataStream out(&text, QIODevice::Append);
        out << quint32(0x7FFFFFFE) << quint32(0);
    }
    QTest::newRow("text of 2 GB") << text;
}

void tst_Profile::hostileCounts()
{
    QFETCH(QByteArray, bytes);
    QDataStream in(bytes);
    in.setVersion(10);
    orvexProfileData read;
    in >> read; // must neither allocate the announced size nor crash
    QVERIFY(in.status() != QDataStream::Ok);
    QVERIFY(read.archives.size() < 2);
}

void tst_Profile::dialogForm()
{
    QWidget parent;
    QPixmap pixmap(16, 16);
    pixmap.fill(Qt::red);
    parent.setWindowIcon(QIcon(pixmap));
    orvexLoginDialog dialog(&parent, false);
    QCOMPARE(dialog.objectName(), QStringLiteral("orvexLoginDialog"));
    QCOMPARE(dialog.windowTitle(), QStringLiteral("Orvex - Login"));
    QVERIFY(dialog.windowFlags().testFlag(Qt::WindowStaysOnTopHint));
    QVERIFY(dialog.testAttribute(Qt::WA_AlwaysStackOnTop));
    QVERIFY(!dialog.windowIcon().isNull());
    QCOMPARE(dialog.findChild<QLabel *>()->text(), QStringLiteral("Choose profile:"));
    auto *buttons = dialog.findChild<QDialogButtonBox *>(QStringLiteral("buttonBox"));
    QVERIFY(buttons);
    QCOMPARE(buttons->standardButtons(), QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    QVERIFY(dialog.findChild<QComboBox *>(QStringLiteral("m_cbProfiles")));
    QCOMPARE(dialog.getProfileIndex(), -1);

    QSignalSpy accepted(&dialog, &QDialog::accepted);
    dialog.setProfiles({QStringLiteral("A")});
    dialog.show();
    buttons->button(QDialogButtonBox::Ok)->click();
    QCOMPARE(accepted.count(), 1);
    QCOMPARE(settings()->value(QStringLiteral("lastProfile")).toString(), QStringLiteral("A"));
}

void tst_Profile::lastProfileSelection_data()
{
    QTest::addColumn<QVariant>("remembered");
    QTest::addColumn<QStringList>("names");
    QTest::addColumn<int>("index");
    const QStringList names = {QStringLiteral("Test"), QStringLiteral("Produktion"),
                               QStringLiteral("Produktion alt")};
    QTest::newRow("nothing remembered") << QVariant() << names << 0;
    QTest::newRow("remembered and listed") << QVariant(QStringLiteral("Produktion")) << names << 1;
    QTest::newRow("no longer listed") << QVariant(QStringLiteral("Alt")) << names << 0;
    QTest::newRow("case differs") << QVariant(QStringLiteral("produktion")) << names << 0;
    QTest::newRow("only a prefix") << QVariant(QStringLiteral("Produk")) << names << 0;
    QTest::newRow("empty list") << QVariant(QStringLiteral("Test")) << QStringList() << -1;
}

void tst_Profile::lastProfileSelection()
{
    QFETCH(QVariant, remembered);
    QFETCH(QStringList, names);
    QFETCH(int, index);
    if (remembered.isValid())
        settings()->setValue(QStringLiteral("lastProfile"), remembered);
    settings()->sync();
    orvexLoginDialog dialog(nullptr, false);
    dialog.setProfiles(names);
    QCOMPARE(dialog.getProfileIndex(), index);
    // A second fill replaces the first.
    dialog.setProfiles({QStringLiteral("X")});
    QCOMPARE(dialog.findChild<QComboBox *>()->count(), 1);
}

void tst_Profile::acceptAndRejectStore_data()
{
    QTest::addColumn<bool>("remember");
    QTest::addColumn<bool>("accept");
    QTest::newRow("accept, geometry remembered") << true << true;
    QTest::newRow("accept, geometry not remembered") << false << true;
    QTest::newRow("cancel, geometry remembered") << true << false;
    QTest::newRow("cancel, geometry not remembered") << false << false;
}

void tst_Profile::acceptAndRejectStore()
{
    QFETCH(bool, remember);
    QFETCH(bool, accept);
    settings()->setValue(QStringLiteral("lastProfile"), QStringLiteral("Test"));
    settings()->sync();

    orvexLoginDialog dialog(nullptr, remember);
    dialog.setProfiles({QStringLiteral("Test"), QStringLiteral("Produktion")});
    dialog.findChild<QComboBox *>()->setCurrentIndex(1);
    ModalAnswerer answer(accept ? QMessageBox::Ok : QMessageBox::Cancel);
    QCOMPARE(dialog.exec(), accept ? int(QDialog::Accepted) : int(QDialog::Rejected));
    QVERIFY(answer.answered());

    settings()->sync();
    QCOMPARE(settings()->value(QStringLiteral("lastProfile")).toString(),
             accept ? QStringLiteral("Produktion") : QStringLiteral("Test"));
    QCOMPARE(settings()->contains(QStringLiteral("geometry")), remember);
}

void tst_Profile::execRestoresGeometryOnlyWhenRemembering_data()
{
    QTest::addColumn<bool>("remember");
    QTest::newRow("remembering") << true;
    QTest::newRow("not remembering") << false;
}

void tst_Profile::execRestoresGeometryOnlyWhenRemembering()
{
    QFETCH(bool, remember);
    {
        orvexLoginDialog earlier(nullptr, true);
        earlier.resize(480, 260);
        earlier.move(40, 50);
        earlier.show();
        QVERIFY(QTest::qWaitForWindowExposed(&earlier));
        earlier.reject(); // stores the geometry
    }
    settings()->sync();
    QVERIFY(settings()->contains(QStringLiteral("geometry")));
    const QByteArray stored = settings()->value(QStringLiteral("geometry")).toByteArray();

    orvexLoginDialog dialog(nullptr, remember);
    QSize seen;
    ModalAnswerer answer([&seen](QWidget *modal) {
        seen = modal->size();
        qobject_cast<QDialog *>(modal)->reject();
    });
    dialog.exec();
    QVERIFY(answer.answered());
    QCOMPARE(seen == QSize(480, 260), remember);
    settings()->sync();
    if (!remember) // neither exec nor reject touched what was stored
        QCOMPARE(settings()->value(QStringLiteral("geometry")).toByteArray(), stored);
}

void tst_Profile::germanTexts()
{
    orvexLoginDialog dialog(nullptr, false); // made before: retranslated on the change event
    QVERIFY(OrvexTranslations::install(QLocale(QLocale::German, QLocale::Germany)));
    QTRY_COMPARE(dialog.windowTitle(), QStringLiteral("Orvex - Anmeldung"));
    QCOMPARE(dialog.findChild<QLabel *>()->text(), QStringLiteral("Profil wählen:"));
    QCOMPARE(QCoreApplication::translate("orvexLoginData",
                                         "The profile information could not be loaded. Please start the Connection Manager!"),
             QStringLiteral("Die Profilinformationen konnten nicht geladen werden. Bitte starten Sie den Connection Manager!"));
}

QTEST_MAIN(tst_Profile)
#include "tst_profile.moc"
