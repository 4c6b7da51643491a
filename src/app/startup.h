#pragma once

#include "app/captureserver.h"
#include "app/instancelock.h"

#include <QString>

#include <functional>

class AppCore;

// The one start-up pass: decide whether this process is the only instance,
// publish the way in, build the window, restore settings and the saved list,
// and take the command line. No download starts here.
class Startup
{
public:
    struct Outcome
    {
        bool endProcess = false; // this process has done its part and ends
        int exitCode = 0;
        bool hideWindow = false; // started with a command line
    };

    explicit Startup(AppCore &core);

    // initMainWindow builds the window and the tray icon; it is not called
    // when start-up ends early.
    Outcome formLoad(const QString &commandLine, const std::function<void()> &initMainWindow);

    CaptureServer &captureServer() { return m_server; }

    // The command line as one text, the program's name left out.
    static QString commandLineOf(const QStringList &arguments);

private:
    AppCore &m_core;
    InstanceLock m_lock;
    CaptureServer m_server;
};
