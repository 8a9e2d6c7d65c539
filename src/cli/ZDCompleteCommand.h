#pragma once

#include "ZDCliCommand.h"

/// `zandrio-cli complete [--json] TEXT` prints the search field's "in:" proposals for TEXT (the
/// text after "in:", or a query ending in an "in:" word): "KIND<TAB>value<TAB>display" lines.
class ZDCompleteCommand : public ZDCliCommand
{
public:
    QString name() const override { return QStringLiteral("complete"); }
    QString summary() const override
    {
        return QStringLiteral("propose folders, tags and languages for \"in:\"");
    }
    int run(ZDCliContext &context, const QStringList &arguments) override;
};
