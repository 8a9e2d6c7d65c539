#pragma once

#include "ZDCliCommand.h"

/// `folder add NAME [--parent NAME|UUID]`: a new folder; prints its UUID.
class ZDFolderCommand : public ZDCliCommand
{
public:
    QString name() const override { return QStringLiteral("folder"); }
    QString summary() const override { return QStringLiteral("add a folder"); }
    int run(ZDCliContext &context, const QStringList &arguments) override;
};
