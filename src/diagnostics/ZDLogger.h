#pragma once

#include "ZDClock.h"

#include <QString>

#include <atomic>
#include <memory>

class ZDSerialQueue;
class QFile;

enum class ZDLogLevel { Debug, Console, Verbose, Info, Warning, Error };
enum class ZDLogDomain { General, Core, Analytics, Network, Library, GitHub, Editor };

struct ZDLoggerOptions
{
    qint64 maximumFileSize = 2 * 1024 * 1024;
    int maximumOldFiles = 5;
    bool echoToStandardError = false; ///< warnings and errors also go to stderr
};

/// The application logger. Lines are formatted on the caller's thread (so their timestamp is the
/// moment of the call) and written in order on the logger's own thread to "Zandrio.log" in the
/// log directory, which is rotated when it grows past the size limit ("Zandrio.1.log" is the
/// newest old file). Debug and verbose lines are written only while detailed logging is on.
class ZDLogger
{
public:
    using Options = ZDLoggerOptions;

    explicit ZDLogger(const QString &directory, Options options = {}, ZDClock clock = zdSystemClock());
    ~ZDLogger();

    /// The logger the program installed at start-up, or null (then messages are dropped).
    static ZDLogger *sharedLogger();
    static void install(ZDLogger *logger);
    /// The log directory of the running user: "Logs" in the application's data directory.
    static QString defaultDirectory();

    void log(ZDLogLevel level, ZDLogDomain domain, const QString &message);
    void setDetailedLoggingEnabled(bool enabled) { m_detailed = enabled; }
    bool detailedLoggingEnabled() const { return m_detailed; }
    /// Returns once every line logged so far is on disk.
    void flush();

    QString currentFilePath() const;

    /// "DEBUG  ", "CONSOLE", "VERBOSE", "INFO   ", "WARNING", "ERROR  ".
    static QString levelName(ZDLogLevel level);
    static QString domainName(ZDLogDomain domain);
    /// "yyyy-MM-dd HH:mm:ss.SSS LEVEL   [domain] message", in local time.
    static QString formatLine(const QDateTime &time, ZDLogLevel level, ZDLogDomain domain,
                              const QString &message);

private:
    void write(const QByteArray &line);
    void rotateIfNeeded(qint64 incoming);

    QString m_directory;
    Options m_options;
    ZDClock m_clock;
    std::atomic<bool> m_detailed{false};
    std::unique_ptr<QFile> m_file; // touched only on the queue
    std::unique_ptr<ZDSerialQueue> m_queue;
};

/// Logs through the shared logger, if one is installed.
void zdLog(ZDLogLevel level, ZDLogDomain domain, const QString &message);
