#include "boardpage.h"

#include "orvexwbwebview.h"

#include <QSignalSpy>
#include <QTest>
#include <QWebEnginePage>
#include <QWebEngineSettings>

#include <memory>

QVariant BoardPage::run(QWebEngineView *view, const QString &script)
{
    // After the scripts the board has queued so far.
    if (auto *board = qobject_cast<orvexwbwebview *>(view))
        board->flushScripts();
    auto state = std::make_shared<QPair<bool, QVariant>>(false, QVariant());
    view->page()->runJavaScript(script, [state](const QVariant &result) { *state = {true, result}; });
    if (!QTest::qWaitFor([state] { return state->first; }, Timeout))
        qWarning() << "script did not answer:" << script;
    return state->second;
}

bool BoardPage::load(orvexwbwebview *board, bool writeable)
{
    board->setContextMenuPolicy(Qt::CustomContextMenu);
    board->page()->settings()->setAttribute(QWebEngineSettings::JavascriptEnabled, true);
    board->resize(1000, 700);
    board->show();
    QSignalSpy loaded(board, &QWebEngineView::loadFinished);
    board->load(QUrl(QStringLiteral("qrc:/material/card-webchannel.html")));
    if (!loaded.wait(Timeout) || !loaded.first().first().toBool()) {
        qWarning() << "card page did not load";
        return false;
    }
    board->updateTranslations();
    board->setWriteable(writeable);
    return true;
}

void BoardPage::runUpdate(orvexwbwebview *board)
{
    const auto idle = [board] { return !board->isUpdating(); };
    if (!QTest::qWaitFor(idle, Timeout))
        qWarning() << "an earlier update did not end";
    board->updateCards();
    if (!QTest::qWaitFor(idle, Timeout))
        qWarning() << "the update did not end";
    QCoreApplication::processEvents(); // the signals the job queued on its way
    run(board, QStringLiteral("null")); // answers after every script sent before it
}
