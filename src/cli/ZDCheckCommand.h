#pragma once

#include "ZDCliCommand.h"

/// `check [--repair]`: validates the package and reports unreadable records and what the repair
/// pass would change (exit status 1 when it would change anything); `--repair` applies and saves.
class ZDCheckCommand : public ZDCliCommand
{
public:
    QString name() const override { return QStringLiteral("check"); }
    QString summary() const override { return QStringLiteral("validate the library, optionally repair it"); }
    int run(ZDCliContext &context, const QStringList &arguments) override;
};
