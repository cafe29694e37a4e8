// orvexe2egrab FILE: saves the whole screen of $DISPLAY as a PNG (the
// screenshot a failed real-input test keeps).
#include <QGuiApplication>
#include <QPixmap>
#include <QScreen>

int main(int argc, char *argv[])
{
    QGuiApplication app(argc, argv);
    const QStringList arguments = QGuiApplication::arguments();
    QScreen *screen = QGuiApplication::primaryScreen();
    if (arguments.size() != 2 || !screen)
        return 2;
    return screen->grabWindow(0).save(arguments.at(1), "png") ? 0 : 1;
}
