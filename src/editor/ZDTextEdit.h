#pragma once

#include <QList>
#include <QString>

#include <optional>

/// A range of characters in a text, in UTF-16 code units (QString indexes).
struct ZDTextRange
{
    int location = 0;
    int length = 0;

    int end() const { return location + length; }
    bool contains(int index) const { return index >= location && index < end(); }
    friend bool operator==(const ZDTextRange &, const ZDTextRange &) = default;
};

/// One piece of an edit: the characters of `range` (in the text before the edit) become `text`.
struct ZDTextReplacement
{
    ZDTextRange range;
    QString text;
    friend bool operator==(const ZDTextReplacement &, const ZDTextReplacement &) = default;
};

/// What an editor command wants done: replacements over the text as it was (sorted, not
/// overlapping), the selection afterwards, and the name the undo step carries. An edit without
/// replacements only moves the selection and makes no undo step.
struct ZDTextEdit
{
    QList<ZDTextReplacement> replacements;
    ZDTextRange selection;
    QString actionName;

    bool changesText() const { return !replacements.isEmpty(); }
    /// The text after the replacements are made, applied from the last to the first.
    QString appliedTo(const QString &text) const;
    /// Where a position of the old text ends up in the new one. A position inside a replaced
    /// range keeps its offset into the replacement, cut at the replacement's end.
    int mapPosition(int position) const;
    /// The smallest range of the old text that all replacements lie in, and its length afterwards.
    ZDTextRange changedRange() const;
    int changedRangeNewLength() const;
};

using ZDTextEditResult = std::optional<ZDTextEdit>;
