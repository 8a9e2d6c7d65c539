#pragma once

#include "ZDError.h"

#include <QByteArray>
#include <QMetaType>
#include <QStringList>
#include <QVariant>

/// An archived object of a class other than the platform's collections and values: its class
/// name, its class chain (most derived first, "NSObject" last) and its keyed fields.
struct ZDArchivedObject
{
    QString className;
    QStringList classes;
    QVariantMap fields;
    /// The order the fields are written in; fields not named here follow in key order.
    QStringList keyOrder;

    /// An object of `className` whose class chain is `className`, "NSObject".
    static ZDArchivedObject make(const QString &className, const QVariantMap &fields = {});
    bool operator==(const ZDArchivedObject &other) const
    {
        return className == other.className && fields == other.fields;
    }
};
Q_DECLARE_METATYPE(ZDArchivedObject)

/// The platform's keyed-archive format (an "NSKeyedArchiver" binary property list with `$top`,
/// `$objects` and `CF$UID` references), read and written over object graphs held as QVariant:
///
/// | QVariant                  | archived as                                        |
/// |---------------------------|----------------------------------------------------|
/// | invalid                   | `$null`                                            |
/// | QString                   | string (NSString / NSMutableString when reading)   |
/// | QByteArray                | data (NSData / NSMutableData when reading)         |
/// | bool, integers, double    | numbers                                            |
/// | QDateTime                 | NSDate with `NS.time` (seconds since 2001, UTC)    |
/// | QVariantList, QStringList | NSArray (NSMutableArray, sets read as lists)       |
/// | QVariantMap               | NSDictionary with string keys                      |
/// | ZDArchivedObject          | an object of its class with its fields             |
///
/// Reading never trusts the bytes: reference cycles, references out of range, malformed class
/// records and graphs beyond a size limit are errors.
namespace ZDKeyedArchive {
/// The error code of an archive that cannot be read (the platform's "corrupt data" code).
inline constexpr int kCorruptArchiveErrorCode = 4864;

QByteArray archivedData(const QVariant &rootObject);
/// Reads `data` into `rootObject`; on failure returns false and fills `error`.
bool unarchive(const QByteArray &data, QVariant *rootObject, ZDError *error = nullptr);
} // namespace ZDKeyedArchive
