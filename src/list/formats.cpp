#include "list/formats.h"

#include "system/filefolder.h"

#include <QFileInfo>
#include <QStringList>

#include <cfloat>
#include <cmath>
#include <limits>

namespace {
const QChar kBlank = QLatin1Char(' ');
const QChar kSeparator = QLatin1Char('/');

// Trims blanks only; tabs and other white space stay, as the list's texts
// never carry them at their ends.
QString trimBlanks(const QString &text)
{
    qsizetype begin = 0;
    qsizetype end = text.size();
    while (begin < end && text.at(begin) == kBlank)
        ++begin;
    while (end > begin && text.at(end - 1) == kBlank)
        --end;
    return text.mid(begin, end - begin);
}

// bytes / unit rounded to two decimals, ties to even, written with "." and
// without trailing zeros ("1.5", "2", "1.12"). Exact integer arithmetic, so a
// tie is a true tie and not a floating-point accident. bytes is positive.
QString scaledText(qint64 bytes, qint64 unit)
{
    const qint64 whole = bytes / unit;
    const qint64 rest = bytes % unit;
    qint64 hundredths = whole * 100 + rest * 100 / unit;
    const qint64 remainder = rest * 100 % unit;
    if (remainder * 2 > unit || (remainder * 2 == unit && hundredths % 2 != 0))
        ++hundredths;

    QString text = QString::number(hundredths / 100);
    const qint64 fraction = hundredths % 100;
    if (fraction != 0) {
        text += QLatin1Char('.');
        text += QLatin1Char(char('0' + fraction / 10));
        if (fraction % 10 != 0)
            text += QLatin1Char(char('0' + fraction % 10));
    }
    return text;
}

// Rounds to a whole number, ties to even. False when the value has no whole
// number of that width (infinite, not a number, out of range).
bool roundToEven(double value, qint64 *result)
{
    const double rounded = std::nearbyint(value);
    if (!std::isfinite(rounded) || std::fabs(rounded) >= 9.2e18)
        return false;
    *result = qint64(rounded);
    return true;
}

// The "##00" number format: at least two digits, more when needed.
QString atLeastTwoDigits(qint64 value)
{
    const QString digits = QString::number(value < 0 ? -value : value);
    return (value < 0 ? QStringLiteral("-") : QString()) +
           digits.rightJustified(2, QLatin1Char('0'));
}

// The counter behind the first "_" of a name when it reads as a number: the
// number rounded to a whole one, ties to even, plus one. *numeric tells
// whether the part reads as a number at all; false is returned when it does
// but the next number can't be formed.
bool nextCounter(const QString &part, bool *numeric, qint64 *next)
{
    bool ok = false;
    qint64 value = part.trimmed().toLongLong(&ok);
    if (!ok) {
        const double number = part.toDouble(&ok);
        if (!ok || !std::isfinite(number)) {
            *numeric = false;
            return true;
        }
        if (!roundToEven(number, &value)) {
            *numeric = true;
            return false;
        }
    }
    *numeric = true;
    if (value == std::numeric_limits<qint64>::max())
        return false;
    *next = value + 1;
    return true;
}

QString joinPath(const QString &folder, const QString &name)
{
    if (folder.isEmpty())
        return name;
    return folder.endsWith(kSeparator) ? folder + name : folder + kSeparator + name;
}
} // namespace

QString sizeToText(qint64 bytes)
{
    constexpr qint64 kKilo = 1024;
    constexpr qint64 kMega = 1048576;
    constexpr qint64 kGiga = 1073741824;

    if (bytes < kKilo)
        return QString::number(bytes) + QStringLiteral(" Bytes");
    if (bytes < kMega)
        return scaledText(bytes, kKilo) + QStringLiteral(" KB");
    if (bytes < kGiga)
        return scaledText(bytes, kMega) + QStringLiteral(" MB");
    // Exactly one gigabyte falls between the ranges and has no text.
    if (bytes == kGiga)
        return QString();
    return scaledText(bytes, kGiga) + QStringLiteral(" GB");
}

float textToSize(QString text)
{
    text = trimBlanks(text);
    const QStringList parts = text.split(kBlank);
    if (parts.size() < 2)
        return 0;

    const QString &unit = parts.at(1);
    double factor;
    if (unit == QLatin1String("Bytes"))
        factor = 1;
    else if (unit == QLatin1String("KB"))
        factor = 1024;
    else if (unit == QLatin1String("MB"))
        factor = 1048576;
    else if (unit == QLatin1String("GB"))
        factor = 1073741824;
    else
        return 0;

    bool ok = false;
    const double number = parts.at(0).toDouble(&ok);
    if (!ok || !std::isfinite(number))
        return 0;
    const double size = number * factor;
    // A size that single precision can't hold has no result.
    if (std::fabs(size) > FLT_MAX)
        return 0;
    return float(size);
}

QString secondsToTimeText(float seconds)
{
    if (seconds < 61) {
        // Formatting rounds half away from zero.
        const double rounded = std::round(double(seconds));
        if (!std::isfinite(rounded))
            return QString();
        return QStringLiteral("00:00:") + atLeastTwoDigits(qint64(rounded));
    }

    // A figure that can't be rounded counts as zero and the text goes on.
    qint64 k = 0;
    if (seconds < 3600) {
        roundToEven(seconds, &k);
        return QStringLiteral("00:") + atLeastTwoDigits(k / 60) + QLatin1Char(':') +
               atLeastTwoDigits(k % 60);
    }

    // The hours come from the rounded minutes, so just before a full hour
    // the hour figure is already ahead (7199 s -> "02:59:59").
    qint64 minutes = 0;
    roundToEven(seconds / 60.0f, &minutes);
    roundToEven(seconds, &k);
    const qint64 r = k % 3600;
    return atLeastTwoDigits(minutes / 60) + QLatin1Char(':') + atLeastTwoDigits(r / 60) +
           QLatin1Char(':') + atLeastTwoDigits(r % 60);
}

QString cleanFileName(const QString &name)
{
    static const char *const kRemoved[] = {"\\", "\"", "'", ":", "/",    "?",  "*",
                                           "<",  ">",  "|", ",", "\r\n", "\r", "\n"};
    QString clean = name;
    for (const char *piece : kRemoved)
        clean.remove(QLatin1String(piece));
    return trimBlanks(clean);
}

bool makeFolderPath(const QString &path)
{
    if (path.size() < 3)
        return false;

    // Walk down from the root, making each missing level; levels made before
    // a failure remain.
    QString current = path.startsWith(kSeparator) ? QString(kSeparator) : QString();
    const QStringList parts = path.split(kSeparator, Qt::SkipEmptyParts);
    for (const QString &part : parts) {
        current = joinPath(current, part);
        if (FileFolder::folderExists(current))
            continue;
        if (!FileFolder::createFolder(current) && !FileFolder::folderExists(current))
            return false;
    }
    return true;
}

QString uniqueLocalFileName(const QString &path)
{
    QString candidate = path;
    for (;;) {
        // A missing file is free, and so is an empty one: it gets used. A
        // symbolic link is a taken name whatever it points to: a download is
        // never written through one.
        const QFileInfo info(candidate);
        if (!info.isSymLink() && (!FileFolder::fileExists(candidate) || info.size() == 0))
            return candidate;

        const QString folder = FileFolder::parentFolderName(candidate);
        QString base = FileFolder::baseName(candidate);
        const QString ext = FileFolder::extensionName(candidate);

        if (base.contains(QLatin1Char('_'))) {
            // A number behind the first "_" counts up; anything behind a
            // second "_" is dropped ("a_3_b" -> "a_4"). Otherwise the name
            // gains "_1", even when it has a "_" already ("my_file_1" ->
            // "my_file_1_1").
            const QStringList parts = base.split(QLatin1Char('_'));
            bool numeric = false;
            qint64 next = 0;
            if (!nextCounter(parts.at(1), &numeric, &next))
                return candidate;
            if (numeric)
                base = parts.at(0) + QLatin1Char('_') + QString::number(next);
            else
                base += QStringLiteral("_1");
        } else {
            base += QStringLiteral("_1");
        }
        // A name without extension keeps a final ".".
        candidate = joinPath(folder, base + QLatin1Char('.') + ext);
    }
}
