#include "ZDPredicateLexer.h"

const QSet<QString> &zdPredicateReservedWords()
{
    static const QSet<QString> words = {
        QStringLiteral("AND"), QStringLiteral("OR"), QStringLiteral("IN"), QStringLiteral("NOT"),
        QStringLiteral("ALL"), QStringLiteral("ANY"), QStringLiteral("SOME"), QStringLiteral("NONE"),
        QStringLiteral("LIKE"), QStringLiteral("CASEINSENSITIVE"), QStringLiteral("CI"),
        QStringLiteral("MATCHES"), QStringLiteral("CONTAINS"), QStringLiteral("BEGINSWITH"),
        QStringLiteral("ENDSWITH"), QStringLiteral("BETWEEN"), QStringLiteral("NULL"), QStringLiteral("NIL"),
        QStringLiteral("SELF"), QStringLiteral("TRUE"), QStringLiteral("YES"), QStringLiteral("FALSE"),
        QStringLiteral("NO"), QStringLiteral("FIRST"), QStringLiteral("LAST"), QStringLiteral("SIZE"),
        QStringLiteral("ANYKEY"), QStringLiteral("SUBQUERY"), QStringLiteral("FETCH"), QStringLiteral("CAST"),
        QStringLiteral("TRUEPREDICATE"), QStringLiteral("FALSEPREDICATE"), QStringLiteral("FUNCTION")};
    return words;
}

bool ZDPredicateLexer::tokenize()
{
    const QString &s = m_source;
    qsizetype i = 0;
    while (i < s.size()) {
        const QChar c = s[i];
        if (c.isSpace()) {
            ++i;
            continue;
        }
        Token token;
        token.position = i;
        if (c == QLatin1Char('"') || c == QLatin1Char('\'')) {
            if (!lexString(i, &token))
                return false;
        } else if (c.isDigit()) {
            lexNumber(i, &token);
        } else if (c == QLatin1Char('#') || zdPredicateIdentifierStart(c)) {
            token.type = Token::Identifier;
            if (c == QLatin1Char('#')) {
                token.escaped = true;
                ++i;
            }
            const qsizetype start = i;
            while (i < s.size() && zdPredicateIdentifierPart(s[i]))
                ++i;
            if (i == start)
                return failLexing(QStringLiteral("'#' without a name"), start);
            token.text = s.mid(start, i - start);
        } else if (c == QLatin1Char('%')) {
            const QChar next = i + 1 < s.size() ? s[i + 1] : QChar();
            if (next == QLatin1Char('@'))
                token.type = Token::Argument;
            else if (next == QLatin1Char('K'))
                token.type = Token::KeyArgument;
            else
                return failLexing(QStringLiteral("unknown format specifier"), i);
            i += 2;
        } else {
            static const char *const symbols[] = {"==", "!=", "<>", "<=", "=<", ">=", "=>", "&&", "||",
                                                  "=", "<", ">", "!", "(", ")", "{", "}", ",", ".",
                                                  "+", "-", "*", "/", "[", "]"};
            bool found = false;
            for (const char *symbol : symbols) {
                const QLatin1String text(symbol);
                if (QStringView(s).mid(i).startsWith(text)) {
                    token.type = Token::Symbol;
                    token.text = text;
                    i += text.size();
                    found = true;
                    break;
                }
            }
            if (!found)
                return failLexing(QStringLiteral("unexpected character '%1'").arg(c), i);
        }
        m_tokens.append(token);
    }
    Token end;
    end.position = s.size();
    m_tokens.append(end);
    return true;
}

bool ZDPredicateLexer::lexString(qsizetype &i, Token *token)
{
    const QString &s = m_source;
    const QChar quote = s[i++];
    QString value;
    while (true) {
        if (i >= s.size())
            return failLexing(QStringLiteral("unterminated string"), token->position);
        const QChar c = s[i++];
        if (c == quote)
            break;
        if (c != QLatin1Char('\\')) {
            value.append(c);
            continue;
        }
        if (i >= s.size())
            return failLexing(QStringLiteral("unterminated string"), token->position);
        const QChar e = s[i++];
        switch (e.unicode()) {
        case 'n': value.append(QLatin1Char('\n')); break;
        case 't': value.append(QLatin1Char('\t')); break;
        case 'r': value.append(QLatin1Char('\r')); break;
        case '0': value.append(QChar(0)); break;
        case 'u': {
            bool ok = false;
            const uint code = s.mid(i, 4).toUInt(&ok, 16);
            if (!ok || s.mid(i, 4).size() != 4)
                return failLexing(QStringLiteral("bad \\u escape"), i);
            value.append(QChar(char16_t(code)));
            i += 4;
            break;
        }
        default: value.append(e); break;
        }
    }
    token->type = Token::String;
    token->text = value;
    return true;
}

void ZDPredicateLexer::lexNumber(qsizetype &i, Token *token)
{
    const QString &s = m_source;
    const qsizetype start = i;
    token->type = Token::Number;
    if (s[i] == QLatin1Char('0') && i + 1 < s.size() && (s[i + 1] == QLatin1Char('x') || s[i + 1] == QLatin1Char('X'))) {
        i += 2;
        while (i < s.size() && (s[i].isDigit() || QStringLiteral("abcdefABCDEF").contains(s[i])))
            ++i;
        bool ok = false;
        const qulonglong value = s.mid(start + 2, i - start - 2).toULongLong(&ok, 16);
        token->number = ok ? QVariant(qlonglong(value)) : QVariant(0LL);
        return;
    }
    bool real = false;
    while (i < s.size() && s[i].isDigit())
        ++i;
    if (i + 1 < s.size() && s[i] == QLatin1Char('.') && s[i + 1].isDigit()) {
        real = true;
        ++i;
        while (i < s.size() && s[i].isDigit())
            ++i;
    }
    if (i < s.size() && (s[i] == QLatin1Char('e') || s[i] == QLatin1Char('E'))) {
        qsizetype j = i + 1;
        if (j < s.size() && (s[j] == QLatin1Char('+') || s[j] == QLatin1Char('-')))
            ++j;
        if (j < s.size() && s[j].isDigit()) {
            real = true;
            i = j;
            while (i < s.size() && s[i].isDigit())
                ++i;
        }
    }
    const QString text = s.mid(start, i - start);
    bool ok = false;
    if (!real) {
        const qlonglong value = text.toLongLong(&ok);
        if (ok) {
            token->number = value;
            return;
        }
    }
    token->number = text.toDouble();
}

bool ZDPredicateLexer::matchBrackets()
{
    QList<qsizetype> open;
    m_match.fill(-1, m_tokens.size());
    for (qsizetype i = 0; i < m_tokens.size(); ++i) {
        const Token &t = m_tokens[i];
        if (t.type != Token::Symbol)
            continue;
        if (t.text == QLatin1String("(") || t.text == QLatin1String("{")) {
            open.append(i);
        } else if (t.text == QLatin1String(")") || t.text == QLatin1String("}")) {
            const QString expected = t.text == QLatin1String(")") ? QStringLiteral("(") : QStringLiteral("{");
            if (open.isEmpty() || m_tokens[open.last()].text != expected)
                return failLexing(QStringLiteral("unbalanced brackets"), t.position);
            m_match[open.takeLast()] = i;
        }
    }
    if (!open.isEmpty())
        return failLexing(QStringLiteral("unbalanced brackets"), m_tokens[open.last()].position);
    return true;
}
