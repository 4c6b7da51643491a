#include "app/appcore.h"
#include "fakeprompts.h"
#include "intake/linkextraction.h"
#include "listrows.h"
#include "sandbox.h"

#include <QSignalSpy>
#include <QtTest>

#include <memory>

namespace {

const QString kHotfile = QStringLiteral("http://hotfile.com/dl/3/abc/file.rar.html");
const QString kRapid = QStringLiteral("http://rapidshare.com/files/4/x.zip");
const QString kPrefix = QStringLiteral(":KELDOVARPINE:");

} // namespace

// The parsing rules themselves are tst_linkextraction's; here only what the
// capture and the add button hand over, and what follows.
class TestCapture : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { m_sandbox = std::make_unique<Sandbox>(); }

    void captureText_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("doNothing");
        QTest::addColumn<QStringList>("rows");
        QTest::addColumn<bool>("rebound");
        auto row = [](const char *name, const QString &text, bool doNothing,
                      const QStringList &rows, bool rebound) {
            QTest::newRow(name) << text << doNothing << rows << rebound;
        };
        row("prefix in lower case", ":keldovarpine:" + kHotfile, false, {"7|" + kHotfile}, true);
        row("prefix in mixed case", ":KeldoVarPine:" + kRapid, false, {"1|" + kRapid}, true);
        row("prefixed, two links", kPrefix + kHotfile + "\r\n" + kRapid, false,
            {"1|" + kRapid, "7|" + kHotfile}, true);
        row("plain", kRapid, false, {"1|" + kRapid}, true);
        // The switch drops prefixed messages only.
        row("prefixed, DoNothing", kPrefix + kHotfile, true, {}, false);
        row("lower-case prefix, DoNothing", ":keldovarpine:" + kHotfile, true, {}, false);
        row("plain, DoNothing", kRapid, true, {"1|" + kRapid}, true);
        // One character short of the prefix: a plain message, the whole text is the word.
        row("incomplete prefix, DoNothing", ":KELDOVARPINE" + kHotfile, true,
            {"7|:KELDOVARPINE" + kHotfile}, true);
        // Too short once the prefix is gone: passes in silence.
        row("exactly the prefix", kPrefix, false, {}, false);
        row("prefix and a short payload", kPrefix + "http", false, {}, false);
        row("no supported link", "just some words of text", false, {}, true);
    }
    void captureText()
    {
        QFETCH(QString, text);
        QFETCH(bool, doNothing);
        QFETCH(QStringList, rows);
        QFETCH(bool, rebound);
        FakePrompts prompts;
        AppCore core(&prompts);
        core.setDoNothing(doNothing);
        QSignalSpy rebinds(&core, &AppCore::listRebound);
        // The same message twice: the second adds nothing, its links are in
        // the list already. A capture never asks with a message box.
        for (int round = 0; round < 2; ++round) {
            prompts.clear();
            core.setCaptureText(text);
            QCOMPARE(core.captureText(), QString());
            QCOMPARE(rowsOf(core.list()), rows);
            QVERIFY(prompts.messages.isEmpty());
            QCOMPARE(prompts.balloons.size(), round == 0 && !rows.isEmpty() ? 1 : 0);
        }
        QCOMPARE(rebinds.size(), rebound ? 2 : 0);
    }

    void addLinksClicked_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("message");
        QTest::addColumn<QStringList>("rows");
        QTest::newRow("blanks") << "                " << true << QStringList{};
        QTest::newRow("the hint") << LinkHint::shortText() << false << QStringList{};
        QTest::newRow("links") << kHotfile + "\r\n" + kRapid << false
                               << QStringList{"1|" + kRapid, "7|" + kHotfile};
        // The button hands its text over unchanged: no prefix handling here.
        QTest::newRow("prefixed text")
            << kPrefix + kRapid << false << QStringList{"1|" + kPrefix + kRapid};
    }
    void addLinksClicked()
    {
        QFETCH(QString, text);
        QFETCH(bool, message);
        QFETCH(QStringList, rows);
        FakePrompts prompts;
        AppCore core(&prompts);
        core.setDoNothing(true);
        QString box = "unchanged";
        core.addLinksClicked(text, [&](const QString &t) { box = t; });
        QCOMPARE(box, LinkHint::shortText());
        QCOMPARE(rowsOf(core.list()), rows);
        QCOMPARE(prompts.messages.size(), message ? 1 : 0);
        QVERIFY(!message ||
                prompts.messages[0].text == QStringLiteral("No Supported links Found."));
        QCOMPARE(prompts.balloons.size(), rows.isEmpty() ? 0 : 1);
    }

private:
    std::unique_ptr<Sandbox> m_sandbox;
};

QTEST_GUILESS_MAIN(TestCapture)
#include "tst_capture.moc"
