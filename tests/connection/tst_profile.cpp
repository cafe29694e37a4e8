// The profile record's wire layout and the profile dialog's remembered settings.
#include "fakeconnectionmanager.h"
#include "modalanswerer.h"
#include "orvexlogindialog.h"
#include "orvexprofiledata.h"
#include "orvextranslations.h"

#include <QComboBox>
#include <QDataStream>
#include <QLabel>
#include <QSettings>
#include <QtTest>

namespace {

orvexProfileData fullProfile()
{
    return {Q_INT64_C(0x123456789A), "Produktion", QStringLiteral("Hauptarchiv München"), "archiv.example",
            "main", "jdoe", true, {"main", QString()}, 4711, QKeySequence("Ctrl+K, Ctrl+P"), "EXAMPLE",
            "de", "#336699", "/srv/orvex", {"tavloUSER"}, {"ssl=1"}};
}

orvexProfileData read(const QByteArray &bytes, QDataStream::Status &status)
{
    QDataStream in(bytes);
    in.setVersion(10);
    orvexProfileData profile;
    in >> profile;
    status = in.atEnd() ? in.status() : QDataStream::ReadCorruptData;
    return profile;
}

} // namespace

class tst_Profile : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void wireOrderAndRoundTrip();
    void cutOrHostileStreamsFail();
    void lastProfileSelection_data();
    void lastProfileSelection();
    void acceptAndRejectStore_data();
    void acceptAndRejectStore();
    void germanTextsAndFlags(); // last: installs the German catalogue

private:
    QScopedPointer<QSettings> m_settings;
};

void tst_Profile::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    m_settings.reset(new QSettings(QStringLiteral("vantrel gmbh"), QStringLiteral("orvexlogin")));
    QVERIFY(m_settings->fileName().contains(QStringLiteral(".qttest")));
}

void tst_Profile::init()
{
    m_settings->clear();
    m_settings->sync();
}

void tst_Profile::wireOrderAndRoundTrip()
{
    for (const orvexProfileData &p : {orvexProfileData(), fullProfile()}) {
        // The documented order, written item by item.
        const QByteArray expected = stream10([&](QDataStream &out) {
            out << qint64(p.id) << p.name << p.description << p.serverHost << p.archiveName
                << p.userName << p.active << p.archives << qint64(p.serverPort) << p.shortcut
                << p.domain << p.language << p.color << p.dataPath << p.roles << p.options;
        });
        QCOMPARE(stream10([&](QDataStream &out) { out << p; }), expected);
        QDataStream::Status status;
        QCOMPARE(read(expected, status), p);
        QCOMPARE(status, QDataStream::Ok);
    }
}

void tst_Profile::cutOrHostileStreamsFail()
{
    const QByteArray bytes = stream10([](QDataStream &out) { out << fullProfile(); });
    QDataStream::Status status;
    for (int length = 0; length < bytes.size(); ++length) {
        read(bytes.left(length), status);
        QVERIFY2(status != QDataStream::Ok, qPrintable(QString::number(length)));
    }
    // Counts far beyond the bytes left must not be allocated up front.
    const QByteArray head = stream10([](QDataStream &out) {
        out << qint64(1) << QString() << QString() << QString() << QString() << QString() << false;
    });
    for (const QByteArray &tail : {stream10([](QDataStream &out) { out << quint32(0x7FFFFFFF); }),
                                   stream10([](QDataStream &out) {
                                       out << QStringList() << qint64(0) << quint32(0x7FFFFFFF);
                                   })}) {
        read(head + tail + QByteArray(8, '\0'), status);
        QVERIFY(status != QDataStream::Ok);
    }
}

void tst_Profile::lastProfileSelection_data()
{
    QTest::addColumn<QString>("remembered");
    QTest::addColumn<int>("index");
    QTest::newRow("nothing remembered") << QString() << 0;
    QTest::newRow("remembered and listed") << "Produktion" << 1;
    QTest::newRow("no longer listed") << "Alt" << 0;
    QTest::newRow("case differs") << "produktion" << 0;
}

void tst_Profile::lastProfileSelection()
{
    QFETCH(QString, remembered);
    QFETCH(int, index);
    if (!remembered.isNull())
        m_settings->setValue(QStringLiteral("lastProfile"), remembered);
    m_settings->sync();
    orvexLoginDialog dialog(nullptr, false);
    QCOMPARE(dialog.getProfileIndex(), -1);
    dialog.setProfiles({QStringLiteral("Test"), QStringLiteral("Produktion"), QStringLiteral("Produktion alt")});
    QCOMPARE(dialog.getProfileIndex(), index);
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
    const QRect earlier(40, 50, 480, 260);
    {
        orvexLoginDialog dialog(nullptr, true);
        dialog.setGeometry(earlier);
        m_settings->setValue(QStringLiteral("geometry"), dialog.saveGeometry());
    }
    const QByteArray stored = m_settings->value(QStringLiteral("geometry")).toByteArray();
    m_settings->setValue(QStringLiteral("lastProfile"), QStringLiteral("Test"));
    m_settings->sync();

    orvexLoginDialog dialog(nullptr, remember);
    dialog.setProfiles({QStringLiteral("Test"), QStringLiteral("Produktion")});
    dialog.findChild<QComboBox *>()->setCurrentIndex(1);
    QSize seen;
    ModalAnswerer answer([&seen, accept](QWidget *modal) {
        seen = modal->size();
        modal->resize(300, 120);
        accept ? qobject_cast<QDialog *>(modal)->accept() : qobject_cast<QDialog *>(modal)->reject();
    });
    QCOMPARE(dialog.exec(), accept ? int(QDialog::Accepted) : int(QDialog::Rejected));
    QCOMPARE(seen == earlier.size(), remember); // exec restores only when remembering

    m_settings->sync();
    QCOMPARE(m_settings->value(QStringLiteral("lastProfile")).toString(),
             accept ? QStringLiteral("Produktion") : QStringLiteral("Test"));
    QCOMPARE(m_settings->value(QStringLiteral("geometry")).toByteArray() == stored, !remember);
}

void tst_Profile::germanTextsAndFlags()
{
    QWidget parent;
    QPixmap icon(8, 8);
    icon.fill(Qt::red);
    parent.setWindowIcon(QIcon(icon));
    orvexLoginDialog dialog(&parent, false); // made before: retranslated on the change event
    QVERIFY(dialog.windowFlags().testFlag(Qt::WindowStaysOnTopHint) && !dialog.windowIcon().isNull());
    QCOMPARE(dialog.windowTitle(), QStringLiteral("Orvex - Login"));
    QVERIFY(OrvexTranslations::install(QLocale(QLocale::German, QLocale::Germany)));
    QTRY_COMPARE(dialog.windowTitle(), QStringLiteral("Orvex - Anmeldung"));
    QCOMPARE(dialog.findChild<QLabel *>()->text(), QStringLiteral("Profil wählen:"));
    QCOMPARE(QCoreApplication::translate("orvexLoginData",
                 "The profile information could not be loaded. Please start the Connection Manager!"),
             QStringLiteral("Die Profilinformationen konnten nicht geladen werden. Bitte starten Sie den Connection Manager!"));
}

QTEST_MAIN(tst_Profile)
#include "tst_profile.moc"
