#include "ZDPrefsCommand.h"

#include "ZDUserDefaults.h"

#include <QCommandLineParser>

int ZDPrefsCommand::run(ZDCliContext &context, const QStringList &arguments)
{
    QCommandLineParser parser;
    int status = 0;
    if (!parse(parser, context, name(), arguments, &status))
        return status;
    if (!parser.positionalArguments().isEmpty())
        return context.usage(QStringLiteral("prefs takes no arguments"));
    const QMap<QString, QString> snapshot = context.defaults.allPreferences();
    for (auto it = snapshot.cbegin(); it != snapshot.cend(); ++it)
        context.out << it.key() << " = " << it.value() << "\n";
    return 0;
}
