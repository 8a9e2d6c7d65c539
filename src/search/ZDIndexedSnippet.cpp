#include "ZDIndexedSnippet.h"

#include "ZDSnippet.h"
#include "ZDSnippetPart.h"

ZDIndexedSnippet ZDIndexedSnippet::capture(const ZDSnippetPtr &snippet)
{
    ZDIndexedSnippet indexed;
    if (!snippet)
        return indexed;
    indexed.snippet = snippet;
    indexed.UUID = snippet->UUID();
    indexed.title = snippet->title();
    indexed.parts = snippet->parts();
    indexed.notes.reserve(indexed.parts.size());
    indexed.contents.reserve(indexed.parts.size());
    for (const ZDSnippetPartPtr &part : std::as_const(indexed.parts)) {
        indexed.notes.append(part->noteText());
        indexed.contents.append(part->contentText());
    }
    return indexed;
}

QString ZDIndexedSnippet::documentURL(const QString &UUID)
{
    return QStringLiteral("zandrio://GlobalIdentifier/") + UUID;
}

QString ZDIndexedSnippet::stringRepresentation() const
{
    qsizetype size = title.size() + 1;
    for (qsizetype i = 0; i < parts.size(); ++i)
        size += notes[i].size() + contents[i].size() + 2;
    QString text;
    text.reserve(size);
    text += title;
    text += QLatin1Char('\n');
    for (qsizetype i = 0; i < parts.size(); ++i) {
        if (i > 0)
            text += QLatin1Char('\n');
        notes[i].appendTo(text);
        text += QLatin1Char('\n');
        contents[i].appendTo(text);
    }
    return text;
}
