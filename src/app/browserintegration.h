#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

// The browser helper's work: native messaging host manifests for the current
// user, in line with the settings the Options dialog writes. "FireFox" stands
// for Firefox; "Flock", whose last versions were built on Chromium, for
// Chromium and Google Chrome; "IE" has no browser here and stays a setting.
namespace BrowserIntegration {

enum class Browser { Firefox, Chromium, Chrome };

// Where the browser looks for the user's native messaging hosts.
QString manifestFile(Browser browser);
// The manifest that lets the extension in `browser` start `hostProgram`.
QByteArray manifest(Browser browser, const QString &hostProgram);

// Browsers start a host without arguments of ours, so the manifests name a
// small script that starts tessalwick-send --native-messaging.
QString hostScriptFile();
QByteArray hostScript(const QString &sendProgram);

struct Outcome
{
    QStringList written;
    QStringList removed;
    QStringList failed;
};

// Writes the manifests of the browsers whose setting is "true" (and the host
// script they name) and removes those of the others.
Outcome update(const QString &sendProgram);

} // namespace BrowserIntegration
