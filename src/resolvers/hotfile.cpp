#include "resolvers/hotfile.h"

#include "resolvers/recipes.h"
#include "resolvers/resolverframe.h"
#include "resolvers/textpos.h"
#include "resolvers/xmlhttprequest.h"
#include "scheduling/numbertext.h"

#include <QStringList>

using namespace TextPos;

std::unique_ptr<SiteRecipe> makeHotFileRecipe()
{
    return std::make_unique<HotFileRecipe>();
}

void HotFileRecipe::resolve(RecipeSite &site)
{
    ResolverFrame::guardResolve(site, [&] {
        XmlHttpRequest request;
        if (site.step() == 1)
            postForm(site, request);
        else
            fetchForm(site, request);
    });
}

void HotFileRecipe::fetchForm(RecipeSite &site, XmlHttpRequest &request)
{
    const auto page = ResolverFrame::get(site, request, site.link());
    if (!page)
        return;
    const FormPage form = readFormPage(*page);
    if (!form.hasForm) {
        site.notFound();
        return;
    }
    sHotFilePostData = form.postData;
    write(site, Reading().waitSeconds(form.wait));
    ++site.step();
}

void HotFileRecipe::postForm(RecipeSite &site, XmlHttpRequest &request)
{
    // The form goes back to the link's own address.
    request.abort();
    const auto answer = ResolverFrame::post(site, request, site.link(), sHotFilePostData.toUtf8());
    if (!answer)
        return;
    parseHotFilePage(site, *answer);
}

HotFileRecipe::FormPage HotFileRecipe::readFormPage(const QString &page)
{
    FormPage result;
    // The form's text leaves out the character behind "name=f>" and the one
    // in front of "<tr>".
    const int a = find16(page, QStringLiteral("name=f>"));
    const int b = a ? find16(page, QStringLiteral("<tr>"), a) : 0;
    if (a == 0 || b == 0)
        return result;
    result.hasForm = true;
    const QString form = span(page, a + 8, b - a - 9);

    // Each hidden input "name=k value=v>" becomes "k=v&", the value as it
    // stands. The text in front of the first input usually comes out empty
    // and still adds its "&", so the body begins with one.
    const QStringList pieces =
        form.split(QStringLiteral("<input type=hidden"), Qt::KeepEmptyParts, Qt::CaseInsensitive);
    for (QString piece : pieces) {
        if (piece.isEmpty())
            continue;
        piece.remove(QStringLiteral("name="), Qt::CaseInsensitive)
            .remove(QLatin1Char('>'))
            .replace(QStringLiteral(" value="), QStringLiteral("="), Qt::CaseInsensitive)
            .remove(QStringLiteral("\r\n"))
            .remove(QLatin1Char('\r'))
            .remove(QLatin1Char('\n'));
        result.postData += trimBlanks(piece) + QLatin1Char('&');
    }
    if (result.postData.endsWith(QLatin1Char('&')))
        result.postData.chop(1);

    // The script's countdown is in milliseconds.
    result.wait = QStringLiteral("30");
    const QString timer = QStringLiteral("timerend=d.getTime()+");
    const int c = find16(page, timer);
    const int d = c ? find16(page, QStringLiteral(";"), c) : 0;
    if (d != 0) {
        const QString ms = span(page, c + int(timer.size()), d - c - int(timer.size()));
        if (isNumeric(ms))
            result.wait = NumberText::fromDouble(NumberText::toInt32(ms) / 1000.0);
    }
    return result;
}

void HotFileRecipe::parseHotFilePage(RecipeSite &site, const QString &page)
{
    const Reading reading = readPostAnswer(page, site.link(), site.field(Field::DirectURL),
                                           site.localFolder(), site.step());
    apply(site, reading);
}

Reading HotFileRecipe::readPostAnswer(const QString &page, const QString &link,
                                      const QString &directUrl, const QString &folder, int &step)
{
    return readGuarded([&](Reading &row) {
        // 1.
        if (page.isEmpty()) {
            row.fail(StatusText::NotFound);
            return;
        }
        // 2. Not ready to let the file go yet: five minutes more, counted
        // second by second, then the same body is posted again. The Status
        // keeps its text until the countdown's first tick.
        if (contains(page, QStringLiteral("class=disabled"))) {
            row.set(Field::WaitTimeInSec, QStringLiteral("300")).countdown(Reading::kSeconds);
            step = 1;
            return;
        }

        // 3. The link stands just in front of the marker: href="...", its
        // closing quote, then (a character on) the marker. Without an href
        // nothing is written and the queue rests on the row.
        QString address = directUrl;
        const int i = find(page, QStringLiteral("click_download"));
        if (i != 0) {
            ++step;
            const int q = findBack(page, QStringLiteral("\""), i - 2);
            const int h = findBack(page, QStringLiteral("href=\""), q);
            if (h == 0)
                return;
            address = span(page, h + 6, q - h - 6);
            row.set(Field::DirectURL, address);
        }

        // 4. A row may still hold an address from an earlier answer.
        if (trimBlanks(address).isEmpty()) {
            row.fail(StatusText::Error);
            return;
        }
        // 5.
        row.set(Field::LocalFilePath, folder);
        // 6. The name is what the address, or else the link, ends in; it is
        // taken as it stands, without cleaning.
        const QString name = ResolverFrame::lastSegment(address, link);
        if (!name.isNull())
            row.set(Field::LocalFile, name);
        // 7. The transfer starts at once, without a countdown, with size 0;
        // the row's FileSize isn't written.
        row.set(Field::Status, StatusText::Connecting).transfer();
    });
}
