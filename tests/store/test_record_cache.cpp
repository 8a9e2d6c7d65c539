#include "ZDStoreTestSupport.h"

#include "ZDLibraryContents.h"
#include "ZDPackageFormat.h"
#include "ZDRecordCache.h"

#include <QDir>
#include <QFile>
#include <QProcess>

#include <gtest/gtest.h>

namespace {

QString field(const QString &value)
{
    return value.isNull() ? QStringLiteral("<null>") : QLatin1Char('"') + value + QLatin1Char('"');
}

QString field(const QDateTime &date)
{
    return date.isValid() ? QString::number(date.toMSecsSinceEpoch()) : QStringLiteral("<invalid>");
}

// Every field of a snippet and its parts, null strings told from empty ones.
QStringList describe(const ZDSnippet &snippet)
{
    QStringList lines{field(snippet.title()),          field(snippet.UUID()),
                      field(snippet.folderUUID()),     snippet.tagUUIDs().join(QLatin1Char(',')),
                      field(snippet.gistIdentifier()), field(snippet.githubUsername()),
                      field(snippet.githubHTMLURL()),  field(snippet.dateCreated()),
                      field(snippet.dateModified())};
    for (const ZDSnippetPartPtr &part : snippet.parts())
        lines << field(part->title()) << field(part->UUID()) << part->language().identifier() << field(part->note())
              << field(part->content()) << field(part->snippetUUID()) << field(part->dateCreated())
              << field(part->dateModified());
    return lines;
}

QStringList describe(const ZDSnippetList &snippets)
{
    QStringList lines;
    for (const ZDSnippetPtr &snippet : snippets)
        lines << describe(*snippet) << QStringLiteral("--");
    return lines;
}

// Snippets with the awkward values: null and empty strings, text beyond Latin-1 (a lone
// surrogate included), invalid dates, parts that name another snippet.
ZDSnippetList awkwardSnippets(ZDLanguageRegistry &registry)
{
    const ZDLanguage python = registry.languageWithIdentifier(QStringLiteral("PythonLexer"));
    const QDateTime date = QDateTime::fromMSecsSinceEpoch(1'700'000'000'123, Qt::UTC);
    const QList<ZDSnippetPartPtr> parts{
        std::make_shared<ZDSnippetPart>(QStringLiteral("Fragment"), QStringLiteral("P1"), python, QStringLiteral(""),
                                        QStringLiteral("print('é')\n"), date, date, QStringLiteral("S1")),
        std::make_shared<ZDSnippetPart>(QString(), QStringLiteral("P2"), registry.plainTextLanguage(),
                                        QStringLiteral("nötë 👋"), QStringLiteral("文字 ") + QChar(0xD800), QDateTime(),
                                        date, QStringLiteral("ELSEWHERE")),
        std::make_shared<ZDSnippetPart>(QStringLiteral("Fragment"), QStringLiteral("P3"), python, QString(), QString(),
                                        date, QDateTime(), QString())};
    return {std::make_shared<ZDSnippet>(QStringLiteral("Grüße 👋"), QStringLiteral("S1"), QStringLiteral("FOLDER"),
                                        QStringList{QStringLiteral("T1"), QStringLiteral(""), QStringLiteral("T1")},
                                        QStringLiteral("gist"), QStringLiteral(""), QString(), parts, date, QDateTime()),
            std::make_shared<ZDSnippet>(QString(), QStringLiteral("S2"), QString(), QStringList{}, QString(), QString(),
                                        QString(), QList<ZDSnippetPartPtr>{}, QDateTime(), date)};
}

QString snippetPath(const ZDTestLibrary &library, const QString &name)
{
    return library.path + QLatin1Char('/') + ZDPackageLayout::snippetsDirectory + QLatin1Char('/') + name;
}

struct Load
{
    ZDLibraryContents contents;
    bool cacheRewritten = false;
};

// Reads the library as the store does, with the cache or without it, and runs the cache update.
Load load(const ZDTestLibrary &library, bool withCache)
{
    ZDPackageTree tree;
    EXPECT_TRUE(ZDPackageTree::read(library.path, &tree, nullptr, ZDPackageTree::Contents::OnDemand));
    Load result;
    result.contents =
        ZDLibraryContents::read(tree, withCache ? ZDRecordCache::pathForPackage(library.path) : QString(), 0);
    if (result.contents.cacheUpdate) {
        result.contents.cacheUpdate();
        result.cacheRewritten = true;
    }
    return result;
}

// Saves the awkward snippets and `count` ordinary ones into the library; empty on failure.
ZDSnippetList saveLibrary(ZDTestLibrary &library, int count)
{
    ZDSnippetList snippets = awkwardSnippets(library.registry);
    for (int index = 0; index < count; ++index)
        snippets << zdTestSnippet(QStringLiteral("snippet %1").arg(index), QStringLiteral("FOLDER"));
    auto center = library.open();
    if (!center->addSnippetsFromArray(snippets) || !center->save())
        return {};
    return snippets;
}

void flipByte(const QString &path, qint64 position)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    ASSERT_TRUE(file.seek(position));
    char byte = 0;
    ASSERT_TRUE(file.getChar(&byte));
    ASSERT_TRUE(file.seek(position));
    ASSERT_TRUE(file.putChar(char(byte ^ 0x20)));
}

} // namespace

TEST(RecordCache, RecordsKeepEveryFieldExactly)
{
    ZDTestLibrary library;
    const ZDSnippetList snippets = awkwardSnippets(library.registry);
    ZDRecordCache::Decoder decoder;
    ZDSnippetList decoded;
    QList<QPair<QString, ZDRecordCache::Entry>> entries;
    QList<QByteArray> records;
    for (const ZDSnippetPtr &snippet : snippets) {
        records << ZDRecordCache::encodeSnippet(*snippet);
        decoded << decoder.decode(records.last().constData(), records.last().size());
        ASSERT_TRUE(decoded.last());
        entries.append({snippet->UUID() + QStringLiteral(".data"), {7, snippet}});
    }
    EXPECT_EQ(describe(decoded), describe(snippets));
    EXPECT_TRUE(decoded.first()->parts().at(0)->note().isEmpty() && !decoded.first()->parts().at(0)->note().isNull());

    // Through a file, and a record cut short or with bytes left over is refused.
    const QString path = library.dir.filePath(QStringLiteral("cache"));
    ASSERT_TRUE(ZDRecordCache::write(path, entries));
    const QHash<QString, ZDRecordCache::Entry> read = ZDRecordCache::read(path);
    ASSERT_EQ(read.size(), 2);
    EXPECT_EQ(describe(*read.value(QStringLiteral("S1.data")).snippet), describe(*snippets.first()));
    EXPECT_EQ(read.value(QStringLiteral("S2.data")).identity, 7u);
    for (qsizetype size = 0; size < records.first().size(); ++size)
        ASSERT_FALSE(decoder.decode(records.first().constData(), size)) << size;
    const QByteArray longer = records.first() + QByteArray(1, '\0');
    EXPECT_FALSE(decoder.decode(longer.constData(), longer.size()));
}

TEST(RecordCache, DamagedFilesAreRefusedWholeAndDamagedRecordsAlone)
{
    ZDTestLibrary library;
    const ZDSnippetList snippets = awkwardSnippets(library.registry);
    const QString path = library.dir.filePath(QStringLiteral("cache"));
    ASSERT_TRUE(ZDRecordCache::write(path, {{QStringLiteral("b"), {2, snippets[0]}},
                                            {QStringLiteral("a"), {1, snippets[1]}},
                                            {QStringLiteral("unwritten"), {0, snippets[1]}}}));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray bytes = file.readAll();
    const auto image = ZDRecordCache::Image::fromBytes(bytes);
    ASSERT_EQ(image->size(), 2);
    EXPECT_EQ(image->name(0), QStringLiteral("a")); // in name order
    EXPECT_EQ(image->identity(1), 2u);

    // Cut anywhere, the file is not taken at all.
    for (qsizetype size = 0; size < bytes.size(); ++size)
        ASSERT_EQ(ZDRecordCache::Image::fromBytes(bytes.left(size))->size(), 0) << size;
    // A changed byte in the header or index refuses the file; in a record, that record only.
    const qsizetype recordsStart = bytes.size() - ZDRecordCache::encodeSnippet(*snippets[0]).size() -
                                   ZDRecordCache::encodeSnippet(*snippets[1]).size();
    for (qsizetype position = 0; position < bytes.size(); ++position) {
        QByteArray damaged = bytes;
        damaged[position] = char(damaged[position] ^ 0x01);
        const auto other = ZDRecordCache::Image::fromBytes(damaged);
        if (position < recordsStart) {
            ASSERT_EQ(other->size(), 0) << position;
            continue;
        }
        ASSERT_EQ(other->size(), 2);
        const bool inFirst = position < recordsStart + ZDRecordCache::encodeSnippet(*snippets[1]).size();
        ASSERT_EQ(other->checkedRecord(0).isEmpty(), inFirst) << position;
        ASSERT_EQ(other->checkedRecord(1).isEmpty(), !inFirst) << position;
    }
}

TEST(RecordCache, LoadingWithTheCacheGivesWhatTheFilesGive)
{
    ZDTestLibrary library;
    const ZDSnippetList snippets = saveLibrary(library, 40);
    ASSERT_FALSE(snippets.isEmpty());
    QFile::copy(snippetPath(library, snippets[2]->UUID() + QStringLiteral(".data")),
                snippetPath(library, QStringLiteral("COPY.data"))); // two files, one snippet
    QFile broken(snippetPath(library, QStringLiteral("BROKEN.data")));
    ASSERT_TRUE(broken.open(QIODevice::WriteOnly));
    broken.write("garbage");
    broken.close();

    const auto expectSameAsFiles = [&](const Load &loaded) {
        const Load reference = load(library, false);
        EXPECT_EQ(describe(loaded.contents.snippets), describe(reference.contents.snippets));
        EXPECT_EQ(loaded.contents.unreadableRecords, reference.contents.unreadableRecords);
    };
    const QString cachePath = ZDRecordCache::pathForPackage(library.path);
    const Load first = load(library, true);
    EXPECT_TRUE(first.cacheRewritten);
    expectSameAsFiles(first);
    ASSERT_EQ(ZDRecordCache::Image::read(cachePath)->size(), snippets.size() + 1);
    const Load second = load(library, true);
    EXPECT_FALSE(second.cacheRewritten);
    expectSameAsFiles(second);

    // A file written by someone else is read from the package, and the cache follows.
    {
        auto other = library.open();
        ASSERT_TRUE(
            other->setSnippetTitle(snippets[5]->UUID(), QStringLiteral("changed elsewhere"), nullptr));
        ASSERT_TRUE(other->removeSnippets({snippets[6]->UUID()}, nullptr));
        ASSERT_TRUE(other->save());
    }
    const Load edited = load(library, true);
    EXPECT_TRUE(edited.cacheRewritten);
    expectSameAsFiles(edited);
    EXPECT_FALSE(load(library, true).cacheRewritten);

    // A damaged record is read from its file instead.
    QFile cacheFile(cachePath);
    flipByte(cachePath, cacheFile.size() - 3);
    const Load repaired = load(library, true);
    EXPECT_TRUE(repaired.cacheRewritten);
    expectSameAsFiles(repaired);

    // A copy of the library has other inodes: the cache of the original serves none of it.
    ZDTestLibrary copy;
    ASSERT_EQ(QProcess::execute(QStringLiteral("cp"), {QStringLiteral("-a"), library.path, copy.path}), 0);
    const QString copyCache = ZDRecordCache::pathForPackage(copy.path);
    ASSERT_TRUE(QDir().mkpath(QFileInfo(copyCache).path()));
    QFile::remove(copyCache);
    ASSERT_TRUE(QFile::copy(cachePath, copyCache));
    {
        // Marked, so that a snippet served from the wrong cache would show.
        QHash<QString, ZDRecordCache::Entry> entries = ZDRecordCache::read(copyCache);
        QList<QPair<QString, ZDRecordCache::Entry>> marked;
        for (auto it = entries.cbegin(); it != entries.cend(); ++it) {
            it->snippet->setTitle(QStringLiteral("from the cache"));
            marked.append({it.key(), it.value()});
        }
        ASSERT_TRUE(ZDRecordCache::write(copyCache, marked));
    }
    ZDPackageTree copyTree;
    ASSERT_TRUE(ZDPackageTree::read(copy.path, &copyTree, nullptr, ZDPackageTree::Contents::OnDemand));
    const ZDLibraryContents fromCopy = ZDLibraryContents::read(copyTree, copyCache, 0);
    EXPECT_TRUE(fromCopy.cacheUpdate);
    EXPECT_EQ(describe(fromCopy.snippets), describe(load(library, false).contents.snippets));
}

TEST(RecordCache, PartsReadTheirTextsInPlaceAndOutliveTheCacheFile)
{
    ZDTestLibrary library;
    const ZDSnippetList snippets = saveLibrary(library, 300);
    ASSERT_FALSE(snippets.isEmpty());
    const QString cachePath = ZDRecordCache::pathForPackage(library.path);
    ASSERT_TRUE(load(library, true).cacheRewritten);
    const QStringList reference = describe(load(library, false).contents.snippets);

    // Decoding starts before the package is listed, as the store does it.
    ZDLibraryContents contents;
    {
        ZDRecordCache::Preload preload(cachePath);
        ZDPackageTree tree;
        ASSERT_TRUE(ZDPackageTree::read(library.path, &tree, nullptr, ZDPackageTree::Contents::OnDemand));
        contents = ZDLibraryContents::read(tree, cachePath, 0, &preload);
    }
    EXPECT_FALSE(contents.cacheUpdate);
    ASSERT_EQ(describe(contents.snippets), reference);
    qsizetype borrowed = 0;
    for (const ZDSnippetPtr &snippet : std::as_const(contents.snippets)) {
        for (const ZDSnippetPartPtr &part : snippet->parts())
            borrowed += part->contentText().isBorrowed();
    }
    EXPECT_GE(borrowed, 300);

    // The cache file replaced, then removed: the texts read from it stay, and encode as before.
    ASSERT_TRUE(ZDRecordCache::write(cachePath, {}));
    ASSERT_TRUE(QFile::remove(cachePath));
    EXPECT_EQ(describe(contents.snippets), reference);
    const ZDSnippetList fromFiles = load(library, false).contents.snippets;
    for (qsizetype index = 0; index < fromFiles.size(); ++index)
        ASSERT_EQ(ZDRecordCache::encodeSnippet(*contents.snippets[index]),
                  ZDRecordCache::encodeSnippet(*fromFiles[index]));

    // Without a cache, a preload has nothing, and one dropped unfinished stops.
    ZDRecordCache::Preload missing(cachePath);
    EXPECT_EQ(missing.finish()->size(), 0);
    ASSERT_TRUE(load(library, true).cacheRewritten);
    for (int round = 0; round < 20; ++round)
        ZDRecordCache::Preload dropped(cachePath);
}
