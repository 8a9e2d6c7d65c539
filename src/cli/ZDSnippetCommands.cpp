#include "ZDCliLibrary.h"
#include "ZDLanguageRegistry.h"
#include "ZDSnippet.h"
#include "ZDSnippetJson.h"
#include "ZDStoreCommands.h"
#include "ZDTag.h"

#include <QCommandLineParser>
#include <QJsonArray>
#include <QJsonDocument>

#include <cstdio>

namespace {

QString readInput(ZDCliContext &context)
{
    if (context.in)
        return context.in->readAll();
    QTextStream standardInput(stdin);
    return standardInput.readAll();
}

// Line endings as everywhere in the library: "\r\n" and "\r" become "\n"; U+FFFC goes.
QString normalizedContent(QString text)
{
    text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    text.replace(QLatin1Char('\r'), QLatin1Char('\n'));
    text.remove(QChar(0xFFFC));
    return text;
}

void printJson(ZDCliContext &context, const QJsonValue &value)
{
    const QJsonDocument document = value.isArray() ? QJsonDocument(value.toArray()) : QJsonDocument(value.toObject());
    context.out << QString::fromUtf8(document.toJson(QJsonDocument::Indented));
}

// The tag named `name` (by the library's name equivalence), made and appended when missing.
ZDTagPtr tagNamed(ZDTagList &tags, const QString &name, bool create)
{
    for (const ZDTagPtr &tag : tags) {
        if (ZDTag::isTagNameEquivalentToName(tag->title(), name))
            return tag;
    }
    if (!create)
        return nullptr;
    tags << ZDTag::create(name);
    return tags.last();
}

} // namespace

int ZDAddCommand::run(ZDCliContext &context, const QStringList &arguments)
{
    QCommandLineParser parser;
    const QCommandLineOption title(QStringLiteral("title"), {}, QStringLiteral("TITLE"));
    const QCommandLineOption folder(QStringLiteral("folder"), {}, QStringLiteral("NAME|UUID"));
    const QCommandLineOption tag(QStringLiteral("tag"), {}, QStringLiteral("NAME"));
    const QCommandLineOption language(QStringLiteral("language"), {}, QStringLiteral("ID"));
    const QCommandLineOption note(QStringLiteral("note"), {}, QStringLiteral("TEXT"));
    const QCommandLineOption json(QStringLiteral("json"));
    parser.addOptions({title, folder, tag, language, note, json, ZDCliLibrary::continueAnywayOption()});
    int status = 0;
    if (!parse(parser, context, name(), arguments, &status))
        return status;
    if (!parser.positionalArguments().isEmpty())
        return context.usage(QStringLiteral("add takes no arguments; the content comes from standard input"));

    ZDCliLibrary library(context, parser.isSet(QStringLiteral("continue-anyway")));
    if (!library.open(&status))
        return status;

    QString folderUUID = QLatin1String(ZDUncategorizedUUID);
    if (parser.isSet(folder)) {
        folderUUID = library.folderUUIDNamed(parser.value(folder));
        if (folderUUID.isEmpty())
            return context.fail(ZDError(0, QStringLiteral("No folder \"%1\"").arg(parser.value(folder))));
    }
    QString languageIdentifier = parser.value(language);
    if (languageIdentifier.isEmpty())
        languageIdentifier = library->defaultLanguageIdentifierForFolderWithUUID(folderUUID);
    ZDLanguage partLanguage = context.languages.plainTextLanguage();
    if (!languageIdentifier.isEmpty()) {
        partLanguage = context.languages.languageWithIdentifier(languageIdentifier);
        if (partLanguage.identifier() != languageIdentifier && parser.isSet(language))
            return context.usage(QStringLiteral("unknown language \"%1\"; see zandrio-cli languages").arg(languageIdentifier));
    }

    ZDTagList tags = library->tags();
    const qsizetype tagCount = tags.size();
    QStringList tagUUIDs;
    for (const QString &tagName : parser.values(tag)) {
        const QString uuid = tagNamed(tags, tagName, true)->UUID();
        if (!tagUUIDs.contains(uuid))
            tagUUIDs << uuid;
    }
    if (tags.size() != tagCount)
        library->setTags(tags);

    const ZDSnippetPtr snippet =
        ZDSnippet::create(parser.isSet(title) ? parser.value(title) : QStringLiteral("untitled snippet"), folderUUID);
    const ZDSnippetPartPtr part = snippet->parts().first();
    part->setContent(normalizedContent(readInput(context)));
    part->setLanguage(partLanguage);
    part->setNote(parser.value(note));
    snippet->setTagUUIDs(tagUUIDs);
    library->addSnippet(snippet);
    if (!library.save(&status))
        return status;

    if (parser.isSet(json))
        printJson(context, ZDSnippetJson::object(*snippet, library.center()));
    else
        context.out << snippet->UUID() << "\n";
    return 0;
}

int ZDListCommand::run(ZDCliContext &context, const QStringList &arguments)
{
    QCommandLineParser parser;
    const QCommandLineOption folder(QStringLiteral("folder"), {}, QStringLiteral("NAME|UUID"));
    const QCommandLineOption tag(QStringLiteral("tag"), {}, QStringLiteral("NAME"));
    const QCommandLineOption json(QStringLiteral("json"));
    parser.addOptions({folder, tag, json, ZDCliLibrary::continueAnywayOption()});
    int status = 0;
    if (!parse(parser, context, name(), arguments, &status))
        return status;
    if (!parser.positionalArguments().isEmpty())
        return context.usage(QStringLiteral("list takes no arguments"));

    ZDCliLibrary library(context, parser.isSet(QStringLiteral("continue-anyway")));
    if (!library.open(&status))
        return status;
    QString folderUUID;
    if (parser.isSet(folder)) {
        folderUUID = library.folderUUIDNamed(parser.value(folder));
        if (folderUUID.isEmpty())
            return context.fail(ZDError(0, QStringLiteral("No folder \"%1\"").arg(parser.value(folder))));
    }
    QString tagUUID;
    if (parser.isSet(tag)) {
        ZDTagList tags = library->tags();
        const ZDTagPtr found = tagNamed(tags, parser.value(tag), false);
        if (!found)
            return context.fail(ZDError(0, QStringLiteral("No tag \"%1\"").arg(parser.value(tag))));
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
        if (parser.isSet(json)) {
            array.append(ZDSnippetJson::object(*snippet, folderTitles, tags));
        } else {
            context.out << snippet->UUID() << "\t" << snippet->title() << "\t"
                        << folderTitles.value(snippet->folderUUID()) << "\t"
                        << snippet->tagNames().join(QLatin1Char(',')) << "\n";
        }
    }
    if (parser.isSet(json))
        printJson(context, array);
    return 0;
}

int ZDShowCommand::run(ZDCliContext &context, const QStringList &arguments)
{
    QCommandLineParser parser;
    const QCommandLineOption json(QStringLiteral("json"));
    parser.addOptions({json, ZDCliLibrary::continueAnywayOption()});
    int status = 0;
    if (!parse(parser, context, name(), arguments, &status))
        return status;
    if (parser.positionalArguments().size() != 1)
        return context.usage(QStringLiteral("show takes one snippet UUID"));

    ZDCliLibrary library(context, parser.isSet(QStringLiteral("continue-anyway")));
    if (!library.open(&status))
        return status;
    const QString uuid = parser.positionalArguments().first();
    const ZDSnippetPtr snippet = library->snippetWithUUID(uuid);
    if (!snippet)
        return context.fail(ZDError(0, QStringLiteral("No snippet %1").arg(uuid)));
    if (parser.isSet(json)) {
        printJson(context, ZDSnippetJson::object(*snippet, library.center()));
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

int ZDRemoveCommand::run(ZDCliContext &context, const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.addOptions({ZDCliLibrary::continueAnywayOption()});
    int status = 0;
    if (!parse(parser, context, name(), arguments, &status))
        return status;
    if (parser.positionalArguments().isEmpty())
        return context.usage(QStringLiteral("rm takes one or more snippet UUIDs"));

    ZDCliLibrary library(context, parser.isSet(QStringLiteral("continue-anyway")));
    if (!library.open(&status))
        return status;
    ZDSnippetList doomed;
    for (const QString &uuid : parser.positionalArguments()) {
        const ZDSnippetPtr snippet = library->snippetWithUUID(uuid);
        if (!snippet)
            return context.fail(ZDError(0, QStringLiteral("No snippet %1; nothing removed").arg(uuid)));
        doomed << snippet;
    }
    library->removeSnippetsFromArray(doomed);
    return library.save(&status) ? 0 : status;
}
