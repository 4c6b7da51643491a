#include "fakefilefactory.h"
#include "fakefourshared.h"
#include "recipetest.h"
#include "resolvers/filefactory.h"
#include "resolvers/fourshared.h"

namespace {

constexpr int k4S = Sites::FourShared;
constexpr int kFF = Sites::FileFactory;

// The requests of each recipe for the first of its matrix's links, with the
// site's own pages that end a run there. At 4Shared's a bad status leaves
// the queue on the row.
QList<FailureMatrix::Step> steps()
{
    using Step = FailureMatrix::Step;
    const QString far(33000, '-'); // what follows stands behind position 32,767
    return {Step(k4S, "page", "/get/1/b.bin.html",
                 {{"not valid", "The file link that you requested is not valid.", "Not Found|0|"},
                  {"twice without seconds", FakeFourShared::busyPage, "Error|0|"},
                  {"no countdown", "Wait 40 seconds.", "Starting...|0|", false},
                  {"no address", FakeFourShared::downloadPage.arg("20", ""), "ERROR|0|", false},
                  {"no link text", "<b>20</b> seconds...<a href='/x'>Sign up</a>", "Error|0|"}},
                 StatusText::ConnectionError, false),
            Step(kFF, "page", "/file/1/n/b.bin",
                 {{"gone, far down", far + FakeFileFactory::gonePage, "Not Found|0|"},
                  {"no link on the button", "alt=\"Download Now\"", "Not Found|0|"},
                  {"button far down", far + FakeFileFactory::firstPage.arg("dlf/1"),
                   "Connection Error|0|"}}),
            Step(kFF, "button page", "/dlf/1",
                 {{"no download link", "<p>Nothing here</p>", "Error|0|", false},
                  {"countdown cut off", "downloadLink href=\"h/f\" countdown\">9", "Error|0|"}})};
}

} // namespace

class TestFourSharedFileFactory : public QObject
{
    Q_OBJECT
    Sandbox m_sandbox;
private slots:
    // 4Shared's download page, and FileFactory's for a link ending in
    // "/a,b.zip" and the row's DirectURL before; the folder is "/dl".
    void reading_data()
    {
        const QString fourTail =
            " Seconds; WaitTimeInSec=%1; LocalFilePath=/dl; ready => countdown 1000";
        ReadingRows row("4shared");
        row("word for a wait, no tsid: no name", FakeFourShared::downloadPage.arg("soon", "s/f"),
            "DirectURL=s/f; Status=Wait 45" + fourTail.arg(45));
        row("any case, tsid without a slash: no name",
            "<B>3</B> SECONDS...<a href='f?tsid=1'>CLICK HERE TO DOWNLOAD THIS FILE",
            "DirectURL=f?tsid=1; Status=Wait 3" + fourTail.arg(3));

        const QString tail = "LocalFilePath=/dl; Status=Wait %1 Seconds; WaitTimeInSec=%1; ready "
                             "=> countdown 1000";
        row.reader = "filefactory";
        // Five minutes counted a second a tick, then the transfer without an
        // address, as the no-slots wait in throughTheQueue().
        row("try later", FakeFileFactory::tryLaterPage,
            "Status=Wait 5 Minutes; WaitTimeInSec=300; not ready => countdown 1000");
        row("no link: the row's address, ending in a slash; no countdown", "<p>x</p>",
            "LocalFile=; " + tail.arg(30), "h/");
        row("quote looked for two places in, colon in the countdown",
            "downloadLink href=\"a\">go class=\"c\" countdown\">0:30</",
            "DirectURL=a\">go class=; LocalFile=ab.zip; " + tail.arg(30));
    }

    void reading()
    {
        ReadingRows::check([](auto &reader, auto &page, auto &direct) {
            const Reading got =
                reader == "4shared"
                    ? FourSharedRecipe::readDownloadPage(page, "/dl").value_or(Reading())
                    : FileFactoryRecipe::readDownloadPage(page, "ff/a,b.zip", direct, "/dl");
            return got.toString();
        });
    }

    // Both sites through the real queue, their countdowns and the transfer.
    // 4Shared keeps the name as it stands and asks once more for a page
    // without a countdown; FileFactory cleans the name, and with no free slot
    // waits five minutes, a minute a tick (the test ticks it), then hands the
    // row to the transfer without an address.
    void throughTheQueue()
    {
        RecipeHarness::setPeriods(5, 20000);
        FakeFourShared four;
        FakeFileFactory factory;
        RecipeHarness h({k4S, kFF});
        const QString link = four.addFile("1001", "a,b.zip", "first", 2, true);
        h.add(k4S, link);
        // No link is ready yet when the long wait ends.
        h.add(kFF, factory.addFile("1001", "slots.bin", "never"));
        factory.page("/file/1001/n/slots.bin", FakeFileFactory::noSlotsPage);
        h.add(kFF, factory.addFile("1002", "re,port.zip", "second", 2));

        h.start(k4S);
        h.start(kFF);
        QTRY_COMPARE(h.at(kFF, 0), QStringLiteral("Wait 5 Minutes"));
        h.tick(kFF, 5);
        QTRY_COMPARE(h.statuses(k4S) + h.statuses(kFF),
                     (QStringList{"Complete", "Error", "Complete"}));
        const QString waited = "Waiting,Starting...,Wait 2 Seconds,Wait 1 Seconds,Connecting...";
        QCOMPARE(h.trail(k4S, 0) + ' ' + h.trail(kFF, 1),
                 waited + ",Complete " + waited + ",Complete");
        QCOMPARE(h.trail(kFF, 0), "Waiting,Starting...,Wait 5 Minutes,Wait 4 Minutes,Wait 3 "
                                  "Minutes,Wait 2 Minutes,Wait 1 Minutes,Connecting...,Error");
        QCOMPARE(h.fields(k4S, 0, {Field::LinkURL, Field::LocalFile}), link + "|a,b.zip");
        QCOMPARE(h.fileIn("a,b.zip") + h.fileIn("report.zip"), QByteArray("firstsecond"));
        // With the link ready, the end of the wait went to the transfer, not
        // back to the page.
        QCOMPARE(four.requestLines(),
                 (QStringList{"GET /get/1001/a,b.zip.html", "GET /get/1001/a,b.zip.html",
                              "GET /download/1001/a,b.zip?tsid=1001"}));
        // Only a "/file" right behind the host changes, the host as written.
        QCOMPARE(FourSharedRecipe::downloadPageAddress(
                     "4SHARED.COM/File/x/4shared.com/files/y/file?4shared.com/file", "4shared.com"),
                 "4SHARED.COM/get/x/4shared.com/gets/y/file");
    }

    void failures_data() { FailureMatrix::addRows(steps()); }
    void failures()
    {
        FakeFourShared four;
        FakeFileFactory factory;
        const auto links = [](auto &site) {
            return QStringList{site.addFile("1", "b.bin", "no"), site.addFile("2", "g.bin", "ok")};
        };
        FailureMatrix::run(steps(), {{k4S, &four, links(four)}, {kFF, &factory, links(factory)}});
    }
};

QTEST_GUILESS_MAIN(TestFourSharedFileFactory)
#include "tst_fourshared.moc"
