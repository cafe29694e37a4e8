#pragma once

#include <QCoreApplication>
#include <QJsonObject>

#include <functional>

class QWidget;

// What the workbench dock shows, as the user sees it: the clipboard tabs with
// their titles, lock icons and close buttons, the cards and thumbnails on each
// board, and the labels of the clipboard chooser. Read from the widgets and
// the boards' pages, so it tells what is on screen rather than what the
// workbench believes.
class OrvexDockState
{
    Q_DECLARE_TR_FUNCTIONS(OrvexDockState)

public:
    // Answers through done, later, on the GUI thread.
    static void collect(QWidget *dock, QWidget *hoverWidget, const std::function<void(const QJsonObject &)> &done);
    // Writes the state as indented JSON; false with error set when it cannot.
    static bool write(const QJsonObject &state, const QString &fileName, QString *error);
};
