#pragma once

#include "ZDError.h"

/// Why the store refused an operation for its arguments (ZDDataCenter's operations). These are
/// the caller's mistakes, not the library's: they are returned, never shown to the user by the
/// store. Each carries the operation's name as its reason.
namespace ZDOperationErrors {
enum Code
{
    /// A snippet, fragment, folder, shortcut, smart group or tag the library does not hold.
    UnknownRecordCode = 1001,
    /// An empty title, a position out of range, the last fragment, a query that does not parse.
    InvalidArgumentCode = 1002,
    /// A tag name or snippet identity the library already has.
    AlreadyExistsCode = 1003,
    /// A folder moved into itself or into one of its own subfolders.
    FolderIntoItselfCode = 1004,
};

/// "No <kind> “<UUID>” in the library." (`kind`: "snippet", "folder"...), with the UUID as
/// information.
ZDError unknownRecord(const QString &operation, const QString &kind, const QString &UUID);
ZDError invalidArgument(const QString &operation, const QString &description);
ZDError alreadyExists(const QString &operation, const QString &description);
ZDError folderIntoItself(const QString &operation, const QString &folderTitle);
} // namespace ZDOperationErrors
