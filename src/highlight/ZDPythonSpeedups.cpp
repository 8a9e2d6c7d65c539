// Python.h first: it must see no Qt macros.
#define PY_SSIZE_T_CLEAN
#include <Python.h>

#include "ZDPythonSpeedups.h"

#include <charconv>
#include <cstring>
#include <string>

namespace {
void appendNumber(std::string *out, long long value)
{
    char digits[24];
    const auto end = std::to_chars(digits, digits + sizeof digits, value).ptr;
    out->append(digits, size_t(end - digits));
}

// The token's length in the units the editor counts; -1 with an exception set on failure.
Py_ssize_t tokenLength(PyObject *value, bool utf16)
{
    if (!PyUnicode_Check(value)) {
        if (utf16) {
            PyErr_SetString(PyExc_TypeError, "token text must be str");
            return -1;
        }
        return PyObject_Size(value);
    }
    Py_ssize_t length = PyUnicode_GET_LENGTH(value);
    if (utf16 && PyUnicode_KIND(value) == PyUnicode_4BYTE_KIND) {
        const Py_UCS4 *data = PyUnicode_4BYTE_DATA(value);
        const Py_ssize_t count = length;
        for (Py_ssize_t i = 0; i < count; ++i)
            length += data[i] > 0xFFFF;
    }
    return length;
}

// "Token.Keyword'}" as UTF-8 bytes, one per token type, kept in `cache`; borrowed reference.
PyObject *classSuffix(PyObject *cache, PyObject *kind)
{
    PyObject *suffix = PyDict_GetItemWithError(cache, kind);
    if (suffix || PyErr_Occurred())
        return suffix;
    PyObject *name = PyObject_Str(kind);
    if (!name)
        return nullptr;
    PyObject *bytes = PyUnicode_AsEncodedString(name, "utf-8", "surrogatepass");
    Py_DECREF(name);
    if (!bytes)
        return nullptr;
    PyBytes_ConcatAndDel(&bytes, PyBytes_FromString("'}"));
    if (!bytes)
        return nullptr;
    const int stored = PyDict_SetItem(cache, kind, bytes);
    Py_DECREF(bytes); // the cache holds it
    return stored == 0 ? bytes : nullptr;
}

bool appendRule(std::string *out, PyObject *cache, PyObject *item, bool utf16, long long *begin)
{
    PyObject *triple = PySequence_Fast(item, "a token must be an (index, type, text) triple");
    if (!triple)
        return false;
    bool ok = false;
    if (PySequence_Fast_GET_SIZE(triple) != 3) {
        PyErr_SetString(PyExc_ValueError, "a token must be an (index, type, text) triple");
    } else {
        PyObject *kind = PySequence_Fast_GET_ITEM(triple, 1);
        const Py_ssize_t length = tokenLength(PySequence_Fast_GET_ITEM(triple, 2), utf16);
        if (length == 0) {
            ok = true;
        } else if (length > 0) {
            if (PyObject *suffix = classSuffix(cache, kind)) {
                if (out->size() > 1)
                    out->append(", ");
                out->append("{'begin': ");
                appendNumber(out, *begin);
                out->append(", 'length': ");
                appendNumber(out, length);
                out->append(", 'class': '");
                out->append(PyBytes_AS_STRING(suffix), size_t(PyBytes_GET_SIZE(suffix)));
                *begin += length;
                ok = true;
            }
        }
    }
    Py_DECREF(triple);
    return ok;
}

PyObject *ruleList(PyObject *, PyObject *const *args, Py_ssize_t nargs)
{
    if (nargs != 2) {
        PyErr_SetString(PyExc_TypeError, "rule_list(tokens, utf16) takes two arguments");
        return nullptr;
    }
    const int utf16 = PyObject_IsTrue(args[1]);
    if (utf16 < 0)
        return nullptr;
    PyObject *iterator = PyObject_GetIter(args[0]);
    if (!iterator)
        return nullptr;
    PyObject *cache = PyDict_New();
    if (!cache) {
        Py_DECREF(iterator);
        return nullptr;
    }
    // One buffer for the thread's calls: fresh megabyte-sized blocks on every call cost more in
    // page faults than the writing itself. The tokens come from Python code, which could call
    // here again; such a nested call writes into a buffer of its own.
    static thread_local std::string shared;
    static thread_local bool sharedInUse = false;
    std::string own;
    const bool useShared = !sharedInUse;
    std::string &out = useShared ? shared : own;
    sharedInUse = true;
    out.assign(1, '[');
    long long begin = 0;
    bool ok = true;
    while (PyObject *item = PyIter_Next(iterator)) {
        ok = appendRule(&out, cache, item, utf16 != 0, &begin);
        Py_DECREF(item);
        if (!ok)
            break;
    }
    Py_DECREF(iterator);
    Py_DECREF(cache);
    PyObject *text = nullptr;
    if (ok && !PyErr_Occurred()) {
        out.push_back(']');
        text = PyUnicode_DecodeUTF8(out.data(), Py_ssize_t(out.size()), "surrogatepass");
    }
    if (useShared) {
        if (out.capacity() > (size_t(16) << 20))
            std::string().swap(out);
        sharedInUse = false;
    }
    return text;
}

PyMethodDef s_methods[] = {
    {"rule_list", reinterpret_cast<PyCFunction>(reinterpret_cast<void (*)()>(ruleList)), METH_FASTCALL,
     "rule_list(tokens, utf16) -> the highlight rule list literal of the tokens"},
    {nullptr, nullptr, 0, nullptr}};

PyModuleDef s_module = {PyModuleDef_HEAD_INIT,
                        "_zdspeedups",
                        "The highlighter's speed-ups.",
                        -1,
                        s_methods,
                        nullptr,
                        nullptr,
                        nullptr,
                        nullptr};

PyObject *initModule()
{
    return PyModule_Create(&s_module);
}
} // namespace

void zdRegisterPythonSpeedups()
{
    // The table of built-in modules outlives each interpreter; an interpreter started again must
    // find the module without the table growing on every start.
    for (const _inittab *entry = PyImport_Inittab; entry && entry->name; ++entry) {
        if (std::strcmp(entry->name, "_zdspeedups") == 0)
            return;
    }
    PyImport_AppendInittab("_zdspeedups", &initModule);
}
