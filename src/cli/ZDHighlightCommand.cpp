#include "ZDHighlightCommand.h"

#include "ZDCliArguments.h"
#include "ZDCliHighlighter.h"
#include "ZDCliInput.h"
#include "ZDHighlighter.h"

#include <QJsonDocument>

int ZDHighlightCommand::run(ZDCliContext &context, const QStringList &arguments)
{
    const QCommandLineOption lexer(QStringLiteral("lexer"), {}, QStringLiteral("ID"));
    ZDCliArguments args(context, name(), {lexer});
    int status = 0;
    // The count of files is checked after the lexer, as the file is read.
    if (!args.parse(arguments, &status))
        return status;
    if (!args.isSet(lexer) || args.value(lexer).isEmpty())
        return context.usage(QStringLiteral("highlight needs --lexer ID"));
    QString code;
    if (!ZDCliInput::readFileOrStandardInput(context, args.positional(), &code, &status))
        return status;

    ZDCliHighlighter highlighter;
    const ZDHighlightRules rules = highlighter.get().highlightCode(code, args.value(lexer));
    context.out << QString::fromUtf8(
                       QJsonDocument(ZDHighlightRuleFormat::toJson(rules)).toJson(QJsonDocument::Compact))
                << "\n";
    return 0;
}
