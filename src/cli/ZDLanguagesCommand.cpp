#include "ZDLanguagesCommand.h"

#include "ZDCliArguments.h"
#include "ZDLanguageRegistry.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

int ZDLanguagesCommand::run(ZDCliContext &context, const QStringList &arguments)
{
    const QCommandLineOption guess(QStringLiteral("guess"));
    const QCommandLineOption nameOption(QStringLiteral("name"), {}, QStringLiteral("NAME"));
    const QCommandLineOption extension(QStringLiteral("extension"), {}, QStringLiteral("EXT"));
    const QCommandLineOption uti(QStringLiteral("uti"), {}, QStringLiteral("UTI"));
    ZDCliArguments args(context, name(), {guess, nameOption, extension, uti}, ZDCliArguments::Json);
    int status = 0;
    if (!args.parse(arguments, 0, 0, QStringLiteral("languages takes no arguments"), &status))
        return status;

    const QList<ZDLanguage> languages = context.languages.availableLanguages();
    if (const ZDError error = context.languages.loadError(); !error.isNull())
        return context.fail(error);

    if (args.isSet(guess)) {
        if (!args.isSet(nameOption) && !args.isSet(extension) && !args.isSet(uti))
            return context.usage(QStringLiteral("--guess needs --name, --extension or --uti"));
        const QList<ZDLanguage> guessed = context.languages.languagesFromLanguageName(
            args.value(nameOption), args.value(extension), args.value(uti));
        for (const ZDLanguage &language : guessed)
            context.out << language.identifier() << "\n";
        return 0;
    }

    if (args.json()) {
        QJsonArray array;
        for (const ZDLanguage &language : languages) {
            array.append(QJsonObject{
                {QStringLiteral("identifier"), language.identifier()},
                {QStringLiteral("displayName"), language.displayName()},
                {QStringLiteral("aliases"), QJsonArray::fromStringList(language.aliases())},
                {QStringLiteral("fileExtensions"), QJsonArray::fromStringList(language.fileExtensions())},
                {QStringLiteral("mimeTypes"), QJsonArray::fromStringList(language.mimeTypes())},
                {QStringLiteral("UTIStrings"), QJsonArray::fromStringList(language.UTIStrings())},
            });
        }
        context.out << QString::fromUtf8(QJsonDocument(array).toJson(QJsonDocument::Indented));
        return 0;
    }

    for (const ZDLanguage &language : languages) {
        context.out << language.identifier() << "\t" << language.displayName() << "\t"
                    << language.aliases().join(QLatin1Char(',')) << "\t"
                    << language.fileExtensions().join(QLatin1Char(',')) << "\n";
    }
    return 0;
}
