#include "ZDCliCommand.h"

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
