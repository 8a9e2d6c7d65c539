#pragma once

#include "ZDRecordTypes.h"

#include <QHash>
#include <QList>
#include <QString>

/// A compact copy of a large library's snippets in the user's cache folder, so that loading does
/// not read and unarchive every snippet file. An entry stands for the file (name and inode) it
/// was made from; the package's files are replaced by rename, never rewritten in place, so a
/// file that changed has another inode and is read from the package instead. The cache is only
/// ever a shortcut: a missing or damaged cache costs time, not data.
namespace ZDRecordCache {

struct Entry
{
    quint64 identity = 0;
    ZDSnippetPtr snippet;
};

/// "<user cache>/Libraries/<MD5 of the package's absolute path>.snippets".
QString pathForPackage(const QString &packagePath);
/// The entries by snippet file name; empty when the cache is missing, damaged or of another
/// format.
QHash<QString, Entry> read(const QString &cachePath);
/// Replaces the cache atomically; entries with identity 0 are left out.
bool write(const QString &cachePath, const QList<QPair<QString, Entry>> &entries);

} // namespace ZDRecordCache
