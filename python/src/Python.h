// What all parts of the module use of nanobind, and text and errors between the two languages.
#pragma once

#include "scene/core/String.h"

#include <nanobind/nanobind.h>
#include <nanobind/stl/optional.h>
#include <nanobind/stl/shared_ptr.h>
#include <nanobind/stl/string.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace vrn::python {

namespace nb = nanobind;

// A Python string. Bytes that are not UTF-8 become lone surrogates (PEP 383), which textOf() turns back.
[[nodiscard]] nb::str str(std::string_view text);

// The bytes of a Python string, as UTF-8. Raises TypeError for other objects, and UnicodeEncodeError for surrogates
// that stand for no byte.
[[nodiscard]] std::string textOf(nb::handle string);

// The same of a key that may be anything; nothing for keys that no name can equal.
[[nodiscard]] std::optional<std::string> nameIn(nb::handle key);

// The same as a String of the library, and without NUL, which ends a string in the scene. Raises ValueError for one.
[[nodiscard]] vor::String sceneTextOf(nb::handle string);

// Raises an exception of Python's: a builtin type, or one of vrn._errors by its name.
[[noreturn]] void raise(PyObject* type, const std::string& message);
[[noreturn]] void raiseOwn(const char* type, const std::string& message);

// Raises OSError, or what it becomes for this errno, with the name of the file. The second form knows the errno by the
// description that the library gives; other reasons are EIO.
[[noreturn]] void raiseOsError(int error, nb::handle path);
[[noreturn]] void raiseOsError(std::string_view reason, nb::handle path);

// A path as the bytes of the file system, and what exceptions call it: a str, bytes or an object with `__fspath__`.
// Raises TypeError, and ValueError for one with NUL.
struct Path {
    nb::object name;
    std::string bytes;
};
[[nodiscard]] Path pathOf(nb::handle path);

// The path as the library takes it, to which `-` alone is standard input. Valid as long as the path.
[[nodiscard]] std::string_view nameOfFile(const std::string& path);

// Keeps a Python object, or what holds one, alive for the library. Any thread may release it, with or without the GIL;
// nothing is left to release once the interpreter has ended.
template <class Kept> [[nodiscard]] std::shared_ptr<const void> keeperOf(Kept kept) {
    return {new Kept(std::move(kept)), [](const Kept* object) {
                if (!Py_IsInitialized())
                    return;
                const nb::gil_scoped_acquire held;
                delete object;
            }};
}

// A class or function of one of the modules of the package. Keeps it for the life of the process.
[[nodiscard]] nb::handle imported(const char* module, const char* name);

} // namespace vrn::python
