#include "ZDOutdatedVersionResponder.h"
#include "ZDPackageFormat.h"
#include "ZDPackageStorage.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

class CountingResponder : public ZDOutdatedVersionResponder
{
public:
    explicit CountingResponder(bool answer) : m_answer(answer) {}
    bool continueWithNewerLibrary(const QString &packageVersion, const QString &) override
    {
        ++asked;
        lastVersion = packageVersion;
        return m_answer;
    }
    int asked = 0;
    QString lastVersion;

private:
    bool m_answer;
};

QString writePackageWithVersion(const QTemporaryDir &dir, const QString &version)
{
    const QString path = dir.filePath(QStringLiteral("lib.zandriolibrary"));
    ZDPackageTree tree = ZDPackageFormat::emptyPackage();
    tree.setFile(ZDPackageLayout::versionFile, ZDPackageFormat::encodeVersion(version));
    EXPECT_TRUE(tree.write(path));
    return path;
}

} // namespace

TEST(PackageStorage, MissingPackageReadsAsEmptyAndFirstSaveWritesTheNewLayout)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("main.zandriolibrary"));
    ZDPackageTree tree;
    bool warned = false;
    QString stamp = QStringLiteral("unset");
    ASSERT_TRUE(ZDPackageStorage::readPackage(path, &tree, nullptr, &warned, &stamp));
    EXPECT_TRUE(stamp.isEmpty());
    EXPECT_FALSE(QFile::exists(path)) << "reading must not create the package";

    ZDWriteStampRegister stamps;
    ASSERT_TRUE(ZDPackageStorage::writePackage(&tree, path, stamps));
    const QString first = stamps.stamp();
    EXPECT_EQ(ZDPackageFormat::readWriteStamp(path), first);
    EXPECT_TRUE(QDir(path + QStringLiteral("/Attachments")).isEmpty());
    EXPECT_EQ(QDir(path + QStringLiteral("/Database")).entryList(QDir::Files).size(), 5);
    EXPECT_TRUE(ZDPackageStorage::validatePackage(path, true));

    // Saving again without changes still gives a fresh stamp.
    ASSERT_TRUE(ZDPackageStorage::writePackage(&tree, path, stamps));
    EXPECT_NE(ZDPackageFormat::readWriteStamp(path), first);
}

TEST(PackageStorage, NewerLibraryAsksOnceAndIsRestampedWhenKept)
{
    QTemporaryDir dir;
    const QString path = writePackageWithVersion(dir, QStringLiteral("1.6.0"));
    ZDPackageTree tree;
    bool warned = false;
    CountingResponder refuse(false);
    ZDError error;
    EXPECT_FALSE(ZDPackageStorage::readPackage(path, &tree, &refuse, &warned, nullptr, &error));
    EXPECT_EQ(error.code(), 126);
    EXPECT_TRUE(warned);
    EXPECT_EQ(refuse.lastVersion, QStringLiteral("1.6.0"));

    CountingResponder accept(true);
    warned = false;
    ASSERT_TRUE(ZDPackageStorage::readPackage(path, &tree, &accept, &warned));
    ASSERT_TRUE(ZDPackageStorage::readPackage(path, &tree, &accept, &warned));
    EXPECT_EQ(accept.asked, 1) << "warned once per run";

    ZDWriteStampRegister stamps;
    ASSERT_TRUE(ZDPackageStorage::writePackage(&tree, path, stamps));
    QFile file(path + QStringLiteral("/version.plist"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    QString version;
    ASSERT_TRUE(ZDPackageFormat::decodeVersion(file.readAll(), &version));
    EXPECT_EQ(version, QStringLiteral("1.5.0"));

    // 1.10.0 orders before 1.5.0 and is not a newer library.
    const QString older = writePackageWithVersion(dir, QStringLiteral("1.10.0"));
    CountingResponder unused(false);
    warned = false;
    EXPECT_TRUE(ZDPackageStorage::readPackage(older, &tree, &unused, &warned));
    EXPECT_EQ(unused.asked, 0);
}

TEST(PackageStorage, ReadAndWriteFailuresCarryTheirCodes)
{
    QTemporaryDir dir;
    ZDPackageTree tree;
    bool warned = false;
    ZDError error;
    EXPECT_FALSE(ZDPackageStorage::readPackage(QString(), &tree, nullptr, &warned, nullptr, &error));
    EXPECT_EQ(error.code(), 112);
    QFile plain(dir.filePath(QStringLiteral("file")));
    ASSERT_TRUE(plain.open(QIODevice::WriteOnly));
    plain.close();
    EXPECT_FALSE(ZDPackageStorage::readPackage(plain.fileName(), &tree, nullptr, &warned, nullptr, &error));
    EXPECT_EQ(error.code(), 110);

    ZDWriteStampRegister stamps;
    EXPECT_FALSE(ZDPackageStorage::writePackage(nullptr, dir.path(), stamps, {}, &error));
    EXPECT_EQ(error.code(), 113);
    EXPECT_FALSE(ZDPackageStorage::writePackage(&tree, QString(), stamps, {}, &error));
    EXPECT_EQ(error.code(), 124);
    EXPECT_FALSE(
        ZDPackageStorage::writePackage(&tree, plain.fileName() + QStringLiteral("/lib"), stamps, {}, &error));
    EXPECT_EQ(error.code(), 141);
    EXPECT_EQ(error.information().value(QStringLiteral("URL")).toString(),
              plain.fileName() + QStringLiteral("/lib"));
}

TEST(PackageStorage, ForeignStampOnDiskIsReconciledBeforeWriting)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("lib"));
    ZDWriteStampRegister ours, theirs;
    ZDPackageTree mine = ZDPackageFormat::emptyPackage();
    ASSERT_TRUE(ZDPackageStorage::writePackage(&mine, path, ours));
    ZDPackageTree other;
    ASSERT_TRUE(ZDPackageTree::read(path, &other));
    other.setFile(ZDPackageLayout::snippetFilePath(QStringLiteral("THEIRS")), "theirs");
    ASSERT_TRUE(ZDPackageStorage::writePackage(&other, path, theirs));

    mine.setFile(ZDPackageLayout::snippetFilePath(QStringLiteral("MINE")), "mine");
    int calls = 0;
    const auto reconcile = [&](ZDPackageTree &tree, ZDPackageTree &&onDisk, const QString &diskStamp,
                               ZDError *) {
        ++calls;
        EXPECT_EQ(diskStamp, theirs.stamp());
        onDisk.setFile(ZDPackageLayout::snippetFilePath(QStringLiteral("MINE")), "mine");
        tree = std::move(onDisk);
        return true;
    };
    ASSERT_TRUE(ZDPackageStorage::writePackage(&mine, path, ours, reconcile));
    EXPECT_EQ(calls, 1);
    ZDPackageTree result;
    ASSERT_TRUE(ZDPackageTree::read(path, &result));
    EXPECT_TRUE(result.isFile(ZDPackageLayout::snippetFilePath(QStringLiteral("THEIRS"))));
    EXPECT_TRUE(result.isFile(ZDPackageLayout::snippetFilePath(QStringLiteral("MINE"))));

    // Our own stamp on disk needs no reconciling; a refusal stops the write.
    ASSERT_TRUE(ZDPackageStorage::writePackage(&mine, path, ours, reconcile));
    EXPECT_EQ(calls, 1);
    ZDWriteStampRegister stale;
    ZDError error;
    EXPECT_FALSE(ZDPackageStorage::writePackage(
        &mine, path, stale,
        [](ZDPackageTree &, ZDPackageTree &&, const QString &, ZDError *) { return false; }, &error));
    EXPECT_EQ(error.code(), 141);

    // A failed write takes its stamp back: the disk still carries the previous one.
    const QString before = ours.stamp();
    mine.setFile(QStringLiteral("Database/") + QString(300, QLatin1Char('n')), "too long a name");
    EXPECT_FALSE(ZDPackageStorage::writePackage(&mine, path, ours, {}, &error));
    EXPECT_EQ(ours.stamp(), before);
    EXPECT_EQ(ZDPackageFormat::readWriteStamp(path), before);
}

TEST(PackageStorage, ValidationReportsTheFirstProblemInOrder)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("check.zandriolibrary"));
    ZDPackageTree tree = ZDPackageFormat::emptyPackage();
    ASSERT_TRUE(tree.write(path));
    ZDError error;
    const auto codeAfter = [&](const std::function<void()> &damage) {
        damage();
        error = ZDError();
        ZDPackageStorage::validatePackage(path, true, &error);
        return error.code();
    };

    EXPECT_EQ(codeAfter([] {}), 0);
    EXPECT_EQ(codeAfter([&] { QDir(path + QStringLiteral("/Database/Snippets")).removeRecursively(); }), 149);
    EXPECT_EQ(codeAfter([&] { QFile::remove(path + QStringLiteral("/Database/shortcuts.data")); }), 131);
    EXPECT_EQ(codeAfter([&] { QDir(path + QStringLiteral("/Database")).removeRecursively(); }), 125);
    EXPECT_EQ(codeAfter([&] {
                  tree.setFile(ZDPackageLayout::versionFile,
                               ZDPackageFormat::encodeVersion(QStringLiteral("2.0")));
                  tree.write(path);
              }),
              126);
    EXPECT_EQ(codeAfter([&] {
                  tree.setFile(ZDPackageLayout::versionFile, "garbage");
                  tree.write(path);
              }),
              123);
    EXPECT_TRUE(ZDPackageStorage::validatePackage(path, false)) << "the check is off";
    EXPECT_EQ(codeAfter([&] {
                  QDir(path).removeRecursively();
                  QFile file(path);
                  file.open(QIODevice::WriteOnly);
              }),
              121);
    EXPECT_EQ(codeAfter([&] { QFile::remove(path); }), 119);
}
