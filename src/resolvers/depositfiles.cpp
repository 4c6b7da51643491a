#include "resolvers/depositfiles.h"

#include "list/formats.h"
#include "resolvers/recipes.h"
#include "resolvers/resolverframe.h"
#include "resolvers/textpos.h"
#include "resolvers/xmlhttprequest.h"

using namespace TextPos;

std::unique_ptr<SiteRecipe> makeDepositFilesRecipe()
{
    return std::make_unique<DepositFilesRecipe>();
}

void DepositFilesRecipe::resolve(RecipeSite &site)
{
    ResolverFrame::guardResolve(site, [&] {
        // The free download is chosen on the English page, the only one whose
        // texts the parser knows.
        XmlHttpRequest request;
        const auto page = ResolverFrame::post(site, request, englishLink(site.link()),
                                              QByteArrayLiteral("gateway_result=1"));
        if (!page)
            return;
        // Nothing of the answer is looked at here: the parser alone reads it,
        // busy texts first. A look for the site's short word "minute" at this
        // point would catch the pages that go on to the countdown.
        parseDepositFilesPage(site, *page);
    });
}

QString DepositFilesRecipe::englishLink(const QString &link)
{
    QString english = link;
    for (const char *language : {"/ru/", "/de/", "/es/", "/pt/"})
        english.replace(QLatin1String(language), QLatin1String("/en/"), Qt::CaseInsensitive);
    return english;
}

void DepositFilesRecipe::parseDepositFilesPage(RecipeSite &site, const QString &page)
{
    apply(site, readDownloadPage(page, site.localFolder()));
}

Reading DepositFilesRecipe::readDownloadPage(const QString &page, const QString &folder)
{
    return readGuarded([&](Reading &row) {
        // 1. No free slot for the country, or the address is downloading
        // already: five minutes, whatever the page says.
        if (contains(page, QStringLiteral("We are sorry, but all downloading slots for your "
                                          "country are busy.")) ||
            contains(page,
                     QStringLiteral("Your IP is already downloading a file from our system"))) {
            row.waitMinutes(QStringLiteral("5"));
            return;
        }
        // 2.
        if (contains(page, QStringLiteral("Such file does not exist or it has been removed for "
                                          "infringement of copyrights"))) {
            row.fail(StatusText::NotFound);
            return;
        }

        // 3.-5. The download form's action. Its closing quote is looked for
        // from the value's second character on.
        const int a = find(page, QStringLiteral("id=\"download_url\""));
        const int b = a ? find(page, QStringLiteral("action=\""), a) : 0;
        const int c = b ? find(page, QStringLiteral("\""), b + 9) : 0;
        if (c == 0) {
            row.fail(StatusText::Error);
            return;
        }
        row.set(Field::DirectURL, span(page, b + 8, c - b - 8));

        // 6. The title behind "File name", quotes and all: the cleaner takes
        // them out. Without it the row keeps the name it has.
        const int d = find(page, QStringLiteral("File name"));
        const int e = d ? find(page, QStringLiteral("title="), d) : 0;
        const int f = e ? find(page, QStringLiteral(">"), e) : 0;
        if (f != 0)
            row.set(Field::LocalFile, cleanFileName(span(page, e + 6, f - e - 6)));

        // 7.
        row.set(Field::LocalFilePath, folder);

        // 8.-10. Without the site's own countdown the row is left as it is and
        // the queue rests on it. The countdown's text itself isn't used; only
        // an impossible length there counts, as a failure.
        const int g = find(page, QStringLiteral("download_waiter_remain"));
        const int h = g ? find(page, QStringLiteral("<"), g) : 0;
        if (h == 0)
            return;
        (void)span(page, g + 24, h - g - 24);

        // 11.-13. The page's seconds are shown, but the row waits one second.
        row.set(Field::Status, QStringLiteral("Wait ") +
                                   QString::number(ResolverFrame::parseWaitSeconds(page)) +
                                   QStringLiteral(" Seconds"));
        row.set(Field::WaitTimeInSec, QStringLiteral("1"));
        row.countdown(Reading::kSeconds);
    });
}
