#include "fakerapidshare.h"
#include "recipetest.h"
#include "resolvers/rapidshare.h"

namespace {

constexpr int kSite = Sites::RapidShare;

// The two requests of the recipe, for the first of the links below, with
// the pages of the site's own that end a run there.
QList<FailureMatrix::Step> steps()
{
    using Step = FailureMatrix::Step;
    const QString notFound = "Not Found|0|";
    return {Step(kSite, "page", FakeRapidShare::firstPath("21", "x.bin"),
                 {{"file gone", FakeRapidShare::goneFirstPage, notFound},
                  {"no form", FakeRapidShare::noFormPage, "Connection Error|0|"}}),
            Step(kSite, "post", FakeRapidShare::postPath("21", "x.bin"),
                 {{"file gone", FakeRapidShare::goneErrorPage,
                   notFound + "The file could not be found, It may be deleted by the owner "
                              "or expired."},
                  {"not understood", "minutes <h1>Error</h1>", "Error|0|"},
                  {"wait minutes", FakeRapidShare::minutesErrorPage("3 "), "Wait 5 Minutes|300|",
                   false}})};
}

} // namespace

class TestRapidShare : public QObject
{
    Q_OBJECT
    Sandbox m_sandbox;
private slots:
    // Countdowns of a few milliseconds; the time-out and the minute timers
    // (the site's and the transfer's silence timer) far away.
    void init() { RecipeHarness::setPeriods(5, 20000); }

    // The link's page ("form|<action>", "gone|" or "no form|"), then the
    // answer to the post for a link: a made-up name's number reads "#", and
    // the usual end of a resolved row, the folder "/dl" and a wait of N
    // seconds, "wait N". The site's pages that end a run (gone, no form,
    // minutes, an error not understood) are the failure rows below, end to
    // end; its usual pages are read in the links' run.
    void pages_data()
    {
        const QString ff = "<form id=\"ff\" action=\"http://h/p\" method=\"post\">";
        ReadingRows row("first");
        row("gone, two blanks, before a form", FakeRapidShare::goneFirstPage + ff, "gone|");
        row("one blank is no gone file; the form in any case",
            "The file could not be found. Please check the download link.<FORM ID=\"FF\" "
            "ACTION=\"http://h/p\" METHOD=\"POST\">",
            "form|http://h/p");
        row("no method", "<form id=\"ff\" action=\"http://h/p\">", "no form|");
        row("an action only before the form", "action=\"x\" <form id=\"ff\" method=\"post\">",
            "no form|");
        row("no blank before method loses a character",
            "<form id=\"ff\" action=\"http://h/p\"method=\"post\">", "form|http://h/");

        row.reader = "post";
        row.extra = "http://rs.test/files/77/report.pdf.html";
        row("no wait, any case in the markers",
            "<FORM NAME=\"DLF\" ACTION=\"http://h/F\">>|1.5 kb<",
            "DirectURL=http://h/F; LocalFile=report.pdf; FileSize=?; FileSize=1.5 KB; wait 0");
        row("no closing quote, size no number, a link without a slash: a made-up name",
            "var c=12;<form name=\"dlf\" action=\"http://h/f >|abc KB<",
            "LocalFile=Rapid #; FileSize=?; wait 12", "nolinkslash");
        row("size too large for 32 bits fails with what was read", ">|3000000 KB<",
            "LocalFile=report.pdf; FileSize=?; Status=Error; WaitTimeInSec=0 => next link");
        row("number glued to minutes", FakeRapidShare::minutesErrorPage("12"),
            "Status=Wait  12 Minutes; WaitTimeInSec=720 => countdown 60000");
        row("minutes without a blank before reads on; a link ending in a slash",
            "<h1>Error</h1>5minutes var c=2;", "LocalFile=; FileSize=?; wait 2",
            "http://rs.test/files/77/");
        row(".html taken out in any case, name cleaned", "var c=1;",
            "LocalFile=a b.c.zip; FileSize=?; wait 1", "http://rs.test/x/a:*.HTML b.c?.html.zip");
    }

    void pages()
    {
        ReadingRows::check([](const QString &reader, const QString &page, const QString &link) {
            if (reader == "first") {
                const auto first = RapidShareRecipe::readFirstPage(page);
                return QStringList{"gone", "no form", "form"}.at(int(first.kind)) + u'|' +
                       first.formAddress;
            }
            static const QRegularExpression madeUp("^LocalFile=Rapid [0-9]{1,4};");
            static const QRegularExpression wait(
                "LocalFilePath=/dl; Status=Waiting; Status=Wait (\\d+) Seconds; "
                "WaitTimeInSec=\\1; ready => countdown 1000$");
            return RapidShareRecipe::readDownloadPage(page, link, "/dl")
                .toString()
                .replace(madeUp, "LocalFile=Rapid #;")
                .replace(wait, "wait \\1");
        });
    }

    // The frame's failures at each request, and the site's own pages.
    void failures_data() { FailureMatrix::addRows(steps()); }
    void failures()
    {
        FakeRapidShare fake;
        const QStringList links{fake.addFile("21", "x.bin", "x"), fake.addFile("22", "y.bin", "y")};
        FailureMatrix::run(steps(), {{kSite, &fake, links}});
    }

    // Three links. The first meets a wait of minutes while no link of the
    // site has been ready: the countdown runs a minute per tick (the test
    // ticks it) and the link is then fetched again. The second meets one after
    // a link was ready: it goes straight to the transfer with the address it
    // has, here none, and ends there. The third runs plainly.
    // The recipe also stands in for a second site, whose link runs while the
    // first site waits for the answer to its first post: its page and post
    // come inside that wait, and its readiness is its own. Last, a link whose
    // first step fails.
    void linksThroughTheQueue()
    {
        const int other = Sites::FourShared;
        FakeRapidShare site;
        RecipeHarness h({kSite});
        h.queues->setRecipe(other, std::make_unique<RapidShareRecipe>());
        h.add(kSite, site.addFile("51", "a.bin", "at last"));
        h.add(kSite, site.addFile("52", "b.bin", "never"));
        h.add(kSite, site.addFile("53", "c.bin", "third"));
        h.add(other, site.addFile("80", "d.bin", "other"));
        const auto minutes = FakeSite::html(FakeRapidShare::minutesErrorPage("3 "));
        const QString direct = site.url(FakeRapidShare::filePath("51", "a.bin"));
        site.server().setAnswers(FakeRapidShare::postPath("51", "a.bin"),
                                 {TestServer::Answer(minutes).delayFirst(400),
                                  FakeSite::html(FakeRapidShare::downloadPage(direct, 1))});
        site.server().setAnswer(FakeRapidShare::postPath("52", "b.bin"), minutes);
        QTimer::singleShot(50, [&] { h.queues->startDownloadLinks(other, true); });

        h.start(kSite);
        for (int row : {0, 1}) {
            QTRY_COMPARE(h.at(kSite, row), QStringLiteral("Wait 5 Minutes"));
            h.tick(kSite, 5);
        }
        QTRY_COMPARE(h.statuses(kSite) + h.statuses(other),
                     (QStringList{"Complete", "Error", "Complete", "Complete"}));
        QCOMPARE(h.trail(kSite, 0), "Waiting,Starting...,Wait 5 Minutes,Wait 4 Minutes,Wait 3 "
                                    "Minutes,Wait 2 Minutes,Wait 1 Minutes,Waiting,Wait 1 "
                                    "Seconds,Connecting...,Complete");
        QCOMPARE(h.fileIn("a.bin") + '|' + h.fileIn("c.bin") + '|' + h.fileIn("d.bin"),
                 "at last|third|other");
        // The other site's page and post inside the wait for the first post;
        // the post carries the session cookie of the link's page, which the
        // fake site asks for; the first link's page is asked for again.
        const QStringList lines = site.requestLines();
        QCOMPARE(lines.mid(0, 4), (QStringList{"GET /files/51/a.bin.html", "POST /post/51/a.bin",
                                               "GET /files/80/d.bin.html", "POST /post/80/d.bin"}));
        QCOMPARE(lines.count("GET /files/51/a.bin.html"), 2);
        QCOMPARE(site.server().requests().at(3).body, QByteArray("dl.start=Free"));

        // The first step has no guard of its own: a failure there reaches the
        // caller of the start, and the site's next link is not started.
        h.add(kSite, site.page("/odd", "<form id=\"ff\" action=\"\"method=\"post\">"));
        h.add(kSite, "http://127.0.0.1:9/next");
        QVERIFY_THROWS_EXCEPTION(RuntimeFailure, h.start(kSite));
        QCOMPARE(h.statuses(kSite).mid(3), (QStringList{"Starting...", "Waiting"}));
    }
};

QTEST_GUILESS_MAIN(TestRapidShare)
#include "tst_rapidshare.moc"
