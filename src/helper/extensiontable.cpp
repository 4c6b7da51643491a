// Writes the browser extension's copy of the recognition table (sites.js) to
// the file named, at build time.
#include "intake/browsercapture.h"

#include <QCoreApplication>
#include <QSaveFile>

#include <cstdio>

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    if (argc != 2) {
        std::fputs("usage: tessalwick-extension-table FILE\n", stderr);
        return 2;
    }
    // The table's own hosts, whatever the build's environment says.
    qunsetenv("TESSALWICK_SITE_HOSTS");
    QSaveFile out(QString::fromLocal8Bit(argv[1]));
    const QByteArray table = BrowserCapture::extensionTable();
    if (!out.open(QIODevice::WriteOnly) || out.write(table) != table.size() || !out.commit()) {
        std::fprintf(stderr, "tessalwick-extension-table: can't write %s\n", argv[1]);
        return 1;
    }
    return 0;
}
