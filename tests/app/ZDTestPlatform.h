#pragma once

#include "ZDError.h"
#include "ZDPlatform.h"

/// A platform for tests: keeps in memory what the program sets, and fails where a test says so.
class ZDTestPlatform : public ZDPlatform
{
public:
    bool dark = false;
    bool launches = false;
    /// When set, setLaunchesAtLogin fails with this error and changes nothing.
    ZDError autostartFailure;
    QString serverName;

    void setDark(bool value)
    {
        if (value == dark)
            return;
        dark = value;
        Q_EMIT darkAppearanceChanged(value);
    }

    void applyColorScheme() override {}
    bool isDarkAppearance() const override { return dark; }
    ZDFontCatalog fontCatalog() const override { return {}; }
    bool launchesAtLogin() const override { return launches; }
    bool setLaunchesAtLogin(bool launch, ZDError *error = nullptr) override
    {
        if (autostartFailure)
            return ZDError::fail(error, autostartFailure);
        launches = launch;
        return true;
    }
    QString singleInstanceServerName() const override { return serverName; }
};
