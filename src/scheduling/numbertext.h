#pragma once

#include <QString>

// The number conversions the queues and their handlers make on list texts.
// A conversion that can't be made throws RuntimeFailure, which the callers either
// treat as the failure of their guard or ignore statement by statement.
namespace NumberText {

// The default text form of a number: up to 15 significant digits, no
// trailing zeros ("45.67", "3", "8.5").
QString fromDouble(double value);

// Rounds to the nearest whole number, ties to the even one.
double roundHalfEven(double value);
// Rounds to the given number of decimals, ties to the even digit.
double roundHalfEven(double value, int decimals);

// A whole number of the given width from a number, rounded half to even;
// fails outside the width's range or for a value that is not a number.
int toInt32(double value);
int toInt16(double value);
// The same from a text holding a number, blanks around it allowed.
int toInt32(const QString &text);
int toInt16(const QString &text);

} // namespace NumberText
