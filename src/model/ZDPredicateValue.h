#pragma once

#include <QVariant>

// How predicate values are told apart, for the printer and structural equality in
// ZDPredicate.cpp and the evaluator in ZDPredicateEvaluator.cpp. Internal to the model library.
//
// A boolean is a number, 0 or 1, wherever a value is used: it compares with numbers (YES == 1,
// NO < 1, BETWEEN), takes part in arithmetic (YES + 1 == 2) and converts as a number
// (CAST(YES, "NSNumber") == 1, CAST(YES, "NSString") == "1"), as key paths such as
// hasMultipleParts give booleans that stored predicates compare with 1 and 0. Only printing keeps
// it apart (YES, NO), and so structural equality does too: equal predicates print alike.
namespace ZDPredicateValue {

inline bool isBoolean(const QVariant &value)
{
    return value.typeId() == QMetaType::Bool;
}

inline bool isNumber(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::Bool:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Double:
    case QMetaType::Float:
        return true;
    default:
        return false;
    }
}

} // namespace ZDPredicateValue
