#pragma once

#include "list/downloadlist.h"
#include "list/statustext.h"

#include <QList>
#include <QString>

#include <optional>
#include <utility>

class RecipeSite;

// What a page says, in the row's own words: the values to write, in the order
// the recipe writes them, and how the run goes on. A recipe's page readers
// return one without touching the row, so a test can read any page without a
// socket; apply() writes it.
struct Reading
{
    // The countdown's intervals: a second per tick, or a minute per tick.
    static constexpr int kSeconds = 1000;
    static constexpr int kMinutes = 60000;

    enum class End {
        Rest,      // nothing further: the row stays as the values leave it
        NextLink,  // the queue goes on with the site's next link
        Countdown, // the site's timer counts the row's wait down at `interval`
        Transfer,  // the transfer of the row's address starts at once
    };

    QList<std::pair<Field, QString>> values;
    End end = End::Rest;
    int interval = 0;
    // The site's link-ready flag is set (or cleared) before the run goes on.
    std::optional<bool> linkReady;

    Reading &set(Field field, const QString &value);
    // The last value the reading gives a field; a null text for none.
    QString value(Field field) const;

    // `word` into Status and "0" into WaitTimeInSec, then the next link.
    Reading &fail(const QString &word);
    // The same without going on: the queue rests on the row.
    Reading &failAtRest(const QString &word);
    // "Wait N Seconds" and N, counted down once a second.
    Reading &waitSeconds(const QString &seconds);
    // "Wait N Minutes" and N times 60, counted down a minute per tick. The
    // text has to read as a number.
    Reading &waitMinutes(const QString &minutes);
    Reading &countdown(int intervalMs);
    // The transfer starts at once, with size 0.
    Reading &transfer();
    Reading &ready(bool isReady = true);

    // One line for tests: "Status=Wait 3 Seconds; WaitTimeInSec=3 => countdown 1000".
    QString toString() const;
};

// Writes a reading into the row and goes on as it says; a failure passes.
void write(RecipeSite &site, const Reading &reading);
// The same under a recipe's guard: a failure while writing (a value too long
// for its field, a row that is gone) ends the run in `failureWord` instead,
// with the next link.
void apply(RecipeSite &site, const Reading &reading,
           const QString &failureWord = StatusText::Error);

// Runs a page reader's steps on a fresh reading. A run-time failure among
// them ends the reading in `word` with the values read up to there, as a
// recipe that writes as it reads would have left the row.
template <typename Steps>
Reading readGuarded(Steps &&steps, const QString &word = StatusText::Error)
{
    Reading reading;
    try {
        steps(reading);
    } catch (const RuntimeFailure &) {
        reading.fail(word);
    }
    return reading;
}
