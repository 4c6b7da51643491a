#pragma once

#include "list/downloadlist.h"
#include "scheduling/sitetraits.h"

#include <QObject>
#include <QString>

#include <array>
#include <memory>

class DownloadAsynch;
class LogicalTimer;
class Prompts;
class SiteQueues;
struct SiteContext;

// A site's recipe that turns the link of the row at the site's cursor into a
// direct address and a wait. resolve() is the first step: it returns once it
// has left the row in one of its outcomes (stopped; "Connection Error", "Not
// Found" or "Error" followed by continueQueue(); a wait with the site's timer
// enabled). It may pump the event queue while it waits for the network.
class SiteResolver
{
public:
    virtual ~SiteResolver() = default;
    virtual void resolve(SiteContext &site) = 0;
    // Called by the stop command of a site whose table entry says that the
    // resolver holds a socket of its own, between the timer and the transfer.
    virtual void closeConnections(SiteContext &) {}
};

using ResolverTable = std::array<std::unique_ptr<SiteResolver>, Sites::Count>;

// Everything one site's queue works with. Resolvers, the countdown and the
// transfer handlers reach the site's current row only through its cursor.
struct SiteContext
{
    int site = 0;
    const SiteTraits *traits = nullptr;
    SiteQueues *queues = nullptr;
    RowCursor cursor;              // the row the site works on
    bool bStop = false;            // a stop was asked for; resolvers poll it
    LogicalTimer *timer = nullptr; // the countdown; nullptr for a site without one
    DownloadAsynch *downloader = nullptr;
    bool bLinkReady = false; // set by the resolver on success, never cleared
    int iStep = 0;           // the resolver's stage, reset by the queue where the table says
    SiteResolver *resolver = nullptr;

    // Gives the timer this logical interval and enables it.
    void startTimer(int intervalMs);
    // Hands the row to the transfer control: address, local path and size,
    // Status "Connecting...". Throws when a field can't be read or written.
    void handOff();
    // The queue goes on with the next eligible row (a start that is no
    // user's command).
    void continueQueue();
};

// The one guard that all resolvers' requests share: a one-shot 50-second
// timer that sets bTimeOut when it fires.
struct RequestGuard
{
    LogicalTimer *tmrTimeOut = nullptr;
    bool bTimeOut = false;
};

// One queue per site over the download list. Each site works one row at a
// time: start commands pick the first eligible row, the resolver fills it, the
// site's timer counts its wait down and hands it to the site's transfer
// control, whose outcomes are written back into the row and move the queue on.
class SiteQueues : public QObject
{
    Q_OBJECT
public:
    SiteQueues(DownloadList &list, Prompts *prompts, ResolverTable resolvers = {},
               QObject *parent = nullptr);
    ~SiteQueues() override;

    // Replaces a site's resolver (the queue owns it).
    void setResolver(int site, std::unique_ptr<SiteResolver> resolver);

    // A row takes part in a queue while its Status is "Waiting" or begins
    // with "Stopped".
    static bool isEligible(const QString &status);

    // A user's start (bFromMenu true) is refused while the site is busy; a
    // continuation (false) comes only after the active row has ended.
    void startDownloadLinks(int site, bool bFromMenu);
    void stopDownloads(int site);
    void startAllDownloads();
    void stopAllDownloads();
    bool isDownloading(int site) const;
    bool isAnyDownloading() const;

    // The start and stop buttons.
    void startDownloadClicked();
    void stopDownloadClicked();
    bool startInProgress() const { return bStartInProgress; }

    SiteContext &context(int site);
    LogicalTimer *siteTimer(int site) { return context(site).timer; }
    DownloadAsynch &downloader(int site) { return *context(site).downloader; }
    RequestGuard &requestGuard() { return m_guard; }
    DownloadList &list() { return m_list; }

signals:
    // A site's queue found no further row: the place to shut down after all
    // downloads, where the user asked for that.
    void queueRanOut(int site);

private:
    void onSiteTimer(int site);
    void endOfWait(SiteContext &ctx);
    void onFileBegin(int index, float iFileSize);
    void onProgress(int index, double iValue, int iBytesPerSecond, float iDownloadedBytes,
                    float iRemainBytes, float iRemainTimeInSeconds);
    void onComplete(int index);
    void onStopped(int index);
    void onError(int index, const QString &sDesc);
    SiteContext &byIndex(int index);

    DownloadList &m_list;
    Prompts *m_prompts;
    ResolverTable m_resolvers;
    std::array<SiteContext, Sites::Count> m_sites;
    RequestGuard m_guard;
    bool bStartInProgress = false;
};
