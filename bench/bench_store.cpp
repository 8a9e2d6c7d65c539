// Library store benchmarks. With no mode, for each size (1,000, 10,000 and 100,000 snippets):
// makes the synthetic library once (kept in the bench directory), then measures in a fresh
// process each time the load of the library with a warm file cache and its resident memory
// (first without the snippet cache, then with it), a smart group over the loaded contents, and
// the write after editing one snippet.
//
//   bench_store [--dir DIR] [--sizes 1000,10000,100000]
//   bench_store --load PATH      one load, figures on standard output
//   bench_store --write PATH     edit-and-save rounds on a loaded library

#include "ZDDataCenter.h"
#include "ZDLanguageRegistry.h"
#include "ZDLibraryContents.h"
#include "ZDLibraryGenerator.h"
#include "ZDMulticastDelegateHandler.h"
#include "ZDPackageTree.h"
#include "ZDResources.h"
#include "ZDPredicate.h"
#include "ZDSnippet.h"
#include "ZDSnippetKeyPaths.h"
#include "ZDUserDefaults.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>

namespace {

double residentMiB()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith("VmRSS:"))
            return line.mid(6).trimmed().split(' ').first().toDouble() / 1024.0;
    }
    return 0;
}

// User and system time of every thread of the process.
double processCpuMs()
{
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return double(now.tv_sec) * 1e3 + double(now.tv_nsec) / 1e6;
}

double packageMiB(const QString &path)
{
    qint64 bytes = 0;
    QDirIterator it(path, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        it.next();
        bytes += it.fileInfo().size();
    }
    return double(bytes) / (1024.0 * 1024.0);
}

// Reads every file of the package once into one buffer, so that the page cache holds them and
// the heap is as a fresh program's.
void warmFileCache(const QString &path)
{
    QByteArray buffer(1 << 20, Qt::Uninitialized);
    QDirIterator it(path, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        QFile file(it.next());
        if (file.open(QIODevice::ReadOnly))
            while (file.read(buffer.data(), buffer.size()) > 0) {
            }
    }
}

struct Environment
{
    QTemporaryDir dir;
    ZDUserDefaults defaults{dir.filePath(QStringLiteral("prefs.ini"))};
    ZDLanguageRegistry languages{ZDResources::path(QStringLiteral("Languages.json")), &defaults};
    ZDMulticastDelegateHandler notifier;

    Environment()
    {
        ZDLanguageRegistry::install(&languages);
        languages.availableLanguages(); // the table is loaded before anything is timed
    }

    std::unique_ptr<ZDDataCenter> open(const QString &path)
    {
        ZDDataCenter::Options options;
        options.packagePath = path;
        options.defaults = &defaults;
        options.notifier = &notifier;
        options.watchForExternalChanges = false;
        return std::make_unique<ZDDataCenter>(std::move(options));
    }
};

int measureLoad(const QString &path, bool breakdown)
{
    Environment environment;
    warmFileCache(path);
    const double before = residentMiB();
    QElapsedTimer timer;
    timer.start();
    const double cpuBefore = processCpuMs();
    auto center = environment.open(path);
    const double ms = double(timer.nsecsElapsed()) / 1e6;
    const double cpuMs = processCpuMs() - cpuBefore;
    const double after = residentMiB();
    const double raw = packageMiB(path);
    double load = 0;
    getloadavg(&load, 1);
    std::printf("load %7lld snippets, %s: %8.1f ms (CPU %8.1f ms, load average %.1f)   resident +%7.1f MiB "
                "(package %6.1f MiB on disk, %.2fx)\n",
                qlonglong(center->snippets().size()), breakdown ? "no cache yet" : "with cache  ", ms, cpuMs, load,
                after - before, raw, (after - before) / raw);
    if (!breakdown) {
        // A smart group over the contents reads every part's text, wherever it is held.
        const ZDPredicate predicate =
            ZDPredicate::fromFormat(QStringLiteral("ANY parts.content CONTAINS[c] \"no such words\""));
        timer.restart();
        qsizetype matches = 0;
        for (const ZDSnippetPtr &snippet : center->snippets())
            matches += ZDSnippetKeyPaths::evaluate(predicate, *snippet);
        std::printf("      a smart group over the contents: %.1f ms (%lld matches)\n",
                    double(timer.nsecsElapsed()) / 1e6, qlonglong(matches));
        return center->dataCenterHasValidLibrary() ? 0 : 1;
    }

    // Where the time goes: listing the package (names and identities, as a load with the cache
    // does), reading the files, and unarchiving the records.
    timer.restart();
    ZDPackageTree listed;
    ZDPackageTree::read(path, &listed, nullptr, ZDPackageTree::Contents::OnDemand);
    const double listMs = double(timer.nsecsElapsed()) / 1e6;
    timer.restart();
    ZDPackageTree tree;
    ZDPackageTree::read(path, &tree);
    const double readMs = double(timer.nsecsElapsed()) / 1e6;
    timer.restart();
    const ZDLibraryContents contents = ZDLibraryContents::read(tree);
    std::printf("      listing the package %.1f ms; without the cache: reading the files %.1f ms, "
                "unarchiving the records %.1f ms\n",
                listMs, readMs, double(timer.nsecsElapsed()) / 1e6);
    return center->dataCenterHasValidLibrary() ? 0 : 1;
}

int measureWrite(const QString &path)
{
    Environment environment;
    auto center = environment.open(path);
    if (!center->save()) // the first save of a generated library rewrites nothing but the stamps
        return 1;
    const ZDSnippetList snippets = center->snippets();
    QList<double> times;
    for (int round = 0; round < 9; ++round) {
        const ZDSnippetPtr snippet = snippets.at((round * 7919) % snippets.size());
        QElapsedTimer timer;
        timer.start();
        if (!center->setSnippetTitle(snippet->UUID(), snippet->title() + QStringLiteral(" (edited)"),
                                     nullptr) ||
            !center->save())
            return 1;
        times << double(timer.nsecsElapsed()) / 1e6;
    }
    std::sort(times.begin(), times.end());
    std::printf("write after editing one snippet of %lld: median %.2f ms, best %.2f ms, worst %.2f ms\n",
                qlonglong(snippets.size()), times.at(times.size() / 2), times.first(), times.last());
    return 0;
}

int runChild(const QStringList &arguments)
{
    QProcess child;
    child.setProcessChannelMode(QProcess::ForwardedChannels);
    child.start(QCoreApplication::applicationFilePath(), arguments);
    child.waitForFinished(-1);
    return child.exitCode();
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QCommandLineParser parser;
    const QCommandLineOption load(QStringLiteral("load"), {}, QStringLiteral("PATH"));
    const QCommandLineOption write(QStringLiteral("write"), {}, QStringLiteral("PATH"));
    const QCommandLineOption breakdown(QStringLiteral("breakdown"));
    const QCommandLineOption directory(QStringLiteral("dir"), {}, QStringLiteral("DIR"),
                                       QCoreApplication::applicationDirPath() + QStringLiteral("/libraries"));
    const QCommandLineOption sizes(QStringLiteral("sizes"), {}, QStringLiteral("N,N,..."),
                                   QStringLiteral("1000,10000,100000"));
    parser.addOptions({load, write, breakdown, directory, sizes});
    parser.process(app);
    if (parser.isSet(load))
        return measureLoad(parser.value(load), parser.isSet(breakdown));
    if (parser.isSet(write))
        return measureWrite(parser.value(write));

    QDir().mkpath(parser.value(directory));
    // The snippet cache of the libraries measured here lives beside them, and starts empty.
    const QString cacheHome = parser.value(directory) + QStringLiteral("/cache");
    QDir(cacheHome).removeRecursively();
    qputenv("XDG_CACHE_HOME", QFile::encodeName(cacheHome));
    QStringList paths;
    for (const QString &size : parser.value(sizes).split(QLatin1Char(','))) {
        const QString path = parser.value(directory) + QStringLiteral("/library-%1.zandriolibrary").arg(size);
        if (!QFileInfo::exists(path)) {
            Environment environment;
            ZDLibraryGenerator generator(42, environment.languages);
            ZDError error;
            if (!ZDLibraryGenerator::writePackage(generator.generate(size.toInt()), path, &error)) {
                std::fprintf(stderr, "bench_store: %s\n", qPrintable(error.toString()));
                return 1;
            }
        }
        if (runChild({QStringLiteral("--load"), path, QStringLiteral("--breakdown")}) != 0 ||
            runChild({QStringLiteral("--load"), path}) != 0)
            return 1;
        paths << path;
    }
    // Writes are measured on copies, so the kept libraries stay as generated.
    for (const QString &path : std::as_const(paths)) {
        QTemporaryDir scratch(parser.value(directory) + QStringLiteral("/scratch-XXXXXX"));
        const QString copy = scratch.filePath(QStringLiteral("copy.zandriolibrary"));
        if (QProcess::execute(QStringLiteral("cp"), {QStringLiteral("-a"), path, copy}) != 0 ||
            runChild({QStringLiteral("--write"), copy}) != 0)
            return 1;
    }
    return 0;
}
