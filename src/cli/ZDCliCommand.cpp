#include "ZDCliCommand.h"

#include <QCommandLineParser>

int ZDCliContext::fail(const ZDError &error) const
{
    err << "zandrio-cli: " << error.description();
    if (error.code() != 0)
        err << " (code " << error.code() << ")";
    if (!error.reason().isEmpty())
        err << ": " << error.reason();
    err << Qt::endl;
    return 1;
}

int ZDCliContext::usage(const QString &message) const
{
    err << "zandrio-cli: " << message << Qt::endl;
    return 2;
}

bool ZDCliCommand::parse(QCommandLineParser &parser, ZDCliContext &context, const QString &commandName,
                         const QStringList &arguments, int *status)
{
    parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    parser.setOptionsAfterPositionalArgumentsMode(QCommandLineParser::ParseAsOptions);
    if (!parser.parse(QStringList{commandName} + arguments)) {
        *status = context.usage(parser.errorText());
        return false;
    }
    return true;
}
