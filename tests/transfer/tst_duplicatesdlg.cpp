// The duplicates dialog of an upload, shown as a user sees it: paging through
// the duplicates, the blink between duplicate and original, the not-authorised
// placeholder, the remembered settings and "Cancel All".
#include "modalanswerer.h"
#include "orvexarchiveclient.h"
#include "orvexduplicatereply.h"
#include "orvexduplicatesdlg.h"
#include "orvexplaceholderimage.h"
#include "orvextranslations.h"

#include <QBuffer>
#include <QCheckBox>
#include <QCryptographicHash>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QSettings>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTimer>
#include <QtTest>

#include <memory>

namespace {

constexpr int kWait = 15000;

QByteArray pngOf(const QColor &colour, const QSize &size = QSize(200, 300))
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(colour);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes;
}

// Colour in the middle of the label's image; invalid when it shows none.
QColor centreOf(const QLabel *label)
{
    const QPixmap pixmap = label->pixmap(Qt::ReturnByValue);
    if (pixmap.isNull())
        return QColor();
    const QImage image = pixmap.toImage();
    return image.pixelColor(image.width() / 2, image.height() / 2);
}

thumbData duplicate(const QString &caption, const QString &key, const QByteArray &image)
{
    return thumbData{caption, key, image};
}

QSettings dialogSettings()
{
    return QSettings(QString::fromLatin1(OrvexDuplicatesDlg::SettingsOrganisation),
                     QCoreApplication::applicationName());
}

} // namespace

class tst_DuplicatesDlg : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void replyParsed_data();
    void replyParsed();

    void serverPlaceholderFingerprint();
    void registeredFingerprints_data();
    void registeredFingerprints();
    void embeddedArchivePlaceholderOnceRegistered();
    void placeholderShowsBannerAndNeverBlinks();

    void paging_data();
    void paging();
    void pagingShowsEachDuplicatesOriginal();
    void imagesFollowTheLabelSize();

    void blinkAlternatesUntilUnchecked();
    void missingOriginalLeavesItEmptyAndStill();

    void differenceSettingReadAndWritten_data();
    void differenceSettingReadAndWritten();
    void geometryRestored();

    void cancelAllEmitsAndRejects();
    void renamedButtonsEndExec_data();
    void renamedButtonsEndExec();

    // Installs the German catalogue for the rest of the process: keep it last.
    void germanTexts();

private:
    // A fresh dialog, shown, with the given duplicates and originals.
    OrvexDuplicatesDlg *open(const QList<thumbData> &duplicates,
                             const QMap<QString, QByteArray> &originals);
    QTimer *blinkTimer() const;
    template<typename T> T *child(const char *name) const
    {
        T *widget = m_dialog->findChild<T *>(QLatin1String(name));
        if (!widget)
            qFatal("no %s in the dialog", name);
        return widget;
    }

    std::unique_ptr<OrvexDuplicatesDlg> m_dialog;
    const QColor m_red = QColor(220, 0, 0);
    const QColor m_green = QColor(0, 160, 0);
    const QColor m_blue = QColor(0, 0, 220);
    const QColor m_yellow = QColor(230, 230, 0);
};

void tst_DuplicatesDlg::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QVERIFY2(dialogSettings().fileName().contains(QLatin1String(".qttest")),
             qPrintable(dialogSettings().fileName()));
}

void tst_DuplicatesDlg::init()
{
    dialogSettings().clear();
}

void tst_DuplicatesDlg::cleanup()
{
    m_dialog.reset();
    OrvexPlaceholderImage::resetFingerprints();
    dialogSettings().clear();
}

OrvexDuplicatesDlg *tst_DuplicatesDlg::open(const QList<thumbData> &duplicates,
                                            const QMap<QString, QByteArray> &originals)
{
    m_dialog = std::make_unique<OrvexDuplicatesDlg>();
    m_dialog->setDuplicates(duplicates);
    m_dialog->setOriginals(originals);
    m_dialog->show();
    if (!QTest::qWaitForWindowExposed(m_dialog.get()))
        qWarning("dialog not exposed");
    return m_dialog.get();
}

QTimer *tst_DuplicatesDlg::blinkTimer() const
{
    return m_dialog->findChild<QTimer *>(QStringLiteral("m_blinkTimer"));
}

void tst_DuplicatesDlg::replyParsed_data()
{
    const QByteArray a = "page one image";
    const QByteArray b = "page two image";
    const QString a64 = QString::fromLatin1(a.toBase64());
    const QString b64 = QString::fromLatin1(b.toBase64());
    QTest::addColumn<QStringList>("lines");
    QTest::addColumn<QString>("uploadId");
    QTest::addColumn<bool>("reportsDuplicates");
    QTest::addColumn<QStringList>("originalKeys");
    QTest::addColumn<QStringList>("hits");        // docId/version/page/key
    QTest::addColumn<int>("skipped");
    QTest::addColumn<int>("problems");

    QTest::newRow("failed upload") << QStringList{""} << QString() << false << QStringList()
                                   << QStringList() << 0 << 0;
    QTest::newRow("only the upload id") << QStringList{"up-1"} << "up-1" << false
                                        << QStringList() << QStringList() << 0 << 0;
    QTest::newRow("two pages, two hits")
        << QStringList{"up-2", "2", "p0;" + a64, "p1;" + b64, "4711;3;0;x;p0", "12;1;1;;p1"}
        << "up-2" << true << QStringList{"p0", "p1"}
        << QStringList{"4711/3/0/p0", "12/1/1/p1"} << 0 << 0;
    QTest::newRow("four and six fields skipped")
        << QStringList{"up-3", "1", "p0;" + a64, "4711;3;0;p0", "4711;3;0;x;p0;y", "5;2;4;x;p0"}
        << "up-3" << true << QStringList{"p0"} << QStringList{"5/2/4/p0"} << 2 << 0;
    QTest::newRow("no valid duplicate line")
        << QStringList{"up-4", "1", "p0;" + a64, "garbage", ";;;;"}
        << "up-4" << true << QStringList{"p0"} << QStringList() << 2 << 0;
    QTest::newRow("ids that are not numbers")
        << QStringList{"up-5", "0", "abc;1;0;x;p0", "-4;1;0;x;p0", "7;v2;0;x;p0", "7;1;last;x;p0",
                       "7;1;-1;x;p0", " 8 ;2;3;x;p0"}
        << "up-5" << true << QStringList() << QStringList{"8/2/3/p0"} << 5 << 0;
    QTest::newRow("garbage count")
        << QStringList{"up-6", "two", "p0;" + a64, "4711;3;0;x;p0"}
        << "up-6" << true << QStringList() << QStringList{"4711/3/0/p0"} << 1 << 1;
    QTest::newRow("more images announced than sent")
        << QStringList{"up-8", "3", "p0;" + a64, "p1;" + b64}
        << "up-8" << true << QStringList{"p0", "p1"} << QStringList() << 0 << 1;
    QTest::newRow("bad Base64 and a missing key")
        << QStringList{"up-9", "3", "p0;" + a64, "p1;@@not*base64@@", "no key here", "1;1;0;x;p1"}
        << "up-9" << true << QStringList{"p0"} << QStringList{"1/1/0/p1"} << 0 << 2;
}

void tst_DuplicatesDlg::replyParsed()
{
    QFETCH(QStringList, lines);
    QFETCH(QString, uploadId);
    QFETCH(bool, reportsDuplicates);
    QFETCH(QStringList, originalKeys);
    QFETCH(QStringList, hits);
    QFETCH(int, skipped);
    QFETCH(int, problems);

    const OrvexDuplicateReply reply = OrvexDuplicateReply::parse(lines);
    QCOMPARE(reply.uploadId(), uploadId);
    QCOMPARE(reply.reportsDuplicates(), reportsDuplicates);
    QCOMPARE(reply.originals().keys(), originalKeys);
    QStringList seen;
    for (const OrvexDuplicateHit &hit : reply.duplicates())
        seen << QStringLiteral("%1/%2/%3/%4").arg(hit.docId).arg(hit.version).arg(hit.page).arg(hit.originalKey);
    QCOMPARE(seen, hits);
    QCOMPARE(reply.skippedLines(), skipped);
    QCOMPARE(reply.problems().size(), problems);
    if (reply.originals().contains("p0"))
        QCOMPARE(reply.originals().value("p0"), QByteArray("page one image"));
}

void tst_DuplicatesDlg::serverPlaceholderFingerprint()
{
    QVERIFY(OrvexPlaceholderImage::isPlaceholderFingerprint("dbb46ef7cc9e25fc2670162853d97f6c"));
    QVERIFY(OrvexPlaceholderImage::isPlaceholderFingerprint("DBB46EF7CC9E25FC2670162853D97F6C"));
    QVERIFY(!OrvexPlaceholderImage::isPlaceholderFingerprint("dbb46ef7cc9e25fc2670162853d97f6d"));
    QVERIFY(!OrvexPlaceholderImage::isPlaceholderFingerprint(QByteArray()));
    // Digests are compared in lower-case hexadecimal, as the server's is written.
    QCOMPARE(OrvexPlaceholderImage::fingerprint("abc"),
             QByteArray("900150983cd24fb0d6963f7d28e17f72"));
}

void tst_DuplicatesDlg::registeredFingerprints_data()
{
    const QByteArray red = pngOf(m_red);
    const QByteArray digest = QCryptographicHash::hash(red, QCryptographicHash::Md5).toHex();
    QTest::addColumn<QByteArray>("registered");
    QTest::addColumn<bool>("accepted");
    QTest::addColumn<QByteArray>("image");
    QTest::addColumn<bool>("placeholder");
    QTest::newRow("image's digest") << digest << true << red << true;
    QTest::newRow("upper case, padded") << (" " + digest.toUpper() + "\n") << true << red << true;
    QTest::newRow("other image") << digest << true << pngOf(m_green) << false;
    QTest::newRow("too short") << digest.left(31) << false << red << false;
    QTest::newRow("not hexadecimal") << QByteArray(32, 'g') << false << red << false;
    // No image must never count as the placeholder, whatever is registered.
    QTest::newRow("empty image") << QByteArray("d41d8cd98f00b204e9800998ecf8427e") << true
                                 << QByteArray() << false;
}

void tst_DuplicatesDlg::registeredFingerprints()
{
    QFETCH(QByteArray, registered);
    QFETCH(bool, accepted);
    QFETCH(QByteArray, image);
    QFETCH(bool, placeholder);
    QCOMPARE(OrvexDuplicatesDlg::addPlaceholderFingerprint(registered), accepted);
    QCOMPARE(OrvexDuplicatesDlg::isPlaceholderImage(image), placeholder);
}

void tst_DuplicatesDlg::embeddedArchivePlaceholderOnceRegistered()
{
    const QByteArray placeholder = OrvexArchiveClient::notAuthorisedImage();
    QVERIFY(!OrvexDuplicatesDlg::isPlaceholderImage(placeholder));
    QVERIFY(OrvexDuplicatesDlg::addPlaceholderFingerprint(
        OrvexArchiveClient::notAuthorisedImageMd5().toLatin1()));
    QVERIFY(OrvexDuplicatesDlg::isPlaceholderImage(placeholder));
}

void tst_DuplicatesDlg::placeholderShowsBannerAndNeverBlinks()
{
    const QByteArray placeholder = pngOf(m_red);
    QVERIFY(OrvexDuplicatesDlg::addPlaceholderFingerprint(
        QCryptographicHash::hash(placeholder, QCryptographicHash::Md5).toHex()));
    open({duplicate("hidden", "k", placeholder), duplicate("visible", "k", pngOf(m_green))},
         {{"k", pngOf(m_blue)}});
    auto *banner = child<QLabel>("m_norights");
    auto *showDiffs = child<QCheckBox>("c_showDiffs");
    auto *dupThumb = child<QLabel>("m_dupThumb");
    QCOMPARE(banner->text(), QStringLiteral("You are not authorized to display this duplicate."));
    QVERIFY(showDiffs->isChecked());

    QTRY_VERIFY_WITH_TIMEOUT(banner->isVisible(), kWait);
    QVERIFY(m_dialog->isNotAuthorized());
    QVERIFY(!showDiffs->isEnabled());
    QTRY_COMPARE_WITH_TIMEOUT(centreOf(dupThumb), m_red, kWait);
    QSignalSpy ticks(blinkTimer(), &QTimer::timeout);
    QTRY_VERIFY_WITH_TIMEOUT(ticks.count() >= 3, kWait);
    QCOMPARE(centreOf(dupThumb), m_red);

    child<QPushButton>("b_next")->click();
    QTRY_VERIFY_WITH_TIMEOUT(!banner->isVisible(), kWait);
    QVERIFY(!m_dialog->isNotAuthorized());
    QVERIFY(showDiffs->isEnabled());
}

void tst_DuplicatesDlg::paging_data()
{
    QTest::addColumn<int>("count");
    QTest::newRow("none") << 0;
    QTest::newRow("one") << 1;
    QTest::newRow("two") << 2;
    QTest::newRow("five") << 5;
}

void tst_DuplicatesDlg::paging()
{
    QFETCH(int, count);
    QList<thumbData> duplicates;
    for (int i = 0; i < count; ++i)
        duplicates << duplicate(QStringLiteral("DocId: %1 / Version: 1 / Page: 1").arg(100 + i),
                                "k", pngOf(m_green));
    open(duplicates, {{"k", pngOf(m_blue)}});
    auto *next = child<QPushButton>("b_next");
    auto *prev = child<QPushButton>("b_prev");
    auto *caption = child<QLabel>("m_docid");
    QCOMPARE(child<QLabel>("m_totallabel")->text(), QStringLiteral("Found %1 duplicates").arg(count));
    const auto captionAt = [&](int i) { return i < count ? duplicates.at(i).caption : QString(); };

    QTRY_COMPARE_WITH_TIMEOUT(caption->text(), captionAt(0), kWait);
    QCOMPARE(next->isEnabled(), count > 1);
    QVERIFY(!prev->isEnabled());

    int steps = 0;
    while (next->isEnabled() && steps < count) {
        next->click();
        ++steps;
        QCOMPARE(m_dialog->currentIndex(), steps);
        QCOMPARE(caption->text(), captionAt(steps));
        QVERIFY(prev->isEnabled());
    }
    QCOMPARE(steps, qMax(0, count - 1));
    // Calls past the end, as from a slot, change nothing.
    m_dialog->goNext();
    QCOMPARE(m_dialog->currentIndex(), steps);

    while (prev->isEnabled() && steps > 0) {
        prev->click();
        --steps;
        QCOMPARE(m_dialog->currentIndex(), steps);
        QCOMPARE(caption->text(), captionAt(steps));
        QVERIFY(next->isEnabled());
    }
    QCOMPARE(steps, 0);
    QVERIFY(!prev->isEnabled());
    m_dialog->goPrev();
    QCOMPARE(m_dialog->currentIndex(), 0);
    QCOMPARE(next->isEnabled(), count > 1);
}

void tst_DuplicatesDlg::pagingShowsEachDuplicatesOriginal()
{
    open({duplicate("first", "page1", pngOf(m_red)), duplicate("second", "page2", pngOf(m_green))},
         {{"page1", pngOf(m_blue)}, {"page2", pngOf(m_yellow)}});
    child<QCheckBox>("c_showDiffs")->setChecked(false);
    auto *dupThumb = child<QLabel>("m_dupThumb");
    auto *origThumb = child<QLabel>("m_origThumb");
    QTRY_COMPARE_WITH_TIMEOUT(centreOf(dupThumb), m_red, kWait);
    QCOMPARE(centreOf(origThumb), m_blue);

    child<QPushButton>("b_next")->click();
    QTRY_COMPARE_WITH_TIMEOUT(centreOf(dupThumb), m_green, kWait);
    QCOMPARE(centreOf(origThumb), m_yellow);

    child<QPushButton>("b_prev")->click();
    QTRY_COMPARE_WITH_TIMEOUT(centreOf(dupThumb), m_red, kWait);
    QCOMPARE(centreOf(origThumb), m_blue);
}

void tst_DuplicatesDlg::imagesFollowTheLabelSize()
{
    open({duplicate("tall", "k", pngOf(m_red, QSize(200, 300)))},
         {{"k", pngOf(m_blue, QSize(600, 300))}});
    auto *dupThumb = child<QLabel>("m_dupThumb");
    auto *origThumb = child<QLabel>("m_origThumb");
    const auto fitsWithMargin = [](const QLabel *label, const QSize &aspect) {
        const QSize box = label->size() - QSize(11, 11);
        const QSize shown = label->pixmap(Qt::ReturnByValue).size();
        const QSize expected = aspect.scaled(box, Qt::KeepAspectRatio);
        return qAbs(shown.width() - expected.width()) <= 1
            && qAbs(shown.height() - expected.height()) <= 1;
    };
    QTRY_VERIFY_WITH_TIMEOUT(fitsWithMargin(dupThumb, QSize(200, 300)), kWait);
    QTRY_VERIFY_WITH_TIMEOUT(fitsWithMargin(origThumb, QSize(600, 300)), kWait);

    const QSize before = dupThumb->pixmap(Qt::ReturnByValue).size();
    m_dialog->resize(m_dialog->size() + QSize(300, 200));
    QTRY_VERIFY_WITH_TIMEOUT(dupThumb->pixmap(Qt::ReturnByValue).size() != before, kWait);
    QTRY_VERIFY_WITH_TIMEOUT(fitsWithMargin(dupThumb, QSize(200, 300)), kWait);
    QTRY_VERIFY_WITH_TIMEOUT(fitsWithMargin(origThumb, QSize(600, 300)), kWait);
}

void tst_DuplicatesDlg::blinkAlternatesUntilUnchecked()
{
    open({duplicate("one", "k", pngOf(m_red))}, {{"k", pngOf(m_blue)}});
    auto *dupThumb = child<QLabel>("m_dupThumb");
    QCOMPARE(blinkTimer()->interval(), 800);
    QTRY_COMPARE_WITH_TIMEOUT(centreOf(dupThumb), m_red, kWait);
    const QSize duplicateSize = dupThumb->pixmap(Qt::ReturnByValue).size();
    // The original takes the duplicate's place, at the same scale, and the
    // duplicate comes back.
    QTRY_COMPARE_WITH_TIMEOUT(centreOf(dupThumb), m_blue, kWait);
    QCOMPARE(dupThumb->pixmap(Qt::ReturnByValue).size(), duplicateSize);
    QTRY_COMPARE_WITH_TIMEOUT(centreOf(dupThumb), m_red, kWait);
    QTRY_COMPARE_WITH_TIMEOUT(centreOf(dupThumb), m_blue, kWait);
    QCOMPARE(centreOf(child<QLabel>("m_origThumb")), m_blue);

    // Unchecked while the original stands there: the next tick brings the
    // duplicate back for good.
    QSignalSpy ticks(blinkTimer(), &QTimer::timeout);
    child<QCheckBox>("c_showDiffs")->click();
    QVERIFY(ticks.wait(kWait));
    QCOMPARE(centreOf(dupThumb), m_red);
    QTRY_VERIFY_WITH_TIMEOUT(ticks.count() >= 3, kWait);
    QCOMPARE(centreOf(dupThumb), m_red);
}

void tst_DuplicatesDlg::missingOriginalLeavesItEmptyAndStill()
{
    open({duplicate("orphan", "unknown key", pngOf(m_red))}, {{"k", pngOf(m_blue)}});
    auto *dupThumb = child<QLabel>("m_dupThumb");
    QTRY_COMPARE_WITH_TIMEOUT(centreOf(dupThumb), m_red, kWait);
    QVERIFY(child<QLabel>("m_origThumb")->pixmap(Qt::ReturnByValue).isNull());
    QVERIFY(child<QCheckBox>("c_showDiffs")->isEnabled());
    QSignalSpy ticks(blinkTimer(), &QTimer::timeout);
    QTRY_VERIFY_WITH_TIMEOUT(ticks.count() >= 3, kWait);
    QCOMPARE(centreOf(dupThumb), m_red);
}

void tst_DuplicatesDlg::differenceSettingReadAndWritten_data()
{
    QTest::addColumn<QVariant>("stored");
    QTest::addColumn<bool>("checked");
    QTest::newRow("never stored") << QVariant() << true;
    QTest::newRow("stored on") << QVariant(true) << true;
    QTest::newRow("stored off") << QVariant(false) << false;
}

void tst_DuplicatesDlg::differenceSettingReadAndWritten()
{
    QFETCH(QVariant, stored);
    QFETCH(bool, checked);
    if (stored.isValid())
        dialogSettings().setValue(QLatin1String(OrvexDuplicatesDlg::ShowDifferencesKey), stored);
    open({duplicate("one", "k", pngOf(m_red))}, {{"k", pngOf(m_blue)}});
    auto *box = child<QCheckBox>("c_showDiffs");
    QCOMPARE(box->isChecked(), checked);

    if (!checked) {
        QSignalSpy ticks(blinkTimer(), &QTimer::timeout);
        QTRY_VERIFY_WITH_TIMEOUT(ticks.count() >= 3, kWait);
        QCOMPARE(centreOf(child<QLabel>("m_dupThumb")), m_red);
    }

    // Each click is on disk at once, before the dialog ends.
    box->click();
    QCOMPARE(dialogSettings().value(QLatin1String(OrvexDuplicatesDlg::ShowDifferencesKey)).toBool(),
             !checked);
    box->click();
    QCOMPARE(dialogSettings().value(QLatin1String(OrvexDuplicatesDlg::ShowDifferencesKey)).toBool(),
             checked);
}

void tst_DuplicatesDlg::geometryRestored()
{
    open({}, {});
    const QSize size(700, 520);
    m_dialog->resize(size);
    QTRY_COMPARE_WITH_TIMEOUT(m_dialog->size(), size, kWait);
    m_dialog.reset();
    QVERIFY(!dialogSettings().value(QLatin1String(OrvexDuplicatesDlg::GeometryKey)).toByteArray().isEmpty());

    OrvexDuplicatesDlg again;
    QCOMPARE(again.size(), size);
}

void tst_DuplicatesDlg::cancelAllEmitsAndRejects()
{
    OrvexDuplicatesDlg dialog;
    dialog.setDuplicates({duplicate("one", "k", pngOf(m_red))});
    dialog.setOriginals({{"k", pngOf(m_blue)}});
    auto *cancelAll = dialog.findChild<QPushButton *>(QStringLiteral("m_bCancelAll"));
    QCOMPARE(cancelAll->text(), QStringLiteral("Cancel All"));
    dialog.setCancelAllVisible(false);
    QVERIFY(cancelAll->isHidden());
    dialog.setCancelAllVisible(true);
    QVERIFY(!cancelAll->isHidden());
    QSignalSpy cancelled(&dialog, &OrvexDuplicatesDlg::cancelAll);
    QSignalSpy accepted(&dialog, &QDialog::accepted);
    // The user waits for the first image, then cancels the whole batch.
    ModalAnswerer answer([](QWidget *modal) {
        auto *thumb = modal->findChild<QLabel *>(QStringLiteral("m_dupThumb"));
        auto *button = modal->findChild<QPushButton *>(QStringLiteral("m_bCancelAll"));
        QTRY_VERIFY_WITH_TIMEOUT(!thumb->pixmap(Qt::ReturnByValue).isNull(), kWait);
        button->click();
    });
    QCOMPARE(dialog.exec(), int(QDialog::Rejected));
    QVERIFY(answer.answered());
    QCOMPARE(answer.seenTitle(), QStringLiteral("Duplicate Detected"));
    QCOMPARE(cancelled.count(), 1);
    QCOMPARE(accepted.count(), 0);
    QVERIFY(!dialog.findChild<QTimer *>(QStringLiteral("m_blinkTimer"))->isActive());
}

void tst_DuplicatesDlg::renamedButtonsEndExec_data()
{
    QTest::addColumn<QString>("pressed");
    QTest::addColumn<int>("result");
    QTest::newRow("archive anyway") << "do_archive" << int(QDialog::Accepted);
    QTest::newRow("discard") << "Discard" << int(QDialog::Rejected);
}

void tst_DuplicatesDlg::renamedButtonsEndExec()
{
    QFETCH(QString, pressed);
    QFETCH(int, result);
    OrvexDuplicatesDlg dialog;
    dialog.setButtonNames(QStringLiteral("do_archive"), QStringLiteral("Discard"));
    dialog.setDuplicates({duplicate("one", "k", pngOf(m_red))});
    QSignalSpy cancelled(&dialog, &OrvexDuplicatesDlg::cancelAll);
    QStringList texts;
    ModalAnswerer answer([&](QWidget *modal) {
        auto *box = modal->findChild<QDialogButtonBox *>(QStringLiteral("buttonBox"));
        for (QAbstractButton *button : box->buttons())
            texts << button->text();
        for (QAbstractButton *button : box->buttons()) {
            if (button->text() == pressed)
                button->click();
        }
    });
    QCOMPARE(dialog.exec(), result);
    QVERIFY(answer.answered());
    texts.sort();
    QCOMPARE(texts, QStringList({"Discard", "do_archive"}));
    QCOMPARE(cancelled.count(), 0);
}

void tst_DuplicatesDlg::germanTexts()
{
    QVERIFY(OrvexTranslations::install(QLocale(QLocale::German, QLocale::Germany)));
    m_dialog = std::make_unique<OrvexDuplicatesDlg>();
    m_dialog->setDuplicates({duplicate("a", "k", QByteArray()), duplicate("b", "k", QByteArray())});
    QCOMPARE(m_dialog->windowTitle(), QStringLiteral("Duplikat erkannt"));
    QCOMPARE(child<QLabel>("m_totallabel")->text(), QStringLiteral("2 Duplikate gefunden"));
    QCOMPARE(child<QLabel>("m_norights")->text(),
             QStringLiteral("Sie sind nicht berechtigt, dieses Duplikat anzuzeigen."));
    QCOMPARE(child<QPushButton>("m_bCancelAll")->text(), QStringLiteral("Alle abbrechen"));
}

QTEST_MAIN(tst_DuplicatesDlg)
#include "tst_duplicatesdlg.moc"
