#include "app/startup.h"

#include "app/appcore.h"
#include "app/cregister.h"
#include "prompts/prompts.h"
#include "system/filefolder.h"

#include <QCoreApplication>
#include <QDir>

namespace {
const QString kTitle = QStringLiteral("Tessalwick");

// What a second start hands the first: the one-character text, byte 8.
const QByteArray kSecondStartSignal(1, '\x08');

struct InitFailure
{
};
} // namespace

Startup::Startup(AppCore &core) : m_core(core), m_server(&core) {}

QString Startup::commandLineOf(const QStringList &arguments)
{
    return arguments.mid(1).join(QLatin1Char(' '));
}

Startup::Outcome Startup::formLoad(const QString &commandLine,
                                   const std::function<void()> &initMainWindow)
{
    Outcome outcome;
    Prompts *prompts = m_core.prompts();
    const QString sHandle = Settings::get(QStringLiteral("AppTextHandle"), QString());

    // A live first instance with a command line: signal it and end.
    if (!sHandle.isEmpty() && !commandLine.isEmpty() && CaptureServer::isLive(sHandle)) {
        CaptureServer::sendText(sHandle, kSecondStartSignal);
        outcome.endProcess = true;
        return outcome;
    }

    // A second instance without links warns and ends. A running instance is
    // found by its lock, or by its way in where it could not take the lock.
    const bool anotherRuns = InstanceLock::anotherInstanceRuns() ||
                             (!sHandle.isEmpty() && CaptureServer::isLive(sHandle));
    if (anotherRuns && commandLine.isEmpty()) {
        if (prompts)
            prompts->messageBox(kTitle + QStringLiteral(" is already running, Check it in the "
                                                        "system tray."),
                                Prompts::Icon::Exclamation, Prompts::Buttons::Ok);
        outcome.endProcess = true;
        return outcome;
    }

    try {
        // The design-time folder, before the user's choice is read.
        const QString designDir = AppCore::designDownloadDir();
        if (!FileFolder::folderExists(designDir) && !FileFolder::createFolder(designDir))
            throw InitFailure();

        m_lock.take();
        Settings::save(QStringLiteral("App Path"),
                       QDir::toNativeSeparators(QCoreApplication::applicationFilePath()));
        if (m_server.listen())
            Settings::save(QStringLiteral("AppTextHandle"), m_server.name());

        if (initMainWindow)
            initMainWindow();

        m_core.readSettings();
        m_core.loadLinkList();

        if (!commandLine.isEmpty()) {
            const bool prefixed = commandLine.left(14).toUpper() == AppCore::capturePrefix;
            if (prompts)
                prompts->balloon(1, kTitle + QStringLiteral(" is here!"), Settings::sAppKeyName,
                                 3000);
            if (!prefixed)
                m_core.parseLinks(commandLine, true);
            else if (!m_core.doNothing())
                m_core.parseLinks(commandLine.mid(13), true);
            outcome.hideWindow = true;
        }
    } catch (...) {
        if (prompts)
            prompts->messageBox(QStringLiteral("Error While Intializing."), Prompts::Icon::Critical,
                                Prompts::Buttons::Ok);
    }
    return outcome;
}
