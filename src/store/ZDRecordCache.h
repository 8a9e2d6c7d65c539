#pragma once

#include "ZDRecordTypes.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>

#include <memory>
#include <vector>

/// A compact copy of a large library's snippets in the user's cache folder, so that loading does
/// not read and unarchive every snippet file. An entry stands for the file it was made from (its
/// name and `ZDPackageTree::fileIdentity`: inode, size and times); a file written since, in place
/// or by rename, has another identity and is read from the package instead. The cache is only
/// ever a shortcut: a missing, foreign or damaged cache, or a damaged record in it, costs time,
/// not data.
///
/// One file per library: a header, an index of (name, identity, record position, checksum) in
/// name order, then one self-contained record per snippet. Strings are kept as Latin-1 when
/// they fit, else as UTF-16, so that they are copied rather than converted when read.
namespace ZDRecordCache {

struct Entry
{
    quint64 identity = 0;
    ZDSnippetPtr snippet;
};

/// One entry of a cache being written: a snippet file's name and identity, and its record
/// (encodeSnippet()).
struct Record
{
    QString name;
    quint64 identity = 0;
    QByteArray bytes;
};

/// "<user cache>/Libraries/<MD5 of the package's absolute path>.snippets".
QString pathForPackage(const QString &packagePath);

/// A snippet's record.
QByteArray encodeSnippet(const ZDSnippet &snippet);

/// Decodes records, sharing the strings that repeat across snippets (folder and tag UUIDs,
/// part titles, languages) between the snippets it makes. One per thread.
class Decoder
{
public:
    Decoder();
    ~Decoder();
    Decoder(const Decoder &) = delete;
    Decoder &operator=(const Decoder &) = delete;

    /// The snippet of a record; null when the record does not decode whole. The bytes must
    /// outlive the decoder. With an `owner` that keeps the bytes alive, the parts' notes and
    /// contents are read in place (ZDSnippetText::borrowed) rather than copied.
    ZDSnippetPtr decode(const char *data, qsizetype size, const std::shared_ptr<const void> &owner = nullptr);

private:
    struct Private;
    std::unique_ptr<Private> d;
};

/// A cache file as read: the index at once, the records when asked for.
class Image
{
public:
    /// Reads the cache at `cachePath`. An image without entries when the file is missing, of
    /// another format, truncated or its index damaged.
    static std::shared_ptr<const Image> read(const QString &cachePath);
    /// An image of the bytes of a cache file (for tests and fuzzing).
    static std::shared_ptr<const Image> fromBytes(const QByteArray &bytes);
    ~Image();

    qsizetype size() const { return qsizetype(m_entries.size()); }
    /// Entries are in strictly increasing name order (QString's operator<).
    const QString &name(qsizetype index) const { return m_entries[size_t(index)].name; }
    quint64 identity(qsizetype index) const { return m_entries[size_t(index)].identity; }
    /// The entry's record bytes, or empty when they do not match their checksum. The bytes
    /// stay valid while the image lives. Thread-safe.
    QByteArray checkedRecord(qsizetype index) const;
    /// The entry's record bytes, unchecked (for a record already checked).
    QByteArray record(qsizetype index) const;

private:
    struct IndexEntry
    {
        QString name;
        quint64 identity = 0;
        quint64 offset = 0;
        quint32 size = 0;
        quint32 checksum = 0;
    };
    Image() = default;
    bool parse();

    const char *m_data = nullptr;
    qsizetype m_size = 0;
    size_t m_mappedSize = 0;
    QByteArray m_bytes; // when made from bytes in memory
    const char *m_records = nullptr;
    qsizetype m_recordsSize = 0;
    std::vector<IndexEntry> m_entries;
};

/// Decodes every record of a cache on background threads from the moment it is made, so that the
/// work overlaps with listing the package; finish() waits for it, helping on its own thread.
/// Parts read their notes and contents in place from the image (see Decoder::decode).
class Preload
{
public:
    explicit Preload(const QString &cachePath);
    /// Stops the decoding early when finish() was not called.
    ~Preload();
    Preload(const Preload &) = delete;
    Preload &operator=(const Preload &) = delete;

    /// Waits until every record is decoded, and returns the image (without entries when there
    /// is no usable cache).
    std::shared_ptr<const Image> finish();
    /// After finish(): the snippet of an entry, taken out; null when its record is damaged.
    ZDSnippetPtr takeSnippet(qsizetype entry);

private:
    struct Private;
    std::unique_ptr<Private> d;
};

/// Replaces the cache at `cachePath` atomically with `records` (sorted by name here; records
/// with identity 0 are left out). Needs no snippet, so it may run on any thread.
bool writeRecords(const QString &cachePath, QList<Record> records);

/// Every entry of the cache decoded, by snippet file name; empty when the cache is missing or
/// damaged. Entries whose records are damaged are left out.
QHash<QString, Entry> read(const QString &cachePath);
/// Replaces the cache atomically; entries with identity 0 are left out.
bool write(const QString &cachePath, const QList<QPair<QString, Entry>> &entries);

} // namespace ZDRecordCache
