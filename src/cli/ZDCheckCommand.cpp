#include "ZDCheckCommand.h"

#include "ZDCliArguments.h"
#include "ZDCliLibrary.h"
#include "ZDLibraryContents.h"
#include "ZDPackageStorage.h"

int ZDCheckCommand::run(ZDCliContext &context, const QStringList &arguments)
{
    const QCommandLineOption repair(QStringLiteral("repair"));
    ZDCliArguments args(context, name(), {repair}, ZDCliArguments::ContinueAnyway);
    int status = 0;
    if (!args.parse(arguments, 0, 0, QStringLiteral("check takes no arguments"), &status))
        return status;

    ZDError error;
    const QString path = ZDCliLibrary::resolvePath(context, &error);
    if (path.isEmpty())
        return context.fail(error);
    // An explicit check validates whatever the integrity-check preference says.
    if (!ZDPackageStorage::validatePackage(path, true, &error)) {
        const bool newer = error.code() == 126;
        if (!newer || !args.continueAnyway())
            return context.fail(error);
    }

    ZDCliLibrary library(args, /*repairOnLoad=*/false);
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
    const QString verb = args.isSet(repair) ? QStringLiteral("Moved") : QStringLiteral("Would move");
    for (const QString &uuid : report.uncategorizedSnippetUUIDs)
        context.out << verb << " to Uncategorized: snippet " << uuid << "\n";
    for (auto it = report.removedTagUUIDs.cbegin(); it != report.removedTagUUIDs.cend(); ++it)
        context.out << (args.isSet(repair) ? "Removed" : "Would remove") << " unknown tags from snippet "
                    << it.key() << ": " << it.value().join(QLatin1Char(',')) << "\n";
    for (const QString &uuid : report.removedShortcutUUIDs)
        context.out << (args.isSet(repair) ? "Removed" : "Would remove") << " shortcut to missing folder "
                    << uuid << "\n";
    context.out << library->snippets().size() << " snippets, " << library->tags().size() << " tags, "
                << report.issuesFixed() << (report.issuesFixed() == 1 ? " issue" : " issues") << "\n";

    // Asked for by name, the repair runs whatever the preference that turns off the repair after
    // loading says, as the check above validates whatever the integrity-check preference says.
    if (args.isSet(repair)) {
        if (!report.isEmpty()) {
            library->repairInternalInconsistency();
            if (!library.save(&status))
                return status;
        }
        return 0;
    }
    return report.isEmpty() && contents.unreadableRecords.isEmpty() && contents.unreadableFiles.isEmpty() ? 0
                                                                                                          : 1;
}
