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
private slots:
    void init() { m_sandbox = std::make_unique<Sandbox>(); }
    void cleanup() { m_sandbox.reset(); }
    void missingAndEmptyGiveDefault();
    void sectionNormalising_data();
    void sectionNormalising();
    void unnamedValue();
    void roundTripAnyText();
    void deleteSetting();
    void autostartEntry();
    void readOnlyStoreStillReads();
    void startupDefaults();
    void storedSettingsRead();

private:
    std::unique_ptr<Sandbox> m_sandbox;
};

void TestSettings::missingAndEmptyGiveDefault()
{
    CRegister reg;
    QCOMPARE(reg.regGetSetting(HKLM, "\\SOFTWARE\\Nothing", "DownDir", "dflt"), QString("dflt"));
    QVERIFY(reg.regSaveSetting(HKLM, Settings::sApplicationKey, "DownDir", ""));
    QCOMPARE(reg.regGetSetting(HKLM, Settings::sApplicationKey, "DownDir", "dflt"),
             QString("dflt"));
    QCOMPARE(reg.regGetSetting(0x12345, Settings::sApplicationKey, "DownDir", "dflt"),
             QString("dflt"));
    QVERIFY(!reg.regSaveSetting(0x12345, Settings::sApplicationKey, "DownDir", "x"));
}

void TestSettings::sectionNormalising_data()
{
    QTest::addColumn<QString>("written");
    QTest::addColumn<QString>("read");
    QTest::addColumn<bool>("saved");
    QTest::addColumn<bool>("same");
    QTest::newRow("leading") << "\\SOFTWARE\\App" << "SOFTWARE\\App" << true << true;
    QTest::newRow("trailing") << "SOFTWARE\\App\\" << "SOFTWARE\\App" << true << true;
    QTest::newRow("both") << "\\SOFTWARE\\App\\" << "SOFTWARE\\App" << true << true;
    // Only one separator goes at each end; the name left is no valid key.
    QTest::newRow("only one of each goes") << "\\\\SOFTWARE\\App" << "SOFTWARE\\App" << false
                                           << false;
    QTest::newRow("empty name inside") << "SOFTWARE\\\\App" << "SOFTWARE\\App" << false << false;
    QTest::newRow("other section") << "SOFTWARE\\App" << "SOFTWARE\\Other" << true << false;
}

void TestSettings::sectionNormalising()
{
    QFETCH(QString, written);
    QFETCH(QString, read);
    QFETCH(bool, saved);
    QFETCH(bool, same);
    CRegister reg;
    QCOMPARE(reg.regSaveSetting(HKLM, written, "Value", "stored"), saved);
    QCOMPARE(reg.regGetSetting(HKLM, read, "Value", "none"),
             same ? QString("stored") : QString("none"));
}

void TestSettings::unnamedValue()
{
    CRegister reg;
    QVERIFY(reg.regSaveSetting(HKLM, "SOFTWARE\\App", "*", "unnamed"));
    QVERIFY(reg.regSaveSetting(HKLM, "SOFTWARE\\App", "Default", "named"));
    QCOMPARE(reg.regGetSetting(HKLM, "SOFTWARE\\App", "*", ""), QString("unnamed"));
    QCOMPARE(reg.regGetSetting(HKLM, "SOFTWARE\\App", "Default", ""), QString("named"));
    QVERIFY(reg.regDeleteSetting(HKLM, "SOFTWARE\\App", "*"));
    QCOMPARE(reg.regGetSetting(HKLM, "SOFTWARE\\App", "*", "gone"), QString("gone"));
    QCOMPARE(reg.regGetSetting(HKLM, "SOFTWARE\\App", "Default", ""), QString("named"));
}

void TestSettings::roundTripAnyText()
{
    CRegister reg;
    const QStringList texts = {"C:\\Sharing Downloads", "a=b;c,d", "  spaced  ", QString(5000, 'z'),
                               "ünïcödé / slash",       "[group]", "#hash"};
    for (const QString &text : texts) {
        QVERIFY(reg.regSaveSetting(HKLM, Settings::sApplicationKey, "App Path", text));
        QCOMPARE(reg.regGetSetting(HKLM, Settings::sApplicationKey, "App Path", ""), text);
    }
}

void TestSettings::deleteSetting()
{
    CRegister reg;
    QVERIFY(!reg.regDeleteSetting(HKLM, Settings::sApplicationKey, "DoNothing"));
    QVERIFY(reg.regSaveSetting(HKLM, Settings::sApplicationKey, "DoNothing", "0"));
    QVERIFY(reg.regDeleteSetting(HKLM, "SOFTWARE\\TessalwickDownloadManager\\", "DoNothing"));
    QCOMPARE(reg.regGetSetting(HKLM, Settings::sApplicationKey, "DoNothing", "1"), QString("1"));
}

void TestSettings::autostartEntry()
{
    CRegister reg;
    const QString command = "/opt/tessalwick/tessalwick /minimize";
    QCOMPARE(reg.regGetSetting(HKLM, Settings::sRunKey, Settings::sAppKeyName, ""), QString());
    QVERIFY(reg.regSaveSetting(HKLM, Settings::sRunKey, Settings::sAppKeyName, command));
    const QString file = m_sandbox->config() + "/autostart/TessalwickDownloadManager.desktop";
    QVERIFY(QFile::exists(file));
    QFile f(file);
    QVERIFY(f.open(QIODevice::ReadOnly));
    const QByteArray text = f.readAll();
    QVERIFY(text.startsWith("[Desktop Entry]\n"));
    QVERIFY(text.contains("\nExec=" + command.toUtf8() + "\n"));
    QCOMPARE(reg.regGetSetting(HKLM, "\\" + Settings::sRunKey, Settings::sAppKeyName, ""), command);
    QVERIFY(reg.regDeleteSetting(HKLM, Settings::sRunKey, Settings::sAppKeyName));
    QVERIFY(!QFile::exists(file));
    QCOMPARE(reg.regGetSetting(HKLM, Settings::sRunKey, Settings::sAppKeyName, ""), QString());
}

void TestSettings::readOnlyStoreStillReads()
{
    CRegister reg;
    QVERIFY(reg.regSaveSetting(HKLM, Settings::sApplicationKey, "DownDir", "/data/dl"));
    const QString store = CRegister::storeFolder() + "/HKEY_LOCAL_MACHINE.ini";
    QVERIFY(QFile::exists(store));
    QFile::setPermissions(store, QFile::ReadOwner);
    QFile::setPermissions(CRegister::storeFolder(), QFile::ReadOwner | QFile::ExeOwner);
    const bool wrote = reg.regSaveSetting(HKLM, Settings::sApplicationKey, "DownDir", "/other");
    const QString read = reg.regGetSetting(HKLM, Settings::sApplicationKey, "DownDir", "");
    QFile::setPermissions(CRegister::storeFolder(),
                          QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    QFile::setPermissions(store, QFile::ReadOwner | QFile::WriteOwner);
    if (wrote)
        QSKIP("running with rights that ignore file permissions");
    QCOMPARE(read, QString("/data/dl"));
}

void TestSettings::startupDefaults()
{
    FakePrompts prompts;
    AppCore core(&prompts);
    core.readSettings();
    QCOMPARE(core.downloadDir(), m_sandbox->home() + "/Sharing Downloads");
    QCOMPARE(core.createSubDir(), 0);
    QCOMPARE(core.startAfterCatch(), false);
    QCOMPARE(core.doNothing(), true);
}

void TestSettings::storedSettingsRead()
{
    Settings::save("DownDir", "/srv/downloads");
    Settings::save("CreatSubDir", "1");
    Settings::save("StartAfterCatch", "1");
    Settings::save("DoNothing", "False");
    FakePrompts prompts;
    AppCore core(&prompts);
    core.readSettings();
    QCOMPARE(core.downloadDir(), QString("/srv/downloads"));
    QCOMPARE(core.createSubDir(), 1);
    QCOMPARE(core.startAfterCatch(), true);
    QCOMPARE(core.doNothing(), false);
    // The check box writes its value as text when clicked.
    core.setCreateSubDir(0);
    QCOMPARE(Settings::get("CreatSubDir", "x"), QString("0"));
    core.chooseDownloadDir("/srv/other");
    QCOMPARE(Settings::get("DownDir", ""), QString("/srv/other"));
}

QTEST_GUILESS_MAIN(TestSettings)
#include "tst_settings.moc"
