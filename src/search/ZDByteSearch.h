#pragma once

#include <cstddef>

namespace ZDByteSearch {

/// Whether `needle` (of `needleSize` bytes) occurs in `text` (of `textSize` bytes). An empty
/// needle occurs in every text. Where SSE2 is available, sixteen places are tried at once by
/// comparing the needle's first and last bytes, and only places where both agree are compared
/// in full; otherwise it is a plain search.
bool contains(const char *text, size_t textSize, const char *needle, size_t needleSize);

} // namespace ZDByteSearch
