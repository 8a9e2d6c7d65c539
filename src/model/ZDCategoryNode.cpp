#include "ZDCategoryNode.h"

#include "ZDLanguageRegistry.h"
#include "ZDRecordDirectory.h"
#include "ZDSnippet.h"

#include <QCoreApplication>

namespace {
// Deeper trees are not something the sidebar can show; reading stops there instead of
// recursing without bound on a hostile file.
constexpr int kMaximumReadDepth = 256;

QString plainTextIdentifier()
{
    if (ZDLanguageRegistry *registry = ZDLanguageRegistry::shared())
        return registry->plainTextLanguage().identifier();
    return QStringLiteral("TextLexer");
}

QString tr(const char *text)
{
    return QCoreApplication::translate("ZDCategoryNode", text);
}
} // namespace

ZDCategoryNode::ZDCategoryNode(const QString &title, const QString &UUID, Type type,
                               const QString &defaultLanguageIdentifier, const QString &predicateString)
    : m_title(title)
    , m_UUID(UUID.isEmpty() ? zdNewUUIDString() : UUID)
    , m_type(type)
    , m_defaultLanguageIdentifier(defaultLanguageIdentifier)
    , m_predicateString(predicateString)
{
}

ZDCategoryNodePtr ZDCategoryNode::create(const QString &title, const QString &UUID, Type type,
                                         const QString &defaultLanguageIdentifier,
                                         const QString &predicateString)
{
    return std::make_shared<ZDCategoryNode>(title, UUID, type, defaultLanguageIdentifier, predicateString);
}

ZDCategoryNodePtr ZDCategoryNode::favouritesGroupNode()
{
    return create(tr("Favorites"), QLatin1String(ZDGroupUUID::Favourites), Group);
}

ZDCategoryNodePtr ZDCategoryNode::foldersGroupNode()
{
    return create(tr("Folders"), QLatin1String(ZDGroupUUID::Folders), Group);
}

ZDCategoryNodePtr ZDCategoryNode::tagsGroupNode()
{
    return create(tr("Tags"), QLatin1String(ZDGroupUUID::Tags), Group);
}

ZDCategoryNodePtr ZDCategoryNode::smartFoldersGroupNode()
{
    return create(tr("Smart Groups"), QLatin1String(ZDGroupUUID::SmartGroups), Group);
}

ZDCategoryNodePtr ZDCategoryNode::allSnippetsNode()
{
    return create(tr("All Snippets"), QLatin1String(ZDAllSnippetsUUID), AllSnippets);
}

ZDCategoryNodePtr ZDCategoryNode::uncategorizedNode()
{
    return create(tr("Uncategorized"), QLatin1String(ZDUncategorizedUUID), Uncategorized);
}

ZDCategoryNodePtr ZDCategoryNode::folderNodeWithTitle(const QString &title, const QString &UUID,
                                                      const QString &defaultLanguageIdentifier)
{
    return create(title, UUID, Folder, defaultLanguageIdentifier);
}

ZDCategoryNodePtr ZDCategoryNode::shortcutNodeWithTargetUUID(const QString &targetUUID)
{
    return create({}, targetUUID, Shortcut);
}

ZDCategoryNodePtr ZDCategoryNode::tagNodeWithTitle(const QString &title, const QString &UUID)
{
    return create(title, UUID, Tag);
}

ZDCategoryNodePtr ZDCategoryNode::smartGroupNodeWithTitle(const QString &title, const QString &UUID,
                                                          const QString &predicateString)
{
    return create(title, UUID, SmartGroup, {}, predicateString);
}

QString ZDCategoryNode::title() const
{
    if (m_type != Shortcut)
        return m_title;
    if (const ZDRecordDirectory *directory = ZDRecordDirectory::shared())
        return directory->titleForShortcutNodeWithUUID(m_UUID, QStringLiteral("shortcut"));
    return {};
}

QString ZDCategoryNode::defaultLanguageIdentifier() const
{
    QString identifier = m_defaultLanguageIdentifier;
    if (m_type == Shortcut) {
        const ZDRecordDirectory *directory = ZDRecordDirectory::shared();
        identifier = directory ? directory->defaultLanguageIdentifierForFolderUUID(m_UUID) : QString();
    }
    return identifier.isEmpty() ? plainTextIdentifier() : identifier;
}

void ZDCategoryNode::addChild(const ZDCategoryNodePtr &child)
{
    insertChild(m_children.size(), child);
}

void ZDCategoryNode::insertChild(qsizetype index, const ZDCategoryNodePtr &child)
{
    // A node cannot become its own descendant: the tree would turn into a loop.
    if (!child || child.get() == this || isDescendantOfNode(child))
        return;
    if (ZDCategoryNodePtr former = child->parentCategoryNode()) {
        if (former.get() == this) {
            const qsizetype at = m_children.indexOf(child);
            if (at >= 0 && at < index)
                --index;
        }
        former->removeChild(child);
    }
    m_children.insert(qBound<qsizetype>(0, index, m_children.size()), child);
    child->m_parent = weak_from_this();
}

void ZDCategoryNode::removeChild(const ZDCategoryNodePtr &child)
{
    if (m_children.removeOne(child))
        child->m_parent.reset();
}

void ZDCategoryNode::traverseSubNodesWithBlock(
    const std::function<void(const ZDCategoryNodePtr &, int)> &block, int currentLevel) const
{
    for (const ZDCategoryNodePtr &child : m_children) {
        block(child, currentLevel);
        child->traverseSubNodesWithBlock(block, currentLevel + 1);
    }
}

bool ZDCategoryNode::isDescendantOfNode(const ZDCategoryNodePtr &node) const
{
    if (!node)
        return false;
    for (ZDCategoryNodePtr parent = parentCategoryNode(); parent; parent = parent->parentCategoryNode()) {
        if (parent->isEqual(node.get()))
            return true;
    }
    return false;
}

QVariantMap ZDCategoryNode::dictionaryRepresentation() const
{
    QVariantMap dictionary;
    dictionary.insert(QLatin1String(ZDCategoryNodeKey::UUID), m_UUID);
    dictionary.insert(QLatin1String(ZDCategoryNodeKey::Type), QVariant::fromValue<qulonglong>(m_type));
    if (m_type != Shortcut)
        dictionary.insert(QLatin1String(ZDCategoryNodeKey::Title), m_title);
    if (m_type == SmartGroup)
        dictionary.insert(QLatin1String(ZDCategoryNodeKey::PredicateString), m_predicateString);
    if (m_type == Folder) {
        dictionary.insert(QLatin1String(ZDCategoryNodeKey::DefaultLanguageIdentifier), defaultLanguageIdentifier());
        QVariantList children;
        for (const ZDCategoryNodePtr &child : m_children)
            children.append(child->dictionaryRepresentation());
        dictionary.insert(QLatin1String(ZDCategoryNodeKey::Children), children);
    }
    return dictionary;
}

ZDCategoryNodePtr ZDCategoryNode::fromDictionaryRepresentation(const QVariantMap &dictionary)
{
    return fromDictionary(dictionary, 0);
}

ZDCategoryNodePtr ZDCategoryNode::fromDictionary(const QVariantMap &dictionary, int depth)
{
    if (depth > kMaximumReadDepth)
        return nullptr;
    const auto string = [&](const char *key) {
        const QVariant value = dictionary.value(QLatin1String(key));
        return value.typeId() == QMetaType::QString ? value.toString() : QString();
    };
    // An absent type reads as 0, a group, as a missing number does in the original format.
    bool ok = true;
    const QVariant typeValue = dictionary.value(QLatin1String(ZDCategoryNodeKey::Type));
    const qlonglong type = typeValue.isValid() ? typeValue.toLongLong(&ok) : 0;
    if (!ok || type < 0 || type > SmartGroup)
        return nullptr;

    const QString UUID = string(ZDCategoryNodeKey::UUID);
    switch (Type(type)) {
    case Folder: {
        ZDCategoryNodePtr folder = folderNodeWithTitle(string(ZDCategoryNodeKey::Title), UUID,
                                                       string(ZDCategoryNodeKey::DefaultLanguageIdentifier));
        const QVariantList children = dictionary.value(QLatin1String(ZDCategoryNodeKey::Children)).toList();
        for (const QVariant &child : children) {
            if (child.typeId() != QMetaType::QVariantMap)
                continue;
            if (ZDCategoryNodePtr node = fromDictionary(child.toMap(), depth + 1))
                folder->addChild(node);
        }
        return folder;
    }
    case Shortcut:
        return shortcutNodeWithTargetUUID(UUID);
    case SmartGroup:
        return smartGroupNodeWithTitle(string(ZDCategoryNodeKey::Title), UUID,
                                       string(ZDCategoryNodeKey::PredicateString));
    default:
        return create(string(ZDCategoryNodeKey::Title), UUID, Type(type));
    }
}
