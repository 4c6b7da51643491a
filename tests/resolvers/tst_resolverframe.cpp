#include "datatable.h"
#include "recipeharness.h"
#include "resolvers/reading.h"
#include "resolvers/resolverframe.h"
#include "resolvers/textpos.h"
#include "resolvers/xmlhttprequest.h"
#include "sandbox.h"
#include "system/logicaltimer.h"
#include "testserver.h"

#include <QtTest>

namespace {

using Answer = TestServer::Answer;

// How a text is read, the text, what is looked for (a marker or a length),
// the start; what comes of it ("fails": a run-time failure).
using Texts = Table<QString, QString, QString, int, QString>;
// Something that ends a recipe's run, done to the view of the site.
using Outcome = std::function<void(RecipeSite &)>;
// The first row's Status|WaitTimeInSec|ErrorDesc, the next row's Status, and
// the interval of the site's timer where it runs; the outcome.
using Outcomes = Table<QString, Outcome>;

} // namespace

class TestResolverFrame : public QObject
{
    Q_OBJECT
    Sandbox m_sandbox;
private slots:
    void init() { RecipeHarness::setPeriods(3600000); }

    // ---- Reading texts: positions, spans, numbers, waits, addresses ----

    void texts_data()
    {
        const Texts row;
        row("the first, in any case", "find", "xAbCabc", "aBc", 1, "2");
        row("start at the last character", "find", "abc", "c", 3, "3");
        row("start behind the text", "find", "abc", "c", 4, "0");
        row("empty marker is found at the start", "find", "abc", "", 2, "2");
        row("start 0 fails", "find", "abc", "a", 0, "fails");
        row("16 bits: at 32,767", "find16", QByteArray(32766, 'x') + "ab", "ab", 1, "32767");
        row("16 bits: behind 32,767", "find16", QByteArray(32767, 'x') + "ab", "ab", 1, "fails");
        // Backwards; start -1 is the end of the text.
        row("back: the last, in any case", "back", "xabxAB", "Ab", -1, "5");
        row("back: the start itself", "back", "a b c", " ", 4, "4");
        row("back: match must end by the start", "back", "abc abc", "abc", 6, "1");
        row("back: start behind the text", "back", "abc", "a", 9, "0");
        row("back: marker longer than the start", "back", "abc", "abc", 2, "0");
        row("back: start 0 fails", "back", "abc", "a", 0, "fails");
        row("back: start -2 fails", "back", "abc", "a", -2, "fails");
        // Spans: `what` is the length.
        row("span", "span", "abcdef", "3", 2, "bcd");
        row("span behind the text", "span", "abc", "2", 7, "");
        row("span of negative length fails", "span", "abc", "-1", 1, "fails");
        row("span from 0 fails", "span", "abc", "1", 0, "fails");
        // The plain shapes: `what` is the marker (the opening one of between
        // and ";").
        row("between from a start", "between", "a=1; a=2;", "a=", 3, "2");
        row("between, no close", "between", "a=1", "a=", 1, "<null>");
        row("between, no open", "between", "b=1;", "a=", 1, "<null>");
        row("after the last", "afterLast", "http://h/a/B.bin", "/", 1, "B.bin");
        row("after the last, at the end", "afterLast", "http://h/a/", "/", 1, "");
        row("after the last, none", "afterLast", "name", "/", 1, "<null>");
        row("blanks trimmed, tabs kept", "trim", "  \ta b \r ", "", 1, "\ta b \r");
        // Numbers as the recipes read them.
        row("number: blanks, sign, point, exponent", "number", " -.5e1 ", "", 1, "-5");
        row("number: two numbers", "number", "3 4", "", 1, "fails");
        row("number: exponent without digits", "number", "1e", "", 1, "fails");
        // The wait of a page.
        row("wait: any case, blanks, the first", "wait", "x VAR C= 45 ;var c=9;", "", 1, "45");
        row("wait: no semicolon", "wait", "var c=12", "", 1, "0");
        row("wait: beyond 16 bits, half to even", "wait", "var c=40000.5;", "", 1, "40000");
        row("wait: beyond 32 bits", "wait", "var c=2147483648;", "", 1, "0");
        // Addresses as the request object takes them.
        row("url with backslashes", "url", "host\\files\\a.bin", "", 1, "http://host/files/a.bin");
        row("url: a scheme stays, so does a backslash in the query", "url",
            "https://host\\a?p=c:\\x", "", 1, "https://host/a?p=c:\\x");
        // A site's www host: a name gets "www."; an address by number stays, as
        // the MediaFire and FileFactory fakes on 127.0.0.1 show end to end.
        row("www host of a name", "www", "mediafire.com", "", 1, "www.mediafire.com");
        row("www host already so", "www", "WWW.filefactory.com", "", 1, "WWW.filefactory.com");
    }

    void texts()
    {
        const auto [how, text, what, start, expected] = Texts::fetch();
        auto orNull = [](const QString &s) { return s.isNull() ? QStringLiteral("<null>") : s; };
        if (how == "www")
            SiteHosts::instance().setHost("mediafire", text);
        const QHash<QString, std::function<QString()>> ways = {
            {"find", [&] { return QString::number(TextPos::find(text, what, start)); }},
            {"find16", [&] { return QString::number(TextPos::find16(text, what, start)); }},
            {"back", [&] { return QString::number(TextPos::findBack(text, what, start)); }},
            {"span", [&] { return TextPos::span(text, start, what.toInt()); }},
            {"trim", [&] { return TextPos::trimBlanks(text); }},
            {"number", [&] { return QString::number(TextPos::toNumber(text)); }},
            {"wait", [&] { return QString::number(ResolverFrame::parseWaitSeconds(text)); }},
            {"url", [&] { return XmlHttpRequest::normalizeUrl(text); }},
            {"www", [&] { return SiteHosts::instance().wwwHost(Sites::MediaFire); }},
            {"between", [&] { return orNull(TextPos::between(text, what, ";", start)); }},
            {"afterLast", [&] { return orNull(TextPos::afterLast(text, what)); }}};
        if (expected == "fails")
            QVERIFY_THROWS_EXCEPTION(RuntimeFailure, ways[how]());
        else
            QCOMPARE(ways[how](), expected);
    }

    // ---- The outcomes ----

    void outcomes_data()
    {
        const Outcomes row;
        row("long", "Wait 2.5 Minutes|150|old|Waiting|60000", [](auto &s) { s.longWait("2.5"); });
        row("minutes of no number fail under the guard", "Error|0|old|Starting...",
            [](auto &s) { apply(s, readGuarded([](Reading &r) { r.waitMinutes(" "); })); });
        row("too long for its field, under the guard", "Error|0|old|Starting...", [](auto &s) {
            apply(s, Reading().set(Field::FileSize, QString(21, 'x')).waitSeconds("1"));
        });
        row("a reading's own failure word", "Connection Error|0|old|Starting...", [](auto &s) {
            apply(s, readGuarded([](Reading &) { TextPos::span("x", 0, 1); }, "Connection Error"));
        });
        row("a failing fetch step", "Connection Error|0|old|Starting...", [](auto &s) {
            ResolverFrame::guardResolve(s, [] { TextPos::find(QStringLiteral("x"), "x", 0); });
        });
    }

    void outcomes()
    {
        const auto [rows, outcome] = Outcomes::fetch();
        // Two rows; the first, with an ErrorDesc and a wait an outcome has to
        // overwrite, is the one the recipe works on.
        RecipeHarness h;
        LinkRow *first = h.add(Sites::RapidShare, "http://example.test/files/1/a.bin");
        h.list.setField(first, Field::ErrorDesc, "old");
        h.list.setField(first, Field::WaitTimeInSec, "77");
        h.add(Sites::RapidShare, "http://example.test/files/2/b.bin");
        RecipeSite site = h.view(Sites::RapidShare);
        outcome(site);
        const LogicalTimer *timer = h.context(1).timer;
        const QString interval = u'|' + QString::number(timer->interval());
        QCOMPARE(h.outcome(1) + u'|' + h.at(1, 1) + (timer->isEnabled() ? interval : QString()),
                 rows);
    }

    // ---- The request object, the poll and the steps around them ----

    void requestPollAndSteps()
    {
        TestServer server;
        QVERIFY(server.listen());
        server.setAnswer("/silent", Answer::silence());
        server.setAnswer(
            "/page", Answer::ok("\xc3\xa9", "text/html; charset=x-nothing").cutAfterHeader(100));
        server.setAnswer("/form", Answer::ok("gr\xfc\xdf", "text/html; charset=ISO-8859-1"));
        server.setAnswer("/slow", Answer::ok("late").delayFirst(200));
        server.setAnswer("/missing", Answer::status(404, "Not Found"));
        RecipeHarness h;
        h.add(Sites::RapidShare, "http://example.test/files/1/a.bin");
        h.add(Sites::RapidShare, "http://example.test/files/2/b.bin");
        RecipeSite site = h.view(Sites::RapidShare);

        // Sends a GET for `path` of the server.
        auto send = [&](XmlHttpRequest &r, const char *path) {
            r.open("GET", server.url(path));
            r.send();
        };
        // send() returns before the answer. UTF-8 where the answer's charset
        // isn't known.
        XmlHttpRequest request;
        send(request, "/page");
        QVERIFY(request.readyState() != 4);
        QTRY_COMPARE(request.readyState(), 4);
        QCOMPARE(request.responseText(), QStringLiteral("\u00e9"));

        // Aborted, the request's connection goes; so it does with an object
        // that goes while its request runs.
        send(request, "/silent");
        QVERIFY(server.waitForRequests(2));
        request.abort();
        QCOMPARE(request.readyState(), 0);
        QTRY_COMPARE(server.closedByClient(), 1);
        {
            XmlHttpRequest dropped;
            send(dropped, "/silent");
            QVERIFY(server.waitForRequests(3));
        }
        QTRY_COMPARE(server.closedByClient(), 2);

        // The aborted object serves the next step: a form post with its three
        // headers in their order and the length of its body, and nothing of
        // the headers set before. The charset the answer names.
        request.setRequestHeader(QStringLiteral("X-Old"), QStringLiteral("1"));
        QCOMPARE(ResolverFrame::post(site, request, server.url("/form"), "a=1&b=two"),
                 std::optional<QString>("gr\u00fc\u00df"));
        QCOMPARE(request.responseBody(), QByteArray("gr\xfc\xdf"));
        const TestServer::Request post = server.requests().at(3);
        QByteArrayList sent{post.raw.left(post.raw.indexOf("\r\n")), post.body};
        for (const auto &[name, value] : post.headers)
            if (name.startsWith("Content-") || name == "Connection" || name.startsWith("X-"))
                sent << name + ": " + value;
        QCOMPARE(sent, (QByteArrayList{"POST /form HTTP/1.1", "a=1&b=two",
                                       "Content-type: application/x-www-form-urlencoded",
                                       "Content-length: 9", "Connection: close"}));

        // A status other than 200 is what the recipe says it is (the recipes'
        // failure matrices hold the other rules); here: any answer will do.
        QCOMPARE(ResolverFrame::get(site, request, server.url("/missing"),
                                    ResolverFrame::OnBadStatus::Accepted),
                 std::optional<QString>("<html>error</html>"));

        // The time-out fires: a connection failure. A time-out that an earlier
        // request started isn't restarted by the next poll, so the later
        // request is cut off early. The timer is one-shot, and its flag is
        // cleared as the next poll begins: at rest, the same request passes.
        RequestGuard &guard = site.requestGuard();
        guard.tmrTimeOut->setEnabled(false);
        LogicalTimer::setRealPeriod(50000, 350);
        send(request, "/missing");
        QCOMPARE(ResolverFrame::poll(site, request), ResolverFrame::PollResult::Ended);
        QTest::qWait(250);
        // 250 ms of the 350 are gone; the next answer needs 200 more.
        send(request, "/slow");
        QVERIFY(!ResolverFrame::waitForAnswer(site, request));
        QCOMPARE(h.at(1, 0) + u'|' + h.at(1, 1), QStringLiteral("Connection Error|Starting..."));
        QTRY_VERIFY(!guard.tmrTimeOut->isEnabled());
        send(request, "/slow");
        QCOMPARE(ResolverFrame::poll(site, request), ResolverFrame::PollResult::Ended);

        // The wait without stop or time-out ends with the request alone.
        h.context(1).bStop = true;
        guard.bTimeOut = true;
        send(request, "/slow");
        ResolverFrame::pollToTheEnd(request);
        QCOMPARE(request.responseText(), QStringLiteral("late"));

        // Steps that fail on their own: the next runs with what stands.
        QString order;
        ResolverFrame::eachStep([&] { order += 'a'; }, [&] { order += TextPos::span("x", 0, 1); },
                                [&] { order += 'c'; });
        QCOMPARE(order, QStringLiteral("ac"));
        // A reading holds the last value given to a field, and null for none.
        const Reading twice = Reading().set(Field::Status, "a").set(Field::Status, "b");
        QVERIFY(twice.value(Field::Status) == "b" && twice.value(Field::DirectURL).isNull());
        // The site's own folder behind the download folder on the value 1 only
        // (which the DepositFiles test meets; 0 every other recipe test).
        h.createSubDir = 2;
        QCOMPARE(site.localFolder(), h.folder());
    }
};

QTEST_GUILESS_MAIN(TestResolverFrame)
#include "tst_resolverframe.moc"
