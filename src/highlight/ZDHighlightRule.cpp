#include "ZDHighlightRule.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonParseError>

namespace ZDHighlightRuleFormat {

ParseResult parse(const QByteArray &pythonOutput, ZDHighlightRules *rules)
{
    QByteArray json = pythonOutput;
    json.replace('\'', '"');
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(json, &error);
    if (error.error != QJsonParseError::NoError || document.isNull())
        return ParseResult::Unparsable;
    if (!document.isArray())
        return ParseResult::NotAList;

    const QJsonArray array = document.array();
    rules->clear();
    rules->reserve(array.size());
    const QString beginKey = QStringLiteral("begin");
    const QString lengthKey = QStringLiteral("length");
    const QString classKey = QStringLiteral("class");
    for (const QJsonValue &entry : array) {
        ZDHighlightRule rule;
        const QJsonObject object = entry.toObject();
        const QJsonValue begin = object.value(beginKey);
        const QJsonValue length = object.value(lengthKey);
        rule.valid = entry.isObject() && begin.isDouble() && length.isDouble();
        rule.begin = qint64(begin.toDouble());
        rule.length = qint64(length.toDouble());
        rule.tokenClass = object.value(classKey).toString();
        rules->append(rule);
    }
    return ParseResult::Rules;
}

QJsonArray toJson(const ZDHighlightRules &rules)
{
    QJsonArray array;
    for (const ZDHighlightRule &rule : rules) {
        if (!rule.valid)
            continue;
        array.append(QJsonObject{{QStringLiteral("begin"), rule.begin},
                                 {QStringLiteral("length"), rule.length},
                                 {QStringLiteral("class"), rule.tokenClass}});
    }
    return array;
}

} // namespace ZDHighlightRuleFormat
