#include "ZDResources.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QMutex>

namespace {
QMutex s_mutex;
QString s_directory;
} // namespace

namespace ZDResources {

QString directory()
{
    QMutexLocker lock(&s_mutex);
    if (!s_directory.isEmpty())
        return s_directory;
    if (QCoreApplication::instance()) {
        const QString installed = QDir::cleanPath(QCoreApplication::applicationDirPath()
                                                  + QStringLiteral("/../share/zandrio"));
        if (QFileInfo::exists(installed + QStringLiteral("/Languages.json")))
            return installed;
    }
    return QStringLiteral(ZANDRIO_SOURCE_RESOURCE_DIR);
}

QString path(const QString &relativePath)
{
    return directory() + QLatin1Char('/') + relativePath;
}

void setDirectory(const QString &dir)
{
    QMutexLocker lock(&s_mutex);
    s_directory = dir;
}

QString applicationVersion()
{
    return QStringLiteral(ZANDRIO_VERSION);
}

} // namespace ZDResources
