#pragma once

#include "ZDCliCommand.h"

/// `add [--title T] [--folder NAME|UUID] [--tag NAME]... [--language ID] [--note TEXT] [--json]`:
/// a new snippet with standard input as its content; missing tags are created. Prints its UUID.
class ZDAddCommand : public ZDCliCommand
{
public:
    QString name() const override { return QStringLiteral("add"); }
    QString summary() const override { return QStringLiteral("add a snippet from standard input"); }
    int run(ZDCliContext &context, const QStringList &arguments) override;
};
