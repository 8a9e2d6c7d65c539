// The disk side of ZDPackageTree: reading a package directory into a tree, reading the bytes
// of files read on demand, and writing a tree back (only what changed when it goes back where it
// came from).

#include "ZDPackageNode.h"
#include "ZDPackageTree.h"

#include "ZDLogger.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QThread>
#include <QUuid>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <functional>
#include <thread>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

const QString kIdentifierName = QStringLiteral("identifier");
const QString kTemporaryPrefix = QStringLiteral(".zdtmp-");
constexpr char kTemporaryPrefixBytes[] = ".zdtmp-";

QString osError(const QString &what, const QString &path)
{
    return QStringLiteral("%1 %2: %3").arg(what, path, QString::fromLocal8Bit(std::strerror(errno)));
}

ZDError writeError(const QString &reason, const QString &path)
{
    return ZDError(0, QStringLiteral("Cannot write the library package."), {}, reason,
                   {{QStringLiteral("Path"), path}});
}

bool fsyncPath(const QString &path, bool directory)
{
    const int fd = ::open(QFile::encodeName(path).constData(),
                          (directory ? O_RDONLY | O_DIRECTORY : O_RDONLY) | O_CLOEXEC);
    if (fd < 0)
        return false;
    const bool ok = ::fsync(fd) == 0;
    ::close(fd);
    return ok;
}

bool isDirectoryOnDisk(const QString &path, bool *exists)
{
    struct stat info;
    *exists = ::lstat(QFile::encodeName(path).constData(), &info) == 0;
    return *exists && S_ISDIR(info.st_mode);
}

bool removeFromDisk(const QString &path)
{
    bool exists = false;
    if (isDirectoryOnDisk(path, &exists))
        return QDir(path).removeRecursively();
    return !exists || ::unlink(QFile::encodeName(path).constData()) == 0 || errno == ENOENT;
}

bool writeAll(int fd, const QByteArray &contents)
{
    const char *data = contents.constData();
    qsizetype left = contents.size();
    while (left > 0) {
        const ssize_t written = ::write(fd, data, size_t(left));
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        data += written;
        left -= written;
    }
    return true;
}

// Temporary file beside the target, all bytes, fsync, rename over the target: after a crash the
// target is either its old or its new version.
bool writeFileAtomically(const QString &target, const QByteArray &contents, ZDError *error)
{
    bool exists = false;
    if (isDirectoryOnDisk(target, &exists) && !QDir(target).removeRecursively())
        return ZDError::fail(error, writeError(osError(QStringLiteral("Cannot remove"), target), target));

    const QFileInfo info(target);
    // The temporary name does not grow with the target's, so that any name that fits fits.
    const QString temporary = info.path() + QLatin1Char('/') + kTemporaryPrefix +
                              QUuid::createUuid().toString(QUuid::Id128).left(16);
    const QByteArray temporaryName = QFile::encodeName(temporary);
    const int fd = ::open(temporaryName.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (fd < 0)
        return ZDError::fail(error, writeError(osError(QStringLiteral("Cannot create"), temporary), target));

    QString failure;
    if (!writeAll(fd, contents))
        failure = osError(QStringLiteral("Cannot write"), temporary);
    else if (::fsync(fd) != 0)
        failure = osError(QStringLiteral("Cannot sync"), temporary);
    ::close(fd);
    if (failure.isEmpty() && ::rename(temporaryName.constData(), QFile::encodeName(target).constData()) != 0)
        failure = osError(QStringLiteral("Cannot rename"), temporary);
    if (failure.isEmpty())
        return true;
    ::unlink(temporaryName.constData());
    return ZDError::fail(error, writeError(failure, target));
}

bool ensureDirectory(const QString &path, bool *created, ZDError *error)
{
    bool exists = false;
    if (isDirectoryOnDisk(path, &exists))
        return true;
    if (exists && ::unlink(QFile::encodeName(path).constData()) != 0)
        return ZDError::fail(error, writeError(osError(QStringLiteral("Cannot remove"), path), path));
    if (::mkdir(QFile::encodeName(path).constData(), 0777) != 0)
        return ZDError::fail(error,
                             writeError(osError(QStringLiteral("Cannot create directory"), path), path));
    *created = true;
    return true;
}

QStringList entriesOnDisk(const QString &path)
{
    return QDir(path).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
}

bool writeDirectory(ZDPackageNode &node, const QString &path, bool full, bool isRoot, ZDError *error)
{
    bool entriesChanged = false;
    // Names the tree no longer holds go first; a name that is both removed and present again is
    // replaced in place below, so that it never vanishes from disk in between. Only a whole write
    // lists the directory: an incremental one removes just what was removed, so its cost does not
    // grow with the number of files.
    const auto removeStale = [&](const QString &name) {
        if (!removeFromDisk(path + QLatin1Char('/') + name))
            return ZDError::fail(error, writeError(osError(QStringLiteral("Cannot remove"), name), path));
        entriesChanged = true;
        return true;
    };
    if (full) {
        for (const QString &name : entriesOnDisk(path)) {
            if ((name.startsWith(kTemporaryPrefix) || node.children.count(name) == 0) && !removeStale(name))
                return false;
        }
    } else {
        for (const QString &name : std::as_const(node.removed)) {
            if (node.children.count(name) == 0 && !removeStale(name))
                return false;
        }
        for (const QString &name : std::as_const(node.staleTemporaries)) {
            if (!removeStale(name))
                return false;
        }
    }
    node.staleTemporaries.clear();

    ZDPackageNode *identifier = nullptr;
    const auto writeChild = [&](const QString &name, ZDPackageNode *child) {
        const QString target = path + QLatin1Char('/') + name;
        if (isRoot && name == kIdentifierName && !child->directory) {
            identifier = child;
            return true;
        }
        if (child->directory) {
            const bool childFull = full || child->changed;
            if (childFull && !ensureDirectory(target, &entriesChanged, error))
                return false;
            if ((childFull || child->subtreeChanged) &&
                !writeDirectory(*child, target, childFull, false, error))
                return false;
        } else if (full || child->changed) {
            if (!writeFileAtomically(target, child->contents, error))
                return false;
            entriesChanged = true;
        }
        return true;
    };
    if (full) {
        for (auto &[name, child] : node.children) {
            if (!writeChild(name, child.get()))
                return false;
        }
    } else {
        // In name order, like a whole write.
        QStringList names(node.dirtyChildren.cbegin(), node.dirtyChildren.cend());
        std::sort(names.begin(), names.end());
        for (const QString &name : std::as_const(names)) {
            const auto child = node.children.find(name);
            if (child != node.children.end() && !writeChild(name, child->second.get()))
                return false;
        }
    }

    // Everything else is durable before the stamp that announces it.
    if (entriesChanged && !fsyncPath(path, true))
        return ZDError::fail(error, writeError(osError(QStringLiteral("Cannot sync"), path), path));
    if (identifier && (full || identifier->changed)) {
        if (!writeFileAtomically(path + QLatin1Char('/') + kIdentifierName, identifier->contents, error))
            return false;
        if (!fsyncPath(path, true))
            return ZDError::fail(error, writeError(osError(QStringLiteral("Cannot sync"), path), path));
    }
    return true;
}

ZDError readError(const QString &path)
{
    return ZDError(0, QStringLiteral("Cannot read the library package."), {},
                   QString::fromLocal8Bit(std::strerror(errno)), {{QStringLiteral("Path"), path}});
}

bool readFileAt(int directoryFd, const char *name, const QString &path, QByteArray *contents, ZDError *error)
{
    const int fd = ::openat(directoryFd, name, O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
    struct stat info;
    if (fd < 0 || ::fstat(fd, &info) != 0) {
        const ZDError failure = readError(path);
        if (fd >= 0)
            ::close(fd);
        return ZDError::fail(error, failure);
    }
    QByteArray bytes(qsizetype(info.st_size), Qt::Uninitialized);
    qsizetype filled = 0;
    for (;;) {
        if (filled == bytes.size())
            bytes.resize(bytes.size() + 4096);
        const ssize_t got = ::read(fd, bytes.data() + filled, size_t(bytes.size() - filled));
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0) {
            const ZDError failure = readError(path);
            ::close(fd);
            return ZDError::fail(error, failure);
        }
        if (got == 0)
            break;
        filled += got;
        // Files are replaced by rename, never rewritten in place, so the size read at open holds.
        if (filled == qsizetype(info.st_size))
            break;
    }
    ::close(fd);
    bytes.truncate(filled);
    *contents = std::move(bytes);
    return true;
}

// Inode numbers are reused as soon as a file is freed, so a replaced file can come back with the
// inode of an older version of itself: the identity also takes the size and both times (the
// change time moves on every rename and write).
quint64 fileIdentityOf(const struct stat &info)
{
    quint64 digest = 0x9E3779B97F4A7C15ULL;
    const auto mix = [&digest](quint64 value) {
        digest ^= value + 0x9E3779B97F4A7C15ULL + (digest << 6) + (digest >> 2);
        digest *= 0xBF58476D1CE4E5B9ULL;
        digest ^= digest >> 31;
    };
    mix(quint64(info.st_dev));
    mix(quint64(info.st_ino));
    mix(quint64(info.st_size));
    mix(quint64(info.st_mtim.tv_sec));
    mix(quint64(info.st_mtim.tv_nsec));
    mix(quint64(info.st_ctim.tv_sec));
    mix(quint64(info.st_ctim.tv_nsec));
    return digest == 0 ? 1 : digest;
}

struct DirectoryEntry
{
    QByteArray rawName;
    unsigned char type = DT_UNKNOWN;
    quint64 identity = 0;
};

// Finds the type and identity of the entries whose type is unknown or that are regular files.
// One fstatat per file is most of what listing a large library costs, so large directories
// are split between threads.
void statEntries(int directoryFd, std::vector<DirectoryEntry> &entries)
{
    const auto statRange = [directoryFd, &entries](size_t begin, size_t end) {
        for (size_t index = begin; index < end; ++index) {
            DirectoryEntry &entry = entries[index];
            if (entry.type != DT_UNKNOWN && entry.type != DT_REG)
                continue;
            struct stat info;
            if (::fstatat(directoryFd, entry.rawName.constData(), &info, AT_SYMLINK_NOFOLLOW) != 0) {
                entry.type = DT_UNKNOWN; // gone since it was listed
                continue;
            }
            entry.type = S_ISDIR(info.st_mode) ? DT_DIR : S_ISREG(info.st_mode) ? DT_REG : DT_UNKNOWN;
            if (entry.type == DT_REG)
                entry.identity = fileIdentityOf(info);
        }
    };
    constexpr size_t kEntriesPerThread = 2048;
    const size_t threads = std::clamp<size_t>(entries.size() / kEntriesPerThread, 1,
                                              size_t(std::max(1, QThread::idealThreadCount())));
    std::vector<std::thread> helpers;
    const size_t chunk = (entries.size() + threads - 1) / threads;
    for (size_t begin = chunk; begin < entries.size(); begin += chunk)
        helpers.emplace_back(statRange, begin, std::min(entries.size(), begin + chunk));
    statRange(0, std::min(entries.size(), chunk));
    for (std::thread &helper : helpers)
        helper.join();
}

// Reads a directory with the system calls themselves: libraries hold one file per snippet, and
// per-file overhead is most of the load time.
bool readDirectory(const QString &path, ZDPackageNode &node, bool onDemand, ZDError *error)
{
    DIR *directory = ::opendir(QFile::encodeName(path).constData());
    if (!directory)
        return ZDError::fail(error, readError(path));
    const int directoryFd = ::dirfd(directory);
    std::vector<DirectoryEntry> entries;
    bool ok = true;
    for (;;) {
        errno = 0;
        const dirent *entry = ::readdir(directory);
        if (!entry) {
            if (errno != 0)
                ok = ZDError::fail(error, readError(path));
            break;
        }
        const char *rawName = entry->d_name;
        if (std::strcmp(rawName, ".") == 0 || std::strcmp(rawName, "..") == 0)
            continue;
        if (std::strncmp(rawName, kTemporaryPrefixBytes, sizeof(kTemporaryPrefixBytes) - 1) == 0) {
            node.staleTemporaries.append(QFile::decodeName(rawName));
            continue;
        }
        entries.push_back({QByteArray(rawName), entry->d_type, 0});
    }
    if (ok)
        statEntries(directoryFd, entries);

    // Children in the tree's name order, so that each one goes in at the end of the map.
    std::vector<std::pair<QString, DirectoryEntry *>> named;
    named.reserve(entries.size());
    for (DirectoryEntry &entry : entries) {
        if (entry.type == DT_DIR || entry.type == DT_REG) // links and special files are not part of a package
            named.emplace_back(QFile::decodeName(entry.rawName), &entry);
    }
    std::stable_sort(named.begin(), named.end(),
                     [](const auto &a, const auto &b) { return a.first < b.first; });
    for (size_t index = 0; ok && index < named.size(); ++index) {
        const QString &name = named[index].first;
        const DirectoryEntry &entry = *named[index].second;
        if (index > 0 && name == named[index - 1].first)
            continue; // two raw names that decode alike; the first one stands
        auto child = std::make_unique<ZDPackageNode>();
        child->changed = child->subtreeChanged = false;
        child->identity = entry.identity;
        if (entry.type == DT_DIR) {
            child->directory = true;
            ok = readDirectory(path + QLatin1Char('/') + name, *child, onDemand, error);
        } else if (onDemand) {
            child->loaded = false;
        } else {
            ok = readFileAt(directoryFd, entry.rawName.constData(), path + QLatin1Char('/') + name,
                            &child->contents, error);
        }
        if (ok)
            node.children.emplace_hint(node.children.end(), name, std::move(child));
    }
    ::closedir(directory);
    return ok;
}

} // namespace

bool ZDPackageTree::read(const QString &path, ZDPackageTree *tree, ZDError *error, Contents contents)
{
    const QFileInfo info(path);
    if (!info.isDir())
        return ZDError::fail(error,
                             ZDError(0, QStringLiteral("Cannot read the library package."), {},
                                     QStringLiteral("Not a directory"), {{QStringLiteral("Path"), path}}));
    ZDPackageTree result;
    result.m_root->setMarks(false);
    if (!readDirectory(path, *result.m_root, contents == Contents::OnDemand, error))
        return false;
    result.m_origin = info.canonicalFilePath();
    *tree = std::move(result);
    return true;
}

bool ZDPackageTree::write(const QString &path, ZDError *error)
{
    if (!QDir().mkpath(path))
        return ZDError::fail(error, writeError(QStringLiteral("Cannot create directory"), path));
    const QString canonical = QFileInfo(path).canonicalFilePath();
    const bool full = m_origin.isEmpty() || canonical != m_origin;
    if (full)
        loadAllContents();
    if (!writeDirectory(*m_root, path, full, true, error))
        return false;
    // A package written whole may be new in its parent; make its entry there durable too.
    if (full && !fsyncPath(QFileInfo(path).absolutePath(), true))
        return ZDError::fail(error, writeError(osError(QStringLiteral("Cannot sync"), path), path));
    if (full)
        m_root->setMarks(false);
    else
        m_root->clearMarks();
    m_origin = canonical;
    return true;
}

QByteArray ZDPackageTree::readFromPackage(const QString &path) const
{
    const QString filePath = m_origin + QLatin1Char('/') + path;
    QByteArray contents;
    ZDError error;
    if (!readFileAt(AT_FDCWD, QFile::encodeName(filePath).constData(), filePath, &contents, &error))
        zdLog(ZDLogLevel::Warning, ZDLogDomain::Library,
              QStringLiteral("Cannot read %1 from the library package: %2").arg(path, error.toString()));
    return contents;
}

void ZDPackageTree::loadContents(const ZDPackageNode &node, const QString &path) const
{
    if (node.loaded)
        return;
    node.loaded = true;
    node.contents = readFromPackage(path);
}

void ZDPackageTree::loadAllContents() const
{
    const std::function<void(const ZDPackageNode &, const QString &)> visit = [&](const ZDPackageNode &node,
                                                                                  const QString &path) {
        if (!node.directory) {
            loadContents(node, path);
            return;
        }
        for (const auto &[name, child] : node.children)
            visit(*child, path.isEmpty() ? name : path + QLatin1Char('/') + name);
    };
    visit(*m_root, QString());
}

QString ZDPackageTree::temporaryFilePrefix()
{
    return kTemporaryPrefix;
}
