#include "ZDPrefsCommand.h"

#include "ZDCliArguments.h"
#include "ZDUserDefaults.h"

int ZDPrefsCommand::run(ZDCliContext &context, const QStringList &arguments)
{
    ZDCliArguments args(context, name(), {});
    int status = 0;
    if (!args.parse(arguments, 0, 0, QStringLiteral("prefs takes no arguments"), &status))
        return status;
    const QMap<QString, QString> snapshot = context.defaults.allPreferences();
    for (auto it = snapshot.cbegin(); it != snapshot.cend(); ++it)
        context.out << it.key() << " = " << it.value() << "\n";
    return 0;
}
