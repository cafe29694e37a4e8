// The whole product as `make demo` runs it headless: orvexhost on a fresh
// archive folder, which it fills with the sample archive, writes a screenshot
// of its window once the workbench dock is ready, and exits.
#include "hostprocess.h"

#include <QDir>
#include <QImageReader>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>
#include <QtTest>

class tst_E2eScreenshot : public QObject
{
    Q_OBJECT

private slots:
    void screenshotOfAFreshArchive();
};

void tst_E2eScreenshot::screenshotOfAFreshArchive()
{
    QTemporaryDir scratch;
    const QString archive = scratch.filePath(QStringLiteral("archive"));
    const QString shot = scratch.filePath(QStringLiteral("demo.png"));
    const QString state = scratch.filePath(QStringLiteral("demo.json"));
    HostProcess host;
    const HostProcess::Result result =
        host.run({QStringLiteral("--archive"), archive, QStringLiteral("--screenshot"), shot,
                  QStringLiteral("--dump-state"), state, QStringLiteral("--timeout"), QStringLiteral("150")},
                 240000);
    QVERIFY2(result.finished && result.exitStatus == QProcess::NormalExit && result.exitCode == 0,
             HostProcess::describe(result).constData());
    QVERIFY2(!HostProcess::messageLine(result.out, shot).isEmpty(), HostProcess::describe(result).constData());
    QVERIFY(!QDir(archive).isEmpty());

    QImageReader reader(shot);
    QCOMPARE(reader.format(), QByteArray("png"));
    const QImage image = reader.read();
    QVERIFY2(image.width() >= 800 && image.height() >= 500, qPrintable(reader.errorString()));
    // Something is drawn: a blank or single-colour image has next to no colours.
    QSet<QRgb> colours;
    for (int y = 0; y < image.height(); y += 4) {
        for (int x = 0; x < image.width(); x += 4)
            colours.insert(image.pixel(x, y));
    }
    QVERIFY2(colours.size() >= 16, qPrintable(QString::number(colours.size())));

    // The dock shows both sample clipboards, the read-only one locked, and the
    // first one's cards each with its thumbnail; the chooser offers only the writeable one.
    QFile file(state);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray json = file.readAll();
    const QJsonObject dump = QJsonDocument::fromJson(json).object();
    QHash<QString, QJsonObject> tabs;
    for (const QJsonValue &tab : dump.value(QStringLiteral("tabs")).toArray())
        tabs.insert(tab[QStringLiteral("title")].toString(), tab.toObject());
    const QJsonObject open = tabs.value(QStringLiteral("Offene Rechnungen"));
    const QJsonObject locked = tabs.value(QStringLiteral("Projekt Nordlicht"));
    QVERIFY2(open.value(QStringLiteral("current")).toBool() && !open.value(QStringLiteral("locked")).toBool()
                 && open.value(QStringLiteral("closable")).toBool(),
             json.constData());
    QVERIFY2(locked.value(QStringLiteral("locked")).toBool() && !locked.value(QStringLiteral("closable")).toBool(),
             json.constData());
    QVERIFY2(open.value(QStringLiteral("cards")).toInt() > 0, json.constData());
    QCOMPARE(open.value(QStringLiteral("thumbnails")), open.value(QStringLiteral("cards")));
    QCOMPARE(dump.value(QStringLiteral("chooser")).toArray(), QJsonArray{QStringLiteral("Offene Rechnungen")});
}

QTEST_GUILESS_MAIN(tst_E2eScreenshot)
#include "tst_e2e_screenshot.moc"
