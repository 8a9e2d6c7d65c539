#include "ZDCompleteCommand.h"

#include "ZDCliArguments.h"
#include "ZDCliLibrary.h"
#include "ZDCoreIndex.h"
#include "ZDSearchTokenSyntax.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

int ZDCompleteCommand::run(ZDCliContext &context, const QStringList &arguments)
{
    ZDCliArguments args(context, name(), {}, ZDCliArguments::Json | ZDCliArguments::ContinueAnyway);
    int status = 0;
    if (!args.parse(arguments, 1, 1, QStringLiteral("complete takes one text"), &status))
        return status;
    const QString text = args.positional().first();
    QString keyword = ZDSearchTokenSyntax::completionKeyword(text, text.size());
    if (keyword.isNull())
        keyword = text;

    ZDCliLibrary library(args, /*repairOnLoad=*/false);
    if (!library.open(&status))
        return status;
    ZDCoreIndex index(ZDCoreIndexSource::fromDataCenter(library.center(), &context.defaults));
    bool counted = false;
    QObject::connect(&index, &ZDCoreIndex::indexDidChange, [&counted] { counted = true; });
    index.rebuildAllIndex();
    while (!counted) {
        index.waitUntilIdle();
        QCoreApplication::processEvents();
    }

    const QList<ZDSearchProposalSection> sections =
        zdSearchProposals(keyword, {}, index.folders(), index.tags(), index.languages());
    if (args.json()) {
        QJsonObject object;
        for (const ZDSearchProposalSection &section : sections) {
            QJsonArray proposals;
            for (const ZDSearchConstraint &constraint : section.proposals) {
                proposals.append(
                    QJsonObject{{QStringLiteral("kind"), constraint.constraintName()},
                                {QStringLiteral("displayValue"), constraint.constraintDisplayValue()},
                                {QStringLiteral("value"), constraint.constraintUnderlyingValue()},
                                {QStringLiteral("count"), constraint.constriantTargetCount()}});
            }
            object.insert(section.title, proposals);
        }
        context.out << QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Indented));
        return 0;
    }
    for (const ZDSearchProposalSection &section : sections) {
        for (const ZDSearchConstraint &constraint : section.proposals) {
            context.out << constraint.constraintName() << "\t" << constraint.constraintUnderlyingValue()
                        << "\t" << constraint.displayString() << "\n";
        }
    }
    return 0;
}
