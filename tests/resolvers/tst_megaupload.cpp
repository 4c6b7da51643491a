#include "fakemegaupload.h"
#include "recipetest.h"
#include "resolvers/megaupload.h"

namespace {

constexpr int kSite = Sites::MegaUpload;
// The site helper's answer, and the first link's Status words.
using Ways = Table<QString, QString>;

QList<FailureMatrix::Step> steps()
{
    return {
        FailureMatrix::Step(kSite, "page", FakeMegaUpload::linkPath("BAD1"),
                            {{"gone", FakeMegaUpload::gonePage, "Not Found|0|", false},
                             {"no captcha", "<p>captchacode value=\"1\"</p>", "Not Found|0|"}})};
}

} // namespace

class TestMegaUpload : public QObject
{
    Q_OBJECT
    Sandbox m_sandbox;
private slots:
    void init() { RecipeHarness::setPeriods(5, 20000); }

    // The socket's answer, the captcha page and the download page; a made-up
    // name reads "#". What each way makes of them is checked end to end in
    // ways(); these are the cases no way there meets.
    void readers_data()
    {
        ReadingRows row("socket");
        row("302 to no slash, in any case", "HTTP/1.1 302 found\r\nlocation: nowhere \r\n",
            "no slash: nowhere");
        row("302 without its line's end", "HTTP/1.1 302 Found\r\nLocation: x", "fails");
        row.reader = "captcha";
        row("captcha page", FakeMegaUpload::captchaPage("http://h/x/gencap.php?1.gif"),
            "http://h/x/gencap.php?1.gif|c0de42|mv%3D7");
        row.reader = "download";
        const QString wait = "; LocalFilePath=/dl; Status=Connecting...; Status=Wait %1 Seconds; "
                             "WaitTimeInSec=%1 => countdown 1000";
        row("no count: 46, the name not cleaned",
            FakeMegaUpload::downloadPage("http://h/f/a?.zip", ""),
            "DirectURL=http://h/f/a?.zip; LocalFile=a?.zip" + wait.arg(46));
        row("nameless, a count taken as it stands",
            "count=x;<p id=\"downloadlink\" href=\"nameless\">",
            "DirectURL=nameless; LocalFile=MegaUploadFile #" + wait.arg("x"));
        row("no download link", "<a href=\"http://h/f\">",
            "Status=Error; WaitTimeInSec=0 => next link");
    }

    void readers()
    {
        ReadingRows::check([](const QString &how, const QString &input, const QString &) {
            if (how == "socket") {
                const auto answer = MegaUploadRecipe::readSocketAnswer(input, "/mgr_dl.php?d=AB");
                const char *const kinds[] = {"page way", "file", "no slash", "connection"};
                return kinds[int(answer.kind)] + (": " + answer.target);
            }
            if (how == "captcha") {
                const auto page = MegaUploadRecipe::readCaptchaPage(input);
                return QStringList{page.pictureUrl, page.captchaCode, page.megavar}.join(u'|');
            }
            static const QRegularExpression madeUp("MegaUploadFile \\d{1,4};");
            return MegaUploadRecipe::readDownloadPage(input, "/dl")
                .toString()
                .replace(madeUp, "MegaUploadFile #;");
        });
    }

    // The page way's request and its pages, as every recipe meets them.
    void failures_data() { FailureMatrix::addRows(steps()); }
    void failures()
    {
        FakeMegaUpload fake;
        const QStringList links{fake.addFile("BAD1", "bad.bin", "x"),
                                fake.addFile("OK22", "ok", "y")};
        FailureMatrix::run(steps(), {{kSite, &fake, links}});
    }

    void ways_data()
    {
        const Ways row;
        const QString pageWay = "Starting...,Connecting...,Wait 1 Seconds,Connecting...,Complete",
                      failed = "Starting...,Connection Error";
        row("302 to the file", "file", "Starting...,Connecting...,Complete");
        row("302 to the page", "page", pageWay);
        row("200", "200", pageWay);
        row("anything else", "garbage", failed);
        row("a reset", "reset", failed);
    }
    void ways()
    {
        const auto [helper, history] = Ways::fetch();
        FakeMegaUpload fake;
        RecipeHarness h({kSite});
        h.add(kSite, fake.addFile("ABCDEFGH", "movie.avi", "the movie"));
        h.add(kSite, fake.addFile("NEXT0001", "next.bin", "next"));
        const TestServer::Answer answers[] = {
            TestServer::Answer::redirect(302, fake.url("/files/ABCDEFGH/movie.avi")),
            TestServer::Answer::ok("<html>Please use the site.</html>", "text/html"),
            TestServer::Answer::connectionReset(), TestServer::Answer::raw("garbage")};
        const int answer = QStringList{"file", "200", "reset", "garbage"}.indexOf(helper);
        if (answer >= 0)
            fake.server().setAnswer(FakeMegaUpload::helperPath("ABCDEFGH"), answers[answer]);
        h.prompts.captchaAnswers << QStringLiteral("x7Q2") << std::nullopt;

        h.start(kSite);
        QTRY_COMPARE(h.at(kSite, 1), QString("Complete"));
        // What the row said, the transfer's progress left out.
        QCOMPARE(h.history(kSite, 0).mid(1).filter(QRegularExpression("^[^0-9]")).join(u','),
                 history);
        if (history.endsWith("Complete"))
            QCOMPARE(h.fileIn("movie.avi"), QByteArray("the movie"));

        // The socket's request goes out exactly so.
        QCOMPARE(fake.server().requests().at(0).raw,
                 "GET /mgr_dl.php?d=ABCDEFGH HTTP/1.1\r\nAccept: text/plain,text/html,*/*;q=0.3\r\n"
                 "Accept-Encoding: *;q=0.1\r\nTE: trailers\r\nHost: " +
                     fake.hostPort().toLatin1() +
                     "\r\nConnection:  TE\r\nUser-Agent: Mozilla/4.0 (compatible; MSIE 6.0; "
                     "Windows NT 5.1)\r\n\r\n");
        // The second link starts on the socket too and goes the page way; its
        // dialog is closed without the button, so the answer before is posted.
        // Each dialog shows the picture, saved byte for byte.
        QVERIFY(fake.requestLines().contains("GET /mgr_dl.php?d=NEXT0001"));
        const QString form = " application/x-www-form-urlencoded|46|close|captchacode=c0de42&"
                             "megavar=mv%3D7&captcha=x7Q2";
        QStringList posts{"POST /?d=NEXT0001" + form};
        if (history.contains("Wait"))
            posts.prepend("POST /?d=ABCDEFGH" + form);
        QCOMPARE(fake.requestLines(true).filter("POST "), posts);
        QCOMPARE(h.prompts.captchas, QStringList(posts.size(), h.folder() + "/CAP.gif"));
        QCOMPARE(h.fileIn("CAP.gif"), FakeMegaUpload::picture());
    }

    // A link without "d=" fails without any network use. The next one's
    // request, its id one character short before a further field, waits on
    // the socket, which the site's stop closes.
    void stopClosesTheSocket()
    {
        FakeMegaUpload fake;
        RecipeHarness h({kSite});
        h.add(kSite, "http://127.0.0.1:9/file/1");
        h.add(kSite, fake.url("/?d=HELDX&x=1"));
        fake.server().setAnswer("/mgr_dl.php?d=HELD", TestServer::Answer::silence());
        h.start(kSite);
        QVERIFY(fake.server().waitForRequests(1));
        h.queues->stopDownloads(kSite);
        QTRY_COMPARE(fake.server().closedByClient(), 1);
        QCOMPARE(h.statuses(kSite), (QStringList{"Connection Error", "Stopped"}));
        QCOMPARE(fake.requestLines(), QStringList{"GET /mgr_dl.php?d=HELD"});
    }
};

QTEST_GUILESS_MAIN(TestMegaUpload)
#include "tst_megaupload.moc"
