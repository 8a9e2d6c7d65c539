#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <optional>

class ZDSerialQueue;

/// The embedded CPython interpreter and the one thread that owns it.
///
/// The worker thread "com.varnok.Zandrio.CoreHighlighter" initialises the interpreter in the
/// isolated configuration, with the module search path set to the given vendor folder first and
/// then the interpreter's standard paths, imports the support module and looks up its callables.
/// Every call runs on that thread, one at a time; the interpreter is finalised there when this
/// object is destroyed. Only one interpreter can exist in a process at a time: a second instance
/// created while one is alive stays unloaded.
class ZDPythonInterpreter
{
public:
    ZDPythonInterpreter(const QString &vendorsDirectory, const QString &moduleName,
                        const QStringList &callableNames);
    ~ZDPythonInterpreter();
    ZDPythonInterpreter(const ZDPythonInterpreter &) = delete;
    ZDPythonInterpreter &operator=(const ZDPythonInterpreter &) = delete;

    /// The queue that owns the interpreter. Work that calls into Python runs here.
    ZDSerialQueue &queue() { return *m_queue; }

    /// True when the support module was imported. Waits for the set-up to finish.
    bool isModuleLoaded();
    /// True when the module has a callable of this name. Waits for the set-up to finish.
    bool hasCallable(const QString &name);

    /// The module search path the interpreter was started with.
    static QStringList moduleSearchPaths(const QString &vendorsDirectory);

    // The calls below run only on queue(): each converts the UTF-8 arguments to str, calls the
    // callable with them as positional arguments, and converts the result. A name that was not
    // looked up at set-up is looked up in the module on its first call. A missing callable, a
    // raised exception or a result of another type gives no value.
    std::optional<QByteArray> callForString(const QString &callable, const QList<QByteArray> &arguments);
    /// The same call, but the result's UTF-8 goes to `reader` in place, without a copy; the bytes
    /// live only during that call. False (and no call of `reader`) when there is no result.
    bool readString(const QString &callable, const QList<QByteArray> &arguments,
                    const std::function<void(const QByteArray &utf8)> &reader);
    std::optional<qint64> callForInteger(const QString &callable, const QList<QByteArray> &arguments);

private:
    struct State;
    void setUp(const QString &vendorsDirectory, const QString &moduleName, const QStringList &callableNames);
    void tearDown();

    std::unique_ptr<State> m_state; // touched only on the queue
    std::unique_ptr<ZDSerialQueue> m_queue;
};
