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
using namespace BrowserCapture;

class TestBrowserIntegration : public QObject
{
    Q_OBJECT

    // Per file (Firefox's manifest, Chromium's, Chrome's, the script): w
    // written, r removed, f failed by `done`; else x there, - not.
    static QString files(const Outcome &done = {})
    {
        QString which;
        for (const QString &file : {manifestFile(Browser::Firefox), manifestFile(Browser::Chromium),
                                    manifestFile(Browser::Chrome), hostScriptFile()})
            which += done.failed.contains(file) ? u'f'
                     : QFile::exists(file)      ? (done.written.contains(file) ? u'w' : u'x')
                                                : (done.removed.contains(file) ? u'r' : u'-');
        return which;
    }

private slots:
    // Settings applied one after another in one sandbox, each row on what the
    // previous left; then the built helper on what they leave.
    void update()
    {
        Sandbox sandbox;
        const QString send = sandbox.path("bin/it's tessalwick-send");
        // FireFox, Flock and IE; then the files.
        const char *const rows[][4] = {
            {"true", "true", "", "wwww"},       // every browser
            {"True", "true", "", "rwww"},       // the value must be exactly "true"
            {"false", "false", "true", "-rrr"}, // all gone again; IE writes nothing
            {"true", "false", "", "w--w"},      // Firefox and the script
        };
        for (const auto &row : rows) {
            Settings::save("FireFox", row[0]);
            Settings::save("Flock", row[1]);
            Settings::save("IE", row[2]);
            QCOMPARE(files(BrowserIntegration::update(send)), row[3]);
        }

        // What Firefox reads: the extension's id, and the script, which starts
        // tessalwick-send. (Chromium loads its own in the browser test.)
        QJsonObject json = QJsonDocument::fromJson(manifest(Browser::Firefox, "/h")).object();
        json.remove("description");
        QCOMPARE(json, (QJsonObject{{"name", kHostName},
                                    {"path", "/h"},
                                    {"type", "stdio"},
                                    {"allowed_extensions", QJsonArray{kFirefoxExtensionId}}}));
        QFile script(hostScriptFile());
        QVERIFY(script.open(QIODevice::ReadOnly) && script.permissions() & QFile::ExeOwner);
        QVERIFY(script.readAll().contains("exec '" + sandbox.path("bin/it").toUtf8() +
                                          "'\\''s tessalwick-send' --native-messaging \"$@\""));

        // A folder in a manifest's place can't be replaced: update() says so.
        QDir().mkpath(manifestFile(Browser::Chrome) + "/x");
        Settings::save("Flock", "true");
        QCOMPARE(files(BrowserIntegration::update(send)), "wwfw");

        // The built helper: its one argument, and the work done, with the
        // failure in its status. (Its status 0, the browser test checks.)
        const QString dir = QFileInfo(qEnvironmentVariable("TESSALWICK_EXE")).absolutePath();
        const QString helper = dir + "/TessalwickDownloadManagerHelper";
        if (!QFile::exists(helper))
            QSKIP("the helper is not built beside TESSALWICK_EXE");
        QVERIFY(script.remove());
        QCOMPARE(QProcess::execute(helper, {"update"}), 2);
        QCOMPARE(files(), "xxx-");
        QCOMPARE(QProcess::execute(helper, {"updateintegeration"}), 1);
        QVERIFY(script.open(QIODevice::ReadOnly));
        QVERIFY(script.readAll().contains(dir.toUtf8() + "/tessalwick-send' --native-messaging"));
    }
};

QTEST_GUILESS_MAIN(TestBrowserIntegration)
#include "tst_browserintegration.moc"
