#pragma once

#include <QString>

/// The case- and diacritic-insensitive comparison used by tag names, predicates with `[cd]` and
/// keyword search: text is decomposed canonically, combining marks are dropped and case is
/// folded, so "Café", "CAFE" and "cafe" all fold to "cafe".
namespace ZDTextFolding {
/// True when the text has no character outside ASCII: folding then only changes case.
bool isAscii(QStringView text);
/// Removes diacritics: canonical decomposition without the combining marks.
QString removingDiacritics(const QString &text);
/// Folds case only.
QString foldingCase(const QString &text);
/// Removes diacritics and folds case.
QString folded(const QString &text);
/// Applies the folds a predicate's `[c]`/`[d]` options ask for.
QString folded(const QString &text, bool caseInsensitive, bool diacriticInsensitive);
} // namespace ZDTextFolding
