#pragma once

#include <QString>

/// An advisory lock (flock) on a package directory. Every process that writes a package holds
/// the exclusive lock for the whole write, so two writers never interleave; a reader that wants
/// a settled package takes the shared lock. Locks are released on destruction, and by the
/// system when a process dies, so a killed writer never leaves the package locked.
class ZDPackageLock
{
public:
    enum class Mode
    {
        Exclusive,
        Shared
    };
    enum class Wait
    {
        Block,
        DontBlock
    };

    /// Locks `packagePath`. An exclusive lock makes the directory when it does not exist yet.
    ZDPackageLock(const QString &packagePath, Mode mode = Mode::Exclusive, Wait wait = Wait::Block);
    ~ZDPackageLock();
    ZDPackageLock(const ZDPackageLock &) = delete;
    ZDPackageLock &operator=(const ZDPackageLock &) = delete;

    bool isLocked() const { return m_fd >= 0; }
    /// Why the lock was not taken; empty when it was, or when someone else holds it and
    /// DontBlock was asked (see isBusy()).
    QString errorString() const { return m_error; }
    /// True when DontBlock was asked and another holder kept the lock from being taken.
    bool isBusy() const { return m_busy; }
    void unlock();

private:
    int m_fd = -1;
    bool m_busy = false;
    QString m_error;
};
