#pragma once

#include <QObject>
#include <QPointer>
#include <QStringList>

#include <memory>

class ZDCoreIndex;
class ZDDataCenter;
class ZDHighlighter;
class ZDMainWindow;
class ZDMulticastDelegateHandler;
class ZDSearchEngine;
class ZDSnippetEditorView;
class ZDUserDefaults;

/// Puts the program together as its parts arrive: the library store with the search engine
/// and the counting index, the highlighter, the snippet editor and the preferences window. The library-changed and
/// initialised notices are posted once the store is installed, so every listener (search
/// indexes, counts, windows) loads from it.
class ZDShellAssembly : public QObject
{
    Q_OBJECT
public:
    ZDShellAssembly(ZDMainWindow &window, ZDUserDefaults &defaults, ZDMulticastDelegateHandler &notifier);
    ~ZDShellAssembly() override;

    void setDataCenter(ZDDataCenter *center);
    void setHighlighter(ZDHighlighter *highlighter);
    /// Arguments of this start or of a later one: "zandrio://snippet/<UUID>" shows that snippet.
    void handleArguments(const QStringList &arguments);
    /// Hands the editor's typing since its last pause to the store (before the store writes).
    void commitEdits();
    /// Drops every window part that uses the store, before the store goes.
    void shutDown();

private:
    void assembleEditor();
    void showPreferences();

    ZDMainWindow &m_window;
    ZDUserDefaults &m_defaults;
    ZDMulticastDelegateHandler &m_notifier;
    ZDDataCenter *m_center = nullptr;
    ZDHighlighter *m_highlighter = nullptr;
    QStringList m_pendingArguments;
    QPointer<QWidget> m_preferences;
    QPointer<ZDSnippetEditorView> m_editor;
    std::unique_ptr<ZDSearchEngine> m_engine;
    std::unique_ptr<ZDCoreIndex> m_counts;
};
