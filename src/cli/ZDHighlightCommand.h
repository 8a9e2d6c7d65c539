#pragma once

#include "ZDCliCommand.h"

/// `zandrio-cli highlight --lexer ID [FILE]` prints the highlight rules of the file (or of
/// standard input) as a JSON array of {"begin", "length", "class"}, as the bridge returns them.
class ZDHighlightCommand : public ZDCliCommand
{
public:
    QString name() const override { return QStringLiteral("highlight"); }
    QString summary() const override { return QStringLiteral("print the highlight rules of code as JSON"); }
    int run(ZDCliContext &context, const QStringList &arguments) override;
};
