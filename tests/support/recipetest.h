#pragma once

#include "datatable.h"
#include "fakesite.h"
#include "list/statustext.h"
#include "recipeharness.h"
#include "sandbox.h"

#include <QTimer>
#include <QtTest>

#include <algorithm>

// What a recipe's test reads without a socket, as one table: each row gives
// the page, what the reader makes of it as one text ("fails" for a run-time
// failure) and what else it reads (a link, the row's address before), which
// the rows after share unless a row gives its own; `reader` names the reader
// of the rows that follow.
//
//     void reading_data()
//     {
//         ReadingRows row("form");
//         row("gone", FakeX::gonePage, "Status=Not Found; ...");
//         row.reader = "post";
//         row("no link", "<p>x</p>", "Status=Error; ...", "http://h/link");
//     }
//     void reading() { ReadingRows::check([](auto &reader, auto &page, auto &extra) {...}); }
class ReadingRows : Table<QString, QString, QString, QString>
{
public:
    explicit ReadingRows(const QString &firstReader) : reader(firstReader) {}
    void operator()(const char *name, const QString &page, const QString &expected,
                    const QString &ownExtra = {}) const
    {
        QTest::addRow("%s: %s", qPrintable(reader), name)
            << Row(reader, page, ownExtra.isNull() ? extra : ownExtra, expected);
    }
    // `read(reader, page, extra)` gives the reading as one text.
    template <typename Read> static void check(const Read &read)
    {
        const auto [reader, page, extra, expected] = fetch();
        QString got = QStringLiteral("fails");
        ignoreFailure([&] { got = read(reader, page, extra); });
        QCOMPARE(got, expected);
    }

    QString reader;
    QString extra = QStringLiteral("");
};

// The failures every recipe meets at each of its requests, as one table: an
// answer with status 404, a connection closed without an answer, silence
// until the shared time-out, and a stop while the request runs; and the pages
// of its own that a step may meet, end to end. A recipe's test names its
// request steps and what its recipe makes of a failure there, adds the rows
// in its _data() function and runs each row over its fakes:
//
//     void failures_data() { FailureMatrix::addRows(steps()); }
//     void failures()
//     {
//         FakeRapidShare fake;
//         FailureMatrix::run(steps(), {{Sites::RapidShare, &fake, {fake.addFile(...), ...}}});
//     }
namespace FailureMatrix {

// A page a step may meet instead of the good one, and the first link's
// Status|WaitTimeInSec|ErrorDesc after it; with "next" the second link starts.
struct Page
{
    QString name;
    QString page;
    QString row;
    bool nextLink = true;
};

struct Step
{
    int site;
    QString name;
    QByteArray path; // the path the failing link's request goes to
    QList<Page> pages = {};
    // What a status other than 200 (or none) leaves, and whether the queue
    // then goes on to the next link.
    QString badStatusWord = StatusText::ConnectionError;
    bool badStatusNextLink = true;
};

// A site's fake and two of its links: the first meets the faults, the second
// is served in full.
struct Served
{
    int site;
    FakeSite *fake;
    QStringList links;
};

// The step (an index into the steps), what its request gets, the first link's
// Status|WaitTimeInSec|ErrorDesc after it and whether the second link starts.
using Rows = Table<int, TestServer::Answer, QString, bool>;

// One row for each fault and each page at each step.
inline void addRows(const QList<Step> &steps)
{
    using Answer = TestServer::Answer;
    const Rows row;
    for (int s = 0; s < steps.size(); ++s) {
        const Step &step = steps[s];
        const auto add = [&](const QString &fault, const Answer &answer, const QString &after,
                             bool next) {
            const QString name = Sites::site(step.site).key + (' ' + step.name + ": " + fault);
            row(qPrintable(name), s, answer, after, next);
        };
        const QString bad = step.badStatusWord + "|0|";
        add("404", Answer::status(404, "Not Found"), bad, step.badStatusNextLink);
        add("closed", Answer::raw({}), bad, step.badStatusNextLink);
        add("silence", Answer::silence(), StatusText::ConnectionError + "|0|", true);
        add("stop", Answer::silence(), StatusText::Stopped + "|0|", false);
        for (const Page &page : step.pages)
            add(page.name, FakeSite::html(page.page), page.row, page.nextLink);
    }
}

// Runs the current row against the step's site's real recipe over the links
// served for that site.
inline void run(const QList<Step> &steps, const QList<Served> &served)
{
    const auto [s, answer, after, next] = Rows::fetch();
    const Step &step = steps[s];
    const auto sited = std::ranges::find(served, step.site, &Served::site);
    QVERIFY(sited != served.end());
    // The countdown in milliseconds; the time-out short where it ends the
    // silence (the silent answer after which the queue goes on).
    RecipeHarness::setPeriods(5, answer.silent && next ? 200 : 3600000);
    RecipeHarness h({step.site});
    h.add(step.site, sited->links.value(0));
    h.add(step.site, sited->links.value(1));
    TestServer &server = sited->fake->server();
    server.setAnswer(step.path, answer);
    // The silent answer after which the queue rests: the stop comes while the
    // request waits for it.
    if (answer.silent && !next) {
        QObject::connect(&server, &TestServer::requestReceived, &server, [&](const auto &r) {
            if (r.pathOnly() == step.path || r.path == step.path)
                QTimer::singleShot(30, [&] { h.queues->stopDownloads(step.site); });
        });
    }

    h.start(step.site);
    QTRY_COMPARE_WITH_TIMEOUT(h.outcome(step.site), after, 5000);
    // Where the queue rests, the second link is still waiting a while later.
    if (!next)
        QTest::qWait(50);
    QTRY_COMPARE_WITH_TIMEOUT(h.at(step.site, 1) != StatusText::Waiting, next, 5000);
    QCOMPARE(h.outcome(step.site), after);
}

} // namespace FailureMatrix
