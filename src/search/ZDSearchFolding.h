#pragma once

#include <QString>
#include <QStringView>

/// The folding of keyword search, equal to ZDTextFolding's but fast on mostly-ASCII text: ASCII
/// characters neither change (but for case) nor combine with their neighbours under
/// decomposition, mark removal and recomposition, so only the runs of other characters need
/// the full treatment.
namespace ZDSearchFolding {
/// Diacritics removed and, when `caseInsensitive`, case folded: ZDTextFolding::folded(text,
/// caseInsensitive, true).
QString folded(QStringView text, bool caseInsensitive = true);
} // namespace ZDSearchFolding
