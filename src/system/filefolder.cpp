#include "system/filefolder.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace {
const QChar kSeparator = QLatin1Char('/');

// The path without separators at its end; a path of separators only gives the
// empty text.
QString withoutTrailingSeparators(const QString &path)
{
    qsizetype end = path.size();
    while (end > 0 && path.at(end - 1) == kSeparator)
        --end;
    return path.left(end);
}

// The last name of a path, separators at the end ignored.
QString lastName(const QString &path)
{
    const QString trimmed = withoutTrailingSeparators(path);
    return trimmed.mid(trimmed.lastIndexOf(kSeparator) + 1);
}
} // namespace

namespace FileFolder {

bool fileExists(const QString &path)
{
    if (path.isEmpty())
        return false;
    const QFileInfo info(path);
    return info.exists() && !info.isDir();
}

bool folderExists(const QString &path)
{
    return !path.isEmpty() && QFileInfo(path).isDir();
}

bool createFolder(const QString &path)
{
    if (path.isEmpty() || QFileInfo::exists(path))
        return false;
    // mkdir makes one level only, so a missing parent fails here.
    return QDir().mkdir(path);
}

bool deleteFile(const QString &path, bool force)
{
    if (!fileExists(path))
        return false;
    // Removing a name needs only the folder's write permission here, so the
    // read-only guard without force is checked by hand.
    if (!force && !(QFile::permissions(path) & QFileDevice::WriteOwner))
        return false;
    return QFile::remove(path);
}

QString parentFolderName(const QString &path)
{
    const QString trimmed = withoutTrailingSeparators(path);
    const qsizetype slash = trimmed.lastIndexOf(kSeparator);
    if (slash < 0)
        return QString();
    const QString parent = withoutTrailingSeparators(trimmed.left(slash));
    // A name directly under the root keeps the root itself.
    return parent.isEmpty() ? QString(kSeparator) : parent;
}

QString baseName(const QString &path)
{
    const QString name = lastName(path);
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    return dot < 0 ? name : name.left(dot);
}

QString extensionName(const QString &path)
{
    const QString name = lastName(path);
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    return dot < 0 ? QString() : name.mid(dot + 1);
}

} // namespace FileFolder
