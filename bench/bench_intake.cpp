// Link extraction on large pasted pages: one page with 20,000 supported links
// among 200,000 other words, and one twice that size. Prints the best of a few
// runs for each and their ratio.

#include "fakeprompts.h"
#include "intake/linkextraction.h"
#include "list/downloadlist.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QRandomGenerator>
#include <QStringList>

#include <algorithm>
#include <cstdio>

namespace {

// A supported link of one of the seven recognised sites, unique by `n`.
QString supportedLink(QRandomGenerator &rng, int n)
{
    switch (rng.bounded(7)) {
    case 0:
        return QStringLiteral("http://rapidshare.com/files/%1/archive_%1.rar").arg(n);
    case 1:
        return QStringLiteral("http://www.youtube.com/watch?v=clip%1&feature=related").arg(n);
    case 2:
        return QStringLiteral("http://www.megaupload.com/?d=M%1").arg(n);
    case 3:
        return QStringLiteral("http://www.4shared.com/file/%1/setup.html").arg(n);
    case 4:
        return QStringLiteral("http://depositfiles.com/files/df%1").arg(n);
    case 5:
        return QStringLiteral("http://hotfile.com/dl/%1/a1b2c3/movie.part1.rar.html").arg(n);
    default:
        return QStringLiteral("http://www.filefactory.com/file/ff%1/n/data.zip").arg(n);
    }
}

// A word of an ordinary page: markup, text, foreign links, a few refused links.
QString otherWord(QRandomGenerator &rng, int n)
{
    static const QStringList plain = {
        "the",         "download",    "<div",         "class=\"post\">", "and",
        "href=\"#\">", "information", "</a>",         "file-sharing",    "<br>",
        "a",           "mirror",      "style=\"x\">", "available",       "password:",
        "forum",       "</td><td>",   "thanks",       "posted",          "links"};
    switch (rng.bounded(20)) {
    case 0:
        return QStringLiteral("href=\"http://www.example.org/page/%1.html\"").arg(n);
    case 1:
        return QStringLiteral("http://www.mediafire.com/?mf%1").arg(n);
    case 2:
        return QStringLiteral("http://www.youtube.com/results?search_query=q%1").arg(n);
    case 3:
        return QStringLiteral("http://www.filefactory.com/upload/%1").arg(n);
    default:
        return plain.at(rng.bounded(plain.size()));
    }
}

// Lines of 1 to 12 words joined by CR LF; links spread at random among the words.
QString makePage(int links, int others, quint32 seed)
{
    QRandomGenerator rng(seed);
    QStringList words;
    words.reserve(links + others);
    for (int i = 0; i < links; ++i)
        words.append(supportedLink(rng, i));
    for (int i = 0; i < others; ++i)
        words.append(otherWord(rng, i));
    std::shuffle(words.begin(), words.end(), rng);
    QString page;
    page.reserve(links * 50 + others * 12);
    int inLine = 0;
    int lineLength = 1 + rng.bounded(12);
    for (const QString &w : words) {
        if (inLine == lineLength) {
            page.append(QStringLiteral("\r\n"));
            inLine = 0;
            lineLength = 1 + rng.bounded(12);
        } else if (inLine > 0) {
            page.append(rng.bounded(8) == 0 ? QStringLiteral("  ") : QStringLiteral(" "));
        }
        page.append(w);
        ++inLine;
    }
    return page;
}

// Best of `runs` on a fresh list each time; checks that every link was added.
double bestSeconds(const QString &page, int expected, int runs)
{
    double best = 1e9;
    for (int r = 0; r < runs; ++r) {
        DownloadList list;
        list.open();
        FakePrompts prompts;
        QElapsedTimer timer;
        timer.start();
        const int added = parseLinks(page, true, list, &prompts);
        const double seconds = timer.nsecsElapsed() / 1e9;
        if (added != expected) {
            std::fprintf(stderr, "added %d links, expected %d\n", added, expected);
            std::exit(1);
        }
        best = std::min(best, seconds);
    }
    return best;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const QString page20 = makePage(20000, 200000, 20);
    const QString page40 = makePage(40000, 400000, 40);
    std::printf("page sizes: %lld and %lld characters\n", qlonglong(page20.size()),
                qlonglong(page40.size()));
    const double s20 = bestSeconds(page20, 20000, 5);
    const double s40 = bestSeconds(page40, 40000, 5);
    std::printf("seconds_20k=%.4f seconds_40k=%.4f ratio=%.2f\n", s20, s40, s40 / s20);
    return 0;
}
