#include "support/fakeprompts.h"
#include "support/testserver.h"
#include "system/logicaltimer.h"
#include "transfer/downloadasynch.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

namespace {

const QString kEmptyAddress =
    QStringLiteral("URL is empty or LocalFile is net set, Download can not be started");
const QByteArray kHeader = "HTTP/1.1 200 OK\r\nContent-Type: a/b\r\n\r\n";
const QStringList kComplete{QStringLiteral("complete")};

QString num(double v)
{
    return QString::number(v, 'g', 10);
}

// "a|b|c" as a list; the one way rows below spell lists.
QStringList split(const QString &texts)
{
    return texts.split(u'|', Qt::SkipEmptyParts);
}

// A local server and a transfer control whose every signal, in the order
// raised, is kept as text.
struct Rig
{
    Rig()
    {
        listening = server.listen();
        QObject::connect(&d, &DownloadAsynch::fileBegin,
                         [this](float size) { log << "fileBegin " + num(size); });
        QObject::connect(&d, &DownloadAsynch::progress,
                         [this](double value, int bps, float done, float remain, float time) {
                             log << QStringLiteral("progress %1 %2 %3 %4 %5")
                                        .arg(num(value), QString::number(bps), num(done),
                                             num(remain), num(time));
                         });
        QObject::connect(&d, &DownloadAsynch::complete, [this] { log << "complete"; });
        QObject::connect(&d, &DownloadAsynch::stopped, [this] { log << "stopped"; });
        QObject::connect(&d, &DownloadAsynch::error,
                         [this](const QString &desc) { log << "error " + desc; });
    }
    // Outcomes only: complete and error.
    QStringList outcomes() const
    {
        return log.filter(QRegularExpression(QStringLiteral("^(complete|error)")));
    }
    // Points the control at an address and a file and starts it.
    void begin(const QString &url, const QString &local, int chunk = 0)
    {
        d.setUrl(url);
        d.setLocalFilePath(local);
        d.startDownload();
    }
    // Serves `answer` at `path` and starts the control on it.
    void fetch(const TestServer::Answer &answer, const QString &local, int chunk = 0,
               const QString &path = QStringLiteral("/f"))
    {
        server.setAnswer(path.toLatin1(), answer);
        begin(server.url(path), local, chunk);
    }
    // Starts against a server path that never answers, so the file is open
    // and the first chunk is awaited; chunks are then fed by hand.
    bool startSilent(const QString &local, const QString &path = QStringLiteral("/file.bin"))
    {
        server.setAnswer(path.toLatin1(), TestServer::Answer::silence());
        begin(server.url(path), local);
        return server.waitForRequests(1) && d.socketState() == DownloadAsynch::Connected;
    }
    void feed(const QByteArray &chunk, int state = 7) { d.handleData(chunk, chunk.size(), state); }
    QByteArray request(const QByteArray &path) const
    {
        return "GET " + path + " HTTP/1.1\r\nHost: " + server.hostPort().toLatin1() +
               "\r\nAccept: */*\r\n\r\n";
    }

    QStringList log; // outlives the control, which may still signal as it goes
    TestServer server;
    bool listening = false;
    FakePrompts prompts;
    DownloadAsynch d{&prompts};
};

QByteArray readFile(const QString &path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray("<missing>");
}

bool writeFile(const QString &path, const QByteArray &bytes)
{
    QFile f(path);
    return f.open(QIODevice::WriteOnly) && f.write(bytes) == bytes.size();
}

QByteArray pattern(int size)
{
    QByteArray data(size, Qt::Uninitialized);
    for (int i = 0; i < size; ++i)
        data[i] = static_cast<char>((i * 7 + i / 251) & 0xff);
    return data;
}

} // namespace

class TestDownloadAsynch : public QObject
{
    Q_OBJECT
    QString file(const QString &name) const { return m_dir.filePath(name); }

private slots:
    void init()
    {
        LogicalTimer::clearRealPeriods();
        QVERIFY(m_dir.isValid());
        // Each test gets an empty folder, and a fresh server and control.
        QDir(m_dir.path()).removeRecursively();
        QDir().mkpath(m_dir.path());
        m_rig = std::make_unique<Rig>();
        QVERIFY(m_rig->listening);
    }
    void cleanup()
    {
        m_rig.reset();
        LogicalTimer::clearRealPeriods();
    }

    void requestBytes_data()
    {
        QTest::addColumn<QString>("url");
        QTest::addColumn<QByteArray>("path");
        QTest::newRow("with scheme") << "http://%1/file.bin" << QByteArray("/file.bin");
        QTest::newRow("without scheme") << "%1/d/f.zip?x=1&y=2" << QByteArray("/d/f.zip?x=1&y=2");
        QTest::newRow("scheme upper case, and inside the query")
            << "HTTP://%1/get.php?u=http://x.org/a" << QByteArray("/get.php?u=x.org/a");
    }
    void requestBytes()
    {
        QFETCH(QString, url);
        QFETCH(QByteArray, path);
        Rig &r = *m_rig;
        const QByteArray body = pattern(5000);
        r.server.setHandler(
            [&](const TestServer::Request &) { return TestServer::Answer::ok(body); });
        const QString local = file(QStringLiteral("sub/folder/f.bin"));
        r.begin(url.arg(r.server.hostPort()), local, 3);
        QTRY_COMPARE(r.outcomes(), kComplete);
        // Exactly these bytes and nothing else: no Range, no User-Agent.
        QCOMPARE(r.server.requests().size(), 1);
        QCOMPARE(r.server.requests().at(0).raw, r.request(path));
        QCOMPARE(readFile(local), body); // the missing folders were made
        QCOMPARE(r.log.first(), QStringLiteral("fileBegin 5000"));
    }

    void hostAndPort_data()
    {
        QTest::addColumn<QString>("host");
        QTest::addColumn<QString>("split"); // "name port", or "fails"
        auto row = [](const char *host, const char *split) {
            QTest::newRow(host) << QString(host) << QString(split);
        };
        row("example.com", "example.com 80");
        row("127.0.0.1:8080", "127.0.0.1 8080");
        row("[::1]:81", "::1 81");
        row("host:0", "fails");
        row("host:65536", "fails");
        row("host:abc", "fails");
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
        QTest::addColumn<bool>("message");
        auto row = [](const char *name, const char *url, const char *local, const QString &log,
                      bool message) {
            QTest::newRow(name) << QString(url) << QString(local) << split(log) << message;
        };
        row("empty url", "", "f.bin", "error " + kEmptyAddress, false);
        row("empty local path", "%1/f.bin", "", "error " + kEmptyAddress, false);
        // No "/" after the host: the failure path reports, finishes and tells the user.
        row("no path", "http://%1", "f.bin", "error Invalid procedure call or argument|complete",
            true);
    }
    void addressFailures()
    {
        QFETCH(QString, url);
        QFETCH(QString, local);
        QFETCH(QStringList, log);
        QFETCH(bool, message);
        Rig &r = *m_rig;
        r.begin(url.contains(QLatin1String("%1")) ? url.arg(r.server.hostPort()) : url,
                local.isEmpty() ? local : file(local));
        QCOMPARE(r.log, log);
        QStringList texts;
        for (const FakePrompts::Message &m : r.prompts.messages)
            texts << m.text;
        QCOMPARE(texts, message ? QStringList{log.at(0).mid(6)} : QStringList());
        QTest::qWait(50);
        QCOMPARE(r.server.connectionCount(), 0);
        QCOMPARE(r.d.socketState(), int(DownloadAsynch::Closed));
    }

    void redirectChain()
    {
        Rig &r = *m_rig;
        const QByteArray body = pattern(3000);
        const QString local = file(QStringLiteral("movie.avi"));
        r.server.setAnswer("/first", TestServer::Answer::redirect(302, r.server.url("/second")));
        // "http://www." is dropped from a redirect's address.
        const QString third = "http://www." + r.server.hostPort() + "/third?k=v";
        r.server.setAnswer("/second", TestServer::Answer::redirect(303, third).cutAfterHeader(20));
        QList<qint64> sizesSeen;
        r.server.setHandler([&](const TestServer::Request &) {
            sizesSeen << (QFileInfo::exists(local) ? QFileInfo(local).size() : -1);
            return TestServer::Answer::ok(body);
        });
        r.begin(r.server.url("/first"), local);
        QTRY_COMPARE(r.outcomes(), kComplete);

        QList<QByteArray> raws;
        for (const TestServer::Request &req : r.server.requests())
            raws << req.raw;
        QCOMPARE(raws, (QList<QByteArray>{r.request("/first"), r.request("/second"),
                                          r.request("/third?k=v")}));
        QCOMPARE(r.server.connectionCount(), 3);
        // The same, still empty, file was reopened at each connection.
        QCOMPARE(sizesSeen, QList<qint64>{0});
        QCOMPARE(QDir(m_dir.path()).entryList(QDir::Files), QStringList{"movie.avi"});
        QCOMPARE(readFile(local), body); // the redirects' own bodies are dropped
    }

    void sizeFromHeader_data()
    {
        QTest::addColumn<QByteArray>("headers");
        QTest::addColumn<float>("ownerSize");
        QTest::addColumn<QStringList>("log");
        QTest::addColumn<float>("size");
        auto row = [](const char *name, const char *headers, float owner, const char *log,
                      float size) {
            QTest::newRow(name) << QByteArray(headers) << owner << split(log) << size;
        };
        const char *ten = "fileBegin 10|complete";
        row("in a middle line", "Content-Length: 10\r\nContent-Type: x/y", 999, ten, 10);
        row("any case, blanks around", "content-length:  10 \r\nContent-Type: x/y", 999, ten, 10);
        row("in the last line is not seen", "Content-Type: x/y\r\nContent-Length: 10", 999,
            "complete", 999);
        row("none", "Content-Type: x/y", 999, "complete", 999);
        row("not a number", "Content-Length: ten\r\nContent-Type: x/y", 0, "complete", 0);
        row("replaces the owner's guess", "Location: a\r\nContent-Length: 10\r\nServer: t", 5, ten,
            10);
    }
    void sizeFromHeader()
    {
        QFETCH(QByteArray, headers);
        QFETCH(float, ownerSize);
        QFETCH(QStringList, log);
        QFETCH(float, size);
        Rig &r = *m_rig;
        r.d.setFileSize(ownerSize);
        r.fetch(TestServer::Answer::raw("HTTP/1.1 200 OK\r\n" + headers + "\r\n\r\n0123456789"),
                file(QStringLiteral("f")));
        QTRY_COMPARE(r.outcomes(), kComplete);
        QCOMPARE(r.log, log);
        QCOMPARE(r.d.fileSize(), size);
        QCOMPARE(readFile(file(QStringLiteral("f"))), QByteArray("0123456789"));
    }

    void progressTicks_data()
    {
        QTest::addColumn<bool>("known"); // Content-Length: 1000 in the header
        QTest::addColumn<float>("ownerSize");
        QTest::addColumn<QList<int>>("perSecond"); // body bytes before each tick
        QTest::addColumn<QStringList>("log");
        auto row = [](const char *name, bool known, float owner, QList<int> perSecond,
                      const char *log) {
            QTest::newRow(name) << known << owner << perSecond << split(log);
        };
        row("known size", true, 0, {250, 0, 500, 250, 0},
            "fileBegin 1000|progress 25 250 250 750 3|progress 25 1 250 750 750|"
            "progress 75 500 750 250 0.5|progress 100 250 1000 0 0|complete");
        row("unknown size", false, 0, {300, 200, 0},
            "progress -1 300 300 -1 -1|progress -1 200 500 -1 -1|progress -1 0 500 -1 -1");
        row("owner's size, two decimals", false, 3, {1, 1, 1, 0},
            "progress 33.33 1 1 2 2|progress 66.67 1 2 1 1|progress 100 1 3 0 0|complete");
    }
    void progressTicks()
    {
        QFETCH(bool, known);
        QFETCH(float, ownerSize);
        QFETCH(QList<int>, perSecond);
        QFETCH(QStringList, log);
        // The real timers stay out of the way; the ticks are driven by hand.
        LogicalTimer::setRealPeriod(1000, 3600000);
        LogicalTimer::setRealPeriod(60000, 3600000);
        Rig &r = *m_rig;
        r.d.setFileSize(ownerSize);
        QVERIFY(r.startSilent(file(QStringLiteral("p.bin"))));
        r.feed(known ? "HTTP/1.1 200 OK\r\nContent-Length: 1000\r\nContent-Type: a/b\r\n\r\n"
                     : kHeader);
        QByteArray all;
        for (int n : perSecond) {
            const QByteArray chunk = pattern(n + all.size()).mid(all.size());
            all += chunk;
            if (n > 0)
                r.feed(chunk);
            r.d.speedTick();
        }
        QCOMPARE(r.log, log);
        QCOMPARE(readFile(file(QStringLiteral("p.bin"))), all);
    }

    void floatSizeNeverMet()
    {
        // 16777219 is not a single-precision number: the size becomes
        // 16777220, and single bytes added to 16777216 are lost to rounding,
        // so the size is never met and only the silence timer ends it.
        LogicalTimer::setRealPeriod(1000, 3600000);
        LogicalTimer::setRealPeriod(60000, 3600000);
        Rig &r = *m_rig;
        QVERIFY(r.startSilent(file(QStringLiteral("big.bin"))));
        r.feed("HTTP/1.1 200 OK\r\nContent-Length: 16777219\r\nContent-Type: a/b\r\n\r\n");
        QCOMPARE(r.d.fileSize(), 16777220.f);
        r.feed(QByteArray(16777216, 'x'));
        for (int i = 0; i < 3; ++i)
            r.feed("y");
        r.d.speedTick();
        r.d.speedTick();
        QCOMPARE(r.log.size(), 3);
        QCOMPARE((QStringList{r.log.at(0), r.log.at(1).section(' ', 0, 4), r.log.at(2)}),
                 (QStringList{"fileBegin 16777220", "progress 100 16777216 16777216 4",
                              "progress 100 1 16777216 4 4"}));
        QCOMPARE(QFileInfo(file(QStringLiteral("big.bin"))).size(), 16777219);
        r.d.silenceTick();
        QCOMPARE(r.log.last(), QStringLiteral("error Connection Error"));
    }

    void completes_data()
    {
        QTest::addColumn<int>("cutMode"); // 0 whole, 1 header apart, 2 many pieces, 3 kept open
        QTest::newRow("on close, whole") << 0;
        QTest::newRow("on close, header and body apart") << 1;
        QTest::newRow("on close, many delayed pieces") << 2;
        QTest::newRow("size reached, the peer keeps the line open") << 3;
    }
    void completes()
    {
        QFETCH(int, cutMode);
        LogicalTimer::setRealPeriod(1000, cutMode == 3 ? 30 : 3600000);
        Rig &r = *m_rig;
        const QByteArray body = pattern(200000);
        TestServer::Answer answer = TestServer::Answer::ok(body);
        if (cutMode == 1 || cutMode == 3)
            answer.cutAfterHeader(cutMode == 1 ? 30 : 10);
        if (cutMode == 2)
            answer.cutEvery(37000, 10);
        if (cutMode == 3)
            answer.keepOpen();
        const QString local = file(QStringLiteral("f.bin"));
        r.fetch(answer, local, 1);
        QTRY_COMPARE(r.outcomes(), kComplete);
        QCOMPARE(r.log.first(), QStringLiteral("fileBegin 200000"));
        QCOMPARE(readFile(local), body);
        // Closed by the peer, or still open and ended by the speed tick.
        QCOMPARE(r.d.socketState(),
                 int(cutMode == 3 ? DownloadAsynch::Connected : DownloadAsynch::PeerClosed));
        const qsizetype at = r.log.indexOf(QStringLiteral("complete"));
        QVERIFY(cutMode != 3 || r.log.at(at - 1).startsWith(QLatin1String("progress 100 ")));
        // Nothing more comes: the speed ticks stopped, the silence timer waits.
        QTest::qWait(100);
        QCOMPARE(r.log.size(), at + 1);
    }

    void firstChunkNotAnAnswer_data()
    {
        QTest::addColumn<QByteArray>("answer");
        QTest::addColumn<QStringList>("log");
        // The answer is written all the same, and the close by the peer then
        // finishes the transfer, as data were received.
        const QStringList both = split("error Connection Error|complete");
        QTest::newRow("404")
            << TestServer::Answer::status(404, "Not Found", "<html>gone</html>").bytes << both;
        QTest::newRow("206") << QByteArray("HTTP/1.1 206 Partial Content\r\nContent-Type: a/b\r\n"
                                           "Content-Length: 4\r\n\r\nabcd")
                             << both;
        QTest::newRow("no HTTP at all") << QByteArray("hello there") << both;
        // The close is then the first arrival; with nothing received it
        // doesn't finish the transfer.
        QTest::newRow("closed without a byte") << QByteArray("") << both.mid(0, 1);
    }
    void firstChunkNotAnAnswer()
    {
        QFETCH(QByteArray, answer);
        QFETCH(QStringList, log);
        Rig &r = *m_rig;
        const QString local = file(QStringLiteral("f.html"));
        r.fetch(TestServer::Answer::raw(answer), local);
        QTRY_COMPARE(r.log, log);
        QCOMPARE(r.d.socketState(), int(DownloadAsynch::PeerClosed));
        QCOMPARE(readFile(local), answer);
        QTest::qWait(50);
        QCOMPARE(r.log, log);
    }

    void silence_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<int>("contentLength"); // -1: none in the header, -2: no answer at all
        QTest::addColumn<float>("ownerSize");
        QTest::addColumn<int>("sent");
        QTest::addColumn<QString>("outcome");
        const QString err = QStringLiteral("error Connection Error");
        const QString done = QStringLiteral("complete");
        QTest::newRow("no body yet") << "/file.bin" << 1000 << 0.f << 0 << err;
        QTest::newRow("97% of a plain file") << "/file.bin" << 1000 << 0.f << 970 << err;
        QTest::newRow("97% on rapidshare") << "/rapidshare/f.rar" << 1000 << 0.f << 970 << done;
        QTest::newRow("97% on YouTube") << "/watch/YouTube.flv" << 1000 << 0.f << 970 << done;
        QTest::newRow("96% on rapidshare") << "/rapidshare/f.rar" << 1000 << 0.f << 960 << err;
        QTest::newRow("unknown size") << "/file.bin" << -1 << 0.f << 500 << done;
        QTest::newRow("no answer, no size") << "/file.bin" << -2 << 0.f << 0 << done;
        QTest::newRow("no answer, owner's size") << "/file.bin" << -2 << 1000.f << 0 << err;
    }
    void silence()
    {
        QFETCH(QString, path);
        QFETCH(int, contentLength);
        QFETCH(float, ownerSize);
        QFETCH(int, sent);
        QFETCH(QString, outcome);
        LogicalTimer::setRealPeriod(60000, 150);
        Rig &r = *m_rig;
        QList<QPair<QByteArray, QByteArray>> headers{{"Content-Type", "a/b"}};
        if (contentLength >= 0)
            headers.prepend({"Content-Length", QByteArray::number(contentLength)});
        r.server.setAnswer(
            path.toLatin1(),
            contentLength == -2
                ? TestServer::Answer::silence()
                : TestServer::Answer::http(200, "OK", headers, pattern(sent)).keepOpen());
        r.d.setFileSize(ownerSize);
        r.begin(r.server.url(path), file(QStringLiteral("s.bin")));
        QTRY_VERIFY(!r.outcomes().isEmpty());
        QCOMPARE(r.outcomes().first(), outcome);
        // The silence closed the connection.
        QTRY_COMPARE(r.server.closedByClient(), 1);
        QCOMPARE(r.d.socketState(), int(DownloadAsynch::Closed));
    }

    void silenceRepeatsAfterComplete()
    {
        LogicalTimer::setRealPeriod(60000, 150);
        Rig &r = *m_rig;
        r.fetch(TestServer::Answer::ok(pattern(1000)), file(QStringLiteral("f.bin")));
        QTRY_COMPARE(r.outcomes(), kComplete);
        // A minute after the last chunk, and every minute after that, the
        // timer reports again, as an error for a plain site.
        QTRY_COMPARE(r.outcomes().size(), 3);
        QCOMPARE(r.outcomes().mid(1), QStringList(2, QStringLiteral("error Connection Error")));
    }

    void stop_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<bool>("started");
        QTest::addColumn<bool>("readOnly");
        QTest::addColumn<bool>("kept");
        QTest::newRow("plain file") << "/file.bin" << true << false << false;
        QTest::newRow("read-only file") << "/file.bin" << true << true << false;
        QTest::newRow("youtube keeps its part") << "/get/YOUTUBE/v.flv" << true << false << true;
        QTest::newRow("never started") << "/file.bin" << false << false << false;
        QTest::newRow("never started, youtube") << "/youtube.flv" << false << false << true;
    }
    void stop()
    {
        QFETCH(QString, path);
        QFETCH(bool, started);
        QFETCH(bool, readOnly);
        QFETCH(bool, kept);
        LogicalTimer::setRealPeriod(1000, 3600000);
        Rig &r = *m_rig;
        const QString local = file(QStringLiteral("part.bin"));
        if (started) {
            QVERIFY(r.startSilent(local, path));
            r.feed(kHeader + "some data");
        } else {
            QVERIFY(writeFile(local, "earlier transfer"));
            r.d.setUrl(r.server.url(path));
            r.d.setLocalFilePath(local);
        }
        if (readOnly)
            QFile::setPermissions(local, QFile::ReadOwner);
        r.d.stopDownload();
        QCOMPARE(r.log, QStringList{QStringLiteral("stopped")});
        QCOMPARE(QFileInfo::exists(local), kept);
        if (started) {
            QTRY_COMPARE(r.server.closedByClient(), 1);
            QCOMPARE(r.d.socketState(), int(DownloadAsynch::Closed));
        }
    }

    void takenFileName_data()
    {
        QTest::addColumn<QByteArray>("existing"); // null: no file
        QTest::addColumn<QString>("written");
        QTest::newRow("free") << QByteArray() << "clip.avi";
        QTest::newRow("empty file is used") << QByteArray("") << "clip.avi";
        QTest::newRow("file with content") << QByteArray("old") << "clip_1.avi";
    }
    void takenFileName()
    {
        QFETCH(QByteArray, existing);
        QFETCH(QString, written);
        Rig &r = *m_rig;
        const QString local = file(QStringLiteral("clip.avi"));
        QVERIFY(existing.isNull() || writeFile(local, existing));
        r.fetch(TestServer::Answer::ok("new data"), local);
        QTRY_COMPARE(r.outcomes(), kComplete);
        QCOMPARE(readFile(file(written)), QByteArray("new data"));
        if (!existing.isEmpty())
            QCOMPARE(readFile(local), existing);
    }

    void chunkHandling_data()
    {
        QTest::addColumn<QStringList>("chunks"); // "$" stands for a whole 200 header
        QTest::addColumn<QString>("states");     // the socket state with each chunk
        QTest::addColumn<QStringList>("log");
        QTest::addColumn<QByteArray>("file");
        auto row = [](const char *name, const char *chunks, const char *states, const char *log,
                      const char *file) {
            QTest::newRow(name) << split(chunks) << QString(states) << split(log)
                                << QByteArray(file);
        };
        row("header and body apart", "$|abc|def", "777", "", "abcdef");
        row("body begins in the header's chunk", "$ab|cd", "77", "", "abcd");
        row("header without its empty line", "HTTP/1.1 200 OK\r\nContent-Type: a/b\r\n|junk", "77",
            "error Invalid procedure call or argument", "junk");
        row("body chunk that looks like a header is cut",
            "$one|x 200 OK content-type: y\r\n\r\ntwo", "77", "", "onetwo");
        row("data after the peer closed are not taken", "$one|two", "78", "", "one");
        row("a redirect without Location is body", "$one|302 Found here", "77", "",
            "one302 Found here");
    }
    void chunkHandling()
    {
        QFETCH(QStringList, chunks);
        QFETCH(QString, states);
        QFETCH(QStringList, log);
        QFETCH(QByteArray, file);
        LogicalTimer::setRealPeriod(1000, 3600000);
        Rig &r = *m_rig;
        const QString local = this->file(QStringLiteral("c.bin"));
        QVERIFY(r.startSilent(local));
        for (int i = 0; i < chunks.size(); ++i)
            r.feed(chunks.at(i).toLatin1().replace("$", kHeader), states.mid(i, 1).toInt());
        QCOMPARE(r.log, log);
        QCOMPARE(readFile(local), file);
    }

    void redirectInsideBody()
    {
        Rig &r = *m_rig;
        r.server.setAnswer("/next", TestServer::Answer::ok("NEW"));
        const QString local = file(QStringLiteral("r.bin"));
        QVERIFY(r.startSilent(local));
        r.feed(kHeader + "0123456789");
        r.feed("xx 302 FOUND\r\nlocation: http://" + r.server.hostPort().toLatin1() +
               "/next\r\nmore");
        QTRY_COMPARE(r.outcomes(), kComplete);
        QCOMPARE(r.server.requests().size(), 2);
        QCOMPARE(r.server.requests().at(1).raw, r.request("/next"));
        // The file had content, so the new connection took the next name.
        QCOMPARE(readFile(local), QByteArray("0123456789"));
        QCOMPARE(readFile(file(QStringLiteral("r_1.bin"))), QByteArray("NEW"));
    }

    void socketFailure()
    {
        // A port nobody listens on: the socket's own description is reported.
        quint16 port = 0;
        {
            TestServer gone;
            QVERIFY(gone.listen());
            port = gone.port();
        }
        Rig &r = *m_rig;
        r.begin(QStringLiteral("127.0.0.1:%1/f").arg(port), file(QStringLiteral("f")));
        QTRY_COMPARE(r.log.size(), 1);
        QVERIFY(r.log.at(0).startsWith(QLatin1String("error ")));
        QVERIFY(r.log.at(0) != QLatin1String("error Connection Error"));
        QCOMPARE(r.d.socketState(), int(DownloadAsynch::Failed));
    }

private:
    QTemporaryDir m_dir;
    std::unique_ptr<Rig> m_rig;
};

QTEST_GUILESS_MAIN(TestDownloadAsynch)
#include "tst_downloadasynch.moc"
