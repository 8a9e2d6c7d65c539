#pragma once

#include "ZDError.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <memory>

struct ZDPackageNode;

/// The library package held in memory: a directory tree of byte blobs. Paths inside the tree
/// use "/" ("Database/Snippets/X.data"); the root is "".
///
/// Every edit marks what it touched, so that writing the tree back to the place it came from
/// rewrites only the changed files (each atomically: a temporary file in the same directory,
/// fsync, rename), removes the deleted ones, fsyncs the directories it changed and writes the
/// top-level "identifier" last. Writing to any other place writes everything and removes what
/// the tree does not hold.
///
/// A tree is not thread-safe: the store confines it to its file-system queue.
///
/// The edits and lookups are in ZDPackageTree.cpp; reading and writing directories (and reading
/// the bytes of files read on demand) in ZDPackageTreeDisk.cpp.
class ZDPackageTree
{
public:
    ZDPackageTree();
    ~ZDPackageTree();
    ZDPackageTree(ZDPackageTree &&) noexcept;
    ZDPackageTree &operator=(ZDPackageTree &&) noexcept;
    ZDPackageTree(const ZDPackageTree &other);
    ZDPackageTree &operator=(const ZDPackageTree &other);

    enum class Contents
    {
        /// Every file's bytes are read at once.
        Now,
        /// Only the layout is read; a file's bytes are read from the package when first asked for
        /// (fileContents(), a whole write, allData()). For large libraries whose records mostly
        /// come from elsewhere (ZDRecordCache).
        OnDemand,
    };

    /// Reads the directory at `path` whole. Symbolic links and special files are left out, and so
    /// are the temporary files of an interrupted write.
    static bool read(const QString &path, ZDPackageTree *tree, ZDError *error = nullptr,
                     Contents contents = Contents::Now);

    /// Writes the tree to `path` as described above and clears the change marks on success.
    /// On failure the marks stay, so that a later write redoes what may not have reached disk.
    bool write(const QString &path, ZDError *error = nullptr);

    bool exists(const QString &path) const;
    bool isFile(const QString &path) const;
    bool isDirectory(const QString &path) const;
    /// The bytes of the file at `path`; empty when there is none (see isFile()).
    QByteArray fileContents(const QString &path) const;
    /// A digest of the inode, size and modification and change times the file at `path` had when
    /// the tree was read; 0 when it was made or changed in memory since. An equal identity means
    /// the file was not written since.
    quint64 fileIdentity(const QString &path) const;
    /// A regular file directly inside a directory, with its fileIdentity().
    struct FileEntry
    {
        QString name;
        quint64 identity = 0;
    };
    /// The regular files directly inside the directory at `path`, in the tree's order: one walk,
    /// for directories too large to look files up one path at a time.
    QList<FileEntry> files(const QString &path) const;
    /// The bytes of the file at `path` like fileContents(), but a file read on demand is read
    /// from disk without being kept. Safe to call from several threads at once while nothing
    /// edits the tree.
    QByteArray readFileContents(const QString &path) const;
    /// The names in the directory at `path`, in the tree's (byte-wise) order.
    QStringList childNames(const QString &path) const;
    /// How many entries the directory at `path` holds directly (at once, whatever their number).
    int childCount(const QString &path) const;
    /// How many regular files the directory at `path` holds directly.
    int fileCount(const QString &path) const;

    /// Puts a file at `path`, making the directories above it; replaces what was there.
    void setFile(const QString &path, const QByteArray &contents);
    /// Makes the directory at `path` (and those above it) unless it exists.
    void makeDirectory(const QString &path);
    /// Removes the file or directory at `path`; returns whether there was one.
    bool remove(const QString &path);

    /// Whether anything changed since the tree was read or last written.
    bool hasChanges() const;
    /// Marks every node changed, so that the next write rewrites everything.
    void markAllChanged();
    /// The directory the tree was last read from or written to ("" when none).
    QString origin() const { return m_origin; }

    /// The tree's bytes for digests: a file's bytes; a directory's children's, in the file
    /// manager's name order (fileManagerLessThan()).
    QByteArray allData() const;
    /// MD5 of allData() as 32 lower-case hexadecimal digits.
    QString md5String() const;

    /// The file manager's name order: case-insensitive, runs of digits compared by value,
    /// following the user's locale; names equal in that order fall back to their code points.
    static bool fileManagerLessThan(const QString &a, const QString &b);

    /// Prefix of the temporary files a write makes next to the files it replaces.
    static QString temporaryFilePrefix();

private:
    QByteArray readFromPackage(const QString &path) const;
    void loadContents(const ZDPackageNode &node, const QString &path) const;
    void loadAllContents() const;

    std::unique_ptr<ZDPackageNode> m_root;
    QString m_origin;
};
