#include "ZDShellAssembly.h"

#include "ZDCoreIndex.h"
#include "ZDDataCenter.h"
#include "ZDMainWindow.h"
#include "ZDMulticastDelegateHandler.h"
#include "ZDPreferencesWindow.h"
#include "ZDSnippetEditorView.h"
#include "ZDSearchEngine.h"
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
    if (center && center->dataCenterHasValidLibrary()) {
        // Both listen before the library-changed notice below, which builds them.
        m_engine = std::make_unique<ZDSearchEngine>([center] { return center->snippets(); }, &m_notifier);
        ZDSearchEngine::install(m_engine.get());
        m_counts = std::make_unique<ZDCoreIndex>(ZDCoreIndexSource::fromDataCenter(*center, &m_defaults), &m_notifier,
                                                 &m_defaults);
        ZDCoreIndex::install(m_counts.get());
        m_window.setSearchServices(m_engine.get(), m_counts.get());
    }
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
    if (m_editor || !m_center || !m_highlighter || !m_center->dataCenterHasValidLibrary())
        return;
    m_editor = new ZDSnippetEditorView(m_center, m_highlighter);
    QPointer<ZDSnippetEditorView> editor = m_editor;
    m_window.setEditorWidget(m_editor, [editor](const ZDSnippetPtr &snippet) {
        if (editor)
            editor->setSnippet(snippet);
    });
}

void ZDShellAssembly::commitEdits()
{
    if (m_editor)
        m_editor->commitPendingText();
}

void ZDShellAssembly::showPreferences()
{
    if (!m_preferences) {
        auto *window = new ZDPreferencesWindow(&m_defaults);
        window->setAttribute(Qt::WA_DeleteOnClose);
        m_preferences = window;
    }
    m_preferences->show();
    m_preferences->raise();
    m_preferences->activateWindow();
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
    commitEdits();
    m_window.setEditorWidget(nullptr, {});
    m_window.setSearchServices(nullptr, nullptr);
    m_window.setDataCenter(nullptr);
    m_notifier.removeDelegate(&m_window);
    ZDSearchEngine::install(nullptr);
    ZDCoreIndex::install(nullptr);
    m_engine.reset();
    m_counts.reset();
}
