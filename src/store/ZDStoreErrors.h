#pragma once

#include "ZDError.h"

/// The errors of reading, validating and writing a local library, with their codes and texts.
/// Save failures carry "Couldn’t save the library" as their description (the alert's title) and
/// the detail as recovery suggestion; validation errors are internal and carry a reason.
namespace ZDStoreErrors {
inline const QString saveFailedTitle = QStringLiteral("Couldn’t save the library");
inline const QString loadFailedTitle = QStringLiteral("Couldn’t load the library");

/// 104: the store could not load a package; the suggestion joins the underlying description
/// and suggestion.
ZDError libraryLoadFailed(const ZDError &underlying);
/// 135: a forced reload found no package.
ZDError reloadFailed(const ZDError &underlying);
/// 110: the package directory exists but cannot be read.
ZDError cannotReadPackage(const QString &path, const ZDError &underlying);
/// 112: the local package location cannot be resolved.
ZDError cannotLocateLocalPackage();

/// 113: there is no package tree to write.
ZDError nothingToSave();
/// 124: the local location cannot be resolved when saving.
ZDError cannotRetrieveLocalPath();
/// 141: writing the package to its local location failed.
ZDError cannotWriteLocalPackage(const QString &path, const ZDError &underlying);
/// A mutation refused because the store has no package tree: 134 add snippets, 130 remove
/// snippets, 139 update snippets, 127 folders, 132 shortcuts, 208 smart groups, 200 tags.
ZDError mutationWithoutLibrary(int code);
enum MutationCode
{
    AddSnippetsCode = 134,
    RemoveSnippetsCode = 130,
    UpdateSnippetsCode = 139,
    SetFoldersCode = 127,
    SetShortcutsCode = 132,
    SetSmartGroupsCode = 208,
    SetTagsCode = 200,
};

/// Validation of a package before it is opened or put in place of the current library. `name`
/// is the package's file name, shown between the locale's quotation marks.
ZDError cannotAccessLibraryData(const QString &path, const ZDError &underlying); // 119
ZDError notALibrary(const QString &name);                                        // 121
ZDError invalidVersionInformation(const QString &name, const QString &version,
                                  const QVariant &versionDictionary);              // 123
ZDError createdByNewerVersion(const QString &name, const QString &packageVersion); // 126
ZDError invalidDatabase(const QString &name);                                      // 125
ZDError invalidFoldersOrShortcuts(const QString &name);                            // 131
ZDError invalidSnippetsData(const QString &name);                                  // 149
} // namespace ZDStoreErrors
