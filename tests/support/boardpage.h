#pragma once

#include <QString>
#include <QVariant>

class QWebEngineView;
class orvexwbwebview;

// The card page of a board under test, reached through scripts.
namespace BoardPage {

constexpr int Timeout = 20000; // page loads and scripts on a loaded machine

// Runs a script in the page and waits for its result; invalid when none came.
QVariant run(QWebEngineView *view, const QString &script);
// Shows the board and loads the card page into it the way the tab set does,
// then sends the labels and the writeable flag; false when the page did not load.
bool load(orvexwbwebview *board, bool writeable = true);
// Runs one background update to its end (after the one running, if any), and
// lets every script it sent reach the page.
void runUpdate(orvexwbwebview *board);

} // namespace BoardPage
