#pragma once

#include "ZDError.h"

#include <QString>
#include <QVariant>

#include <functional>
#include <vector>

/// Resolves a key path ("title", "parts.language.identifier", "tags.@count") against the object
/// a predicate is evaluated on. Values are QVariant: invalid for nil, bool, numbers, QString,
/// QDateTime (UTC) and QVariantList for to-many paths.
using ZDKeyPathResolver = std::function<QVariant(const QString &keyPath)>;

/// One side of a comparison: a constant, a key path, an aggregate `{...}` or a function
/// (`now()`, `CAST(x, "NSDate")`, arithmetic). Functions are named by their selectors:
/// "now", "castObject:toType:", "add:to:", "from:subtract:", "multiply:by:", "divide:by:".
struct ZDExpression
{
    enum Kind { Constant, KeyPath, Self, Aggregate, Function };

    Kind kind = Constant;
    QVariant constant;   // Constant
    QString name;        // KeyPath: the path; Function: the selector
    std::vector<ZDExpression> arguments; // Aggregate members, Function arguments

    static ZDExpression constantValue(const QVariant &value);
    static ZDExpression keyPath(const QString &path);
    static ZDExpression function(const QString &selector, std::vector<ZDExpression> arguments);

    bool operator==(const ZDExpression &other) const;
    QString format() const;
    QVariant evaluate(const ZDKeyPathResolver &resolver) const;
};

/// A saved query in the platform's predicate format, as smart groups, search constraints and
/// the quick panel store them: parsed, evaluated over any object through a key-path resolver,
/// and printed back canonically (printing a parsed predicate gives a string that parses to an
/// equal predicate). A string that does not parse gives an invalid predicate and an error.
class ZDPredicate
{
public:
    enum Kind { Invalid, True, False, Comparison, And, Or, Not };
    enum Operator { Equal, NotEqual, Less, LessOrEqual, Greater, GreaterOrEqual, Contains, BeginsWith,
                    EndsWith, Like, Matches, In, Between };
    enum Modifier { Direct, Any, All, None };
    enum Option { CaseInsensitive = 1, DiacriticInsensitive = 2 };

    ZDPredicate() = default;
    /// Parses `format`; `%@` takes the next of `arguments` as a constant, `%K` as a key path.
    static ZDPredicate fromFormat(const QString &format, ZDError *error = nullptr,
                                  const QVariantList &arguments = {});
    static ZDPredicate truePredicate();
    static ZDPredicate falsePredicate();
    static ZDPredicate comparison(const ZDExpression &lhs, Operator op, const ZDExpression &rhs,
                                  Modifier modifier = Direct, int options = 0);
    static ZDPredicate andPredicate(std::vector<ZDPredicate> subpredicates);
    static ZDPredicate orPredicate(std::vector<ZDPredicate> subpredicates);
    static ZDPredicate notPredicate(const ZDPredicate &subpredicate);

    bool isValid() const { return m_kind != Invalid; }
    Kind kind() const { return m_kind; }
    Operator comparisonOperator() const { return m_operator; }
    Modifier modifier() const { return m_modifier; }
    int options() const { return m_options; }
    const ZDExpression &leftExpression() const { return m_lhs; }
    const ZDExpression &rightExpression() const { return m_rhs; }
    const std::vector<ZDPredicate> &subpredicates() const { return m_subpredicates; }

    /// The canonical format string; empty for an invalid predicate.
    QString predicateFormat() const;
    /// False for an invalid predicate.
    bool evaluate(const ZDKeyPathResolver &resolver) const;

    bool operator==(const ZDPredicate &other) const;
    bool operator!=(const ZDPredicate &other) const { return !(*this == other); }

private:
    Kind m_kind = Invalid;
    Operator m_operator = Equal;
    Modifier m_modifier = Direct;
    int m_options = 0;
    ZDExpression m_lhs;
    ZDExpression m_rhs;
    std::vector<ZDPredicate> m_subpredicates;
};
