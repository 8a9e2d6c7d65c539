#include "ZDPlatform.h"

#include "ZDFreedesktopPlatform.h"
#include "ZDUserDefaults.h"

namespace {
ZDPlatform *installedPlatform = nullptr;
}

ZDPlatform::ZDPlatform(QObject *parent) : QObject(parent) {}

ZDPlatform::~ZDPlatform()
{
    if (installedPlatform == this)
        installedPlatform = nullptr;
}

std::unique_ptr<ZDPlatform> ZDPlatform::createForDesktop()
{
    // Every Linux desktop the program runs on follows the freedesktop.org conventions (the
    // settings portal, XDG autostart); a desktop that needs more gets its implementation here.
    return std::make_unique<ZDFreedesktopPlatform>();
}

ZDPlatform *ZDPlatform::shared()
{
    return installedPlatform;
}

void ZDPlatform::install(ZDPlatform *platform)
{
    installedPlatform = platform;
}

void ZDPlatform::installInto(ZDUserDefaults &defaults)
{
    defaults.setFontCatalog(fontCatalog());
    defaults.setDarkAppearanceProvider([this] { return isDarkAppearance(); });
}
