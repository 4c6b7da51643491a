#include "resolvers/resolverframe.h"

#include "list/statustext.h"
#include "resolvers/textpos.h"
#include "resolvers/xmlhttprequest.h"
#include "scheduling/numbertext.h"
#include "scheduling/sitequeues.h"
#include "system/logicaltimer.h"

#include <QCoreApplication>
#include <QRandomGenerator>

namespace ResolverFrame {

PollResult poll(RecipeSite &site, XmlHttpRequest &request)
{
    RequestGuard &guard = site.requestGuard();
    // Enabling a running time-out leaves it running: a request may be cut off
    // by a timer that an earlier request of any site started.
    guard.tmrTimeOut->setEnabled(true);
    guard.bTimeOut = false;

    while (request.readyState() != XmlHttpRequest::Done) {
        for (int pump = 0; pump < kPumpsPerRound; ++pump) {
            // Once the round's answer is known there is nothing to wait for:
            // the remaining pumps only run what is already queued.
            const bool settled =
                request.readyState() == XmlHttpRequest::Done || site.stopAsked() || guard.bTimeOut;
            QCoreApplication::processEvents(settled ? QEventLoop::AllEvents
                                                    : QEventLoop::AllEvents |
                                                          QEventLoop::WaitForMoreEvents);
        }
        if (site.stopAsked())
            return PollResult::Stopped;
        if (guard.bTimeOut)
            return PollResult::TimedOut;
    }
    return PollResult::Ended;
}

void pollToTheEnd(XmlHttpRequest &request)
{
    while (request.readyState() != XmlHttpRequest::Done) {
        for (int pump = 0; pump < kPumpsPerRound; ++pump) {
            const bool settled = request.readyState() == XmlHttpRequest::Done;
            QCoreApplication::processEvents(settled ? QEventLoop::AllEvents
                                                    : QEventLoop::AllEvents |
                                                          QEventLoop::WaitForMoreEvents);
        }
    }
}

bool waitForAnswer(RecipeSite &site, XmlHttpRequest &request, OnBadStatus onBadStatus)
{
    switch (poll(site, request)) {
    case PollResult::Stopped:
        site.stopped();
        return false;
    case PollResult::TimedOut:
        site.connectionError();
        return false;
    case PollResult::Ended:
        break;
    }
    if (request.status() == 200 || onBadStatus == OnBadStatus::Accepted)
        return true;
    switch (onBadStatus) {
    case OnBadStatus::ConnectionFailure:
        site.connectionError();
        break;
    case OnBadStatus::Error:
        site.pageError();
        break;
    case OnBadStatus::ConnectionErrorAtRest:
        site.writeFailure(StatusText::ConnectionError);
        break;
    case OnBadStatus::Accepted:
        break;
    }
    return false;
}

std::optional<QString> get(RecipeSite &site, XmlHttpRequest &request, const QString &url,
                           OnBadStatus onBadStatus)
{
    request.open(QStringLiteral("GET"), url);
    request.send();
    if (!waitForAnswer(site, request, onBadStatus))
        return std::nullopt;
    return request.responseText();
}

std::optional<QString> post(RecipeSite &site, XmlHttpRequest &request, const QString &url,
                            const QByteArray &body, OnBadStatus onBadStatus)
{
    request.sendForm(url, body);
    if (!waitForAnswer(site, request, onBadStatus))
        return std::nullopt;
    return request.responseText();
}

QString madeUpName(const QString &prefix)
{
    return prefix + u' ' + QString::number(QRandomGenerator::global()->bounded(10000));
}

QString lastSegment(const QString &address, const QString &link)
{
    const QString name = TextPos::afterLast(address, QStringLiteral("/"));
    return name.isNull() ? TextPos::afterLast(link, QStringLiteral("/")) : name;
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
        seconds = NumberText::toInt32(TextPos::span(page, p + 6, q - p - 6));
    });
    return seconds;
}

} // namespace ResolverFrame
