#include "ZDPredicate.h"

#include "ZDPredicateLexer.h"
#include "ZDPredicateValue.h"

#include <QSet>

#include <cmath>

// Construction, structural equality and canonical printing. Parsing and evaluation live in
// ZDPredicateParser.cpp and ZDPredicateEvaluator.cpp.

namespace {

using ZDPredicateValue::isBoolean;
using ZDPredicateValue::isNumber;

bool sameConstant(const QVariant &a, const QVariant &b)
{
    if (!a.isValid() || !b.isValid())
        return a.isValid() == b.isValid();
    // YES prints apart from 1, so the two are different constants though they compare equal.
    if (isBoolean(a) != isBoolean(b))
        return false;
    if (isNumber(a) && isNumber(b)) {
        const double x = a.toDouble();
        const double y = b.toDouble();
        return x == y || (std::isnan(x) && std::isnan(y));
    }
    if (a.typeId() != b.typeId())
        return false;
    return a == b;
}

QString quoted(const QString &text)
{
    QString result = QStringLiteral("\"");
    for (QChar c : text) {
        switch (c.unicode()) {
        case '"': result += QLatin1String("\\\""); break;
        case '\\': result += QLatin1String("\\\\"); break;
        case '\n': result += QLatin1String("\\n"); break;
        case '\t': result += QLatin1String("\\t"); break;
        case '\r': result += QLatin1String("\\r"); break;
        default:
            if (c.unicode() < 0x20)
                result += QStringLiteral("\\u%1").arg(uint(c.unicode()), 4, 16, QLatin1Char('0'));
            else
                result += c;
        }
    }
    return result + QLatin1Char('"');
}

QString numberText(const QVariant &value)
{
    if (value.typeId() != QMetaType::Double && value.typeId() != QMetaType::Float)
        return QString::number(value.toLongLong());
    const double number = value.toDouble();
    if (std::isinf(number))
        return number > 0 ? QStringLiteral("1e999") : QStringLiteral("-1e999");
    if (std::isnan(number))
        return QStringLiteral("nil");
    if (number == std::floor(number) && std::fabs(number) < 1e15)
        return QString::number(qlonglong(number));
    return QString::number(number, 'g', 17);
}

QString keyPathText(const QString &path)
{
    QStringList segments = path.split(QLatin1Char('.'));
    for (QString &segment : segments) {
        const bool plain = !segment.isEmpty() && zdPredicateIdentifierStart(segment.front());
        if (!plain || zdPredicateReservedWords().contains(segment.toUpper()) || segment == QLatin1String("now"))
            segment.prepend(QLatin1Char('#'));
    }
    return segments.join(QLatin1Char('.'));
}

// Arithmetic precedence for printing: 1 additive, 2 multiplicative, 3 anything else.
int precedence(const ZDExpression &e)
{
    if (e.kind != ZDExpression::Function || e.arguments.size() != 2)
        return 3;
    if (e.name == QLatin1String("add:to:") || e.name == QLatin1String("from:subtract:"))
        return 1;
    if (e.name == QLatin1String("multiply:by:") || e.name == QLatin1String("divide:by:"))
        return 2;
    return 3;
}

QString operand(const ZDExpression &e, int parentPrecedence, bool right)
{
    const int own = precedence(e);
    const bool parenthesize = own < parentPrecedence || (right && own == parentPrecedence);
    return parenthesize ? QLatin1Char('(') + e.format() + QLatin1Char(')') : e.format();
}

} // namespace

ZDExpression ZDExpression::constantValue(const QVariant &value)
{
    ZDExpression e;
    e.kind = Constant;
    e.constant = value;
    return e;
}

ZDExpression ZDExpression::keyPath(const QString &path)
{
    ZDExpression e;
    e.kind = KeyPath;
    e.name = path;
    return e;
}

ZDExpression ZDExpression::function(const QString &selector, std::vector<ZDExpression> arguments)
{
    ZDExpression e;
    e.kind = Function;
    e.name = selector;
    e.arguments = std::move(arguments);
    return e;
}

bool ZDExpression::operator==(const ZDExpression &other) const
{
    if (kind != other.kind)
        return false;
    switch (kind) {
    case Constant:
        return sameConstant(constant, other.constant);
    case KeyPath:
        return name == other.name;
    case Self:
        return true;
    case Aggregate:
    case Function:
        return name == other.name && arguments == other.arguments;
    }
    return false;
}

QString ZDExpression::format() const
{
    switch (kind) {
    case Constant:
        if (!constant.isValid())
            return QStringLiteral("nil");
        // Before the numbers, which booleans are among.
        if (isBoolean(constant))
            return constant.toBool() ? QStringLiteral("YES") : QStringLiteral("NO");
        if (isNumber(constant))
            return numberText(constant);
        return quoted(constant.toString());
    case KeyPath:
        return keyPathText(name);
    case Self:
        return QStringLiteral("SELF");
    case Aggregate: {
        QStringList members;
        for (const ZDExpression &member : arguments)
            members.append(member.format());
        return QLatin1Char('{') + members.join(QLatin1String(", ")) + QLatin1Char('}');
    }
    case Function:
        break;
    }
    if (name == QLatin1String("now") && arguments.empty())
        return QStringLiteral("now()");
    if (name == QLatin1String("castObject:toType:") && arguments.size() == 2)
        return QStringLiteral("CAST(%1, %2)").arg(arguments[0].format(), arguments[1].format());
    const int own = precedence(*this);
    if (own < 3) {
        static const QHash<QString, QString> symbols = {
            {QStringLiteral("add:to:"), QStringLiteral(" + ")}, {QStringLiteral("from:subtract:"), QStringLiteral(" - ")},
            {QStringLiteral("multiply:by:"), QStringLiteral(" * ")}, {QStringLiteral("divide:by:"), QStringLiteral(" / ")}};
        return operand(arguments[0], own, false) + symbols.value(name) + operand(arguments[1], own, true);
    }
    QStringList parts;
    parts.append(arguments.empty() ? QStringLiteral("nil") : arguments[0].format());
    parts.append(quoted(name));
    for (size_t i = 1; i < arguments.size(); ++i)
        parts.append(arguments[i].format());
    return QStringLiteral("FUNCTION(%1)").arg(parts.join(QLatin1String(", ")));
}

ZDPredicate ZDPredicate::truePredicate()
{
    ZDPredicate p;
    p.m_kind = True;
    return p;
}

ZDPredicate ZDPredicate::falsePredicate()
{
    ZDPredicate p;
    p.m_kind = False;
    return p;
}

ZDPredicate ZDPredicate::comparison(const ZDExpression &lhs, Operator op, const ZDExpression &rhs,
                                    Modifier modifier, int options)
{
    ZDPredicate p;
    p.m_kind = Comparison;
    p.m_lhs = lhs;
    p.m_operator = op;
    p.m_rhs = rhs;
    p.m_modifier = modifier;
    p.m_options = options & (CaseInsensitive | DiacriticInsensitive);
    return p;
}

ZDPredicate ZDPredicate::andPredicate(std::vector<ZDPredicate> subpredicates)
{
    ZDPredicate p;
    p.m_kind = And;
    p.m_subpredicates = std::move(subpredicates);
    return p;
}

ZDPredicate ZDPredicate::orPredicate(std::vector<ZDPredicate> subpredicates)
{
    ZDPredicate p;
    p.m_kind = Or;
    p.m_subpredicates = std::move(subpredicates);
    return p;
}

ZDPredicate ZDPredicate::notPredicate(const ZDPredicate &subpredicate)
{
    ZDPredicate p;
    p.m_kind = Not;
    p.m_subpredicates = {subpredicate};
    return p;
}

bool ZDPredicate::operator==(const ZDPredicate &other) const
{
    if (m_kind != other.m_kind)
        return false;
    if (m_kind == Comparison)
        return m_operator == other.m_operator && m_modifier == other.m_modifier && m_options == other.m_options
            && m_lhs == other.m_lhs && m_rhs == other.m_rhs;
    return m_subpredicates == other.m_subpredicates;
}

QString ZDPredicate::predicateFormat() const
{
    switch (m_kind) {
    case Invalid:
        return {};
    case True:
        return QStringLiteral("TRUEPREDICATE");
    case False:
        return QStringLiteral("FALSEPREDICATE");
    case Not: {
        const ZDPredicate &inner = m_subpredicates.front();
        const bool compound = inner.m_kind == And || inner.m_kind == Or;
        return QStringLiteral("NOT ") + (compound ? QLatin1Char('(') + inner.predicateFormat() + QLatin1Char(')')
                                                  : inner.predicateFormat());
    }
    case And:
    case Or: {
        // An empty compound prints as its identity, which evaluates the same.
        if (m_subpredicates.empty())
            return m_kind == And ? QStringLiteral("TRUEPREDICATE") : QStringLiteral("FALSEPREDICATE");
        QStringList terms;
        for (const ZDPredicate &term : m_subpredicates) {
            const bool compound = term.m_kind == And || term.m_kind == Or;
            terms.append(compound ? QLatin1Char('(') + term.predicateFormat() + QLatin1Char(')') : term.predicateFormat());
        }
        return terms.join(m_kind == And ? QLatin1String(" AND ") : QLatin1String(" OR "));
    }
    case Comparison:
        break;
    }
    static const char *const operators[] = {"==", "!=", "<", "<=", ">", ">=", "CONTAINS", "BEGINSWITH",
                                            "ENDSWITH", "LIKE", "MATCHES", "IN", "BETWEEN"};
    static const char *const modifiers[] = {"", "ANY ", "ALL ", "NONE "};
    QString options;
    if (m_options) {
        options = QStringLiteral("[");
        if (m_options & CaseInsensitive)
            options += QLatin1Char('c');
        if (m_options & DiacriticInsensitive)
            options += QLatin1Char('d');
        options += QLatin1Char(']');
    }
    return QLatin1String(modifiers[m_modifier]) + m_lhs.format() + QLatin1Char(' ')
        + QLatin1String(operators[m_operator]) + options + QLatin1Char(' ') + m_rhs.format();
}
