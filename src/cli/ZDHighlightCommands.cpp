#include "ZDHighlightCommands.h"

#include "ZDHighlighter.h"

#include <QCommandLineParser>
#include <QFile>
#include <QJsonDocument>

#include <cstdio>
#include <memory>

namespace {
// The input text: the file named by the only positional argument, else standard input.
bool readInput(ZDCliContext &context, const QStringList &positional, QString *text, int *status)
{
    if (positional.size() > 1) {
        *status = context.usage(QStringLiteral("give at most one file"));
        return false;
    }
    QFile file;
    const bool fromStdin = positional.isEmpty();
    const bool opened = fromStdin ? file.open(stdin, QIODevice::ReadOnly)
                                  : (file.setFileName(positional.first()), file.open(QIODevice::ReadOnly));
    if (!opened) {
        const QString path = fromStdin ? QStringLiteral("-") : positional.first();
        *status = context.fail(ZDError(0, QStringLiteral("Cannot read %1").arg(path), {}, file.errorString(),
                                       {{QStringLiteral("Path"), path}}));
        return false;
    }
    *text = QString::fromUtf8(file.readAll());
    return true;
}

// The program's highlighter, or one for the duration of the command.
class HighlighterScope
{
public:
    HighlighterScope()
    {
        if (!ZDHighlighter::sharedHighlighter())
            m_own = std::make_unique<ZDHighlighter>();
    }
    ZDHighlighter &get() { return m_own ? *m_own : *ZDHighlighter::sharedHighlighter(); }

private:
    std::unique_ptr<ZDHighlighter> m_own;
};
} // namespace

int ZDHighlightCommand::run(ZDCliContext &context, const QStringList &arguments)
{
    QCommandLineParser parser;
    const QCommandLineOption lexer(QStringLiteral("lexer"), {}, QStringLiteral("ID"));
    parser.addOption(lexer);
    parser.addPositionalArgument(QStringLiteral("FILE"), {});
    int status = 0;
    if (!parse(parser, context, name(), arguments, &status))
        return status;
    if (!parser.isSet(lexer) || parser.value(lexer).isEmpty())
        return context.usage(QStringLiteral("highlight needs --lexer ID"));
    QString code;
    if (!readInput(context, parser.positionalArguments(), &code, &status))
        return status;

    HighlighterScope highlighter;
    const ZDHighlightRules rules = highlighter.get().highlightCode(code, parser.value(lexer));
    context.out << QString::fromUtf8(
                       QJsonDocument(ZDHighlightRuleFormat::toJson(rules)).toJson(QJsonDocument::Compact))
                << "\n";
    return 0;
}

int ZDMarkdownCommand::run(ZDCliContext &context, const QStringList &arguments)
{
    QCommandLineParser parser;
    const QCommandLineOption count(QStringLiteral("count"));
    parser.addOption(count);
    parser.addPositionalArgument(QStringLiteral("FILE"), {});
    int status = 0;
    if (!parse(parser, context, name(), arguments, &status))
        return status;
    QString source;
    if (!readInput(context, parser.positionalArguments(), &source, &status))
        return status;

    HighlighterScope highlighter;
    if (parser.isSet(count)) {
        context.out << "precise: " << highlighter.get().childCount(source) << "\n"
                    << "fast: " << ZDHighlighter::childCountFast(source) << "\n";
        return 0;
    }
    context.out << highlighter.get().parseMarkdown(source);
    return 0;
}
