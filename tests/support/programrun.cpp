#include "programrun.h"

#include "app/captureserver.h"
#include "app/handover.h"
#include "sandbox.h"

#include <QDir>
#include <QFile>
#include <QLocalSocket>
#include <QtTest>

ProgramRun::ProgramRun(const Sandbox &sandbox, const QString &hosts)
    : m_bin(sandbox.path(QStringLiteral("bin"))), m_env(QProcessEnvironment::systemEnvironment())
{
    const QString built = qEnvironmentVariable("TESSALWICK_EXE");
    const QString copy = m_bin + QStringLiteral("/tessalwick");
    if (QFile::exists(built) && QDir().mkpath(m_bin) &&
        (QFile::exists(copy) || QFile::copy(built, copy)))
        m_exe = copy;
    m_env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    m_env.insert(QStringLiteral("TESSALWICK_PROMPTS"), QStringLiteral("console"));
    m_env.insert(QStringLiteral("TESSALWICK_SITE_HOSTS"), hosts);
}

bool ProgramRun::start(const QStringList &args)
{
    m_process.setProcessEnvironment(m_env);
    m_process.start(m_exe, args);
    const auto settled = [this] { return !running() || CaptureServer::isLive(handle()); };
    return m_process.waitForStarted() && QTest::qWaitFor(settled, 20000) && running();
}

bool ProgramRun::handOver(const QString &text, int timeoutMs)
{
    // The answer comes once the program's handling has run, which may need
    // this process's servers: so the wait pumps the event loop.
    QLocalSocket sender;
    sender.connectToServer(handle());
    if (!sender.waitForConnected(5000))
        return false;
    sender.write(HandOver::frame(text.toUtf8()));
    return QTest::qWaitFor([&] { return sender.bytesAvailable() > 0; }, timeoutMs);
}

QByteArray ProgramRun::listFile() const
{
    QFile list(m_bin + QStringLiteral("/../data/Tessalwick/LinkList.lq"));
    return list.open(QIODevice::ReadOnly) ? list.readAll() : QByteArray();
}
