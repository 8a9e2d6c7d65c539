// The in-memory side of ZDPackageTree: lookups, edits and their change marks, and the digest.
// Reading and writing directories is in ZDPackageTreeDisk.cpp.

#include "ZDPackageTree.h"
#include "ZDPackageNode.h"

#include <QCollator>
#include <QCryptographicHash>
#include <QLocale>

#include <algorithm>

namespace {

QStringList components(const QString &path)
{
    return path.split(QLatin1Char('/'), Qt::SkipEmptyParts);
}

void appendAllData(const ZDPackageNode &node, QByteArray &out)
{
    if (!node.directory) {
        out += node.contents;
        return;
    }
    QStringList names;
    for (const auto &entry : node.children)
        names << entry.first;
    std::sort(names.begin(), names.end(), ZDPackageTree::fileManagerLessThan);
    for (const QString &name : names)
        appendAllData(*node.children.at(name), out);
}

} // namespace

ZDPackageTree::ZDPackageTree() : m_root(std::make_unique<ZDPackageNode>())
{
    m_root->directory = true;
}

ZDPackageTree::~ZDPackageTree() = default;
ZDPackageTree::ZDPackageTree(ZDPackageTree &&) noexcept = default;
ZDPackageTree &ZDPackageTree::operator=(ZDPackageTree &&) noexcept = default;

ZDPackageTree::ZDPackageTree(const ZDPackageTree &other)
    : m_root(other.m_root->clone()), m_origin(other.m_origin)
{
}

ZDPackageTree &ZDPackageTree::operator=(const ZDPackageTree &other)
{
    if (this != &other) {
        m_root = other.m_root->clone();
        m_origin = other.m_origin;
    }
    return *this;
}

static ZDPackageNode *findNode(ZDPackageNode *root, const QString &path)
{
    ZDPackageNode *node = root;
    for (const QString &name : components(path)) {
        if (!node->directory)
            return nullptr;
        const auto it = node->children.find(name);
        if (it == node->children.end())
            return nullptr;
        node = it->second.get();
    }
    return node;
}

bool ZDPackageTree::exists(const QString &path) const
{
    return findNode(m_root.get(), path) != nullptr;
}

bool ZDPackageTree::isFile(const QString &path) const
{
    const ZDPackageNode *node = findNode(m_root.get(), path);
    return node && !node->directory;
}

bool ZDPackageTree::isDirectory(const QString &path) const
{
    const ZDPackageNode *node = findNode(m_root.get(), path);
    return node && node->directory;
}

QByteArray ZDPackageTree::fileContents(const QString &path) const
{
    const ZDPackageNode *node = findNode(m_root.get(), path);
    if (!node || node->directory)
        return {};
    loadContents(*node, path);
    return node->contents;
}

quint64 ZDPackageTree::fileIdentity(const QString &path) const
{
    const ZDPackageNode *node = findNode(m_root.get(), path);
    return node && !node->directory && !node->changed ? node->identity : 0;
}

QList<ZDPackageTree::FileEntry> ZDPackageTree::files(const QString &path) const
{
    QList<FileEntry> result;
    if (const ZDPackageNode *node = findNode(m_root.get(), path); node && node->directory) {
        result.reserve(qsizetype(node->children.size()));
        for (const auto &[name, child] : node->children) {
            if (!child->directory)
                result.append({name, child->changed ? 0 : child->identity});
        }
    }
    return result;
}

QByteArray ZDPackageTree::readFileContents(const QString &path) const
{
    const ZDPackageNode *node = findNode(m_root.get(), path);
    if (!node || node->directory)
        return {};
    return node->loaded ? node->contents : readFromPackage(path);
}

QStringList ZDPackageTree::childNames(const QString &path) const
{
    QStringList names;
    if (const ZDPackageNode *node = findNode(m_root.get(), path); node && node->directory) {
        for (const auto &entry : node->children)
            names << entry.first;
    }
    return names;
}

int ZDPackageTree::childCount(const QString &path) const
{
    const ZDPackageNode *node = findNode(m_root.get(), path);
    return node && node->directory ? int(node->children.size()) : 0;
}

int ZDPackageTree::fileCount(const QString &path) const
{
    int count = 0;
    if (const ZDPackageNode *node = findNode(m_root.get(), path); node && node->directory) {
        for (const auto &entry : node->children)
            count += entry.second->directory ? 0 : 1;
    }
    return count;
}

// Walks to the parent of `path`, making directories on the way and marking the way as changed.
static ZDPackageNode *parentForEdit(ZDPackageNode *root, const QStringList &parts)
{
    ZDPackageNode *node = root;
    node->subtreeChanged = true;
    for (qsizetype i = 0; i + 1 < parts.size(); ++i) {
        node->dirtyChildren.insert(parts[i]);
        auto &slot = node->children[parts[i]];
        if (!slot || !slot->directory) {
            slot = std::make_unique<ZDPackageNode>();
            slot->directory = true;
        }
        node = slot.get();
        node->subtreeChanged = true;
    }
    return node;
}

void ZDPackageTree::setFile(const QString &path, const QByteArray &contents)
{
    const QStringList parts = components(path);
    if (parts.isEmpty())
        return;
    ZDPackageNode *parent = parentForEdit(m_root.get(), parts);
    auto node = std::make_unique<ZDPackageNode>();
    node->contents = contents;
    node->subtreeChanged = false;
    parent->children[parts.last()] = std::move(node);
    parent->dirtyChildren.insert(parts.last());
}

void ZDPackageTree::makeDirectory(const QString &path)
{
    if (isDirectory(path))
        return;
    const QStringList parts = components(path);
    if (parts.isEmpty())
        return;
    ZDPackageNode *parent = parentForEdit(m_root.get(), parts);
    auto node = std::make_unique<ZDPackageNode>();
    node->directory = true;
    parent->children[parts.last()] = std::move(node);
    parent->dirtyChildren.insert(parts.last());
}

bool ZDPackageTree::remove(const QString &path)
{
    const QStringList parts = components(path);
    if (parts.isEmpty() || !exists(path))
        return false;
    ZDPackageNode *parent = parentForEdit(m_root.get(), parts);
    parent->children.erase(parts.last());
    parent->removed.insert(parts.last());
    return true;
}

bool ZDPackageTree::hasChanges() const
{
    return m_root->hasMarks();
}

void ZDPackageTree::markAllChanged()
{
    loadAllContents();
    m_root->setMarks(true);
}

QByteArray ZDPackageTree::allData() const
{
    loadAllContents();
    QByteArray out;
    appendAllData(*m_root, out);
    return out;
}

QString ZDPackageTree::md5String() const
{
    return QString::fromLatin1(QCryptographicHash::hash(allData(), QCryptographicHash::Md5).toHex());
}

bool ZDPackageTree::fileManagerLessThan(const QString &a, const QString &b)
{
    thread_local QCollator collator = [] {
        // The "C" locale collates by code point alone; the file manager's order is still
        // case-insensitive and numeric there, as in English.
        const QLocale system;
        QCollator made(system.language() == QLocale::C ? QLocale(QLocale::English, QLocale::UnitedStates)
                                                       : system);
        made.setCaseSensitivity(Qt::CaseInsensitive);
        made.setNumericMode(true);
        made.setIgnorePunctuation(false);
        return made;
    }();
    const int order = collator.compare(a, b);
    return order != 0 ? order < 0 : a < b;
}
