#pragma once

#include <QList>
#include <QSet>
#include <QString>
#include <QVariant>

// The tokens of a predicate format string, for the parser in ZDPredicateParser.cpp and the
// printer's escaping of key paths. Internal to the model library.

struct ZDPredicateToken
{
    enum Type { End, Identifier, String, Number, Symbol, Argument, KeyArgument };
    Type type = End;
    QString text;   // identifier (without '#'), symbol, string value
    QVariant number;
    bool escaped = false; // an identifier written with '#', never a keyword
    qsizetype position = 0;
};

/// Words that are never key paths unless written with '#'.
const QSet<QString> &zdPredicateReservedWords();

inline bool zdPredicateIdentifierStart(QChar c)
{
    return c.isLetter() || c == QLatin1Char('_') || c == QLatin1Char('@');
}

inline bool zdPredicateIdentifierPart(QChar c)
{
    return c.isLetterOrNumber() || c == QLatin1Char('_') || c == QLatin1Char('@') || c.isMark();
}

/// Splits a format string into tokens (ending with an End token) and pairs its brackets.
class ZDPredicateLexer
{
public:
    explicit ZDPredicateLexer(const QString &source) : m_source(source) {}

    /// False, with `failure` and `failurePosition` set, when the text cannot be split.
    bool run() { return tokenize() && matchBrackets(); }

    const QList<ZDPredicateToken> &tokens() const { return m_tokens; }
    /// For each opening bracket, the index of its closing one (-1 elsewhere).
    const QList<qsizetype> &matches() const { return m_match; }

    QString failure;
    qsizetype failurePosition = 0;

private:
    using Token = ZDPredicateToken;

    bool failLexing(const QString &reason, qsizetype position)
    {
        failure = reason;
        failurePosition = position;
        return false;
    }
    bool tokenize();
    bool lexString(qsizetype &i, Token *token);
    void lexNumber(qsizetype &i, Token *token);
    bool matchBrackets();

    QString m_source;
    QList<Token> m_tokens;
    QList<qsizetype> m_match;
};
