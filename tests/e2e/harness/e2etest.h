#pragma once

#include "e2eaccessibility.h"
#include "e2earchive.h"
#include "e2edesktop.h"
#include "e2einput.h"
#include "e2eproduct.h"

#include <QObject>
#include <QRect>
#include <QScopedPointer>
#include <QTemporaryDir>
#include <QtTest>

#include <functional>

// Base of every real-input test: a private desktop (E2eDesktop), the product
// on a fresh archive (E2eProduct), the accessibility tree to find widgets
// (E2eAccessibility), real input (E2eInput) and the archive to check results
// (E2eArchive). When a test function fails, cleanup() keeps a screenshot of the
// whole screen and the programs' logs in the artefact folder and prints where.
//
//   class tst_Flow : public E2eTest {
//       Q_OBJECT
//   private slots:
//       void initTestCase() { QVERIFY2(startProduct(), qPrintable(lastError())); }
//       void aDrop() { input().drag(rowPoint(id), boardPoint()); E2E_VERIFY_SOON(archive().entries(..).size() == 7, 20000); }
//   };
class E2eTest : public QObject
{
    Q_OBJECT

public:
    explicit E2eTest(QObject *parent = nullptr);
    ~E2eTest() override;

protected:
    // Starts the desktop, then the Connection Manager and the host on the
    // archive folder (a fresh one by default); prepare runs on the folder
    // before the host first opens it. Waits until the host's window, its
    // document list and the workbench's first board are on the screen.
    bool startProduct(const std::function<bool(E2eArchive &)> &prepare = {});
    // Starts the host again on the same archive (after it was quit).
    bool restartHost();
    // Starts the desktop and the Connection Manager on an archive the test set
    // up itself (a server address), without a host: the test starts its
    // hosts (E2eProduct::startHost) and picks the one it works with (useHost).
    bool startDesktop(const QString &archive);
    // Works from now on with the host whose main window's title holds
    // titlePart (of several on the desktop); false when there is none.
    bool useHost(const QString &titlePart, int timeoutMs = 120000);
    void stopAll();
    QString lastError() const { return m_error; }

    E2eDesktop &desktop() { return m_desktop; }
    E2eProduct &product() { return *m_product; }
    E2eAccessibility &tree() { return m_tree; }
    E2eInput &input() { return *m_input; }
    E2eArchive &archive() { return *m_archive; }

    // Polls condition until it holds or timeoutMs have passed.
    static bool waitFor(const std::function<bool()> &condition, int timeoutMs);

    // The host's top accessibility object (re-read after a restart).
    E2eNode host();
    // The first object with this role and name below within (default: the host) once it is there.
    E2eNode waitForNode(const QString &role, const QString &name, int timeoutMs = 20000, E2eNode within = {});
    // The centre of an object, checked to be inside the screen.
    static QPoint centre(const QRect &box) { return box.center(); }
    QPoint centreOf(const E2eNode &node) { return m_tree.extents(node).center(); }

    // The host's pieces, found by their accessible names and roles.
    E2eNode statusBar();
    QString statusText(); // the status bar's current message
    // Waits for a status message that contains text; false on timeout.
    bool waitForStatus(const QString &text, int timeoutMs = 20000);
    E2eNode documentTable();
    // The ID cell of the document's row in the list, which must be in view.
    E2eNode documentCell(qlonglong docId);
    QPoint rowPoint(qlonglong docId);
    // Selects the rows as a user does: a click on the first, Ctrl+click on the others.
    void selectRows(const QList<qlonglong> &docIds);
    E2eNode tab(const QString &title);
    bool isCurrentTab(const QString &title);
    // Brings the tab to the front with the mouse (scrolling the tab bar to it
    // first if need be); true once it is the current tab.
    bool showTab(const QString &title);
    // Scrolls the tab bar with its buttons until the tab is in view, without choosing it.
    bool revealTab(const QString &title);
    // The web page of the clipboard tab shown at present.
    E2eNode currentBoard();
    // A point on the empty part of the current board, below its cards.
    QPoint boardDropPoint();
    // The card of a document on the current board (its heading), invalid if none.
    E2eNode card(qlonglong docId);
    // Whether the object lies wholly inside the current board's visible area.
    bool isOnBoard(const E2eNode &node);
    // Scrolls the current board with the mouse wheel until the object is in
    // view; false if it does not get there.
    bool scrollIntoView(const E2eNode &node);
    // A button or other object inside the card of docId, by role and name.
    E2eNode cardPart(qlonglong docId, const QString &role, const QString &name);

    QString artefactFolder() const;

protected slots:
    // Run by the test framework after each test function, and once at the end:
    // a failed test function leaves a screenshot and the logs; everything started stops.
    void cleanup();
    void cleanupTestCase() { stopAll(); }

private:
    // Copies the desktop's programs' logs into the artefact folder.
    void keepLogs(const QString &stem);

    QString m_error;
    E2eDesktop m_desktop;
    QTemporaryDir m_scratch;
    QScopedPointer<E2eProduct> m_product;
    QScopedPointer<E2eInput> m_input;
    QScopedPointer<E2eArchive> m_archive;
    E2eAccessibility m_tree;
    E2eNode m_host;
    bool m_hostChosen = false; // by useHost(): not looked up by name again
};

// Fails the test function unless condition holds within timeoutMs.
#define E2E_VERIFY_SOON(condition, timeoutMs) \
    QVERIFY2(E2eTest::waitFor([&] { return bool(condition); }, timeoutMs), #condition)
#define E2E_VERIFY2_SOON(condition, timeoutMs, message) \
    QVERIFY2(E2eTest::waitFor([&] { return bool(condition); }, timeoutMs), message)
