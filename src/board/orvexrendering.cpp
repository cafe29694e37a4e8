#include "orvexrendering.h"

#include "orvexlog.h"

#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFunctions>
#include <QQuickWindow>
#include <QSGRendererInterface>

namespace {
QString openGlRenderer()
{
    QOffscreenSurface surface;
    surface.create();
    QOpenGLContext context;
    if (!surface.isValid() || !context.create() || !context.makeCurrent(&surface))
        return {};
    const auto *name = reinterpret_cast<const char *>(context.functions()->glGetString(GL_RENDERER));
    const QString renderer = QString::fromLatin1(name ? name : "");
    context.doneCurrent();
    return renderer;
}
} // namespace

bool OrvexRendering::isSoftwareRenderer(const QString &glRenderer)
{
    if (glRenderer.isEmpty())
        return true;
    static const char *const emulated[] = {"llvmpipe", "softpipe", "software rasterizer", "swrast", "swiftshader"};
    for (const char *name : emulated)
        if (glRenderer.contains(QLatin1String(name), Qt::CaseInsensitive))
            return true;
    return false;
}

QString OrvexRendering::chooseSceneGraph()
{
    if (!qEnvironmentVariableIsSet("QT_QUICK_BACKEND") && !qEnvironmentVariableIsSet("QMLSCENE_DEVICE")) {
        const QString renderer = openGlRenderer();
        if (isSoftwareRenderer(renderer)) {
            QQuickWindow::setSceneGraphBackend(QSGRendererInterface::Software);
            orvexDebug() << "OpenGL renderer" << renderer << "- boards drawn by the software renderer";
        }
    }
    return QQuickWindow::sceneGraphBackend();
}
