#pragma once

#include <QString>

/// Where the application's resources (the language table, the interpreter's support module,
/// themes, styles) are found: "share/zandrio" beside the installed program, else the source
/// tree's "resources" folder the program was built from.
namespace ZDResources {
QString directory();
QString path(const QString &relativePath);
/// For tests and tools that ship their own resources.
void setDirectory(const QString &directory);
/// The program's version, "major.minor.patch".
QString applicationVersion();
} // namespace ZDResources
