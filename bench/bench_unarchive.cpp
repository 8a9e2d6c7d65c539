// Snippet unarchiving benchmark: archives N generated snippets once, then unarchives them all
// several rounds and prints the best time per snippet (no file system involved): the thread's
// CPU time, which other programs on a busy machine disturb less than the wall clock does.
//
//   bench_unarchive [count]      (default 20,000)

#include "ZDLanguageRegistry.h"
#include "ZDLibraryGenerator.h"
#include "ZDRecordArchive.h"
#include "ZDResources.h"
#include "ZDSnippet.h"
#include "ZDUserDefaults.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <ctime>

namespace {
double threadCpuMicros()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return double(now.tv_sec) * 1e6 + double(now.tv_nsec) / 1e3;
}
} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const int count = argc > 1 ? std::max(1, atoi(argv[1])) : 20000;
    QTemporaryDir dir;
    ZDUserDefaults defaults(dir.filePath(QStringLiteral("prefs.ini")));
    ZDLanguageRegistry languages(ZDResources::path(QStringLiteral("Languages.json")), &defaults);
    ZDLanguageRegistry::install(&languages);

    ZDLibraryGenerator generator(42, languages);
    const ZDLibraryContents contents = generator.generate(count);
    QList<QByteArray> archives;
    qint64 bytes = 0;
    for (const ZDSnippetPtr &snippet : contents.snippets) {
        archives.append(ZDRecordArchive::archivedSnippet(*snippet));
        bytes += archives.last().size();
    }

    double best = 1e300;
    double wall = 1e300;
    for (int round = 0; round < 5; ++round) {
        QElapsedTimer timer;
        timer.start();
        const double cpuStart = threadCpuMicros();
        qsizetype read = 0;
        for (const QByteArray &archive : archives)
            read += ZDRecordArchive::unarchiveSnippet(archive) ? 1 : 0;
        const double micros = (threadCpuMicros() - cpuStart) / double(archives.size());
        wall = std::min(wall, double(timer.nsecsElapsed()) / 1000.0 / double(archives.size()));
        if (read != archives.size()) {
            std::fprintf(stderr, "only %lld of %lld snippets read\n", qlonglong(read), qlonglong(archives.size()));
            return 1;
        }
        best = std::min(best, micros);
    }
    std::printf("%lld snippets, %.0f bytes each: %.1f us CPU per snippet (wall %.1f us)\n",
                qlonglong(archives.size()), double(bytes) / double(archives.size()), best, wall);
    return 0;
}
