// The desktop program's start-up and shutdown. Start-up order: preferences (with the editor
// themes registered), one running program per session, the main window in its loading state,
// then the library and the highlighter on other threads; the window takes each as it arrives.
// At quit, changes not yet written are written before the process exits.

#include "ZDApplication.h"

#include "ZDAnalytics.h"
#include "ZDAppServices.h"
#include "ZDCoreServices.h"
#include "ZDDataCenter.h"
#include "ZDEditorTheme.h"
#include "ZDHighlighter.h"
#include "ZDLanguageRegistry.h"
#include "ZDLibraryLoader.h"
#include "ZDLogger.h"
#include "ZDMainWindow.h"
#include "ZDMulticastDelegateHandler.h"
#include "ZDPlatform.h"
#include "ZDResources.h"
#include "ZDShellAssembly.h"
#include "ZDSingleInstance.h"
#include "ZDUserDefaults.h"
#include "ZDWriteTimer.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QElapsedTimer>
#include <QThreadPool>
#include <QTimer>

#include <cstdio>
#include <memory>

int zdApplicationMain(int argc, char *argv[], const ZDApplicationHooks &hooks)
{
    QElapsedTimer sinceStart;
    sinceStart.start();
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Zandrio"));
    QApplication::setApplicationDisplayName(QStringLiteral("Zandrio"));
    QApplication::setApplicationVersion(ZDResources::applicationVersion());
    QApplication::setDesktopFileName(QStringLiteral("com.varnok.Zandrio"));

    QCommandLineParser parser;
    parser.setApplicationDescription(QApplication::translate("main", "A library of code snippets."));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption libraryOption(QStringLiteral("library"),
                                           QApplication::translate("main", "Open the library package at <path>."),
                                           QStringLiteral("path"));
    const QCommandLineOption readyOption(QStringLiteral("quit-when-ready"),
                                         QApplication::translate("main", "Print the start-up time once the library shows, and quit."));
    parser.addOption(libraryOption);
    parser.addOption(readyOption);
    for (const QCommandLineOption &option : hooks.extraOptions)
        parser.addOption(option);
    parser.addPositionalArgument(QStringLiteral("url"), QApplication::translate("main", "zandrio: links to open."));
    parser.process(app);

    // The platform outlives the preferences, which ask it whether the windows are dark.
    const std::unique_ptr<ZDPlatform> platform = ZDPlatform::createForDesktop();
    ZDPlatform::install(platform.get());
    ZDCoreServices services;
    ZDUserDefaults &defaults = services.defaults();
    ZDEditorTheme::registerWithDefaults(defaults);
    platform->installInto(defaults);
    ZDAppServices::installLanguageAlerts(services.languages());
    platform->applyColorScheme();

    ZDSingleInstance instance(platform->singleInstanceServerName());
    const bool quitWhenReady = parser.isSet(readyOption);
    if (!quitWhenReady && !hooks.separateInstance) {
        if (instance.sendToRunningInstance(parser.positionalArguments()))
            return 0;
        QString error;
        if (!instance.listen(&error))
            zdLog(ZDLogLevel::Warning, ZDLogDomain::General, QStringLiteral("Cannot listen for other starts: %1").arg(error));
    }
    defaults.setLaunchCount(defaults.launchCount() + 1);
    zdReportEvent(QStringLiteral("Launch"), {});

    ZDMulticastDelegateHandler &notifier = ZDMulticastDelegateHandler::globalHandler();
    ZDMainWindow window(defaults, notifier);
    ZDShellAssembly assembly(window, defaults, notifier);
    QObject::connect(&instance, &ZDSingleInstance::argumentsReceived, &window, [&](const QStringList &arguments) {
        window.showNormal();
        window.raise();
        window.activateWindow();
        assembly.handleArguments(arguments);
    });
    window.show();
    qint64 windowShownMs = -1; // when the event loop first runs, the window paints
    QTimer::singleShot(0, &window, [&] { windowShownMs = sinceStart.elapsed(); });

    if (hooks.beforeLoading)
        hooks.beforeLoading(parser);
    QString packagePath = parser.value(libraryOption);
    ZDError locationError;
    if (packagePath.isEmpty())
        packagePath = ZDDataCenter::defaultLocalPackagePath(&locationError);
    if (packagePath.isEmpty()) {
        window.setLibraryState(locationError.description() + QLatin1Char('\n') + locationError.recoverySuggestion());
        ZDAppServices::presentError(locationError);
    }

    ZDAlertOutdatedVersionResponder responder;
    std::unique_ptr<ZDDataCenter> center;
    std::unique_ptr<ZDHighlighter> highlighter;
    ZDLibraryLoader loader;
    QObject::connect(&loader, &ZDLibraryLoader::libraryLoaded, &window, [&](ZDDataCenter *loaded, qint64 ms) {
        center.reset(loaded);
        if (responder.closeRequested()) {
            QApplication::exit(0); // a newer program's library: leave it untouched
            return;
        }
        zdLog(ZDLogLevel::Info, ZDLogDomain::Library,
              QStringLiteral("Library loaded in %1 ms (%2 snippets)").arg(ms).arg(loaded->snippets().size()));
        assembly.setDataCenter(loaded);
        if (hooks.libraryReady)
            QTimer::singleShot(0, &window, [&, loaded] { hooks.libraryReady(parser, window, *loaded); });
        if (quitWhenReady) {
            // Ready means the list is filled and painted.
            QTimer::singleShot(0, &window, [&, loaded, ms] {
                window.repaint();
                std::printf("ready %lld ms (window shown %lld ms, library loaded in %lld ms, %lld snippets)\n",
                            static_cast<long long>(sinceStart.elapsed()), static_cast<long long>(windowShownMs),
                            static_cast<long long>(ms), static_cast<long long>(loaded->snippets().size()));
                std::fflush(stdout);
                QApplication::quit();
            });
        }
    });
    QObject::connect(&loader, &ZDLibraryLoader::highlighterReady, &window, [&](ZDHighlighter *made, qint64 ms) {
        highlighter.reset(made);
        ZDHighlighter::install(made);
        zdLog(ZDLogLevel::Info, ZDLogDomain::Editor, QStringLiteral("Highlighter ready in %1 ms").arg(ms));
        assembly.setHighlighter(made);
    });
    if (!packagePath.isEmpty()) {
        // The write tick's timer belongs to the main thread, where the store will live.
        auto *writeTimer = new ZDQtWriteTimer;
        loader.loadLibrary([&defaults, &responder, packagePath, writeTimer] {
            ZDDataCenter::Options options;
            options.writeTimer.reset(writeTimer);
            options.packagePath = packagePath;
            options.defaults = &defaults;
            options.outdatedVersionResponder = &responder;
            options.errorPresenter = &ZDAppServices::presentError;
            return new ZDDataCenter(std::move(options));
        });
    }
    if (!quitWhenReady)
        loader.startHighlighter([] { return new ZDHighlighter(); });
    if (!parser.positionalArguments().isEmpty())
        assembly.handleArguments(parser.positionalArguments());

    QObject::connect(&app, &QApplication::aboutToQuit, [&] {
        // Nothing written yet is lost: the editor's last typing goes to the store, and the
        // store's queue is waited for before the process ends.
        assembly.commitEdits();
        if (center && center->hasPendingChanges()) {
            center->enqueueWriteOperationIfNeeded();
            center->waitUntilAllOperationsAreFinished();
        }
        zdReportEvent(QStringLiteral("Terminate"), {});
    });

    const int status = app.exec();
    assembly.shutDown();
    loader.stop();
    if (center && ZDDataCenter::defaultCenter() == center.get())
        ZDDataCenter::install(nullptr);
    center.reset();
    QThreadPool::globalInstance()->waitForDone();
    highlighter.reset();
    return status;
}
