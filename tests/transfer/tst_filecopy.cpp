// The transfer progress dialog: its arithmetic and how it reacts to the
// client's byte counts.
#include "orvexfilecopy.h"

#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QSignalSpy>
#include <QtTest>

class tst_FileCopy : public QObject
{
    Q_OBJECT

private slots:
    void speedLine_data()
    {
        QTest::addColumn<qint64>("current");
        QTest::addColumn<qint64>("elapsedMs");
        QTest::addColumn<int>("percent");
        QTest::addColumn<QString>("expected");
        const QString form = "%1 MBytes / sec\r\nVerstrichen: %2 noch %3 ";
        QTest::newRow("1 percent after 30 s") << qint64(30) * 1024 * 1024 << qint64(30000) << 1
                                              << form.arg("1", "00:00:30", "00:49:30");
        // Even a trickle is shown in MBytes, with two significant digits.
        QTest::newRow("slow") << qint64(367002) << qint64(1000) << 10 << form.arg("0.35", "00:00:01", "00:00:09");
        QTest::newRow("exponent") << qint64(120) * 1024 * 1024 << qint64(1000) << 10
                                  << form.arg("1.2e+02", "00:00:01", "00:00:09");
    }

    void speedLine()
    {
        QFETCH(qint64, current);
        QFETCH(qint64, elapsedMs);
        QFETCH(int, percent);
        QFETCH(QString, expected);
        QCOMPARE(OrvexFileCopy::speedLine(current, elapsedMs, percent), expected);
    }

    void progress()
    {
        OrvexFileCopy dialog;
        QCOMPARE(bar(dialog)->maximum(), 0); // busy until the first size arrives
        QVERIFY(!cancel(dialog)->isEnabled());
        // A total of 0 or 1 byte, or none readable, is no measurable transfer.
        for (const QString total : {"0", "1", "12abc"}) {
            dialog.setProgressMax(total);
            QTest::qWait(20); // past the 10 ms in which progress is not shown
            dialog.setProgressValue("5000");
            QCOMPARE(bar(dialog)->value(), 0);
            QCOMPARE(speed(dialog), QString("Starting..."));
            QVERIFY(!cancel(dialog)->isEnabled());
        }
        dialog.setTotalMaximum(5);
        dialog.setFinishedFilesCount(2);
        dialog.setProgressMax("1000");
        QTest::qWait(30);
        dialog.setProgressValue("250");
        QCOMPARE(bar(dialog)->value(), 25);
        QCOMPARE(OrvexFileCopy::percentOf(qint64(3) << 30, qint64(4) << 30), 75); // files beyond 2 GB
        QVERIFY(cancel(dialog)->isEnabled());
        // A new file restarts the bar; Cancel stays usable.
        dialog.setProgressMax("2000");
        QCOMPARE(bar(dialog)->value(), 0);
        QVERIFY(cancel(dialog)->isEnabled());
        dialog.copyFinished();
        QCOMPARE(bar(dialog)->maximum(), 0);
    }

    void cancelAndClose()
    {
        OrvexFileCopy dialog;
        QSignalSpy cancelled(&dialog, &OrvexFileCopy::cancelClicked);
        QSignalSpy rejected(&dialog, &QDialog::rejected);
        cancel(dialog)->setEnabled(true);
        QTest::mouseClick(cancel(dialog), Qt::LeftButton);
        QCOMPARE(cancelled.count(), 1);
        dialog.show();
        QVERIFY(dialog.close());
        QCOMPARE(cancelled.count(), 2);
        QCOMPARE(rejected.count(), 1);
    }

private:
    static QProgressBar *bar(OrvexFileCopy &d) { return d.findChild<QProgressBar *>("m_Progress"); }
    static QPushButton *cancel(OrvexFileCopy &d) { return d.findChild<QPushButton *>("m_bCancel"); }
    static QString speed(OrvexFileCopy &d) { return d.findChild<QLabel *>("m_Speed")->text(); }
};

QTEST_MAIN(tst_FileCopy)
#include "tst_filecopy.moc"
