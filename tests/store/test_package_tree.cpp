#include "ZDPackageFormat.h"
#include "ZDPackageTree.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QSet>
#include <QTemporaryDir>

#include <algorithm>

#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace {

ino_t inodeOf(const QString &path)
{
    struct stat info;
    return ::stat(QFile::encodeName(path).constData(), &info) == 0 ? info.st_ino : 0;
}

QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<missing>");
}

// Everything the tree holds, as "path=bytes" lines, for comparing two trees.
QStringList describe(const ZDPackageTree &tree, const QString &path = {})
{
    QStringList lines;
    for (const QString &name : tree.childNames(path)) {
        const QString child = path.isEmpty() ? name : path + QLatin1Char('/') + name;
        if (tree.isDirectory(child))
            lines << child + QStringLiteral("/") << describe(tree, child);
        else
            lines << child + QLatin1Char('=') + QString::fromLatin1(tree.fileContents(child).toHex());
    }
    return lines;
}

ZDPackageTree sampleTree()
{
    ZDPackageTree tree = ZDPackageFormat::emptyPackage();
    tree.setFile(ZDPackageLayout::snippetFilePath(QStringLiteral("A")), QByteArray("first\0snippet", 13));
    tree.setFile(ZDPackageLayout::snippetFilePath(QStringLiteral("B")), "second");
    tree.setFile(ZDPackageLayout::tagsFile, "tags");
    tree.setFile(ZDPackageLayout::identifierFile, ZDPackageFormat::encodeWriteStamp(QStringLiteral("STAMP")));
    return tree;
}

} // namespace

TEST(PackageTree, WrittenTreeReadsBackIdentically)
{
    QTemporaryDir dir;
    const QString package = dir.filePath(QStringLiteral("main.zandriolibrary"));
    ZDPackageTree tree = sampleTree();
    ASSERT_TRUE(tree.write(package));
    EXPECT_FALSE(tree.hasChanges());

    ZDPackageTree read;
    ASSERT_TRUE(ZDPackageTree::read(package, &read));
    EXPECT_EQ(describe(read), describe(tree));
    EXPECT_EQ(read.md5String(), tree.md5String());
    EXPECT_FALSE(read.hasChanges());
    // The empty directories and zero-byte list files of a new library exist on disk.
    EXPECT_TRUE(QFileInfo(package + QStringLiteral("/Attachments")).isDir());
    EXPECT_EQ(QFileInfo(package + QStringLiteral("/Database/folders.data")).size(), 0);
    EXPECT_EQ(QFileInfo(package + QStringLiteral("/Database/smart groups.data")).size(), 0);
}

TEST(PackageTree, WriteBackRewritesOnlyChangedFilesAndRemovesDeletedOnes)
{
    QTemporaryDir dir;
    const QString package = dir.filePath(QStringLiteral("lib"));
    ZDPackageTree tree = sampleTree();
    ASSERT_TRUE(tree.write(package));
    const QString a = package + QStringLiteral("/Database/Snippets/A.data");
    const QString tags = package + QStringLiteral("/Database/tags.data");
    const ino_t aBefore = inodeOf(a);
    const ino_t tagsBefore = inodeOf(tags);

    ZDPackageTree reread;
    ASSERT_TRUE(ZDPackageTree::read(package, &reread));
    reread.setFile(ZDPackageLayout::tagsFile, "new tags");
    EXPECT_TRUE(reread.remove(ZDPackageLayout::snippetFilePath(QStringLiteral("B"))));
    reread.setFile(QStringLiteral("Database/Snippets/C.data"), "third");
    EXPECT_TRUE(reread.hasChanges());
    ASSERT_TRUE(reread.write(package));

    EXPECT_EQ(inodeOf(a), aBefore) << "an unchanged file was rewritten";
    EXPECT_NE(inodeOf(tags), tagsBefore);
    EXPECT_EQ(readFile(tags), "new tags");
    EXPECT_FALSE(QFile::exists(package + QStringLiteral("/Database/Snippets/B.data")));
    EXPECT_EQ(readFile(package + QStringLiteral("/Database/Snippets/C.data")), "third");
    EXPECT_TRUE(QDir(package + QStringLiteral("/Database/Snippets"))
                    .entryList(QDir::Hidden | QDir::Files)
                    .filter(ZDPackageTree::temporaryFilePrefix())
                    .isEmpty());
}

TEST(PackageTree, WritingElsewhereWritesEverythingAndDropsForeignEntries)
{
    QTemporaryDir dir;
    const QString first = dir.filePath(QStringLiteral("first"));
    const QString second = dir.filePath(QStringLiteral("second"));
    ZDPackageTree tree = sampleTree();
    ASSERT_TRUE(tree.write(first));
    QDir().mkpath(second + QStringLiteral("/Database/Snippets"));
    QFile stray(second + QStringLiteral("/Database/Snippets/Stray.data"));
    ASSERT_TRUE(stray.open(QIODevice::WriteOnly));
    stray.close();

    ASSERT_TRUE(tree.write(second));
    ZDPackageTree read;
    ASSERT_TRUE(ZDPackageTree::read(second, &read));
    EXPECT_EQ(describe(read), describe(tree));
}

TEST(PackageTree, ReplacingAFileByADirectoryAndBackIsWritten)
{
    QTemporaryDir dir;
    const QString package = dir.filePath(QStringLiteral("lib"));
    ZDPackageTree tree;
    tree.setFile(QStringLiteral("x"), "file");
    ASSERT_TRUE(tree.write(package));
    tree.setFile(QStringLiteral("x/inner"), "inside");
    ASSERT_TRUE(tree.write(package));
    EXPECT_EQ(readFile(package + QStringLiteral("/x/inner")), "inside");
    tree.remove(QStringLiteral("x"));
    tree.setFile(QStringLiteral("x"), "file again");
    ASSERT_TRUE(tree.write(package));
    EXPECT_EQ(readFile(package + QStringLiteral("/x")), "file again");
}

TEST(PackageTree, ReadingSkipsLeftoversOfAnInterruptedWriteAndFailsOnNonDirectories)
{
    QTemporaryDir dir;
    const QString package = dir.filePath(QStringLiteral("lib"));
    ZDPackageTree tree = sampleTree();
    ASSERT_TRUE(tree.write(package));
    QFile leftover(package + QStringLiteral("/Database/") + ZDPackageTree::temporaryFilePrefix() +
                   QStringLiteral("tags.data-123"));
    ASSERT_TRUE(leftover.open(QIODevice::WriteOnly));
    leftover.write("half");
    leftover.close();

    ZDPackageTree read;
    ASSERT_TRUE(ZDPackageTree::read(package, &read));
    EXPECT_EQ(describe(read), describe(tree));
    // The next write that passes through that directory clears the leftover away.
    read.setFile(QStringLiteral("Database/Snippets/A.data"), "edited");
    ASSERT_TRUE(read.write(package));
    EXPECT_FALSE(leftover.exists());

    ZDError error;
    EXPECT_FALSE(ZDPackageTree::read(package + QStringLiteral("/version.plist"), &read, &error));
    EXPECT_FALSE(error.isNull());
    EXPECT_FALSE(ZDPackageTree::read(dir.filePath(QStringLiteral("absent")), &read));
}

TEST(PackageTree, WriteFailureKeepsTheChangeMarks)
{
    QTemporaryDir dir;
    const QString package = dir.filePath(QStringLiteral("lib"));
    ZDPackageTree tree = sampleTree();
    ASSERT_TRUE(tree.write(package));
    tree.setFile(ZDPackageLayout::tagsFile, "changed");
    const QString unwritable = QStringLiteral("Database/") + QString(300, QLatin1Char('n'));
    tree.setFile(unwritable, "name too long for the file system");
    ZDError error;
    EXPECT_FALSE(tree.write(package, &error));
    EXPECT_FALSE(error.reason().isEmpty());
    EXPECT_TRUE(tree.hasChanges());
    EXPECT_TRUE(QDir(package + QStringLiteral("/Database"))
                    .entryList(QDir::Hidden | QDir::Files)
                    .filter(ZDPackageTree::temporaryFilePrefix())
                    .isEmpty());

    tree.remove(unwritable);
    ASSERT_TRUE(tree.write(package));
    EXPECT_EQ(readFile(package + QStringLiteral("/Database/tags.data")), "changed");
}

TEST(PackageTree, DigestConcatenatesInTheFileManagersNameOrder)
{
    // Case-insensitive, digits by value: "a2" < "A10" < "b" < "Z".
    ZDPackageTree tree;
    tree.setFile(QStringLiteral("Z"), "4");
    tree.setFile(QStringLiteral("b"), "3");
    tree.setFile(QStringLiteral("A10"), "2");
    tree.setFile(QStringLiteral("dir/y"), "6");
    tree.setFile(QStringLiteral("dir/x"), "5");
    tree.setFile(QStringLiteral("a2"), "1");
    EXPECT_EQ(tree.allData(), "123564");
    EXPECT_EQ(tree.md5String(),
              QString::fromLatin1(QCryptographicHash::hash("123564", QCryptographicHash::Md5).toHex()));
    EXPECT_EQ(ZDPackageTree().md5String(), QStringLiteral("d41d8cd98f00b204e9800998ecf8427e"));
    EXPECT_TRUE(
        ZDPackageTree::fileManagerLessThan(QStringLiteral("Snippet 9"), QStringLiteral("snippet 10")));
}

TEST(PackageTree, ListingALargeDirectoryAgreesWithLookingUpEachFile)
{
    // Enough files for the listing to be shared between threads.
    QTemporaryDir dir;
    const QString package = dir.filePath(QStringLiteral("big"));
    ASSERT_TRUE(QDir().mkpath(package + QStringLiteral("/many/sub")));
    QStringList expected;
    for (int index = 0; index < 4200; ++index) {
        const QString name = QStringLiteral("f%1.data").arg(index * 7919 % 4200);
        QFile file(package + QStringLiteral("/many/") + name);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(QByteArray::number(index));
        expected << name;
    }
    ASSERT_EQ(::symlink("f1.data", QFile::encodeName(package + QStringLiteral("/many/link")).constData()), 0);
    std::sort(expected.begin(), expected.end());

    ZDPackageTree tree;
    ASSERT_TRUE(ZDPackageTree::read(package, &tree, nullptr, ZDPackageTree::Contents::OnDemand));
    EXPECT_EQ(tree.childNames(QStringLiteral("many")), expected + QStringList{QStringLiteral("sub")});
    const QList<ZDPackageTree::FileEntry> files = tree.files(QStringLiteral("many"));
    ASSERT_EQ(files.size(), expected.size());
    QSet<quint64> identities;
    for (qsizetype index = 0; index < files.size(); ++index) {
        const QString path = QStringLiteral("many/") + files[index].name;
        ASSERT_EQ(files[index].name, expected[index]);
        ASSERT_EQ(files[index].identity, tree.fileIdentity(path));
        identities.insert(files[index].identity);
        // Read without being kept, and equal to what the tree reads and keeps.
        ASSERT_EQ(tree.readFileContents(path), readFile(package + QLatin1Char('/') + path));
    }
    EXPECT_EQ(identities.size(), files.size());
    EXPECT_FALSE(identities.contains(0));

    // A file set in memory has no identity until it is written.
    tree.setFile(QStringLiteral("many/f1.data"), "new");
    EXPECT_EQ(tree.files(QStringLiteral("many")).at(1).identity, 0u);
    EXPECT_EQ(tree.readFileContents(QStringLiteral("many/f1.data")), QByteArray("new"));
}
