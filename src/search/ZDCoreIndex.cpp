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
    quint64 generation = 0;
    QList<QPair<QString, QString>> folders; // UUID, title
    QList<QPair<QString, QString>> tags;
    QStringList activeLanguages;
    QList<ZDCoreIndex::SnippetFacts> snippets;
};

struct CountOutput
{
    int types = 0;
    quint64 generation = 0;
    QList<ZDIndexResult> folders;
    QList<ZDIndexResult> tags;
    QList<ZDIndexResult> languages;
};

QList<ZDIndexResult> countList(const QList<QPair<QString, QString>> &records,
                               const QHash<QString, qint64> &counts)
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
    output.generation = input.generation;
    if (input.types & ZDCoreIndex::Folders) {
        QHash<QString, qint64> counts;
        for (const auto &[UUID, title] : input.folders)
            counts.insert(UUID, 0);
        const QString uncategorized = QLatin1String(ZDUncategorizedUUID);
        for (const ZDCoreIndex::SnippetFacts &facts : input.snippets) {
            const auto folder = counts.find(facts.folderUUID);
            ++(folder != counts.end() ? *folder : counts[uncategorized]);
        }
        output.folders = countList(input.folders, counts);
    }
    if (input.types & ZDCoreIndex::Languages) {
        QHash<QString, qint64> counts;
        for (const ZDCoreIndex::SnippetFacts &facts : input.snippets) {
            for (const QString &identifier : facts.languages)
                ++counts[identifier];
        }
        QSet<QString> identifiers(input.activeLanguages.begin(), input.activeLanguages.end());
        for (auto it = counts.cbegin(); it != counts.cend(); ++it)
            identifiers.insert(it.key());
        ZDLanguageRegistry *registry = ZDLanguageRegistry::shared();
        for (const QString &identifier : std::as_const(identifiers)) {
            const QString name =
                registry ? registry->languageWithIdentifier(identifier).displayName() : QString();
            output.languages.append(ZDIndexResult::resultWithDisplayName(
                name.isEmpty() ? identifier : name, identifier, counts.value(identifier)));
        }
        std::sort(output.languages.begin(), output.languages.end(),
                  [](const ZDIndexResult &a, const ZDIndexResult &b) {
                      const int order = a.displayName.localeAwareCompare(b.displayName);
                      return order != 0 ? order < 0 : a.ubiquitousName < b.ubiquitousName;
                  });
    }
    if (input.types & ZDCoreIndex::Tags) {
        QHash<QString, qint64> counts;
        for (const ZDCoreIndex::SnippetFacts &facts : input.snippets) {
            for (const QString &UUID : facts.tagUUIDs)
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
    source.activeLanguageIdentifiers = [defaults] {
        return defaults ? defaults->activeLanguageIdentifiers() : QStringList();
    };
    return source;
}

ZDCoreIndex::ZDCoreIndex(ZDCoreIndexSource source, ZDMulticastDelegateHandler *notifier,
                         ZDUserDefaults *defaults, std::unique_ptr<ZDWriteTimer> timer, QObject *parent)
    : QObject(parent), m_source(std::move(source)),
      m_timer(timer ? std::move(timer) : std::make_unique<ZDQtWriteTimer>(tickIntervalMs))
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
    // Kinds marked from here on were marked after these facts were taken: they wait for the next tick.
    m_dirty = 0;
    if (input->types & Folders) {
        const ZDCategoryNodePtr uncategorized = ZDCategoryNode::uncategorizedNode();
        input->folders.append({uncategorized->UUID(), uncategorized->title()});
        const QList<ZDCategoryNodePtr> roots =
            m_source.rootFolderNodes ? m_source.rootFolderNodes() : QList<ZDCategoryNodePtr>();
        for (const ZDCategoryNodePtr &root : roots) {
            auto add = [&](const ZDCategoryNodePtr &node) {
                if (node->isFolder())
                    input->folders.append({node->UUID(), node->title()});
            };
            add(root);
            root->traverseSubNodesWithBlock([&](const ZDCategoryNodePtr &node, int) { add(node); });
        }
    }
    if (input->types & Tags) {
        for (const ZDTagPtr &tag : m_source.tags ? m_source.tags() : ZDTagList())
            input->tags.append({tag->UUID(), tag->title()});
    }
    if ((input->types & Languages) && m_source.activeLanguageIdentifiers)
        input->activeLanguages = m_source.activeLanguageIdentifiers();
    const ZDSnippetList snippets = m_source.snippets ? m_source.snippets() : ZDSnippetList();
    input->snippets.reserve(snippets.size());
    // Only the kinds recounted now count from these facts; the others keep what they counted.
    for (int type : {Folders, Tags, Languages}) {
        if (input->types & type)
            m_counted[countedSlot(type)].clear();
    }
    for (const ZDSnippetPtr &snippet : snippets) {
        const SnippetFacts facts = factsOf(*snippet);
        input->snippets.append(facts);
        if (input->types & Folders)
            m_counted[countedSlot(Folders)].insert(snippet->UUID(), {facts.folderUUID});
        if (input->types & Tags)
            m_counted[countedSlot(Tags)].insert(snippet->UUID(), facts.tagUUIDs);
        if (input->types & Languages)
            m_counted[countedSlot(Languages)].insert(snippet->UUID(), facts.languages);
    }
    input->generation = ++m_generation;
    ++m_running;

    m_queue.async([this, input] {
        auto output = std::make_shared<CountOutput>(count(*input));
        QMetaObject::invokeMethod(
            this,
            [this, output] {
                --m_running;
                {
                    std::lock_guard lock(m_mutex);
                    for (int type : {Folders, Languages, Tags}) {
                        if (!(output->types & type))
                            continue;
                        QList<ZDIndexResult> &counted = list(type);
                        counted = type == Folders ? output->folders
                                  : type == Tags  ? output->tags
                                                  : output->languages;
                        // Changes noticed after this recount took its facts.
                        for (const Change &change : std::as_const(m_changes)) {
                            if (change.type == type && change.generation >= output->generation)
                                change.apply(counted);
                        }
                    }
                }
                if (m_running == 0)
                    m_changes.clear();
                else
                    m_changes.removeIf([&](const Change &c) { return c.generation <= output->generation; });
                Q_EMIT indexDidChange();
            },
            Qt::QueuedConnection);
    });
}

ZDCoreIndex::SnippetFacts ZDCoreIndex::factsOf(const ZDSnippet &snippet)
{
    QStringList tagUUIDs = snippet.tagUUIDs();
    tagUUIDs.removeDuplicates();
    return {snippet.folderUUID(), tagUUIDs, languagesOf(snippet)};
}

QList<ZDIndexResult> &ZDCoreIndex::list(int type)
{
    return type == Folders ? m_folders : type == Tags ? m_tags : m_languages;
}

void ZDCoreIndex::change(int type, std::function<void(QList<ZDIndexResult> &)> apply)
{
    {
        std::lock_guard lock(m_mutex);
        apply(list(type));
    }
    if (m_running > 0)
        m_changes.append({m_generation, type, std::move(apply)});
}

namespace {
bool adjust(QList<ZDIndexResult> &list, const QString &key, qint64 number)
{
    for (ZDIndexResult &result : list) {
        if (result.ubiquitousName == key) {
            result.count += number;
            return true;
        }
    }
    return false;
}
} // namespace

void ZDCoreIndex::adjustFolder(const QString &UUID, qint64 number)
{
    change(Folders, [UUID, number](QList<ZDIndexResult> &folders) {
        if (!adjust(folders, UUID, number))
            adjust(folders, QLatin1String(ZDUncategorizedUUID), number);
    });
}

void ZDCoreIndex::adjustTag(const QString &UUID, qint64 number)
{
    // A tag made since the last recount gets its line now.
    QString title;
    const bool listed =
        std::ranges::any_of(tags(), [&](const ZDIndexResult &r) { return r.ubiquitousName == UUID; });
    if (!listed && m_source.tags) {
        for (const ZDTagPtr &tag : m_source.tags()) {
            if (tag->UUID() == UUID)
                title = tag->title();
        }
    }
    change(Tags, [UUID, number, title](QList<ZDIndexResult> &tags) {
        if (!adjust(tags, UUID, number) && !title.isEmpty())
            tags.append(ZDIndexResult::resultWithDisplayName(title, UUID, number));
    });
}

void ZDCoreIndex::adjustLanguage(const QString &identifier, qint64 number)
{
    change(Languages,
           [identifier, number](QList<ZDIndexResult> &languages) { adjust(languages, identifier, number); });
}

void ZDCoreIndex::increaseFolder(const QString &UUID, qint64 number)
{
    change(Folders, [UUID, number](QList<ZDIndexResult> &folders) { adjust(folders, UUID, number); });
    Q_EMIT indexDidChange();
}

void ZDCoreIndex::increaseTag(const QString &UUID, qint64 number)
{
    change(Tags, [UUID, number](QList<ZDIndexResult> &tags) { adjust(tags, UUID, number); });
    Q_EMIT indexDidChange();
}

void ZDCoreIndex::increaseLanguage(const QString &identifier, qint64 number)
{
    adjustLanguage(identifier, number);
    Q_EMIT indexDidChange();
}

void ZDCoreIndex::recount(const QString &snippetUUID, const SnippetFacts *now)
{
    for (int type : {Folders, Tags, Languages}) {
        QHash<QString, QStringList> &counted = m_counted[countedSlot(type)];
        const auto remembered = counted.constFind(snippetUUID);
        const QStringList before = remembered != counted.cend() ? *remembered : QStringList();
        const QStringList after = !now              ? QStringList()
                                  : type == Folders ? QStringList{now->folderUUID}
                                  : type == Tags    ? now->tagUUIDs
                                                    : now->languages;
        for (const QString &key : before) {
            if (!after.contains(key))
                adjustOne(type, key, -1);
        }
        for (const QString &key : after) {
            if (!before.contains(key))
                adjustOne(type, key, 1);
        }
        if (now)
            counted.insert(snippetUUID, after);
        else
            counted.remove(snippetUUID);
    }
}

void ZDCoreIndex::adjustOne(int type, const QString &key, qint64 number)
{
    if (type == Folders)
        adjustFolder(key, number);
    else if (type == Tags)
        adjustTag(key, number);
    else
        adjustLanguage(key, number);
}

void ZDCoreIndex::snippetsDidChange(const ZDSnippetList &snippets)
{
    for (const ZDSnippetPtr &snippet : snippets) {
        if (snippet) {
            const SnippetFacts facts = factsOf(*snippet);
            recount(snippet->UUID(), &facts);
        }
    }
    Q_EMIT indexDidChange();
}

void ZDCoreIndex::folderDidAdd(QObject *, const ZDCategoryNodePtr &folder, const ZDCategoryNodePtr &,
                               int index)
{
    if (!folder)
        return;
    // At the notified position; the next recount puts it in tree order.
    change(Folders, [record = ZDIndexResult::resultWithDisplayName(folder->title(), folder->UUID(), 0),
                     index](QList<ZDIndexResult> &folders) {
        if (std::ranges::none_of(
                folders, [&](const ZDIndexResult &r) { return r.ubiquitousName == record.ubiquitousName; }))
            folders.insert(std::clamp<qsizetype>(index, 0, folders.size()), record);
    });
    Q_EMIT indexDidChange();
}

void ZDCoreIndex::folderDidRename(QObject *, const ZDCategoryNodePtr &folder)
{
    if (!folder)
        return;
    change(Folders, [UUID = folder->UUID(), title = folder->title()](QList<ZDIndexResult> &folders) {
        for (ZDIndexResult &result : folders) {
            if (result.ubiquitousName == UUID)
                result.displayName = title;
        }
    });
    Q_EMIT indexDidChange();
}

void ZDCoreIndex::foldersDidRemove(QObject *, const QList<ZDCategoryNodePtr> &folders)
{
    QSet<QString> removed;
    for (const ZDCategoryNodePtr &folder : folders) {
        if (!folder)
            continue;
        removed.insert(folder->UUID());
        folder->traverseSubNodesWithBlock(
            [&](const ZDCategoryNodePtr &node, int) { removed.insert(node->UUID()); });
    }
    change(Folders, [removed](QList<ZDIndexResult> &records) {
        records.removeIf(
            [&](const ZDIndexResult &result) { return removed.contains(result.ubiquitousName); });
    });
    Q_EMIT indexDidChange();
}

void ZDCoreIndex::tagDidRename(QObject *, const ZDTagPtr &tag)
{
    if (!tag)
        return;
    change(Tags, [UUID = tag->UUID(), title = tag->title()](QList<ZDIndexResult> &tags) {
        for (ZDIndexResult &result : tags) {
            if (result.ubiquitousName == UUID)
                result.displayName = title;
        }
    });
    Q_EMIT indexDidChange();
}

void ZDCoreIndex::tagsDidRemove(QObject *, const ZDTagList &tags)
{
    QSet<QString> removed;
    for (const ZDTagPtr &tag : tags) {
        if (tag)
            removed.insert(tag->UUID());
    }
    change(Tags, [removed](QList<ZDIndexResult> &records) {
        records.removeIf(
            [&](const ZDIndexResult &result) { return removed.contains(result.ubiquitousName); });
    });
    Q_EMIT indexDidChange();
}

void ZDCoreIndex::snippetDidAdd(QObject *, const ZDSnippetPtr &snippet)
{
    snippetsDidChange({snippet}); // counted once, even when a recount already saw it
}

void ZDCoreIndex::snippetsDidRemove(QObject *, const ZDSnippetList &snippets)
{
    for (const ZDSnippetPtr &snippet : snippets) {
        if (snippet)
            recount(snippet->UUID(), nullptr);
    }
    Q_EMIT indexDidChange();
}

void ZDCoreIndex::snippetsCategoryDidChange(QObject *, const ZDSnippetList &snippets)
{
    snippetsDidChange(snippets);
    scheduleIndexRebuild(Folders);
}

void ZDCoreIndex::snippetsTagsDidChange(QObject *, const ZDSnippetList &snippets)
{
    snippetsDidChange(snippets);
    scheduleIndexRebuild(Tags);
}

void ZDCoreIndex::snippetsLanguageDidChange(QObject *, const ZDSnippetList &snippets)
{
    snippetsDidChange(snippets);
    scheduleIndexRebuild(Languages);
}

void ZDCoreIndex::applicationLibraryDidChange(QObject *)
{
    if (m_source.hasValidLibrary && m_source.hasValidLibrary())
        scheduleIndexRebuild(All);
}
