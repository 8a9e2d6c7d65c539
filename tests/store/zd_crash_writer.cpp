// Writes the package given as its argument over and over with changing content, until killed.
// Prints "ready" once it has read the package and "wrote N" after each write.

#include "ZDCrashWriterContent.h"
#include "ZDPackageFormat.h"
#include "ZDPackageStorage.h"

#include <QRandomGenerator>

#include <cstdio>

int main(int argc, char **argv)
{
    if (argc != 2)
        return 2;
    const QString package = QString::fromLocal8Bit(argv[1]);
    ZDPackageTree tree;
    bool warned = true;
    QString stamp;
    ZDError error;
    if (!ZDPackageStorage::readPackage(package, &tree, nullptr, &warned, &stamp, &error)) {
        std::fprintf(stderr, "%s\n", qPrintable(error.toString()));
        return 3;
    }
    ZDWriteStampRegister stamps;
    stamps.setStamp(stamp);
    std::printf("ready\n");
    std::fflush(stdout);

    QRandomGenerator *random = QRandomGenerator::global();
    for (quint64 written = 1;; ++written) {
        const quint64 generation = random->generate64() >> 1;
        for (int i = 0; i < 24; ++i) {
            const QString name = QStringLiteral("S%1.data").arg(random->bounded(40));
            const QString path = ZDPackageLayout::snippetsDirectory + QLatin1Char('/') + name;
            if (random->bounded(5) == 0)
                tree.remove(path);
            else
                tree.setFile(path, ZDCrashWriterContent::make(generation, name, random->bounded(65536)));
        }
        tree.setFile(
            ZDPackageLayout::tagsFile,
            ZDCrashWriterContent::make(generation, QStringLiteral("tags.data"), random->bounded(4096)));
        if (!ZDPackageStorage::writePackage(&tree, package, stamps, {}, &error)) {
            std::fprintf(stderr, "%s\n", qPrintable(error.toString()));
            return 4;
        }
        std::printf("wrote %llu\n", static_cast<unsigned long long>(written));
        std::fflush(stdout);
    }
}
