#include "ZDLibraryGenerator.h"

#include "ZDCategoryNode.h"
#include "ZDLanguageRegistry.h"
#include "ZDPackageFormat.h"
#include "ZDRecordArchive.h"
#include "ZDSnippet.h"
#include "ZDTag.h"

#include <QCryptographicHash>
#include <QFile>
#include <QFileInfo>
#include <QUuid>
#include <QStringList>

namespace {

const QStringList kVerbs{"parse", "load", "render", "fetch", "merge", "split", "encode", "decode", "sort",
                         "filter", "build", "index", "resolve", "compute", "update", "flush", "open", "close"};
const QStringList kNouns{"config", "user", "buffer", "token", "request", "matrix", "path", "record", "cache",
                         "session", "image", "queue", "graph", "node", "header", "payload", "window", "snippet"};
const QStringList kTitleWords{
    "Quick",        "Helper",   "Parser",  "Retry loop", "Grüße",   "Übersicht", "naïve",   "café",
    "日本語のメモ", "設定",     "Привет",  "Καλημέρα",   "😀 emoji", "→ arrow",   "déjà vu", "señal",
    "Async",        "Database", "Regex",   "Template",   "Docker",  "Git hook",  "CSV",     "Logging"};
const QStringList kTagNames{"python", "javascript", "sql", "shell", "snippet", "todo", "work", "personal",
                            "algorithms", "network", "ui", "testing", "devops", "café", "数据", "🔥"};
const QStringList kFolderNames{"Work", "Personal", "Projects", "Archive", "Scripts", "Web", "Backend",
                               "Notes", "Experiments", "Tools", "日本", "Überblick"};
// Languages weighted roughly by how often people keep snippets in them.
const QStringList kLanguages{"PythonLexer", "PythonLexer", "JavascriptLexer", "JavascriptLexer", "BashLexer",
                             "SqlLexer", "CppLexer", "GoLexer", "RustLexer", "JavaLexer", "MarkdownLexer",
                             "TypeScriptLexer", "SwiftLexer", "TextLexer"};

} // namespace

ZDLibraryGenerator::ZDLibraryGenerator(quint64 seed, ZDLanguageRegistry &languages)
    : m_random(seed), m_languages(languages)
{
}

int ZDLibraryGenerator::between(int low, int high)
{
    return std::uniform_int_distribution<int>(low, high)(m_random);
}

QString ZDLibraryGenerator::uuid()
{
    const quint64 high = m_random();
    const quint64 low = m_random();
    const QString hex = QStringLiteral("%1%2").arg(high, 16, 16, QLatin1Char('0')).arg(low, 16, 16, QLatin1Char('0')).toUpper();
    return QStringLiteral("%1-%2-4%3-A%4-%5")
        .arg(hex.mid(0, 8), hex.mid(8, 4), hex.mid(13, 3), hex.mid(17, 3), hex.mid(20, 12));
}

QDateTime ZDLibraryGenerator::date()
{
    // Within the five years from 2019; whole milliseconds, as records keep them.
    static const qint64 start = QDateTime(QDate(2019, 1, 1), QTime(0, 0), Qt::UTC).toMSecsSinceEpoch();
    const qint64 offset = std::uniform_int_distribution<qint64>(0, 5LL * 365 * 24 * 3600 * 1000)(m_random);
    return QDateTime::fromMSecsSinceEpoch(start + offset, Qt::UTC);
}

QString ZDLibraryGenerator::identifierWord()
{
    const QString noun = pick(kNouns);
    return pick(kVerbs) + noun.left(1).toUpper() + noun.mid(1);
}

QString ZDLibraryGenerator::title()
{
    QStringList words;
    for (int i = between(1, 4); i > 0; --i)
        words << (between(0, 2) == 0 ? pick(kTitleWords) : pick(kVerbs) + QLatin1Char(' ') + pick(kNouns));
    return words.join(QLatin1Char(' '));
}

QString ZDLibraryGenerator::note()
{
    if (between(0, 2) == 0)
        return {};
    return QStringLiteral("Used by %1 when the %2 is %3.").arg(identifierWord(), pick(kNouns), pick(kTitleWords));
}

QString ZDLibraryGenerator::code(const QString &language)
{
    const QString fn = identifierWord();
    const QString arg = pick(kNouns);
    // About 1.5 KB of text per snippet, as in a library of real snippets.
    const int lines = between(9, 30);
    QStringList body;
    for (int i = 0; i < lines; ++i)
        body << QStringLiteral("%1 = %2(%3, %4)").arg(pick(kNouns), identifierWord(), arg).arg(between(0, 999));

    if (language == QLatin1String("PythonLexer"))
        return QStringLiteral("def %1(%2):\n    \"\"\"%3\"\"\"\n    %4\n    for item in %2:\n        yield item\n")
            .arg(fn, arg, title(), body.join(QStringLiteral("\n    ")));
    if (language == QLatin1String("JavascriptLexer") || language == QLatin1String("TypeScriptLexer"))
        return QStringLiteral("export async function %1(%2) {\n  // %3\n  const %4;\n  return %2.map((x) => x * 2);\n}\n")
            .arg(fn, arg, title(), body.join(QStringLiteral(";\n  const ")));
    if (language == QLatin1String("BashLexer"))
        return QStringLiteral("#!/bin/sh\nset -eu\n# %1\nfor f in \"$@\"; do\n  %2 \"$f\" | grep -v '^#'\ndone\n")
            .arg(title(), fn);
    if (language == QLatin1String("SqlLexer"))
        return QStringLiteral("SELECT id, %1, created_at\nFROM %2\nWHERE %1 LIKE '%%3%'\nORDER BY created_at DESC\nLIMIT %4;\n")
            .arg(arg, pick(kNouns) + QStringLiteral("s"), pick(kVerbs))
            .arg(between(1, 100));
    if (language == QLatin1String("CppLexer") || language == QLatin1String("JavaLexer") ||
        language == QLatin1String("SwiftLexer") || language == QLatin1String("GoLexer") ||
        language == QLatin1String("RustLexer"))
        return QStringLiteral("// %1\nint %2(const %3 &%4) {\n    auto %5;\n    return %6;\n}\n")
            .arg(title(), fn, pick(kNouns), arg, body.join(QStringLiteral(";\n    auto ")))
            .arg(between(0, 64));
    if (language == QLatin1String("MarkdownLexer"))
        return QStringLiteral("# %1\n\n- %2\n- %3\n\n```\n%4\n```\n").arg(title(), note(), title(), body.join(QLatin1Char('\n')));
    return body.join(QLatin1Char('\n')) + QLatin1Char('\n');
}

ZDLibraryContents ZDLibraryGenerator::generate(int count)
{
    ZDLibraryContents contents;

    // Folders: a few roots, each with children and grandchildren.
    QStringList folderUUIDs{QLatin1String(ZDUncategorizedUUID)};
    const int roots = std::max(3, std::min(12, count / 200 + 3));
    for (int r = 0; r < roots; ++r) {
        const ZDCategoryNodePtr root =
            ZDCategoryNode::folderNodeWithTitle(kFolderNames.at(r % kFolderNames.size()), uuid(),
                                                between(0, 3) == 0 ? pick(kLanguages) : QString());
        folderUUIDs << root->UUID();
        for (int c = between(0, 4); c > 0; --c) {
            const ZDCategoryNodePtr child = ZDCategoryNode::folderNodeWithTitle(title(), uuid());
            root->addChild(child);
            folderUUIDs << child->UUID();
            for (int g = between(0, 2); g > 0; --g) {
                const ZDCategoryNodePtr grandchild = ZDCategoryNode::folderNodeWithTitle(title(), uuid());
                child->addChild(grandchild);
                folderUUIDs << grandchild->UUID();
            }
        }
        contents.rootFolderNodes << root;
    }
    contents.shortcutNodes << ZDCategoryNode::shortcutNodeWithTargetUUID(folderUUIDs.at(1));
    contents.smartGroupNodes << ZDCategoryNode::smartGroupNodeWithTitle(
        QStringLiteral("Python"), uuid(), QStringLiteral("ANY parts.language.identifier == \"PythonLexer\""));

    for (const QString &name : kTagNames)
        contents.tags << std::make_shared<ZDTag>(name, uuid());

    contents.snippets.reserve(count);
    for (int i = 0; i < count; ++i) {
        const QString snippetUUID = uuid();
        const QDateTime created = date();
        QList<ZDSnippetPartPtr> parts;
        // Most snippets have one part; a few have up to four.
        const int roll = between(0, 99);
        const int partCount = roll < 50 ? 1 : roll < 75 ? 2 : roll < 90 ? 3 : 4;
        for (int p = 0; p < partCount; ++p) {
            const QString languageIdentifier = pick(kLanguages);
            ZDLanguage language = m_languages.languageWithIdentifier(languageIdentifier);
            const QDateTime partDate = created.addSecs(between(0, 86400 * 30));
            parts << std::make_shared<ZDSnippetPart>(parts.isEmpty() ? QStringLiteral("Fragment") : identifierWord(),
                                                     uuid(), language, note(), code(languageIdentifier), created,
                                                     partDate, snippetUUID);
        }
        QStringList tagUUIDs;
        for (int t = between(0, 3); t > 0; --t) {
            const QString tagUUID = pick(contents.tags)->UUID();
            if (!tagUUIDs.contains(tagUUID))
                tagUUIDs << tagUUID;
        }
        const bool gist = between(0, 20) == 0;
        contents.snippets << std::make_shared<ZDSnippet>(
            title(), snippetUUID, pick(folderUUIDs), tagUUIDs, gist ? QString::number(m_random(), 16) : QString(),
            gist ? QStringLiteral("octo") : QString(),
            gist ? QStringLiteral("https://gist.github.com/octo/%1").arg(i) : QString(), parts, created,
            created.addSecs(between(0, 86400 * 60)));
    }
    return contents;
}

bool ZDLibraryGenerator::writePackage(const ZDLibraryContents &contents, const QString &packagePath, ZDError *error)
{
    if (QFileInfo::exists(packagePath))
        return ZDError::fail(error, ZDError(0, QStringLiteral("%1 already exists").arg(packagePath)));
    // The records are written as plain files: a generated library needs no crash safety, and a
    // synced write of every one of 100,000 files would take minutes. The stamp goes last.
    ZDPackageTree tree = ZDPackageFormat::emptyPackage();
    if (!tree.write(packagePath, error))
        return false;
    using namespace ZDPackageLayout;
    QList<QPair<QString, QByteArray>> files{
        {foldersFile, ZDLibraryContents::encodeNodes(contents.rootFolderNodes)},
        {shortcutsFile, ZDLibraryContents::encodeNodes(contents.shortcutNodes)},
        {smartGroupsFile, ZDLibraryContents::encodeNodes(contents.smartGroupNodes)},
        {tagsFile, ZDLibraryContents::encodeTags(contents.tags)},
    };
    for (const ZDSnippetPtr &snippet : contents.snippets)
        files.append({snippetFilePath(snippet->UUID()), ZDRecordArchive::archivedSnippet(*snippet)});
    // The stamp is derived from the records, so one seed gives the same bytes every time.
    const QByteArray digest = QCryptographicHash::hash(files.last().second, QCryptographicHash::Md5);
    files.append({identifierFile,
                  ZDPackageFormat::encodeWriteStamp(QUuid::fromRfc4122(digest).toString(QUuid::WithoutBraces).toUpper())});
    for (const auto &[path, bytes] : files) {
        QFile file(packagePath + QLatin1Char('/') + path);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(bytes) != bytes.size())
            return ZDError::fail(error, ZDError(0, QStringLiteral("Cannot write %1: %2").arg(file.fileName(), file.errorString())));
    }
    return true;
}
