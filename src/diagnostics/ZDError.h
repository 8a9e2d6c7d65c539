#pragma once

#include <QString>
#include <QVariantMap>

/// A failure that travels back to the caller: a numeric application code, a user-facing
/// description, an optional recovery suggestion, and a developer reason with an information
/// map (keys such as "URL", "Path", "username"). A default-constructed error means "no error".
class ZDError
{
public:
    ZDError() = default;
    ZDError(int code, QString description, QString recoverySuggestion = {}, QString reason = {},
            QVariantMap information = {});

    static const char *const domain; // "com.varnok.Zandrio.ErrorDomain"

    bool isNull() const { return m_code == 0 && m_description.isEmpty(); }
    explicit operator bool() const { return !isNull(); }

    int code() const { return m_code; }
    QString description() const { return m_description; }
    QString recoverySuggestion() const { return m_recoverySuggestion; }
    QString reason() const { return m_reason; }
    QVariantMap information() const { return m_information; }

    ZDError &withReason(const QString &reason);
    ZDError &withInformation(const QString &key, const QVariant &value);

    /// One line for logs and the command line: "description (code N): reason {key: value, ...}".
    QString toString() const;

    /// Fills an out-parameter when the caller gave one; returns false so that
    /// `return ZDError::fail(error, ...)` reads naturally in functions returning bool.
    static bool fail(ZDError *out, const ZDError &error);

private:
    int m_code = 0;
    QString m_description;
    QString m_recoverySuggestion;
    QString m_reason;
    QVariantMap m_information;
};
