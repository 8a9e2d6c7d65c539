// The store's operations: a refusal changes nothing, a change is announced once with its sender,
// and the operations that touch several lists (folder and tag deletion, tag merges, imports)
// leave a library that reads back whole.

#include "ZDStoreTestSupport.h"

#include "ZDLibraryContents.h"
#include "ZDOperationErrors.h"
#include "ZDPackageFormat.h"
#include "ZDRecordArchive.h"
#include "ZDSnippetPart.h"

#include <gtest/gtest.h>

namespace {

// Every notice that names what changed, as "<notice> <what>", and who sent it.
struct NoticeLog : ZDLibraryListener
{
    QStringList notices;
    QList<QObject *> senders;

    void note(QObject *sender, const QString &text)
    {
        notices << text;
        senders << sender;
    }
    static QString titles(const QList<ZDCategoryNodePtr> &nodes)
    {
        QStringList result;
        for (const ZDCategoryNodePtr &node : nodes)
            result << node->title();
        return result.join(QLatin1Char(','));
    }
    static QString titles(const ZDSnippetList &snippets)
    {
        QStringList result;
        for (const ZDSnippetPtr &snippet : snippets)
            result << snippet->title();
        result.sort();
        return result.join(QLatin1Char(','));
    }

    void folderDidAdd(QObject *s, const ZDCategoryNodePtr &folder, const ZDCategoryNodePtr &parent,
                      int index) override
    {
        note(s, QStringLiteral("folderAdded %1 in %2 at %3")
                    .arg(folder->title(), parent ? parent->title() : QStringLiteral("top"))
                    .arg(index));
    }
    void folderDidRename(QObject *s, const ZDCategoryNodePtr &f) override
    {
        note(s, "folderRenamed " + f->title());
    }
    void foldersDidRemove(QObject *s, const QList<ZDCategoryNodePtr> &f) override
    {
        note(s, "foldersRemoved " + titles(f));
    }
    void foldersDidReorder(QObject *s, const QList<ZDCategoryNodePtr> &f) override
    {
        note(s, "foldersReordered " + titles(f));
    }
    void smartGroupDidRename(QObject *s, const ZDCategoryNodePtr &g) override
    {
        note(s, "smartGroupRenamed " + g->title());
    }
    void tagDidRename(QObject *s, const ZDTagPtr &tag) override { note(s, "tagRenamed " + tag->title()); }
    void tagsDidRemove(QObject *s, const ZDTagList &tags) override
    {
        QStringList names;
        for (const ZDTagPtr &tag : tags)
            names << tag->title();
        note(s, "tagsRemoved " + names.join(QLatin1Char(',')));
    }
    void snippetDidAdd(QObject *s, const ZDSnippetPtr &snippet) override
    {
        note(s, "snippetAdded " + snippet->title());
    }
    void snippetContentDidChange(QObject *s, const ZDSnippetPtr &snippet) override
    {
        note(s, "contentChanged " + snippet->title());
    }
    void snippetTitleDidChange(QObject *s, const ZDSnippetPtr &snippet) override
    {
        note(s, "titleChanged " + snippet->title());
    }
    void snippetsTagsDidChange(QObject *s, const ZDSnippetList &l) override
    {
        note(s, "tagsChanged " + titles(l));
    }
    void snippetsDidRemove(QObject *s, const ZDSnippetList &l) override
    {
        note(s, "snippetsRemoved " + titles(l));
    }
    void snippetsCategoryDidChange(QObject *s, const ZDSnippetList &l) override
    {
        note(s, "categoryChanged " + titles(l));
    }
    void snippetsLanguageDidChange(QObject *s, const ZDSnippetList &l) override
    {
        note(s, "languageChanged " + titles(l));
    }
    void applicationLibraryDidChange(QObject *s) override { note(s, QStringLiteral("libraryChanged")); }
};

// The library's records as bytes, every field and the lists' order included.
QList<QByteArray> records(const ZDDataCenter &center)
{
    QList<QByteArray> state{ZDLibraryContents::encodeNodes(center.rootFolderNodes()),
                            ZDLibraryContents::encodeNodes(center.shortcutNodes()),
                            ZDLibraryContents::encodeNodes(center.smartGroupNodes()),
                            ZDLibraryContents::encodeTags(center.tags())};
    for (const ZDSnippetPtr &snippet : center.snippets())
        state << ZDRecordArchive::archivedSnippet(*snippet);
    return state;
}

// Everything the store holds.
QList<QByteArray> snapshot(const ZDDataCenter &center)
{
    return records(center) << center.deletedUUIDs().join(',').toUtf8();
}

ZDLanguage language(const char *identifier)
{
    return ZDLanguageRegistry::shared()->languageWithIdentifier(QLatin1String(identifier));
}

// A saved library: folders Work (with Inner) and Keep, shortcuts to Inner and Keep, a smart
// group, the tags café and other, and the snippets a (Work, café), b (Inner, two parts),
// c (Keep, café and other).
struct Fixture
{
    ZDTestLibrary library;
    std::unique_ptr<ZDDataCenter> center = library.open();
    NoticeLog log;
    QObject sender;
    ZDCategoryNodePtr work, inner, keep, smartGroup;
    ZDTagPtr cafe, other;
    ZDSnippetPtr a, b, c;

    Fixture()
    {
        ZDDataCenter::install(center.get()); // shortcuts' titles and snippets' tags are asked of it
        work = center->createFolder(QStringLiteral("Work"), {}, -1, nullptr);
        inner = center->createFolder(QStringLiteral("Inner"), work->UUID(), -1, nullptr);
        keep = center->createFolder(QStringLiteral("Keep"), {}, -1, nullptr);
        center->addShortcuts({inner->UUID(), keep->UUID()}, -1, nullptr);
        smartGroup = center->addSmartGroup(QStringLiteral("Recent"),
                                           QStringLiteral("title CONTAINS[cd] \"a\""), nullptr);
        cafe = center->addTag(QStringLiteral("café"), nullptr);
        other = center->addTag(QStringLiteral("other"), nullptr);
        a = zdTestSnippet(QStringLiteral("a"), work->UUID());
        a->setTagUUIDs({cafe->UUID()});
        b = zdTestSnippet(QStringLiteral("b"), inner->UUID());
        b->setParts(b->parts() << ZDSnippetPart::create(QStringLiteral("second"), b->UUID()));
        c = zdTestSnippet(QStringLiteral("c"), keep->UUID());
        c->setTagUUIDs({cafe->UUID(), other->UUID()});
        center->addSnippets({a, b, c}, nullptr);
        EXPECT_TRUE(center->save());
        // The set-up's own notices arrive now, before the log starts.
        library.notifier.addDelegate(&log);
        ZDTestSupport::waitFor([] { return false; }, 100);
        log.notices.clear();
        log.senders.clear();
    }
    ~Fixture() { ZDDataCenter::install(nullptr); }

    // Waits for `expected`, in posting order, then a little longer for any notice too many.
    void expectNotices(const QStringList &expected, const char *what)
    {
        expectNotices(expected, &sender, what);
    }
    void expectNotices(const QStringList &expected, QObject *expectedSender, const char *what)
    {
        ZDTestSupport::waitFor([&] { return log.notices.size() >= expected.size(); }, 2000);
        ZDTestSupport::waitFor([] { return false; }, 30);
        EXPECT_EQ(log.notices, expected) << what;
        for (QObject *s : std::as_const(log.senders))
            EXPECT_EQ(s, expectedSender) << what;
        log.notices.clear();
        log.senders.clear();
    }

    std::unique_ptr<ZDDataCenter> reopen()
    {
        EXPECT_TRUE(center->save());
        return library.open();
    }
};

QStringList titles(const QList<ZDCategoryNodePtr> &nodes)
{
    QStringList result;
    for (const ZDCategoryNodePtr &node : nodes)
        result << node->title();
    return result;
}

using Operation = std::function<bool(ZDError *)>;

} // namespace

TEST(StoreOperations, BadArgumentsAreRefusedBeforeAnythingChanges)
{
    Fixture f;
    ZDDataCenter &center = *f.center;
    QObject *s = &f.sender;
    const QString a = f.a->UUID(), b = f.b->UUID();
    const QString partOfA = f.a->parts().first()->UUID();
    const ZDCategoryNodePtr existingFolder =
        ZDCategoryNode::folderNodeWithTitle(QStringLiteral("again"), f.keep->UUID());
    const QList<std::pair<int, Operation>> refused{
        // Unknown records, also beside known ones in one call.
        {1001,
         [&](ZDError *e) {
             return center.removeSnippets({a, QStringLiteral("NONE")}, s, e);
         }},
        {1001, [&](ZDError *e) { return center.moveSnippetsToFolder({a}, QStringLiteral("NONE"), s, e); }},
        {1001,
         [&](ZDError *e) {
             return center.moveSnippetsToFolder({a, QStringLiteral("NONE")}, f.keep->UUID(), s, e);
         }},
        {1001, [&](ZDError *e) { return center.setPartText(b, partOfA, QStringLiteral("x"), {}, s, e); }},
        {1001,
         [&](ZDError *e) {
             return center.setPartTexts(
                 a, {{partOfA, QStringLiteral("x"), {}}, {QStringLiteral("NONE"), {}, {}}}, s, e);
         }},
        {1001, [&](ZDError *e) { return center.addTagToSnippets({b}, QStringLiteral("NONE"), s, e); }},
        {1001,
         [&](ZDError *e) {
             return center.moveFolders({f.keep->UUID(), QStringLiteral("NONE")}, {}, 0, s, e);
         }},
        {1001,
         [&](ZDError *e) {
             return center.deleteFolders({f.keep->UUID(), QStringLiteral("NONE")}, s, e);
         }},
        {1001,
         [&](ZDError *e) { return center.deleteShortcuts({f.work->UUID()}, s, e); }}, // no shortcut to Work
        {1001, [&](ZDError *e) { return center.deleteSmartGroups({f.work->UUID()}, s, e); }},
        {1001, [&](ZDError *e) { return center.mergeTags({f.other->UUID()}, QStringLiteral("NONE"), s, e); }},
        {1001,
         [&](ZDError *e) {
             return center.deleteTags({f.other->UUID(), QStringLiteral("NONE")}, s, e);
         }},
        {1001,
         [&](ZDError *e) {
             return center.addSnippets({zdTestSnippet("new", QStringLiteral("NONE"))}, s, e);
         }},
        // Titles, positions, parts, queries.
        {1002, [&](ZDError *e) { return bool(center.createFolder(QString(), {}, -1, s, e)); }},
        {1002, [&](ZDError *e) { return center.renameTag(f.cafe->UUID(), QString(), s, e); }},
        {1002, [&](ZDError *e) { return center.removePart(a, partOfA, s, e); }}, // its only part
        {1002, [&](ZDError *e) { return center.movePart(b, 0, 2, s, e); }},
        {1002, [&](ZDError *e) { return center.setPartLanguage(a, partOfA, ZDLanguage(), s, e); }},
        {1002,
         [&](ZDError *e) {
             return center.setSmartGroupPredicate(f.smartGroup->UUID(), QStringLiteral("title CONTAINS["), s,
                                                  e);
         }},
        {1002, [&](ZDError *e) { return center.addFolderNodes({nullptr}, {}, {}, {}, center.tags(), e); }},
        // Names and identities taken, folders into themselves.
        {1003, [&](ZDError *e) { return bool(center.addTag(QStringLiteral("CAFE"), s, e)); }},
        {1003,
         [&](ZDError *e) {
             return center.addSnippets({zdTestSnippet("new"), f.a}, s, e);
         }},
        {1003,
         [&](ZDError *e) {
             return center.addFolderNodes({ZDCategoryNode::folderNodeWithTitle("x"), existingFolder}, {}, {},
                                          {zdTestSnippet("new")}, {}, e);
         }},
        {1004, [&](ZDError *e) { return center.moveFolders({f.work->UUID()}, f.work->UUID(), -1, s, e); }},
        {1004,
         [&](ZDError *e) {
             return center.moveFolders({f.keep->UUID(), f.work->UUID()}, f.inner->UUID(), -1, s, e);
         }},
    };
    const QList<QByteArray> before = snapshot(center);
    for (qsizetype i = 0; i < refused.size(); ++i) {
        ZDError error;
        EXPECT_FALSE(refused[i].second(&error)) << "case " << i;
        EXPECT_EQ(error.code(), refused[i].first) << "case " << i << ": " << qPrintable(error.toString());
        EXPECT_FALSE(error.description().isEmpty());
        EXPECT_EQ(snapshot(center), before) << "case " << i;
    }
    EXPECT_TRUE(f.library.presented.isEmpty()); // the caller's mistakes are not shown to the user
    EXPECT_FALSE(center.hasPendingChanges());
    f.expectNotices({}, "refusals");
}

TEST(StoreOperations, WithoutALibraryEveryOperationIsRefusedWithItsMutationsCode)
{
    ZDTestLibrary library;
    ZDPackageTree tree = ZDPackageFormat::emptyPackage();
    tree.setFile(ZDPackageLayout::versionFile, ZDPackageFormat::encodeVersion(QStringLiteral("9.0.0")));
    ASSERT_TRUE(tree.write(library.path));
    auto center = library.open();
    ASSERT_FALSE(center->dataCenterHasValidLibrary());
    ZDDataCenter &c = *center;
    const QString x = QStringLiteral("X");
    const ZDLanguage python = language("PythonLexer");
    const QList<std::pair<int, Operation>> refused{
        {134, [&](ZDError *e) { return c.addSnippets({zdTestSnippet("s")}, nullptr, e); }},
        {130, [&](ZDError *e) { return c.removeSnippets({x}, nullptr, e); }},
        {139, [&](ZDError *e) { return c.moveSnippetsToFolder({x}, x, nullptr, e); }},
        {139, [&](ZDError *e) { return c.setSnippetTitle(x, x, nullptr, e); }},
        {139, [&](ZDError *e) { return c.setSnippetTagNames(x, {x}, nullptr, e); }},
        {139, [&](ZDError *e) { return c.addTagToSnippets({x}, x, nullptr, e); }},
        {139, [&](ZDError *e) { return bool(c.addPart(x, 0, x, python, nullptr, e)); }},
        {139, [&](ZDError *e) { return c.removePart(x, x, nullptr, e); }},
        {139, [&](ZDError *e) { return c.movePart(x, 0, 1, nullptr, e); }},
        {139, [&](ZDError *e) { return c.setPartTitle(x, x, x, nullptr, e); }},
        {139, [&](ZDError *e) { return c.setPartText(x, x, x, x, nullptr, e); }},
        {139, [&](ZDError *e) { return c.setPartLanguage(x, x, python, nullptr, e); }},
        {127, [&](ZDError *e) { return bool(c.createFolder(x, {}, -1, nullptr, e)); }},
        {127, [&](ZDError *e) { return c.renameFolder(x, x, nullptr, e); }},
        {127, [&](ZDError *e) { return c.moveFolders({x}, {}, 0, nullptr, e); }},
        {127, [&](ZDError *e) { return c.deleteFolders({x}, nullptr, e); }},
        {132, [&](ZDError *e) { return c.addShortcuts({x}, -1, nullptr, e); }},
        {132, [&](ZDError *e) { return c.moveShortcuts({x}, 0, nullptr, e); }},
        {132, [&](ZDError *e) { return c.deleteShortcuts({x}, nullptr, e); }},
        {208,
         [&](ZDError *e) { return bool(c.addSmartGroup(x, QStringLiteral("TRUEPREDICATE"), nullptr, e)); }},
        {208, [&](ZDError *e) { return c.moveSmartGroups({x}, 0, nullptr, e); }},
        {208, [&](ZDError *e) { return c.renameSmartGroup(x, x, nullptr, e); }},
        {208,
         [&](ZDError *e) {
             return c.setSmartGroupPredicate(x, QStringLiteral("TRUEPREDICATE"), nullptr, e);
         }},
        {208, [&](ZDError *e) { return c.deleteSmartGroups({x}, nullptr, e); }},
        {200, [&](ZDError *e) { return bool(c.addTag(x, nullptr, e)); }},
        {200, [&](ZDError *e) { return c.renameTag(x, x, nullptr, e); }},
        {200, [&](ZDError *e) { return c.mergeTags({x}, x, nullptr, e); }},
        {200, [&](ZDError *e) { return c.deleteTags({x}, nullptr, e); }},
        {127,
         [&](ZDError *e) {
             return c.addFolderNodes({ZDCategoryNode::folderNodeWithTitle(x)}, {}, {}, {}, {}, e);
         }},
        {127, [&](ZDError *e) { return c.replaceFolderNodes({}, {}, {}, {}, {zdTestSnippet("s")}, e); }},
    };
    const QList<QByteArray> before = snapshot(c);
    for (qsizetype i = 0; i < refused.size(); ++i) {
        ZDError error;
        EXPECT_FALSE(refused[i].second(&error)) << "case " << i;
        EXPECT_EQ(error.code(), refused[i].first) << "case " << i;
        ASSERT_EQ(library.presented.size(), i + 1) << "case " << i; // shown, as the mutations' are
        EXPECT_EQ(library.presented.last().code(), refused[i].first);
    }
    EXPECT_EQ(snapshot(c), before);
    EXPECT_FALSE(c.hasPendingChanges());
}

TEST(StoreOperations, EachChangeIsAnnouncedOnceWithItsSender)
{
    Fixture f;
    ZDDataCenter &center = *f.center;
    QObject *s = &f.sender;
    const QString a = f.a->UUID(), b = f.b->UUID();
    const ZDSnippetPartPtr first = f.b->parts().at(0);

    ASSERT_TRUE(center.setSnippetTitle(a, QStringLiteral("a2"), s));
    ASSERT_TRUE(center.setSnippetTitle(a, QStringLiteral("a2"), s)); // the same: nothing to announce
    f.expectNotices({"titleChanged a2"}, "title");

    ASSERT_TRUE(center.setPartText(b, first->UUID(), QStringLiteral("code"), QStringLiteral("note"), s));
    ASSERT_TRUE(center.setPartTitle(b, first->UUID(), QStringLiteral("main.py"), s));
    const ZDSnippetPartPtr added = center.addPart(b, 0, QStringLiteral("third"), language("PythonLexer"), s);
    ASSERT_TRUE(added);
    ASSERT_TRUE(center.movePart(b, 0, 2, s));
    ASSERT_TRUE(center.removePart(b, added->UUID(), s));
    f.expectNotices(QStringList(5, QStringLiteral("contentChanged b")), "parts");
    ASSERT_TRUE(center.setPartLanguage(b, first->UUID(), language("BashLexer"), s));
    f.expectNotices({"languageChanged b"}, "language");

    ASSERT_TRUE(center.setSnippetTagNames(
        b, {QStringLiteral(" Cafe "), QStringLiteral("new"), QStringLiteral("CAFÉ")}, s));
    ASSERT_TRUE(center.addTagToSnippets({a, b}, f.other->UUID(), s));
    f.expectNotices({"tagsChanged b", "tagsChanged a2,b"}, "tags on snippets");
    EXPECT_EQ(center.tagNames(), (QStringList{"café", "other", "new"}));
    EXPECT_EQ(center.snippetWithUUID(b)->tagNames(), (QStringList{"café", "new", "other"}));

    ASSERT_TRUE(center.moveSnippetsToFolder({a, b}, f.keep->UUID(), s));
    f.expectNotices({"categoryChanged a2,b"}, "move snippets");
    const ZDSnippetPtr d = zdTestSnippet(QStringLiteral("d"));
    ASSERT_TRUE(center.addSnippets({d}, s));
    ASSERT_TRUE(center.removeSnippets({d->UUID()}, s));
    f.expectNotices({"snippetAdded d", "snippetsRemoved d"}, "add and remove snippets");

    // Notices carry the records, which show their state at delivery: one step at a time.
    const ZDCategoryNodePtr made = center.createFolder(QStringLiteral("Made"), f.work->UUID(), 0, s);
    ASSERT_TRUE(made);
    f.expectNotices({"folderAdded Made in Work at 0"}, "new folder");
    ASSERT_TRUE(center.renameFolder(made->UUID(), QStringLiteral("Named"), s));
    ASSERT_TRUE(center.moveFolders({made->UUID()}, {}, 1, s));
    f.expectNotices({"folderRenamed Named", "foldersReordered Named"}, "folders");
    EXPECT_EQ(titles(center.rootFolderNodes()), (QStringList{"Work", "Named", "Keep"}));
    EXPECT_EQ(center.folderTitles().value(made->UUID()), QStringLiteral("Named"));

    ASSERT_TRUE(center.addShortcuts({f.work->UUID(), f.keep->UUID()}, 0, s)); // Keep has one already
    ASSERT_TRUE(center.moveShortcuts({f.keep->UUID()}, 0, s));
    ASSERT_TRUE(center.deleteShortcuts({f.inner->UUID()}, s));
    f.expectNotices({"foldersReordered Work", "foldersReordered Keep", "foldersReordered Inner"},
                    "shortcuts");
    EXPECT_EQ(titles(center.shortcutNodes()), (QStringList{"Keep", "Work"}));

    const ZDCategoryNodePtr group =
        center.addSmartGroup(QStringLiteral("Gists"), QStringLiteral("isGist == \"Yes\""), s);
    ASSERT_TRUE(group);
    f.expectNotices({"foldersReordered Gists"}, "new smart group");
    ASSERT_TRUE(center.moveSmartGroups({group->UUID()}, 0, s));
    ASSERT_TRUE(center.renameSmartGroup(group->UUID(), QStringLiteral("My gists"), s));
    ASSERT_TRUE(center.setSmartGroupPredicate(group->UUID(), QStringLiteral("isGist == \"No\""), s));
    ASSERT_TRUE(center.deleteSmartGroups({f.smartGroup->UUID()}, s));
    f.expectNotices({"foldersReordered My gists", "smartGroupRenamed My gists", "smartGroupRenamed My gists",
                     "foldersRemoved Recent"},
                    "smart groups");

    const ZDTagPtr tag = center.addTag(QStringLiteral("fresh"), s);
    ASSERT_TRUE(tag);
    f.expectNotices({"tagRenamed fresh"}, "new tag");
    ASSERT_TRUE(center.renameTag(tag->UUID(), QStringLiteral("Fresh"), s)); // only itself is equivalent
    ASSERT_TRUE(center.deleteTags({f.other->UUID()}, s));
    f.expectNotices({"tagRenamed Fresh", "tagsChanged a2,b,c", "tagsRemoved other"}, "tags");

    // What was announced is what the library writes.
    auto reopened = f.reopen();
    QList<QByteArray> written = records(*reopened), held = records(center);
    std::sort(written.begin() + 4, written.end()); // snippets load in the folder's order
    std::sort(held.begin() + 4, held.end());
    EXPECT_EQ(written, held);
}

TEST(StoreOperations, DeletingFoldersTakesSubfoldersTheirSnippetsAndShortcuts)
{
    Fixture f;
    ASSERT_EQ(f.center->snippetsInFolders({f.work->UUID()}).size(), 2);
    ASSERT_TRUE(f.center->deleteFolders({f.work->UUID()}, &f.sender));
    f.expectNotices({"snippetsRemoved a,b", "foldersRemoved Work"}, "folder deletion");
    auto reopened = f.reopen();
    for (ZDDataCenter *center : {f.center.get(), reopened.get()}) {
        EXPECT_EQ(titles(center->rootFolderNodes()), QStringList{"Keep"});
        EXPECT_EQ(center->snippets().size(), 1);
        EXPECT_TRUE(center->snippetWithUUID(f.c->UUID()));
        EXPECT_EQ(titles(center->shortcutNodes()), QStringList{"Keep"});
        EXPECT_FALSE(center->folderTitles().contains(f.inner->UUID()));
        EXPECT_TRUE(center->inspectInternalInconsistency().isEmpty());
    }
}

TEST(StoreOperations, RenamingATagOntoAnotherTagsNameMergesThem)
{
    Fixture f;
    // d has both tags, other first: it keeps one, where the first of them was.
    const ZDSnippetPtr d = zdTestSnippet(QStringLiteral("d"));
    d->setTagUUIDs({f.other->UUID(), f.cafe->UUID()});
    ASSERT_TRUE(f.center->addSnippets({d}, nullptr));
    f.expectNotices({"snippetAdded d"}, nullptr, "set-up");

    ASSERT_TRUE(f.center->renameTag(f.other->UUID(), QStringLiteral("Cafe"), &f.sender));
    f.expectNotices({"tagsChanged c,d", "tagsRemoved other", "tagRenamed Cafe"}, "merge by rename");
    auto reopened = f.reopen();
    for (ZDDataCenter *center : {f.center.get(), reopened.get()}) {
        EXPECT_EQ(center->tagNames(), QStringList{"Cafe"});
        EXPECT_EQ(center->tags().first()->UUID(), f.cafe->UUID());
        EXPECT_EQ(center->snippetWithUUID(f.a->UUID())->tagUUIDs(), QStringList{f.cafe->UUID()});
        EXPECT_EQ(center->snippetWithUUID(f.c->UUID())->tagUUIDs(), QStringList{f.cafe->UUID()});
        EXPECT_EQ(center->snippetWithUUID(d->UUID())->tagUUIDs(), QStringList{f.cafe->UUID()});
    }

    // An explicit merge: the snippets that had only the merged tag now have the survivor.
    const ZDTagPtr shell = f.center->addTag(QStringLiteral("shell"), nullptr);
    ASSERT_TRUE(f.center->setSnippetTagNames(f.b->UUID(), {QStringLiteral("shell")}, nullptr));
    f.expectNotices({"tagRenamed shell", "tagsChanged b"}, nullptr, "set-up");
    ASSERT_TRUE(f.center->mergeTags({shell->UUID(), f.cafe->UUID()}, f.cafe->UUID(), &f.sender));
    f.expectNotices({"tagsChanged b", "tagsRemoved shell"}, "merge");
    EXPECT_EQ(f.center->snippetWithUUID(f.b->UUID())->tagUUIDs(), QStringList{f.cafe->UUID()});
    EXPECT_EQ(f.center->tagNames(), QStringList{"Cafe"});
}

TEST(StoreOperations, ImportsAreAllOrNothing)
{
    Fixture f;
    const QList<QByteArray> before = snapshot(*f.center);
    const ZDCategoryNodePtr imported = ZDCategoryNode::folderNodeWithTitle(QStringLiteral("Imported"));
    const ZDSnippetPtr snippet = zdTestSnippet(QStringLiteral("i"), imported->UUID());
    const ZDTagList tags = f.center->tags() << ZDTag::create(QStringLiteral("imported"));

    // A folder the library has already (here inside the import's own folder) refuses the import.
    const ZDCategoryNodePtr clash =
        ZDCategoryNode::folderNodeWithTitle(QStringLiteral("clash"), f.inner->UUID());
    imported->addChild(clash);
    ZDError error;
    EXPECT_FALSE(f.center->addFolderNodes({imported}, {}, {}, {snippet}, tags, &error));
    EXPECT_EQ(error.code(), ZDOperationErrors::AlreadyExistsCode);
    EXPECT_FALSE(
        f.center->replaceFolderNodes({imported, ZDCategoryNode::folderNodeWithTitle("x", clash->UUID())}, {},
                                     {}, tags, {snippet}, &error));
    EXPECT_EQ(snapshot(*f.center), before);
    f.expectNotices({}, "refused imports");

    imported->removeChild(clash);
    ASSERT_TRUE(f.center->addFolderNodes({imported},
                                         {ZDCategoryNode::shortcutNodeWithTargetUUID(imported->UUID())}, {},
                                         {snippet}, tags, &error));
    ASSERT_TRUE(ZDTestSupport::waitFor([&] { return !f.log.notices.isEmpty(); }, 2000));
    EXPECT_EQ(f.log.notices, QStringList{"libraryChanged"});
    EXPECT_EQ(f.log.senders, QList<QObject *>{f.center.get()}); // the store announces imports itself
    auto reopened = f.reopen();
    EXPECT_EQ(titles(reopened->rootFolderNodes()), (QStringList{"Work", "Keep", "Imported"}));
    EXPECT_EQ(titles(reopened->shortcutNodes()), (QStringList{"Inner", "Keep", "Imported"}));
    EXPECT_EQ(reopened->snippets().size(), 4);
    EXPECT_EQ(reopened->tagNames(), (QStringList{"café", "other", "imported"}));

    const ZDSnippetPtr only = zdTestSnippet(QStringLiteral("only"));
    ASSERT_TRUE(f.center->replaceFolderNodes({}, {}, {}, {}, {only}, &error));
    EXPECT_TRUE(f.center->rootFolderNodes().isEmpty());
    EXPECT_TRUE(f.center->tags().isEmpty());
    EXPECT_EQ(f.center->snippets(), ZDSnippetList{only});
    EXPECT_EQ(f.center->deletedUUIDs().size(), 4);
}
