#include "ZDListCommand.h"

#include "ZDCliArguments.h"
#include "ZDCliLibrary.h"
#include "ZDSnippet.h"
#include "ZDSnippetJson.h"
#include "ZDTag.h"

#include <QJsonArray>

int ZDListCommand::run(ZDCliContext &context, const QStringList &arguments)
{
    const QCommandLineOption folder(QStringLiteral("folder"), {}, QStringLiteral("NAME|UUID"));
    const QCommandLineOption tag(QStringLiteral("tag"), {}, QStringLiteral("NAME"));
    ZDCliArguments args(context, name(), {folder, tag},
                        ZDCliArguments::Json | ZDCliArguments::ContinueAnyway);
    int status = 0;
    if (!args.parse(arguments, 0, 0, QStringLiteral("list takes no arguments"), &status))
        return status;

    ZDCliLibrary library(args);
    if (!library.open(&status))
        return status;
    QString folderUUID;
    if (args.isSet(folder)) {
        folderUUID = library.folderUUIDNamed(args.value(folder));
        if (folderUUID.isEmpty())
            return context.fail(ZDError(0, QStringLiteral("No folder \"%1\"").arg(args.value(folder))));
    }
    QString tagUUID;
    if (args.isSet(tag)) {
        const ZDTagPtr found = library->tagWithName(args.value(tag));
        if (!found)
            return context.fail(ZDError(0, QStringLiteral("No tag \"%1\"").arg(args.value(tag))));
        tagUUID = found->UUID();
    }

    const QHash<QString, QString> folderTitles = library->folderTitles();
    const ZDTagList tags = library->tags();
    QJsonArray array;
    for (const ZDSnippetPtr &snippet : library->snippets()) {
        if (!folderUUID.isEmpty() && snippet->folderUUID() != folderUUID)
            continue;
        if (!tagUUID.isEmpty() && !snippet->tagUUIDs().contains(tagUUID))
            continue;
        if (args.json()) {
            array.append(ZDSnippetJson::object(*snippet, folderTitles, tags));
        } else {
            context.out << snippet->UUID() << "\t" << snippet->title() << "\t"
                        << folderTitles.value(snippet->folderUUID()) << "\t"
                        << snippet->tagNames().join(QLatin1Char(',')) << "\n";
        }
    }
    if (args.json())
        ZDSnippetJson::print(context.out, array);
    return 0;
}
