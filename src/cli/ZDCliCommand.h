#pragma once

#include "ZDError.h"

#include <QStringList>
#include <QTextStream>

class ZDLanguageRegistry;
class ZDUserDefaults;

/// What a command runs with: its output streams and the program's services. Tests build one
/// over string streams and services of their own.
struct ZDCliContext
{
    QTextStream &out;
    QTextStream &err;
    ZDUserDefaults &defaults;
    ZDLanguageRegistry &languages;
    /// The library given with --library, or empty for the library the application uses.
    QString libraryPath;
    /// Standard input for commands that read it; null means the process's standard input.
    QTextStream *in = nullptr;

    /// Prints "zandrio-cli: <description> (code N)" on the error stream; returns the exit status.
    int fail(const ZDError &error) const;
    /// Prints a usage problem; returns the exit status for bad usage.
    int usage(const QString &message) const;
};

/// One command of zandrio-cli ("prefs", "languages"...).
class ZDCliCommand
{
public:
    virtual ~ZDCliCommand() = default;
    virtual QString name() const = 0;
    virtual QString summary() const = 0;
    /// `arguments` are the command's own, after its name; ZDCliArguments parses them.
    virtual int run(ZDCliContext &context, const QStringList &arguments) = 0;
};
