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
                 {{"file gone", FakeRapidShare::goneFirstPage(), notFound},
                  {"no form", FakeRapidShare::noFormPage(), "Connection Error|0|"}}),
            Step(kSite, "post", FakeRapidShare::postPath("21", "x.bin"),
                 {{"file gone", FakeRapidShare::goneErrorPage(),
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
        row("any case", "<FORM ID=\"FF\" ACTION=\"http://h/p\" METHOD=\"POST\">",
            "form|http://h/p");
        row("gone, two blanks", FakeRapidShare::goneFirstPage() + ff, "gone|");
        row("one blank is no gone file",
            "The file could not be found. Please check the download link." + ff, "form|http://h/p");
        row("other form", "<form id=\"gg\" action=\"x\" method=\"post\">", "no form|");
        row("no action", "<form id=\"ff\" method=\"post\">", "no form|");
        row("no method", "<form id=\"ff\" action=\"http://h/p\">", "no form|");
        row("action before the form", "action=\"x\" <form id=\"ff\" method=\"post\">", "no form|");
        row("no blank before method loses a character",
            "<form id=\"ff\" action=\"http://h/p\"method=\"post\">", "form|http://h/");
        row("empty action glued to method fails", "<form id=\"ff\" action=\"\"method=\"post\">",
            "fails");

        row.reader = "post";
        row.extra = "http://rs.test/files/77/report.pdf.html";
        row("no wait, any case in the markers",
            "<FORM NAME=\"DLF\" ACTION=\"http://h/F\">>|1.5 kb<",
            "DirectURL=http://h/F; LocalFile=report.pdf; FileSize=?; FileSize=1.5 KB; wait 0");
        row("no form, no closing quote, size no number",
            "var c=12;<form name=\"dlf\" action=\"http://h/f >|abc KB<",
            "LocalFile=report.pdf; FileSize=?; wait 12");
        row("size too large for 32 bits fails with what was read", ">|3000000 KB<",
            "LocalFile=report.pdf; FileSize=?; Status=Error; WaitTimeInSec=0 => next link");
        row("number glued to minutes", FakeRapidShare::minutesErrorPage("12"),
            "Status=Wait  12 Minutes; WaitTimeInSec=720 => countdown 60000");
        row("minutes without a blank before reads on", "<h1>Error</h1>5minutes var c=2;",
            "LocalFile=report.pdf; FileSize=?; wait 2");
        row("link ending in a slash", "var c=1;", "LocalFile=; FileSize=?; wait 1",
            "http://rs.test/files/77/");
        row(".html taken out in any case, name cleaned", "var c=1;",
            "LocalFile=a b.c.zip; FileSize=?; wait 1", "http://rs.test/x/a:*.HTML b.c?.html.zip");
        row("no slash: a made-up name", "var c=1;", "LocalFile=Rapid #; FileSize=?; wait 1",
            "nolinkslash");
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
    // first site waits for its first page: its page and post come inside that
    // wait, and its readiness is its own.
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
        const QString direct = site.url(FakeRapidShare::filePath("51", "a.bin"));
        const QByteArray post = FakeRapidShare::postPath("51", "a.bin");
        const auto page = FakeSite::html(FakeRapidShare::filePage(site.url(post), "a.bin"));
        site.server().setAnswers(FakeRapidShare::firstPath("51", "a.bin"),
                                 {TestServer::Answer(page).delayFirst(400), page});
        const auto minutes = FakeSite::html(FakeRapidShare::minutesErrorPage("3 "));
        site.server().setAnswers(
            post, {minutes, FakeSite::html(FakeRapidShare::downloadPage(direct, 1, "1", "a.bin"))});
        site.server().setAnswer(FakeRapidShare::postPath("52", "b.bin"), minutes);
        QTimer::singleShot(50, [&] { h.queues->startDownloadLinks(other, true); });

        h.start(kSite);
        for (int row : {0, 1}) {
            QTRY_COMPARE(h.at(kSite, row), QStringLiteral("Wait 5 Minutes"));
            h.tick(kSite, 5);
        }
        QTRY_COMPARE(h.overview(), "1:Complete,Error,Complete 4:Complete");
        QCOMPARE(h.trail(kSite, 0), "Waiting,Starting...,Wait 5 Minutes,Wait 4 Minutes,Wait 3 "
                                    "Minutes,Wait 2 Minutes,Wait 1 Minutes,Waiting,Wait 1 "
                                    "Seconds,Connecting...,Complete");
        QCOMPARE(h.fields(kSite, 0,
                          {Field::LocalFilePath, Field::LocalFile, Field::DirectURL,
                           Field::FileSize, Field::IsDownloading}),
                 h.folder() + "|a.bin|" + direct + "|7 Bytes|0");
        QCOMPARE(h.fileIn("a.bin") + '|' + h.fileIn("c.bin") + '|' + h.fileIn("d.bin"),
                 "at last|third|other");
        // Page, post, file for each link; the post carries the session cookie
        // of the link's page, which the fake site asks for.
        const QStringList lines = site.requestLines();
        QCOMPARE(lines.mid(0, 3), (QStringList{"GET /files/51/a.bin.html",
                                               "GET /files/80/d.bin.html", "POST /post/80/d.bin"}));
        QCOMPARE(lines.filter("/5"), (QStringList{"GET /files/51/a.bin.html", "POST /post/51/a.bin",
                                                  "GET /files/51/a.bin.html", "POST /post/51/a.bin",
                                                  "GET /file/51/a.bin", "GET /files/52/b.bin.html",
                                                  "POST /post/52/b.bin", "GET /files/53/c.bin.html",
                                                  "POST /post/53/c.bin", "GET /file/53/c.bin"}));
        QCOMPARE(site.server().requests().at(2).body, QByteArray("dl.start=Free"));
    }

    void failureInFirstStepReachesCaller()
    {
        FakeRapidShare site;
        RecipeHarness h({kSite});
        h.add(kSite, site.addFile("7001", "odd.bin", "odd"));
        h.add(kSite, site.addFile("7002", "next.bin", "next"));
        site.page(FakeRapidShare::firstPath("7001", "odd.bin"),
                  "<form id=\"ff\" action=\"\"method=\"post\">");
        QVERIFY_THROWS_EXCEPTION(RuntimeFailure, h.queues->startDownloadLinks(kSite, true));
        QCOMPARE(h.statuses(kSite), (QStringList{"Starting...", "Waiting"}));
    }
};

QTEST_GUILESS_MAIN(TestRapidShare)
#include "tst_rapidshare.moc"
