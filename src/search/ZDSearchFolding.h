#pragma once

#include <QString>
#include <QStringMatcher>
#include <QStringView>

/// The folding of keyword search, equal to ZDTextFolding's but fast on mostly-ASCII text: ASCII
/// characters neither change (but for case) nor combine with their neighbours under
/// decomposition, mark removal and recomposition, so only the runs of other characters need
/// the full treatment.
namespace ZDSearchFolding {
/// Diacritics removed and, when `caseInsensitive`, case folded: ZDTextFolding::folded(text,
/// caseInsensitive, true).
QString folded(QStringView text, bool caseInsensitive = true);

/// One word of a search, tested against texts as the search compares them (diacritics ignored,
/// and case unless it must match). A text of plain ASCII is searched as it stands; others are
/// folded first.
class Needle
{
public:
    Needle(const QString &word, bool caseInsensitive);
    /// The word, folded.
    const QString &text() const { return m_folded; }
    bool isFoundIn(QStringView text) const;

private:
    QString m_folded;
    bool m_caseInsensitive;
    QStringMatcher m_matcher;
};
} // namespace ZDSearchFolding
