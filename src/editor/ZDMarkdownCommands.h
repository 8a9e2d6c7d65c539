#pragma once

#include "ZDTextEdit.h"

#include <QString>

/// The editor's Markdown formatting commands as pure functions over (text, selection): surround
/// toggles, line-prefix toggles, headings, and the insertion of code blocks, tables, links and
/// images. Each returns the edit to make, or nothing.
namespace ZDMarkdownCommands {

enum class Granularity
{
    None,
    Word,
    Line
};

/// Format action tags, as the menu items carry them.
enum Tag
{
    StrongTag = 1,
    EmphasizeTag = 2,
    CommentTag = 3,
    OrderedListTag = 4,
    UnorderedListTag = 5,
    BlockquoteTag = 6,
    InlineCodeTag = 7,
    MarkTag = 8,
    LineThroughTag = 9,
    CodeBlockTag = 100,
    Heading1Tag = 101,
    Heading6Tag = 106,
    InsertLinkTag = 1001,
    InsertImageTag = 1002,
    InsertTableTag = 1003,
};

inline constexpr auto OrderedListPattern = "^(\\t| )*[0-9]+\\. ";
inline constexpr auto UnorderedListPattern = "^(\\t| )*\\- ";
inline constexpr auto BlockquotePattern = "^(\\t| )*\\> ";

/// The action of tags 1 to 9 and 100 to 106 (`languageAlias` is used by the code block);
/// nothing for other tags (the link, image and table tags need their own data).
ZDTextEditResult performFormatAction(int tag, const QString &text, ZDTextRange selection,
                                     const QString &languageAlias = QString());
/// The undo action name of a tag, or an empty string.
QString actionNameForTag(int tag);

/// Removes `prefix`/`suffix` around or inside the selection (or the word or line at the caret),
/// or wraps it in them. With "*" a text in "**" counts as strong, not emphasised.
ZDTextEditResult toggleSurround(const QString &text, ZDTextRange selection, const QString &prefix,
                                const QString &suffix, Granularity granularity, const QString &actionName);
/// Per selected line: removes the marker matching `equivalencePattern`, else turns a marker
/// matching `alternatePattern` into `canonicalPrefix`, else puts `canonicalPrefix` in front.
ZDTextEditResult toggleLinePrefix(const QString &text, ZDTextRange selection,
                                  const QString &equivalencePattern, const QString &alternatePattern,
                                  const QString &canonicalPrefix, const QString &actionName);
/// Makes the selected lines headings of `level` (1-6), or plain lines when they already are.
ZDTextEditResult toggleHeading(const QString &text, ZDTextRange selection, int level);

/// A fenced code block for the language alias, with the caret on its empty line.
ZDTextEditResult insertCodeBlock(const QString &text, ZDTextRange selection, const QString &languageAlias);
/// A table of `rows` lines (the header included) and `columns` columns; nothing if either is 0.
ZDTextEditResult insertTable(const QString &text, ZDTextRange selection, int rows, int columns);

/// What the link and image commands put at the selection, and the definition line that goes at
/// the end of the text in reference style (empty in inline style).
struct LinkText
{
    QString inserted;
    QString definition;
};
LinkText linkText(const QString &url, const QString &linkText, const QString &title,
                  const QString &identifier, bool referenceStyle);
LinkText imageText(const QString &url, const QString &title, const QString &altText,
                   const QString &identifier, bool referenceStyle);
/// Replaces the selection by `link.inserted`, appends "\n" + the definition at the very end of the
/// text, and leaves the caret after the inserted text.
ZDTextEditResult insertLink(const QString &text, ZDTextRange selection, const LinkText &link,
                            const QString &actionName);

} // namespace ZDMarkdownCommands
