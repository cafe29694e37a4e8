#include "orvexhoverwidgetpresenter.h"

#include <QGuiApplication>
#include <QMetaObject>
#include <QScreen>
#include <QWidget>

QRect OrvexHoverWidgetPresenter::placement(const QRect &anchor, const QSize &preferred, const QRect &screen)
{
    const int width = qMin(preferred.width(), screen.width());
    const int height = qMin(qMin(preferred.height(), anchor.height()), screen.height());
    int x = anchor.left() - width;
    if (x < screen.left())
        x = anchor.right() + 1;
    x = qBound(screen.left(), x, screen.right() + 1 - width);
    const int y = qBound(screen.top(), anchor.top(), screen.bottom() + 1 - height);
    return QRect(x, y, width, height);
}

bool OrvexHoverWidgetPresenter::present(QWidget *hover, const QWidget *anchor)
{
    if (!hover)
        return false;
    if (anchor && anchor->isVisible()) {
        const QRect area(anchor->mapToGlobal(QPoint(0, 0)), anchor->size());
        const QScreen *screen = anchor->screen() ? anchor->screen() : QGuiApplication::primaryScreen();
        // As tall as its contents want (a few labels make a short strip), as
        // wide as its form was laid out.
        const QSize preferred(qMax(hover->width(), hover->sizeHint().width()),
                              qMax(hover->sizeHint().height(), hover->minimumSizeHint().height()));
        hover->setGeometry(placement(area, preferred, screen ? screen->availableGeometry() : area));
    }
    // By name, so that a hover widget's own show() slot runs (the chooser
    // starts its hide timer there); a plain widget gets QWidget::show().
    QMetaObject::invokeMethod(hover, "show");
    hover->raise();
    return hover->isVisible();
}
