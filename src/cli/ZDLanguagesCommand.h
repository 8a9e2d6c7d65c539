#pragma once

#include "ZDCliCommand.h"

/// `zandrio-cli languages [--json]` lists every language; with `--guess` and any of `--name`,
/// `--extension`, `--uti` it prints the guessed identifiers, best first.
class ZDLanguagesCommand : public ZDCliCommand
{
public:
    QString name() const override { return QStringLiteral("languages"); }
    QString summary() const override { return QStringLiteral("list the languages, or guess one"); }
    int run(ZDCliContext &context, const QStringList &arguments) override;
};
