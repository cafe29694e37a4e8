// The directory utilities on real folder trees.
#include "orvexdirutils.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

void writeFile(const QString &path, const QByteArray &content = "data")
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(content);
}

QStringList treeOf(const QString &root)
{
    QStringList entries;
    QDirIterator it(root, QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext())
        entries << QDir(root).relativeFilePath(it.next());
    entries.sort();
    return entries;
}

} // namespace

class tst_DirUtils : public QObject
{
    Q_OBJECT

private slots:
    void shortPathIsIdentity();
    void removeTree();
    void removeMissingFolder();
    void removeStopsAtReadOnlyFile();
    void copyTree();
    void copyEmptyFolder();
    void copyMissingSource();
    void copyGoesOnAfterAFailedFile();
    void parameters_data();
    void parameters();
};

void tst_DirUtils::shortPathIsIdentity()
{
    const QString path = QStringLiteral("/tmp/Ein langer Ordner/ä ö.pdf");
    QCOMPARE(getShortPathName(path), path);
    QCOMPARE(getShortPathNameLinux(path), path);
}

void tst_DirUtils::removeTree()
{
    QTemporaryDir temp;
    const QString root = temp.filePath(QStringLiteral("tree"));
    writeFile(root + QStringLiteral("/a.txt"));
    writeFile(root + QStringLiteral("/.hidden"));
    writeFile(root + QStringLiteral("/sub/b.txt"));
    writeFile(root + QStringLiteral("/sub/deeper/c.txt"));
    QDir(root).mkpath(QStringLiteral("empty"));
    // A link to a folder outside goes, the folder it points to stays.
    writeFile(temp.filePath(QStringLiteral("outside/keep.txt")));
    QVERIFY(QFile::link(temp.filePath(QStringLiteral("outside")), root + QStringLiteral("/link")));

    QString error;
    QVERIFY2(removeCompleteDir(root, error), qPrintable(error));
    QVERIFY(!QFileInfo::exists(root));
    QVERIFY(QFileInfo::exists(temp.filePath(QStringLiteral("outside/keep.txt"))));
}

void tst_DirUtils::removeMissingFolder()
{
    QString error;
    QVERIFY(!removeCompleteDir(QStringLiteral("/nonexistent/orvex"), error));
    QCOMPARE(error, QStringLiteral("Directory (/nonexistent/orvex) does not exist."));
}

void tst_DirUtils::removeStopsAtReadOnlyFile()
{
    // Permissions do not stop root: run the removal as nobody in a child process.
    QTemporaryDir temp;
    QFile::setPermissions(temp.path(), QFileDevice::Permissions(0x7777));
    const QString root = temp.filePath(QStringLiteral("tree"));
    writeFile(root + QStringLiteral("/a.txt"));
    writeFile(root + QStringLiteral("/locked/ro.txt"));
    QFile::setPermissions(root, QFileDevice::Permissions(0x7777));
    QFile::setPermissions(root + QStringLiteral("/a.txt"), QFileDevice::Permissions(0x6666));
    QFile::setPermissions(root + QStringLiteral("/locked/ro.txt"), QFileDevice::Permissions(0x4444));
    QFile::setPermissions(root + QStringLiteral("/locked"), QFileDevice::Permissions(0x5555));

    int fds[2];
    QVERIFY(pipe(fds) == 0);
    const pid_t child = fork();
    QVERIFY(child >= 0);
    if (child == 0) {
        ::close(fds[0]);
        if (geteuid() == 0 && (setgid(65534) != 0 || setuid(65534) != 0))
            _exit(3);
        QString error;
        const bool removed = removeCompleteDir(root, error);
        const QByteArray bytes = error.toUtf8();
        if (::write(fds[1], bytes.constData(), size_t(bytes.size())) < 0)
            _exit(4);
        _exit(removed ? 1 : 0);
    }
    ::close(fds[1]);
    QByteArray reported;
    char buffer[512];
    ssize_t n;
    while ((n = ::read(fds[0], buffer, sizeof buffer)) > 0)
        reported.append(buffer, int(n));
    ::close(fds[0]);
    int status = 0;
    QCOMPARE(waitpid(child, &status, 0), child);
    QVERIFY(WIFEXITED(status));
    QCOMPARE(WEXITSTATUS(status), 0); // removal reported failure

    QCOMPARE(QString::fromUtf8(reported),
             QStringLiteral("File (%1) could not be deleted.").arg(root + QStringLiteral("/locked/ro.txt")));
    QVERIFY(QFileInfo::exists(root + QStringLiteral("/locked/ro.txt")));
    // Folders come first: the file beside the folder was not reached.
    QVERIFY(QFileInfo::exists(root + QStringLiteral("/a.txt")));
    QFile::setPermissions(root + QStringLiteral("/locked"), QFileDevice::Permissions(0x7777));
}

void tst_DirUtils::copyTree()
{
    QTemporaryDir temp;
    const QString source = temp.filePath(QStringLiteral("source"));
    const QString target = temp.filePath(QStringLiteral("target"));
    writeFile(source + QStringLiteral("/a.txt"), "A");
    writeFile(source + QStringLiteral("/sub/b.txt"), "B");
    writeFile(source + QStringLiteral("/sub/deeper/c.txt"), "C");
    QDir(source).mkpath(QStringLiteral("empty"));
    QVERIFY(QDir().mkpath(target));

    QVERIFY(copyCompleteDir(source, target));
    QCOMPARE(treeOf(target), treeOf(source));
    QFile c(target + QStringLiteral("/sub/deeper/c.txt"));
    QVERIFY(c.open(QIODevice::ReadOnly));
    QCOMPARE(c.readAll(), QByteArray("C"));
}

void tst_DirUtils::copyEmptyFolder()
{
    QTemporaryDir temp;
    const QString source = temp.filePath(QStringLiteral("empty"));
    const QString target = temp.filePath(QStringLiteral("target"));
    QVERIFY(QDir().mkpath(source));
    QVERIFY(QDir().mkpath(target));
    QVERIFY(copyCompleteDir(source, target));
    QVERIFY(treeOf(target).isEmpty());
}

void tst_DirUtils::copyMissingSource()
{
    QTemporaryDir temp;
    QTest::ignoreMessage(QtDebugMsg, QRegularExpression(QStringLiteral("Fehler beim Kopie.*does not exist")));
    QVERIFY(!copyCompleteDir(temp.filePath(QStringLiteral("missing")), temp.path()));
}

void tst_DirUtils::copyGoesOnAfterAFailedFile()
{
    QTemporaryDir temp;
    const QString source = temp.filePath(QStringLiteral("source"));
    const QString target = temp.filePath(QStringLiteral("target"));
    writeFile(source + QStringLiteral("/a.txt"), "new");
    writeFile(source + QStringLiteral("/b.txt"), "new");
    // An existing a.txt in the target makes that copy fail; b.txt is still copied
    // and, being the last operation, decides the result.
    writeFile(target + QStringLiteral("/a.txt"), "old");
    QTest::ignoreMessage(QtDebugMsg, QRegularExpression(QStringLiteral("Fehler beim Kopie.*a\\.txt.*could not be deleted")));
    QVERIFY(copyCompleteDir(source, target));
    QFile a(target + QStringLiteral("/a.txt"));
    QVERIFY(a.open(QIODevice::ReadOnly));
    QCOMPARE(a.readAll(), QByteArray("old"));
    QVERIFY(QFileInfo::exists(target + QStringLiteral("/b.txt")));
}

void tst_DirUtils::parameters_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QStringList>("expected"); // key=value pairs in key order
    QTest::newRow("key and value") << QStringList{"archive=/data"} << QStringList{"archive=/data"};
    QTest::newRow("no equals sign") << QStringList{"--verbose"} << QStringList{"--verbose="};
    QTest::newRow("empty key") << QStringList{"=x"} << QStringList{"=x"};
    QTest::newRow("value with equals") << QStringList{"a=b=c"} << QStringList{"a=b=c"};
    QTest::newRow("empty value") << QStringList{"a="} << QStringList{"a="};
    QTest::newRow("later wins") << QStringList{"a=1", "b=2", "a=3"} << QStringList{"a=3", "b=2"};
    QTest::newRow("program name too") << QStringList{"./orvexhost", "port=4711"}
                                      << QStringList{"./orvexhost=", "port=4711"};
}

void tst_DirUtils::parameters()
{
    QFETCH(QStringList, arguments);
    QFETCH(QStringList, expected);
    QList<QByteArray> storage;
    QVector<char *> argv;
    for (const QString &argument : arguments)
        storage << argument.toLocal8Bit();
    for (QByteArray &bytes : storage)
        argv << bytes.data();
    const QMap<QString, QString> map = getParameters(argv.data(), argv.size());
    QStringList pairs;
    for (auto it = map.cbegin(); it != map.cend(); ++it)
        pairs << it.key() + QLatin1Char('=') + it.value();
    QCOMPARE(pairs, expected);
}

QTEST_GUILESS_MAIN(tst_DirUtils)
#include "tst_dirutils.moc"
