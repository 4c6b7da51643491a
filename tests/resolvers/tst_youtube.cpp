#include "failurematrix.h"
#include "fakemediafire.h"
#include "fakeyoutube.h"
#include "recipeharness.h"
#include "resolvers/mediafire.h"
#include "resolvers/youtube.h"
#include "sandbox.h"

#include <QRegularExpression>
#include <QtTest>

// YouTube and MediaFire: the two recipes that start the transfer themselves.
namespace {

constexpr int kTube = Sites::Youtube;
constexpr int kFire = Sites::MediaFire;
const QString kGone = "Not Found|0|";
using Step = FailureMatrix::Step;

QList<Step> tubeSteps()
{
    return {Step{
        .name = "watch page",
        .path = FakeYoutube::watchPath("bad"),
        .pages = {{"gone", "<p>The video you have requested is not available.</p>", kGone},
                  {"malformed id", "The URL contained a malformed video ID", kGone},
                  {"age gate", "To view this video or group, please verify you are 18 or older by",
                   "Login Required|0|"},
                  {"old browser", "Your browser is no longer supported", "Upgrade IE Browser|0|"},
                  {"no & behind &t=", "<p>&t=abc</p>", "Error|0|"},
                  {"id without its closing quote", "&t=x& \"video_id\": \"v", "Error|0|"}}}};
}

QList<Step> fireSteps()
{
    const QString href = "href=\\\"http://\"+mL+";
    return {Step{.name = "page",
                 .path = FakeMediaFire::linkPath("bad"),
                 .badStatusWord = StatusText::Error,
                 .pages = {{"no marker", "<p>Eq()</p>", kGone},
                           {"( too close to the marker", "Eo()(abcdef)", kGone}}},
            Step{.name = "script",
                 .path = FakeMediaFire::scriptPath("bad"),
                 .badStatusWord = StatusText::Error,
                 .pages = {{"no comment", "var mL='x'; function f() " + href + "\">", kGone},
                           {"no link", "<!-- var mL='x'; function f()", kGone},
                           {"link without its end", "<!-- function " + href, "Error|0|"}}}};
}

// A video file of 100 bytes, of which `sent` are sent before the line falls silent.
TestServer::Answer flv(int sent)
{
    return TestServer::Answer::http(200, "OK",
                                    {{"Content-Length", "100"}, {"Content-Type", "video/x-flv"}},
                                    QByteArray(sent, 'x'))
        .keepOpen();
}

} // namespace

class TestYoutubeMediaFire : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { m_sandbox = std::make_unique<Sandbox>(); }
    void init() { RecipeHarness::setPeriods(5, 20000); }

    // The transfer a watch page gives, as "name|id&t=token" ("#": a random number).
    void watchPage_data()
    {
        QTest::addColumn<QString>("page");
        QTest::addColumn<QString>("result");
        auto row = [](const char *name, const QString &page, const QString &result) {
            QTest::newRow(name) << page << result;
        };
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
    }
    void watchPage()
    {
        QFETCH(QString, page);
        QFETCH(QString, result);
        const QStringList parts = result.split('|');
        QSet<QString> readings; // a random name differs from read to read
        for (int i = 0; i < 20; ++i)
            readings << YoutubeRecipe::readWatchPage(page, "yt", "/dl").toString();
        static const QRegularExpression number("Youtube [0-9]{1,4}\\.flv");
        QCOMPARE(QString(*readings.begin()).replace(number, "Youtube #.flv"),
                 "LocalFile=" + parts[0] +
                     ".flv; LocalFilePath=/dl; Status=Connecting...; "
                     "DirectURL=http://yt/get_video?video_id=" +
                     parts[1] + "&asv => transfer");
        QCOMPARE(readings.size() > 1, result.contains('#'));
    }

    // A title loses what the cleaning takes out; a video that falls silent at
    // 97 percent counts as complete; a stopped one keeps its part.
    void videosToFiles()
    {
        FakeYoutube site;
        RecipeHarness h({kTube});
        h.createSubDir = 1;
        const QByteArray video(3000, 'v');
        h.add(kTube, site.addVideo("a1", "My: Video?", TestServer::Answer::ok(video)));
        h.add(kTube, site.addVideo("b2", QString(), flv(97)));
        RecipeHarness::setPeriods(5, 20000, 300);
        h.queues->startDownloadLinks(kTube, true);
        QTRY_COMPARE(h.statuses(kTube), (QStringList{"Complete", "Complete"}));
        QCOMPARE(h.history(kTube, 0),
                 (QStringList{"Waiting", "Starting...", "Connecting...", "Complete"}));
        QCOMPARE(h.fields(kTube, 0, {Field::LocalFile, Field::FileSize, Field::WaitTimeInSec}),
                 "My Video.flv|2.93 KB|0");
        QCOMPARE(h.fileIn("Youtube Files/My Video.flv"), video);
        QCOMPARE(h.fileIn("Youtube Files/" + h.at(kTube, 1, Field::LocalFile)),
                 QByteArray(97, 'x'));

        // The watch for silence of a transfer never stops: a stopped video
        // gets transfer controls of its own.
        RecipeHarness stopped({kTube});
        stopped.createSubDir = 1;
        stopped.add(kTube, site.addVideo("c3", "part", flv(40)));
        RecipeHarness::setPeriods(5, 20000, 60000);
        stopped.queues->startDownloadLinks(kTube, true);
        QTRY_COMPARE(stopped.at(kTube, 0), "40");
        stopped.queues->stopDownloads(kTube);
        QCOMPARE(stopped.statuses(kTube), QStringList{"Stopped(40%)"});
        QCOMPARE(stopped.fileIn("Youtube Files/part.flv"), QByteArray(40, 'x'));
    }

    void youtubeFailures_data() { FailureMatrix::addRows(tubeSteps()); }
    void youtubeFailures()
    {
        FakeYoutube fake;
        FailureMatrix::run(kTube, tubeSteps(), fake,
                           {fake.addVideo("bad", "Bad", TestServer::Answer::ok("no")),
                            fake.addVideo("good", "Good", TestServer::Answer::ok("good"))});
    }

    // The file's name and the address behind "http://".
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

    void mediaFireFiles()
    {
        FakeMediaFire site;
        RecipeHarness h({kFire});
        h.add(kFire, site.addFile("k1", "A1b2C3d4E5f", "report.pdf", "pdf"));
        h.add(kFire, site.addFile("k2", "Z9y8X7w6V5u", "b%20c.txt", "txt"));
        h.queues->startDownloadLinks(kFire, true);
        QTRY_COMPARE(h.statuses(kFire), (QStringList{"Complete", "Complete"}));
        QCOMPARE(h.history(kFire, 0),
                 (QStringList{"Waiting", "Starting...", "Waiting", "Complete"}));
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
