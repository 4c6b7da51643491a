// tessalwick-send against the real program: plain and browser-tab messages,
// the capture prefix in any case, DoNothing and StartAfterCatch, standard
// input, the native messaging host, and the calls that fail.
#include "app/cregister.h"
#include "fakerapidshare.h"
#include "intake/browsercapture.h"
#include "programrun.h"
#include "sandbox.h"

#include <QtTest>

class TestSend : public QObject
{
    Q_OBJECT
    QString m_send = qEnvironmentVariable("TESSALWICK_SEND");

    // Runs tessalwick-send; gives its exit code and what it said (standard
    // error, or standard output as the native messaging host). The wait pumps
    // events, as the instance may fetch from this process's fake site before
    // it answers.
    int send(const QStringList &args, const QByteArray &input = {}, QByteArray *said = nullptr)
    {
        QProcess sender;
        sender.start(m_send, args);
        sender.write(input);
        sender.closeWriteChannel();
        if (!QTest::qWaitFor([&] { return sender.state() == QProcess::NotRunning; }, 30000))
            return -1;
        if (said)
            *said = args.contains("--native-messaging") ? sender.readAllStandardOutput()
                                                        : sender.readAllStandardError();
        return sender.exitStatus() == QProcess::NormalExit ? sender.exitCode() : -2;
    }
    // Runs the native messaging host on framed texts, as a browser does;
    // gives its exit code and its answers' "taken" and "error", one per text.
    int native(const QStringList &texts, QStringList *answers, const QByteArray &tail = {})
    {
        QByteArray input, output;
        for (const QString &text : texts)
            input += HandOver::frame(R"({"text":")" + text.toUtf8() + R"("})", QSysInfo::ByteOrder);
        const int code =
            send({"--native-messaging", "chrome-extension://x/"}, input + tail, &output);
        HandOver::Reader reader(QSysInfo::ByteOrder);
        reader.append(output);
        for (QByteArray answer; reader.next(&answer) == HandOver::Reader::State::Message;) {
            const QJsonObject json = QJsonDocument::fromJson(answer).object();
            *answers << (json["taken"].toBool() ? "taken" : json["error"].toString());
        }
        return code;
    }

private slots:
    // With no instance both ways in fail with the message. Then DoNothing
    // clear, StartAfterCatch set: a browser tab's link is taken and every
    // message starts all downloads, one that adds nothing too. Started again
    // with DoNothing set, StartAfterCatch clear: prefixed messages go, in any
    // case of the prefix; the rest is taken as pasted, standard input with
    // two links a CR LF apart included, and nothing starts.
    void messages()
    {
        Sandbox sandbox;
        FakeRapidShare site;
        ProgramRun program(sandbox, "rapidshare=" + site.hostPort());
        if (!program.available() || !QFile::exists(m_send))
            QSKIP("TESSALWICK_EXE or TESSALWICK_SEND does not name the built program");
        QByteArray said;
        QCOMPARE(send({"http://rapidshare.com/files/1/a.zip"}, {}, &said), 1);
        QCOMPARE(said, "tessalwick-send: Tessalwick is not running; start it first.\n");
        QStringList answers;
        QCOMPARE(native({"http://hotfile.com/dl/6/f.rar"}, &answers), 0);

        Settings::save("DoNothing", "0");
        Settings::save("StartAfterCatch", "1");
        Settings::save("DownDir", sandbox.path("downloads"));
        const QString link = site.addFile("7", "seven.zip", "the file");
        QVERIFY(program.start());
        QCOMPARE(send({"--tab", link}), 0);
        // The file is there from the start of the transfer; whole, it ends
        // the row with the server's close right behind.
        QTRY_COMPARE_WITH_TIMEOUT(QFileInfo(sandbox.path("downloads/seven.zip")).size(), qint64(8),
                                  20000);
        QCOMPARE(send({":KELDOVARPINE:"}), 0); // nothing to add, silence
        QVERIFY(program.terminate());

        Settings::save("DoNothing", "1");
        Settings::save("StartAfterCatch", "0");
        QVERIFY(program.start());
        // The browser's messages: a new tab's link (dropped), a chosen link,
        // then a message cut off as the browser closes the pipe.
        QCOMPARE(
            native({":KELDOVARPINE:http://hotfile.com/dl/7/g.rar", "http://hotfile.com/dl/8/h.rar"},
                   &answers, QByteArray("\x20\0\0\0{", 5)),
            1);
        QCOMPARE(answers,
                 (QStringList{"Tessalwick is not running; start it first.", "taken", "taken"}));
        QCOMPARE(send({"http://hotfile.com/dl/1/a.rar"}), 0);
        QCOMPARE(send({"--tab", "http://hotfile.com/dl/2/b.rar"}), 0);
        QCOMPARE(send({":keldovarpine:http://hotfile.com/dl/3/c.rar"}), 0);
        QCOMPARE(send({":KELDOVARPINE:"}), 0);
        QCOMPARE(send({"abc"}), 0);
        QCOMPARE(send({}, "http://hotfile.com/dl/4/d.rar\r\nhttp://hotfile.com/dl/5/e.rar\n"), 0);
        QCOMPARE(send({"--bad"}), 2);
        QCOMPARE(send({}, " \n"), 2);
        QVERIFY(program.terminate());
        const QStringList lines = QString::fromUtf8(program.listFile()).split("\r\n");
        QStringList rows; // site, LinkURL and Status of each row
        for (int i = 0; i + 5 < lines.size(); i += 6)
            rows << lines[i] + '|' + lines[i + 1] + '|' + lines[i + 3];
        QCOMPARE(rows,
                 (QStringList{"1|" + link + "|Complete", "7|http://hotfile.com/dl/8/h.rar|Waiting",
                              "7|http://hotfile.com/dl/1/a.rar|Waiting",
                              "7|http://hotfile.com/dl/4/d.rar|Waiting",
                              "7|http://hotfile.com/dl/5/e.rar|Waiting"}));
        QCOMPARE(
            QString(program.log()).split('\n').filter("balloon"),
            (QStringList{"balloon: [Tessalwick] 1 Link Added", "balloon: [Tessalwick] 1 Link Added",
                         "balloon: [Tessalwick] 2 Links Added"}));
    }
};

QTEST_GUILESS_MAIN(TestSend)
#include "tst_send.moc"
