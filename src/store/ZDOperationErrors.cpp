#include "ZDOperationErrors.h"

#include <QCoreApplication>

namespace {
QString tr(const char *text)
{
    return QCoreApplication::translate("ZDOperationErrors", text);
}
} // namespace

ZDError ZDOperationErrors::unknownRecord(const QString &operation, const QString &kind, const QString &UUID)
{
    return ZDError(UnknownRecordCode, tr("No %1 “%2” in the library.").arg(kind, UUID), {}, operation,
                   {{QStringLiteral("UUID"), UUID}});
}

ZDError ZDOperationErrors::invalidArgument(const QString &operation, const QString &description)
{
    return ZDError(InvalidArgumentCode, description, {}, operation);
}

ZDError ZDOperationErrors::alreadyExists(const QString &operation, const QString &description)
{
    return ZDError(AlreadyExistsCode, description, {}, operation);
}

ZDError ZDOperationErrors::folderIntoItself(const QString &operation, const QString &folderTitle)
{
    return ZDError(
        FolderIntoItselfCode,
        tr("The folder “%1” can’t be moved into itself or into one of its subfolders.").arg(folderTitle), {},
        operation);
}
