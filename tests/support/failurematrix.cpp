#include "failurematrix.h"

#include "recipeharness.h"

#include <QTest>
#include <QTimer>

#include <algorithm>

namespace FailureMatrix {

namespace {
enum Fault { NotFound404, Closed, Silence, Stop, FirstPage };
} // namespace

void addRows(const QList<Step> &steps)
{
    QTest::addColumn<int>("step");
    QTest::addColumn<int>("fault");
    for (int s = 0; s < steps.size(); ++s) {
        // The faults in the order of their numbers, then the step's pages.
        QStringList names{"404", "closed", "silence", "stop"};
        for (const Page &page : steps[s].pages)
            names << page.name;
        for (int fault = 0; fault < names.size(); ++fault)
            QTest::addRow("%s %s: %s", Sites::site(steps[s].site).key, qPrintable(steps[s].name),
                          qPrintable(names[fault]))
                << s << fault;
    }
}

void run(const QList<Step> &steps, const QList<Served> &served)
{
    QFETCH(int, step);
    QFETCH(int, fault);
    const Step &at = steps[step];
    const int site = at.site;
    const auto sited = std::ranges::find(served, site, &Served::site);
    QVERIFY(sited != served.end());
    FakeSite &fake = *sited->fake;
    // The countdown in milliseconds; the time-out short where it is the fault.
    RecipeHarness::setPeriods(5, fault == Silence ? 200 : 3600000);

    RecipeHarness h({site});
    h.add(site, sited->links.value(0));
    h.add(site, sited->links.value(1));
    using Answer = TestServer::Answer;
    const Answer answers[] = {Answer::status(404, "Not Found"), Answer::raw({}), Answer::silence(),
                              Answer::silence()};
    const Page *page = fault >= FirstPage ? &at.pages[fault - FirstPage] : nullptr;
    fake.server().setAnswer(at.path, page ? FakeSite::html(page->page) : answers[fault]);
    if (fault == Stop) {
        QObject::connect(&fake.server(), &TestServer::requestReceived, &fake.server(),
                         [&](const TestServer::Request &r) {
                             if (r.pathOnly() == at.path || r.path == at.path)
                                 QTimer::singleShot(30, [&] { h.queues->stopDownloads(site); });
                         });
    }

    h.start(site);
    // The first link's Status|WaitTimeInSec|ErrorDesc, and whether the second starts.
    const bool badStatus = fault == NotFound404 || fault == Closed;
    const QString word = fault == Stop ? StatusText::Stopped
                         : badStatus   ? at.badStatusWord
                                       : StatusText::ConnectionError;
    const QString row = page ? page->row : word + "|0|";
    const bool next =
        page ? page->nextLink : fault == Silence || (badStatus && at.badStatusNextLink);
    const auto first = [&] {
        return h.fields(site, 0, {Field::Status, Field::WaitTimeInSec, Field::ErrorDesc});
    };
    QVERIFY2(QTest::qWaitFor([&] { return first() == row; }, 5000),
             qPrintable(h.trail(site, 0) + " / " + first()));
    if (next) {
        QVERIFY(QTest::qWaitFor([&] { return h.at(site, 1) != StatusText::Waiting; }, 5000));
    } else {
        QTest::qWait(50);
        QCOMPARE(h.at(site, 1), StatusText::Waiting);
    }
    QCOMPARE(first(), row);
}

} // namespace FailureMatrix
