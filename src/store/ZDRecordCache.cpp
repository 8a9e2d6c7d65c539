#include "ZDRecordCache.h"

#include "ZDLanguageRegistry.h"
#include "ZDLogger.h"
#include "ZDSnippet.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStandardPaths>
#include <QThread>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <future>
#include <limits>
#include <optional>
#include <thread>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

// Layout, in the machine's byte order (the byte-order mark tells a file from another machine):
//   header: magic (16 bytes), byte-order mark, entry count, index size (64 bits), index CRC-32
//   index:  per entry: identity (64), record offset (64), record size, record CRC-32, name
//   records
// A string is a 32-bit word and its characters: all ones for a null string, the top bit set for
// that many UTF-16 code units, else that many Latin-1 bytes. A date is a 64-bit count of
// milliseconds since the epoch, or the lowest value for an invalid date.

namespace {

const QByteArray kMagic("ZDSnippetCache 2");
constexpr quint32 kByteOrderMark = 0x01020304;
constexpr qsizetype kHeaderSize = 16 + 4 + 4 + 8 + 4 + 4;
constexpr quint32 kNullString = 0xFFFFFFFF;
constexpr quint32 kUtf16Flag = 0x80000000;
constexpr qint64 kNoDate = std::numeric_limits<qint64>::min();

const QString &emptyString()
{
    static const QString empty = QStringLiteral("");
    return empty;
}

quint32 checksumOf(const char *data, qsizetype size)
{
    uLong crc = crc32(0, nullptr, 0);
    while (size > 0) {
        const uInt chunk = uInt(std::min<qsizetype>(size, 1 << 30));
        crc = crc32(crc, reinterpret_cast<const Bytef *>(data), chunk);
        data += chunk;
        size -= chunk;
    }
    return quint32(crc);
}

// Encoding.

template<typename T>
void put(QByteArray &out, T value)
{
    out.append(reinterpret_cast<const char *>(&value), sizeof(value));
}

void putString(QByteArray &out, const QString &string)
{
    if (string.isNull()) {
        put(out, kNullString);
        return;
    }
    const qsizetype length = string.size();
    const QChar *characters = string.constData();
    const bool latin1 = std::all_of(characters, characters + length, [](QChar c) { return c.unicode() < 0x100; });
    if (latin1) {
        put(out, quint32(length));
        const qsizetype start = out.size();
        out.resize(start + length);
        char *target = out.data() + start;
        for (qsizetype index = 0; index < length; ++index)
            target[index] = char(characters[index].unicode());
    } else {
        put(out, quint32(length) | kUtf16Flag);
        out.append(reinterpret_cast<const char *>(characters), length * qsizetype(sizeof(QChar)));
    }
}

void putText(QByteArray &out, const ZDSnippetText &text)
{
    if (!text.isBorrowed()) {
        putString(out, text.toString());
        return;
    }
    // Borrowed characters are in this very encoding: they came from a cache.
    const bool utf16 = text.borrowedEncoding() == ZDSnippetText::Encoding::Utf16;
    put(out, quint32(text.size()) | (utf16 ? kUtf16Flag : 0));
    out.append(text.borrowedData(), text.size() * (utf16 ? qsizetype(sizeof(QChar)) : 1));
}

void putDate(QByteArray &out, const QDateTime &date)
{
    put(out, date.isValid() ? date.toMSecsSinceEpoch() : kNoDate);
}

// Decoding: a cursor over one record or the index that turns false on the first overrun.
class Cursor
{
public:
    Cursor(const char *data, qsizetype size) : m_position(data), m_end(data + size) {}

    bool ok() const { return m_ok; }
    bool atEnd() const { return m_position == m_end; }

    template<typename T>
    T number()
    {
        T value{};
        if (!m_ok || m_end - m_position < qsizetype(sizeof(T))) {
            m_ok = false;
            return value;
        }
        std::memcpy(&value, m_position, sizeof(T));
        m_position += sizeof(T);
        return value;
    }

    /// The encoded bytes of the next string (its length word included), to be decoded or used
    /// as a key.
    QByteArrayView rawString()
    {
        const char *start = m_position;
        const quint32 word = number<quint32>();
        if (!m_ok)
            return {};
        if (word == kNullString)
            return QByteArrayView(start, m_position - start);
        const qsizetype bytes =
            (word & kUtf16Flag) ? qsizetype(word & ~kUtf16Flag) * qsizetype(sizeof(QChar)) : qsizetype(word);
        if (m_end - m_position < bytes) {
            m_ok = false;
            return {};
        }
        m_position += bytes;
        return QByteArrayView(start, m_position - start);
    }

    QString string() { return decodeString(rawString()); }

    QDateTime date()
    {
        const qint64 milliseconds = number<qint64>();
        return milliseconds == kNoDate ? QDateTime() : QDateTime::fromMSecsSinceEpoch(milliseconds, Qt::UTC);
    }

    /// The characters of an encoded string, where it lies; none for a null or malformed one.
    struct Characters
    {
        const char *data = nullptr;
        qsizetype length = 0;
        bool utf16 = false;
    };
    static std::optional<Characters> charactersOf(QByteArrayView raw)
    {
        if (raw.size() < qsizetype(sizeof(quint32)))
            return std::nullopt;
        quint32 word;
        std::memcpy(&word, raw.data(), sizeof(word));
        if (word == kNullString)
            return std::nullopt;
        const bool utf16 = word & kUtf16Flag;
        const qsizetype length = qsizetype(word & ~kUtf16Flag);
        if (length * (utf16 ? qsizetype(sizeof(QChar)) : 1) != raw.size() - qsizetype(sizeof(word)))
            return std::nullopt;
        return Characters{raw.data() + sizeof(word), length, utf16};
    }

    static QString decodeString(QByteArrayView raw)
    {
        const std::optional<Characters> characters = charactersOf(raw);
        if (!characters)
            return {};
        if (characters->length == 0)
            return emptyString();
        if (!characters->utf16)
            return QString::fromLatin1(characters->data, characters->length);
        QString string(characters->length, Qt::Uninitialized);
        std::memcpy(string.data(), characters->data, size_t(characters->length) * sizeof(QChar));
        return string;
    }

    /// The string in place, kept alive by `owner`; empty when null or malformed.
    static ZDSnippetText borrowedText(QByteArrayView raw, const std::shared_ptr<const void> &owner)
    {
        const std::optional<Characters> characters = charactersOf(raw);
        if (!characters)
            return {};
        return ZDSnippetText::borrowed(owner, characters->data, characters->length,
                                       characters->utf16 ? ZDSnippetText::Encoding::Utf16
                                                         : ZDSnippetText::Encoding::Latin1);
    }

private:
    const char *m_position;
    const char *m_end;
    bool m_ok = true;
};

} // namespace

namespace ZDRecordCache {

QString pathForPackage(const QString &packagePath)
{
    const QByteArray key = QFileInfo(packagePath).absoluteFilePath().toUtf8();
    return QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) + QStringLiteral("/Zandrio/Libraries/") +
           QString::fromLatin1(QCryptographicHash::hash(key, QCryptographicHash::Md5).toHex()) +
           QStringLiteral(".snippets");
}

QByteArray encodeSnippet(const ZDSnippet &snippet)
{
    QByteArray out;
    out.reserve(512);
    putString(out, snippet.title());
    putString(out, snippet.UUID());
    putString(out, snippet.folderUUID());
    const QStringList tags = snippet.tagUUIDs();
    put(out, quint32(tags.size()));
    for (const QString &tag : tags)
        putString(out, tag);
    putString(out, snippet.gistIdentifier());
    putString(out, snippet.githubUsername());
    putString(out, snippet.githubHTMLURL());
    putDate(out, snippet.dateCreated());
    putDate(out, snippet.dateModified());
    const QList<ZDSnippetPartPtr> parts = snippet.parts();
    put(out, quint32(parts.size()));
    for (const ZDSnippetPartPtr &part : parts) {
        putString(out, part->title());
        putString(out, part->UUID());
        putString(out, part->language().identifier());
        putText(out, part->noteText());
        putText(out, part->contentText());
        putString(out, part->snippetUUID());
        putDate(out, part->dateCreated());
        putDate(out, part->dateModified());
    }
    return out;
}

struct Decoder::Private
{
    ZDLanguageRegistry *languages = ZDLanguageRegistry::shared();
    QHash<QByteArrayView, QString> strings;
    QHash<QByteArrayView, ZDLanguage> languagesByIdentifier;

    // Strings that repeat across snippets are made once.
    QString shared(QByteArrayView raw)
    {
        if (raw.size() <= qsizetype(sizeof(quint32)))
            return Cursor::decodeString(raw); // null or empty: no allocation anyway
        auto found = strings.constFind(raw);
        if (found == strings.cend())
            found = strings.insert(raw, Cursor::decodeString(raw));
        return *found;
    }

    ZDLanguage language(QByteArrayView raw)
    {
        auto found = languagesByIdentifier.constFind(raw);
        if (found != languagesByIdentifier.cend())
            return *found;
        const QString identifier = Cursor::decodeString(raw);
        const ZDLanguage language = !languages ? ZDLanguage()
                                    : identifier.isEmpty() ? languages->plainTextLanguage()
                                                           : languages->languageWithIdentifier(identifier);
        languagesByIdentifier.insert(raw, language);
        return language;
    }
};

Decoder::Decoder() : d(std::make_unique<Private>()) {}
Decoder::~Decoder() = default;

ZDSnippetPtr Decoder::decode(const char *data, qsizetype size, const std::shared_ptr<const void> &owner)
{
    // Notes and contents, the bulk of a record, are read in place when the bytes have an owner.
    const auto text = [&owner](QByteArrayView raw) {
        return owner ? Cursor::borrowedText(raw, owner) : ZDSnippetText(Cursor::decodeString(raw));
    };
    Cursor in(data, size);
    const QString title = in.string();
    const QByteArrayView rawUUID = in.rawString();
    const QString UUID = Cursor::decodeString(rawUUID);
    const QString folderUUID = d->shared(in.rawString());
    const quint32 tagCount = in.number<quint32>();
    if (!in.ok() || tagCount > quint32(size))
        return nullptr;
    QStringList tagUUIDs;
    tagUUIDs.reserve(qsizetype(tagCount));
    for (quint32 index = 0; index < tagCount && in.ok(); ++index)
        tagUUIDs.append(d->shared(in.rawString()));
    const QString gist = in.string();
    const QString user = d->shared(in.rawString());
    const QString url = in.string();
    const QDateTime created = in.date();
    const QDateTime modified = in.date();
    const quint32 partCount = in.number<quint32>();
    if (!in.ok() || partCount > quint32(size))
        return nullptr;
    QList<ZDSnippetPartPtr> parts;
    parts.reserve(qsizetype(partCount));
    for (quint32 index = 0; index < partCount && in.ok(); ++index) {
        const QString partTitle = d->shared(in.rawString());
        const QString partUUID = in.string();
        const QByteArrayView rawLanguage = in.rawString();
        ZDSnippetText note = text(in.rawString());
        ZDSnippetText content = text(in.rawString());
        const QByteArrayView rawOwner = in.rawString();
        // A part names its snippet; the same string is kept once.
        const QString partOwner = rawOwner == rawUUID ? UUID : Cursor::decodeString(rawOwner);
        const QDateTime partCreated = in.date();
        const QDateTime partModified = in.date();
        if (!in.ok())
            return nullptr;
        parts.append(std::make_shared<ZDSnippetPart>(partTitle, partUUID, d->language(rawLanguage), std::move(note),
                                                     std::move(content), partCreated, partModified, partOwner));
    }
    if (!in.ok() || !in.atEnd())
        return nullptr;
    return std::make_shared<ZDSnippet>(title, UUID, folderUUID, tagUUIDs, gist, user, url, parts, created, modified);
}

// The file is mapped rather than read: mapping the page cache's pages at once costs far less
// than copying them into fresh memory. The cache is only ever replaced by renaming a new file
// over it, never rewritten in place, so the mapped file does not change under the reader.
std::shared_ptr<const Image> Image::read(const QString &cachePath)
{
    std::shared_ptr<Image> image(new Image);
    const int fd = ::open(QFile::encodeName(cachePath).constData(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return image;
    struct stat info;
    if (::fstat(fd, &info) == 0 && S_ISREG(info.st_mode) && info.st_size >= kHeaderSize) {
        void *mapped = ::mmap(nullptr, size_t(info.st_size), PROT_READ, MAP_PRIVATE | MAP_POPULATE, fd, 0);
        if (mapped != MAP_FAILED) {
            image->m_data = static_cast<const char *>(mapped);
            image->m_size = qsizetype(info.st_size);
            image->m_mappedSize = size_t(info.st_size);
        }
    }
    ::close(fd);
    if (image->m_size > 0 && !image->parse()) {
        zdLog(ZDLogLevel::Warning, ZDLogDomain::Library, QStringLiteral("Ignoring a damaged snippet cache"));
        image->m_entries.clear();
    }
    return image;
}

std::shared_ptr<const Image> Image::fromBytes(const QByteArray &bytes)
{
    std::shared_ptr<Image> image(new Image);
    image->m_bytes = bytes;
    image->m_data = image->m_bytes.constData();
    image->m_size = image->m_bytes.size();
    if (!image->parse())
        image->m_entries.clear();
    return image;
}

Image::~Image()
{
    if (m_mappedSize > 0)
        ::munmap(const_cast<char *>(m_data), m_mappedSize);
}

bool Image::parse()
{
    if (m_size < kHeaderSize || std::memcmp(m_data, kMagic.constData(), size_t(kMagic.size())) != 0)
        return false;
    Cursor header(m_data + kMagic.size(), kHeaderSize - kMagic.size());
    const quint32 byteOrder = header.number<quint32>();
    const quint32 count = header.number<quint32>();
    const quint64 indexSize = header.number<quint64>();
    const quint32 indexChecksum = header.number<quint32>();
    const quint32 reserved = header.number<quint32>();
    if (byteOrder != kByteOrderMark || reserved != 0 || indexSize > quint64(m_size - kHeaderSize))
        return false;
    const char *index = m_data + kHeaderSize;
    if (checksumOf(index, qsizetype(indexSize)) != indexChecksum)
        return false;
    m_records = index + indexSize;
    m_recordsSize = m_size - kHeaderSize - qsizetype(indexSize);

    // Every entry takes at least 28 bytes of the index, which bounds a damaged count.
    if (quint64(count) * 28 > indexSize)
        return false;
    Cursor in(index, qsizetype(indexSize));
    m_entries.reserve(count);
    for (quint32 position = 0; position < count; ++position) {
        IndexEntry entry;
        entry.identity = in.number<quint64>();
        entry.offset = in.number<quint64>();
        entry.size = in.number<quint32>();
        entry.checksum = in.number<quint32>();
        entry.name = in.string();
        if (!in.ok() || entry.offset > quint64(m_recordsSize) || entry.size > quint64(m_recordsSize) - entry.offset)
            return false;
        if (!m_entries.empty() && !(m_entries.back().name < entry.name))
            return false;
        m_entries.push_back(std::move(entry));
    }
    return in.atEnd();
}

QByteArray Image::checkedRecord(qsizetype index) const
{
    const IndexEntry &entry = m_entries[size_t(index)];
    const char *record = m_records + entry.offset;
    if (checksumOf(record, qsizetype(entry.size)) != entry.checksum)
        return {};
    return QByteArray::fromRawData(record, qsizetype(entry.size));
}

QByteArray Image::record(qsizetype index) const
{
    const IndexEntry &entry = m_entries[size_t(index)];
    return QByteArray::fromRawData(m_records + entry.offset, qsizetype(entry.size));
}

struct Preload::Private
{
    std::promise<std::shared_ptr<const Image>> mapped;
    std::shared_future<std::shared_ptr<const Image>> image = mapped.get_future().share();
    std::vector<ZDSnippetPtr> snippets;
    std::atomic<size_t> next{0};
    std::atomic<bool> stop{false};
    std::vector<std::thread> threads;

    // Takes batches of records until none is left.
    void decode()
    {
        const std::shared_ptr<const Image> &source = image.get();
        const size_t count = size_t(source->size());
        Decoder decoder;
        constexpr size_t kBatch = 64;
        for (size_t begin = next.fetch_add(kBatch); begin < count && !stop; begin = next.fetch_add(kBatch)) {
            for (size_t index = begin; index < std::min(count, begin + kBatch); ++index) {
                const QByteArray bytes = source->checkedRecord(qsizetype(index));
                if (!bytes.isEmpty())
                    snippets[index] = decoder.decode(bytes.constData(), bytes.size(), source);
            }
        }
    }
};

Preload::Preload(const QString &cachePath) : d(std::make_unique<Private>())
{
    const size_t workers = std::clamp<size_t>(size_t(QThread::idealThreadCount()), 1, 8);
    d->threads.emplace_back([this, cachePath] {
        std::shared_ptr<const Image> image = Image::read(cachePath);
        d->snippets.resize(size_t(image->size()));
        d->mapped.set_value(std::move(image));
        d->decode();
    });
    for (size_t worker = 1; worker < workers; ++worker)
        d->threads.emplace_back([this] { d->decode(); });
}

Preload::~Preload()
{
    d->stop = true;
    for (std::thread &thread : d->threads)
        thread.join();
}

std::shared_ptr<const Image> Preload::finish()
{
    d->decode();
    for (std::thread &thread : d->threads)
        thread.join();
    d->threads.clear();
    return d->image.get();
}

ZDSnippetPtr Preload::takeSnippet(qsizetype entry)
{
    return std::move(d->snippets[size_t(entry)]);
}

bool writeRecords(const QString &cachePath, QList<Record> records)
{
    records.removeIf([](const Record &record) { return record.identity == 0; });
    std::sort(records.begin(), records.end(), [](const Record &a, const Record &b) { return a.name < b.name; });
    // One entry per name: the index is strictly ordered.
    records.erase(std::unique(records.begin(), records.end(),
                              [](const Record &a, const Record &b) { return a.name == b.name; }),
                  records.end());

    QByteArray index;
    index.reserve(records.size() * 80);
    quint64 offset = 0;
    for (const Record &record : std::as_const(records)) {
        put(index, record.identity);
        put(index, offset);
        put(index, quint32(record.bytes.size()));
        put(index, checksumOf(record.bytes.constData(), record.bytes.size()));
        putString(index, record.name);
        offset += quint64(record.bytes.size());
    }
    QByteArray header = kMagic;
    put(header, kByteOrderMark);
    put(header, quint32(records.size()));
    put(header, quint64(index.size()));
    put(header, checksumOf(index.constData(), index.size()));
    put(header, quint32(0));

    QDir().mkpath(QFileInfo(cachePath).path());
    QSaveFile file(cachePath);
    bool ok = file.open(QIODevice::WriteOnly) && file.write(header) == header.size() &&
              file.write(index) == index.size();
    for (qsizetype position = 0; ok && position < records.size(); ++position)
        ok = file.write(records.at(position).bytes) == records.at(position).bytes.size();
    if (!ok || !file.commit()) {
        zdLog(ZDLogLevel::Warning, ZDLogDomain::Library,
              QStringLiteral("Cannot write the snippet cache %1: %2").arg(cachePath, file.errorString()));
        return false;
    }
    return true;
}

QHash<QString, Entry> read(const QString &cachePath)
{
    QHash<QString, Entry> entries;
    const std::shared_ptr<const Image> image = Image::read(cachePath);
    Decoder decoder;
    for (qsizetype index = 0; index < image->size(); ++index) {
        const QByteArray record = image->checkedRecord(index);
        if (ZDSnippetPtr snippet =
                record.isEmpty() ? nullptr : decoder.decode(record.constData(), record.size(), image))
            entries.insert(image->name(index), {image->identity(index), std::move(snippet)});
    }
    return entries;
}

bool write(const QString &cachePath, const QList<QPair<QString, Entry>> &entries)
{
    QList<Record> records;
    records.reserve(entries.size());
    for (const auto &[name, entry] : entries) {
        if (entry.identity != 0 && entry.snippet)
            records.append({name, entry.identity, encodeSnippet(*entry.snippet)});
    }
    return writeRecords(cachePath, std::move(records));
}

} // namespace ZDRecordCache
