#include "resolvers/reading.h"

#include "resolvers/recipesite.h"
#include "resolvers/textpos.h"
#include "scheduling/numbertext.h"

Reading &Reading::set(Field field, const QString &value)
{
    values.append({field, value});
    return *this;
}

QString Reading::value(Field field) const
{
    for (auto it = values.crbegin(); it != values.crend(); ++it) {
        if (it->first == field)
            return it->second;
    }
    return QString();
}

Reading &Reading::fail(const QString &word)
{
    failAtRest(word);
    end = End::NextLink;
    return *this;
}

Reading &Reading::failAtRest(const QString &word)
{
    set(Field::Status, word);
    set(Field::WaitTimeInSec, QStringLiteral("0"));
    end = End::Rest;
    return *this;
}

Reading &Reading::waitSeconds(const QString &seconds)
{
    set(Field::Status, QStringLiteral("Wait ") + seconds + QStringLiteral(" Seconds"));
    set(Field::WaitTimeInSec, seconds);
    return countdown(kSeconds);
}

Reading &Reading::waitMinutes(const QString &minutes)
{
    const QString seconds = NumberText::fromDouble(TextPos::toNumber(minutes) * 60);
    set(Field::Status, QStringLiteral("Wait ") + minutes + QStringLiteral(" Minutes"));
    set(Field::WaitTimeInSec, seconds);
    return countdown(kMinutes);
}

Reading &Reading::countdown(int intervalMs)
{
    end = End::Countdown;
    interval = intervalMs;
    return *this;
}

Reading &Reading::transfer()
{
    end = End::Transfer;
    return *this;
}

Reading &Reading::ready(bool isReady)
{
    linkReady = isReady;
    return *this;
}

QString Reading::toString() const
{
    QStringList parts;
    for (const auto &[field, text] : values)
        parts << QString::fromLatin1(fieldInfo(field).name) + u'=' + text;
    QString result = parts.join(QStringLiteral("; "));
    if (linkReady)
        result += *linkReady ? QStringLiteral("; ready") : QStringLiteral("; not ready");
    result += QStringLiteral(" => ");
    switch (end) {
    case End::Rest:
        return result + QStringLiteral("rest");
    case End::NextLink:
        return result + QStringLiteral("next link");
    case End::Countdown:
        return result + QStringLiteral("countdown %1").arg(interval);
    case End::Transfer:
        return result + QStringLiteral("transfer");
    }
    return result;
}

void apply(RecipeSite &site, const Reading &reading, const QString &failureWord)
{
    try {
        write(site, reading);
    } catch (const RuntimeFailure &) {
        write(site, Reading().fail(failureWord));
    }
}

void write(RecipeSite &site, const Reading &reading)
{
    for (const auto &[field, text] : reading.values)
        site.setField(field, text);
    if (reading.linkReady)
        site.setLinkReady(*reading.linkReady);
    switch (reading.end) {
    case Reading::End::Rest:
        break;
    case Reading::End::NextLink:
        site.continueQueue();
        break;
    case Reading::End::Countdown:
        site.startTimer(reading.interval);
        break;
    case Reading::End::Transfer:
        site.startTransfer();
        break;
    }
}
