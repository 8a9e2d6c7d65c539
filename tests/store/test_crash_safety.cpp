#include "ZDCrashWriterContent.h"
#include "ZDPackageFormat.h"
#include "ZDPackageStorage.h"

#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QThread>
#include <QUuid>

#include <gtest/gtest.h>

// Kills a process that writes a package in a loop at random moments, many times, and opens the
// package after each kill: it always reads, "identifier" is always a complete stamp, and every
// file is whole (one version or another, never a mixture or a torn tail).
TEST(CrashSafety, PackageSurvivesAWriterKilledAtRandomMoments)
{
    QTemporaryDir dir;
    const QString package = dir.filePath(QStringLiteral("main.zandriolibrary"));
    ZDWriteStampRegister stamps;
    ZDPackageTree initial = ZDPackageFormat::emptyPackage();
    ASSERT_TRUE(ZDPackageStorage::writePackage(&initial, package, stamps));

    int killedAfterWrites = 0;
    for (int round = 0; round < 30; ++round) {
        QProcess writer;
        writer.start(QStringLiteral(ZD_CRASH_WRITER_PATH), {package});
        ASSERT_TRUE(writer.waitForStarted(5000));
        ASSERT_TRUE(writer.waitForReadyRead(10000)) << writer.readAllStandardError().constData();
        // A write takes tens to hundreds of milliseconds (every file is fsynced): the writer dies
        // before its first write, during it, or a few writes on.
        QThread::usleep(QRandomGenerator::global()->bounded(1000, 400000));
        writer.kill(); // SIGKILL
        ASSERT_TRUE(writer.waitForFinished(5000));
        const QByteArray output = writer.readAllStandardOutput();
        ASSERT_TRUE(output.startsWith("ready")) << writer.readAllStandardError().constData();
        killedAfterWrites += output.count("wrote") > 0 ? 1 : 0;

        ZDPackageTree tree;
        bool warned = true;
        QString stamp;
        ZDError error;
        ASSERT_TRUE(ZDPackageStorage::readPackage(package, &tree, nullptr, &warned, &stamp, &error))
            << qPrintable(error.toString());
        EXPECT_FALSE(QUuid::fromString(stamp).isNull()) << "round " << round;
        EXPECT_TRUE(ZDPackageStorage::validatePackage(package, true, &error)) << qPrintable(error.toString());
        for (const QString &name : tree.childNames(ZDPackageLayout::snippetsDirectory)) {
            EXPECT_TRUE(ZDCrashWriterContent::isComplete(
                tree.fileContents(ZDPackageLayout::snippetsDirectory + QLatin1Char('/') + name), name))
                << "round " << round << ": " << qPrintable(name);
        }
        const QByteArray tags = tree.fileContents(ZDPackageLayout::tagsFile);
        EXPECT_TRUE(tags.isEmpty() || ZDCrashWriterContent::isComplete(tags, QStringLiteral("tags.data")));
    }
    // Some writes must have completed, or the kills only ever hit the first write.
    EXPECT_GE(killedAfterWrites, 3);
}
