#include "ZDMarkdownCommand.h"

#include "ZDCliArguments.h"
#include "ZDCliHighlighter.h"
#include "ZDCliInput.h"
#include "ZDHighlighter.h"

int ZDMarkdownCommand::run(ZDCliContext &context, const QStringList &arguments)
{
    const QCommandLineOption count(QStringLiteral("count"));
    ZDCliArguments args(context, name(), {count});
    int status = 0;
    if (!args.parse(arguments, &status))
        return status;
    QString source;
    if (!ZDCliInput::readFileOrStandardInput(context, args.positional(), &source, &status))
        return status;

    ZDCliHighlighter highlighter;
    if (args.isSet(count)) {
        context.out << "precise: " << highlighter.get().childCount(source) << "\n"
                    << "fast: " << ZDHighlighter::childCountFast(source) << "\n";
        return 0;
    }
    context.out << highlighter.get().parseMarkdown(source);
    return 0;
}
