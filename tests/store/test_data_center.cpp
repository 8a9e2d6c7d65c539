#include "ZDStoreTestSupport.h"

#include "ZDLanguageRegistry.h"
#include "ZDLibraryContents.h"
#include "ZDOutdatedVersionResponder.h"
#include "ZDPackageFormat.h"
#include "ZDRecordArchive.h"
#include "ZDRecordCache.h"
#include "ZDStoreErrors.h"
#include "ZDTestSupport.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <plist/plist.h>

#include <gtest/gtest.h>

namespace {

QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(bytes);
}

// The string values of a plist dictionary's keys, through libplist alone.
QStringList dictionaryKeys(plist_t dictionary)
{
    QStringList keys;
    plist_dict_iter it = nullptr;
    plist_dict_new_iter(dictionary, &it);
    for (;;) {
        char *key = nullptr;
        plist_t value = nullptr;
        plist_dict_next_item(dictionary, it, &key, &value);
        if (!key)
            break;
        keys << QString::fromUtf8(key);
        free(key);
    }
    free(it);
    return keys;
}

struct Populated
{
    ZDCategoryNodePtr folder;
    ZDCategoryNodePtr child;
    ZDTagPtr tag;
    ZDSnippetPtr first;
    ZDSnippetPtr second;
};

Populated populate(ZDDataCenter &center)
{
    Populated p;
    p.folder = ZDCategoryNode::folderNodeWithTitle(QStringLiteral("Ünïcode 文件夹"));
    p.child = ZDCategoryNode::folderNodeWithTitle(QStringLiteral("Child"), {}, QStringLiteral("PythonLexer"));
    p.folder->addChild(p.child);
    p.tag = ZDTag::create(QStringLiteral("café"));
    center.setRootFolderNodes({p.folder});
    center.setShortcutNodes({ZDCategoryNode::shortcutNodeWithTargetUUID(p.child->UUID())});
    center.setSmartGroupNodes({ZDCategoryNode::smartGroupNodeWithTitle(
        QStringLiteral("Recent"), {}, QStringLiteral("title CONTAINS[cd] \"x\""))});
    center.setTags({p.tag, ZDTag::create(QStringLiteral("other"))});
    p.first =
        zdTestSnippet(QStringLiteral("Grüße 👋"), p.child->UUID(), QStringLiteral("def f():\n    pass\n"));
    p.first->parts().first()->setLanguage(
        ZDLanguageRegistry::shared()->languageWithIdentifier(QStringLiteral("PythonLexer")));
    p.first->parts().first()->setNote(QStringLiteral("a note"));
    p.first->setTagUUIDs({p.tag->UUID()});
    p.first->setGistIdentifier(QStringLiteral("abc123"));
    p.second = zdTestSnippet(QStringLiteral("second"));
    p.second->setParts(p.second->parts() +
                       QList{ZDSnippetPart::create(QStringLiteral("two"), p.second->UUID())});
    center.addSnippetsFromArray({p.first, p.second});
    return p;
}

} // namespace

TEST(DataCenter, WrittenLibraryReadsBackIdenticallyAndDecodesAsAKeyedArchive)
{
    ZDTestLibrary library;
    auto center = library.open();
    ASSERT_TRUE(center->dataCenterHasValidLibrary());
    const Populated p = populate(*center);
    ASSERT_TRUE(center->save());

    auto reopened = library.open();
    ASSERT_EQ(reopened->snippets().size(), 2);
    for (const ZDSnippetPtr &original : {p.first, p.second}) {
        const ZDSnippetPtr loaded = reopened->snippetWithUUID(original->UUID());
        ASSERT_TRUE(loaded);
        EXPECT_TRUE(loaded->isIdentical(original.get()));
        EXPECT_EQ(loaded->folderUUID(), original->folderUUID());
        EXPECT_EQ(loaded->dateModified(), original->dateModified());
        EXPECT_EQ(loaded->gistIdentifier(), original->gistIdentifier());
        EXPECT_EQ(loaded->githubUsername(), original->githubUsername());
    }
    EXPECT_EQ(reopened->tagNames(), (QStringList{QStringLiteral("café"), QStringLiteral("other")}));
    EXPECT_EQ(reopened->folderTitles(), center->folderTitles());
    EXPECT_EQ(reopened->defaultLanguageIdentifierForFolderWithUUID(p.child->UUID()),
              QStringLiteral("PythonLexer"));
    EXPECT_EQ(reopened->shortcutNodes().first()->UUID(), p.child->UUID());
    EXPECT_EQ(reopened->smartGroupNodes().first()->predicateString(),
              QStringLiteral("title CONTAINS[cd] \"x\""));
    EXPECT_EQ(reopened->titleForShortcutNodeWithUUID(reopened->smartGroupNodes().first()->UUID(), {}),
              QStringLiteral("Recent"));
    EXPECT_EQ(reopened->titleForShortcutNodeWithUUID(QString(), {}), QStringLiteral("(null)"));

    // The snippet file, read by libplist alone: the keyed-archive frame and the record's keys.
    const QByteArray bytes =
        readFile(library.path + QLatin1Char('/') + ZDPackageLayout::snippetFilePath(p.first->UUID()));
    plist_t root = nullptr;
    plist_from_bin(bytes.constData(), uint32_t(bytes.size()), &root);
    ASSERT_TRUE(root);
    char *archiver = nullptr;
    plist_get_string_val(plist_dict_get_item(root, "$archiver"), &archiver);
    EXPECT_STREQ(archiver, "NSKeyedArchiver");
    free(archiver);
    EXPECT_TRUE(plist_dict_get_item(plist_dict_get_item(root, "$top"), "root"));
    plist_t objects = plist_dict_get_item(root, "$objects");
    QStringList keys;
    QStringList classNames;
    for (uint32_t i = 0; i < plist_array_get_size(objects); ++i) {
        plist_t object = plist_array_get_item(objects, i);
        if (plist_get_node_type(object) != PLIST_DICT)
            continue;
        keys += dictionaryKeys(object);
        if (plist_t name = plist_dict_get_item(object, "$classname")) {
            char *value = nullptr;
            plist_get_string_val(name, &value);
            classNames << QString::fromUtf8(value);
            free(value);
        }
    }
    plist_free(root);
    for (const char *key :
         {"com.varnok.Zandrio.Key.SnippetTitle", "com.varnok.Zandrio.Key.SnippetUUID",
          "com.varnok.Zandrio.Key.SnippetFolderUUID", "com.varnok.Zandrio.Key.SnippetParts",
          "com.varnok.Zandrio.Key.SnippetPartContent", "com.varnok.Zandrio.Key.SnippetPartLanguage"})
        EXPECT_TRUE(keys.contains(QLatin1String(key))) << key;
    EXPECT_TRUE(classNames.contains(QStringLiteral("ZDSnippet")));
    EXPECT_TRUE(classNames.contains(QStringLiteral("ZDSnippetPart")));
}

TEST(DataCenter, ReAddingASnippetReplacesItAndMovesItToTheEnd)
{
    ZDTestLibrary library;
    auto center = library.open();
    const ZDSnippetPtr a = zdTestSnippet(QStringLiteral("a"));
    const ZDSnippetPtr b = zdTestSnippet(QStringLiteral("b"));
    center->addSnippetsFromArray({a, b});
    const auto replacement = std::make_shared<ZDSnippet>(QStringLiteral("a2"), a->UUID(), a->folderUUID(),
                                                         QStringList(), QString(), QString(), QString(),
                                                         a->parts(), a->dateCreated(), a->dateModified());
    center->addSnippetsFromArray({replacement, replacement});
    ASSERT_EQ(center->snippets().size(), 2);
    EXPECT_EQ(center->snippets().at(0), b);
    EXPECT_EQ(center->snippets().at(1), replacement);
    EXPECT_EQ(center->snippetWithUUID(a->UUID()), replacement);
}

TEST(DataCenter, EditsAreWrittenAtOnceThenGatheredIntoTheNextTick)
{
    ZDTestLibrary library;
    auto center = library.open();
    int writes = 0;
    QObject::connect(center.get(), &ZDDataCenter::libraryWritten, [&writes](bool ok) { writes += ok; });
    const ZDSnippetPtr snippet = zdTestSnippet(QStringLiteral("s"));
    center->addSnippet(snippet);
    ZDTestLibrary::settle(*center);
    EXPECT_EQ(writes, 1);
    const QString firstStamp = ZDPackageFormat::readWriteStamp(library.path);
    EXPECT_EQ(firstStamp, center->lastWriteUUID());

    for (int edit = 0; edit < 10; ++edit) {
        center->setSnippetTitle(snippet->UUID(), QStringLiteral("edit %1").arg(edit), nullptr);
        ZDTestLibrary::settle(*center);
    }
    EXPECT_EQ(writes, 1);
    EXPECT_TRUE(center->hasPendingChanges());
    library.timer->fire();
    ZDTestLibrary::settle(*center);
    EXPECT_EQ(writes, 2);
    EXPECT_FALSE(center->hasPendingChanges());
    EXPECT_NE(ZDPackageFormat::readWriteStamp(library.path), firstStamp);
    library.timer->fire();
    ZDTestLibrary::settle(*center);
    EXPECT_FALSE(library.timer->isActive());
    EXPECT_EQ(library.open()->snippetWithUUID(snippet->UUID())->title(), QStringLiteral("edit 9"));
}

TEST(DataCenter, FailedWriteStaysPendingIsShownAndIsRetried)
{
    ZDTestLibrary library;
    auto center = library.open();
    ASSERT_TRUE(center->save());
    // A file where the snippets folder should be: no write can put a snippet there.
    const QString snippetsPath = library.path + QStringLiteral("/Database/Snippets");
    ASSERT_TRUE(QDir(snippetsPath).removeRecursively());
    writeFile(snippetsPath, "in the way");

    const ZDSnippetPtr snippet = zdTestSnippet(QStringLiteral("s"));
    center->addSnippet(snippet);
    ZDTestLibrary::settle(*center);
    EXPECT_TRUE(center->hasPendingChanges());
    EXPECT_EQ(center->lastWriteError().code(), 141);
    ASSERT_FALSE(library.presented.isEmpty());
    EXPECT_EQ(library.presented.last().description(), ZDStoreErrors::saveFailedTitle);
    EXPECT_FALSE(center->save());

    QFile::remove(snippetsPath);
    QDir().mkdir(snippetsPath);
    library.timer->fire();
    ZDTestLibrary::settle(*center);
    EXPECT_FALSE(center->hasPendingChanges());
    EXPECT_TRUE(center->lastWriteError().isNull());
    EXPECT_TRUE(library.open()->snippetWithUUID(snippet->UUID()));
}

TEST(DataCenter, OwnWritesCauseNoReloadAndForeignOnesDo)
{
    ZDTestLibrary library;
    auto center = library.open(/*watch=*/true);
    ASSERT_TRUE(center->save());
    ZDLibraryChangeCounter counter;
    library.notifier.addDelegate(&counter);

    center->addSnippet(zdTestSnippet(QStringLiteral("mine")));
    ZDTestLibrary::settle(*center);
    EXPECT_FALSE(ZDTestSupport::waitFor([&] { return counter.changes > 0; }, 400));

    {
        auto other = library.open();
        other->addSnippet(zdTestSnippet(QStringLiteral("theirs")));
        ASSERT_TRUE(other->save());
    }
    EXPECT_TRUE(ZDTestSupport::waitFor([&] { return center->snippets().size() == 2; }));
    EXPECT_TRUE(ZDTestSupport::waitFor([&] { return counter.changes == 1; }));
}

TEST(DataCenter, UnwrittenEditsSurviveAWriteByAnotherProcess)
{
    ZDTestLibrary library;
    auto center = library.open();
    ZDManualWriteTimer *timer = library.timer;
    const ZDSnippetPtr first = zdTestSnippet(QStringLiteral("first"));
    center->addSnippet(first);
    ZDTestLibrary::settle(*center); // written at once
    const ZDSnippetPtr pending = zdTestSnippet(QStringLiteral("pending"));
    center->addSnippet(pending);
    ZDTestLibrary::settle(*center); // waits for the tick
    ASSERT_TRUE(center->needsWrite());

    ZDSnippetPtr theirs;
    {
        auto other = library.open();
        theirs = zdTestSnippet(QStringLiteral("theirs"));
        other->addSnippet(theirs);
        other->removeSnippetsFromArray({other->snippetWithUUID(first->UUID())});
        ASSERT_TRUE(other->save());
    }
    timer->fire();
    ZDTestLibrary::settle(*center);

    auto reopened = library.open();
    EXPECT_TRUE(reopened->snippetWithUUID(pending->UUID()));
    EXPECT_TRUE(reopened->snippetWithUUID(theirs->UUID()));
    EXPECT_FALSE(reopened->snippetWithUUID(first->UUID()));
    // The writer took the other side's changes into memory too.
    EXPECT_TRUE(center->snippetWithUUID(theirs->UUID()));
    EXPECT_FALSE(center->snippetWithUUID(first->UUID()));
}

TEST(DataCenter, DamagedRecordsCostOnlyThemselves)
{
    ZDTestLibrary library;
    {
        auto center = library.open();
        populate(*center);
        ASSERT_TRUE(center->save());
    }
    const QString tags = library.path + QLatin1Char('/') + ZDPackageLayout::tagsFile;
    QList<QByteArray> blobs;
    ASSERT_TRUE(ZDRecordArchive::unarchiveList(readFile(tags), &blobs));
    blobs.insert(1, QByteArray("bplist00 not a tag"));
    writeFile(tags, ZDRecordArchive::archivedList(blobs));
    writeFile(library.path + QStringLiteral("/Database/Snippets/BROKEN.data"), "garbage");
    writeFile(library.path + QStringLiteral("/Database/Snippets/EMPTY.data"), "");

    auto center = library.open();
    EXPECT_EQ(center->tags().size(), 2);
    EXPECT_EQ(center->snippets().size(), 2);

    ZDPackageTree tree;
    ASSERT_TRUE(ZDPackageTree::read(library.path, &tree));
    const ZDLibraryContents contents = ZDLibraryContents::read(tree);
    EXPECT_EQ(contents.unreadableRecords.size(), 3);
}

TEST(DataCenter, RepairFixesDanglingReferencesAndIsSaved)
{
    ZDTestLibrary library;
    QString orphan, tagged;
    {
        auto center = library.open();
        const Populated p = populate(*center);
        const ZDSnippetPtr lost = zdTestSnippet(QStringLiteral("lost"), QStringLiteral("NO-SUCH-FOLDER"));
        p.first->setTagUUIDs({p.tag->UUID(), QStringLiteral("NO-SUCH-TAG")});
        center->addSnippetsFromArray({lost, p.first});
        center->setShortcutNodes(center->shortcutNodes() +
                                 QList{ZDCategoryNode::shortcutNodeWithTargetUUID(QStringLiteral("GONE"))});
        ASSERT_TRUE(center->save());
        orphan = lost->UUID();
        tagged = p.first->UUID();
        const ZDLibraryRepair::Report report = center->inspectInternalInconsistency();
        EXPECT_EQ(report.uncategorizedCount(), 1);
        EXPECT_EQ(report.removedTagCount(), 1);
        EXPECT_EQ(report.removedShortcutCount(), 1);
        EXPECT_EQ(report.analyticsProperties().value(QStringLiteral("Issued fixed")), QStringLiteral("2-5"));
    }

    library.defaults.setObject(true, QStringLiteral("ZDDisableRepairInternalInconsistencyIfNeeded"));
    EXPECT_EQ(library.open()->snippetWithUUID(orphan)->folderUUID(), QStringLiteral("NO-SUCH-FOLDER"));

    library.defaults.setObject(false, QStringLiteral("ZDDisableRepairInternalInconsistencyIfNeeded"));
    {
        auto center = library.open();
        EXPECT_EQ(center->snippetWithUUID(orphan)->folderUUID(), QLatin1String(ZDUncategorizedUUID));
        EXPECT_EQ(center->snippetWithUUID(tagged)->tagUUIDs().size(), 1);
        EXPECT_EQ(center->shortcutNodes().size(), 1);
        EXPECT_TRUE(center->hasPendingChanges());
        ASSERT_TRUE(center->save());
    }
    library.defaults.setObject(true, QStringLiteral("ZDDisableRepairInternalInconsistencyIfNeeded"));
    auto center = library.open();
    EXPECT_TRUE(center->inspectInternalInconsistency().isEmpty());
}

TEST(DataCenter, DeletionListIsWrittenInsideTheDatabaseButReadFromTheTop)
{
    ZDTestLibrary library;
    auto center = library.open();
    const ZDSnippetPtr gone = zdTestSnippet(QStringLiteral("gone"));
    center->addSnippet(gone);
    center->removeSnippetsFromArray({gone});
    EXPECT_EQ(center->deletedUUIDs(), QStringList{gone->UUID()});
    ASSERT_TRUE(center->save());
    EXPECT_FALSE(
        QFileInfo::exists(library.path + QLatin1Char('/') + ZDPackageLayout::snippetFilePath(gone->UUID())));
    const QByteArray written = readFile(library.path + QStringLiteral("/Database/deletion.data"));
    EXPECT_EQ(ZDPackageFormat::decodeDeletionList(written), QStringList{gone->UUID()});

    EXPECT_TRUE(library.open()->deletedUUIDs().isEmpty());
    writeFile(library.path + QStringLiteral("/deletion.data"), written);
    EXPECT_EQ(library.open()->deletedUUIDs(), QStringList{gone->UUID()});
}

TEST(DataCenter, WithoutALibraryEveryMutationIsRefusedWithItsCode)
{
    ZDTestLibrary library;
    ZDPackageTree tree = ZDPackageFormat::emptyPackage();
    tree.setFile(ZDPackageLayout::versionFile, ZDPackageFormat::encodeVersion(QStringLiteral("1.6.0")));
    ASSERT_TRUE(tree.write(library.path));

    auto center = library.open();
    EXPECT_FALSE(center->dataCenterHasValidLibrary());
    EXPECT_EQ(center->loadError().code(), 104);
    const ZDSnippetPtr snippet = zdTestSnippet(QStringLiteral("s"));
    const QList<std::pair<int, std::function<bool(ZDError *)>>> mutations{
        {134, [&](ZDError *e) { return center->addSnippet(snippet, e); }},
        {130, [&](ZDError *e) { return center->removeSnippetsFromArray({snippet}, e); }},
        {139, [&](ZDError *e) { return center->setSnippetsUpdated({snippet}, e); }},
        {127, [&](ZDError *e) { return center->setRootFolderNodes({}, e); }},
        {132, [&](ZDError *e) { return center->setShortcutNodes({}, e); }},
        {208, [&](ZDError *e) { return center->setSmartGroupNodes({}, e); }},
        {200, [&](ZDError *e) { return center->setTags({}, e); }},
    };
    for (const auto &[code, mutation] : mutations) {
        ZDError error;
        EXPECT_FALSE(mutation(&error));
        EXPECT_EQ(error.code(), code);
        EXPECT_EQ(library.presented.last().code(), code);
    }
    EXPECT_TRUE(center->snippets().isEmpty());
    EXPECT_EQ(center->save(), false);

    // Going on with the newer library works, and the first save stamps this build's version.
    ZDFixedOutdatedVersionResponder goOn(true);
    auto kept = library.open(false, &goOn);
    ASSERT_TRUE(kept->dataCenterHasValidLibrary());
    kept->addSnippet(snippet);
    ASSERT_TRUE(kept->save());
    ZDPackageTree written;
    ASSERT_TRUE(ZDPackageTree::read(library.path, &written));
    QString version;
    ASSERT_TRUE(ZDPackageFormat::decodeVersion(written.fileContents(ZDPackageLayout::versionFile), &version));
    EXPECT_EQ(version, QStringLiteral("1.5.0"));
}

TEST(DataCenter, ForcedReloadDropsUnsavedEditsAndFailsWithoutAPackage)
{
    ZDTestLibrary library;
    auto center = library.open();
    center->addSnippet(zdTestSnippet(QStringLiteral("kept")));
    ASSERT_TRUE(center->save());
    center->addSnippet(zdTestSnippet(QStringLiteral("dropped"))); // not written: no tick has run
    ASSERT_TRUE(center->forceReloadFromDisk());
    EXPECT_EQ(center->snippets().size(), 1);

    ASSERT_TRUE(QDir(library.path).removeRecursively());
    writeFile(library.path, "not a package");
    ZDError error;
    EXPECT_FALSE(center->forceReloadFromDisk(&error));
    EXPECT_EQ(error.code(), 135);
    EXPECT_FALSE(center->dataCenterHasValidLibrary());
    EXPECT_TRUE(center->snippets().isEmpty());
}

TEST(DataCenter, TheSnippetCacheServesUnchangedFilesOnly)
{
    ZDTestLibrary library;
    ZDSnippetPtr changed, kept;
    {
        auto center = library.open();
        changed = zdTestSnippet(QStringLiteral("changed"));
        kept = zdTestSnippet(QStringLiteral("kept"));
        center->addSnippetsFromArray({changed, kept});
        ASSERT_TRUE(center->save());
    }
    library.cacheMinimum = 0;
    library.open(); // makes the cache
    const QString cachePath = ZDRecordCache::pathForPackage(library.path);
    QHash<QString, ZDRecordCache::Entry> cache = ZDRecordCache::read(cachePath);
    ASSERT_EQ(cache.size(), 2);

    // A cached entry is used while its file is unchanged: mark the cached copy to see it.
    const QString keptName = kept->UUID() + QStringLiteral(".data");
    QList<QPair<QString, ZDRecordCache::Entry>> entries;
    for (auto it = cache.cbegin(); it != cache.cend(); ++it) {
        if (it.key() == keptName)
            it->snippet->setTitle(QStringLiteral("from the cache"));
        entries.append({it.key(), it.value()});
    }
    ASSERT_TRUE(ZDRecordCache::write(cachePath, entries));
    {
        library.cacheMinimum = -1;
        auto other = library.open();
        ASSERT_TRUE(other->setSnippetTitle(changed->UUID(), QStringLiteral("changed elsewhere"), nullptr));
        ASSERT_TRUE(other->save());
    }
    library.cacheMinimum = 0;
    {
        auto center = library.open();
        center->waitUntilAllOperationsAreFinished(); // the cache is written behind the load
        EXPECT_EQ(center->snippetWithUUID(kept->UUID())->title(), QStringLiteral("from the cache"));
        EXPECT_EQ(center->snippetWithUUID(changed->UUID())->title(), QStringLiteral("changed elsewhere"));
        EXPECT_TRUE(center->snippetWithUUID(changed->UUID())
                        ->isIdentical(ZDRecordCache::read(cachePath)
                                          .value(changed->UUID() + QStringLiteral(".data"))
                                          .snippet.get()));
    }

    // A file rewritten in place keeps its inode (as does a new file that reuses a freed one): its
    // size or times still tell it from the cached version.
    {
        const QString keptPath = library.path + QLatin1Char('/') + ZDPackageLayout::snippetsDirectory +
                                 QLatin1Char('/') + keptName;
        QFile keptFile(keptPath);
        ASSERT_TRUE(keptFile.open(QIODevice::ReadOnly));
        const QByteArray bytes = keptFile.readAll();
        keptFile.close();
        ASSERT_TRUE(keptFile.open(QIODevice::WriteOnly)); // truncates, same inode
        keptFile.write(bytes);
        keptFile.setFileTime(QDateTime::currentDateTimeUtc().addSecs(1), QFileDevice::FileModificationTime);
        keptFile.close();
        EXPECT_EQ(library.open()->snippetWithUUID(kept->UUID())->title(), QStringLiteral("kept"));
    }

    // A damaged cache is ignored.
    QFile file(cachePath);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    file.resize(file.size() / 2);
    file.close();
    EXPECT_TRUE(ZDRecordCache::read(cachePath).isEmpty());
    EXPECT_EQ(library.open()->snippetWithUUID(kept->UUID())->title(), QStringLiteral("kept"));
}

TEST(DataCenter, TreesReadOnDemandWriteWholeElsewhere)
{
    ZDTestLibrary library;
    {
        auto center = library.open();
        populate(*center);
        ASSERT_TRUE(center->save());
    }
    ZDPackageTree eager, lazy;
    ASSERT_TRUE(ZDPackageTree::read(library.path, &eager));
    ASSERT_TRUE(ZDPackageTree::read(library.path, &lazy, nullptr, ZDPackageTree::Contents::OnDemand));
    const ZDPackageTree copy = lazy; // a copy loads on demand too
    EXPECT_EQ(copy.md5String(), eager.md5String());
    const QString elsewhere = library.dir.filePath(QStringLiteral("copy.zandriolibrary"));
    ASSERT_TRUE(lazy.write(elsewhere));
    ZDPackageTree written;
    ASSERT_TRUE(ZDPackageTree::read(elsewhere, &written));
    EXPECT_EQ(written.md5String(), eager.md5String());
}
