#pragma once

#include <QWidget>

#include <functional>
#include <vector>

class QTabWidget;
class ZDLanguageRegistry;
class ZDUserDefaults;

/// The preferences window: a top-level window with the panes General (library location,
/// backups, launch at login, tray icon), Editor (theme with colour previews, font, line height,
/// indentation, wrapping, invisibles, automatic indentation and brackets, link detection),
/// Languages (the filterable list of languages with their active check boxes) and Search
/// (scope, fuzzy matching, case, arrangement by relevance).
///
/// Every control writes its preference through the preference's accessor as soon as it
/// changes, and shows changes made elsewhere while the window is open.
class ZDPreferencesWindow : public QWidget
{
    Q_OBJECT
public:
    /// The languages come from the shared language registry.
    explicit ZDPreferencesWindow(ZDUserDefaults *defaults, QWidget *parent = nullptr);
    ~ZDPreferencesWindow() override;

    enum Pane
    {
        GeneralPane,
        EditorPane,
        LanguagesPane,
        SearchPane
    };
    void showPane(Pane pane);
    QTabWidget *panes() const { return m_tabs; }

private:
    QWidget *createGeneralPane();
    QWidget *createEditorPane();
    QWidget *createSearchPane();
    /// Re-reads every control from the preferences.
    void refresh();

    ZDUserDefaults *m_defaults;
    QTabWidget *m_tabs = nullptr;
    std::vector<std::function<void()>> m_refreshers;
    bool m_refreshing = false;
};
