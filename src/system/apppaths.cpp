#include "system/apppaths.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>
#include <QTemporaryFile>

namespace AppPaths {

QString programFolder()
{
    return QCoreApplication::applicationDirPath();
}

static bool folderWritable(const QString &folder)
{
    if (folder.isEmpty() || !QFileInfo(folder).isDir())
        return false;
    QTemporaryFile probe(folder + QStringLiteral("/.tessalwick-probe-XXXXXX"));
    return probe.open();
}

QString linkListFile()
{
    const QString beside = programFolder();
    if (folderWritable(beside))
        return QDir(beside).filePath(QStringLiteral("LinkList.lq"));
    const QString data = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
                         QStringLiteral("/Tessalwick");
    QDir().mkpath(data);
    return QDir(data).filePath(QStringLiteral("LinkList.lq"));
}

QString defaultDownloadDir()
{
    return QDir::toNativeSeparators(QDir::homePath() + QStringLiteral("/Sharing Downloads"));
}

QString runtimeFolder()
{
    QString dir = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    if (dir.isEmpty())
        dir = QDir::tempPath();
    return dir;
}

} // namespace AppPaths
