#include "failurematrix.h"
#include "fakerapidshare.h"
#include "recipeharness.h"
#include "resolvers/rapidshare.h"
#include "sandbox.h"
#include "system/logicaltimer.h"

#include <QRegularExpression>
#include <QTimer>
#include <QtTest>

namespace {

constexpr int kSite = Sites::RapidShare;

QString text(const QByteArray &page)
{
    return QString::fromUtf8(page);
}

// The two requests of the recipe, for the first of the links below, with
// the pages of the site's own that end a run there.
QList<FailureMatrix::Step> steps()
{
    const QString notFound = "Not Found|0|";
    return {
        {"page",
         FakeRapidShare::firstPath("2001", "bad.bin"),
         StatusText::ConnectionError,
         true,
         true,
         {{"file gone", text(FakeRapidShare::goneFirstPage()), notFound},
          {"no form", text(FakeRapidShare::noFormPage()), "Connection Error|0|"}}},
        {"post",
         FakeRapidShare::postPath("2001", "bad.bin"),
         StatusText::ConnectionError,
         true,
         true,
         {{"file gone", text(FakeRapidShare::goneErrorPage()),
           notFound + "The file could not be found, It may be deleted by the owner or expired."},
          {"not understood", "minutes <h1>Error</h1>", "Error|0|"},
          {"wait minutes", text(FakeRapidShare::minutesErrorPage("3 ")), "Wait 5 Minutes|300|",
           false}}}};
}

} // namespace

class TestRapidShare : public QObject
{
    Q_OBJECT
private slots:

    void initTestCase() { m_sandbox = std::make_unique<Sandbox>(); }
    // Countdowns of a few milliseconds; the time-out and the minute timers
    // (the site's and the transfer's silence timer) far away.
    void init() { RecipeHarness::setPeriods(5, 20000); }

    // ---- Reading the pages ----

    void firstPage_data()
    {
        using Kind = RapidShareRecipe::FirstPage::Kind;
        QTest::addColumn<QString>("page");
        QTest::addColumn<int>("kind"); // -1: a run-time failure
        QTest::addColumn<QString>("address");

        const QString a = QStringLiteral("http://127.0.0.1:9/post/1/a");
        QTest::newRow("site's page")
            << text(FakeRapidShare::filePage(a, "a")) << int(Kind::Form) << a;
        QTest::newRow("any case") << "<FORM ID=\"FF\" ACTION=\"http://h/p\" METHOD=\"POST\">"
                                  << int(Kind::Form) << "http://h/p";
        QTest::newRow("gone, two blanks")
            << text(FakeRapidShare::goneFirstPage()) + "<form id=\"ff\" action=\"x\" method=\"p\">"
            << int(Kind::FileGone) << "";
        QTest::newRow("one blank is no gone file")
            << "<p>The file could not be found. Please check the download link.</p>"
               "<form id=\"ff\" action=\"http://h/p\" method=\"post\">"
            << int(Kind::Form) << "http://h/p";
        QTest::newRow("no form") << text(FakeRapidShare::noFormPage()) << int(Kind::NoForm) << "";
        QTest::newRow("other form")
            << "<form id=\"gg\" action=\"x\" method=\"post\">" << int(Kind::NoForm) << "";
        QTest::newRow("no action") << "<form id=\"ff\" method=\"post\">" << int(Kind::NoForm) << "";
        QTest::newRow("no method")
            << "<form id=\"ff\" action=\"http://h/p\">" << int(Kind::NoForm) << "";
        QTest::newRow("action before the form")
            << "action=\"x\" <form id=\"ff\" method=\"post\">" << int(Kind::NoForm) << "";
        QTest::newRow("no blank before method loses a character")
            << "<form id=\"ff\" action=\"http://h/p\"method=\"post\">" << int(Kind::Form)
            << "http://h/";
        QTest::newRow("two blanks keep the quote")
            << "<form id=\"ff\" action=\"http://h/p\"  method=\"post\">" << int(Kind::Form)
            << "http://h/p\"";
        QTest::newRow("empty action glued to method fails")
            << "<form id=\"ff\" action=\"\"method=\"post\">" << -1 << "";
    }

    void firstPage()
    {
        QFETCH(QString, page);
        QFETCH(int, kind);
        QFETCH(QString, address);
        if (kind < 0) {
            QVERIFY_THROWS_EXCEPTION(RuntimeFailure, RapidShareRecipe::readFirstPage(page));
            return;
        }
        const auto first = RapidShareRecipe::readFirstPage(page);
        QCOMPARE(int(first.kind), kind);
        QCOMPARE(first.formAddress, address);
    }

    void downloadPage_data()
    {
        QTest::addColumn<QString>("page");
        QTest::addColumn<QString>("link");
        QTest::addColumn<QString>("reading");
        const QString link = QStringLiteral("http://rs.test/files/77/report.pdf.html");
        auto row = [&](const char *name, const QString &page, const char *reading,
                       const QString &rowLink = QString()) {
            QTest::newRow(name) << page << (rowLink.isNull() ? link : rowLink) << QString(reading);
        };
        // The folder is "/dl" throughout; the wait and "ready" end every
        // resolved reading.
        const QString dl = QStringLiteral("http://rs.test/file/77/report.pdf");
        row("site's page", text(FakeRapidShare::downloadPage(dl, 3, "123", "report.pdf")),
            "DirectURL=http://rs.test/file/77/report.pdf; LocalFile=report.pdf; FileSize=?; "
            "FileSize=123 KB; LocalFilePath=/dl; Status=Waiting; Status=Wait 3 Seconds; "
            "WaitTimeInSec=3; ready => countdown 1000");
        row("no wait, any case in the markers",
            "<FORM NAME=\"DLF\" ACTION=\"http://h/F\">>|1.5 kb<",
            "DirectURL=http://h/F; LocalFile=report.pdf; FileSize=?; FileSize=1.5 KB; "
            "LocalFilePath=/dl; Status=Waiting; Status=Wait 0 Seconds; WaitTimeInSec=0; ready "
            "=> countdown 1000");
        row("no form, no closing quote, size no number",
            "var c=12;<form name=\"dlf\" action=\"http://h/f >|abc KB<",
            "LocalFile=report.pdf; FileSize=?; LocalFilePath=/dl; Status=Waiting; Status=Wait 12 "
            "Seconds; WaitTimeInSec=12; ready => countdown 1000");
        row("size too large for 32 bits fails with what was read", ">|3000000 KB<",
            "LocalFile=report.pdf; FileSize=?; Status=Error; WaitTimeInSec=0 => next link");
        row("gone", text(FakeRapidShare::goneErrorPage()),
            "Status=Not Found; WaitTimeInSec=0; ErrorDesc=The file could not be found, It may be "
            "deleted by the owner or expired. => next link");
        row("minutes after a blank: always 5", text(FakeRapidShare::minutesErrorPage("3 ")),
            "Status=Wait 5 Minutes; WaitTimeInSec=300 => countdown 60000");
        row("number glued to minutes", text(FakeRapidShare::minutesErrorPage("12")),
            "Status=Wait  12 Minutes; WaitTimeInSec=720 => countdown 60000");
        row("word glued to minutes", "<h1>Error</h1> wait xminutes",
            "Status=Wait 5 Minutes; WaitTimeInSec=300 => countdown 60000");
        row("minutes without a blank before reads on", "<h1>Error</h1>5minutes var c=2;",
            "LocalFile=report.pdf; FileSize=?; LocalFilePath=/dl; Status=Waiting; Status=Wait 2 "
            "Seconds; WaitTimeInSec=2; ready => countdown 1000");
        row("minutes at the very start fails", "minutes <h1>Error</h1>",
            "Status=Error; WaitTimeInSec=0 => next link");
        row("link ending in a slash", "var c=1;",
            "LocalFile=; FileSize=?; LocalFilePath=/dl; Status=Waiting; Status=Wait 1 Seconds; "
            "WaitTimeInSec=1; ready => countdown 1000",
            "http://rs.test/files/77/");
        row(".html taken out in any case, name cleaned", "var c=1;",
            "LocalFile=a b.c.zip; FileSize=?; LocalFilePath=/dl; Status=Waiting; Status=Wait 1 "
            "Seconds; WaitTimeInSec=1; ready => countdown 1000",
            "http://rs.test/x/a:*.HTML b.c?.html.zip");
    }

    void downloadPage()
    {
        QFETCH(QString, page);
        QFETCH(QString, link);
        QFETCH(QString, reading);
        QCOMPARE(RapidShareRecipe::readDownloadPage(page, link, "/dl").toString(), reading);
    }

    void randomName()
    {
        QSet<QString> names;
        static const QRegularExpression form(QStringLiteral("^LocalFile=Rapid ([0-9]{1,4});"));
        for (int i = 0; i < 20; ++i) {
            const QString reading =
                RapidShareRecipe::readDownloadPage("var c=1;", "nolinkslash", "/dl").toString();
            const auto match = form.match(reading);
            QVERIFY2(match.hasMatch(), qPrintable(reading));
            names.insert(match.captured(1));
        }
        QVERIFY(names.size() > 1);
    }

    // ---- Links through the queue, the countdown and the transfer ----

    void linkToComplete()
    {
        FakeRapidShare site;
        const QByteArray first(3000, 'a');
        RecipeHarness h({kSite});
        h.createSubDir = 1;
        h.add(kSite, site.addFile("1001", "report.pdf", first, 2));
        h.add(kSite, site.addFile("1002", "notes.txt", "second file", 1));

        h.queues->startDownloadLinks(kSite, true);
        QTRY_COMPARE(h.statuses(kSite), (QStringList{"Complete", "Complete"}));
        const QString dir = h.folder() + QStringLiteral("/RapidShare Files");
        QCOMPARE(h.fields(kSite, 0,
                          {Field::LocalFilePath, Field::LocalFile, Field::DirectURL,
                           Field::FileSize, Field::IsDownloading}),
                 dir + "|report.pdf|" + site.url(FakeRapidShare::filePath("1001", "report.pdf")) +
                     "|2.93 KB|0");
        QCOMPARE(h.fileIn("RapidShare Files/report.pdf"), first);
        QCOMPARE(h.fileIn("RapidShare Files/notes.txt"), QByteArray("second file"));
        QCOMPARE(h.history(kSite, 0),
                 (QStringList{"Waiting", "Starting...", "Waiting", "Wait 2 Seconds",
                              "Wait 1 Seconds", "Connecting...", "Complete"}));

        // Page, post, file for each link; the post carries the session cookie
        // of the link's page, which the fake site asks for.
        QCOMPARE(site.requestLines(),
                 (QStringList{"GET /files/1001/report.pdf.html", "POST /post/1001/report.pdf",
                              "GET /file/1001/report.pdf", "GET /files/1002/notes.txt.html",
                              "POST /post/1002/notes.txt", "GET /file/1002/notes.txt"}));
        const TestServer::Request post = site.server().requests().at(1);
        QCOMPARE(post.body + '|' + post.header("Content-length"), QByteArray("dl.start=Free|13"));
    }

    // The frame's failures at each request, and the site's own pages.
    void failures_data() { FailureMatrix::addRows(steps()); }
    void failures()
    {
        FakeRapidShare fake;
        FailureMatrix::run(
            kSite, steps(), fake,
            {fake.addFile("2001", "bad.bin", "never"), fake.addFile("2002", "good.bin", "good")});
    }

    // What the pages themselves can say.
    void longWaitFetchesAgainUntilALinkWasReady()
    {
        // The site asks for minutes; the countdown runs a minute per tick (the
        // test ticks it) and then the link is fetched again, as no link was
        // ready before.
        FakeRapidShare site;
        RecipeHarness h({kSite});
        h.add(kSite, site.addFile("5001", "later.bin", "at last"));
        h.add(kSite, site.addFile("5002", "third.bin", "third"));
        h.add(kSite, site.addFile("5003", "fourth.bin", "fourth"));
        const QByteArray post = FakeRapidShare::postPath("5001", "later.bin");
        const QString direct = site.url(FakeRapidShare::filePath("5001", "later.bin"));
        site.server().setAnswers(
            post,
            {FakeSite::html(text(FakeRapidShare::minutesErrorPage("3 "))),
             FakeSite::html(text(FakeRapidShare::downloadPage(direct, 1, "1", "later.bin")))});
        // Once the link has been ready, a row whose minutes run out goes
        // straight to the transfer with the address it has; here none, so it
        // ends there.
        site.page(FakeRapidShare::postPath("5002", "third.bin"),
                  text(FakeRapidShare::minutesErrorPage("3 ")));

        LogicalTimer *timer = h.queues->siteTimer(kSite);
        auto minutesPass = [&](int row) {
            QTRY_COMPARE(h.at(kSite, row), QStringLiteral("Wait 5 Minutes"));
            for (int tick = 0; tick < 5; ++tick)
                emit timer->timeout();
        };
        h.queues->startDownloadLinks(kSite, true);
        minutesPass(0);
        minutesPass(1);
        QTRY_COMPARE(h.statuses(kSite), (QStringList{"Complete", "Error", "Complete"}));
        QCOMPARE(h.history(kSite, 0).mid(1, 10),
                 (QStringList{"Starting...", "Wait 5 Minutes", "Wait 4 Minutes", "Wait 3 Minutes",
                              "Wait 2 Minutes", "Wait 1 Minutes", "Waiting", "Wait 1 Seconds",
                              "Connecting...", "Complete"}));
        QCOMPARE(h.fileIn("later.bin"), QByteArray("at last"));
        QCOMPARE(site.requestLines().filter("GET /files/500").size(), 4);
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

    void twoSitesPollAtOnce()
    {
        // The RapidShare recipe also stands in for a second site. The second
        // site's whole run happens inside the first one's wait for its page.
        const int other = Sites::FourShared;
        FakeRapidShare site;
        RecipeHarness h({kSite});
        h.queues->setRecipe(other, std::make_unique<RapidShareRecipe>());
        h.add(kSite, site.addFile("8001", "one.bin", "one"));
        h.add(other, site.addFile("8002", "two.bin", "two"));
        site.server().setAnswer(
            FakeRapidShare::firstPath("8001", "one.bin"),
            FakeSite::html(text(FakeRapidShare::filePage(
                               site.url(FakeRapidShare::postPath("8001", "one.bin")), "one.bin")),
                           "enc=8001")
                .delayFirst(400));
        QTimer::singleShot(50, [&] { h.queues->startDownloadLinks(other, true); });

        h.queues->startDownloadLinks(kSite, true);
        QTRY_COMPARE(h.at(kSite, 0), QStringLiteral("Complete"));
        QTRY_COMPARE(h.at(other, 0), QStringLiteral("Complete"));
        QCOMPARE(h.fileIn("one.bin"), QByteArray("one"));
        QCOMPARE(h.fileIn("two.bin"), QByteArray("two"));

        // The second site's page and post came while the first waited.
        QStringList order;
        for (const auto &r : site.server().requests())
            order << QString::fromLatin1(r.method + ' ' + r.pathOnly());
        QCOMPARE(order.mid(0, 3),
                 (QStringList{"GET /files/8001/one.bin.html", "GET /files/8002/two.bin.html",
                              "POST /post/8002/two.bin"}));
        QVERIFY(order.indexOf("POST /post/8001/one.bin") > 2);
    }

private:
    std::unique_ptr<Sandbox> m_sandbox;
};

QTEST_GUILESS_MAIN(TestRapidShare)
#include "tst_rapidshare.moc"
