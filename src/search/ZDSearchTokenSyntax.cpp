#include "ZDSearchTokenSyntax.h"

#include "ZDCoreIndex.h"

#include <algorithm>

namespace ZDSearchTokenSyntax {

Range completionRange(const QString &text, qsizetype insertionPoint)
{
    if (insertionPoint < 0)
        return {};
    const qsizetype end = std::min(insertionPoint, text.size());
    qsizetype start = end;
    while (start > 0) {
        const QChar c = text.at(start - 1);
        if (c == QLatin1Char(' ') || c == QLatin1Char('\t') || c == tokenCharacter)
            break;
        --start;
    }
    return {start, end - start};
}

QString completionKeyword(const QString &text, qsizetype insertionPoint)
{
    const Range range = completionRange(text, insertionPoint);
    if (range.location < 0)
        return {};
    const QString word = text.mid(range.location, range.length);
    if (!word.startsWith(completionPrefix))
        return {};
    QString keyword = word.mid(completionPrefix.size());
    if (keyword.isNull())
        keyword = QLatin1String("");
    return keyword;
}

QString searchKeyword(const QString &text)
{
    QString keyword = text;
    keyword.remove(tokenCharacter);
    return keyword;
}

QString pastedText(const QString &plainText)
{
    QString text = plainText;
    text.replace(QLatin1Char('\n'), QLatin1Char(' '));
    text.replace(QLatin1Char('\r'), QLatin1Char(' '));
    return text;
}

QString copiedText(const QString &selectedText)
{
    return searchKeyword(selectedText);
}

} // namespace ZDSearchTokenSyntax

QList<ZDSearchProposalSection> zdSearchProposals(const QString &keyword, const QList<ZDSearchConstraint> &existing,
                                                 const QList<ZDIndexResult> &folders,
                                                 const QList<ZDIndexResult> &tags,
                                                 const QList<ZDIndexResult> &languages)
{
    const QString lowered = keyword.toLower();
    const struct
    {
        QString title;
        QString kind;
        const QList<ZDIndexResult> &records;
    } kinds[] = {
        {QStringLiteral("Folder"), ZDSearchConstraint::folderKind, folders},
        {QStringLiteral("Tags"), ZDSearchConstraint::tagKind, tags},
        {QStringLiteral("Languages"), ZDSearchConstraint::languageKind, languages},
    };
    QList<ZDSearchProposalSection> sections;
    for (const auto &kind : kinds) {
        QList<ZDSearchConstraint> proposals;
        for (const ZDIndexResult &record : kind.records) {
            const bool present = std::any_of(existing.begin(), existing.end(), [&](const ZDSearchConstraint &constraint) {
                return constraint.constraintName() == kind.kind && constraint.constraintUnderlyingValue() == record.ubiquitousName;
            });
            if (present || record.count == 0)
                continue;
            if (!lowered.isEmpty() && !record.displayName.toLower().contains(lowered))
                continue;
            proposals.append(ZDSearchConstraint(kind.kind, record.displayName, record.ubiquitousName, record.count));
        }
        std::stable_sort(proposals.begin(), proposals.end(), [&](const ZDSearchConstraint &a, const ZDSearchConstraint &b) {
            const bool exactA = a.constraintDisplayValue().toLower() == lowered;
            const bool exactB = b.constraintDisplayValue().toLower() == lowered;
            if (exactA != exactB)
                return exactA;
            return a.constriantTargetCount() > b.constriantTargetCount();
        });
        // One proposal per kind, and none before anything is typed.
        proposals = proposals.mid(0, lowered.isEmpty() ? 0 : 1);
        if (!proposals.isEmpty())
            sections.append({kind.title, proposals});
    }
    return sections;
}

ZDSearchQueryChangeTimer::ZDSearchQueryChangeTimer(QObject *parent)
    : QObject(parent)
{
    m_timer.setSingleShot(true);
    m_timer.setInterval(delayMs);
    connect(&m_timer, &QTimer::timeout, this, &ZDSearchQueryChangeTimer::searchQueryDidChange);
}

void ZDSearchQueryChangeTimer::noteQueryChanged(const QString &fieldText, bool withDelay)
{
    m_timer.stop();
    if (withDelay && !fieldText.isEmpty() && fieldText.size() != 1)
        m_timer.start();
    else
        Q_EMIT searchQueryDidChange();
}
