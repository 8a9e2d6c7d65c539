#pragma once

#include "ZDRecordTypes.h"

#include <QList>
#include <QString>
#include <QStringList>

/// What a snippet's index documents are made of, taken from the snippet on the main thread:
/// its title and its parts' notes and contents. Holding these strings (shared, not copied) also
/// lets a search tell cheaply whether the snippet still reads the same as when it was indexed.
struct ZDIndexedSnippet
{
    ZDSnippetPtr snippet;
    QString UUID;
    QString title;
    QList<ZDSnippetPartPtr> parts;
    QStringList notes;
    QStringList contents;

    /// Takes the snippet's current text; a null snippet gives an empty record.
    static ZDIndexedSnippet capture(const ZDSnippetPtr &snippet);

    /// The document identity of a snippet: "zandrio://GlobalIdentifier/<UUID>".
    static QString documentURL(const QString &UUID);
    /// The text of the full-text document, as ZDSnippet::stringRepresentation gives it.
    QString stringRepresentation() const;
    /// Whether `snippet` still has this title, these parts and these notes and contents.
    bool isCurrent(const ZDSnippet &snippet) const;
    bool isCurrentTitle(const ZDSnippet &snippet) const;
};
