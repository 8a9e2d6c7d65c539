#pragma once

#include "ZDCliCommand.h"

/// `show UUID [--json]`: one snippet with its parts.
class ZDShowCommand : public ZDCliCommand
{
public:
    QString name() const override { return QStringLiteral("show"); }
    QString summary() const override { return QStringLiteral("print a snippet"); }
    int run(ZDCliContext &context, const QStringList &arguments) override;
};
