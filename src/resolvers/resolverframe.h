#pragma once

#include "list/statustext.h"
#include "resolvers/reading.h"
#include "resolvers/recipesite.h"

#include <QByteArray>
#include <QString>

#include <optional>
#include <utility>

class XmlHttpRequest;

// What every recipe does the same way: waiting for a request while the event
// queue runs, the fetch and the form post that end in that wait, and the
// guards that turn a run-time failure into an outcome.
namespace ResolverFrame {

// Pumps of the event queue per look at the stop and time-out flags.
constexpr int kPumpsPerRound = 6;

enum class PollResult {
    Ended,    // the request has ended; its status is still to be judged
    Stopped,  // the site's stop flag was seen
    TimedOut, // the shared time-out fired
};

// Waits for the request to end while the event queue runs: everything else
// (timers, sockets, other sites' recipes, clicks) goes on inside the wait.
// Starts the shared time-out if it isn't running and clears its flag, then
// pumps six times per round and after each round looks at the site's stop
// flag and at the time-out flag. A pump sleeps until the next event arrives,
// so a long wait costs no processor time. The request is never aborted here.
PollResult poll(RecipeSite &site, XmlHttpRequest &request);
// The same wait without a stop or a time-out: it ends with the request.
void pollToTheEnd(XmlHttpRequest &request);

// What an answer whose status isn't 200 means to a recipe.
enum class OnBadStatus {
    ConnectionFailure,     // "Connection Error", then the next link (the frame's rule)
    Error,                 // "Error", then the next link
    ConnectionErrorAtRest, // "Connection Error", and the queue rests on the row
    Accepted,              // any answer will do: the recipe reads what came
};

// The poll with its consequences: true for an answer with status 200;
// otherwise the run's outcome has been written ("Stopped" on a stop, a
// connection failure on a time-out, `onBadStatus` for another status) and
// the recipe returns.
bool waitForAnswer(RecipeSite &site, XmlHttpRequest &request,
                   OnBadStatus onBadStatus = OnBadStatus::ConnectionFailure);

// A GET of `url` on the request object, then waitForAnswer(): the page for
// status 200, nothing once an outcome has been written.
std::optional<QString> get(RecipeSite &site, XmlHttpRequest &request, const QString &url,
                           OnBadStatus onBadStatus = OnBadStatus::ConnectionFailure);
// A form POST of `body` to `url` (see XmlHttpRequest::sendForm), then
// waitForAnswer().
std::optional<QString> post(RecipeSite &site, XmlHttpRequest &request, const QString &url,
                            const QByteArray &body,
                            OnBadStatus onBadStatus = OnBadStatus::ConnectionFailure);

// The number behind "var c=" up to the next ";" of a page, rounded half to
// even; 0 where there is none or it is no 32-bit whole number.
int parseWaitSeconds(const QString &page);

// Runs each step on its own: a run-time failure skips the rest of that step
// only, and the next step runs with the values as they stand.
template <typename... Steps> void eachStep(Steps &&...steps)
{
    (ignoreFailure(std::forward<Steps>(steps)), ...);
}

// A name for a file whose page gives none: `prefix`, a blank (where the sign
// of the number would stand) and a random number below 10000.
QString madeUpName(const QString &prefix);

// The file name a link's files get where a recipe takes it from the
// addresses: what stands behind the last "/" of the direct address, else
// behind the last "/" of the link; null where neither has one.
QString lastSegment(const QString &address, const QString &link);

// A recipe's fetching step: any run-time failure ends in `word`, then the
// next link.
template <typename Steps>
void guardResolve(RecipeSite &site, Steps &&steps,
                  const QString &word = StatusText::ConnectionError)
{
    try {
        steps();
    } catch (const RuntimeFailure &) {
        write(site, Reading().fail(word));
    }
}

} // namespace ResolverFrame
