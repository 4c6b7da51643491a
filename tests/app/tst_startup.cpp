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
    std::unique_ptr<Sandbox> m_sandbox;
    QString m_exe;

    std::unique_ptr<QProcess> start(const QStringList &args = {})
    {
        auto process = std::make_unique<QProcess>();
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert("QT_QPA_PLATFORM", "offscreen");
        env.insert("TESSALWICK_PROMPTS", "console");
        process->setProcessEnvironment(env);
        process->start(m_exe, args);
        process->waitForStarted();
        return process;
    }
    static QString handle() { return Settings::get("AppTextHandle", QString()); }
    // Waits for a live hand-over name other than the previous one.
    static bool waitForHandle(const QString &previous = QString())
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
    QByteArray listFile() const
    {
        QFile f(m_sandbox->path("bin/LinkList.lq"));
        return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
    }
    // Ends a running instance as the session's end would.
    static void terminate(QProcess &process)
    {
        QCOMPARE(process.state(), QProcess::Running);
        ::kill(pid_t(process.processId()), SIGTERM);
        QVERIFY(process.waitForFinished(10000));
        QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    }

private slots:
    void init()
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
    void cleanup() { m_sandbox.reset(); }

    // The first start makes the download folder and publishes its way in. One
    // killed without cleaning up leaves a lock and a hand-over name behind that
    // don't count: the next start runs as the only instance. An empty list is
    // stored as no file.
    void firstStartAndStaleLock()
    {
        auto first = start();
        QVERIFY(waitForHandle());
        QVERIFY(QFileInfo(m_sandbox->home() + "/Sharing Downloads").isDir());
        QVERIFY(!Settings::get("App Path", "").isEmpty());
        const QString dead = handle();
        first->kill();
        QVERIFY(first->waitForFinished(10000));

        auto next = start();
        QVERIFY(waitForHandle(dead));
        terminate(*next);
        QVERIFY(!QFile::exists(m_sandbox->path("bin/LinkList.lq")));
        QVERIFY(!next->readAllStandardError().contains("message:"));
    }

    // With a first instance running, a second start with a link only signals
    // it, which adds nothing, and one without arguments warns; both end.
    // Links from the outside component still arrive.
    void secondStarts()
    {
        auto first = start();
        QVERIFY(waitForHandle());
        const QString firstHandle = handle();
        QVERIFY(
            CaptureServer::sendText(firstHandle, "http://rapidshare.com/files/1/from-capture.zip"));

        QByteArray said[2];
        for (int i = 0; i < 2; ++i) {
            auto next =
                start(i ? QStringList() : QStringList{"http://rapidshare.com/files/2/sec.zip"});
            QVERIFY(next->waitForFinished(15000));
            QCOMPARE(next->exitCode(), 0);
            said[i] = next->readAllStandardError();
        }
        QCOMPARE(said[0], QByteArray());
        QVERIFY(said[1].contains(
            "message: [Tessalwick] Tessalwick is already running, Check it in the system tray."));
        QCOMPARE(handle(), firstHandle);

        terminate(*first);
        const QByteArray saved = listFile();
        QVERIFY(saved.contains("from-capture.zip") && !saved.contains("sec.zip"));
        const QByteArray log = first->readAllStandardError();
        QVERIFY(log.contains("balloon: [Tessalwick] 1 Link Added"));
        QCOMPARE(log.count("Link Added"), 1);
    }

    void staleHandleLetsSecondStart()
    {
        // A hand-over name left by an instance that is gone: nobody answers it.
        const QString stale = m_sandbox->runtime() + "/tessalwick-capture-999999";
        Settings::save("AppTextHandle", stale);
        auto second = start({"http://hotfile.com/dl/1/abc/file.rar"});
        QVERIFY(waitForHandle(stale));
        terminate(*second);
        QVERIFY(
            listFile().contains("7\r\nhttp://hotfile.com/dl/1/abc/file.rar\r\n?\r\nWaiting\r\n"));
        QVERIFY(second->readAllStandardError().contains(
            "balloon: [TessalwickDownloadManager] Tessalwick is here!"));
    }
};

QTEST_GUILESS_MAIN(TestStartup)
#include "tst_startup.moc"
