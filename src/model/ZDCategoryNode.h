#pragma once

#include "ZDRecordTypes.h"

#include <QList>
#include <QString>
#include <QVariantMap>

#include <functional>
#include <memory>

/// Keys of a node's written form. "Langauge" is misspelt in the format and must stay so.
namespace ZDCategoryNodeKey {
inline constexpr char UUID[] = "com.varnok.Zandrio.Key.NodeUUID";
inline constexpr char Type[] = "com.varnok.Zandrio.Key.NodeType";
inline constexpr char Title[] = "com.varnok.Zandrio.Key.NodeTitle";
inline constexpr char PredicateString[] = "com.varnok.Zandrio.Key.NodePredicateString";
inline constexpr char DefaultLanguageIdentifier[] = "com.varnok.Zandrio.Key.NodeDefaultLangaugeIdentifier";
inline constexpr char Children[] = "com.varnok.Zandrio.Key.NodeChildren";
} // namespace ZDCategoryNodeKey

/// Identities of the four sidebar groups.
namespace ZDGroupUUID {
inline constexpr char Favourites[] = "com.varnok.Zandrio.UUID.Group.Favourites";
inline constexpr char Folders[] = "com.varnok.Zandrio.UUID.Group.Folders";
inline constexpr char Tags[] = "com.varnok.Zandrio.UUID.Group.Tags";
inline constexpr char SmartGroups[] = "com.varnok.Zandrio.UUID.Group.SmartGroups";
} // namespace ZDGroupUUID

/// One node of the sidebar tree: a group header, a predefined collection, a folder (with
/// children), a shortcut to a folder, a tag or a smart group. Equal when their UUIDs are.
/// Children are owned by their parent; the parent is held weakly.
class ZDCategoryNode : public std::enable_shared_from_this<ZDCategoryNode>
{
public:
    enum Type : unsigned {
        Group = 0,
        AllSnippets = 1,
        Uncategorized = 2,
        Folder = 3,
        Shortcut = 4,
        Tag = 5,
        SmartGroup = 6,
    };

    /// An empty `UUID` is replaced by a new one.
    ZDCategoryNode(const QString &title, const QString &UUID, Type type,
                   const QString &defaultLanguageIdentifier = {}, const QString &predicateString = {});

    static ZDCategoryNodePtr create(const QString &title, const QString &UUID, Type type,
                                    const QString &defaultLanguageIdentifier = {},
                                    const QString &predicateString = {});
    static ZDCategoryNodePtr favouritesGroupNode();
    static ZDCategoryNodePtr foldersGroupNode();
    static ZDCategoryNodePtr tagsGroupNode();
    static ZDCategoryNodePtr smartFoldersGroupNode();
    static ZDCategoryNodePtr allSnippetsNode();
    static ZDCategoryNodePtr uncategorizedNode();
    static ZDCategoryNodePtr folderNodeWithTitle(const QString &title, const QString &UUID = {},
                                                 const QString &defaultLanguageIdentifier = {});
    static ZDCategoryNodePtr shortcutNodeWithTargetUUID(const QString &targetUUID);
    static ZDCategoryNodePtr tagNodeWithTitle(const QString &title, const QString &UUID = {});
    static ZDCategoryNodePtr smartGroupNodeWithTitle(const QString &title, const QString &UUID = {},
                                                     const QString &predicateString = {});

    /// A shortcut's title is its target folder's, asked of the library each time.
    QString title() const;
    void setTitle(const QString &title) { m_title = title; }
    QString UUID() const { return m_UUID; }
    Type nodeType() const { return m_type; }
    /// Folders: the stored language, else plain text's; shortcuts: their target folder's.
    QString defaultLanguageIdentifier() const;
    void setDefaultLanguageIdentifier(const QString &identifier) { m_defaultLanguageIdentifier = identifier; }
    QString predicateString() const { return m_predicateString; }
    void setPredicateString(const QString &predicate) { m_predicateString = predicate; }

    bool isGroup() const { return m_type == Group; }
    bool isAllSnippets() const { return m_type == AllSnippets; }
    bool isUncategorized() const { return m_type == Uncategorized; }
    bool isFolder() const { return m_type == Folder; }
    bool isShortcut() const { return m_type == Shortcut; }
    bool isTag() const { return m_type == Tag; }
    bool isSmartGroup() const { return m_type == SmartGroup; }
    bool isDeletable() const { return m_type >= Folder; }
    bool isDraggable() const { return m_type == Folder || m_type == Shortcut || m_type == SmartGroup; }
    bool isRenamable() const { return m_type == Folder || m_type == Tag || m_type == SmartGroup; }

    QList<ZDCategoryNodePtr> children() const { return m_children; }
    ZDCategoryNodePtr parentCategoryNode() const { return m_parent.lock(); }
    /// Appends `child`, taking it from its former parent.
    void addChild(const ZDCategoryNodePtr &child);
    void insertChild(qsizetype index, const ZDCategoryNodePtr &child);
    void removeChild(const ZDCategoryNodePtr &child);

    /// Visits every descendant depth-first in child order; children get `currentLevel`, their
    /// children `currentLevel + 1` and so on.
    void traverseSubNodesWithBlock(const std::function<void(const ZDCategoryNodePtr &, int level)> &block,
                                   int currentLevel = 0) const;
    /// Whether `node` is on this node's parent chain.
    bool isDescendantOfNode(const ZDCategoryNodePtr &node) const;

    bool isEqual(const ZDCategoryNode *other) const { return other && other->m_UUID == m_UUID; }

    /// The written form (keys in `ZDCategoryNodeKey`); folders include their children.
    QVariantMap dictionaryRepresentation() const;
    /// Reads the written form; null for a type above 6 or a malformed dictionary.
    static ZDCategoryNodePtr fromDictionaryRepresentation(const QVariantMap &dictionary);

private:
    static ZDCategoryNodePtr fromDictionary(const QVariantMap &dictionary, int depth);

    QString m_title;
    QString m_UUID;
    Type m_type;
    QString m_defaultLanguageIdentifier;
    QString m_predicateString;
    QList<ZDCategoryNodePtr> m_children;
    std::weak_ptr<ZDCategoryNode> m_parent;
};
