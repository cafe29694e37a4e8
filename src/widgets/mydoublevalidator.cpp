#include "mydoublevalidator.h"

#include <QRegularExpression>

#include <cmath>

MyDoubleValidator::MyDoubleValidator(QObject *parent)
    : QDoubleValidator(parent)
{
    setNotation(StandardNotation);
}

MyDoubleValidator::MyDoubleValidator(double bottom, double top, int decimals, QObject *parent)
    : QDoubleValidator(bottom, top, decimals, parent)
{
    setNotation(StandardNotation);
}

double MyDoubleValidator::toDouble(const QString &text, bool *ok)
{
    static const QRegularExpression number(QStringLiteral("^\\s*[+-]?(\\d+([.,]\\d*)?|[.,]\\d+)\\s*$"));
    if (!number.match(text).hasMatch()) {
        if (ok)
            *ok = false;
        return 0.0;
    }
    QString normalized = text.trimmed();
    normalized.replace(QLatin1Char(','), QLatin1Char('.'));
    return normalized.toDouble(ok);
}

QValidator::State MyDoubleValidator::validate(QString &input, int &pos) const
{
    Q_UNUSED(pos)
    // An empty field is a cleared value, not a number still being typed.
    if (input.isEmpty())
        return Acceptable;
    static const QRegularExpression partial(QStringLiteral("^[+-]?\\d*([.,](\\d*))?$"));
    const QRegularExpressionMatch match = partial.match(input);
    if (!match.hasMatch())
        return Invalid;
    if (input.startsWith(QLatin1Char('-')) && bottom() >= 0.0)
        return Invalid;
    if (match.captured(2).size() > decimals())
        return Invalid;
    bool ok = false;
    const double value = toDouble(input, &ok);
    if (!ok)
        return Intermediate; // empty, a sign or a separator alone
    if (value >= bottom() && value <= top())
        return Acceptable;
    // More digits only make the magnitude larger: past the range there is no way back.
    const double limit = qMax(std::fabs(bottom()), std::fabs(top()));
    if (std::fabs(value) > limit)
        return Invalid;
    return Intermediate;
}

void MyDoubleValidator::fixup(QString &input) const
{
    bool ok = false;
    double value = toDouble(input, &ok);
    if (!ok)
        return;
    value = qBound(bottom(), value, top());
    input = QString::number(value, 'f', decimals());
    if (input.contains(QLatin1Char('.'))) {
        while (input.endsWith(QLatin1Char('0')))
            input.chop(1);
        if (input.endsWith(QLatin1Char('.')))
            input.chop(1);
    }
}
