#include "resolvers/mediafire.h"

#include "list/formats.h"
#include "list/sitetable.h"
#include "resolvers/recipes.h"
#include "resolvers/resolverframe.h"
#include "resolvers/textpos.h"
#include "resolvers/xmlhttprequest.h"

using namespace TextPos;

namespace {

// The script's values that make up the address, by their names in it.
struct ScriptValues
{
    QString mL;     // the server
    QString mH;     // a path segment
    QString mY;     // the file's name as the site writes it
    QString eleven; // the last value of exactly 11 characters, a path segment
};

// The script's text is a row of "var name = value" declarations with their
// quotes and semicolons taken out; each piece is a name, "=" and a value.
ScriptValues readDeclarations(QString script)
{
    script.remove(u';');
    script.remove(u'\'');
    const QStringList pieces = script.split(QStringLiteral("var "), Qt::KeepEmptyParts);
    ScriptValues values;
    // Any piece may give the 11-character value, a piece without "=" with its
    // whole text, and the named values too; the last one wins.
    for (const QString &piece : pieces) {
        const QString value = trimBlanks(spanToEnd(piece, find(piece, QStringLiteral("=")) + 1));
        if (value.size() == 11)
            values.eleven = value;
    }
    for (const QString &piece : pieces) {
        const int e = find(piece, QStringLiteral("="));
        if (e == 0)
            continue;
        const QString name = trimBlanks(span(piece, 1, e - 1));
        const QString value = trimBlanks(spanToEnd(piece, e + 1));
        if (name == u"mL")
            values.mL = value;
        else if (name == u"mH")
            values.mH = value;
        else if (name == u"mY")
            values.mY = value;
    }
    return values;
}

} // namespace

std::unique_ptr<SiteRecipe> makeMediaFireRecipe()
{
    return std::make_unique<MediaFireRecipe>();
}

void MediaFireRecipe::resolve(RecipeSite &site)
{
    using ResolverFrame::OnBadStatus;
    ResolverFrame::guardResolve(
        site,
        [&] {
            // 1.-3. The link's page, which has to hold the download script.
            const QString link = site.link();
            XmlHttpRequest request;
            const auto page = ResolverFrame::get(site, request, link, OnBadStatus::Error);
            if (!page)
                return;
            if (!hasDownloadScript(*page)) {
                site.notFound();
                return;
            }
            // 4.-7. The dynamic page, on the same request object.
            const auto script = ResolverFrame::get(
                site, request, scriptAddress(link, SiteHosts::instance().wwwHost(Sites::MediaFire)),
                OnBadStatus::Error);
            if (!script)
                return;
            // 8.-22.
            apply(site, readScriptPage(*script, link, site.localFolder()));
        },
        StatusText::Error);
}

bool MediaFireRecipe::hasDownloadScript(const QString &page)
{
    // Only the presence counts: "Eo()", then a "(" and a ")" each at least
    // five places behind the one before.
    const int a = find(page, QStringLiteral("Eo()"));
    const int b = a ? find(page, QStringLiteral("("), a + 5) : 0;
    return b != 0 && find(page, QStringLiteral(")"), b + 5) != 0;
}

QString MediaFireRecipe::scriptAddress(const QString &link, const QString &wwwHost)
{
    const QString key = spanToEnd(link, find(link, QStringLiteral("?")) + 1);
    return QStringLiteral("http://") + wwwHost + QStringLiteral("/dynamic/download.php?qk=") + key;
}

Reading MediaFireRecipe::readScriptPage(const QString &page, const QString &link,
                                        const QString &folder)
{
    return readGuarded([&](Reading &row) {
        // 8.-12. The script between the comment's opening and its first
        // function.
        const QString script = between(page, QStringLiteral("!--"), QStringLiteral("function"));
        if (script.isNull()) {
            row.fail(StatusText::NotFound);
            return;
        }
        const ScriptValues values = readDeclarations(script);

        // 13.-14. The script's link to the file has to be on the page, up to
        // the closing `">`. What stands from the 7th character of the marker
        // on is read and not used; without `">` its length is negative.
        const int h = find(page, QStringLiteral("href=\\\"http://\"+mL+"));
        if (h == 0) {
            row.fail(StatusText::NotFound);
            return;
        }
        span(page, h + 7, find(page, QStringLiteral("\">"), h) - h - 7);

        // 17. The address, gaps and all where the script lacks a value.
        const QString address = QStringLiteral("http://") + values.mL + u'/' + values.eleven +
                                QStringLiteral("g/") + values.mH + u'/' + values.mY;

        // 18.-19. A name written with escapes isn't decoded: the link's last
        // segment stands in for it, with the last 5 characters of the site's
        // name to bring the extension along.
        QString name = values.mY;
        if (values.mY.contains(u'%')) {
            const QString last = afterLast(link, QStringLiteral("/"));
            name = last.isNull() ? link : last + values.mY.right(5);
        }
        row.set(Field::LocalFile, cleanFileName(name));

        // 20.-22. The folder, and the transfer at once.
        row.set(Field::LocalFilePath, folder);
        row.set(Field::Status, StatusText::Waiting);
        row.set(Field::DirectURL, address);
        row.transfer();
    });
}
