// Feeds arbitrary bytes to the highlight rule readers. Whatever the one-pass reader accepts, the
// JSON reader must read to the same rules; and the combined reading must equal the JSON one.
#include "ZDHighlightRule.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size > 65536)
        return 0;
    using namespace ZDHighlightRuleFormat;
    const QByteArray output(reinterpret_cast<const char *>(data), qsizetype(size));
    ZDHighlightRules fast, json, combined;
    const bool accepted = readUsualShape(output, &fast);
    const ParseResult general = parseAsJson(output, &json);
    if (accepted && (general != ParseResult::Rules || fast != json))
        std::abort(); // the fast reader read something the JSON reader reads differently
    if (!accepted && !fast.isEmpty())
        std::abort();
    if (parse(output, &combined) != general || combined != json)
        std::abort();
    return 0;
}
