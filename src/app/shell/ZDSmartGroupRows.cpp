#include "ZDSmartGroupRows.h"

#include <QCoreApplication>

namespace ZDSmartGroupRows {
namespace {
QString tr(const char *text)
{
    return QCoreApplication::translate("ZDSmartGroupRows", text);
}

constexpr int kTextOptions = ZDPredicate::CaseInsensitive | ZDPredicate::DiacriticInsensitive;
} // namespace

const QList<Key> &keys()
{
    static const QList<Key> all{
        {QStringLiteral("title"), tr("Title"), KeyKind::Text, false},
        {QStringLiteral("localizedCategory"), tr("Folder"), KeyKind::Text, false},
        {QStringLiteral("tags.title"), tr("Any tag"), KeyKind::Text, true},
        {QStringLiteral("tagsCount"), tr("Tags count"), KeyKind::Number, false},
        {QStringLiteral("partsCount"), tr("Fragments count"), KeyKind::Number, false},
        {QStringLiteral("parts.title"), tr("Fragment name"), KeyKind::Text, true},
        {QStringLiteral("parts.note"), tr("Fragment note"), KeyKind::Text, true},
        {QStringLiteral("parts.content"), tr("Fragment content"), KeyKind::Text, true},
        {QStringLiteral("parts.language.displayName"), tr("Fragment language"), KeyKind::Text, true},
        {QStringLiteral("dateCreated"), tr("Date created"), KeyKind::Date, false},
        {QStringLiteral("canonicalDateModified"), tr("Date modified"), KeyKind::Date, false},
        {QStringLiteral("isGist"), tr("Gist"), KeyKind::YesNo, false},
        {QStringLiteral("githubUsername"), tr("Gist author"), KeyKind::Text, false},
    };
    return all;
}

std::optional<Key> keyWithPath(const QString &keyPath)
{
    for (const Key &key : keys()) {
        if (key.keyPath == keyPath)
            return key;
    }
    return std::nullopt;
}

QList<ZDPredicate::Operator> operatorsForKind(KeyKind kind)
{
    switch (kind) {
    case KeyKind::Text:
        return {ZDPredicate::Contains, ZDPredicate::BeginsWith, ZDPredicate::EndsWith, ZDPredicate::Equal, ZDPredicate::NotEqual};
    case KeyKind::Number:
        return {ZDPredicate::Equal, ZDPredicate::NotEqual, ZDPredicate::Greater, ZDPredicate::Less};
    case KeyKind::Date:
        return {ZDPredicate::Greater, ZDPredicate::Less};
    case KeyKind::YesNo:
        return {ZDPredicate::Equal};
    }
    return {};
}

QString operatorLabel(KeyKind kind, ZDPredicate::Operator op)
{
    if (kind == KeyKind::Date)
        return op == ZDPredicate::Greater ? tr("is within the last") : tr("is not within the last");
    switch (op) {
    case ZDPredicate::Contains: return tr("contains");
    case ZDPredicate::BeginsWith: return tr("begins with");
    case ZDPredicate::EndsWith: return tr("ends with");
    case ZDPredicate::Equal: return kind == KeyKind::Number ? QStringLiteral("=") : tr("is");
    case ZDPredicate::NotEqual: return kind == KeyKind::Number ? QStringLiteral("≠") : tr("is not");
    case ZDPredicate::Greater: return QStringLiteral(">");
    case ZDPredicate::Less: return QStringLiteral("<");
    default: return {};
    }
}

ZDPredicate predicateForRow(const Row &row)
{
    const Key key = keyWithPath(row.keyPath).value_or(keys().first());
    const ZDExpression lhs = ZDExpression::keyPath(key.keyPath);
    switch (key.kind) {
    case KeyKind::Text:
        return ZDPredicate::comparison(lhs, row.op, ZDExpression::constantValue(row.text),
                                       key.toMany ? ZDPredicate::Any : ZDPredicate::Direct, kTextOptions);
    case KeyKind::Number:
        return ZDPredicate::comparison(lhs, row.op, ZDExpression::constantValue(row.number));
    case KeyKind::Date:
        return ZDDateRelativeRowTemplate::predicateForRow({key.keyPath, row.op, row.number, row.unit});
    case KeyKind::YesNo:
        return ZDPredicate::comparison(lhs, ZDPredicate::Equal,
                                       ZDExpression::constantValue(row.text == QLatin1String("No") ? QStringLiteral("No")
                                                                                                   : QStringLiteral("Yes")));
    }
    return ZDPredicate::truePredicate();
}

QString predicateStringForQuery(const Query &query)
{
    if (query.rows.isEmpty())
        return ZDPredicate::truePredicate().predicateFormat();
    if (query.rows.size() == 1)
        return predicateForRow(query.rows.first()).predicateFormat();
    std::vector<ZDPredicate> terms;
    for (const Row &row : query.rows)
        terms.push_back(predicateForRow(row));
    return (query.matchAll ? ZDPredicate::andPredicate(std::move(terms)) : ZDPredicate::orPredicate(std::move(terms)))
        .predicateFormat();
}

namespace {
std::optional<Row> rowForComparison(const ZDPredicate &predicate)
{
    if (const auto dateRow = ZDDateRelativeRowTemplate::rowForPredicate(predicate)) {
        const auto key = keyWithPath(dateRow->keyPath);
        if (!key || key->kind != KeyKind::Date || !operatorsForKind(KeyKind::Date).contains(dateRow->op))
            return std::nullopt;
        return Row{dateRow->keyPath, dateRow->op, {}, dateRow->value, dateRow->unit};
    }
    if (predicate.kind() != ZDPredicate::Comparison || predicate.leftExpression().kind != ZDExpression::KeyPath ||
        predicate.rightExpression().kind != ZDExpression::Constant)
        return std::nullopt;
    const auto key = keyWithPath(predicate.leftExpression().name);
    if (!key || key->kind == KeyKind::Date || !operatorsForKind(key->kind).contains(predicate.comparisonOperator()))
        return std::nullopt;
    const QVariant value = predicate.rightExpression().constant;
    Row row;
    row.keyPath = key->keyPath;
    row.op = predicate.comparisonOperator();
    if (key->kind == KeyKind::Number) {
        bool ok = false;
        row.number = value.toLongLong(&ok);
        if (!ok || predicate.modifier() != ZDPredicate::Direct)
            return std::nullopt;
    } else {
        // Rows compare text ignoring case and diacritics; other options are not theirs to show.
        const bool expectedModifier = predicate.modifier() == (key->toMany ? ZDPredicate::Any : ZDPredicate::Direct);
        if (!expectedModifier || value.typeId() != QMetaType::QString ||
            (key->kind == KeyKind::Text && predicate.options() != kTextOptions))
            return std::nullopt;
        row.text = value.toString();
    }
    return row;
}
} // namespace

std::optional<Query> queryForPredicateString(const QString &predicateString)
{
    const ZDPredicate predicate = ZDPredicate::fromFormat(predicateString);
    if (!predicate.isValid())
        return std::nullopt;
    Query query;
    if (predicate.kind() == ZDPredicate::True)
        return query;
    std::vector<ZDPredicate> terms;
    if (predicate.kind() == ZDPredicate::And || predicate.kind() == ZDPredicate::Or) {
        query.matchAll = predicate.kind() == ZDPredicate::And;
        terms = predicate.subpredicates();
    } else {
        terms.push_back(predicate);
    }
    for (const ZDPredicate &term : terms) {
        const auto row = rowForComparison(term);
        if (!row)
            return std::nullopt;
        query.rows << *row;
    }
    return query;
}

} // namespace ZDSmartGroupRows
