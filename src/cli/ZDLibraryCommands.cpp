#include "ZDCategoryNode.h"
#include "ZDCliLibrary.h"
#include "ZDLibraryContents.h"
#include "ZDPackageStorage.h"
#include "ZDStoreCommands.h"

#include <QCommandLineParser>
#include <QFileInfo>

void zdAddStoreCommands(std::vector<std::unique_ptr<ZDCliCommand>> &commands)
{
    commands.push_back(std::make_unique<ZDCreateCommand>());
    commands.push_back(std::make_unique<ZDAddCommand>());
    commands.push_back(std::make_unique<ZDListCommand>());
    commands.push_back(std::make_unique<ZDShowCommand>());
    commands.push_back(std::make_unique<ZDRemoveCommand>());
    commands.push_back(std::make_unique<ZDFolderCommand>());
    commands.push_back(std::make_unique<ZDCheckCommand>());
}

int ZDCreateCommand::run(ZDCliContext &context, const QStringList &arguments)
{
    QCommandLineParser parser;
    int status = 0;
    if (!parse(parser, context, name(), arguments, &status))
        return status;
    if (!parser.positionalArguments().isEmpty())
        return context.usage(QStringLiteral("create takes no arguments; give the place with --library"));
    ZDError error;
    const QString path = ZDCliLibrary::resolvePath(context, &error);
    if (path.isEmpty())
        return context.fail(error);
    if (QFileInfo::exists(path))
        return context.fail(ZDError(0, QStringLiteral("%1 already exists").arg(path)));

    ZDCliLibrary library(context, false);
    if (!library.open(&status) || !library.save(&status))
        return status;
    context.out << path << "\n";
    return 0;
}

int ZDFolderCommand::run(ZDCliContext &context, const QStringList &arguments)
{
    QCommandLineParser parser;
    const QCommandLineOption parent(QStringLiteral("parent"), {}, QStringLiteral("NAME|UUID"));
    parser.addOptions({parent, ZDCliLibrary::continueAnywayOption()});
    int status = 0;
    if (!parse(parser, context, name(), arguments, &status))
        return status;
    const QStringList positional = parser.positionalArguments();
    if (positional.size() != 2 || positional.first() != QLatin1String("add"))
        return context.usage(QStringLiteral("usage: folder add NAME [--parent NAME|UUID]"));

    ZDCliLibrary library(context, parser.isSet(QStringLiteral("continue-anyway")));
    if (!library.open(&status))
        return status;
    const ZDCategoryNodePtr folder = ZDCategoryNode::folderNodeWithTitle(positional.at(1));
    QList<ZDCategoryNodePtr> roots = library->rootFolderNodes();
    if (parser.isSet(parent)) {
        const QString parentUUID = library.folderUUIDNamed(parser.value(parent));
        const ZDCategoryNodePtr parentNode = library->folderNodeWithUUID(parentUUID);
        if (!parentNode)
            return context.fail(ZDError(0, QStringLiteral("No folder \"%1\"").arg(parser.value(parent))));
        parentNode->addChild(folder);
    } else {
        roots << folder;
    }
    library->setRootFolderNodes(roots);
    if (!library.save(&status))
        return status;
    context.out << folder->UUID() << "\n";
    return 0;
}

int ZDCheckCommand::run(ZDCliContext &context, const QStringList &arguments)
{
    QCommandLineParser parser;
    const QCommandLineOption repair(QStringLiteral("repair"));
    parser.addOptions({repair, ZDCliLibrary::continueAnywayOption()});
    int status = 0;
    if (!parse(parser, context, name(), arguments, &status))
        return status;
    if (!parser.positionalArguments().isEmpty())
        return context.usage(QStringLiteral("check takes no arguments"));

    ZDError error;
    const QString path = ZDCliLibrary::resolvePath(context, &error);
    if (path.isEmpty())
        return context.fail(error);
    // An explicit check validates whatever the integrity-check preference says.
    if (!ZDPackageStorage::validatePackage(path, true, &error)) {
        const bool newer = error.code() == 126;
        if (!newer || !parser.isSet(QStringLiteral("continue-anyway")))
            return context.fail(error);
    }

    ZDCliLibrary library(context, parser.isSet(QStringLiteral("continue-anyway")), /*repairOnLoad=*/false);
    if (!library.open(&status))
        return status;
    ZDPackageTree tree;
    if (!ZDPackageTree::read(path, &tree, &error))
        return context.fail(error);
    const ZDLibraryContents contents = ZDLibraryContents::read(tree);
    for (const QString &file : contents.unreadableFiles)
        context.out << "Unreadable list: " << file << "\n";
    for (const QString &record : contents.unreadableRecords)
        context.out << "Unreadable record in: " << record << "\n";

    const ZDLibraryRepair::Report report = library->inspectInternalInconsistency();
    const QString verb = parser.isSet(repair) ? QStringLiteral("Moved") : QStringLiteral("Would move");
    for (const QString &uuid : report.uncategorizedSnippetUUIDs)
        context.out << verb << " to Uncategorized: snippet " << uuid << "\n";
    for (auto it = report.removedTagUUIDs.cbegin(); it != report.removedTagUUIDs.cend(); ++it)
        context.out << (parser.isSet(repair) ? "Removed" : "Would remove") << " unknown tags from snippet "
                    << it.key() << ": " << it.value().join(QLatin1Char(',')) << "\n";
    for (const QString &uuid : report.removedShortcutUUIDs)
        context.out << (parser.isSet(repair) ? "Removed" : "Would remove") << " shortcut to missing folder " << uuid
                    << "\n";
    context.out << library->snippets().size() << " snippets, " << library->tags().size() << " tags, "
                << report.issuesFixed() << (report.issuesFixed() == 1 ? " issue" : " issues") << "\n";

    // Asked for by name, the repair runs whatever the preference that turns off the repair after
    // loading says, as the check above validates whatever the integrity-check preference says.
    if (parser.isSet(repair)) {
        if (!report.isEmpty()) {
            library->repairInternalInconsistency();
            if (!library.save(&status))
                return status;
        }
        return 0;
    }
    return report.isEmpty() && contents.unreadableRecords.isEmpty() && contents.unreadableFiles.isEmpty() ? 0 : 1;
}
