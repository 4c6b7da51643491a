#include "app/instancelock.h"

#include "app/cregister.h"
#include "system/apppaths.h"

#include <QDir>

QString InstanceLock::mutexName()
{
    return QStringLiteral("Vellumfordcraft") + Settings::sAppKeyName;
}

QString InstanceLock::lockPath()
{
    return QDir(AppPaths::runtimeFolder()).filePath(mutexName() + QStringLiteral(".lock"));
}

bool InstanceLock::anotherInstanceRuns()
{
    QLockFile probe(lockPath());
    probe.setStaleLockTime(0); // only a dead owner makes a lock stale
    if (probe.tryLock(0)) {
        probe.unlock();
        return false;
    }
    return probe.error() == QLockFile::LockFailedError;
}

bool InstanceLock::take()
{
    m_lock = std::make_unique<QLockFile>(lockPath());
    m_lock->setStaleLockTime(0);
    return m_lock->tryLock(0);
}
