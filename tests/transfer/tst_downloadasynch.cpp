#include "support/datatable.h"
#include "support/fakeprompts.h"
#include "support/recipeharness.h"
#include "support/testserver.h"
#include "transfer/downloadasynch.h"

#include <QtTest>

namespace {

const QString kInvalidText = QStringLiteral("Invalid procedure call or argument");
const QString kInvalid = "error " + kInvalidText;
const QString kLost = QStringLiteral("error Connection Error");
// Bytes whose period (17) shows any piece lost, doubled or out of place.
const QByteArray kPeriodic = QByteArray("0123456789abcdefg").repeated(200);
using Answer = TestServer::Answer;
// The address, the local path and the steps fed; what comes of it all: the
// reports, the requests, the files and the state of the connection.
using Transfers = Table<QString, QString, QStringList, QString, QString, QString, int>;

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
// order raised, is kept as text with its arguments, and so is every message
// a person is shown.
struct Rig
{
    Rig()
    {
        // The real timers stay out of the way unless a test maps them shorter.
        RecipeHarness::setPeriods(3600000);
        prompts.whileAsking = [this] { log << "told " + prompts.messages.last().text; };
        note(&DownloadAsynch::fileBegin, "fileBegin");
        note(&DownloadAsynch::progress, "progress");
        note(&DownloadAsynch::complete, "complete");
        note(&DownloadAsynch::stopped, "stopped");
        QObject::connect(&d, &DownloadAsynch::error,
                         [this](const QString &s) { log << "error " + s; });
    }
    template <typename... Args> void note(void (DownloadAsynch::*signal)(Args...), const char *name)
    {
        QObject::connect(&d, signal, [this, name](Args... args) {
            log << QStringList{name, QString::number(args, 'g', 10)...}.join(u' ');
        });
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
    // One transfer from the local server ("%1" its host and port, "%2" a port
    // nobody listens on): what it reports, the exact requests sent (no Range,
    // no User-Agent), every file under the folder afterwards ("name=content")
    // and the state of the connection. A link already stands at "in/f.bin",
    // pointing out of the folder: a taken name.
    void transfers_data()
    {
        const Transfers table;
        // Steps handed to the control on a path that never answers, once the
        // file c.bin is open: a chunk, "~chunk" one that arrives after the
        // peer closed ("~" alone: the close itself), "#" a speed tick, "!" the
        // silence timer, "=N" the owner's size, and "stop" (of a file made
        // read-only first). A first step "/path" is the path, else "/file.bin".
        // The silence and a stop let the connection go. `file` is what c.bin
        // holds in the end, null where it is gone.
        auto fed = [&](const char *name, const QString &text, const QString &log,
                       const QString &file) {
            QStringList steps = text.split(u'|', Qt::SkipEmptyParts);
            const QString path = steps.first().startsWith(u'/') ? steps.takeFirst() : "/file.bin";
            const bool letGo = steps.contains(u"!") || steps.contains(u"stop");
            table(name, "%1" + path, "c.bin", steps, log,
                  text.contains(u'^') ? path + "|/next" : path,
                  file.isNull() ? file : "c.bin=" + expand(file),
                  letGo ? DownloadAsynch::Closed : DownloadAsynch::Connected);
        };
        // Each chunk is looked at on its own: a later one is cut like a header
        // where it looks like one, else it is body.
        fed("body", "$one|x 200 OK content-type: y\r\n\r\ntwo|200 ok|302 Found here|~late", "",
            "onetwo200 ok302 Found here");
        // A header without its empty line, a redirect's Location without its
        // blank or without a path: not written.
        fed("impossible positions",
            "@Content-Type: a/b\r\n|junk|302 Found\r\nLocation:\r\n|303 see other\r\nLocation: "
            "http://elsewhere\r\n",
            kInvalid + '|' + kInvalid + '|' + kInvalid, "junk");

        // The size is read only from a header line that ends in CR LF (a middle
        // line: the rows of ticks below), with its blank.
        const QString body = QStringLiteral("\r\n\r\n0123456789");
        const QString ten = QStringLiteral("0123456789");
        fed("sizes",
            "@content-length:  10 \r\nContent-Type: x/y" + body +
                "|@Content-Length: ten\r\nContent-Type: x/y" + body +
                "|@Content-Length: 1e19\r\nContent-Type: x/y" + body +
                "|@Content-Length:\r\nContent-Type: x/y" + body + "|~",
            "fileBegin 10|error Overflow|" + kInvalid + "|complete", ten + ten);
        fed("size over owner's", "=5|@Location: a\r\nContent-Length: 10\r\nServer: t" + body + "|#",
            "fileBegin 10|progress 100 10 10 0 0|complete", ten);
        // That is not seen: the owner's size stays. The share is rounded to two decimals.
        fed("size in the last line", "=15|@Content-Type: x/y\r\nContent-Length: 10" + body + "|#|~",
            "progress 66.67 10 10 5 0.5|complete", ten);

        // A first chunk that is no known answer is an error (and is still
        // written: the fault matrix of the end-to-end test), even an empty one.
        fed("closed without a byte", "~", kLost, "");

        fed("ticks, known size", "%1000|*250|#|#|*500|#|*250|#|#",
            "fileBegin 1000|progress 25 250 250 750 3|progress 25 1 250 750 750|"
            "progress 75 500 750 250 0.5|progress 100 250 1000 0 0|complete",
            "*1000");
        // Without a size the silence completes the transfer (no share can be
        // computed), and a tick after it, the line closed, finishes it again.
        fed("ticks, unknown size, silence", "$|*300|#|*200|#|#|!|#",
            "progress -1 300 300 -1 -1|progress -1 200 500 -1 -1|progress -1 0 500 -1 -1|complete|"
            "progress -1 0 500 -1 -1|complete",
            "*500");
        // 16777219 is not a single-precision number: the size becomes
        // 16777220, and single bytes added to 16777216 are lost to rounding,
        // so the size is never met and only the silence timer ends it.
        fed("single-precision size never met", "%16777219|*16777216|y|y|y|#|#|!",
            "fileBegin 16777220|progress 100 16777216 16777216 4 2.384185791e-07|"
            "progress 100 1 16777216 4 4|error Connection Error",
            "*16777216yyy");

        // The silence timer closes the line; the transfer is complete when no
        // share can be computed, or beyond 96% on rapidshare and YouTube (the
        // YouTube test has its 97%).
        fed("silence at 97%", "%1000|*970|!", "fileBegin 1000|" + kLost, "*970");
        fed("96%, then 97%, rapidshare", "/rapidshare|%1000|*960|!|*10|!",
            "fileBegin 1000|" + kLost + "|complete", "*970");

        // A stop closes the line and deletes the file, even a read-only one,
        // but for YouTube's part (the word in any case).
        fed("stop", "$some data|stop", "stopped", QString());
        fed("stop keeps YouTube's part", "/YOUTUBE|$some data|stop", "stopped", "some data");

        // A redirect anywhere in a chunk moves on to its address ("^": a path
        // that answers "NEW" on an open line); the file has content by then,
        // so the new connection writes to the next name.
        fed("redirect inside the body", "$0123456789|xx 302 FOUND\r\nlocation: ^\r\nmore",
            "fileBegin 3", "0123456789|c_1.bin=NEW");

        // Addresses that can't be used: the failure is reported, and a bad
        // address also finishes the transfer and is told; no file is made.
        const QString empty = QStringLiteral(
            "error URL is empty or LocalFile is net set, Download can not be started");
        const int closed = DownloadAsynch::Closed;
        table("empty url", "", "f.bin", {}, empty, "", "", closed);
        table("empty local path", "%1/f.bin", "", {}, empty, "", "", closed);
        const QString told = kInvalid + "|complete|told " + kInvalidText;
        table("no path", "http://%1", "f.bin", {}, told, "", "", closed);
        table("port out of range", "http://127.0.0.1:0/f", "f.bin", {}, told, "", "", closed);
        // The socket's own description of a port nobody listens on.
        table("nobody listens", "127.0.0.1:%2/f", "f.bin", {}, "error Connection refused", "", "",
              DownloadAsynch::Failed);
        // The scheme goes from the address in any case, even inside the query;
        // the first address is sent on twice, and "http://www." is dropped from
        // a redirect's address. The missing folders are made, and the same
        // empty file is reopened at each connection; the redirects' own bodies
        // are dropped.
        table("redirects", "HTTP://%1/get.php?u=http://x.org/a", "sub/folder/movie.avi", {},
              "fileBegin 3400|complete", "/get.php?u=x.org/a|/second|/third?k=v",
              "sub/folder/movie.avi=" + kPeriodic, DownloadAsynch::PeerClosed);
        // A reset in the middle is an error of the socket, not the end of the
        // data; an early orderly close still counts as complete.
        const QString part = "in/f_1.bin=" + QString(400, u'h');
        table("reset", "%1/reset", "in/f.bin", {}, "fileBegin 1000|error Connection reset by peer",
              "/reset", part, DownloadAsynch::Failed);
        table("early close", "%1/half", "in/f.bin", {}, "fileBegin 1000|complete", "/half", part,
              DownloadAsynch::PeerClosed);
    }
    void transfers()
    {
        auto [url, local, steps, log, requests, files, state] = Transfers::fetch();
        const quint16 unused = [] {
            TestServer gone;
            return gone.listen() ? gone.port() : quint16(0);
        }();
        Rig r;
        const QString host = r.server.hostPort();
        r.server.setAnswer("/get.php?u=x.org/a", Answer::redirect(302, r.server.url("/second")));
        r.server.setAnswer(
            "/second",
            Answer::redirect(303, "http://www." + host + "/third?k=v").cutAfterHeader(20));
        r.server.setAnswer("/third?k=v", Answer::ok(kPeriodic));
        Answer half = Answer::http(200, "OK", {{"Content-Length", "1000"}, {"Content-Type", "x/y"}},
                                   QByteArray(400, 'h'));
        r.server.setAnswer("/half", half);
        r.server.setAnswer("/reset", half.thenReset());
        r.server.setAnswer("/next", Answer::ok("NEW").keepOpen());
        r.server.setHandler([](const TestServer::Request &) { return Answer::silence(); });
        QVERIFY(QDir(r.dir.path()).mkdir("in") &&
                QFile::link(r.dir.filePath("outside.bin"), r.dir.filePath("in/f.bin")));
        url.replace(QLatin1String("%1"), host).replace("%2", QString::number(unused));
        const QString path = local.isEmpty() ? local : r.dir.filePath(local);
        r.d.setUrl(url);
        r.d.setLocalFilePath(path);
        r.d.startDownload();
        if (!steps.isEmpty())
            QVERIFY(r.server.waitForRequests(1) && r.d.socketState() == DownloadAsynch::Connected);
        for (QString step : steps) {
            const bool late = step.startsWith(u'~');
            step.replace(u'^', r.server.url(QStringLiteral("/next")));
            const QByteArray chunk = expand(late ? step.mid(1) : step);
            if (step == u'#')
                r.d.speedTick();
            else if (step == u'!')
                r.d.silenceTick();
            else if (step.startsWith(u'='))
                r.d.setFileSize(step.mid(1).toFloat());
            else if (step == u"stop" && QFile::setPermissions(path, QFile::ReadOwner))
                r.d.stopDownload();
            else
                r.d.handleData(chunk, chunk.size(),
                               late ? DownloadAsynch::PeerClosed : DownloadAsynch::Connected);
        }
        // A request is shown as its path where its bytes are exactly these.
        const QByteArray tail = " HTTP/1.1\r\nHost: " + host.toLatin1() + "\r\nAccept: */*\r\n\r\n";
        auto now = [&] {
            QStringList sent, found;
            for (const TestServer::Request &q : r.server.requests())
                sent << QString::fromLatin1(q.raw == "GET " + q.path + tail ? q.path : q.raw);
            for (QDirIterator it(r.dir.path(), QDir::Files, QDirIterator::Subdirectories);
                 it.hasNext();) {
                const QString file = it.next();
                found << QDir(r.dir.path()).relativeFilePath(file) + u'=' + readFile(file);
            }
            found.sort();
            return r.log.join(u'|') + " / " + sent.join(u'|') + " / " + found.join(u'|') + " / " +
                   QString::number(r.d.socketState());
        };
        QTRY_COMPARE(now(),
                     QStringList({log, requests, files, QString::number(state)}).join(" / "));
    }

    // The real timers, mapped short. With an answer on a line the peer keeps
    // open, the speed tick finds the size reached and the silence timer then
    // closes the line, which the server sees; without one, the silence timer
    // runs from the connection on. After the end nothing but the silence
    // timer reports, each minute.
    void timers()
    {
        for (const bool answered : {true, false}) {
            Rig r;
            RecipeHarness::setPeriods(30, 3600000, 200);
            const QString local = r.dir.filePath("f.bin");
            r.server.setAnswer("/f", answered ? Answer::ok(kPeriodic).cutAfterHeader(10).keepOpen()
                                              : Answer::silence());
            r.d.setUrl(r.server.url("/f"));
            r.d.setLocalFilePath(local);
            r.d.startDownload();
            QTRY_VERIFY(r.log.count("complete") + r.log.count(kLost) >= 3);
            const qsizetype at = r.log.indexOf("complete");
            QCOMPARE(r.log.mid(at, 3), (answered ? QStringList{"complete", kLost, kLost}
                                                 : QStringList(3, "complete")));
            QVERIFY(!answered || r.log.at(at - 1).startsWith(QLatin1String("progress 100 ")));
            QCOMPARE(readFile(local), answered ? kPeriodic : QByteArray());
            QCOMPARE(r.server.closedByClient(), 1);
        }
    }

    // A port of 0 fails too, and a written port is taken: the transfers show it.
    void hostAndPort()
    {
        QString name, got;
        quint16 port = 0;
        for (const char *host : {"example.com", "[::1]:81", "host:65536"})
            got += DownloadAsynch::splitHostPort(host, &name, &port)
                       ? name + u' ' + QString::number(port) + ", "
                       : QStringLiteral("fails");
        QCOMPARE(got, "example.com 80, ::1 81, fails");
    }
};

QTEST_GUILESS_MAIN(TestDownloadAsynch)
#include "tst_downloadasynch.moc"
