#pragma once

#include "ZDCliCommand.h"

#include <QCommandLineOption>
#include <QCommandLineParser>

#include <limits>

/// The opening every command shares: the command's options, plus --json and --continue-anyway
/// where it takes them, parsed from its own arguments, and the count of its positional arguments
/// checked. Every usage problem is printed as "zandrio-cli: <problem>" and gives the exit status
/// for bad usage, whichever command meets it. Options may follow positional arguments.
class ZDCliArguments
{
public:
    /// Options that mean the same in every command that takes them.
    enum SharedOption
    {
        NoSharedOptions = 0x0,
        /// --json: machine-readable output.
        Json = 0x1,
        /// --continue-anyway: open a library written by a newer version. Every command that opens
        /// a library it did not create takes it (see ZDCliLibrary).
        ContinueAnyway = 0x2,
    };
    Q_DECLARE_FLAGS(SharedOptions, SharedOption)

    /// No upper limit on the positional arguments.
    static constexpr qsizetype unlimited = std::numeric_limits<qsizetype>::max();

    ZDCliArguments(ZDCliContext &context, const QString &commandName,
                   const QList<QCommandLineOption> &options, SharedOptions shared = NoSharedOptions);

    /// Parses `arguments` (those after the command's name), with any number of positional
    /// arguments. False, with the problem printed and `*status` set, on bad usage.
    bool parse(const QStringList &arguments, int *status);
    /// The same, and fewer than `minimum` or more than `maximum` positional arguments is the usage
    /// problem `message`.
    bool parse(const QStringList &arguments, qsizetype minimum, qsizetype maximum, const QString &message,
               int *status);

    ZDCliContext &context() const { return m_context; }
    bool isSet(const QCommandLineOption &option) const { return m_parser.isSet(option); }
    QString value(const QCommandLineOption &option) const { return m_parser.value(option); }
    QStringList values(const QCommandLineOption &option) const { return m_parser.values(option); }
    QStringList positional() const { return m_parser.positionalArguments(); }
    /// False when the command does not take the option.
    bool json() const;
    bool continueAnyway() const;

private:
    ZDCliContext &m_context;
    QString m_commandName;
    SharedOptions m_shared;
    QCommandLineParser m_parser;
};

Q_DECLARE_OPERATORS_FOR_FLAGS(ZDCliArguments::SharedOptions)
