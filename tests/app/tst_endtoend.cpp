// The program itself against a RapidShare stand-in on 127.0.0.1: a link
// handed over is fetched to "Complete" with the site's page, form post,
// countdown and transfer; under network and disk faults the program stays
// alive, answers hand-overs and writes the row's words; an orderly end always
// leaves the list whole.
#include "app/cregister.h"
#include "datatable.h"
#include "fakedepositfiles.h"
#include "fakefilefactory.h"
#include "fakefourshared.h"
#include "fakehotfile.h"
#include "fakemegaupload.h"
#include "fakerapidshare.h"
#include "fakeyoutube.h"
#include "list/formats.h"
#include "programrun.h"
#include "sandbox.h"
#include "testserver.h"

#include <QtTest>

#include <csignal>
#include <sys/prctl.h>
#include <sys/resource.h>

namespace {

// What the file's address answers: "loop:" a redirect to itself, else the
// bytes after "raw:", "stall:" (then silence), "reset:" (then a reset),
// "disk:" (to a program whose disk is full) or "read-only:" (to a read-only
// download folder). The row's words at the end and its size, what the file
// holds (empty: none, or an empty one).
using Faults = Table<QByteArray, QString, QString, QByteArray>;

QByteArray numbers(int count)
{
    QByteArray content;
    for (int i = 0; i < count; ++i)
        content += QByteArray::number(i) + ' ';
    return content;
}

// The child's writes stop at 20,000 bytes a file, as on a full disk; the
// signal that would end it is ignored, so each write fails instead.
void fullDisk()
{
    ::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{20000, 20000};
    ::setrlimit(RLIMIT_FSIZE, &limit);
}

// The superuser writes through any folder's mode: the child gives that power
// up for good, so a read-only folder is read-only to it too.
void noOverride()
{
    // CAP_DAC_OVERRIDE, CAP_DAC_READ_SEARCH, CAP_FOWNER
    for (int capability : {1, 2, 3})
        ::prctl(PR_CAPBSET_DROP, capability, 0, 0, 0);
}

} // namespace

class TestEndToEnd : public QObject
{
    Q_OBJECT
private slots:
    void allSites();
    void faults_data();
    void faults();
};

// As a user would: a page with links of all seven sites goes in, every site
// starts, the captcha is answered, every row ends "Complete"; the program is
// closed and started again, and the list is as it was.
void TestEndToEnd::allSites()
{
    Sandbox sandbox;
    FakeRapidShare rapid;
    FakeYoutube tube;
    FakeMegaUpload mega;
    FakeFourShared four;
    FakeDepositFiles deposit;
    FakeHotFile hot;
    FakeFileFactory factory;
    ProgramRun program(sandbox,
                       "rapidshare=" + rapid.hostPort() + ",youtube=" + tube.hostPort() +
                           ",megaupload=" + mega.hostPort() + ",4shared=" + four.hostPort() +
                           ",depositfiles=" + deposit.hostPort() + ",hotfile=" + hot.hostPort() +
                           ",filefactory=" + factory.hostPort());
    if (!program.available())
        QSKIP("TESSALWICK_EXE does not name the built program");
    // A site's second passes in 20 ms.
    program.setEnv("TESSALWICK_TIMER_PERIODS", "1000=20");
    const QByteArray content = numbers(40000); // 228,890 bytes a file
    const QStringList links{rapid.addFile("1", "r.zip", content, 3),
                            tube.addVideo("v1", "Clip", TestServer::Answer::ok(content)),
                            mega.addFile("M1", "m.avi", content, "3"),
                            four.addFile("4", "f.zip", content, 3),
                            deposit.addFile("6", "d.zip", content, 3),
                            hot.addFile("7", "h.rar", content),
                            factory.addFile("8", "x.zip", content, 3)};
    // The text of a page as a browser copies it: words, links and lines.
    QString page = "Files of the week\r\n";
    for (const QString &link : links)
        page += "Get it: " + link + " (mirror, 224 KB)\r\n";
    const QString downloads = sandbox.path("downloads");
    Settings::save("DownDir", downloads);
    Settings::save("StartAfterCatch", "1");

    QElapsedTimer clock;
    clock.start();
    QVERIFY(program.start());
    QVERIFY(program.handOver(page));
    QTRY_VERIFY_WITH_TIMEOUT(QDir(downloads).entryList(QDir::Files).size() == 7, 60000);
    for (const QFileInfo &file : QDir(downloads).entryInfoList(QDir::Files))
        QTRY_COMPARE_WITH_TIMEOUT(QFileInfo(file.filePath()).size(), qint64(content.size()), 30000);
    QVERIFY(program.terminate());
    const QByteArray list = program.listFile();
    QCOMPARE(list.count("\r\nComplete\r\n"), 7);
    // The picture of the captcha that was asked.
    QVERIFY(program.log().contains("captcha: "));
    qInfo("all sites: %lld ms, 7 rows, %lld bytes", clock.elapsed(), 7LL * content.size());

    QVERIFY(program.start());
    QVERIFY(program.terminate());
    QCOMPARE(program.listFile(), list);
}

// A link handed over goes through the site's page, form post and file; the
// file's address answers whole, or with a network or disk fault.
void TestEndToEnd::faults_data()
{
    const Faults row;
    const QByteArray content = numbers(10000); // 48,890 bytes
    const QByteArray ok = "HTTP/1.1 200 OK\r\nContent-Type: application/octet-stream\r\n";
    const QByteArray header =
        ok + "Content-Length: " + QByteArray::number(content.size()) + "\r\n\r\n";
    const QByteArray half = content.left(content.size() / 2);
    const QByteArray notFound = "HTTP/1.1 404 Not Found\r\n\r\n<html>gone</html>";
    const QByteArray serverError = "HTTP/1.1 500 Internal Server Error\r\n\r\n<html>oops</html>";
    // The size the page told is replaced by the one the transfer reported;
    // a Content-Length in the header's last line is not read.
    row("whole", "raw:" + TestServer::Answer::ok(content).bytes, "Complete",
        sizeToText(content.size()), content);
    row("stall", "stall:" + header + half, "Connection Error", "123 KB", half);
    row("reset", "reset:" + header + half, "Error", "123 KB", half);
    // An answer of no known kind is an error, and it is still written.
    row("garbage", "raw:garbage, not a page", "Connection Error", "123 KB", "garbage, not a page");
    row("404", "raw:" + notFound, "Connection Error", "123 KB", notFound);
    row("500", "raw:" + serverError, "Connection Error", "123 KB", serverError);
    row("redirect loop", "loop:", "Connecting...", "123 KB", "");
    row("shorter than told", "raw:" + ok + "Content-Length: 99999\r\n\r\n" + half, "Complete",
        "123 KB", half);
    row("full disk", "disk:" + header + content, "Error", "123 KB", content.left(20000));
    row("read-only folder", "read-only:" + header + content, "Error", "123 KB", "");
}

void TestEndToEnd::faults()
{
    const auto [answer, status, size, file] = Faults::fetch();
    Sandbox sandbox;
    FakeRapidShare site;
    ProgramRun program(sandbox, "rapidshare=" + site.hostPort());
    if (!program.available())
        QSKIP("TESSALWICK_EXE does not name the built program");
    // A minute of silence passes in a second and a half.
    program.setEnv("TESSALWICK_TIMER_PERIODS", "60000=1500");
    const QString link = site.addFile("13", "data.bin", QByteArray());
    const QByteArray path = FakeRapidShare::filePath("13", "data.bin");
    const QByteArray kind = answer.left(answer.indexOf(':')), bytes = answer.mid(kind.size() + 1);
    TestServer::Answer reply = kind == "loop" ? TestServer::Answer::redirect(302, site.url(path))
                                              : TestServer::Answer::raw(bytes);
    if (kind == "stall")
        reply.keepOpen();
    if (kind == "reset")
        reply.thenReset();
    site.server().setAnswer(path, reply);
    const QString downloads = sandbox.path("downloads");
    Settings::save("DownDir", downloads);
    Settings::save("StartAfterCatch", "1");
    if (kind == "disk")
        program.setChildSetup(fullDisk);
    if (kind == "read-only") {
        QVERIFY(QDir().mkpath(downloads) &&
                QFile::setPermissions(downloads, QFile::ReadOwner | QFile::ExeOwner));
        program.setChildSetup(noOverride);
        // Where the superuser can't give its power up, the folder can't be read-only.
        QProcess probe;
        probe.setChildProcessModifier(noOverride);
        probe.start("touch", {downloads + "/probe"});
        if (probe.waitForFinished() && probe.exitCode() == 0)
            QSKIP("this machine lets the program write into a read-only folder");
    }

    QVERIFY(program.start());
    QVERIFY(program.handOver(link));
    // The loop never ends by itself: the test ends it after twenty rounds.
    QTRY_VERIFY_WITH_TIMEOUT(site.requestLines().count("GET " + path) >= (kind == "loop" ? 20 : 1),
                             20000);
    QCOMPARE(site.requestLines().mid(0, 3),
             (QStringList{"GET " + FakeRapidShare::firstPath("13", "data.bin"),
                          "POST " + FakeRapidShare::postPath("13", "data.bin"), "GET " + path}));
    // The program lives through it and still takes what others hand over.
    QTest::qWait(kind == "stall" ? 2500 : 500);
    QVERIFY(program.running());
    QVERIFY(program.handOver("no link in this text"));
    // An orderly end leaves the list whole, with the row's words.
    QVERIFY(program.terminate());
    QCOMPARE(QString::fromUtf8(program.listFile()).split("\r\n"),
             (QStringList{"1", link, "data.bin", status, size, downloads, ""}));
    QFile saved(downloads + "/data.bin");
    QCOMPARE(saved.open(QIODevice::ReadOnly) ? saved.readAll() : QByteArray(), file);
}

QTEST_GUILESS_MAIN(TestEndToEnd)
#include "tst_endtoend.moc"
