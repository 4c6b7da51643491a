#include "fakedepositfiles.h"
#include "fakehotfile.h"
#include "recipetest.h"
#include "resolvers/depositfiles.h"
#include "resolvers/hotfile.h"

class TestDepositFilesHotFile : public QObject
{
    Q_OBJECT
    static constexpr int kDeposit = Sites::DepositFiles;
    static constexpr int kHot = Sites::HotFile;
    using Deposit = FakeDepositFiles;
    using Hot = FakeHotFile;
    Sandbox m_sandbox;

    // DepositFiles' one request: a gone file, a busy address (looked for
    // before the gone text) and a page without the site's countdown, on which
    // the queue rests. HotFile's page and its post, which the site passes on
    // to a path of its own.
    static QList<FailureMatrix::Step> steps()
    {
        using Step = FailureMatrix::Step;
        const QString noCountdown = Deposit::downloadPage("h/f", "f", 5).remove("_waiter_");
        const QString far = QString(32800, 'x') + Hot::formPage("31", "1");
        return {
            Step(kDeposit, "gateway post", "/en/files/21",
                 {{"file gone", Deposit::gonePage, "Not Found|0|"},
                  {"busy", Deposit::ipBusyPage + Deposit::gonePage, "Wait 5 Minutes|300|", false},
                  {"no countdown", noCountdown, "Starting...|0|", false}}),
            Step(kHot, "page", "/dl/31",
                 {{"no form", "<p>This file is removed.</p>", "Not Found|0|"},
                  {"form behind 32767", far, "Connection Error|0|"}}),
            Step(kHot, "post", "/post/31",
                 {{"empty answer", "", "Not Found|0|"}, {"no link", "<p>x</p>", "Error|0|"}})};
    }

private slots:
    // The page readers: DepositFiles' page, HotFile's "form" (the body|the
    // wait) and its answer to the "post" for the link "x" and the row's
    // DirectURL, which is read at step 1 and shows the step after it.
    void reading_data()
    {
        const QString form = "<div id=\"download_url\"><form action=\"http://h/f\">";
        const QString read = "DirectURL=http://h/f; LocalFilePath=/dl";
        const QString error = "Status=Error; WaitTimeInSec=0 => next link";
        ReadingRows row("deposit");
        row("half the gone text, no quote", "Such file does not exist" + form.left(39), error);
        row("no title, no <", form + "File name download_waiter_remain\">9", read + " => rest");
        row("countdown too short", form + "download_waiter_remain<", read + "; " + error);

        row.reader = "form";
        row("nothing before the input, value as it stands, no timer",
            "name=f>\n<Input Type=Hidden NAME=k VALUE='a b'>\r\n<tr>", "k='a b'|30");
        row("text only, x timer", "name=f>\r\nfree\r\n<tr>timerend=d.getTime()+x;", "free|30");
        row("timer behind 32767",
            "name=f>\r\n\r\n<tr>" + QString(32800, 'x') + "timerend=d.getTime()+1;", "fails");

        const QString link = "<a href=\"%1\" class=click_download>";
        const QString dl = "LocalFilePath=/dl; ", go = "Status=Connecting... => transfer #";
        row.reader = "post";
        row("disabled first", Hot::disabledPage + link.arg("h/"),
            "WaitTimeInSec=300 => countdown 1000 #1");
        row("no href", "<a id=\"x\" class=click_download>", " => rest #2");
        row("neither, blank address", "<p>x</p>", error + " #1", "  ");
        row("address from before", "<p>x</p>", dl + "LocalFile=old; " + go + "1", "h/old");
        row("ending in /", link.arg("h/"), "DirectURL=h/; " + dl + "LocalFile=; " + go + "2");
        row("no / at all", link.arg("f"), "DirectURL=f; " + dl + go + "2");
    }

    void reading()
    {
        ReadingRows::check([](const QString &reader, const QString &page, const QString &direct) {
            if (reader == "deposit")
                return DepositFilesRecipe::readDownloadPage(page, "/dl").toString();
            if (reader == "form") {
                const auto got = HotFileRecipe::readFormPage(page);
                return got.hasForm ? got.postData + '|' + got.wait : "no form";
            }
            int step = 1;
            const Reading got = HotFileRecipe::readPostAnswer(page, "x", direct, "/dl", step);
            return got.toString() + " #" + QString::number(step);
        });
    }

    // Both sites through the real queue, their countdowns and the transfer.
    void throughTheQueue()
    {
        RecipeHarness::setPeriods(0, 20000);
        Deposit deposit;
        Hot hot;
        RecipeHarness h({kDeposit, kHot});
        h.add(kDeposit, deposit.addFile("11", "report.pdf", "report", 45, "DE"));
        h.add(kDeposit, deposit.page("/en/files/12", Deposit::slotsBusyPage));
        // Two answers "not yet" come before the link.
        h.add(kHot, hot.addFile("41", "a,b.bin", "first", "1500", 2));
        h.start(kDeposit);
        h.start(kHot);
        QTRY_COMPARE_WITH_TIMEOUT(h.statuses(kDeposit) + h.statuses(kHot),
                                  (QStringList{"Complete", "Wait 5 Minutes", "Complete"}), 20000);
        // The title's quotes cleaned out; HotFile's name as it stands.
        QCOMPARE(h.trail(kDeposit, 0),
                 "Waiting,Starting...,Wait 45 Seconds,Connecting...,Complete");
        QCOMPARE(h.fileIn("report.pdf") + '|' + h.fileIn("a,b.bin"), QByteArray("report|first"));
        QCOMPARE(h.at(kDeposit, 0, Field::LinkURL), deposit.url(QStringLiteral("/DE/files/11")));
        // Each "not yet" is a wait of 300 seconds that writes no Status of its
        // own, and ends in the same post.
        const QString seen = h.trail(kHot, 0);
        QVERIFY(seen.startsWith("Waiting,Starting...,Wait 1.5 Seconds,Wait 1 Seconds,Wait 5 M"));
        QCOMPARE(seen.count("Wait 1 Seconds,Wait 5 Minutes,"), 2);
        QVERIFY(seen.endsWith("Wait 1 Seconds,Connecting...,Complete"));

        // The long wait ends in the transfer, which has no address to go to.
        h.tick(kDeposit, 5);
        QTRY_COMPARE(h.trail(kDeposit, 1).section(',', 2),
                     "Wait 5 Minutes,Wait 4 Minutes,Wait 3 Minutes,Wait 2 Minutes,Wait 1 "
                     "Minutes,Connecting...,Error");
        // The posts with their three headers, not HotFile's passed on to a path of its own.
        const QRegularExpression posts("^POST /(en|dl)/");
        const QString form = " application/x-www-form-urlencoded|";
        const QString gateway = form + "16|close|gateway_result=1";
        const QString hotPost = "POST /dl/41" + form + "18|close|&action=capt&tm=41";
        QCOMPARE((deposit.requestLines(true) + hot.requestLines(true)).filter(posts),
                 (QStringList{"POST /en/files/11" + gateway, "POST /en/files/12" + gateway, hotPost,
                              hotPost, hotPost}));
    }

    // The frame's failures at each request, and the sites' own pages.
    void failures_data() { FailureMatrix::addRows(steps()); }
    void failures()
    {
        Deposit deposit;
        Hot hot;
        const QStringList deposits{deposit.addFile("21", "a", {}), deposit.addFile("22", "b", {})};
        const QStringList hots{hot.addFile("31", "a", {}), hot.addFile("32", "b", {})};
        FailureMatrix::run(steps(), {{kDeposit, &deposit, deposits}, {kHot, &hot, hots}});
    }
};

QTEST_GUILESS_MAIN(TestDepositFilesHotFile)
#include "tst_depositfiles.moc"
