#include "app/about.h"

#include "app/cregister.h"

#include <QCoreApplication>
#include <QFileInfo>

namespace About {

const QString makerHost = QStringLiteral("https://www.tessalwick.net");

QString versionText(int major, int minor, int revision)
{
    return QStringLiteral("%1.%2.0.%3").arg(major).arg(minor).arg(revision);
}

QString versionText()
{
    return versionText(TESSALWICK_VERSION_MAJOR, TESSALWICK_VERSION_MINOR,
                       TESSALWICK_VERSION_REVISION);
}

QString updateAddress(const QString &version)
{
    return makerHost + QStringLiteral("/updates.html?V=") + version + QStringLiteral("&N=") +
           Settings::sAppKeyName;
}

QString helpFile()
{
    // The documentation folder lies under the same prefix as the program's.
    const QString here = QCoreApplication::applicationDirPath();
    for (const QString &folder : {here, here + QStringLiteral("/../" TESSALWICK_DOC_DIR)}) {
        const QString guide = folder + QStringLiteral("/guide.html");
        if (QFileInfo(guide).isFile())
            return guide;
    }
    return QString();
}

} // namespace About
