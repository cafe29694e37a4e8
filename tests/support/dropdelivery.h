#pragma once

#include <QApplication>
#include <QDropEvent>
#include <QWidget>

// Drag enter, move and drop as a drag over target delivers them; whether the move was accepted.
inline bool deliverDrop(QWidget *target, const QMimeData *data, QPoint pos = {300, 300})
{
    QDragEnterEvent enter(pos, Qt::CopyAction, data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(target, &enter);
    QDragMoveEvent move(pos, Qt::CopyAction, data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(target, &move);
    QDropEvent drop(pos, Qt::CopyAction, data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(target, &drop);
    return move.isAccepted();
}
