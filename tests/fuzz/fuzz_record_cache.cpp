// Feeds arbitrary bytes to the snippet cache reader, as a whole cache file and as one record: it
// must refuse what it cannot read without crashing, hanging or exhausting memory, and a record
// it does read must survive being written and read again unchanged, whether its texts were
// copied or are read in place.
#include "ZDRecordCache.h"
#include "ZDSnippet.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes = QByteArray::fromRawData(reinterpret_cast<const char *>(data), qsizetype(size));
    ZDRecordCache::Decoder decoder;
    const auto image = ZDRecordCache::Image::fromBytes(bytes);
    for (qsizetype index = 0; index < image->size(); ++index) {
        const QByteArray record = image->checkedRecord(index);
        if (!record.isEmpty())
            decoder.decode(record.constData(), record.size(), image);
    }
    if (ZDSnippetPtr snippet = decoder.decode(bytes.constData(), bytes.size())) {
        const QByteArray encoded = ZDRecordCache::encodeSnippet(*snippet);
        ZDRecordCache::Decoder other;
        const ZDSnippetPtr again = other.decode(encoded.constData(), encoded.size());
        if (!again || ZDRecordCache::encodeSnippet(*again) != encoded)
            std::abort();
        // In place, from a buffer of its own that the snippet keeps alive. Texts read in place are
        // written back in the encoding they came in, so the same texts are compared through a
        // copying decode.
        auto buffer = std::make_shared<const QByteArray>(bytes.constData(), bytes.size());
        const ZDSnippetPtr borrowed = other.decode(buffer->constData(), buffer->size(), buffer);
        buffer.reset();
        if (!borrowed)
            std::abort();
        const QByteArray written = ZDRecordCache::encodeSnippet(*borrowed);
        const ZDSnippetPtr copied = other.decode(written.constData(), written.size());
        if (!copied || ZDRecordCache::encodeSnippet(*copied) != encoded)
            std::abort();
    }
    return 0;
}
