#include "ZDCategoryNode.h"
#include "ZDModelTestSupport.h"
#include "ZDSnippet.h"
#include "ZDTag.h"
#include "ZDTextFolding.h"

#include <QRegularExpression>

namespace {

ZDSnippetPartPtr partTitled(const QString &title, const QString &language = QStringLiteral("TextLexer"))
{
    auto part = ZDSnippetPart::create(title, QStringLiteral("S"));
    part->setLanguage(ZDLanguageRegistry::shared()->languageWithIdentifier(language));
    return part;
}

ZDSnippetPtr snippetWithParts(const QString &title, const QList<ZDSnippetPartPtr> &parts)
{
    auto snippet = ZDSnippet::create(title);
    snippet->setParts(parts);
    return snippet;
}

} // namespace

using SnippetTest = ModelTest;

TEST_F(SnippetTest, NewSnippetHasOneFragmentLinkedByUUIDInUncategorized)
{
    auto snippet = std::make_shared<ZDSnippet>();
    EXPECT_EQ(snippet->title(), "untitled snippet");
    EXPECT_EQ(snippet->folderUUID(), "com.varnok.Zandrio.UUID.Predefined.Uncategorized");
    EXPECT_TRUE(QRegularExpression("^[0-9A-F]{8}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{12}$")
                    .match(snippet->UUID()).hasMatch());
    ASSERT_EQ(snippet->partsCount(), 1);
    const auto part = snippet->parts().first();
    EXPECT_EQ(part->title(), "Fragment");
    EXPECT_EQ(part->snippetUUID(), snippet->UUID());
    EXPECT_EQ(part->language().identifier(), "TextLexer");
    EXPECT_TRUE(part->note().isEmpty() && !part->note().isNull());
    EXPECT_TRUE(snippet->tagUUIDs().isEmpty());
    EXPECT_TRUE(snippet->gistIdentifier().isNull());
    EXPECT_EQ(snippet->isGist(), "No");
    EXPECT_EQ(snippet->dateCreated(), now);
    EXPECT_EQ(snippet->dateModified(), now);
    EXPECT_NE(ZDSnippet::create()->UUID(), snippet->UUID());
}

TEST_F(SnippetTest, OnlyRealEditsStampTheModificationDate)
{
    auto snippet = ZDSnippet::create(QStringLiteral("A"));
    const QDateTime created = now;

    advance(1000);
    snippet->setTitle(QStringLiteral("A"));
    EXPECT_EQ(snippet->dateModified(), created) << "same title is no change";
    snippet->setFolderUUID(QStringLiteral("OTHER"));
    snippet->setGistIdentifier(QStringLiteral("gist"));
    snippet->setGithubUsername(QStringLiteral("octocat"));
    snippet->setGithubHTMLURL(QStringLiteral("https://gist.github.com/x"));
    EXPECT_EQ(snippet->dateModified(), created) << "moving and Gist links are not modifications";
    EXPECT_EQ(snippet->isGist(), "Yes");

    snippet->setTagUUIDs(snippet->tagUUIDs());
    EXPECT_EQ(snippet->dateModified(), now) << "tag UUIDs stamp even when unchanged";
    advance(1000);
    snippet->setParts(snippet->parts());
    EXPECT_EQ(snippet->dateModified(), now);
    advance(1000);
    snippet->setTitle(QStringLiteral("B"));
    EXPECT_EQ(snippet->dateModified(), now);
}

TEST_F(SnippetTest, PartSettersStampOnlyOnChangeAndCanonicalDateFollowsParts)
{
    auto snippet = ZDSnippet::create();
    auto part = snippet->parts().first();
    const QDateTime created = now;
    advance(5000);
    part->setTitle(part->title());
    part->setNote(QString());
    part->setContent(QStringLiteral(""));
    part->setLanguage(ZDLanguageRegistry::shared()->plainTextLanguage());
    EXPECT_EQ(part->dateModified(), created);
    EXPECT_EQ(snippet->canonicalDateModified(), created);

    part->setLanguage(ZDLanguageRegistry::shared()->languageWithIdentifier(QStringLiteral("PythonLexer")));
    EXPECT_EQ(part->dateModified(), now);
    advance(5000);
    part->setContent(QStringLiteral("print(1)"));
    EXPECT_EQ(part->dateModified(), now);
    EXPECT_EQ(snippet->dateModified(), created);
    EXPECT_EQ(snippet->canonicalDateModified(), now) << "an edit inside a part modifies the snippet";
}

// The list shows the time of a snippet modified today and the date of an older one; hours and
// minutes only, also in the C locale, whose short time format has seconds.
TEST_F(SnippetTest, ListDatesAreTheTimeTodayAndTheDateBefore)
{
    const QLocale previous;
    QLocale::setDefault(QLocale::c());
    auto snippet = ZDSnippet::create();
    const QDateTime local = now.toLocalTime();
    EXPECT_EQ(snippet->localizedDate(), local.toString(QStringLiteral("HH:mm")));
    EXPECT_TRUE(snippet->localizedFullDate().endsWith(local.toString(QStringLiteral(" HH:mm"))));
    advance(qint64(3) * 24 * 3600 * 1000);
    EXPECT_EQ(snippet->localizedDate(), QLocale::c().toString(local.date(), QLocale::ShortFormat));
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedKingdom));
    EXPECT_EQ(snippet->localizedDate(), local.date().toString(QStringLiteral("dd/MM/yyyy")));
    QLocale::setDefault(previous);
}

TEST_F(SnippetTest, EqualityIsIdentityWhileIdenticalComparesContent)
{
    auto a = ZDSnippet::create(QStringLiteral("One"));
    auto copy = [](const ZDSnippetPtr &s, const QString &title, const QStringList &tags,
                   const QList<ZDSnippetPartPtr> &parts) {
        return std::make_shared<ZDSnippet>(title, s->UUID(), QStringLiteral("elsewhere"), tags, QStringLiteral("g"),
                                           QString(), QString(), parts, QDateTime(), QDateTime());
    };
    auto samePart = [](const ZDSnippetPartPtr &p, const QString &content) {
        return std::make_shared<ZDSnippetPart>(p->title(), p->UUID(), p->language(), p->note(), content,
                                               QDateTime(), QDateTime(), p->snippetUUID());
    };
    const auto part = a->parts().first();

    auto b = copy(a, QStringLiteral("One"), {}, {samePart(part, part->content())});
    EXPECT_TRUE(a->isEqual(b.get()));
    EXPECT_TRUE(a->isIdentical(b.get())) << "folder, dates and Gist fields are not compared";

    EXPECT_FALSE(a->isIdentical(copy(a, QStringLiteral("Two"), {}, b->parts()).get()));
    EXPECT_TRUE(a->isEqual(copy(a, QStringLiteral("Two"), {}, b->parts()).get()));
    EXPECT_FALSE(a->isIdentical(copy(a, QStringLiteral("One"), {}, {samePart(part, QStringLiteral("x"))}).get()));
    EXPECT_FALSE(a->isIdentical(copy(a, QStringLiteral("One"), {QStringLiteral("T")}, b->parts()).get()));

    a->setTagUUIDs({QStringLiteral("T1"), QStringLiteral("T2")});
    EXPECT_FALSE(a->isIdentical(copy(a, QStringLiteral("One"), {QStringLiteral("T2"), QStringLiteral("T1")}, b->parts()).get()))
        << "tag order matters";
    EXPECT_FALSE(a->isEqual(nullptr));
    EXPECT_FALSE(a->isEqual(ZDSnippet::create(QStringLiteral("One")).get()));
}

TEST_F(SnippetTest, TagsComeFromTheLibraryInSnippetOrder)
{
    auto work = std::make_shared<ZDTag>(QStringLiteral("Work"), QStringLiteral("T-WORK"));
    auto home = std::make_shared<ZDTag>(QStringLiteral("Home"), QStringLiteral("T-HOME"));
    auto homeTwin = std::make_shared<ZDTag>(QStringLiteral("Home 2"), QStringLiteral("T-HOME"));
    directory.tags = {work, home, homeTwin};
    directory.folderTitles.insert(QStringLiteral("F1"), QStringLiteral("Scripts"));

    auto snippet = ZDSnippet::create(QStringLiteral("x"), QStringLiteral("F1"));
    snippet->setTagUUIDs({QStringLiteral("T-HOME"), QStringLiteral("T-GONE"), QStringLiteral("T-WORK")});
    EXPECT_EQ(snippet->tagNames(), QStringList({"Home", "Home 2", "Work"}));
    EXPECT_EQ(snippet->tagsCount(), 3);
    EXPECT_EQ(snippet->localizedCategory(), "Scripts");
    EXPECT_EQ(directory.requesters.last(), "localizedCategory");

    ZDRecordDirectory::install(nullptr);
    EXPECT_TRUE(snippet->tags().isEmpty());
    EXPECT_TRUE(snippet->localizedCategory().isEmpty());
}

TEST_F(SnippetTest, StringRepresentationJoinsTitleAndParts)
{
    auto first = partTitled(QStringLiteral("a"));
    first->setNote(QStringLiteral("note"));
    first->setContent(QStringLiteral("code"));
    auto second = partTitled(QStringLiteral("b"));
    second->setContent(QStringLiteral("more"));
    EXPECT_EQ(snippetWithParts(QStringLiteral("T"), {first, second})->stringRepresentation(), "T\nnote\ncode\n\nmore");
}

// Texts borrowed from a buffer (as the snippet cache lends them) behave as the strings they
// hold, whatever their encoding and alignment, and keep the buffer alive.
TEST_F(SnippetTest, BorrowedTextsReadAsTheirStrings)
{
    const QString wide = QStringLiteral("日本 👋 é");
    auto buffer = std::make_shared<QByteArray>("xcaf\xe9"); // Latin-1
    buffer->append(reinterpret_cast<const char *>(wide.constData()), wide.size() * 2); // at an odd offset
    const char *bytes = buffer->constData();
    const ZDSnippetText latin1 = ZDSnippetText::borrowed(buffer, bytes + 1, 4, ZDSnippetText::Encoding::Latin1);
    const ZDSnippetText utf16 = ZDSnippetText::borrowed(buffer, bytes + 5, wide.size(), ZDSnippetText::Encoding::Utf16);
    std::weak_ptr<QByteArray> watch = buffer;
    buffer.reset();

    EXPECT_EQ(latin1.toString(), QStringLiteral("café"));
    EXPECT_EQ(utf16.toString(), wide);
    EXPECT_TRUE(latin1 == QStringLiteral("café") && latin1 != QStringLiteral("cafe") && latin1 != QStringLiteral("caf"));
    EXPECT_TRUE(utf16 == wide && utf16 != QStringLiteral("日本"));
    EXPECT_TRUE(latin1 == ZDSnippetText(QStringLiteral("café")) && ZDSnippetText(QStringLiteral("café")) == latin1);
    EXPECT_NE(latin1, utf16);
    EXPECT_EQ(utf16.size(), wide.size());
    QString joined = QStringLiteral(">");
    latin1.appendTo(joined);
    utf16.appendTo(joined);
    EXPECT_EQ(joined, QStringLiteral(">café") + wide);

    // Copies share the characters, and the buffer lives as long as a text borrows from it.
    ZDSnippetText copy = utf16;
    EXPECT_TRUE(copy.sharesStorageWith(utf16));
    EXPECT_FALSE(ZDSnippetText(wide).sharesStorageWith(utf16));
    EXPECT_FALSE(watch.expired());

    // No characters borrow nothing, and a part's text is never null.
    EXPECT_FALSE(ZDSnippetText::borrowed(watch.lock(), bytes, 0, ZDSnippetText::Encoding::Latin1).isBorrowed());
    EXPECT_FALSE(ZDSnippetText().toString().isNull());

    // A part holding borrowed texts: an edit to the same text is no edit.
    const QDateTime date = QDateTime::fromMSecsSinceEpoch(1'700'000'000'000, Qt::UTC);
    auto part = std::make_shared<ZDSnippetPart>(QStringLiteral("a"), QStringLiteral("P"),
                                                ZDLanguageRegistry::shared()->plainTextLanguage(), latin1, utf16, date,
                                                date, QStringLiteral("S"));
    part->setContent(wide);
    part->setNote(QStringLiteral("café"));
    EXPECT_EQ(part->dateModified(), date);
    EXPECT_TRUE(part->contentText().isBorrowed());
    EXPECT_EQ(part->stringRepresentation(), QStringLiteral("café\n") + wide);
    part->setContent(QStringLiteral("new"));
    EXPECT_FALSE(part->contentText().isBorrowed());
    EXPECT_NE(part->dateModified(), date);
}

struct FileNameCase
{
    QString snippetTitle;
    QStringList partTitles;
    QString language;
    QStringList expected;
};

class PartFileNameTest : public ModelTest, public ::testing::WithParamInterface<FileNameCase>
{
};

TEST_P(PartFileNameTest, NamesFollowTitlesAndLanguages)
{
    const FileNameCase &c = GetParam();
    QList<ZDSnippetPartPtr> parts;
    for (const QString &title : c.partTitles)
        parts.append(partTitled(title, c.language));
    auto snippet = snippetWithParts(c.snippetTitle, parts);
    QStringList names;
    for (const auto &part : snippet->parts())
        names.append(part->filenameWithSnippet(snippet.get()));
    EXPECT_EQ(names, c.expected);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, PartFileNameTest,
    ::testing::Values(
        FileNameCase{"main.py", {"Fragment"}, "TextLexer", {"main.py"}},
        FileNameCase{"main.py", {"a.c", "Fragment"}, "PythonLexer", {"a.c", "Fragment.py"}},
        FileNameCase{"archive.tar.gz", {"x"}, "TextLexer", {"archive.tar.gz"}},
        FileNameCase{"Notes", {"x"}, "PythonLexer", {"Notes.py"}},
        FileNameCase{"ends with dot.", {"x"}, "TextLexer", {"ends with dot..txt"}},
        FileNameCase{"long.abcdefghijk", {"x"}, "PythonLexer", {"long.abcdefghijk.py"}},
        FileNameCase{"UPPER.PY", {"x"}, "TextLexer", {"UPPER.PY"}},
        FileNameCase{"dir/name", {"x"}, "TextLexer", {"dir/name.txt"}}));

TEST_F(SnippetTest, ExtensionSplitsAtTheLastDot)
{
    auto snippet = snippetWithParts(QStringLiteral("archive.tar.gz"), {partTitled(QStringLiteral("x"))});
    const auto part = snippet->parts().first();
    EXPECT_EQ(part->filenameWithoutExtensionWithSnippet(snippet.get()), "archive.tar");
    EXPECT_EQ(part->fileExtensionWithSnippet(snippet.get()), "gz");
}

TEST(TextFoldingTest, FoldsCaseAndDiacriticsForTagNames)
{
    EXPECT_TRUE(ZDTag::isTagNameEquivalentToName(QStringLiteral("Café"), QStringLiteral("cafe")));
    EXPECT_TRUE(ZDTag::isTagNameEquivalentToName(QStringLiteral("ÅNGSTRÖM"), QStringLiteral("angstrom")));
    // Precomposed and decomposed spellings are the same name.
    EXPECT_TRUE(ZDTag::isTagNameEquivalentToName(QStringLiteral("Cafe\u0301"), QStringLiteral("CAFÉ")));
    EXPECT_FALSE(ZDTag::isTagNameEquivalentToName(QStringLiteral("cafe"), QStringLiteral("cafes")));
    EXPECT_EQ(ZDTextFolding::folded(QStringLiteral("Straße"), false, true), "Straße");
    EXPECT_EQ(ZDTextFolding::folded(QStringLiteral("Über"), false, true), "Uber");
    EXPECT_EQ(ZDTextFolding::folded(QStringLiteral("Über"), true, false), "über");
}

// --- Sidebar nodes -------------------------------------------------------------------------

using CategoryNodeTest = ModelTest;

TEST_F(CategoryNodeTest, FixedNodesAndCapabilitiesByKind)
{
    EXPECT_EQ(ZDCategoryNode::favouritesGroupNode()->UUID(), "com.varnok.Zandrio.UUID.Group.Favourites");
    EXPECT_EQ(ZDCategoryNode::smartFoldersGroupNode()->title(), "Smart Groups");
    EXPECT_EQ(ZDCategoryNode::uncategorizedNode()->UUID(), "com.varnok.Zandrio.UUID.Predefined.Uncategorized");
    EXPECT_TRUE(ZDCategoryNode::allSnippetsNode()->isAllSnippets());

    struct Row { ZDCategoryNodePtr node; bool deletable, draggable, renamable; };
    const Row rows[] = {
        {ZDCategoryNode::foldersGroupNode(), false, false, false},
        {ZDCategoryNode::allSnippetsNode(), false, false, false},
        {ZDCategoryNode::uncategorizedNode(), false, false, false},
        {ZDCategoryNode::folderNodeWithTitle(QStringLiteral("F")), true, true, true},
        {ZDCategoryNode::shortcutNodeWithTargetUUID(QStringLiteral("F")), true, true, false},
        {ZDCategoryNode::tagNodeWithTitle(QStringLiteral("T")), true, false, true},
        {ZDCategoryNode::smartGroupNodeWithTitle(QStringLiteral("S")), true, true, true},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(int(row.node->nodeType()));
        EXPECT_EQ(row.node->isDeletable(), row.deletable);
        EXPECT_EQ(row.node->isDraggable(), row.draggable);
        EXPECT_EQ(row.node->isRenamable(), row.renamable);
        EXPECT_FALSE(row.node->UUID().isEmpty());
    }
}

TEST_F(CategoryNodeTest, ShortcutsAskTheLibraryForTitleAndLanguage)
{
    auto shortcut = ZDCategoryNode::shortcutNodeWithTargetUUID(QStringLiteral("F1"));
    directory.folderTitles.insert(QStringLiteral("F1"), QStringLiteral("Old"));
    EXPECT_EQ(shortcut->title(), "Old");
    directory.folderTitles.insert(QStringLiteral("F1"), QStringLiteral("Renamed"));
    EXPECT_EQ(shortcut->title(), "Renamed");
    EXPECT_EQ(shortcut->defaultLanguageIdentifier(), "TextLexer");
    directory.folderLanguages.insert(QStringLiteral("F1"), QStringLiteral("RubyLexer"));
    EXPECT_EQ(shortcut->defaultLanguageIdentifier(), "RubyLexer");
    EXPECT_FALSE(shortcut->dictionaryRepresentation().contains(QLatin1String(ZDCategoryNodeKey::Title)));
}

TEST_F(CategoryNodeTest, TreeTraversalAndAncestry)
{
    auto root = ZDCategoryNode::folderNodeWithTitle(QStringLiteral("root"));
    auto a = ZDCategoryNode::folderNodeWithTitle(QStringLiteral("a"));
    auto a1 = ZDCategoryNode::folderNodeWithTitle(QStringLiteral("a1"));
    auto b = ZDCategoryNode::folderNodeWithTitle(QStringLiteral("b"));
    root->addChild(a);
    root->addChild(b);
    a->addChild(a1);

    QStringList visited;
    root->traverseSubNodesWithBlock([&](const ZDCategoryNodePtr &node, int level) {
        visited << node->title() + QString::number(level);
    });
    EXPECT_EQ(visited, QStringList({"a0", "a11", "b0"}));

    EXPECT_TRUE(a1->isDescendantOfNode(root));
    EXPECT_FALSE(root->isDescendantOfNode(a1));
    EXPECT_FALSE(a1->isDescendantOfNode(nullptr));

    a1->addChild(root);
    EXPECT_FALSE(root->parentCategoryNode()) << "a node never becomes its own descendant";

    b->addChild(a); // moving a folder takes it from its former parent
    EXPECT_EQ(root->children().size(), 1);
    EXPECT_EQ(a->parentCategoryNode(), b);
    EXPECT_TRUE(a1->isDescendantOfNode(b));
}

TEST_F(CategoryNodeTest, WrittenFormRoundTripsAndKeepsChildOrder)
{
    auto root = ZDCategoryNode::folderNodeWithTitle(QStringLiteral("Projects"), {}, QStringLiteral("PythonLexer"));
    for (const char *title : {"c", "a", "b"})
        root->addChild(ZDCategoryNode::folderNodeWithTitle(QLatin1String(title)));
    const QVariantMap written = root->dictionaryRepresentation();
    EXPECT_EQ(written.value("com.varnok.Zandrio.Key.NodeDefaultLangaugeIdentifier").toString(), "PythonLexer");
    EXPECT_EQ(written.value("com.varnok.Zandrio.Key.NodeType").toUInt(), 3u);

    auto read = ZDCategoryNode::fromDictionaryRepresentation(written);
    ASSERT_TRUE(read);
    EXPECT_TRUE(read->isEqual(root.get()));
    QStringList titles;
    for (const auto &child : read->children()) {
        titles << child->title();
        EXPECT_EQ(child->parentCategoryNode(), read);
    }
    EXPECT_EQ(titles, QStringList({"c", "a", "b"}));
    EXPECT_EQ(read->dictionaryRepresentation(), written);

    auto smart = ZDCategoryNode::smartGroupNodeWithTitle(QStringLiteral("S"), QStringLiteral("U"), QStringLiteral("title == \"x\""));
    auto smartRead = ZDCategoryNode::fromDictionaryRepresentation(smart->dictionaryRepresentation());
    EXPECT_EQ(smartRead->predicateString(), "title == \"x\"");
    EXPECT_FALSE(smart->dictionaryRepresentation().contains(QLatin1String(ZDCategoryNodeKey::Children)));
}

TEST_F(CategoryNodeTest, UnknownTypeDropsTheNodeAndEverythingBelowIt)
{
    QVariantMap future = ZDCategoryNode::folderNodeWithTitle(QStringLiteral("future"))->dictionaryRepresentation();
    future.insert(QLatin1String(ZDCategoryNodeKey::Type), 7);
    future.insert(QLatin1String(ZDCategoryNodeKey::Children),
                  QVariantList{ZDCategoryNode::folderNodeWithTitle(QStringLiteral("hidden"))->dictionaryRepresentation()});
    QVariantMap root = ZDCategoryNode::folderNodeWithTitle(QStringLiteral("root"))->dictionaryRepresentation();
    root.insert(QLatin1String(ZDCategoryNodeKey::Children),
                QVariantList{future, ZDCategoryNode::tagNodeWithTitle(QStringLiteral("kept"))->dictionaryRepresentation()});

    EXPECT_FALSE(ZDCategoryNode::fromDictionaryRepresentation(future));
    auto read = ZDCategoryNode::fromDictionaryRepresentation(root);
    ASSERT_TRUE(read);
    ASSERT_EQ(read->children().size(), 1);
    EXPECT_EQ(read->children().first()->title(), "kept");
}
