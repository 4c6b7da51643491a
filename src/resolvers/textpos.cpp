#include "resolvers/textpos.h"

#include "list/downloadlist.h"

namespace TextPos {

namespace {

[[noreturn]] void invalidArgument()
{
    throw RuntimeFailure("Invalid procedure call or argument");
}

bool isDigit(QChar c)
{
    return c >= QLatin1Char('0') && c <= QLatin1Char('9');
}

} // namespace

int find(const QString &text, const QString &what, int start)
{
    if (start < 1)
        invalidArgument();
    if (start > text.size())
        return 0;
    if (what.isEmpty())
        return start;
    return int(text.indexOf(what, start - 1, Qt::CaseInsensitive)) + 1;
}

int findBack(const QString &text, const QString &what, int start)
{
    if (start == 0 || start < -1)
        invalidArgument();
    if (start == -1)
        start = int(text.size());
    if (start > text.size())
        return 0;
    if (what.isEmpty())
        return start;
    // The match has to end at or before `start`.
    const qsizetype from = qsizetype(start) - what.size();
    if (from < 0)
        return 0;
    return int(text.lastIndexOf(what, from, Qt::CaseInsensitive)) + 1;
}

int find16(const QString &text, const QString &what, int start)
{
    const int at = find(text, what, start);
    if (at > 32767)
        throw RuntimeFailure("Overflow");
    return at;
}

bool contains(const QString &text, const QString &what)
{
    return text.contains(what, Qt::CaseInsensitive);
}

QString span(const QString &text, int start, int length)
{
    if (start < 1 || length < 0)
        invalidArgument();
    return text.mid(start - 1, length);
}

QString spanToEnd(const QString &text, int start)
{
    if (start < 1)
        invalidArgument();
    return text.mid(start - 1);
}

QString afterLast(const QString &text, const QString &what)
{
    const int at = findBack(text, what);
    return at == 0 ? QString() : spanToEnd(text, at + int(what.size()));
}

QString between(const QString &text, const QString &open, const QString &close, int start)
{
    const int a = find(text, open, start);
    if (a == 0)
        return QString();
    const int from = a + int(open.size());
    const int b = find(text, close, from);
    return b == 0 ? QString() : span(text, from, b - from);
}

QString trimBlanks(const QString &text)
{
    qsizetype begin = 0;
    qsizetype end = text.size();
    while (begin < end && text.at(begin) == QLatin1Char(' '))
        ++begin;
    while (end > begin && text.at(end - 1) == QLatin1Char(' '))
        --end;
    return text.mid(begin, end - begin);
}

bool isNumeric(const QString &text)
{
    const QString t = text.trimmed();
    qsizetype i = 0;
    const qsizetype n = t.size();
    if (i < n && (t.at(i) == QLatin1Char('+') || t.at(i) == QLatin1Char('-')))
        ++i;
    int digits = 0;
    while (i < n && isDigit(t.at(i))) {
        ++i;
        ++digits;
    }
    if (i < n && t.at(i) == QLatin1Char('.')) {
        ++i;
        while (i < n && isDigit(t.at(i))) {
            ++i;
            ++digits;
        }
    }
    if (digits == 0)
        return false;
    if (i < n && (t.at(i) == QLatin1Char('e') || t.at(i) == QLatin1Char('E'))) {
        ++i;
        if (i < n && (t.at(i) == QLatin1Char('+') || t.at(i) == QLatin1Char('-')))
            ++i;
        int exponentDigits = 0;
        while (i < n && isDigit(t.at(i))) {
            ++i;
            ++exponentDigits;
        }
        if (exponentDigits == 0)
            return false;
    }
    return i == n;
}

double toNumber(const QString &text)
{
    if (!isNumeric(text))
        throw RuntimeFailure("Type mismatch");
    bool ok = false;
    const double value = text.trimmed().toDouble(&ok);
    if (!ok)
        throw RuntimeFailure("Overflow");
    return value;
}

} // namespace TextPos
