// What all mappings of the module have in common.
#pragma once

#include "python/src/Python.h"
#include "scene/core/SimilarNames.h"

namespace vrn::python {

// Raises the KeyError of a missing name, with names that are similar to it.
template <class Names> [[noreturn]] void raiseMissing(std::string_view name, const Names& names) {
    vor::SimilarNames similar(name);
    for (const auto& candidate : names)
        similar.consider(candidate);
    const std::string question = similar.list("'");
    const nb::str shown = str(name);
    raise(PyExc_KeyError, textOf(nb::repr(shown)) + (question.empty() ? "" : " (did you mean " + question + "?)"));
}

// The classes of collections.abc. CPython loads this module when it starts; the package that gives it a public name
// would double the time that importing ours takes.
inline constexpr char abstractClasses[] = "_collections_abc";

// Adds keys(), values() and items() to a class with `__getitem__`, `__iter__`, `__len__` and `__contains__`. The
// annotation of its values is `value`.
template <class Type> void defineMapping(Type& type, const std::string& value) {
    imported(abstractClasses, "Mapping").attr("register")(type);
    const auto view = [&](const char* name, const char* abc, const std::string& of, const char* what) {
        const std::string signature = std::string("def ") + name + "(self) -> collections.abc." + abc + "[" + of + "]";
        type.def(
            name, [abc](nb::handle self) { return imported(abstractClasses, abc)(self); }, nb::sig(signature.c_str()),
            what);
    };
    view("keys", "KeysView", "str", "The names, in order.");
    view("values", "ValuesView", value, "What the names stand for, in order.");
    view("items", "ItemsView", "str, " + value, "The names with what they stand for, in order.");
}

// Adds get(), with a default, to such a class.
template <class Type> void defineGet(Type& type, const std::string& value) {
    type.def(
        "get",
        [](nb::handle self, nb::handle name, nb::handle missing) {
            const int contains = PySequence_Contains(self.ptr(), name.ptr());
            if (contains < 0)
                throw nb::python_error();
            return contains ? nb::object(self[name]) : nb::borrow(missing);
        },
        nb::arg("name").none(), nb::arg("default").none() = nb::none(),
        nb::sig(("def get(self, name: str, default: typing.Any = None, /) -> " + value + " | typing.Any").c_str()),
        "What the name stands for, or the default.");
}

} // namespace vrn::python
