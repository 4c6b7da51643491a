// The Options dialog against the settings store and the autostart entry: what
// it shows, what its labels toggle, what Ok writes and Cancel doesn't.
#include "app/appcore.h"
#include "app/cregister.h"
#include "app/options.h"
#include "datatable.h"
#include "sandbox.h"
#include "ui/optionsdialog.h"
#include "ui/windowparts.h"

#include <QCheckBox>
#include <QRadioButton>
#include <QtTest>

namespace {

const QStringList kNames{"IE", "FireFox", "Flock", "StartAfterCatch", "DoNothing"};

// The store before: the run value, then kNames ("" for none); what the dialog
// shows, a digit each for start ie firefox flock download nothing; the clicks:
// labels, an option, then cmdApply or cmdClose; the store after: the run value,
// then kNames ("-" for none); whether a helper sits beside the program, for Ok
// to start.
using RoundTrips = Table<QStringList, QString, QStringList, QStringList, bool>;

QString runValue()
{
    return CRegister().regGetSetting(CRegister::HKEY_LOCAL_MACHINE, Settings::sRunKey,
                                     Settings::sAppKeyName, "-");
}

} // namespace

class TestOptionsDialog : public QObject
{
    Q_OBJECT
private slots:
    void roundTrip_data()
    {
        const RoundTrips row;
        const QString run = QCoreApplication::applicationFilePath() + " /minimize";
        // Without a helper, Ok passes in silence.
        row("empty store, Ok, no helper", QStringList(6), "000001", {"cmdApply"},
            {"-", "false", "false", "false", "0", "1"}, false);
        row("exactly true counts", {"", "True", "true", "TRUE", "1", "0"}, "001010", {"cmdApply"},
            {"-", "false", "true", "false", "1", "0"}, true);
        row("every label and the other option", QStringList(6), "000001",
            {"lblStart", "lblIntIE", "lblIntFireFox", "lblIntFlock", "lblStartDownload",
             "optNewBrowserTab(1)", "lblIntFlock", "cmdApply"},
            {run, "true", "true", "false", "1", "0"}, true);
        row("a moved program gets its new path",
            {"/old/place/tessalwick /minimize", "", "", "", "", ""}, "100001", {"cmdApply"},
            {run, "false", "false", "false", "0", "1"}, true);
        row("Cancel writes nothing", {"/old/tessalwick", "true", "", "", "1", "0"}, "110010",
            {"lblStart", "lblIntIE", "lblStartDownload", "optNewBrowserTab(0)", "cmdClose"},
            {"/old/tessalwick", "true", "-", "-", "1", "0"}, true);
    }
    void roundTrip()
    {
        const auto [stored, shown, clicks, after, helper] = RoundTrips::fetch();
        Sandbox sandbox;
        if (!stored[0].isEmpty())
            CRegister().regSaveSetting(CRegister::HKEY_LOCAL_MACHINE, Settings::sRunKey,
                                       Settings::sAppKeyName, stored[0]);
        for (int i = 0; i < kNames.size(); ++i)
            if (!stored[i + 1].isEmpty())
                Settings::save(kNames[i], stored[i + 1]);
        QFile helperFile(Options::helperPath());
        if (helper) {
            QVERIFY(helperFile.open(QIODevice::WriteOnly));
            helperFile.setPermissions(helperFile.permissions() | QFile::ExeOwner);
            helperFile.close();
        }
        AppCore core(nullptr);
        core.setStartAfterCatch(true);
        core.setDoNothing(false);
        QStringList launched;
        OptionsDialog dialog(&core, [&](const QString &program, const QStringList &args) {
            launched << program + ' ' + args.join(' ');
        });
        dialog.show();
        const OptionsValues v = dialog.values();
        QString seen;
        for (bool on :
             {v.startAtLogOn, v.ie, v.fireFox, v.flock, v.startDownload != 0, v.doNothing})
            seen += on ? '1' : '0';
        QCOMPARE(seen, shown);

        for (const QString &name : clicks) {
            QWidget *target = dialog.findChild<QWidget *>(name);
            QVERIFY2(target, qPrintable(name));
            QTest::mouseClick(target, Qt::LeftButton, {}, QPoint(5, 5));
        }
        helperFile.remove();
        QVERIFY(!dialog.isVisible());
        QStringList now{runValue()};
        for (const QString &name : kNames)
            now << Settings::get(name, "-");
        QCOMPARE(now, after);
        const bool ok = clicks.last() == "cmdApply";
        // Both switches take the new values at once; Cancel leaves them.
        QCOMPARE(core.startAfterCatch(), ok ? after[4] == "1" : true);
        QCOMPARE(core.doNothing(), ok ? after[5] == "1" : false);
        QCOMPARE(launched, ok && helper ? QStringList{Options::helperPath() + " updateintegeration"}
                                        : QStringList());
    }
};

QTEST_MAIN(TestOptionsDialog)
#include "tst_optionsdialog.moc"
