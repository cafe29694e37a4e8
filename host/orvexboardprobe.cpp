#include "orvexboardprobe.h"

#include <QTabWidget>
#include <QVariantMap>
#include <QWebEnginePage>
#include <QWebEngineView>

QString OrvexBoardProbe::script()
{
    // A card is a section with its entry id; its image "img-" + id holds the
    // thumbnail as a data: URL once the board has sent it, and no source before.
    return QStringLiteral(
        "(function () {"
        " var state = {complete: document.readyState === 'complete', cards: 0, thumbnails: 0};"
        " for (var i = 0; i < document.images.length; ++i)"
        "  if (!document.images[i].complete) state.complete = false;"
        " var cards = document.querySelectorAll('#overview section[data-docsid]');"
        " state.cards = cards.length;"
        " for (var j = 0; j < cards.length; ++j) {"
        "  var img = document.getElementById('img-' + cards[j].getAttribute('data-docsid'));"
        "  var src = img ? (img.getAttribute('src') || '') : '';"
        "  if (src.lastIndexOf('data:', 0) === 0 && img.complete && img.naturalWidth > 0) ++state.thumbnails;"
        " }"
        " return state;"
        "})();");
}

OrvexBoardState OrvexBoardProbe::parse(const QVariant &answer)
{
    OrvexBoardState state;
    if (answer.type() != QVariant::Map)
        return state;
    const QVariantMap map = answer.toMap();
    state.answered = true;
    state.complete = map.value(QStringLiteral("complete")).toBool();
    state.cards = map.value(QStringLiteral("cards")).toInt();
    state.thumbnails = map.value(QStringLiteral("thumbnails")).toInt();
    return state;
}

void OrvexBoardProbe::probe(QWebEngineView *view, const std::function<void(const OrvexBoardState &)> &done)
{
    view->page()->runJavaScript(script(), [done](const QVariant &answer) { done(parse(answer)); });
}

QString OrvexBoardProbe::tabTitleOf(const QWidget *view)
{
    for (const QWidget *ancestor = view; ancestor; ancestor = ancestor->parentWidget()) {
        const auto *tabs = qobject_cast<const QTabWidget *>(ancestor);
        if (!tabs)
            continue;
        for (int i = 0; i < tabs->count(); ++i) {
            const QWidget *page = tabs->widget(i);
            if (page == view || page->isAncestorOf(view))
                return tabs->tabText(i);
        }
    }
    return {};
}
