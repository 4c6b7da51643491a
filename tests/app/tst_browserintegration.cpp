// The browser helper: the native messaging host manifests and the host script
// follow the settings FireFox and Flock; IE writes nothing.
#include "app/browserintegration.h"
#include "app/cregister.h"
#include "intake/browsercapture.h"
#include "sandbox.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QtTest>

using namespace BrowserIntegration;

class TestBrowserIntegration : public QObject
{
    Q_OBJECT

    // The files that exist of: Firefox's manifest, Chromium's, Chrome's, the script.
    static QString present()
    {
        QString which;
        for (const QString &file : {manifestFile(Browser::Firefox), manifestFile(Browser::Chromium),
                                    manifestFile(Browser::Chrome), hostScriptFile()})
            which += QFile::exists(file) ? u'x' : u'-';
        return which;
    }

private slots:
    // Settings applied one after another in one sandbox, each row on what the
    // previous left.
    void update()
    {
        Sandbox sandbox;
        const QString send = sandbox.path("bin/it's tessalwick-send");
        struct Row
        {
            const char *fireFox, *flock, *ie, *present;
            int written, removed;
        };
        const Row rows[] = {
            {"", "", "true", "----", 0, 0},           // IE alone: nothing to do
            {"true", "false", "", "x--x", 2, 0},      // Firefox and the script
            {"true", "true", "", "xxxx", 4, 0},       // every browser
            {"True", "true", "", "-xxx", 3, 1},       // the value must be exactly "true"
            {"false", "false", "true", "----", 0, 3}, // all gone again
        };
        for (const Row &row : rows) {
            Settings::save("FireFox", row.fireFox);
            Settings::save("Flock", row.flock);
            Settings::save("IE", row.ie);
            const Outcome outcome = BrowserIntegration::update(send);
            QCOMPARE(present(), QString(row.present));
            QCOMPARE(outcome.written.size(), row.written);
            QCOMPARE(outcome.removed.size(), row.removed);
            QVERIFY(outcome.failed.isEmpty());
        }

        // What the browsers read: Firefox names the extension, the Chromium
        // family its origin; both the script, which starts tessalwick-send.
        for (Browser browser : {Browser::Firefox, Browser::Chromium}) {
            const QJsonObject json = QJsonDocument::fromJson(manifest(browser, "/h")).object();
            QCOMPARE(json["name"].toString(), BrowserCapture::kHostName);
            QCOMPARE(json["path"].toString(), "/h");
            QCOMPARE(json["type"].toString(), "stdio");
            const QJsonArray allowed =
                json[browser == Browser::Firefox ? "allowed_extensions" : "allowed_origins"]
                    .toArray();
            QCOMPARE(allowed.first().toString(),
                     browser == Browser::Firefox
                         ? BrowserCapture::kFirefoxExtensionId
                         : "chrome-extension://" + BrowserCapture::kChromeExtensionId + "/");
        }
        Settings::save("Flock", "true");
        BrowserIntegration::update(send);
        QFile script(hostScriptFile());
        QVERIFY(script.open(QIODevice::ReadOnly));
        QVERIFY(script.permissions() & QFile::ExeOwner);
        QVERIFY(script.readAll().contains("exec '" + sandbox.path("bin/it").toUtf8() +
                                          "'\\''s tessalwick-send' --native-messaging \"$@\""));

        // A folder in a manifest's place can't be replaced: the helper says so.
        QFile::remove(manifestFile(Browser::Chrome));
        QDir().mkpath(manifestFile(Browser::Chrome) + "/x");
        QCOMPARE(BrowserIntegration::update(send).failed,
                 QStringList{manifestFile(Browser::Chrome)});
    }

    // The built helper: its one argument, and the work done.
    void helperProgram()
    {
        const QString helper = QFileInfo(qEnvironmentVariable("TESSALWICK_EXE")).absolutePath() +
                               "/TessalwickDownloadManagerHelper";
        if (!QFile::exists(helper))
            QSKIP("the helper is not built beside TESSALWICK_EXE");
        Sandbox sandbox;
        Settings::save("FireFox", "true");
        QCOMPARE(QProcess::execute(helper, {"update"}), 2);
        QCOMPARE(present(), "----");
        QCOMPARE(QProcess::execute(helper, {"updateintegeration"}), 0);
        QCOMPARE(present(), "x--x");
        QFile script(hostScriptFile());
        QVERIFY(script.open(QIODevice::ReadOnly));
        QVERIFY(script.readAll().contains(QFileInfo(helper).absolutePath().toUtf8() +
                                          "/tessalwick-send' --native-messaging"));
    }
};

QTEST_GUILESS_MAIN(TestBrowserIntegration)
#include "tst_browserintegration.moc"
