#pragma once

#include <QProcess>
#include <QString>

#include <functional>

class Sandbox;

// The built program (TESSALWICK_EXE) run as a user would run it, from a copy
// in a sandbox's bin/ folder, its list in the sandbox's data folder: prompts go to
// standard error, the site hosts come from `hosts`.
class ProgramRun
{
public:
    ProgramRun(const Sandbox &sandbox, const QString &hosts);
    ~ProgramRun();

    // False when TESSALWICK_EXE names no program: the test skips.
    bool available() const { return !m_exe.isEmpty(); }
    void setEnv(const QString &name, const QString &value) { m_env.insert(name, value); }
    // Runs in the child between fork and exec (limits, capabilities).
    void setChildSetup(std::function<void()> setup) { m_setup = std::move(setup); }

    // Starts the program and waits until its hand-over socket answers.
    bool start();
    // Hands `text` over as another program would and waits for the answer
    // that the program gives once it has handled the text.
    bool handOver(const QString &text, int timeoutMs = 30000);
    // SIGTERM, then the orderly end.
    bool terminate();
    bool running() const { return m_process.state() == QProcess::Running; }
    QByteArray listFile() const;
    QByteArray log() { return m_log += m_process.readAllStandardError(); }

private:
    QString m_exe;
    QString m_bin;
    QProcessEnvironment m_env;
    std::function<void()> m_setup;
    QProcess m_process;
    QByteArray m_log;
};
