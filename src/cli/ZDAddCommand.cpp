#include "ZDAddCommand.h"

#include "ZDCliArguments.h"
#include "ZDCliInput.h"
#include "ZDCliLibrary.h"
#include "ZDLanguageRegistry.h"
#include "ZDSnippet.h"
#include "ZDSnippetJson.h"
#include "ZDTag.h"

namespace {
// Line endings as everywhere in the library: "\r\n" and "\r" become "\n"; U+FFFC goes.
QString normalizedContent(QString text)
{
    text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    text.replace(QLatin1Char('\r'), QLatin1Char('\n'));
    text.remove(QChar(0xFFFC));
    return text;
}
} // namespace

int ZDAddCommand::run(ZDCliContext &context, const QStringList &arguments)
{
    const QCommandLineOption title(QStringLiteral("title"), {}, QStringLiteral("TITLE"));
    const QCommandLineOption folder(QStringLiteral("folder"), {}, QStringLiteral("NAME|UUID"));
    const QCommandLineOption tag(QStringLiteral("tag"), {}, QStringLiteral("NAME"));
    const QCommandLineOption language(QStringLiteral("language"), {}, QStringLiteral("ID"));
    const QCommandLineOption note(QStringLiteral("note"), {}, QStringLiteral("TEXT"));
    ZDCliArguments args(context, name(), {title, folder, tag, language, note},
                        ZDCliArguments::Json | ZDCliArguments::ContinueAnyway);
    int status = 0;
    if (!args.parse(arguments, 0, 0,
                    QStringLiteral("add takes no arguments; the content comes from standard input"), &status))
        return status;

    ZDCliLibrary library(args);
    if (!library.open(&status))
        return status;

    QString folderUUID = QLatin1String(ZDUncategorizedUUID);
    if (args.isSet(folder)) {
        folderUUID = library.folderUUIDNamed(args.value(folder));
        if (folderUUID.isEmpty())
            return context.fail(ZDError(0, QStringLiteral("No folder \"%1\"").arg(args.value(folder))));
    }
    QString languageIdentifier = args.value(language);
    if (languageIdentifier.isEmpty())
        languageIdentifier = library->defaultLanguageIdentifierForFolderWithUUID(folderUUID);
    ZDLanguage partLanguage = context.languages.plainTextLanguage();
    if (!languageIdentifier.isEmpty()) {
        partLanguage = context.languages.languageWithIdentifier(languageIdentifier);
        if (partLanguage.identifier() != languageIdentifier && args.isSet(language))
            return context.usage(
                QStringLiteral("unknown language \"%1\"; see zandrio-cli languages").arg(languageIdentifier));
    }

    ZDError error;
    QStringList tagUUIDs;
    for (const QString &tagName : args.values(tag)) {
        ZDTagPtr found = library->tagWithName(tagName);
        if (!found && !(found = library->addTag(tagName, nullptr, &error)))
            return context.fail(error);
        if (!tagUUIDs.contains(found->UUID()))
            tagUUIDs << found->UUID();
    }

    const ZDSnippetPtr snippet = ZDSnippet::create(
        args.isSet(title) ? args.value(title) : QStringLiteral("untitled snippet"), folderUUID);
    const ZDSnippetPartPtr part = snippet->parts().first();
    part->setContent(normalizedContent(ZDCliInput::readStandardInput(context)));
    part->setLanguage(partLanguage);
    part->setNote(args.value(note));
    snippet->setTagUUIDs(tagUUIDs);
    if (!library->addSnippets({snippet}, nullptr, &error))
        return context.fail(error);
    if (!library.save(&status))
        return status;

    if (args.json())
        ZDSnippetJson::print(context.out, ZDSnippetJson::object(*snippet, library.center()));
    else
        context.out << snippet->UUID() << "\n";
    return 0;
}
