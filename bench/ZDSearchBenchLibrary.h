#pragma once

#include "ZDRecordTypes.h"

#include <QStringList>

/// A synthetic library for the search benchmark, the same for a given seed: snippets of about
/// 1.5 KB with one to four parts of code-like text in a few languages, notes, and titles with
/// some non-ASCII words. `rareWords` appear in a handful of snippets each.
namespace ZDSearchBenchLibrary {
ZDSnippetList generate(int count, quint32 seed);
QStringList rareWords();
} // namespace ZDSearchBenchLibrary
