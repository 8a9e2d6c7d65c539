#pragma once

#include <QString>
#include <QStringList>

struct sqlite3;

/// The tokenizer both full-text indexes use ("zdfold"). The index hands it texts folded exactly
/// as keyword matching folds them (ZDSearchFolding::folded: diacritics removed, case folded); the
/// terms are then the maximal runs of letters and digits of the folded text. Every term is
/// therefore a substring of the folded text, which is what lets the engine answer a substring
/// test from the index: a folded word made only of letters and digits occurs in a text exactly
/// when it occurs inside one of the text's terms.
namespace ZDFoldingTokenizer {
/// The tokenizer's name in SQL (`tokenize='zdfold'`).
inline constexpr char name[] = "zdfold";
/// Told every term of every document the tokenizer indexes (UTF-8, not terminated).
using TermObserver = void (*)(void *context, const char *term, int length);
/// Registers the tokenizer with FTS5 on `db`; `observer` (may be null) is called with `context`
/// for every term of an indexed document. False when FTS5 is not available.
///
/// Texts given to the table, documents and queries alike, are split into terms but not folded
/// (ASCII letters aside, which are lower-cased): the index folds each document first
/// (ZDSearchFolding::folded), and callers fold the words of a query, so that the terms they
/// take from the vocabulary pass through unchanged.
bool registerWith(sqlite3 *db, TermObserver observer = nullptr, void *context = nullptr);
/// The terms of `text`, in order (repeats kept).
QStringList terms(const QString &text);
/// Whether every UTF-16 unit of `folded` is a letter or digit (so it can only occur inside a term).
bool isSingleTerm(const QString &folded);
} // namespace ZDFoldingTokenizer
