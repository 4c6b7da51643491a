#include "resolvers/fourshared.h"

#include "list/sitetable.h"
#include "resolvers/recipes.h"
#include "resolvers/resolverframe.h"
#include "resolvers/textpos.h"
#include "resolvers/xmlhttprequest.h"

using namespace TextPos;

std::unique_ptr<SiteRecipe> makeFourSharedRecipe()
{
    return std::make_unique<FourSharedRecipe>();
}

void FourSharedRecipe::resolve(RecipeSite &site)
{
    ResolverFrame::guardResolve(site, [&] {
        // 1.-2. The file page's address becomes the download page's.
        const QString address =
            downloadPageAddress(site.link(), SiteHosts::instance().host(Sites::FourShared));

        // 3.-9. A page without a countdown is asked for once more, then the
        // row fails.
        for (bool repeated = false;; repeated = true) {
            XmlHttpRequest request;
            // A bad status leaves the queue on the row; a time-out goes on.
            const auto page = ResolverFrame::get(site, request, address,
                                                 ResolverFrame::OnBadStatus::ConnectionErrorAtRest);
            if (!page || parse4SharedPage(site, *page))
                return;
            if (repeated) {
                site.pageError();
                return;
            }
        }
    });
}

QString FourSharedRecipe::downloadPageAddress(const QString &link, const QString &host)
{
    QString address = link;
    const int query = find(address, QStringLiteral("?"));
    if (query != 0)
        address.truncate(query - 1);
    // Only the "/file" that follows the host changes; the host stays as the
    // link writes it.
    const QString marker = host + QStringLiteral("/file");
    for (int at = find(address, marker); at != 0;
         at = find(address, marker, at + int(host.size()) + 4)) {
        address.replace(at - 1 + host.size(), 5, QStringLiteral("/get"));
    }
    return address;
}

bool FourSharedRecipe::parse4SharedPage(RecipeSite &site, const QString &page)
{
    const auto reading = readDownloadPage(page, site.localFolder());
    if (!reading)
        return false;
    apply(site, *reading);
    return true;
}

std::optional<Reading> FourSharedRecipe::readDownloadPage(const QString &page,
                                                          const QString &folder)
{
    // 1. The file is gone.
    if (contains(page, QStringLiteral("The file link that you requested is not valid")))
        return Reading().fail(StatusText::NotFound);
    // 2. Without a countdown there is nothing to read.
    if (!contains(page, QStringLiteral("seconds")))
        return std::nullopt;

    return readGuarded([&](Reading &row) {
        // 3. "seconds" without "seconds...": the row stays as it is.
        const int p = find(page, QStringLiteral("seconds..."));
        if (p == 0)
            return;

        // 4. The wait is the text of the last element before "seconds...".
        const int a = findBack(page, QStringLiteral("<"), p);
        const int b = findBack(page, QStringLiteral(">"), a);
        QString wait = span(page, b + 1, a - b - 1);
        if (!isNumeric(wait))
            wait = QStringLiteral("45");

        // 5. The address in the link's href='...', the quote behind "href="
        // stepped over. Without the link text the backward search has no
        // start, which fails.
        const int c = find(page, QStringLiteral("Click here to download this file"));
        const int q = findBack(page, QStringLiteral("'"), c);
        const int h = findBack(page, QStringLiteral("href="), q);
        const QString direct = span(page, h + 6, q - h - 6);
        row.set(Field::DirectURL, direct);

        // 6. No address: this site's own capitals, and the queue rests.
        if (direct.isEmpty()) {
            row.set(Field::Status, QStringLiteral("ERROR"));
            return;
        }

        // 7.-8.
        row.waitSeconds(wait);
        row.set(Field::LocalFilePath, folder);

        // 9. The name is the address's last segment before "?tsid", as it
        // stands; without one the row's name stays.
        const int t = find(direct, QStringLiteral("?tsid"));
        const int r = t ? findBack(direct, QStringLiteral("/"), t) : 0;
        if (r != 0)
            row.set(Field::LocalFile, span(direct, r + 1, t - r - 1));

        // 10. From now on the end of a wait hands the row to the transfer.
        row.ready();
    });
}
