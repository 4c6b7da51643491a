#pragma once

#include "list/downloadlist.h"
#include "list/sitetable.h"

#include <QStringList>

// Every child row as "site|LinkURL", sites in number order, rows in list order.
inline QStringList rowsOf(const DownloadList &list)
{
    QStringList rows;
    for (int site = 1; site <= Sites::Count; ++site)
        for (int i = 0; i < list.childCount(site); ++i)
            rows << QString::number(site) + u'|' +
                        list.childAt(site, i)->values[int(Field::LinkURL)];
    return rows;
}
