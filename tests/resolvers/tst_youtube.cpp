#include "fakemediafire.h"
#include "fakeyoutube.h"
#include "list/linklistfile.h"
#include "recipetest.h"
#include "resolvers/mediafire.h"
#include "resolvers/youtube.h"

#include <fstream>

// YouTube and MediaFire: the two recipes that start the transfer themselves.
constexpr int kTube = Sites::Youtube, kFire = Sites::MediaFire;

static QList<FailureMatrix::Step> steps()
{
    using Step = FailureMatrix::Step;
    const QString gone = "Not Found|0|", href = "href=\\\"http://\"+mL+";
    return {Step(kTube, "watch page", "/watch?v=bad",
                 {{"gone", "<p>The video you have requested is not available.</p>", gone},
                  {"malformed id", "The URL contained a malformed video ID", gone},
                  {"age gate", "To view this video or group, please verify you are 18 or older by",
                   "Login Required|0|"},
                  {"old browser", "Your browser is no longer supported", "Upgrade IE Browser|0|"},
                  {"no & behind &t=", "<p>&t=abc</p>", "Error|0|"},
                  {"id without its closing quote", "&t=x& \"video_id\": \"v", "Error|0|"}}),
            Step(kFire, "page", "/?bad",
                 {{"no marker", "<p>Eq()</p>", gone},
                  {"( too close to the marker", "Eo()(abcdef)", gone}},
                 StatusText::Error),
            Step(kFire, "script", "/dynamic/download.php?qk=bad",
                 {{"no comment", "var mL='x'; function f() " + href + "\">", gone},
                  {"no link", "<!-- var mL='x'; function f()", gone},
                  {"link without its end", "<!-- function " + href, "Error|0|"}},
                 StatusText::Error)};
}

class TestYoutubeMediaFire : public QObject
{
    Q_OBJECT
    Sandbox m_sandbox;
private slots:
    // YouTube's watch page as "title|token" of the video "v" ("#": a made-up
    // number) and MediaFire's script (its declarations) as "LocalFile|DirectURL"
    // of the transfer it starts.
    void reading_data()
    {
        ReadingRows row("watch");
        QString shape = "LocalFile=%1.flv; LocalFilePath=/dl; Status=Connecting...; DirectURL="
                        "http://yt/get_video?video_id=v&t=%2&asv => transfer";
        const auto starts = [&](const char *name, const QString &page, const QString &read) {
            row(name, page, shape.arg(read.section('|', 0, 0), read.section('|', 1)));
        };
        const auto watch = FakeYoutube::watchPage;
        starts("no title", watch("v", "t", QString()), "Youtube #|t");
        starts("title on the last line", "\"video_id\": \"v\" &t=x& name=\"title\" content=\"T\"",
               "Youtube #|x");
        starts("blanks trimmed, id glued to the colon",
               "&t= x &\"video_id\":\" v\" \" name=\"title\"content=\"T\n", "T|x");
        starts("no &t=: the token from position 3", "ab cd&\"video_id\": \"v\"", "Youtube #|cd");
        starts("no &t=, & too early: no token", "a&\"video_id\": \"v\"", "Youtube #|");
        // Escapes in any case; "+", what isn't two hex digits and an escaped
        // escape stay.
        starts("token unescaped", watch("v", "a%2Fb%3d+%41%zz%4%2541", "T"), "T|a/b=+A%zz%4%41");
        starts("token of 1024", watch("v", QString(1024, 'a'), "T"), "T|" + QString(1024, 'a'));
        starts("token of 1025: none", watch("v", QString("%41").repeated(1025), "T"), "T|");

        // A link without "/" stands in whole for a name with "%".
        row.reader = "script";
        row.extra = "?k1";
        shape = "LocalFile=%1; LocalFilePath=/dl; Status=Waiting; DirectURL=http://%2 => transfer";
        const auto script = FakeMediaFire::scriptPage;
        starts("two 11s: the later, whatever its name",
               script({"cb=A1b2C3d4E5f", "mL=s", "mH=h2345678901", "mY=f"}),
               "f|s/h2345678901g/h2345678901/f");
        starts("no 11, no mH, a \"%\" name; split at \"var \" only",
               script({"mL=s", "mY=Var%20fi.zip"}), "k1|s/g//Var%20fi.zip");
    }
    void reading()
    {
        ReadingRows::check([](const QString &reader, const QString &page, const QString &link) {
            if (reader == "script")
                return MediaFireRecipe::readScriptPage(page, link, "/dl").toString();
            // Twenty readings differ where the number is made up.
            static const QRegularExpression number("Youtube [0-9]{1,4}\\.flv");
            QSet<QString> readings;
            for (int i = 0; i < 20; ++i)
                readings << YoutubeRecipe::readWatchPage(page, "yt", "/dl").toString();
            QString one = *readings.begin();
            return readings.size() > 1 ? one.replace(number, "Youtube #.flv") : one;
        });
    }

    // Both sites through the real queue and transfer, MediaFire's rows from a
    // saved list: a title loses what the cleaning takes out, a video that
    // falls silent at 97 percent counts as complete (the site table's host is
    // YouTube's), a name with "%" gives way to the link's last segment.
    void filesFromBothSites()
    {
        FakeYoutube tube;
        FakeMediaFire fire;
        RecipeHarness h({kTube, kFire});
        RecipeHarness::setPeriods(5, 20000, 300);
        // A video of 100 bytes that falls silent after 97.
        const auto video = TestServer::Answer::ok(QByteArray(100, 'x'));
        h.add(kTube, tube.addVideo("a1", "My: Video?",
                                   TestServer::Answer::raw(video.bytes.chopped(3)).keepOpen()));
        QString saved;
        for (const QString &link :
             {fire.addFile("k1", "my:report.pdf", "pdf"), fire.addFile("k2", "b%20c.txt", "txt")})
            saved += "5\r\n" + link + "\r\n?\r\nWaiting\r\n?\r\n\r\n";
        std::ofstream(h.folder().toStdString() + "/LinkList.lq") << saved.toStdString();
        LinkListFile::loadLinkList(h.list, h.folder() + "/LinkList.lq", &h.prompts);

        h.start(kTube);
        h.start(kFire);
        QTRY_COMPARE(h.statuses(kTube) + h.statuses(kFire), QStringList(3, "Complete"));
        // The words without the shares on the way.
        QCOMPARE(h.history(kTube, 0).filter(QRegularExpression("^\\D")).join(u','),
                 "Waiting,Starting...,Connecting...,Complete");
        QCOMPARE(h.trail(kFire, 0), "Starting...,Waiting,Complete");
        QCOMPARE(h.fields(kTube, 0, {Field::LocalFile, Field::FileSize, Field::WaitTimeInSec}),
                 "My Video.flv|100 Bytes|0");
        QCOMPARE(h.fileIn("My Video.flv"), QByteArray(97, 'x'));
        QCOMPARE(h.fileIn("myreport.pdf") + h.fileIn("k2c.txt"), "pdftxt");
        // A link without "?" is its own key.
        QCOMPARE(MediaFireRecipe::scriptAddress("k1", "127.0.0.1:80"),
                 "http://127.0.0.1:80/dynamic/download.php?qk=k1");
    }

    void failures_data() { FailureMatrix::addRows(steps()); }
    void failures()
    {
        FakeYoutube tube;
        FakeMediaFire fire;
        FailureMatrix::run(steps(), {{kTube, &tube, {tube.addVideo("bad"), tube.addVideo("good")}},
                                     {kFire, &fire, {fire.addFile("bad"), fire.addFile("good")}}});
    }
};

QTEST_GUILESS_MAIN(TestYoutubeMediaFire)
#include "tst_youtube.moc"
