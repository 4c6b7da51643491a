#include "app/appcore.h"
#include "datatable.h"
#include "fakeprompts.h"
#include "intake/linkextraction.h"
#include "listrows.h"
#include "sandbox.h"

#include <QtTest>

const QString kHotfile = QStringLiteral("http://hotfile.com/dl/3/f.rar");
const QString kRapid = QStringLiteral("http://rapidshare.com/files/4/x.zip");
const QString kPrefix = QStringLiteral(":KELDOVARPINE:");

// Whether the add button hands the text over (else the capture), the text, the
// DoNothing switch; the list's rows after, and `told`: the message boxes,
// balloons and list rebinds of both rounds.
using HandOvers = Table<bool, QString, bool, QStringList, QList<qsizetype>>;

// The parsing rules themselves are tst_linkextraction's; here only what the
// capture and the add button hand over, and what follows.
class TestCapture : public QObject
{
    Q_OBJECT
    Sandbox m_sandbox;
private slots:
    // Each text is handed over twice, by the capture or by the add button.
    void handOver_data()
    {
        const HandOvers row;
        // The prefix in any case. A capture never asks with a message box;
        // the second time adds nothing, its links are in the list already,
        // and binds the list anew.
        row("mixed case", false, ":KeldoVarPine:" + kRapid, false, {"1|" + kRapid}, {0, 1, 2});
        // The switch drops prefixed messages only: the next row is a plain one.
        row("prefixed, DoNothing", false, kPrefix + kHotfile, true, {}, {0, 0, 0});
        // One character short of the prefix: a plain message, the whole text is the word.
        row("incomplete prefix, DoNothing", false, ":KELDOVARPINE" + kHotfile, true,
            {"7|:KELDOVARPINE" + kHotfile}, {0, 1, 2});
        // Too short once the prefix is gone: passes in silence.
        row("prefix and a short payload", false, kPrefix + "http", false, {}, {0, 0, 0});
        // The button's paste hears of no links, and hands its text over
        // unchanged: no prefix handling there.
        row("button, blanks", true, "                ", true, {}, {2, 0, 0});
        row("button, prefixed", true, kPrefix + kRapid, true, {"1|" + kPrefix + kRapid}, {0, 1, 2});
    }
    void handOver()
    {
        const auto [button, text, doNothing, rows, told] = HandOvers::fetch();
        FakePrompts prompts;
        AppCore core(&prompts);
        core.setDoNothing(doNothing);
        QSignalSpy rebinds(&core, &AppCore::listRebound);
        QString box = "unchanged";
        for (int round = 0; round < 2; ++round) {
            if (button)
                core.addLinksClicked(text, [&](const QString &t) { box = t; });
            else
                core.setCaptureText(text);
        }
        QCOMPARE(rowsOf(core.list()), rows);
        QCOMPARE(
            (QList<qsizetype>{prompts.messages.size(), prompts.balloons.size(), rebinds.size()}),
            told);
        QCOMPARE(QStringList({box, core.captureText()}),
                 QStringList({button ? LinkHint::shortText() : "unchanged", ""}));
    }
};

QTEST_GUILESS_MAIN(TestCapture)
#include "tst_capture.moc"
