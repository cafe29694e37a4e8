#include "orvexdelegate.h"

#include "orvexcompletertextedit.h"

OrvexDelegate::OrvexDelegate(QObject *parent)
    : QStyledItemDelegate(parent)
{
}

OrvexDelegate::OrvexDelegate(const QStringList &completions, int maxLength, QObject *parent)
    : QStyledItemDelegate(parent), m_completions(completions), m_maxLength(qMax(0, maxLength))
{
}

void OrvexDelegate::setCompletions(const QStringList &completions)
{
    m_completions = completions;
}

QStringList OrvexDelegate::completions() const
{
    return m_completions;
}

void OrvexDelegate::setMaxLength(int length)
{
    m_maxLength = qMax(0, length);
}

int OrvexDelegate::maxLength() const
{
    return m_maxLength;
}

QWidget *OrvexDelegate::createEditor(QWidget *parent, const QStyleOptionViewItem &option,
                                     const QModelIndex &index) const
{
    Q_UNUSED(option)
    Q_UNUSED(index)
    auto *editor = new orvexcompletertextedit(parent);
    editor->setCompletions(m_completions);
    editor->setMaxLength(m_maxLength);
    editor->setFrameShape(QFrame::NoFrame);
    return editor;
}

void OrvexDelegate::setEditorData(QWidget *editor, const QModelIndex &index) const
{
    if (auto *edit = qobject_cast<orvexcompletertextedit *>(editor)) {
        edit->setPlainText(index.data(Qt::EditRole).toString());
        edit->moveCursor(QTextCursor::End);
        return;
    }
    QStyledItemDelegate::setEditorData(editor, index);
}

void OrvexDelegate::setModelData(QWidget *editor, QAbstractItemModel *model,
                                 const QModelIndex &index) const
{
    if (auto *edit = qobject_cast<orvexcompletertextedit *>(editor)) {
        model->setData(index, edit->toPlainText(), Qt::EditRole);
        return;
    }
    QStyledItemDelegate::setModelData(editor, model, index);
}

void OrvexDelegate::updateEditorGeometry(QWidget *editor, const QStyleOptionViewItem &option,
                                         const QModelIndex &index) const
{
    Q_UNUSED(index)
    QRect rect = option.rect;
    // A text edit needs more than one line to be usable.
    if (qobject_cast<orvexcompletertextedit *>(editor))
        rect.setHeight(qMax(rect.height(), editor->fontMetrics().lineSpacing() * 4));
    editor->setGeometry(rect);
}
