#include "fakeprompts.h"
#include "list/downloadlist.h"
#include "list/formats.h"
#include "list/sitetable.h"
#include "sandbox.h"
#include "scheduling/sitequeues.h"
#include "system/logicaltimer.h"
#include "testserver.h"
#include "transfer/downloadasynch.h"

#include <QtTest>

#include <memory>

namespace {

// Takes the place of a site's recipe. It records each call and leaves the row
// in the outcome the test asks for, as a real resolver would.
class StandIn : public SiteResolver
{
public:
    enum class Mode {
        Record,  // leaves the row "Starting..."
        Resolve, // writes a resolved row and enables the site's timer
        Hold,    // waits in the event queue until the site's stop flag is set
        Fail,    // "Connection Error", then the next row
    };

    void resolve(SiteContext &ctx) override
    {
        calls << ctx.cursor.field(Field::LinkURL);
        statusAtCall << ctx.cursor.field(Field::Status);
        if (order)
            order->append(ctx.site);
        switch (mode) {
        case Mode::Record:
            return;
        case Mode::Hold:
            while (!ctx.bStop)
                QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
            ctx.cursor.setField(Field::Status, QStringLiteral("Stopped"));
            ctx.cursor.setField(Field::WaitTimeInSec, QStringLiteral("0"));
            return;
        case Mode::Fail:
            ctx.cursor.setField(Field::Status, QStringLiteral("Connection Error"));
            ctx.cursor.setField(Field::WaitTimeInSec, QStringLiteral("0"));
            ctx.continueQueue();
            return;
        case Mode::Resolve: {
            const QString link = ctx.cursor.field(Field::LinkURL);
            ctx.cursor.setField(Field::DirectURL, link);
            ctx.cursor.setField(Field::LocalFile, link.section(QLatin1Char('/'), -1));
            ctx.cursor.setField(Field::LocalFilePath, folder);
            ctx.cursor.setField(Field::FileSize, fileSize);
            ctx.cursor.setField(Field::Status, QStringLiteral("Wait %1 Seconds").arg(wait));
            ctx.cursor.setField(Field::WaitTimeInSec, QString::number(wait));
            ctx.bLinkReady = true;
            if (ctx.timer)
                ctx.startTimer(interval);
            else
                ctx.handOff();
            return;
        }
        }
    }
    void closeConnections(SiteContext &) override { ++closeCalls; }

    Mode mode = Mode::Record;
    QString folder;
    QString fileSize = QStringLiteral("?");
    int wait = 0;
    int interval = 1000;
    QList<int> *order = nullptr;
    QStringList calls;
    QStringList statusAtCall;
    int closeCalls = 0;
};

QString link(int site, int n)
{
    return QStringLiteral("http://site%1.test/files/file%2.bin").arg(site).arg(n);
}

// A list, the queues over it and a stand-in resolver for every site.
struct Harness
{
    Harness()
    {
        list.open();
        ResolverTable table;
        for (int i = 0; i < Sites::Count; ++i) {
            auto standIn = std::make_unique<StandIn>();
            standIns[i] = standIn.get();
            table[i] = std::move(standIn);
        }
        queues = std::make_unique<SiteQueues>(list, &prompts, std::move(table));
        QObject::connect(queues.get(), &SiteQueues::queueRanOut,
                         [this](int site) { ranOut << site; });
    }

    StandIn &standIn(int site) { return *standIns[site - 1]; }

    LinkRow *add(int site, const QString &link, const QString &status = QStringLiteral("Waiting"),
                 int isDownloading = 0)
    {
        if (!list.addLinkToList(link, site, &prompts))
            return nullptr;
        LinkRow *row = list.childAt(site, list.childCount(site) - 1);
        list.setField(row, Field::Status, status);
        list.setField(row, Field::IsDownloading, QString::number(isDownloading));
        return row;
    }
    // Adds `count` plain rows and starts the site from its menu.
    SiteContext &start(int site, int count = 1)
    {
        for (int i = 0; i < count; ++i)
            add(site, link(site, i));
        queues->startDownloadLinks(site, true);
        return queues->context(site);
    }

    QString at(int site, int index, Field f = Field::Status) const
    {
        return list.childAt(site, index)->values[int(f)];
    }
    QStringList statuses(int site, Field f = Field::Status) const
    {
        QStringList result;
        for (int i = 0; i < list.childCount(site); ++i)
            result << at(site, i, f);
        return result;
    }
    // Some fields of one row as one text, "Complete||0".
    QString fields(int site, int index, std::initializer_list<Field> fs) const
    {
        QStringList values;
        for (Field f : fs)
            values << at(site, index, f);
        return values.join(u'|');
    }
    // The rows' IsDownloading flags as one text, "010".
    QString flags(int site) const { return statuses(site, Field::IsDownloading).join(QString()); }

    FakePrompts prompts;
    DownloadList list;
    std::array<StandIn *, Sites::Count> standIns{};
    std::unique_ptr<SiteQueues> queues;
    QList<int> ranOut;
};

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

QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<missing>");
}

// An address on 127.0.0.1 where nothing listens.
QString deadAddress(const QString &path)
{
    QTcpServer probe;
    if (!probe.listen(QHostAddress::LocalHost))
        return QString();
    const quint16 port = probe.serverPort();
    probe.close();
    return QStringLiteral("http://127.0.0.1:%1%2").arg(port).arg(path);
}

} // namespace

class TestSiteQueues : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { m_sandbox = std::make_unique<Sandbox>(); }

    void init()
    {
        // Timers tick only when a test ticks them.
        LogicalTimer::clearRealPeriods();
        for (int period : {1000, 60000, 50000})
            LogicalTimer::setRealPeriod(period, 3600000);
    }

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

        Harness h;
        const int site = Sites::DepositFiles;
        for (int i = 0; i < statuses.size(); ++i)
            h.add(site, link(site, i), statuses[i], flagsBefore.mid(i, 1).toInt());
        h.add(Sites::RapidShare, link(1, 0), "Complete", 1); // another site is left alone

        // A continuation: the busy test is skipped, so stale flags don't block it.
        h.queues->startDownloadLinks(site, false);

        QCOMPARE(h.flags(site), flagsAfter);
        QCOMPARE(h.flags(Sites::RapidShare), QString("1"));
        QStringList expectedStatuses = statuses;
        if (chosen >= 0) {
            expectedStatuses[chosen] = "Starting...";
            QCOMPARE(h.standIn(site).calls, QStringList{link(site, chosen)});
            QCOMPARE(h.standIn(site).statusAtCall, QStringList{"Starting..."});
            QCOMPARE(h.queues->context(site).cursor.field(Field::LinkURL), link(site, chosen));
            QVERIFY(h.ranOut.isEmpty());
        } else {
            QVERIFY(h.standIn(site).calls.isEmpty());
            QCOMPARE(h.ranOut, QList<int>{site});
        }
        QCOMPARE(h.statuses(site), expectedStatuses);
        for (int other = 1; other <= Sites::Count; ++other)
            QVERIFY(other == site || h.standIn(other).calls.isEmpty());
    }

    void siteWithoutRows()
    {
        Harness h;
        h.add(Sites::RapidShare, link(1, 0));
        for (bool fromMenu : {true, false}) {
            h.queues->startDownloadLinks(Sites::HotFile, fromMenu);
            QVERIFY(h.standIn(Sites::HotFile).calls.isEmpty());
            QVERIFY(h.ranOut.isEmpty());
        }
        QCOMPARE(h.statuses(Sites::RapidShare), QStringList{"Waiting"});
        QVERIFY_THROWS_EXCEPTION(RuntimeFailure, h.queues->startDownloadLinks(9, true));
    }

    void busySiteStartedFromMenu()
    {
        Harness h;
        const int site = Sites::FileFactory;
        h.add(site, link(site, 0), "Wait 5 Seconds", 1);
        h.add(site, link(site, 1));
        SiteContext &ctx = h.queues->context(site);
        QVERIFY(h.queues->isDownloading(site));

        ctx.bStop = true;
        h.queues->startDownloadLinks(site, true);
        QVERIFY(!ctx.bStop);
        QVERIFY(h.standIn(site).calls.isEmpty());
        QCOMPARE(h.statuses(site), (QStringList{"Wait 5 Seconds", "Waiting"}));
        QCOMPARE(h.flags(site), QString("10"));

        // Once the busy row has ended, the same command starts the next row.
        h.list.setField(h.list.childAt(site, 0), Field::Status, "Complete");
        h.list.setField(h.list.childAt(site, 0), Field::IsDownloading, "0");
        QVERIFY(!h.queues->isDownloading(site));
        h.queues->startDownloadLinks(site, true);
        QCOMPARE(h.standIn(site).calls, QStringList{link(site, 1)});
        QCOMPARE(h.statuses(site), (QStringList{"Complete", "Starting..."}));
    }

    void startAndStopAll()
    {
        Harness h;
        QList<int> startOrder;
        for (int site = 1; site <= Sites::Count; ++site)
            h.add(site, link(site, 0));
        // MegaUpload is busy already: start-all leaves it be.
        h.add(Sites::MegaUpload, link(3, 1));
        h.list.setField(h.list.childAt(Sites::MegaUpload, 0), Field::Status, "Complete");
        QVERIFY(!h.queues->isAnyDownloading());
        h.queues->startDownloadLinks(Sites::MegaUpload, true);
        h.queues->context(Sites::MegaUpload).cursor.setField(Field::Status, "Wait 40 Seconds");
        QVERIFY(h.queues->isAnyDownloading());
        // Youtube alone has no countdown of its own.
        QVERIFY(!h.queues->siteTimer(Sites::Youtube) && h.queues->siteTimer(Sites::HotFile));
        for (int site = 1; site <= Sites::Count; ++site)
            h.standIn(site).order = &startOrder;

        h.queues->startAllDownloads();
        QCOMPARE(startOrder, (QList<int>{1, 2, 4, 6, 7, 8}));
        QCOMPARE(h.statuses(Sites::MediaFire), QStringList{"Waiting"});
        QCOMPARE(h.statuses(Sites::MegaUpload), (QStringList{"Complete", "Wait 40 Seconds"}));
        for (int site : {1, 2, 4, 6, 7, 8})
            QCOMPARE(h.statuses(site), QStringList{"Starting..."});

        // MediaFire's own start still works; stop-all then passes it by.
        h.queues->startDownloadLinks(Sites::MediaFire, true);
        QCOMPARE(h.statuses(Sites::MediaFire), QStringList{"Starting..."});

        QList<int> stopOrder;
        for (int site = 1; site <= Sites::Count; ++site) {
            QObject::connect(&h.queues->downloader(site), &DownloadAsynch::stopped,
                             [&stopOrder, site] { stopOrder << site; });
        }
        h.queues->stopAllDownloads();
        QCOMPARE(stopOrder, (QList<int>{4, 6, 8, 7, 3, 1, 2}));
        for (int site : {1, 2, 3, 4, 6, 7, 8}) {
            QVERIFY2(h.queues->context(site).bStop, qPrintable(Sites::siteName(site)));
            QVERIFY(!h.queues->isDownloading(site));
        }
        QCOMPARE(h.statuses(Sites::MegaUpload), (QStringList{"Complete", "Stopped"}));
        QCOMPARE(h.standIn(Sites::MegaUpload).calls.size(), 1);
        // Only MegaUpload's recipe holds a socket of its own that the stop closes.
        for (int site = 1; site <= Sites::Count; ++site)
            QCOMPARE(h.standIn(site).closeCalls, site == Sites::MegaUpload ? 1 : 0);
        QVERIFY(!h.queues->context(Sites::MediaFire).bStop);
        QVERIFY(h.queues->isDownloading(Sites::MediaFire));
        QVERIFY(h.queues->isAnyDownloading());
        QCOMPARE(h.statuses(Sites::MediaFire), QStringList{"Starting..."});

        // A stop of a site at rest does nothing at all.
        stopOrder.clear();
        h.queues->stopDownloads(Sites::RapidShare);
        QVERIFY(stopOrder.isEmpty());
        QCOMPARE(h.statuses(Sites::RapidShare), QStringList{"Stopped"});
    }

    void startButtonSwallowsSecondClick()
    {
        Harness h;
        h.add(Sites::RapidShare, link(1, 0));
        h.add(Sites::Youtube, link(2, 0));
        h.add(Sites::Youtube, link(2, 1));
        // While RapidShare's resolver waits, the button is clicked again. Taken,
        // that click would start Youtube from inside RapidShare's resolver.
        struct ClickingStandIn : StandIn
        {
            Harness *h = nullptr;
            bool sawFlag = false;
            int youtubeStartsInside = -1;
            void resolve(SiteContext &ctx) override
            {
                StandIn::resolve(ctx);
                sawFlag = h->queues->startInProgress();
                h->queues->startDownloadClicked();
                youtubeStartsInside = int(h->standIn(Sites::Youtube).calls.size());
            }
        };
        auto clicking = std::make_unique<ClickingStandIn>();
        clicking->h = &h;
        ClickingStandIn *standIn = clicking.get();
        h.queues->setResolver(Sites::RapidShare, std::move(clicking));

        h.queues->startDownloadClicked();
        QVERIFY(standIn->sawFlag);
        QCOMPARE(standIn->youtubeStartsInside, 0);
        QVERIFY(!h.queues->startInProgress());
        QCOMPARE(standIn->calls.size(), 1);
        QCOMPARE(h.standIn(Sites::Youtube).calls, QStringList{link(2, 0)});

        // The stop button clears the flag whatever it was.
        h.queues->stopDownloadClicked();
        QVERIFY(!h.queues->startInProgress());
        QCOMPARE(h.statuses(Sites::RapidShare), QStringList{"Stopped"});
        QCOMPARE(h.statuses(Sites::Youtube), (QStringList{"Stopped", "Waiting"}));
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

        // HotFile's timer does nothing at the end of a wait unless its resolver is
        // at step 1, so the row keeps the texts of the countdown.
        Harness h;
        const int site = Sites::HotFile;
        SiteContext &ctx = h.start(site);
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
    }

    void endOfWaitBySite()
    {
        QFETCH(int, site);
        QFETCH(bool, linkReady);
        QFETCH(int, step);
        QFETCH(QString, outcome);

        Harness h;
        SiteContext &ctx = h.start(site, 2);
        // A resolved row whose address leads nowhere: the transfer is stopped
        // before it could connect.
        const std::pair<Field, QString> resolved[] = {
            {Field::DirectURL, "127.0.0.1:9/none.bin"},
            {Field::LocalFile, "none.bin"},
            {Field::LocalFilePath, m_sandbox->path("downloads")},
            {Field::FileSize, "1.5 KB"},
            {Field::WaitTimeInSec, "1"},
            {Field::Status, "Wait 1 Seconds"}};
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
            QCOMPARE(h.fields(site, 0, {Field::Status, Field::WaitTimeInSec}), QString("Error|0"));
            QCOMPARE(h.at(site, 1), QString("Starting..."));
            QCOMPARE(calls, (QStringList{link(site, 0), link(site, 1)}));
        }
        QVERIFY(errors.isEmpty());
    }

    void countdownFailure()
    {
        Harness h;
        const int site = Sites::DepositFiles;
        SiteContext &ctx = h.start(site, 2);
        h.list.setField(h.list.childAt(site, 0), Field::ErrorDesc, "kept");
        ctx.cursor.setField(Field::WaitTimeInSec, "abc");
        ctx.startTimer(1000);

        emit ctx.timer->timeout();
        QCOMPARE(h.at(site, 1), QString("Starting..."));
        QCOMPARE(h.fields(site, 0, {Field::Status, Field::WaitTimeInSec, Field::ErrorDesc}),
                 QString("Error|0|kept"));
        // The walk of the next start clears the failed row's flag.
        QCOMPARE(h.flags(site), QString("01"));
        QCOMPARE(h.standIn(site).calls, (QStringList{link(site, 0), link(site, 1)}));
        // The resolver of the next row left the timer off.
        QVERIFY(!ctx.timer->isEnabled());
    }

    // ---- What the transfer control reports ----

    void progressTexts_data()
    {
        QTest::addColumn<double>("value");
        QTest::addColumn<int>("bytesPerSecond");
        QTest::addColumn<float>("downloaded");
        QTest::addColumn<float>("secondsLeft");
        QTest::addColumn<QStringList>("texts"); // Status, Speed, TimeLeft
        auto row = [](const char *name, double value, int bps, float done, float left,
                      const char *texts) {
            QTest::newRow(name) << value << bps << done << left << split(texts);
        };
        row("percent", 45.67, 1536, 4567.0f, 61.0f, "45.67|1.5 KB/S|00:01:01");
        row("whole percent", 3.0, 12, 30.0f, 5.0f, "3|12 Bytes/S|00:00:05");
        row("hours", 0.5, 1048576, 1.0f, 7199.0f, "0.5|1 MB/S|02:59:59");
        row("size unknown", -1.0, 0, 1572864.0f, -1.0f, "1.5 MB so far|0 Bytes/S|?");
        row("size unknown, rounded bytes", -1.0, 2048, 1000.6f, -1.0f,
            "1001 Bytes so far|2 KB/S|?");
    }

    void progressTexts()
    {
        QFETCH(double, value);
        QFETCH(int, bytesPerSecond);
        QFETCH(float, downloaded);
        QFETCH(float, secondsLeft);
        QFETCH(QStringList, texts);

        Harness h;
        const int site = Sites::FourShared;
        h.add(site, link(site, 0));
        h.add(site, link(site, 1), "Connecting...");
        h.queues->startDownloadLinks(site, true);
        emit h.queues->downloader(site).progress(value, bytesPerSecond, downloaded, 0, secondsLeft);

        QCOMPARE(
            h.fields(site, 0, {Field::Status, Field::Speed, Field::TimeLeft, Field::IsDownloading}),
            texts.join(u'|') + "|1");
        QCOMPARE(h.at(site, 1), QString("Connecting..."));
    }

    void fileBeginSize_data()
    {
        QTest::addColumn<float>("size");
        QTest::addColumn<QString>("fileSize");

        QTest::newRow("bytes") << 1023.0f << "1023 Bytes";
        QTest::newRow("kilobytes") << 1536.0f << "1.5 KB";
        QTest::newRow("one gigabyte exactly") << 1073741824.0f << "";
        QTest::newRow("beyond 32 bits") << 2147483648.0f << "guessed";
        QTest::newRow("just below 32 bits") << 2147483520.0f << "2 GB";
    }

    void fileBeginSize()
    {
        QFETCH(float, size);
        QFETCH(QString, fileSize);

        Harness h;
        const int site = Sites::MegaUpload;
        h.start(site).cursor.setField(Field::FileSize, "guessed");
        emit h.queues->downloader(site).fileBegin(size);
        QCOMPARE(h.at(site, 0, Field::FileSize), fileSize);
        QCOMPARE(h.at(site, 0), QString("Starting..."));
    }

    void transferEnds_data()
    {
        QTest::addColumn<QString>("event"); // complete, error, stopped
        QTest::addColumn<QString>("before");
        QTest::addColumn<QString>("argument");
        QTest::addColumn<QString>("after");
        auto row = [](const char *name, const char *event, const char *before, const char *argument,
                      const char *after) {
            QTest::newRow(name) << QString(event) << QString(before) << QString(argument)
                                << QString(after);
        };
        row("complete", "complete", "99.5", "", "Complete");
        row("connection error", "error", "Connecting...", "Connection Error", "Connection Error");
        row("other error", "error", "12.5", "Connection refused", "Error");
        row("error in other case", "error", "12.5", "connection error", "Error");
        row("stopped at 45%", "stopped", "45.12", "", "Stopped(45%)");
        row("stopped at 0%", "stopped", "0", "", "Stopped(0%)");
        row("stopped at 99.99%", "stopped", "99.99", "", "Stopped(100%)");
        row("half up to even", "stopped", "45.5", "", "Stopped(46%)");
        row("half down to even", "stopped", "46.5", "", "Stopped(46%)");
        row("stopped so far", "stopped", "1.5 MB so far", "", "Stopped");
        row("stopped SO FAR", "stopped", "12 Bytes SO FAR", "", "Stopped");
        row("stopped counting", "stopped", "Wait 12 Seconds", "", "Stopped");
        row("stopped, digit but no number", "stopped", "7 of 9", "", "7 of 9");
    }

    void transferEnds()
    {
        QFETCH(QString, event);
        QFETCH(QString, before);
        QFETCH(QString, argument);
        QFETCH(QString, after);
        const bool nextRow = event != "stopped";

        Harness h;
        const int site = Sites::RapidShare;
        RowCursor &row = h.start(site, 2).cursor;
        row.setField(Field::Status, before);
        row.setField(Field::Speed, "1 KB/S");
        row.setField(Field::TimeLeft, "00:00:05");
        row.setField(Field::FileSize, "2 KB");

        DownloadAsynch &control = h.queues->downloader(site);
        auto raise = [&] {
            if (event == "complete")
                emit control.complete();
            else if (event == "error")
                emit control.error(argument);
            else
                emit control.stopped();
        };
        raise();

        QCOMPARE(h.fields(site, 0,
                          {Field::Status, Field::Speed, Field::TimeLeft, Field::IsDownloading,
                           Field::FileSize, Field::ErrorDesc}),
                 after + "|||0|2 KB|");
        QCOMPARE(h.at(site, 1), QString(nextRow ? "Starting..." : "Waiting"));
        QCOMPARE(h.standIn(site).calls.size(), nextRow ? 2 : 1);
        QVERIFY(h.ranOut.isEmpty());

        // At the last row an end that moves on finds nothing more.
        if (nextRow) {
            raise();
            QCOMPARE(h.ranOut, QList<int>{site});
            QCOMPARE(h.at(site, 1), event == "complete" ? QString("Complete") : after);
        }
    }

    void resolverFailureMovesOn()
    {
        Harness h;
        const int site = Sites::FourShared;
        h.standIn(site).mode = StandIn::Mode::Fail;
        h.start(site, 3);
        // Each failure starts the next row inside the resolver; the walk after the
        // last one clears the flags the failures left and ends the queue.
        QCOMPARE(h.standIn(site).calls, (QStringList{link(site, 0), link(site, 1), link(site, 2)}));
        QCOMPARE(h.statuses(site), QStringList(3, "Connection Error"));
        QCOMPARE(h.flags(site), QString("000"));
        QCOMPARE(h.ranOut, QList<int>{site});
        QVERIFY(!h.queues->isDownloading(site));
    }

    // ---- Real transfers against a local server ----

    void realTransferEnds_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("firstStatus");
        QTest::addColumn<QString>("firstSize");
        QTest::newRow("complete") << "complete" << QString("Complete") << "20 KB";
        QTest::newRow("not found") << "404" << QString("Connection Error") << "?";
        QTest::newRow("nobody listens") << "refused" << QString("Error") << "?";
    }

    void realTransferEnds()
    {
        QFETCH(QString, kind);
        QFETCH(QString, firstStatus);
        QFETCH(QString, firstSize);

        LogicalTimer::setRealPeriod(1000, 10);
        TestServer server;
        QVERIFY(server.listen());
        const QByteArray first = payload(20 * 1024, 'a');
        const QByteArray second = payload(3000, 'k');
        if (kind == "complete")
            server.setAnswer("/files/first.bin", TestServer::Answer::ok(first));
        else if (kind == "404")
            server.setAnswer("/files/first.bin",
                             TestServer::Answer::status(404, "Not Found").keepOpen());
        server.setAnswer("/files/second.bin", TestServer::Answer::ok(second));

        Harness h;
        const int site = Sites::DepositFiles;
        const QString folder = m_sandbox->path("ends-" + kind);
        const QString firstLink =
            kind == "refused" ? deadAddress("/files/first.bin") : server.url("/files/first.bin");
        QVERIFY(!firstLink.isEmpty());
        h.add(site, firstLink);
        h.add(site, server.url("/files/second.bin"));
        StandIn &standIn = h.standIn(site);
        standIn.mode = StandIn::Mode::Resolve;
        standIn.folder = folder;
        standIn.wait = 2;

        QSignalSpy begins(&h.queues->downloader(site), &DownloadAsynch::fileBegin);
        h.queues->startDownloadLinks(site, true);
        QCOMPARE(h.statuses(site), (QStringList{"Wait 2 Seconds", "Waiting"}));
        QTRY_COMPARE_WITH_TIMEOUT(h.at(site, 0), firstStatus, 10000);
        QCOMPARE(h.fields(site, 0,
                          {Field::FileSize, Field::Speed, Field::TimeLeft, Field::IsDownloading}),
                 firstSize + "|||0");
        if (kind == "complete")
            QCOMPARE(readFile(folder + "/first.bin"), first);

        // Either end moves on to the next row, which runs its own cycle.
        QTRY_COMPARE_WITH_TIMEOUT(h.at(site, 1), QString("Complete"), 10000);
        QCOMPARE(h.at(site, 0), firstStatus);
        QCOMPARE(h.at(site, 1, Field::FileSize), QString("2.93 KB"));
        QCOMPARE(readFile(folder + "/second.bin"), second);
        QCOMPARE(standIn.calls, (QStringList{firstLink, server.url("/files/second.bin")}));
        QCOMPARE(h.ranOut, QList<int>{site});
        QCOMPARE(h.flags(site), QString("00"));
        QCOMPARE(begins.size(), kind == "complete" ? 2 : 1);
    }

    void stopInEachState_data()
    {
        QTest::addColumn<QString>("state");
        QTest::addColumn<QString>("status");
        QTest::addColumn<QString>("wait");
        auto row = [](const char *state, const char *status, const char *wait) {
            QTest::newRow(state) << QString(state) << QString(status) << QString(wait);
        };
        row("idle", "Waiting", "0");
        row("resolving", "Stopped", "0");
        row("counting", "Stopped", "29");
        row("long wait", "Stopped", "240");
        row("handing off", "Stopped", "0");
        row("percent", "Stopped(45%)", "0");
        row("so far", "Stopped", "0");
    }

    void stopInEachState()
    {
        QFETCH(QString, state);
        QFETCH(QString, status);
        QFETCH(QString, wait);

        const bool transferring = state == "percent" || state == "so far";
        if (transferring)
            LogicalTimer::setRealPeriod(1000, 20); // the transfer's speed ticks run
        TestServer server;
        QVERIFY(server.listen());
        const QByteArray body = payload(100000, 'c');
        QList<QPair<QByteArray, QByteArray>> headers = {
            {"Content-Type", "application/octet-stream"}};
        if (state == "percent")
            headers.prepend({"Content-Length", "100000"});
        TestServer::Answer partial = TestServer::Answer::http(200, "OK", headers, body);
        // 45000 bytes of the body, then nothing more for an hour.
        partial.cutAt({partial.bytes.size() - body.size() + 45000}, 3600000);
        server.setAnswer("/big.bin", partial);
        server.setAnswer("/quiet.bin", TestServer::Answer::silence());

        Harness h;
        const int site = Sites::FileFactory;
        SiteContext &ctx = h.queues->context(site);
        StandIn &standIn = h.standIn(site);
        standIn.folder = m_sandbox->path("stops");
        const QString address = server.url(state == "handing off" ? "/quiet.bin" : "/big.bin");
        h.add(site, address);
        h.add(site, server.url("/next.bin"));
        QSignalSpy stopped(ctx.downloader, &DownloadAsynch::stopped);

        if (state == "resolving") {
            standIn.mode = StandIn::Mode::Hold;
            QTimer::singleShot(20, h.queues.get(), [&] {
                QCOMPARE(h.at(site, 0), QString("Starting..."));
                h.queues->stopDownloads(site);
                // The control's stop event wrote the row before the resolver woke.
                QCOMPARE(h.at(site, 0), QString("Stopped"));
                QCOMPARE(h.at(site, 0, Field::IsDownloading), QString("0"));
            });
            h.queues->startDownloadLinks(site, true);
        } else if (state != "idle") {
            standIn.mode = StandIn::Mode::Resolve;
            standIn.wait = state == "counting" ? 30 : state == "long wait" ? 300 : 0;
            standIn.interval = state == "long wait" ? 60000 : 1000;
            h.queues->startDownloadLinks(site, true);
            if (state == "counting" || state == "long wait") {
                emit ctx.timer->timeout();
                QCOMPARE(h.at(site, 0),
                         QString(state == "counting" ? "Wait 29 Seconds" : "Wait 4 Minutes"));
            } else if (state == "handing off") {
                emit ctx.timer->timeout();
                QCOMPARE(h.at(site, 0), QString("Connecting..."));
                QVERIFY(server.waitForRequests(1));
                QCOMPARE(h.at(site, 0), QString("Connecting..."));
            } else {
                const QString shown = state == "percent" ? "45" : "43.95 KB so far";
                QTRY_COMPARE_WITH_TIMEOUT(h.at(site, 0), shown, 10000);
                const QString speed = h.at(site, 0, Field::Speed);
                QVERIFY2(speed.endsWith(" KB/S") || speed == "1 Bytes/S" || speed == "0 Bytes/S",
                         qPrintable(speed));
                static const QRegularExpression clock("^\\d\\d+:\\d\\d:\\d\\d$");
                const QString left = h.at(site, 0, Field::TimeLeft);
                QVERIFY2(state == "percent" ? clock.match(left).hasMatch() : left == "?",
                         qPrintable(left));
            }
            QVERIFY(h.queues->isDownloading(site));
        }
        if (state != "resolving")
            h.queues->stopDownloads(site);

        QCOMPARE(stopped.size(), state == "idle" ? 0 : 1);
        QVERIFY(!h.queues->isDownloading(site));
        QCOMPARE(
            h.fields(site, 0, {Field::Status, Field::WaitTimeInSec, Field::Speed, Field::TimeLeft}),
            status + '|' + wait + "||");
        QVERIFY(!ctx.timer->isEnabled());
        QCOMPARE(ctx.bStop, state != "idle");

        // A stop never moves on, and no late event of the closed transfer does.
        QTest::qWait(100);
        QCOMPARE(h.statuses(site), (QStringList{status, "Waiting"}));
        QCOMPARE(standIn.calls.size(), state == "idle" ? 0 : 1);
        QVERIFY(h.ranOut.isEmpty());
        if (state == "handing off" || transferring)
            QTRY_COMPARE(server.closedByClient(), 1);

        // The next start begins at the first eligible row: the stopped one.
        if (state != "idle") {
            standIn.mode = StandIn::Mode::Record;
            h.queues->startDownloadLinks(site, true);
            QVERIFY(!ctx.bStop);
            QCOMPARE(standIn.calls.last(), address);
        }
    }

    void twoSitesSideBySide()
    {
        LogicalTimer::setRealPeriod(1000, 20);
        TestServer server;
        QVERIFY(server.listen());
        const QList<int> sites = {Sites::RapidShare, Sites::FileFactory};
        auto path = [](int site, int n) {
            return QStringLiteral("/s%1/file%2.bin").arg(site).arg(n);
        };
        QHash<QString, QByteArray> bodies;
        Harness h;
        for (int site : sites) {
            StandIn &standIn = h.standIn(site);
            standIn.mode = StandIn::Mode::Resolve;
            standIn.folder = m_sandbox->path(QStringLiteral("side/%1").arg(site));
            standIn.wait = 1;
            for (int n = 0; n < 2; ++n) {
                const QByteArray body = payload(
                    16384 * (site == Sites::RapidShare ? 4 : 3) + n * 1024, char('A' + site + n));
                bodies.insert(path(site, n), body);
                server.setAnswer(path(site, n).toLatin1(),
                                 TestServer::Answer::ok(body).cutEvery(4096, 15));
                h.add(site, server.url(path(site, n)));
            }
        }
        h.add(Sites::HotFile, link(Sites::HotFile, 0), "Complete");

        // While one site reports progress, the other is in the middle of its own
        // transfer.
        int overlaps = 0;
        QObject::connect(&h.queues->downloader(Sites::RapidShare), &DownloadAsynch::progress, [&] {
            const RowCursor &other = h.queues->context(Sites::FileFactory).cursor;
            bool isNumber = false;
            if (other.row())
                other.field(Field::Status).toDouble(&isNumber);
            overlaps += isNumber ? 1 : 0;
        });

        h.queues->startDownloadClicked();
        for (int site : sites) {
            QCOMPARE(h.statuses(site), (QStringList{"Wait 1 Seconds", "Waiting"}));
            QVERIFY(h.queues->isDownloading(site));
        }
        for (int site : sites)
            QTRY_COMPARE_WITH_TIMEOUT(h.statuses(site), (QStringList{"Complete", "Complete"}),
                                      20000);
        QVERIFY(overlaps > 0);
        QVERIFY(!h.queues->isAnyDownloading());
        QCOMPARE(h.ranOut.size(), 3); // HotFile's at once, then each site's
        QCOMPARE(h.ranOut.first(), int(Sites::HotFile));
        for (int site : sites) {
            QVERIFY(h.ranOut.contains(site));
            for (int n = 0; n < 2; ++n) {
                const QByteArray &body = bodies[path(site, n)];
                QCOMPARE(h.at(site, n, Field::FileSize), sizeToText(body.size()));
                QCOMPARE(readFile(h.standIn(site).folder + QStringLiteral("/file%1.bin").arg(n)),
                         body);
            }
        }
    }

private:
    std::unique_ptr<Sandbox> m_sandbox;
};

QTEST_GUILESS_MAIN(TestSiteQueues)
#include "tst_sitequeues.moc"
