#include "ZDSearchCommand.h"

#include "ZDCliArguments.h"
#include "ZDCliLibrary.h"
#include "ZDDataCenter.h"
#include "ZDLanguageRegistry.h"
#include "ZDSearchEngine.h"
#include "ZDSnippet.h"
#include "ZDSnippetJson.h"
#include "ZDTag.h"
#include "ZDUserDefaults.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace {

QString folderUUIDNamed(const ZDDataCenter &center, const QString &name)
{
    const QHash<QString, QString> titles = center.folderTitles();
    if (titles.contains(name))
        return name;
    for (auto it = titles.cbegin(); it != titles.cend(); ++it) {
        if (it.value() == name)
            return it.key();
    }
    for (auto it = titles.cbegin(); it != titles.cend(); ++it) {
        if (ZDTag::isTagNameEquivalentToName(it.value(), name))
            return it.key();
    }
    return {};
}

QString tagUUIDNamed(const ZDDataCenter &center, const QString &name)
{
    for (const ZDTagPtr &tag : center.tags()) {
        if (tag->UUID() == name || tag->title() == name)
            return tag->UUID();
    }
    for (const ZDTagPtr &tag : center.tags()) {
        if (ZDTag::isTagNameEquivalentToName(tag->title(), name))
            return tag->UUID();
    }
    return {};
}

} // namespace

int ZDSearchCommand::run(ZDCliContext &context, const QStringList &arguments)
{
    const QCommandLineOption titleOnly(QStringLiteral("title-only"));
    const QCommandLineOption exact(QStringLiteral("exact"));
    const QCommandLineOption matchCase(QStringLiteral("match-case"));
    const QCommandLineOption folder(QStringLiteral("folder"), {}, QStringLiteral("NAME"));
    const QCommandLineOption tag(QStringLiteral("tag"), {}, QStringLiteral("NAME"));
    const QCommandLineOption language(QStringLiteral("language"), {}, QStringLiteral("ID"));
    ZDCliArguments args(context, name(), {titleOnly, exact, matchCase, folder, tag, language},
                        ZDCliArguments::Json | ZDCliArguments::ContinueAnyway);
    int status = 0;
    if (!args.parse(arguments, 0, 1, QStringLiteral("search takes one keyword; quote a keyword with spaces"),
                    &status))
        return status;
    const QString keyword = args.positional().value(0);

    // Searching only reads: nothing is repaired or written.
    ZDCliLibrary library(args, /*repairOnLoad=*/false);
    if (!library.open(&status))
        return status;
    const ZDDataCenter &center = library.center();

    QList<ZDSearchConstraint> constraints;
    for (const QString &value : args.values(folder)) {
        const QString UUID = folderUUIDNamed(center, value);
        if (UUID.isEmpty())
            return context.usage(QStringLiteral("no folder named \"%1\"").arg(value));
        constraints.append(ZDSearchConstraint(ZDSearchConstraint::folderKind, value, UUID, 0));
    }
    for (const QString &value : args.values(tag)) {
        const QString UUID = tagUUIDNamed(center, value);
        if (UUID.isEmpty())
            return context.usage(QStringLiteral("no tag named \"%1\"").arg(value));
        constraints.append(ZDSearchConstraint(ZDSearchConstraint::tagKind, value, UUID, 0));
    }
    for (const QString &value : args.values(language)) {
        if (!context.languages.languageWithIdentifier(value).isValid())
            return context.usage(QStringLiteral("no language \"%1\"; see zandrio-cli languages").arg(value));
        constraints.append(ZDSearchConstraint(ZDSearchConstraint::languageKind, value, value, 0));
    }

    const bool fullText = !(args.isSet(titleOnly) || context.defaults.searchScopeTitleOnly());
    const bool fuzzy = !args.isSet(exact) && context.defaults.searchUsesFuzzy();
    const bool matchesCase = args.isSet(matchCase) || !context.defaults.searchIgnoresCase();

    ZDSearchEngine engine([&center] { return center.snippets(); });
    if (!keyword.isEmpty()) {
        engine.rebuildIndex();
        engine.waitUntilIndexIsIdle();
    }
    ZDRankCollection ranks;
    const ZDSnippetList result =
        engine.snippetsWithKeyword(keyword, constraints, fullText, fuzzy, matchesCase, &ranks);

    if (args.json()) {
        const QHash<QString, QString> folderTitles = center.folderTitles();
        const ZDTagList tags = center.tags();
        QJsonArray array;
        for (const ZDSnippetPtr &snippet : result) {
            QJsonObject object = ZDSnippetJson::object(*snippet, folderTitles, tags);
            const double relevance = ranks.relevanceForIdentifier(snippet->UUID());
            object.insert(QStringLiteral("relevance"),
                          relevance == ZDRankCollection::unranked ? QJsonValue() : QJsonValue(relevance));
            array.append(object);
        }
        context.out << QString::fromUtf8(QJsonDocument(array).toJson(QJsonDocument::Indented));
        return 0;
    }
    for (const ZDSnippetPtr &snippet : result)
        context.out << snippet->UUID() << "\t" << snippet->title() << "\n";
    return 0;
}
