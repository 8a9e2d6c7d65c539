#include "ZDLibraryContents.h"

#include "ZDCategoryNode.h"
#include "ZDLogger.h"
#include "ZDPackageFormat.h"
#include "ZDRecordArchive.h"
#include "ZDRecordCache.h"
#include "ZDSnippet.h"
#include "ZDTag.h"

#include <QThread>

#include <algorithm>
#include <thread>
#include <vector>

namespace {

template<typename Record, typename Unarchive>
QList<std::shared_ptr<Record>> readList(const ZDPackageTree &tree, const QString &path, Unarchive unarchive,
                                        ZDLibraryContents &contents)
{
    QList<std::shared_ptr<Record>> records;
    QList<QByteArray> blobs;
    ZDError error;
    if (!ZDRecordArchive::unarchiveList(tree.fileContents(path), &blobs, &error)) {
        zdLog(ZDLogLevel::Warning, ZDLogDomain::Library,
              QStringLiteral("Cannot read %1: %2").arg(path, error.toString()));
        contents.unreadableFiles << path;
        return records;
    }
    for (const QByteArray &blob : blobs) {
        if (auto record = unarchive(blob, &error))
            records << record;
        else
            contents.unreadableRecords << path;
    }
    return records;
}

} // namespace

ZDLibraryContents ZDLibraryContents::read(const ZDPackageTree &tree, const QString &cachePath, int cacheMinimum)
{
    using namespace ZDPackageLayout;
    ZDLibraryContents contents;
    contents.rootFolderNodes =
        readList<ZDCategoryNode>(tree, foldersFile, ZDRecordArchive::unarchiveNode, contents);
    contents.shortcutNodes =
        readList<ZDCategoryNode>(tree, shortcutsFile, ZDRecordArchive::unarchiveNode, contents);

    // Snippets whose files are unchanged since the cache was made come from it. The other files
    // are independent, so they are unarchived in parallel into their slots; the list keeps the
    // tree's order.
    const QStringList names = tree.childNames(snippetsDirectory);
    QHash<QString, ZDRecordCache::Entry> cache;
    if (!cachePath.isEmpty() && names.size() >= cacheMinimum)
        cache = ZDRecordCache::read(cachePath);
    std::vector<QByteArray> blobs(size_t(names.size()));
    std::vector<ZDSnippetPtr> slots(blobs.size());
    std::vector<quint64> identities(blobs.size());
    qsizetype misses = 0;
    qsizetype hits = 0;
    for (qsizetype index = 0; index < names.size(); ++index) {
        const QString path = snippetsDirectory + QLatin1Char('/') + names.at(index);
        identities[size_t(index)] = tree.fileIdentity(path);
        const auto cached = cache.constFind(names.at(index));
        if (cached != cache.cend() && cached->identity != 0 && cached->identity == identities[size_t(index)]) {
            slots[size_t(index)] = cached->snippet;
            ++hits;
        } else {
            blobs[size_t(index)] = tree.fileContents(path);
            ++misses;
        }
    }
    const size_t workers = std::clamp<size_t>(size_t(QThread::idealThreadCount()), 1, 8);
    const size_t chunk = (blobs.size() + workers - 1) / std::max<size_t>(workers, 1);
    std::vector<std::thread> threads;
    for (size_t begin = 0; misses > 0 && begin < blobs.size(); begin += chunk) {
        const size_t end = std::min(blobs.size(), begin + chunk);
        threads.emplace_back([&blobs, &slots, begin, end] {
            for (size_t index = begin; index < end; ++index) {
                if (!slots[index] && !blobs[index].isEmpty())
                    slots[index] = ZDRecordArchive::unarchiveSnippet(blobs[index]);
            }
        });
    }
    for (std::thread &thread : threads)
        thread.join();

    QList<QPair<QString, ZDRecordCache::Entry>> cacheEntries;
    qsizetype cacheable = 0;
    contents.snippets.reserve(qsizetype(slots.size()));
    for (size_t index = 0; index < slots.size(); ++index) {
        const QString &name = names.at(qsizetype(index));
        if (slots[index]) {
            contents.snippets << slots[index];
            cacheEntries.append({name, {identities[index], slots[index]}});
            cacheable += identities[index] != 0;
        } else if (tree.isFile(snippetsDirectory + QLatin1Char('/') + name)) {
            contents.unreadableRecords << snippetsDirectory + QLatin1Char('/') + name;
        }
    }
    // Rewritten when it lacks a readable file or holds one that is gone or changed.
    const bool cacheStale = cacheable != hits || cache.size() != hits;
    if (!cachePath.isEmpty() && names.size() >= cacheMinimum && cacheStale)
        ZDRecordCache::write(cachePath, cacheEntries);

    contents.tags = readList<ZDTag>(tree, tagsFile, ZDRecordArchive::unarchiveTag, contents);
    contents.smartGroupNodes =
        readList<ZDCategoryNode>(tree, smartGroupsFile, ZDRecordArchive::unarchiveNode, contents);
    contents.deletedUUIDs = ZDPackageFormat::decodeDeletionList(tree.fileContents(deletionListReadPath));
    return contents;
}

QByteArray ZDLibraryContents::encodeNodes(const QList<ZDCategoryNodePtr> &nodes)
{
    QList<QByteArray> blobs;
    blobs.reserve(nodes.size());
    for (const ZDCategoryNodePtr &node : nodes)
        blobs << ZDRecordArchive::archivedNode(*node);
    return ZDRecordArchive::archivedList(blobs);
}

QByteArray ZDLibraryContents::encodeTags(const ZDTagList &tags)
{
    QList<QByteArray> blobs;
    blobs.reserve(tags.size());
    for (const ZDTagPtr &tag : tags)
        blobs << ZDRecordArchive::archivedTag(*tag);
    return ZDRecordArchive::archivedList(blobs);
}
