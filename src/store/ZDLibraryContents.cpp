#include "ZDLibraryContents.h"

#include "ZDCategoryNode.h"
#include "ZDLogger.h"
#include "ZDPackageFormat.h"
#include "ZDRecordArchive.h"
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

ZDLibraryContents ZDLibraryContents::read(const ZDPackageTree &tree)
{
    using namespace ZDPackageLayout;
    ZDLibraryContents contents;
    contents.rootFolderNodes =
        readList<ZDCategoryNode>(tree, foldersFile, ZDRecordArchive::unarchiveNode, contents);
    contents.shortcutNodes =
        readList<ZDCategoryNode>(tree, shortcutsFile, ZDRecordArchive::unarchiveNode, contents);

    // Snippet files are independent, so they are unarchived in parallel into their slots; the
    // list keeps the tree's order.
    const QStringList names = tree.childNames(snippetsDirectory);
    std::vector<QByteArray> blobs(size_t(names.size()));
    for (qsizetype index = 0; index < names.size(); ++index)
        blobs[size_t(index)] = tree.fileContents(snippetsDirectory + QLatin1Char('/') + names.at(index));
    std::vector<ZDSnippetPtr> slots(blobs.size());
    const size_t workers = std::clamp<size_t>(size_t(QThread::idealThreadCount()), 1, 8);
    const size_t chunk = (blobs.size() + workers - 1) / std::max<size_t>(workers, 1);
    std::vector<std::thread> threads;
    for (size_t begin = 0; begin < blobs.size(); begin += chunk) {
        const size_t end = std::min(blobs.size(), begin + chunk);
        threads.emplace_back([&blobs, &slots, begin, end] {
            for (size_t index = begin; index < end; ++index) {
                if (!blobs[index].isEmpty())
                    slots[index] = ZDRecordArchive::unarchiveSnippet(blobs[index]);
            }
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    contents.snippets.reserve(qsizetype(slots.size()));
    for (size_t index = 0; index < slots.size(); ++index) {
        if (slots[index])
            contents.snippets << std::move(slots[index]);
        else if (tree.isFile(snippetsDirectory + QLatin1Char('/') + names.at(qsizetype(index))))
            contents.unreadableRecords << snippetsDirectory + QLatin1Char('/') + names.at(qsizetype(index));
    }

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
