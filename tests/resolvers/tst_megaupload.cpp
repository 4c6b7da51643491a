#include "fakemegaupload.h"
#include "recipetest.h"
#include "resolvers/megaupload.h"

#include <QRegularExpression>

namespace {

constexpr int kSite = Sites::MegaUpload;

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
    void init()
    {
        RecipeHarness::setPeriods(5, 20000);
        SiteHosts::instance().reset();
    }

    // The link's path, the socket's answer, the captcha page and the download
    // page; a made-up name reads "#".
    void readers_data()
    {
        ReadingRows row("path");
        row("path", "http://mu.test/?d=ABCDEFGH", "/mgr_dl.php?d=ABCDEFGH");
        row("path loses a character before a field", "http://mu.test/?d=ABCDEFGH&x=1",
            "/mgr_dl.php?d=ABCDEFG");
        row("no d=", "http://mu.test/file/AB", "<none>");
        row.reader = "socket";
        row("302 to the file", "HTTP/1.1 302 Found\r\nLocation: http://h/f/a.zip \r\n\r\n",
            "file: http://h/f/a.zip");
        row("302 to the link's page", "HTTP/1.1 302 found\r\nlocation: http://h/?d=AB\r\n",
            "page way: http://h/?d=AB");
        row("302 to no slash", "HTTP/1.1 302 Found\r\nLocation: nowhere\r\n", "no slash: nowhere");
        row("302 without its line's end", "HTTP/1.1 302 Found\r\nLocation: x", "fails");
        row("200", "HTTP/1.1 200 OK\r\n\r\nhello", "page way");
        row("anything else", "HTTP/1.1 500 Oops\r\n\r\n", "connection");
        row.reader = "captcha";
        row("captcha page", FakeMegaUpload::captchaPage("http://h/x/gencap.php?1.gif"),
            "there|http://h/x/gencap.php?1.gif|c0de42|mv%3D7");
        row("gone, no picture, no values", FakeMegaUpload::gonePage, "gone|||");
        row.reader = "download";
        const QString wait = "; LocalFilePath=/dl; Status=Connecting...; Status=Wait %1 Seconds; "
                             "WaitTimeInSec=%1 => countdown 1000";
        row("download page", FakeMegaUpload::downloadPage("http://h/f/a b.zip", "3"),
            "DirectURL=http://h/f/a b.zip; LocalFile=a b.zip" + wait.arg(3));
        row("no count: 46, the name not cleaned",
            FakeMegaUpload::downloadPage("http://h/f/a?.zip", ""),
            "DirectURL=http://h/f/a?.zip; LocalFile=a?.zip" + wait.arg(46));
        row("a count taken as it stands", FakeMegaUpload::downloadPage("h/f/a", "x"),
            "DirectURL=h/f/a; LocalFile=a" + wait.arg("x"));
        row("no download link", "<a href=\"http://h/f\">",
            "Status=Error; WaitTimeInSec=0 => next link");
        row("nameless", "<p id=\"downloadlink\" href=\"nameless\">",
            "DirectURL=nameless; LocalFile=MegaUploadFile #" + wait.arg(46));
    }

    void readers()
    {
        ReadingRows::check([](const QString &how, const QString &input, const QString &) {
            if (how == "path")
                return MegaUploadRecipe::requestPath(input).value_or("<none>");
            if (how == "socket") {
                const auto answer = MegaUploadRecipe::readSocketAnswer(input, "/mgr_dl.php?d=AB");
                const char *const kinds[] = {"page way", "file", "no slash", "connection"};
                return kinds[int(answer.kind)] +
                       (answer.target.isEmpty() ? "" : ": " + answer.target);
            }
            if (how == "captcha") {
                const auto page = MegaUploadRecipe::readCaptchaPage(input);
                return QStringList{page.gone ? "gone" : "there", page.pictureUrl, page.captchaCode,
                                   page.megavar}
                    .join(u'|');
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

    // What the site's helper answers, and the first link's Status words.
    void ways_data()
    {
        QTest::addColumn<QString>("helper");
        QTest::addColumn<QString>("history");
        const QString pageWay = "Starting...,Connecting...,Wait 1 Seconds,Connecting...,Complete",
                      fileWay = "Starting...,Connecting...,Complete",
                      failed = "Starting...,Connection Error";
        QTest::newRow("302 to the file") << "file" << fileWay;
        QTest::newRow("302 to the page") << "page" << pageWay;
        QTest::newRow("200") << "200" << pageWay;
        QTest::newRow("anything else") << "garbage" << failed;
        QTest::newRow("a reset") << "reset" << failed;
    }
    void ways()
    {
        QFETCH(QString, helper);
        QFETCH(QString, history);
        FakeMegaUpload fake;
        RecipeHarness h({kSite});
        h.add(kSite, fake.addFile("ABCDEFGH", "movie.avi", "the movie"));
        h.add(kSite, fake.addFile("NEXT0001", "next.bin", "next"));
        const auto ok200 = TestServer::Answer::ok("<html>Please use the site.</html>", "text/html");
        fake.server().setAnswer(FakeMegaUpload::helperPath("NEXT0001"), ok200);
        h.prompts.captchaAnswers << QStringLiteral("x7Q2") << std::nullopt;
        const TestServer::Answer answers[] = {
            TestServer::Answer::redirect(302, fake.url(QByteArray("/files/ABCDEFGH/movie.avi"))),
            ok200, TestServer::Answer::connectionReset(), TestServer::Answer::raw("garbage")};
        const int answer = QStringList{"file", "200", "reset", "garbage"}.indexOf(helper);
        if (answer >= 0)
            fake.server().setAnswer(FakeMegaUpload::helperPath("ABCDEFGH"), answers[answer]);

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
        // The second link goes the page way; its dialog is closed without the
        // button, so the answer before is posted.
        QVERIFY(fake.requestLines().contains("GET /mgr_dl.php?d=NEXT0001"));
        QByteArrayList posts;
        for (const auto &r : fake.server().requests())
            if (r.method == "POST")
                posts << r.body + ' ' + r.header("Content-length");
        const QByteArray body = "captchacode=c0de42&megavar=mv%3D7&captcha=x7Q2 46";
        QCOMPARE(posts, QByteArrayList(history.contains("Wait") ? 2 : 1, body));
        QCOMPARE(h.prompts.captchas.size(), posts.size());
        QCOMPARE(QFile(h.prompts.captchas.value(0)).size(), FakeMegaUpload::picture().size());
        QCOMPARE(h.prompts.captchas.value(0), h.folder() + "/CAP.gif");
    }

    void stopClosesTheSocket()
    {
        FakeMegaUpload fake;
        RecipeHarness h({kSite});
        h.add(kSite, fake.addFile("HELD", "held.bin", "x"));
        fake.server().setAnswer(FakeMegaUpload::helperPath("HELD"), TestServer::Answer::silence());
        h.start(kSite);
        QVERIFY(fake.server().waitForRequests(1));
        h.queues->stopDownloads(kSite);
        QTRY_COMPARE(fake.server().closedByClient(), 1);
        QCOMPARE(h.trail(kSite, 0), "Waiting,Starting...,Stopped");
        // A link without "d=" uses no network at all.
        h.list.setField(h.row(kSite, 0), Field::Status, "Complete");
        h.add(kSite, "http://127.0.0.1:9/file/1");
        h.start(kSite);
        QCOMPARE(h.at(kSite, 1), QString("Connection Error"));
        QCOMPARE(fake.server().requests().size(), 1);
    }
};

QTEST_GUILESS_MAIN(TestMegaUpload)
#include "tst_megaupload.moc"
