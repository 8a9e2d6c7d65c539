#include "ZDOutdatedVersionResponder.h"

QString ZDOutdatedVersionResponder::message(const QString &packageVersion, const QString &applicationVersion)
{
    return QStringLiteral(
               "The Zandrio Library you are loading was created using a newer version (%1), which is "
               "not compatible with your current version (%2). Continue using this outdated version "
               "will result in unexpected data loss. Please update your app.")
        .arg(packageVersion, applicationVersion);
}
