// What a long run of failing rows costs one site's queue. A stand-in recipe
// fails each row at once ("Connection Error", then the next link), and the
// real queue carries on through every row of the site from one start. The
// same run over 10,000 and over 20,000 rows shows whether the cost grows in
// line with the rows; a queue that nested its runs would also run out of
// stack on the way. Each size runs five times; the figures are the medians.
//
// Last line: seconds_10k=... seconds_20k=... ratio=...
#include "fakeprompts.h"
#include "list/downloadlist.h"
#include "list/sitetable.h"
#include "scheduling/sitequeues.h"
#include "standin.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace {

double secondsFor(int rows)
{
    FakePrompts prompts;
    DownloadList list;
    list.open();
    const int site = Sites::HotFile;
    for (int i = 0; i < rows; ++i)
        list.addLinkToList(QStringLiteral("http://hotfile.com/dl/%1/file.rar").arg(i), site,
                           &prompts);
    RecipeTable recipes;
    auto standIn = std::make_unique<StandInRecipe>();
    standIn->mode = StandInRecipe::Mode::Fail;
    StandInRecipe *recipe = standIn.get();
    recipes[site - 1] = std::move(standIn);
    SiteQueues queues(list, &prompts, std::move(recipes));

    QElapsedTimer clock;
    clock.start();
    queues.startDownloadLinks(site, true);
    const double seconds = clock.nsecsElapsed() / 1e9;
    if (recipe->calls.size() != rows || recipe->maxDepth != 1) {
        std::fprintf(stderr, "rows %d: %lld runs, nested %d deep\n", rows,
                     static_cast<long long>(recipe->calls.size()), recipe->maxDepth);
        return -1;
    }
    return seconds;
}

double medianFor(int rows)
{
    std::vector<double> runs;
    for (int i = 0; i < 5; ++i)
        runs.push_back(secondsFor(rows));
    std::sort(runs.begin(), runs.end());
    std::printf("rows=%d seconds=%.4f (median of 5, %.4f to %.4f)\n", rows, runs[2], runs[0],
                runs[4]);
    return runs.front() < 0 ? -1 : runs[2];
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    secondsFor(1000); // warms up allocators and caches
    const double ten = medianFor(10000);
    const double twenty = medianFor(20000);
    if (ten < 0 || twenty < 0)
        return 1;
    std::printf("seconds_10k=%.3f seconds_20k=%.3f ratio=%.2f\n", ten, twenty, twenty / ten);
    return 0;
}
