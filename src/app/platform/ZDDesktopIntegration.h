#pragma once

class ZDUserDefaults;
class ZDLanguageRegistry;

/// Connects the core's services to the desktop: the font database for the editor font, the
/// palette for the appearance, and modal alerts for the errors the core reports.
namespace ZDDesktopIntegration {
void install(ZDUserDefaults &defaults, ZDLanguageRegistry &languages);
bool isDarkPalette();
} // namespace ZDDesktopIntegration
