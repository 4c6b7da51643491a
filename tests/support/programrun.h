#pragma once

#include "app/cregister.h"

#include <QProcess>

#include <functional>

class Sandbox;

// The built program (TESSALWICK_EXE) run as a user would run it, from a copy
// in a sandbox's bin/ folder, its list in the sandbox's data folder: prompts go to
// standard error, the site hosts come from `hosts`.
class ProgramRun
{
public:
    ProgramRun(const Sandbox &sandbox, const QString &hosts);
    ~ProgramRun() // without the orderly end, as a crash would end it
    {
        m_process.kill();
        m_process.waitForFinished(5000);
    }

    // False when TESSALWICK_EXE names no program: the test skips.
    bool available() const { return !m_exe.isEmpty(); }
    void setEnv(const QString &name, const QString &value) { m_env.insert(name, value); }
    // Runs in the child between fork and exec (limits, capabilities).
    void setChildSetup(const std::function<void()> &f) { m_process.setChildProcessModifier(f); }

    // Starts the program with `args` and waits until a hand-over socket
    // answers (its own, or that of an instance running already).
    bool start(const QStringList &args = {});
    // Hands `text` over as another program would and waits for the answer
    // that the program gives once it has handled the text.
    bool handOver(const QString &text, int timeoutMs = 30000);
    // Waits for the end: true for an orderly one with exit code 0.
    bool ended(int timeoutMs = 10000)
    {
        return m_process.waitForFinished(timeoutMs) &&
               m_process.exitStatus() == QProcess::NormalExit && m_process.exitCode() == 0;
    }
    // SIGTERM, then the orderly end.
    bool terminate()
    {
        m_process.terminate();
        return ended();
    }
    bool running() const { return m_process.state() == QProcess::Running; }
    QByteArray listFile() const;
    QByteArray log() { return m_log += m_process.readAllStandardError(); }
    // The hand-over socket that the settings name.
    static QString handle() { return Settings::get("AppTextHandle", QString()); }

private:
    QString m_exe;
    QString m_bin;
    QProcessEnvironment m_env;
    QProcess m_process;
    QByteArray m_log;
};
