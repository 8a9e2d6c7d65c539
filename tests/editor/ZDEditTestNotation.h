#pragma once

#include "ZDTextEdit.h"

#include <QString>

/// Texts in the command tests mark the selection with "«" and "»" ("«»" is a caret), so a case
/// reads as before and after.
namespace ZDEditTestNotation {

struct Marked
{
    QString text;
    ZDTextRange selection;
};

inline Marked parse(const char *marked)
{
    QString text = QString::fromUtf8(marked);
    const int start = text.indexOf(QChar(0x00AB));
    text.remove(start, 1);
    const int end = text.indexOf(QChar(0x00BB));
    text.remove(end, 1);
    return {text, {start, end - start}};
}

inline QString mark(const QString &text, ZDTextRange selection)
{
    QString result = text;
    result.insert(selection.end(), QChar(0x00BB));
    result.insert(selection.location, QChar(0x00AB));
    return result;
}

/// The marked text after the edit, or "(no edit)".
inline QString applied(const Marked &before, const ZDTextEditResult &edit)
{
    if (!edit)
        return QStringLiteral("(no edit)");
    return mark(edit->appliedTo(before.text), edit->selection);
}

} // namespace ZDEditTestNotation
