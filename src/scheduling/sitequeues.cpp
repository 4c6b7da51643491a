#include "scheduling/sitequeues.h"

#include "list/formats.h"
#include "list/statustext.h"
#include "scheduling/numbertext.h"
#include "system/logicaltimer.h"
#include "transfer/downloadasynch.h"

#include <algorithm>

namespace {

constexpr int kCountdownInterval = 1000;
constexpr int kRequestTimeOut = 50000;

// Speed, TimeLeft and IsDownloading as every end of a transfer leaves them.
void clearTransferFields(RowCursor &row)
{
    ignoreFailure([&] { row.setField(Field::Speed, QString()); });
    ignoreFailure([&] { row.setField(Field::TimeLeft, QString()); });
    ignoreFailure([&] { row.setField(Field::IsDownloading, QStringLiteral("0")); });
}

} // namespace

// ---- SiteContext ----

void SiteContext::startTimer(int intervalMs)
{
    if (!timer)
        throw RuntimeFailure("The site has no timer");
    timer->setInterval(intervalMs);
    timer->setEnabled(true);
}

void SiteContext::handOff()
{
    const auto addressField = fieldByName(QLatin1String(info->directUrlField));
    if (!addressField)
        throw RuntimeFailure("Item cannot be found in the collection");
    const QString url = cursor.field(*addressField);
    const QString path =
        cursor.field(Field::LocalFilePath) + QLatin1Char('/') + cursor.field(Field::LocalFile);
    cursor.setField(Field::Status, StatusText::Connecting);
    startTransfer(url, path, textToSize(cursor.field(Field::FileSize)));
}

void SiteContext::startTransfer(const QString &url, const QString &localFilePath, float size)
{
    downloader->setUrl(url);
    downloader->setLocalFilePath(localFilePath);
    downloader->setFileSize(size);
    downloader->startDownload();
}

void SiteContext::continueQueue()
{
    queues->startDownloadLinks(site, false);
}

// ---- SiteQueues ----

SiteQueues::SiteQueues(DownloadList &list, Prompts *prompts, RecipeTable recipes, QObject *parent)
    : QObject(parent), m_list(list), m_prompts(prompts), m_recipes(std::move(recipes))
{
    for (const Sites::Site &info : Sites::all()) {
        const int site = info.number;
        SiteContext &ctx = m_sites[site - 1];
        ctx.site = site;
        ctx.info = &info;
        ctx.queues = this;
        ctx.recipe = m_recipes[site - 1].get();
        if (info.hasTimer) {
            ctx.timer = new LogicalTimer(this);
            ctx.timer->setInterval(kCountdownInterval);
            connect(ctx.timer, &LogicalTimer::timeout, this, [this, site] { onSiteTimer(site); });
        }
        ctx.downloader = new DownloadAsynch(m_prompts, this);
        DownloadAsynch *d = ctx.downloader;
        connect(d, &DownloadAsynch::fileBegin, this,
                [this, site](float size) { onFileBegin(site, size); });
        connect(d, &DownloadAsynch::progress, this,
                [this, site](double value, int bps, float done, float remain, float seconds) {
                    onProgress(site, value, bps, done, remain, seconds);
                });
        connect(d, &DownloadAsynch::complete, this, [this, site] { onComplete(site); });
        connect(d, &DownloadAsynch::stopped, this, [this, site] { onStopped(site); });
        connect(d, &DownloadAsynch::error, this,
                [this, site](const QString &desc) { onError(site, desc); });
    }

    m_guard.tmrTimeOut = new LogicalTimer(this);
    m_guard.tmrTimeOut->setInterval(kRequestTimeOut);
    m_guard.tmrTimeOut->setSingleShot(true);
    connect(m_guard.tmrTimeOut, &LogicalTimer::timeout, this, [this] {
        m_guard.bTimeOut = true;
        m_guard.tmrTimeOut->setEnabled(false);
    });

    // An edit of a row that a walk has passed means that walk must be made
    // again from the top.
    connect(&m_list, &DownloadList::fieldChanged, this,
            [this](int site, int index, Field) { forgetWalks(site, index); });
    connect(&m_list, &DownloadList::rowRemoved, this,
            [this](int site, int index) { forgetWalks(site, index); });
    connect(&m_list, &DownloadList::rowsInserted, this,
            [this](int site, int first, int) { forgetWalks(site, first); });
    connect(&m_list, &DownloadList::resetDone, this, [this] {
        for (SiteContext &ctx : m_sites)
            ctx.walkedPast = 0;
    });
}

SiteQueues::~SiteQueues() = default;

void SiteQueues::setRecipe(int site, std::unique_ptr<SiteRecipe> recipe)
{
    SiteContext &ctx = context(site);
    m_recipes[site - 1] = std::move(recipe);
    ctx.recipe = m_recipes[site - 1].get();
}

SiteContext &SiteQueues::context(int site)
{
    if (!Sites::isSite(site))
        throw RuntimeFailure("Subscript out of range");
    return m_sites[site - 1];
}

void SiteQueues::forgetWalks(int site, int index)
{
    if (Sites::isSite(site) && index < m_sites[site - 1].walkedPast)
        m_sites[site - 1].walkedPast = 0;
}

bool SiteQueues::isEligible(const QString &status)
{
    return status == StatusText::Waiting || status.left(7) == StatusText::Stopped;
}

// Runs a site's start or a run of its recipe, and after it every start of the
// same site that was asked for meanwhile, one after another.
template <typename Body> void SiteQueues::runExclusive(SiteContext &ctx, Body &&body)
{
    struct Exclusive
    {
        SiteContext &ctx;
        explicit Exclusive(SiteContext &c) : ctx(c) { ctx.busy = true; }
        ~Exclusive()
        {
            ctx.busy = false;
            // A failure that escaped takes the starts noted meanwhile with it.
            ctx.pendingStart = false;
        }
    } exclusive(ctx);
    body();
    while (ctx.pendingStart) {
        ctx.pendingStart = false;
        startOnce(ctx, ctx.pendingFromMenu);
    }
}

void SiteQueues::runEvent(int site, const std::function<void()> &event)
{
    SiteContext &ctx = context(site);
    if (ctx.busy)
        event();
    else
        runExclusive(ctx, event);
}

void SiteQueues::startDownloadLinks(int site, bool bFromMenu)
{
    SiteContext &ctx = context(site);
    if (ctx.busy) {
        // A continuation among the starts noted skips the busy test.
        ctx.pendingFromMenu = ctx.pendingStart ? ctx.pendingFromMenu && bFromMenu : bFromMenu;
        ctx.pendingStart = true;
        return;
    }
    runExclusive(ctx, [&] { startOnce(ctx, bFromMenu); });
}

void SiteQueues::startOnce(SiteContext &ctx, bool bFromMenu)
{
    // Cleared first, also when the call goes on to do nothing.
    ctx.bStop = false;
    if (bFromMenu && isDownloading(ctx.site))
        return;
    if (!findEligibleRow(ctx))
        return;
    // Without a recipe for the site the row stays queued as it is.
    if (!ctx.recipe)
        return;

    if (ctx.info->stepReset == Sites::StepReset::BeforeStarting)
        ctx.iStep = 0;
    ctx.cursor.setField(Field::Status, StatusText::Starting);
    ctx.cursor.setField(Field::IsDownloading, QStringLiteral("1"));
    if (ctx.info->stepReset == Sites::StepReset::AfterStarting)
        ctx.iStep = 0;
    runRecipe(ctx);
}

// Puts the site's cursor on its first eligible row. Flags left on the rows
// before it by an earlier run are cleared on the way; rows after it aren't
// touched. A site without rows gives false at once; a site whose rows are all
// passed over ran out, which is announced.
bool SiteQueues::findEligibleRow(SiteContext &ctx)
{
    ctx.cursor = m_list.getSiteRecords(ctx.site);
    const int count = ctx.cursor.recordCount();
    if (count == 0)
        return false;

    // The rows an earlier walk passed are passed again without a look: they
    // still are as that walk left them. So a run of failing rows costs one
    // walk over the site, not one per row.
    int index = std::min(ctx.walkedPast, count);
    ctx.cursor.moveToIndex(index);
    for (; index < count; ++index) {
        if (isEligible(ctx.cursor.field(Field::Status)))
            break;
        ctx.cursor.setField(Field::IsDownloading, QStringLiteral("0"));
        ctx.cursor.moveNext();
    }
    ctx.walkedPast = index;
    if (index == count) {
        emit queueRanOut(ctx.site);
        return false;
    }
    return true;
}

void SiteQueues::runRecipe(SiteContext &ctx)
{
    RecipeSite site(ctx);
    ctx.recipe->resolve(site);
}

void SiteQueues::stopDownloads(int site)
{
    SiteContext &ctx = context(site);
    if (!isDownloading(site))
        return;
    // A site whose recipe holds a socket of its own goes on past any failing
    // step of its stop.
    const bool tolerant = ctx.info->stopClosesSocket;
    auto step = [tolerant](auto &&statement) {
        if (tolerant)
            ignoreFailure(statement);
        else
            statement();
    };
    step([&] { ctx.bStop = true; });
    if (ctx.timer)
        step([&] { ctx.timer->setEnabled(false); });
    if (ctx.info->stopClosesSocket && ctx.recipe)
        step([&] { ctx.recipe->closeConnections(); });
    // The control raises stopped() on its way out, whatever phase it is in,
    // and the handler below writes the row.
    step([&] { ctx.downloader->stopDownload(); });
}

void SiteQueues::startAllDownloads()
{
    // A failure that escapes one site's start (a recipe without a guard of
    // its own) ends that site's start only; the other sites still begin.
    for (const Sites::Site &info : Sites::all()) {
        if (info.inAllCommands && !isDownloading(info.number))
            ignoreFailure([&] { startDownloadLinks(info.number, true); });
    }
}

void SiteQueues::stopAllDownloads()
{
    for (int site : Sites::stopAllOrder()) {
        if (Sites::site(site).inAllCommands)
            stopDownloads(site);
    }
}

bool SiteQueues::isDownloading(int site) const
{
    const SiteRow *parent = m_list.siteRow(site);
    if (!parent)
        return false;
    for (const auto &row : parent->children) {
        if (row->values[int(Field::IsDownloading)].toInt() == 1)
            return true;
    }
    return false;
}

bool SiteQueues::isAnyDownloading() const
{
    int busy = 0;
    for (int site = 1; site <= Sites::Count; ++site)
        busy += isDownloading(site) ? 1 : 0;
    return busy >= 1;
}

void SiteQueues::startDownloadClicked()
{
    // Start-all pumps the event queue through the recipes; a second click
    // meanwhile is swallowed.
    if (bStartInProgress)
        return;
    bStartInProgress = true;
    startAllDownloads();
    bStartInProgress = false;
}

void SiteQueues::stopDownloadClicked()
{
    bStartInProgress = false;
    stopAllDownloads();
}

// ---- Countdown ----

void SiteQueues::onSiteTimer(int site)
{
    SiteContext &ctx = context(site);
    RowCursor &row = ctx.cursor;
    try {
        const double step = ctx.timer->interval() / 1000.0;
        const int wait = NumberText::toInt32(row.field(Field::WaitTimeInSec));
        if (step >= wait) {
            // The last tick shows no 0: the wait ends on the tick that finds
            // the value of one interval or less.
            ctx.timer->setEnabled(false);
            endOfWait(ctx);
            return;
        }
        row.setField(Field::WaitTimeInSec, NumberText::fromDouble(wait - step));
        const int left = NumberText::toInt32(row.field(Field::WaitTimeInSec));
        if (left < 60) {
            row.setField(Field::Status, QStringLiteral("Wait ") + row.field(Field::WaitTimeInSec) +
                                            QStringLiteral(" Seconds"));
        } else {
            // Minutes to one decimal; left / 6 keeps the halves exact.
            const double minutes = NumberText::roundHalfEven(left / 6.0) / 10.0;
            row.setField(Field::Status, QStringLiteral("Wait ") + NumberText::fromDouble(minutes) +
                                            QStringLiteral(" Minutes"));
        }
    } catch (const RuntimeFailure &) {
        ignoreFailure([&] { ctx.timer->setEnabled(false); });
        ignoreFailure([&] { row.setField(Field::Status, StatusText::Error); });
        ignoreFailure([&] { row.setField(Field::WaitTimeInSec, QStringLiteral("0")); });
        ignoreFailure([&] { startDownloadLinks(site, false); });
    }
}

void SiteQueues::endOfWait(SiteContext &ctx)
{
    // A run of the recipe from here is a run like any other: the starts it
    // asks for come after it. (The site's recipe is never on the stack while
    // its timer counts: a recipe starts the timer as it returns.)
    auto resolveAgain = [this, &ctx] {
        if (!ctx.recipe)
            throw RuntimeFailure("No recipe for the site");
        if (ctx.busy)
            runRecipe(ctx);
        else
            runExclusive(ctx, [&] { runRecipe(ctx); });
    };
    switch (ctx.info->waitEnd) {
    case Sites::WaitEnd::HandOff:
        ctx.handOff();
        break;
    case Sites::WaitEnd::HandOffIfLinkReady:
        if (ctx.bLinkReady)
            ctx.handOff();
        else
            resolveAgain();
        break;
    case Sites::WaitEnd::ResolveIfStepOne:
        if (ctx.iStep == 1)
            resolveAgain();
        break;
    }
}

// ---- Transfer outcomes ----
// Every statement of these handlers goes on past a failure: a row that can't
// be written never stops a handler.

void SiteQueues::onFileBegin(int site, float iFileSize)
{
    RowCursor &row = context(site).cursor;
    // The server's size replaces the one the resolver guessed.
    ignoreFailure(
        [&] { row.setField(Field::FileSize, sizeToText(NumberText::toInt32(double(iFileSize)))); });
}

void SiteQueues::onProgress(int site, double iValue, int iBytesPerSecond, float iDownloadedBytes,
                            float, float iRemainTimeInSeconds)
{
    RowCursor &row = context(site).cursor;
    if (iValue != -1) {
        ignoreFailure([&] { row.setField(Field::Status, NumberText::fromDouble(iValue)); });
        ignoreFailure(
            [&] { row.setField(Field::TimeLeft, secondsToTimeText(iRemainTimeInSeconds)); });
    } else {
        // The total size is unknown.
        ignoreFailure([&] {
            row.setField(Field::Status, sizeToText(NumberText::toInt32(double(iDownloadedBytes))) +
                                            QStringLiteral(" so far"));
        });
        ignoreFailure([&] { row.setField(Field::TimeLeft, QStringLiteral("?")); });
    }
    ignoreFailure(
        [&] { row.setField(Field::Speed, sizeToText(iBytesPerSecond) + QStringLiteral("/S")); });
}

void SiteQueues::onComplete(int site)
{
    SiteContext &ctx = context(site);
    ignoreFailure([&] { ctx.cursor.setField(Field::Status, StatusText::Complete); });
    clearTransferFields(ctx.cursor);
    // The next row begins inside this event.
    ignoreFailure([&] { startDownloadLinks(ctx.site, false); });
}

void SiteQueues::onError(int site, const QString &sDesc)
{
    SiteContext &ctx = context(site);
    // Only the one word is kept; the description itself is not stored.
    ignoreFailure([&] {
        ctx.cursor.setField(Field::Status, sDesc == StatusText::ConnectionError
                                               ? StatusText::ConnectionError
                                               : StatusText::Error);
    });
    clearTransferFields(ctx.cursor);
    ignoreFailure([&] { startDownloadLinks(ctx.site, false); });
}

void SiteQueues::onStopped(int site)
{
    RowCursor &row = context(site).cursor;
    ignoreFailure([&] {
        const QString status = row.field(Field::Status);
        const QChar first = status.isEmpty() ? QChar() : status.at(0);
        if (first < QLatin1Char('0') || first > QLatin1Char('9') ||
            status.contains(QLatin1String("so far"), Qt::CaseInsensitive)) {
            // A wait, "Connecting...", "Starting..." or a size so far.
            row.setField(Field::Status, StatusText::Stopped);
            return;
        }
        // A percent: "Stopped(46%)".
        row.setField(Field::Status,
                     QStringLiteral("Stopped(%1%)").arg(NumberText::toInt16(status)));
    });
    // A stop starts no further row.
    clearTransferFields(row);
}
