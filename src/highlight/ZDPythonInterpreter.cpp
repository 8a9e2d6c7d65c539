// Python.h first: it must see no Qt macros.
#define PY_SSIZE_T_CLEAN
#include <Python.h>

#include "ZDPythonInterpreter.h"

#include "ZDLogger.h"
#include "ZDPythonSpeedups.h"
#include "ZDSerialQueue.h"

#include <QHash>

#include <atomic>

namespace {
std::atomic<bool> s_interpreterAlive{false};

QString pythonErrorText()
{
    PyObject *type = nullptr, *value = nullptr, *traceback = nullptr;
    PyErr_Fetch(&type, &value, &traceback);
    QString text;
    if (value) {
        if (PyObject *str = PyObject_Str(value)) {
            if (const char *utf8 = PyUnicode_AsUTF8(str))
                text = QString::fromUtf8(utf8);
            Py_DECREF(str);
        }
    }
    Py_XDECREF(type);
    Py_XDECREF(value);
    Py_XDECREF(traceback);
    PyErr_Clear();
    return text;
}
} // namespace

struct ZDPythonInterpreter::State
{
    bool initialised = false;
    PyObject *module = nullptr;
    QHash<QString, PyObject *> callables;

    // A borrowed reference to the module's callable of this name, looked up once; null if none.
    PyObject *callable(const QString &name)
    {
        auto found = callables.constFind(name);
        if (found != callables.constEnd())
            return found.value();
        PyObject *object = module ? PyObject_GetAttrString(module, name.toUtf8().constData()) : nullptr;
        PyErr_Clear();
        if (object && !PyCallable_Check(object)) {
            Py_DECREF(object);
            object = nullptr;
        }
        if (module)
            callables.insert(name, object); // a miss is remembered as null
        return object;
    }
};

ZDPythonInterpreter::ZDPythonInterpreter(const QString &vendorsDirectory, const QString &moduleName,
                                         const QStringList &callableNames)
    : m_state(std::make_unique<State>()),
      m_queue(std::make_unique<ZDSerialQueue>(QStringLiteral("com.varnok.Zandrio.CoreHighlighter")))
{
    m_queue->async([this, vendorsDirectory, moduleName, callableNames] {
        setUp(vendorsDirectory, moduleName, callableNames);
    });
}

ZDPythonInterpreter::~ZDPythonInterpreter()
{
    m_queue->sync([this] { tearDown(); });
}

QStringList ZDPythonInterpreter::moduleSearchPaths(const QString &vendorsDirectory)
{
    QStringList paths{vendorsDirectory};
    paths += QStringLiteral(ZANDRIO_PYTHON_STANDARD_PATHS).split(QLatin1Char(':'), Qt::SkipEmptyParts);
    return paths;
}

void ZDPythonInterpreter::setUp(const QString &vendorsDirectory, const QString &moduleName,
                                const QStringList &callableNames)
{
    bool expected = false;
    if (!s_interpreterAlive.compare_exchange_strong(expected, true)) {
        zdLog(ZDLogLevel::Error, ZDLogDomain::Core,
              QStringLiteral("An interpreter is already running in this process"));
        return;
    }

    zdRegisterPythonSpeedups();
    PyConfig config;
    PyConfig_InitIsolatedConfig(&config);
    config.write_bytecode = 0; // never write caches into the resources folder
    config.site_import = 0;    // the search path below is complete
    config.install_signal_handlers = 0;
    config.module_search_paths_set = 1;
    PyStatus status = PyStatus_Ok();
    for (const QString &path : moduleSearchPaths(vendorsDirectory)) {
        const std::wstring wide = path.toStdWString();
        status = PyWideStringList_Append(&config.module_search_paths, wide.c_str());
        if (PyStatus_Exception(status))
            break;
    }
    if (!PyStatus_Exception(status))
        status = Py_InitializeFromConfig(&config);
    PyConfig_Clear(&config);
    if (PyStatus_Exception(status)) {
        zdLog(ZDLogLevel::Error, ZDLogDomain::Core,
              QStringLiteral("Cannot start the interpreter: %1")
                  .arg(QString::fromUtf8(status.err_msg ? status.err_msg : "")));
        s_interpreterAlive = false;
        return;
    }
    m_state->initialised = true;

    m_state->module = PyImport_ImportModule(moduleName.toUtf8().constData());
    if (!m_state->module) {
        zdLog(ZDLogLevel::Error, ZDLogDomain::Core,
              QStringLiteral("Cannot import %1: %2").arg(moduleName, pythonErrorText()));
        return;
    }
    for (const QString &name : callableNames) {
        PyObject *callable = PyObject_GetAttrString(m_state->module, name.toUtf8().constData());
        if (callable && PyCallable_Check(callable))
            m_state->callables.insert(name, callable);
        else
            Py_XDECREF(callable);
        PyErr_Clear();
    }
}

void ZDPythonInterpreter::tearDown()
{
    if (!m_state->initialised)
        return;
    for (PyObject *callable : std::as_const(m_state->callables))
        Py_XDECREF(callable);
    m_state->callables.clear();
    Py_XDECREF(m_state->module);
    m_state->module = nullptr;
    Py_FinalizeEx();
    m_state->initialised = false;
    s_interpreterAlive = false;
}

bool ZDPythonInterpreter::isModuleLoaded()
{
    bool loaded = false;
    m_queue->sync([&] { loaded = m_state->module != nullptr; });
    return loaded;
}

bool ZDPythonInterpreter::hasCallable(const QString &name)
{
    bool found = false;
    m_queue->sync([&] { found = m_state->callables.value(name) != nullptr; });
    return found;
}

namespace {
// Calls the callable with the arguments as str objects; returns a new reference or null (also for
// a missing callable), with the error indicator cleared. Lone surrogates travel as replacement
// characters, one unit each.
PyObject *callWithUtf8(PyObject *callable, const QList<QByteArray> &arguments)
{
    if (!callable)
        return nullptr;
    PyObject *tuple = PyTuple_New(arguments.size());
    if (!tuple)
        return nullptr;
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        PyObject *text = PyUnicode_DecodeUTF8(arguments[i].constData(), arguments[i].size(), "replace");
        if (!text) {
            Py_DECREF(tuple);
            PyErr_Clear();
            return nullptr;
        }
        PyTuple_SET_ITEM(tuple, i, text); // steals the reference
    }
    PyObject *result = PyObject_CallObject(callable, tuple);
    Py_DECREF(tuple);
    if (!result) {
        // The caller only sees "no result"; the reason is kept for detailed logs. The error
        // indicator must not stay set into the next call.
        zdLog(ZDLogLevel::Debug, ZDLogDomain::Core,
              QStringLiteral("Python call failed: %1").arg(pythonErrorText()));
    }
    return result;
}
} // namespace

std::optional<QByteArray> ZDPythonInterpreter::callForString(const QString &callable,
                                                             const QList<QByteArray> &arguments)
{
    std::optional<QByteArray> text;
    readString(callable, arguments,
               [&](const QByteArray &utf8) { text = QByteArray(utf8.constData(), utf8.size()); });
    return text;
}

bool ZDPythonInterpreter::readString(const QString &callable, const QList<QByteArray> &arguments,
                                     const std::function<void(const QByteArray &utf8)> &reader)
{
    Q_ASSERT(m_queue->isCurrentThread());
    PyObject *result = callWithUtf8(m_state->callable(callable), arguments);
    if (!result)
        return false;
    const char *utf8 = nullptr;
    Py_ssize_t size = 0;
    if (PyUnicode_Check(result)) {
        utf8 = PyUnicode_AsUTF8AndSize(result, &size);
        if (!utf8)
            PyErr_Clear();
    } else if (PyBytes_Check(result)) {
        utf8 = PyBytes_AS_STRING(result);
        size = PyBytes_GET_SIZE(result);
    }
    if (utf8)
        reader(QByteArray::fromRawData(utf8, qsizetype(size)));
    Py_DECREF(result);
    return utf8 != nullptr;
}

std::optional<qint64> ZDPythonInterpreter::callForInteger(const QString &callable,
                                                          const QList<QByteArray> &arguments)
{
    Q_ASSERT(m_queue->isCurrentThread());
    PyObject *result = callWithUtf8(m_state->callable(callable), arguments);
    if (!result)
        return std::nullopt;
    std::optional<qint64> value;
    if (PyLong_Check(result)) {
        const long long number = PyLong_AsLongLong(result);
        if (PyErr_Occurred())
            PyErr_Clear();
        else
            value = number;
    }
    Py_DECREF(result);
    return value;
}
