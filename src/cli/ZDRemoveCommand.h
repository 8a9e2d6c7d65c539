#pragma once

#include "ZDCliCommand.h"

/// `rm UUID...`: removes snippets; nothing is removed when any UUID is unknown.
class ZDRemoveCommand : public ZDCliCommand
{
public:
    QString name() const override { return QStringLiteral("rm"); }
    QString summary() const override { return QStringLiteral("remove snippets"); }
    int run(ZDCliContext &context, const QStringList &arguments) override;
};
