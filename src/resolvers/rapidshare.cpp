#include "resolvers/rapidshare.h"

#include "list/formats.h"
#include "resolvers/recipes.h"
#include "resolvers/resolverframe.h"
#include "resolvers/textpos.h"
#include "resolvers/xmlhttprequest.h"
#include "scheduling/numbertext.h"

using namespace TextPos;

std::unique_ptr<SiteRecipe> makeRapidShareRecipe()
{
    return std::make_unique<RapidShareRecipe>();
}

void RapidShareRecipe::resolve(RecipeSite &site)
{
    // 1. The link's page.
    XmlHttpRequest request;
    const auto page = ResolverFrame::get(site, request, site.link());
    if (!page)
        return;

    // 2.-5. The file is gone, or the page has no form to post, or it has.
    const FirstPage first = readFirstPage(*page);
    if (first.kind == FirstPage::Kind::FileGone) {
        site.notFound();
        return;
    }
    if (first.kind == FirstPage::Kind::NoForm) {
        site.connectionError();
        return;
    }

    // 6. The free download is asked for on the same request object.
    const auto answer =
        ResolverFrame::post(site, request, first.formAddress, QByteArrayLiteral("dl.start=Free"));
    if (!answer)
        return;

    // 7.
    parseRapidSharePage(site, *answer);
}

RapidShareRecipe::FirstPage RapidShareRecipe::readFirstPage(const QString &page)
{
    FirstPage result;
    // Two blanks after the first sentence, as the site writes it.
    if (contains(page,
                 QStringLiteral("The file could not be found.  Please check the download link."))) {
        result.kind = FirstPage::Kind::FileGone;
        return result;
    }
    const int form = find(page, QStringLiteral("form id=\"ff\""));
    const int a = form ? find(page, QStringLiteral("action="), form) : 0;
    const int m = a ? find(page, QStringLiteral("method="), a) : 0;
    if (form == 0 || a == 0 || m == 0)
        return result;
    // Between the quotes of action="...", with one blank before method=.
    result.kind = FirstPage::Kind::Form;
    result.formAddress = span(page, a + 8, m - a - 10);
    return result;
}

void RapidShareRecipe::parseRapidSharePage(RecipeSite &site, const QString &page)
{
    apply(site, readDownloadPage(page, site.link(), site.localFolder()));
}

Reading RapidShareRecipe::readDownloadPage(const QString &page, const QString &link,
                                           const QString &folder)
{
    return readGuarded([&](Reading &row) {
        // 1. An error heading: the file is gone, or the site wants a pause.
        if (contains(page, QStringLiteral("<h1>Error</h1>"))) {
            if (contains(page, QStringLiteral("The file could not be found"))) {
                row.fail(StatusText::NotFound);
                row.set(Field::ErrorDesc, QStringLiteral("The file could not be found, It may be "
                                                         "deleted by the owner or expired."));
                return;
            }
            const int p = find(page, QStringLiteral("minutes"));
            const int q = p ? findBack(page, QStringLiteral(" "), p - 1) : 0;
            if (p != 0 && q != 0) {
                // The text from the blank up to the word: a single blank where
                // the page writes "3 minutes", which gives the 5 minutes below.
                QString minutes = span(page, q, p - q);
                if (!isNumeric(minutes))
                    minutes = QStringLiteral("5");
                row.waitMinutes(minutes);
                return;
            }
            // Neither: the page is read as if the heading weren't there.
        }

        // 2. The direct address from the download form; left as it was when
        // the form isn't there. The closing quote is looked for two places
        // into the value.
        const QString dlf = QStringLiteral("form name=\"dlf\" action=\"");
        const int f = find(page, dlf);
        if (f != 0) {
            const int g = find(page, QStringLiteral("\""), f + 26);
            if (g != 0)
                row.set(Field::DirectURL, span(page, f + dlf.size(), g - f - dlf.size()));
        }

        // 3. The file name from the link, or a made-up one.
        const QString name = afterLast(link, QStringLiteral("/"));
        row.set(Field::LocalFile, name.isNull()
                                      ? ResolverFrame::madeUpName(QStringLiteral("Rapid"))
                                      : cleanFileName(QString(name).remove(QStringLiteral(".html"),
                                                                           Qt::CaseInsensitive)));

        // 4. The size as the page gives it in KB, "?" where it doesn't.
        row.set(Field::FileSize, QStringLiteral("?"));
        const int u = find(page, QStringLiteral(">|"));
        const int v = u ? find(page, QStringLiteral("KB<"), u) : 0;
        if (u != 0 && v != 0) {
            const QString kb = span(page, u + 2, v - u - 2);
            if (isNumeric(kb)) {
                const double bytes = NumberText::roundHalfEven(toNumber(kb), 4) * 1024;
                row.set(Field::FileSize, sizeToText(NumberText::toInt32(bytes)));
            }
        }

        // 5. The folder.
        row.set(Field::LocalFilePath, folder);

        // 6. and 7. The wait; from now on every end of a wait at this site
        // hands the row to the transfer.
        row.set(Field::Status, StatusText::Waiting);
        row.waitSeconds(QString::number(ResolverFrame::parseWaitSeconds(page))).ready();
    });
}
