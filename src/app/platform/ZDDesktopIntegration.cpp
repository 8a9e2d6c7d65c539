#include "ZDDesktopIntegration.h"

#include "ZDLanguageRegistry.h"
#include "ZDUserDefaults.h"

#include <QApplication>
#include <QFontDatabase>
#include <QMessageBox>
#include <QPalette>
#include <QStyleHints>

namespace ZDDesktopIntegration {

bool isDarkPalette()
{
    const QPalette palette = QApplication::palette();
    return palette.color(QPalette::Window).lightness() < palette.color(QPalette::WindowText).lightness();
}

void install(ZDUserDefaults &defaults, ZDLanguageRegistry &languages)
{
    ZDFontCatalog catalog;
    catalog.fontExists = [](const QString &family) {
        return QFontDatabase::families().contains(family, Qt::CaseInsensitive);
    };
    catalog.systemFixedFont = [] {
        const QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
        return ZDFontDescriptor{font.family(), 12.0};
    };
    defaults.setFontCatalog(catalog);
    defaults.setDarkAppearanceProvider(&isDarkPalette);
    languages.setErrorPresenter([](const ZDError &error) {
        QMessageBox box(QMessageBox::Critical, QStringLiteral("Zandrio"), error.description());
        box.setInformativeText(error.recoverySuggestion());
        box.setDetailedText(error.toString());
        box.exec();
    });
}

} // namespace ZDDesktopIntegration
