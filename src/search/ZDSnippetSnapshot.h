#pragma once

#include "ZDPredicate.h"
#include "ZDRecordTypes.h"
#include "ZDSnippetText.h"

#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>
#include <QVariantList>

#include <vector>

/// What a set of predicates reads of one snippet, taken on the main thread and readable on any
/// thread afterwards. Made by ZDSnippetSnapshotPlan.
struct ZDSnippetSnapshot
{
    QString UUID;
    QVariantList values;        // one per value path of the plan
    QString title;              // with the texts below, only when the plan reads texts
    QList<ZDSnippetText> notes; // shared with the parts, not copied
    QList<ZDSnippetText> contents;
};

/// Lets predicates over snippets (smart groups) be evaluated away from the main thread, where the
/// records may not be touched. The plan lists the key paths the predicates read; `capture` takes
/// those values of a snippet on the main thread (the folder's and tags' titles included, which
/// are asked of the library), and `evaluate` answers a predicate from the snapshot alone, as
/// ZDSnippetKeyPaths::evaluate would have answered it over the snippet. Part notes and contents
/// are kept as the parts' own texts and read only when evaluated, so that taking a snapshot
/// copies no text.
class ZDSnippetSnapshotPlan
{
public:
    ZDSnippetSnapshotPlan() = default;
    explicit ZDSnippetSnapshotPlan(const std::vector<ZDPredicate> &predicates);

    /// Main thread only.
    ZDSnippetSnapshot capture(const ZDSnippet &snippet) const;
    /// Any thread.
    bool evaluate(const ZDPredicate &predicate, const ZDSnippetSnapshot &snapshot) const;

    QStringList valuePaths() const { return m_valuePaths; }
    bool readsTexts() const { return m_readsTexts; }

private:
    QVariant valueForKeyPath(const ZDSnippetSnapshot &snapshot, const QString &keyPath) const;

    QStringList m_valuePaths;
    QHash<QString, qsizetype> m_valueIndex;
    bool m_readsTexts = false;
};
