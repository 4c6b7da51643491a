#include "failurematrix.h"
#include "fakemediafire.h"
#include "fakeyoutube.h"
#include "list/linklistfile.h"
#include "recipeharness.h"
#include "resolvers/mediafire.h"
#include "resolvers/youtube.h"
#include "sandbox.h"

#include <QFile>
#include <QRegularExpression>
#include <QtTest>

// YouTube and MediaFire: the two recipes that start the transfer themselves.
namespace {

constexpr int kTube = Sites::Youtube;
constexpr int kFire = Sites::MediaFire;
const QString kGone = "Not Found|0|";

// A video file of 100 bytes, of which `sent` are sent.
TestServer::Answer flv(int sent)
{
    return TestServer::Answer::http(200, "OK",
                                    {{"Content-Length", "100"}, {"Content-Type", "video/x-flv"}},
                                    QByteArray(sent, 'x'));
}

using Step = FailureMatrix::Step;
QList<Step> tubeSteps()
{
    return {Step{.name = "watch page",
                 .path = FakeYoutube::watchPath("bad"),
                 .pages = {{"gone", FakeYoutube::gonePage(), kGone},
                           {"age gate", FakeYoutube::ageGatePage(), "Login Required|0|"},
                           {"old browser", FakeYoutube::oldBrowserPage(), "Upgrade IE Browser|0|"},
                           {"no & behind &t=", "<p>&t=abc</p>", "Error|0|"}}}};
}

QList<Step> fireSteps()
{
    const QString href = "href=\\\"http://\"+mL+";
    return {Step{.name = "page",
                 .path = FakeMediaFire::linkPath("bad"),
                 .badStatusWord = StatusText::Error,
                 .pages = {{"no marker", FakeMediaFire::firstPage(false), kGone},
                           {"( too close to the marker", "Eo()(abcdef)", kGone}}},
            Step{.name = "script",
                 .path = FakeMediaFire::scriptPath("bad"),
                 .badStatusWord = StatusText::Error,
                 .pages = {{"no comment", "var mL='x'; function f() " + href + "\">", kGone},
                           {"no link", "<!-- var mL='x'; function f()", kGone},
                           {"link without its end", "<!-- function " + href, "Error|0|"}}}};
}

} // namespace

class TestYoutubeMediaFire : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { m_sandbox = std::make_unique<Sandbox>(); }
    void init() { RecipeHarness::setPeriods(5, 20000); }

    // A transfer reads "name|id&t=token" ("#": a random number), a failure its Status.
    void watchPage_data()
    {
        QTest::addColumn<QString>("page");
        QTest::addColumn<QString>("result");
        auto row = [](const char *name, const QString &page, const QString &result) {
            QTest::newRow(name) << page << result;
        };
        row("site's page", FakeYoutube::watchPage("v1", "t%2B1", "A: b?\" c"), "A b c|v1&t=t+1");
        row("no title", FakeYoutube::watchPage("v", "t", QString()), "Youtube #|v&t=t");
        row("title on the last line", "\"video_id\": \"v\" &t=x& name=\"title\" content=\"T\"",
            "Youtube #|v&t=x");
        row("blanks trimmed, id glued to the colon",
            "&t= x &\"video_id\":\" v\" \" name=\"title\"content=\"T\n", "T|v&t=x");
        row("no &t=: the token from position 3", "ab cd&\"video_id\": \"v\"", "Youtube #|v&t=cd");
        row("no &t=, & too early: no token", "a&\"video_id\": \"v\"", "Youtube #|v&t=");
        // Escapes in any case; "+", what isn't two hex digits and an escaped
        // escape stay.
        row("token unescaped", FakeYoutube::watchPage("v", "a%2Fb%3d+%41%zz%4%2541", "T"),
            "T|v&t=a/b=+A%zz%4%41");
        row("token of 1024", FakeYoutube::watchPage("v", QString(1024, 'a'), "T"),
            "T|v&t=" + QString(1024, 'a'));
        row("token of 1025: none", FakeYoutube::watchPage("v", QString("%41").repeated(1025), "T"),
            "T|v&t=");
        row("id without its closing quote", "&t=x& \"video_id\": \"v", "Error");
        row("both not-available texts",
            FakeYoutube::gonePage() + "The URL contained a malformed video ID", "Not Found");
    }
    void watchPage()
    {
        QFETCH(QString, page);
        QFETCH(QString, result);
        const QStringList parts = result.split('|');
        const QString reading = parts.size() < 2
                                    ? "Status=" + result + "; WaitTimeInSec=0 => next link"
                                    : "LocalFile=" + parts[0] +
                                          ".flv; LocalFilePath=/dl; Status=Connecting...; "
                                          "DirectURL=http://yt/get_video?video_id=" +
                                          parts[1] + "&asv => transfer";
        QSet<QString> readings; // a random name differs from read to read
        for (int i = 0; i < 20; ++i)
            readings << YoutubeRecipe::readWatchPage(page, "yt", "/dl").toString();
        static const QRegularExpression number("Youtube [0-9]{1,4}\\.flv");
        QCOMPARE(QString(*readings.begin()).replace(number, "Youtube #.flv"), reading);
        QCOMPARE(readings.size() > 1, result.contains('#'));
    }

    void videoToFile()
    {
        FakeYoutube site;
        RecipeHarness h({kTube});
        h.createSubDir = 1;
        const QByteArray video(3000, 'v');
        h.add(kTube, site.addVideo("a1", "My: Video?", TestServer::Answer::ok(video)));
        // The second falls silent at 97 percent, which counts as complete.
        RecipeHarness::setPeriods(5, 20000, 300);
        h.add(kTube, site.addVideo("b2", QString(), flv(97).keepOpen()));
        h.queues->startDownloadLinks(kTube, true);
        QTRY_COMPARE(h.statuses(kTube), (QStringList{"Complete", "Complete"}));
        QCOMPARE(h.history(kTube, 0),
                 (QStringList{"Waiting", "Starting...", "Connecting...", "Complete"}));
        QCOMPARE(h.fields(kTube, 0, {Field::LocalFile, Field::FileSize, Field::WaitTimeInSec}),
                 "My Video.flv|2.93 KB|0");
        QCOMPARE(h.fileIn("Youtube Files/My Video.flv"), video);
        QCOMPARE(h.fileIn("Youtube Files/" + h.at(kTube, 1, Field::LocalFile)),
                 QByteArray(97, 'x'));
    }

    // A stopped video keeps its part.
    void stopKeepsThePart()
    {
        FakeYoutube site;
        RecipeHarness h({kTube});
        auto file = flv(100);
        h.add(kTube, site.addVideo("c3", "part", file.cutAt({file.bytes.size() - 60}, 3000)));
        h.queues->startDownloadLinks(kTube, true);
        QTRY_COMPARE(h.at(kTube, 0), "40");
        h.queues->stopDownloads(kTube);
        QCOMPARE(h.at(kTube, 0), "Stopped(40%)");
        QCOMPARE(h.fileIn("part.flv"), QByteArray(40, 'x'));
    }

    void youtubeFailures_data() { FailureMatrix::addRows(tubeSteps()); }
    void youtubeFailures()
    {
        FakeYoutube fake;
        FailureMatrix::run(kTube, tubeSteps(), fake,
                           {fake.addVideo("bad", "Bad", TestServer::Answer::ok("no")),
                            fake.addVideo("good", "Good", TestServer::Answer::ok("good"))});
    }

    // The file's name and the address after "http://".
    void scriptPage_data()
    {
        QTest::addColumn<QStringList>("script");
        QTest::addColumn<QString>("link");
        QTest::addColumn<QString>("result");
        const QString link = "http://mf/?abc";
        QTest::newRow("site's script")
            << QStringList{"cb=A1b2C3d4E5f", "mL=s1", "mH=seg", "mY=a:b.zip"} << link
            << "ab.zip|s1/A1b2C3d4E5fg/seg/a:b.zip";
        QTest::newRow("two 11s: the later, whatever its name")
            << QStringList{"cb=A1b2C3d4E5f", "mL=s1", "mH=h2345678901", "mY=f"} << link
            << "f|s1/h2345678901g/h2345678901/f";
        QTest::newRow("no 11, no mH: gaps; split at \"var \" only")
            << QStringList{"mL=s1", "mY=Var f"} << link << "Var f|s1/g//Var f";
        QTest::newRow("% in mY: the link's last segment")
            << QStringList{"mL=s", "mY=my%20f.zip"} << link << "abcf.zip|s/g//my%20f.zip";
        QTest::newRow("% in mY, a link without /") << QStringList{"mL=s", "mY=my%20f.zip"} << "?k1"
                                                   << "k1|s/g//my%20f.zip";
    }
    void scriptPage()
    {
        QFETCH(QStringList, script);
        QFETCH(QString, link);
        QFETCH(QString, result);
        const QStringList parts = result.split('|');
        QCOMPARE(MediaFireRecipe::readScriptPage(FakeMediaFire::scriptPage(script), link, "/dl")
                     .toString(),
                 "LocalFile=" + parts[0] +
                     "; LocalFilePath=/dl; Status=Waiting; DirectURL=http://" + parts[1] +
                     " => transfer");
    }

    void savedRowToFile()
    {
        FakeMediaFire site;
        RecipeHarness h({kFire});
        QFile file(h.folder() + "/LinkList.lq");
        QVERIFY(file.open(QIODevice::WriteOnly));
        for (const QString &link : {site.addFile("k1", "A1b2C3d4E5f", "report.pdf", "pdf"),
                                    site.addFile("k2", "Z9y8X7w6V5u", "b%20c.txt", "txt")})
            file.write(("5\r\n" + link + "\r\n?\r\nWaiting\r\n?\r\n\r\n").toUtf8());
        file.close();
        LinkListFile::loadLinkList(h.list, file.fileName(), &h.prompts);

        h.queues->startAllDownloads(); // passes the site by
        QCOMPARE(h.statuses(kFire), (QStringList{"Waiting", "Waiting"}));
        h.queues->startDownloadLinks(kFire, true);
        QTRY_COMPARE(h.statuses(kFire), (QStringList{"Complete", "Complete"}));
        QCOMPARE(h.history(kFire, 0), (QStringList{"Starting...", "Waiting", "Complete"}));
        QCOMPARE(h.fileIn("report.pdf") + h.fileIn("k2c.txt"), "pdftxt");
        // A link without "?" is its own key.
        QCOMPARE(MediaFireRecipe::scriptAddress("k1", "127.0.0.1:80"),
                 "http://127.0.0.1:80/dynamic/download.php?qk=k1");
    }

    void mediaFireFailures_data() { FailureMatrix::addRows(fireSteps()); }
    void mediaFireFailures()
    {
        FakeMediaFire fake;
        FailureMatrix::run(kFire, fireSteps(), fake,
                           {fake.addFile("bad", "A1b2C3d4E5f", "bad.bin", "no"),
                            fake.addFile("good", "A1b2C3d4E5f", "good.bin", "good")});
    }

private:
    std::unique_ptr<Sandbox> m_sandbox;
};

QTEST_GUILESS_MAIN(TestYoutubeMediaFire)
#include "tst_youtube.moc"
