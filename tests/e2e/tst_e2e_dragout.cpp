// Documents dragged with the mouse out of the host onto a folder window: rows
// of the list and a card become files under their readable export names,
// byte for byte the archive's; a target that asks for the program's own URL
// format gets URLs it can fetch from the Connection Manager.
#include "e2etest.h"
#include "testfiles.h"

#include <QCryptographicHash>

namespace {
const QString kOpen = QStringLiteral("Offene Rechnungen");

} // namespace

class tst_E2eDragOut : public E2eTest
{
    Q_OBJECT

    // A folder window on the desktop (tests/e2e/tools/e2edroptarget.cpp):
    // the drop target that stands for a file manager.
    struct Folder
    {
        QTemporaryDir dir;
        QScopedPointer<E2eProgram> program;
        QRect area;
    };

    bool openFolder(Folder &folder, bool orvexUri)
    {
        folder.program.reset(new E2eProgram(QStringLiteral("drop target")));
        // Below the host's window, where a folder window sits beside it on a desktop.
        QStringList arguments{folder.dir.path(), QStringLiteral("-geometry"), QStringLiteral("500x160+200+1025")};
        if (orvexUri)
            arguments << QStringLiteral("--orvex-uri");
        if (!folder.program->start(E2eDesktop::binFolder() + QStringLiteral("/orvexe2edroptarget"), arguments,
                                   desktop().environment(), desktop().logFile(QStringLiteral("droptarget"))))
            return false;
        return waitFor(
            [&] {
                // Each drop target is its own application on the accessibility bus.
                const QList<E2eNode> apps = tree().findAll(E2eNode{QStringLiteral("org.a11y.atspi.Registry"),
                                                                   QStringLiteral("/org/a11y/atspi/accessible/root")},
                                                           [](const E2eNode &, const QString &role, const QString &name) {
                                                               return role == QLatin1String("application")
                                                                   && name == QLatin1String("orvexe2edroptarget");
                                                           });
                for (const E2eNode &app : apps) {
                    const E2eNode label = tree().find(app, QStringLiteral("label"), QStringLiteral("Drop target"));
                    const QRect area = tree().extents(label);
                    if (!area.isEmpty() && !tree().extents(documentTable()).intersects(area)) {
                        folder.area = area;
                        return true;
                    }
                }
                return false;
            },
            20000);
    }

    static QStringList files(const Folder &folder)
    {
        return QDir(folder.dir.path()).entryList(QDir::Files, QDir::Name);
    }

    // Readable documents whose rows are in view.
    QList<E2eArchive::Document> rows(int count)
    {
        QList<E2eArchive::Document> found;
        for (const E2eArchive::Document &document : archive().readableDocuments())
            if (found.size() < count && documentCell(document.id).isValid())
                found << document;
        return found;
    }

    // Opens a folder window and drags count rows of the list onto it; the documents dragged.
    QList<E2eArchive::Document> dragRowsOnto(Folder &folder, int count, bool orvexUri)
    {
        if (!openFolder(folder, orvexUri))
            return {};
        const QList<E2eArchive::Document> documents = rows(count);
        QList<qlonglong> ids;
        for (const E2eArchive::Document &document : documents)
            ids << document.id;
        if (ids.size() != count)
            return {};
        selectRows(ids);
        input().drag(rowPoint(ids.first()), folder.area.center(), 500);
        return documents;
    }

private slots:
    void initTestCase() { QVERIFY2(startProduct(), qPrintable(lastError())); }

    // Failed before: no drag started from the list, so nothing reached the folder.
    void rowsOntoAFolder()
    {
        Folder folder;
        const QList<E2eArchive::Document> documents = dragRowsOnto(folder, 2, false);
        QCOMPARE(documents.size(), 2);

        E2E_VERIFY2_SOON(files(folder).size() == 2, 30000, qPrintable(files(folder).join(", ")));
        for (const E2eArchive::Document &document : documents) {
            const QString saved = QDir(folder.dir.path()).filePath(document.fileName);
            QVERIFY2(QFile::exists(saved), qPrintable(document.fileName + " not in " + files(folder).join(", ")));
            QVERIFY2(readFile(saved) == readFile(document.storedFile), qPrintable(document.fileName));
        }
    }

    // Failed before: the card's drag carried only the text "orvex-card-N", which no folder takes.
    void cardOntoAFolder()
    {
        Folder folder;
        QVERIFY(openFolder(folder, false));
        QVERIFY(showTab(kOpen));
        const E2eArchive::Entry entry = archive().entries(kOpen).value(0);
        const E2eNode heading = waitForNode(QStringLiteral("heading"), QString::number(entry.docId), 10000, currentBoard());
        QVERIFY(heading.isValid() && scrollIntoView(heading));
        input().drag(centreOf(heading), folder.area.center(), 500);

        const E2eArchive::Document document = archive().document(entry.docId);
        const QString saved = QDir(folder.dir.path()).filePath(document.fileName);
        E2E_VERIFY2_SOON(QFile::exists(saved), 30000, qPrintable(files(folder).join(", ")));
        QVERIFY(readFile(saved) == readFile(document.storedFile));
        QCOMPARE(files(folder).size(), 1);
    }

    // Failed before: no drag started from the list.
    void orvexUrlsAreFetched()
    {
        Folder folder;
        const QList<E2eArchive::Document> documents = dragRowsOnto(folder, 1, true);
        QCOMPARE(documents.size(), 1);

        // Named by document id and remark (the list gives its title as remark).
        E2E_VERIFY2_SOON(files(folder).size() == 1, 30000, qPrintable(files(folder).join(", ")));
        const QString name = files(folder).constFirst();
        QVERIFY2(name.startsWith(QString::number(documents.first().id) + QLatin1Char('_')), qPrintable(name));
        QVERIFY(readFile(QDir(folder.dir.path()).filePath(name)) == readFile(documents.first().storedFile));
    }
};

QTEST_MAIN(tst_E2eDragOut)
#include "tst_e2e_dragout.moc"
