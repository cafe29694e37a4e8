// Build tool: writes the qwebchannel.js that the installed QtWebChannel carries
// in its resources to a file, so the card page ships the matching script.
#include <QCoreApplication>
#include <QFile>
#include <QWebChannel>

#include <cstdio>

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "usage: qwebchannelcopy OUTPUT\n");
        return 2;
    }
    QWebChannel keepLinked; // pulls in the library and with it its resources
    QFile in(QStringLiteral(":/qtwebchannel/qwebchannel.js"));
    if (!in.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "qwebchannelcopy: the Qt WebChannel resource is missing\n");
        return 1;
    }
    QFile out(QString::fromLocal8Bit(argv[1]));
    if (!out.open(QIODevice::WriteOnly) || out.write(in.readAll()) < 0) {
        std::fprintf(stderr, "qwebchannelcopy: cannot write %s\n", argv[1]);
        return 1;
    }
    return 0;
}
