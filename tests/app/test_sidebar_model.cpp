// Drag rules of the sidebar by node kind, and what a drop asks the window to do.

#include "ZDCategoryNode.h"
#include "ZDCoreIndex.h"
#include "ZDManualWriteTimer.h"
#include "ZDMulticastDelegateHandler.h"
#include "ZDSidebarModel.h"
#include "ZDSidebarView.h"
#include "ZDSmartGroupCounts.h"
#include "ZDSnippet.h"
#include "ZDSnippetPasteboard.h"
#include "ZDTag.h"

#include <QImage>
#include <QMimeData>
#include <QSignalSpy>
#include <QTest>

#include <memory>

namespace {
const QString kFavourites = QStringLiteral("com.varnok.Zandrio.UUID.Group.Favourites");
const QString kFolders = QStringLiteral("com.varnok.Zandrio.UUID.Group.Folders");
const QString kSmartGroups = QStringLiteral("com.varnok.Zandrio.UUID.Group.SmartGroups");
const QString kTags = QStringLiteral("com.varnok.Zandrio.UUID.Group.Tags");
} // namespace

class TestSidebarModel : public QObject
{
    Q_OBJECT

    ZDCategoryNodePtr work, projects, archive, notes, shortcut, smartA, smartB, tag;
    std::unique_ptr<ZDSidebarModel> model;

    QModelIndex at(const ZDCategoryNodePtr &node) { return model->indexOfNode(node->nodeType(), node->UUID()); }
    std::unique_ptr<QMimeData> drag(const QList<ZDCategoryNodePtr> &nodes)
    {
        QModelIndexList indexes;
        for (const ZDCategoryNodePtr &node : nodes)
            indexes << at(node);
        return std::unique_ptr<QMimeData>(model->mimeData(indexes));
    }
    ZDSidebarDrop plan(const QList<ZDCategoryNodePtr> &nodes, int row, const QModelIndex &parent)
    {
        auto data = drag(nodes);
        return model->planDrop(data.get(), row, parent);
    }

private Q_SLOTS:
    void init()
    {
        // Folders: Work (Projects (Archive)), Notes. Favorites: a shortcut to Notes.
        work = ZDCategoryNode::folderNodeWithTitle(QStringLiteral("Work"));
        projects = ZDCategoryNode::folderNodeWithTitle(QStringLiteral("Projects"));
        archive = ZDCategoryNode::folderNodeWithTitle(QStringLiteral("Archive"));
        notes = ZDCategoryNode::folderNodeWithTitle(QStringLiteral("Notes"));
        work->addChild(projects);
        projects->addChild(archive);
        shortcut = ZDCategoryNode::shortcutNodeWithTargetUUID(notes->UUID());
        smartA = ZDCategoryNode::smartGroupNodeWithTitle(QStringLiteral("Recent"), {}, QStringLiteral("TRUEPREDICATE"));
        smartB = ZDCategoryNode::smartGroupNodeWithTitle(QStringLiteral("Gists"), {}, QStringLiteral("isGist == \"Yes\""));
        tag = ZDCategoryNode::tagNodeWithTitle(QStringLiteral("sql"));
        model = std::make_unique<ZDSidebarModel>();
        model->setContent({{shortcut}, {work, notes}, {smartA, smartB}, {tag}});
    }

    void fixedNodesAndTagsCannotBeDragged()
    {
        for (const QModelIndex &index : {model->allSnippetsIndex(), at(tag), model->groupIndex(kFolders),
                                         model->indexOfNode(ZDCategoryNode::Uncategorized, QLatin1String(ZDUncategorizedUUID))}) {
            QVERIFY(!(model->flags(index) & Qt::ItemIsDragEnabled));
            QVERIFY(!std::unique_ptr<QMimeData>(model->mimeData({index})));
        }
        for (const ZDCategoryNodePtr &node : {work, shortcut, smartA})
            QVERIFY(model->flags(at(node)) & Qt::ItemIsDragEnabled);
        // Group headers are not selectable; a shortcut takes its folder's name, a tag has its own.
        QVERIFY(!(model->flags(model->groupIndex(kTags)) & Qt::ItemIsSelectable));
        QVERIFY(!(model->flags(at(shortcut)) & Qt::ItemIsEditable));
        QVERIFY(model->flags(at(tag)) & Qt::ItemIsEditable);
    }

    void folderNestsIntoAnotherFolderButNeverIntoItself()
    {
        ZDSidebarDrop drop = plan({notes}, -1, at(archive));
        QCOMPARE(drop.operation, ZDSidebarDrop::MoveFolders);
        QCOMPARE(drop.target, archive);
        QCOMPARE(drop.index, -1);

        QCOMPARE(plan({work}, -1, at(work)).operation, ZDSidebarDrop::None);
        QCOMPARE(plan({work}, -1, at(archive)).operation, ZDSidebarDrop::None); // its own grandchild
        QCOMPARE(plan({projects}, 0, at(archive)).operation, ZDSidebarDrop::None);
        QCOMPARE(plan({archive}, -1, at(notes)).operation, ZDSidebarDrop::MoveFolders);
    }

    void folderReordersAmongTopLevelFoldersPastTheFixedRows()
    {
        const QModelIndex folders = model->groupIndex(kFolders);
        // Rows: All Snippets, Uncategorized, Work, Notes.
        ZDSidebarDrop drop = plan({notes}, 2, folders);
        QCOMPARE(drop.operation, ZDSidebarDrop::MoveFolders);
        QVERIFY(!drop.target);
        QCOMPARE(drop.index, 0);
        QCOMPARE(plan({notes}, 0, folders).index, 0); // above the fixed rows: first
        // Moving Work below Notes: Work leaves the list first, so it lands at 1.
        QCOMPARE(plan({work}, 4, folders).index, 1);
        QCOMPARE(plan({work}, -1, folders).index, -1);
        // Within a folder the position counts that folder's children.
        QCOMPARE(plan({notes}, 1, at(work)).index, 1);
    }

    void folderOnFavoritesMakesOneShortcut()
    {
        const QModelIndex favourites = model->groupIndex(kFavourites);
        ZDSidebarDrop drop = plan({work}, 0, favourites);
        QCOMPARE(drop.operation, ZDSidebarDrop::MakeShortcuts);
        QCOMPARE(drop.nodes, QList<ZDCategoryNodePtr>{work});
        QCOMPARE(drop.index, 0);
        // Notes already has a shortcut.
        QCOMPARE(plan({notes}, -1, favourites).operation, ZDSidebarDrop::None);
        drop = plan({work, notes}, -1, favourites);
        QCOMPARE(drop.nodes, QList<ZDCategoryNodePtr>{work});
    }

    void nodesStayInTheirOwnGroup()
    {
        for (const QModelIndex &target : {at(tag), model->groupIndex(kTags), model->groupIndex(kSmartGroups), at(smartA),
                                          model->allSnippetsIndex()})
            QCOMPARE(plan({work}, -1, target).operation, ZDSidebarDrop::None);
        QCOMPARE(plan({shortcut}, -1, at(work)).operation, ZDSidebarDrop::None);
        QCOMPARE(plan({shortcut}, 0, model->groupIndex(kFolders)).operation, ZDSidebarDrop::None);
        QCOMPARE(plan({smartA}, 0, model->groupIndex(kFavourites)).operation, ZDSidebarDrop::None);
        QCOMPARE(plan({smartA, work}, -1, at(notes)).operation, ZDSidebarDrop::None); // mixed kinds

        ZDSidebarDrop drop = plan({shortcut}, 1, model->groupIndex(kFavourites));
        QCOMPARE(drop.operation, ZDSidebarDrop::ReorderShortcuts);
        QCOMPARE(drop.index, 0);
        drop = plan({smartA}, 2, model->groupIndex(kSmartGroups));
        QCOMPARE(drop.operation, ZDSidebarDrop::ReorderSmartGroups);
        QCOMPARE(drop.index, 1);
    }

    void sortedSidebarIgnoresPositions()
    {
        model->setSortsFoldersAndSmartGroups(true);
        // Notes sorts before Work now.
        QCOMPARE(model->nodeAtIndex(model->index(2, 0, model->groupIndex(kFolders))), notes);
        QCOMPARE(model->nodeAtIndex(model->index(0, 0, model->groupIndex(kSmartGroups))), smartB);
        QCOMPARE(plan({work}, 2, model->groupIndex(kFolders)).index, -1);
        QCOMPARE(plan({smartA}, 0, model->groupIndex(kSmartGroups)).operation, ZDSidebarDrop::None);
    }

    void snippetsMoveToFoldersAndGetTagged()
    {
        auto snippet = ZDSnippet::create(QStringLiteral("query"));
        QMimeData uuids;
        uuids.setData(ZDSidebarModel::kSnippetUUIDsMimeType, snippet->UUID().toUtf8());
        QMimeData archived;
        ZDSnippetPasteboard::writeSnippets(&archived, {snippet});

        QSignalSpy requests(model.get(), &ZDSidebarModel::dropRequested);
        for (const ZDCategoryNodePtr &target : {archive, shortcut}) {
            QVERIFY(model->dropMimeData(&uuids, Qt::MoveAction, -1, 0, at(target)) == false);
            const auto drop = requests.takeLast().at(0).value<ZDSidebarDrop>();
            QCOMPARE(drop.operation, ZDSidebarDrop::MoveSnippets);
            QCOMPARE(drop.target, target);
            QCOMPARE(drop.snippetUUIDs, QStringList{snippet->UUID()});
        }
        // From another program: the snippets' own archive.
        model->dropMimeData(&archived, Qt::CopyAction, -1, 0, at(tag));
        auto drop = requests.takeLast().at(0).value<ZDSidebarDrop>();
        QCOMPARE(drop.operation, ZDSidebarDrop::TagSnippets);
        QCOMPARE(drop.snippetUUIDs, QStringList{snippet->UUID()});
        const QModelIndex uncategorized = model->indexOfNode(ZDCategoryNode::Uncategorized, QLatin1String(ZDUncategorizedUUID));
        QVERIFY(model->canDropMimeData(&uuids, Qt::MoveAction, -1, 0, uncategorized));

        for (const QModelIndex &refused : {model->allSnippetsIndex(), at(smartA), model->groupIndex(kFolders)}) {
            QVERIFY(!model->canDropMimeData(&uuids, Qt::MoveAction, -1, 0, refused));
            QVERIFY(!model->dropMimeData(&uuids, Qt::MoveAction, -1, 0, refused));
        }
        QVERIFY(!model->canDropMimeData(&uuids, Qt::MoveAction, 0, 0, at(work))); // between rows
        QCOMPARE(requests.count(), 0);
    }

    void renamesAreRequestedNotApplied()
    {
        QSignalSpy renames(model.get(), &ZDSidebarModel::renameRequested);
        QVERIFY(model->setData(at(work), QStringLiteral("  Job  ")));
        QCOMPARE(renames.count(), 1);
        QCOMPARE(renames.at(0).at(1).toString(), QStringLiteral("Job"));
        QCOMPARE(work->title(), QStringLiteral("Work"));
        QVERIFY(!model->setData(at(work), QStringLiteral("   ")));
        QVERIFY(!model->setData(model->allSnippetsIndex(), QStringLiteral("Everything")));
        QCOMPARE(renames.count(), 1);
    }

    void countsFollowTheLibrarysNotices()
    {
        // Two snippets in Work, one uncategorized; a smart group over titles, one that does not parse.
        ZDTagPtr sqlTag = std::make_shared<ZDTag>(QStringLiteral("sql"), tag->UUID());
        ZDSnippetList library;
        for (const char *title : {"select", "update", "notes"}) {
            library << ZDSnippet::create(QLatin1String(title));
            if (library.size() < 3)
                library.last()->setFolderUUID(work->UUID());
        }
        smartA->setPredicateString(QStringLiteral("title BEGINSWITH \"s\""));
        smartB->setPredicateString(QStringLiteral("title ==== 1"));
        bool valid = true;
        ZDMulticastDelegateHandler notifier;
        ZDCoreIndexSource source;
        source.snippets = [&] { return library; };
        source.rootFolderNodes = [&] { return QList<ZDCategoryNodePtr>{work, notes}; };
        source.tags = [&] { return ZDTagList{sqlTag}; };
        source.hasValidLibrary = [&] { return valid; };
        auto timer = std::make_unique<ZDManualWriteTimer>();
        ZDManualWriteTimer *tick = timer.get();
        ZDCoreIndex index(source, &notifier, nullptr, std::move(timer));
        ZDSmartGroupCounts smartGroups({[&] { return library; },
                                        [&] {
                                            return QList<ZDCategoryNodePtr>{smartA, smartB};
                                        },
                                        [&] { return valid; }},
                                       &notifier);
        model->setCountSources(&index, &smartGroups);
        auto count = [&](const QModelIndex &row) { return row.data(ZDSidebarModel::CountRole).toInt(); };
        const QModelIndex uncategorized =
            model->indexOfNode(ZDCategoryNode::Uncategorized, QLatin1String(ZDUncategorizedUUID));
        QCOMPARE(count(model->allSnippetsIndex()), -1); // nothing counted yet

        notifier.noteApplicationLibraryChanged(nullptr);
        QTRY_COMPARE(count(model->allSnippetsIndex()), 3);
        QTRY_COMPARE(count(at(smartA)), 1);
        QCOMPARE(count(at(work)), 2);
        QCOMPARE(count(uncategorized), 1);
        QCOMPARE(count(at(tag)), 0);
        QCOMPARE(count(at(smartB)), -1); // its query does not parse
        tick->fire(); // quiet: the tick stops, so what follows is counted from the notices alone

        library[0]->setFolderUUID(notes->UUID()); // moved: Work 1, Notes and its shortcut 1
        notifier.noteSnippetsCategoryChanged({library[0]}, nullptr);
        library[1]->setTagUUIDs({sqlTag->UUID()});
        notifier.noteSnippetsTagsChanged({library[1]}, nullptr);
        library[2]->setTitle(QStringLiteral("sketch")); // starts matching the smart group
        notifier.noteSnippetTitleChanged(library[2], nullptr);
        QTRY_COMPARE(count(at(smartA)), 2);
        QTRY_COMPARE(count(at(tag)), 1);
        QTRY_COMPARE(count(at(shortcut)), 1);
        QCOMPARE(count(at(work)), 1);
        QCOMPARE(count(at(notes)), 1);

        library[0]->setTitle(QStringLiteral("insert")); // stops matching
        notifier.noteSnippetTitleChanged(library[0], nullptr);
        QTRY_COMPARE(count(at(smartA)), 1);
        ZDSnippetPtr removed = library.takeAt(2);
        notifier.noteSnippetsRemoved({removed}, nullptr);
        ZDSnippetPtr added = ZDSnippet::create(QStringLiteral("script"), work->UUID());
        library << added;
        notifier.noteSnippetAdded(added, nullptr);
        QTRY_COMPARE(count(uncategorized), 0);
        QTRY_COMPARE(count(at(work)), 2);
        QCOMPARE(count(at(smartA)), 1);
        QCOMPARE(count(model->allSnippetsIndex()), 3);

        // A library switch counts the new library from scratch (the index at its next tick).
        library = {ZDSnippet::create(QStringLiteral("lone"))};
        notifier.noteApplicationLibraryChanged(nullptr);
        QTRY_COMPARE(count(at(smartA)), 0);
        QTRY_COMPARE(index.buildDirtyTypes(), int(ZDCoreIndex::All));
        tick->fire();
        QTRY_COMPARE(count(model->allSnippetsIndex()), 1);
        QCOMPARE(count(at(work)), 0);

        // The sidebar draws a badge only beside rows with a count.
        ZDSidebarView view;
        view.setSidebarModel(model.get());
        view.resize(240, 500);
        view.show();
        QVERIFY(QTest::qWaitForWindowExposed(&view));
        const QImage image = view.viewport()->grab().toImage();
        auto badgeDrawn = [&](const QModelIndex &row) {
            const QRect rect = view.visualRect(row);
            const QColor background = image.pixelColor(rect.right() - 2, rect.center().y());
            for (int x = rect.right() - 30; x < rect.right(); ++x) {
                if (image.pixelColor(x, rect.center().y()) != background)
                    return true;
            }
            return false;
        };
        QVERIFY(badgeDrawn(at(smartA)));
        QVERIFY(!badgeDrawn(at(smartB)));
        QVERIFY(!badgeDrawn(model->groupIndex(kTags)));
    }

    void countsComeFromTheProviderExceptForGroups()
    {
        model->setCountProvider([](const ZDCategoryNode &node) { return node.isTag() ? 7 : 3; });
        QCOMPARE(at(tag).data(ZDSidebarModel::CountRole).toInt(), 7);
        QCOMPARE(at(archive).data(ZDSidebarModel::CountRole).toInt(), 3);
        QCOMPARE(model->groupIndex(kTags).data(ZDSidebarModel::CountRole).toInt(), -1);
    }
};

QTEST_MAIN(TestSidebarModel)
#include "test_sidebar_model.moc"
