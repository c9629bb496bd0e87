#include "python/src/Memory.h"

#include <nanobind/ndarray.h>

#include <string>

namespace vrn::python {

Memory memoryOf(nb::handle data) {
    if (PyUnicode_Check(data.ptr())) {
        Py_ssize_t size = 0;
        if (const char* utf8 = PyUnicode_AsUTF8AndSize(data.ptr(), &size)) // the object keeps it
            return {{utf8, static_cast<std::size_t>(size)}, keeperOf(nb::borrow(data))};
        PyErr_Clear();
        const auto text = std::make_shared<const std::string>(textOf(data));
        return {*text, text};
    }
    if (PyBytes_Check(data.ptr()))
        return {{PyBytes_AsString(data.ptr()), static_cast<std::size_t>(PyBytes_Size(data.ptr()))},
                keeperOf(nb::borrow(data))};
    using Bytes = nb::ndarray<nb::ro, nb::c_contig, nb::device::cpu, nb::ndim<1>>;
    Bytes bytes;
    if (!nb::try_cast(data, bytes) || bytes.itemsize() != 1)
        raise(PyExc_TypeError,
              "a text is a str or an object with a buffer of bytes, not a " +
                  textOf(nb::handle(reinterpret_cast<PyObject*>(Py_TYPE(data.ptr()))).attr("__name__")));
    const std::string_view view(static_cast<const char*>(bytes.data()), bytes.nbytes());
    return {view, keeperOf(std::move(bytes))};
}

} // namespace vrn::python
