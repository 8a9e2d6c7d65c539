// The window's changes to the library, checked on a real store and after reopening it.

#include "ZDLibraryActions.h"
#include "ZDSidebarModel.h"
#include "ZDStoreTestSupport.h"

#include <QTest>

namespace {
/// Records which notices arrived.
struct NoticeLog : ZDLibraryListener
{
    QStringList notices;
    void foldersDidRemove(QObject *, const QList<ZDCategoryNodePtr> &) override { notices << "foldersDidRemove"; }
    void foldersDidReorder(QObject *, const QList<ZDCategoryNodePtr> &) override { notices << "foldersDidReorder"; }
    void snippetsDidRemove(QObject *, const ZDSnippetList &s) override { notices << QStringLiteral("snippetsDidRemove %1").arg(s.size()); }
    void snippetsTagsDidChange(QObject *, const ZDSnippetList &s) override { notices << QStringLiteral("snippetsTagsDidChange %1").arg(s.size()); }
    void tagsDidRemove(QObject *, const ZDTagList &) override { notices << "tagsDidRemove"; }
    void snippetDidAdd(QObject *, const ZDSnippetPtr &) override { notices << "snippetDidAdd"; }
    void snippetsCategoryDidChange(QObject *, const ZDSnippetList &s) override { notices << QStringLiteral("snippetsCategoryDidChange %1").arg(s.size()); }
};

QStringList titles(const QList<ZDCategoryNodePtr> &nodes)
{
    QStringList result;
    for (const ZDCategoryNodePtr &node : nodes)
        result << node->title();
    return result;
}

ZDSnippetPtr addSnippet(ZDDataCenter &center, const QString &title, const QString &folder)
{
    ZDSnippetPtr snippet = ZDSnippet::create(title, folder);
    center.addSnippets({snippet}, nullptr);
    return snippet;
}
} // namespace

class TestLibraryActions : public QObject
{
    Q_OBJECT

    std::unique_ptr<ZDTestLibrary> library;
    std::unique_ptr<ZDDataCenter> center;
    std::unique_ptr<ZDLibraryActions> actions;
    NoticeLog log;
    QObject sender;

    void reopen()
    {
        actions.reset();
        center->save();
        center.reset();
        center = library->open();
        ZDDataCenter::install(center.get());
        actions = std::make_unique<ZDLibraryActions>(*center, &sender);
    }

private Q_SLOTS:
    void init()
    {
        library = std::make_unique<ZDTestLibrary>();
        center = library->open();
        ZDDataCenter::install(center.get());
        actions = std::make_unique<ZDLibraryActions>(*center, &sender);
        log.notices.clear();
        library->notifier.addDelegate(&log);
    }

    void cleanup()
    {
        actions.reset();
        ZDDataCenter::install(nullptr);
        center.reset();
        library.reset();
    }

    void deletingAFolderTakesItsSubfoldersSnippetsAndShortcuts()
    {
        const ZDCategoryNodePtr work = actions->addFolder(QStringLiteral("Work"));
        const ZDCategoryNodePtr inner = actions->addFolder(QStringLiteral("Inner"), work);
        const ZDCategoryNodePtr keep = actions->addFolder(QStringLiteral("Keep"));
        QVERIFY(center->addShortcuts({inner->UUID(), keep->UUID()}, -1, nullptr));
        addSnippet(*center, QStringLiteral("a"), work->UUID());
        addSnippet(*center, QStringLiteral("b"), inner->UUID());
        const ZDSnippetPtr kept = addSnippet(*center, QStringLiteral("c"), keep->UUID());
        QCOMPARE(actions->snippetsInFolders({work}).size(), 2);

        actions->deleteNodes({work});
        QVERIFY(ZDTestSupport::waitFor([&] { return log.notices.contains("foldersDidRemove"); }));
        QVERIFY(log.notices.contains("snippetsDidRemove 2"));
        reopen();
        QCOMPARE(titles(center->rootFolderNodes()), QStringList{"Keep"});
        QCOMPARE(center->snippets(), ZDSnippetList{center->snippetWithUUID(kept->UUID())});
        QCOMPARE(center->shortcutNodes().size(), 1);
        QCOMPARE(center->shortcutNodes().first()->UUID(), keep->UUID());
    }

    void dropsMoveFoldersAndMakeShortcuts()
    {
        const ZDCategoryNodePtr a = actions->addFolder(QStringLiteral("A"));
        const ZDCategoryNodePtr b = actions->addFolder(QStringLiteral("B"), a);
        const ZDCategoryNodePtr c = actions->addFolder(QStringLiteral("C"));

        ZDSidebarDrop nest{ZDSidebarDrop::MoveFolders, {c}, a, 0, {}};
        actions->applyDrop(nest);
        QCOMPARE(titles(center->rootFolderNodes()), QStringList{"A"});
        QCOMPARE(titles(a->children()), (QStringList{"C", "B"}));

        ZDSidebarDrop outward{ZDSidebarDrop::MoveFolders, {b}, nullptr, 0, {}};
        actions->applyDrop(outward);
        ZDSidebarDrop shortcut{ZDSidebarDrop::MakeShortcuts, {c}, nullptr, -1, {}};
        actions->applyDrop(shortcut);
        reopen();
        QCOMPARE(titles(center->rootFolderNodes()), (QStringList{"B", "A"}));
        QCOMPARE(titles(center->rootFolderNodes().at(1)->children()), QStringList{"C"});
        QCOMPARE(center->shortcutNodes().size(), 1);
        QCOMPARE(center->shortcutNodes().first()->title(), QStringLiteral("C")); // asked of the library
    }

    void snippetDropsMoveAndTag()
    {
        const ZDCategoryNodePtr folder = actions->addFolder(QStringLiteral("F"));
        const ZDSnippetPtr s = addSnippet(*center, QStringLiteral("s"), QLatin1String(ZDUncategorizedUUID));
        const ZDTagPtr tag = actions->tagNamed(QStringLiteral("Café"));
        QCOMPARE(actions->tagNamed(QStringLiteral("cafe")), tag); // equivalent names are one tag
        const ZDCategoryNodePtr tagNode = ZDCategoryNode::tagNodeWithTitle(tag->title(), tag->UUID());

        actions->applyDrop({ZDSidebarDrop::MoveSnippets, {}, folder, -1, {s->UUID()}});
        actions->applyDrop({ZDSidebarDrop::TagSnippets, {}, tagNode, -1, {s->UUID(), QStringLiteral("NOT-THERE")}});
        actions->applyDrop({ZDSidebarDrop::TagSnippets, {}, tagNode, -1, {s->UUID()}}); // already tagged: nothing
        QVERIFY(ZDTestSupport::waitFor([&] { return log.notices.contains("snippetsTagsDidChange 1"); }));
        QCOMPARE(log.notices.count("snippetsTagsDidChange 1"), 1);
        QVERIFY(log.notices.contains("snippetsCategoryDidChange 1"));
        reopen();
        const ZDSnippetPtr reread = center->snippetWithUUID(s->UUID());
        QCOMPARE(reread->folderUUID(), folder->UUID());
        QCOMPARE(reread->tagNames(), QStringList{"Café"});
    }

    void deletingATagTakesItOffItsSnippets()
    {
        const ZDTagPtr keep = actions->tagNamed(QStringLiteral("keep"));
        const ZDTagPtr drop = actions->tagNamed(QStringLiteral("drop"));
        const ZDSnippetPtr s = addSnippet(*center, QStringLiteral("s"), QLatin1String(ZDUncategorizedUUID));
        QVERIFY(
            center->setSnippetTagNames(s->UUID(), {QStringLiteral("drop"), QStringLiteral("keep")}, nullptr));
        actions->deleteNodes({ZDCategoryNode::tagNodeWithTitle(drop->title(), drop->UUID())});
        QVERIFY(ZDTestSupport::waitFor([&] { return log.notices.contains("tagsDidRemove"); }));
        reopen();
        QCOMPARE(center->tagNames(), QStringList{"keep"});
        QCOMPARE(center->snippetWithUUID(s->UUID())->tagUUIDs(), QStringList{keep->UUID()});
    }

    void newAndPastedSnippetsLandInTheSelectedFolder()
    {
        const ZDCategoryNodePtr folder =
            ZDCategoryNode::folderNodeWithTitle(QStringLiteral("Py"), {}, QStringLiteral("PythonLexer"));
        center->setRootFolderNodes({folder});
        const ZDSnippetPtr made = actions->createSnippet(folder);
        QCOMPARE(made->folderUUID(), folder->UUID());
        QCOMPARE(made->parts().first()->language().identifier(), QStringLiteral("PythonLexer"));
        const ZDTagPtr tag = actions->tagNamed(QStringLiteral("t"));
        QCOMPARE(actions->createSnippet(ZDCategoryNode::tagNodeWithTitle(tag->title(), tag->UUID()))->tagUUIDs(),
                 QStringList{tag->UUID()});

        // Pasting a snippet the library holds makes a copy with new identities; the library's
        // tags stay, unknown ones go.
        const auto copied = std::make_shared<ZDSnippet>(
            made->title(), made->UUID(), made->folderUUID(),
            QStringList{tag->UUID(), QStringLiteral("UNKNOWN-TAG")}, QString(), QString(), QString(),
            made->parts(), made->dateCreated(), made->dateModified());
        const ZDSnippetList pasted = actions->pasteSnippets({copied}, QLatin1String(ZDUncategorizedUUID));
        QCOMPARE(pasted.size(), 1);
        QVERIFY(pasted.first()->UUID() != made->UUID());
        QVERIFY(pasted.first()->parts().first()->UUID() != made->parts().first()->UUID());
        QCOMPARE(pasted.first()->parts().first()->snippetUUID(), pasted.first()->UUID());
        QCOMPARE(pasted.first()->tagUUIDs(), QStringList{tag->UUID()});
        QCOMPARE(pasted.first()->folderUUID(), QLatin1String(ZDUncategorizedUUID));
        // A snippet from elsewhere (cut, or another library) keeps its identity.
        const ZDSnippetPtr foreign = ZDSnippet::create(QStringLiteral("foreign"));
        QCOMPARE(actions->pasteSnippets({foreign}, folder->UUID()).first()->UUID(), foreign->UUID());
        QCOMPARE(center->snippets().size(), 4);
    }
};

QTEST_MAIN(TestLibraryActions)
#include "test_library_actions.moc"
