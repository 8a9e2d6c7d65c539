#pragma once

#include "ZDPredicate.h"

#include <optional>

/// The smart-group editor's relative-date row ("Date created is within the last 2 days"): a
/// number and a unit stored as `key OP CAST(CAST(now(), "NSNumber") - SECONDS, "NSDate")`.
/// Unit lengths are one second longer than the calendar unit, as libraries have always stored.
class ZDDateRelativeRowTemplate
{
public:
    enum Unit { Minutes = 0, Hours, Days, Weeks, Months, Years };

    struct Row
    {
        QString keyPath;
        ZDPredicate::Operator op = ZDPredicate::Greater;
        qint64 value = 0;
        Unit unit = Days;
    };

    /// Seconds per unit: 61, 3601, 86401, 604801, 2627425, 31536001; 0 for anything else.
    static qint64 secondsInUnit(int unit);
    /// `value` units in seconds (0 for an unknown unit).
    static qint64 intervalForValue(qint64 value, int unit);
    /// The stored predicate of a row.
    static ZDPredicate predicateForRow(const Row &row);
    /// The row a predicate stands for, or nothing when it is not of the row's exact shape. The
    /// largest unit that divides the interval wholly is chosen.
    static std::optional<Row> rowForPredicate(const ZDPredicate &predicate);
};
