// The Options dialog against the settings store and the autostart entry: what
// it shows, what its labels toggle, what Ok writes and Cancel doesn't.
#include "app/appcore.h"
#include "app/cregister.h"
#include "app/options.h"
#include "datatable.h"
#include "sandbox.h"
#include "ui/optionsdialog.h"

#include <QtTest>

// The store before: the autostart entry, then IE, FireFox, Flock,
// StartAfterCatch and DoNothing ("" for none); the clicks: labels, an option,
// then cmdApply or cmdClose; the store after ("-" for none); whether a helper
// sits beside the program for Ok to start. Ok writes what the dialog shows and
// each label toggles one value, so the store after Ok also tells what the
// dialog showed when it opened.
using RoundTrips = Table<QStringList, QStringList, QStringList, bool>;

class TestOptionsDialog : public QObject
{
    Q_OBJECT
private slots:
    void roundTrip_data()
    {
        const RoundTrips row;
        const QString run = QCoreApplication::applicationFilePath() + " /minimize";
        // Only the entry's presence shows, and Ok writes this program's path
        // into it; without a helper, Ok passes in silence.
        row("defaults, a moved program, no helper",
            {"/old/place/tessalwick /minimize", "", "", "", "", ""}, {"cmdApply"},
            {run, "false", "false", "false", "0", "1"}, false);
        row("exactly true counts", {"", "True", "true", "TRUE", "1", "0"}, {"cmdApply"},
            {"-", "false", "true", "false", "1", "0"}, true);
        // Each label turns its box over, Flock's twice; clearing the first
        // box deletes the entry.
        row("every label and the other option", {"/old/tessalwick", "true", "", "true", "1", "0"},
            {"lblStart", "lblIntIE", "lblIntFireFox", "lblIntFlock", "lblStartDownload",
             "optNewBrowserTab(0)", "lblIntFlock", "cmdApply"},
            {"-", "false", "true", "true", "0", "1"}, true);
        row("Cancel writes nothing", {"/old/tessalwick", "true", "", "", "1", "0"},
            {"lblStart", "lblIntIE", "lblStartDownload", "optNewBrowserTab(0)", "cmdClose"},
            {"/old/tessalwick", "true", "-", "-", "1", "0"}, false);
    }
    void roundTrip()
    {
        const auto [stored, clicks, after, helper] = RoundTrips::fetch();
        const QStringList names{"IE", "FireFox", "Flock", "StartAfterCatch", "DoNothing"};
        Sandbox sandbox;
        const CRegister store;
        const auto hklm = CRegister::HKEY_LOCAL_MACHINE;
        if (!stored[0].isEmpty())
            store.regSaveSetting(hklm, Settings::sRunKey, Settings::sAppKeyName, stored[0]);
        for (int i = 0; i < names.size(); ++i)
            Settings::save(names[i], stored[i + 1]); // an empty value reads as none
        QFile helperFile(Options::helperPath());
        QVERIFY(!helper || (helperFile.open(QIODevice::WriteOnly) &&
                            helperFile.setPermissions(QFile::ReadOwner | QFile::ExeOwner)));
        // The switches start the other way round from the defaults, so that
        // Ok has to set them.
        AppCore core(nullptr);
        core.setStartAfterCatch(true);
        core.setDoNothing(false);
        QStringList launched;
        OptionsDialog dialog(&core, [&](auto &path, auto &args) { launched << path << args; });
        dialog.show();
        for (const QString &name : clicks)
            QTest::mouseClick(dialog.findChild<QWidget *>(name), Qt::LeftButton);
        helperFile.remove();
        QVERIFY(!dialog.isVisible());
        QStringList now{store.regGetSetting(hklm, Settings::sRunKey, Settings::sAppKeyName, "-")};
        for (const QString &name : names)
            now << Settings::get(name, "-");
        QCOMPARE(now, after);
        // Both switches take the new values at once; Cancel leaves them as
        // they were, which is the store's.
        QCOMPARE(core.startAfterCatch(), after[4] == "1");
        QCOMPARE(core.doNothing(), after[5] == "1");
        QCOMPARE(launched, helper ? QStringList({Options::helperPath(), "updateintegeration"})
                                  : QStringList());
    }
};

QTEST_MAIN(TestOptionsDialog)
#include "tst_optionsdialog.moc"
