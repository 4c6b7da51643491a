// The list file: whatever a file holds, loading it and saving what was loaded
// gives a file that loads to the same rows.
#include "fuzzcommon.h"
#include "list/downloadlist.h"
#include "list/linklistfile.h"
#include "list/sitetable.h"

#include <QFile>
#include <QTemporaryDir>

namespace {

QStringList rows(const DownloadList &list)
{
    QStringList all;
    for (int site = 1; site <= Sites::Count; ++site) {
        for (int i = 0; i < list.childCount(site); ++i) {
            const auto &v = list.childAt(site, i)->values;
            all << QStringList{QString::number(site),    v[int(Field::LinkURL)],
                               v[int(Field::LocalFile)], v[int(Field::Status)],
                               v[int(Field::FileSize)],  v[int(Field::LocalFilePath)]}
                       .join(u'\x1f');
        }
    }
    return all;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    Fuzz::application();
    static QTemporaryDir dir;
    const QString first = dir.filePath(QStringLiteral("first.lq"));
    const QString second = dir.filePath(QStringLiteral("second.lq"));
    QFile file(first);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        Fuzz::broken("no temporary file");
    file.write(Fuzz::bytes(data, size));
    file.close();

    DownloadList loaded;
    loaded.open();
    LinkListFile::loadLinkList(loaded, first, nullptr);
    if (!LinkListFile::saveLinkList(loaded, second))
        Fuzz::broken("a loaded list does not save");
    DownloadList again;
    again.open();
    LinkListFile::loadLinkList(again, second, nullptr);
    if (rows(loaded) != rows(again))
        Fuzz::broken("a saved list loads to other rows");
    return 0;
}
