#include "support/fakeprompts.h"
#include "support/testserver.h"
#include "system/logicaltimer.h"
#include "transfer/downloadasynch.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QtTest>

namespace {

const QString kEmptyAddress =
    QStringLiteral("URL is empty or LocalFile is net set, Download can not be started");

// Every signal of a transfer control, in the order raised, as text.
class Recorder : public QObject
{
public:
    explicit Recorder(DownloadAsynch *d)
    {
        connect(d, &DownloadAsynch::fileBegin, this,
                [this](float size) { log << QStringLiteral("fileBegin %1").arg(num(size)); });
        connect(d, &DownloadAsynch::progress, this,
                [this](double value, int bps, float done, float remain, float time) {
                    log << QStringLiteral("progress %1 %2 %3 %4 %5")
                               .arg(num(value), QString::number(bps), num(done), num(remain),
                                    num(time));
                });
        connect(d, &DownloadAsynch::complete, this, [this] { log << QStringLiteral("complete"); });
        connect(d, &DownloadAsynch::stopped, this, [this] { log << QStringLiteral("stopped"); });
        connect(d, &DownloadAsynch::error, this,
                [this](const QString &desc) { log << QStringLiteral("error ") + desc; });
    }
    static QString num(double v) { return QString::number(v, 'g', 10); }
    // Outcomes only: complete and error.
    QStringList outcomes() const
    {
        QStringList out;
        for (const QString &line : log) {
            if (line == QLatin1String("complete") || line.startsWith(QLatin1String("error")))
                out << line;
        }
        return out;
    }
    QStringList log;
};

QByteArray readFile(const QString &path)
{
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly))
        return QByteArray("<missing>");
    return f.readAll();
}

QByteArray pattern(int size)
{
    QByteArray data(size, Qt::Uninitialized);
    for (int i = 0; i < size; ++i)
        data[i] = static_cast<char>((i * 7 + i / 251) & 0xff);
    return data;
}

QByteArray request(const QString &hostPort, const QByteArray &path)
{
    return "GET " + path + " HTTP/1.1\r\nHost: " + hostPort.toLatin1() + "\r\nAccept: */*\r\n\r\n";
}

// Points the control at an address and a file and starts it.
void begin(DownloadAsynch &d, const QString &url, const QString &local, int chunk = 0)
{
    d.setUrl(url);
    d.setLocalFilePath(local);
    d.startDownload(chunk);
}

} // namespace

class TestDownloadAsynch : public QObject
{
    Q_OBJECT
private:
    // Starts `d` against a server path that never answers, so the file is
    // open and the first chunk is awaited; chunks are then fed by hand.
    bool startSilent(DownloadAsynch &d, TestServer &server, const QString &local,
                     const QString &path = QStringLiteral("/file.bin"))
    {
        server.setAnswer(path.toLatin1(), TestServer::Answer::silence());
        begin(d, server.url(path), local);
        return server.waitForRequests(1) && d.socketState() == DownloadAsynch::Connected;
    }

private slots:
    void init()
    {
        LogicalTimer::clearRealPeriods();
        QVERIFY(m_dir.isValid());
        // Each test gets an empty folder.
        QDir(m_dir.path()).removeRecursively();
        QDir().mkpath(m_dir.path());
    }
    void cleanup() { LogicalTimer::clearRealPeriods(); }

    void requestBytes_data()
    {
        QTest::addColumn<QString>("url");
        QTest::addColumn<QByteArray>("path");
        QTest::newRow("with scheme") << "http://%1/file.bin" << QByteArray("/file.bin");
        QTest::newRow("without scheme")
            << "%1/dir/f.zip?x=1&y=2" << QByteArray("/dir/f.zip?x=1&y=2");
        QTest::newRow("scheme upper case, and inside the query")
            << "HTTP://%1/get.php?u=http://x.org/a" << QByteArray("/get.php?u=x.org/a");
    }
    void requestBytes()
    {
        QFETCH(QString, url);
        QFETCH(QByteArray, path);
        TestServer server;
        QVERIFY(server.listen());
        const QByteArray body = pattern(5000);
        server.setHandler(
            [&](const TestServer::Request &) { return TestServer::Answer::ok(body); });

        DownloadAsynch d;
        Recorder rec(&d);
        const QString local = m_dir.filePath(QStringLiteral("sub/folder/f.bin"));
        begin(d, url.arg(server.hostPort()), local, 3);
        QTRY_COMPARE(rec.outcomes(), QStringList{QStringLiteral("complete")});
        QCOMPARE(server.requests().size(), 1);
        // Exactly these bytes and nothing else: no Range, no User-Agent.
        QCOMPARE(server.requests().at(0).raw, request(server.hostPort(), path));
        QCOMPARE(readFile(local), body); // the missing folders were made
        QCOMPARE(rec.log.first(), QStringLiteral("fileBegin 5000"));
    }

    void hostAndPort_data()
    {
        QTest::addColumn<QString>("host");
        QTest::addColumn<bool>("ok");
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("port");
        QTest::newRow("plain name") << "example.com" << true << "example.com" << 80;
        QTest::newRow("with port") << "127.0.0.1:8080" << true << "127.0.0.1" << 8080;
        QTest::newRow("bracketed v6 with port") << "[::1]:81" << true << "::1" << 81;
        QTest::newRow("port zero") << "host:0" << false << "" << 0;
        QTest::newRow("port too big") << "host:65536" << false << "" << 0;
        QTest::newRow("port not a number") << "host:abc" << false << "" << 0;
    }
    void hostAndPort()
    {
        QFETCH(QString, host);
        QFETCH(bool, ok);
        QFETCH(QString, name);
        QFETCH(int, port);
        QString gotName;
        quint16 gotPort = 0;
        QCOMPARE(DownloadAsynch::splitHostPort(host, &gotName, &gotPort), ok);
        if (ok) {
            QCOMPARE(gotName, name);
            QCOMPARE(int(gotPort), port);
        }
    }

    void addressFailures_data()
    {
        QTest::addColumn<QString>("url");
        QTest::addColumn<QString>("local");
        QTest::addColumn<QStringList>("log");
        QTest::addColumn<bool>("message");
        const QString taken = QStringLiteral("error ") + kEmptyAddress;
        QTest::newRow("empty url") << ""
                                   << "f.bin" << QStringList{taken} << false;
        QTest::newRow("empty local path") << "%1/f.bin"
                                          << "" << QStringList{taken} << false;
        // No "/" after the host: the failure path reports, finishes and tells
        // the user.
        QTest::newRow("no path") << "http://%1"
                                 << "f.bin"
                                 << QStringList{QStringLiteral(
                                                    "error Invalid procedure call or argument"),
                                                QStringLiteral("complete")}
                                 << true;
    }
    void addressFailures()
    {
        QFETCH(QString, url);
        QFETCH(QString, local);
        QFETCH(QStringList, log);
        QFETCH(bool, message);
        TestServer server;
        QVERIFY(server.listen());
        FakePrompts prompts;
        DownloadAsynch d(&prompts);
        Recorder rec(&d);
        begin(d, url.contains(QLatin1String("%1")) ? url.arg(server.hostPort()) : url,
              local.isEmpty() ? local : m_dir.filePath(local));
        QCOMPARE(rec.log, log);
        QCOMPARE(prompts.messages.size(), message ? 1 : 0);
        if (message)
            QCOMPARE(prompts.messages.at(0).text, log.at(0).mid(6));
        QTest::qWait(50);
        QCOMPARE(server.connectionCount(), 0);
        QCOMPARE(d.socketState(), int(DownloadAsynch::Closed));
    }

    void redirectChain()
    {
        TestServer server;
        QVERIFY(server.listen());
        const QByteArray body = pattern(3000);
        const QString local = m_dir.filePath(QStringLiteral("movie.avi"));
        server.setAnswer("/first", TestServer::Answer::redirect(302, server.url("/second")));
        // "http://www." is dropped from a redirect's address.
        server.setAnswer("/second", TestServer::Answer::redirect(
                                        303, "http://www." + server.hostPort() + "/third?k=v")
                                        .cutAfterHeader(20));
        QList<qint64> sizesSeen;
        server.setHandler([&](const TestServer::Request &) {
            sizesSeen << (QFileInfo::exists(local) ? QFileInfo(local).size() : -1);
            return TestServer::Answer::ok(body);
        });

        DownloadAsynch d;
        Recorder rec(&d);
        begin(d, server.url("/first"), local);
        QTRY_COMPARE(rec.outcomes(), QStringList{QStringLiteral("complete")});

        const QList<TestServer::Request> reqs = server.requests();
        QCOMPARE(reqs.size(), 3);
        QCOMPARE(reqs.at(0).raw, request(server.hostPort(), "/first"));
        QCOMPARE(reqs.at(1).raw, request(server.hostPort(), "/second"));
        QCOMPARE(reqs.at(2).raw, request(server.hostPort(), "/third?k=v"));
        QCOMPARE(server.connectionCount(), 3);
        // The same, still empty, file was reopened at each connection.
        QCOMPARE(sizesSeen, QList<qint64>{0});
        QCOMPARE(QDir(m_dir.path()).entryList(QDir::Files), QStringList{"movie.avi"});
        QCOMPARE(readFile(local), body); // the redirects' own bodies are dropped
    }

    void sizeFromHeader_data()
    {
        QTest::addColumn<QByteArray>("headers");
        QTest::addColumn<float>("ownerSize");
        QTest::addColumn<QString>("fileBegin");
        QTest::addColumn<float>("size");
        QTest::newRow("in a middle line") << QByteArray("Content-Length: 10\r\nContent-Type: x/y")
                                          << 999.f << "fileBegin 10" << 10.f;
        QTest::newRow("any case, blanks around")
            << QByteArray("content-length:  10 \r\nContent-Type: x/y") << 999.f << "fileBegin 10"
            << 10.f;
        QTest::newRow("in the last line is not seen")
            << QByteArray("Content-Type: x/y\r\nContent-Length: 10") << 999.f << "" << 999.f;
        QTest::newRow("none") << QByteArray("Content-Type: x/y") << 999.f << "" << 999.f;
        QTest::newRow("not a number")
            << QByteArray("Content-Length: ten\r\nContent-Type: x/y") << 0.f << "" << 0.f;
        QTest::newRow("replaces the owner's guess")
            << QByteArray("Location: nowhere\r\nContent-Length: 10\r\nServer: t") << 5.f
            << "fileBegin 10" << 10.f;
    }
    void sizeFromHeader()
    {
        QFETCH(QByteArray, headers);
        QFETCH(float, ownerSize);
        QFETCH(QString, fileBegin);
        QFETCH(float, size);
        TestServer server;
        QVERIFY(server.listen());
        server.setAnswer(
            "/f", TestServer::Answer::raw("HTTP/1.1 200 OK\r\n" + headers + "\r\n\r\n0123456789"));
        DownloadAsynch d;
        Recorder rec(&d);
        d.setFileSize(ownerSize);
        begin(d, server.url("/f"), m_dir.filePath(QStringLiteral("f")));
        QTRY_COMPARE(rec.outcomes(), QStringList{QStringLiteral("complete")});
        QStringList expected;
        if (!fileBegin.isEmpty())
            expected << fileBegin;
        expected << QStringLiteral("complete");
        QCOMPARE(rec.log, expected);
        QCOMPARE(d.fileSize(), size);
        QCOMPARE(readFile(m_dir.filePath(QStringLiteral("f"))), QByteArray("0123456789"));
    }

    void progressTicks_data()
    {
        QTest::addColumn<QByteArray>("header");
        QTest::addColumn<float>("ownerSize");
        QTest::addColumn<QList<int>>("perSecond"); // body bytes before each tick
        QTest::addColumn<QStringList>("log");
        const QByteArray known =
            "HTTP/1.1 200 OK\r\nContent-Length: 1000\r\nContent-Type: a/b\r\n\r\n";
        QTest::newRow("known size") << known << 0.f << QList<int>{250, 0, 500, 250, 0}
                                    << QStringList{"fileBegin 1000",
                                                   "progress 25 250 250 750 3",
                                                   "progress 25 1 250 750 750",
                                                   "progress 75 500 750 250 0.5",
                                                   "progress 100 250 1000 0 0",
                                                   "complete"};
        QTest::newRow("unknown size")
            << QByteArray("HTTP/1.1 200 OK\r\nContent-Type: a/b\r\n\r\n") << 0.f
            << QList<int>{300, 200, 0}
            << QStringList{"progress -1 300 300 -1 -1", "progress -1 200 500 -1 -1",
                           "progress -1 0 500 -1 -1"};
        QTest::newRow("owner's size, two decimals")
            << QByteArray("HTTP/1.1 200 OK\r\nContent-Type: a/b\r\n\r\n") << 3.f
            << QList<int>{1, 1, 1, 0}
            << QStringList{"progress 33.33 1 1 2 2", "progress 66.67 1 2 1 1",
                           "progress 100 1 3 0 0", "complete"};
    }
    void progressTicks()
    {
        QFETCH(QByteArray, header);
        QFETCH(float, ownerSize);
        QFETCH(QList<int>, perSecond);
        QFETCH(QStringList, log);
        // The real timers stay out of the way; the ticks are driven by hand.
        LogicalTimer::setRealPeriod(1000, 3600000);
        LogicalTimer::setRealPeriod(60000, 3600000);
        TestServer server;
        QVERIFY(server.listen());
        DownloadAsynch d;
        Recorder rec(&d);
        d.setFileSize(ownerSize);
        const QString local = m_dir.filePath(QStringLiteral("p.bin"));
        QVERIFY(startSilent(d, server, local));
        d.handleData(header, header.size(), 7);
        QByteArray all;
        for (int n : perSecond) {
            const QByteArray chunk = pattern(n + all.size()).mid(all.size());
            all += chunk;
            if (n > 0)
                d.handleData(chunk, chunk.size(), 7);
            d.speedTick();
        }
        QCOMPARE(rec.log, log);
        QCOMPARE(readFile(local), all);
    }

    void floatSizeNeverMet()
    {
        // 16777219 is not a single-precision number: the size becomes
        // 16777220, and single bytes added to 16777216 are lost to rounding,
        // so the size is never met and only the silence timer ends it.
        LogicalTimer::setRealPeriod(1000, 3600000);
        LogicalTimer::setRealPeriod(60000, 3600000);
        TestServer server;
        QVERIFY(server.listen());
        DownloadAsynch d;
        Recorder rec(&d);
        QVERIFY(startSilent(d, server, m_dir.filePath(QStringLiteral("big.bin"))));
        d.handleData("HTTP/1.1 200 OK\r\nContent-Length: 16777219\r\nContent-Type: a/b\r\n\r\n", 70,
                     7);
        QCOMPARE(d.fileSize(), 16777220.f);
        d.handleData(QByteArray(16777216, 'x'), 16777216, 7);
        for (int i = 0; i < 3; ++i)
            d.handleData("y", 1, 7);
        d.speedTick();
        d.speedTick();
        QCOMPARE(rec.log.at(0), QStringLiteral("fileBegin 16777220"));
        QCOMPARE(rec.log.at(1).section(' ', 0, 4),
                 QStringLiteral("progress 100 16777216 16777216 4"));
        QCOMPARE(rec.log.at(2), QStringLiteral("progress 100 1 16777216 4 4"));
        QCOMPARE(rec.log.size(), 3);
        QCOMPARE(QFileInfo(m_dir.filePath(QStringLiteral("big.bin"))).size(), 16777219);
        d.silenceTick();
        QCOMPARE(rec.log.last(), QStringLiteral("error Connection Error"));
    }

    void completeOnClose_data()
    {
        QTest::addColumn<int>("cutMode"); // 0 whole, 1 header apart, 2 many pieces
        QTest::newRow("whole") << 0;
        QTest::newRow("header and body apart") << 1;
        QTest::newRow("many delayed pieces") << 2;
    }
    void completeOnClose()
    {
        QFETCH(int, cutMode);
        TestServer server;
        QVERIFY(server.listen());
        const QByteArray body = pattern(200000);
        TestServer::Answer answer = TestServer::Answer::ok(body);
        if (cutMode == 1)
            answer.cutAfterHeader(30);
        else if (cutMode == 2)
            answer.cutEvery(37000, 10);
        server.setAnswer("/f.bin", answer);
        DownloadAsynch d;
        Recorder rec(&d);
        const QString local = m_dir.filePath(QStringLiteral("f.bin"));
        begin(d, server.url("/f.bin"), local, 1);
        QTRY_COMPARE(rec.outcomes(), QStringList{QStringLiteral("complete")});
        QCOMPARE(rec.log.first(), QStringLiteral("fileBegin 200000"));
        QCOMPARE(d.socketState(), int(DownloadAsynch::PeerClosed));
        QCOMPARE(readFile(local), body);
        // Nothing more comes while the silence timer waits.
        QTest::qWait(100);
        QCOMPARE(rec.outcomes().size(), 1);
    }

    void completeOnSizeReached()
    {
        LogicalTimer::setRealPeriod(1000, 30);
        TestServer server;
        QVERIFY(server.listen());
        const QByteArray body = pattern(50000);
        server.setAnswer("/f.bin", TestServer::Answer::ok(body).cutAfterHeader(10).keepOpen());
        DownloadAsynch d;
        Recorder rec(&d);
        begin(d, server.url("/f.bin"), m_dir.filePath(QStringLiteral("f.bin")));
        QTRY_COMPARE(rec.outcomes(), QStringList{QStringLiteral("complete")});
        QCOMPARE(d.socketState(), int(DownloadAsynch::Connected)); // ended by the tick
        const int at = rec.log.indexOf(QStringLiteral("complete"));
        QVERIFY(rec.log.at(at - 1).startsWith(QLatin1String("progress 100 ")));
        QTest::qWait(100);
        QCOMPARE(rec.log.size(), at + 1); // the speed ticks stopped
    }

    void firstChunkNotAnAnswer_data()
    {
        QTest::addColumn<QByteArray>("answer");
        QTest::addColumn<QStringList>("log");
        // The answer is written all the same, and the close by the peer then
        // finishes the transfer, as data were received.
        const QStringList both{QStringLiteral("error Connection Error"),
                               QStringLiteral("complete")};
        QTest::newRow("404")
            << TestServer::Answer::status(404, "Not Found", "<html>gone</html>").bytes << both;
        QTest::newRow("206") << QByteArray("HTTP/1.1 206 Partial Content\r\nContent-Type: a/b\r\n"
                                           "Content-Length: 4\r\n\r\nabcd")
                             << both;
        QTest::newRow("no HTTP at all") << QByteArray("hello there") << both;
        // The close is then the first arrival; with nothing received it
        // doesn't finish the transfer.
        QTest::newRow("closed without a byte")
            << QByteArray("") << QStringList{QStringLiteral("error Connection Error")};
    }
    void firstChunkNotAnAnswer()
    {
        QFETCH(QByteArray, answer);
        QFETCH(QStringList, log);
        TestServer server;
        QVERIFY(server.listen());
        server.setAnswer("/f", TestServer::Answer::raw(answer));
        DownloadAsynch d;
        Recorder rec(&d);
        const QString local = m_dir.filePath(QStringLiteral("f.html"));
        begin(d, server.url("/f"), local);
        QTRY_COMPARE(rec.log, log);
        QCOMPARE(d.socketState(), int(DownloadAsynch::PeerClosed));
        QCOMPARE(readFile(local), answer);
        QTest::qWait(50);
        QCOMPARE(rec.log, log);
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
        TestServer server;
        QVERIFY(server.listen());
        if (contentLength == -2) {
            server.setAnswer(path.toLatin1(), TestServer::Answer::silence());
        } else {
            QList<QPair<QByteArray, QByteArray>> headers{{"Content-Type", "a/b"}};
            if (contentLength >= 0)
                headers.prepend({"Content-Length", QByteArray::number(contentLength)});
            server.setAnswer(
                path.toLatin1(),
                TestServer::Answer::http(200, "OK", headers, pattern(sent)).keepOpen());
        }
        DownloadAsynch d;
        Recorder rec(&d);
        d.setFileSize(ownerSize);
        begin(d, server.url(path), m_dir.filePath(QStringLiteral("s.bin")));
        QTRY_VERIFY(!rec.outcomes().isEmpty());
        QCOMPARE(rec.outcomes().first(), outcome);
        // The silence closed the connection.
        QTRY_COMPARE(server.closedByClient(), 1);
        QCOMPARE(d.socketState(), int(DownloadAsynch::Closed));
    }

    void silenceRepeatsAfterComplete()
    {
        LogicalTimer::setRealPeriod(60000, 150);
        TestServer server;
        QVERIFY(server.listen());
        server.setAnswer("/f.bin", TestServer::Answer::ok(pattern(1000)));
        DownloadAsynch d;
        Recorder rec(&d);
        begin(d, server.url("/f.bin"), m_dir.filePath(QStringLiteral("f.bin")));
        QTRY_COMPARE(rec.outcomes(), QStringList{QStringLiteral("complete")});
        // A minute after the last chunk, and every minute after that, the
        // timer reports again, as an error for a plain site.
        QTRY_COMPARE(rec.outcomes().size(), 3);
        QCOMPARE(rec.outcomes().mid(1), QStringList(2, QStringLiteral("error Connection Error")));
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
        TestServer server;
        QVERIFY(server.listen());
        DownloadAsynch d;
        Recorder rec(&d);
        const QString local = m_dir.filePath(QStringLiteral("part.bin"));
        if (started) {
            QVERIFY(startSilent(d, server, local, path));
            d.handleData("HTTP/1.1 200 OK\r\nContent-Type: a/b\r\n\r\nsome data", 48, 7);
        } else {
            QFile f(local);
            QVERIFY(f.open(QIODevice::WriteOnly));
            f.write("earlier transfer");
            f.close();
            d.setUrl(server.url(path));
            d.setLocalFilePath(local);
        }
        if (readOnly)
            QFile::setPermissions(local, QFile::ReadOwner);
        d.stopDownload();
        QCOMPARE(rec.log, QStringList{QStringLiteral("stopped")});
        QCOMPARE(QFileInfo::exists(local), kept);
        if (started) {
            QTRY_COMPARE(server.closedByClient(), 1);
            QCOMPARE(d.socketState(), int(DownloadAsynch::Closed));
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
        TestServer server;
        QVERIFY(server.listen());
        server.setAnswer("/c", TestServer::Answer::ok("new data"));
        const QString local = m_dir.filePath(QStringLiteral("clip.avi"));
        if (!existing.isNull()) {
            QFile f(local);
            QVERIFY(f.open(QIODevice::WriteOnly));
            f.write(existing);
        }
        DownloadAsynch d;
        Recorder rec(&d);
        begin(d, server.url("/c"), local);
        QTRY_COMPARE(rec.outcomes(), QStringList{QStringLiteral("complete")});
        QCOMPARE(readFile(m_dir.filePath(written)), QByteArray("new data"));
        if (!existing.isEmpty())
            QCOMPARE(readFile(local), existing);
    }

    void chunkHandling_data()
    {
        QTest::addColumn<QList<QByteArray>>("chunks");
        QTest::addColumn<QList<int>>("states");
        QTest::addColumn<QStringList>("log");
        QTest::addColumn<QByteArray>("file");
        const QByteArray header = "HTTP/1.1 200 OK\r\nContent-Type: a/b\r\n\r\n";
        QTest::newRow("header and body apart")
            << QList<QByteArray>{header, "abc", "def"} << QList<int>{7, 7, 7} << QStringList{}
            << QByteArray("abcdef");
        QTest::newRow("body begins in the header's chunk")
            << QList<QByteArray>{header + "ab", "cd"} << QList<int>{7, 7} << QStringList{}
            << QByteArray("abcd");
        QTest::newRow("header without its empty line")
            << QList<QByteArray>{"HTTP/1.1 200 OK\r\nContent-Type: a/b\r\n", "junk"}
            << QList<int>{7, 7}
            << QStringList{QStringLiteral("error Invalid procedure call or argument")}
            << QByteArray("junk");
        QTest::newRow("body chunk that looks like a header is cut")
            << QList<QByteArray>{header + "one", "x 200 OK content-type: y\r\n\r\ntwo"}
            << QList<int>{7, 7} << QStringList{} << QByteArray("onetwo");
        QTest::newRow("data after the peer closed are not taken")
            << QList<QByteArray>{header + "one", "two"} << QList<int>{7, 8} << QStringList{}
            << QByteArray("one");
        QTest::newRow("a redirect without Location is body")
            << QList<QByteArray>{header + "one", "302 Found here"} << QList<int>{7, 7}
            << QStringList{} << QByteArray("one302 Found here");
    }
    void chunkHandling()
    {
        QFETCH(QList<QByteArray>, chunks);
        QFETCH(QList<int>, states);
        QFETCH(QStringList, log);
        QFETCH(QByteArray, file);
        LogicalTimer::setRealPeriod(1000, 3600000);
        TestServer server;
        QVERIFY(server.listen());
        DownloadAsynch d;
        Recorder rec(&d);
        const QString local = m_dir.filePath(QStringLiteral("c.bin"));
        QVERIFY(startSilent(d, server, local));
        for (int i = 0; i < chunks.size(); ++i)
            d.handleData(chunks.at(i), chunks.at(i).size(), states.at(i));
        QCOMPARE(rec.log, log);
        QCOMPARE(readFile(local), file);
    }

    void redirectInsideBody()
    {
        TestServer server;
        QVERIFY(server.listen());
        server.setAnswer("/next", TestServer::Answer::ok("NEW"));
        DownloadAsynch d;
        Recorder rec(&d);
        const QString local = m_dir.filePath(QStringLiteral("r.bin"));
        QVERIFY(startSilent(d, server, local));
        d.handleData("HTTP/1.1 200 OK\r\nContent-Type: a/b\r\n\r\n0123456789", 48, 7);
        const QByteArray trap =
            "xx 302 FOUND\r\nlocation: http://" + server.hostPort().toLatin1() + "/next\r\nmore";
        d.handleData(trap, trap.size(), 7);
        QTRY_COMPARE(rec.outcomes(), QStringList{QStringLiteral("complete")});
        QCOMPARE(server.requests().size(), 2);
        QCOMPARE(server.requests().at(1).raw, request(server.hostPort(), "/next"));
        // The file had content, so the new connection took the next name.
        QCOMPARE(readFile(local), QByteArray("0123456789"));
        QCOMPARE(readFile(m_dir.filePath(QStringLiteral("r_1.bin"))), QByteArray("NEW"));
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
        DownloadAsynch d;
        Recorder rec(&d);
        begin(d, QStringLiteral("127.0.0.1:%1/f").arg(port), m_dir.filePath(QStringLiteral("f")));
        QTRY_COMPARE(rec.log.size(), 1);
        QVERIFY(rec.log.at(0).startsWith(QLatin1String("error ")));
        QVERIFY(rec.log.at(0) != QLatin1String("error Connection Error"));
        QCOMPARE(d.socketState(), int(DownloadAsynch::Failed));
    }

private:
    QTemporaryDir m_dir;
};

QTEST_GUILESS_MAIN(TestDownloadAsynch)
#include "tst_downloadasynch.moc"
