#include "python/src/Assignment.h"
#include "python/src/Buffers.h"
#include "python/src/Mapping.h"
#include "python/src/Module.h"
#include "python/src/NamedViews.h"
#include "python/src/Names.h"
#include "python/src/Values.h"
#include "scene/core/TextEncoding.h"

namespace vrn::python {

namespace {

Input& inputNamed(const Node& node, nb::handle name) {
    const std::string text = textOf(name);
    if (Input* input = node.input(std::string_view(text)))
        return *input;
    raiseMissing(text, keysOf(node.inputs()));
}

nb::object getItem(const NodeReference& node, nb::handle name) {
    return valueOf(node.box(), inputNamed(node.read(), name));
}

void setItem(const NodeReference& node, nb::handle name, nb::handle value) {
    if (Input* input = node.change().input(sceneTextOf(name)))
        assign(InputReference(node.box(), input), value);
    else
        (void)addInput(node, name, {}, value);
}

void deleteItem(const NodeReference& reference, nb::handle name) {
    const std::string text = textOf(name);
    Node& node = reference.change();
    if (!node.removeInput(std::string_view(text)))
        raiseMissing(text, keysOf(node.inputs()));
}

InputReference add(const NodeReference& node, nb::handle name, nb::handle type, nb::handle value) {
    return addInput(node, name, inputTypeNamed(textOf(type)), value);
}

void rename(const NodeReference& reference, nb::handle name) {
    const String newName = identifierOf(name);
    Node& node = reference.change();
    if (!node.scene()->renameNode(node.key(), newName))
        raise(PyExc_ValueError, "the scene has a node '" + textOf(name) + "' already");
}

std::string description(const NodeReference& reference) {
    if (!reference.isAttached())
        return "<vrn.Node, removed>";
    const Node& node = reference.read();
    const std::size_t count = node.inputs().size();
    return "<vrn.Node " + std::string(vor::escapeForTerminal(node.name()).view()) + " (" +
           std::string(vor::escapeForTerminal(node.type()).view()) + "), " + std::to_string(count) +
           (count == 1 ? " input>" : " inputs>");
}

} // namespace

void bindNode(nb::module_& m) {
    bindNamedViews(m);
    auto type =
        nb::class_<NodeReference>(
            m, "Node", nb::sig("class Node(collections.abc.Mapping[str, Value])"),
            "A named, typed object of a scene: a mapping from the names of its inputs to their values.\n\n"
            "Reading `node[name]` gives the value, setting it follows the rules of types of the input, or adds\n"
            "an input of the type of the value. `node.inputs[name]` is the input itself. A node keeps its scene\n"
            "alive. After its removal, `is_attached` is false and everything else raises RemovedError.\n"
            "Two are equal if they are the same node.\n\n"
            ">>> node = vrn.read('city.vrn')['cam1']\n"
            ">>> node['fov'], node.inputs['fov'].type\n"
            "(45.0, 'Real')\n"
            ">>> node['label'] = 'front'")
            .def_prop_rw(
                "name", [](const NodeReference& node) { return str(node.read().key()); }, &rename,
                "The name: letters, digits and _. Links to the node stay when it changes.",
                nb::for_setter(nb::arg("name")))
            .def_prop_ro(
                "type", [](const NodeReference& node) { return str(node.read().type()); }, "The type, such as `mesh`.")
            .def_prop_ro(
                "is_definition", [](const NodeReference& node) { return node.read().isDefinition(); },
                "Whether the node defines a type.")
            .def_prop_ro("is_attached", &NodeReference::isAttached, "Whether the node is still part of its scene.")
            .def_prop_ro(
                "scene", [](const NodeReference& node) { return node.box(); },
                "The scene, also after the removal of the node.")
            .def_prop_ro(
                "inputs",
                [](const NodeReference& node) {
                    (void)node.read();
                    return NodeInputs{node};
                },
                "The inputs by name.")
            .def_prop_ro(
                "outputs",
                [](const NodeReference& node) {
                    (void)node.read();
                    return NodeOutputs{node};
                },
                "The outputs by name. Asking for one creates it, unless the catalogue says which ones there are.")
            .def("__getitem__", &getItem, nb::arg("name"), nb::sig("def __getitem__(self, name: str, /) -> Value"))
            .def("__setitem__", &setItem, nb::arg("name"), nb::arg("value").none(),
                 nb::sig("def __setitem__(self, name: str, value: Assignable, /) -> None"))
            .def("__delitem__", &deleteItem, nb::arg("name"), nb::sig("def __delitem__(self, name: str, /) -> None"))
            .def("__len__", [](const NodeReference& node) { return node.read().inputs().size(); })
            .def("__bool__", [](const NodeReference&) { return true; })
            .def(
                "__contains__", [](const NodeReference& node, nb::handle name) { return contains(node.read(), name); },
                nb::arg("name").none(), nb::sig("def __contains__(self, name: object, /) -> bool"))
            .def(
                "__iter__", [](const NodeReference& node) { return nb::iter(namesOf(node.read().inputs())); },
                nb::sig("def __iter__(self) -> collections.abc.Iterator[str]"))
            .def(
                "add", &add, nb::arg("name"), nb::arg("type"), nb::arg("value").none() = nb::none(),
                nb::sig("def add(self, name: str, type: str, value: Assignable = None) -> Input"),
                "Adds an input of a type, such as `Real`, `Real[]` for an array of reals or `vec3f[]` for a buffer.\n\n"
                "Raises ValueError if the name is taken, if a text cannot say it, or if the type is unknown.")
            .def(
                "edit",
                [](const NodeReference& node, nb::handle name) {
                    return new Editing(InputReference(node.box(), &inputNamed(node.read(), name)));
                },
                nb::arg("name"), nb::sig("def edit(self, name: str) -> Editing"),
                "The elements of a buffer in place, as a numpy array for the time of a `with` block.\n\n"
                ">>> node = vrn.read('city.vrn')['box']\n"
                ">>> with node.edit('points') as points:\n"
                "...     points *= 2\n"
                ">>> float(node['points'].max())\n"
                "1.0")
            .def(
                "walk", [](const NodeReference& node) { return Walk(node); },
                nb::sig("def walk(self) -> collections.abc.Iterator[Input]"),
                "All inputs at any depth: members and elements follow what they are in.")
            .def(
                "__eq__",
                [](const NodeReference& a, nb::handle b) {
                    return nb::isinstance<NodeReference>(b) && a == nb::cast<const NodeReference&>(b);
                },
                nb::arg().none())
            .def("__hash__", [](const NodeReference& node) { return std::hash<const void*>()(node.address()); })
            .def("__repr__", [](const NodeReference& node) { return str(description(node)); });
    defineMapping(type, "Value");
    defineGet(type, "Value");
}

} // namespace vrn::python
