#include "scheduling/sitequeues.h"

#include "list/formats.h"
#include "list/statustext.h"
#include "scheduling/numbertext.h"
#include "system/logicaltimer.h"
#include "transfer/downloadasynch.h"

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
    const auto addressField = fieldByName(QLatin1String(traits->directUrlField));
    if (!addressField)
        throw RuntimeFailure("Item cannot be found in the collection");
    downloader->setUrl(cursor.field(*addressField));
    downloader->setLocalFilePath(cursor.field(Field::LocalFilePath) + QLatin1Char('/') +
                                 cursor.field(Field::LocalFile));
    cursor.setField(Field::Status, StatusText::Connecting);
    downloader->setFileSize(textToSize(cursor.field(Field::FileSize)));
    downloader->startDownload();
}

void SiteContext::continueQueue()
{
    queues->startDownloadLinks(site, false);
}

// ---- SiteQueues ----

SiteQueues::SiteQueues(DownloadList &list, Prompts *prompts, ResolverTable resolvers,
                       QObject *parent)
    : QObject(parent), m_list(list), m_prompts(prompts), m_resolvers(std::move(resolvers))
{
    for (const SiteTraits &traits : SiteTable::all()) {
        SiteContext &ctx = m_sites[traits.site - 1];
        ctx.site = traits.site;
        ctx.traits = &traits;
        ctx.queues = this;
        ctx.resolver = m_resolvers[traits.site - 1].get();
        if (traits.hasTimer) {
            ctx.timer = new LogicalTimer(this);
            ctx.timer->setInterval(kCountdownInterval);
            const int site = traits.site;
            connect(ctx.timer, &LogicalTimer::timeout, this, [this, site] { onSiteTimer(site); });
        }
        ctx.downloader = new DownloadAsynch(m_prompts, this);
        const int index = traits.transferIndex;
        DownloadAsynch *d = ctx.downloader;
        connect(d, &DownloadAsynch::fileBegin, this,
                [this, index](float size) { onFileBegin(index, size); });
        connect(d, &DownloadAsynch::progress, this,
                [this, index](double value, int bps, float done, float remain, float seconds) {
                    onProgress(index, value, bps, done, remain, seconds);
                });
        connect(d, &DownloadAsynch::complete, this, [this, index] { onComplete(index); });
        connect(d, &DownloadAsynch::stopped, this, [this, index] { onStopped(index); });
        connect(d, &DownloadAsynch::error, this,
                [this, index](const QString &desc) { onError(index, desc); });
    }

    m_guard.tmrTimeOut = new LogicalTimer(this);
    m_guard.tmrTimeOut->setInterval(kRequestTimeOut);
    m_guard.tmrTimeOut->setSingleShot(true);
    connect(m_guard.tmrTimeOut, &LogicalTimer::timeout, this, [this] {
        m_guard.bTimeOut = true;
        m_guard.tmrTimeOut->setEnabled(false);
    });
}

SiteQueues::~SiteQueues() = default;

void SiteQueues::setResolver(int site, std::unique_ptr<SiteResolver> resolver)
{
    SiteContext &ctx = context(site);
    m_resolvers[site - 1] = std::move(resolver);
    ctx.resolver = m_resolvers[site - 1].get();
}

SiteContext &SiteQueues::context(int site)
{
    if (!Sites::isSite(site))
        throw RuntimeFailure("Subscript out of range");
    return m_sites[site - 1];
}

SiteContext &SiteQueues::byIndex(int index)
{
    for (SiteContext &ctx : m_sites) {
        if (ctx.traits->transferIndex == index)
            return ctx;
    }
    throw RuntimeFailure("Subscript out of range");
}

bool SiteQueues::isEligible(const QString &status)
{
    return status == StatusText::Waiting || status.left(7) == StatusText::Stopped;
}

void SiteQueues::startDownloadLinks(int site, bool bFromMenu)
{
    SiteContext &ctx = context(site);
    // Cleared first, also when the call goes on to do nothing.
    ctx.bStop = false;
    if (bFromMenu && isDownloading(site))
        return;

    ctx.cursor = m_list.getSiteRecords(site);
    const int count = ctx.cursor.recordCount();
    if (count == 0)
        return;
    ctx.cursor.moveFirst();

    // The first eligible row in list order wins. Flags left on the rows before
    // it by an earlier run are cleared on the way; rows after it aren't touched.
    bool found = false;
    for (int i = 0; i < count; ++i) {
        if (isEligible(ctx.cursor.field(Field::Status))) {
            found = true;
            break;
        }
        ctx.cursor.setField(Field::IsDownloading, QStringLiteral("0"));
        ctx.cursor.moveNext();
    }
    if (!found) {
        emit queueRanOut(site);
        return;
    }
    // Without a recipe for the site the row stays queued as it is.
    if (!ctx.resolver)
        return;

    if (ctx.traits->stepReset == StepReset::BeforeStarting)
        ctx.iStep = 0;
    ctx.cursor.setField(Field::Status, StatusText::Starting);
    ctx.cursor.setField(Field::IsDownloading, QStringLiteral("1"));
    if (ctx.traits->stepReset == StepReset::AfterStarting)
        ctx.iStep = 0;
    ctx.resolver->resolve(ctx);
}

void SiteQueues::stopDownloads(int site)
{
    SiteContext &ctx = context(site);
    if (!isDownloading(site))
        return;
    // A site whose resolver holds a socket of its own goes on past any
    // failing step of its stop.
    const bool tolerant = ctx.traits->stopClosesSocket;
    auto step = [tolerant](auto &&statement) {
        if (tolerant)
            ignoreFailure(statement);
        else
            statement();
    };
    step([&] { ctx.bStop = true; });
    if (ctx.timer)
        step([&] { ctx.timer->setEnabled(false); });
    if (ctx.traits->stopClosesSocket && ctx.resolver)
        step([&] { ctx.resolver->closeConnections(ctx); });
    // The control raises stopped() on its way out, whatever phase it is in,
    // and the handler below writes the row.
    step([&] { ctx.downloader->stopDownload(); });
}

void SiteQueues::startAllDownloads()
{
    // A failure that escapes one site's start (a recipe without a guard of
    // its own) ends that site's start only; the other sites still begin.
    for (int site : SiteTable::startAllOrder()) {
        if (SiteTable::traits(site).inAllCommands && !isDownloading(site))
            ignoreFailure([&] { startDownloadLinks(site, true); });
    }
}

void SiteQueues::stopAllDownloads()
{
    for (int site : SiteTable::stopAllOrder()) {
        if (SiteTable::traits(site).inAllCommands)
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
    // Start-all pumps the event queue through the resolvers; a second click
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
    auto resolveAgain = [&ctx] {
        if (!ctx.resolver)
            throw RuntimeFailure("No resolver for the site");
        ctx.resolver->resolve(ctx);
    };
    switch (ctx.traits->waitEnd) {
    case WaitEnd::HandOff:
        ctx.handOff();
        break;
    case WaitEnd::HandOffIfLinkReady:
        if (ctx.bLinkReady)
            ctx.handOff();
        else
            resolveAgain();
        break;
    case WaitEnd::ResolveIfStepOne:
        if (ctx.iStep == 1)
            resolveAgain();
        break;
    }
}

// ---- Transfer outcomes ----
// Every statement of these handlers goes on past a failure: a row that can't
// be written never stops a handler.

void SiteQueues::onFileBegin(int index, float iFileSize)
{
    RowCursor &row = byIndex(index).cursor;
    // The server's size replaces the one the resolver guessed.
    ignoreFailure(
        [&] { row.setField(Field::FileSize, sizeToText(NumberText::toInt32(double(iFileSize)))); });
}

void SiteQueues::onProgress(int index, double iValue, int iBytesPerSecond, float iDownloadedBytes,
                            float, float iRemainTimeInSeconds)
{
    RowCursor &row = byIndex(index).cursor;
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

void SiteQueues::onComplete(int index)
{
    SiteContext &ctx = byIndex(index);
    ignoreFailure([&] { ctx.cursor.setField(Field::Status, StatusText::Complete); });
    clearTransferFields(ctx.cursor);
    // The next row begins inside this event.
    ignoreFailure([&] { startDownloadLinks(ctx.site, false); });
}

void SiteQueues::onError(int index, const QString &sDesc)
{
    SiteContext &ctx = byIndex(index);
    // Only the one word is kept; the description itself is not stored.
    ignoreFailure([&] {
        ctx.cursor.setField(Field::Status, sDesc == StatusText::ConnectionError
                                               ? StatusText::ConnectionError
                                               : StatusText::Error);
    });
    clearTransferFields(ctx.cursor);
    ignoreFailure([&] { startDownloadLinks(ctx.site, false); });
}

void SiteQueues::onStopped(int index)
{
    RowCursor &row = byIndex(index).cursor;
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
