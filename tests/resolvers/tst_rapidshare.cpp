#include "fakeprompts.h"
#include "fakerapidshare.h"
#include "list/downloadlist.h"
#include "list/sitetable.h"
#include "resolvers/rapidshare.h"
#include "sandbox.h"
#include "scheduling/sitequeues.h"
#include "system/logicaltimer.h"
#include "testserver.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTimer>
#include <QtTest>

#include <memory>

namespace {

// Stands for the queue's next start: counts the calls and leaves the row.
class NextLink : public SiteResolver
{
public:
    void resolve(SiteContext &) override { ++calls; }
    int calls = 0;
};

// The list, the real queues and RapidShare resolvers for the sites a test
// names, writing into a folder of the test's own.
struct Harness
{
    explicit Harness(const QString &folder, QList<int> sites = {Sites::RapidShare}) : dir(folder)
    {
        list.open();
        queues = std::make_unique<SiteQueues>(list, &prompts);
        for (int site : sites)
            queues->setResolver(site, std::make_unique<RapidShareResolver>(settings()));
        QObject::connect(&list, &DownloadList::fieldChanged, [this](int site, int index, Field f) {
            if (f == Field::Status)
                history[site].append(QStringLiteral("%1:%2").arg(index).arg(
                    list.childAt(site, index)->values[int(Field::Status)]));
        });
    }

    FolderSettings settings()
    {
        return FolderSettings{[this] { return dir; }, [this] { return createSubDir; }};
    }

    LinkRow *add(const QString &link, int site = Sites::RapidShare)
    {
        if (!list.addLinkToList(link, site, &prompts))
            return nullptr;
        return list.childAt(site, list.childCount(site) - 1);
    }

    static QString get(const LinkRow *row, Field f) { return row->values[int(f)]; }

    FakePrompts prompts;
    DownloadList list;
    std::unique_ptr<SiteQueues> queues;
    QString dir;
    int createSubDir = 1;
    QHash<int, QStringList> history;
};

QByteArray readFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QByteArray("<missing>");
    return file.readAll();
}

} // namespace

class TestRapidShare : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void init();

    void firstPage_data();
    void firstPage();
    void parsePage_data();
    void parsePage();
    void randomName();

    void linkToComplete();
    void failures_data();
    void failures();
    void stopDuringRequest_data();
    void stopDuringRequest();
    void timeOut();
    void longWaitFetchesAgain();
    void readyLinkSkipsTheResolver();
    void failureInFirstStepReachesCaller();
    void twoSitesPollAtOnce();

private:
    std::unique_ptr<Sandbox> m_sandbox;
    QString folder(const QString &name) { return m_sandbox->path(QStringLiteral("dl-") + name); }
};

void TestRapidShare::initTestCase()
{
    m_sandbox = std::make_unique<Sandbox>();
}

void TestRapidShare::init()
{
    LogicalTimer::clearRealPeriods();
    // Countdowns of a few milliseconds; the time-out and the minute timers
    // (the site's and the transfer's silence timer) far away.
    LogicalTimer::setRealPeriod(1000, 5);
    LogicalTimer::setRealPeriod(50000, 20000);
    LogicalTimer::setRealPeriod(60000, 3600000);
}

// ---- Reading the pages ----

void TestRapidShare::firstPage_data()
{
    using Kind = RapidShareResolver::FirstPage::Kind;
    QTest::addColumn<QString>("page");
    QTest::addColumn<int>("kind"); // -1: a run-time failure
    QTest::addColumn<QString>("address");

    const QString a = QStringLiteral("http://127.0.0.1:9/post/1/a");
    QTest::newRow("site's page") << QString::fromUtf8(FakeRapidShare::filePage(a, "a"))
                                 << int(Kind::Form) << a;
    QTest::newRow("any case") << "<FORM ID=\"FF\" ACTION=\"http://h/p\" METHOD=\"POST\">"
                              << int(Kind::Form) << "http://h/p";
    QTest::newRow("gone, two blanks")
        << "<p>The file could not be found.  Please check the download link.</p>"
           "<form id=\"ff\" action=\"x\" method=\"post\">"
        << int(Kind::FileGone) << "";
    QTest::newRow("one blank is no gone file")
        << "<p>The file could not be found. Please check the download link.</p>"
           "<form id=\"ff\" action=\"http://h/p\" method=\"post\">"
        << int(Kind::Form) << "http://h/p";
    QTest::newRow("no form") << QString::fromUtf8(FakeRapidShare::noFormPage()) << int(Kind::NoForm)
                             << "";
    QTest::newRow("other form") << "<form id=\"gg\" action=\"x\" method=\"post\">"
                                << int(Kind::NoForm) << "";
    QTest::newRow("no action") << "<form id=\"ff\" method=\"post\">" << int(Kind::NoForm) << "";
    QTest::newRow("no method") << "<form id=\"ff\" action=\"http://h/p\">" << int(Kind::NoForm)
                               << "";
    QTest::newRow("action before the form")
        << "action=\"x\" <form id=\"ff\" method=\"post\">" << int(Kind::NoForm) << "";
    QTest::newRow("no blank before method loses a character")
        << "<form id=\"ff\" action=\"http://h/p\"method=\"post\">" << int(Kind::Form)
        << "http://h/";
    QTest::newRow("two blanks keep the quote")
        << "<form id=\"ff\" action=\"http://h/p\"  method=\"post\">" << int(Kind::Form)
        << "http://h/p\"";
    QTest::newRow("empty action glued to method fails")
        << "<form id=\"ff\" action=\"\"method=\"post\">" << -1 << "";
}

void TestRapidShare::firstPage()
{
    QFETCH(QString, page);
    QFETCH(int, kind);
    QFETCH(QString, address);
    if (kind < 0) {
        QVERIFY_THROWS_EXCEPTION(ListFailure, RapidShareResolver::readFirstPage(page));
        return;
    }
    const auto first = RapidShareResolver::readFirstPage(page);
    QCOMPARE(int(first.kind), kind);
    QCOMPARE(first.formAddress, address);
}

void TestRapidShare::parsePage_data()
{
    QTest::addColumn<QString>("page");
    QTest::addColumn<QString>("link");
    QTest::addColumn<int>("createSubDir");
    QTest::addColumn<QString>("status");
    QTest::addColumn<QString>("wait");
    QTest::addColumn<QString>("directUrl");
    QTest::addColumn<QString>("localFile");
    QTest::addColumn<QString>("localFilePath");
    QTest::addColumn<QString>("fileSize");
    QTest::addColumn<QString>("errorDesc");
    QTest::addColumn<int>("interval"); // the countdown's; 0: not started
    QTest::addColumn<bool>("nextLink");

    const QString link = QStringLiteral("http://rs.test/files/77/report.pdf.html");
    const QString dl = QStringLiteral("http://rs.test/file/77/report.pdf");
    const QString page =
        QString::fromUtf8(FakeRapidShare::downloadPage(dl, 3, "123", "report.pdf"));
    const QString own = QStringLiteral("/dl/RapidShare Files");
    const QString old = QStringLiteral("old");

    QTest::newRow("site's page") << page << link << 1 << "Wait 3 Seconds"
                                 << "3" << dl << "report.pdf" << own << "123 KB" << old << 1000
                                 << false;
    QTest::newRow("shared folder") << page << link << 0 << "Wait 3 Seconds"
                                   << "3" << dl << "report.pdf"
                                   << "/dl"
                                   << "123 KB" << old << 1000 << false;
    QTest::newRow("no wait on the page")
        << "<form name=\"dlf\" action=\"http://h/f\">" << link << 1 << "Wait 0 Seconds"
        << "0"
        << "http://h/f"
        << "report.pdf" << own << "?" << old << 1000 << false;
    QTest::newRow("no download form keeps the address")
        << "var c=12;" << link << 1 << "Wait 12 Seconds"
        << "12" << old << "report.pdf" << own << "?" << old << 1000 << false;
    QTest::newRow("form without closing quote keeps the address")
        << "var c=1;<form name=\"dlf\" action=\"http://h/f" << link << 1 << "Wait 1 Seconds"
        << "1" << old << "report.pdf" << own << "?" << old << 1000 << false;
    QTest::newRow("any case in the markers")
        << "VAR C=4;<FORM NAME=\"DLF\" ACTION=\"http://h/F\">>|2 kb<" << link << 1
        << "Wait 4 Seconds"
        << "4"
        << "http://h/F"
        << "report.pdf" << own << "2 KB" << old << 1000 << false;
    QTest::newRow("size with decimals")
        << ">|1.5 KB<" << link << 1 << "Wait 0 Seconds"
        << "0" << old << "report.pdf" << own << "1.5 KB" << old << 1000 << false;
    QTest::newRow("size no number")
        << ">|abc KB<" << link << 1 << "Wait 0 Seconds"
        << "0" << old << "report.pdf" << own << "?" << old << 1000 << false;
    QTest::newRow("size too large for 32 bits") << ">|3000000 KB<" << link << 1 << "Error"
                                                << "0" << old << "report.pdf"
                                                << ""
                                                << "?" << old << 0 << true;
    QTest::newRow("gone") << QString::fromUtf8(FakeRapidShare::goneErrorPage()) << link << 1
                          << "Not Found"
                          << "0" << old << "?"
                          << ""
                          << "?"
                          << "The file could not be found, It may be deleted by the owner or "
                             "expired."
                          << 0 << true;
    QTest::newRow("minutes after a blank: always 5")
        << QString::fromUtf8(FakeRapidShare::minutesErrorPage("3 ")) << link << 1
        << "Wait 5 Minutes"
        << "300" << old << "?"
        << ""
        << "?" << old << 60000 << false;
    QTest::newRow("number glued to minutes")
        << QString::fromUtf8(FakeRapidShare::minutesErrorPage("12")) << link << 1
        << "Wait  12 Minutes"
        << "720" << old << "?"
        << ""
        << "?" << old << 60000 << false;
    QTest::newRow("word glued to minutes")
        << "<h1>Error</h1> wait xminutes" << link << 1 << "Wait 5 Minutes"
        << "300" << old << "?"
        << ""
        << "?" << old << 60000 << false;
    QTest::newRow("minutes without a blank before it reads on")
        << "<h1>Error</h1>5minutes var c=2;" << link << 1 << "Wait 2 Seconds"
        << "2" << old << "report.pdf" << own << "?" << old << 1000 << false;
    QTest::newRow("error heading alone reads on")
        << "<h1>ERROR</h1><p>Something else.</p>" << link << 1 << "Wait 0 Seconds"
        << "0" << old << "report.pdf" << own << "?" << old << 1000 << false;
    QTest::newRow("minutes at the very start fails")
        << "minutes <h1>Error</h1>" << link << 1 << "Error"
        << "0" << old << "?"
        << ""
        << "?" << old << 0 << true;
    QTest::newRow("link ending in a slash")
        << "var c=1;"
        << "http://rs.test/files/77/" << 1 << "Wait 1 Seconds"
        << "1" << old << "" << own << "?" << old << 1000 << false;
    QTest::newRow(".html taken out in any case")
        << "var c=1;"
        << "http://rs.test/a.HTML.b.html" << 1 << "Wait 1 Seconds"
        << "1" << old << "a.b" << own << "?" << old << 1000 << false;
    QTest::newRow("name cleaned") << "var c=1;"
                                  << "http://rs.test/x/ a:b*c?.zip" << 1 << "Wait 1 Seconds"
                                  << "1" << old << "abc.zip" << own << "?" << old << 1000 << false;
}

void TestRapidShare::parsePage()
{
    QFETCH(QString, page);
    QFETCH(QString, link);
    QFETCH(int, createSubDir);
    QFETCH(QString, status);
    QFETCH(QString, wait);
    QFETCH(QString, directUrl);
    QFETCH(QString, localFile);
    QFETCH(QString, localFilePath);
    QFETCH(QString, fileSize);
    QFETCH(QString, errorDesc);
    QFETCH(int, interval);
    QFETCH(bool, nextLink);

    LogicalTimer::setRealPeriod(1000, 3600000);
    Harness h(QStringLiteral("/dl"), {});
    h.createSubDir = createSubDir;
    auto next = std::make_unique<NextLink>();
    NextLink *nextLinkCalls = next.get();
    h.queues->setResolver(Sites::RapidShare, std::move(next));
    RapidShareResolver resolver(h.settings());

    LinkRow *row = h.add(link);
    h.add(QStringLiteral("http://rs.test/files/78/next.zip.html"));
    for (Field f : {Field::DirectURL, Field::ErrorDesc})
        h.list.setField(row, f, QStringLiteral("old"));
    h.list.setField(row, Field::Status, QStringLiteral("Starting..."));
    h.list.setField(row, Field::IsDownloading, QStringLiteral("1"));
    SiteContext &site = h.queues->context(Sites::RapidShare);
    site.cursor = h.list.getSiteRecords(Sites::RapidShare);

    resolver.parseRapidSharePage(site, page);

    QCOMPARE(Harness::get(row, Field::Status), status);
    QCOMPARE(Harness::get(row, Field::WaitTimeInSec), wait);
    QCOMPARE(Harness::get(row, Field::DirectURL), directUrl);
    QCOMPARE(Harness::get(row, Field::LocalFile), localFile);
    QCOMPARE(Harness::get(row, Field::LocalFilePath), localFilePath);
    QCOMPARE(Harness::get(row, Field::FileSize), fileSize);
    QCOMPARE(Harness::get(row, Field::ErrorDesc), errorDesc);
    QCOMPARE(site.timer->isEnabled(), interval != 0);
    if (interval)
        QCOMPARE(site.timer->interval(), interval);
    // Only a page that reached the countdown of seconds makes the link ready.
    QCOMPARE(site.bLinkReady, interval == 1000);
    QCOMPARE(nextLinkCalls->calls, nextLink ? 1 : 0);
}

void TestRapidShare::randomName()
{
    LogicalTimer::setRealPeriod(1000, 3600000);
    Harness h(QStringLiteral("/dl"), {});
    RapidShareResolver resolver(h.settings());
    SiteContext &site = h.queues->context(Sites::RapidShare);
    QSet<QString> names;
    static const QRegularExpression form(QStringLiteral("^Rapid ([0-9]{1,4})$"));
    for (int i = 0; i < 20; ++i) {
        LinkRow *row = h.add(QStringLiteral("nolinkslash%1").arg(i));
        site.cursor = h.list.getSiteRecords(Sites::RapidShare);
        site.cursor.moveLast();
        resolver.parseRapidSharePage(site, QStringLiteral("var c=1;"));
        const QString name = Harness::get(row, Field::LocalFile);
        QVERIFY2(form.match(name).hasMatch(), qPrintable(name));
        names.insert(name);
    }
    QVERIFY(names.size() > 1);
}

// ---- Links through the queue, the countdown and the transfer ----

void TestRapidShare::linkToComplete()
{
    TestServer server;
    QVERIFY(server.listen());
    FakeRapidShare site(server);
    const QByteArray first(3000, 'a');
    const QByteArray second = "second file";
    Harness h(folder("complete"));
    LinkRow *a = h.add(site.addFile("1001", "report.pdf", first, 2));
    LinkRow *b = h.add(site.addFile("1002", "notes.txt", second, 1));

    h.queues->startDownloadLinks(Sites::RapidShare, true);
    QTRY_COMPARE(Harness::get(b, Field::Status), QStringLiteral("Complete"));
    QCOMPARE(Harness::get(a, Field::Status), QStringLiteral("Complete"));

    const QString dir = h.dir + QStringLiteral("/RapidShare Files");
    QCOMPARE(Harness::get(a, Field::LocalFilePath), dir);
    QCOMPARE(Harness::get(a, Field::LocalFile), QStringLiteral("report.pdf"));
    QCOMPARE(Harness::get(a, Field::DirectURL),
             site.url(FakeRapidShare::filePath("1001", "report.pdf")));
    QCOMPARE(readFile(dir + QStringLiteral("/report.pdf")), first);
    QCOMPARE(readFile(dir + QStringLiteral("/notes.txt")), second);
    QCOMPARE(Harness::get(a, Field::IsDownloading), QStringLiteral("0"));

    // The countdown of the first row, then the second row began.
    const QStringList hist = h.history.value(Sites::RapidShare);
    const QStringList expectedStart{"0:Starting...", "0:Waiting", "0:Wait 2 Seconds",
                                    "0:Wait 1 Seconds", "0:Connecting..."};
    QCOMPARE(hist.mid(0, expectedStart.size()), expectedStart);
    QVERIFY(hist.indexOf("0:Complete") < hist.indexOf("1:Starting..."));

    // Page, post, file for each link; the post as a form carries the
    // session cookie of the link's page.
    const QList<TestServer::Request> requests = server.requests();
    QCOMPARE(requests.size(), 6);
    QCOMPARE(requests.at(0).path, FakeRapidShare::firstPath("1001", "report.pdf"));
    QCOMPARE(requests.at(0).method, QByteArray("GET"));
    const TestServer::Request post = requests.at(1);
    QCOMPARE(post.method, QByteArray("POST"));
    QCOMPARE(post.path, FakeRapidShare::postPath("1001", "report.pdf"));
    QCOMPARE(post.body, QByteArray("dl.start=Free"));
    QCOMPARE(post.header("Content-type"), QByteArray("application/x-www-form-urlencoded"));
    QCOMPARE(post.header("Content-length"), QByteArray("13"));
    QVERIFY(post.header("Cookie").contains("enc=1001"));
    QCOMPARE(requests.at(2).path, FakeRapidShare::filePath("1001", "report.pdf"));
    QCOMPARE(requests.at(3).path, FakeRapidShare::firstPath("1002", "notes.txt"));
    QCOMPARE(h.queues->isDownloading(Sites::RapidShare), false);
}

void TestRapidShare::failures_data()
{
    QTest::addColumn<int>("step");          // 0: the link's page, 1: the post
    QTest::addColumn<QByteArray>("answer"); // a page, or "status:<code>", or "closed"
    QTest::addColumn<QString>("status");
    QTest::addColumn<QString>("wait");
    QTest::addColumn<QString>("errorDesc");
    QTest::addColumn<bool>("nextLink");

    QTest::newRow("status 404 of the page") << 0 << QByteArray("status:404") << "Connection Error"
                                            << "0"
                                            << "" << true;
    QTest::newRow("page of a gone file") << 0 << FakeRapidShare::goneFirstPage() << "Not Found"
                                         << "0"
                                         << "" << true;
    QTest::newRow("page without the form")
        << 0 << FakeRapidShare::noFormPage() << "Connection Error"
        << "0"
        << "" << true;
    QTest::newRow("page closed unanswered") << 0 << QByteArray("closed") << "Connection Error"
                                            << "0"
                                            << "" << true;
    QTest::newRow("status 500 of the post") << 1 << QByteArray("status:500") << "Connection Error"
                                            << "0"
                                            << "" << true;
    QTest::newRow("post: file gone")
        << 1 << FakeRapidShare::goneErrorPage() << "Not Found"
        << "0"
        << "The file could not be found, It may be deleted by the owner or expired." << true;
    QTest::newRow("post: page failing to parse")
        << 1 << QByteArray("minutes <h1>Error</h1>") << "Error"
        << "0"
        << "" << true;
    QTest::newRow("post: wait minutes")
        << 1 << FakeRapidShare::minutesErrorPage("3 ") << "Wait 5 Minutes"
        << "300"
        << "" << false;
}

void TestRapidShare::failures()
{
    QFETCH(int, step);
    QFETCH(QByteArray, answer);
    QFETCH(QString, status);
    QFETCH(QString, wait);
    QFETCH(QString, errorDesc);
    QFETCH(bool, nextLink);

    TestServer server;
    QVERIFY(server.listen());
    FakeRapidShare site(server);
    Harness h(folder("failures"));
    LinkRow *a = h.add(site.addFile("2001", "bad.bin", "never"));
    LinkRow *b = h.add(site.addFile("2002", "good.bin", "good"));

    const QByteArray path = step == 0 ? FakeRapidShare::firstPath("2001", "bad.bin")
                                      : FakeRapidShare::postPath("2001", "bad.bin");
    if (answer.startsWith("status:"))
        server.setAnswer(path, TestServer::Answer::status(answer.mid(7).toInt(), "Failed"));
    else if (answer == "closed")
        server.setAnswer(path, TestServer::Answer::raw(QByteArray()));
    else
        server.setAnswer(path, FakeRapidShare::html(answer));

    h.queues->startDownloadLinks(Sites::RapidShare, true);
    if (nextLink)
        QTRY_COMPARE(Harness::get(b, Field::Status), QStringLiteral("Complete"));
    QCOMPARE(Harness::get(a, Field::Status), status);
    QCOMPARE(Harness::get(a, Field::WaitTimeInSec), wait);
    QCOMPARE(Harness::get(a, Field::ErrorDesc), errorDesc);
    if (!nextLink) {
        QTest::qWait(100);
        QCOMPARE(Harness::get(b, Field::Status), QStringLiteral("Waiting"));
        QCOMPARE(Harness::get(a, Field::Status), status);
        QCOMPARE(h.queues->siteTimer(Sites::RapidShare)->isEnabled(), true);
    }
    QVERIFY(!QFile::exists(h.dir + QStringLiteral("/RapidShare Files/bad.bin")));
}

void TestRapidShare::stopDuringRequest_data()
{
    QTest::addColumn<QByteArray>("method");
    QTest::newRow("during the GET") << QByteArray("GET");
    QTest::newRow("during the POST") << QByteArray("POST");
}

void TestRapidShare::stopDuringRequest()
{
    QFETCH(QByteArray, method);
    TestServer server;
    QVERIFY(server.listen());
    FakeRapidShare site(server);
    Harness h(folder("stop"));
    LinkRow *a = h.add(site.addFile("3001", "held.bin", "never"));
    LinkRow *b = h.add(site.addFile("3002", "next.bin", "next"));
    const QByteArray path = method == "GET" ? FakeRapidShare::firstPath("3001", "held.bin")
                                            : FakeRapidShare::postPath("3001", "held.bin");
    server.setAnswer(path, TestServer::Answer::silence());
    QObject::connect(
        &server, &TestServer::requestReceived, &server, [&](const TestServer::Request &r) {
            if (r.path == path)
                QTimer::singleShot(30, [&] { h.queues->stopDownloads(Sites::RapidShare); });
        });

    h.queues->startDownloadLinks(Sites::RapidShare, true);
    // The start returns once the poll has seen the stop.
    QCOMPARE(Harness::get(a, Field::Status), QStringLiteral("Stopped"));
    QCOMPARE(Harness::get(a, Field::WaitTimeInSec), QStringLiteral("0"));
    QTest::qWait(100);
    QCOMPARE(Harness::get(a, Field::Status), QStringLiteral("Stopped"));
    QCOMPARE(Harness::get(b, Field::Status), QStringLiteral("Waiting"));
    QCOMPARE(h.queues->siteTimer(Sites::RapidShare)->isEnabled(), false);
    QCOMPARE(server.requests().last().method, method);
}

void TestRapidShare::timeOut()
{
    LogicalTimer::setRealPeriod(50000, 200);
    TestServer server;
    QVERIFY(server.listen());
    FakeRapidShare site(server);
    Harness h(folder("timeout"));
    LinkRow *a = h.add(site.addFile("4001", "slow.bin", "never"));
    LinkRow *b = h.add(site.addFile("4002", "next.bin", "next one"));
    server.setAnswer(FakeRapidShare::postPath("4001", "slow.bin"), TestServer::Answer::silence());

    QElapsedTimer clock;
    clock.start();
    h.queues->startDownloadLinks(Sites::RapidShare, true);
    QTRY_COMPARE(Harness::get(b, Field::Status), QStringLiteral("Complete"));
    QCOMPARE(Harness::get(a, Field::Status), QStringLiteral("Connection Error"));
    QCOMPARE(Harness::get(a, Field::WaitTimeInSec), QStringLiteral("0"));
    QVERIFY(clock.elapsed() >= 190);
    QCOMPARE(readFile(h.dir + QStringLiteral("/RapidShare Files/next.bin")),
             QByteArray("next one"));
}

void TestRapidShare::longWaitFetchesAgain()
{
    // The site asks for minutes; the countdown runs a minute per tick and
    // then the link is fetched again, as no link was ready before.
    LogicalTimer::setRealPeriod(60000, 20);
    TestServer server;
    QVERIFY(server.listen());
    FakeRapidShare site(server);
    Harness h(folder("minutes"));
    h.createSubDir = 0;
    LinkRow *a = h.add(site.addFile("5001", "later.bin", "at last"));
    const QByteArray post = FakeRapidShare::postPath("5001", "later.bin");
    const QString direct = site.url(FakeRapidShare::filePath("5001", "later.bin"));
    server.setAnswers(
        post, {FakeRapidShare::html(FakeRapidShare::minutesErrorPage("3 ")),
               FakeRapidShare::html(FakeRapidShare::downloadPage(direct, 1, "1", "later.bin"))});
    // Once fetched again, the minute timers go back to their real length so
    // the transfer's silence timer stays out of the way.
    int gets = 0;
    QObject::connect(&server, &TestServer::requestReceived, &server,
                     [&](const TestServer::Request &r) {
                         if (r.method == "GET" && r.path.startsWith("/files/") && ++gets == 2)
                             LogicalTimer::setRealPeriod(60000, 3600000);
                     });

    h.queues->startDownloadLinks(Sites::RapidShare, true);
    QCOMPARE(Harness::get(a, Field::Status), QStringLiteral("Wait 5 Minutes"));
    QTRY_COMPARE(Harness::get(a, Field::Status), QStringLiteral("Complete"));
    QCOMPARE(gets, 2);
    const QStringList hist = h.history.value(Sites::RapidShare);
    const QStringList minutes{"0:Wait 5 Minutes", "0:Wait 4 Minutes", "0:Wait 3 Minutes",
                              "0:Wait 2 Minutes", "0:Wait 1 Minutes", "0:Waiting",
                              "0:Wait 1 Seconds", "0:Connecting..."};
    const qsizetype at = hist.indexOf("0:Wait 5 Minutes");
    QVERIFY(at >= 0);
    QCOMPARE(hist.mid(at, minutes.size()), minutes);
    QCOMPARE(readFile(h.dir + QStringLiteral("/later.bin")), QByteArray("at last"));
}

void TestRapidShare::readyLinkSkipsTheResolver()
{
    // Once a link has been ready, a row whose minutes run out goes straight
    // to the transfer with the address it has; here none, so it fails there.
    TestServer server;
    QVERIFY(server.listen());
    FakeRapidShare site(server);
    Harness h(folder("ready"));
    LinkRow *a = h.add(site.addFile("6001", "first.bin", "first"));
    LinkRow *b = h.add(site.addFile("6002", "second.bin", "second"));
    LinkRow *c = h.add(site.addFile("6003", "third.bin", "third"));
    server.setAnswer(FakeRapidShare::postPath("6002", "second.bin"),
                     FakeRapidShare::html(FakeRapidShare::minutesErrorPage("3 ")));
    h.queues->startDownloadLinks(Sites::RapidShare, true);
    QTRY_COMPARE(Harness::get(b, Field::Status), QStringLiteral("Wait 5 Minutes"));
    QCOMPARE(Harness::get(a, Field::Status), QStringLiteral("Complete"));

    LogicalTimer *timer = h.queues->siteTimer(Sites::RapidShare);
    LogicalTimer::setRealPeriod(60000, 10);
    timer->setEnabled(false);
    timer->setEnabled(true);
    QTRY_COMPARE(Harness::get(c, Field::Status), QStringLiteral("Complete"));
    LogicalTimer::setRealPeriod(60000, 3600000);
    QCOMPARE(Harness::get(b, Field::Status), QStringLiteral("Error"));
    int secondPages = 0;
    for (const auto &r : server.requests())
        secondPages += r.path == FakeRapidShare::firstPath("6002", "second.bin") ? 1 : 0;
    QCOMPARE(secondPages, 1);
}

void TestRapidShare::failureInFirstStepReachesCaller()
{
    TestServer server;
    QVERIFY(server.listen());
    FakeRapidShare site(server);
    Harness h(folder("unguarded"));
    LinkRow *a = h.add(site.addFile("7001", "odd.bin", "odd"));
    h.add(site.addFile("7002", "next.bin", "next"));
    server.setAnswer(FakeRapidShare::firstPath("7001", "odd.bin"),
                     FakeRapidShare::html("<form id=\"ff\" action=\"\"method=\"post\">"));
    QVERIFY_THROWS_EXCEPTION(std::exception, h.queues->startDownloadLinks(Sites::RapidShare, true));
    QCOMPARE(Harness::get(a, Field::Status), QStringLiteral("Starting..."));
    QCOMPARE(h.list.childAt(Sites::RapidShare, 1)->values[int(Field::Status)],
             QStringLiteral("Waiting"));
}

void TestRapidShare::twoSitesPollAtOnce()
{
    // The RapidShare recipe also stands in for a second site. The second
    // site's whole run happens inside the first one's wait for its page.
    const int other = Sites::FourShared;
    TestServer server;
    QVERIFY(server.listen());
    FakeRapidShare site(server);
    Harness h(folder("two"), {Sites::RapidShare, other});
    LinkRow *a = h.add(site.addFile("8001", "one.bin", "one"), Sites::RapidShare);
    LinkRow *b = h.add(site.addFile("8002", "two.bin", "two"), other);
    server.setAnswer(
        FakeRapidShare::firstPath("8001", "one.bin"),
        FakeRapidShare::html(FakeRapidShare::filePage(
                                 site.url(FakeRapidShare::postPath("8001", "one.bin")), "one.bin"))
            .delayFirst(400));
    QTimer::singleShot(50, [&] { h.queues->startDownloadLinks(other, true); });

    h.queues->startDownloadLinks(Sites::RapidShare, true);
    QTRY_COMPARE(Harness::get(a, Field::Status), QStringLiteral("Complete"));
    QTRY_COMPARE(Harness::get(b, Field::Status), QStringLiteral("Complete"));
    const QString dir = h.dir + QStringLiteral("/RapidShare Files");
    QCOMPARE(readFile(dir + QStringLiteral("/one.bin")), QByteArray("one"));
    QCOMPARE(readFile(dir + QStringLiteral("/two.bin")), QByteArray("two"));

    // The second site's page and post came while the first waited.
    QStringList order;
    for (const auto &r : server.requests())
        order << QString::fromLatin1(r.method + ' ' + r.pathOnly());
    QCOMPARE(order.at(0), QStringLiteral("GET /files/8001/one.bin.html"));
    QCOMPARE(order.at(1), QStringLiteral("GET /files/8002/two.bin.html"));
    QCOMPARE(order.at(2), QStringLiteral("POST /post/8002/two.bin"));
    QVERIFY(order.indexOf("POST /post/8001/one.bin") > 2);
    QCOMPARE(h.queues->context(other).bLinkReady, true);
    QCOMPARE(h.queues->context(Sites::RapidShare).bLinkReady, true);
}

QTEST_GUILESS_MAIN(TestRapidShare)
#include "tst_rapidshare.moc"
