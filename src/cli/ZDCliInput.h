#pragma once

#include "ZDCliCommand.h"

/// Reading the text a command works on.
namespace ZDCliInput {
/// All of the context's standard input, else the process's.
QString readStandardInput(ZDCliContext &context);
/// The file named by the only positional argument, else the process's standard input, as UTF-8.
/// False, with the problem printed and `*status` set, when more than one file is given or the
/// input cannot be read.
bool readFileOrStandardInput(ZDCliContext &context, const QStringList &positional, QString *text,
                             int *status);
} // namespace ZDCliInput
