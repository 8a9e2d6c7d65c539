#pragma once

#include "ZDCliCommand.h"

/// `zandrio-cli search [--title-only] [--exact] [--match-case] [--folder NAME]... [--tag NAME]...
/// [--language ID]... [--json] [KEYWORD]` prints the matching snippets in the search engine's
/// order: "UUID<TAB>title" lines, or with --json the snippet objects with their `relevance`
/// (null when unranked). Options not given take the user's search preferences.
class ZDSearchCommand : public ZDCliCommand
{
public:
    QString name() const override { return QStringLiteral("search"); }
    QString summary() const override { return QStringLiteral("search the library"); }
    int run(ZDCliContext &context, const QStringList &arguments) override;
};
