#pragma once

class ZDUserDefaults;

/// The settings the editor's commands depend on, read from the preferences when a command runs.
struct ZDEditorSettings
{
    int tabSize = 4;
    bool indentWithTabs = false; ///< "Preferences IndentMethod" is "Tabs"
    bool automaticallyIndentOnReturn = true;
    bool automaticallyCloseBrackets = true;

    static ZDEditorSettings fromDefaults(const ZDUserDefaults &defaults);
};
