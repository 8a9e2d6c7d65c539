#include "ZDPredicate.h"

#include "ZDPredicateLexer.h"

#include <QDateTime>

#include <algorithm>
#include <optional>

namespace {

// Two limits: the parser's own recursion (brackets, NOT, unary minus), which keeps hostile text
// from exhausting the stack, and the depth of the parsed tree. Printing a tree never needs more
// than two levels of recursion per level of tree, so every accepted predicate prints to a
// string that is accepted again.
constexpr int kMaximumNesting = 400;
constexpr int kMaximumTreeDepth = 100;

int treeDepth(const ZDExpression &expression)
{
    int deepest = 0;
    for (const ZDExpression &argument : expression.arguments)
        deepest = std::max(deepest, treeDepth(argument));
    return deepest + 1;
}

int treeDepth(const ZDPredicate &predicate)
{
    if (predicate.kind() == ZDPredicate::Comparison)
        return 1 + std::max(treeDepth(predicate.leftExpression()), treeDepth(predicate.rightExpression()));
    int deepest = 0;
    for (const ZDPredicate &term : predicate.subpredicates())
        deepest = std::max(deepest, treeDepth(term));
    return deepest + 1;
}

constexpr qint64 kReferenceDateOffsetMSecs = 978307200000LL;

using Token = ZDPredicateToken;

class Parser
{
public:
    Parser(const QString &format, const QVariantList &arguments)
        : m_source(format)
        , m_arguments(arguments)
    {
    }

    std::optional<ZDPredicate> run()
    {
        ZDPredicateLexer lexer(m_source);
        if (!lexer.run()) {
            failure = lexer.failure;
            failurePosition = lexer.failurePosition;
            return std::nullopt;
        }
        m_tokens = lexer.tokens();
        m_match = lexer.matches();
        std::optional<ZDPredicate> predicate = parseOr();
        if (!predicate)
            return std::nullopt;
        if (current().type != Token::End)
            return fail(QStringLiteral("unexpected text"));
        if (treeDepth(*predicate) > kMaximumTreeDepth)
            return fail(QStringLiteral("nested too deeply"));
        return predicate;
    }

    QString failure;
    qsizetype failurePosition = 0;

private:
    std::nullopt_t fail(const QString &reason)
    {
        if (failure.isEmpty()) {
            failure = reason;
            failurePosition = m_index < m_tokens.size() ? m_tokens[m_index].position : m_source.size();
        }
        return std::nullopt;
    }

    const Token &current() const { return m_tokens[m_index]; }
    const Token &peek(qsizetype ahead = 1) const
    {
        return m_tokens[qMin(m_index + ahead, m_tokens.size() - 1)];
    }
    bool isSymbol(const Token &t, const char *symbol) const
    {
        return t.type == Token::Symbol && t.text == QLatin1String(symbol);
    }
    bool isKeyword(const Token &t, const char *word) const
    {
        return t.type == Token::Identifier && !t.escaped && t.text.compare(QLatin1String(word), Qt::CaseInsensitive) == 0;
    }
    bool isReserved(const Token &t) const
    {
        return t.type == Token::Identifier && !t.escaped && zdPredicateReservedWords().contains(t.text.toUpper());
    }
    bool acceptSymbol(const char *symbol)
    {
        if (!isSymbol(current(), symbol))
            return false;
        ++m_index;
        return true;
    }
    bool expectSymbol(const char *symbol)
    {
        return acceptSymbol(symbol) || (fail(QStringLiteral("expected '%1'").arg(QLatin1String(symbol))), false);
    }

    struct Nesting
    {
        explicit Nesting(int &depth) : m_depth(depth) { ++m_depth; }
        ~Nesting() { --m_depth; }
        int &m_depth;
    };

    // --- Predicates -----------------------------------------------------------------------

    std::optional<ZDPredicate> parseOr()
    {
        std::vector<ZDPredicate> terms;
        do {
            auto term = parseAnd();
            if (!term)
                return std::nullopt;
            terms.push_back(*term);
        } while (acceptKeywordOrSymbol("OR", "||"));
        return terms.size() == 1 ? terms.front() : ZDPredicate::orPredicate(std::move(terms));
    }

    std::optional<ZDPredicate> parseAnd()
    {
        std::vector<ZDPredicate> terms;
        do {
            auto term = parseNot();
            if (!term)
                return std::nullopt;
            terms.push_back(*term);
        } while (acceptKeywordOrSymbol("AND", "&&"));
        return terms.size() == 1 ? terms.front() : ZDPredicate::andPredicate(std::move(terms));
    }

    bool acceptKeywordOrSymbol(const char *word, const char *symbol)
    {
        if (isKeyword(current(), word) || isSymbol(current(), symbol)) {
            ++m_index;
            return true;
        }
        return false;
    }

    // Recursion is counted per NOT, unary minus and bracket, the constructs that recurse.
    bool deeper()
    {
        return m_depth <= kMaximumNesting || (fail(QStringLiteral("nested too deeply")), false);
    }

    std::optional<ZDPredicate> parseNot()
    {
        std::optional<Nesting> nesting;
        if (isKeyword(current(), "NOT") || isSymbol(current(), "!") || isSymbol(current(), "(")) {
            nesting.emplace(m_depth);
            if (!deeper())
                return std::nullopt;
        }
        if (acceptKeywordOrSymbol("NOT", "!")) {
            auto operand = parseNot();
            if (!operand)
                return std::nullopt;
            return ZDPredicate::notPredicate(*operand);
        }
        if (isKeyword(current(), "TRUEPREDICATE")) {
            ++m_index;
            return ZDPredicate::truePredicate();
        }
        if (isKeyword(current(), "FALSEPREDICATE")) {
            ++m_index;
            return ZDPredicate::falsePredicate();
        }
        if (isSymbol(current(), "(") && !parenthesisOpensExpression()) {
            ++m_index;
            auto inner = parseOr();
            if (!inner || !expectSymbol(")"))
                return std::nullopt;
            return inner;
        }
        return parseComparison();
    }

    // "(a + b) > 3" against "(a > 3)": the token after the closing parenthesis decides.
    bool parenthesisOpensExpression() const
    {
        const qsizetype close = m_match[m_index];
        const Token &after = m_tokens[qMin(close + 1, m_tokens.size() - 1)];
        return comparisonOperator(after).has_value() || isSymbol(after, "+") || isSymbol(after, "-")
            || isSymbol(after, "*") || isSymbol(after, "/");
    }

    std::optional<ZDPredicate::Operator> comparisonOperator(const Token &t) const
    {
        if (t.type == Token::Symbol) {
            static const QHash<QString, ZDPredicate::Operator> symbols = {
                {QStringLiteral("=="), ZDPredicate::Equal}, {QStringLiteral("="), ZDPredicate::Equal},
                {QStringLiteral("!="), ZDPredicate::NotEqual}, {QStringLiteral("<>"), ZDPredicate::NotEqual},
                {QStringLiteral("<"), ZDPredicate::Less}, {QStringLiteral("<="), ZDPredicate::LessOrEqual},
                {QStringLiteral("=<"), ZDPredicate::LessOrEqual}, {QStringLiteral(">"), ZDPredicate::Greater},
                {QStringLiteral(">="), ZDPredicate::GreaterOrEqual}, {QStringLiteral("=>"), ZDPredicate::GreaterOrEqual}};
            auto found = symbols.constFind(t.text);
            if (found != symbols.constEnd())
                return *found;
            return std::nullopt;
        }
        if (t.type != Token::Identifier || t.escaped)
            return std::nullopt;
        static const QHash<QString, ZDPredicate::Operator> words = {
            {QStringLiteral("CONTAINS"), ZDPredicate::Contains}, {QStringLiteral("BEGINSWITH"), ZDPredicate::BeginsWith},
            {QStringLiteral("ENDSWITH"), ZDPredicate::EndsWith}, {QStringLiteral("LIKE"), ZDPredicate::Like},
            {QStringLiteral("MATCHES"), ZDPredicate::Matches}, {QStringLiteral("IN"), ZDPredicate::In},
            {QStringLiteral("BETWEEN"), ZDPredicate::Between}};
        auto found = words.constFind(t.text.toUpper());
        if (found != words.constEnd())
            return *found;
        return std::nullopt;
    }

    std::optional<ZDPredicate> parseComparison()
    {
        ZDPredicate::Modifier modifier = ZDPredicate::Direct;
        if (isKeyword(current(), "ANY") || isKeyword(current(), "SOME"))
            modifier = ZDPredicate::Any;
        else if (isKeyword(current(), "ALL"))
            modifier = ZDPredicate::All;
        else if (isKeyword(current(), "NONE"))
            modifier = ZDPredicate::None;
        if (modifier != ZDPredicate::Direct)
            ++m_index;

        auto lhs = parseExpression();
        if (!lhs)
            return std::nullopt;
        const auto op = comparisonOperator(current());
        if (!op)
            return fail(QStringLiteral("expected a comparison"));
        ++m_index;
        int options = 0;
        if (acceptSymbol("[")) {
            const Token &letters = current();
            if (letters.type != Token::Identifier)
                return fail(QStringLiteral("expected comparison options"));
            for (QChar c : letters.text) {
                if (c == QLatin1Char('c') || c == QLatin1Char('C'))
                    options |= ZDPredicate::CaseInsensitive;
                else if (c == QLatin1Char('d') || c == QLatin1Char('D'))
                    options |= ZDPredicate::DiacriticInsensitive;
                else
                    return fail(QStringLiteral("unknown comparison option '%1'").arg(c));
            }
            ++m_index;
            if (!expectSymbol("]"))
                return std::nullopt;
        }
        auto rhs = parseExpression();
        if (!rhs)
            return std::nullopt;
        return ZDPredicate::comparison(*lhs, *op, *rhs, modifier, options);
    }

    // --- Expressions ----------------------------------------------------------------------

    std::optional<ZDExpression> parseExpression()
    {
        auto left = parseTerm();
        while (left && (isSymbol(current(), "+") || isSymbol(current(), "-"))) {
            const bool add = isSymbol(current(), "+");
            ++m_index;
            auto right = parseTerm();
            if (!right)
                return std::nullopt;
            left = ZDExpression::function(add ? QStringLiteral("add:to:") : QStringLiteral("from:subtract:"),
                                          {*left, *right});
        }
        return left;
    }

    std::optional<ZDExpression> parseTerm()
    {
        auto left = parseUnary();
        while (left && (isSymbol(current(), "*") || isSymbol(current(), "/"))) {
            const bool multiply = isSymbol(current(), "*");
            ++m_index;
            auto right = parseUnary();
            if (!right)
                return std::nullopt;
            left = ZDExpression::function(multiply ? QStringLiteral("multiply:by:") : QStringLiteral("divide:by:"),
                                          {*left, *right});
        }
        return left;
    }

    std::optional<ZDExpression> parseUnary()
    {
        if (!isSymbol(current(), "-"))
            return parsePrimary();
        Nesting nesting(m_depth);
        if (!deeper())
            return std::nullopt;
        ++m_index;
        if (current().type == Token::Number) {
            const QVariant value = current().number;
            ++m_index;
            if (value.typeId() == QMetaType::LongLong && value.toLongLong() != std::numeric_limits<qlonglong>::min())
                return ZDExpression::constantValue(-value.toLongLong());
            return ZDExpression::constantValue(-value.toDouble());
        }
        auto operand = parseUnary();
        if (!operand)
            return std::nullopt;
        return ZDExpression::function(QStringLiteral("from:subtract:"), {ZDExpression::constantValue(0LL), *operand});
    }

    std::optional<ZDExpression> parseArgumentList(std::vector<ZDExpression> *arguments)
    {
        Nesting nesting(m_depth);
        if (!deeper() || !expectSymbol("("))
            return std::nullopt;
        if (!acceptSymbol(")")) {
            do {
                auto argument = parseExpression();
                if (!argument)
                    return std::nullopt;
                arguments->push_back(*argument);
            } while (acceptSymbol(","));
            if (!expectSymbol(")"))
                return std::nullopt;
        }
        return ZDExpression();
    }

    std::optional<ZDExpression> parsePrimary()
    {
        const Token token = current();
        std::optional<Nesting> nesting;
        if (isSymbol(token, "(") || isSymbol(token, "{")) {
            nesting.emplace(m_depth);
            if (!deeper())
                return std::nullopt;
        }
        switch (token.type) {
        case Token::End:
            return fail(QStringLiteral("unexpected end"));
        case Token::String:
            ++m_index;
            return ZDExpression::constantValue(token.text);
        case Token::Number:
            ++m_index;
            return ZDExpression::constantValue(token.number);
        case Token::Argument:
            ++m_index;
            if (m_nextArgument >= m_arguments.size())
                return fail(QStringLiteral("missing argument for %@"));
            return expressionForArgument(m_arguments[m_nextArgument++]);
        case Token::KeyArgument: {
            ++m_index;
            if (m_nextArgument >= m_arguments.size())
                return fail(QStringLiteral("missing argument for %K"));
            const QString path = m_arguments[m_nextArgument++].toString();
            for (const QString &segment : path.split(QLatin1Char('.'))) {
                if (segment.isEmpty() || !zdPredicateIdentifierStart(segment.front())
                    || !std::all_of(segment.begin(), segment.end(), zdPredicateIdentifierPart))
                    return fail(QStringLiteral("'%1' is not a key path").arg(path));
            }
            return continueKeyPath(path);
        }
        case Token::Symbol:
            if (token.text == QLatin1String("(")) {
                ++m_index;
                auto inner = parseExpression();
                if (!inner || !expectSymbol(")"))
                    return std::nullopt;
                return inner;
            }
            if (token.text == QLatin1String("{")) {
                ++m_index;
                ZDExpression aggregate;
                aggregate.kind = ZDExpression::Aggregate;
                if (!acceptSymbol("}")) {
                    do {
                        auto member = parseExpression();
                        if (!member)
                            return std::nullopt;
                        aggregate.arguments.push_back(*member);
                    } while (acceptSymbol(","));
                    if (!expectSymbol("}"))
                        return std::nullopt;
                }
                return aggregate;
            }
            return fail(QStringLiteral("unexpected '%1'").arg(token.text));
        case Token::Identifier:
            break;
        }

        if (isKeyword(token, "YES") || isKeyword(token, "TRUE")) {
            ++m_index;
            return ZDExpression::constantValue(true);
        }
        if (isKeyword(token, "NO") || isKeyword(token, "FALSE")) {
            ++m_index;
            return ZDExpression::constantValue(false);
        }
        if (isKeyword(token, "NIL") || isKeyword(token, "NULL")) {
            ++m_index;
            return ZDExpression::constantValue(QVariant());
        }
        if (isKeyword(token, "SELF")) {
            ++m_index;
            ZDExpression self;
            self.kind = ZDExpression::Self;
            return self;
        }
        if (isKeyword(token, "CAST") || isKeyword(token, "FUNCTION")) {
            const bool cast = isKeyword(token, "CAST");
            ++m_index;
            std::vector<ZDExpression> arguments;
            if (!parseArgumentList(&arguments))
                return std::nullopt;
            if (cast) {
                if (arguments.size() != 2)
                    return fail(QStringLiteral("CAST takes two arguments"));
                return ZDExpression::function(QStringLiteral("castObject:toType:"), std::move(arguments));
            }
            // FUNCTION(receiver, 'selector', arguments...): the receiver is the first argument.
            if (arguments.size() < 2 || arguments[1].kind != ZDExpression::Constant
                || arguments[1].constant.typeId() != QMetaType::QString)
                return fail(QStringLiteral("FUNCTION needs a receiver and a selector name"));
            const QString selector = arguments[1].constant.toString();
            arguments.erase(arguments.begin() + 1);
            return ZDExpression::function(selector, std::move(arguments));
        }
        if (isReserved(token))
            return fail(QStringLiteral("unexpected keyword '%1'").arg(token.text));
        if (isSymbol(peek(), "(")) {
            if (token.text != QLatin1String("now"))
                return fail(QStringLiteral("unknown function '%1'").arg(token.text));
            m_index += 1;
            std::vector<ZDExpression> arguments;
            if (!parseArgumentList(&arguments))
                return std::nullopt;
            if (!arguments.empty())
                return fail(QStringLiteral("now() takes no arguments"));
            return ZDExpression::function(QStringLiteral("now"), {});
        }
        ++m_index;
        return continueKeyPath(token.text);
    }

    std::optional<ZDExpression> continueKeyPath(QString path)
    {
        while (acceptSymbol(".")) {
            if (current().type != Token::Identifier)
                return fail(QStringLiteral("expected a key after '.'"));
            path += QLatin1Char('.') + current().text;
            ++m_index;
        }
        return ZDExpression::keyPath(path);
    }

    std::optional<ZDExpression> expressionForArgument(const QVariant &value)
    {
        // Arguments take the form a parsed string would give, so that printing and parsing
        // again yields an equal predicate.
        if (value.typeId() == QMetaType::QStringList || value.typeId() == QMetaType::QVariantList) {
            ZDExpression aggregate;
            aggregate.kind = ZDExpression::Aggregate;
            for (const QVariant &member : value.toList()) {
                auto expression = expressionForArgument(member);
                if (!expression)
                    return std::nullopt;
                aggregate.arguments.push_back(*expression);
            }
            return aggregate;
        }
        if (value.typeId() == QMetaType::QDateTime) {
            const double seconds = double(value.toDateTime().toMSecsSinceEpoch() - kReferenceDateOffsetMSecs) / 1000.0;
            return ZDExpression::function(QStringLiteral("castObject:toType:"),
                                          {ZDExpression::constantValue(seconds),
                                           ZDExpression::constantValue(QStringLiteral("NSDate"))});
        }
        switch (value.typeId()) {
        case QMetaType::UnknownType:
        case QMetaType::Nullptr:
            return ZDExpression::constantValue(QVariant());
        case QMetaType::QString:
        case QMetaType::Bool:
        case QMetaType::Double:
            return ZDExpression::constantValue(value);
        case QMetaType::Float:
            return ZDExpression::constantValue(value.toDouble());
        case QMetaType::Int:
        case QMetaType::UInt:
        case QMetaType::LongLong:
        case QMetaType::ULongLong:
        case QMetaType::Long:
        case QMetaType::ULong:
            return ZDExpression::constantValue(value.toLongLong());
        default:
            return ZDExpression::constantValue(value.toString());
        }
    }

    QString m_source;
    QVariantList m_arguments;
    qsizetype m_nextArgument = 0;
    QList<Token> m_tokens;
    QList<qsizetype> m_match;
    qsizetype m_index = 0;
    int m_depth = 0;
};

} // namespace

ZDPredicate ZDPredicate::fromFormat(const QString &format, ZDError *error, const QVariantList &arguments)
{
    Parser parser(format, arguments);
    std::optional<ZDPredicate> predicate = parser.run();
    if (predicate)
        return *predicate;
    ZDError::fail(error, ZDError(0, QStringLiteral("Unable to parse the format string \"%1\"").arg(format), {},
                                 QStringLiteral("%1 at %2").arg(parser.failure).arg(parser.failurePosition)));
    return {};
}
