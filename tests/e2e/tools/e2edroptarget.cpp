// orvexe2edroptarget FOLDER [--orvex-uri]: a window that takes dropped
// documents into FOLDER the way a file manager does.
//
// By default it asks the drop for "text/uri-list": local files are copied,
// http URLs are downloaded and saved under the last part of their path (as a
// file manager's network layer does). With --orvex-uri it asks for
// "text/x-orvex-uri" instead and downloads those URLs. Each saved file is
// reported on stdout as "saved <name>", each failure as "failed <url>: <reason>".
#include <QApplication>
#include <QDir>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QLabel>
#include <QMimeData>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QSaveFile>
#include <QTextStream>
#include <QVBoxLayout>

namespace {
const QString kOrvexUri = QStringLiteral("text/x-orvex-uri");
const QString kUriList = QStringLiteral("text/uri-list");

class DropTarget : public QLabel
{
public:
    DropTarget(const QString &folder, bool orvexUri)
        : m_folder(folder)
        , m_orvexUri(orvexUri)
    {
        setAcceptDrops(true);
        setAlignment(Qt::AlignCenter);
        setText(QStringLiteral("Drop documents here\n%1").arg(QDir::toNativeSeparators(folder)));
        setAccessibleName(QStringLiteral("Drop target"));
        setWindowTitle(QStringLiteral("Drop target"));
        setMinimumSize(300, 150);
    }

protected:
    void dragEnterEvent(QDragEnterEvent *event) override
    {
        if (event->mimeData()->hasFormat(m_orvexUri ? kOrvexUri : kUriList))
            event->acceptProposedAction();
    }
    void dragMoveEvent(QDragMoveEvent *event) override { event->acceptProposedAction(); }

    void dropEvent(QDropEvent *event) override
    {
        QList<QUrl> urls;
        if (m_orvexUri) {
            const QString text = QString::fromUtf8(event->mimeData()->data(kOrvexUri));
            for (const QString &line : text.split(QStringLiteral("\r\n"), Qt::SkipEmptyParts))
                urls << QUrl(line);
        } else {
            urls = event->mimeData()->urls();
        }
        event->acceptProposedAction();
        if (urls.isEmpty())
            report(QStringLiteral("failed: the drop named no documents"));
        for (const QUrl &url : qAsConst(urls))
            take(url);
    }

private:
    void report(const QString &line)
    {
        QTextStream(stdout) << line << Qt::endl;
    }

    void take(const QUrl &url)
    {
        if (url.isLocalFile()) {
            const QString target = QDir(m_folder).filePath(QFileInfo(url.toLocalFile()).fileName());
            if (QFile::copy(url.toLocalFile(), target))
                report(QStringLiteral("saved ") + QFileInfo(target).fileName());
            else
                report(QStringLiteral("failed %1: cannot copy").arg(url.toString()));
            return;
        }
        if (url.scheme() != QLatin1String("http")) {
            report(QStringLiteral("failed %1: not a file or http URL").arg(url.toString()));
            return;
        }
        QNetworkReply *reply = m_network.get(QNetworkRequest(url));
        QEventLoop loop;
        connect(reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
        loop.exec();
        reply->deleteLater();
        const QString name = url.fileName(QUrl::FullyDecoded);
        QSaveFile file(QDir(m_folder).filePath(name));
        if (reply->error() != QNetworkReply::NoError || name.isEmpty() || !file.open(QIODevice::WriteOnly)
            || file.write(reply->readAll()) < 0 || !file.commit()) {
            report(QStringLiteral("failed %1: %2").arg(url.toString(), reply->errorString()));
            return;
        }
        report(QStringLiteral("saved ") + name);
    }

    QString m_folder;
    bool m_orvexUri;
    QNetworkAccessManager m_network;
};
} // namespace

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QStringList arguments = QApplication::arguments().mid(1);
    const bool orvexUri = arguments.removeAll(QStringLiteral("--orvex-uri")) > 0;
    if (arguments.size() != 1 || !QFileInfo(arguments.first()).isDir()) {
        QTextStream(stderr) << "usage: orvexe2edroptarget FOLDER [--orvex-uri]\n";
        return 2;
    }
    DropTarget target(arguments.first(), orvexUri);
    target.show();
    return app.exec();
}
