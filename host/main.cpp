#include "orvexhostoptions.h"
#include "orvexhostsession.h"
#include "orvexhosttranslations.h"
#include "orvexhostwindow.h"
#include "orvexrendering.h"
#include "orvexscreenshotjob.h"
#include "tavlodocplugininterface.h"

#include <QApplication>
#include <QDockWidget>
#include <QTextStream>

namespace {

void setIdentity()
{
    QCoreApplication::setApplicationName(QStringLiteral("orvexhost"));
    QCoreApplication::setOrganizationName(QStringLiteral("Vantrel GmbH"));
    QCoreApplication::setApplicationVersion(QStringLiteral(ORVEXHOST_VERSION));
}

// The help, the version or why the command line is wrong, on the right
// stream; -1 when the host is to run.
int answerCommandLine(const OrvexHostOptions &options)
{
    if (options.helpRequested || options.versionRequested) {
        QTextStream(stdout) << (options.helpRequested ? options.helpText
                                                      : QCoreApplication::applicationName() + QLatin1Char(' ')
                                                            + QCoreApplication::applicationVersion()
                                                            + QLatin1Char('\n'));
        return int(OrvexHostExitCode::Ok);
    }
    if (!options.error.isEmpty()) {
        QTextStream(stderr) << "orvexhost: " << options.error << "\n\n" << options.helpText;
        return int(OrvexHostExitCode::Usage);
    }
    return -1;
}

} // namespace

int main(int argc, char *argv[])
{
    setIdentity();
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments << QString::fromLocal8Bit(argv[i]);
    if (OrvexHostOptions::asksForTextOnly(arguments)) {
        // No window: the help and the version need no display.
        QCoreApplication app(argc, argv);
        OrvexHostTranslations::install();
        return answerCommandLine(OrvexHostOptions::parse(QCoreApplication::arguments()));
    }

    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts); // QtWebEngine in a plugin
    QApplication app(argc, argv);
    OrvexHostTranslations::install();
    OrvexRendering::chooseSceneGraph();

    QTextStream out(stdout);
    QTextStream err(stderr);
    const OrvexHostOptions options = OrvexHostOptions::parse(QApplication::arguments());
    const int answered = answerCommandLine(options);
    if (answered >= 0)
        return answered;

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
