// zandrio-generate-library --count N --seed S PATH: writes a synthetic library of N snippets,
// the same for the same seed.

#include "ZDLanguageRegistry.h"
#include "ZDLibraryGenerator.h"
#include "ZDResources.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QElapsedTimer>

#include <cstdio>

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Writes a deterministic synthetic Zandrio library."));
    parser.addHelpOption();
    const QCommandLineOption count(QStringLiteral("count"), QStringLiteral("number of snippets"), QStringLiteral("N"),
                                   QStringLiteral("1000"));
    const QCommandLineOption seed(QStringLiteral("seed"), QStringLiteral("random seed"), QStringLiteral("S"),
                                  QStringLiteral("1"));
    parser.addOptions({count, seed});
    parser.addPositionalArgument(QStringLiteral("PATH"), QStringLiteral("the package to create"));
    parser.process(app);
    bool countOk = false, seedOk = false;
    const int snippets = parser.value(count).toInt(&countOk);
    const quint64 seedValue = parser.value(seed).toULongLong(&seedOk);
    if (parser.positionalArguments().size() != 1 || !countOk || snippets < 0 || !seedOk) {
        std::fprintf(stderr, "usage: zandrio-generate-library --count N --seed S PATH\n");
        return 2;
    }

    ZDLanguageRegistry languages(ZDResources::path(QStringLiteral("Languages.json")));
    ZDLanguageRegistry::install(&languages);
    QElapsedTimer timer;
    timer.start();
    ZDLibraryGenerator generator(seedValue, languages);
    const ZDLibraryContents contents = generator.generate(snippets);
    ZDError error;
    if (!ZDLibraryGenerator::writePackage(contents, parser.positionalArguments().first(), &error)) {
        std::fprintf(stderr, "zandrio-generate-library: %s\n", qPrintable(error.toString()));
        return 1;
    }
    std::printf("%d snippets written to %s in %.2f s\n", snippets, qPrintable(parser.positionalArguments().first()),
                double(timer.elapsed()) / 1000.0);
    return 0;
}
