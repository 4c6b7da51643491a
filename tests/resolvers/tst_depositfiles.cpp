#include "fakedepositfiles.h"
#include "fakehotfile.h"
#include "recipetest.h"
#include "resolvers/depositfiles.h"
#include "resolvers/hotfile.h"

namespace {

constexpr int kDeposit = Sites::DepositFiles;
constexpr int kHot = Sites::HotFile;
using Deposit = FakeDepositFiles;
using Hot = FakeHotFile;

// DepositFiles' one request, for a first link given in German (in capitals):
// a gone file, and a page without the site's countdown, on which the queue
// rests. HotFile's page and its post, which the site passes on to a path of
// its own.
QList<FailureMatrix::Step> steps()
{
    using Step = FailureMatrix::Step;
    const QString noCountdown = Deposit::downloadPage("http://h/f", "f", 5).remove("_waiter_");
    const QString far = QString(32800, 'x') + Hot::formPage("31", "1");
    return {Step(kDeposit, "gateway post", Deposit::pagePath("21"),
                 {{"file gone", Deposit::gonePage, "Not Found|0|"},
                  {"no countdown", noCountdown, "Starting...|0|", false}}),
            Step(kHot, "page", Hot::linkPath("31"),
                 {{"no form", "<p>This file is removed.</p>", "Not Found|0|"},
                  {"form behind 32767", far, "Connection Error|0|"}}),
            Step(kHot, "post", Hot::postPath("31"),
                 {{"empty answer", "", "Not Found|0|"}, {"no link", "<p>x</p>", "Error|0|"}})};
}

} // namespace

class TestDepositFilesHotFile : public QObject
{
    Q_OBJECT
    Sandbox m_sandbox;
private slots:
    // The page readers: DepositFiles' page, HotFile's "form" (the body|the
    // wait) and its answer to the "post" for the row's link|DirectURL, which
    // is read at step 1 and shows the step after it.
    void reading_data()
    {
        const QString form = "<div id=\"download_url\"><form action=\"http://h/f\" method=\"get\">";
        const QString read = "DirectURL=http://h/f; LocalFilePath=/dl";
        const QString error = "Status=Error; WaitTimeInSec=0 => next link";
        ReadingRows row("deposit");
        row("site's page, 'minute' in it", Deposit::downloadPage("http://h/f", "r:\"1\".pdf", 45),
            "DirectURL=http://h/f; LocalFile=r1.pdf; LocalFilePath=/dl; Status=Wait 45 Seconds; "
            "WaitTimeInSec=1 => countdown 1000");
        row("address busy before gone", Deposit::ipBusyPage + Deposit::gonePage,
            "Status=Wait 5 Minutes; WaitTimeInSec=300 => countdown 60000");
        row("half the gone text", "Such file does not exist", error);
        row("no closing quote", form.left(39), error);
        row("no title, no < after the countdown",
            form + "File name: <b>x</b> download_waiter_remain\">9", read + " => rest");
        row("countdown too short", form + "download_waiter_remain<", read + "; " + error);
        row("countdown no number, no var c, any case",
            "<P ID=\"DOWNLOAD_URL\" ACTION=\"http://h/f\">DOWNLOAD_WAITER_REMAIN\">soon<",
            read + "; Status=Wait 0 Seconds; WaitTimeInSec=1 => countdown 1000");

        const QString f = "<form method=post name=f>\r\n", input = "<input type=hidden name=a>\r\n";
        row.reader = "form";
        row("site's page", Hot::formPage("7", "1500"), Hot::formBody("7") + "|1.5");
        row("nothing before the input", "name=f>\n" + input + "<tr>timerend=d.getTime()+45000;",
            "a|45");
        row("no inputs, no timer", f + "free\r\n<tr>", "free|30");
        row("value as it stands, timer no number",
            f + "<INPUT TYPE=HIDDEN Name=k Value=\"a b's\">\r\n<tr>timerend=d.getTime()+x;",
            "&k=\"a b's\"|30");
        row("<tr> glued to the form", "name=f><tr>", "fails");
        row("timer behind 32767",
            f + input + "<tr>" + QString(32800, 'x') + "timerend=d.getTime()+1000;", "fails");

        const QString a = "http://h/dl/x.html|", link = "<a href=\"%1\" class=click_download>";
        const QString go = "Status=Connecting... => transfer #";
        row.reader = "post";
        row.extra = a;
        row("site's page", Hot::downloadPage("http://h/a,b c"),
            "DirectURL=http://h/a,b c; LocalFilePath=/dl; LocalFile=a,b c; " + go + "2");
        row("disabled first", Hot::disabledPage + link.arg("h/"),
            "WaitTimeInSec=300 => countdown 1000 #1");
        row("no href", "<a id=\"x\" class=click_download>", " => rest #2");
        row("no quote before", "<a class=click_download>", error + " #2");
        row("neither, blank address", "<p>x</p>", error + " #1", a + "  ");
        row("neither, address from before", "<p>x</p>",
            "LocalFilePath=/dl; LocalFile=old; " + go + "1", a + "http://h/old");
        row("address ending in /", link.arg("http://h/"),
            "DirectURL=http://h/; LocalFilePath=/dl; LocalFile=; " + go + "2");
        row("name from the link", link.arg("f"),
            "DirectURL=f; LocalFilePath=/dl; LocalFile=x.html; " + go + "2");
        row("no / at all", link.arg("f"), "DirectURL=f; LocalFilePath=/dl; " + go + "2", "x|");
    }

    void reading()
    {
        ReadingRows::check([](const QString &reader, const QString &page, const QString &extra) {
            if (reader == "deposit")
                return DepositFilesRecipe::readDownloadPage(page, "/dl").toString();
            if (reader == "form") {
                const auto got = HotFileRecipe::readFormPage(page);
                return got.hasForm ? got.postData + '|' + got.wait : "no form";
            }
            const QStringList linkDirect = extra.split('|');
            int step = 1;
            const Reading got =
                HotFileRecipe::readPostAnswer(page, linkDirect[0], linkDirect[1], "/dl", step);
            return got.toString() + " #" + QString::number(step);
        });
    }

    // Both sites through the real queue, their countdowns and the transfer.
    void throughTheQueue()
    {
        RecipeHarness::setPeriods(1, 20000);
        Deposit deposit;
        Hot hot;
        RecipeHarness h({kDeposit, kHot});
        h.createSubDir = 1;
        h.add(kDeposit, deposit.addFile("11", "report.pdf", "report", 45, "DE"));
        h.add(kDeposit, deposit.addFile("12", "later.pdf", "later"));
        deposit.page(Deposit::pagePath("12"), Deposit::slotsBusyPage);
        // Two answers "not yet" come before the link.
        h.add(kHot, hot.addFile("41", "a,b.bin", "first", "1500", 2));

        // A QTRY wait sleeps 10 ms a round, too long for ticks of 1 ms.
        h.start(kDeposit);
        h.start(kHot);
        QTimer wake; // the wait below never blocks for good
        wake.start(100);
        for (QDeadlineTimer end(20000); h.at(kHot, 0) != "Complete" && !end.hasExpired();)
            QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
        QCOMPARE(h.trail(kDeposit, 0),
                 "Waiting,Starting...,Wait 45 Seconds,Connecting...,Complete");
        QCOMPARE(h.fileIn("DepositFiles Files/report.pdf"), QByteArray("report"));
        QCOMPARE(h.fileIn("HotFile Files/a,b.bin"), QByteArray("first")); // not cleaned
        QCOMPARE(h.at(kDeposit, 0, Field::LinkURL), deposit.url(QStringLiteral("/DE/files/11")));
        // Each "not yet" is a wait of 300 seconds that writes no Status of its
        // own, and ends in the same post.
        const QString seen = h.trail(kHot, 0);
        QVERIFY(seen.startsWith("Waiting,Starting...,Wait 1.5 Seconds,Wait 1 Seconds,Wait 5 M"));
        QCOMPARE(seen.count("Wait 1 Seconds,Wait 5 Minutes,"), 2);
        QVERIFY(seen.endsWith("Wait 1 Seconds,Connecting...,Complete"));
        QStringList posts;
        for (const auto &r : deposit.server().requests() + hot.server().requests())
            if (r.method == "POST" && !r.path.startsWith("/post/"))
                posts << r.path + ' ' + r.header("Content-type") + '|' +
                             r.header("Content-length") + '|' + r.header("Connection") + '|' +
                             r.body;
        const QString form = " application/x-www-form-urlencoded|",
                      deposited = form + "16|close|gateway_result=1",
                      hotPost = "/dl/41" + form + "42|close|" + Hot::formBody("41");
        QCOMPARE(posts, (QStringList{"/en/files/11" + deposited, "/en/files/12" + deposited,
                                     hotPost, hotPost, hotPost}));

        // The long wait ends in the transfer, which has no address to go to.
        QCOMPARE(h.at(kDeposit, 1), "Wait 5 Minutes");
        h.tick(kDeposit, 5);
        QTRY_COMPARE(h.at(kDeposit, 1), QStringLiteral("Error"));
        QCOMPARE(h.trail(kDeposit, 1).section(',', 2),
                 "Wait 5 Minutes,Wait 4 Minutes,Wait 3 Minutes,Wait 2 Minutes,Wait 1 "
                 "Minutes,Connecting...,Error");
    }

    // The frame's failures at each request, and the sites' own pages.
    void failures_data() { FailureMatrix::addRows(steps()); }
    void failures()
    {
        Deposit deposit;
        Hot hot;
        const QStringList deposits{deposit.addFile("21", "a", "a", 5, "DE"),
                                   deposit.addFile("22", "b", "b")};
        const QStringList hots{hot.addFile("31", "a", "a"), hot.addFile("32", "b", "b")};
        FailureMatrix::run(steps(), {{kDeposit, &deposit, deposits}, {kHot, &hot, hots}});
    }
};

QTEST_GUILESS_MAIN(TestDepositFilesHotFile)
#include "tst_depositfiles.moc"
