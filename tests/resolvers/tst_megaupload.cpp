#include "failurematrix.h"
#include "fakemegaupload.h"
#include "recipeharness.h"
#include "resolvers/megaupload.h"
#include "sandbox.h"

#include <QRegularExpression>
#include <QtTest>

namespace {

constexpr int kSite = Sites::MegaUpload;
using Kind = MegaUploadRecipe::SocketAnswer::Kind;

// One line for each reader's result, as the table below writes them.
QString read(const QString &how, const QString &input)
{
    if (how == "path")
        return MegaUploadRecipe::requestPath(input).value_or("<none>");
    if (how == "socket") {
        const auto answer = MegaUploadRecipe::readSocketAnswer(input, "/mgr_dl.php?d=AB");
        const char *const kinds[] = {"page way", "file", "no slash", "connection"};
        return kinds[int(answer.kind)] + (answer.target.isEmpty() ? "" : ": " + answer.target);
    }
    if (how == "captcha") {
        const auto page = MegaUploadRecipe::readCaptchaPage(input);
        return QStringList{page.gone ? "gone" : "there", page.pictureUrl, page.captchaCode,
                           page.megavar}
            .join(u'|');
    }
    return MegaUploadRecipe::readDownloadPage(input, "/dl").toString();
}

} // namespace

class TestMegaUpload : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { m_sandbox = std::make_unique<Sandbox>(); }
    void init()
    {
        RecipeHarness::setPeriods(5, 20000);
        SiteHosts::instance().reset();
    }

    void readers_data()
    {
        QTest::addColumn<QString>("how");
        QTest::addColumn<QString>("input");
        QTest::addColumn<QString>("result"); // "fails": a run-time failure
        auto row = [](const char *name, const char *how, const QString &input, const char *result) {
            QTest::newRow(name) << QString(how) << input << QString(result);
        };
        row("path", "path", "http://mu.test/?d=ABCDEFGH", "/mgr_dl.php?d=ABCDEFGH");
        row("path loses a character before a field", "path", "http://mu.test/?d=ABCDEFGH&x=1",
            "/mgr_dl.php?d=ABCDEFG");
        row("no d=", "path", "http://mu.test/file/AB", "<none>");
        row("302 to the file", "socket",
            "HTTP/1.1 302 Found\r\nLocation: http://h/f/a.zip \r\n\r\n", "file: http://h/f/a.zip");
        row("302 to the link's page", "socket",
            "HTTP/1.1 302 found\r\nlocation: http://h/?d=AB\r\n", "page way: http://h/?d=AB");
        row("302 to no slash", "socket", "HTTP/1.1 302 Found\r\nLocation: nowhere\r\n",
            "no slash: nowhere");
        row("302 without its line's end", "socket", "HTTP/1.1 302 Found\r\nLocation: x", "fails");
        row("200", "socket", "HTTP/1.1 200 OK\r\n\r\nhello", "page way");
        row("anything else", "socket", "HTTP/1.1 500 Oops\r\n\r\n", "connection");
        row("captcha page", "captcha", FakeMegaUpload::captchaPage("http://h/x/gencap.php?1.gif"),
            "there|http://h/x/gencap.php?1.gif|c0de42|mv%3D7");
        row("gone, no picture, no values", "captcha", FakeMegaUpload::gonePage, "gone|||");
        row("download page", "download", FakeMegaUpload::downloadPage("http://h/f/a b.zip", "3"),
            "DirectURL=http://h/f/a b.zip; LocalFile=a b.zip; LocalFilePath=/dl; "
            "Status=Connecting...; Status=Wait 3 Seconds; WaitTimeInSec=3 => countdown 1000");
        row("no count: 46, the name not cleaned", "download",
            FakeMegaUpload::downloadPage("http://h/f/a?.zip", ""),
            "DirectURL=http://h/f/a?.zip; LocalFile=a?.zip; LocalFilePath=/dl; "
            "Status=Connecting...; Status=Wait 46 Seconds; WaitTimeInSec=46 => countdown 1000");
        row("a count taken as it stands", "download", FakeMegaUpload::downloadPage("h/f/a", "x"),
            "DirectURL=h/f/a; LocalFile=a; LocalFilePath=/dl; Status=Connecting...; Status=Wait x "
            "Seconds; WaitTimeInSec=x => countdown 1000");
        row("no download link", "download", "<a href=\"http://h/f\">",
            "Status=Error; WaitTimeInSec=0 => next link");
    }

    void readers()
    {
        QFETCH(QString, how);
        QFETCH(QString, input);
        QFETCH(QString, result);
        if (result == "fails")
            QVERIFY_THROWS_EXCEPTION(RuntimeFailure, read(how, input));
        else
            QCOMPARE(read(how, input), result);
        QVERIFY(QRegularExpression("LocalFile=MegaUploadFile \\d{1,4};")
                    .match(read("download", "<p id=\"downloadlink\" href=\"nameless\">"))
                    .hasMatch());
    }

    // The page way's request and its pages, as every recipe meets them.
    void failures_data() { FailureMatrix::addRows(steps()); }
    void failures()
    {
        FakeMegaUpload fake;
        FailureMatrix::run(kSite, steps(), fake,
                           {fake.addFile("BAD1", "bad.bin", "x"), fake.addFile("OK22", "ok", "y")});
    }

    void ways_data()
    {
        // What the site's helper answers, and the first link's history.
        QTest::addColumn<QString>("helper");
        QTest::addColumn<QStringList>("history");
        const QStringList pageWay{"Starting...", "Connecting...", "Wait 1 Seconds", "Connecting...",
                                  "Complete"};
        QTest::newRow("302 to the file")
            << "file" << QStringList{"Starting...", "Connecting...", "Complete"};
        QTest::newRow("302 to the page") << "page" << pageWay;
        QTest::newRow("200") << "200" << pageWay;
        QTest::newRow("anything else")
            << "garbage" << QStringList{"Starting...", "Connection Error"};
        QTest::newRow("a reset") << "reset" << QStringList{"Starting...", "Connection Error"};
    }

    void ways()
    {
        QFETCH(QString, helper);
        QFETCH(QStringList, history);
        FakeMegaUpload fake;
        RecipeHarness h({kSite});
        h.add(kSite, fake.addFile("ABCDEFGH", "movie.avi", "the movie"));
        h.add(kSite, fake.addFile("NEXT0001", "next.bin", "next"));
        const auto ok200 = TestServer::Answer::ok("<html>Please use the site.</html>", "text/html");
        fake.server().setAnswer(FakeMegaUpload::helperPath("NEXT0001"), ok200);
        h.prompts.captchaAnswers << QStringLiteral("x7Q2") << std::nullopt;
        if (helper == "file")
            fake.server().setAnswer(FakeMegaUpload::helperPath("ABCDEFGH"),
                                    TestServer::Answer::redirect(
                                        302, fake.url(QByteArray("/files/ABCDEFGH/movie.avi"))));
        else if (helper != "page")
            fake.server().setAnswer(FakeMegaUpload::helperPath("ABCDEFGH"),
                                    helper == "200"     ? ok200
                                    : helper == "reset" ? TestServer::Answer::connectionReset()
                                                        : TestServer::Answer::raw("garbage"));

        h.queues->startDownloadLinks(kSite, true);
        QTRY_COMPARE(h.at(kSite, 1), QString("Complete"));
        // What the row said, the transfer's progress left out.
        QCOMPARE(h.history(kSite, 0).mid(1).filter(QRegularExpression("^[^0-9]")), history);
        if (history.last() == "Complete")
            QCOMPARE(h.fileIn("movie.avi"), QByteArray("the movie"));

        // The socket's request goes out exactly so.
        const TestServer::Request asked = fake.server().requests().at(0);
        QCOMPARE(asked.raw, "GET /mgr_dl.php?d=ABCDEFGH HTTP/1.1\r\n"
                            "Accept: text/plain,text/html,*/*;q=0.3\r\nAccept-Encoding: *;q=0.1\r\n"
                            "TE: trailers\r\nHost: " +
                                fake.hostPort().toLatin1() +
                                "\r\nConnection:  TE\r\n"
                                "User-Agent: Mozilla/4.0 (compatible; MSIE 6.0; Windows NT 5.1)"
                                "\r\n\r\n");
        // The second link goes the page way; its dialog is closed without the
        // button, so the answer before is posted.
        QVERIFY(fake.requestLines().contains("GET /mgr_dl.php?d=NEXT0001"));
        QByteArrayList posts;
        for (const auto &r : fake.server().requests())
            if (r.method == "POST")
                posts << r.body + ' ' + r.header("Content-length");
        const QByteArray body = "captchacode=c0de42&megavar=mv%3D7&captcha=x7Q2 46";
        QCOMPARE(posts, helper == "file" || history.last() != "Complete" ? QByteArrayList{body}
                                                                         : QByteArrayList(2, body));
        QCOMPARE(h.prompts.captchas.size(), int(posts.size()));
        QCOMPARE(QFile(h.prompts.captchas.value(0)).size(), FakeMegaUpload::picture().size());
        QCOMPARE(h.prompts.captchas.value(0), h.folder() + "/CAP.gif");
    }

    void stopClosesTheSocket()
    {
        FakeMegaUpload fake;
        RecipeHarness h({kSite});
        h.add(kSite, fake.addFile("HELD", "held.bin", "x"));
        fake.server().setAnswer(FakeMegaUpload::helperPath("HELD"), TestServer::Answer::silence());
        h.queues->startDownloadLinks(kSite, true);
        QVERIFY(fake.server().waitForRequests(1));
        h.queues->stopDownloads(kSite);
        QTRY_COMPARE(fake.server().closedByClient(), 1);
        QCOMPARE(h.history(kSite, 0), (QStringList{"Waiting", "Starting...", "Stopped"}));
        // A link without "d=" uses no network at all.
        h.list.setField(h.row(kSite, 0), Field::Status, "Complete");
        h.add(kSite, "http://127.0.0.1:9/file/1");
        h.queues->startDownloadLinks(kSite, true);
        QCOMPARE(h.at(kSite, 1), QString("Connection Error"));
        QCOMPARE(fake.server().requests().size(), 1);
    }

private:
    static QList<FailureMatrix::Step> steps()
    {
        return {{"page",
                 FakeMegaUpload::linkPath("BAD1"),
                 StatusText::ConnectionError,
                 true,
                 {{"gone", FakeMegaUpload::gonePage, "Not Found|0|", false},
                  {"no captcha", "<p>captchacode value=\"1\"</p>", "Not Found|0|"}}}};
    }

    std::unique_ptr<Sandbox> m_sandbox;
};

QTEST_GUILESS_MAIN(TestMegaUpload)
#include "tst_megaupload.moc"
