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

// What a page of the post leaves in the row. A wait of seconds starts the
// countdown at 1000, a wait of minutes at 60000; "Error" and "Not Found" go on
// to the next link.
struct Parsed
{
    QString page;
    QString link = QStringLiteral("http://rs.test/files/77/report.pdf.html");
    int createSubDir = 1;
    QString status, wait, directUrl = QStringLiteral("old");
    QString localFile = QStringLiteral("report.pdf");
    QString localFilePath = QStringLiteral("/dl/RapidShare Files");
    QString fileSize = QStringLiteral("?"), errorDesc = QStringLiteral("old");
};

} // namespace

class TestRapidShare : public QObject
{
    Q_OBJECT
private slots:

    void initTestCase() { m_sandbox = std::make_unique<Sandbox>(); }

    void init()
    {
        LogicalTimer::clearRealPeriods();
        // Countdowns of a few milliseconds; the time-out and the minute timers
        // (the site's and the transfer's silence timer) far away.
        LogicalTimer::setRealPeriod(1000, 5);
        LogicalTimer::setRealPeriod(50000, 20000);
        LogicalTimer::setRealPeriod(60000, 3600000);
    }

    // ---- Reading the pages ----

    void firstPage_data()
    {
        using Kind = RapidShareResolver::FirstPage::Kind;
        QTest::addColumn<QString>("page");
        QTest::addColumn<int>("kind"); // -1: a run-time failure
        QTest::addColumn<QString>("address");

        const QString a = QStringLiteral("http://127.0.0.1:9/post/1/a");
        QTest::newRow("site's page")
            << QString::fromUtf8(FakeRapidShare::filePage(a, "a")) << int(Kind::Form) << a;
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
        QTest::newRow("no form") << QString::fromUtf8(FakeRapidShare::noFormPage())
                                 << int(Kind::NoForm) << "";
        QTest::newRow("other form")
            << "<form id=\"gg\" action=\"x\" method=\"post\">" << int(Kind::NoForm) << "";
        QTest::newRow("no action") << "<form id=\"ff\" method=\"post\">" << int(Kind::NoForm) << "";
        QTest::newRow("no method")
            << "<form id=\"ff\" action=\"http://h/p\">" << int(Kind::NoForm) << "";
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

    void firstPage()
    {
        QFETCH(QString, page);
        QFETCH(int, kind);
        QFETCH(QString, address);
        if (kind < 0) {
            QVERIFY_THROWS_EXCEPTION(RuntimeFailure, RapidShareResolver::readFirstPage(page));
            return;
        }
        const auto first = RapidShareResolver::readFirstPage(page);
        QCOMPARE(int(first.kind), kind);
        QCOMPARE(first.formAddress, address);
    }

    void parsePage_data()
    {
        QTest::addColumn<QStringList>("row"); // the fields of Parsed in their order
        auto row = [](const char *name, const Parsed &p) {
            QTest::newRow(name) << QStringList{
                p.page,      p.link,          QString::number(p.createSubDir),
                p.status,    p.wait,          p.directUrl,
                p.localFile, p.localFilePath, p.fileSize,
                p.errorDesc};
        };
        const QString dl = QStringLiteral("http://rs.test/file/77/report.pdf");
        const QString page =
            QString::fromUtf8(FakeRapidShare::downloadPage(dl, 3, "123", "report.pdf"));
        const QString gone = QString::fromUtf8(FakeRapidShare::goneErrorPage());
        auto minutes = [](const char *text) {
            return QString::fromUtf8(FakeRapidShare::minutesErrorPage(text));
        };

        row("site's page", {.page = page,
                            .status = "Wait 3 Seconds",
                            .wait = "3",
                            .directUrl = dl,
                            .fileSize = "123 KB"});
        row("shared folder", {.page = page,
                              .createSubDir = 0,
                              .status = "Wait 3 Seconds",
                              .wait = "3",
                              .directUrl = dl,
                              .localFilePath = "/dl",
                              .fileSize = "123 KB"});
        row("no wait on the page", {.page = "<form name=\"dlf\" action=\"http://h/f\">",
                                    .status = "Wait 0 Seconds",
                                    .wait = "0",
                                    .directUrl = "http://h/f"});
        row("no download form keeps the address",
            {.page = "var c=12;", .status = "Wait 12 Seconds", .wait = "12"});
        row("form without closing quote keeps the address",
            {.page = "var c=1;<form name=\"dlf\" action=\"http://h/f",
             .status = "Wait 1 Seconds",
             .wait = "1"});
        row("any case in the markers",
            {.page = "VAR C=4;<FORM NAME=\"DLF\" ACTION=\"http://h/F\">>|2 kb<",
             .status = "Wait 4 Seconds",
             .wait = "4",
             .directUrl = "http://h/F",
             .fileSize = "2 KB"});
        row("size with decimals",
            {.page = ">|1.5 KB<", .status = "Wait 0 Seconds", .wait = "0", .fileSize = "1.5 KB"});
        row("size no number", {.page = ">|abc KB<", .status = "Wait 0 Seconds", .wait = "0"});
        row("size too large for 32 bits",
            {.page = ">|3000000 KB<", .status = "Error", .wait = "0", .localFilePath = ""});
        row("gone", {.page = gone,
                     .status = "Not Found",
                     .wait = "0",
                     .localFile = "?",
                     .localFilePath = "",
                     .errorDesc = "The file could not be found, It may be deleted by the owner or "
                                  "expired."});
        row("minutes after a blank: always 5", {.page = minutes("3 "),
                                                .status = "Wait 5 Minutes",
                                                .wait = "300",
                                                .localFile = "?",
                                                .localFilePath = ""});
        row("number glued to minutes", {.page = minutes("12"),
                                        .status = "Wait  12 Minutes",
                                        .wait = "720",
                                        .localFile = "?",
                                        .localFilePath = ""});
        row("word glued to minutes", {.page = "<h1>Error</h1> wait xminutes",
                                      .status = "Wait 5 Minutes",
                                      .wait = "300",
                                      .localFile = "?",
                                      .localFilePath = ""});
        row("minutes without a blank before it reads on",
            {.page = "<h1>Error</h1>5minutes var c=2;", .status = "Wait 2 Seconds", .wait = "2"});
        row("error heading alone reads on", {.page = "<h1>ERROR</h1><p>Something else.</p>",
                                             .status = "Wait 0 Seconds",
                                             .wait = "0"});
        row("minutes at the very start fails", {.page = "minutes <h1>Error</h1>",
                                                .status = "Error",
                                                .wait = "0",
                                                .localFile = "?",
                                                .localFilePath = ""});
        row("link ending in a slash", {.page = "var c=1;",
                                       .link = "http://rs.test/files/77/",
                                       .status = "Wait 1 Seconds",
                                       .wait = "1",
                                       .localFile = ""});
        row(".html taken out in any case", {.page = "var c=1;",
                                            .link = "http://rs.test/a.HTML.b.html",
                                            .status = "Wait 1 Seconds",
                                            .wait = "1",
                                            .localFile = "a.b"});
        row("name cleaned", {.page = "var c=1;",
                             .link = "http://rs.test/x/ a:b*c?.zip",
                             .status = "Wait 1 Seconds",
                             .wait = "1",
                             .localFile = "abc.zip"});
    }

    void parsePage()
    {
        QFETCH(QStringList, row);
        const QString status = row.at(3);
        const bool seconds = status.endsWith(QLatin1String(" Seconds"));
        const bool minutes = status.endsWith(QLatin1String(" Minutes"));

        LogicalTimer::setRealPeriod(1000, 3600000);
        Harness h(QStringLiteral("/dl"), {});
        h.createSubDir = row.at(2).toInt();
        auto next = std::make_unique<NextLink>();
        NextLink *nextLinkCalls = next.get();
        h.queues->setResolver(Sites::RapidShare, std::move(next));
        RapidShareResolver resolver(h.settings());

        LinkRow *link = h.add(row.at(1));
        h.add(QStringLiteral("http://rs.test/files/78/next.zip.html"));
        for (Field f : {Field::DirectURL, Field::ErrorDesc})
            h.list.setField(link, f, QStringLiteral("old"));
        h.list.setField(link, Field::Status, QStringLiteral("Starting..."));
        h.list.setField(link, Field::IsDownloading, QStringLiteral("1"));
        SiteContext &site = h.queues->context(Sites::RapidShare);
        site.cursor = h.list.getSiteRecords(Sites::RapidShare);

        resolver.parseRapidSharePage(site, row.at(0));

        QStringList written;
        for (Field f : {Field::Status, Field::WaitTimeInSec, Field::DirectURL, Field::LocalFile,
                        Field::LocalFilePath, Field::FileSize, Field::ErrorDesc})
            written << Harness::get(link, f);
        QCOMPARE(written, row.mid(3));
        QCOMPARE(site.timer->isEnabled(), seconds || minutes);
        if (seconds || minutes)
            QCOMPARE(site.timer->interval(), seconds ? 1000 : 60000);
        // Only a page that reached the countdown of seconds makes the link ready.
        QCOMPARE(site.bLinkReady, seconds);
        QCOMPARE(nextLinkCalls->calls, seconds || minutes ? 0 : 1);
    }

    void randomName()
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

    void linkToComplete()
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

    void failures_data()
    {
        QTest::addColumn<int>("step");          // 0: the link's page, 1: the post
        QTest::addColumn<QByteArray>("answer"); // a page, "status:<code>", "closed" or "silent"
        QTest::addColumn<QString>("status");
        QTest::addColumn<QString>("wait");
        QTest::addColumn<QString>("errorDesc");
        QTest::addColumn<bool>("nextLink");
        auto row = [](const char *name, int step, const QByteArray &answer, const char *status,
                      const char *wait, const char *errorDesc, bool nextLink) {
            QTest::newRow(name) << step << answer << QString(status) << QString(wait)
                                << QString(errorDesc) << nextLink;
        };

        row("status 404 of the page", 0, "status:404", "Connection Error", "0", "", true);
        row("page of a gone file", 0, FakeRapidShare::goneFirstPage(), "Not Found", "0", "", true);
        row("page without the form", 0, FakeRapidShare::noFormPage(), "Connection Error", "0", "",
            true);
        row("page closed unanswered", 0, "closed", "Connection Error", "0", "", true);
        row("status 500 of the post", 1, "status:500", "Connection Error", "0", "", true);
        row("post: file gone", 1, FakeRapidShare::goneErrorPage(), "Not Found", "0",
            "The file could not be found, It may be deleted by the owner or expired.", true);
        row("post: page failing to parse", 1, "minutes <h1>Error</h1>", "Error", "0", "", true);
        row("post: wait minutes", 1, FakeRapidShare::minutesErrorPage("3 "), "Wait 5 Minutes",
            "300", "", false);
        // The shared time-out ends a post that is never answered.
        row("post unanswered", 1, "silent", "Connection Error", "0", "", true);
    }

    void failures()
    {
        QFETCH(int, step);
        QFETCH(QByteArray, answer);
        QFETCH(QString, status);
        QFETCH(QString, wait);
        QFETCH(QString, errorDesc);
        QFETCH(bool, nextLink);
        if (answer == "silent")
            LogicalTimer::setRealPeriod(50000, 200);

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
        else if (answer == "silent")
            server.setAnswer(path, TestServer::Answer::silence());
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

    void stopDuringRequest_data()
    {
        QTest::addColumn<QByteArray>("method");
        QTest::newRow("during the GET") << QByteArray("GET");
        QTest::newRow("during the POST") << QByteArray("POST");
    }

    void stopDuringRequest()
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

    void longWaitFetchesAgain()
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
        server.setAnswers(post, {FakeRapidShare::html(FakeRapidShare::minutesErrorPage("3 ")),
                                 FakeRapidShare::html(
                                     FakeRapidShare::downloadPage(direct, 1, "1", "later.bin"))});
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

    void readyLinkSkipsTheResolver()
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

    void failureInFirstStepReachesCaller()
    {
        TestServer server;
        QVERIFY(server.listen());
        FakeRapidShare site(server);
        Harness h(folder("unguarded"));
        LinkRow *a = h.add(site.addFile("7001", "odd.bin", "odd"));
        h.add(site.addFile("7002", "next.bin", "next"));
        server.setAnswer(FakeRapidShare::firstPath("7001", "odd.bin"),
                         FakeRapidShare::html("<form id=\"ff\" action=\"\"method=\"post\">"));
        QVERIFY_THROWS_EXCEPTION(std::exception,
                                 h.queues->startDownloadLinks(Sites::RapidShare, true));
        QCOMPARE(Harness::get(a, Field::Status), QStringLiteral("Starting..."));
        QCOMPARE(h.list.childAt(Sites::RapidShare, 1)->values[int(Field::Status)],
                 QStringLiteral("Waiting"));
    }

    void twoSitesPollAtOnce()
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
        server.setAnswer(FakeRapidShare::firstPath("8001", "one.bin"),
                         FakeRapidShare::html(
                             FakeRapidShare::filePage(
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

private:
    std::unique_ptr<Sandbox> m_sandbox;
    QString folder(const QString &name) { return m_sandbox->path(QStringLiteral("dl-") + name); }
};

QTEST_GUILESS_MAIN(TestRapidShare)
#include "tst_rapidshare.moc"
