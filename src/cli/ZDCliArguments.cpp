#include "ZDCliArguments.h"

namespace {
const QString jsonName = QStringLiteral("json");
const QString continueAnywayName = QStringLiteral("continue-anyway");
} // namespace

ZDCliArguments::ZDCliArguments(ZDCliContext &context, const QString &commandName,
                               const QList<QCommandLineOption> &options, SharedOptions shared)
    : m_context(context), m_commandName(commandName), m_shared(shared)
{
    m_parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    m_parser.setOptionsAfterPositionalArgumentsMode(QCommandLineParser::ParseAsOptions);
    m_parser.addOptions(options);
    if (shared.testFlag(Json))
        m_parser.addOption(QCommandLineOption(jsonName));
    if (shared.testFlag(ContinueAnyway)) {
        m_parser.addOption(QCommandLineOption(continueAnywayName,
                                              QStringLiteral("open a library written by a newer version")));
    }
}

bool ZDCliArguments::parse(const QStringList &arguments, int *status)
{
    // The parser takes the first argument for the program's name.
    if (!m_parser.parse(QStringList{m_commandName} + arguments)) {
        *status = m_context.usage(m_parser.errorText());
        return false;
    }
    return true;
}

bool ZDCliArguments::parse(const QStringList &arguments, qsizetype minimum, qsizetype maximum,
                           const QString &message, int *status)
{
    if (!parse(arguments, status))
        return false;
    const qsizetype count = m_parser.positionalArguments().size();
    if (count < minimum || count > maximum) {
        *status = m_context.usage(message);
        return false;
    }
    return true;
}

// Asking the parser about an option it was not given warns, so the flags answer first.
bool ZDCliArguments::json() const
{
    return m_shared.testFlag(Json) && m_parser.isSet(jsonName);
}

bool ZDCliArguments::continueAnyway() const
{
    return m_shared.testFlag(ContinueAnyway) && m_parser.isSet(continueAnywayName);
}
