#include "ZDRemoveCommand.h"

#include "ZDCliArguments.h"
#include "ZDCliLibrary.h"
#include "ZDSnippet.h"

int ZDRemoveCommand::run(ZDCliContext &context, const QStringList &arguments)
{
    ZDCliArguments args(context, name(), {}, ZDCliArguments::ContinueAnyway);
    int status = 0;
    if (!args.parse(arguments, 1, ZDCliArguments::unlimited,
                    QStringLiteral("rm takes one or more snippet UUIDs"), &status))
        return status;

    ZDCliLibrary library(args);
    if (!library.open(&status))
        return status;
    for (const QString &uuid : args.positional()) {
        if (!library->snippetWithUUID(uuid))
            return context.fail(ZDError(0, QStringLiteral("No snippet %1; nothing removed").arg(uuid)));
    }
    ZDError error;
    if (!library->removeSnippets(args.positional(), nullptr, &error))
        return context.fail(error);
    return library.save(&status) ? 0 : status;
}
