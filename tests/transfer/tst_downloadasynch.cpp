#include "support/fakeprompts.h"
#include "support/recipeharness.h"
#include "support/testserver.h"
#include "transfer/downloadasynch.h"

#include <QtTest>

namespace {

const QString kInvalidText = QStringLiteral("Invalid procedure call or argument");
const QString kInvalid = "error " + kInvalidText;
const QString kLost = QStringLiteral("error Connection Error");
using Answer = TestServer::Answer;

// The shorthand of the rows: "$" is a whole 200 header, "%N" one with
// Content-Length N, "@" the status line alone, "*N" N filler bytes.
QByteArray expand(QString text)
{
    static const QRegularExpression sized(QStringLiteral("%(\\d+)"));
    text.replace(sized, QStringLiteral("@Content-Length: \\1\r\nContent-Type: a/b\r\n\r\n"));
    text.replace(u'$', QStringLiteral("@Content-Type: a/b\r\n\r\n"));
    text.replace(u'@', QStringLiteral("HTTP/1.1 200 OK\r\n"));
    static const QRegularExpression filler(QStringLiteral("\\*(\\d+)"));
    for (QRegularExpressionMatch m; (m = filler.match(text)).hasMatch();)
        text.replace(m.capturedStart(), m.capturedLength(), QString(m.captured(1).toInt(), u'x'));
    return text.toLatin1();
}

QByteArray readFile(const QString &path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray("<missing>");
}

// A folder, a local server and a transfer control whose every signal, in the
// order raised, is kept as text, and so is every message a person is shown.
struct Rig
{
    Rig()
    {
        // The real timers stay out of the way unless a test maps them shorter.
        RecipeHarness::setPeriods(3600000);
        prompts.whileAsking = [this] { log << "told " + prompts.messages.last().text; };
        auto num = [](double v) { return QString::number(v, 'g', 10); };
        QObject::connect(&d, &DownloadAsynch::fileBegin,
                         [this, num](float size) { log << "fileBegin " + num(size); });
        QObject::connect(&d, &DownloadAsynch::progress,
                         [this, num](double value, int bps, float done, float remain, float time) {
                             log << QStringLiteral("progress %1 %2 %3 %4 %5")
                                        .arg(num(value), QString::number(bps), num(done),
                                             num(remain), num(time));
                         });
        QObject::connect(&d, &DownloadAsynch::complete, [this] { log << "complete"; });
        QObject::connect(&d, &DownloadAsynch::stopped, [this] { log << "stopped"; });
        QObject::connect(&d, &DownloadAsynch::error,
                         [this](const QString &desc) { log << "error " + desc; });
    }
    // Points the control at an address and a file and starts it.
    void begin(const QString &url, const QString &local)
    {
        d.setUrl(url);
        d.setLocalFilePath(local);
        d.startDownload();
    }

    QTemporaryDir dir;
    QStringList log; // outlives the control, which may still signal as it goes
    TestServer server;
    bool listening = server.listen();
    FakePrompts prompts;
    DownloadAsynch d{&prompts};
};

} // namespace

class TestDownloadAsynch : public QObject
{
    Q_OBJECT
private slots:
    // Steps handed to the control on a connection that stays silent: a
    // chunk, "~chunk" one that arrives after the peer closed ("~" alone: the
    // close itself), "#" a speed tick, "!" the silence timer, and "stop" (of
    // a file made read-only first). A first step "/path" is the address's
    // path, else "/file.bin".
    void chunks_data()
    {
        QTest::addColumn<QStringList>("steps");
        QTest::addColumn<QStringList>("log");
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<float>("ownerSize");
        auto row = [](const char *name, const QString &steps, const QString &log,
                      const QString &file, float owner = 0) {
            QTest::newRow(name) << steps.split(u'|', Qt::SkipEmptyParts)
                                << log.split(u'|', Qt::SkipEmptyParts) << expand(file) << owner;
        };
        row("header without its empty line", "@Content-Type: a/b\r\n|junk", kInvalid, "junk");
        row("body like a header is cut", "$one|x 200 OK content-type: y\r\n\r\ntwo", "", "onetwo");
        row("200 OK without Location or Content-Type is body", "$one|200 ok", "", "one200 ok");
        row("data after the peer closed are not taken", "$one|~two", "", "one");
        row("a redirect without Location is body", "$one|302 Found here", "", "one302 Found here");
        row("Location without its blank", "$one|302 Found\r\nLocation:\r\n", kInvalid, "one");
        row("Location without a path", "$one|303 see other\r\nLocation: http://elsewhere\r\n",
            kInvalid, "one");

        // The size is read only from a header line that ends in CR LF (a middle
        // line: the rows of ticks below).
        const QString body = QStringLiteral("\r\n\r\n0123456789");
        const QString ten = QStringLiteral("0123456789");
        row("size in any case", "@content-length:  10 \r\nContent-Type: x/y" + body + "|~",
            "fileBegin 10|complete", ten);
        row("size over owner's", "@Location: a\r\nContent-Length: 10\r\nServer: t" + body + "|#",
            "fileBegin 10|progress 100 10 10 0 0|complete", ten, 5);
        // That is not seen: the owner's size stays. The share is rounded to two decimals.
        row("size in the last line", "@Content-Type: x/y\r\nContent-Length: 10" + body + "|#|~",
            "progress 66.67 10 10 5 0.5|complete", ten, 15);
        row("size not a number", "@Content-Length: ten\r\nContent-Type: x/y" + body + "|~",
            "complete", ten);
        row("size 1e19", "@Content-Length: 1e19\r\nContent-Type: x/y" + body, "error Overflow", "");
        row("size without its blank", "@Content-Length:\r\nContent-Type: x/y" + body, kInvalid, "");

        // A first chunk that is no known answer is still written, and the
        // close then finishes the transfer as data were received.
        const QString notFound = QStringLiteral("HTTP/1.1 404 Not Found\r\n\r\ngone");
        row("first chunk 404", notFound + "|~", kLost + "|complete", notFound);
        row("closed without a byte", "~", kLost, "");

        row("ticks, known size", "%1000|*250|#|#|*500|#|*250|#|#",
            "fileBegin 1000|progress 25 250 250 750 3|progress 25 1 250 750 750|"
            "progress 75 500 750 250 0.5|progress 100 250 1000 0 0|complete",
            "*1000");
        row("ticks, unknown size", "$|*300|#|*200|#|#",
            "progress -1 300 300 -1 -1|progress -1 200 500 -1 -1|progress -1 0 500 -1 -1", "*500");
        // 16777219 is not a single-precision number: the size becomes
        // 16777220, and single bytes added to 16777216 are lost to rounding,
        // so the size is never met and only the silence timer ends it.
        row("single-precision size never met", "%16777219|*16777216|y|y|y|#|#|!",
            "fileBegin 16777220|progress 100 16777216 16777216 4 2.384185791e-07|"
            "progress 100 1 16777216 4 4|error Connection Error",
            "*16777216yyy");

        // The silence timer closes the line; the transfer is complete when no
        // share can be computed, or beyond 96% on rapidshare and YouTube.
        row("silence at 97%", "%1000|*970|!", "fileBegin 1000|" + kLost, "*970");
        row("97%, rapidshare", "/rapidshare|%1000|*970|!", "fileBegin 1000|complete", "*970");
        row("97%, YouTube", "/YouTube|%1000|*970|!", "fileBegin 1000|complete", "*970");
        row("96%, rapidshare", "/rapidshare|%1000|*960|!", "fileBegin 1000|" + kLost, "*960");
        row("a tick after the silence closed the line finishes", "$|*5|!|#",
            "complete|progress -1 5 5 -1 -1|complete", "*5");

        // A stop closes the line and deletes the file, even a read-only one,
        // but for YouTube's part.
        row("stop", "$some data|stop", "stopped", "<missing>");
        row("stop keeps YouTube's part", "/YOUTUBE|$some data|stop", "stopped", "some data");

        // A redirect anywhere in a chunk moves on to its address ("^": a path
        // of the server that answers "NEW" on an open line); the file has
        // content by then, so the new connection writes to the next name.
        row("redirect inside the body", "$0123456789|xx 302 FOUND\r\nlocation: ^\r\nmore",
            "fileBegin 3", "0123456789");
    }
    void chunks()
    {
        QFETCH(QStringList, steps);
        QFETCH(QStringList, log);
        QFETCH(QByteArray, file);
        QFETCH(float, ownerSize);
        const QString path = steps.first().startsWith(u'/') ? steps.takeFirst() : "/file.bin";
        Rig r;
        r.d.setFileSize(ownerSize);
        const QString local = r.dir.filePath(QStringLiteral("c.bin"));
        r.server.setAnswer("/next", Answer::ok("NEW").keepOpen());
        // A server path that never answers: the file is open and the first
        // chunk awaited; chunks are then fed by hand.
        r.server.setAnswer(path.toLatin1(), Answer::silence());
        r.begin(r.server.url(path), local);
        QVERIFY(r.server.waitForRequests(1) && r.d.socketState() == DownloadAsynch::Connected);
        for (QString step : steps) {
            const bool late = step.startsWith(u'~');
            step.replace(u'^', r.server.url(QStringLiteral("/next")));
            const QByteArray chunk = expand(late ? step.mid(1) : step);
            if (step == u'#')
                r.d.speedTick();
            else if (step == u'!')
                r.d.silenceTick();
            else if (step == u"stop" && QFile::setPermissions(local, QFile::ReadOwner))
                r.d.stopDownload();
            else
                r.d.handleData(chunk, chunk.size(),
                               late ? DownloadAsynch::PeerClosed : DownloadAsynch::Connected);
        }
        QTRY_COMPARE(r.log, log);
        QCOMPARE(readFile(local), file);
        // The silence and a stop let the connection go (that the server sees
        // it closed, the timers test shows).
        const bool letGo = steps.contains(u"!") || steps.contains(u"stop");
        QCOMPARE(r.d.socketState(), letGo ? DownloadAsynch::Closed : DownloadAsynch::Connected);
    }

    // The scheme goes from the address in any case, even inside the query.
    void connectAndRedirect()
    {
        Rig r;
        // Bytes whose period (17) shows any piece lost, doubled or out of place.
        const QByteArray body = QByteArray("0123456789abcdefg").repeated(200);
        const QString local = r.dir.filePath(QStringLiteral("sub/folder/movie.avi"));
        // The first address is sent on twice; "http://www." is dropped from a
        // redirect's address.
        r.server.setAnswer("/get.php?u=x.org/a", Answer::redirect(302, r.server.url("/second")));
        const QString third = "http://www." + r.server.hostPort() + "/third?k=v";
        r.server.setAnswer("/second", Answer::redirect(303, third).cutAfterHeader(20));
        r.server.setAnswer("/third?k=v", Answer::ok(body));
        r.begin("HTTP://" + r.server.hostPort() + "/get.php?u=http://x.org/a", local);
        QTRY_COMPARE(r.log, (QStringList{"fileBegin 3400", "complete"}));

        // Exactly these bytes and nothing else: no Range, no User-Agent.
        QByteArray raws;
        for (const TestServer::Request &req : r.server.requests())
            raws += req.raw;
        const QByteArray end =
            " HTTP/1.1\r\nHost: " + r.server.hostPort().toLatin1() + "\r\nAccept: */*\r\n\r\n";
        QCOMPARE(raws,
                 "GET /get.php?u=x.org/a" + end + "GET /second" + end + "GET /third?k=v" + end);
        // The missing folders were made, and the same empty file was reopened
        // at each connection; the redirects' own bodies were dropped.
        QCOMPARE(QDir(QFileInfo(local).path()).entryList(QDir::Files), QStringList{"movie.avi"});
        QCOMPARE(readFile(local), body);
        QCOMPARE(r.d.socketState(), int(DownloadAsynch::PeerClosed));
    }

    // The real timers, mapped short. With an answer on a line the peer keeps
    // open, the speed tick finds the size reached and the silence timer then
    // closes the line; without one, the silence timer runs from the connection
    // on. After the end nothing but the silence timer reports, each minute.
    void resetAndLinks_data()
    {
        QTest::addColumn<bool>("reset");
        QTest::addColumn<QStringList>("log");
        // A reset in the middle is an error of the socket, not the end of the
        // data; an early orderly close still counts as complete.
        QTest::newRow("reset") << true
                               << QStringList{"fileBegin 1000", "error Connection reset by peer"};
        QTest::newRow("early close") << false << QStringList{"fileBegin 1000", "complete"};
    }

    void resetAndLinks()
    {
        QFETCH(bool, reset);
        QFETCH(QStringList, log);
        Rig r;
        Answer half = Answer::http(200, "OK", {{"Content-Length", "1000"}, {"Content-Type", "x/y"}},
                                   QByteArray(400, 'h'));
        if (reset)
            half.thenReset();
        r.server.setAnswer("/f", half);
        // A link already standing where the file goes, pointing out of the
        // folder, is a taken name: the download takes the next one.
        const QString outside = r.dir.filePath("outside.bin");
        QVERIFY(QFile::link(outside, r.dir.filePath("in/f.bin")) ||
                (QDir().mkpath(r.dir.filePath("in")) &&
                 QFile::link(outside, r.dir.filePath("in/f.bin"))));
        r.begin(r.server.url("/f"), r.dir.filePath("in/f.bin"));
        QTRY_COMPARE(r.log, log);
        QVERIFY(!QFile::exists(outside));
        QCOMPARE(readFile(r.dir.filePath("in/f_1.bin")), QByteArray(400, 'h'));
    }

    void timers()
    {
        for (const bool answered : {true, false}) {
            Rig r;
            RecipeHarness::setPeriods(30, 3600000, 200);
            const QByteArray body = QByteArray("0123456789abcdefg").repeated(12000);
            const QString local = r.dir.filePath("f.bin");
            r.server.setAnswer("/f", answered ? Answer::ok(body).cutAfterHeader(10).keepOpen()
                                              : Answer::silence());
            r.begin(r.server.url("/f"), local);
            QTRY_VERIFY(r.log.count("complete") + r.log.count(kLost) >= 3);
            const qsizetype at = r.log.indexOf("complete");
            QCOMPARE(r.log.mid(at, 3), (answered ? QStringList{"complete", kLost, kLost}
                                                 : QStringList(3, "complete")));
            QVERIFY(!answered || r.log.at(at - 1).startsWith(QLatin1String("progress 100 ")));
            QCOMPARE(readFile(local), answered ? body : QByteArray());
            QCOMPARE(r.server.closedByClient(), 1);
        }
    }

    void hostAndPort()
    {
        QStringList got;
        // A port of 0 fails too: the address failures show it.
        for (const char *host : {"example.com", "127.0.0.1:8080", "[::1]:81", "host:65536"}) {
            QString name;
            quint16 port = 0;
            const bool split = DownloadAsynch::splitHostPort(host, &name, &port);
            got << (split ? name + u' ' + QString::number(port) : "fails");
        }
        QCOMPARE(got.join(", "), "example.com 80, 127.0.0.1 8080, ::1 81, fails");
    }

    // Addresses that can't be used: the failure is reported, and a bad
    // address also finishes the transfer and is told; no connection is left.
    void addressFailures_data()
    {
        QTest::addColumn<QString>("url");
        QTest::addColumn<QString>("local");
        QTest::addColumn<QStringList>("log");
        QTest::addColumn<int>("state");
        auto row = [](const char *name, const char *url, const char *local, const QString &log,
                      int state = DownloadAsynch::Closed) {
            QTest::newRow(name) << QString(url) << QString(local)
                                << log.split(u'|', Qt::SkipEmptyParts) << state;
        };
        const QString empty = QStringLiteral(
            "error URL is empty or LocalFile is net set, Download can not be started");
        row("empty url", "", "f.bin", empty);
        row("empty local path", "%1/f.bin", "", empty);
        const QString told = kInvalid + "|complete|told " + kInvalidText;
        row("no path", "http://%1", "f.bin", told);
        row("port out of range", "http://127.0.0.1:0/f", "f.bin", told);
        // The socket's own description of a port nobody listens on.
        row("nobody listens", "127.0.0.1:%2/f", "f", "error Connection refused",
            DownloadAsynch::Failed);
    }
    void addressFailures()
    {
        QFETCH(QString, url);
        QFETCH(QString, local);
        QFETCH(QStringList, log);
        QFETCH(int, state);
        const quint16 unused = [] {
            TestServer gone;
            return gone.listen() ? gone.port() : quint16(0);
        }();
        Rig r;
        url.replace(QLatin1String("%1"), r.server.hostPort());
        r.begin(url.replace(QLatin1String("%2"), QString::number(unused)),
                local.isEmpty() ? local : r.dir.filePath(local));
        QTRY_COMPARE(r.log, log);
        QCOMPARE(r.d.socketState(), state);
    }
};

QTEST_GUILESS_MAIN(TestDownloadAsynch)
#include "tst_downloadasynch.moc"
