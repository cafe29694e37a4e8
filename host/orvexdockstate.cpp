#include "orvexdockstate.h"

#include "orvexboardprobe.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QLabel>
#include <QSaveFile>
#include <QSharedPointer>
#include <QTabBar>
#include <QTabWidget>
#include <QWebEngineView>

namespace {
struct Collection
{
    QJsonArray tabs;
    QJsonObject state;
    int outstanding = 0;
    std::function<void(const QJsonObject &)> done;

    void finishOne()
    {
        if (--outstanding > 0)
            return;
        state.insert(QStringLiteral("tabs"), tabs);
        done(state);
    }
};

QWebEngineView *boardOf(QWidget *page)
{
    if (auto *view = qobject_cast<QWebEngineView *>(page))
        return view;
    return page ? page->findChild<QWebEngineView *>() : nullptr;
}
} // namespace

void OrvexDockState::collect(QWidget *dock, QWidget *hoverWidget,
                             const std::function<void(const QJsonObject &)> &done)
{
    auto collection = QSharedPointer<Collection>::create();
    collection->done = done;
    // One count for the walk itself, so nothing finishes while tabs are added.
    collection->outstanding = 1;

    QJsonArray labels;
    if (hoverWidget) {
        for (const QLabel *label : hoverWidget->findChildren<QLabel *>())
            labels.append(label->text());
    }
    collection->state.insert(QStringLiteral("chooser"), labels);

    QTabWidget *tabs = dock ? dock->findChild<QTabWidget *>() : nullptr;
    const int count = tabs ? tabs->count() : 0;
    for (int i = 0; i < count; ++i)
        collection->tabs.append(QJsonObject());
    for (int i = 0; i < count; ++i) {
        const QWidget *close = tabs->tabBar()->tabButton(i, QTabBar::RightSide);
        QJsonObject tab{{QStringLiteral("title"), tabs->tabText(i)},
                        {QStringLiteral("locked"), !tabs->tabIcon(i).isNull()},
                        {QStringLiteral("closable"), close && !close->isHidden()},
                        {QStringLiteral("enabled"), tabs->isTabEnabled(i)},
                        {QStringLiteral("current"), tabs->currentIndex() == i}};
        QWebEngineView *board = boardOf(tabs->widget(i));
        if (!board) {
            collection->tabs[i] = tab;
            continue;
        }
        ++collection->outstanding;
        OrvexBoardProbe::probe(board, [collection, i, tab](const OrvexBoardState &board) mutable {
            tab.insert(QStringLiteral("cards"), board.cards);
            tab.insert(QStringLiteral("thumbnails"), board.thumbnails);
            collection->tabs[i] = tab;
            collection->finishOne();
        });
    }
    collection->finishOne();
}

bool OrvexDockState::write(const QJsonObject &state, const QString &fileName, QString *error)
{
    QSaveFile file(fileName);
    if (!file.open(QIODevice::WriteOnly) || file.write(QJsonDocument(state).toJson()) < 0 || !file.commit()) {
        if (error)
            *error = tr("Could not write the dock's state %1: %2")
                         .arg(QDir::toNativeSeparators(fileName), file.errorString());
        return false;
    }
    return true;
}
