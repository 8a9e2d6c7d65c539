#pragma once

#include "ZDCliCommand.h"

/// `zandrio-cli prefs`: the diagnostic snapshot of the settings as "key = value" lines, by key.
class ZDPrefsCommand : public ZDCliCommand
{
public:
    QString name() const override { return QStringLiteral("prefs"); }
    QString summary() const override { return QStringLiteral("print the settings"); }
    int run(ZDCliContext &context, const QStringList &arguments) override;
};
