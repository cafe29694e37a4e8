// The launcher of desktop programs: it tells success only when the program
// started and reported it, and otherwise names what is missing or failed.
#include "orvexlauncher.h"

#include <QTemporaryDir>
#include <QtTest>

using Purpose = OrvexLauncher::Purpose;
Q_DECLARE_METATYPE(OrvexLauncher::Purpose)

class tst_Launcher : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;

    // An executable shell script in the scratch folder.
    QString script(const QString &name, const QString &body)
    {
        const QString path = m_dir.filePath(name);
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly))
            return {};
        file.write(("#!/bin/sh\n" + body + "\n").toUtf8());
        file.close();
        file.setPermissions(file.permissions() | QFileDevice::ExeOwner);
        return path;
    }

private slots:
    void outcomes_data()
    {
        QTest::addColumn<Purpose>("purpose");
        QTest::addColumn<QString>("program"); // "SCRIPT": the body below as a script
        QTest::addColumn<QString>("body");
        QTest::addColumn<QString>("subject");
        QTest::addColumn<QString>("error"); // empty: success

        QTest::newRow("viewer started") << Purpose::OpenFile << "SCRIPT" << "exit 0" << "/tmp/a/Rechnung.pdf" << "";
        QTest::newRow("no xdg-open") << Purpose::OpenFile << "xdg-open" << "" << "/tmp/a/Rechnung.pdf"
                                     << "No program to open PDF files is set up (xdg-open).";
        QTest::newRow("no xdg-open, file without suffix")
            << Purpose::OpenFile << "xdg-open" << "" << "/tmp/a/README" << "No program to open README is set up (xdg-open).";
        QTest::newRow("viewer fails") << Purpose::OpenFile << "SCRIPT" << "exit 3" << "/tmp/a/Rechnung.pdf"
                                      << "Rechnung.pdf could not be opened: launcher ended with exit code 3.";
        QTest::newRow("viewer crashes") << Purpose::OpenFile << "SCRIPT" << "kill -SEGV $$" << "/tmp/a/Rechnung.pdf"
                                        << "Rechnung.pdf could not be opened: launcher crashed.";
        QTest::newRow("mail started") << Purpose::Mail << "SCRIPT" << "exit 0" << "/tmp/a.pdf" << "";
        QTest::newRow("no xdg-email") << Purpose::Mail << "xdg-email" << "" << "/tmp/a.pdf"
                                      << "No mail program is set up (xdg-email).";
        QTest::newRow("mail command missing")
            << Purpose::Mail << "/nonexistent/mailer" << "" << "/tmp/a.pdf"
            << "The e-mail could not be created, unable to start Mail-Client! /nonexistent/mailer was not found.";
        QTest::newRow("mail program fails") << Purpose::Mail << "SCRIPT" << "exit 1" << "/tmp/a.pdf"
                                            << "The mail program launcher ended with exit code 1.";
    }

    void outcomes()
    {
        QFETCH(Purpose, purpose);
        QFETCH(QString, program);
        QFETCH(QString, body);
        QFETCH(QString, subject);
        QFETCH(QString, error);

        // Only the scratch folder on PATH: no desktop launcher of the machine answers.
        const QByteArray path = qgetenv("PATH");
        qputenv("PATH", QFile::encodeName(m_dir.path()));
        if (program == QLatin1String("SCRIPT"))
            program = script(QStringLiteral("launcher"), body);
        OrvexLauncher launcher(purpose);
        launcher.setSubject(subject);
        QSignalSpy finished(&launcher, &OrvexLauncher::finished);
        launcher.start(program, {subject});
        qputenv("PATH", path);
        QCOMPARE(finished.count(), 0); // never before the caller has returned
        QVERIFY(finished.wait(10000));
        QCOMPARE(finished.at(0).at(0).toBool(), error.isEmpty());
        QCOMPARE(finished.at(0).at(1).toString(), error);
        QCOMPARE(launcher.succeeded(), error.isEmpty());
        QTest::qWait(50);
        QCOMPARE(finished.count(), 1);
    }

    // Failed before: a program that cannot be executed was reported as started.
    void notExecutable()
    {
        const QString path = m_dir.filePath(QStringLiteral("plain"));
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.close();
        OrvexLauncher launcher(Purpose::OpenFile);
        launcher.setSubject(QStringLiteral("/tmp/x.pdf"));
        QSignalSpy finished(&launcher, &OrvexLauncher::finished);
        launcher.start(path, {});
        QVERIFY(finished.wait(10000));
        QVERIFY(!launcher.succeeded());
        QVERIFY2(launcher.errorString().startsWith(QStringLiteral("x.pdf could not be opened: plain could not be started (")),
                 qPrintable(launcher.errorString()));
    }

    // A launcher that runs the viewer itself: still running after the grace
    // period counts as started, and the viewer outlives the launcher object.
    void viewerRunsOn()
    {
        const QString done = m_dir.filePath(QStringLiteral("viewer-closed"));
        const QString viewer = script(QStringLiteral("viewer"), QStringLiteral("sleep 1; touch '%1'").arg(done));
        {
            OrvexLauncher launcher(Purpose::OpenFile);
            launcher.setGracePeriod(200);
            QSignalSpy spy(&launcher, &OrvexLauncher::finished);
            launcher.start(viewer, {});
            QVERIFY(spy.wait(5000));
            QCOMPARE(spy.at(0).at(0).toBool(), true);
        }
        QCOMPARE(OrvexLauncher::programsRunningOn(), 1);
        QTRY_VERIFY_WITH_TIMEOUT(QFileInfo::exists(done), 10000);
        // Once the viewer ends, nothing of it is left behind.
        QTRY_COMPARE_WITH_TIMEOUT(OrvexLauncher::programsRunningOn(), 0, 10000);
    }
};

QTEST_GUILESS_MAIN(tst_Launcher)
#include "tst_launcher.moc"
