#include "ZDShellAssembly.h"

#include "ZDDataCenter.h"
#include "ZDWriteTimer.h"
#include "ZDMainWindow.h"
#include "ZDMulticastDelegateHandler.h"
#include "ZDUserDefaults.h"

#include <QUrl>

ZDShellAssembly::ZDShellAssembly(ZDMainWindow &window, ZDUserDefaults &defaults, ZDMulticastDelegateHandler &notifier)
    : m_window(window), m_defaults(defaults), m_notifier(notifier)
{
    connect(&window, &ZDMainWindow::preferencesRequested, this, &ZDShellAssembly::showPreferences);
}

ZDShellAssembly::~ZDShellAssembly() = default;

void ZDShellAssembly::setDataCenter(ZDDataCenter *center)
{
    m_center = center;
    ZDDataCenter::install(center);
    m_window.setDataCenter(center);
    m_notifier.noteApplicationLibraryChanged(center);
    m_notifier.noteApplicationInitialized(center);
    assembleEditor();
    const QStringList pending = std::exchange(m_pendingArguments, {});
    handleArguments(pending);
}

void ZDShellAssembly::setHighlighter(ZDHighlighter *highlighter)
{
    m_highlighter = highlighter;
    assembleEditor();
}

void ZDShellAssembly::assembleEditor()
{
}

void ZDShellAssembly::showPreferences()
{
}

void ZDShellAssembly::handleArguments(const QStringList &arguments)
{
    if (!m_center) {
        m_pendingArguments << arguments;
        return;
    }
    for (const QString &argument : arguments) {
        const QUrl url(argument);
        if (url.scheme() == QLatin1String("zandrio") && url.host() == QLatin1String("snippet"))
            m_window.revealSnippet(url.path().mid(1));
    }
}

void ZDShellAssembly::shutDown()
{
    delete m_preferences;
    m_window.setDataCenter(nullptr);
    m_notifier.removeDelegate(&m_window);
}
