#include "python/src/Module.h"
#include "python/src/References.h"

namespace vrn::python {

void raiseRemoved(const char* what) {
    raiseOwn("RemovedError", std::string("this ") + what + " was removed from its scene");
}

void bindOutput(nb::module_& m) {
    nb::class_<OutputReference>(m, "Output",
                                "A port of a node that inputs can be connected to. It has no value.\n\nTwo are equal "
                                "if they are the same output.")
        .def_prop_ro(
            "name", [](const OutputReference& output) { return str(output.read().key()); }, "The name.")
        .def_prop_ro(
            "label", [](const OutputReference& output) { return str(output.read().label()); }, "`node.output`.")
        .def_prop_ro(
            "node", [](const OutputReference& output) { return NodeReference(output.box(), output.read().node()); },
            "The node that it belongs to.")
        .def_prop_ro("is_attached", &OutputReference::isAttached, "Whether it is still part of its scene.")
        .def(
            "__eq__",
            [](const OutputReference& a, nb::handle b) {
                return nb::isinstance<OutputReference>(b) && a == nb::cast<const OutputReference&>(b);
            },
            nb::arg().none())
        .def("__hash__", [](const OutputReference& output) { return std::hash<const void*>()(output.address()); })
        .def("__repr__", [](const OutputReference& output) {
            return output.isAttached() ? str("<vrn.Output " + std::string(output.read().label().view()) + ">")
                                       : str("<vrn.Output, removed>");
        });
}

} // namespace vrn::python
