#include "scheduling/numbertext.h"

#include "list/downloadlist.h"

#include <cmath>
#include <limits>

namespace NumberText {

namespace {

double parse(const QString &text)
{
    bool ok = false;
    const double value = text.trimmed().toDouble(&ok);
    if (!ok)
        throw RuntimeFailure("Type mismatch");
    return value;
}

int checkedRound(double value, double low, double high)
{
    if (!std::isfinite(value))
        throw RuntimeFailure("Overflow");
    const double rounded = roundHalfEven(value);
    if (rounded < low || rounded > high)
        throw RuntimeFailure("Overflow");
    return int(rounded);
}

} // namespace

QString fromDouble(double value)
{
    if (value == 0)
        return QStringLiteral("0"); // no "-0"
    return QString::number(value, 'g', 15);
}

double roundHalfEven(double value)
{
    const double down = std::floor(value);
    const double fraction = value - down;
    if (fraction > 0.5)
        return down + 1;
    if (fraction < 0.5)
        return down;
    return std::fmod(down, 2.0) == 0 ? down : down + 1;
}

double roundHalfEven(double value, int decimals)
{
    const double scale = std::pow(10.0, decimals);
    return roundHalfEven(value * scale) / scale;
}

int toInt32(double value)
{
    return checkedRound(value, std::numeric_limits<qint32>::min(),
                        std::numeric_limits<qint32>::max());
}

int toInt16(double value)
{
    return checkedRound(value, std::numeric_limits<qint16>::min(),
                        std::numeric_limits<qint16>::max());
}

int toInt32(const QString &text)
{
    return toInt32(parse(text));
}

int toInt16(const QString &text)
{
    return toInt16(parse(text));
}

} // namespace NumberText
