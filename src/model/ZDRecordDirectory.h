#pragma once

#include "ZDClock.h"
#include "ZDRecordTypes.h"

#include <QString>

/// What records need to know about the library they live in: the library's tag list, folder
/// titles and folder default languages. The library store implements it and installs itself at
/// start-up; with nothing installed every lookup gives an empty result.
///
/// Also holds the clock records stamp their dates with (the system clock unless a test sets one).
class ZDRecordDirectory
{
public:
    virtual ~ZDRecordDirectory() = default;

    /// The library's tag list, in the store's order.
    virtual ZDTagList allTags() const = 0;
    /// The display title of the folder (or predefined node) with `UUID`; `requester` names the
    /// caller for the store's diagnostics ("localizedCategory", "shortcut").
    virtual QString titleForShortcutNodeWithUUID(const QString &UUID, const QString &requester) const = 0;
    /// The default language identifier of the folder with `UUID`; empty when it has none.
    virtual QString defaultLanguageIdentifierForFolderUUID(const QString &UUID) const = 0;

    /// The installed directory, or null.
    static ZDRecordDirectory *shared();
    /// Installs `directory` (not owned; pass null to remove it).
    static void install(ZDRecordDirectory *directory);

    /// Now, as records stamp it: UTC, millisecond precision.
    static QDateTime now();
    /// Replaces the records' clock; an empty clock restores the system clock.
    static void setClock(ZDClock clock);
};

/// A new identity: an upper-case UUID string with hyphens and no braces.
QString zdNewUUIDString();
