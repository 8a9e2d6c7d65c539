#pragma once

#include "ZDFontDescriptor.h"

#include <QObject>
#include <QString>

#include <memory>

class ZDError;
class ZDUserDefaults;

/// What differs between desktops, behind one small interface: the colour scheme, the fonts,
/// launching at login, and where the one running program of a session listens. The tray icon
/// and global hot keys belong here too when the program has them.
///
/// The program creates the implementation for the running desktop at start-up and installs it;
/// `shared()` returns that one. Tests install a ZDTestPlatform of their own.
class ZDPlatform : public QObject
{
    Q_OBJECT
public:
    ~ZDPlatform() override;

    /// The implementation for the desktop the program runs on.
    static std::unique_ptr<ZDPlatform> createForDesktop();
    /// The installed platform, or null before start-up installed one.
    static ZDPlatform *shared();
    /// Installs `platform` (not owned) as the shared one; null uninstalls.
    static void install(ZDPlatform *platform);

    /// Makes the application's palette follow the desktop's colour scheme. Called once, after
    /// the application object exists and before any window shows.
    virtual void applyColorScheme() = 0;
    /// True when the application's windows are dark now.
    virtual bool isDarkAppearance() const = 0;
    /// The fonts the desktop has, and its fixed-pitch font.
    virtual ZDFontCatalog fontCatalog() const = 0;

    /// True when the program is set to start when the user logs in.
    virtual bool launchesAtLogin() const = 0;
    /// Sets the program to start at login or not; false with `error` filled when that failed.
    virtual bool setLaunchesAtLogin(bool launch, ZDError *error = nullptr) = 0;

    /// The local socket name under which the session's running program listens.
    virtual QString singleInstanceServerName() const = 0;

    /// Installs the fonts and the dark-appearance question into `defaults`, which the effective
    /// editor theme and font follow. The platform must outlive `defaults`' use of them.
    void installInto(ZDUserDefaults &defaults);

Q_SIGNALS:
    /// The application's windows turned dark or light.
    void darkAppearanceChanged(bool dark);

protected:
    explicit ZDPlatform(QObject *parent = nullptr);
};
