#pragma once

#include "ZDPlatform.h"

/// The platform on freedesktop.org desktops (GNOME, KDE Plasma, Xfce and others): the colour
/// scheme from the settings portal or a GTK theme ending in ":dark", the fonts from Qt's font
/// database, and launching at login through an entry in the XDG autostart folder.
class ZDFreedesktopPlatform : public ZDPlatform
{
    Q_OBJECT
public:
    explicit ZDFreedesktopPlatform(QObject *parent = nullptr);
    ~ZDFreedesktopPlatform() override;

    /// When the desktop asks for dark windows and the platform palette is light, uses the
    /// Fusion style with a dark palette.
    void applyColorScheme() override;
    bool isDarkAppearance() const override;
    ZDFontCatalog fontCatalog() const override;

    bool launchesAtLogin() const override;
    bool setLaunchesAtLogin(bool launch, ZDError *error = nullptr) override;
    /// The autostart entry: "autostart/com.varnok.Zandrio.desktop" in $XDG_CONFIG_HOME.
    static QString autostartEntryPath();

    QString singleInstanceServerName() const override;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    bool m_dark = false;
};
