#include "ZDSearchBenchLibrary.h"

#include "ZDSnippet.h"
#include "ZDSnippetPart.h"

#include <QRandomGenerator>

namespace {

const QStringList kSyllables = {"get", "set", "user", "name", "list", "item", "data", "value", "count", "index",
                                "parse", "load", "save", "file", "path", "node", "tree", "buffer", "cache", "query",
                                "result", "error", "handle", "open", "close", "read", "write", "config", "token",
                                "stream", "socket", "client", "server", "request", "response", "map", "key"};
const QStringList kTitleWords = {"Parse", "JSON", "config", "Résumé", "upload", "Straße", "helper", "retry",
                                 "naïve", "sort", "cache", "Größe", "download", "日本語", "regex", "date",
                                 "façade", "queue", "thread", "pool", "CSV", "export", "Ångström", "diff"};
const QStringList kRare = {"quetzal", "zephyrine", "obsidianlog", "marmalade", "kumquat", "fjordwise",
                           "xylograph", "gazpacho"};

QString identifier(QRandomGenerator &random)
{
    QString name = kSyllables[random.bounded(int(kSyllables.size()))];
    const int more = random.bounded(3);
    for (int i = 0; i < more; ++i) {
        QString next = kSyllables[random.bounded(int(kSyllables.size()))];
        next[0] = next[0].toUpper();
        name += next;
    }
    if (random.bounded(4) == 0)
        name += QString::number(random.bounded(100));
    return name;
}

QString codeLine(QRandomGenerator &random, int language)
{
    const QString a = identifier(random), b = identifier(random), c = identifier(random);
    switch (language) {
    case 0: // Python
        switch (random.bounded(4)) {
        case 0: return QStringLiteral("def %1(%2, %3=None):").arg(a, b, c);
        case 1: return QStringLiteral("    %1 = %2.%3(%4)").arg(a, b, c, QString::number(random.bounded(64)));
        case 2: return QStringLiteral("    if not %1:\n        return %2").arg(a, b);
        default: return QStringLiteral("    for %1 in %2: print(%1)").arg(a, b);
        }
    case 1: // C++
        switch (random.bounded(4)) {
        case 0: return QStringLiteral("int %1(const std::string &%2) {").arg(a, b);
        case 1: return QStringLiteral("    auto %1 = %2->%3();").arg(a, b, c);
        case 2: return QStringLiteral("    if (%1 == nullptr) return %2;").arg(a, b);
        default: return QStringLiteral("    for (auto &%1 : %2) { %3(%1); }").arg(a, b, c);
        }
    default: // JavaScript
        switch (random.bounded(4)) {
        case 0: return QStringLiteral("function %1(%2) {").arg(a, b);
        case 1: return QStringLiteral("  const %1 = await %2.%3();").arg(a, b, c);
        case 2: return QStringLiteral("  if (!%1) { return null; } // %2").arg(a, b);
        default: return QStringLiteral("  %1.forEach((%2) => %3(%2));").arg(a, b, c);
        }
    }
}

} // namespace

namespace ZDSearchBenchLibrary {

QStringList rareWords()
{
    return kRare;
}

ZDSnippetList generate(int count, quint32 seed)
{
    QRandomGenerator random(seed);
    ZDSnippetList snippets;
    snippets.reserve(count);
    for (int i = 0; i < count; ++i) {
        QStringList title;
        const int words = 2 + random.bounded(3);
        for (int w = 0; w < words; ++w)
            title.append(kTitleWords[random.bounded(int(kTitleWords.size()))]);
        ZDSnippetPtr snippet = ZDSnippet::create(title.join(QLatin1Char(' ')));
        QList<ZDSnippetPartPtr> parts;
        const int partCount = 1 + random.bounded(4);
        const int budget = 1500 / partCount;
        for (int p = 0; p < partCount; ++p) {
            ZDSnippetPartPtr part = ZDSnippetPart::create(QStringLiteral("Fragment"), snippet->UUID());
            const int language = random.bounded(3);
            QString content;
            while (content.size() < budget) {
                content += codeLine(random, language);
                content += QLatin1Char('\n');
            }
            if (random.bounded(400) == 0)
                content += kRare[random.bounded(int(kRare.size()))] + QLatin1Char('\n');
            part->setContent(content);
            if (random.bounded(3) == 0)
                part->setNote(QStringLiteral("Note: uses %1 and %2.").arg(identifier(random), identifier(random)));
            parts.append(part);
        }
        snippet->setParts(parts);
        snippets.append(snippet);
    }
    return snippets;
}

} // namespace ZDSearchBenchLibrary
