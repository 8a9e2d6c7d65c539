#pragma once

class ZDUserDefaults;

/// The settings the editor's commands depend on, read from the preferences when a command runs.
struct ZDEditorSettings
{
    int tabSize = 4;
    bool indentWithTabs = false; ///< "Preferences IndentMethod" is "Tabs"
    bool automaticallyIndentOnReturn = true;
    bool automaticallyCloseBrackets = true;
    bool showInvisibles = false;       ///< draw tabs, spaces and line ends
    bool useSoftWrap = true;           ///< wrap long lines at the view's width

    static ZDEditorSettings fromDefaults(const ZDUserDefaults &defaults);
};
