#include "ZDCoreServices.h"
#include "ZDDesktopIntegration.h"
#include "ZDLanguageRegistry.h"
#include "ZDMainWindow.h"
#include "ZDUserDefaults.h"

#include <QApplication>

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Zandrio"));
    QApplication::setApplicationDisplayName(QStringLiteral("Zandrio"));
    QApplication::setDesktopFileName(QStringLiteral("com.varnok.Zandrio"));

    ZDCoreServices services;
    ZDDesktopIntegration::install(services.defaults(), services.languages());
    services.defaults().setLaunchCount(services.defaults().launchCount() + 1);
    services.languages().availableLanguages(); // a broken table is reported before the window opens

    ZDMainWindow window;
    window.show();
    return app.exec();
}
