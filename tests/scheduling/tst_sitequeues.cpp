#include "datatable.h"
#include "recipeharness.h"
#include "sandbox.h"
#include "system/logicaltimer.h"
#include "testserver.h"
#include "transfer/downloadasynch.h"

#include <QtTest>

namespace {

using Answer = TestServer::Answer;

// The rows' Status before, their IsDownloading flags before, the row chosen
// (-1: the queue ran out; -2: nothing at all), the flags after.
using Selections = Table<QString, QString, int, QString>;
// The site, its link ready, its step, the interval and the wait;
// WaitTimeInSec|Status after each of the first ticks; the ticks up to the end
// of the wait; the first row's Status|WaitTimeInSec|ErrorDesc then, the flags,
// and the rows' Status as each run of the recipe began.
using Countdowns = Table<int, bool, int, int, QString, QString, int, QString>;
// An event of the site's transfer control, its arguments, the row's Status
// before; the row's Status|Speed|TimeLeft|IsDownloading|FileSize after.
using Reports = Table<QString, QString, QString, QString>;
// The row's Status when the stop comes; its Status|WaitTimeInSec after.
using Stops = Table<QString, QString>;

QString link(int site, int n)
{
    return QStringLiteral("http://site%1.test/files/file%2.bin").arg(site).arg(n);
}

// Adds `count` plain rows, starts the site from its menu, then writes
// `fields` ("Status=Waiting|FileSize=2 KB") into the row it started.
SiteContext &start(RecipeHarness &h, int site, int count, const QString &fields = {})
{
    for (int i = 0; i < count; ++i)
        h.add(site, link(site, i));
    h.start(site);
    SiteContext &ctx = h.context(site);
    for (const QString &pair : fields.split(u'|', Qt::SkipEmptyParts))
        ctx.cursor.setField(*fieldByName(pair.section(u'=', 0, 0)), pair.section(u'=', 1));
    return ctx;
}

} // namespace

class TestSiteQueues : public QObject
{
    Q_OBJECT
private slots:
    // Timers tick only when a test ticks them.
    void init() { RecipeHarness::setPeriods(3600000); }

    // ---- Selecting the row ----

    void selection_data()
    {
        const Selections row;
        row("other states are passed over",
            "Not Found|Connection Error|Starting...|Wait 5 Seconds|45.67|Connecting...|Stopped",
            "0000000", 6, "0000001");
        row("case counts", "waiting|stopped(3%)|STOPPED|Stopped(0%)", "0000", 3, "0001");
        row("stale flags cleared before the row only", "Complete|Error|Waiting|Waiting|Complete",
            "11111", 2, "00111");
        row("all complete", "Complete|Complete|Error", "101", -1, "000");
        row("no rows", "", "", -2, "");
    }

    void selection()
    {
        const auto [texts, flagsBefore, chosen, flagsAfter] = Selections::fetch();
        const QStringList statuses = texts.split(u'|', Qt::SkipEmptyParts);
        RecipeHarness h;
        const int site = Sites::DepositFiles;
        for (int i = 0; i < statuses.size(); ++i)
            h.add(site, link(site, i), statuses[i], flagsBefore.mid(i, 1).toInt());
        h.add(Sites::RapidShare, link(1, 0), "Complete", 1); // another site is left alone

        // A continuation: the busy test is skipped, so stale flags don't block it.
        h.queues->startDownloadLinks(site, false);
        QStringList expected = statuses;
        if (chosen >= 0)
            expected[chosen] = "Starting...";
        QCOMPARE(QVariantList({h.statuses(site), h.flags(site), h.standIn(site).calls,
                               QVariant::fromValue(h.ranOut), h.flags(Sites::RapidShare)}),
                 QVariantList({expected, flagsAfter,
                               chosen >= 0 ? QStringList{link(site, chosen)} : QStringList(),
                               QVariant::fromValue(chosen == -1 ? QList<int>{site} : QList<int>()),
                               "1"}));
    }

    void startAndStopAll()
    {
        RecipeHarness h;
        QVERIFY_THROWS_EXCEPTION(RuntimeFailure, h.queues->startDownloadLinks(9, true));
        QList<int> startOrder, stopOrder;
        for (int site = 1; site <= Sites::Count; ++site) {
            h.add(site, link(site, 0));
            h.standIn(site).order = &startOrder;
            QObject::connect(&h.queues->downloader(site), &DownloadAsynch::stopped,
                             [&stopOrder, site] { stopOrder << site; });
        }
        // MegaUpload is busy already: start-all leaves it be, and a user's
        // start of it does nothing but clear its stop flag.
        const int busy = Sites::MegaUpload;
        h.start(busy);
        h.context(busy).bStop = true;
        h.start(busy);
        QVERIFY(!h.context(busy).bStop && h.ranOut.isEmpty());
        // A click of the start button while start-all runs (a recipe's poll
        // takes it) is swallowed: taken, it would start the other sites from
        // in here, before RapidShare's own run.
        QString seen;
        QObject::connect(&h.list, &DownloadList::fieldChanged, [&](int site) {
            if (site == Sites::RapidShare && seen.isEmpty()) {
                seen = QString::number(h.queues->startInProgress());
                h.queues->startDownloadClicked();
            }
        });

        h.queues->startDownloadClicked();
        QCOMPARE(seen + QString::number(h.queues->startInProgress()), "10");
        // MediaFire's own start still works; stop-all then passes it by. A
        // stop of a site at rest does nothing at all.
        h.start(Sites::MediaFire);
        QCOMPARE(startOrder, (QList<int>{3, 1, 2, 4, 6, 7, 8, 5}));
        h.queues->stopDownloadClicked();
        h.queues->stopDownloads(Sites::RapidShare);
        QCOMPARE(stopOrder, (QList<int>{4, 6, 8, 7, 3, 1, 2}));
    }

    // ---- A queue never nests ----

    void failingRowsDoNotNest()
    {
        const int rows = 100000;
        RecipeHarness h;
        const int site = Sites::FourShared;
        StandInRecipe &standIn = h.standIn(site);
        standIn.mode = StandInRecipe::Mode::Fail;
        start(h, site, rows);
        // Each failure asks for the next row from inside the recipe; the start
        // runs each after the last has returned, and the walk after the last
        // one clears the flags the failures left and ends the queue.
        QCOMPARE(QVariantList({standIn.calls.size(), standIn.maxDepth, standIn.calls.last(),
                               h.statuses(site).count("Connection Error"),
                               h.flags(site).count(u'1'), QVariant::fromValue(h.ranOut)}),
                 QVariantList({rows, 1, link(site, rows - 1), rows, 0,
                               QVariant::fromValue(QList<int>{site})}));

        // An edit among the passed rows is seen by the next walk.
        h.list.setField(h.row(site, 1), Field::Status, "Waiting");
        standIn.mode = StandInRecipe::Mode::Record;
        h.start(site);
        QCOMPARE(standIn.calls.last() + u'|' + h.at(site, 1), link(site, 1) + "|Starting...");
    }

    // ---- The countdown and its end ----

    void countdown_data()
    {
        const Countdowns row;
        // A failure moves on to the next row, whose walk clears the failed row's flag.
        const QString again = "Wait 1 Seconds|1|kept|10|Starting...,Wait 1 Seconds",
                      failure = "Error|0|kept|01|Starting...,Starting...";
        row("DepositFiles", 6, false, 0, 1000, "1", "", 1, "Connecting...|1|kept|10|Starting...");
        row("RapidShare not ready", 1, false, 0, 1000, "1", "", 1, again);
        row("HotFile step 1", 7, true, 1, 1000, "1", "", 1, again);
        row("MediaFire ready reads a missing field", 5, true, 0, 1000, "1", "", 1, failure);
        row("countdown of no number", 6, false, 0, 1000, "abc", "", 1, failure);
        // HotFile's timer does nothing at the end of a wait unless its recipe is
        // at step 1, so the row keeps the texts of the countdown.
        auto hotFile = [&](const char *name, int interval, const char *wait, const char *trace,
                           int ticks, const QString &last = "Wait 1 Seconds|1") {
            row(name, Sites::HotFile, false, 0, interval, wait, trace, ticks,
                last + "|kept|10|Starting...");
        };
        hotFile("61: seconds from 59", 1000, "61", "60|Wait 1 Minutes;59|Wait 59 Seconds", 61);
        hotFile("halves to even", 1000, "136", "135|Wait 2.2 Minutes;134|Wait 2.2 Minutes", 136);
        hotFile("halves to even, upwards", 1000, "82", "81|Wait 1.4 Minutes", 82);
        hotFile("minutes per tick", 60000, "300",
                "240|Wait 4 Minutes;180|Wait 3 Minutes;120|Wait 2 Minutes;60|Wait 1 Minutes", 5,
                "Wait 1 Minutes|60");
        // 2.5 reads as 2 (halves to even), leaving half a second.
        hotFile("uneven interval", 1500, "4", "2.5|Wait 2.5 Seconds;0.5|Wait 0.5 Seconds", 3,
                "Wait 0.5 Seconds|0.5");
    }

    void countdown()
    {
        const auto [site, linkReady, step, interval, wait, trace, ticks, expected] =
            Countdowns::fetch();
        const QStringList steps = trace.split(u';', Qt::SkipEmptyParts);
        RecipeHarness h;
        // A resolved row whose address leads nowhere: the transfer is stopped
        // before it could connect.
        SiteContext &ctx =
            start(h, site, 2,
                  "DirectURL=127.0.0.1:9/none.bin|LocalFile=none.bin|FileSize=1.5 KB|"
                  "Status=Wait 1 Seconds|ErrorDesc=kept|LocalFilePath=" +
                      h.folder() + "|WaitTimeInSec=" + wait);
        ctx.bLinkReady = linkReady;
        ctx.iStep = step;
        ctx.startTimer(interval);
        int count = 0;
        for (; ctx.timer->isEnabled() && count < 1000; ++count) {
            emit ctx.timer->timeout();
            if (count < steps.size())
                QCOMPARE(h.fields(site, 0, {Field::WaitTimeInSec, Field::Status}), steps[count]);
            // No 0 ever shows while the countdown runs.
            QVERIFY(!ctx.timer->isEnabled() || h.at(site, 0, Field::WaitTimeInSec) != "0");
        }
        QCOMPARE(count, ticks);
        QCOMPARE(h.outcome(site) + u'|' + h.flags(site) + u'|' +
                     h.standIn(site).statusAtCall.join(u','),
                 expected);
        if (expected.startsWith(u"Connecting..."))
            QCOMPARE(ctx.downloader->fileSize(), 1536.0f);
        h.queues->stopDownloads(site);
    }

    // ---- What the transfer control reports ----

    void transferReports_data()
    {
        const Reports row;
        // progress: percent, bytes per second, bytes so far, seconds left.
        row("percent", "progress", "45.67|1536|4567|61", "1", "45.67|1.5 KB/S|00:01:01|1|2 KB");
        row("rounded", "progress", "-1|2048|1000.6|-1", "1", "1001 Bytes so far|2 KB/S|?|1|2 KB");
        // fileBegin: the server's size replaces the one the recipe guessed.
        row("beyond 32 bits", "fileBegin", "2147483648", "1", "1|1 KB/S|00:00:05|1|2 KB");
        row("just below 32 bits", "fileBegin", "2147483520", "1", "1|1 KB/S|00:00:05|1|2 GB");
        row("complete", "complete", "", "99.5", "Complete|||0|2 KB");
        row("connection error", "error", "Connection Error", "1", "Connection Error|||0|2 KB");
        row("error in other case", "error", "connection error", "12.5", "Error|||0|2 KB");
        row("stopped at 0%", "stopped", "", "0", "Stopped(0%)|||0|2 KB");
        row("half up to even", "stopped", "", "45.5", "Stopped(46%)|||0|2 KB");
        row("half down to even", "stopped", "", "46.5", "Stopped(46%)|||0|2 KB");
        row("stopped SO FAR", "stopped", "", "12 Bytes SO FAR", "Stopped|||0|2 KB");
        row("stopped, digit but no number", "stopped", "", "7 of 9", "7 of 9|||0|2 KB");
    }

    void transferReports()
    {
        const auto [event, texts, before, after] = Reports::fetch();
        const QStringList arguments = texts.split(u'|');
        // A complete transfer and an error move on to the next row.
        const bool nextRow = event == "complete" || event == "error";
        RecipeHarness h;
        const int site = Sites::RapidShare;
        start(h, site, 2, "Speed=1 KB/S|TimeLeft=00:00:05|FileSize=2 KB|Status=" + before);
        DownloadAsynch &d = h.queues->downloader(site);
        auto n = [&](int i) { return arguments.value(i).toDouble(); };
        const QHash<QString, std::function<void()>> events = {
            {"progress", [&] { emit d.progress(n(0), int(n(1)), float(n(2)), 0, float(n(3))); }},
            {"fileBegin", [&] { emit d.fileBegin(float(n(0))); }},
            {"complete", [&] { emit d.complete(); }},
            {"error", [&] { emit d.error(arguments.value(0)); }},
            {"stopped", [&] { emit d.stopped(); }}};
        events[event]();

        // The error's description is never stored.
        QCOMPARE(h.fields(site, 0,
                          {Field::Status, Field::Speed, Field::TimeLeft, Field::IsDownloading,
                           Field::FileSize, Field::ErrorDesc}) +
                     u'|' + h.at(site, 1),
                 after + "||" + (nextRow ? "Starting..." : "Waiting"));
    }

    // ---- Against a local server ----

    void stopInEachState_data()
    {
        const Stops row;
        row("resolving", "Starting...", "Stopped|0");
        row("counting", "Wait 29 Seconds", "Stopped|29");
        row("handing off", "Connecting...", "Stopped|0");
        row("percent", "45", "Stopped(45%)|0");
        row("so far", "43.95 KB so far", "Stopped|0");
    }

    // A Stop of the site, and a Start of it in the same pump round. While
    // resolving, the recipe waits inside its poll: the start waits until that
    // run has seen its stop and returned, then runs.
    void stopInEachState()
    {
        const auto [shown, after] = Stops::fetch();
        const QString state = QTest::currentDataTag();
        const bool counting = state == "counting";
        RecipeHarness::setPeriods(counting ? 3600000 : 20);
        TestServer server;
        QVERIFY(server.listen());
        const QByteArray body(100000, 'c');
        Answer partial = state == "percent"
                             ? Answer::ok(body)
                             : Answer::http(200, "OK", {{"Content-Type", "text/plain"}}, body);
        // 45000 bytes of the body, then nothing more for an hour.
        partial.cutAt({partial.bytes.size() - body.size() + 45000}, 3600000);
        const bool silent = state == "resolving" || state == "handing off";
        server.setAnswer("/big.bin", silent ? Answer::silence() : partial);

        RecipeHarness h;
        const int site = Sites::FileFactory;
        SiteContext &ctx = h.context(site);
        StandInRecipe &standIn = h.standIn(site);
        standIn.mode =
            state == "resolving" ? StandInRecipe::Mode::Hold : StandInRecipe::Mode::Resolve;
        standIn.holdUrl = server.url("/big.bin");
        standIn.wait = counting ? 30 : 0;
        h.add(site, server.url("/big.bin"));
        QSignalSpy stopped(ctx.downloader, &DownloadAsynch::stopped);
        bool stopAsked = false;
        QObject::connect(&h.list, &DownloadList::fieldChanged, [&] {
            if (h.at(site, 0) != shown || std::exchange(stopAsked, true))
                return;
            QTimer::singleShot(20, [&] {
                h.queues->stopDownloads(site);
                QVERIFY(ctx.bStop && !ctx.timer->isEnabled());
                QCOMPARE(h.fields(site, 0,
                                  {Field::Status, Field::WaitTimeInSec, Field::Speed,
                                   Field::TimeLeft, Field::IsDownloading}),
                         after + "|||0");
                standIn.mode = StandInRecipe::Mode::Record;
                h.start(site);
            });
        });

        h.start(site);
        h.tick(site, counting ? 1 : 0);
        // The start begins at the first eligible row: the stopped one. A stop
        // never moves on, and no late event of the closed transfer comes.
        QTRY_COMPARE_WITH_TIMEOUT(standIn.calls.size(), 2, 10000);
        QTest::qWait(100);
        QCOMPARE(standIn.calls, QStringList(2, server.url("/big.bin")));
        QVERIFY(stopped.size() == 1 && standIn.maxDepth == 1 && h.ranOut.isEmpty());
        QTRY_COMPARE(server.closedByClient(), counting ? 0 : 1);
    }

    void twoSitesSideBySide()
    {
        // Each site transfers on its own control, into its own folder: while
        // one reports progress, the other is in the middle of its own transfer.
        RecipeHarness::setPeriods(20);
        TestServer server;
        QVERIFY(server.listen());
        RecipeHarness h;
        h.createSubDir = 1;
        const QList<int> sites = {Sites::RapidShare, Sites::FileFactory};
        // Bytes of each site's own whose period (17) shows any piece lost or out of place.
        auto body = [](int site) {
            return (char('A' + site) + QByteArray("0123456789abcdef")).repeated(4000);
        };
        auto path = [](int site) { return QStringLiteral("/s%1.bin").arg(site); };
        for (int site : sites) {
            h.standIn(site).mode = StandInRecipe::Mode::Resolve;
            server.setAnswer(path(site).toLatin1(), Answer::ok(body(site)).cutEvery(4096, 15));
            h.add(site, server.url(path(site)));
        }
        // A percent or a size so far: FileFactory's transfer is under way.
        int overlaps = 0;
        QObject::connect(&h.queues->downloader(Sites::RapidShare), &DownloadAsynch::progress,
                         [&] { overlaps += h.at(Sites::FileFactory, 0).front().isDigit(); });

        h.queues->startDownloadClicked();
        for (int site : sites) {
            QTRY_COMPARE_WITH_TIMEOUT(h.at(site, 0), QString("Complete"), 20000);
            QCOMPARE(h.fileIn(Sites::site(site).subFolder + path(site)), body(site));
        }
        QVERIFY(overlaps > 0);
    }

private:
    Sandbox m_sandbox;
};

QTEST_GUILESS_MAIN(TestSiteQueues)
#include "tst_sitequeues.moc"
