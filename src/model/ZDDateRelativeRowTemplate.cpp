#include "ZDDateRelativeRowTemplate.h"

#include <cmath>

namespace {

const QString kCast = QStringLiteral("castObject:toType:");

bool isConstantString(const ZDExpression &e, const char *text)
{
    return e.kind == ZDExpression::Constant && e.constant.typeId() == QMetaType::QString
        && e.constant.toString() == QLatin1String(text);
}

bool isCast(const ZDExpression &e, const char *type)
{
    return e.kind == ZDExpression::Function && e.name == kCast && e.arguments.size() == 2
        && isConstantString(e.arguments[1], type);
}

} // namespace

qint64 ZDDateRelativeRowTemplate::secondsInUnit(int unit)
{
    static const qint64 lengths[] = {61, 3601, 86401, 604801, 2627425, 31536001};
    return unit >= Minutes && unit <= Years ? lengths[unit] : 0;
}

qint64 ZDDateRelativeRowTemplate::intervalForValue(qint64 value, int unit)
{
    return value * secondsInUnit(unit);
}

ZDPredicate ZDDateRelativeRowTemplate::predicateForRow(const Row &row)
{
    const ZDExpression nowAsNumber = ZDExpression::function(
        kCast, {ZDExpression::function(QStringLiteral("now"), {}), ZDExpression::constantValue(QStringLiteral("NSNumber"))});
    const ZDExpression then = ZDExpression::function(
        QStringLiteral("from:subtract:"), {nowAsNumber, ZDExpression::constantValue(intervalForValue(row.value, row.unit))});
    const ZDExpression date = ZDExpression::function(kCast, {then, ZDExpression::constantValue(QStringLiteral("NSDate"))});
    return ZDPredicate::comparison(ZDExpression::keyPath(row.keyPath), row.op, date);
}

std::optional<ZDDateRelativeRowTemplate::Row> ZDDateRelativeRowTemplate::rowForPredicate(const ZDPredicate &predicate)
{
    if (predicate.kind() != ZDPredicate::Comparison || predicate.modifier() != ZDPredicate::Direct
        || predicate.options() != 0 || predicate.leftExpression().kind != ZDExpression::KeyPath)
        return std::nullopt;
    const ZDExpression &date = predicate.rightExpression();
    if (!isCast(date, "NSDate"))
        return std::nullopt;
    const ZDExpression &then = date.arguments[0];
    if (then.kind != ZDExpression::Function || then.name != QLatin1String("from:subtract:") || then.arguments.size() != 2)
        return std::nullopt;
    const ZDExpression &nowAsNumber = then.arguments[0];
    const ZDExpression &interval = then.arguments[1];
    if (!isCast(nowAsNumber, "NSNumber") || nowAsNumber.arguments[0].kind != ZDExpression::Function
        || nowAsNumber.arguments[0].name != QLatin1String("now") || !nowAsNumber.arguments[0].arguments.empty())
        return std::nullopt;
    if (interval.kind != ZDExpression::Constant)
        return std::nullopt;
    bool ok = false;
    const double seconds = interval.constant.toDouble(&ok);
    if (!ok || interval.constant.typeId() == QMetaType::Bool || interval.constant.typeId() == QMetaType::QString
        || !std::isfinite(seconds) || seconds != std::floor(seconds) || std::fabs(seconds) > 9e15)
        return std::nullopt;
    const qint64 whole = qint64(seconds);
    for (int unit = Years; unit >= Minutes; --unit) {
        const qint64 length = secondsInUnit(unit);
        if (whole % length == 0)
            return Row{predicate.leftExpression().name, predicate.comparisonOperator(), whole / length, Unit(unit)};
    }
    return std::nullopt;
}
