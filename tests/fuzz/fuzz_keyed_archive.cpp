// Feeds arbitrary bytes to the keyed-archive reader and to the record decoders behind it: they
// must reject what they cannot read without crashing, hanging or exhausting memory.
#include "ZDCategoryNode.h"
#include "ZDKeyedArchive.h"
#include "ZDRecordArchive.h"
#include "ZDSnippet.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes = QByteArray::fromRawData(reinterpret_cast<const char *>(data), qsizetype(size));
    QVariant root;
    if (!ZDKeyedArchive::unarchive(bytes, &root))
        return 0;
    // Whatever decoded is handed to every record reader, then written back and read again.
    if (ZDSnippetPtr snippet = ZDRecordArchive::snippetFromObject(root)) {
        (void)snippet->stringRepresentation();
        ZDRecordArchive::unarchiveSnippet(ZDRecordArchive::archivedSnippet(*snippet));
    }
    if (ZDCategoryNodePtr node = ZDRecordArchive::nodeFromObject(root))
        ZDRecordArchive::unarchiveNode(ZDRecordArchive::archivedNode(*node));
    ZDRecordArchive::tagFromObject(root);
    QVariant again;
    ZDKeyedArchive::unarchive(ZDKeyedArchive::archivedData(root), &again);
    return 0;
}
