#include "orvexhostoptions.h"
#include "orvexhostsession.h"
#include "orvexhosttranslations.h"
#include "orvexhostwindow.h"
#include "orvexscreenshotjob.h"
#include "tavlodocplugininterface.h"

#include <QApplication>
#include <QDockWidget>
#include <QTextStream>

int main(int argc, char *argv[])
{
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts); // QtWebEngine in a plugin
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("orvexhost"));
    QApplication::setOrganizationName(QStringLiteral("Vantrel GmbH"));
    QApplication::setApplicationVersion(QStringLiteral(ORVEXHOST_VERSION));
    OrvexHostTranslations::install();

    QTextStream out(stdout);
    QTextStream err(stderr);
    const OrvexHostOptions options = OrvexHostOptions::parse(QApplication::arguments());
    if (!options.error.isEmpty()) {
        err << "orvexhost: " << options.error << "\n\n" << options.helpText;
        return int(OrvexHostExitCode::Usage);
    }
    if (options.helpRequested || options.versionRequested) {
        out << (options.helpRequested ? options.helpText
                                      : QApplication::applicationName() + QLatin1Char(' ')
                                            + QApplication::applicationVersion() + QLatin1Char('\n'));
        return int(OrvexHostExitCode::Ok);
    }

    OrvexHostSession session;
    if (!session.start(options)) {
        err << "orvexhost: " << session.errorString() << '\n';
        return int(session.failure());
    }
    session.window()->show();

    bool screenshotDone = false;
    if (options.takesScreenshot()) {
        auto *job = new OrvexScreenshotJob(session.window(), session.window()->workbenchDock(),
                                           options.screenshotFile, options.timeoutSeconds * 1000, &app);
        job->setStateFile(options.stateFile, session.window()->workbench()->getHoverWidget());
        QObject::connect(job, &OrvexScreenshotJob::finished, &app, [&](int code, const QString &message) {
            screenshotDone = true;
            (code == 0 ? out : err) << "orvexhost: " << message << Qt::endl;
            QCoreApplication::exit(code);
        });
        job->start();
    }
    const int code = app.exec();
    if (options.takesScreenshot() && !screenshotDone) {
        err << "orvexhost: " << QCoreApplication::translate("OrvexScreenshotJob", "The window was closed before the screenshot.") << '\n';
        return int(OrvexHostExitCode::ScreenshotFailed);
    }
    return code;
}
