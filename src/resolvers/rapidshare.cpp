#include "resolvers/rapidshare.h"

#include "list/statustext.h"

#include "list/formats.h"
#include "resolvers/textpos.h"
#include "resolvers/xmlhttprequest.h"
#include "scheduling/numbertext.h"

#include <QRandomGenerator>

using namespace ResolverFrame;
using TextPos::contains;
using TextPos::find;
using TextPos::span;

const QString RapidShareResolver::subFolder = QStringLiteral("RapidShare Files");

RapidShareResolver::RapidShareResolver(FolderSettings folder) : m_folder(std::move(folder)) {}

RapidShareResolver::FirstPage RapidShareResolver::readFirstPage(const QString &page)
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
    if (form == 0 || a == 0 || m == 0) {
        result.kind = FirstPage::Kind::NoForm;
        return result;
    }
    // Between the quotes of action="...", with one blank before method=.
    result.kind = FirstPage::Kind::Form;
    result.formAddress = span(page, a + 8, m - a - 10);
    return result;
}

void RapidShareResolver::resolve(SiteContext &site)
{
    // 1. The link's page.
    const QString link = site.cursor.field(Field::LinkURL);
    XmlHttpRequest request;
    request.open(QStringLiteral("GET"), link);
    request.send();
    if (!waitForAnswer(site, request))
        return;

    // 2.-5. The file is gone, or the page has no form to post, or it has.
    const FirstPage first = readFirstPage(request.responseText());
    if (first.kind == FirstPage::Kind::FileGone) {
        notFound(site);
        return;
    }
    if (first.kind == FirstPage::Kind::NoForm) {
        connectionError(site);
        return;
    }

    // 6. The free download is asked for on the same request object.
    request.open(QStringLiteral("POST"), first.formAddress);
    request.setRequestHeader(QStringLiteral("Content-type"),
                             QStringLiteral("application/x-www-form-urlencoded"));
    request.setRequestHeader(QStringLiteral("Content-length"), QStringLiteral("13"));
    request.setRequestHeader(QStringLiteral("Connection"), QStringLiteral("close"));
    request.send(QByteArrayLiteral("dl.start=Free"));
    if (!waitForAnswer(site, request))
        return;

    // 7.
    parseRapidSharePage(site, request.responseText());
}

void RapidShareResolver::parseRapidSharePage(SiteContext &site, const QString &page)
{
    guardParse(site, [&] {
        RowCursor &row = site.cursor;

        // 1. An error heading: the file is gone, or the site wants a pause.
        if (contains(page, QStringLiteral("<h1>Error</h1>"))) {
            if (contains(page, QStringLiteral("The file could not be found"))) {
                notFound(site, QStringLiteral("The file could not be found, It may be deleted by "
                                              "the owner or expired."));
                return;
            }
            const int p = find(page, QStringLiteral("minutes"));
            const int q = p ? TextPos::findBack(page, QStringLiteral(" "), p - 1) : 0;
            if (p != 0 && q != 0) {
                // The text from the blank up to the word: a single blank where
                // the page writes "3 minutes", which gives the 5 minutes below.
                QString minutes = span(page, q, p - q);
                if (!TextPos::isNumeric(minutes))
                    minutes = QStringLiteral("5");
                longWait(site, minutes);
                return;
            }
            // Neither: the page is read as if the heading weren't there.
        }

        // 2. The direct address from the download form; left as it was when
        // the form isn't there.
        const QString dlf = QStringLiteral("form name=\"dlf\" action=\"");
        const int f = find(page, dlf);
        if (f != 0) {
            const int g = find(page, QStringLiteral("\""), f + 26);
            if (g != 0)
                row.setField(Field::DirectURL, span(page, f + dlf.size(), g - f - dlf.size()));
        }

        // 3. The file name from the link, or a made-up one.
        const QString link = row.field(Field::LinkURL);
        const int s = TextPos::findBack(link, QStringLiteral("/"));
        if (s == 0) {
            // The number is written with the blank a sign would take.
            row.setField(Field::LocalFile,
                         QStringLiteral("Rapid ") +
                             QString::number(QRandomGenerator::global()->bounded(10000)));
        } else {
            QString name = TextPos::spanToEnd(link, s + 1);
            name.remove(QStringLiteral(".html"), Qt::CaseInsensitive);
            row.setField(Field::LocalFile, cleanFileName(name));
        }

        // 4. The size as the page gives it in KB, "?" where it doesn't.
        row.setField(Field::FileSize, QStringLiteral("?"));
        const int u = find(page, QStringLiteral(">|"));
        const int v = u ? find(page, QStringLiteral("KB<"), u) : 0;
        if (u != 0 && v != 0) {
            const QString kb = span(page, u + 2, v - u - 2);
            if (TextPos::isNumeric(kb)) {
                const double bytes = NumberText::roundHalfEven(TextPos::toNumber(kb), 4) * 1024;
                row.setField(Field::FileSize, sizeToText(NumberText::toInt32(bytes)));
            }
        }

        // 5. The folder.
        row.setField(Field::LocalFilePath, localFolder(m_folder, subFolder));

        // 6. and 7. The wait; from now on every end of a wait at this site
        // hands the row to the transfer.
        row.setField(Field::Status, StatusText::Waiting);
        site.bLinkReady = true;
        resolved(site, parseWaitSeconds(page));
    });
}
