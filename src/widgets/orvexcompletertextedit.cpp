#include "orvexcompletertextedit.h"

#include <QAbstractItemView>
#include <QCompleter>
#include <QKeyEvent>
#include <QScrollBar>
#include <QStringListModel>

orvexcompletertextedit::orvexcompletertextedit(QWidget *parent)
    : QTextEdit(parent)
{
    setAcceptRichText(false);
    setTabChangesFocus(true);
    connect(this, &QTextEdit::textChanged, this, &orvexcompletertextedit::enforceMaxLength);
}

orvexcompletertextedit::~orvexcompletertextedit() = default;

void orvexcompletertextedit::setCompleter(QCompleter *completer)
{
    if (m_completer)
        m_completer->disconnect(this);
    m_completer = completer;
    if (!m_completer)
        return;
    if (!m_completer->parent())
        m_completer->setParent(this);
    m_completer->setWidget(this);
    m_completer->setCompletionMode(QCompleter::PopupCompletion);
    connect(m_completer, QOverload<const QString &>::of(&QCompleter::activated), this,
            &orvexcompletertextedit::insertCompletion);
}

QCompleter *orvexcompletertextedit::completer() const
{
    return m_completer;
}

void orvexcompletertextedit::setCompletions(const QStringList &words)
{
    if (words.isEmpty()) {
        setCompleter(nullptr);
        return;
    }
    auto *completer = new QCompleter(words, this);
    completer->setCaseSensitivity(Qt::CaseInsensitive);
    completer->setModelSorting(QCompleter::UnsortedModel);
    setCompleter(completer);
}

void orvexcompletertextedit::setMaxLength(int length)
{
    m_maxLength = qMax(0, length);
    enforceMaxLength();
}

int orvexcompletertextedit::maxLength() const
{
    return m_maxLength;
}

void orvexcompletertextedit::setMinimumPrefix(int characters)
{
    m_minimumPrefix = qMax(1, characters);
}

void orvexcompletertextedit::enforceMaxLength()
{
    if (m_limiting || m_maxLength <= 0)
        return;
    const QString text = toPlainText();
    if (text.size() <= m_maxLength)
        return;
    m_limiting = true;
    QTextCursor cursor = textCursor();
    const int position = qMin(cursor.position(), m_maxLength);
    cursor.setPosition(m_maxLength);
    cursor.movePosition(QTextCursor::End, QTextCursor::KeepAnchor);
    cursor.removeSelectedText();
    cursor.setPosition(position);
    setTextCursor(cursor);
    m_limiting = false;
}

QString orvexcompletertextedit::textUnderCursor() const
{
    QTextCursor cursor = textCursor();
    cursor.select(QTextCursor::WordUnderCursor);
    // Only the part of the word left of the cursor is the prefix being typed.
    const int end = textCursor().position();
    if (cursor.selectionEnd() > end)
        cursor.setPosition(end, QTextCursor::KeepAnchor);
    return cursor.selectedText();
}

void orvexcompletertextedit::insertCompletion(const QString &completion)
{
    if (!m_completer || m_completer->widget() != this)
        return;
    QTextCursor cursor = textCursor();
    const int typed = m_completer->completionPrefix().size();
    cursor.movePosition(QTextCursor::Left, QTextCursor::KeepAnchor, typed);
    cursor.insertText(completion);
    setTextCursor(cursor);
}

void orvexcompletertextedit::focusInEvent(QFocusEvent *event)
{
    if (m_completer)
        m_completer->setWidget(this);
    QTextEdit::focusInEvent(event);
}

void orvexcompletertextedit::focusOutEvent(QFocusEvent *event)
{
    QTextEdit::focusOutEvent(event);
    // Opening a popup (the completions, a context menu) is no end of editing.
    if (event->reason() == Qt::PopupFocusReason)
        return;
    if (m_completer)
        m_completer->popup()->hide();
    emit editingFinished();
}

void orvexcompletertextedit::keyPressEvent(QKeyEvent *event)
{
    const bool popupOpen = m_completer && m_completer->popup()->isVisible();
    if (popupOpen) {
        switch (event->key()) {
        case Qt::Key_Enter:
        case Qt::Key_Return:
        case Qt::Key_Tab:
        case Qt::Key_Backtab:
        case Qt::Key_Escape:
            // The completer handles these through its popup.
            event->ignore();
            return;
        default:
            break;
        }
    }

    const bool forced = (event->modifiers() & Qt::ControlModifier) && event->key() == Qt::Key_Space;
    if (!m_completer || !forced)
        QTextEdit::keyPressEvent(event);
    if (!m_completer)
        return;

    const bool modifierOnly = event->text().isEmpty();
    if (!forced && modifierOnly)
        return;

    const QString prefix = textUnderCursor();
    if (!forced && prefix.size() < m_minimumPrefix) {
        m_completer->popup()->hide();
        return;
    }
    if (prefix != m_completer->completionPrefix()) {
        m_completer->setCompletionPrefix(prefix);
        m_completer->popup()->setCurrentIndex(m_completer->completionModel()->index(0, 0));
    }
    if (m_completer->completionCount() == 0) {
        m_completer->popup()->hide();
        return;
    }
    QRect rect = cursorRect();
    rect.setWidth(m_completer->popup()->sizeHintForColumn(0)
                  + m_completer->popup()->verticalScrollBar()->sizeHint().width());
    m_completer->complete(rect);
}
