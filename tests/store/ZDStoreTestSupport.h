#pragma once

#include "ZDCategoryNode.h"
#include "ZDDataCenter.h"
#include "ZDLanguageRegistry.h"
#include "ZDLibraryListener.h"
#include "ZDManualWriteTimer.h"
#include "ZDMulticastDelegateHandler.h"
#include "ZDSnippet.h"
#include "ZDTag.h"
#include "ZDTestSupport.h"
#include "ZDUserDefaults.h"

#include <QCoreApplication>
#include <QTemporaryDir>

class ZDLibraryChangeCounter : public ZDLibraryListener
{
public:
    void applicationLibraryDidChange(QObject *) override { ++changes; }
    int changes = 0;
};

// A library in a temporary directory, opened by as many stores as a test wants.
struct ZDTestLibrary
{
    QTemporaryDir dir;
    QString path = dir.filePath(QStringLiteral("main.zandriolibrary"));
    ZDUserDefaults defaults{dir.filePath(QStringLiteral("prefs.ini"))};
    ZDMulticastDelegateHandler notifier;
    ZDManualWriteTimer *timer = nullptr; // of the last store opened
    QList<ZDError> presented;
    int cacheMinimum = -1; // no snippet cache unless a test asks for one
    ZDLanguageRegistry registry{ZDTestSupport::sourceResourcesDirectory() + QStringLiteral("/Languages.json"),
                                &defaults};

    ZDTestLibrary() { ZDLanguageRegistry::install(&registry); }
    ~ZDTestLibrary() { ZDLanguageRegistry::install(nullptr); }

    std::unique_ptr<ZDDataCenter> open(bool watch = false, ZDOutdatedVersionResponder *responder = nullptr)
    {
        ZDDataCenter::Options options;
        options.packagePath = path;
        options.defaults = &defaults;
        options.notifier = &notifier;
        options.outdatedVersionResponder = responder;
        timer = new ZDManualWriteTimer;
        options.writeTimer.reset(timer);
        options.watchForExternalChanges = watch;
        options.watcherSettleDelayMs = 30;
        options.errorPresenter = [this](const ZDError &error) { presented << error; };
        options.recordCacheMinimumSnippets = cacheMinimum;
        return std::make_unique<ZDDataCenter>(std::move(options));
    }

    // Lets queued edits and writes run and their hops to the main thread arrive.
    static void settle(ZDDataCenter &center)
    {
        for (int round = 0; round < 3; ++round) {
            center.waitUntilAllOperationsAreFinished();
            QCoreApplication::processEvents();
        }
    }
};

inline ZDSnippetPtr zdTestSnippet(const QString &title,
                                  const QString &folderUUID = QLatin1String(ZDUncategorizedUUID),
                                  const QString &content = QStringLiteral("print('hi')"))
{
    ZDSnippetPtr snippet = ZDSnippet::create(title, folderUUID);
    snippet->parts().first()->setContent(content);
    return snippet;
}
