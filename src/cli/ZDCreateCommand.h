#pragma once

#include "ZDCliCommand.h"

/// `create`: makes a new, empty library at the library path and writes it.
class ZDCreateCommand : public ZDCliCommand
{
public:
    QString name() const override { return QStringLiteral("create"); }
    QString summary() const override { return QStringLiteral("create an empty library"); }
    int run(ZDCliContext &context, const QStringList &arguments) override;
};
