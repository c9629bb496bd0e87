#include "python/src/Python.h"

#include <cerrno>
#include <cstring>
#include <map>
#include <utility>

namespace vrn::python {

nb::str str(std::string_view text) {
    PyObject* made = PyUnicode_DecodeUTF8(text.data(), static_cast<Py_ssize_t>(text.size()), "surrogateescape");
    if (!made)
        throw nb::python_error();
    return nb::steal<nb::str>(made);
}

std::string textOf(nb::handle string) {
    Py_ssize_t size = 0;
    if (const char* utf8 = PyUnicode_AsUTF8AndSize(string.ptr(), &size))
        return {utf8, static_cast<std::size_t>(size)};
    PyErr_Clear();
    if (!PyUnicode_Check(string.ptr()))
        raise(PyExc_TypeError,
              "a str is needed, not " +
                  textOf(nb::handle(reinterpret_cast<PyObject*>(Py_TYPE(string.ptr()))).attr("__name__")));
    // It has lone surrogates.
    const nb::object bytes = nb::steal(PyUnicode_AsEncodedString(string.ptr(), "utf-8", "surrogateescape"));
    if (!bytes.is_valid())
        throw nb::python_error();
    return {PyBytes_AsString(bytes.ptr()), static_cast<std::size_t>(PyBytes_Size(bytes.ptr()))};
}

std::optional<std::string> nameIn(nb::handle key) {
    try {
        return PyUnicode_Check(key.ptr()) ? std::optional(textOf(key)) : std::nullopt;
    } catch (nb::python_error& error) {
        if (!error.matches(PyExc_UnicodeEncodeError))
            throw;
        return std::nullopt;
    }
}

vor::String sceneTextOf(nb::handle string) {
    const std::string text = textOf(string);
    if (text.find('\0') != std::string::npos)
        raise(PyExc_ValueError, "a string of a scene cannot contain NUL");
    return std::string_view(text);
}

void raise(PyObject* type, const std::string& message) {
    PyErr_SetObject(type, str(message).ptr());
    throw nb::python_error();
}

void raiseOwn(const char* type, const std::string& message) { raise(imported("vrn._errors", type).ptr(), message); }

void raiseOsError(int error, nb::handle path) {
    errno = error;
    PyErr_SetFromErrnoWithFilenameObject(PyExc_OSError, path.ptr());
    throw nb::python_error();
}

void raiseOsError(std::string_view reason, nb::handle path) {
    constexpr int last = 133; // EHWPOISON
    for (int number = 1; number <= last; ++number)
        if (const char* text = strerrordesc_np(number); text && reason == text)
            raiseOsError(number, path);
    PyErr_SetObject(PyExc_OSError, nb::make_tuple(EIO, str(reason), path).ptr());
    throw nb::python_error();
}

Path pathOf(nb::handle path) {
    nb::object name = imported("os", "fspath")(path);
    const nb::object encoded = imported("os", "fsencode")(name);
    std::string bytes(PyBytes_AsString(encoded.ptr()), static_cast<std::size_t>(PyBytes_Size(encoded.ptr())));
    if (bytes.find('\0') != std::string::npos)
        raise(PyExc_ValueError, "a path cannot contain NUL");
    return {std::move(name), std::move(bytes)};
}

std::string_view nameOfFile(const std::string& path) { return path == "-" ? std::string_view("./-") : path; }

// The objects are never released: the interpreter may be gone before static destructors run.
nb::handle imported(const char* module, const char* name) {
    static auto& kept = *new std::map<std::pair<std::string_view, std::string_view>, nb::handle>();
    nb::handle& found = kept[{module, name}];
    if (!found.is_valid())
        found = nb::object(nb::module_::import_(module).attr(name)).release();
    return found;
}

} // namespace vrn::python
