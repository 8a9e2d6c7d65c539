#pragma once

#include <QByteArray>
#include <QJsonArray>
#include <QList>
#include <QString>

/// One colouring rule: a token of `length` characters starting at `begin` (UTF-16 units of the
/// code that was highlighted) of the Pygments token type `tokenClass`, written in full
/// ("Token.Keyword"). A rule read from an entry whose "begin" or "length" is not a number is
/// kept but marked invalid; invalid rules colour nothing.
struct ZDHighlightRule
{
    qint64 begin = 0;
    qint64 length = 0;
    QString tokenClass;
    bool valid = true;

    bool operator==(const ZDHighlightRule &other) const = default;
};

using ZDHighlightRules = QList<ZDHighlightRule>;

namespace ZDHighlightRuleFormat {
enum class ParseResult
{
    Rules,
    NotAList,
    Unparsable
};

/// Reads the support module's output: every single quote becomes a double quote (blindly, also
/// inside values), and the text is read as JSON. Only a JSON array yields rules.
/// The usual output, a list of flat dictionaries of the three keys, is read in one pass; anything
/// else goes through parseAsJson(), and both give the same result for any input.
ParseResult parse(const QByteArray &pythonOutput, ZDHighlightRules *rules);

/// The one-pass reader of the usual output alone: false (and no rules) for any other text.
bool readUsualShape(const QByteArray &pythonOutput, ZDHighlightRules *rules);

/// The same reading through the general JSON parser alone.
ParseResult parseAsJson(const QByteArray &pythonOutput, ZDHighlightRules *rules);

/// The rules as a JSON array of {"begin", "length", "class"} objects (invalid rules omitted).
QJsonArray toJson(const ZDHighlightRules &rules);
} // namespace ZDHighlightRuleFormat
