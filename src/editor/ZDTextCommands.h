#pragma once

#include "ZDEditorSettings.h"
#include "ZDTextEdit.h"

#include <QString>

/// The editor's indentation, bracket and whole-text commands as pure functions: each takes the
/// text, the selection and the settings and returns the edit to make, or nothing when there is
/// nothing to change (or, for typing, when the key should be handled in the ordinary way).
namespace ZDTextCommands {

/// Undo action names.
inline constexpr auto TypingActionName = "Typing";
inline constexpr auto ShiftLeftActionName = "Shift Left";
inline constexpr auto ShiftRightActionName = "Shift Right";
inline constexpr auto ConvertToSpacesActionName = "Convert Indentation to Spaces";
inline constexpr auto ConvertToTabsActionName = "Convert Indentation to Tabs";
inline constexpr auto StripTrailingWhitespaceActionName = "Strip Trailing Whitespace";
inline constexpr auto DuplicateActionName = "Duplicate";

// Line helpers over "\n"-separated text.
bool isIndentationSpace(QChar c);
int lineStart(const QString &text, int position);
/// The end of the line's contents (the index of its "\n" or the end of the text).
int lineContentsEnd(const QString &text, int position);
/// The length of the white space run that starts at `lineStartIndex`.
int indentationLength(const QString &text, int lineStartIndex);
/// The width of a run of white space: a tab moves to the next tab stop, a space adds 1,
/// other white space adds nothing.
int visualWidth(QStringView run, int tabSize);
/// True when the selection is not empty and holds a line break.
bool isSelectingMultipleLines(const QString &text, ZDTextRange selection);
/// The start and the contents end of the lines the selection touches (a non-empty selection that
/// ends at a line start does not touch that line).
ZDTextRange selectedLinesRange(const QString &text, ZDTextRange selection);

/// Tab key: shifts several selected lines right, otherwise a smart tab.
ZDTextEditResult insertTab(const QString &text, ZDTextRange selection, const ZDEditorSettings &settings);
/// One indentation step at the caret: a tab, or spaces up to the next tab stop.
ZDTextEditResult insertSmartTab(const QString &text, ZDTextRange selection, const ZDEditorSettings &settings);
/// Re-indents the selected lines one level left or right, snapped to the tab grid.
ZDTextEditResult shiftLines(const QString &text, ZDTextRange selection, const ZDEditorSettings &settings,
                            bool toLeft, const QString &actionName);
/// Return: carries the line's indentation, and opens an indented line between a bracket pair.
ZDTextEditResult insertNewline(const QString &text, ZDTextRange selection, const ZDEditorSettings &settings);
/// Typing with bracket and quote pairing; nothing when `typed` should be inserted normally.
ZDTextEditResult insertTypedText(const QString &text, ZDTextRange selection, const QString &typed,
                                 const ZDEditorSettings &settings);
/// Backspace over indentation (one level left) or an empty pair; nothing for an ordinary backspace.
ZDTextEditResult deleteBackward(const QString &text, ZDTextRange selection, const ZDEditorSettings &settings);
/// The opening bracket that matches the closing one at `closingIndex`, counting nesting only.
std::optional<int> matchingOpeningBracket(const QString &text, int closingIndex);

ZDTextEditResult convertIndentationToSpaces(const QString &text, ZDTextRange selection,
                                            const ZDEditorSettings &settings);
ZDTextEditResult convertIndentationToTabs(const QString &text, ZDTextRange selection,
                                          const ZDEditorSettings &settings);
ZDTextEditResult stripTrailingWhitespace(const QString &text, ZDTextRange selection);
/// Copies the selected lines below them; the selection stays on the first copy.
ZDTextEditResult duplicateSelectedLines(const QString &text, ZDTextRange selection);

} // namespace ZDTextCommands
