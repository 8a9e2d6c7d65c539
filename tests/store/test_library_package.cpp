// The package side of the store on its own: edits handed in as paths and tree edits, records
// handed back as read, and the write that keeps both this process's and another one's changes.

#include "ZDStoreTestSupport.h"

#include "ZDLibraryContents.h"
#include "ZDLibraryPackage.h"
#include "ZDPackageFormat.h"
#include "ZDPackageStorage.h"
#include "ZDRecordArchive.h"
#include "ZDWriteScheduler.h"

#include <set>
#include <string>

#include <gtest/gtest.h>

namespace {

std::unique_ptr<ZDLibraryPackage> openPackage(const ZDTestLibrary &library)
{
    ZDLibraryPackage::Options options;
    options.packagePath = library.path;
    options.writeTimer = std::make_unique<ZDManualWriteTimer>();
    options.recordCacheMinimumSnippets = -1;
    return std::make_unique<ZDLibraryPackage>(std::move(options));
}

void put(ZDLibraryPackage &package, const ZDSnippetPtr &snippet)
{
    const QString path = ZDPackageLayout::snippetFilePath(snippet->UUID());
    const QByteArray bytes = ZDRecordArchive::archivedSnippet(*snippet);
    package.enqueueEdit({path}, [path, bytes](ZDPackageTree &tree) { tree.setFile(path, bytes); });
}

// The titles of the snippets, which the tests keep unique.
std::set<std::string> titlesOf(const ZDLibraryContents &contents)
{
    std::set<std::string> titles;
    for (const ZDSnippetPtr &snippet : contents.snippets)
        titles.insert(snippet->title().toStdString());
    return titles;
}

ZDLibraryContents readFromDisk(const QString &path)
{
    ZDPackageTree tree;
    EXPECT_TRUE(ZDPackageTree::read(path, &tree));
    return ZDLibraryContents::read(tree);
}

// Another process: reads the package, lets `edit` change it and writes it with its own stamp.
QString writeAsAnotherProcess(const QString &path, const std::function<void(ZDPackageTree &)> &edit)
{
    ZDPackageTree tree;
    bool warned = true;
    QString stamp;
    EXPECT_TRUE(ZDPackageStorage::readPackage(path, &tree, nullptr, &warned, &stamp));
    edit(tree);
    ZDWriteStampRegister stamps;
    stamps.setStamp(stamp);
    EXPECT_TRUE(ZDPackageStorage::writePackage(&tree, path, stamps));
    return stamps.stamp();
}

} // namespace

TEST(LibraryPackage, AWriteAfterOneEditRewritesOnlyThatFile)
{
    ZDTestLibrary library;
    auto package = openPackage(library);
    ZDLibraryContents contents;
    ASSERT_TRUE(package->load(&contents));
    ZDSnippetList snippets;
    for (int index = 0; index < 40; ++index) {
        snippets << zdTestSnippet(QString::number(index));
        put(*package, snippets.last());
    }
    ASSERT_TRUE(package->save());
    ZDPackageTree before;
    ASSERT_TRUE(ZDPackageTree::read(library.path, &before, nullptr, ZDPackageTree::Contents::OnDemand));

    snippets[7]->setTitle(QStringLiteral("changed"));
    put(*package, snippets[7]);
    ASSERT_TRUE(package->save());
    ZDPackageTree after;
    ASSERT_TRUE(ZDPackageTree::read(library.path, &after, nullptr, ZDPackageTree::Contents::OnDemand));
    for (const ZDSnippetPtr &snippet : snippets) {
        const QString path = ZDPackageLayout::snippetFilePath(snippet->UUID());
        if (snippet == snippets[7])
            EXPECT_NE(after.fileIdentity(path), before.fileIdentity(path));
        else
            EXPECT_EQ(after.fileIdentity(path), before.fileIdentity(path)) << qPrintable(snippet->title());
    }
    EXPECT_EQ(ZDPackageFormat::readWriteStamp(library.path), package->lastWriteUUID());
}

TEST(LibraryPackage, UnwrittenEditsGoOnTopOfAnotherProcessesWrite)
{
    ZDTestLibrary library;
    auto package = openPackage(library);
    ZDLibraryContents contents;
    ASSERT_TRUE(package->load(&contents));
    const ZDSnippetPtr kept = zdTestSnippet(QStringLiteral("kept"));
    const ZDSnippetPtr removed = zdTestSnippet(QStringLiteral("removed"));
    put(*package, kept);
    put(*package, removed);
    ASSERT_TRUE(package->save());

    // The other process adds a snippet and rewrites the one this process is about to remove.
    const ZDSnippetPtr theirs = zdTestSnippet(QStringLiteral("theirs"));
    removed->setTitle(QStringLiteral("renamed elsewhere"));
    writeAsAnotherProcess(library.path, [&](ZDPackageTree &tree) {
        for (const ZDSnippetPtr &snippet : {theirs, removed})
            tree.setFile(ZDPackageLayout::snippetFilePath(snippet->UUID()),
                         ZDRecordArchive::archivedSnippet(*snippet));
    });
    const ZDSnippetPtr mine = zdTestSnippet(QStringLiteral("mine"));
    put(*package, mine);
    const QString removedPath = ZDPackageLayout::snippetFilePath(removed->UUID());
    package->enqueueEdit({removedPath}, [removedPath](ZDPackageTree &tree) { tree.remove(removedPath); });

    int tookIn = 0;
    QObject::connect(
        package.get(), &ZDLibraryPackage::writeFinished,
        [&tookIn](bool, const ZDError &, bool tookInOtherWrites) { tookIn += tookInOtherWrites; });
    ASSERT_TRUE(package->save());
    QCoreApplication::processEvents();
    EXPECT_EQ(tookIn, 1);
    const std::set<std::string> expected{"kept", "theirs", "mine"};
    EXPECT_EQ(titlesOf(readFromDisk(library.path)), expected);
    ASSERT_TRUE(package->readCurrentContents(&contents));
    EXPECT_EQ(titlesOf(contents), expected);
}

TEST(LibraryPackage, TakingInTheLatestKeepsUnwrittenEditsAndReloadingDropsThem)
{
    ZDTestLibrary library;
    auto package = openPackage(library);
    ZDLibraryContents contents;
    ASSERT_TRUE(package->load(&contents));
    const ZDSnippetPtr kept = zdTestSnippet(QStringLiteral("kept"));
    put(*package, kept);
    ASSERT_TRUE(package->save());

    const ZDSnippetPtr theirs = zdTestSnippet(QStringLiteral("theirs"));
    const QString theirStamp = writeAsAnotherProcess(library.path, [&](ZDPackageTree &tree) {
        tree.setFile(ZDPackageLayout::snippetFilePath(theirs->UUID()),
                     ZDRecordArchive::archivedSnippet(*theirs));
    });
    const ZDSnippetPtr mine = zdTestSnippet(QStringLiteral("mine"));
    put(*package, mine); // waits for the next tick

    ASSERT_TRUE(package->takeInLatest());
    EXPECT_EQ(package->lastWriteUUID(), theirStamp);
    ASSERT_TRUE(package->readCurrentContents(&contents));
    EXPECT_EQ(titlesOf(contents), (std::set<std::string>{"kept", "theirs", "mine"}));

    ASSERT_TRUE(package->reload(&contents));
    EXPECT_EQ(titlesOf(contents), (std::set<std::string>{"kept", "theirs"}));
    package->writeScheduler().enqueueWriteOperationRegardless();
    package->writeScheduler().waitUntilAllOperationsAreFinished();
    EXPECT_EQ(titlesOf(readFromDisk(library.path)), (std::set<std::string>{"kept", "theirs"}));
}
