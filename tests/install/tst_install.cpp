// The installed product: this build installed into a scratch prefix with
// 'cmake --install', its programs run from there, and a host from outside the
// source tree built against it with find_package(OrvexWorkbench).
#include "hostprocess.h"
#include "orvexcontractsglobal.h"

#include <QImageReader>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTranslator>
#include <QtTest>

#define QVERIFY_RAN(result) QVERIFY2(ran(result), HostProcess::describe(result).constData())

namespace {
bool ran(const HostProcess::Result &result)
{
    return result.finished && result.exitStatus == QProcess::NormalExit && result.exitCode == 0;
}
} // namespace

class tst_Install : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(m_scratch.isValid());
        m_prefix = m_scratch.filePath(QStringLiteral("prefix"));
        HostProcess cmake(QStringLiteral(ORVEX_CMAKE_COMMAND));
        QVERIFY_RAN(cmake.run({QStringLiteral("--install"), QStringLiteral(ORVEX_BUILD_DIR), QStringLiteral("--prefix"), m_prefix},
                              120000));
    }

    void programsRunFromBin()
    {
        HostProcess standIn(installed(ORVEX_INSTALL_BINDIR "/orvexconnectionmanager"));
        const HostProcess::Result version = standIn.run({QStringLiteral("--version")}, 30000);
        QVERIFY_RAN(version);
        QVERIFY2(version.out.startsWith(QLatin1String("orvexconnectionmanager ")), qPrintable(version.out));

        // The host finds the workbench plugin in its own folder, behind the link in
        // bin/, and the dock shows the sample clipboard's cards.
        const QString archive = m_scratch.filePath(QStringLiteral("archive"));
        const QString shot = m_scratch.filePath(QStringLiteral("host.png"));
        const QString state = m_scratch.filePath(QStringLiteral("host.json"));
        HostProcess host(installed(ORVEX_INSTALL_BINDIR "/orvexhost"));
        const HostProcess::Result result =
            host.run({QStringLiteral("--archive"), archive, QStringLiteral("--screenshot"), shot,
                      QStringLiteral("--dump-state"), state, QStringLiteral("--timeout"), QStringLiteral("150")},
                     240000);
        QVERIFY_RAN(result);
        QFile file(state);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray json = file.readAll();
        int cards = 0;
        for (const QJsonValue &tab : QJsonDocument::fromJson(json).object().value(QStringLiteral("tabs")).toArray())
            cards += tab[QStringLiteral("cards")].toInt();
        QVERIFY2(cards > 0, json.constData());
    }

    void foreignHostLoadsThePlugin()
    {
        const QString build = m_scratch.filePath(QStringLiteral("foreignhost"));
        HostProcess cmake(QStringLiteral(ORVEX_CMAKE_COMMAND));
        QStringList configure{QStringLiteral("-S"), QStringLiteral(ORVEX_FOREIGN_HOST_SOURCE), QStringLiteral("-B"), build,
                              QStringLiteral("-DCMAKE_PREFIX_PATH=") + m_prefix,
                              QStringLiteral("-DCMAKE_CXX_COMPILER=" ORVEX_CXX_COMPILER)};
        if (qstrlen(ORVEX_FOREIGN_CXX_FLAGS) > 0)
            configure << QStringLiteral("-DCMAKE_CXX_FLAGS=" ORVEX_FOREIGN_CXX_FLAGS);
        QVERIFY_RAN(cmake.run(configure, 180000));
        QVERIFY_RAN(cmake.run({QStringLiteral("--build"), build}, 300000));

        HostProcess foreign(build + QStringLiteral("/foreignhost"));
        const HostProcess::Result result = foreign.run({}, 60000);
        QVERIFY_RAN(result);
        // The plugin is the installed one, is a document plugin with our identity,
        // and the worker found the archive client in the plugin's folder.
        const QString plugin = installed(ORVEX_INSTALL_PRIVATEDIR "/liborvexworkbenchplugin.so");
        const QStringList expected{
            QStringLiteral("plugin %1 orvexworkbenchplugin " ORVEX_IID_PREFIX "Orvexworkbenchplugin/0.1").arg(plugin),
            QStringLiteral("archive client loaded"),
            QStringLiteral("drag formats text/x-orvex-uri")};
        QCOMPARE(result.out.split(QLatin1Char('\n'), Qt::SkipEmptyParts), expected);
    }

    void desktopEntryAndCatalogues()
    {
        const QString entry = installed(ORVEX_INSTALL_DATADIR "/applications/orvexhost.desktop");
        HostProcess validate(QStringLiteral("desktop-file-validate"));
        const HostProcess::Result checked = validate.run({entry}, 30000);
        QVERIFY_RAN(checked);
        QVERIFY2(checked.out.isEmpty(), qPrintable(checked.out)); // hints are printed, with exit code 0

        // The entry's program and icon are where a desktop looks for them.
        QFile file(entry);
        QVERIFY(file.open(QIODevice::ReadOnly | QIODevice::Text));
        const QStringList lines = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'));
        QVERIFY(lines.contains(QStringLiteral("Exec=orvexhost")));
        QVERIFY(lines.contains(QStringLiteral("Icon=orvexhost")));
        QVERIFY(QFileInfo(installed(ORVEX_INSTALL_BINDIR "/orvexhost")).isExecutable());
        QImageReader icon(installed(ORVEX_INSTALL_DATADIR "/icons/hicolor/scalable/apps/orvexhost.svg"));
        const QImage image = icon.read();
        QVERIFY2(!image.isNull() && image.width() == image.height(), qPrintable(icon.errorString()));

        for (const char *name : {"orvexworkbench_de.qm", "orvexhost_de.qm", "orvexarchive_de.qm"}) {
            QTranslator catalogue;
            QVERIFY2(catalogue.load(QLatin1String(name), installed(ORVEX_INSTALL_TRANSLATIONSDIR)) && !catalogue.isEmpty(), name);
        }
    }

private:
    QString installed(const char *relative) const { return m_prefix + QLatin1Char('/') + QLatin1String(relative); }

    QTemporaryDir m_scratch;
    QString m_prefix;
};

QTEST_MAIN(tst_Install)
#include "tst_install.moc"
