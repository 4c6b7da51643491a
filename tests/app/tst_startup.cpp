// Start-up with real processes of the program: single instance, the hand-over
// to a running instance, stale hand-over names and locks, and the list saved
// on termination.
#include "app/captureserver.h"
#include "app/cregister.h"
#include "sandbox.h"

#include <QtTest>

class TestStartup : public QObject
{
    Q_OBJECT
    QString m_exe;

    // The program runs without a screen and writes its prompts to standard
    // error (set in this process's environment, which it inherits with the
    // sandbox).
    std::unique_ptr<QProcess> start(const QStringList &args = {})
    {
        auto process = std::make_unique<QProcess>();
        process->start(m_exe, args);
        process->waitForStarted();
        return process;
    }
    static QString handle() { return Settings::get("AppTextHandle", QString()); }
    // What a process said through its prompts: its lines of standard error
    // that are messages or balloons.
    static QString promptsOf(QProcess &process)
    {
        const QStringList lines = QString(process.readAllStandardError()).split('\n');
        return lines.filter(QRegularExpression("^(message|balloon): ")).join('\n');
    }

private slots:
    // The first start makes the download folder and publishes its way in.
    // One killed without cleaning up leaves a lock and a hand-over name
    // behind that don't count: a start without a link (which asks the lock
    // alone) runs as the only instance, and so does one with a link (which
    // asks the name alone), saying it is here and keeping the link.
    // While that one runs, a start with a link only signals it, which adds
    // nothing, and one without a link warns; both end. Ended as the
    // session's end would end it, the instance saves its list.
    void startUps()
    {
        Sandbox sandbox;
        // A private copy of the program; its list lands in the sandbox's data folder.
        const QString built = qEnvironmentVariable("TESSALWICK_EXE");
        if (built.isEmpty() || !QFile::exists(built))
            QSKIP("TESSALWICK_EXE does not name the built program");
        m_exe = sandbox.path("bin/tessalwick");
        QVERIFY(QDir().mkpath(sandbox.path("bin")) && QFile::copy(built, m_exe));
        qputenv("QT_QPA_PLATFORM", "offscreen");
        qputenv("TESSALWICK_PROMPTS", "console");

        const QString link = "http://hotfile.com/dl/1/abc/file.rar";
        QString handover;
        std::unique_ptr<QProcess> process;
        for (const QStringList &args : {QStringList(), QStringList(), QStringList{link}}) {
            if (process) {
                process->kill();
                QVERIFY(process->waitForFinished(10000));
            }
            process = start(args);
            // A live hand-over name, other than the one before.
            QTRY_VERIFY_WITH_TIMEOUT(handle() != handover && CaptureServer::isLive(handle()),
                                     20000);
            handover = handle();
        }
        QVERIFY(QFileInfo(sandbox.home() + "/Sharing Downloads").isDir());
        QVERIFY(!Settings::get("App Path", "").isEmpty());

        QStringList said;
        for (const QStringList &args :
             {QStringList{"http://rapidshare.com/files/2/sec.zip"}, QStringList()}) {
            auto next = start(args);
            QVERIFY(next->waitForFinished(15000));
            said << QString::number(next->exitCode()) + ' ' + promptsOf(*next);
        }
        QCOMPARE(said, (QStringList{"0 ", "0 message: [Tessalwick] Tessalwick is already running, "
                                          "Check it in the system tray."}));
        QCOMPARE(handle(), handover);
        process->terminate(); // SIGTERM
        QVERIFY(process->waitForFinished(10000) && process->exitCode() == 0 &&
                process->exitStatus() == QProcess::NormalExit);
        QFile list(sandbox.path("data/Tessalwick/LinkList.lq"));
        QCOMPARE(list.open(QIODevice::ReadOnly) ? list.readAll() : QByteArray(),
                 "7\r\n" + link.toUtf8() + "\r\n?\r\nWaiting\r\n?\r\n\r\n");
        QCOMPARE(promptsOf(*process), "balloon: [TessalwickDownloadManager] Tessalwick is here!\n"
                                      "balloon: [Tessalwick] 1 Link Added");

        // A setting that doesn't convert stops the start-up with its message.
        Settings::save("StartAfterCatch", "abc");
        process = start();
        QString told;
        QTRY_VERIFY_WITH_TIMEOUT((told += promptsOf(*process))
                                     .contains("message: [Tessalwick] Error While Intializing."),
                                 20000);
        process->kill();
        QVERIFY(process->waitForFinished(10000));
    }
};

QTEST_GUILESS_MAIN(TestStartup)
#include "tst_startup.moc"
