#include "app/browserintegration.h"

#include "app/cregister.h"
#include "intake/browsercapture.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>
#include <QStandardPaths>

namespace BrowserIntegration {

namespace {

constexpr Browser kBrowsers[] = {Browser::Firefox, Browser::Chromium, Browser::Chrome};

bool wanted(Browser browser)
{
    const QString setting =
        browser == Browser::Firefox ? QStringLiteral("FireFox") : QStringLiteral("Flock");
    return Settings::get(setting, QString()) == QLatin1String("true");
}

bool writeFile(const QString &file, const QByteArray &content, QFile::Permissions permissions)
{
    QDir().mkpath(QFileInfo(file).absolutePath());
    QSaveFile out(file);
    return out.open(QIODevice::WriteOnly) && out.write(content) == content.size() &&
           out.setPermissions(permissions) && out.commit();
}

} // namespace

QString manifestFile(Browser browser)
{
    const QString config = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    const QString name = BrowserCapture::kHostName + QStringLiteral(".json");
    switch (browser) {
    case Browser::Firefox:
        return QDir::homePath() + QStringLiteral("/.mozilla/native-messaging-hosts/") + name;
    case Browser::Chromium:
        return config + QStringLiteral("/chromium/NativeMessagingHosts/") + name;
    case Browser::Chrome:
        break;
    }
    return config + QStringLiteral("/google-chrome/NativeMessagingHosts/") + name;
}

QByteArray manifest(Browser browser, const QString &hostProgram)
{
    QJsonObject json{{"name", BrowserCapture::kHostName},
                     {"description", "Hands links to Tessalwick"},
                     {"path", hostProgram},
                     {"type", "stdio"}};
    if (browser == Browser::Firefox)
        json.insert(u"allowed_extensions", QJsonArray{BrowserCapture::kFirefoxExtensionId});
    else
        json.insert(
            u"allowed_origins",
            QJsonArray{
                QStringLiteral("chrome-extension://%1/").arg(BrowserCapture::kChromeExtensionId)});
    return QJsonDocument(json).toJson();
}

QString hostScriptFile()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
           QStringLiteral("/Tessalwick/native-messaging-host");
}

QByteArray hostScript(const QString &sendProgram)
{
    // Single quotes keep every character of the path but a single quote,
    // which is written as '\''.
    QString quoted = sendProgram;
    quoted.replace(u'\'', QLatin1String("'\\''"));
    return "#!/bin/sh\n# Started by the browser for the Tessalwick extension.\nexec '" +
           quoted.toUtf8() + "' --native-messaging \"$@\"\n";
}

Outcome update(const QString &sendProgram)
{
    Outcome outcome;
    bool anyWanted = false;
    for (Browser browser : kBrowsers) {
        const QString file = manifestFile(browser);
        if (wanted(browser)) {
            anyWanted = true;
            const bool ok = writeFile(file, manifest(browser, hostScriptFile()),
                                      QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup |
                                          QFile::ReadOther);
            (ok ? outcome.written : outcome.failed) << file;
        } else if (QFile::exists(file)) {
            (QFile::remove(file) ? outcome.removed : outcome.failed) << file;
        }
    }
    const QString script = hostScriptFile();
    if (anyWanted) {
        const bool ok = writeFile(script, hostScript(sendProgram),
                                  QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        (ok ? outcome.written : outcome.failed) << script;
    } else if (QFile::exists(script)) {
        (QFile::remove(script) ? outcome.removed : outcome.failed) << script;
    }
    return outcome;
}

} // namespace BrowserIntegration
