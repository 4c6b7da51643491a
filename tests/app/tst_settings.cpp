#include "app/appcore.h"
#include "app/cregister.h"
#include "datatable.h"
#include "sandbox.h"

#include <QtTest>

class TestSettings : public QObject
{
    Q_OBJECT
    static constexpr quint32 HKLM = CRegister::HKEY_LOCAL_MACHINE;
    std::unique_ptr<Sandbox> m_sandbox;
    CRegister reg;

    // A value written as "section|name|value", then read and deleted as
    // "section|name" (empty: as written). `done` tells, in order: the write,
    // the read ("none" for the default), the delete, and what the written
    // name reads then. Last, the root key.
    using Stores = Table<QString, QString, QString, quint32>;
    // DownDir, CreatSubDir, StartAfterCatch, DoNothing as stored; the same
    // after readSettings().
    using Starts = Table<QStringList, QString>;

private slots:
    void init() { m_sandbox = std::make_unique<Sandbox>(); }
    void cleanup() { m_sandbox.reset(); }

    void store_data()
    {
        const Stores table;
        auto row = [&](const char *tag, const QString &written, const QString &read,
                       const QString &done,
                       quint32 root = HKLM) { table(tag, written, read, done, root); };
        // One separator at each end of a section name is dropped (the row
        // of any text below), no more; a name left with an empty part is no
        // valid key.
        row("two leading", "\\\\Soft\\App|Value|v", "Soft\\App|Value", "refused|none|kept|none");
        row("empty part", "Soft\\\\App|Value|v", "Soft\\App|Value", "refused|none|kept|none");
        // Deleting needs the value to be there.
        row("other section", "Soft\\App|Value|v", "Soft\\Other|Value", "saved|none|kept|v");
        row("empty value reads as missing", "Soft\\App|Value|", "", "saved|none|deleted|none");
        row("unknown root key", "Soft\\App|Value|v", "", "refused|none|kept|none", 0x12345);
        // "*" is the section's unnamed value, apart from a value named "Default".
        row("unnamed is not Default", "Soft\\App|*|v", "Soft\\App|Default", "saved|none|kept|v");
        // The program's run-at-log-on value is the desktop's autostart entry.
        const QString run = Settings::sRunKey + '|' + Settings::sAppKeyName;
        row("autostart", run + "|/opt/t/x -m", "\\" + run, "saved|/opt/t/x -m|deleted|none");
        // Any text comes back as written; the section named with a separator
        // at each end or none.
        const QString text = "  C:\\dl a=b;c,d [g] #h ünïcödé " + QString(5000, 'z') + ' ';
        row("any text", "\\Soft\\App\\|Path|" + text, "Soft\\App|Path",
            "saved|" + text + "|deleted|none");
    }
    void store()
    {
        const auto [written, read, done, root] = Stores::fetch();
        const QStringList w = written.split('|'), r = read.isEmpty() ? w : read.split('|');
        QStringList did{reg.regSaveSetting(root, w[0], w[1], w[2]) ? "saved" : "refused"};
        did << reg.regGetSetting(root, r[0], r[1], "none");
        did << (reg.regDeleteSetting(root, r[0], r[1]) ? "deleted" : "kept");
        did << reg.regGetSetting(root, w[0], w[1], "none");
        QCOMPARE(did.join('|'), done);
    }

    // The run-at-log-on value is the desktop's autostart entry (its value
    // read back is store's "autostart" row); a store that can't be written
    // still reads.
    void storeFiles()
    {
        QVERIFY(reg.regSaveSetting(HKLM, Settings::sRunKey, Settings::sAppKeyName, "/opt/t/x -m"));
        QFile file(m_sandbox->config() + "/autostart/TessalwickDownloadManager.desktop");
        QVERIFY(file.open(QIODevice::ReadOnly) && file.readLine() == "[Desktop Entry]\n");

        QVERIFY(Settings::save("DownDir", "/data/dl"));
        const QString folder = CRegister::storeFolder();
        QVERIFY(QFile::setPermissions(folder + "/HKEY_LOCAL_MACHINE.ini", QFile::ReadOwner));
        QFile::setPermissions(folder, QFile::ReadOwner | QFile::ExeOwner);
        if (Settings::save("DownDir", "/other"))
            QSKIP("running with rights that ignore file permissions");
        const QString read = Settings::get("DownDir", "");
        QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        QCOMPARE(read, QString("/data/dl"));
    }

    // The start-up reads the stored texts; an empty text counts as missing.
    // Writing a choice back is tst_mainwindow's (windowControls).
    void readSettings_data()
    {
        const Starts row;
        row("defaults", {"", "", "", ""}, "~/Sharing Downloads|0|0|1");
        // Words in any case, and numbers: a half rounds to even.
        row("stored", {"/srv/dl", "2.5", " TRUE ", "0.0"}, "/srv/dl|2|1|0");
        row("words and numbers", {"", "", "-0.5", "False"}, "~/Sharing Downloads|0|1|0");
        // A value that doesn't convert fails the start-up.
        row("a word for a number", {"", "x", "1", "1"}, "fails");
        row("other words for a switch", {"", "1", "abc", "True"}, "fails");
    }
    void readSettings()
    {
        const auto [stored, read] = Starts::fetch();
        const QStringList names{"DownDir", "CreatSubDir", "StartAfterCatch", "DoNothing"};
        for (int i = 0; i < names.size(); ++i)
            QVERIFY(Settings::save(names[i], stored[i]));
        AppCore core(nullptr);
        if (read == "fails") {
            QVERIFY_THROWS_EXCEPTION(RuntimeFailure, core.readSettings());
            return;
        }
        core.readSettings();
        QCOMPARE(core.downloadDir() + QString::asprintf("|%d|%d|%d", core.createSubDir(),
                                                        core.startAfterCatch(), core.doNothing()),
                 QString(read).replace("~", m_sandbox->home()));
    }
};

QTEST_GUILESS_MAIN(TestSettings)
#include "tst_settings.moc"
