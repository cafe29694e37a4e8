// The transfer progress dialog: its arithmetic and how it reacts to the
// client's byte counts.
#include "dmsmailnames.h"
#include "orvexfilecopy.h"
#include "orvextranslations.h"

#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QSignalSpy>
#include <QtTest>

class tst_FileCopy : public QObject
{
    Q_OBJECT

private slots:
    void percent_data();
    void percent();
    void speedLine_data();
    void speedLine();
    void startsBusyWithCancelDisabled();
    void tinyTotalsShowNothing_data();
    void tinyTotalsShowNothing();
    void measuredProgressEnablesCancelAndCountsFiles();
    void copyFinishedReturnsToBusy();
    void cancelButtonAndCloseEmit();
    void germanCatalogue(); // last: installs a translator for the rest of the process

private:
    static QProgressBar *bar(OrvexFileCopy &d, const char *name) { return d.findChild<QProgressBar *>(QLatin1String(name)); }
    static QLabel *label(OrvexFileCopy &d, const char *name) { return d.findChild<QLabel *>(QLatin1String(name)); }
    static QPushButton *cancel(OrvexFileCopy &d) { return d.findChild<QPushButton *>(QStringLiteral("m_bCancel")); }
};

void tst_FileCopy::percent_data()
{
    QTest::addColumn<qint64>("current");
    QTest::addColumn<qint64>("total");
    QTest::addColumn<int>("expected");
    QTest::newRow("half") << qint64(50) << qint64(100) << 50;
    QTest::newRow("truncated") << qint64(999) << qint64(1000) << 99;
    QTest::newRow("all") << qint64(1000) << qint64(1000) << 100;
    QTest::newRow("beyond the total") << qint64(3000) << qint64(2000) << 150;
    // 0.01f is a little less than 0.01: one byte in a hundred still shows 0.
    QTest::newRow("one in a hundred") << qint64(1) << qint64(100) << 0;
    // In single precision 2^25 - 1 rounds to 2^25: one byte short still shows 100.
    QTest::newRow("single precision") << qint64(33554431) << qint64(33554432) << 100;
    QTest::newRow("large files") << qint64(3) * 1024 * 1024 * 1024 << qint64(4) * 1024 * 1024 * 1024 << 75;
}

void tst_FileCopy::percent()
{
    QFETCH(qint64, current);
    QFETCH(qint64, total);
    QFETCH(int, expected);
    QCOMPARE(OrvexFileCopy::percentOf(current, total), expected);
}

void tst_FileCopy::speedLine_data()
{
    QTest::addColumn<qint64>("current");
    QTest::addColumn<qint64>("elapsedMs");
    QTest::addColumn<int>("percent");
    QTest::addColumn<QString>("expected");
    const QString form = QStringLiteral("%1 / sec\r\nVerstrichen: %2 noch %3 ");
    QTest::newRow("1 percent after 30 s") << qint64(30) * 1024 * 1024 << qint64(30000) << 1
                                          << form.arg(QStringLiteral("1 MBytes"), QStringLiteral("00:00:30"), QStringLiteral("00:49:30"));
    QTest::newRow("done") << qint64(100) * 1024 * 1024 << qint64(10000) << 100
                          << form.arg(QStringLiteral("10 MBytes"), QStringLiteral("00:00:10"), QStringLiteral("00:00:00"));
    QTest::newRow("elapsed 3725 s") << qint64(3725) * 1024 * 1024 << qint64(3725000) << 50
                                    << form.arg(QStringLiteral("1 MBytes"), QStringLiteral("01:02:05"), QStringLiteral("01:02:05"));
    // Even a trickle is shown in MBytes: 0.35 MByte/s.
    QTest::newRow("slow, two digits") << qint64(367002) << qint64(1000) << 10
                                      << form.arg(QStringLiteral("0.35 MBytes"), QStringLiteral("00:00:01"), QStringLiteral("00:00:09"));
    QTest::newRow("fast, two digits") << qint64(12) * 1024 * 1024 << qint64(1000) << 10
                                      << form.arg(QStringLiteral("12 MBytes"), QStringLiteral("00:00:01"), QStringLiteral("00:00:09"));
    QTest::newRow("exponent") << qint64(120) * 1024 * 1024 << qint64(1000) << 10
                              << form.arg(QStringLiteral("1.2e+02 MBytes"), QStringLiteral("00:00:01"), QStringLiteral("00:00:09"));
    QTest::newRow("under a second") << qint64(1024) << qint64(500) << 3
                                    << form.arg(QStringLiteral("0.002 MBytes"), QStringLiteral("00:00:00"), QStringLiteral("00:00:00"));
}

void tst_FileCopy::speedLine()
{
    QFETCH(qint64, current);
    QFETCH(qint64, elapsedMs);
    QFETCH(int, percent);
    QFETCH(QString, expected);
    QCOMPARE(OrvexFileCopy::speedLine(current, elapsedMs, percent), expected);
}

void tst_FileCopy::startsBusyWithCancelDisabled()
{
    OrvexFileCopy dialog;
    QCOMPARE(bar(dialog, "m_Progress")->minimum(), 0);
    QCOMPARE(bar(dialog, "m_Progress")->maximum(), 0);
    QVERIFY(!cancel(dialog)->isEnabled());
    QCOMPARE(cancel(dialog)->text(), QStringLiteral("&Cancel"));
    QCOMPARE(label(dialog, "m_Speed")->text(), QStringLiteral("Starting..."));
    QCOMPARE(label(dialog, "m_Text")->text(), QStringLiteral("TextLabel"));
    dialog.setText(QStringLiteral("Downloading ..."));
    QCOMPARE(label(dialog, "m_Text")->text(), QStringLiteral("Downloading ..."));
}

void tst_FileCopy::tinyTotalsShowNothing_data()
{
    QTest::addColumn<QString>("total");
    QTest::newRow("zero") << QStringLiteral("0");
    QTest::newRow("one") << QStringLiteral("1");
    QTest::newRow("not a number") << QStringLiteral("12abc");
}

void tst_FileCopy::tinyTotalsShowNothing()
{
    QFETCH(QString, total);
    OrvexFileCopy dialog;
    dialog.setProgressMax(total);
    QCOMPARE(bar(dialog, "m_Progress")->maximum(), 100);
    QTest::qWait(20); // past the 10 ms in which progress is not shown
    dialog.setProgressValue(QStringLiteral("5000"));
    QCOMPARE(bar(dialog, "m_Progress")->value(), 0);
    QCOMPARE(label(dialog, "m_Speed")->text(), QStringLiteral("Starting..."));
    QVERIFY(!cancel(dialog)->isEnabled());
}

void tst_FileCopy::measuredProgressEnablesCancelAndCountsFiles()
{
    OrvexFileCopy dialog;
    dialog.setTotalMaximum(5);
    dialog.setTotalValue(5);
    dialog.setFinishedFilesCount(2);
    dialog.setProgressMax(QStringLiteral("1000"));
    QElapsedTimer clock;
    clock.start();
    dialog.setProgressValue(QStringLiteral("100"));
    if (clock.elapsed() <= 10) // within the first 10 ms progress is stored, not shown
        QCOMPARE(bar(dialog, "m_Progress")->value(), 0);
    QTest::qWait(30);
    dialog.setProgressValue(QStringLiteral("250"));
    QCOMPARE(bar(dialog, "m_Progress")->value(), 25);
    QVERIFY(cancel(dialog)->isEnabled());
    QCOMPARE(bar(dialog, "m_pTotal")->value(), 2);
    const QString line = label(dialog, "m_Speed")->text();
    QVERIFY2(line.contains(QStringLiteral("MBytes / sec\r\nVerstrichen: 00:00:00 noch ")), qPrintable(line));
    QVERIFY(line.endsWith(QLatin1Char(' ')));

    // A new file restarts the bar; Cancel stays usable.
    dialog.setProgressMax(QStringLiteral("2000"));
    QCOMPARE(bar(dialog, "m_Progress")->value(), 0);
    QVERIFY(cancel(dialog)->isEnabled());

    // A value beyond the total: the bar clamps, nothing breaks.
    QTest::qWait(30);
    dialog.setProgressValue(QStringLiteral("3000"));
    QVERIFY(bar(dialog, "m_Progress")->value() <= 100);
    // The numeric overloads go the same way.
    dialog.setProgressMax(qlonglong(400));
    QTest::qWait(30);
    dialog.setProgressValue(qlonglong(100));
    QCOMPARE(bar(dialog, "m_Progress")->value(), 25);
}

void tst_FileCopy::copyFinishedReturnsToBusy()
{
    OrvexFileCopy dialog;
    dialog.setProgressMax(QStringLiteral("1000"));
    dialog.copyFinished();
    QCOMPARE(bar(dialog, "m_Progress")->maximum(), 0);
    QCOMPARE(label(dialog, "m_Text")->text(), QStringLiteral("Document sent. Waiting for confirmation..."));
}

void tst_FileCopy::cancelButtonAndCloseEmit()
{
    OrvexFileCopy dialog;
    QSignalSpy spy(&dialog, &OrvexFileCopy::cancelClicked);
    QSignalSpy rejected(&dialog, &QDialog::rejected);
    cancel(dialog)->setEnabled(true);
    QTest::mouseClick(cancel(dialog), Qt::LeftButton);
    QCOMPARE(spy.count(), 1);
    dialog.show();
    QVERIFY(dialog.close());
    QCOMPARE(spy.count(), 2);
    QCOMPARE(rejected.count(), 1);
    QVERIFY(!dialog.isVisible());
}

void tst_FileCopy::germanCatalogue()
{
    QVERIFY(OrvexTranslations::install(QLocale(QLocale::German)));
    OrvexFileCopy dialog;
    QCOMPARE(cancel(dialog)->text(), QStringLiteral("&Abbrechen"));
    QCOMPARE(label(dialog, "m_Speed")->text(), QStringLiteral("Starte..."));
    dialog.copyFinished();
    QCOMPARE(label(dialog, "m_Text")->text(), QStringLiteral("Dokument gesendet. Warte auf Bestätigung..."));
    dmsmailnames names;
    QCOMPARE(names.windowTitle(), QStringLiteral("Dokumente senden..."));
}

QTEST_MAIN(tst_FileCopy)
#include "tst_filecopy.moc"
