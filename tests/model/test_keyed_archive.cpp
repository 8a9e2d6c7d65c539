#include "ZDCategoryNode.h"
#include "ZDKeyedArchive.h"
#include "ZDModelTestSupport.h"
#include "ZDRecordArchive.h"
#include "ZDSnippet.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRandomGenerator>

namespace {

QByteArray fixture(const char *name)
{
    QFile file(QStringLiteral(ZD_FIXTURES_DIR "/") + QLatin1String(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QDateTime utc(int y, int mo, int d, int h, int mi, int s, int ms = 0)
{
    return QDateTime(QDate(y, mo, d), QTime(h, mi, s, ms), Qt::UTC);
}

// Reads an archive with Python's plistlib, an independent reader of the platform format, and
// reports its envelope and the class chain of the root object.
QJsonObject inspectWithPython(const QByteArray &archive)
{
    const char *script = R"(
import json, plistlib, sys
p = plistlib.loads(sys.stdin.buffer.read())
objs = p["$objects"]
top = p["$top"]["root"].data
root = objs[top]
cls = objs[root["$class"].data]
print(json.dumps({"archiver": p["$archiver"], "version": p["$version"], "null": objs[0],
                  "classname": cls["$classname"], "classes": cls["$classes"],
                  "keys": sorted(k for k in root if k != "$class"), "first": str(objs[top + 1])}))
)";
    QProcess python;
    python.start(QStringLiteral(ZD_PYTHON), {QStringLiteral("-c"), QLatin1String(script)});
    python.write(archive);
    python.closeWriteChannel();
    python.waitForFinished(30000);
    return QJsonDocument::fromJson(python.readAllStandardOutput()).object();
}

} // namespace

TEST(KeyedArchiveTest, ValuesRoundTrip)
{
    QVariantMap map;
    map.insert(QStringLiteral("text"), QStringLiteral("héllo ✓"));
    map.insert(QStringLiteral("empty"), QStringLiteral(""));
    map.insert(QStringLiteral("bytes"), QByteArray("\x00\xff", 2));
    map.insert(QStringLiteral("int"), qlonglong(-42));
    map.insert(QStringLiteral("real"), 2.5);
    map.insert(QStringLiteral("flag"), true);
    map.insert(QStringLiteral("date"), utc(2001, 1, 1, 0, 0, 1, 500));
    map.insert(QStringLiteral("old"), utc(1969, 7, 20, 20, 17, 40));
    map.insert(QStringLiteral("no date"), QVariant());
    map.insert(QStringLiteral("list"), QVariantList{QStringLiteral("a"), QVariant(), QStringLiteral("a")});
    const QVariant object = QVariant::fromValue(ZDArchivedObject::make(QStringLiteral("Thing"), {{QStringLiteral("k"), 1LL}}));
    map.insert(QStringLiteral("object"), object);

    QVariant decoded;
    ZDError error;
    ASSERT_TRUE(ZDKeyedArchive::unarchive(ZDKeyedArchive::archivedData(map), &decoded, &error)) << error.toString().toStdString();
    const QVariantMap back = decoded.toMap();
    EXPECT_FALSE(ZDKeyedArchive::archivedData(QDateTime()).isEmpty());
    QVariant invalidDate = 1;
    ASSERT_TRUE(ZDKeyedArchive::unarchive(ZDKeyedArchive::archivedData(QDateTime()), &invalidDate));
    EXPECT_FALSE(invalidDate.isValid()) << "a missing date is written as $null, not as a date";
    for (auto it = map.cbegin(); it != map.cend(); ++it)
        EXPECT_EQ(back.value(it.key()), it.value()) << it.key().toStdString();
    EXPECT_EQ(back.value("object").value<ZDArchivedObject>().classes, QStringList({"Thing", "NSObject"}));
}

// Field names and class records are shared between objects and between archives while
// reading; each object must still come back with its own class and exactly its own fields.
TEST(KeyedArchiveTest, ObjectsKeepTheirOwnClassesAndFields)
{
    QVariantMap many;
    for (int i = 0; i < 700; ++i) // more distinct names than the reader keeps at once
        many.insert(QStringLiteral("field %1").arg(i), qlonglong(i));
    const QVariantList objects = {
        QVariant::fromValue(ZDArchivedObject::make(QStringLiteral("Wide"), many)),
        QVariant::fromValue(ZDArchivedObject::make(QStringLiteral("Narrow"), {{QStringLiteral("field 1"), QStringLiteral("one")}})),
        QVariant::fromValue(ZDArchivedObject::make(QStringLiteral("Wide"), {{QStringLiteral("field 2"), 2.5}})),
        QVariantList{QStringLiteral("plain list")}};
    for (int pass = 0; pass < 2; ++pass) {
        SCOPED_TRACE(pass);
        QVariant decoded;
        ASSERT_TRUE(ZDKeyedArchive::unarchive(ZDKeyedArchive::archivedData(objects), &decoded));
        const QVariantList back = decoded.toList();
        ASSERT_EQ(back.size(), objects.size());
        for (int i = 0; i < 3; ++i) {
            const auto expected = objects[i].value<ZDArchivedObject>();
            const auto object = back[i].value<ZDArchivedObject>();
            EXPECT_EQ(object.className, expected.className) << i;
            EXPECT_EQ(object.classes, QStringList({expected.className, "NSObject"})) << i;
            EXPECT_EQ(object.fields, expected.fields) << i;
        }
        EXPECT_EQ(back[3], objects[3]);
    }
}

TEST(KeyedArchiveTest, WritesThePlatformEnvelope)
{
    const QJsonObject seen = inspectWithPython(ZDKeyedArchive::archivedData(
        QVariant::fromValue(ZDArchivedObject::make(QStringLiteral("ZDTag"), {{QStringLiteral("k"), QStringLiteral("v")}}))));
    EXPECT_EQ(seen.value("archiver").toString(), "NSKeyedArchiver");
    EXPECT_EQ(seen.value("version").toInt(), 100000);
    EXPECT_EQ(seen.value("null").toString(), "$null");
    EXPECT_EQ(seen.value("classname").toString(), "ZDTag");
    EXPECT_EQ(seen.value("classes").toVariant().toStringList(), QStringList({"ZDTag", "NSObject"}));
}

TEST(KeyedArchiveTest, RefusesHostileArchives)
{
    for (const char *name : {"cycle.archive", "out_of_range.archive", "shared_explosion.archive"}) {
        SCOPED_TRACE(name);
        const QByteArray data = fixture(name);
        ASSERT_FALSE(data.isEmpty());
        ZDError error;
        EXPECT_FALSE(ZDKeyedArchive::unarchive(data, nullptr, &error));
        EXPECT_EQ(error.code(), ZDKeyedArchive::kCorruptArchiveErrorCode);
    }
    EXPECT_FALSE(ZDKeyedArchive::unarchive(QByteArray(), nullptr));
    EXPECT_FALSE(ZDKeyedArchive::unarchive("<?xml version=\"1.0\"?><plist/>", nullptr));
}

TEST(KeyedArchiveTest, DamagedBytesFailCleanly)
{
    const QByteArray good = fixture("snippet_platform.archive");
    for (qsizetype length = 0; length < good.size(); ++length)
        ZDKeyedArchive::unarchive(good.left(length), nullptr);
    QRandomGenerator random(7);
    for (int round = 0; round < 2000; ++round) {
        QByteArray bad = good;
        for (int flips = 0; flips < 3; ++flips)
            bad[random.bounded(int(bad.size()))] = char(random.bounded(256));
        ZDKeyedArchive::unarchive(bad, nullptr);
    }
    SUCCEED();
}

// --- Records -------------------------------------------------------------------------------

using RecordArchiveTest = ModelTest;

TEST_F(RecordArchiveTest, SnippetRoundTripKeepsEveryField)
{
    auto snippet = ZDSnippet::create(QStringLiteral("Title ✓"), QStringLiteral("FOLDER"));
    snippet->setTagUUIDs({QStringLiteral("T2"), QStringLiteral("T1")});
    snippet->setGithubUsername(QStringLiteral("octocat"));
    auto part = snippet->parts().first();
    part->setContent(QStringLiteral("line\nnext é"));
    part->setNote(QStringLiteral("a note"));
    part->setLanguage(registry.languageWithIdentifier(QStringLiteral("PythonLexer")));
    advance(1);
    auto second = ZDSnippetPart::create(QStringLiteral("two"), snippet->UUID());
    snippet->setParts({part, second});

    ZDError error;
    auto back = ZDRecordArchive::unarchiveSnippet(ZDRecordArchive::archivedSnippet(*snippet), &error);
    ASSERT_TRUE(back) << error.toString().toStdString();
    EXPECT_TRUE(back->isIdentical(snippet.get()));
    EXPECT_EQ(back->folderUUID(), "FOLDER");
    EXPECT_EQ(back->githubUsername(), "octocat");
    EXPECT_TRUE(back->gistIdentifier().isNull());
    EXPECT_TRUE(back->githubHTMLURL().isNull());
    EXPECT_EQ(back->dateCreated(), snippet->dateCreated());
    EXPECT_EQ(back->dateModified(), snippet->dateModified());
    ASSERT_EQ(back->partsCount(), 2);
    EXPECT_EQ(back->parts()[0]->language().identifier(), "PythonLexer");
    EXPECT_EQ(back->parts()[1]->dateCreated(), second->dateCreated());
    EXPECT_EQ(back->parts()[1]->snippetUUID(), snippet->UUID());

    const QJsonObject seen = inspectWithPython(ZDRecordArchive::archivedSnippet(*snippet));
    EXPECT_EQ(seen.value("classname").toString(), "ZDSnippet");
    EXPECT_TRUE(seen.value("keys").toVariant().toStringList().contains("com.varnok.Zandrio.Key.SnippetTagUUIDs"));
    EXPECT_EQ(seen.value("first").toString(), "Title ✓") << "fields are written in the records' order, title first";
}

TEST_F(RecordArchiveTest, TagAndNodeTreeRoundTrip)
{
    ZDTag tag(QStringLiteral("Café"));
    auto tagBack = ZDRecordArchive::unarchiveTag(ZDRecordArchive::archivedTag(tag));
    ASSERT_TRUE(tagBack);
    EXPECT_EQ(tagBack->UUID(), tag.UUID());
    EXPECT_EQ(tagBack->title(), "Café");

    auto root = ZDCategoryNode::folderNodeWithTitle(QStringLiteral("root"), {}, QStringLiteral("RubyLexer"));
    root->addChild(ZDCategoryNode::folderNodeWithTitle(QStringLiteral("child")));
    root->children().first()->addChild(ZDCategoryNode::folderNodeWithTitle(QStringLiteral("grandchild")));
    const QByteArray archive = ZDRecordArchive::archivedNode(*root);
    auto back = ZDRecordArchive::unarchiveNode(archive);
    ASSERT_TRUE(back);
    EXPECT_EQ(back->dictionaryRepresentation(), root->dictionaryRepresentation());

    // Children are archived as node objects, not as dictionaries.
    QVariant raw;
    ASSERT_TRUE(ZDKeyedArchive::unarchive(archive, &raw));
    const auto children = raw.value<ZDArchivedObject>().fields.value(QLatin1String(ZDCategoryNodeKey::Children)).toList();
    ASSERT_EQ(children.size(), 1);
    EXPECT_EQ(children.first().value<ZDArchivedObject>().className, "ZDCategoryNode");

    EXPECT_FALSE(ZDRecordArchive::unarchiveSnippet(archive)) << "a node is not a snippet";
}

TEST_F(RecordArchiveTest, ReadsSnippetWrittenByThePlatformArchiver)
{
    ZDError error;
    auto snippet = ZDRecordArchive::unarchiveSnippet(fixture("snippet_platform.archive"), &error);
    ASSERT_TRUE(snippet) << error.toString().toStdString();
    EXPECT_EQ(snippet->title(), "Read a file");
    EXPECT_EQ(snippet->UUID(), "0F8E2C4A-1B3D-4E5F-8A9B-0C1D2E3F4A5B");
    EXPECT_EQ(snippet->tagUUIDs(), QStringList({"TAG-ONE", "TAG-TWO"}));
    EXPECT_TRUE(snippet->gistIdentifier().isNull()) << "$null reads as absent";
    EXPECT_EQ(snippet->githubUsername(), "octocat");
    EXPECT_EQ(snippet->dateModified(), utc(2020, 6, 7, 8, 9, 10, 500));
    ASSERT_EQ(snippet->partsCount(), 2);

    const auto python = snippet->parts()[0];
    EXPECT_EQ(python->snippetUUID(), snippet->UUID());
    EXPECT_EQ(python->note(), "Café notes");
    EXPECT_EQ(python->content(), "print('héllo')\n") << "NSMutableData content";
    EXPECT_EQ(python->language().identifier(), "PythonLexer");
    EXPECT_EQ(python->dateCreated(), utc(2020, 3, 4, 5, 6, 7, 250));

    const auto broken = snippet->parts()[1];
    EXPECT_EQ(broken->note(), "") << "invalid UTF-8 reads as empty";
    EXPECT_EQ(broken->content(), "kept");
    EXPECT_EQ(broken->language().identifier(), "TextLexer") << "unknown language reads as plain text";

    auto sparse = ZDRecordArchive::unarchiveSnippet(fixture("snippet_without_tags.archive"));
    ASSERT_TRUE(sparse);
    EXPECT_TRUE(sparse->tagUUIDs().isEmpty());
    EXPECT_TRUE(sparse->folderUUID().isNull());
    EXPECT_EQ(sparse->parts().first()->content(), "");
}

TEST_F(RecordArchiveTest, ReadsPlatformNodesAndListFiles)
{
    auto folder = ZDRecordArchive::unarchiveNode(fixture("folder_tree.archive"));
    ASSERT_TRUE(folder);
    EXPECT_EQ(folder->defaultLanguageIdentifier(), "MarkdownLexer");
    QStringList titles;
    folder->traverseSubNodesWithBlock([&](const ZDCategoryNodePtr &node, int) { titles << node->title(); });
    EXPECT_EQ(titles, QStringList({"Alpha", "Gamma"})) << "the type-7 node and its subtree are dropped";

    auto smart = ZDRecordArchive::unarchiveNode(fixture("smart_group_dictionary.archive"));
    ASSERT_TRUE(smart);
    EXPECT_TRUE(smart->isSmartGroup());
    EXPECT_EQ(smart->title(), "Recent");
    EXPECT_TRUE(smart->predicateString().contains("172802"));

    QList<QByteArray> blobs;
    ASSERT_TRUE(ZDRecordArchive::unarchiveList(fixture("tags_list.archive"), &blobs));
    QStringList tags;
    for (const QByteArray &blob : blobs) {
        if (auto tag = ZDRecordArchive::unarchiveTag(blob))
            tags << tag->title();
    }
    EXPECT_EQ(tags, QStringList({"Café", "Work"})) << "the unreadable member is skipped";

    ASSERT_TRUE(ZDRecordArchive::unarchiveList(ZDRecordArchive::archivedList(blobs), &blobs));
    EXPECT_EQ(blobs.size(), 3);
    EXPECT_TRUE(ZDRecordArchive::unarchiveList(QByteArray(), &blobs) && blobs.isEmpty());
    EXPECT_FALSE(ZDRecordArchive::unarchiveList(fixture("tag.archive"), &blobs));
}
