#include "ZDPackageStorage.h"

#include "ZDLogger.h"
#include "ZDOutdatedVersionResponder.h"
#include "ZDPackageFormat.h"
#include "ZDPackageLock.h"
#include "ZDResources.h"
#include "ZDStoreErrors.h"

#include <QFileInfo>

QString ZDWriteStampRegister::stamp() const
{
    std::lock_guard lock(m_mutex);
    return m_stamp;
}

void ZDWriteStampRegister::setStamp(const QString &stamp)
{
    std::lock_guard lock(m_mutex);
    m_stamp = stamp;
}

bool ZDWriteStampRegister::isOwn(const QString &diskStamp) const
{
    std::lock_guard lock(m_mutex);
    return diskStamp == m_stamp;
}

bool ZDPackageStorage::readPackage(const QString &packagePath, ZDPackageTree *tree,
                                   ZDOutdatedVersionResponder *responder, bool *warned, QString *stamp,
                                   ZDError *error, ZDPackageTree::Contents contents)
{
    QString progress = QStringLiteral("Loading library...");
    const auto logProgress = [&progress] { zdLog(ZDLogLevel::Info, ZDLogDomain::Library, progress); };
    if (packagePath.isEmpty()) {
        progress += QStringLiteral(" Cannot locate local library URL: %1").arg(packagePath);
        logProgress();
        return ZDError::fail(error, ZDStoreErrors::cannotLocateLocalPackage());
    }

    ZDPackageTree result;
    if (QFileInfo::exists(packagePath)) {
        progress += QStringLiteral(" Library found");
        ZDError readError;
        // A writer in another process finishes before the tree is taken in.
        ZDPackageLock lock(packagePath, ZDPackageLock::Mode::Shared);
        if (!ZDPackageTree::read(packagePath, &result, &readError, contents)) {
            progress += QStringLiteral(" Cannot initialize file wrapper: %1").arg(readError.toString());
            logProgress();
            return ZDError::fail(error, ZDStoreErrors::cannotReadPackage(packagePath, readError));
        }
    } else {
        progress += QStringLiteral(" Library not found; will return empty library.");
        result = ZDPackageFormat::emptyPackage();
    }

    QString version;
    if (ZDPackageFormat::decodeVersion(result.fileContents(ZDPackageLayout::versionFile), &version) &&
        ZDDatabaseVersion::isNewerThanCurrent(version) && !*warned) {
        *warned = true;
        const bool goOn =
            responder && responder->continueWithNewerLibrary(version, ZDResources::applicationVersion());
        if (!goOn) {
            logProgress();
            return ZDError::fail(
                error, ZDStoreErrors::createdByNewerVersion(QFileInfo(packagePath).fileName(), version));
        }
    }

    if (stamp)
        *stamp = ZDPackageFormat::decodeWriteStamp(result.fileContents(ZDPackageLayout::identifierFile));
    logProgress();
    zdLog(ZDLogLevel::Info, ZDLogDomain::Library,
          QStringLiteral("Completed loading library with %1 snippets found.")
              .arg(result.fileCount(ZDPackageLayout::snippetsDirectory)));
    *tree = std::move(result);
    return true;
}

bool ZDPackageStorage::writePackage(ZDPackageTree *tree, const QString &packagePath,
                                    ZDWriteStampRegister &stamps, const ZDReconcile &reconcile,
                                    ZDError *error)
{
    if (!tree)
        return ZDError::fail(error, ZDStoreErrors::nothingToSave());
    if (packagePath.isEmpty())
        return ZDError::fail(error, ZDStoreErrors::cannotRetrieveLocalPath());

    ZDPackageLock lock(packagePath);
    if (!lock.isLocked())
        return ZDError::fail(error, ZDStoreErrors::cannotWriteLocalPackage(
                                        packagePath, ZDError(0, QString(), {}, lock.errorString())));

    const QString diskStamp = ZDPackageFormat::readWriteStamp(packagePath);
    if (!stamps.isOwn(diskStamp) && !diskStamp.isEmpty() && reconcile) {
        ZDPackageTree onDisk;
        ZDError reconcileError;
        if (!ZDPackageTree::read(packagePath, &onDisk, &reconcileError, ZDPackageTree::Contents::OnDemand) ||
            !reconcile(*tree, std::move(onDisk), diskStamp, &reconcileError))
            return ZDError::fail(error, ZDStoreErrors::cannotWriteLocalPackage(packagePath, reconcileError));
    }

    ZDPackageFormat::stampCurrentVersion(*tree);
    const QString previousStamp = stamps.stamp();
    const QString stamp = ZDPackageFormat::makeWriteStamp();
    stamps.setStamp(stamp);
    tree->setFile(ZDPackageLayout::identifierFile, ZDPackageFormat::encodeWriteStamp(stamp));
    ZDError writeError;
    if (!tree->write(packagePath, &writeError)) {
        // "identifier" goes last, so the disk still carries the previous stamp.
        stamps.setStamp(previousStamp);
        return ZDError::fail(error, ZDStoreErrors::cannotWriteLocalPackage(packagePath, writeError));
    }
    zdLog(ZDLogLevel::Info, ZDLogDomain::Library,
          QStringLiteral("Successfully write %1 snippets to default local library.")
              .arg(tree->childCount(ZDPackageLayout::snippetsDirectory)));
    return true;
}

bool ZDPackageStorage::validatePackage(const QString &packagePath, bool integrityCheckEnabled, ZDError *error)
{
    if (!integrityCheckEnabled)
        return true;
    const QFileInfo info(packagePath);
    const QString name = info.fileName();
    if (!info.exists() || !info.isReadable())
        return ZDError::fail(
            error,
            ZDStoreErrors::cannotAccessLibraryData(
                packagePath, ZDError(0, QString(), {}, QStringLiteral("No such file or not readable"))));
    if (!info.isDir())
        return ZDError::fail(error, ZDStoreErrors::notALibrary(name));
    ZDPackageTree tree;
    ZDError readError;
    if (!ZDPackageTree::read(packagePath, &tree, &readError))
        return ZDError::fail(error, ZDStoreErrors::cannotAccessLibraryData(packagePath, readError));

    using namespace ZDPackageLayout;
    QString version;
    QVariant dictionary;
    if (!tree.isFile(versionFile) ||
        !ZDPackageFormat::decodeVersion(tree.fileContents(versionFile), &version, &dictionary))
        return ZDError::fail(error, ZDStoreErrors::invalidVersionInformation(name, version, dictionary));
    if (ZDDatabaseVersion::isNewerThanCurrent(version))
        return ZDError::fail(error, ZDStoreErrors::createdByNewerVersion(name, version));
    if (!tree.isDirectory(databaseDirectory))
        return ZDError::fail(error, ZDStoreErrors::invalidDatabase(name));
    if (!tree.exists(foldersFile) || !tree.exists(shortcutsFile))
        return ZDError::fail(error, ZDStoreErrors::invalidFoldersOrShortcuts(name));
    if (!tree.isDirectory(snippetsDirectory))
        return ZDError::fail(error, ZDStoreErrors::invalidSnippetsData(name));
    return true;
}
