#include "failurematrix.h"
#include "fakefilefactory.h"
#include "fakefourshared.h"
#include "recipeharness.h"
#include "resolvers/filefactory.h"
#include "resolvers/fourshared.h"
#include "sandbox.h"
#include "system/logicaltimer.h"

#include <QtTest>

namespace {

constexpr int k4S = Sites::FourShared;
constexpr int kFF = Sites::FileFactory;
using Step = FailureMatrix::Step;
const QString kBusy = "<p>Server busy.</p>";

// The requests of each recipe for the first of its matrix's links, with the
// site's own pages that end a run there.
QList<Step> fourSharedSteps()
{
    // A bad status leaves the queue on the row.
    return {Step{
        .name = "page",
        .path = FakeFourShared::getPath("2001", "bad.bin"),
        .badStatusNextLink = false,
        .pages = {{"not valid", "The file link that you requested is not valid.", "Not Found|0|"},
                  {"twice without seconds", kBusy, "Error|0|"},
                  {"no countdown", "Wait 40 seconds.", "Starting...|0|", false},
                  {"no address", FakeFourShared::downloadPage("", "20"), "ERROR|0|", false},
                  {"no link text", "<b>20</b> seconds...<a href='/x'>Sign up</a>", "Error|0|"}}}};
}

QList<Step> fileFactorySteps()
{
    const QString far(33000, '-'); // what follows stands behind position 32,767
    return {Step{.name = "page",
                 .path = FakeFileFactory::linkPath("2001", "bad.bin"),
                 .pages = {{"gone", FakeFileFactory::gonePage, "Not Found|0|"},
                           {"gone, far down", far + FakeFileFactory::gonePage, "Not Found|0|"},
                           {"no link on the button", "alt=\"Download Now\"", "Not Found|0|"},
                           {"button far down", far + FakeFileFactory::firstPage("dlf/2001"),
                            "Connection Error|0|"}}},
            Step{.name = "button page",
                 .path = FakeFileFactory::buttonPath("2001"),
                 .pages = {{"no download link", "<p>Nothing here</p>", "Error|0|", false},
                           {"countdown cut off", "downloadLink href=\"h/f\" countdown\">9",
                            "Error|0|"}}}};
}

} // namespace

class TestFourSharedFileFactory : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { m_sandbox = std::make_unique<Sandbox>(); }
    void init() { RecipeHarness::setPeriods(5, 20000); }

    // The folder is "/dl" throughout.
    void fourSharedPage_data()
    {
        QTest::addColumn<QString>("page");
        QTest::addColumn<QString>("reading");
        const QString tail =
            " Seconds; WaitTimeInSec=%1; LocalFilePath=/dl; ready => countdown 1000";
        QTest::newRow("word for a wait, no tsid: no name")
            << FakeFourShared::downloadPage("s/f", "soon")
            << "DirectURL=s/f; Status=Wait 45" + tail.arg(45);
        QTest::newRow("any case, tsid without a slash: no name")
            << "<B>3</B> SECONDS...<a href='f?tsid=1'>CLICK HERE TO DOWNLOAD THIS FILE"
            << "DirectURL=f?tsid=1; Status=Wait 3" + tail.arg(3);
    }
    void fourSharedPage()
    {
        QFETCH(QString, page);
        QFETCH(QString, reading);
        QCOMPARE(FourSharedRecipe::readDownloadPage(page, "/dl").value_or(Reading()).toString(),
                 reading);
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

        h.queues->startDownloadLinks(k4S, true);
        QTRY_COMPARE(h.statuses(k4S), (QStringList{"Complete", "Complete"}));
        QCOMPARE(h.history(k4S, 0), (QStringList{"Waiting", "Starting...", "Wait 2 Seconds",
                                                 "Wait 1 Seconds", "Connecting...", "Complete"}));
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

    void fourSharedFailures_data() { FailureMatrix::addRows(fourSharedSteps()); }
    void fourSharedFailures()
    {
        FakeFourShared fake;
        FailureMatrix::run(
            k4S, fourSharedSteps(), fake,
            {fake.addFile("2001", "bad.bin", "never"), fake.addFile("2002", "good.bin", "good")});
    }

    void fileFactoryPage_data()
    {
        QTest::addColumn<QString>("page");
        QTest::addColumn<QString>("direct");  // the row's DirectURL before
        QTest::addColumn<QString>("reading"); // the link ends in "/a,b.zip", the folder is "/dl"
        const QString tail = "LocalFilePath=/dl; Status=Wait %1 Seconds; WaitTimeInSec=%1; ready "
                             "=> countdown 1000";
        QTest::newRow("try later") << FakeFileFactory::tryLaterPage << ""
                                   << "Status=Wait 5 Minutes; WaitTimeInSec=300; not ready => "
                                      "countdown 1000";
        QTest::newRow("no link: the row's address, no countdown")
            << "<p>x</p>"
            << "h/x.bin"
            << "LocalFile=x.bin; " + tail.arg(30);
        QTest::newRow("address ending in a slash")
            << FakeFileFactory::downloadPage("h/d/", "1") << ""
            << "DirectURL=h/d/; LocalFile=; " + tail.arg(1);
        QTest::newRow("quote looked for two places in, colon in the countdown")
            << "downloadLink href=\"a\">go class=\"c\" countdown\">0:30</"
            << ""
            << "DirectURL=a\">go class=; LocalFile=ab.zip; " + tail.arg(30);
    }
    void fileFactoryPage()
    {
        QFETCH(QString, page);
        QFETCH(QString, direct);
        QFETCH(QString, reading);
        QCOMPARE(FileFactoryRecipe::readDownloadPage(page, "ff/a,b.zip", direct, "/dl").toString(),
                 reading);
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

        h.queues->startDownloadLinks(kFF, true);
        QTRY_COMPARE(h.at(kFF, 1), QStringLiteral("Wait 5 Minutes"));
        for (int tick = 0; tick < 5; ++tick)
            emit h.queues->siteTimer(kFF)->timeout();
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

    void fileFactoryFailures_data() { FailureMatrix::addRows(fileFactorySteps()); }
    void fileFactoryFailures()
    {
        FakeFileFactory fake;
        FailureMatrix::run(
            kFF, fileFactorySteps(), fake,
            {fake.addFile("2001", "bad.bin", "never"), fake.addFile("2002", "good.bin", "good")});
    }

private:
    std::unique_ptr<Sandbox> m_sandbox;
};

QTEST_GUILESS_MAIN(TestFourSharedFileFactory)
#include "tst_fourshared.moc"
