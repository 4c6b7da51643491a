#include "sandbox.h"

#include "list/sitetable.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>

namespace {
const char *const kVars[5] = {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_RUNTIME_DIR",
                              "TESSALWICK_SITE_HOSTS"};
}

Sandbox::Sandbox()
{
    for (int i = 0; i < 5; ++i)
        m_saved[i] = qgetenv(kVars[i]);
    for (const char *sub : {"home", "config", "data", "runtime"})
        QDir().mkpath(path(sub));
    QFile::setPermissions(runtime(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    qputenv("HOME", home().toLocal8Bit());
    qputenv("XDG_CONFIG_HOME", config().toLocal8Bit());
    qputenv("XDG_DATA_HOME", data().toLocal8Bit());
    qputenv("XDG_RUNTIME_DIR", runtime().toLocal8Bit());
    qunsetenv("TESSALWICK_SITE_HOSTS");
    QStandardPaths::setTestModeEnabled(false);
    SiteHosts::instance().reset();
}

Sandbox::~Sandbox()
{
    for (int i = 0; i < 5; ++i) {
        if (m_saved[i].isNull())
            qunsetenv(kVars[i]);
        else
            qputenv(kVars[i], m_saved[i]);
    }
    SiteHosts::instance().reset();
}
