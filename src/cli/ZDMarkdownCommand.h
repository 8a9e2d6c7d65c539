#pragma once

#include "ZDCliCommand.h"

/// `zandrio-cli markdown [--count] [FILE]` prints the HTML of Markdown, or with `--count` its
/// number of top-level blocks, counted precisely (through the interpreter) and fast (md4c).
class ZDMarkdownCommand : public ZDCliCommand
{
public:
    QString name() const override { return QStringLiteral("markdown"); }
    QString summary() const override { return QStringLiteral("print Markdown as HTML, or count its blocks"); }
    int run(ZDCliContext &context, const QStringList &arguments) override;
};
