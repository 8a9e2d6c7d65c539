#include "ZDDataCenter.h"
#include "ZDDataCenterPrivate.h"

#include "ZDAnalytics.h"
#include "ZDLibraryContents.h"
#include "ZDLogger.h"
#include "ZDMulticastDelegateHandler.h"
#include "ZDPackageFormat.h"
#include "ZDPackageStorage.h"
#include "ZDSnippet.h"
#include "ZDStoreErrors.h"
#include "ZDTag.h"
#include "ZDUserDefaults.h"
#include "ZDWriteScheduler.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>
#include <QTimer>

#include <algorithm>
#include <atomic>

namespace {
std::atomic<ZDDataCenter *> s_defaultCenter{nullptr};
} // namespace

ZDDataCenter::ZDDataCenter(Options options, QObject *parent) : QObject(parent), d(std::make_unique<Private>())
{
    d->options = std::move(options);
    d->defaults = d->options.defaults ? d->options.defaults : ZDUserDefaults::standardUserDefaults();
    d->notifier = d->options.notifier ? d->options.notifier : &ZDMulticastDelegateHandler::globalHandler();

    ZDLibraryPackage::Options packageOptions;
    packageOptions.packagePath = d->options.packagePath;
    packageOptions.outdatedVersionResponder = d->options.outdatedVersionResponder;
    packageOptions.writeTimer = std::move(d->options.writeTimer);
    packageOptions.recordCacheMinimumSnippets = d->options.recordCacheMinimumSnippets;
    // A child of the store, so that it goes with the store when the store changes threads.
    d->package = std::make_unique<ZDLibraryPackage>(std::move(packageOptions), this);
    connect(d->package.get(), &ZDLibraryPackage::writeFinished, this,
            [this](bool written, const ZDError &error, bool tookInOtherWrites) {
                if (!written)
                    presentError(error);
                if (tookInOtherWrites)
                    reloadFromTree();
                Q_EMIT libraryWritten(written);
            });

    ZDLibraryContents contents;
    ZDError readError;
    if (!d->package->load(&contents, &readError)) {
        d->loadError = ZDStoreErrors::libraryLoadFailed(readError);
        zdLog(ZDLogLevel::Error, ZDLogDomain::Library,
              QStringLiteral("An error occurred when initializing data center: %1").arg(d->loadError.toString()));
        zdReportEvent(QStringLiteral("LibraryLoadErr"), {{QStringLiteral("Error"), d->loadError.toString()}});
        if (d->options.errorPresenter) {
            QTimer::singleShot(1000, this, [this] { d->options.errorPresenter(d->loadError); });
        }
    } else {
        takeContents(std::move(contents));
        if (d->options.repairOnLoad)
            repairInternalInconsistencyIfNeeded();
    }

    if (d->options.watchForExternalChanges) {
        d->package->watchForExternalChanges(d->options.watcherSettleDelayMs);
        connect(d->package.get(), &ZDLibraryPackage::changedBySomeoneElse, this,
                [this] { updateDataWithLatestPackageWrapper(); });
    }
}

ZDDataCenter::~ZDDataCenter()
{
    d->package.reset(); // runs what is queued, writes included
    if (s_defaultCenter.load() == this)
        install(nullptr);
}

// Store access.

ZDDataCenter *ZDDataCenter::defaultCenter()
{
    return s_defaultCenter.load();
}

bool ZDDataCenter::defaultCenterInitialized()
{
    return s_defaultCenter.load() != nullptr;
}

void ZDDataCenter::install(ZDDataCenter *center)
{
    s_defaultCenter.store(center);
    ZDRecordDirectory::install(center);
}

bool ZDDataCenter::hasValidLibrary()
{
    ZDDataCenter *center = defaultCenter();
    return center && center->dataCenterHasValidLibrary();
}

bool ZDDataCenter::dataCenterHasValidLibrary() const
{
    return d->package->hasTree();
}

ZDError ZDDataCenter::loadError() const
{
    return d->loadError;
}

QString ZDDataCenter::defaultLocalPackagePath(ZDError *error)
{
    const QString directory = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
    if (directory.isEmpty()) {
        ZDError::fail(error, ZDError(118, QStringLiteral("Cannot access application support directory path."), {},
                                     QStringLiteral("No writable application data location.")));
        return {};
    }
    if (!QDir().mkpath(directory)) {
        ZDError::fail(error, ZDError(106, QStringLiteral("Cannot access application support directory."),
                                     QStringLiteral("Reboot your system and try again."),
                                     QStringLiteral("createDirectoryAtPath failed"),
                                     {{QStringLiteral("Path"), directory}}));
        return {};
    }
    return directory + QLatin1Char('/') + ZDPackageLayout::defaultFilePackageName;
}

QString ZDDataCenter::packagePath() const
{
    return d->options.packagePath;
}

QString ZDDataCenter::packageFilename() const
{
    return QFileInfo(d->options.packagePath).fileName();
}

bool ZDDataCenter::validateFilePackageAtPath(const QString &packagePath, ZDUserDefaults &defaults, ZDError *error)
{
    return ZDPackageStorage::validatePackage(packagePath, defaults.enableLibraryIntegrityCheck(), error);
}

// Reading.

ZDSnippetList ZDDataCenter::snippets() const
{
    return d->snippets;
}

ZDSnippetPtr ZDDataCenter::snippetWithUUID(const QString &UUID) const
{
    return d->snippetsByUUID.value(UUID);
}

ZDTagList ZDDataCenter::tags() const
{
    std::lock_guard lock(d->directoryMutex);
    return d->tags;
}

QStringList ZDDataCenter::tagNames() const
{
    QStringList names;
    for (const ZDTagPtr &tag : tags())
        names << tag->title();
    return names;
}

QList<ZDCategoryNodePtr> ZDDataCenter::tagNodes() const
{
    QList<ZDCategoryNodePtr> nodes;
    for (const ZDTagPtr &tag : tags())
        nodes << ZDCategoryNode::tagNodeWithTitle(tag->title(), tag->UUID());
    return nodes;
}

QList<ZDCategoryNodePtr> ZDDataCenter::rootFolderNodes() const
{
    return d->rootFolderNodes;
}

QList<ZDCategoryNodePtr> ZDDataCenter::shortcutNodes() const
{
    return d->shortcutNodes;
}

QList<ZDCategoryNodePtr> ZDDataCenter::smartGroupNodes() const
{
    std::lock_guard lock(d->directoryMutex);
    return d->smartGroupNodes;
}

QHash<QString, QString> ZDDataCenter::folderTitles() const
{
    std::lock_guard lock(d->directoryMutex);
    return d->folderTitles;
}

QHash<QString, QString> ZDDataCenter::folderDefaultLanguageIdentifiers() const
{
    std::lock_guard lock(d->directoryMutex);
    return d->folderDefaultLanguageIdentifiers;
}

ZDCategoryNodePtr ZDDataCenter::folderNodeWithUUID(const QString &UUID) const
{
    ZDCategoryNodePtr found;
    for (const ZDCategoryNodePtr &root : d->rootFolderNodes) {
        if (root->UUID() == UUID)
            return root;
        root->traverseSubNodesWithBlock([&](const ZDCategoryNodePtr &node, int) {
            if (!found && node->UUID() == UUID)
                found = node;
        });
        if (found)
            return found;
    }
    return nullptr;
}

QString ZDDataCenter::defaultLanguageIdentifierForFolderWithUUID(const QString &UUID) const
{
    std::lock_guard lock(d->directoryMutex);
    return d->folderDefaultLanguageIdentifiers.value(UUID);
}

ZDSnippetList ZDDataCenter::recentModifiedSnippetsOfLimit(int limit) const
{
    QList<QPair<QDateTime, ZDSnippetPtr>> dated;
    dated.reserve(d->snippets.size());
    for (const ZDSnippetPtr &snippet : d->snippets)
        dated.append({snippet->canonicalDateModified(), snippet});
    std::stable_sort(dated.begin(), dated.end(), [](const auto &a, const auto &b) { return a.first > b.first; });
    ZDSnippetList result;
    for (const auto &entry : dated) {
        if (limit > 0 && result.size() >= limit)
            break;
        result << entry.second;
    }
    return result;
}

QStringList ZDDataCenter::deletedUUIDs() const
{
    return d->deletedUUIDs;
}

// The records' directory.

ZDTagList ZDDataCenter::allTags() const
{
    return tags();
}

QString ZDDataCenter::titleForShortcutNodeWithUUID(const QString &UUID, const QString &requester) const
{
    Q_UNUSED(requester)
    if (UUID.isNull())
        return QStringLiteral("(null)");
    std::lock_guard lock(d->directoryMutex);
    const auto title = d->folderTitles.constFind(UUID);
    if (title != d->folderTitles.cend())
        return *title;
    for (const ZDCategoryNodePtr &group : d->smartGroupNodes) {
        if (group->UUID() == UUID)
            return group->title();
    }
    return {};
}

QString ZDDataCenter::defaultLanguageIdentifierForFolderUUID(const QString &UUID) const
{
    return defaultLanguageIdentifierForFolderWithUUID(UUID);
}

ZDWriteScheduler &ZDDataCenter::writeScheduler()
{
    return d->package->writeScheduler();
}
