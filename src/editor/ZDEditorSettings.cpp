#include "ZDEditorSettings.h"

#include "ZDUserDefaults.h"

ZDEditorSettings ZDEditorSettings::fromDefaults(const ZDUserDefaults &defaults)
{
    ZDEditorSettings settings;
    settings.tabSize = defaults.tabSize() > 0 ? defaults.tabSize() : 4;
    settings.indentWithTabs = defaults.indentMethod() == QLatin1String("Tabs");
    settings.automaticallyIndentOnReturn = defaults.automaticallyIndentOnReturn();
    settings.automaticallyCloseBrackets = defaults.automaticallyCloseBrackets();
    settings.showInvisibles = defaults.showInvisibles();
    settings.useSoftWrap = defaults.useSoftWrap();
    return settings;
}
