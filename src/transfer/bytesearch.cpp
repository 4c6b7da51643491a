#include "transfer/bytesearch.h"

#include <QVarLengthArray>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace {

inline unsigned char lowerAscii(unsigned char c)
{
    return (c >= 'A' && c <= 'Z') ? static_cast<unsigned char>(c + 32) : c;
}

inline bool isAsciiLetter(unsigned char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

// `lowered` is the needle in lower case.
inline bool matchesAt(const unsigned char *at, const unsigned char *lowered, qsizetype n)
{
    for (qsizetype k = 0; k < n; ++k) {
        if (lowerAscii(at[k]) != lowered[k])
            return false;
    }
    return true;
}

#if defined(__SSE2__)
// Sixteen bytes that equal `c` in any case: a letter is compared with bit 5
// set on both sides, which maps exactly its two cases together.
inline int anchorMask(__m128i block, unsigned char c)
{
    if (isAsciiLetter(c))
        block = _mm_or_si128(block, _mm_set1_epi8(0x20));
    return _mm_movemask_epi8(_mm_cmpeq_epi8(block, _mm_set1_epi8(static_cast<char>(c))));
}
#endif

} // namespace

qsizetype indexOfNoCase(QByteArrayView haystack, QByteArrayView needle, qsizetype from)
{
    const qsizetype n = needle.size();
    const qsizetype size = haystack.size();
    if (from < 0)
        from = 0;
    if (n == 0)
        return from <= size ? from : -1;
    if (size - from < n)
        return -1;

    QVarLengthArray<unsigned char, 64> lowered(n);
    for (qsizetype k = 0; k < n; ++k)
        lowered[k] = lowerAscii(static_cast<unsigned char>(needle[k]));

    const auto *data = reinterpret_cast<const unsigned char *>(haystack.data());
    const qsizetype last = size - n; // last possible start
    qsizetype i = from;

#if defined(__SSE2__)
    // Filter sixteen starts at a time by the needle's first and last byte;
    // only the few starts that pass both are compared in full.
    const unsigned char first = lowered[0];
    const unsigned char final = lowered[n - 1];
    for (; i + 15 <= last; i += 16) {
        const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i *>(data + i));
        const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i *>(data + i + n - 1));
        unsigned mask = static_cast<unsigned>(anchorMask(a, first) & anchorMask(b, final));
        while (mask) {
            const int bit = __builtin_ctz(mask);
            if (matchesAt(data + i + bit, lowered.constData(), n))
                return i + bit;
            mask &= mask - 1;
        }
    }
#endif
    for (; i <= last; ++i) {
        if (lowerAscii(data[i]) == lowered[0] && matchesAt(data + i, lowered.constData(), n))
            return i;
    }
    return -1;
}

void containsEachNoCase(QByteArrayView haystack, const QByteArrayView *needles, int count,
                        bool *found)
{
    qsizetype shortest = -1;
    for (int k = 0; k < count; ++k) {
        found[k] = false;
        if (shortest < 0 || needles[k].size() < shortest)
            shortest = needles[k].size();
    }
    if (count == 0)
        return;

    // Two positions at which every needle has the same byte, case folded.
    qsizetype anchors[2] = {-1, -1};
    int anchorCount = 0;
    for (qsizetype p = 0; p < shortest && anchorCount < 2; ++p) {
        const unsigned char c = lowerAscii(static_cast<unsigned char>(needles[0][p]));
        bool shared = true;
        for (int k = 1; k < count && shared; ++k)
            shared = lowerAscii(static_cast<unsigned char>(needles[k][p])) == c;
        if (shared)
            anchors[anchorCount++] = p;
    }
    if (anchorCount < 2 || count == 1) {
        for (int k = 0; k < count; ++k)
            found[k] = indexOfNoCase(haystack, needles[k]) >= 0;
        return;
    }

    const auto *data = reinterpret_cast<const unsigned char *>(haystack.data());
    const qsizetype size = haystack.size();
    const unsigned char a0 = lowerAscii(static_cast<unsigned char>(needles[0][anchors[0]]));
    const unsigned char a1 = lowerAscii(static_cast<unsigned char>(needles[0][anchors[1]]));
    int left = count;
    // A start passes the filter when both anchor bytes match; every needle
    // not yet found is then compared in full at that start.
    auto check = [&](qsizetype start) {
        for (int k = 0; k < count; ++k) {
            if (found[k] || size - start < needles[k].size())
                continue;
            QVarLengthArray<unsigned char, 64> lowered(needles[k].size());
            for (qsizetype j = 0; j < needles[k].size(); ++j)
                lowered[j] = lowerAscii(static_cast<unsigned char>(needles[k][j]));
            if (matchesAt(data + start, lowered.constData(), needles[k].size())) {
                found[k] = true;
                --left;
            }
        }
    };
    const qsizetype last = size - shortest;
    qsizetype i = 0;
#if defined(__SSE2__)
    for (; i + 15 <= last && left > 0; i += 16) {
        const __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i *>(data + i + anchors[0]));
        const __m128i y = _mm_loadu_si128(reinterpret_cast<const __m128i *>(data + i + anchors[1]));
        unsigned mask = static_cast<unsigned>(anchorMask(x, a0) & anchorMask(y, a1));
        while (mask && left > 0) {
            check(i + __builtin_ctz(mask));
            mask &= mask - 1;
        }
    }
#endif
    for (; i <= last && left > 0; ++i) {
        if (lowerAscii(data[i + anchors[0]]) == a0 && lowerAscii(data[i + anchors[1]]) == a1)
            check(i);
    }
}
