#pragma once

#include <QStringList>
#include <QTextStream>

#include <memory>
#include <vector>

class ZDCliCommand;
class ZDLanguageRegistry;
class ZDUserDefaults;

/// The zandrio-cli front end: global options (--version, --help, --library PATH) and the
/// dispatch to one command. Runs in-process with injectable streams and services.
class ZDCli
{
public:
    ZDCli(ZDUserDefaults &defaults, ZDLanguageRegistry &languages);
    ~ZDCli();

    /// `arguments` exclude the program name. Returns the exit status. `in` replaces standard
    /// input for commands that read it.
    int run(const QStringList &arguments, QTextStream &out, QTextStream &err, QTextStream *in = nullptr);

private:
    void printHelp(QTextStream &out) const;

    ZDUserDefaults &m_defaults;
    ZDLanguageRegistry &m_languages;
    std::vector<std::unique_ptr<ZDCliCommand>> m_commands;
};
