#include "e2etest.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QThread>

E2eTest::E2eTest(QObject *parent)
    : QObject(parent)
{
}

E2eTest::~E2eTest()
{
    stopAll();
}

bool E2eTest::waitFor(const std::function<bool()> &condition, int timeoutMs)
{
    QDeadlineTimer deadline(timeoutMs);
    for (;;) {
        if (condition())
            return true;
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        QThread::msleep(100);
    }
}

bool E2eTest::startProduct(const std::function<bool(E2eArchive &)> &prepare)
{
    const QString folder = m_scratch.filePath(QStringLiteral("archive"));
    m_archive.reset(new E2eArchive(folder));
    if (prepare) {
        if (!E2eArchive::createSample(folder, &m_error))
            return false;
        if (!prepare(*m_archive)) {
            m_error = QStringLiteral("preparing the archive failed");
            return false;
        }
    }
    return startDesktop(folder) && restartHost();
}

bool E2eTest::startDesktop(const QString &archive)
{
    if (!m_desktop.start(&m_error)) {
        // The desktop's home goes with it; its programs' logs tell why.
        keepLogs(QStringLiteral("%1-start").arg(QLatin1String(metaObject()->className())));
        return false;
    }
    m_product.reset(new E2eProduct(m_desktop, archive));
    m_input.reset(new E2eInput(m_desktop.environment()));
    if (!m_product->startConnectionManager(&m_error))
        return false;
    if (!m_tree.connectTo(m_desktop.accessibilityBusAddress())) {
        m_error = QStringLiteral("no accessibility bus on %1").arg(m_desktop.display());
        return false;
    }
    return true;
}

bool E2eTest::useHost(const QString &titlePart, int timeoutMs)
{
    const bool found = waitFor(
        [&] {
            for (const E2eNode &application : m_tree.applications(QStringLiteral("orvexhost"))) {
                for (const E2eNode &window : m_tree.children(application)) {
                    if (m_tree.name(window).contains(titlePart)) {
                        m_host = application;
                        return true;
                    }
                }
            }
            return false;
        },
        timeoutMs);
    m_hostChosen = found;
    return found;
}

bool E2eTest::restartHost()
{
    m_host = {};
    if (!m_product->startHost(&m_error))
        return false;
    // The first start creates the sample archive: allow for it.
    if (!waitFor([this] { return documentTable().isValid() && currentBoard().isValid(); }, 120000)) {
        m_error = QStringLiteral("the host's window did not come up; see %1").arg(m_product->hostLog());
        return false;
    }
    // The list and the first board's cards are there once the table has rows
    // and the board a card heading.
    if (!waitFor([this] { return tree().find(currentBoard(), QStringLiteral("heading"), {}).isValid(); }, 60000)) {
        m_error = QStringLiteral("the first board showed no cards; see %1").arg(m_product->hostLog());
        return false;
    }
    return true;
}

void E2eTest::stopAll()
{
    if (m_product)
        m_product->stop();
    m_desktop.stop();
}

E2eNode E2eTest::host()
{
    if (m_hostChosen)
        return m_host;
    if (!m_host.isValid() || m_tree.name(m_host).isEmpty())
        m_host = m_tree.application(QStringLiteral("orvexhost"));
    return m_host;
}

E2eNode E2eTest::waitForNode(const QString &role, const QString &name, int timeoutMs, E2eNode within)
{
    E2eNode found;
    waitFor(
        [&] {
            found = m_tree.find(within.isValid() ? within : host(), role, name);
            return found.isValid() && !m_tree.extents(found).isEmpty()
                && m_tree.hasState(found, E2eAccessibility::Showing);
        },
        timeoutMs);
    return found;
}

E2eNode E2eTest::statusBar()
{
    return m_tree.find(host(), QStringLiteral("status bar"), {});
}

QString E2eTest::statusText()
{
    return m_tree.name(statusBar());
}

bool E2eTest::waitForStatus(const QString &text, int timeoutMs)
{
    return waitFor([&] { return statusText().contains(text); }, timeoutMs);
}

E2eNode E2eTest::documentTable()
{
    return m_tree.find(host(), QStringLiteral("table"), {});
}

E2eNode E2eTest::documentCell(qlonglong docId)
{
    const E2eNode table = documentTable();
    const QRect view = m_tree.extents(table);
    const QString id = QString::number(docId);
    for (const E2eNode &cell : m_tree.findAll(table, QStringLiteral("cell"), id)) {
        if (view.contains(m_tree.extents(cell)))
            return cell;
    }
    return {};
}

QPoint E2eTest::rowPoint(qlonglong docId)
{
    const E2eNode cell = documentCell(docId);
    return cell.isValid() ? centreOf(cell) : QPoint();
}

void E2eTest::selectRows(const QList<qlonglong> &docIds)
{
    if (docIds.isEmpty())
        return;
    input().click(rowPoint(docIds.first()));
    if (docIds.size() == 1)
        return;
    input().keyDown(QStringLiteral("ctrl"));
    for (int i = 1; i < docIds.size(); ++i)
        input().click(rowPoint(docIds.at(i)));
    input().keyUp(QStringLiteral("ctrl"));
}

E2eNode E2eTest::tab(const QString &title)
{
    return m_tree.find(host(), QStringLiteral("page tab"), title);
}

bool E2eTest::isCurrentTab(const QString &title)
{
    // Qt marks the current tab of a tab bar as the focused one.
    return m_tree.hasState(tab(title), E2eAccessibility::Focused);
}

bool E2eTest::showTab(const QString &title)
{
    QRect target;
    if (revealTab(title)) {
        target = m_tree.extents(tab(title));
    } else {
        // Once tabs were removed, the tab bar may report no scroll button
        // (Qt's accessible tab bar keeps children by position); a tab partly
        // in view is chosen by its visible part, and the bar scrolls to it.
        const E2eNode node = tab(title);
        target = m_tree.extents(node) & m_tree.extents(m_tree.parent(node));
        if (target.width() < 8)
            return false;
    }
    // A second click soon after the first would be a double click, which renames.
    if (!isCurrentTab(title)) {
        input().click(target.center());
        if (!waitFor([&] { return isCurrentTab(title); }, 10000))
            return false;
    }
    // A tab's page is loaded when the tab is first shown.
    return waitFor([&] { return currentBoard().isValid(); }, 30000);
}

bool E2eTest::revealTab(const QString &title)
{
    E2eNode node = waitForNode(QStringLiteral("page tab"), title);
    if (!node.isValid())
        return false;
    // Tabs that do not fit are reached with the tab bar's scroll buttons.
    const QRect bar = m_tree.extents(m_tree.parent(node));
    for (int i = 0; i < 20 && !bar.contains(m_tree.extents(node)); ++i) {
        const bool right = m_tree.extents(node).right() > bar.right();
        const E2eNode button = m_tree.find(m_tree.parent(node), QStringLiteral("push button"),
                                           right ? QStringLiteral("Scroll Right") : QStringLiteral("Scroll Left"));
        if (!button.isValid())
            return false;
        input().click(centreOf(button));
    }
    return bar.contains(m_tree.extents(node));
}

E2eNode E2eTest::currentBoard()
{
    const QList<E2eNode> pages = m_tree.findAll(host(), QStringLiteral("web document"), {});
    // Pages of hidden tabs still report their size; the tab's own widget does not.
    for (const E2eNode &page : pages) {
        if (!m_tree.extents(page).isEmpty() && !m_tree.extents(m_tree.parent(page)).isEmpty()
            && m_tree.hasState(page, E2eAccessibility::Showing))
            return page;
    }
    return {};
}

QPoint E2eTest::boardDropPoint()
{
    const QRect page = m_tree.extents(currentBoard());
    return page.isEmpty() ? QPoint() : QPoint(page.center().x(), page.bottom() - 30);
}

E2eNode E2eTest::card(qlonglong docId)
{
    return m_tree.find(currentBoard(), QStringLiteral("heading"), QString::number(docId));
}

bool E2eTest::isOnBoard(const E2eNode &node)
{
    const QRect box = m_tree.extents(node);
    return !box.isEmpty() && m_tree.extents(currentBoard()).contains(box);
}

bool E2eTest::scrollIntoView(const E2eNode &node)
{
    const QRect page = m_tree.extents(currentBoard());
    for (int i = 0; i < 40 && !isOnBoard(node); ++i) {
        const QRect box = m_tree.extents(node);
        if (box.isEmpty())
            return false;
        input().click(page.center(), box.top() < page.top() ? 4 : 5); // wheel up or down
        QTest::qWait(150);
    }
    return isOnBoard(node);
}

E2eNode E2eTest::cardPart(qlonglong docId, const QString &role, const QString &name)
{
    const E2eNode heading = card(docId);
    return heading.isValid() ? m_tree.find(m_tree.parent(heading), role, name) : E2eNode();
}

QString E2eTest::artefactFolder() const
{
    return qEnvironmentVariable("ORVEX_E2E_ARTEFACTS", QDir::current().filePath(QStringLiteral("e2e-artefacts")));
}

void E2eTest::cleanup()
{
    if (!QTest::currentTestFailed())
        return;
    QString stem = QStringLiteral("%1-%2").arg(QLatin1String(metaObject()->className()),
                                               QLatin1String(QTest::currentTestFunction()));
    if (QTest::currentDataTag())
        stem += QLatin1Char('-') + QString::fromUtf8(QTest::currentDataTag()).replace(QLatin1Char(' '), QLatin1Char('_'));
    QDir().mkpath(artefactFolder());
    const QString shot = QDir(artefactFolder()).filePath(stem + QStringLiteral(".png"));
    if (m_desktop.screenshot(shot))
        qInfo("e2e: screenshot of the failure: %s", qPrintable(shot));
    else
        qInfo("e2e: no screenshot could be taken of %s", qPrintable(m_desktop.display()));
    QFile outline(QDir(artefactFolder()).filePath(stem + QStringLiteral("-accessibility.txt")));
    if (outline.open(QIODevice::WriteOnly)) {
        outline.write(m_tree.dump(host()).toUtf8());
        E2eNode table = documentTable();
        outline.write("\nFirst cells of the document list:\n");
        const QList<E2eNode> cells = m_tree.findAll(table, QStringLiteral("cell"), {}, 14);
        for (const E2eNode &cell : cells)
            outline.write(m_tree.dump(cell, 0).toUtf8());
        qInfo("e2e: accessibility tree: %s", qPrintable(outline.fileName()));
    }
    keepLogs(stem);
}

void E2eTest::keepLogs(const QString &stem)
{
    QDir().mkpath(artefactFolder());
    // Every program of the desktop logs into its home folder.
    const QFileInfoList logs = QDir(m_desktop.home()).entryInfoList({QStringLiteral("*.log")}, QDir::Files);
    for (const QFileInfo &log : logs) {
        const QString target = QDir(artefactFolder()).filePath(stem + QLatin1Char('-') + log.fileName());
        QFile::remove(target);
        if (QFile::copy(log.filePath(), target))
            qInfo("e2e: log of %s: %s", qPrintable(log.baseName()), qPrintable(target));
    }
}
