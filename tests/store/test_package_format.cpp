#include "ZDPackageFormat.h"
#include "ZDKeyedArchive.h"
#include "ZDStoreErrors.h"

#include <QLocale>

#include <plist/plist.h>

#include <gtest/gtest.h>

TEST(PackageFormat, VersionsCompareAsStrings)
{
    EXPECT_EQ(ZDDatabaseVersion::current().asString(), QStringLiteral("1.5.0"));
    EXPECT_FALSE(ZDDatabaseVersion::isNewerThanCurrent(QStringLiteral("1.10.0")));
    EXPECT_FALSE(ZDDatabaseVersion::isNewerThanCurrent(QStringLiteral("1.5.0")));
    EXPECT_FALSE(ZDDatabaseVersion::isNewerThanCurrent(QStringLiteral("1.4.9")));
    EXPECT_TRUE(ZDDatabaseVersion::isNewerThanCurrent(QStringLiteral("1.6.0")));
    EXPECT_TRUE(ZDDatabaseVersion::isNewerThanCurrent(QStringLiteral("2.0")));
    EXPECT_TRUE(ZDDatabaseVersion::isNewerThanCurrent(QStringLiteral("1.5.0.1")));
}

TEST(PackageFormat, VersionStampIsAKeyedArchiveOfOneEntryAndIsRestampedOnlyWhenNotCurrent)
{
    const QByteArray stamp = ZDPackageFormat::encodeVersion();
    EXPECT_TRUE(stamp.startsWith("bplist00"));
    QVariant root;
    ASSERT_TRUE(ZDKeyedArchive::unarchive(stamp, &root));
    const QVariantMap archived = root.toMap();
    EXPECT_EQ(archived, (QVariantMap{{QStringLiteral("Zandrio"), QStringLiteral("1.5.0")}}));

    QString version;
    EXPECT_FALSE(ZDPackageFormat::decodeVersion(ZDKeyedArchive::archivedData(QStringLiteral("1.5.0")), &version));
    EXPECT_FALSE(ZDPackageFormat::decodeVersion(QByteArray(), &version));

    ZDPackageTree tree;
    tree.setFile(ZDPackageLayout::versionFile, ZDPackageFormat::encodeVersion(QStringLiteral("1.6.0")));
    EXPECT_TRUE(ZDPackageFormat::stampCurrentVersion(tree));
    ASSERT_TRUE(ZDPackageFormat::decodeVersion(tree.fileContents(ZDPackageLayout::versionFile), &version));
    EXPECT_EQ(version, QStringLiteral("1.5.0"));
    EXPECT_FALSE(ZDPackageFormat::stampCurrentVersion(tree));
}

TEST(PackageFormat, WriteStampsAreFreshUpperCaseUuidsAndOnlyCompleteOnesDecode)
{
    const QString first = ZDPackageFormat::makeWriteStamp();
    EXPECT_NE(first, ZDPackageFormat::makeWriteStamp());
    EXPECT_EQ(first.size(), 36);
    EXPECT_EQ(first, first.toUpper());
    const QByteArray bytes = ZDPackageFormat::encodeWriteStamp(first);
    EXPECT_EQ(ZDPackageFormat::decodeWriteStamp(bytes), first);
    for (qsizetype length : {qsizetype(0), qsizetype(8), bytes.size() / 2, bytes.size() - 1})
        EXPECT_TRUE(ZDPackageFormat::decodeWriteStamp(bytes.left(length)).isEmpty()) << length;
}

TEST(PackageFormat, RecordListsKeepEveryBlobAndEmptyFilesAreEmptyLists)
{
    const QList<QByteArray> records{QByteArray("one"), QByteArray(), QByteArray("\0\x01two", 5)};
    QList<QByteArray> decoded;
    ASSERT_TRUE(ZDPackageFormat::decodeRecordList(ZDPackageFormat::encodeRecordList(records), &decoded));
    EXPECT_EQ(decoded, records);
    ASSERT_TRUE(ZDPackageFormat::decodeRecordList(QByteArray(), &decoded));
    EXPECT_TRUE(decoded.isEmpty());
    EXPECT_FALSE(ZDPackageFormat::decodeRecordList("not a list", &decoded));

    // An element that is not a blob is skipped, the rest survive.
    const QByteArray mixed =
        ZDKeyedArchive::archivedData(QVariantList{QByteArray("a"), QStringLiteral("odd"), QByteArray("b")});
    ASSERT_TRUE(ZDPackageFormat::decodeRecordList(mixed, &decoded));
    EXPECT_EQ(decoded, (QList<QByteArray>{"a", "b"}));

    // A bare property-list array of blobs is read too.
    plist_t array = plist_new_array();
    plist_array_append_item(array, plist_new_data("x", 1));
    char *bin = nullptr;
    uint32_t length = 0;
    plist_to_bin(array, &bin, &length);
    const QByteArray plain(bin, qsizetype(length));
    plist_to_bin_free(bin);
    plist_free(array);
    ASSERT_TRUE(ZDPackageFormat::decodeRecordList(plain, &decoded));
    EXPECT_EQ(decoded, (QList<QByteArray>{"x"}));
}

TEST(PackageFormat, ArchivesOfNestedPlainValuesRoundTrip)
{
    const QVariantMap value{{QStringLiteral("list"), QVariantList{QStringLiteral("ä"), QByteArray("z")}},
                            {QStringLiteral("map"), QVariantMap{{QStringLiteral("k"), QStringLiteral("v")}}}};
    QVariant root;
    ASSERT_TRUE(ZDKeyedArchive::unarchive(ZDKeyedArchive::archivedData(value), &root));
    EXPECT_EQ(root, QVariant(value));
    const QStringList uuids{QStringLiteral("A"), QStringLiteral("B")};
    EXPECT_EQ(ZDPackageFormat::decodeDeletionList(ZDPackageFormat::encodeDeletionList(uuids)), uuids);
    EXPECT_TRUE(ZDPackageFormat::decodeDeletionList(QByteArray()).isEmpty());
}

TEST(PackageFormat, ErrorsQuoteTheNameAndCarryTheUnderlyingText)
{
    const QString name = QStringLiteral("old.zandriolibrary");
    EXPECT_EQ(ZDStoreErrors::notALibrary(name).description(),
              QLocale().quoteString(name) + QStringLiteral(" isn’t a valid Zandrio Library file."));
    const ZDError underlying(110, QStringLiteral("Failed to read the library."),
                             QStringLiteral("Try again."));
    const ZDError load = ZDStoreErrors::libraryLoadFailed(underlying);
    EXPECT_EQ(load.code(), 104);
    EXPECT_EQ(load.recoverySuggestion(), QStringLiteral("Failed to read the library. Try again."));
}
