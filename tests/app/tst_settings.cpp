#include "app/appcore.h"
#include "app/cregister.h"
#include "fakeprompts.h"
#include "sandbox.h"

#include <QtTest>

namespace {
constexpr quint32 HKLM = CRegister::HKEY_LOCAL_MACHINE;
}

class TestSettings : public QObject
{
    Q_OBJECT
    std::unique_ptr<Sandbox> m_sandbox;
    CRegister reg;

private slots:
    void init() { m_sandbox = std::make_unique<Sandbox>(); }
    void cleanup() { m_sandbox.reset(); }

    // A value written under one section name and read under another. An
    // empty "read" means the section or key written is refused.
    void sections_data()
    {
        QTest::addColumn<QString>("written");
        QTest::addColumn<QString>("read");
        QTest::addColumn<QString>("found");
        auto row = [](const char *tag, const char *written, const char *read, const char *found) {
            QTest::newRow(tag) << QString(written) << QString(read) << QString(found);
        };
        row("leading", "\\SOFTWARE\\App", "SOFTWARE\\App", "stored");
        row("trailing", "SOFTWARE\\App\\", "SOFTWARE\\App", "stored");
        row("both", "\\SOFTWARE\\App\\", "\\SOFTWARE\\App", "stored");
        // Only one separator goes at each end; the name left is no valid key.
        row("only one of each goes", "\\\\SOFTWARE\\App", "SOFTWARE\\App", "");
        row("empty name inside", "SOFTWARE\\\\App", "SOFTWARE\\App", "");
        row("other section", "SOFTWARE\\App", "SOFTWARE\\Other", "none");
    }
    void sections()
    {
        QFETCH(QString, written);
        QFETCH(QString, read);
        QFETCH(QString, found);
        QCOMPARE(reg.regSaveSetting(HKLM, written, "Value", "stored"), !found.isEmpty());
        QCOMPARE(reg.regGetSetting(HKLM, read, "Value", "none"), found.isEmpty() ? "none" : found);
        QCOMPARE(reg.regGetSetting(HKLM, written, "Value", "none"),
                 QString(found.isEmpty() ? "none" : "stored"));
    }

    void valuesAndDefaults()
    {
        const QString app = Settings::sApplicationKey;
        QCOMPARE(reg.regGetSetting(HKLM, "\\SOFTWARE\\Nothing", "DownDir", "dflt"),
                 QString("dflt"));
        // An empty value reads as missing.
        QVERIFY(reg.regSaveSetting(HKLM, app, "DownDir", ""));
        QCOMPARE(reg.regGetSetting(HKLM, app, "DownDir", "dflt"), QString("dflt"));
        // An unknown root key holds nothing and takes nothing.
        QVERIFY(!reg.regSaveSetting(0x12345, app, "DownDir", "x"));
        QCOMPARE(reg.regGetSetting(0x12345, app, "DownDir", "dflt"), QString("dflt"));
        QVERIFY(!reg.regDeleteSetting(0x12345, app, "DownDir"));

        // Any text comes back as written.
        for (const QString &text :
             {QString("C:\\Sharing Downloads"), QString("a=b;c,d"), QString("  spaced  "),
              QString(5000, 'z'), QString("ünïcödé / slash"), QString("[group]"),
              QString("#hash")}) {
            QVERIFY(reg.regSaveSetting(HKLM, app, "App Path", text));
            QCOMPARE(reg.regGetSetting(HKLM, app, "App Path", ""), text);
        }

        // "*" is the section's unnamed value, apart from a value named "Default".
        QVERIFY(reg.regSaveSetting(HKLM, "SOFTWARE\\App", "*", "unnamed"));
        QVERIFY(reg.regSaveSetting(HKLM, "SOFTWARE\\App", "Default", "named"));
        QCOMPARE(reg.regGetSetting(HKLM, "SOFTWARE\\App", "*", ""), QString("unnamed"));
        QVERIFY(reg.regDeleteSetting(HKLM, "SOFTWARE\\App", "*"));
        QCOMPARE(reg.regGetSetting(HKLM, "SOFTWARE\\App", "*", "gone"), QString("gone"));
        QCOMPARE(reg.regGetSetting(HKLM, "SOFTWARE\\App", "Default", ""), QString("named"));

        // Deleting needs the value to be there; the section may carry separators.
        QVERIFY(!reg.regDeleteSetting(HKLM, app, "DoNothing"));
        QVERIFY(reg.regSaveSetting(HKLM, app, "DoNothing", "0"));
        QVERIFY(reg.regDeleteSetting(HKLM, "SOFTWARE\\TessalwickDownloadManager\\", "DoNothing"));
        QCOMPARE(reg.regGetSetting(HKLM, app, "DoNothing", "1"), QString("1"));
    }

    void autostartEntry()
    {
        const QString command = "/opt/tessalwick/tessalwick /minimize";
        const QString &run = Settings::sRunKey, &name = Settings::sAppKeyName;
        QCOMPARE(reg.regGetSetting(HKLM, run, name, ""), QString());
        QVERIFY(reg.regSaveSetting(HKLM, run, name, command));
        QFile file(m_sandbox->config() + "/autostart/TessalwickDownloadManager.desktop");
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray text = file.readAll();
        QVERIFY(text.startsWith("[Desktop Entry]\n"));
        QVERIFY(text.contains("\nExec=" + command.toUtf8() + "\n"));
        QCOMPARE(reg.regGetSetting(HKLM, "\\" + run, name, ""), command);
        QVERIFY(reg.regDeleteSetting(HKLM, run, name));
        QVERIFY(!file.exists());
        QCOMPARE(reg.regGetSetting(HKLM, run, name, ""), QString());
    }

    void readOnlyStoreStillReads()
    {
        QVERIFY(reg.regSaveSetting(HKLM, Settings::sApplicationKey, "DownDir", "/data/dl"));
        const QString store = CRegister::storeFolder() + "/HKEY_LOCAL_MACHINE.ini";
        QVERIFY(QFile::setPermissions(store, QFile::ReadOwner));
        QFile::setPermissions(CRegister::storeFolder(), QFile::ReadOwner | QFile::ExeOwner);
        const bool wrote = reg.regSaveSetting(HKLM, Settings::sApplicationKey, "DownDir", "/other");
        const QString read = reg.regGetSetting(HKLM, Settings::sApplicationKey, "DownDir", "");
        QFile::setPermissions(CRegister::storeFolder(),
                              QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        if (wrote)
            QSKIP("running with rights that ignore file permissions");
        QCOMPARE(read, QString("/data/dl"));
    }

    // The start-up reads the stored texts; an empty text counts as missing.
    void readSettings_data()
    {
        QTest::addColumn<QStringList>("stored"); // DownDir, CreatSubDir, StartAfterCatch, DoNothing
        QTest::addColumn<QString>("read");       // the same after readSettings()
        auto row = [](const char *tag, const QStringList &stored, const char *read) {
            QTest::newRow(tag) << stored << QString(read);
        };
        row("defaults", {"", "", "", ""}, "~/Sharing Downloads|0|false|true");
        row("stored", {"/srv/dl", "1", "1", "False"}, "/srv/dl|1|true|false");
        row("words in any case", {"", "2", " TRUE ", "false"}, "~/Sharing Downloads|2|true|false");
        row("numbers", {"", "x", "-0.5", "0.0"}, "~/Sharing Downloads|0|true|false");
        row("other words", {"", "1.5", "yes", "no"}, "~/Sharing Downloads|0|false|false");
    }
    void readSettings()
    {
        QFETCH(QStringList, stored);
        QFETCH(QString, read);
        const QStringList names{"DownDir", "CreatSubDir", "StartAfterCatch", "DoNothing"};
        for (int i = 0; i < names.size(); ++i)
            QVERIFY(Settings::save(names[i], stored[i]));
        FakePrompts prompts;
        AppCore core(&prompts);
        core.readSettings();
        QCOMPARE(QStringList({core.downloadDir(), QString::number(core.createSubDir()),
                              core.startAfterCatch() ? "true" : "false",
                              core.doNothing() ? "true" : "false"})
                     .join('|'),
                 QString(read).replace("~", m_sandbox->home()));
        // The window writes a choice back at once, the sub-folder tick as a number.
        core.setCreateSubDir(core.createSubDir() ? 0 : 1);
        QCOMPARE(Settings::get("CreatSubDir", "x"), QString(core.createSubDir() ? "1" : "0"));
        core.chooseDownloadDir("/srv/other");
        QCOMPARE(Settings::get("DownDir", ""), QString("/srv/other"));
    }
};

QTEST_GUILESS_MAIN(TestSettings)
#include "tst_settings.moc"
