#include "ZDStoreErrors.h"

#include "ZDResources.h"

#include <QLocale>

namespace {

QString quoted(const QString &name)
{
    return QLocale().quoteString(name);
}

QVariantMap underlyingInformation(const ZDError &underlying)
{
    QVariantMap information = underlying.information();
    if (!underlying.isNull())
        information.insert(QStringLiteral("UnderlyingError"), underlying.toString());
    return information;
}

ZDError invalidPackage(int code, const QString &description, const QString &reason)
{
    return ZDError(code, description, {}, reason);
}

} // namespace

ZDError ZDStoreErrors::libraryLoadFailed(const ZDError &underlying)
{
    return ZDError(104, loadFailedTitle,
                   QStringLiteral("%1 %2").arg(underlying.description(), underlying.recoverySuggestion()),
                   QStringLiteral("packageWrapper is nil"), underlyingInformation(underlying));
}

ZDError ZDStoreErrors::reloadFailed(const ZDError &underlying)
{
    return ZDError(135, loadFailedTitle,
                   QStringLiteral("%1 %2").arg(underlying.description(), underlying.recoverySuggestion()),
                   QStringLiteral("packageWrapper is nil"), underlyingInformation(underlying));
}

ZDError ZDStoreErrors::cannotReadPackage(const QString &path, const ZDError &underlying)
{
    ZDError error(110, QStringLiteral("Failed to read the library."), {},
                  QStringLiteral("Failed to initialize NSFileWrapper using localURL"),
                  underlyingInformation(underlying));
    return error.withInformation(QStringLiteral("URL"), path);
}

ZDError ZDStoreErrors::cannotLocateLocalPackage()
{
    return ZDError(112, QStringLiteral("Cannot locate local library URL."), {},
                   QStringLiteral("localPackageURL is nil"));
}

ZDError ZDStoreErrors::nothingToSave()
{
    return ZDError(113, saveFailedTitle, {}, QStringLiteral("packageWrapper is nil"));
}

ZDError ZDStoreErrors::cannotRetrieveLocalPath()
{
    return ZDError(124, saveFailedTitle, QStringLiteral("Cannot retrieve local container path."),
                   QStringLiteral("localPackageURL is nil"));
}

ZDError ZDStoreErrors::cannotWriteLocalPackage(const QString &path, const ZDError &underlying)
{
    ZDError error(141, saveFailedTitle, QStringLiteral("Cannot write to local container."),
                  underlying.reason(), underlyingInformation(underlying));
    return error.withInformation(QStringLiteral("URL"), path);
}

ZDError ZDStoreErrors::mutationWithoutLibrary(int code)
{
    return ZDError(code, saveFailedTitle, {}, QStringLiteral("packageWrapper is nil"));
}

ZDError ZDStoreErrors::cannotAccessLibraryData(const QString &path, const ZDError &underlying)
{
    ZDError error(119, QStringLiteral("Cannot access library data."), {}, underlying.reason(),
                  underlyingInformation(underlying));
    return error.withInformation(QStringLiteral("URL"), path);
}

ZDError ZDStoreErrors::notALibrary(const QString &name)
{
    ZDError error =
        invalidPackage(121, QStringLiteral("%1 isn’t a valid Zandrio Library file.").arg(quoted(name)),
                       QStringLiteral("The package is not a directory"));
    return error.withInformation(QStringLiteral("PackageWrapper"), name);
}

ZDError ZDStoreErrors::invalidVersionInformation(const QString &name, const QString &version,
                                                 const QVariant &versionDictionary)
{
    ZDError error = invalidPackage(
        123, QStringLiteral("%1 doesn’t contain a valid version information.").arg(quoted(name)),
        QStringLiteral("version.plist is missing or has no version entry"));
    error.withInformation(QStringLiteral("Version"), version);
    return error.withInformation(QStringLiteral("VersionDict"), versionDictionary);
}

ZDError ZDStoreErrors::createdByNewerVersion(const QString &name, const QString &packageVersion)
{
    return invalidPackage(126,
                          QStringLiteral("%1 was created using a newer version of Zandrio (%2), which is not "
                                         "compatible with your current version (%3).")
                              .arg(quoted(name), packageVersion, ZDResources::applicationVersion()),
                          QStringLiteral("The package's version orders after this build's"));
}

ZDError ZDStoreErrors::invalidDatabase(const QString &name)
{
    return invalidPackage(125, QStringLiteral("%1 doesn’t contain a valid database.").arg(quoted(name)),
                          QStringLiteral("Database is missing or not a directory"));
}

ZDError ZDStoreErrors::invalidFoldersOrShortcuts(const QString &name)
{
    return invalidPackage(131,
                          QStringLiteral("%1 doesn’t contain valid folders or shortcuts.").arg(quoted(name)),
                          QStringLiteral("folders.data or shortcuts.data is missing"));
}

ZDError ZDStoreErrors::invalidSnippetsData(const QString &name)
{
    return invalidPackage(149, QStringLiteral("%1 doesn’t contain valid snippets data.").arg(quoted(name)),
                          QStringLiteral("Snippets is missing or not a directory"));
}
