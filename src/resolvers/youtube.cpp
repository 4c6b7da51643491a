#include "resolvers/youtube.h"

#include "list/formats.h"
#include "list/sitetable.h"
#include "resolvers/recipes.h"
#include "resolvers/resolverframe.h"
#include "resolvers/textpos.h"
#include "resolvers/xmlhttprequest.h"

using namespace TextPos;

namespace {

// The longest text the unescaping gives; anything longer gives nothing.
constexpr int kUnescapeLimit = 1024;

// The value of a hex digit, -1 for any other character.
int hexDigit(QChar c)
{
    const char16_t u = c.unicode();
    if (u >= u'0' && u <= u'9')
        return u - u'0';
    if (u >= u'a' && u <= u'f')
        return u - u'a' + 10;
    if (u >= u'A' && u <= u'F')
        return u - u'A' + 10;
    return -1;
}

} // namespace

std::unique_ptr<SiteRecipe> makeYoutubeRecipe()
{
    return std::make_unique<YoutubeRecipe>();
}

void YoutubeRecipe::resolve(RecipeSite &site)
{
    ResolverFrame::guardResolve(site, [&] {
        XmlHttpRequest request;
        const auto page = ResolverFrame::get(site, request, site.link());
        if (page)
            parseYoutubePage(site, *page);
    });
}

void YoutubeRecipe::parseYoutubePage(RecipeSite &site, const QString &page)
{
    const Reading reading =
        readWatchPage(page, SiteHosts::instance().host(Sites::Youtube), site.localFolder());
    // Every value on its own, then the run goes on as the page says.
    for (const auto &value : reading.values)
        ignoreFailure([&] { site.setField(value.first, value.second); });
    Reading end = reading;
    end.values.clear();
    ignoreFailure([&] { write(site, end); });
}

Reading YoutubeRecipe::readWatchPage(const QString &page, const QString &host,
                                     const QString &folder)
{
    Reading row;
    // 1.-3. The video is gone, behind an age gate, or the page wants another
    // browser. (A malformed id has been taken by the first test already.)
    const QString malformed = QStringLiteral("The URL contained a malformed video ID");
    if (contains(page, QStringLiteral("The video you have requested is not available")) ||
        contains(page, malformed))
        return row.fail(StatusText::NotFound);
    if (contains(page, QStringLiteral(
                           "To view this video or group, please verify you are 18 or older by")) ||
        contains(page, malformed))
        return row.fail(QStringLiteral("Login Required"));
    if (contains(page, QStringLiteral("Your browser is no longer supported")))
        return row.fail(QStringLiteral("Upgrade IE Browser"));

    // 4. The token behind "&t=" up to the next "&". Without "&t=" the search
    // for "&" starts at the page's beginning and the text is taken from
    // position 3 on; nothing guards against that.
    int p = 0;
    int q = 0;
    QString token;
    ResolverFrame::eachStep([&] {
        p = find(page, QStringLiteral("&t="));
        q = find(page, QStringLiteral("&"), p + 1);
    });
    if (q == 0)
        return row.fail(StatusText::Error);
    ResolverFrame::eachStep([&] { token = unescapeUrl(span(page, p + 3, q - p - 3)); });

    // 5. The id: `"video_id"` is 10 characters; the search for its value's
    // opening quote starts one further on, behind the colon.
    int b = 0;
    int c = 0;
    QString id;
    ResolverFrame::eachStep([&] {
        const int a = find(page, QStringLiteral("\"video_id\""));
        b = find(page, QStringLiteral("\""), a + 11);
        c = find(page, QStringLiteral("\""), b + 1);
    });
    if (c == 0)
        return row.fail(StatusText::Error);
    ResolverFrame::eachStep([&] { id = span(page, b + 1, c - b - 1); });

    QString address;
    QString title;
    int content = 0;
    ResolverFrame::eachStep(
        // 6. The file's address.
        [&] {
            address = QStringLiteral("http://") + host + QStringLiteral("/get_video?video_id=") +
                      trimBlanks(id) + QStringLiteral("&t=") + trimBlanks(token) +
                      QStringLiteral("&asv");
        },
        // 7. The title: what follows content=" up to the line's end, the
        // tag's closing characters included (the cleaning takes them out).
        // Without name="title" the search starts at 0, which fails.
        [&] {
            const int n = find(page, QStringLiteral("name=\"title\""));
            content = find(page, QStringLiteral("content="), n);
        },
        [&] {
            title = ResolverFrame::madeUpName(QStringLiteral("Youtube"));
            if (content > 0) {
                const int e = find(page, QStringLiteral("\n"), content + 9);
                if (e > 0)
                    title = span(page, content + 9, e - content - 9);
            }
        },
        // 8.-12. The file, its folder and the transfer.
        [&] { title = cleanFileName(title); },
        [&] { row.set(Field::LocalFile, title + QStringLiteral(".flv")); },
        [&] { row.set(Field::LocalFilePath, folder); },
        [&] {
            row.set(Field::Status, StatusText::Connecting);
            row.set(Field::DirectURL, address);
            row.transfer();
        });
    return row;
}

QString YoutubeRecipe::unescapeUrl(const QString &text)
{
    if (text.isEmpty())
        return QString();
    QString result;
    result.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] == u'%' && i + 2 < text.size() && hexDigit(text[i + 1]) >= 0 &&
            hexDigit(text[i + 2]) >= 0) {
            result += QChar(hexDigit(text[i + 1]) * 16 + hexDigit(text[i + 2]));
            i += 2;
        } else {
            result += text[i];
        }
    }
    return result.size() > kUnescapeLimit ? QString() : result;
}
