#pragma once

#include <QString>

// Text search as the recipes scrape pages: positions count from 1, 0 means
// "not found", searches ignore case. An impossible position or length is a
// run-time failure (RuntimeFailure "Invalid procedure call or argument"), which
// the recipe's guard turns into its outcome.
namespace TextPos {

// The first `what` in `text` at or after `start`; 0 when there is none or
// `start` lies behind the text. An empty `what` is found at `start`.
// Throws for a start before 1.
int find(const QString &text, const QString &what, int start = 1);

// The last `what` that ends at or before `start` (-1: the end of the text);
// 0 when there is none or `start` lies behind the text. An empty `what` is
// found at `start`. Throws for a start of 0 or below -1.
int findBack(const QString &text, const QString &what, int start = -1);

// find() for a recipe that keeps its positions in 16 bits: a marker found
// behind position 32,767 is a run-time failure ("Overflow").
int find16(const QString &text, const QString &what, int start = 1);

// True where `what` occurs anywhere in `text`, ignoring case.
bool contains(const QString &text, const QString &what);

// `length` characters beginning at `start`, fewer where the text ends first.
// Throws for a start before 1 or a negative length.
QString span(const QString &text, int start, int length);
// Everything from `start` on. Throws for a start before 1.
QString spanToEnd(const QString &text, int start);

// The plain shapes of scraping. Where a recipe's arithmetic departs from
// them on purpose, the recipe writes its positions out.
//
// What stands behind the last `what`, ignoring case; a null text where there
// is none.
QString afterLast(const QString &text, const QString &what);
// What stands between the first `open` at or after `start` and the next
// `close` behind it, ignoring case; a null text where either is missing.
QString between(const QString &text, const QString &open, const QString &close, int start = 1);

// The text without the blanks at either end; tabs and line breaks stay.
QString trimBlanks(const QString &text);

// Reads as a number: blanks around it, an optional sign, digits with at most
// one decimal point, an optional exponent. " 3" and "123 " do, " " and "3 4"
// don't.
bool isNumeric(const QString &text);
// The value of a text for which isNumeric() holds; throws otherwise
// ("Type mismatch").
double toNumber(const QString &text);

} // namespace TextPos
