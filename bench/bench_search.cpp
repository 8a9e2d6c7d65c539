// Prints the index rebuild time of the generated library (100,000 snippets by default, the
// library the store benchmark loads) and the latency of keyword searches (matching plus
// ranking), beside the time ripgrep takes to find the same words in the same snippets written
// as plain files.
//
// Usage: bench_search [SNIPPETS] [ROUNDS]   (ROUNDS 0: the rebuild only)
// ZD_BENCH_ONLY=TEXT runs only the queries whose label holds TEXT; ZD_NORG=1 skips ripgrep.

#include "ZDLanguageRegistry.h"
#include "ZDLibraryGenerator.h"
#include "ZDSearchEngine.h"
#include "ZDSnippet.h"
#include "ZDSnippetPart.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <ctime>

namespace {

double cpuMs(clockid_t clock)
{
    timespec now{};
    clock_gettime(clock, &now);
    return double(now.tv_sec) * 1e3 + double(now.tv_nsec) / 1e6;
}

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
    process.start(rg, {QStringLiteral("-i"), QStringLiteral("-F"), QStringLiteral("-l"), QStringLiteral("--"),
                       keyword, directory});
    process.waitForFinished(-1);
    return double(timer.nsecsElapsed()) / 1e6;
}

// The generated library has no rare words of its own: one goes at the end of one snippet in
// 1333, about 75 of 100,000.
const QString kRareWord = QStringLiteral("quetzal");

void plantRareWord(const ZDSnippetList &library)
{
    for (qsizetype i = 7; i < library.size(); i += 1333) {
        const ZDSnippetPartPtr part = library[i]->parts().last();
        part->setContent(part->content() + QStringLiteral("// ") + kRareWord + QLatin1Char('\n'));
    }
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
    ZDLibraryGenerator generator(42, registry);
    const ZDSnippetList library = generator.generate(count).snippets;
    plantRareWord(library);
    qint64 bytes = 0;
    for (const ZDSnippetPtr &snippet : library)
        bytes += snippet->stringRepresentation().toUtf8().size();
    std::printf("library: %d snippets, %.1f MB of text (%.0f bytes each), generated in %.0f ms\n", count,
                double(bytes) / 1e6, double(bytes) / count, double(timer.elapsed()));

    ZDSearchEngine engine([&] { return library; });
    timer.restart();
    const double cpuBefore = cpuMs(CLOCK_PROCESS_CPUTIME_ID);
    engine.rebuildIndex();
    const double requestMs = double(timer.nsecsElapsed()) / 1e6;
    engine.waitUntilIndexIsIdle();
    std::printf("index rebuild: %.0f ms in the background, %.0f ms of CPU (%.0f ms on the calling thread)\n",
                double(timer.nsecsElapsed()) / 1e6, cpuMs(CLOCK_PROCESS_CPUTIME_ID) - cpuBefore, requestMs);

    if (rounds <= 0)
        return 0;
    const std::vector<Query> queries = {
        {"1 word, common, fuzzy", QStringLiteral("return"), true},
        {"1 word, common, exact", QStringLiteral("return"), false},
        {"1 word, inside terms, fuzzy", QStringLiteral("buffer"), true},
        {"1 word, rare, fuzzy", kRareWord, true},
        {"1 word, absent, fuzzy", QStringLiteral("zzyzx"), true},
        {"2 words, common, fuzzy", QStringLiteral("return config"), true},
        {"2 words, common, exact", QStringLiteral("async function"), false},
        {"2 words, rare, fuzzy", kRareWord + QStringLiteral(" config"), true},
        {"2 words, absent, exact", QStringLiteral("zzyzx qwfp"), false},
        {"3 words, common, fuzzy", QStringLiteral("const parse buffer"), true},
        {"3 words, common, exact", QStringLiteral("for item in"), false},
        {"3 words, rare, fuzzy", kRareWord + QStringLiteral(" load path"), true},
        {"3 words, absent, fuzzy", QStringLiteral("zzyzx qwfp jjjq"), true},
    };

    // The same snippets as plain files, for ripgrep.
    QTemporaryDir files;
    const QString rg = QStandardPaths::findExecutable(QStringLiteral("rg"));
    const bool runRipgrep = !rg.isEmpty() && !qEnvironmentVariableIsSet("ZD_NORG");
    if (runRipgrep) {
        for (const ZDSnippetPtr &snippet : library) {
            QFile file(files.filePath(snippet->UUID() + QStringLiteral(".txt")));
            if (file.open(QIODevice::WriteOnly))
                file.write(snippet->stringRepresentation().toUtf8());
        }
    }

    std::printf("\n%-30s %8s %9s %9s %9s %11s %11s %11s\n", "query (full text)", "matches", "p50 ms", "p95 ms",
                "max ms", "p50 CPU ms", "p95 CPU ms", "rg -i -F -l");
    std::vector<double> all;
    std::vector<double> allCpu;
    const QString only = qEnvironmentVariable("ZD_BENCH_ONLY"); // run only the queries whose label holds this
    for (const Query &query : queries) {
        if (!only.isEmpty() && !QString::fromLatin1(query.label).contains(only))
            continue;
        std::vector<double> times;
        std::vector<double> cpuTimes;
        qsizetype matches = 0;
        for (int round = 0; round < rounds; ++round) {
            timer.restart();
            const double cpuStart = cpuMs(CLOCK_THREAD_CPUTIME_ID);
            matches = engine.snippetsWithKeyword(query.keyword, {}, true, query.fuzzy, false).size();
            cpuTimes.push_back(cpuMs(CLOCK_THREAD_CPUTIME_ID) - cpuStart);
            times.push_back(double(timer.nsecsElapsed()) / 1e6);
        }
        all.insert(all.end(), times.begin(), times.end());
        allCpu.insert(allCpu.end(), cpuTimes.begin(), cpuTimes.end());
        const double rgMs = runRipgrep ? ripgrepMs(rg, files.path(), query.keyword) : -1;
        std::printf("%-30s %8lld %9.1f %9.1f %9.1f %11.1f %11.1f %8.0f ms\n", query.label, qlonglong(matches),
                    percentile(times, 0.5), percentile(times, 0.95), *std::max_element(times.begin(), times.end()),
                    percentile(cpuTimes, 0.5), percentile(cpuTimes, 0.95), rgMs);
    }
    std::printf("\nall queries: p50 %.1f ms, p95 %.1f ms (CPU: p50 %.1f ms, p95 %.1f ms)\n", percentile(all, 0.5),
                percentile(all, 0.95), percentile(allCpu, 0.5), percentile(allCpu, 0.95));
    ZDLanguageRegistry::install(nullptr);
    return 0;
}
