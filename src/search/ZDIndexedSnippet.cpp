#include "ZDIndexedSnippet.h"

#include "ZDSnippet.h"
#include "ZDSnippetPart.h"

namespace {

// Strings held here keep their buffers alive, so a snippet whose string shares our buffer has
// not been changed; a changed one has a buffer of its own and falls back to comparing text.
bool sameText(const QString &held, const QString &live)
{
    return (held.constData() == live.constData() && held.size() == live.size()) || held == live;
}

} // namespace

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
        indexed.notes.append(part->note());
        indexed.contents.append(part->content());
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
        text += notes[i];
        text += QLatin1Char('\n');
        text += contents[i];
    }
    return text;
}

bool ZDIndexedSnippet::isCurrentTitle(const ZDSnippet &live) const
{
    return sameText(title, live.title());
}

bool ZDIndexedSnippet::isCurrent(const ZDSnippet &live) const
{
    if (!isCurrentTitle(live))
        return false;
    const QList<ZDSnippetPartPtr> liveParts = live.parts();
    if (liveParts.size() != parts.size())
        return false;
    for (qsizetype i = 0; i < parts.size(); ++i) {
        if (liveParts[i] != parts[i] || !sameText(notes[i], parts[i]->note())
            || !sameText(contents[i], parts[i]->content()))
            return false;
    }
    return true;
}
