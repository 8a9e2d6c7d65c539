#pragma once

#include <QCommandLineOption>
#include <QList>

#include <functional>

class QCommandLineParser;
class ZDDataCenter;
class ZDMainWindow;

/// Ways into the program's start-up for programs that drive it (the scripted run).
struct ZDApplicationHooks
{
    /// More command-line options to accept.
    QList<QCommandLineOption> extraOptions;
    /// Runs before the library is opened (to prepare it).
    std::function<void(const QCommandLineParser &)> beforeLoading;
    /// Runs on the main thread once the window shows the library.
    std::function<void(const QCommandLineParser &, ZDMainWindow &, ZDDataCenter &)> libraryReady;
    /// Skips the single-instance hand-over (a driven program runs beside the user's).
    bool separateInstance = false;
};

/// The desktop program: parses the command line, starts up, runs the event loop and shuts
/// down, writing what the library has not yet written. Returns the exit status.
int zdApplicationMain(int argc, char *argv[], const ZDApplicationHooks &hooks = {});
