// TessalwickDownloadManagerHelper: started by the Options dialog's Ok with the
// one argument "updateintegeration", it brings the browsers' native messaging
// hosts in line with the settings FireFox and Flock.
#include "app/browserintegration.h"

#include <QCoreApplication>

#include <cstdio>

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    const QStringList args = QCoreApplication::arguments().mid(1);
    if (args != QStringList{QStringLiteral("updateintegeration")}) {
        std::fputs("usage: TessalwickDownloadManagerHelper updateintegeration\n\n"
                   "Installs the native messaging host of the Tessalwick browser extension\n"
                   "for Firefox when the setting FireFox is \"true\", and for Chromium and\n"
                   "Google Chrome when Flock is, and removes it where the setting is not.\n",
                   stderr);
        return 2;
    }
    const QString send =
        QCoreApplication::applicationDirPath() + QStringLiteral("/tessalwick-send");
    const auto outcome = BrowserIntegration::update(send);
    for (const QString &file : outcome.written)
        std::printf("written: %s\n", qPrintable(file));
    for (const QString &file : outcome.removed)
        std::printf("removed: %s\n", qPrintable(file));
    for (const QString &file : outcome.failed)
        std::fprintf(stderr, "TessalwickDownloadManagerHelper: can't change %s\n",
                     qPrintable(file));
    return outcome.failed.isEmpty() ? 0 : 1;
}
