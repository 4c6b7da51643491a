#include "programrun.h"

#include "app/captureserver.h"
#include "app/cregister.h"
#include "app/handover.h"
#include "sandbox.h"

#include <QDir>
#include <QFile>
#include <QLocalSocket>
#include <QtTest>

#include <csignal>

ProgramRun::ProgramRun(const Sandbox &sandbox, const QString &hosts)
    : m_bin(sandbox.path(QStringLiteral("bin"))), m_env(QProcessEnvironment::systemEnvironment())
{
    const QString built = qEnvironmentVariable("TESSALWICK_EXE");
    if (built.isEmpty() || !QFile::exists(built))
        return;
    QDir().mkpath(m_bin);
    m_exe = m_bin + QStringLiteral("/tessalwick");
    if (!QFile::exists(m_exe) && !QFile::copy(built, m_exe))
        m_exe.clear();
    m_env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    m_env.insert(QStringLiteral("TESSALWICK_PROMPTS"), QStringLiteral("console"));
    m_env.insert(QStringLiteral("TESSALWICK_SITE_HOSTS"), hosts);
}

ProgramRun::~ProgramRun()
{
    if (running()) {
        m_process.kill();
        m_process.waitForFinished(5000);
    }
}

bool ProgramRun::start()
{
    m_process.setProcessEnvironment(m_env);
    if (m_setup)
        m_process.setChildProcessModifier(m_setup);
    m_process.start(m_exe, {});
    if (!m_process.waitForStarted())
        return false;
    QDeadlineTimer deadline(20000);
    while (!deadline.hasExpired() && running()) {
        if (CaptureServer::isLive(Settings::get(QStringLiteral("AppTextHandle"), QString())))
            return true;
        QTest::qWait(50);
    }
    return false;
}

bool ProgramRun::handOver(const QString &text, int timeoutMs)
{
    // The answer comes once the program's handling has run, which may need
    // this process's servers: so the wait pumps the event loop.
    QLocalSocket sender;
    sender.connectToServer(Settings::get(QStringLiteral("AppTextHandle"), QString()));
    if (!sender.waitForConnected(5000))
        return false;
    sender.write(HandOver::frame(text.toUtf8()));
    return QTest::qWaitFor([&] { return sender.bytesAvailable() > 0; }, timeoutMs);
}

bool ProgramRun::terminate()
{
    ::kill(pid_t(m_process.processId()), SIGTERM);
    return m_process.waitForFinished(10000) && m_process.exitStatus() == QProcess::NormalExit &&
           m_process.exitCode() == 0;
}

QByteArray ProgramRun::listFile() const
{
    QFile list(m_bin + QStringLiteral("/../data/Tessalwick/LinkList.lq"));
    return list.open(QIODevice::ReadOnly) ? list.readAll() : QByteArray();
}
