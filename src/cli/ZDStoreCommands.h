#pragma once

#include "ZDCliCommand.h"

#include <memory>
#include <vector>

// The commands that read and change a library. Every command that changes the library saves
// before it returns. Each takes --continue-anyway to open a library written by a newer version.

/// `create`: makes a new, empty library at the library path and writes it.
class ZDCreateCommand : public ZDCliCommand
{
public:
    QString name() const override { return QStringLiteral("create"); }
    QString summary() const override { return QStringLiteral("create an empty library"); }
    int run(ZDCliContext &context, const QStringList &arguments) override;
};

/// `add [--title T] [--folder NAME|UUID] [--tag NAME]... [--language ID] [--note TEXT] [--json]`:
/// a new snippet with standard input as its content; missing tags are created. Prints its UUID.
class ZDAddCommand : public ZDCliCommand
{
public:
    QString name() const override { return QStringLiteral("add"); }
    QString summary() const override { return QStringLiteral("add a snippet from standard input"); }
    int run(ZDCliContext &context, const QStringList &arguments) override;
};

/// `list [--folder NAME|UUID] [--tag NAME] [--json]`: the snippets in the store's order.
class ZDListCommand : public ZDCliCommand
{
public:
    QString name() const override { return QStringLiteral("list"); }
    QString summary() const override { return QStringLiteral("list snippets"); }
    int run(ZDCliContext &context, const QStringList &arguments) override;
};

/// `show UUID [--json]`: one snippet with its parts.
class ZDShowCommand : public ZDCliCommand
{
public:
    QString name() const override { return QStringLiteral("show"); }
    QString summary() const override { return QStringLiteral("print a snippet"); }
    int run(ZDCliContext &context, const QStringList &arguments) override;
};

/// `rm UUID...`: removes snippets; nothing is removed when any UUID is unknown.
class ZDRemoveCommand : public ZDCliCommand
{
public:
    QString name() const override { return QStringLiteral("rm"); }
    QString summary() const override { return QStringLiteral("remove snippets"); }
    int run(ZDCliContext &context, const QStringList &arguments) override;
};

/// `folder add NAME [--parent NAME|UUID]`: a new folder; prints its UUID.
class ZDFolderCommand : public ZDCliCommand
{
public:
    QString name() const override { return QStringLiteral("folder"); }
    QString summary() const override { return QStringLiteral("add a folder"); }
    int run(ZDCliContext &context, const QStringList &arguments) override;
};

/// `check [--repair]`: validates the package and reports unreadable records and what the repair
/// pass would change (exit status 1 when it would change anything); `--repair` applies and saves.
class ZDCheckCommand : public ZDCliCommand
{
public:
    QString name() const override { return QStringLiteral("check"); }
    QString summary() const override { return QStringLiteral("validate the library, optionally repair it"); }
    int run(ZDCliContext &context, const QStringList &arguments) override;
};

void zdAddStoreCommands(std::vector<std::unique_ptr<ZDCliCommand>> &commands);
