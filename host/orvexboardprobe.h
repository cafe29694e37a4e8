#pragma once

#include <QString>
#include <QVariant>

#include <functional>

class QWebEngineView;
class QWidget;

// What a card board's page shows, read from its DOM.
struct OrvexBoardState
{
    bool answered = false; // false: the page gave no answer (not loaded, or gone)
    bool complete = false; // the document and every image on it have loaded
    int cards = 0;
    int thumbnails = 0; // cards whose image shows a thumbnail the board sent (a data: URL)

    bool finished() const { return answered && complete && thumbnails >= cards; }
};

// Asks a board's page for its state. Works on any web view: a page without
// cards simply reports none.
class OrvexBoardProbe
{
public:
    static QString script();
    static OrvexBoardState parse(const QVariant &answer);
    // Answers through done, later, on the GUI thread; done is called even
    // when the page goes away before it answers.
    static void probe(QWebEngineView *view, const std::function<void(const OrvexBoardState &)> &done);
    // The title of the tab that shows the board, or an empty text.
    static QString tabTitleOf(const QWidget *view);
};
