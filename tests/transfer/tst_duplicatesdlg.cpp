// The duplicates dialog of an upload as a user sees it (paging, the blink
// between duplicate and original, the not-authorised placeholder, the
// remembered settings, "Cancel All"), and the archive's reply it shows.
#include "modalanswerer.h"
#include "orvexarchiveclient.h"
#include "orvexduplicatereply.h"
#include "orvexduplicatesdlg.h"
#include "orvexplaceholderimage.h"

#include <QBuffer>
#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <QSettings>
#include <QSignalSpy>
#include <QTimer>
#include <QtTest>

namespace {

constexpr int kWait = 15000;
const QColor red(220, 0, 0), green(0, 160, 0), blue(0, 0, 220);

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
    const QImage image = label->pixmap(Qt::ReturnByValue).toImage();
    return image.isNull() ? QColor() : image.pixelColor(image.width() / 2, image.height() / 2);
}

QSettings dialogSettings()
{
    return QSettings(OrvexDuplicatesDlg::SettingsOrganisation, QCoreApplication::applicationName());
}

} // namespace

class tst_DuplicatesDlg : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); }
    void init() { dialogSettings().clear(); }

    void cleanup()
    {
        m_dialog.reset();
        OrvexPlaceholderImage::resetFingerprints();
        dialogSettings().clear();
    }

    // The reply's rows name the fault each guards; the upload tests show what the user sees of them.
    void reply_data()
    {
        QTest::addColumn<QStringList>("lines");
        QTest::addColumn<QString>("duplicates"); // "docId/version/page/key" of each, joined by " "
        QTest::addColumn<QStringList>("originals");
        QTest::addColumn<int>("skipped");
        QTest::addColumn<int>("problems");
        const QString image = "p0;" + QString::fromLatin1(QByteArray("page one image").toBase64());
        QTest::newRow("ids, versions, pages that are no numbers are skipped")
            << QStringList{"up", "1", image, "abc;1;0;x;p0", "-4;1;0;x;p0", "7;v2;0;x;p0", "7;1;-1;x;p0", " 8 ;2;3;x;p0"}
            << "8/2/3/p0" << QStringList{"p0"} << 4 << 0;
        QTest::newRow("a version past 32 bits is skipped, not wrapped")
            << QStringList{"up", "0", "7;4294967297;0;x;p0", "7;1;99999999999999999999;x;p0"} << "" << QStringList() << 2 << 0;
        QTest::newRow("an absurd count does not wrap the line arithmetic")
            << QStringList{"up", "2147483647", "k;aGVsbG8="} << "" << QStringList{"k"} << 0 << 1;
        QTest::newRow("a count past 64 bits is reported")
            << QStringList{"up", "99999999999999999999", image, "7;1;0;x;p0"} << "7/1/0/p0" << QStringList{"p0"} << 0 << 1;
        QTest::newRow("a count beyond the lines still finds the duplicates")
            << QStringList{"up", "5", image, "7;1;0;x;p0"} << "7/1/0/p0" << QStringList{"p0"} << 0 << 1;
        QTest::newRow("a count that is no number still finds the duplicates")
            << QStringList{"up", "two", image, "7;1;0;x;p0", "garbage"} << "7/1/0/p0" << QStringList{"p0"} << 1 << 1;
        QTest::newRow("a negative count is no number")
            << QStringList{"up", "-1", "7;1;0;x;p0"} << "7/1/0/p0" << QStringList() << 0 << 1;
        QTest::newRow("a count too small leaves an image line skipped")
            << QStringList{"up", "0", image, "7;1;0;x;p0"} << "7/1/0/p0" << QStringList() << 1 << 0;
        QTest::newRow("bad Base64 keeps the duplicates")
            << QStringList{"up", "1", "p0;@@@", "7;1;0;x;p0"} << "7/1/0/p0" << QStringList() << 0 << 1;
        QTest::newRow("an image line without key keeps the duplicates")
            << QStringList{"up", "1", "aGVsbG8=", "7;1;0;x;p0"} << "7/1/0/p0" << QStringList() << 0 << 1;
        QTest::newRow("only the upload id") << QStringList{"up"} << "" << QStringList() << 0 << 0;
    }

    void reply()
    {
        QFETCH(QStringList, lines);
        QFETCH(QString, duplicates);
        QFETCH(QStringList, originals);
        QFETCH(int, skipped);
        QFETCH(int, problems);
        if (problems)
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression("DUPLICATES malformed reply"));
        const OrvexDuplicateReply reply = OrvexDuplicateReply::parse(lines);
        QStringList hits;
        for (const OrvexDuplicateHit &hit : reply.duplicates())
            hits << QString("%1/%2/%3/%4").arg(hit.docId).arg(hit.version).arg(hit.page).arg(hit.originalKey);
        QCOMPARE(hits.join(' '), duplicates);
        QCOMPARE(reply.originals().keys(), originals);
        QCOMPARE(reply.skippedLines(), skipped);
        QCOMPARE(reply.problems().size(), problems);
        QCOMPARE(reply.reportsDuplicates(), lines.size() > 1);
        QCOMPARE(reply.uploadId(), lines.value(0));
    }

    void placeholders_data()
    {
        const QByteArray image = pngOf(red);
        const QByteArray digest = OrvexPlaceholderImage::fingerprint(image);
        QTest::addColumn<QByteArray>("registered");
        QTest::addColumn<bool>("accepted");
        QTest::addColumn<QByteArray>("image");
        QTest::addColumn<bool>("placeholder");
        QTest::newRow("image's digest") << digest << true << image << true;
        QTest::newRow("not hexadecimal") << QByteArray(32, 'g') << false << image << false;
        // No image never counts as the placeholder, whatever is registered.
        QTest::newRow("empty image") << OrvexPlaceholderImage::fingerprint({}) << true << QByteArray() << false;
        QTest::newRow("embedded archive's") << OrvexArchiveClient::notAuthorisedImageMd5().toLatin1() << true
                                            << OrvexArchiveClient::notAuthorisedImage() << true;
    }

    void placeholders()
    {
        QFETCH(QByteArray, registered);
        QFETCH(bool, accepted);
        QFETCH(QByteArray, image);
        QFETCH(bool, placeholder);
        QCOMPARE(OrvexDuplicatesDlg::addPlaceholderFingerprint(registered), accepted);
        QCOMPARE(OrvexDuplicatesDlg::isPlaceholderImage(image), placeholder);
    }

    void placeholderShowsBannerAndNeverBlinks()
    {
        OrvexDuplicatesDlg::addPlaceholderFingerprint(OrvexPlaceholderImage::fingerprint(pngOf(red)));
        open({{"hidden", "k", pngOf(red)}, {"visible", "k", pngOf(green)}}, {{"k", pngOf(blue)}});
        auto *banner = child<QLabel>("m_norights");
        QTRY_VERIFY_WITH_TIMEOUT(banner->isVisible(), kWait);
        QVERIFY(!child<QCheckBox>("c_showDiffs")->isEnabled());
        QVERIFY(waitTicks(3));
        QCOMPARE(centreOf(child<QLabel>("m_dupThumb")), red);
        child<QPushButton>("b_next")->click();
        QTRY_VERIFY_WITH_TIMEOUT(!banner->isVisible(), kWait);
        QVERIFY(child<QCheckBox>("c_showDiffs")->isEnabled());
    }

    void paging()
    {
        QList<thumbData> duplicates;
        for (int i = 0; i < 3; ++i)
            duplicates << thumbData{QString("DocId: %1 / Version: 1 / Page: 1").arg(100 + i), "k", pngOf(green)};
        open(duplicates, {{"k", pngOf(blue)}});
        auto *next = child<QPushButton>("b_next");
        auto *prev = child<QPushButton>("b_prev");
        auto *caption = child<QLabel>("m_docid");
        QTRY_COMPARE_WITH_TIMEOUT(caption->text(), duplicates[0].caption, kWait);
        QVERIFY(!prev->isEnabled());
        for (int step : {1, 2, 1, 0}) {
            (step > m_dialog->currentIndex() ? next : prev)->click();
            QCOMPARE(caption->text(), duplicates[step].caption);
            QCOMPARE(next->isEnabled(), step < 2);
            QCOMPARE(prev->isEnabled(), step > 0);
            if (step == 2)
                m_dialog->goNext(); // past the end, as from a slot: nothing changes
        }
        m_dialog->goPrev();
        QCOMPARE(m_dialog->currentIndex(), 0);
    }

    void originalsFollowTheDuplicate()
    {
        open({{"first", "page1", pngOf(red)}, {"orphan", "unknown key", pngOf(green, QSize(600, 300))}},
             {{"page1", pngOf(blue)}});
        child<QCheckBox>("c_showDiffs")->setChecked(false);
        auto *dupThumb = child<QLabel>("m_dupThumb");
        auto *origThumb = child<QLabel>("m_origThumb");
        QTRY_COMPARE_WITH_TIMEOUT(centreOf(dupThumb), red, kWait);
        QCOMPARE(centreOf(origThumb), blue);
        child<QPushButton>("b_next")->click();
        QTRY_COMPARE_WITH_TIMEOUT(centreOf(dupThumb), green, kWait);
        QVERIFY(origThumb->pixmap(Qt::ReturnByValue).isNull()); // a key without original leaves it empty
        const QSize shown = dupThumb->pixmap(Qt::ReturnByValue).size(); // scaled with its aspect ratio kept
        QVERIFY(qAbs(shown.width() - 2 * shown.height()) <= 2);
        child<QCheckBox>("c_showDiffs")->setChecked(true);
        QVERIFY(waitTicks(3)); // nothing to blink with
        QCOMPARE(centreOf(dupThumb), green);
    }

    void blinkAlternatesUntilUnchecked()
    {
        open({{"one", "k", pngOf(red)}}, {{"k", pngOf(blue, QSize(400, 600))}});
        auto *dupThumb = child<QLabel>("m_dupThumb");
        QTRY_COMPARE_WITH_TIMEOUT(centreOf(dupThumb), red, kWait);
        const QSize duplicateSize = dupThumb->pixmap(Qt::ReturnByValue).size();
        // The original takes the duplicate's place at the same scale, then the duplicate comes back.
        QTRY_COMPARE_WITH_TIMEOUT(centreOf(dupThumb), blue, kWait);
        QCOMPARE(dupThumb->pixmap(Qt::ReturnByValue).size(), duplicateSize);
        // Unchecked while the original stands there: the next tick brings the duplicate back for good.
        child<QCheckBox>("c_showDiffs")->click();
        QVERIFY(waitTicks(2));
        QCOMPARE(centreOf(dupThumb), red);
    }

    void settings()
    {
        dialogSettings().setValue(OrvexDuplicatesDlg::ShowDifferencesKey, false);
        open({{"one", "k", pngOf(red)}}, {{"k", pngOf(blue)}});
        auto *box = child<QCheckBox>("c_showDiffs");
        QVERIFY(!box->isChecked());
        QVERIFY(waitTicks(3));
        QCOMPARE(centreOf(child<QLabel>("m_dupThumb")), red); // no blink
        // Each click is on disk at once, before the dialog ends.
        box->click();
        QCOMPARE(dialogSettings().value(OrvexDuplicatesDlg::ShowDifferencesKey).toBool(), true);
        // The geometry comes back with the next dialog.
        m_dialog->resize(700, 520);
        QTRY_COMPARE_WITH_TIMEOUT(m_dialog->size(), QSize(700, 520), kWait);
        m_dialog.reset();
        QCOMPARE(OrvexDuplicatesDlg().size(), QSize(700, 520));
    }

    void endsExec_data()
    {
        QTest::addColumn<QString>("pressed");
        QTest::addColumn<int>("result");
        QTest::addColumn<int>("cancelAll");
        QTest::newRow("archive anyway") << "do_archive" << int(QDialog::Accepted) << 0;
        QTest::newRow("discard") << "Discard" << int(QDialog::Rejected) << 0;
        QTest::newRow("cancel all") << "Cancel All" << int(QDialog::Rejected) << 1;
    }

    void endsExec()
    {
        QFETCH(QString, pressed);
        QFETCH(int, result);
        QFETCH(int, cancelAll);
        OrvexDuplicatesDlg dialog;
        dialog.setButtonNames("do_archive", "Discard");
        dialog.setDuplicates({{"one", "k", pngOf(red)}});
        QSignalSpy cancelled(&dialog, &OrvexDuplicatesDlg::cancelAll);
        // The user waits for the first image, then decides.
        ModalAnswerer answer([pressed](QWidget *modal) {
            QTRY_VERIFY_WITH_TIMEOUT(!modal->findChild<QLabel *>("m_dupThumb")->pixmap(Qt::ReturnByValue).isNull(), kWait);
            for (QPushButton *button : modal->findChildren<QPushButton *>())
                if (button->text() == pressed)
                    button->click();
        });
        QCOMPARE(dialog.exec(), result);
        QCOMPARE(cancelled.count(), cancelAll);
        QVERIFY(!dialog.findChild<QTimer *>("m_blinkTimer")->isActive());
    }

private:
    void open(const QList<thumbData> &duplicates, const QMap<QString, QByteArray> &originals)
    {
        m_dialog = std::make_unique<OrvexDuplicatesDlg>();
        m_dialog->setDuplicates(duplicates);
        m_dialog->setOriginals(originals);
        m_dialog->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_dialog.get()));
    }

    bool waitTicks(int count)
    {
        QSignalSpy ticks(m_dialog->findChild<QTimer *>("m_blinkTimer"), &QTimer::timeout);
        return QTest::qWaitFor([&] { return ticks.count() >= count; }, kWait);
    }

    template<typename T> T *child(const char *name) const
    {
        T *widget = m_dialog->findChild<T *>(name);
        if (!widget)
            qFatal("no %s in the dialog", name);
        return widget;
    }

    std::unique_ptr<OrvexDuplicatesDlg> m_dialog;
};

QTEST_MAIN(tst_DuplicatesDlg)
#include "tst_duplicatesdlg.moc"
