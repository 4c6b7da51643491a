#include "list/formats.h"
#include "recipeharness.h"
#include "sandbox.h"
#include "system/logicaltimer.h"
#include "testserver.h"
#include "transfer/downloadasynch.h"

#include <QtTest>

namespace {

QString link(int site, int n)
{
    return QStringLiteral("http://site%1.test/files/file%2.bin").arg(site).arg(n);
}

QStringList split(const char *texts)
{
    return QString::fromUtf8(texts).split(u'|', Qt::SkipEmptyParts);
}

QByteArray payload(int size, char seed)
{
    QByteArray bytes(size, Qt::Uninitialized);
    for (int i = 0; i < size; ++i)
        bytes[i] = char(seed + (i * 7) % 61);
    return bytes;
}

// Adds `count` plain rows and starts the site from its menu.
SiteContext &start(RecipeHarness &h, int site, int count = 1)
{
    for (int i = 0; i < count; ++i)
        h.add(site, link(site, i));
    h.queues->startDownloadLinks(site, true);
    return h.context(site);
}

} // namespace

class TestSiteQueues : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { m_sandbox = std::make_unique<Sandbox>(); }
    // Timers tick only when a test ticks them.
    void init() { RecipeHarness::setPeriods(3600000); }

    // ---- Selecting the row ----

    void selection_data()
    {
        QTest::addColumn<QStringList>("statuses");
        QTest::addColumn<QString>("flagsBefore");
        QTest::addColumn<int>("chosen"); // -1: none
        QTest::addColumn<QString>("flagsAfter");
        auto row = [](const char *name, const char *statuses, const char *before, int chosen,
                      const char *after) {
            QTest::newRow(name) << split(statuses) << QString(before) << chosen << QString(after);
        };
        row("complete, error, waiting", "Complete|Error|Waiting", "000", 2, "001");
        row("stopped before waiting", "Stopped(45%)|Waiting", "00", 0, "10");
        row("plain stopped after finished rows", "Not Found|Connection Error|Stopped|Waiting",
            "0000", 2, "0010");
        row("case counts", "waiting|stopped(3%)|STOPPED|Waiting", "0000", 3, "0001");
        row("other states are passed over",
            "Starting...|Wait 5 Seconds|45.67|Connecting...|Stopped(0%)", "00000", 4, "00001");
        row("stale flags cleared before the row only", "Complete|Error|Waiting|Waiting|Complete",
            "11111", 2, "00111");
        row("all complete", "Complete|Complete|Error", "101", -1, "000");
    }

    void selection()
    {
        QFETCH(QStringList, statuses);
        QFETCH(QString, flagsBefore);
        QFETCH(int, chosen);
        QFETCH(QString, flagsAfter);

        RecipeHarness h;
        const int site = Sites::DepositFiles;
        for (int i = 0; i < statuses.size(); ++i)
            h.add(site, link(site, i), statuses[i], flagsBefore.mid(i, 1).toInt());
        h.add(Sites::RapidShare, link(1, 0), "Complete", 1); // another site is left alone

        // A continuation: the busy test is skipped, so stale flags don't block it.
        h.queues->startDownloadLinks(site, false);

        QStringList expected = statuses;
        if (chosen >= 0) {
            expected[chosen] = "Starting...";
            QCOMPARE(h.standIn(site).statusAtCall, QStringList{"Starting..."});
            QCOMPARE(h.context(site).cursor.field(Field::LinkURL), link(site, chosen));
        }
        QCOMPARE(QVariantList({h.statuses(site), h.flags(site), h.standIn(site).calls,
                               QVariant::fromValue(h.ranOut), h.flags(Sites::RapidShare)}),
                 QVariantList({expected, flagsAfter,
                               chosen >= 0 ? QStringList{link(site, chosen)} : QStringList(),
                               QVariant::fromValue(chosen >= 0 ? QList<int>() : QList<int>{site}),
                               "1"}));
    }

    void siteWithoutRowsAndBusySite()
    {
        RecipeHarness h;
        h.add(Sites::RapidShare, link(1, 0));
        for (bool fromMenu : {true, false})
            h.queues->startDownloadLinks(Sites::HotFile, fromMenu);
        QVERIFY(h.standIn(Sites::HotFile).calls.isEmpty());
        QVERIFY(h.ranOut.isEmpty());
        QCOMPARE(h.statuses(Sites::RapidShare), QStringList{"Waiting"});
        QVERIFY_THROWS_EXCEPTION(RuntimeFailure, h.queues->startDownloadLinks(9, true));

        // A user's start of a busy site does nothing but clear the stop flag.
        const int site = Sites::FileFactory;
        h.add(site, link(site, 0), "Wait 5 Seconds", 1);
        h.add(site, link(site, 1));
        SiteContext &ctx = h.context(site);
        ctx.bStop = true;
        h.queues->startDownloadLinks(site, true);
        QVERIFY(!ctx.bStop);
        QVERIFY(h.standIn(site).calls.isEmpty());
        QCOMPARE(h.statuses(site), (QStringList{"Wait 5 Seconds", "Waiting"}));

        // Once the busy row has ended, the same command starts the next row.
        h.list.setField(h.row(site, 0), Field::Status, "Complete");
        h.list.setField(h.row(site, 0), Field::IsDownloading, "0");
        h.queues->startDownloadLinks(site, true);
        QCOMPARE(h.standIn(site).calls, QStringList{link(site, 1)});
        QCOMPARE(h.statuses(site), (QStringList{"Complete", "Starting..."}));
    }

    void startAndStopAll()
    {
        RecipeHarness h;
        QList<int> startOrder;
        for (int site = 1; site <= Sites::Count; ++site)
            h.add(site, link(site, 0));
        // MegaUpload is busy already: start-all leaves it be.
        h.add(Sites::MegaUpload, link(3, 1));
        h.list.setField(h.row(Sites::MegaUpload, 0), Field::Status, "Complete");
        QVERIFY(!h.queues->isAnyDownloading());
        h.queues->startDownloadLinks(Sites::MegaUpload, true);
        h.context(Sites::MegaUpload).cursor.setField(Field::Status, "Wait 40 Seconds");
        QVERIFY(h.queues->isAnyDownloading());
        // Youtube alone has no countdown of its own.
        QVERIFY(!h.queues->siteTimer(Sites::Youtube) && h.queues->siteTimer(Sites::HotFile));
        for (int site = 1; site <= Sites::Count; ++site)
            h.standIn(site).order = &startOrder;

        h.queues->startAllDownloads();
        QCOMPARE(startOrder, (QList<int>{1, 2, 4, 6, 7, 8}));
        QCOMPARE(h.overview(), "1:Starting... 2:Starting... 3:Complete,Wait 40 Seconds "
                               "4:Starting... 5:Waiting 6:Starting... 7:Starting... 8:Starting...");

        // MediaFire's own start still works; stop-all then passes it by.
        h.queues->startDownloadLinks(Sites::MediaFire, true);

        QList<int> stopOrder;
        for (int site = 1; site <= Sites::Count; ++site) {
            QObject::connect(&h.queues->downloader(site), &DownloadAsynch::stopped,
                             [&stopOrder, site] { stopOrder << site; });
        }
        h.queues->stopAllDownloads();
        QCOMPARE(stopOrder, (QList<int>{4, 6, 8, 7, 3, 1, 2}));
        QCOMPARE(h.overview(), "1:Stopped 2:Stopped 3:Complete,Stopped 4:Stopped 5:Starting... "
                               "6:Stopped 7:Stopped 8:Stopped");
        QCOMPARE(h.overview(Field::IsDownloading), "1:0 2:0 3:0,0 4:0 5:1 6:0 7:0 8:0");
        // Only MegaUpload's recipe holds a socket of its own that the stop closes.
        QString stopFlags, closes;
        for (int site = 1; site <= Sites::Count; ++site) {
            stopFlags += h.context(site).bStop ? u'1' : u'0';
            closes += QString::number(h.standIn(site).closeCalls);
        }
        QCOMPARE(stopFlags + u'|' + closes, QString("11110111|00100000"));

        // A stop of a site at rest does nothing at all.
        stopOrder.clear();
        h.queues->stopDownloads(Sites::RapidShare);
        QVERIFY(stopOrder.isEmpty());
    }

    void startButtonSwallowsSecondClick()
    {
        RecipeHarness h;
        h.add(Sites::RapidShare, link(1, 0));
        h.add(Sites::Youtube, link(2, 0));
        h.add(Sites::Youtube, link(2, 1));
        // While RapidShare's recipe runs, the button is clicked again. Taken,
        // that click would start Youtube from inside RapidShare's recipe.
        struct ClickingRecipe : SiteRecipe
        {
            RecipeHarness *h = nullptr;
            QString seen; // the flag, and Youtube's runs after the click
            void resolve(RecipeSite &) override
            {
                seen = QString::number(h->queues->startInProgress());
                h->queues->startDownloadClicked();
                seen += QString::number(h->standIn(Sites::Youtube).calls.size());
            }
        };
        auto clicking = std::make_unique<ClickingRecipe>();
        clicking->h = &h;
        ClickingRecipe *recipe = clicking.get();
        h.queues->setRecipe(Sites::RapidShare, std::move(clicking));

        h.queues->startDownloadClicked();
        QCOMPARE(recipe->seen, QString("10"));
        QVERIFY(!h.queues->startInProgress());
        QCOMPARE(h.standIn(Sites::Youtube).calls, QStringList{link(2, 0)});

        // The stop button clears the flag whatever it was.
        h.queues->stopDownloadClicked();
        QVERIFY(!h.queues->startInProgress());
        QCOMPARE(h.statuses(Sites::Youtube), (QStringList{"Stopped", "Waiting"}));
    }

    // ---- A queue never nests ----

    void failingRowsDoNotNest_data()
    {
        QTest::addColumn<int>("rows");
        QTest::newRow("3") << 3;
        QTest::newRow("100,000") << 100000;
    }

    void failingRowsDoNotNest()
    {
        QFETCH(int, rows);
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
        h.queues->startDownloadLinks(site, true);
        QCOMPARE(standIn.calls.last(), link(site, 1));
        QCOMPARE(h.at(site, 1), QString("Starting..."));
    }

    void stopThenStartWhileRecipeWaits()
    {
        // Stop and Start of one site inside one pump round: the start waits
        // until the first run has seen its stop and returned, then runs.
        TestServer server;
        QVERIFY(server.listen());
        server.setAnswer("/held", TestServer::Answer::silence());
        RecipeHarness h;
        const int site = Sites::HotFile;
        StandInRecipe &standIn = h.standIn(site);
        standIn.mode = StandInRecipe::Mode::Hold;
        standIn.holdUrl = server.url("/held");
        h.add(site, link(site, 0));
        h.add(site, link(site, 1));
        int round = 0;
        QObject::connect(&server, &TestServer::requestReceived, [&] {
            if (++round == 1) {
                QTimer::singleShot(20, [&] {
                    h.queues->stopDownloads(site);
                    h.queues->startDownloadLinks(site, true);
                });
            } else {
                QTimer::singleShot(20, [&] { h.queues->stopDownloads(site); });
            }
        });

        h.queues->startDownloadLinks(site, true);
        QCOMPARE(standIn.calls, (QStringList{link(site, 0), link(site, 0)}));
        QCOMPARE(standIn.maxDepth, 1);
        QCOMPARE(h.history(site, 0),
                 (QStringList{"Waiting", "Starting...", "Stopped", "Starting...", "Stopped"}));
        QCOMPARE(h.statuses(site), (QStringList{"Stopped", "Waiting"}));
        QCOMPARE(server.requests().size(), 2);
    }

    // ---- Countdown ----

    void countdown_data()
    {
        QTest::addColumn<int>("interval");
        QTest::addColumn<QString>("wait");
        // WaitTimeInSec and Status after the first ticks.
        QTest::addColumn<QStringList>("waits");
        QTest::addColumn<QStringList>("texts");
        // Ticks until the timer turns itself off, and what the row then shows.
        QTest::addColumn<int>("ticks");
        QTest::addColumn<QString>("lastWait");
        QTest::addColumn<QString>("lastText");
        auto row = [](const char *name, int interval, const char *wait, const char *waits,
                      const char *texts, int ticks, const char *lastWait,
                      const char *lastText = "Wait 1 Seconds") {
            QTest::newRow(name) << interval << QString(wait) << split(waits) << split(texts)
                                << ticks << QString(lastWait) << QString(lastText);
        };
        row("0 ends at once", 1000, "0", "", "", 1, "0", "Starting...");
        row("1 ends at once", 1000, "1", "", "", 1, "1", "Starting...");
        row("3", 1000, "3", "2|1", "Wait 2 Seconds|Wait 1 Seconds", 3, "1");
        row("61 switches to seconds at 59", 1000, "61", "60|59", "Wait 1 Minutes|Wait 59 Seconds",
            61, "1");
        row("120", 1000, "120", "119", "Wait 2 Minutes", 120, "1");
        row("91", 1000, "91", "90|89", "Wait 1.5 Minutes|Wait 1.5 Minutes", 91, "1");
        row("halves to even", 1000, "136", "135|134", "Wait 2.2 Minutes|Wait 2.2 Minutes", 136,
            "1");
        row("halves to even, upwards", 1000, "82", "81", "Wait 1.4 Minutes", 82, "1");
        row("minutes per tick", 60000, "300", "240|180|120|60",
            "Wait 4 Minutes|Wait 3 Minutes|Wait 2 Minutes|Wait 1 Minutes", 5, "60",
            "Wait 1 Minutes");
        row("minutes, uneven", 60000, "90", "30", "Wait 30 Seconds", 2, "30", "Wait 30 Seconds");
        // 2.5 reads as 2 (halves to even), leaving half a second.
        row("uneven interval", 1500, "4", "2.5|0.5", "Wait 2.5 Seconds|Wait 0.5 Seconds", 3, "0.5",
            "Wait 0.5 Seconds");
    }

    void countdown()
    {
        QFETCH(int, interval);
        QFETCH(QString, wait);
        QFETCH(QStringList, waits);
        QFETCH(QStringList, texts);
        QFETCH(int, ticks);
        QFETCH(QString, lastWait);
        QFETCH(QString, lastText);

        // HotFile's timer does nothing at the end of a wait unless its recipe is
        // at step 1, so the row keeps the texts of the countdown.
        RecipeHarness h;
        const int site = Sites::HotFile;
        SiteContext &ctx = start(h, site);
        ctx.cursor.setField(Field::WaitTimeInSec, wait);
        ctx.startTimer(interval);

        for (int i = 0; i < waits.size(); ++i) {
            emit ctx.timer->timeout();
            QVERIFY(ctx.timer->isEnabled());
            QCOMPARE(h.fields(site, 0, {Field::WaitTimeInSec, Field::Status}),
                     waits[i] + '|' + texts[i]);
        }
        int count = int(waits.size());
        while (ctx.timer->isEnabled() && count < 1000) {
            emit ctx.timer->timeout();
            ++count;
            // No text with 0 ever shows.
            QVERIFY(h.at(site, 0, Field::WaitTimeInSec) != "0" || wait == "0");
        }
        QCOMPARE(count, ticks);
        QCOMPARE(h.fields(site, 0, {Field::WaitTimeInSec, Field::Status, Field::IsDownloading}),
                 lastWait + '|' + lastText + "|1");
        QCOMPARE(h.standIn(site).calls.size(), 1);
    }

    void endOfWaitBySite_data()
    {
        QTest::addColumn<int>("site");
        QTest::addColumn<bool>("linkReady");
        QTest::addColumn<int>("step");
        QTest::addColumn<QString>("outcome"); // hand-off, resolve, nothing, error

        QTest::newRow("RapidShare ready") << 1 << true << 0 << "hand-off";
        QTest::newRow("RapidShare not ready") << 1 << false << 0 << "resolve";
        QTest::newRow("MegaUpload") << 3 << false << 0 << "hand-off";
        QTest::newRow("4Shared ready") << 4 << true << 0 << "hand-off";
        QTest::newRow("4Shared not ready") << 4 << false << 0 << "resolve";
        QTest::newRow("MediaFire not ready") << 5 << false << 0 << "resolve";
        QTest::newRow("MediaFire ready reads a missing field") << 5 << true << 0 << "error";
        QTest::newRow("DepositFiles") << 6 << false << 0 << "hand-off";
        QTest::newRow("HotFile step 1") << 7 << true << 1 << "resolve";
        QTest::newRow("HotFile step 2") << 7 << true << 2 << "nothing";
        QTest::newRow("FileFactory") << 8 << false << 0 << "hand-off";
        QTest::newRow("countdown of no number") << 6 << false << -1 << "error";
    }

    void endOfWaitBySite()
    {
        QFETCH(int, site);
        QFETCH(bool, linkReady);
        QFETCH(int, step);
        QFETCH(QString, outcome);

        RecipeHarness h;
        SiteContext &ctx = start(h, site, 2);
        // A resolved row whose address leads nowhere: the transfer is stopped
        // before it could connect.
        const std::pair<Field, QString> resolved[] = {
            {Field::DirectURL, "127.0.0.1:9/none.bin"},
            {Field::LocalFile, "none.bin"},
            {Field::LocalFilePath, h.folder()},
            {Field::FileSize, "1.5 KB"},
            {Field::WaitTimeInSec, step < 0 ? "abc" : "1"},
            {Field::Status, "Wait 1 Seconds"},
            {Field::ErrorDesc, "kept"}};
        for (const auto &[field, value] : resolved)
            ctx.cursor.setField(field, value);
        ctx.bLinkReady = linkReady;
        ctx.iStep = step;
        ctx.startTimer(1000);

        QSignalSpy errors(ctx.downloader, &DownloadAsynch::error);
        emit ctx.timer->timeout();
        QVERIFY(!ctx.timer->isEnabled());

        const QStringList calls = h.standIn(site).calls;
        if (outcome == "hand-off") {
            QCOMPARE(h.at(site, 0), QString("Connecting..."));
            QCOMPARE(ctx.downloader->fileSize(), 1536.0f);
            QCOMPARE(calls.size(), 1);
            h.queues->stopDownloads(site);
            QCOMPARE(h.at(site, 0), QString("Stopped"));
        } else if (outcome == "resolve") {
            QCOMPARE(calls, (QStringList{link(site, 0), link(site, 0)}));
            QCOMPARE(h.standIn(site).statusAtCall, (QStringList{"Starting...", "Wait 1 Seconds"}));
        } else if (outcome == "nothing") {
            QCOMPARE(h.at(site, 0), QString("Wait 1 Seconds"));
            QCOMPARE(calls.size(), 1);
        } else {
            // The failure path: "Error", the next row, whose walk clears the
            // failed row's flag; ErrorDesc stays.
            QCOMPARE(h.fields(site, 0, {Field::Status, Field::WaitTimeInSec, Field::ErrorDesc}),
                     QString("Error|0|kept"));
            QCOMPARE(h.at(site, 1), QString("Starting..."));
            QCOMPARE(h.flags(site), QString("01"));
            QCOMPARE(calls, (QStringList{link(site, 0), link(site, 1)}));
        }
        QVERIFY(errors.isEmpty());
    }

    // ---- What the transfer control reports ----

    void transferReports_data()
    {
        // An event of the site's transfer control, its arguments, and the row's
        // Status before; the row's Status|Speed|TimeLeft|IsDownloading|FileSize
        // after, and whether the next row started.
        QTest::addColumn<QString>("event");
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("before");
        QTest::addColumn<QString>("after");
        QTest::addColumn<bool>("nextRow");
        auto row = [](const char *name, const char *event, const char *arguments,
                      const char *before, const char *after, bool next = false) {
            QTest::newRow(name) << QString(event) << split(arguments) << QString(before)
                                << QString(after) << next;
        };
        // progress: percent, bytes per second, bytes so far, seconds left.
        row("percent", "progress", "45.67|1536|4567|61", "Connecting...",
            "45.67|1.5 KB/S|00:01:01|1|2 KB");
        row("whole percent, hours", "progress", "3|1048576|30|7199", "1",
            "3|1 MB/S|02:59:59|1|2 KB");
        row("size unknown", "progress", "-1|0|1572864|-1", "1", "1.5 MB so far|0 Bytes/S|?|1|2 KB");
        row("size unknown, rounded bytes", "progress", "-1|2048|1000.6|-1", "1",
            "1001 Bytes so far|2 KB/S|?|1|2 KB");
        // fileBegin: the server's size replaces the one the recipe guessed.
        row("size in bytes", "fileBegin", "1023", "Connecting...",
            "Connecting...|1 KB/S|00:00:05|1|1023 Bytes");
        row("one gigabyte exactly", "fileBegin", "1073741824", "1", "1|1 KB/S|00:00:05|1|");
        row("beyond 32 bits", "fileBegin", "2147483648", "1", "1|1 KB/S|00:00:05|1|2 KB");
        row("just below 32 bits", "fileBegin", "2147483520", "1", "1|1 KB/S|00:00:05|1|2 GB");
        row("complete", "complete", "", "99.5", "Complete|||0|2 KB", true);
        row("connection error", "error", "Connection Error", "Connecting...",
            "Connection Error|||0|2 KB", true);
        row("other error", "error", "Connection refused", "12.5", "Error|||0|2 KB", true);
        row("error in other case", "error", "connection error", "12.5", "Error|||0|2 KB", true);
        row("stopped at 45%", "stopped", "", "45.12", "Stopped(45%)|||0|2 KB");
        row("stopped at 0%", "stopped", "", "0", "Stopped(0%)|||0|2 KB");
        row("stopped at 99.99%", "stopped", "", "99.99", "Stopped(100%)|||0|2 KB");
        row("half up to even", "stopped", "", "45.5", "Stopped(46%)|||0|2 KB");
        row("half down to even", "stopped", "", "46.5", "Stopped(46%)|||0|2 KB");
        row("stopped so far", "stopped", "", "1.5 MB so far", "Stopped|||0|2 KB");
        row("stopped SO FAR", "stopped", "", "12 Bytes SO FAR", "Stopped|||0|2 KB");
        row("stopped counting", "stopped", "", "Wait 12 Seconds", "Stopped|||0|2 KB");
        row("stopped, digit but no number", "stopped", "", "7 of 9", "7 of 9|||0|2 KB");
    }

    void transferReports()
    {
        QFETCH(QString, event);
        QFETCH(QStringList, arguments);
        QFETCH(QString, before);
        QFETCH(QString, after);
        QFETCH(bool, nextRow);

        RecipeHarness h;
        const int site = Sites::RapidShare;
        RowCursor &row = start(h, site, 2).cursor;
        row.setField(Field::Status, before);
        row.setField(Field::Speed, "1 KB/S");
        row.setField(Field::TimeLeft, "00:00:05");
        row.setField(Field::FileSize, "2 KB");

        DownloadAsynch &control = h.queues->downloader(site);
        auto number = [&](int i) { return arguments.value(i).toDouble(); };
        auto raise = [&] {
            if (event == "progress")
                emit control.progress(number(0), int(number(1)), float(number(2)), 0,
                                      float(number(3)));
            else if (event == "fileBegin")
                emit control.fileBegin(float(number(0)));
            else if (event == "complete")
                emit control.complete();
            else if (event == "error")
                emit control.error(arguments.value(0));
            else
                emit control.stopped();
        };
        raise();

        QCOMPARE(h.fields(site, 0,
                          {Field::Status, Field::Speed, Field::TimeLeft, Field::IsDownloading,
                           Field::FileSize}),
                 after);
        QCOMPARE(h.at(site, 0, Field::ErrorDesc), QString());
        QCOMPARE(h.at(site, 1), QString(nextRow ? "Starting..." : "Waiting"));
        QCOMPARE(h.standIn(site).calls.size(), nextRow ? 2 : 1);
        QVERIFY(h.ranOut.isEmpty());

        // At the last row an end that moves on finds nothing more.
        if (nextRow) {
            raise();
            QCOMPARE(h.ranOut, QList<int>{site});
        }
    }

    // ---- Against a local server ----

    void stopInEachState_data()
    {
        // The state a stop meets, the row's Status before the stop, and its
        // Status|WaitTimeInSec after. A stop while resolving:
        // stopThenStartWhileRecipeWaits.
        QTest::addColumn<QString>("shown");
        QTest::addColumn<QString>("after");
        QTest::newRow("counting") << "Wait 29 Seconds"
                                  << "Stopped|29";
        QTest::newRow("handing off") << "Connecting..."
                                     << "Stopped|0";
        QTest::newRow("percent") << "45"
                                 << "Stopped(45%)|0";
        QTest::newRow("so far") << "43.95 KB so far"
                                << "Stopped|0";
    }

    void stopInEachState()
    {
        QFETCH(QString, shown);
        QFETCH(QString, after);
        const QString state = QTest::currentDataTag();
        RecipeHarness::setPeriods(state == "counting" ? 3600000 : 20);
        TestServer server;
        QVERIFY(server.listen());
        const QByteArray body = payload(100000, 'c');
        QList<QPair<QByteArray, QByteArray>> headers = {{"Content-Type", "text/plain"}};
        if (state == "percent")
            headers.prepend({"Content-Length", "100000"});
        TestServer::Answer partial = TestServer::Answer::http(200, "OK", headers, body);
        // 45000 bytes of the body, then nothing more for an hour.
        partial.cutAt({partial.bytes.size() - body.size() + 45000}, 3600000);
        server.setAnswer("/big.bin",
                         state == "handing off" ? TestServer::Answer::silence() : partial);

        RecipeHarness h;
        const int site = Sites::FileFactory;
        SiteContext &ctx = h.context(site);
        StandInRecipe &standIn = h.standIn(site);
        standIn.mode = StandInRecipe::Mode::Resolve;
        standIn.wait = state == "counting" ? 30 : 0;
        h.add(site, server.url("/big.bin"));
        h.add(site, server.url("/next.bin"));
        QSignalSpy stopped(ctx.downloader, &DownloadAsynch::stopped);
        h.queues->startDownloadLinks(site, true);
        if (state == "counting")
            emit ctx.timer->timeout();
        QTRY_COMPARE_WITH_TIMEOUT(h.at(site, 0), shown, 10000);
        h.queues->stopDownloads(site);

        QCOMPARE(stopped.size(), 1);
        QCOMPARE(h.fields(site, 0,
                          {Field::Status, Field::WaitTimeInSec, Field::Speed, Field::TimeLeft,
                           Field::IsDownloading}),
                 after + "|||0");
        QVERIFY(!ctx.timer->isEnabled() && ctx.bStop);
        // A stop never moves on, and no late event of the closed transfer does.
        QTest::qWait(100);
        QCOMPARE(h.statuses(site), (QStringList{after.section(u'|', 0, 0), "Waiting"}));
        QVERIFY(h.ranOut.isEmpty());
        if (state != "counting")
            QTRY_COMPARE(server.closedByClient(), 1);

        // The next start begins at the first eligible row: the stopped one.
        standIn.mode = StandInRecipe::Mode::Record;
        h.queues->startDownloadLinks(site, true);
        QCOMPARE(standIn.calls, QStringList(2, server.url("/big.bin")));
    }

    void twoSitesSideBySide()
    {
        // Each site transfers on its own control: while one reports progress,
        // the other is in the middle of its own transfer.
        RecipeHarness::setPeriods(20);
        TestServer server;
        QVERIFY(server.listen());
        RecipeHarness h;
        h.createSubDir = 1;
        const QList<int> sites = {Sites::RapidShare, Sites::FileFactory};
        for (int site : sites) {
            h.standIn(site).mode = StandInRecipe::Mode::Resolve;
            const QByteArray path = "/s" + QByteArray::number(site) + ".bin";
            server.setAnswer(
                path, TestServer::Answer::ok(payload(65536, char('A' + site))).cutEvery(4096, 15));
            h.add(site, server.url(QString::fromLatin1(path)));
        }
        h.add(Sites::HotFile, link(Sites::HotFile, 0), "Complete");
        int overlaps = 0;
        QObject::connect(&h.queues->downloader(Sites::RapidShare), &DownloadAsynch::progress, [&] {
            bool isNumber = false;
            h.at(Sites::FileFactory, 0).toDouble(&isNumber);
            overlaps += isNumber ? 1 : 0;
        });

        h.queues->startDownloadClicked();
        for (int site : sites)
            QTRY_COMPARE_WITH_TIMEOUT(h.at(site, 0), QString("Complete"), 20000);
        QVERIFY(overlaps > 0);
        // HotFile's queue runs out at once, then each site's after its row.
        QTRY_COMPARE(h.ranOut.size(), 3);
        QVERIFY(h.ranOut[0] == Sites::HotFile && h.ranOut.contains(sites[0]) &&
                h.ranOut.contains(sites[1]));
        for (int site : sites) {
            QCOMPARE(h.at(site, 0, Field::FileSize), QString("64 KB"));
            QCOMPARE(
                h.fileIn(QStringLiteral("%1/s%2.bin").arg(Sites::site(site).subFolder).arg(site)),
                payload(65536, char('A' + site)));
        }
    }

private:
    std::unique_ptr<Sandbox> m_sandbox;
};

QTEST_GUILESS_MAIN(TestSiteQueues)
#include "tst_sitequeues.moc"
