#include "ZDSnippetSnapshot.h"

#include "ZDSnippet.h"
#include "ZDSnippetKeyPaths.h"
#include "ZDSnippetPart.h"

#include <QSet>

namespace {

// Paths whose values are the parts' whole texts: read from the snapshot's texts on the
// evaluating thread rather than copied on the main thread.
bool isTextPath(const QString &keyPath)
{
    return keyPath == QLatin1String("parts.content") || keyPath == QLatin1String("parts.note") ||
           keyPath == QLatin1String("parts.stringRepresentation") ||
           keyPath == QLatin1String("stringRepresentation");
}

void collectKeyPaths(const ZDExpression &expression, QSet<QString> &paths)
{
    if (expression.kind == ZDExpression::KeyPath)
        paths.insert(expression.name);
    for (const ZDExpression &argument : expression.arguments)
        collectKeyPaths(argument, paths);
}

void collectKeyPaths(const ZDPredicate &predicate, QSet<QString> &paths)
{
    if (predicate.kind() == ZDPredicate::Comparison) {
        collectKeyPaths(predicate.leftExpression(), paths);
        collectKeyPaths(predicate.rightExpression(), paths);
    }
    for (const ZDPredicate &subpredicate : predicate.subpredicates())
        collectKeyPaths(subpredicate, paths);
}

} // namespace

ZDSnippetSnapshotPlan::ZDSnippetSnapshotPlan(const std::vector<ZDPredicate> &predicates)
{
    QSet<QString> paths;
    for (const ZDPredicate &predicate : predicates)
        collectKeyPaths(predicate, paths);
    for (const QString &path : std::as_const(paths)) {
        if (isTextPath(path)) {
            m_readsTexts = true;
        } else {
            m_valueIndex.insert(path, m_valuePaths.size());
            m_valuePaths.append(path);
        }
    }
}

ZDSnippetSnapshot ZDSnippetSnapshotPlan::capture(const ZDSnippet &snippet) const
{
    ZDSnippetSnapshot snapshot;
    snapshot.UUID = snippet.UUID();
    snapshot.values.reserve(m_valuePaths.size());
    for (const QString &path : m_valuePaths)
        snapshot.values.append(ZDSnippetKeyPaths::valueForKeyPath(snippet, path));
    if (m_readsTexts) {
        snapshot.title = snippet.title();
        const QList<ZDSnippetPartPtr> parts = snippet.parts();
        snapshot.notes.reserve(parts.size());
        snapshot.contents.reserve(parts.size());
        for (const ZDSnippetPartPtr &part : parts) {
            snapshot.notes.append(part->noteText());
            snapshot.contents.append(part->contentText());
        }
    }
    return snapshot;
}

bool ZDSnippetSnapshotPlan::evaluate(const ZDPredicate &predicate, const ZDSnippetSnapshot &snapshot) const
{
    return predicate.evaluate([&](const QString &keyPath) { return valueForKeyPath(snapshot, keyPath); });
}

QVariant ZDSnippetSnapshotPlan::valueForKeyPath(const ZDSnippetSnapshot &snapshot,
                                                const QString &keyPath) const
{
    if (const auto found = m_valueIndex.constFind(keyPath); found != m_valueIndex.cend())
        return snapshot.values.value(*found);
    if (!m_readsTexts || !isTextPath(keyPath))
        return {}; // not a path of the plan's predicates
    const qsizetype parts = snapshot.contents.size();
    if (keyPath == QLatin1String("stringRepresentation")) {
        QString text = snapshot.title + QLatin1Char('\n');
        for (qsizetype i = 0; i < parts; ++i) {
            if (i > 0)
                text += QLatin1Char('\n');
            text += ZDSnippetPart::stringRepresentation(snapshot.notes[i], snapshot.contents[i]);
        }
        return text;
    }
    QVariantList values;
    values.reserve(parts);
    for (qsizetype i = 0; i < parts; ++i) {
        if (keyPath == QLatin1String("parts.content"))
            values.append(snapshot.contents[i].toString());
        else if (keyPath == QLatin1String("parts.note"))
            values.append(snapshot.notes[i].toString());
        else
            values.append(ZDSnippetPart::stringRepresentation(snapshot.notes[i], snapshot.contents[i]));
    }
    return values;
}
