#include "resolvers/filefactory.h"

#include "list/formats.h"
#include "list/sitetable.h"
#include "resolvers/recipes.h"
#include "resolvers/resolverframe.h"
#include "resolvers/textpos.h"
#include "resolvers/xmlhttprequest.h"

using namespace TextPos;

std::unique_ptr<SiteRecipe> makeFileFactoryRecipe()
{
    return std::make_unique<FileFactoryRecipe>();
}

void FileFactoryRecipe::resolve(RecipeSite &site)
{
    ResolverFrame::guardResolve(site, [&] {
        // 1.-2. The link's page.
        XmlHttpRequest request;
        const auto page = ResolverFrame::get(site, request, site.link());
        if (!page)
            return;

        // 3.-8. The file is gone, or no slot is free, or the button's page
        // is next.
        const FirstPage first = readFirstPage(*page);
        switch (first.kind) {
        case FirstPage::Kind::FileGone:
        case FirstPage::Kind::NoButton:
            site.notFound();
            return;
        case FirstPage::Kind::NoSlots:
            site.longWait(QStringLiteral("5"));
            return;
        case FirstPage::Kind::Button:
            break;
        }

        // 9.-10. The button's page on the same request object.
        request.abort();
        const auto answer = ResolverFrame::get(
            site, request,
            buttonAddress(SiteHosts::instance().wwwHost(Sites::FileFactory), first.path));
        if (answer)
            parseFileFactoryPage(site, *answer);
    });
}

FileFactoryRecipe::FirstPage FileFactoryRecipe::readFirstPage(const QString &page)
{
    FirstPage result;
    if (contains(page, QStringLiteral("Sorry, this file is no longer available. It may have been "
                                      "deleted by the uploader, or has expired."))) {
        result.kind = FirstPage::Kind::FileGone;
        return result;
    }
    if (contains(page, QStringLiteral("Sorry, there are currently no free download slots "
                                      "available on this server."))) {
        result.kind = FirstPage::Kind::NoSlots;
        return result;
    }
    const int a = find16(page, QStringLiteral("alt=\"Download Now\""));
    const int b = a ? findBack(page, QStringLiteral("href=\""), a) : 0;
    // The closing quote is looked for one place into the value.
    const int c = b ? find16(page, QStringLiteral("\""), b + 7) : 0;
    if (a == 0 || b == 0 || c == 0)
        return result;
    result.kind = FirstPage::Kind::Button;
    result.path = span(page, b + 6, c - b - 6);
    return result;
}

QString FileFactoryRecipe::buttonAddress(const QString &wwwHost, const QString &path)
{
    return QStringLiteral("http://") + wwwHost + u'\\' + path;
}

void FileFactoryRecipe::parseFileFactoryPage(RecipeSite &site, const QString &page)
{
    apply(site,
          readDownloadPage(page, site.link(), site.field(Field::DirectURL), site.localFolder()));
}

Reading FileFactoryRecipe::readDownloadPage(const QString &page, const QString &link,
                                            const QString &directUrl, const QString &folder)
{
    return readGuarded([&](Reading &row) {
        // 1. The site wants a pause: five minutes, counted down a second per
        // tick, and the row then goes to the transfer without an address.
        if (contains(page, QStringLiteral("Please try again later"))) {
            row.set(Field::Status, QStringLiteral("Wait 5 Minutes"));
            row.set(Field::WaitTimeInSec, QStringLiteral("300"));
            row.ready(false).countdown(Reading::kSeconds);
            return;
        }

        // 2. The direct address from the downloadLink's href="..."; the row's
        // own stays where a marker is missing. The closing quote is looked
        // for two places into the value.
        QString direct = directUrl;
        const int d = find(page, QStringLiteral("downloadLink"));
        const int e = d ? find(page, QStringLiteral("href"), d) : 0;
        const int f = e ? find(page, QStringLiteral("\""), e + 8) : 0;
        if (f != 0) {
            direct = span(page, e + 6, f - e - 6);
            row.set(Field::DirectURL, direct);
        }

        // 3. No address: the queue rests on the row.
        if (direct.isEmpty()) {
            row.failAtRest(StatusText::Error);
            return;
        }

        // 4. The wait; a countdown marker with no "</" behind it fails.
        QString wait = QStringLiteral("30");
        const int g = find(page, QStringLiteral("countdown\">"));
        if (g != 0) {
            const int h = find(page, QStringLiteral("</"), g);
            const QString text = span(page, g + 11, h - g - 11);
            if (isNumeric(text))
                wait = text;
        }

        // 5. The name behind the address's last "/", else behind the link's.
        const QString name = ResolverFrame::lastSegment(direct, link);
        if (!name.isNull())
            row.set(Field::LocalFile, cleanFileName(name));

        // 6.-8.
        row.set(Field::LocalFilePath, folder);
        row.waitSeconds(wait).ready();
    });
}
