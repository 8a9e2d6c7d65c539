#include "ZDBinaryPlistCheck.h"

#include <cstdint>
#include <utility>
#include <vector>

namespace {

// Keyed archives nest: top dictionary, object table, object, collection, reference.
constexpr int kMaximumNesting = 24;
constexpr uint64_t kMaximumObjects = 10'000'000;

class Reader
{
public:
    explicit Reader(const QByteArray &data)
        : m_bytes(reinterpret_cast<const uint8_t *>(data.constData()))
        , m_size(uint64_t(data.size()))
    {
    }

    bool check(QString *reason)
    {
        if (m_size < 8 + 32 || QByteArray::fromRawData(reinterpret_cast<const char *>(m_bytes), 8) != "bplist00")
            return fail(reason, QStringLiteral("not a binary property list"));
        const uint8_t *trailer = m_bytes + m_size - 32;
        m_offsetSize = trailer[6];
        m_refSize = trailer[7];
        m_objectCount = bigEndian(trailer + 8, 8);
        const uint64_t top = bigEndian(trailer + 16, 8);
        m_tableOffset = bigEndian(trailer + 24, 8);
        if (m_offsetSize < 1 || m_offsetSize > 8 || m_refSize < 1 || m_refSize > 8)
            return fail(reason, QStringLiteral("bad integer sizes"));
        if (m_objectCount == 0 || m_objectCount > kMaximumObjects || top >= m_objectCount)
            return fail(reason, QStringLiteral("bad object count"));
        if (m_tableOffset < 8 || m_tableOffset >= m_size - 32
            || m_objectCount > (m_size - 32 - m_tableOffset) / m_offsetSize)
            return fail(reason, QStringLiteral("offset table out of bounds"));

        // Depth-first over what the top object reaches; an object is walked again only when
        // reached deeper than before, so a cycle ends at the depth limit.
        // Indexed by object (the count is bounded by the file size above); 0 is never reached.
        std::vector<uint8_t> deepest(m_objectCount, 0);
        std::vector<std::pair<uint64_t, int>> stack{{top, 1}};
        std::vector<uint64_t> children;
        while (!stack.empty()) {
            const auto [object, depth] = stack.back();
            stack.pop_back();
            if (depth > kMaximumNesting)
                return fail(reason, QStringLiteral("nested too deeply or cyclic"));
            if (deepest[object] >= depth)
                continue;
            deepest[object] = uint8_t(depth);
            children.clear();
            if (!visit(object, &children))
                return fail(reason, QStringLiteral("malformed object %1").arg(object));
            for (uint64_t child : children)
                stack.emplace_back(child, depth + 1);
        }
        return true;
    }

private:
    static bool fail(QString *reason, const QString &text)
    {
        if (reason)
            *reason = text;
        return false;
    }

    static uint64_t bigEndian(const uint8_t *p, unsigned size)
    {
        uint64_t value = 0;
        for (unsigned i = 0; i < size; ++i)
            value = (value << 8) | p[i];
        return value;
    }

    bool readCount(uint64_t *position, uint8_t info, uint64_t *count) const
    {
        if (info != 0x0f) {
            *count = info;
            return true;
        }
        if (*position >= m_tableOffset)
            return false;
        const uint8_t marker = m_bytes[*position];
        if ((marker & 0xf0) != 0x10 || (marker & 0x0f) > 3)
            return false;
        const unsigned size = 1u << (marker & 0x0f);
        if (*position + 1 + size > m_tableOffset)
            return false;
        *count = bigEndian(m_bytes + *position + 1, size);
        *position += 1 + size;
        return true;
    }

    bool visit(uint64_t object, std::vector<uint64_t> *children) const
    {
        uint64_t position = bigEndian(m_bytes + m_tableOffset + object * m_offsetSize, m_offsetSize);
        if (position < 8 || position >= m_tableOffset)
            return false;
        const uint8_t marker = m_bytes[position++];
        const uint8_t type = marker >> 4;
        const uint8_t info = marker & 0x0f;
        uint64_t count = 0;
        switch (type) {
        case 0x5: // ASCII string
        case 0x6: // UTF-16 string
        case 0x7: { // UTF-8 string
            if (!readCount(&position, info, &count))
                return false;
            const uint64_t unit = type == 0x6 ? 2 : 1;
            if (count > (m_tableOffset - position) / unit)
                return false;
            for (uint64_t i = 0; i < count; ++i) {
                const uint8_t *c = m_bytes + position + i * unit;
                if (c[0] == 0 && (unit == 1 || c[1] == 0))
                    return false; // libplist aborts on embedded NULs
            }
            return true;
        }
        case 0xa: // array
        case 0xc: // set
        case 0xd: { // dictionary: keys, then values
            if (!readCount(&position, info, &count))
                return false;
            const uint64_t references = type == 0xd ? 2 : 1;
            if (count > (m_tableOffset - position) / m_refSize / references)
                return false;
            for (uint64_t i = 0; i < count * references; ++i) {
                const uint64_t child = bigEndian(m_bytes + position + i * m_refSize, m_refSize);
                if (child >= m_objectCount)
                    return false;
                children->push_back(child);
            }
            return true;
        }
        default:
            return true; // scalars: libplist checks their bounds itself
        }
    }

    const uint8_t *m_bytes;
    uint64_t m_size;
    unsigned m_offsetSize = 0;
    unsigned m_refSize = 0;
    uint64_t m_objectCount = 0;
    uint64_t m_tableOffset = 0;
};

} // namespace

bool ZDBinaryPlistCheck::isSafeToParse(const QByteArray &data, QString *reason)
{
    return Reader(data).check(reason);
}
