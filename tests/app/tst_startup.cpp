// Start-up with real processes of the program: single instance, the hand-over
// to a running instance, stale hand-over names and locks, and the list saved
// on termination.
#include "programrun.h"
#include "sandbox.h"

#include <QtTest>

class TestStartup : public QObject
{
    Q_OBJECT
    // What a run said through its prompts: its lines of standard error that
    // are messages or balloons.
    static QString promptsOf(ProgramRun &run)
    {
        const QStringList lines = QString(run.log()).split('\n');
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
        const QString link = "http://hotfile.com/dl/1/abc/file.rar";
        QString handover;
        std::optional<ProgramRun> program;
        for (const QStringList &args : {QStringList(), QStringList(), QStringList{link}}) {
            program.emplace(sandbox, QString()); // the one before is killed first
            if (!program->available())
                QSKIP("TESSALWICK_EXE does not name the built program");
            // A live hand-over name, other than the one before.
            QVERIFY(program->start(args) && ProgramRun::handle() != handover);
            handover = ProgramRun::handle();
        }
        QVERIFY(QFileInfo(sandbox.home() + "/Sharing Downloads").isDir());
        QVERIFY(!Settings::get("App Path", "").isEmpty());

        QStringList said;
        for (const QStringList &args :
             {QStringList{"http://rapidshare.com/files/2/sec.zip"}, QStringList()}) {
            ProgramRun next(sandbox, QString());
            next.start(args); // finds the running instance's way in at once
            QVERIFY(next.ended(15000));
            said << promptsOf(next);
        }
        QCOMPARE(said, (QStringList{"", "message: [Tessalwick] Tessalwick is already running, "
                                        "Check it in the system tray."}));
        QCOMPARE(ProgramRun::handle(), handover);
        QVERIFY(program->terminate());
        QCOMPARE(program->listFile(), "7\r\n" + link.toUtf8() + "\r\n?\r\nWaiting\r\n?\r\n\r\n");
        QCOMPARE(promptsOf(*program), "balloon: [TessalwickDownloadManager] Tessalwick is here!\n"
                                      "balloon: [Tessalwick] 1 Link Added");

        // A setting that doesn't convert stops the start-up with its message.
        Settings::save("StartAfterCatch", "abc");
        program->start();
        QTRY_VERIFY_WITH_TIMEOUT(
            promptsOf(*program).contains("message: [Tessalwick] Error While Intializing."), 20000);
    }
};

QTEST_GUILESS_MAIN(TestStartup)
#include "tst_startup.moc"
