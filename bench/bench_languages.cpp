// Prints the time to load the language table and the cost of a language guess.

#include "ZDLanguageRegistry.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <cstdio>

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    const QString table = QStringLiteral(ZANDRIO_BENCH_RESOURCE_DIR "/Languages.json");

    QElapsedTimer timer;
    timer.start();
    ZDLanguageRegistry registry(table);
    const int count = int(registry.availableLanguages().size());
    const double loadMs = double(timer.nsecsElapsed()) / 1e6;

    const int rounds = 2000;
    timer.restart();
    int found = 0;
    for (int i = 0; i < rounds; ++i)
        found += int(registry.languagesFromLanguageName(QStringLiteral("js"), QStringLiteral("h"), {}).size());
    const double guessUs = double(timer.nsecsElapsed()) / 1e3 / rounds;

    std::printf("language table: %d languages loaded in %.2f ms\n", count, loadMs);
    std::printf("guess by alias and extension: %.1f us per call (%d candidates)\n", guessUs, found / rounds);
    return 0;
}
