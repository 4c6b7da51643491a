// The program itself against a RapidShare stand-in on 127.0.0.1: a link
// handed over through the hand-over socket is fetched to "Complete" with the
// site's page, form post, countdown and transfer, and the list is saved when
// the program is asked to end.
#include "app/captureserver.h"
#include "app/cregister.h"
#include "fakerapidshare.h"
#include "list/formats.h"
#include "sandbox.h"
#include "testserver.h"

#include <QLocalSocket>
#include <QProcess>
#include <QtEndian>
#include <QtTest>

#include <csignal>

class TestEndToEnd : public QObject
{
    Q_OBJECT
private slots:
    void handedOverLinkIsDownloaded();
};

void TestEndToEnd::handedOverLinkIsDownloaded()
{
    Sandbox sandbox;
    const QString built = qEnvironmentVariable("TESSALWICK_EXE");
    if (built.isEmpty() || !QFile::exists(built))
        QSKIP("TESSALWICK_EXE does not name the built program");
    const QString exe = sandbox.path("bin/tessalwick");
    QDir().mkpath(sandbox.path("bin"));
    QVERIFY(QFile::copy(built, exe));

    FakeRapidShare site;
    QByteArray content;
    for (int i = 0; i < 20000; ++i)
        content += QByteArray::number(i) + ' ';
    const QString link = site.addFile("4711", "holiday.zip", content, 1);
    const QString hostEntry = "rapidshare=" + site.hostPort();

    // The user's choices: a download folder of its own, start after a hand-over.
    const QString downloads = sandbox.path("downloads");
    Settings::save("DownDir", downloads);
    Settings::save("StartAfterCatch", "1");

    QProcess program;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("QT_QPA_PLATFORM", "offscreen");
    env.insert("TESSALWICK_PROMPTS", "console");
    env.insert("TESSALWICK_SITE_HOSTS", hostEntry);
    program.setProcessEnvironment(env);
    program.start(exe, {});
    QVERIFY(program.waitForStarted());
    QTRY_VERIFY_WITH_TIMEOUT(CaptureServer::isLive(Settings::get("AppTextHandle", "")), 20000);

    // Another program hands the link over; the queue starts by itself. The
    // program answers once its start has run, which needs this process's
    // server: so the message is sent without blocking here.
    QLocalSocket sender;
    sender.connectToServer(Settings::get("AppTextHandle", ""));
    QVERIFY(sender.waitForConnected(5000));
    const QByteArray text = link.toUtf8();
    QByteArray message(4, '\0');
    qToBigEndian<quint32>(quint32(text.size()), message.data());
    sender.write(message + text);
    QTRY_VERIFY_WITH_TIMEOUT(sender.bytesAvailable() > 0, 30000);
    sender.disconnectFromServer();

    const QString file = downloads + "/holiday.zip";
    QTRY_VERIFY_WITH_TIMEOUT(QFileInfo(file).size() == content.size(), 30000);
    QCOMPARE(program.state(), QProcess::Running);

    // The page, the form post and the file, in that order.
    QStringList paths;
    for (const TestServer::Request &r : site.server().requests())
        paths << QString::fromLatin1(r.method + ' ' + r.pathOnly());
    QCOMPARE(paths, QStringList({"GET /files/4711/holiday.zip.html", "POST /post/4711/holiday.zip",
                                 "GET /file/4711/holiday.zip"}));

    // An orderly end saves the list with the row complete.
    ::kill(pid_t(program.processId()), SIGTERM);
    QVERIFY(program.waitForFinished(10000));
    QCOMPARE(program.exitStatus(), QProcess::NormalExit);
    QFile list(sandbox.path("bin/LinkList.lq"));
    QVERIFY(list.open(QIODevice::ReadOnly));
    // The size the page told is replaced by the one the transfer reported.
    QCOMPARE(list.readAll(), ("1\r\n" + link + "\r\nholiday.zip\r\nComplete\r\n" +
                              sizeToText(content.size()) + "\r\n" + downloads + "\r\n")
                                 .toUtf8());
    QFile saved(file);
    QVERIFY(saved.open(QIODevice::ReadOnly));
    QCOMPARE(saved.readAll(), content);
    const QByteArray log = program.readAllStandardError();
    QVERIFY2(log.contains("balloon: [Tessalwick] 1 Link Added"), log.constData());
}

QTEST_GUILESS_MAIN(TestEndToEnd)
#include "tst_endtoend.moc"
