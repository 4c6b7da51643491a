#include "system/apppaths.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

namespace AppPaths {

QString linkListFile()
{
    // The user's data folder, wherever the program runs from: removing a
    // build folder or reinstalling never takes a user's list with it.
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
