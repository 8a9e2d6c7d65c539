#include "ZDCliLibrary.h"

#include "ZDCategoryNode.h"
#include "ZDCliArguments.h"
#include "ZDLanguageRegistry.h"
#include "ZDSnippet.h"
#include "ZDTag.h"
#include "ZDUserDefaults.h"

QString ZDCliLibrary::resolvePath(const ZDCliContext &context, ZDError *error)
{
    if (!context.libraryPath.isEmpty())
        return context.libraryPath;
    const QString designated = context.defaults.designatedLibraryPathString();
    if (!designated.isEmpty())
        return designated;
    return ZDDataCenter::defaultLocalPackagePath(error);
}

ZDCliLibrary::ZDCliLibrary(const ZDCliArguments &arguments, bool repairOnLoad)
    : m_context(arguments.context()), m_responder(arguments.continueAnyway()), m_repairOnLoad(repairOnLoad)
{
}

ZDCliLibrary::~ZDCliLibrary()
{
    if (!m_center)
        return;
    if (ZDDataCenter::defaultCenter() == m_center.get())
        ZDDataCenter::install(nullptr);
    m_center.reset();
    ZDLanguageRegistry::install(m_previousLanguages);
}

bool ZDCliLibrary::open(int *status)
{
    ZDError error;
    const QString path = resolvePath(m_context, &error);
    if (path.isEmpty()) {
        *status = m_context.fail(error);
        return false;
    }
    // Parts look their languages up in the shared table while the package is read.
    m_previousLanguages = ZDLanguageRegistry::shared();
    ZDLanguageRegistry::install(&m_context.languages);

    ZDDataCenter::Options options;
    options.packagePath = path;
    options.defaults = &m_context.defaults;
    options.outdatedVersionResponder = &m_responder;
    options.watchForExternalChanges = false;
    options.repairOnLoad = m_repairOnLoad;
    m_center = std::make_unique<ZDDataCenter>(std::move(options));
    if (!m_center->dataCenterHasValidLibrary()) {
        *status = zdFailLoad(m_context, m_center->loadError());
        return false;
    }
    ZDDataCenter::install(m_center.get());
    return true;
}

bool ZDCliLibrary::save(int *status)
{
    ZDError error;
    if (m_center->save(&error))
        return true;
    *status = m_context.fail(error);
    return false;
}

QString ZDCliLibrary::folderUUIDNamed(const QString &nameOrUUID) const
{
    const QHash<QString, QString> titles = m_center->folderTitles();
    if (titles.contains(nameOrUUID) && nameOrUUID != QLatin1String(ZDAllSnippetsUUID))
        return nameOrUUID;
    // By title: the first folder in the sidebar's order, then the Uncategorized folder.
    QString found;
    for (const ZDCategoryNodePtr &root : m_center->rootFolderNodes()) {
        if (root->title() == nameOrUUID)
            return root->UUID();
        root->traverseSubNodesWithBlock([&](const ZDCategoryNodePtr &node, int) {
            if (found.isEmpty() && node->title() == nameOrUUID)
                found = node->UUID();
        });
        if (!found.isEmpty())
            return found;
    }
    if (titles.value(QLatin1String(ZDUncategorizedUUID)) == nameOrUUID)
        return QLatin1String(ZDUncategorizedUUID);
    return {};
}

int zdFailLoad(const ZDCliContext &context, const ZDError &error)
{
    const QString detail = error.recoverySuggestion().trimmed();
    return context.fail(
        ZDError(error.code(), detail.isEmpty() ? error.description()
                                               : QStringLiteral("%1: %2").arg(error.description(), detail)));
}
