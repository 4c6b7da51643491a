// Link extraction on any text: it must end, never add one link twice to a
// site, and tell as many links as it added.
#include "fuzzcommon.h"
#include "intake/linkextraction.h"
#include "list/downloadlist.h"
#include "list/sitetable.h"

#include <QSet>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    Fuzz::application();
    const QString text = QString::fromUtf8(Fuzz::bytes(data, size));
    DownloadList list;
    list.open();
    const int added = parseLinks(text, true, list, nullptr);
    int rows = 0;
    for (int site = 1; site <= Sites::Count; ++site) {
        QSet<QString> links;
        for (int i = 0; i < list.childCount(site); ++i) {
            const QString link = list.childAt(site, i)->values[int(Field::LinkURL)].toLower();
            if (links.contains(link))
                Fuzz::broken("a link twice in one site");
            links.insert(link);
            ++rows;
        }
    }
    if (added >= 0 && added != rows)
        Fuzz::broken("the count told is not the rows added");
    return 0;
}
