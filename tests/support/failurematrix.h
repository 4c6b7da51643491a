#pragma once

#include "fakesite.h"
#include "list/statustext.h"

#include <QByteArray>
#include <QList>
#include <QString>

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

// Columns "step" (index into the steps) and "fault", one row for each fault
// and each page at each step.
void addRows(const QList<Step> &steps);
// Runs the current row against the step's site's real recipe over the links
// served for that site. Checks the first link's Status and WaitTimeInSec, and
// whether the second link started.
void run(const QList<Step> &steps, const QList<Served> &served);

} // namespace FailureMatrix
