#include "failurematrix.h"

#include "recipeharness.h"

#include <QTest>
#include <QTimer>

namespace FailureMatrix {

namespace {
enum Fault { NotFound404, Closed, Silence, Stop, FirstPage };
const char *const kFaultNames[] = {"404", "closed", "silence", "stop"};
} // namespace

void addRows(const QList<Step> &steps)
{
    QTest::addColumn<int>("step");
    QTest::addColumn<int>("fault");
    for (int s = 0; s < steps.size(); ++s) {
        for (int fault : {NotFound404, Closed, Silence, Stop}) {
            if (!steps[s].guarded && (fault == Silence || fault == Stop))
                continue;
            const QByteArray name = steps[s].name.toUtf8() + ": " + kFaultNames[fault];
            QTest::newRow(name.constData()) << s << fault;
        }
        for (int p = 0; p < steps[s].pages.size(); ++p) {
            const QByteArray name = steps[s].name.toUtf8() + ": " + steps[s].pages[p].name.toUtf8();
            QTest::newRow(name.constData()) << s << FirstPage + p;
        }
    }
}

void run(int site, const QList<Step> &steps, FakeSite &fake, const QStringList &links)
{
    QFETCH(int, step);
    QFETCH(int, fault);
    const Step &at = steps[step];
    // The countdown in milliseconds; the time-out short where it is the fault.
    RecipeHarness::setPeriods(5, fault == Silence ? 200 : 3600000);

    RecipeHarness h({site});
    h.add(site, links.value(0));
    h.add(site, links.value(1));
    switch (fault) {
    case NotFound404:
        fake.fail(at.path, FakeSite::Fault::NotFound404);
        break;
    case Closed:
        fake.fail(at.path, FakeSite::Fault::Closed);
        break;
    case Silence:
        fake.fail(at.path, FakeSite::Fault::Silence);
        break;
    default:
        fake.page(at.path, at.pages[fault - FirstPage].page);
        break;
    case Stop:
        fake.fail(at.path, FakeSite::Fault::Silence);
        QObject::connect(&fake.server(), &TestServer::requestReceived, &fake.server(),
                         [&](const TestServer::Request &r) {
                             if (r.pathOnly() == at.path || r.path == at.path)
                                 QTimer::singleShot(30, [&] { h.queues->stopDownloads(site); });
                         });
        break;
    }

    h.queues->startDownloadLinks(site, true);
    if (fault >= FirstPage) {
        const Page &page = at.pages[fault - FirstPage];
        if (page.nextLink)
            QVERIFY(h.runUntil([&] { return h.at(site, 1) != StatusText::Waiting; }, 5000));
        else
            QTest::qWait(50);
        QCOMPARE(h.fields(site, 0, {Field::Status, Field::WaitTimeInSec, Field::ErrorDesc}),
                 page.row);
        QCOMPARE(h.at(site, 1) != StatusText::Waiting, page.nextLink);
        return;
    }
    const bool badStatus = fault == NotFound404 || fault == Closed;
    const QString word = fault == Stop ? StatusText::Stopped
                         : badStatus   ? at.badStatusWord
                                       : StatusText::ConnectionError;
    const bool next = fault == Silence || (badStatus && at.badStatusNextLink);
    QVERIFY2(h.runUntil([&] { return h.at(site, 0) == word; }, 5000),
             qPrintable(h.history(site, 0).join(u',')));
    QCOMPARE(h.at(site, 0, Field::WaitTimeInSec), QStringLiteral("0"));
    if (next) {
        QVERIFY(h.runUntil([&] { return h.at(site, 1) != StatusText::Waiting; }, 5000));
    } else {
        QTest::qWait(50);
        QCOMPARE(h.at(site, 1), StatusText::Waiting);
    }
    QCOMPARE(h.at(site, 0), word);
}

} // namespace FailureMatrix
