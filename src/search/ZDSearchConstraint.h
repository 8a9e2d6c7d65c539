#pragma once

#include "ZDPredicate.h"

#include <QString>

class ZDSnippet;

/// One structured filter of a search: snippets in a folder ("FOLDER"), with a tag ("TAG") or
/// with a part in a language ("LANG"). Made by the search field's completion and by URL
/// requests; consumed by ZDSearchEngine. A constraint of any other kind filters nothing.
/// Two constraints are equal when their underlying values are; the kind is not compared.
class ZDSearchConstraint
{
public:
    static inline const QString folderKind = QStringLiteral("FOLDER");
    static inline const QString tagKind = QStringLiteral("TAG");
    static inline const QString languageKind = QStringLiteral("LANG");

    ZDSearchConstraint() = default;
    /// `displayValue` is what the token shows (folder or tag title, language name);
    /// `underlyingValue` what is matched (folder UUID, tag UUID, language identifier);
    /// `targetCount` how many snippets it selects, shown in the completion list.
    ZDSearchConstraint(const QString &name, const QString &displayValue, const QString &underlyingValue,
                       qint64 targetCount);

    QString constraintName() const { return m_name; }
    QString constraintDisplayValue() const { return m_displayValue; }
    QString constraintUnderlyingValue() const { return m_underlyingValue; }
    /// (The spelling is the established name of this accessor.)
    qint64 constriantTargetCount() const { return m_targetCount; }

    /// "folderUUID == %@", "ANY tagUUIDs == %@" or "ANY parts.language.identifier == %@" bound
    /// to the underlying value; the true predicate for any other kind.
    ZDPredicate predicateValue() const;
    /// The predicate's format text.
    QString description() const { return predicateValue().predicateFormat(); }
    /// What `predicateValue` says of `snippet`, without evaluating a predicate.
    bool matches(const ZDSnippet &snippet) const;

    /// The completion list's line: the display value, two spaces, then `countString()`.
    QString displayString() const;
    /// "(1 snippet)", "(0 snippet)", "(2 snippets)": plural from 2 on. The list draws it in a
    /// secondary colour.
    QString countString() const;

    bool operator==(const ZDSearchConstraint &other) const { return m_underlyingValue == other.m_underlyingValue; }
    bool operator!=(const ZDSearchConstraint &other) const { return !(*this == other); }

private:
    QString m_name;
    QString m_displayValue;
    QString m_underlyingValue;
    qint64 m_targetCount = 0;
};
