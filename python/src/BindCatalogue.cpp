#include "inspect/read/NamedCatalogue.h"
#include "python/src/Module.h"
#include "python/src/SharedCatalogue.h"
#include "scene/CatalogueJson.h"

namespace vrn::python {

using vor::velmo_sdk::impl::CatalogueError;
using vor::velmo_sdk::impl::readCatalogue;

namespace {

SharedCatalogue fromText(std::string_view text, const std::string& name) {
    try {
        return {std::make_shared<const vor::velmo_sdk::impl::Catalogue>(readCatalogue(text)), std::string(text)};
    } catch (const CatalogueError& error) {
        raise(PyExc_ValueError, name + ":" + std::to_string(error.position().line) + ":" +
                                    std::to_string(error.position().column) + ": " + error.what());
    }
}

SharedCatalogue fromFile(nb::handle path) {
    const nb::object text = imported("vrn._reading", "text_of_file")(path);
    return fromText(textOf(text), textOf(nb::str(path)));
}

} // namespace

void bindCatalogue(nb::module_& m) {
    nb::class_<SharedCatalogue>(m, "Catalogue",
                                "The node types of a host: which inputs and outputs its nodes have. Immutable.")
        .def_static("read", &fromFile, nb::arg("path"), nb::sig("def read(path: str | os.PathLike[str]) -> Catalogue"),
                    "Reads a catalogue from a JSON file. Raises OSError, and ValueError with the place of a mistake.")
        .def_static(
            "loads", [](nb::handle text) { return fromText(textOf(text), "<string>"); }, nb::arg("text"),
            nb::sig("def loads(text: str) -> Catalogue"),
            "Reads a catalogue from JSON. Raises ValueError with the place of a mistake.")
        .def_static(
            "builtin", [] { return fromText(inspect::builtinCatalogue, "builtin"); },
            "The node types that conversions use.")
        .def_prop_ro(
            "types",
            [](const SharedCatalogue& catalogue) {
                nb::list names;
                for (const std::string_view name : catalogue.types->typeNames())
                    names.append(str(name));
                return nb::tuple(names);
            },
            nb::sig("def types(self) -> tuple[str, ...]"), "The names of the node types, sorted.")
        .def("__getstate__", [](const SharedCatalogue& catalogue) { return str(catalogue.text); })
        .def("__setstate__",
             [](SharedCatalogue& catalogue, nb::handle text) {
                 new (&catalogue) SharedCatalogue(fromText(textOf(text), "pickled catalogue"));
             })
        .def("__len__", [](const SharedCatalogue& catalogue) { return catalogue.types->size(); })
        .def("__repr__", [](const SharedCatalogue& catalogue) {
            return "<vrn.Catalogue of " + std::to_string(catalogue.types->size()) + " types>";
        });
}

} // namespace vrn::python
