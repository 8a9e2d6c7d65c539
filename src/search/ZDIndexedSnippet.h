#pragma once

#include "ZDRecordTypes.h"
#include "ZDSnippetText.h"

#include <QList>
#include <QString>

/// What a snippet's index documents are made of, taken from the snippet on the main thread:
/// its title and its parts' notes and contents (shared, not copied), so that the index is built
/// on another thread from the texts as they were.
struct ZDIndexedSnippet
{
    ZDSnippetPtr snippet;
    QString UUID;
    QString title;
    QList<ZDSnippetPartPtr> parts;
    QList<ZDSnippetText> notes;
    QList<ZDSnippetText> contents;

    /// Takes the snippet's current text; a null snippet gives an empty record.
    static ZDIndexedSnippet capture(const ZDSnippetPtr &snippet);

    /// The document identity of a snippet: "zandrio://GlobalIdentifier/<UUID>".
    static QString documentURL(const QString &UUID);
    /// The text of the full-text document, as ZDSnippet::stringRepresentation gives it.
    QString stringRepresentation() const;
};
