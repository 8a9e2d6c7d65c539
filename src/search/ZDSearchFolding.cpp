#include "ZDSearchFolding.h"

#include "ZDTextFolding.h"

namespace ZDSearchFolding {

QString folded(QStringView text, bool caseInsensitive)
{
    QString result;
    result.reserve(text.size());
    const qsizetype n = text.size();
    qsizetype i = 0;
    while (i < n) {
        const char16_t c = text[i].unicode();
        if (c < 0x80) {
            result.append(QChar(caseInsensitive && c >= 'A' && c <= 'Z' ? char16_t(c + ('a' - 'A')) : c));
            ++i;
            continue;
        }
        qsizetype end = i + 1;
        while (end < n && text[end].unicode() >= 0x80)
            ++end;
        result.append(ZDTextFolding::folded(text.mid(i, end - i).toString(), caseInsensitive, true));
        i = end;
    }
    return result;
}

Needle::Needle(const QString &word, bool caseInsensitive)
    : m_folded(ZDTextFolding::folded(word, caseInsensitive, true)), m_caseInsensitive(caseInsensitive),
      m_matcher(m_folded, caseInsensitive ? Qt::CaseInsensitive : Qt::CaseSensitive)
{
}

bool Needle::isFoundIn(QStringView text) const
{
    // Folding leaves ASCII as it is but for case, which the matcher ignores when asked to.
    if (ZDTextFolding::isAscii(text))
        return m_matcher.indexIn(text) >= 0;
    return folded(text, m_caseInsensitive).contains(m_folded);
}

} // namespace ZDSearchFolding
