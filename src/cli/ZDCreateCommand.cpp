#include "ZDCreateCommand.h"

#include "ZDCliArguments.h"
#include "ZDCliLibrary.h"

#include <QFileInfo>

int ZDCreateCommand::run(ZDCliContext &context, const QStringList &arguments)
{
    ZDCliArguments args(context, name(), {});
    int status = 0;
    if (!args.parse(arguments, 0, 0,
                    QStringLiteral("create takes no arguments; give the place with --library"), &status))
        return status;
    ZDError error;
    const QString path = ZDCliLibrary::resolvePath(context, &error);
    if (path.isEmpty())
        return context.fail(error);
    if (QFileInfo::exists(path))
        return context.fail(ZDError(0, QStringLiteral("%1 already exists").arg(path)));

    ZDCliLibrary library(args);
    if (!library.open(&status) || !library.save(&status))
        return status;
    context.out << path << "\n";
    return 0;
}
