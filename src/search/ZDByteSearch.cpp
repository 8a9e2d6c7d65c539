#include "ZDByteSearch.h"

#include <algorithm>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace ZDByteSearch {

bool contains(const char *text, size_t textSize, const char *needle, size_t needleSize)
{
    if (needleSize == 0)
        return true;
    if (needleSize > textSize)
        return false;
    if (needleSize == 1)
        return std::memchr(text, needle[0], textSize) != nullptr;
    size_t at = 0;
#if defined(__SSE2__)
    const __m128i first = _mm_set1_epi8(needle[0]);
    const __m128i last = _mm_set1_epi8(needle[needleSize - 1]);
    // Each round tries the sixteen places at..at+15; the loads stay inside the text.
    for (; at + needleSize - 1 + 16 <= textSize; at += 16) {
        const __m128i starts = _mm_loadu_si128(reinterpret_cast<const __m128i *>(text + at));
        const __m128i ends = _mm_loadu_si128(reinterpret_cast<const __m128i *>(text + at + needleSize - 1));
        auto mask = unsigned(
            _mm_movemask_epi8(_mm_and_si128(_mm_cmpeq_epi8(starts, first), _mm_cmpeq_epi8(ends, last))));
        while (mask != 0) {
            const unsigned bit = unsigned(__builtin_ctz(mask));
            if (std::memcmp(text + at + bit + 1, needle + 1, needleSize - 2) == 0)
                return true;
            mask &= mask - 1;
        }
    }
#endif
    // The places the rounds above did not reach.
    const char *end = text + textSize;
    return std::search(text + at, end, needle, needle + needleSize) != end;
}

} // namespace ZDByteSearch
