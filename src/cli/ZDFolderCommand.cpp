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
    QString parentUUID;
    if (args.isSet(parent)) {
        parentUUID = library.folderUUIDNamed(args.value(parent));
        if (!library->folderNodeWithUUID(parentUUID))
            return context.fail(ZDError(0, QStringLiteral("No folder \"%1\"").arg(args.value(parent))));
    }
    ZDError error;
    const ZDCategoryNodePtr folder = library->createFolder(positional.at(1), parentUUID, -1, nullptr, &error);
    if (!folder)
        return context.fail(error);
    if (!library.save(&status))
        return status;
    context.out << folder->UUID() << "\n";
    return 0;
}
