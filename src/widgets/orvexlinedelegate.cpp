#include "orvexlinedelegate.h"

#include "mydoublevalidator.h"

#include <QCompleter>
#include <QLineEdit>

#include <limits>

OrvexLineDelegate::OrvexLineDelegate(QObject *parent)
    : OrvexLineDelegate({}, 0, false, parent)
{
}

OrvexLineDelegate::OrvexLineDelegate(const QStringList &completions, int maxLength, bool numeric,
                                     QObject *parent)
    : OrvexDelegate(completions, maxLength, parent),
      m_numeric(numeric),
      m_bottom(-std::numeric_limits<double>::max()),
      m_top(std::numeric_limits<double>::max())
{
}

void OrvexLineDelegate::setNumeric(bool numeric)
{
    m_numeric = numeric;
}

bool OrvexLineDelegate::isNumeric() const
{
    return m_numeric;
}

void OrvexLineDelegate::setNumericRange(double bottom, double top, int decimals)
{
    m_bottom = qMin(bottom, top);
    m_top = qMax(bottom, top);
    m_decimals = qMax(0, decimals);
}

QWidget *OrvexLineDelegate::createEditor(QWidget *parent, const QStyleOptionViewItem &option,
                                         const QModelIndex &index) const
{
    Q_UNUSED(option)
    Q_UNUSED(index)
    auto *editor = new QLineEdit(parent);
    editor->setFrame(false);
    if (maxLength() > 0)
        editor->setMaxLength(maxLength());
    if (!completions().isEmpty()) {
        auto *completer = new QCompleter(completions(), editor);
        completer->setCaseSensitivity(Qt::CaseInsensitive);
        completer->setFilterMode(Qt::MatchStartsWith);
        editor->setCompleter(completer);
    }
    if (m_numeric)
        editor->setValidator(new MyDoubleValidator(m_bottom, m_top, m_decimals, editor));
    return editor;
}

void OrvexLineDelegate::setEditorData(QWidget *editor, const QModelIndex &index) const
{
    auto *edit = qobject_cast<QLineEdit *>(editor);
    if (!edit) {
        OrvexDelegate::setEditorData(editor, index);
        return;
    }
    const QVariant value = index.data(Qt::EditRole);
    if (m_numeric && value.isValid() && !value.toString().isEmpty()) {
        bool ok = false;
        const double number = MyDoubleValidator::toDouble(value.toString(), &ok);
        edit->setText(ok ? QString::number(number, 'g', 15) : QString());
    } else {
        edit->setText(value.toString());
    }
}

void OrvexLineDelegate::setModelData(QWidget *editor, QAbstractItemModel *model,
                                     const QModelIndex &index) const
{
    auto *edit = qobject_cast<QLineEdit *>(editor);
    if (!edit) {
        OrvexDelegate::setModelData(editor, model, index);
        return;
    }
    if (!m_numeric) {
        model->setData(index, edit->text(), Qt::EditRole);
        return;
    }
    QString text = edit->text();
    if (text.trimmed().isEmpty()) {
        model->setData(index, QVariant(), Qt::EditRole);
        return;
    }
    if (!edit->hasAcceptableInput() && edit->validator())
        edit->validator()->fixup(text);
    bool ok = false;
    const double number = MyDoubleValidator::toDouble(text, &ok);
    if (ok && number >= m_bottom && number <= m_top)
        model->setData(index, number, Qt::EditRole);
}
