#include "ZDTextFolding.h"

#include <algorithm>

namespace ZDTextFolding {

bool isAscii(QStringView text)
{
    return std::all_of(text.begin(), text.end(), [](QChar c) { return c.unicode() < 0x80; });
}

QString removingDiacritics(const QString &text)
{
    // Plain ASCII has nothing to decompose; most library text is ASCII, so skip the work.
    if (isAscii(text))
        return text;
    const QString decomposed = text.normalized(QString::NormalizationForm_D);
    QString result;
    result.reserve(decomposed.size());
    for (QChar c : decomposed) {
        const auto category = c.category();
        if (category == QChar::Mark_NonSpacing || category == QChar::Mark_SpacingCombining ||
            category == QChar::Mark_Enclosing)
            continue;
        result.append(c);
    }
    return result.normalized(QString::NormalizationForm_C);
}

QString foldingCase(const QString &text)
{
    return text.toCaseFolded();
}

QString folded(const QString &text)
{
    return foldingCase(removingDiacritics(text));
}

QString folded(const QString &text, bool caseInsensitive, bool diacriticInsensitive)
{
    QString result = diacriticInsensitive ? removingDiacritics(text) : text;
    return caseInsensitive ? foldingCase(result) : result;
}

} // namespace ZDTextFolding
