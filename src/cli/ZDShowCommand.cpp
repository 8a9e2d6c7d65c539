#include "ZDShowCommand.h"

#include "ZDCliArguments.h"
#include "ZDCliLibrary.h"
#include "ZDSnippet.h"
#include "ZDSnippetJson.h"

int ZDShowCommand::run(ZDCliContext &context, const QStringList &arguments)
{
    ZDCliArguments args(context, name(), {}, ZDCliArguments::Json | ZDCliArguments::ContinueAnyway);
    int status = 0;
    if (!args.parse(arguments, 1, 1, QStringLiteral("show takes one snippet UUID"), &status))
        return status;

    ZDCliLibrary library(args);
    if (!library.open(&status))
        return status;
    const QString uuid = args.positional().first();
    const ZDSnippetPtr snippet = library->snippetWithUUID(uuid);
    if (!snippet)
        return context.fail(ZDError(0, QStringLiteral("No snippet %1").arg(uuid)));
    if (args.json()) {
        ZDSnippetJson::print(context.out, ZDSnippetJson::object(*snippet, library.center()));
        return 0;
    }
    const QJsonObject object = ZDSnippetJson::object(*snippet, library.center());
    context.out << "Title: " << snippet->title() << "\n"
                << "UUID: " << snippet->UUID() << "\n"
                << "Folder: " << object.value(QStringLiteral("folder")).toString() << "\n"
                << "Tags: " << snippet->tagNames().join(QStringLiteral(", ")) << "\n"
                << "Created: " << object.value(QStringLiteral("dateCreated")).toString() << "\n"
                << "Modified: " << object.value(QStringLiteral("dateModified")).toString() << "\n";
    for (const ZDSnippetPartPtr &part : snippet->parts()) {
        context.out << "\n--- " << part->title() << " (" << part->language().identifier() << ")\n";
        if (!part->note().isEmpty())
            context.out << "Note: " << part->note() << "\n";
        context.out << part->content();
        if (!part->content().endsWith(QLatin1Char('\n')))
            context.out << "\n";
    }
    return 0;
}
