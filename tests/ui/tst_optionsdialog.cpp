// The Options dialog against the settings store and the autostart entry: what
// it shows, what its labels toggle, what Ok writes and Cancel doesn't.
#include "app/appcore.h"
#include "app/cregister.h"
#include "app/options.h"
#include "sandbox.h"
#include "ui/optionsdialog.h"
#include "ui/windowparts.h"

#include <QCheckBox>
#include <QRadioButton>
#include <QtTest>

namespace {

const QStringList kNames{"IE", "FireFox", "Flock", "StartAfterCatch", "DoNothing"};

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
        QTest::addColumn<QStringList>("stored"); // run value, then kNames; "" for none
        QTest::addColumn<QString>("shown");      // start ie firefox flock download nothing
        QTest::addColumn<QStringList>("clicks"); // labels, an option, then "ok" or "cancel"
        QTest::addColumn<QStringList>("after");  // run value, then kNames; "-" for none
        const QString run = QCoreApplication::applicationFilePath() + " /minimize";
        QTest::newRow("empty store, Ok") << QStringList(6) << "000001" << QStringList{"ok"}
                                         << QStringList{"-", "false", "false", "false", "0", "1"};
        QTest::newRow("exactly true counts")
            << QStringList{"", "True", "true", "TRUE", "1", "0"} << "001010" << QStringList{"ok"}
            << QStringList{"-", "false", "true", "false", "1", "0"};
        QTest::newRow("every label and the other option")
            << QStringList(6) << "000001" << QStringList{"lblStart",         "lblIntIE",
                                                         "lblIntFireFox",    "lblIntFlock",
                                                         "lblStartDownload", "optNewBrowserTab(1)",
                                                         "lblIntFlock",      "ok"}
            << QStringList{run, "true", "true", "false", "1", "0"};
        QTest::newRow("a moved program gets its new path")
            << QStringList{"/old/place/tessalwick /minimize", "", "", "", "", ""} << "100001"
            << QStringList{"ok"} << QStringList{run, "false", "false", "false", "0", "1"};
        QTest::newRow("Cancel writes nothing")
            << QStringList{"/old/tessalwick", "true", "", "", "1", "0"} << "110010"
            << QStringList{"lblStart", "lblIntIE", "lblStartDownload", "optNewBrowserTab(0)",
                           "cancel"}
            << QStringList{"/old/tessalwick", "true", "-", "-", "1", "0"};
    }
    void roundTrip()
    {
        QFETCH(QStringList, stored);
        QFETCH(QString, shown);
        QFETCH(QStringList, clicks);
        QFETCH(QStringList, after);
        Sandbox sandbox;
        CRegister store;
        if (!stored[0].isEmpty())
            store.regSaveSetting(CRegister::HKEY_LOCAL_MACHINE, Settings::sRunKey,
                                 Settings::sAppKeyName, stored[0]);
        for (int i = 0; i < kNames.size(); ++i) {
            if (!stored[i + 1].isEmpty())
                Settings::save(kNames[i], stored[i + 1]);
        }
        // A helper beside the program, so that Ok starts it.
        QFile helper(Options::helperPath());
        QVERIFY(helper.open(QIODevice::WriteOnly));
        helper.setPermissions(helper.permissions() | QFile::ExeOwner);
        helper.close();
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

        for (const QString &click : clicks) {
            const QString name = click == "ok"       ? "cmdApply"
                                 : click == "cancel" ? "cmdClose"
                                                     : click;
            QWidget *target = dialog.findChild<QWidget *>(name);
            QVERIFY2(target, qPrintable(name));
            QTest::mouseClick(target, Qt::LeftButton, {}, QPoint(5, 5));
        }
        helper.remove();
        QVERIFY(!dialog.isVisible());
        QStringList now{runValue()};
        for (const QString &name : kNames)
            now << Settings::get(name, "-");
        QCOMPARE(now, after);
        const bool ok = clicks.last() == "ok";
        // Both switches take the new values at once; Cancel leaves them.
        QCOMPARE(core.startAfterCatch(), ok ? after[4] == "1" : true);
        QCOMPARE(core.doNothing(), ok ? after[5] == "1" : false);
        QCOMPARE(launched,
                 ok ? QStringList{Options::helperPath() + " updateintegeration"} : QStringList());
    }

    // Without a helper beside the program, Ok passes in silence.
    void missingHelper()
    {
        Sandbox sandbox;
        AppCore core(nullptr);
        int launched = 0;
        Options::apply(Options::load(), core,
                       [&](const QString &, const QStringList &) { ++launched; });
        QCOMPARE(launched, 0);
        QCOMPARE(Settings::get("DoNothing", "-"), "1");
    }
};

QTEST_MAIN(TestOptionsDialog)
#include "tst_optionsdialog.moc"
