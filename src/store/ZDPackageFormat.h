#pragma once

#include "ZDPackageTree.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

/// Names inside a library package (paths relative to the package directory).
namespace ZDPackageLayout {
inline const QString defaultFilePackageName = QStringLiteral("main.zandriolibrary");
inline const QString versionFile = QStringLiteral("version.plist");
inline const QString identifierFile = QStringLiteral("identifier");
inline const QString attachmentsDirectory = QStringLiteral("Attachments");
inline const QString databaseDirectory = QStringLiteral("Database");
inline const QString snippetsDirectory = QStringLiteral("Database/Snippets");
inline const QString foldersFile = QStringLiteral("Database/folders.data");
inline const QString shortcutsFile = QStringLiteral("Database/shortcuts.data");
inline const QString smartGroupsFile = QStringLiteral("Database/smart groups.data");
inline const QString tagsFile = QStringLiteral("Database/tags.data");
/// The deletion list is written inside "Database" but read from the top level, so it starts
/// empty after every load; nothing depends on it surviving one.
inline const QString deletionListWritePath = QStringLiteral("Database/deletion.data");
inline const QString deletionListReadPath = QStringLiteral("deletion.data");
/// The key of the version entry in "version.plist".
inline const QString versionKey = QStringLiteral("Zandrio");

/// "Database/Snippets/<UUID>.data".
QString snippetFilePath(const QString &snippetUUID);
} // namespace ZDPackageLayout

/// A database version: three non-negative integers written as "major.minor.fix".
struct ZDDatabaseVersion
{
    int major = 0;
    int minor = 0;
    int fix = 0;

    QString asString() const;
    /// The version this build writes: 1.5.0.
    static ZDDatabaseVersion current();
    /// Whether a package's version string orders after this build's. The comparison is of the
    /// strings, character by character, not of the numbers: "1.10.0" is older than "1.5.0".
    /// Libraries in the wild were accepted or refused by this rule, so it stays.
    static bool isNewerThanCurrent(const QString &packageVersion);
};

/// Encodings of the package's files other than the records themselves.
namespace ZDPackageFormat {
/// "version.plist": a keyed archive of {"Zandrio": version}.
QByteArray encodeVersion(const QString &version = ZDDatabaseVersion::current().asString());
/// The version string of a "version.plist"; false when it does not unarchive, is not a
/// dictionary or has no "Zandrio" string. `dictionary` receives what did unarchive.
bool decodeVersion(const QByteArray &bytes, QString *version, QVariant *dictionary = nullptr);
/// Replaces "version.plist" unless it holds exactly this build's version; returns whether it did.
bool stampCurrentVersion(ZDPackageTree &tree);

/// A fresh write stamp: an upper-case UUID.
QString makeWriteStamp();
/// "identifier": a keyed archive of the stamp string.
QByteArray encodeWriteStamp(const QString &stamp);
/// The stamp in an "identifier" file's bytes; empty when they are not a complete stamp.
QString decodeWriteStamp(const QByteArray &bytes);
/// The stamp in the "identifier" file of the package at `packagePath`; empty when absent.
QString readWriteStamp(const QString &packagePath);

/// The four record lists: a keyed archive of an array of byte blobs, one per record, so that
/// one damaged record does not take the rest of the list with it.
QByteArray encodeRecordList(const QList<QByteArray> &records);
/// Zero bytes are an empty list. Elements that are not byte blobs are skipped. Also accepts a
/// plain binary property-list array of blobs. False when the bytes are neither.
bool decodeRecordList(const QByteArray &bytes, QList<QByteArray> *records);

/// The deletion list: a keyed archive of an array of UUID strings (zero bytes: empty).
QByteArray encodeDeletionList(const QStringList &uuids);
QStringList decodeDeletionList(const QByteArray &bytes);

/// A new library: "Database" with an empty "Snippets" and the five zero-byte list files, an
/// empty "Attachments", and "version.plist" with this build's version. Nothing is on disk yet.
ZDPackageTree emptyPackage();
} // namespace ZDPackageFormat
