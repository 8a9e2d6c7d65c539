#include "ZDFreedesktopPlatform.h"

#include "ZDError.h"
#include "ZDSingleInstance.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusReply>
#include <QDBusVariant>
#include <QDir>
#include <QFileInfo>
#include <QFontDatabase>
#include <QPalette>
#include <QSaveFile>
#include <QStandardPaths>
#include <QStyleFactory>

namespace {
bool isDarkPalette(const QPalette &palette)
{
    return palette.color(QPalette::Window).lightness() < palette.color(QPalette::WindowText).lightness();
}

/// 0 no preference, 1 dark, 2 light, as the desktop portal says; -1 when it cannot be asked.
int portalColorScheme()
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return -1;
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.portal.Desktop"), QStringLiteral("/org/freedesktop/portal/desktop"),
        QStringLiteral("org.freedesktop.portal.Settings"), QStringLiteral("Read"));
    call << QStringLiteral("org.freedesktop.appearance") << QStringLiteral("color-scheme");
    call.setAutoStartService(false); // never wait for a portal to start
    const QDBusReply<QVariant> reply = bus.call(call, QDBus::Block, 250);
    if (!reply.isValid())
        return -1;
    QVariant value = reply.value();
    while (value.canConvert<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    return value.toInt();
}

QPalette darkPalette()
{
    QPalette dark;
    dark.setColor(QPalette::Window, QColor(0x2B, 0x2B, 0x2E));
    dark.setColor(QPalette::WindowText, QColor(0xE6, 0xE6, 0xE6));
    dark.setColor(QPalette::Base, QColor(0x1E, 0x1E, 0x21));
    dark.setColor(QPalette::AlternateBase, QColor(0x26, 0x26, 0x29));
    dark.setColor(QPalette::Text, QColor(0xE6, 0xE6, 0xE6));
    dark.setColor(QPalette::PlaceholderText, QColor(0x8A, 0x8A, 0x90));
    dark.setColor(QPalette::Button, QColor(0x35, 0x35, 0x39));
    dark.setColor(QPalette::ButtonText, QColor(0xE6, 0xE6, 0xE6));
    dark.setColor(QPalette::ToolTipBase, QColor(0x35, 0x35, 0x39));
    dark.setColor(QPalette::ToolTipText, QColor(0xE6, 0xE6, 0xE6));
    dark.setColor(QPalette::Highlight, QColor(0x2F, 0x6F, 0xD6));
    dark.setColor(QPalette::HighlightedText, Qt::white);
    dark.setColor(QPalette::Link, QColor(0x6C, 0xA8, 0xFF));
    dark.setColor(QPalette::Mid, QColor(0x44, 0x44, 0x48));
    dark.setColor(QPalette::Dark, QColor(0x18, 0x18, 0x1A));
    dark.setColor(QPalette::Disabled, QPalette::Text, QColor(0x70, 0x70, 0x75));
    dark.setColor(QPalette::Disabled, QPalette::WindowText, QColor(0x70, 0x70, 0x75));
    dark.setColor(QPalette::Disabled, QPalette::ButtonText, QColor(0x70, 0x70, 0x75));
    return dark;
}

ZDError autostartError(bool launch, const QString &path, const QString &reason)
{
    return ZDError(0,
                   launch ? QStringLiteral("Zandrio cannot be set to launch at login.")
                          : QStringLiteral("Zandrio cannot stop launching at login."),
                   QStringLiteral("Check that your configuration folder can be written to."), reason)
        .withInformation(QStringLiteral("Path"), path);
}
} // namespace

ZDFreedesktopPlatform::ZDFreedesktopPlatform(QObject *parent) : ZDPlatform(parent)
{
    // The palette changes when the style or the desktop's theme does; the application object
    // hears of it first.
    if (qApp) {
        m_dark = isDarkAppearance();
        qApp->installEventFilter(this);
    }
}

ZDFreedesktopPlatform::~ZDFreedesktopPlatform() = default;

bool ZDFreedesktopPlatform::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == qApp && event->type() == QEvent::ApplicationPaletteChange) {
        const bool dark = isDarkAppearance();
        if (dark != m_dark) {
            m_dark = dark;
            Q_EMIT darkAppearanceChanged(dark);
        }
    }
    return ZDPlatform::eventFilter(watched, event);
}

void ZDFreedesktopPlatform::applyColorScheme()
{
    const QString gtkTheme = qEnvironmentVariable("GTK_THEME");
    const int scheme = portalColorScheme();
    const bool wantsDark = scheme == 1 || (scheme <= 0 && gtkTheme.endsWith(QStringLiteral(":dark")));
    if (!wantsDark || isDarkAppearance())
        return;
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    QApplication::setPalette(darkPalette());
}

bool ZDFreedesktopPlatform::isDarkAppearance() const
{
    return isDarkPalette(QApplication::palette());
}

ZDFontCatalog ZDFreedesktopPlatform::fontCatalog() const
{
    ZDFontCatalog catalog;
    catalog.fontExists = [](const QString &family) {
        return QFontDatabase::families().contains(family, Qt::CaseInsensitive);
    };
    catalog.systemFixedFont = [] {
        const QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
        return ZDFontDescriptor{font.family(), 12.0};
    };
    return catalog;
}

QString ZDFreedesktopPlatform::autostartEntryPath()
{
    return QDir(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation))
        .filePath(QStringLiteral("autostart/com.varnok.Zandrio.desktop"));
}

bool ZDFreedesktopPlatform::launchesAtLogin() const
{
    return QFileInfo::exists(autostartEntryPath());
}

bool ZDFreedesktopPlatform::setLaunchesAtLogin(bool launch, ZDError *error)
{
    const QString path = autostartEntryPath();
    if (!launch) {
        QFile entry(path);
        if (!entry.exists() || entry.remove())
            return true;
        return ZDError::fail(error, autostartError(launch, path, entry.errorString()));
    }
    if (!QDir().mkpath(QFileInfo(path).absolutePath()))
        return ZDError::fail(
            error, autostartError(launch, path, QStringLiteral("Cannot make the autostart folder")));
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return ZDError::fail(error, autostartError(launch, path, file.errorString()));
    file.write("[Desktop Entry]\nType=Application\nName=Zandrio\nExec=zandrio\nIcon=com.varnok.Zandrio\n"
               "X-GNOME-Autostart-enabled=true\n");
    if (!file.commit())
        return ZDError::fail(error, autostartError(launch, path, file.errorString()));
    return true;
}

QString ZDFreedesktopPlatform::singleInstanceServerName() const
{
    return ZDSingleInstance::defaultServerName();
}
