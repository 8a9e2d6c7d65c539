#include "ZDPackageLock.h"

#include <QDir>
#include <QFile>

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

ZDPackageLock::ZDPackageLock(const QString &packagePath, Mode mode, Wait wait)
{
    if (mode == Mode::Exclusive && !QDir().mkpath(packagePath)) {
        m_error = QStringLiteral("Cannot create %1").arg(packagePath);
        return;
    }
    const int fd = ::open(QFile::encodeName(packagePath).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0) {
        m_error = QStringLiteral("Cannot open %1: %2")
                      .arg(packagePath, QString::fromLocal8Bit(std::strerror(errno)));
        return;
    }
    int operation = mode == Mode::Exclusive ? LOCK_EX : LOCK_SH;
    if (wait == Wait::DontBlock)
        operation |= LOCK_NB;
    int result;
    do {
        result = ::flock(fd, operation);
    } while (result != 0 && errno == EINTR);
    if (result != 0) {
        m_busy = errno == EWOULDBLOCK;
        if (!m_busy)
            m_error = QStringLiteral("Cannot lock %1: %2")
                          .arg(packagePath, QString::fromLocal8Bit(std::strerror(errno)));
        ::close(fd);
        return;
    }
    m_fd = fd;
}

ZDPackageLock::~ZDPackageLock()
{
    unlock();
}

void ZDPackageLock::unlock()
{
    if (m_fd >= 0) {
        ::flock(m_fd, LOCK_UN);
        ::close(m_fd);
        m_fd = -1;
    }
}
