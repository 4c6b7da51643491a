#include "fakeprompts.h"
#include "list/downloadlist.h"
#include "resolvers/resolverframe.h"
#include "resolvers/textpos.h"
#include "resolvers/xmlhttprequest.h"
#include "sandbox.h"
#include "scheduling/sitequeues.h"
#include "system/logicaltimer.h"
#include "testserver.h"

#include <QElapsedTimer>
#include <QNetworkAccessManager>
#include <QNetworkCookieJar>
#include <QTcpServer>
#include <QTimer>
#include <QtTest>

#include <ctime>
#include <memory>

namespace {

// Posts itself an event each time one is delivered, so it counts the passes
// through the event queue; it sets a flag once a given count is reached.
class PumpCounter : public QObject
{
public:
    int count = 0;
    int flagAt = -1;
    bool *flag = nullptr;
    bool running = true;

    void begin() { QCoreApplication::postEvent(this, new QEvent(QEvent::User)); }

protected:
    void customEvent(QEvent *) override
    {
        if (!running)
            return;
        ++count;
        if (count == flagAt && flag)
            *flag = true;
        QCoreApplication::postEvent(this, new QEvent(QEvent::User));
    }
};

// A list with one RapidShare row and the queues over it, for the poll and the
// outcomes. No resolver is registered: going on to the next link leaves the
// next row as it is, and the test sees what the outcome wrote.
struct Frame
{
    Frame()
    {
        list.open();
        queues = std::make_unique<SiteQueues>(list, &prompts);
        list.addLinkToList(QStringLiteral("http://example.test/files/1/a.bin"), 1, &prompts);
        site().cursor = list.getSiteRecords(1);
    }
    SiteContext &site() { return queues->context(1); }
    // The first row as the list holds it; the cursor moves on with the queue.
    QString field(Field f) { return list.childAt(1, 0)->values[int(f)]; }
    void back() { site().cursor = list.getSiteRecords(1); }

    FakePrompts prompts;
    DownloadList list;
    std::unique_ptr<SiteQueues> queues;
};

// Sends a GET for `path` of the server.
void send(XmlHttpRequest &request, const TestServer &server, const char *path)
{
    request.open(QStringLiteral("GET"), server.url(QString::fromLatin1(path)));
    request.send();
}

} // namespace

class TestResolverFrame : public QObject
{
    Q_OBJECT
private slots:

    void initTestCase() { m_sandbox = std::make_unique<Sandbox>(); }

    void init()
    {
        LogicalTimer::clearRealPeriods();
        LogicalTimer::setRealPeriod(1000, 3600000);
        LogicalTimer::setRealPeriod(60000, 3600000);
        LogicalTimer::setRealPeriod(50000, 3600000);
    }

    // ---- Text positions ----

    void find_data()
    {
        QTest::addColumn<bool>("back");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("what");
        QTest::addColumn<int>("start");
        QTest::addColumn<int>("expected"); // -1: a run-time failure
        auto row = [](const char *name, bool back, const char *text, const char *what, int start,
                      int expected) {
            QTest::newRow(name) << back << QString(text) << QString(what) << start << expected;
        };
        row("first", false, "abcabc", "abc", 1, 1);
        row("from a later start", false, "abcabc", "abc", 2, 4);
        row("ignores case", false, "<FORM ID=\"ff\">", "form id=\"FF\"", 1, 2);
        row("missing", false, "abc", "x", 1, 0);
        row("start at the last character", false, "abc", "c", 3, 3);
        row("start behind the text", false, "abc", "c", 4, 0);
        row("empty marker is found at the start", false, "abc", "", 2, 2);
        row("start 0 fails", false, "abc", "a", 0, -1);
        row("negative start fails", false, "abc", "a", -3, -1);
        // Backwards; start -1 is the end of the text.
        row("back: last in the text", true, "a/b/c", "/", -1, 4);
        row("back: none", true, "abc", "/", -1, 0);
        row("back: from a start", true, "a b c minutes", " ", 5, 4);
        row("back: the start itself", true, "a b c", " ", 4, 4);
        row("back: match must end by the start", true, "abc abc", "abc", 6, 1);
        row("back: ignores case", true, "xABx", "ab", -1, 2);
        row("back: start behind the text", true, "abc", "a", 9, 0);
        row("back: marker longer than the start", true, "abc", "abc", 2, 0);
        row("back: start 0 fails", true, "abc", "a", 0, -1);
        row("back: start -2 fails", true, "abc", "a", -2, -1);
    }

    void find()
    {
        QFETCH(bool, back);
        QFETCH(QString, text);
        QFETCH(QString, what);
        QFETCH(int, start);
        QFETCH(int, expected);
        auto search = [&] {
            return back ? TextPos::findBack(text, what, start) : TextPos::find(text, what, start);
        };
        if (expected < 0)
            QVERIFY_THROWS_EXCEPTION(RuntimeFailure, search());
        else
            QCOMPARE(search(), expected);
    }

    void span_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("start");
        QTest::addColumn<int>("length"); // -100: to the end
        QTest::addColumn<QString>("expected");
        QTest::addColumn<bool>("fails");

        QTest::newRow("middle") << "abcdef" << 2 << 3 << "bcd" << false;
        QTest::newRow("past the end") << "abcdef" << 5 << 10 << "ef" << false;
        QTest::newRow("start behind the text") << "abc" << 7 << 2 << "" << false;
        QTest::newRow("length 0") << "abc" << 2 << 0 << "" << false;
        QTest::newRow("to the end") << "abcdef" << 3 << -100 << "cdef" << false;
        QTest::newRow("negative length fails") << "abc" << 1 << -1 << "" << true;
        QTest::newRow("start 0 fails") << "abc" << 0 << 1 << "" << true;
        QTest::newRow("start 0 to the end fails") << "abc" << 0 << -100 << "" << true;
    }

    void span()
    {
        QFETCH(QString, text);
        QFETCH(int, start);
        QFETCH(int, length);
        QFETCH(QString, expected);
        QFETCH(bool, fails);
        auto take = [&] {
            return length == -100 ? TextPos::spanToEnd(text, start)
                                  : TextPos::span(text, start, length);
        };
        if (fails) {
            QVERIFY_THROWS_EXCEPTION(RuntimeFailure, take());
            return;
        }
        QCOMPARE(take(), expected);
    }

    void numeric_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("numeric");
        QTest::addColumn<double>("value");

        QTest::newRow("digits") << "123" << true << 123.0;
        QTest::newRow("blank behind") << "123 " << true << 123.0;
        QTest::newRow("blank before") << " 3" << true << 3.0;
        QTest::newRow("decimals") << "1.5" << true << 1.5;
        QTest::newRow("leading point") << ".5" << true << 0.5;
        QTest::newRow("sign") << "-2" << true << -2.0;
        QTest::newRow("exponent") << "1e3" << true << 1000.0;
        QTest::newRow("a blank") << " " << false << 0.0;
        QTest::newRow("empty") << "" << false << 0.0;
        QTest::newRow("two numbers") << "3 4" << false << 0.0;
        QTest::newRow("letters") << "abc" << false << 0.0;
        QTest::newRow("point alone") << "." << false << 0.0;
        QTest::newRow("exponent without digits") << "1e" << false << 0.0;
        QTest::newRow("two points") << "1.2.3" << false << 0.0;
    }

    void numeric()
    {
        QFETCH(QString, text);
        QFETCH(bool, numeric);
        QFETCH(double, value);
        QCOMPARE(TextPos::isNumeric(text), numeric);
        if (numeric)
            QCOMPARE(TextPos::toNumber(text), value);
        else
            QVERIFY_THROWS_EXCEPTION(RuntimeFailure, TextPos::toNumber(text));
    }

    void parseWaitSeconds_data()
    {
        QTest::addColumn<QString>("page");
        QTest::addColumn<int>("seconds");

        QTest::newRow("plain") << "<script>var c=3; fc();</script>" << 3;
        QTest::newRow("any case") << "VAR C=45;" << 45;
        QTest::newRow("blanks around") << "var c= 7 ;" << 7;
        QTest::newRow("first of two") << "var c=8; var c=9;" << 8;
        QTest::newRow("rounds half to even") << "var c=2.5;" << 2;
        QTest::newRow("no marker") << "<html>nothing</html>" << 0;
        QTest::newRow("no semicolon") << "var c=12" << 0;
        QTest::newRow("no number") << "var c=abc;" << 0;
        QTest::newRow("empty number") << "var c=;" << 0;
        QTest::newRow("beyond 16 bits") << "var c=40000;" << 0;
        QTest::newRow("largest 16-bit") << "var c=32767;" << 32767;
    }

    void parseWaitSeconds()
    {
        QFETCH(QString, page);
        QFETCH(int, seconds);
        QCOMPARE(ResolverFrame::parseWaitSeconds(page), seconds);
    }

    void localFolder_data()
    {
        QTest::addColumn<QString>("dir");
        QTest::addColumn<int>("createSubDir");
        QTest::addColumn<QString>("expected");

        QTest::newRow("own folder")
            << "/home/u/Downloads" << 1 << "/home/u/Downloads/RapidShare Files";
        QTest::newRow("shared folder") << "/home/u/Downloads" << 0 << "/home/u/Downloads";
        QTest::newRow("only the value 1 counts") << "/d" << 2 << "/d";
        QTest::newRow("empty folder") << "" << 1 << "/RapidShare Files";
    }

    void localFolder()
    {
        QFETCH(QString, dir);
        QFETCH(int, createSubDir);
        QFETCH(QString, expected);
        const FolderSettings folder{[dir] { return dir; }, [createSubDir] { return createSubDir; }};
        QCOMPARE(ResolverFrame::localFolder(folder, QStringLiteral("RapidShare Files")), expected);
    }

    void outcomes_data()
    {
        QTest::addColumn<int>("outcome");
        QTest::addColumn<QString>("status");
        QTest::addColumn<QString>("wait");
        QTest::addColumn<QString>("errorDesc");
        QTest::addColumn<bool>("nextLink");
        QTest::addColumn<int>("timerInterval"); // 0: the timer stays off
        auto row = [](const char *name, int outcome, const char *status, const char *wait,
                      const char *errorDesc, bool nextLink, int timerInterval) {
            QTest::newRow(name) << outcome << QString(status) << QString(wait) << QString(errorDesc)
                                << nextLink << timerInterval;
        };

        row("stopped", 0, "Stopped", "0", "old", false, 0);
        row("connection error", 1, "Connection Error", "0", "old", true, 0);
        row("not found", 2, "Not Found", "0", "old", true, 0);
        row("not found with text", 3, "Not Found", "0", "gone", true, 0);
        row("error", 4, "Error", "0", "old", true, 0);
        row("minutes", 5, "Wait 2.5 Minutes", "150", "old", false, 60000);
        row("seconds", 6, "Wait 42 Seconds", "42", "old", false, 1000);
    }

    void outcomes()
    {
        QFETCH(int, outcome);
        QFETCH(QString, status);
        QFETCH(QString, wait);
        QFETCH(QString, errorDesc);
        QFETCH(bool, nextLink);
        QFETCH(int, timerInterval);

        Frame f;
        f.list.addLinkToList(QStringLiteral("http://example.test/files/2/b.bin"), 1, &f.prompts);
        f.site().cursor.setField(Field::ErrorDesc, QStringLiteral("old"));
        f.site().cursor.setField(Field::WaitTimeInSec, QStringLiteral("77"));
        f.site().cursor.setField(Field::IsDownloading, QStringLiteral("1"));
        // Marks the next link as started when the queue moves on.
        int nextStarted = 0;
        struct Recorder : SiteResolver
        {
            int *count;
            explicit Recorder(int *c) : count(c) {}
            void resolve(SiteContext &) override { ++*count; }
        };
        f.queues->setResolver(1, std::make_unique<Recorder>(&nextStarted));

        SiteContext &site = f.site();
        const std::function<void()> outcomes[] = {
            [&] { ResolverFrame::stopped(site); },
            [&] { ResolverFrame::connectionError(site); },
            [&] { ResolverFrame::notFound(site); },
            [&] { ResolverFrame::notFound(site, QStringLiteral("gone")); },
            [&] { ResolverFrame::pageError(site); },
            [&] { ResolverFrame::longWait(site, QStringLiteral("2.5")); },
            [&] { ResolverFrame::resolved(site, 42); }};
        outcomes[outcome]();

        QCOMPARE((QStringList{f.field(Field::Status), f.field(Field::WaitTimeInSec),
                              f.field(Field::ErrorDesc),
                              f.list.childAt(1, 1)->values[int(Field::Status)]}),
                 (QStringList{status, wait, errorDesc, nextLink ? "Starting..." : "Waiting"}));
        QCOMPARE(nextStarted, nextLink ? 1 : 0);
        QCOMPARE(site.timer->isEnabled(), timerInterval != 0);
        if (timerInterval)
            QCOMPARE(site.timer->interval(), timerInterval);
    }

    void guards()
    {
        Frame f;
        SiteContext &site = f.site();
        // A failure while parsing: "Error"; while fetching: "Connection Error".
        ResolverFrame::guardParse(site, [] { TextPos::span(QStringLiteral("x"), 1, -1); });
        QCOMPARE(f.field(Field::Status), QStringLiteral("Error"));
        QCOMPARE(f.field(Field::WaitTimeInSec), QStringLiteral("0"));
        f.back();
        ResolverFrame::guardResolve(site, [] { TextPos::find(QStringLiteral("x"), "x", 0); });
        QCOMPARE(f.field(Field::Status), QStringLiteral("Connection Error"));
        f.back();
        // No failure: the steps' own writes stay.
        ResolverFrame::guardParse(
            site, [&] { site.cursor.setField(Field::Status, QStringLiteral("Wait 1 Seconds")); });
        QCOMPARE(f.field(Field::Status), QStringLiteral("Wait 1 Seconds"));
        f.back();
        // A long wait with a text that is no number fails inside the guard.
        ResolverFrame::guardParse(site,
                                  [&] { ResolverFrame::longWait(site, QStringLiteral(" ")); });
        QCOMPARE(f.field(Field::Status), QStringLiteral("Error"));
    }

    // ---- The request object ----

    void normalizeUrl_data()
    {
        QTest::addColumn<QString>("url");
        QTest::addColumn<QString>("expected");
        auto row = [](const char *name, const char *url, const char *expected) {
            QTest::newRow(name) << QString(url) << QString(expected);
        };

        row("as it is", "http://host/a/b?x=1", "http://host/a/b?x=1");
        row("no scheme", "host/a", "http://host/a");
        row("host and port without scheme", "127.0.0.1:81/a", "http://127.0.0.1:81/a");
        row("name and port without scheme", "localhost:81/a", "http://localhost:81/a");
        row("backslashes", "http://host\\files\\a.bin", "http://host/files/a.bin");
        row("backslash in the query stays", "http://host\\a?p=c:\\x", "http://host/a?p=c:\\x");
        row("https kept", "https://host/a", "https://host/a");
    }

    void normalizeUrl()
    {
        QFETCH(QString, url);
        QFETCH(QString, expected);
        QCOMPARE(XmlHttpRequest::normalizeUrl(url), expected);
    }

    void requestGetAndPost()
    {
        TestServer server;
        QVERIFY(server.listen());
        server.setAnswer(
            "/page", TestServer::Answer::ok("<html>page</html>", "text/html").cutAfterHeader(100));
        server.setAnswer("/form", TestServer::Answer::ok("posted", "text/html"));

        XmlHttpRequest request;
        QCOMPARE(request.readyState(), 0);
        request.open(QStringLiteral("GET"), server.url(QStringLiteral("/page")));
        QCOMPARE(request.readyState(), 1);
        request.send();
        // send() returns before the answer.
        QVERIFY(request.readyState() != 4);
        QTRY_VERIFY(request.readyState() >= 2);
        QVERIFY(request.readyState() != 4 || request.status() == 200);
        QTRY_COMPARE(request.readyState(), 4);
        QCOMPARE(request.status(), 200);
        QCOMPARE(request.responseText(), QStringLiteral("<html>page</html>"));
        QCOMPARE(request.responseBody(), QByteArray("<html>page</html>"));

        // The same object for the next step, with its headers in their order.
        request.open(QStringLiteral("POST"), server.url(QStringLiteral("/form")));
        request.setRequestHeader(QStringLiteral("Content-type"),
                                 QStringLiteral("application/x-www-form-urlencoded"));
        request.setRequestHeader(QStringLiteral("X-First"), QStringLiteral("1"));
        request.setRequestHeader(QStringLiteral("X-Second"), QStringLiteral("2"));
        QCOMPARE(request.readyState(), 1);
        QCOMPARE(request.status(), 0);
        request.send(QByteArrayLiteral("dl.start=Free"));
        QTRY_COMPARE(request.readyState(), 4);
        QCOMPARE(request.responseText(), QStringLiteral("posted"));

        QCOMPARE(server.requests().size(), 2);
        const TestServer::Request post = server.requests().at(1);
        QCOMPARE((QByteArrayList{post.method, post.path, post.body, post.header("Content-Type"),
                                 post.header("Content-Length")}),
                 (QByteArrayList{"POST", "/form", "dl.start=Free",
                                 "application/x-www-form-urlencoded", "13"}));
        QByteArrayList names;
        for (const auto &header : post.headers)
            names << header.first;
        QVERIFY(names.contains("X-First") && names.indexOf("X-Second") > names.indexOf("X-First"));
        // open() forgets the headers of the last request.
        QVERIFY(server.requests().at(0).header("X-First").isNull());
    }

    void requestRedirectCookiesAndStatus()
    {
        TestServer server;
        QVERIFY(server.listen());
        server.setAnswer("/start", TestServer::Answer::http(200, "OK",
                                                            {{"Content-Type", "text/html"},
                                                             {"Content-Length", "2"},
                                                             {"Set-Cookie", "session=s42; path=/"},
                                                             {"Connection", "close"}},
                                                            "ok"));
        server.setAnswer("/old", TestServer::Answer::redirect(302, server.url("/new")));
        server.setAnswer("/new", TestServer::Answer::ok("moved here", "text/plain"));
        server.setAnswer("/gone", TestServer::Answer::status(404, "Not Found"));

        {
            XmlHttpRequest first;
            send(first, server, "/start");
            QTRY_COMPARE(first.readyState(), 4);
        }
        // Another object, the same cookie jar; the redirect is followed, and a
        // backslash address is fetched as with slashes.
        XmlHttpRequest second;
        second.open(QStringLiteral("GET"), QStringLiteral("http://%1\\old").arg(server.hostPort()));
        second.send();
        QTRY_COMPARE(second.readyState(), 4);
        QCOMPARE(second.status(), 200);
        QCOMPARE(second.responseText(), QStringLiteral("moved here"));
        QByteArrayList seen;
        for (const TestServer::Request &req : server.requests())
            seen << req.path + ' ' + req.header("Cookie");
        QCOMPARE(seen, (QByteArrayList{"/start ", "/old session=s42", "/new session=s42"}));

        // Another status is read as it is; no answer at all reads 0.
        send(second, server, "/gone");
        QTRY_COMPARE(second.readyState(), 4);
        QCOMPARE(second.status(), 404);
        QCOMPARE(second.responseText(), QStringLiteral("<html>error</html>"));

        // A port where nobody listens.
        QTcpServer probe;
        QVERIFY(probe.listen(QHostAddress::LocalHost));
        const QString deadUrl = QStringLiteral("http://127.0.0.1:%1/x").arg(probe.serverPort());
        probe.close();
        second.open(QStringLiteral("GET"), deadUrl);
        second.send();
        QTRY_COMPARE(second.readyState(), 4);
        QCOMPARE(second.status(), 0);
        QCOMPARE(&XmlHttpRequest::network(), &XmlHttpRequest::network());
    }

    void requestAbortAndReuse()
    {
        TestServer server;
        QVERIFY(server.listen());
        server.setAnswer("/silent", TestServer::Answer::silence());
        server.setAnswer("/fast", TestServer::Answer::ok("fast"));

        XmlHttpRequest request;
        send(request, server, "/silent");
        QVERIFY(server.waitForRequests(1));
        request.abort();
        QCOMPARE(request.readyState(), 0);
        QTRY_COMPARE(server.closedByClient(), 1);
        QTest::qWait(50);
        QCOMPARE(request.readyState(), 0);

        send(request, server, "/fast");
        QTRY_COMPARE(request.readyState(), 4);
        QCOMPARE(request.responseText(), QStringLiteral("fast"));

        // An object that goes while its request runs takes the request with it.
        {
            XmlHttpRequest dropped;
            send(dropped, server, "/silent");
            QVERIFY(server.waitForRequests(3));
        }
        QTRY_COMPARE(server.closedByClient(), 2);
    }

    void requestText_data()
    {
        QTest::addColumn<QByteArray>("contentType");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("text");

        QTest::newRow("utf-8 by default")
            << QByteArray("text/html") << QByteArray("gr\xc3\xbc\xc3\x9f")
            << QStringLiteral("gr\u00fc\u00df");
        QTest::newRow("latin-1 named")
            << QByteArray("text/html; charset=ISO-8859-1") << QByteArray("gr\xfc\xdf")
            << QStringLiteral("gr\u00fc\u00df");
        QTest::newRow("quoted charset") << QByteArray("text/html; charset=\"utf-8\"")
                                        << QByteArray("\xc3\xa9") << QStringLiteral("\u00e9");
        QTest::newRow("unknown charset") << QByteArray("text/html; charset=x-nothing")
                                         << QByteArray("abc") << QStringLiteral("abc");
    }

    void requestText()
    {
        QFETCH(QByteArray, contentType);
        QFETCH(QByteArray, body);
        QFETCH(QString, text);
        TestServer server;
        QVERIFY(server.listen());
        server.setAnswer("/t", TestServer::Answer::ok(body, contentType));
        XmlHttpRequest request;
        send(request, server, "/t");
        QTRY_COMPARE(request.readyState(), 4);
        QCOMPARE(request.responseText(), text);
        QCOMPARE(request.responseBody(), body);
    }

    // ---- The poll ----

    void pollEndsWithRequest()
    {
        TestServer server;
        QVERIFY(server.listen());
        server.setAnswer("/slow", TestServer::Answer::ok("late").delayFirst(200));
        server.setAnswer("/missing", TestServer::Answer::status(404, "Not Found"));
        Frame f;
        SiteContext &site = f.site();

        // Timers keep running while the poll waits.
        int ticks = 0;
        QTimer ticker;
        ticker.setInterval(20);
        QObject::connect(&ticker, &QTimer::timeout, [&] { ++ticks; });
        ticker.start();

        XmlHttpRequest request;
        send(request, server, "/slow");
        QVERIFY(ResolverFrame::waitForAnswer(site, request));
        QCOMPARE(request.readyState(), 4);
        QCOMPARE(request.responseText(), QStringLiteral("late"));
        QVERIFY2(ticks >= 3, qPrintable(QString::number(ticks)));
        // The shared time-out was started, and nothing stops it when the request ends.
        QVERIFY(f.queues->requestGuard().tmrTimeOut->isEnabled());
        QCOMPARE(f.field(Field::Status), QStringLiteral("Waiting"));

        // Any status but 200 is a connection failure.
        send(request, server, "/missing");
        QVERIFY(!ResolverFrame::waitForAnswer(site, request));
        QCOMPARE(f.field(Field::Status), QStringLiteral("Connection Error"));
        QCOMPARE(f.field(Field::WaitTimeInSec), QStringLiteral("0"));
    }

    void pollPumpsSixTimesPerRound_data()
    {
        QTest::addColumn<int>("stopAt");
        QTest::addColumn<int>("pumps");

        QTest::newRow("first pump") << 1 << 6;
        QTest::newRow("sixth pump") << 6 << 6;
        QTest::newRow("seventh pump") << 7 << 12;
        QTest::newRow("fifteenth pump") << 15 << 18;
    }

    void pollPumpsSixTimesPerRound()
    {
        QFETCH(int, stopAt);
        QFETCH(int, pumps);
        TestServer server;
        QVERIFY(server.listen());
        server.setAnswer("/silent", TestServer::Answer::silence());
        Frame f;
        SiteContext &site = f.site();

        XmlHttpRequest request;
        send(request, server, "/silent");
        QVERIFY(server.waitForRequests(1));
        // Let the connection settle so that only the counter's events remain.
        QTest::qWait(20);

        PumpCounter counter;
        counter.flagAt = stopAt;
        counter.flag = &site.bStop;
        counter.begin();
        QCOMPARE(ResolverFrame::poll(site, request), ResolverFrame::PollResult::Stopped);
        counter.running = false;
        QCOMPARE(counter.count, pumps);
        // The stop is seen by the poll alone; the request itself goes on.
        QVERIFY(request.readyState() != 4);
        QCOMPARE(server.closedByClient(), 0);
    }

    void pollStopAndTimeOut()
    {
        TestServer server;
        QVERIFY(server.listen());
        server.setAnswer("/silent", TestServer::Answer::silence());
        Frame f;
        SiteContext &site = f.site();
        RequestGuard &guard = f.queues->requestGuard();

        // A stop while the request runs: "Stopped", no next link.
        XmlHttpRequest request;
        send(request, server, "/silent");
        QTimer::singleShot(100, [&] { site.bStop = true; });
        QVERIFY(!ResolverFrame::waitForAnswer(site, request));
        QCOMPARE(f.field(Field::Status), QStringLiteral("Stopped"));
        QCOMPARE(f.field(Field::WaitTimeInSec), QStringLiteral("0"));
        site.bStop = false;

        // The time-out fires: a connection failure. Its flag from an earlier
        // request is cleared as the poll begins.
        guard.tmrTimeOut->setEnabled(false);
        LogicalTimer::setRealPeriod(50000, 150);
        guard.bTimeOut = true;
        QElapsedTimer clock;
        clock.start();
        XmlHttpRequest late;
        send(late, server, "/silent");
        QCOMPARE(ResolverFrame::poll(site, late), ResolverFrame::PollResult::TimedOut);
        QVERIFY2(clock.elapsed() >= 140, qPrintable(QString::number(clock.elapsed())));
        QVERIFY(!guard.tmrTimeOut->isEnabled()); // one-shot
        guard.tmrTimeOut->setEnabled(false);
        send(late, server, "/silent");
        QVERIFY(!ResolverFrame::waitForAnswer(site, late));
        QCOMPARE(f.field(Field::Status), QStringLiteral("Connection Error"));
    }

    void pollTimeOutIsShared()
    {
        // A time-out that an earlier request started isn't restarted by the next
        // poll: the later request is cut off early.
        TestServer server;
        QVERIFY(server.listen());
        server.setAnswer("/quick", TestServer::Answer::ok("quick"));
        server.setAnswer("/medium", TestServer::Answer::ok("medium").delayFirst(250));
        Frame f;
        RequestGuard &guard = f.queues->requestGuard();
        guard.tmrTimeOut->setEnabled(false);
        LogicalTimer::setRealPeriod(50000, 400);

        XmlHttpRequest request;
        send(request, server, "/quick");
        QCOMPARE(ResolverFrame::poll(f.site(), request), ResolverFrame::PollResult::Ended);
        QTest::qWait(250);
        // 250 ms of the 400 are gone; the next answer needs 250 more.
        send(request, server, "/medium");
        QCOMPARE(ResolverFrame::poll(f.site(), request), ResolverFrame::PollResult::TimedOut);

        // With the time-out at rest, the same request passes.
        QTRY_VERIFY(!guard.tmrTimeOut->isEnabled());
        send(request, server, "/medium");
        QCOMPARE(ResolverFrame::poll(f.site(), request), ResolverFrame::PollResult::Ended);
    }

    void pollSleeps()
    {
        // A poll of half a second on a silent server uses next to no processor
        // time: the pumps wait for events instead of spinning.
        TestServer server;
        QVERIFY(server.listen());
        server.setAnswer("/late", TestServer::Answer::ok("late").delayFirst(500));
        Frame f;
        XmlHttpRequest request;
        send(request, server, "/late");
        QElapsedTimer wall;
        wall.start();
        const std::clock_t before = std::clock();
        QCOMPARE(ResolverFrame::poll(f.site(), request), ResolverFrame::PollResult::Ended);
        const double cpuMs = double(std::clock() - before) * 1000.0 / CLOCKS_PER_SEC;
        QVERIFY(wall.elapsed() >= 450);
        QVERIFY2(cpuMs < 100, qPrintable(QStringLiteral("cpu %1 ms").arg(cpuMs)));
    }

private:
    std::unique_ptr<Sandbox> m_sandbox;
};

QTEST_GUILESS_MAIN(TestResolverFrame)
#include "tst_resolverframe.moc"
