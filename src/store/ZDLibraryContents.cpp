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
#include <atomic>
#include <optional>
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

// Snippets whose files are unchanged since the cache was made come from it (decoded by the
// preload, which may have started before the package was listed); the other files are read and
// unarchived. Every snippet is independent of the others, so that work is shared by all cores,
// each taking the next few files, and the list keeps the tree's order.
void readSnippets(const ZDPackageTree &tree, const QString &cachePath, int cacheMinimum,
                  ZDRecordCache::Preload *preload, ZDLibraryContents &contents)
{
    using namespace ZDPackageLayout;
    const QList<ZDPackageTree::FileEntry> files = tree.files(snippetsDirectory);
    const size_t count = size_t(files.size());
    const bool useCache = !cachePath.isEmpty() && files.size() >= cacheMinimum;
    std::optional<ZDRecordCache::Preload> ownPreload;
    if (useCache && !preload)
        preload = &ownPreload.emplace(cachePath);
    const std::shared_ptr<const ZDRecordCache::Image> image = useCache ? preload->finish() : nullptr;

    // The snippet of each file that has a cache entry of the same name and identity. Both lists
    // are in name order, so one walk pairs them.
    std::vector<ZDSnippetPtr> slots(count);
    std::vector<QByteArray> records(useCache ? count : 0);
    qsizetype hits = 0;
    if (image) {
        qsizetype entry = 0;
        for (size_t file = 0; file < count && entry < image->size(); ++file) {
            const QString &name = files.at(qsizetype(file)).name;
            while (entry < image->size() && image->name(entry) < name)
                ++entry;
            if (entry < image->size() && image->name(entry) == name &&
                image->identity(entry) == files.at(qsizetype(file)).identity && image->identity(entry) != 0) {
                // A record that failed its checksum or did not decode is read from the package.
                if ((slots[file] = preload->takeSnippet(entry))) {
                    records[file] = image->record(entry);
                    ++hits;
                }
                ++entry;
            }
        }
    }

    std::atomic<size_t> next{0};
    const auto work = [&] {
        constexpr size_t kBatch = 64;
        for (size_t begin = next.fetch_add(kBatch); begin < count; begin = next.fetch_add(kBatch)) {
            for (size_t index = begin; index < std::min(count, begin + kBatch); ++index) {
                if (slots[index])
                    continue;
                const QByteArray blob =
                    tree.readFileContents(snippetsDirectory + QLatin1Char('/') + files.at(qsizetype(index)).name);
                if (!blob.isEmpty())
                    slots[index] = ZDRecordArchive::unarchiveSnippet(blob);
                if (useCache && slots[index])
                    records[index] = ZDRecordCache::encodeSnippet(*slots[index]);
            }
        }
    };
    const size_t workers = std::clamp<size_t>(size_t(QThread::idealThreadCount()), 1, 8);
    const size_t toRead = count - size_t(hits);
    std::vector<std::thread> helpers;
    for (size_t helper = 1; helper < workers && helper * 256 < toRead; ++helper)
        helpers.emplace_back(work);
    work();
    for (std::thread &helper : helpers)
        helper.join();

    qsizetype cacheable = 0;
    contents.snippets.reserve(qsizetype(count));
    for (size_t index = 0; index < count; ++index) {
        const ZDPackageTree::FileEntry &file = files.at(qsizetype(index));
        if (slots[index]) {
            contents.snippets << std::move(slots[index]);
            cacheable += file.identity != 0;
        } else {
            contents.unreadableRecords << snippetsDirectory + QLatin1Char('/') + file.name;
        }
    }
    // Rewritten when it lacks a readable file or holds one that is gone or changed. The image
    // stays alive until then, and as long as a part reads its note or content from it.
    if (!useCache || (cacheable == hits && image->size() == hits))
        return;
    QList<ZDRecordCache::Record> cacheRecords;
    cacheRecords.reserve(cacheable);
    for (size_t index = 0; index < count; ++index) {
        const ZDPackageTree::FileEntry &file = files.at(qsizetype(index));
        if (!records[index].isEmpty() && file.identity != 0) // a readable snippet has its record
            cacheRecords.append({file.name, file.identity, std::move(records[index])});
    }
    contents.cacheUpdate = [cachePath, image, cacheRecords = std::move(cacheRecords)] {
        ZDRecordCache::writeRecords(cachePath, cacheRecords);
    };
}

} // namespace

ZDLibraryContents ZDLibraryContents::read(const ZDPackageTree &tree, const QString &cachePath, int cacheMinimum,
                                          ZDRecordCache::Preload *preload)
{
    using namespace ZDPackageLayout;
    ZDLibraryContents contents;
    contents.rootFolderNodes =
        readList<ZDCategoryNode>(tree, foldersFile, ZDRecordArchive::unarchiveNode, contents);
    contents.shortcutNodes =
        readList<ZDCategoryNode>(tree, shortcutsFile, ZDRecordArchive::unarchiveNode, contents);

    readSnippets(tree, cachePath, cacheMinimum, preload, contents);
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
