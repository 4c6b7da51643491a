#include "fakemediafire.h"
#include "fakeyoutube.h"
#include "recipetest.h"
#include "resolvers/mediafire.h"
#include "resolvers/youtube.h"

#include <QRegularExpression>

// YouTube and MediaFire: the two recipes that start the transfer themselves.
namespace {

constexpr int kTube = Sites::Youtube;
constexpr int kFire = Sites::MediaFire;

QList<FailureMatrix::Step> steps()
{
    using Step = FailureMatrix::Step;
    const QString gone = "Not Found|0|", href = "href=\\\"http://\"+mL+";
    return {Step(kTube, "watch page", FakeYoutube::watchPath("bad"),
                 {{"gone", "<p>The video you have requested is not available.</p>", gone},
                  {"malformed id", "The URL contained a malformed video ID", gone},
                  {"age gate", "To view this video or group, please verify you are 18 or older by",
                   "Login Required|0|"},
                  {"old browser", "Your browser is no longer supported", "Upgrade IE Browser|0|"},
                  {"no & behind &t=", "<p>&t=abc</p>", "Error|0|"},
                  {"id without its closing quote", "&t=x& \"video_id\": \"v", "Error|0|"}}),
            Step(kFire, "page", FakeMediaFire::linkPath("bad"),
                 {{"no marker", "<p>Eq()</p>", gone},
                  {"( too close to the marker", "Eo()(abcdef)", gone}},
                 StatusText::Error),
            Step(kFire, "script", FakeMediaFire::scriptPath("bad"),
                 {{"no comment", "var mL='x'; function f() " + href + "\">", gone},
                  {"no link", "<!-- var mL='x'; function f()", gone},
                  {"link without its end", "<!-- function " + href, "Error|0|"}},
                 StatusText::Error)};
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
    Sandbox m_sandbox;
private slots:
    void init() { RecipeHarness::setPeriods(5, 20000); }

    // YouTube's watch page ("#": a made-up number) and MediaFire's script
    // (its declarations; the link is the column after).
    void reading_data()
    {
        ReadingRows row("watch");
        // A watch page's reading as "name|id&t=token".
        const auto tube = [&](const char *name, const QString &page, const QString &result) {
            row(name, page,
                QString("LocalFile=%1.flv; LocalFilePath=/dl; Status=Connecting...; DirectURL="
                        "http://yt/get_video?video_id=%2&asv => transfer")
                    .arg(result.section('|', 0, 0), result.section('|', 1)));
        };
        const auto watch = FakeYoutube::watchPage;
        tube("no title", watch("v", "t", QString()), "Youtube #|v&t=t");
        tube("title on the last line", "\"video_id\": \"v\" &t=x& name=\"title\" content=\"T\"",
             "Youtube #|v&t=x");
        tube("blanks trimmed, id glued to the colon",
             "&t= x &\"video_id\":\" v\" \" name=\"title\"content=\"T\n", "T|v&t=x");
        tube("no &t=: the token from position 3", "ab cd&\"video_id\": \"v\"", "Youtube #|v&t=cd");
        tube("no &t=, & too early: no token", "a&\"video_id\": \"v\"", "Youtube #|v&t=");
        // Escapes in any case; "+", what isn't two hex digits and an escaped
        // escape stay.
        tube("token unescaped", watch("v", "a%2Fb%3d+%41%zz%4%2541", "T"), "T|v&t=a/b=+A%zz%4%41");
        tube("token of 1024", watch("v", QString(1024, 'a'), "T"), "T|v&t=" + QString(1024, 'a'));
        tube("token of 1025: none", watch("v", QString("%41").repeated(1025), "T"), "T|v&t=");

        row.reader = "script";
        row.extra = "http://mf/?abc";
        const auto fire = [&](const char *name, const QStringList &script, const QString &file,
                              const QString &direct, const QString &link = {}) {
            row(name, FakeMediaFire::scriptPage(script),
                "LocalFile=" + file + "; LocalFilePath=/dl; Status=Waiting; DirectURL=http://" +
                    direct + " => transfer",
                link);
        };
        fire("site's script", {"cb=A1b2C3d4E5f", "mL=s1", "mH=seg", "mY=a:b.zip"}, "ab.zip",
             "s1/A1b2C3d4E5fg/seg/a:b.zip");
        fire("two 11s: the later, whatever its name",
             {"cb=A1b2C3d4E5f", "mL=s1", "mH=h2345678901", "mY=f"}, "f",
             "s1/h2345678901g/h2345678901/f");
        fire("no 11, no mH: gaps; split at \"var \" only", {"mL=s1", "mY=Var f"}, "Var f",
             "s1/g//Var f");
        fire("% in mY: the link's last segment", {"mL=s", "mY=my%20f.zip"}, "abcf.zip",
             "s/g//my%20f.zip");
        fire("% in mY, a link without /", {"mL=s", "mY=my%20f.zip"}, "k1", "s/g//my%20f.zip",
             "?k1");
    }
    void reading()
    {
        ReadingRows::check([](const QString &reader, const QString &page, const QString &link) {
            if (reader == "script")
                return MediaFireRecipe::readScriptPage(page, link, "/dl").toString();
            // Twenty readings; where they differ, only in the made-up number.
            static const QRegularExpression number("Youtube [0-9]{1,4}\\.flv");
            QSet<QString> readings, seen;
            for (int i = 0; i < 20; ++i)
                readings << YoutubeRecipe::readWatchPage(page, "yt", "/dl").toString();
            for (QString one : readings)
                seen << (readings.size() > 1 ? one.replace(number, "Youtube #.flv") : one);
            return QStringList(seen.begin(), seen.end()).join(u'\n');
        });
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
        h.start(kTube);
        QTRY_COMPARE(h.statuses(kTube), (QStringList{"Complete", "Complete"}));
        QCOMPARE(h.trail(kTube, 0), "Waiting,Starting...,Connecting...,Complete");
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
        stopped.start(kTube);
        QTRY_COMPARE(stopped.at(kTube, 0), "40");
        stopped.queues->stopDownloads(kTube);
        QCOMPARE(stopped.statuses(kTube), QStringList{"Stopped(40%)"});
        QCOMPARE(stopped.fileIn("Youtube Files/part.flv"), QByteArray(40, 'x'));
    }

    void mediaFireFiles()
    {
        FakeMediaFire site;
        RecipeHarness h({kFire});
        h.add(kFire, site.addFile("k1", "A1b2C3d4E5f", "report.pdf", "pdf"));
        h.add(kFire, site.addFile("k2", "Z9y8X7w6V5u", "b%20c.txt", "txt"));
        h.start(kFire);
        QTRY_COMPARE(h.statuses(kFire), (QStringList{"Complete", "Complete"}));
        QCOMPARE(h.trail(kFire, 0), "Waiting,Starting...,Waiting,Complete");
        QCOMPARE(h.fileIn("report.pdf") + h.fileIn("k2c.txt"), "pdftxt");
        // A link without "?" is its own key.
        QCOMPARE(MediaFireRecipe::scriptAddress("k1", "127.0.0.1:80"),
                 "http://127.0.0.1:80/dynamic/download.php?qk=k1");
    }

    void failures_data() { FailureMatrix::addRows(steps()); }
    void failures()
    {
        FakeYoutube tube;
        FakeMediaFire fire;
        const QStringList tubes{tube.addVideo("bad", "Bad", TestServer::Answer::ok("no")),
                                tube.addVideo("good", "Good", TestServer::Answer::ok("good"))};
        const QStringList fires{fire.addFile("bad", "A1b2C3d4E5f", "bad.bin", "no"),
                                fire.addFile("good", "A1b2C3d4E5f", "good.bin", "good")};
        FailureMatrix::run(steps(), {{kTube, &tube, tubes}, {kFire, &fire, fires}});
    }
};

QTEST_GUILESS_MAIN(TestYoutubeMediaFire)
#include "tst_youtube.moc"
