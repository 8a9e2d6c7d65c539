#pragma once

#include "ZDDateRelativeRowTemplate.h"
#include "ZDPredicate.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

/// The rows of the smart-group editor and the saved query they stand for. Each row is a key,
/// an operator and a value; rows are joined by "all" (AND) or "any" (OR). Keys of the parts and
/// tags match when any part or tag matches. Date rows are relative ("within the last 2 days").
namespace ZDSmartGroupRows {

enum class KeyKind { Text, Number, Date, YesNo };

struct Key
{
    QString keyPath;
    QString label;
    KeyKind kind;
    bool toMany; // compared with ANY
};

/// The keys the editor offers, in menu order.
const QList<Key> &keys();
std::optional<Key> keyWithPath(const QString &keyPath);

/// Operators offered for a kind of key: Text contains, begins with, ends with, is, is not;
/// Number =, ≠, >, <; Date is within the last (>) / is not within the last (<); YesNo is.
QList<ZDPredicate::Operator> operatorsForKind(KeyKind kind);
QString operatorLabel(KeyKind kind, ZDPredicate::Operator op);

struct Row
{
    QString keyPath = QStringLiteral("title");
    ZDPredicate::Operator op = ZDPredicate::Contains;
    QString text;   // Text and YesNo ("Yes"/"No") rows
    qint64 number = 0; // Number rows, and the count of units of Date rows
    ZDDateRelativeRowTemplate::Unit unit = ZDDateRelativeRowTemplate::Days;
};

struct Query
{
    bool matchAll = true;
    QList<Row> rows;
};

ZDPredicate predicateForRow(const Row &row);
/// The saved query of `query`; one row stands alone, no rows match everything.
QString predicateStringForQuery(const Query &query);
/// The rows a saved query stands for, or nothing when it is not of a shape the rows can show.
std::optional<Query> queryForPredicateString(const QString &predicateString);

} // namespace ZDSmartGroupRows
