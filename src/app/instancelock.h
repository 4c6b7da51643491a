#pragma once

#include <QLockFile>
#include <QString>

#include <memory>

// One per-user lock file named after the program's mutex name. Asking whether
// another instance runs looks for a live process holding it; a lock left by a
// process that has died does not count.
class InstanceLock
{
public:
    static QString mutexName(); // "VellumfordcraftTessalwickDownloadManager"
    static QString lockPath();

    static bool anotherInstanceRuns();
    // Takes the lock for the life of this object; false if another live
    // process holds it (the program then runs without it).
    bool take();

private:
    std::unique_ptr<QLockFile> m_lock;
};
