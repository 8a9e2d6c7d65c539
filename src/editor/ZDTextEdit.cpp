#include "ZDTextEdit.h"

#include <algorithm>

QString ZDTextEdit::appliedTo(const QString &text) const
{
    QString result = text;
    for (auto it = replacements.crbegin(); it != replacements.crend(); ++it)
        result.replace(it->range.location, it->range.length, it->text);
    return result;
}

int ZDTextEdit::mapPosition(int position) const
{
    int delta = 0;
    for (const ZDTextReplacement &replacement : replacements) {
        const ZDTextRange &range = replacement.range;
        if (position < range.location)
            break;
        if (position < range.end())
            return range.location + delta + std::min<int>(position - range.location, replacement.text.size());
        delta += replacement.text.size() - range.length;
    }
    return position + delta;
}

ZDTextRange ZDTextEdit::changedRange() const
{
    if (replacements.isEmpty())
        return {};
    const int start = replacements.constFirst().range.location;
    return {start, replacements.constLast().range.end() - start};
}

int ZDTextEdit::changedRangeNewLength() const
{
    int length = changedRange().length;
    for (const ZDTextReplacement &replacement : replacements)
        length += replacement.text.size() - replacement.range.length;
    return length;
}
