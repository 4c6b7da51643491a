#include "support/fakeprompts.h"
#include "support/testserver.h"
#include "system/logicaltimer.h"
#include "transfer/downloadasynch.h"

#include <QtTest>

#include <memory>

namespace {

const QString kEmptyAddress =
    QStringLiteral("error URL is empty or LocalFile is net set, Download can not be started");
const QString kInvalid = QStringLiteral("error Invalid procedure call or argument");
const QString kLost = QStringLiteral("error Connection Error");

// "a|b|c" as a list; the one way rows below spell lists.
QStringList split(const QString &texts)
{
    return texts.split(u'|', Qt::SkipEmptyParts);
}

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

QByteArray pattern(int size)
{
    QByteArray data(size, Qt::Uninitialized);
    for (int i = 0; i < size; ++i)
        data[i] = static_cast<char>((i * 7 + i / 251) & 0xff);
    return data;
}

// A folder, a local server and a transfer control whose every signal, in the
// order raised, is kept as text.
struct Rig
{
    Rig()
    {
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
    QString file(const QString &name) const { return dir.filePath(name); }
    // Points the control at an address and a file and starts it.
    void begin(const QString &url, const QString &local)
    {
        d.setUrl(url);
        d.setLocalFilePath(local);
        d.startDownload();
    }
    // Starts against a server path that never answers, so the file is open
    // and the first chunk is awaited; chunks are then fed by hand.
    bool startSilent(const QString &local, const QString &path = QStringLiteral("/file.bin"))
    {
        server.setAnswer(path.toLatin1(), TestServer::Answer::silence());
        begin(server.url(path), local);
        return server.waitForRequests(1) && d.socketState() == DownloadAsynch::Connected;
    }
    QByteArray request(const QByteArray &path) const
    {
        return "GET " + path + " HTTP/1.1\r\nHost: " + server.hostPort().toLatin1() +
               "\r\nAccept: */*\r\n\r\n";
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
    void init()
    {
        // The real timers stay out of the way unless a test maps them shorter.
        LogicalTimer::clearRealPeriods();
        LogicalTimer::setRealPeriod(1000, 3600000);
        LogicalTimer::setRealPeriod(60000, 3600000);
        m_rig = std::make_unique<Rig>();
        QVERIFY(m_rig->listening && m_rig->dir.isValid());
    }
    void cleanup() { m_rig.reset(); }

    // Steps handed to the control on a connection that stays silent: a
    // chunk, "~chunk" one that arrives after the peer closed ("~" alone: the
    // close itself), "#" a speed tick, "!" the silence timer, "stop", and
    // "read-only" for the file.
    void chunks_data()
    {
        QTest::addColumn<QStringList>("steps");
        QTest::addColumn<QStringList>("log");
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<float>("ownerSize");
        QTest::addColumn<QString>("path");
        auto row = [](const char *name, const QString &steps, const QString &log,
                      const QString &file, float owner = 0, const char *path = "/file.bin") {
            QTest::newRow(name) << split(steps) << split(log) << expand(file) << owner
                                << QString(path);
        };
        row("header and body apart", "$|abc|def", "", "abcdef");
        row("body begins in the header's chunk", "$ab|cd", "", "abcd");
        row("header without its empty line", "@Content-Type: a/b\r\n|junk", kInvalid, "junk");
        row("body chunk that looks like a header is cut",
            "$one|x 200 OK content-type: y\r\n\r\ntwo", "", "onetwo");
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
        row("size in any case, blanks around",
            "@content-length:  10 \r\nContent-Type: x/y" + body + "|~", "fileBegin 10|complete",
            ten);
        row("size replaces the owner's guess",
            "@Location: a\r\nContent-Length: 10\r\nServer: t" + body + "|#",
            "fileBegin 10|progress 100 10 10 0 0|complete", ten, 5);
        row("size in the last line is not seen",
            "@Content-Type: x/y\r\nContent-Length: 10" + body + "|#|~",
            "progress 50 10 10 10 1|complete", ten, 20);
        row("size not a number", "@Content-Length: ten\r\nContent-Type: x/y" + body + "|~",
            "complete", ten);
        row("size too large", "@Content-Length: 1e19\r\nContent-Type: x/y" + body, "error Overflow",
            "");
        row("size without its blank", "@Content-Length:\r\nContent-Type: x/y" + body, kInvalid, "");

        // A first chunk that is no known answer is still written, and the
        // close then finishes the transfer as data were received.
        const QString notFound = QStringLiteral("HTTP/1.1 404 Not Found\r\n\r\ngone");
        const QString partial = QStringLiteral("HTTP/1.1 206 Partial Content\r\n\r\nabcd");
        row("first chunk 404", notFound + "|~", kLost + "|complete", notFound);
        row("first chunk 206", partial + "|~", kLost + "|complete", partial);
        row("first chunk not HTTP", "hello there|~", kLost + "|complete", "hello there");
        row("closed without a byte", "~", kLost, "");

        row("ticks, known size", "%1000|*250|#|#|*500|#|*250|#|#",
            "fileBegin 1000|progress 25 250 250 750 3|progress 25 1 250 750 750|"
            "progress 75 500 750 250 0.5|progress 100 250 1000 0 0|complete",
            "*1000");
        row("ticks, unknown size", "$|*300|#|*200|#|#",
            "progress -1 300 300 -1 -1|progress -1 200 500 -1 -1|progress -1 0 500 -1 -1", "*500");
        row("ticks, owner's size, two decimals", "$|*1|#|*1|#|*1|#|#",
            "progress 33.33 1 1 2 2|progress 66.67 1 2 1 1|progress 100 1 3 0 0|complete", "*3", 3);
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
        row("silence at 97%, rapidshare", "%1000|*970|!", "fileBegin 1000|complete", "*970", 0,
            "/rapidshare");
        row("silence at 97%, YouTube", "%1000|*970|!", "fileBegin 1000|complete", "*970", 0,
            "/YouTube");
        row("silence at 96%, rapidshare", "%1000|*960|!", "fileBegin 1000|" + kLost, "*960", 0,
            "/rapidshare");
        row("silence, unknown size", "$|*500|!", "complete", "*500");
        row("silence before any answer, owner's size", "!", kLost, "", 1000);
        row("a tick after the silence closed the line finishes", "$|*5|!|#",
            "complete|progress -1 5 5 -1 -1|complete", "*5");

        // A stop closes the line and deletes the file, even a read-only one,
        // but for YouTube's part.
        row("stop", "$some data|stop", "stopped", "<missing>");
        row("stop, read-only file", "$some data|read-only|stop", "stopped", "<missing>");
        row("stop keeps YouTube's part", "$some data|stop", "stopped", "some data", 0, "/YOUTUBE");
    }
    void chunks()
    {
        QFETCH(QStringList, steps);
        QFETCH(QStringList, log);
        QFETCH(QByteArray, file);
        QFETCH(float, ownerSize);
        QFETCH(QString, path);
        Rig &r = *m_rig;
        r.d.setFileSize(ownerSize);
        const QString local = r.file(QStringLiteral("c.bin"));
        QVERIFY(r.startSilent(local, path));
        for (const QString &step : steps) {
            const bool late = step.startsWith(u'~');
            const QByteArray chunk = expand(late ? step.mid(1) : step);
            if (step == u'#')
                r.d.speedTick();
            else if (step == u'!')
                r.d.silenceTick();
            else if (step == QLatin1String("stop"))
                r.d.stopDownload();
            else if (step == QLatin1String("read-only"))
                QFile::setPermissions(local, QFile::ReadOwner);
            else
                r.d.handleData(chunk, chunk.size(),
                               late ? DownloadAsynch::PeerClosed : DownloadAsynch::Connected);
        }
        QCOMPARE(r.log, log);
        QCOMPARE(readFile(local), file);
        // The silence and a stop let the connection go, and the server sees it closed.
        const bool letGo =
            steps.contains(QLatin1String("!")) || steps.contains(QLatin1String("stop"));
        QCOMPARE(r.d.socketState(),
                 int(letGo ? DownloadAsynch::Closed : DownloadAsynch::Connected));
        QTRY_COMPARE(r.server.closedByClient(), letGo ? 1 : 0);
    }

    void connectAndRedirect_data()
    {
        QTest::addColumn<QString>("url");
        QTest::addColumn<QByteArray>("path");
        QTest::newRow("without scheme") << "%1/d/f.zip?x=1&y=2" << QByteArray("/d/f.zip?x=1&y=2");
        QTest::newRow("scheme upper case, and inside the query")
            << "HTTP://%1/get.php?u=http://x.org/a" << QByteArray("/get.php?u=x.org/a");
    }
    void connectAndRedirect()
    {
        QFETCH(QString, url);
        QFETCH(QByteArray, path);
        Rig &r = *m_rig;
        const QByteArray body = pattern(3000);
        const QString local = r.file(QStringLiteral("sub/folder/movie.avi"));
        // The first address is sent on twice; "http://www." is dropped from a
        // redirect's address.
        r.server.setHandler([&](const TestServer::Request &) {
            return TestServer::Answer::redirect(302, r.server.url(QStringLiteral("/second")));
        });
        const QString third = "http://www." + r.server.hostPort() + "/third?k=v";
        r.server.setAnswer("/second", TestServer::Answer::redirect(303, third).cutAfterHeader(20));
        r.server.setAnswer("/third?k=v", TestServer::Answer::ok(body));
        r.begin(url.arg(r.server.hostPort()), local);
        QTRY_COMPARE(r.log, (QStringList{"fileBegin 3000", "complete"}));

        // Exactly these bytes and nothing else: no Range, no User-Agent.
        QList<QByteArray> raws;
        for (const TestServer::Request &req : r.server.requests())
            raws << req.raw;
        QCOMPARE(raws, (QList<QByteArray>{r.request(path), r.request("/second"),
                                          r.request("/third?k=v")}));
        // The missing folders were made, and the same empty file was reopened
        // at each connection; the redirects' own bodies were dropped.
        QCOMPARE(QDir(QFileInfo(local).path()).entryList(QDir::Files), QStringList{"movie.avi"});
        QCOMPARE(readFile(local), body);
        QCOMPARE(r.d.fileSize(), 3000.f);
        QCOMPARE(r.d.socketState(), int(DownloadAsynch::PeerClosed));
    }

    void redirectInsideBody()
    {
        Rig &r = *m_rig;
        r.server.setAnswer("/next", TestServer::Answer::ok("NEW"));
        const QString local = r.file(QStringLiteral("r.bin"));
        QVERIFY(r.startSilent(local));
        for (const QByteArray &chunk :
             {expand("$0123456789"),
              "xx 302 FOUND\r\nlocation: " + r.server.url("/next").toLatin1() + "\r\nmore"})
            r.d.handleData(chunk, chunk.size(), DownloadAsynch::Connected);
        QTRY_COMPARE(r.log, (QStringList{"fileBegin 3", "complete"}));
        // The file had content, so the new connection took the next name.
        QCOMPARE(readFile(local), QByteArray("0123456789"));
        QCOMPARE(readFile(r.file(QStringLiteral("r_1.bin"))), QByteArray("NEW"));
    }

    void timers_data()
    {
        QTest::addColumn<bool>("answered");
        QTest::addColumn<QStringList>("outcomes");
        // The speed tick finds the size reached while the peer keeps the line
        // open; the silence timer then closes it.
        QTest::newRow("answer on an open line") << true << QStringList{"complete", kLost, kLost};
        // The silence timer runs from the connection on, with no data at all.
        QTest::newRow("no answer") << false << QStringList(3, QStringLiteral("complete"));
    }
    void timers()
    {
        QFETCH(bool, answered);
        QFETCH(QStringList, outcomes);
        LogicalTimer::setRealPeriod(1000, 30);
        LogicalTimer::setRealPeriod(60000, 200);
        Rig &r = *m_rig;
        const QByteArray body = pattern(200000);
        r.server.setAnswer("/f", answered
                                     ? TestServer::Answer::ok(body).cutAfterHeader(10).keepOpen()
                                     : TestServer::Answer::silence());
        r.begin(r.server.url(QStringLiteral("/f")), r.file(QStringLiteral("f.bin")));
        const QString first = QStringLiteral("complete");
        QTRY_VERIFY(r.log.contains(first) && r.log.size() - r.log.indexOf(first) >= 3);
        // After the end nothing but the silence timer reports, each minute.
        const qsizetype at = r.log.indexOf(first);
        QCOMPARE(r.log.mid(at, 3), outcomes);
        QVERIFY(!answered || r.log.at(at - 1).startsWith(QLatin1String("progress 100 ")));
        QCOMPARE(readFile(r.file(QStringLiteral("f.bin"))), answered ? body : QByteArray());
        QCOMPARE(r.server.closedByClient(), 1);
    }

    void hostAndPort_data()
    {
        QTest::addColumn<QString>("host");
        QTest::addColumn<QString>("split"); // "name port", or "fails"
        for (const char *row :
             {"example.com>example.com 80", "127.0.0.1:8080>127.0.0.1 8080", "[::1]:81>::1 81",
              "host:0>fails", "host:65536>fails", "host:abc>fails"})
            QTest::newRow(row) << QString(row).section(u'>', 0, 0) << QString(row).section(u'>', 1);
    }
    void hostAndPort()
    {
        QFETCH(QString, host);
        QFETCH(QString, split);
        QString name;
        quint16 port = 0;
        const bool ok = DownloadAsynch::splitHostPort(host, &name, &port);
        QCOMPARE(ok ? name + u' ' + QString::number(port) : QStringLiteral("fails"), split);
    }

    void addressFailures_data()
    {
        QTest::addColumn<QString>("url");
        QTest::addColumn<QString>("local");
        QTest::addColumn<QStringList>("log");
        auto row = [](const char *name, const char *url, const char *local, const QString &log) {
            QTest::newRow(name) << QString(url) << QString(local) << split(log);
        };
        row("empty url", "", "f.bin", kEmptyAddress);
        row("empty local path", "%1/f.bin", "", kEmptyAddress);
        // The failure path reports, finishes and tells the user.
        row("no path", "http://%1", "f.bin", kInvalid + "|complete");
        row("port out of range", "http://127.0.0.1:0/f", "f.bin", kInvalid + "|complete");
    }
    void addressFailures()
    {
        QFETCH(QString, url);
        QFETCH(QString, local);
        QFETCH(QStringList, log);
        Rig &r = *m_rig;
        r.begin(url.contains(QLatin1String("%1")) ? url.arg(r.server.hostPort()) : url,
                local.isEmpty() ? local : r.file(local));
        QCOMPARE(r.log, log);
        QCOMPARE(r.prompts.messages.size(), log.size() - 1);
        QVERIFY(r.prompts.messages.isEmpty() || "error " + r.prompts.messages[0].text == log[0]);
        QCOMPARE(r.d.socketState(), int(DownloadAsynch::Closed)); // no connection was tried
    }

    void socketFailure()
    {
        // A port nobody listens on: the socket's own description is reported.
        const quint16 port = [] {
            TestServer gone;
            return gone.listen() ? gone.port() : quint16(0);
        }();
        QVERIFY(port != 0);
        Rig &r = *m_rig;
        r.begin(QStringLiteral("127.0.0.1:%1/f").arg(port), r.file(QStringLiteral("f")));
        QTRY_COMPARE(r.log.size(), 1);
        QVERIFY(r.log.at(0).startsWith(QLatin1String("error ")));
        QVERIFY(r.log.at(0) != kLost);
        QCOMPARE(r.d.socketState(), int(DownloadAsynch::Failed));
    }

private:
    std::unique_ptr<Rig> m_rig;
};

QTEST_GUILESS_MAIN(TestDownloadAsynch)
#include "tst_downloadasynch.moc"
