#include "ZDSearchConstraint.h"

#include "ZDSnippet.h"

ZDSearchConstraint::ZDSearchConstraint(const QString &name, const QString &displayValue,
                                       const QString &underlyingValue, qint64 targetCount)
    : m_name(name)
    , m_displayValue(displayValue)
    , m_underlyingValue(underlyingValue)
    , m_targetCount(targetCount)
{
}

ZDPredicate ZDSearchConstraint::predicateValue() const
{
    QString format;
    if (m_name == folderKind)
        format = QStringLiteral("folderUUID == %@");
    else if (m_name == languageKind)
        format = QStringLiteral("ANY parts.language.identifier == %@");
    else if (m_name == tagKind)
        format = QStringLiteral("ANY tagUUIDs == %@");
    else
        return ZDPredicate::truePredicate();
    return ZDPredicate::fromFormat(format, nullptr, {m_underlyingValue});
}

bool ZDSearchConstraint::matches(const ZDSnippet &snippet) const
{
    if (m_name == folderKind)
        return snippet.folderUUID() == m_underlyingValue;
    if (m_name == tagKind)
        return snippet.tagUUIDs().contains(m_underlyingValue);
    if (m_name == languageKind) {
        for (const ZDSnippetPartPtr &part : snippet.parts()) {
            if (part->language().identifier() == m_underlyingValue)
                return true;
        }
        return false;
    }
    return true;
}

QString ZDSearchConstraint::countString() const
{
    return QStringLiteral("(%1 snippet%2)").arg(m_targetCount).arg(m_targetCount >= 2 ? QStringLiteral("s") : QString());
}

QString ZDSearchConstraint::displayString() const
{
    return m_displayValue + QStringLiteral("  ") + countString();
}
