#pragma once

#include "list/downloadlist.h"
#include "list/sitetable.h"
#include "resolvers/recipesite.h"

#include <QObject>
#include <QString>

#include <array>
#include <functional>
#include <memory>

class DownloadAsynch;
class LogicalTimer;
class Prompts;
class SiteQueues;

using RecipeTable = std::array<std::unique_ptr<SiteRecipe>, Sites::Count>;

// The one guard that all recipes' requests share: a one-shot 50-second
// timer that sets bTimeOut when it fires.
struct RequestGuard
{
    LogicalTimer *tmrTimeOut = nullptr;
    bool bTimeOut = false;
};

// Everything one site's queue works with. Recipes, the countdown and the
// transfer handlers reach the site's current row only through its cursor.
struct SiteContext
{
    int site = 0;
    const Sites::Site *info = nullptr;
    SiteQueues *queues = nullptr;
    RowCursor cursor;              // the row the site works on
    bool bStop = false;            // a stop was asked for; recipes poll it
    LogicalTimer *timer = nullptr; // the countdown; nullptr for a site without one
    DownloadAsynch *downloader = nullptr;
    bool bLinkReady = false; // set by the recipe on success, never cleared
    int iStep = 0;           // the recipe's stage, reset by the queue where the table says
    SiteRecipe *recipe = nullptr;

    // The site's start or a run of its recipe is on the stack. A start asked
    // for meanwhile is noted and run by the outermost one once it returns.
    bool busy = false;
    bool pendingStart = false;
    bool pendingFromMenu = true;
    // Rows before this index are known to be ineligible with IsDownloading
    // "0": the last walk passed them, and no edit has touched them since.
    int walkedPast = 0;

    // Gives the timer this logical interval and enables it.
    void startTimer(int intervalMs);
    // The hand-off at the end of a wait: address, local path and size from
    // the row, Status "Connecting...". Throws when a field can't be read or
    // written.
    void handOff();
    void startTransfer(const QString &url, const QString &localFilePath, float size);
    // The queue goes on with the next eligible row (a start that is no
    // user's command).
    void continueQueue();
};

// One queue per site over the download list. Each site works one row at a
// time: start commands pick the first eligible row, the recipe fills it, the
// site's timer counts its wait down and hands it to the site's transfer
// control, whose outcomes are written back into the row and move the queue on.
//
// A queue never nests: when a run ends in a start of the same site (a failure
// moving on to the next link), that start is run by the outermost call once
// the run has returned, so any number of failing rows costs one stack frame.
class SiteQueues : public QObject
{
    Q_OBJECT
public:
    SiteQueues(DownloadList &list, Prompts *prompts, RecipeTable recipes = {},
               QObject *parent = nullptr);
    ~SiteQueues() override;

    // Replaces a site's recipe (the queue owns it).
    void setRecipe(int site, std::unique_ptr<SiteRecipe> recipe);
    // Where the recipes put the files.
    void setFolder(FolderSettings folder) { m_folder = std::move(folder); }
    const FolderSettings &folder() const { return m_folder; }

    // A row takes part in a queue while its Status is "Waiting" or begins
    // with "Stopped".
    static bool isEligible(const QString &status);

    // A user's start (bFromMenu true) is refused while the site is busy; a
    // continuation (false) comes only after the active row has ended. A start
    // that arrives while the site's recipe is still on the stack waits until
    // that run has unwound.
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
    Prompts *prompts() const { return m_prompts; }
    // Runs an event of a site's recipe as a run of the site (see
    // RecipeSite::runEvent).
    void runEvent(int site, const std::function<void()> &event);
    DownloadList &list() { return m_list; }

signals:
    // A site's queue found no further row: the place to shut down after all
    // downloads, where the user asked for that.
    void queueRanOut(int site);

private:
    template <typename Body> void runExclusive(SiteContext &ctx, Body &&body);
    void startOnce(SiteContext &ctx, bool bFromMenu);
    bool findEligibleRow(SiteContext &ctx);
    void runRecipe(SiteContext &ctx);
    void forgetWalks(int site, int index);
    void onSiteTimer(int site);
    void endOfWait(SiteContext &ctx);
    void onFileBegin(int site, float iFileSize);
    void onProgress(int site, double iValue, int iBytesPerSecond, float iDownloadedBytes,
                    float iRemainBytes, float iRemainTimeInSeconds);
    void onComplete(int site);
    void onStopped(int site);
    void onError(int site, const QString &sDesc);

    DownloadList &m_list;
    Prompts *m_prompts;
    RecipeTable m_recipes;
    FolderSettings m_folder;
    std::array<SiteContext, Sites::Count> m_sites;
    RequestGuard m_guard;
    bool bStartInProgress = false;
};
