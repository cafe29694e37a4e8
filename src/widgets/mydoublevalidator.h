#pragma once

#include "orvexworkbenchglobal.h"

#include <QDoubleValidator>

// A number validator for typed input that accepts both "," and "." as the
// decimal separator whatever the locale, refuses letters and exponents, and
// refuses a keystroke that can no longer lead into the range (too many
// decimals, a minus sign when negative numbers are out of range, a number
// already beyond the range in magnitude). An empty field is acceptable: it
// clears the value.
class ORVEXWORKBENCH_EXPORT MyDoubleValidator : public QDoubleValidator
{
    Q_OBJECT

public:
    explicit MyDoubleValidator(QObject *parent = nullptr);
    MyDoubleValidator(double bottom, double top, int decimals, QObject *parent = nullptr);

    State validate(QString &input, int &pos) const override;
    // Rounds to the allowed decimals and clamps into the range.
    void fixup(QString &input) const override;

    // Parses text with either decimal separator; ok is false for anything else.
    static double toDouble(const QString &text, bool *ok = nullptr);
};
