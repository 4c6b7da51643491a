#pragma once

#include "list/downloadlist.h"

#include <QString>

#include <functional>
#include <optional>

struct SiteContext;
struct RequestGuard;
class RecipeSite;

// Where the recipes put files: the download folder as the window shows it,
// the switch that gives each site a folder of its own (value 1), and the
// folder of the program's own files (the saved list), where a captcha's
// picture goes.
struct FolderSettings
{
    std::function<QString()> downloadDir;
    std::function<int()> createSubDir;
    std::function<QString()> dataDir = {};
};

// A site's recipe that turns the link of the row at the site's cursor into a
// direct address and a wait. resolve() is the first step: it returns once it
// has left the row in one of its outcomes. It may pump the event queue while
// it waits for the network; the queue makes sure that a site never runs two
// recipes at once.
class SiteRecipe
{
public:
    virtual ~SiteRecipe() = default;
    virtual void resolve(RecipeSite &site) = 0;
    // Called by the stop command of a site whose table entry says that the
    // recipe holds a socket of its own, between the timer and the transfer.
    virtual void closeConnections() {}
};

// What a recipe sees of its site: the row at the site's cursor, the stop
// request, the recipe's own state between runs, the site's timer, the
// hand-off to the site's transfer control, and the six ways a run ends:
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
class RecipeSite
{
public:
    explicit RecipeSite(SiteContext &context) : m_site(context) {}

    int number() const;

    // The row at the cursor. Reading or writing where the cursor stands on no
    // row is a run-time failure.
    QString field(Field field) const;
    void setField(Field field, const QString &value);
    QString link() const { return field(Field::LinkURL); }

    bool stopAsked() const;
    // The recipe's stage, which the queue resets where the site table says.
    int &step();
    // Set by a recipe on success and never cleared: from then on the site's
    // timer hands a row whose wait has run out to the transfer.
    bool linkReady() const;
    void setLinkReady(bool ready);
    // The one time-out that all sites' requests share.
    RequestGuard &requestGuard();
    // The folder the site's files go to: the download folder, and the site's
    // own folder behind it when each site gets one.
    QString localFolder() const;
    // Where a captcha's picture is kept: "CAP.gif" beside the saved list.
    QString captchaFile() const;
    // Asks the person at the screen to read the captcha in this picture: what
    // they typed, or nothing when the question was closed without its button.
    // The event queue runs meanwhile.
    std::optional<QString> askCaptcha(const QString &pictureFile);
    // Runs an event of the recipe's own (a socket's) as a run of the site:
    // starts of the site it asks for come after it, and a run-time failure
    // that escapes it goes no further.
    void runEvent(const std::function<void(RecipeSite &)> &event);

    // ---- The outcomes ----
    void stopped();
    void connectionError();
    void notFound();
    void pageError();
    // `minutes` as the page gave it; it has to read as a number.
    void longWait(const QString &minutes);

    // ---- The pieces they are made of ----
    // `word` into Status and "0" into WaitTimeInSec.
    void writeFailure(const QString &word);
    // Gives the site's timer this interval and enables it.
    void startTimer(int intervalMs);
    // The queue goes on with the site's next eligible row.
    void continueQueue();
    // For the recipes that start the transfer themselves: the row's DirectURL
    // into LocalFilePath and LocalFile, with size 0 (the answer's header
    // gives the real one).
    void startTransfer();

private:
    SiteContext &m_site;
};
