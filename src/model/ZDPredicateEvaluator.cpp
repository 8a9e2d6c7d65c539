#include "ZDPredicate.h"

#include "ZDPredicateValue.h"
#include "ZDRecordDirectory.h"
#include "ZDTextFolding.h"

#include <QDateTime>
#include <QHash>
#include <QRegularExpression>

#include <cmath>
#include <optional>

namespace {

constexpr qint64 kReferenceDateOffsetMSecs = 978307200000LL;

using ZDPredicateValue::isBoolean;
using ZDPredicateValue::isNumber;

bool isString(const QVariant &v) { return v.typeId() == QMetaType::QString; }
bool isDate(const QVariant &v) { return v.typeId() == QMetaType::QDateTime; }
bool isList(const QVariant &v)
{
    return v.typeId() == QMetaType::QVariantList || v.typeId() == QMetaType::QStringList;
}

double referenceSeconds(const QDateTime &date)
{
    return double(date.toMSecsSinceEpoch() - kReferenceDateOffsetMSecs) / 1000.0;
}

QVariant dateFromReferenceSeconds(double seconds)
{
    if (!std::isfinite(seconds) || std::fabs(seconds) > 1e12)
        return {};
    return QDateTime::fromMSecsSinceEpoch(qint64(std::llround(seconds * 1000.0)) + kReferenceDateOffsetMSecs, Qt::UTC);
}

std::optional<double> numberOf(const QVariant &v)
{
    if (isNumber(v))
        return v.toDouble();
    if (isDate(v))
        return referenceSeconds(v.toDateTime());
    return std::nullopt;
}

QVariant cast(const QVariant &value, const QString &type)
{
    if (type == QLatin1String("NSDate")) {
        if (isDate(value))
            return value;
        if (isNumber(value))
            return dateFromReferenceSeconds(value.toDouble());
        if (isString(value)) {
            bool ok = false;
            const double seconds = value.toString().toDouble(&ok);
            return ok ? dateFromReferenceSeconds(seconds) : QVariant();
        }
        return {};
    }
    if (type == QLatin1String("NSNumber")) {
        if (auto number = numberOf(value))
            return *number;
        if (isString(value)) {
            bool ok = false;
            const double number = value.toString().toDouble(&ok);
            return ok ? QVariant(number) : QVariant();
        }
        return {};
    }
    if (type == QLatin1String("NSString")) {
        if (isString(value))
            return value;
        // A boolean converts as the number it compares as, not as "true".
        if (isBoolean(value))
            return QString::number(int(value.toBool()));
        if (isNumber(value))
            return value.toString();
        return {};
    }
    return {};
}

QVariant arithmetic(const QString &selector, const QVariant &a, const QVariant &b)
{
    const auto x = numberOf(a);
    const auto y = numberOf(b);
    if (!x || !y)
        return {};
    if (selector == QLatin1String("add:to:"))
        return *x + *y;
    if (selector == QLatin1String("from:subtract:"))
        return *x - *y;
    if (selector == QLatin1String("multiply:by:"))
        return *x * *y;
    if (*y == 0)
        return {};
    return *x / *y;
}

// --- Comparisons --------------------------------------------------------------------------

struct Comparer
{
    int options;

    QString fold(const QString &s) const
    {
        return ZDTextFolding::folded(s, options & ZDPredicate::CaseInsensitive,
                                     options & ZDPredicate::DiacriticInsensitive);
    }

    bool equal(const QVariant &a, const QVariant &b) const
    {
        if (!a.isValid() || !b.isValid())
            return a.isValid() == b.isValid();
        if (isNumber(a) && isNumber(b))
            return a.toDouble() == b.toDouble();
        if (isString(a) && isString(b))
            return options ? fold(a.toString()) == fold(b.toString()) : a.toString() == b.toString();
        if (isDate(a) && isDate(b))
            return a.toDateTime() == b.toDateTime();
        if (isList(a) && isList(b)) {
            const QVariantList x = a.toList();
            const QVariantList y = b.toList();
            if (x.size() != y.size())
                return false;
            for (qsizetype i = 0; i < x.size(); ++i) {
                if (!equal(x[i], y[i]))
                    return false;
            }
            return true;
        }
        return false;
    }

    // -1, 0, 1, or nothing when the two do not order.
    std::optional<int> order(const QVariant &a, const QVariant &b) const
    {
        if (isNumber(a) && isNumber(b)) {
            const double x = a.toDouble();
            const double y = b.toDouble();
            if (std::isnan(x) || std::isnan(y))
                return std::nullopt;
            return x < y ? -1 : (x > y ? 1 : 0);
        }
        if (isDate(a) && isDate(b)) {
            const qint64 x = a.toDateTime().toMSecsSinceEpoch();
            const qint64 y = b.toDateTime().toMSecsSinceEpoch();
            return x < y ? -1 : (x > y ? 1 : 0);
        }
        if (isString(a) && isString(b)) {
            const int c = fold(a.toString()).compare(fold(b.toString()));
            return c < 0 ? -1 : (c > 0 ? 1 : 0);
        }
        return std::nullopt;
    }

    bool like(const QString &text, const QString &pattern) const
    {
        // '*' any run, '?' one character; everything else literal.
        QString regex;
        for (QChar c : pattern) {
            if (c == QLatin1Char('*'))
                regex += QLatin1String(".*");
            else if (c == QLatin1Char('?'))
                regex += QLatin1Char('.');
            else
                regex += QRegularExpression::escape(QString(c));
        }
        return matches(text, regex);
    }

    bool matches(const QString &text, const QString &pattern) const
    {
        thread_local QHash<QString, QRegularExpression> cache;
        const QString key = QString::number(options) + QLatin1Char(':') + pattern;
        auto found = cache.constFind(key);
        if (found == cache.constEnd()) {
            if (cache.size() > 64)
                cache.clear();
            QRegularExpression::PatternOptions flags = QRegularExpression::DotMatchesEverythingOption;
            if (options & ZDPredicate::CaseInsensitive)
                flags |= QRegularExpression::CaseInsensitiveOption;
            const QString p = (options & ZDPredicate::DiacriticInsensitive) ? ZDTextFolding::removingDiacritics(pattern) : pattern;
            found = cache.insert(key, QRegularExpression(QRegularExpression::anchoredPattern(p), flags));
        }
        if (!found->isValid())
            return false;
        const QString subject = (options & ZDPredicate::DiacriticInsensitive) ? ZDTextFolding::removingDiacritics(text) : text;
        return found->match(subject).hasMatch();
    }

    // As in the platform's string searches, an empty string is found nowhere.
    enum Where { Anywhere, AtStart, AtEnd };
    bool substring(const QVariant &haystack, const QVariant &needle, Where where) const
    {
        if (!isString(haystack) || !isString(needle) || needle.toString().isEmpty())
            return false;
        // Without diacritic folding, Qt's case-insensitive search folds as it compares, where
        // folding first would copy every haystack (whole snippet contents, for some predicates).
        const bool diacritics = options & ZDPredicate::DiacriticInsensitive;
        const QString text = diacritics ? fold(haystack.toString()) : haystack.toString();
        const QString part = diacritics ? fold(needle.toString()) : needle.toString();
        const Qt::CaseSensitivity sensitivity =
            (options & ZDPredicate::CaseInsensitive) && !diacritics ? Qt::CaseInsensitive : Qt::CaseSensitive;
        return where == AtStart ? text.startsWith(part, sensitivity)
                                : (where == AtEnd ? text.endsWith(part, sensitivity) : text.contains(part, sensitivity));
    }

    bool compare(const QVariant &l, ZDPredicate::Operator op, const QVariant &r) const
    {
        switch (op) {
        case ZDPredicate::Equal:
            return equal(l, r);
        case ZDPredicate::NotEqual:
            return !equal(l, r);
        case ZDPredicate::Less:
        case ZDPredicate::LessOrEqual:
        case ZDPredicate::Greater:
        case ZDPredicate::GreaterOrEqual: {
            const auto c = order(l, r);
            if (!c)
                return false;
            if (op == ZDPredicate::Less)
                return *c < 0;
            if (op == ZDPredicate::LessOrEqual)
                return *c <= 0;
            if (op == ZDPredicate::Greater)
                return *c > 0;
            return *c >= 0;
        }
        case ZDPredicate::Contains:
            if (isList(l)) {
                for (const QVariant &member : l.toList()) {
                    if (equal(member, r))
                        return true;
                }
                return false;
            }
            return substring(l, r, Anywhere);
        case ZDPredicate::BeginsWith:
            return substring(l, r, AtStart);
        case ZDPredicate::EndsWith:
            return substring(l, r, AtEnd);
        case ZDPredicate::Like:
            return isString(l) && isString(r) && like(l.toString(), r.toString());
        case ZDPredicate::Matches:
            return isString(l) && isString(r) && matches(l.toString(), r.toString());
        case ZDPredicate::In:
            if (isList(r)) {
                for (const QVariant &member : r.toList()) {
                    if (equal(l, member))
                        return true;
                }
                return false;
            }
            return substring(r, l, Anywhere);
        case ZDPredicate::Between: {
            if (!isList(r))
                return false;
            const QVariantList bounds = r.toList();
            if (bounds.size() != 2)
                return false;
            const auto low = order(l, bounds[0]);
            const auto high = order(l, bounds[1]);
            return low && high && *low >= 0 && *high <= 0;
        }
        }
        return false;
    }
};

} // namespace

QVariant ZDExpression::evaluate(const ZDKeyPathResolver &resolver) const
{
    switch (kind) {
    case Constant:
        return constant;
    case KeyPath:
        return resolver ? resolver(name) : QVariant();
    case Self:
        return resolver ? resolver(QStringLiteral("SELF")) : QVariant();
    case Aggregate: {
        QVariantList members;
        for (const ZDExpression &member : arguments)
            members.append(member.evaluate(resolver));
        return members;
    }
    case Function:
        break;
    }
    if (name == QLatin1String("now") && arguments.empty())
        return ZDRecordDirectory::now();
    if (name == QLatin1String("castObject:toType:") && arguments.size() == 2)
        return cast(arguments[0].evaluate(resolver), arguments[1].evaluate(resolver).toString());
    if (arguments.size() == 2
        && (name == QLatin1String("add:to:") || name == QLatin1String("from:subtract:")
            || name == QLatin1String("multiply:by:") || name == QLatin1String("divide:by:")))
        return arithmetic(name, arguments[0].evaluate(resolver), arguments[1].evaluate(resolver));
    return {};
}

bool ZDPredicate::evaluate(const ZDKeyPathResolver &resolver) const
{
    switch (m_kind) {
    case Invalid:
        return false;
    case True:
        return true;
    case False:
        return false;
    case Not:
        return !m_subpredicates.front().evaluate(resolver);
    case And:
        for (const ZDPredicate &term : m_subpredicates) {
            if (!term.evaluate(resolver))
                return false;
        }
        return true;
    case Or:
        for (const ZDPredicate &term : m_subpredicates) {
            if (term.evaluate(resolver))
                return true;
        }
        return false;
    case Comparison:
        break;
    }
    const Comparer comparer{m_options};
    const QVariant left = m_lhs.evaluate(resolver);
    const QVariant right = m_rhs.evaluate(resolver);
    if (m_modifier == Direct)
        return comparer.compare(left, m_operator, right);
    // A modifier applies the comparison to each member; a single value counts as one member.
    const QVariantList members = isList(left) ? left.toList() : (left.isValid() ? QVariantList{left} : QVariantList{});
    for (const QVariant &member : members) {
        const bool result = comparer.compare(member, m_operator, right);
        if (m_modifier == Any && result)
            return true;
        if (m_modifier == All && !result)
            return false;
        if (m_modifier == None && result)
            return false;
    }
    return m_modifier != Any;
}
