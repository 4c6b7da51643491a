#include "app/appcore.h"
#include "fakeprompts.h"
#include "intake/linkextraction.h"
#include "list/sitetable.h"
#include "listrows.h"
#include "sandbox.h"

#include <QSignalSpy>
#include <QtTest>

#include <memory>

namespace {

const QString kHotfile = QStringLiteral("http://hotfile.com/dl/3/abc/file.rar.html");
const QString kRapid = QStringLiteral("http://rapidshare.com/files/4/x.zip");

} // namespace

class TestCapture : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();

    void captureText_data();
    void captureText();
    void addLinksClicked_data();
    void addLinksClicked();

private:
    std::unique_ptr<Sandbox> m_sandbox;
};

void TestCapture::initTestCase()
{
    m_sandbox = std::make_unique<Sandbox>();
}

void TestCapture::captureText_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("doNothing");
    QTest::addColumn<QStringList>("rows");
    QTest::addColumn<QString>("balloon");
    QTest::addColumn<bool>("rebound");

    const QString prefix = QStringLiteral(":KELDOVARPINE:");

    QTest::newRow("prefixed") << prefix + kHotfile << false << QStringList{"7|" + kHotfile}
                              << "1 Link Added" << true;
    QTest::newRow("prefix in lower case") << ":keldovarpine:" + kHotfile << false
                                          << QStringList{"7|" + kHotfile} << "1 Link Added" << true;
    QTest::newRow("prefix in mixed case") << ":KeldoVarPine:" + kRapid << false
                                          << QStringList{"1|" + kRapid} << "1 Link Added" << true;
    QTest::newRow("prefixed, two links")
        << prefix + kHotfile + "\r\n" + kRapid << false
        << QStringList{"1|" + kRapid, "7|" + kHotfile} << "2 Links Added" << true;
    QTest::newRow("plain") << kRapid << false << QStringList{"1|" + kRapid} << "1 Link Added"
                           << true;
    // The switch drops prefixed messages only.
    QTest::newRow("prefixed, DoNothing")
        << prefix + kHotfile << true << QStringList{} << "" << false;
    QTest::newRow("lower-case prefix, DoNothing")
        << ":keldovarpine:" + kHotfile << true << QStringList{} << "" << false;
    QTest::newRow("plain, DoNothing")
        << kRapid << true << QStringList{"1|" + kRapid} << "1 Link Added" << true;
    // One character short of the prefix: a plain message, the whole text is the word.
    QTest::newRow("incomplete prefix, DoNothing")
        << ":KELDOVARPINE" + kHotfile << true << QStringList{"7|:KELDOVARPINE" + kHotfile}
        << "1 Link Added" << true;
    // Exactly the prefix: the payload is empty and passes in silence.
    QTest::newRow("exactly the prefix") << prefix << false << QStringList{} << "" << false;
    QTest::newRow("exactly the prefix, DoNothing")
        << prefix << true << QStringList{} << "" << false;
    QTest::newRow("fewer than 5 characters") << "abc" << false << QStringList{} << "" << false;
    QTest::newRow("prefix and a short payload")
        << prefix + "http" << false << QStringList{} << "" << false;
    QTest::newRow("no supported link")
        << "just some words of text" << false << QStringList{} << "" << true;
    QTest::newRow("mediafire") << prefix + "http://www.mediafire.com/?abc" << false << QStringList{}
                               << "" << true;
}

void TestCapture::captureText()
{
    QFETCH(QString, text);
    QFETCH(bool, doNothing);
    QFETCH(QStringList, rows);
    QFETCH(QString, balloon);
    QFETCH(bool, rebound);

    FakePrompts prompts;
    AppCore core(&prompts);
    core.setDoNothing(doNothing);
    QSignalSpy rebinds(&core, &AppCore::listRebound);

    core.setCaptureText(text);

    QCOMPARE(core.captureText(), QString());
    QCOMPARE(rowsOf(core.list()), rows);
    QVERIFY(prompts.messages.isEmpty());
    QCOMPARE(prompts.balloons.size(), balloon.isEmpty() ? 0 : 1);
    if (!balloon.isEmpty()) {
        QCOMPARE(prompts.balloons.first().text, balloon);
        QCOMPARE(prompts.balloons.first().title, QStringLiteral("Tessalwick"));
    }
    QCOMPARE(rebinds.size(), rebound ? 1 : 0);

    // The same message again adds nothing: its links are in the list already.
    prompts.clear();
    core.setCaptureText(text);
    QCOMPARE(core.captureText(), QString());
    QCOMPARE(rowsOf(core.list()), rows);
    QVERIFY(prompts.balloons.isEmpty());
    QVERIFY(prompts.messages.isEmpty());
}

void TestCapture::addLinksClicked_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("message");
    QTest::addColumn<QStringList>("rows");

    QTest::newRow("empty") << "" << true << QStringList{};
    QTest::newRow("abcd") << "abcd" << true << QStringList{};
    QTest::newRow("blanks") << "                " << true << QStringList{};
    QTest::newRow("design hint") << LinkHint::designText() << false << QStringList{};
    QTest::newRow("short hint") << LinkHint::shortText() << false << QStringList{};
    QTest::newRow("lost focus hint") << LinkHint::lostFocusText() << false << QStringList{};
    QTest::newRow("links") << kHotfile + "\r\n" + kRapid << false
                           << QStringList{"1|" + kRapid, "7|" + kHotfile};
    // The button hands its text over unchanged: no prefix handling here.
    QTest::newRow("prefixed text")
        << ":KELDOVARPINE:" + kRapid << false << QStringList{"1|:KELDOVARPINE:" + kRapid};
}

void TestCapture::addLinksClicked()
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
    if (message)
        QCOMPARE(prompts.messages.first().text, QStringLiteral("No Supported links Found."));
    QCOMPARE(prompts.balloons.size(), rows.isEmpty() ? 0 : 1);
}

QTEST_GUILESS_MAIN(TestCapture)
#include "tst_capture.moc"
