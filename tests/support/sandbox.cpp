#include "sandbox.h"

#include "list/sitetable.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>

namespace {
// The variables a sandbox sets, the first four to its folders of these names.
const char *const kVars[5] = {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_RUNTIME_DIR",
                              "TESSALWICK_SITE_HOSTS"};
const char *const kFolders[4] = {"home", "config", "data", "runtime"};
} // namespace

Sandbox::Sandbox()
{
    for (int i = 0; i < 5; ++i)
        m_saved[i] = qgetenv(kVars[i]);
    for (int i = 0; i < 4; ++i) {
        QDir().mkpath(path(kFolders[i]));
        qputenv(kVars[i], path(kFolders[i]).toLocal8Bit());
    }
    QFile::setPermissions(path("runtime"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
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
