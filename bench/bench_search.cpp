// Prints the index rebuild time of a synthetic library (100,000 snippets by default) and the
// latency of keyword searches (matching plus ranking), beside the time ripgrep takes to find the
// same words in the same snippets written as plain files.
//
// Usage: bench_search [SNIPPETS] [ROUNDS]

#include "ZDLanguageRegistry.h"
#include "ZDSearchBenchLibrary.h"
#include "ZDSearchEngine.h"
#include "ZDSnippet.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>

namespace {

struct Query
{
    const char *label;
    QString keyword;
    bool fuzzy;
};

double percentile(std::vector<double> values, double p)
{
    std::sort(values.begin(), values.end());
    const size_t index = std::min(values.size() - 1, size_t(p * double(values.size() - 1) + 0.5));
    return values[index];
}

double ripgrepMs(const QString &rg, const QString &directory, const QString &keyword)
{
    QElapsedTimer timer;
    timer.start();
    QProcess process;
    process.setStandardOutputFile(QProcess::nullDevice());
    process.start(rg, {QStringLiteral("-i"), QStringLiteral("-F"), QStringLiteral("-l"), QStringLiteral("--"), keyword, directory});
    process.waitForFinished(-1);
    return double(timer.nsecsElapsed()) / 1e6;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    const int count = argc > 1 ? QString::fromLocal8Bit(argv[1]).toInt() : 100000;
    const int rounds = argc > 2 ? QString::fromLocal8Bit(argv[2]).toInt() : 20;
    ZDLanguageRegistry registry(QStringLiteral(ZANDRIO_BENCH_RESOURCE_DIR "/Languages.json"));
    ZDLanguageRegistry::install(&registry);

    QElapsedTimer timer;
    timer.start();
    const ZDSnippetList library = ZDSearchBenchLibrary::generate(count, 20240601);
    qint64 bytes = 0;
    for (const ZDSnippetPtr &snippet : library)
        bytes += snippet->stringRepresentation().toUtf8().size();
    std::printf("library: %d snippets, %.1f MB of text (%.0f bytes each), generated in %.0f ms\n", count,
                double(bytes) / 1e6, double(bytes) / count, double(timer.elapsed()));

    ZDSearchEngine engine([&] { return library; });
    timer.restart();
    engine.rebuildIndex();
    const double requestMs = double(timer.nsecsElapsed()) / 1e6;
    engine.waitUntilIndexIsIdle();
    std::printf("index rebuild: %.0f ms in the background (%.0f ms of it on the calling thread)\n",
                double(timer.nsecsElapsed()) / 1e6, requestMs);

    const QString rare = ZDSearchBenchLibrary::rareWords().first();
    const std::vector<Query> queries = {
        {"1 word, common, fuzzy", QStringLiteral("return"), true},
        {"1 word, common, exact", QStringLiteral("return"), false},
        {"1 word, inside terms, fuzzy", QStringLiteral("buffer"), true},
        {"1 word, rare, fuzzy", rare, true},
        {"1 word, absent, fuzzy", QStringLiteral("zzyzx"), true},
        {"2 words, common, fuzzy", QStringLiteral("return null"), true},
        {"2 words, common, exact", QStringLiteral("return null"), false},
        {"2 words, rare, fuzzy", rare + QStringLiteral(" data"), true},
        {"2 words, absent, exact", QStringLiteral("zzyzx qwfp"), false},
        {"3 words, common, fuzzy", QStringLiteral("const await forEach"), true},
        {"3 words, common, exact", QStringLiteral("if not user"), false},
        {"3 words, rare, fuzzy", rare + QStringLiteral(" get value"), true},
        {"3 words, absent, fuzzy", QStringLiteral("zzyzx qwfp jjjq"), true},
    };

    // The same snippets as plain files, for ripgrep.
    QTemporaryDir files;
    const QString rg = QStandardPaths::findExecutable(QStringLiteral("rg"));
    if (!rg.isEmpty()) {
        for (const ZDSnippetPtr &snippet : library) {
            QFile file(files.filePath(snippet->UUID() + QStringLiteral(".txt")));
            if (file.open(QIODevice::WriteOnly))
                file.write(snippet->stringRepresentation().toUtf8());
        }
    }

    std::printf("\n%-30s %8s %9s %9s %9s %11s\n", "query (full text)", "matches", "p50 ms", "p95 ms", "max ms",
                "rg -i -F -l");
    std::vector<double> all;
    for (const Query &query : queries) {
        std::vector<double> times;
        qsizetype matches = 0;
        for (int round = 0; round < rounds; ++round) {
            timer.restart();
            matches = engine.snippetsWithKeyword(query.keyword, {}, true, query.fuzzy, false).size();
            times.push_back(double(timer.nsecsElapsed()) / 1e6);
        }
        all.insert(all.end(), times.begin(), times.end());
        const double rgMs = rg.isEmpty() ? -1 : ripgrepMs(rg, files.path(), query.keyword);
        std::printf("%-30s %8lld %9.1f %9.1f %9.1f %8.0f ms\n", query.label, qlonglong(matches),
                    percentile(times, 0.5), percentile(times, 0.95), *std::max_element(times.begin(), times.end()),
                    rgMs);
    }
    std::printf("\nall queries: p50 %.1f ms, p95 %.1f ms\n", percentile(all, 0.5), percentile(all, 0.95));
    ZDLanguageRegistry::install(nullptr);
    return 0;
}
