#pragma once

#include <QRect>

class QWidget;

// Shows the workbench's hover widget (the clipboard chooser) while the user
// drags documents: a frameless window beside the dock, so the dragged
// documents pass over it on their way to the boards.
class OrvexHoverWidgetPresenter
{
public:
    // Where the hover widget goes: left of the anchor, or right of it when the
    // screen has no room there; as high as the anchor at most, on the screen.
    static QRect placement(const QRect &anchor, const QSize &preferred, const QRect &screen);
    // Places and shows hover beside anchor (any widget, or none: the hover
    // widget's own place); false without a hover widget.
    static bool present(QWidget *hover, const QWidget *anchor);
};
