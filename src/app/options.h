#pragma once

#include <QString>
#include <QStringList>

#include <functional>

class AppCore;

// What the Options dialog shows and writes: start at log-on, the three
// browser switches, starting downloads after a hand-over, and what a link
// from a new browser tab does. The dialog keeps nothing: each opening reads
// the settings anew.
struct OptionsValues
{
    bool startAtLogOn = false;
    bool ie = false;
    bool fireFox = false;
    bool flock = false;
    int startDownload = 0; // the box's value, 0 or 1 (2 for a stored "2")
    bool doNothing = true; // "Do Nothing"; false: "Add to download list"
};

namespace Options {

// Starts a program with its arguments and does not wait for it.
using Launcher = std::function<void(const QString &program, const QStringList &arguments)>;

// Reads the settings with their defaults; a value that doesn't convert is a
// run-time failure, as everywhere else.
OptionsValues load();
// Ok: writes every value in its order, sets the running program's two
// switches at once and starts the browser helper, if it is there.
void apply(const OptionsValues &values, AppCore &core, const Launcher &launch);

// The autostart entry's command: the program's full path and " /minimize".
QString autostartCommand();
// The browser helper beside the program.
QString helperPath();

} // namespace Options
