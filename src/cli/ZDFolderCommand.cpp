#include "ZDFolderCommand.h"

#include "ZDCategoryNode.h"
#include "ZDCliArguments.h"
#include "ZDCliLibrary.h"

int ZDFolderCommand::run(ZDCliContext &context, const QStringList &arguments)
{
    const QCommandLineOption parent(QStringLiteral("parent"), {}, QStringLiteral("NAME|UUID"));
    ZDCliArguments args(context, name(), {parent}, ZDCliArguments::ContinueAnyway);
    const QString usage = QStringLiteral("usage: folder add NAME [--parent NAME|UUID]");
    int status = 0;
    if (!args.parse(arguments, 2, 2, usage, &status))
        return status;
    const QStringList positional = args.positional();
    if (positional.first() != QLatin1String("add"))
        return context.usage(usage);

    ZDCliLibrary library(args);
    if (!library.open(&status))
        return status;
    const ZDCategoryNodePtr folder = ZDCategoryNode::folderNodeWithTitle(positional.at(1));
    QList<ZDCategoryNodePtr> roots = library->rootFolderNodes();
    if (args.isSet(parent)) {
        const QString parentUUID = library.folderUUIDNamed(args.value(parent));
        const ZDCategoryNodePtr parentNode = library->folderNodeWithUUID(parentUUID);
        if (!parentNode)
            return context.fail(ZDError(0, QStringLiteral("No folder \"%1\"").arg(args.value(parent))));
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
