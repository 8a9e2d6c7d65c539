#include "ZDError.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>

const char *const ZDError::domain = "com.varnok.Zandrio.ErrorDomain";

ZDError::ZDError(int code, QString description, QString recoverySuggestion, QString reason,
                 QVariantMap information)
    : m_code(code), m_description(std::move(description)),
      m_recoverySuggestion(std::move(recoverySuggestion)), m_reason(std::move(reason)),
      m_information(std::move(information))
{
}

ZDError &ZDError::withReason(const QString &reason)
{
    m_reason = reason;
    return *this;
}

ZDError &ZDError::withInformation(const QString &key, const QVariant &value)
{
    m_information.insert(key, value);
    return *this;
}

QString ZDError::toString() const
{
    QString text = m_description.isEmpty() ? QStringLiteral("Unknown error") : m_description;
    text += QStringLiteral(" (code %1)").arg(m_code);
    if (!m_recoverySuggestion.isEmpty())
        text += QStringLiteral(" ") + m_recoverySuggestion;
    if (!m_reason.isEmpty())
        text += QStringLiteral(": ") + m_reason;
    if (!m_information.isEmpty()) {
        QStringList pairs;
        for (auto it = m_information.cbegin(); it != m_information.cend(); ++it) {
            const QVariant &value = it.value();
            QString printed = value.canConvert<QString>()
                                  ? value.toString()
                                  : QString::fromUtf8(QJsonDocument::fromVariant(value).toJson(
                                        QJsonDocument::Compact));
            pairs << it.key() + QStringLiteral(": ") + printed;
        }
        text += QStringLiteral(" {") + pairs.join(QStringLiteral(", ")) + QStringLiteral("}");
    }
    return text;
}

bool ZDError::fail(ZDError *out, const ZDError &error)
{
    if (out)
        *out = error;
    return false;
}
