#include "ZDLogger.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QThread>

#include <gtest/gtest.h>

namespace {
QStringList readLines(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

QDateTime fixedTime()
{
    return QDateTime(QDate(2026, 3, 4), QTime(5, 6, 7, 89), Qt::LocalTime);
}
} // namespace

TEST(LoggerFormat, LevelsAreUpperCasePaddedToSevenCharacters)
{
    EXPECT_EQ(ZDLogger::levelName(ZDLogLevel::Debug), QStringLiteral("DEBUG  "));
    EXPECT_EQ(ZDLogger::levelName(ZDLogLevel::Console), QStringLiteral("CONSOLE"));
    EXPECT_EQ(ZDLogger::levelName(ZDLogLevel::Verbose), QStringLiteral("VERBOSE"));
    EXPECT_EQ(ZDLogger::levelName(ZDLogLevel::Info), QStringLiteral("INFO   "));
    EXPECT_EQ(ZDLogger::levelName(ZDLogLevel::Warning), QStringLiteral("WARNING"));
    EXPECT_EQ(ZDLogger::levelName(ZDLogLevel::Error), QStringLiteral("ERROR  "));
}

TEST(LoggerFormat, LineHasMillisecondTimestampLevelDomainAndMessage)
{
    EXPECT_EQ(ZDLogger::formatLine(fixedTime(), ZDLogLevel::Info, ZDLogDomain::Library, QStringLiteral("Loaded")),
              QStringLiteral("2026-03-04 05:06:07.089 INFO    [library] Loaded"));
    EXPECT_EQ(ZDLogger::domainName(ZDLogDomain::GitHub), QStringLiteral("github"));
}

TEST(LoggerFile, DetailedLinesOnlyWhenEnabledAndWrittenInOrderOnTheLoggerThread)
{
    QTemporaryDir dir;
    ZDLogger logger(dir.path(), {}, fixedTime);
    logger.log(ZDLogLevel::Debug, ZDLogDomain::Core, QStringLiteral("hidden debug"));
    logger.log(ZDLogLevel::Verbose, ZDLogDomain::Core, QStringLiteral("hidden verbose"));
    for (int i = 0; i < 50; ++i)
        logger.log(ZDLogLevel::Info, ZDLogDomain::Core, QStringLiteral("line %1").arg(i));
    logger.setDetailedLoggingEnabled(true);
    logger.log(ZDLogLevel::Debug, ZDLogDomain::Editor, QStringLiteral("shown debug"));
    logger.flush();

    const QStringList lines = readLines(logger.currentFilePath());
    ASSERT_EQ(lines.size(), 51);
    for (int i = 0; i < 50; ++i)
        EXPECT_TRUE(lines.at(i).endsWith(QStringLiteral("line %1").arg(i)));
    EXPECT_EQ(lines.last(), QStringLiteral("2026-03-04 05:06:07.089 DEBUG   [editor] shown debug"));
}

TEST(LoggerFile, RotatesIntoNumberedFilesAndKeepsOnlyTheNewest)
{
    QTemporaryDir dir;
    ZDLogger::Options options;
    options.maximumFileSize = 400;
    options.maximumOldFiles = 2;
    ZDLogger logger(dir.path(), options, fixedTime);
    for (int i = 0; i < 40; ++i)
        logger.log(ZDLogLevel::Warning, ZDLogDomain::General, QStringLiteral("message number %1").arg(i, 3, 10, QLatin1Char('0')));
    logger.flush();

    const QStringList files = QDir(dir.path()).entryList(QDir::Files, QDir::Name);
    EXPECT_EQ(files, (QStringList{QStringLiteral("Zandrio.1.log"), QStringLiteral("Zandrio.2.log"),
                                  QStringLiteral("Zandrio.log")}));
    for (const QString &name : files)
        EXPECT_LE(QFileInfo(dir.filePath(name)).size(), 400);
    // The newest line is in the current file; the oldest were dropped with the third rotation.
    EXPECT_TRUE(readLines(logger.currentFilePath()).last().endsWith(QStringLiteral("message number 039")));
    EXPECT_FALSE(readLines(dir.filePath(QStringLiteral("Zandrio.2.log"))).first().endsWith(QStringLiteral("000")));
}
