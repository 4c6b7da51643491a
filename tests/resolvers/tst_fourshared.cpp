#include "fakefilefactory.h"
#include "fakefourshared.h"
#include "recipetest.h"
#include "resolvers/filefactory.h"
#include "resolvers/fourshared.h"

namespace {

constexpr int k4S = Sites::FourShared;
constexpr int kFF = Sites::FileFactory;
const QString kBusy = "<p>Server busy.</p>";

// The requests of each recipe for the first of its matrix's links, with the
// site's own pages that end a run there. At 4Shared's a bad status leaves
// the queue on the row.
QList<FailureMatrix::Step> steps()
{
    using Step = FailureMatrix::Step;
    const QString far(33000, '-'); // what follows stands behind position 32,767
    const QString error = "Error|0|", gone = "Not Found|0|";
    return {Step(k4S, "page", FakeFourShared::getPath("2001", "bad.bin"),
                 {{"not valid", "The file link that you requested is not valid.", gone},
                  {"twice without seconds", kBusy, error},
                  {"no countdown", "Wait 40 seconds.", "Starting...|0|", false},
                  {"no address", FakeFourShared::downloadPage("", "20"), "ERROR|0|", false},
                  {"no link text", "<b>20</b> seconds...<a href='/x'>Sign up</a>", error}},
                 StatusText::ConnectionError, false),
            Step(kFF, "page", FakeFileFactory::linkPath("2001", "bad.bin"),
                 {{"gone", FakeFileFactory::gonePage, gone},
                  {"gone, far down", far + FakeFileFactory::gonePage, gone},
                  {"no link on the button", "alt=\"Download Now\"", gone},
                  {"button far down", far + FakeFileFactory::firstPage("dlf/2001"),
                   "Connection Error|0|"}}),
            Step(kFF, "button page", FakeFileFactory::buttonPath("2001"),
                 {{"no download link", "<p>Nothing here</p>", error, false},
                  {"countdown cut off", "downloadLink href=\"h/f\" countdown\">9", error}})};
}

} // namespace

class TestFourSharedFileFactory : public QObject
{
    Q_OBJECT
    Sandbox m_sandbox;
private slots:
    void init() { RecipeHarness::setPeriods(5, 20000); }

    // 4Shared's download page, and FileFactory's for a link ending in
    // "/a,b.zip" and the row's DirectURL before; the folder is "/dl".
    void reading_data()
    {
        const QString fourTail =
            " Seconds; WaitTimeInSec=%1; LocalFilePath=/dl; ready => countdown 1000";
        ReadingRows row("4shared");
        row("word for a wait, no tsid: no name", FakeFourShared::downloadPage("s/f", "soon"),
            "DirectURL=s/f; Status=Wait 45" + fourTail.arg(45));
        row("any case, tsid without a slash: no name",
            "<B>3</B> SECONDS...<a href='f?tsid=1'>CLICK HERE TO DOWNLOAD THIS FILE",
            "DirectURL=f?tsid=1; Status=Wait 3" + fourTail.arg(3));

        const QString tail = "LocalFilePath=/dl; Status=Wait %1 Seconds; WaitTimeInSec=%1; ready "
                             "=> countdown 1000";
        row.reader = "filefactory";
        row("try later", FakeFileFactory::tryLaterPage,
            "Status=Wait 5 Minutes; WaitTimeInSec=300; not ready => countdown 1000");
        row("no link: the row's address, no countdown", "<p>x</p>",
            "LocalFile=x.bin; " + tail.arg(30), "h/x.bin");
        row("address ending in a slash", FakeFileFactory::downloadPage("h/d/", "1"),
            "DirectURL=h/d/; LocalFile=; " + tail.arg(1));
        row("quote looked for two places in, colon in the countdown",
            "downloadLink href=\"a\">go class=\"c\" countdown\">0:30</",
            "DirectURL=a\">go class=; LocalFile=ab.zip; " + tail.arg(30));
    }

    void reading()
    {
        ReadingRows::check([](const QString &reader, const QString &page, const QString &direct) {
            if (reader == "4shared")
                return FourSharedRecipe::readDownloadPage(page, "/dl")
                    .value_or(Reading())
                    .toString();
            return FileFactoryRecipe::readDownloadPage(page, "ff/a,b.zip", direct, "/dl")
                .toString();
        });
    }

    // The name as it stands; a page without a countdown is asked for once more.
    void fourSharedLinks()
    {
        FakeFourShared site;
        RecipeHarness h({k4S});
        h.createSubDir = 1;
        const QString link = site.addFile("1001", "a,b.zip", "first", 2);
        h.add(k4S, link);
        h.add(k4S, site.addFile("1002", "two.bin", "second"));
        const QString two = site.url(QStringLiteral("/download/1002/two.bin?tsid=1002"));
        site.server().setAnswers(
            FakeFourShared::getPath("1002", "two.bin"),
            {FakeSite::html(kBusy), FakeSite::html(FakeFourShared::downloadPage(two, "1"))});

        h.start(k4S);
        QTRY_COMPARE(h.statuses(k4S), (QStringList{"Complete", "Complete"}));
        QCOMPARE(h.trail(k4S, 0),
                 "Waiting,Starting...,Wait 2 Seconds,Wait 1 Seconds,Connecting...,Complete");
        QCOMPARE(h.fields(k4S, 0, {Field::LinkURL, Field::LocalFile}), link + "|a,b.zip");
        QCOMPARE(h.fileIn("4Shared Files/a,b.zip") + h.fileIn("4Shared Files/two.bin"),
                 QByteArray("firstsecond"));
        // With the link ready, the ends of the waits went to the transfer, not
        // back to the page.
        QCOMPARE(site.requestLines(),
                 (QStringList{"GET /get/1001/a,b.zip.html", "GET /download/1001/a,b.zip?tsid=1001",
                              "GET /get/1002/two.bin.html", "GET /get/1002/two.bin.html",
                              "GET /download/1002/two.bin?tsid=1002"}));
        // Only a "/file" right behind the host changes, the host as written.
        QCOMPARE(FourSharedRecipe::downloadPageAddress(
                     "4SHARED.COM/File/x/4shared.com/files/y/file?4shared.com/file", "4shared.com"),
                 "4SHARED.COM/get/x/4shared.com/gets/y/file");
    }

    // The name cleaned. No free slot and "try later" both wait five minutes,
    // the first a minute per tick (the test ticks it), the second a second
    // per tick; both rows then go to the transfer without an address.
    void fileFactoryLinks()
    {
        FakeFileFactory site;
        RecipeHarness h({kFF});
        h.add(kFF, site.addFile("1001", "re,port.zip", "first", 2));
        h.add(kFF, site.addFile("1002", "slots.bin", "never"));
        h.add(kFF, site.addFile("1003", "later.bin", "never"));
        site.page(site.linkPath("1002", "slots.bin"), FakeFileFactory::noSlotsPage);
        site.page(site.buttonPath("1003"), FakeFileFactory::tryLaterPage);

        h.start(kFF);
        QTRY_COMPARE(h.at(kFF, 1), QStringLiteral("Wait 5 Minutes"));
        h.tick(kFF, 5);
        QTRY_COMPARE(h.statuses(kFF), (QStringList{"Complete", "Error", "Error"}));
        QCOMPARE(h.fileIn("report.zip"), QByteArray("first"));
        QCOMPARE(h.history(kFF, 1).mid(2, 2) + h.history(kFF, 2).mid(2, 2),
                 (QStringList{"Wait 5 Minutes", "Wait 4 Minutes", "Wait 5 Minutes",
                              "Wait 4.9 Minutes"}));
        QCOMPARE(h.history(kFF, 1).last(2) + h.history(kFF, 2).last(2),
                 (QStringList{"Connecting...", "Error", "Connecting...", "Error"}));
        // The button's address, its backslash taken as a slash.
        QCOMPARE(site.requestLines().mid(0, 3),
                 (QStringList{"GET /file/1001/n/re,port.zip", "GET " + site.buttonPath("1001"),
                              "GET /get/1001/re,port.zip"}));
    }

    void failures_data() { FailureMatrix::addRows(steps()); }
    void failures()
    {
        FakeFourShared four;
        FakeFileFactory factory;
        const QStringList fours{four.addFile("2001", "bad.bin", "never"),
                                four.addFile("2002", "good.bin", "good")};
        const QStringList factories{factory.addFile("2001", "bad.bin", "never"),
                                    factory.addFile("2002", "good.bin", "good")};
        FailureMatrix::run(steps(), {{k4S, &four, fours}, {kFF, &factory, factories}});
    }
};

QTEST_GUILESS_MAIN(TestFourSharedFileFactory)
#include "tst_fourshared.moc"
