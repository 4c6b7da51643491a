#include "standin.h"

#include "resolvers/resolverframe.h"
#include "resolvers/xmlhttprequest.h"

#include <QScopeGuard>

void StandInRecipe::resolve(RecipeSite &site)
{
    maxDepth = std::max(++depth, maxDepth);
    const auto leave = qScopeGuard([this] { --depth; });
    calls << site.link();
    statusAtCall << site.field(Field::Status);
    if (order)
        order->append(site.number());

    if (mode == Mode::Fail)
        return site.connectionError();
    if (mode == Mode::Hold) {
        XmlHttpRequest request;
        ResolverFrame::get(site, request, holdUrl);
        return;
    }
    if (mode != Mode::Resolve)
        return;
    site.setField(Field::DirectURL, site.link());
    site.setField(Field::LocalFile, site.link().section(QLatin1Char('/'), -1));
    site.setField(Field::LocalFilePath, site.localFolder());
    site.setField(Field::FileSize, fileSize);
    site.setLinkReady(true);
    const Sites::Site &info = Sites::site(site.number());
    if (info.hasTimer && info.waitEnd != Sites::WaitEnd::ResolveIfStepOne) {
        site.setField(Field::Status, QStringLiteral("Wait %1 Seconds").arg(wait));
        site.setField(Field::WaitTimeInSec, QString::number(wait));
        site.startTimer(1000);
    } else {
        site.setField(Field::Status, QStringLiteral("Connecting..."));
        site.startTransfer();
    }
}
