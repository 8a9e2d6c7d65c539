#include "ZDSnippetKeyPaths.h"

#include "ZDSnippet.h"
#include "ZDTag.h"

namespace {

QVariant nullable(const QString &s)
{
    return s.isNull() ? QVariant() : QVariant(s);
}

QVariant countOrNothing(const QVariantList &list, QStringView rest)
{
    if (rest.isEmpty())
        return list;
    if (rest == QLatin1String("@count"))
        return qlonglong(list.size());
    return {};
}

QVariant partValue(const ZDSnippetPart &part, QStringView key)
{
    if (key == QLatin1String("title"))
        return part.title();
    if (key == QLatin1String("note"))
        return part.note();
    if (key == QLatin1String("content"))
        return part.content();
    if (key == QLatin1String("language.displayName"))
        return part.language().displayName();
    if (key == QLatin1String("language.identifier") || key == QLatin1String("language"))
        return part.language().identifier();
    if (key == QLatin1String("UUID"))
        return part.UUID();
    if (key == QLatin1String("snippetUUID"))
        return part.snippetUUID();
    if (key == QLatin1String("dateCreated"))
        return part.dateCreated();
    if (key == QLatin1String("dateModified"))
        return part.dateModified();
    if (key == QLatin1String("stringRepresentation"))
        return part.stringRepresentation();
    return {};
}

QVariant tagValue(const ZDTag &tag, QStringView key)
{
    if (key == QLatin1String("title"))
        return tag.title();
    if (key == QLatin1String("UUID"))
        return tag.UUID();
    return {};
}

} // namespace

namespace ZDSnippetKeyPaths {

QVariant valueForKeyPath(const ZDSnippet &snippet, const QString &keyPath)
{
    const qsizetype dot = keyPath.indexOf(QLatin1Char('.'));
    const QStringView head = dot < 0 ? QStringView(keyPath) : QStringView(keyPath).left(dot);
    const QStringView rest = dot < 0 ? QStringView() : QStringView(keyPath).mid(dot + 1);

    if (head == QLatin1String("parts")) {
        QVariantList values;
        const auto parts = snippet.parts();
        if (rest == QLatin1String("@count"))
            return qlonglong(parts.size());
        if (rest.isEmpty()) {
            for (const ZDSnippetPartPtr &part : parts)
                values.append(part->UUID());
            return values;
        }
        const qsizetype countAt = rest.indexOf(QLatin1String(".@count"));
        const QStringView key = countAt < 0 ? rest : rest.left(countAt);
        for (const ZDSnippetPartPtr &part : parts)
            values.append(partValue(*part, key));
        return countOrNothing(values, countAt < 0 ? QStringView() : rest.mid(countAt + 1));
    }
    if (head == QLatin1String("tags")) {
        const ZDTagList tags = snippet.tags();
        if (rest == QLatin1String("@count"))
            return qlonglong(tags.size());
        QVariantList values;
        for (const ZDTagPtr &tag : tags)
            values.append(tagValue(*tag, rest));
        return values;
    }
    if (head == QLatin1String("tagUUIDs") || head == QLatin1String("tagNames")) {
        const QStringList strings = head == QLatin1String("tagUUIDs") ? snippet.tagUUIDs() : snippet.tagNames();
        QVariantList values;
        for (const QString &s : strings)
            values.append(s);
        return countOrNothing(values, rest);
    }
    if (!rest.isEmpty())
        return {};
    if (head == QLatin1String("title"))
        return snippet.title();
    if (head == QLatin1String("UUID"))
        return snippet.UUID();
    if (head == QLatin1String("folderUUID"))
        return nullable(snippet.folderUUID());
    if (head == QLatin1String("localizedCategory"))
        return snippet.localizedCategory();
    if (head == QLatin1String("tagsCount"))
        return qlonglong(snippet.tagsCount());
    if (head == QLatin1String("partsCount"))
        return qlonglong(snippet.partsCount());
    if (head == QLatin1String("hasMultipleParts"))
        return snippet.hasMultipleParts();
    if (head == QLatin1String("dateCreated"))
        return snippet.dateCreated();
    if (head == QLatin1String("dateModified"))
        return snippet.dateModified();
    if (head == QLatin1String("canonicalDateModified"))
        return snippet.canonicalDateModified();
    if (head == QLatin1String("isGist"))
        return snippet.isGist();
    if (head == QLatin1String("gistIdentifier"))
        return nullable(snippet.gistIdentifier());
    if (head == QLatin1String("githubUsername"))
        return nullable(snippet.githubUsername());
    if (head == QLatin1String("githubHTMLURL"))
        return nullable(snippet.githubHTMLURL());
    if (head == QLatin1String("stringRepresentation"))
        return snippet.stringRepresentation();
    return {};
}

ZDKeyPathResolver resolver(const ZDSnippet &snippet)
{
    return [&snippet](const QString &keyPath) { return valueForKeyPath(snippet, keyPath); };
}

bool evaluate(const ZDPredicate &predicate, const ZDSnippet &snippet)
{
    return predicate.evaluate(resolver(snippet));
}

} // namespace ZDSnippetKeyPaths
