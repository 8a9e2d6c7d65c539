#pragma once

// The nodes of a ZDPackageTree, shared by its in-memory side (ZDPackageTree.cpp) and its disk
// side (ZDPackageTreeDisk.cpp). Not part of the tree's interface.

#include <QByteArray>
#include <QSet>
#include <QString>
#include <QStringList>

#include <map>
#include <memory>

// A node is a regular file (bytes) or a directory (named children). `changed` means that a file's
// bytes are not on disk yet, or that a directory is new there; `subtreeChanged` on a directory
// means that something below it needs writing; `removed` lists the names to delete on disk.
struct ZDPackageNode
{
    bool directory = false;
    bool changed = true;
    bool subtreeChanged = true;
    mutable QByteArray contents;
    /// False while a file read on demand still has its bytes on disk only.
    mutable bool loaded = true;
    /// A digest of the file's inode, size and times when it was read from disk; 0 for files made
    /// in memory.
    quint64 identity = 0;
    std::map<QString, std::unique_ptr<ZDPackageNode>> children;
    QSet<QString> removed;
    /// Children that are changed or hold changes, so that a write and the clearing of marks
    /// visit only them and not every file of a large directory.
    QSet<QString> dirtyChildren;
    /// Temporary files of an interrupted write found on disk when the directory was read; the
    /// next write that passes through the directory removes them.
    QStringList staleTemporaries;

    std::unique_ptr<ZDPackageNode> clone() const
    {
        auto copy = std::make_unique<ZDPackageNode>();
        copy->directory = directory;
        copy->changed = changed;
        copy->subtreeChanged = subtreeChanged;
        copy->contents = contents;
        copy->loaded = loaded;
        copy->identity = identity;
        copy->removed = removed;
        copy->dirtyChildren = dirtyChildren;
        copy->staleTemporaries = staleTemporaries;
        for (const auto &[name, child] : children)
            copy->children.emplace(name, child->clone());
        return copy;
    }

    void setMarks(bool value)
    {
        changed = value;
        subtreeChanged = value;
        if (!value)
            removed.clear();
        dirtyChildren.clear();
        for (auto &entry : children) {
            entry.second->setMarks(value);
            if (value)
                dirtyChildren.insert(entry.first);
        }
    }

    /// Clears the marks along the changed paths only.
    void clearMarks()
    {
        changed = false;
        subtreeChanged = false;
        removed.clear();
        for (const QString &name : std::as_const(dirtyChildren)) {
            if (auto child = children.find(name); child != children.end())
                child->second->clearMarks();
        }
        dirtyChildren.clear();
    }

    bool hasMarks() const { return changed || subtreeChanged || !removed.isEmpty(); }
};
