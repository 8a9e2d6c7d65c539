#include "ZDFontDescriptor.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace {
const QString kClass = QStringLiteral("ZDFont");
}

QByteArray ZDFontDescriptor::archived() const
{
    QJsonObject object{{QStringLiteral("class"), kClass},
                       {QStringLiteral("family"), family},
                       {QStringLiteral("pointSize"), pointSize}};
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

std::optional<ZDFontDescriptor> ZDFontDescriptor::unarchive(const QByteArray &data)
{
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(data, &parseError);
    if (parseError.error != QJsonParseError::NoError || !document.isObject())
        return std::nullopt;
    const QJsonObject object = document.object();
    const QJsonValue family = object.value(QStringLiteral("family"));
    const QJsonValue size = object.value(QStringLiteral("pointSize"));
    if (object.value(QStringLiteral("class")).toString() != kClass || !family.isString()
        || family.toString().isEmpty() || !size.isDouble() || size.toDouble() <= 0)
        return std::nullopt;
    return ZDFontDescriptor{family.toString(), size.toDouble()};
}
