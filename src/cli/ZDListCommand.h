#pragma once

#include "ZDCliCommand.h"

/// `list [--folder NAME|UUID] [--tag NAME] [--json]`: the snippets in the store's order.
class ZDListCommand : public ZDCliCommand
{
public:
    QString name() const override { return QStringLiteral("list"); }
    QString summary() const override { return QStringLiteral("list snippets"); }
    int run(ZDCliContext &context, const QStringList &arguments) override;
};
