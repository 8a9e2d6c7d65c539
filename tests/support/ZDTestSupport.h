#pragma once

#include <QString>

#include <functional>

namespace ZDTestSupport {
/// Points the user's directories at a fresh temporary directory (removed at exit).
void isolateUserDirectories();
/// The temporary home made by isolateUserDirectories().
QString isolatedHome();
/// Runs the event loop until `condition` holds or `timeoutMs` passes; returns the condition.
bool waitFor(const std::function<bool()> &condition, int timeoutMs = 5000);
/// The source tree's resources folder.
QString sourceResourcesDirectory();
} // namespace ZDTestSupport
