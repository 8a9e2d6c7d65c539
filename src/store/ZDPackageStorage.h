#pragma once

#include "ZDError.h"
#include "ZDPackageTree.h"

#include <QString>

#include <functional>
#include <mutex>

class ZDOutdatedVersionResponder;

/// The stamp of the package state this process knows: the one it last wrote, or the one it
/// loaded. Written on the file-system queue, read by the watcher on the main thread.
class ZDWriteStampRegister
{
public:
    QString stamp() const;
    void setStamp(const QString &stamp);
    /// Whether a stamp read from disk is ours: equal to the register's, or both absent.
    bool isOwn(const QString &diskStamp) const;

private:
    mutable std::mutex m_mutex;
    QString m_stamp;
};

/// Reading, writing and checking the library package at a local location.
namespace ZDPackageStorage {

/// Reads the package at `packagePath`: its tree when it exists (110 when it cannot be read),
/// the empty package when nothing is there (no error), 112 when the path is empty. When the
/// package was written by a newer version and `*warned` is false, asks `responder` once (and
/// sets `*warned`); a refusal fails with 126 and leaves `tree` alone. `stamp` receives the
/// package's write stamp (empty when it has none).
/// `contents` says whether the files' bytes are read now or on demand.
bool readPackage(const QString &packagePath, ZDPackageTree *tree, ZDOutdatedVersionResponder *responder,
                 bool *warned, QString *stamp = nullptr, ZDError *error = nullptr,
                 ZDPackageTree::Contents contents = ZDPackageTree::Contents::Now);

/// Called under the write lock when the stamp on disk is not the register's: another process
/// wrote the package since this one read or wrote it. `onDisk` is the package as it is now
/// (read under the lock; do not read the package again from inside the callback, the lock is
/// held). The callback brings `tree` up to date, typically by taking `onDisk` and applying the
/// edits not yet written, and returns false to give up the write.
using ZDReconcile = std::function<bool(ZDPackageTree &tree, ZDPackageTree &&onDisk, const QString &diskStamp,
                                       ZDError *error)>;

/// Writes `tree` to `packagePath` under the exclusive package lock: restamps "version.plist"
/// when it is not this build's, puts a fresh "identifier" stamp (recorded in `stamps` before
/// anything reaches disk, and taken back if the write fails), and writes only what changed.
/// Errors: 113 without a tree, 124 without a path, 141 when the write fails.
bool writePackage(ZDPackageTree *tree, const QString &packagePath, ZDWriteStampRegister &stamps,
                  const ZDReconcile &reconcile = {}, ZDError *error = nullptr);

/// Checks a package on disk before it is opened or put in place of the current library
/// (119, 121, 123, 126, 125, 131, 149, in that order). Passes everything unless
/// `integrityCheckEnabled`.
bool validatePackage(const QString &packagePath, bool integrityCheckEnabled, ZDError *error = nullptr);

} // namespace ZDPackageStorage
