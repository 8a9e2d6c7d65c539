#pragma once

#include "ZDError.h"
#include "ZDRecordTypes.h"

#include <QByteArray>
#include <QVariant>

/// Records in the keyed archive: snippets (parts included), tags and sidebar nodes, with the
/// class names and keys the library package and the pasteboard use. The `...Object` forms are
/// the archived objects themselves (ZDArchivedObject in a QVariant), for archiving several
/// records in one graph; the data forms are whole archives with the record as root.
namespace ZDRecordArchive {
QVariant snippetObject(const ZDSnippet &snippet);
QVariant partObject(const ZDSnippetPart &part);
QVariant tagObject(const ZDTag &tag);
QVariant nodeObject(const ZDCategoryNode &node);

/// Null when `object` is not an archived record of that kind (a node may also be given as a
/// dictionary of its written form).
ZDSnippetPtr snippetFromObject(const QVariant &object);
ZDSnippetPartPtr partFromObject(const QVariant &object);
ZDTagPtr tagFromObject(const QVariant &object);
ZDCategoryNodePtr nodeFromObject(const QVariant &object);

QByteArray archivedSnippet(const ZDSnippet &snippet);
QByteArray archivedTag(const ZDTag &tag);
QByteArray archivedNode(const ZDCategoryNode &node);
ZDSnippetPtr unarchiveSnippet(const QByteArray &data, ZDError *error = nullptr);
ZDTagPtr unarchiveTag(const QByteArray &data, ZDError *error = nullptr);
ZDCategoryNodePtr unarchiveNode(const QByteArray &data, ZDError *error = nullptr);

/// A list file of the library package: an archived array whose members are themselves record
/// archives, so that one unreadable record loses only itself.
QByteArray archivedList(const QList<QByteArray> &recordArchives);
/// The record archives of a list file (members that are not data are skipped). Zero bytes are
/// an empty list; bytes that are not an archived array fail with `error`.
bool unarchiveList(const QByteArray &data, QList<QByteArray> *recordArchives, ZDError *error = nullptr);
} // namespace ZDRecordArchive
