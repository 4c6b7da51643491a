// Start-up with real processes of the program: single instance, the hand-over
// to a running instance, stale hand-over names and locks, and the list saved
// on termination.
#include "app/captureserver.h"
#include "app/cregister.h"
#include "sandbox.h"

#include <QProcess>
#include <QtTest>

#include <csignal>

class TestStartup : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void secondStartWithoutArgumentsWarns();
    void secondStartWithLinkSignalsFirst();
    void staleHandleLetsSecondStart();
    void staleLockDoesNotCount();
    void firstStartCreatesFolderAndShowsWindow();

private:
    std::unique_ptr<QProcess> start(const QStringList &args);
    bool waitForHandle(const QString &previous = QString());
    QString handle() const;
    QByteArray listFile() const;
    void terminate(QProcess &process);

    std::unique_ptr<Sandbox> m_sandbox;
    QString m_exe;
};

void TestStartup::init()
{
    m_sandbox = std::make_unique<Sandbox>();
    // A private copy of the program, so its LinkList.lq lands in the sandbox.
    const QString built = qEnvironmentVariable("TESSALWICK_EXE");
    if (built.isEmpty() || !QFile::exists(built))
        QSKIP("TESSALWICK_EXE does not name the built program");
    m_exe = m_sandbox->path("bin/tessalwick");
    QDir().mkpath(m_sandbox->path("bin"));
    QVERIFY(QFile::copy(built, m_exe));
}

void TestStartup::cleanup()
{
    m_sandbox.reset();
}

std::unique_ptr<QProcess> TestStartup::start(const QStringList &args)
{
    auto process = std::make_unique<QProcess>();
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("QT_QPA_PLATFORM", "offscreen");
    env.insert("TESSALWICK_PROMPTS", "console");
    process->setProcessEnvironment(env);
    process->setProgram(m_exe);
    process->setArguments(args);
    process->start();
    process->waitForStarted();
    return process;
}

QString TestStartup::handle() const
{
    return Settings::get("AppTextHandle", QString());
}

bool TestStartup::waitForHandle(const QString &previous)
{
    QDeadlineTimer deadline(20000);
    while (!deadline.hasExpired()) {
        const QString h = handle();
        if (!h.isEmpty() && h != previous && CaptureServer::isLive(h))
            return true;
        QTest::qWait(50);
    }
    return false;
}

QByteArray TestStartup::listFile() const
{
    QFile f(m_sandbox->path("bin/LinkList.lq"));
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

void TestStartup::terminate(QProcess &process)
{
    ::kill(pid_t(process.processId()), SIGTERM);
    QVERIFY(process.waitForFinished(10000));
    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
}

void TestStartup::firstStartCreatesFolderAndShowsWindow()
{
    auto first = start({});
    QVERIFY(waitForHandle());
    QVERIFY(QFileInfo(m_sandbox->home() + "/Sharing Downloads").isDir());
    QVERIFY(!Settings::get("App Path", "").isEmpty());
    QCOMPARE(first->state(), QProcess::Running);
    terminate(*first);
    // An empty list is stored as no file.
    QVERIFY(!QFile::exists(m_sandbox->path("bin/LinkList.lq")));
    QVERIFY(!first->readAllStandardError().contains("message:"));
}

void TestStartup::secondStartWithoutArgumentsWarns()
{
    auto first = start({});
    QVERIFY(waitForHandle());
    auto second = start({});
    QVERIFY(second->waitForFinished(15000));
    QCOMPARE(second->exitCode(), 0);
    QVERIFY(second->readAllStandardError().contains(
        "message: [Tessalwick] Tessalwick is already running, Check it in the system tray."));
    QCOMPARE(first->state(), QProcess::Running);
    terminate(*first);
}

void TestStartup::secondStartWithLinkSignalsFirst()
{
    auto first = start({});
    QVERIFY(waitForHandle());
    const QString firstHandle = handle();

    // An outside component's message arrives and adds its link.
    QVERIFY(CaptureServer::sendText(firstHandle, "http://rapidshare.com/files/1/from-capture.zip"));

    // A second start with a link only signals the first, which adds nothing.
    auto second = start({"http://rapidshare.com/files/2/from-second-start.zip"});
    QVERIFY(second->waitForFinished(15000));
    QCOMPARE(second->exitCode(), 0);
    QVERIFY(second->readAllStandardError().isEmpty());
    QCOMPARE(handle(), firstHandle);

    terminate(*first);
    const QByteArray saved = listFile();
    QVERIFY(saved.contains("from-capture.zip"));
    QVERIFY(!saved.contains("from-second-start.zip"));
    const QByteArray log = first->readAllStandardError();
    QVERIFY(log.contains("balloon: [Tessalwick] 1 Link Added"));
    QCOMPARE(log.count("Link Added"), 1);
}

void TestStartup::staleHandleLetsSecondStart()
{
    // A handle left by an instance that is gone: nobody answers it.
    Settings::save("AppTextHandle", m_sandbox->runtime() + "/tessalwick-capture-999999");
    auto second = start({"http://hotfile.com/dl/1/abc/file.rar"});
    QVERIFY(waitForHandle(m_sandbox->runtime() + "/tessalwick-capture-999999"));
    QCOMPARE(second->state(), QProcess::Running);
    terminate(*second);
    QVERIFY(listFile().contains("7\r\nhttp://hotfile.com/dl/1/abc/file.rar\r\n?\r\nWaiting\r\n"));
    const QByteArray log = second->readAllStandardError();
    QVERIFY(log.contains("balloon: [TessalwickDownloadManager] Tessalwick is here!"));
}

void TestStartup::staleLockDoesNotCount()
{
    auto first = start({});
    QVERIFY(waitForHandle());
    const QString dead = handle();
    first->kill(); // no chance to clean up: lock and socket file stay behind
    QVERIFY(first->waitForFinished(10000));

    auto next = start({});
    QVERIFY(waitForHandle(dead));
    QCOMPARE(next->state(), QProcess::Running);
    QVERIFY(!next->readAllStandardError().contains("already running"));
    terminate(*next);
}

QTEST_GUILESS_MAIN(TestStartup)
#include "tst_startup.moc"
