#include "resolvers/resolverframe.h"

#include "list/statustext.h"
#include "resolvers/textpos.h"
#include "resolvers/xmlhttprequest.h"
#include "scheduling/numbertext.h"
#include "system/logicaltimer.h"

#include <QCoreApplication>

namespace ResolverFrame {

namespace {

const QString kZero = QStringLiteral("0");

void writeFailure(SiteContext &site, const QString &status)
{
    site.cursor.setField(Field::Status, status);
    site.cursor.setField(Field::WaitTimeInSec, kZero);
}

} // namespace

PollResult poll(SiteContext &site, XmlHttpRequest &request)
{
    RequestGuard &guard = site.queues->requestGuard();
    // Enabling a running time-out leaves it running: a request may be cut off
    // by a timer that an earlier request of any site started.
    guard.tmrTimeOut->setEnabled(true);
    guard.bTimeOut = false;

    while (request.readyState() != XmlHttpRequest::Done) {
        for (int pump = 0; pump < kPumpsPerRound; ++pump) {
            // Once the round's answer is known there is nothing to wait for:
            // the remaining pumps only run what is already queued.
            const bool settled =
                request.readyState() == XmlHttpRequest::Done || site.bStop || guard.bTimeOut;
            QCoreApplication::processEvents(settled ? QEventLoop::AllEvents
                                                    : QEventLoop::AllEvents |
                                                          QEventLoop::WaitForMoreEvents);
        }
        if (site.bStop)
            return PollResult::Stopped;
        if (guard.bTimeOut)
            return PollResult::TimedOut;
    }
    return PollResult::Ended;
}

bool waitForAnswer(SiteContext &site, XmlHttpRequest &request)
{
    switch (poll(site, request)) {
    case PollResult::Stopped:
        stopped(site);
        return false;
    case PollResult::TimedOut:
        connectionError(site);
        return false;
    case PollResult::Ended:
        break;
    }
    if (request.status() != 200) {
        connectionError(site);
        return false;
    }
    return true;
}

void stopped(SiteContext &site)
{
    writeFailure(site, StatusText::Stopped);
}

void connectionError(SiteContext &site)
{
    writeFailure(site, StatusText::ConnectionError);
    site.continueQueue();
}

void notFound(SiteContext &site, const QString &errorDesc)
{
    writeFailure(site, StatusText::NotFound);
    if (!errorDesc.isNull())
        site.cursor.setField(Field::ErrorDesc, errorDesc);
    site.continueQueue();
}

void pageError(SiteContext &site)
{
    writeFailure(site, StatusText::Error);
    site.continueQueue();
}

void longWait(SiteContext &site, const QString &minutes)
{
    site.cursor.setField(Field::Status,
                         QStringLiteral("Wait ") + minutes + QStringLiteral(" Minutes"));
    site.cursor.setField(Field::WaitTimeInSec,
                         NumberText::fromDouble(TextPos::toNumber(minutes) * 60));
    site.startTimer(kMinutesInterval);
}

void resolved(SiteContext &site, int seconds)
{
    site.cursor.setField(Field::Status, QStringLiteral("Wait %1 Seconds").arg(seconds));
    site.cursor.setField(Field::WaitTimeInSec, QString::number(seconds));
    site.startTimer(kSecondsInterval);
}

QString localFolder(const FolderSettings &folder, const QString &siteSubFolder)
{
    QString path = folder.downloadDir ? folder.downloadDir() : QString();
    if (folder.createSubDir && folder.createSubDir() == 1)
        path += QLatin1Char('/') + siteSubFolder;
    return path;
}

int parseWaitSeconds(const QString &page)
{
    // A failure anywhere here leaves the result at 0.
    int seconds = 0;
    ignoreFailure([&] {
        const int p = TextPos::find(page, QStringLiteral("var c="));
        if (p == 0)
            return;
        const int q = TextPos::find(page, QStringLiteral(";"), p);
        if (q == 0)
            return;
        seconds = NumberText::toInt16(TextPos::span(page, p + 6, q - p - 6));
    });
    return seconds;
}

} // namespace ResolverFrame
