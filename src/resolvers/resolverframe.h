#pragma once

#include "scheduling/sitequeues.h"

#include <QString>

#include <exception>
#include <functional>

class XmlHttpRequest;

// Where the resolvers put files: the download folder as the window shows it
// and the switch that gives each site a folder of its own (value 1).
struct FolderSettings
{
    std::function<QString()> downloadDir;
    std::function<int()> createSubDir;
};

// The shape every site's recipe has: waiting for a request, the six ways a
// run ends, the local folder, the guards. A recipe works on the row at its
// site's cursor and ends in exactly one of the outcomes below:
//
//   stopped by the user   "Stopped", 0                   nothing further
//   connection failure    "Connection Error", 0          next link
//   file gone             "Not Found", 0 (+ ErrorDesc)   next link
//   page not understood   "Error", 0                     next link
//   a long wait           "Wait N Minutes", N * 60       site timer at 60000
//   resolved              "Wait N Seconds", N            site timer at 1000
//
// Only the failures go on to the next link themselves; a wait leaves that to
// the site's timer, and a stop to the user.
namespace ResolverFrame {

// Pumps of the event queue per look at the stop and time-out flags.
constexpr int kPumpsPerRound = 6;
constexpr int kTimeOutInterval = 50000;
constexpr int kSecondsInterval = 1000;
constexpr int kMinutesInterval = 60000;

enum class PollResult {
    Ended,    // the request has ended; its status is still to be judged
    Stopped,  // the site's stop flag was seen
    TimedOut, // the shared time-out fired
};

// Waits for the request to end while the event queue runs: everything else
// (timers, sockets, other sites' resolvers, clicks) goes on inside the wait.
// Starts the shared time-out if it isn't running and clears its flag, then
// pumps six times per round and after each round looks at the site's stop
// flag and at the time-out flag. A pump sleeps until the next event arrives,
// so a long wait costs no processor time. The request is never aborted here.
PollResult poll(SiteContext &site, XmlHttpRequest &request);

// The poll with its usual consequences: true for an answer with status 200;
// otherwise the run's outcome has been written ("Stopped" on a stop; a
// connection failure on a time-out or another status) and the recipe returns.
bool waitForAnswer(SiteContext &site, XmlHttpRequest &request);

// ---- The outcomes ----
void stopped(SiteContext &site);
void connectionError(SiteContext &site);
// ErrorDesc is written only when a description is given.
void notFound(SiteContext &site, const QString &errorDesc = QString());
void pageError(SiteContext &site);
// `minutes` as the page gave it; it has to read as a number.
void longWait(SiteContext &site, const QString &minutes);
// Writes the wait and starts the countdown. The row's address, file, folder
// and size must have been written before.
void resolved(SiteContext &site, int seconds);

// The folder a site's files go to: the download folder, and the site's
// subfolder behind it when each site gets its own.
QString localFolder(const FolderSettings &folder, const QString &siteSubFolder);

// The number behind "var c=" up to the next ";" of a page; 0 where there is
// none or it is no 16-bit whole number.
int parseWaitSeconds(const QString &page);

// A recipe's parsing step: any run-time failure ends in "Error".
template <typename Steps> void guardParse(SiteContext &site, Steps &&steps)
{
    try {
        steps();
    } catch (const RuntimeFailure &) {
        pageError(site);
    }
}

// A recipe's fetching step: any run-time failure ends as a connection failure.
template <typename Steps> void guardResolve(SiteContext &site, Steps &&steps)
{
    try {
        steps();
    } catch (const RuntimeFailure &) {
        connectionError(site);
    }
}

} // namespace ResolverFrame
