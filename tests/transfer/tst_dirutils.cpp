// The directory utilities on real folder trees.
#include "orvexdirutils.h"
#include "testfiles.h"

#include <QTemporaryDir>
#include <QtTest>

class tst_DirUtils : public QObject
{
    Q_OBJECT

private slots:
    void removeTree()
    {
        const QString root = m_temp.filePath("tree");
        QVERIFY(writeFile(root + "/.hidden", "data"));
        QVERIFY(writeFile(root + "/sub/deeper/c.txt", "data"));
        QDir(root).mkpath("empty");
        // A link to a folder outside goes, the folder it points to stays.
        QVERIFY(writeFile(m_temp.filePath("outside/keep.txt"), "data"));
        QVERIFY(QFile::link(m_temp.filePath("outside"), root + "/link"));
        QString error;
        QVERIFY2(removeCompleteDir(root, error), qPrintable(error));
        QVERIFY(!QFileInfo::exists(root));
        QVERIFY(QFileInfo::exists(m_temp.filePath("outside/keep.txt")));
        QVERIFY(!removeCompleteDir(root, error));
    }

    void removeStopsAtAFileItCannotDelete()
    {
        // Nothing below /proc can be deleted, not even by root.
        QString error;
        QVERIFY(!removeCompleteDir("/proc/self/fdinfo", error));
        QVERIFY2(error.contains("could not be deleted"), qPrintable(error));
    }

    void copyTree()
    {
        const QString source = m_temp.filePath("source");
        const QString target = m_temp.filePath("target");
        QVERIFY(writeFile(source + "/a.txt", "new"));
        QVERIFY(writeFile(source + "/b.txt", "B"));
        QVERIFY(writeFile(source + "/sub/deeper/c.txt", "C"));
        QDir(source).mkpath("empty");
        // An existing a.txt makes that copy fail; the rest is still copied, and the
        // last copy (b.txt) decides the result.
        QVERIFY(writeFile(target + "/a.txt", "old"));
        QTest::ignoreMessage(QtDebugMsg, QRegularExpression("Fehler beim Kopie.*a\\.txt.*could not be deleted"));
        QVERIFY(copyCompleteDir(source, target));
        QCOMPARE(readFile(target + "/a.txt"), QByteArray("old"));
        QCOMPARE(readFile(target + "/b.txt"), QByteArray("B"));
        QCOMPARE(readFile(target + "/sub/deeper/c.txt"), QByteArray("C"));
        QVERIFY(QFileInfo(target + "/empty").isDir());
        QTest::ignoreMessage(QtDebugMsg, QRegularExpression("Fehler beim Kopie.*does not exist"));
        QVERIFY(!copyCompleteDir(m_temp.filePath("missing"), target));
    }

    void parameters_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QStringList>("expected"); // key=value pairs in key order
        QTest::newRow("no equals sign") << QStringList{"--verbose"} << QStringList{"--verbose="};
        QTest::newRow("later wins") << QStringList{"a=1", "b=2", "a=3"} << QStringList{"a=3", "b=2"};
    }

    void parameters()
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
            pairs << it.key() + '=' + it.value();
        QCOMPARE(pairs, expected);
    }

private:
    QTemporaryDir m_temp;
};

QTEST_GUILESS_MAIN(tst_DirUtils)
#include "tst_dirutils.moc"
