#pragma once

#include "orvexworkbenchglobal.h"

#include <QTextEdit>

class QCompleter;

// A plain-text edit that offers completions for the word under the cursor
// while the user types (or on Ctrl+Space) and can limit the text's length.
// Return, Enter and Tab take the highlighted completion while the popup is
// open; Escape closes the popup. editingFinished() is emitted when the edit
// loses the focus, like QLineEdit's.
class ORVEXWORKBENCH_EXPORT orvexcompletertextedit : public QTextEdit
{
    Q_OBJECT

public:
    explicit orvexcompletertextedit(QWidget *parent = nullptr);
    ~orvexcompletertextedit() override;

    // The edit does not take ownership of a completer with another parent.
    void setCompleter(QCompleter *completer);
    QCompleter *completer() const;
    // Convenience: a case-insensitive completer over words.
    void setCompletions(const QStringList &words);

    // 0 = unlimited. Longer text, typed or pasted, is cut to the limit.
    void setMaxLength(int length);
    int maxLength() const;

    // Number of characters of a word before the popup opens by itself.
    void setMinimumPrefix(int characters);

signals:
    void editingFinished();

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

private:
    void insertCompletion(const QString &completion);
    void enforceMaxLength();
    QString textUnderCursor() const;

    QCompleter *m_completer = nullptr;
    int m_maxLength = 0;
    int m_minimumPrefix = 2;
    bool m_limiting = false;
};
