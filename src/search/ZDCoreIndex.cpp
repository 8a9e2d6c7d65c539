#include "ZDCoreIndex.h"

#include "ZDCategoryNode.h"
#include "ZDDataCenter.h"
#include "ZDLanguageRegistry.h"
#include "ZDMulticastDelegateHandler.h"
#include "ZDPreferenceKeys.h"
#include "ZDSnippet.h"
#include "ZDTag.h"
#include "ZDUserDefaults.h"

#include <QSet>

#include <algorithm>

namespace {

ZDCoreIndex *s_sharedIndex = nullptr;

struct SnippetFacts
{
    QString folderUUID;
    QStringList tagUUIDs;
    QStringList languages;
};

QStringList languagesOf(const ZDSnippet &snippet)
{
    QStringList identifiers;
    for (const ZDSnippetPartPtr &part : snippet.parts()) {
        const QString identifier = part->language().identifier();
        if (!identifiers.contains(identifier))
            identifiers.append(identifier);
    }
    return identifiers;
}

/// Everything a recount needs, taken on the main thread.
struct CountInput
{
    int types = 0;
    QList<QPair<QString, QString>> folders; // UUID, title
    QList<QPair<QString, QString>> tags;
    QStringList activeLanguages;
    QList<SnippetFacts> snippets;
};

struct CountOutput
{
    int types = 0;
    QList<ZDIndexResult> folders;
    QList<ZDIndexResult> tags;
    QList<ZDIndexResult> languages;
};

QList<ZDIndexResult> countList(const QList<QPair<QString, QString>> &records, const QHash<QString, qint64> &counts)
{
    QList<ZDIndexResult> results;
    for (const auto &[UUID, title] : records)
        results.append(ZDIndexResult::resultWithDisplayName(title, UUID, counts.value(UUID)));
    return results;
}

CountOutput count(const CountInput &input)
{
    CountOutput output;
    output.types = input.types;
    if (input.types & ZDCoreIndex::Folders) {
        QHash<QString, qint64> counts;
        for (const SnippetFacts &facts : input.snippets)
            ++counts[facts.folderUUID];
        output.folders = countList(input.folders, counts);
    }
    if (input.types & ZDCoreIndex::Languages) {
        QHash<QString, qint64> counts;
        for (const SnippetFacts &facts : input.snippets) {
            for (const QString &identifier : facts.languages)
                ++counts[identifier];
        }
        QSet<QString> identifiers(input.activeLanguages.begin(), input.activeLanguages.end());
        for (auto it = counts.cbegin(); it != counts.cend(); ++it)
            identifiers.insert(it.key());
        ZDLanguageRegistry *registry = ZDLanguageRegistry::shared();
        for (const QString &identifier : std::as_const(identifiers)) {
            const QString name = registry ? registry->languageWithIdentifier(identifier).displayName() : QString();
            output.languages.append(
                ZDIndexResult::resultWithDisplayName(name.isEmpty() ? identifier : name, identifier, counts.value(identifier)));
        }
        std::sort(output.languages.begin(), output.languages.end(), [](const ZDIndexResult &a, const ZDIndexResult &b) {
            const int order = a.displayName.localeAwareCompare(b.displayName);
            return order != 0 ? order < 0 : a.ubiquitousName < b.ubiquitousName;
        });
    }
    if (input.types & ZDCoreIndex::Tags) {
        QHash<QString, qint64> counts;
        for (const SnippetFacts &facts : input.snippets) {
            for (const QString &UUID : QSet<QString>(facts.tagUUIDs.begin(), facts.tagUUIDs.end()))
                ++counts[UUID];
        }
        output.tags = countList(input.tags, counts);
    }
    return output;
}

} // namespace

ZDCoreIndexSource ZDCoreIndexSource::fromDataCenter(ZDDataCenter &center, ZDUserDefaults *defaults)
{
    ZDCoreIndexSource source;
    source.snippets = [&center] { return center.snippets(); };
    source.rootFolderNodes = [&center] { return center.rootFolderNodes(); };
    source.tags = [&center] { return center.tags(); };
    source.hasValidLibrary = [&center] { return center.dataCenterHasValidLibrary(); };
    source.activeLanguageIdentifiers = [defaults] { return defaults ? defaults->activeLanguageIdentifiers() : QStringList(); };
    return source;
}

ZDCoreIndex::ZDCoreIndex(ZDCoreIndexSource source, ZDMulticastDelegateHandler *notifier, ZDUserDefaults *defaults,
                         std::unique_ptr<ZDWriteTimer> timer, QObject *parent)
    : QObject(parent)
    , m_source(std::move(source))
    , m_timer(timer ? std::move(timer) : std::make_unique<ZDQtWriteTimer>(tickIntervalMs))
{
    if (notifier)
        notifier->addDelegate(this);
    if (defaults) {
        connect(defaults, &ZDUserDefaults::valueChanged, this, [this](const QString &key) {
            if (key == ZDPreferenceKeys::ActiveLanguages)
                scheduleIndexRebuild(Languages);
        });
    }
}

ZDCoreIndex::~ZDCoreIndex()
{
    m_timer->stop();
    m_queue.cancelPending();
    m_queue.waitUntilEmpty();
    if (s_sharedIndex == this)
        s_sharedIndex = nullptr;
}

ZDCoreIndex *ZDCoreIndex::sharedIndex()
{
    return s_sharedIndex;
}

void ZDCoreIndex::install(ZDCoreIndex *index)
{
    s_sharedIndex = index;
}

QList<ZDIndexResult> ZDCoreIndex::folders() const
{
    std::lock_guard lock(m_mutex);
    return m_folders;
}

QList<ZDIndexResult> ZDCoreIndex::tags() const
{
    std::lock_guard lock(m_mutex);
    return m_tags;
}

QList<ZDIndexResult> ZDCoreIndex::languages() const
{
    std::lock_guard lock(m_mutex);
    return m_languages;
}

void ZDCoreIndex::scheduleIndexRebuild(int types)
{
    m_dirty |= types;
    if (!m_timer->isActive()) {
        m_timer->start([this] { tick(); });
        tick();
    }
}

void ZDCoreIndex::tick()
{
    if (m_dirty == 0) {
        m_timer->stop();
        return;
    }
    auto input = std::make_shared<CountInput>();
    input->types = m_dirty;
    if (m_dirty & Folders) {
        const ZDCategoryNodePtr uncategorized = ZDCategoryNode::uncategorizedNode();
        input->folders.append({uncategorized->UUID(), uncategorized->title()});
        const QList<ZDCategoryNodePtr> roots = m_source.rootFolderNodes ? m_source.rootFolderNodes() : QList<ZDCategoryNodePtr>();
        for (const ZDCategoryNodePtr &root : roots) {
            auto add = [&](const ZDCategoryNodePtr &node) {
                if (node->isFolder())
                    input->folders.append({node->UUID(), node->title()});
            };
            add(root);
            root->traverseSubNodesWithBlock([&](const ZDCategoryNodePtr &node, int) { add(node); });
        }
    }
    if (m_dirty & Tags) {
        for (const ZDTagPtr &tag : m_source.tags ? m_source.tags() : ZDTagList())
            input->tags.append({tag->UUID(), tag->title()});
    }
    if ((m_dirty & Languages) && m_source.activeLanguageIdentifiers)
        input->activeLanguages = m_source.activeLanguageIdentifiers();
    const ZDSnippetList snippets = m_source.snippets ? m_source.snippets() : ZDSnippetList();
    input->snippets.reserve(snippets.size());
    for (const ZDSnippetPtr &snippet : snippets) {
        input->snippets.append({snippet->folderUUID(), snippet->tagUUIDs(),
                                (m_dirty & Languages) ? languagesOf(*snippet) : QStringList()});
    }

    m_queue.async([this, input] {
        auto output = std::make_shared<CountOutput>(count(*input));
        QMetaObject::invokeMethod(
            this,
            [this, output] {
                {
                    std::lock_guard lock(m_mutex);
                    if (output->types & Folders)
                        m_folders = output->folders;
                    if (output->types & Languages)
                        m_languages = output->languages;
                    if (output->types & Tags)
                        m_tags = output->tags;
                }
                // Cleared after the recount, so kinds marked while it ran are cleared with it.
                m_dirty = 0;
                Q_EMIT indexDidChange();
            },
            Qt::QueuedConnection);
    });
}

void ZDCoreIndex::adjust(QList<ZDIndexResult> &list, const QString &key, qint64 number)
{
    for (ZDIndexResult &result : list) {
        if (result.ubiquitousName == key) {
            result.count += number;
            return;
        }
    }
}

void ZDCoreIndex::increaseFolder(const QString &UUID, qint64 number)
{
    {
        std::lock_guard lock(m_mutex);
        adjust(m_folders, UUID, number);
    }
    Q_EMIT indexDidChange();
}

void ZDCoreIndex::increaseTag(const QString &UUID, qint64 number)
{
    {
        std::lock_guard lock(m_mutex);
        adjust(m_tags, UUID, number);
    }
    Q_EMIT indexDidChange();
}

void ZDCoreIndex::increaseLanguage(const QString &identifier, qint64 number)
{
    {
        std::lock_guard lock(m_mutex);
        adjust(m_languages, identifier, number);
    }
    Q_EMIT indexDidChange();
}

void ZDCoreIndex::adjustForSnippet(const ZDSnippet &snippet, qint64 number)
{
    {
        std::lock_guard lock(m_mutex);
        adjust(m_folders, snippet.folderUUID(), number);
        const QStringList tagUUIDs = snippet.tagUUIDs();
        for (const QString &UUID : QSet<QString>(tagUUIDs.begin(), tagUUIDs.end()))
            adjust(m_tags, UUID, number);
        for (const QString &identifier : languagesOf(snippet))
            adjust(m_languages, identifier, number);
    }
    Q_EMIT indexDidChange();
}

void ZDCoreIndex::folderDidAdd(QObject *, const ZDCategoryNodePtr &folder, const ZDCategoryNodePtr &, int index)
{
    if (!folder)
        return;
    {
        // At the notified position; the next recount puts it in tree order.
        std::lock_guard lock(m_mutex);
        const qsizetype position = std::clamp<qsizetype>(index, 0, m_folders.size());
        m_folders.insert(position, ZDIndexResult::resultWithDisplayName(folder->title(), folder->UUID(), 0));
    }
    Q_EMIT indexDidChange();
}

void ZDCoreIndex::folderDidRename(QObject *, const ZDCategoryNodePtr &folder)
{
    if (!folder)
        return;
    {
        std::lock_guard lock(m_mutex);
        for (ZDIndexResult &result : m_folders) {
            if (result.ubiquitousName == folder->UUID())
                result.displayName = folder->title();
        }
    }
    Q_EMIT indexDidChange();
}

void ZDCoreIndex::foldersDidRemove(QObject *, const QList<ZDCategoryNodePtr> &folders)
{
    QSet<QString> removed;
    for (const ZDCategoryNodePtr &folder : folders) {
        if (!folder)
            continue;
        removed.insert(folder->UUID());
        folder->traverseSubNodesWithBlock([&](const ZDCategoryNodePtr &node, int) { removed.insert(node->UUID()); });
    }
    {
        std::lock_guard lock(m_mutex);
        m_folders.removeIf([&](const ZDIndexResult &result) { return removed.contains(result.ubiquitousName); });
    }
    Q_EMIT indexDidChange();
}

void ZDCoreIndex::tagDidRename(QObject *, const ZDTagPtr &tag)
{
    if (!tag)
        return;
    {
        std::lock_guard lock(m_mutex);
        for (ZDIndexResult &result : m_tags) {
            if (result.ubiquitousName == tag->UUID())
                result.displayName = tag->title();
        }
    }
    Q_EMIT indexDidChange();
}

void ZDCoreIndex::tagsDidRemove(QObject *, const ZDTagList &tags)
{
    QSet<QString> removed;
    for (const ZDTagPtr &tag : tags) {
        if (tag)
            removed.insert(tag->UUID());
    }
    {
        std::lock_guard lock(m_mutex);
        m_tags.removeIf([&](const ZDIndexResult &result) { return removed.contains(result.ubiquitousName); });
    }
    Q_EMIT indexDidChange();
}

void ZDCoreIndex::snippetDidAdd(QObject *, const ZDSnippetPtr &snippet)
{
    if (snippet)
        adjustForSnippet(*snippet, 1);
}

void ZDCoreIndex::snippetsDidRemove(QObject *, const ZDSnippetList &snippets)
{
    for (const ZDSnippetPtr &snippet : snippets) {
        if (snippet)
            adjustForSnippet(*snippet, -1);
    }
}

void ZDCoreIndex::snippetsCategoryDidChange(QObject *, const ZDSnippetList &)
{
    scheduleIndexRebuild(Folders);
}

void ZDCoreIndex::snippetsTagsDidChange(QObject *, const ZDSnippetList &)
{
    scheduleIndexRebuild(Tags);
}

void ZDCoreIndex::snippetsLanguageDidChange(QObject *, const ZDSnippetList &)
{
    scheduleIndexRebuild(Languages);
}

void ZDCoreIndex::applicationLibraryDidChange(QObject *)
{
    if (m_source.hasValidLibrary && m_source.hasValidLibrary())
        scheduleIndexRebuild(All);
}
