#pragma once

#include <QByteArrayView>

// Case-insensitive search in bytes, one character per byte; only the ASCII
// letters A-Z and a-z are told apart by case. Works on the data in place, so a
// large chunk is never copied just to be searched. Returns the 0-based
// position of the first match at or behind `from`, or -1.
qsizetype indexOfNoCase(QByteArrayView haystack, QByteArrayView needle, qsizetype from = 0);

// Which of `count` needles occur in the haystack, in any case: found[k] is
// set for needle k. When the needles share bytes at two positions (as "302
// found", "303 see other" and "200 ok" share "?0? "), the haystack is
// scanned once for all of them instead of once per needle.
void containsEachNoCase(QByteArrayView haystack, const QByteArrayView *needles, int count,
                        bool *found);

inline bool containsNoCase(QByteArrayView haystack, QByteArrayView needle)
{
    return indexOfNoCase(haystack, needle) >= 0;
}
