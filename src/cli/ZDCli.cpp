#include "ZDCli.h"

#include "ZDAddCommand.h"
#include "ZDCheckCommand.h"
#include "ZDCliCommand.h"
#include "ZDCompleteCommand.h"
#include "ZDCreateCommand.h"
#include "ZDFolderCommand.h"
#include "ZDHighlightCommand.h"
#include "ZDLanguagesCommand.h"
#include "ZDListCommand.h"
#include "ZDMarkdownCommand.h"
#include "ZDPrefsCommand.h"
#include "ZDRemoveCommand.h"
#include "ZDResources.h"
#include "ZDSearchCommand.h"
#include "ZDShowCommand.h"

ZDCli::ZDCli(ZDUserDefaults &defaults, ZDLanguageRegistry &languages)
    : m_defaults(defaults), m_languages(languages)
{
    m_commands.push_back(std::make_unique<ZDPrefsCommand>());
    m_commands.push_back(std::make_unique<ZDLanguagesCommand>());
    m_commands.push_back(std::make_unique<ZDHighlightCommand>());
    m_commands.push_back(std::make_unique<ZDMarkdownCommand>());
    m_commands.push_back(std::make_unique<ZDCreateCommand>());
    m_commands.push_back(std::make_unique<ZDAddCommand>());
    m_commands.push_back(std::make_unique<ZDListCommand>());
    m_commands.push_back(std::make_unique<ZDShowCommand>());
    m_commands.push_back(std::make_unique<ZDRemoveCommand>());
    m_commands.push_back(std::make_unique<ZDFolderCommand>());
    m_commands.push_back(std::make_unique<ZDCheckCommand>());
    m_commands.push_back(std::make_unique<ZDSearchCommand>());
    m_commands.push_back(std::make_unique<ZDCompleteCommand>());
}

ZDCli::~ZDCli() = default;

void ZDCli::printHelp(QTextStream &out) const
{
    out << "Usage: zandrio-cli [--library PATH] COMMAND [OPTIONS]\n\n"
        << "Global options:\n"
        << "  --library PATH   use this library instead of the application's\n"
        << "  --version        print the version\n"
        << "  --help           print this help\n\n"
        << "Commands:\n";
    for (const auto &command : m_commands)
        out << "  " << command->name().leftJustified(12) << " " << command->summary() << "\n";
    out.flush();
}

int ZDCli::run(const QStringList &arguments, QTextStream &out, QTextStream &err, QTextStream *in)
{
    QStringList rest;
    QString libraryPath;
    for (int index = 0; index < arguments.size(); ++index) {
        const QString &argument = arguments.at(index);
        if (argument == QLatin1String("--library")) {
            if (index + 1 >= arguments.size()) {
                err << "zandrio-cli: --library needs a path" << Qt::endl;
                return 2;
            }
            libraryPath = arguments.at(++index);
        } else if (argument.startsWith(QLatin1String("--library="))) {
            libraryPath = argument.mid(int(qstrlen("--library=")));
        } else {
            rest << argument;
        }
    }

    if (rest.isEmpty() || rest.first() == QLatin1String("--help") || rest.first() == QLatin1String("-h") ||
        rest.first() == QLatin1String("help")) {
        printHelp(out);
        return rest.isEmpty() ? 2 : 0;
    }
    if (rest.first() == QLatin1String("--version")) {
        out << "zandrio-cli " << ZDResources::applicationVersion() << Qt::endl;
        return 0;
    }

    const QString name = rest.takeFirst();
    for (const auto &command : m_commands) {
        if (command->name() == name) {
            ZDCliContext context{out, err, m_defaults, m_languages, libraryPath, in};
            const int status = command->run(context, rest);
            out.flush();
            err.flush();
            return status;
        }
    }
    err << "zandrio-cli: unknown command \"" << name << "\"; see zandrio-cli --help" << Qt::endl;
    return 2;
}
