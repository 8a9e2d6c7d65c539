#pragma once

#include <QByteArray>
#include <QVariant>

/// Keyed archives of plain values: strings, byte blobs, arrays and string-keyed dictionaries of
/// them (QString, QByteArray, QVariantList, QVariantMap). The bytes are a binary property list
/// in the keyed-archive structure ("$archiver", "$top"/"root", "$objects", "CF$UID" references,
/// "NS.objects"/"NS.keys" with their "$class" entries), the form the package's stamps and record
/// lists take on every platform.
namespace ZDPlainArchive {
QByteArray archive(const QVariant &value);
/// The archived value; an invalid QVariant when the bytes are no keyed archive of plain values.
QVariant unarchive(const QByteArray &bytes);
} // namespace ZDPlainArchive
