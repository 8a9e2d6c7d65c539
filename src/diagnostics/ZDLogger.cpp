#include "ZDLogger.h"

#include "ZDSerialQueue.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>

#include <cstdio>

namespace {
std::atomic<ZDLogger *> s_sharedLogger{nullptr};
const QString kFileName = QStringLiteral("Zandrio.log");

QString rotatedName(int index)
{
    return QStringLiteral("Zandrio.%1.log").arg(index);
}
} // namespace

ZDLogger::ZDLogger(const QString &directory, Options options, ZDClock clock)
    : m_directory(directory), m_options(options), m_clock(std::move(clock)),
      m_queue(std::make_unique<ZDSerialQueue>(QStringLiteral("com.varnok.Zandrio.Logger")))
{
}

ZDLogger::~ZDLogger()
{
    if (s_sharedLogger.load() == this)
        s_sharedLogger.store(nullptr);
    m_queue.reset(); // runs what is queued, then stops the thread
}

ZDLogger *ZDLogger::sharedLogger()
{
    return s_sharedLogger.load();
}

void ZDLogger::install(ZDLogger *logger)
{
    s_sharedLogger.store(logger);
}

QString ZDLogger::defaultDirectory()
{
    return QStandardPaths::writableLocation(QStandardPaths::AppDataLocation) + QStringLiteral("/Logs");
}

QString ZDLogger::levelName(ZDLogLevel level)
{
    const char *name = "";
    switch (level) {
    case ZDLogLevel::Debug: name = "debug"; break;
    case ZDLogLevel::Console: name = "console"; break;
    case ZDLogLevel::Verbose: name = "verbose"; break;
    case ZDLogLevel::Info: name = "info"; break;
    case ZDLogLevel::Warning: name = "warning"; break;
    case ZDLogLevel::Error: name = "error"; break;
    }
    return QString::fromLatin1(name).toUpper().leftJustified(7, QLatin1Char(' '));
}

QString ZDLogger::domainName(ZDLogDomain domain)
{
    switch (domain) {
    case ZDLogDomain::General: return QStringLiteral("general");
    case ZDLogDomain::Core: return QStringLiteral("core");
    case ZDLogDomain::Analytics: return QStringLiteral("analytics");
    case ZDLogDomain::Network: return QStringLiteral("network");
    case ZDLogDomain::Library: return QStringLiteral("library");
    case ZDLogDomain::GitHub: return QStringLiteral("github");
    case ZDLogDomain::Editor: return QStringLiteral("editor");
    }
    return {};
}

QString ZDLogger::formatLine(const QDateTime &time, ZDLogLevel level, ZDLogDomain domain,
                             const QString &message)
{
    return time.toLocalTime().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss.zzz")) + QLatin1Char(' ')
           + levelName(level) + QStringLiteral(" [") + domainName(domain) + QStringLiteral("] ")
           + message;
}

void ZDLogger::log(ZDLogLevel level, ZDLogDomain domain, const QString &message)
{
    if ((level == ZDLogLevel::Debug || level == ZDLogLevel::Verbose) && !m_detailed)
        return;
    const QByteArray line = formatLine(m_clock(), level, domain, message).toUtf8() + '\n';
    if (m_options.echoToStandardError && (level == ZDLogLevel::Warning || level == ZDLogLevel::Error)) {
        std::fwrite(line.constData(), 1, size_t(line.size()), stderr);
    }
    m_queue->async([this, line] { write(line); });
}

void ZDLogger::flush()
{
    m_queue->sync([this] {
        if (m_file)
            m_file->flush();
    });
}

QString ZDLogger::currentFilePath() const
{
    return m_directory + QLatin1Char('/') + kFileName;
}

void ZDLogger::rotateIfNeeded(qint64 incoming)
{
    if (!m_file || m_file->size() + incoming <= m_options.maximumFileSize)
        return;
    m_file->close();
    m_file.reset();
    QDir dir(m_directory);
    dir.remove(rotatedName(m_options.maximumOldFiles));
    for (int index = m_options.maximumOldFiles - 1; index >= 1; --index)
        dir.rename(rotatedName(index), rotatedName(index + 1));
    if (m_options.maximumOldFiles > 0)
        dir.rename(kFileName, rotatedName(1));
    else
        dir.remove(kFileName);
}

void ZDLogger::write(const QByteArray &line)
{
    rotateIfNeeded(line.size());
    if (!m_file) {
        QDir().mkpath(m_directory);
        m_file = std::make_unique<QFile>(currentFilePath());
        if (!m_file->open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Text)) {
            m_file.reset();
            return; // nowhere to log to; the program goes on without a log
        }
    }
    m_file->write(line);
    m_file->flush();
}

void zdLog(ZDLogLevel level, ZDLogDomain domain, const QString &message)
{
    if (ZDLogger *logger = ZDLogger::sharedLogger())
        logger->log(level, domain, message);
}
