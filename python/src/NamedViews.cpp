#include "python/src/NamedViews.h"

#include "python/src/Buffers.h"
#include "python/src/Mapping.h"
#include "python/src/Names.h"
#include "python/src/Values.h"

#include <algorithm>
#include <exception>
#include <new>

namespace vrn::python {

Walk::Walk(const NodeReference& node) : node_(node) { (void)node.read(); }

std::optional<InputReference> Walk::next() {
    if (!at_) {
        const Node& node = node_.read();
        if (nextTop_ >= node.inputs().size())
            return std::nullopt;
        return moveTo(node.inputs()[nextTop_++]);
    }
    const Input* input = &at_->read();
    if (input->size() != 0)
        return moveTo(input->children().front());
    while (const Input* parent = input->parent()) {
        if (input->index() + 1 < parent->size())
            return moveTo(parent->children()[input->index() + 1]);
        input = parent;
    }
    nextTop_ = input->index() + 1;
    at_.reset();
    return next();
}

InputReference Walk::moveTo(const Input* input) {
    return at_.emplace(node_.box(), const_cast<Input*>(input)); // a reference allows changes
}

nb::object Editing::enter() {
    needNumpy();
    Input& input = input_.change();
    if (array_.is_valid() || input_.box()->edited.contains(&input))
        raise(PyExc_RuntimeError, labelOf(input) + " is being edited already");
    array_ = writableArrayOf(input);
    input_.box()->edited.insert(&input);
    label_ = labelOf(input);
    bytes_ = input.value().bytes().data();
    return array_;
}

// Arrays that were made of this one stay writable; nothing can be done about them.
void Editing::exit(bool hasRaised) {
    if (!array_.is_valid())
        raise(PyExc_RuntimeError, "this edit has not begun or has ended");
    end();
    const Input* input = input_.address();
    if (!hasRaised && (!input_.isAttached() || input->value().bytes().data() != bytes_))
        raise(PyExc_RuntimeError,
              label_ + " was replaced or removed while it was edited, and what was written is lost");
}

void Editing::end() {
    if (!array_.is_valid())
        return;
    input_.box()->edited.erase(input_.address());
    array_.attr("flags").attr("writeable") = false;
    array_.reset();
}

namespace {

nb::object inputNamed(const NodeInputs& inputs, nb::handle name) {
    const Node& node = inputs.node.read();
    const std::string text = textOf(name);
    if (Input* input = node.input(std::string_view(text)))
        return nb::cast(InputReference(inputs.node.box(), input));
    raiseMissing(text, keysOf(node.inputs()));
}

// Declared outputs exist; others come into being when they are named.
nb::object outputNamed(const NodeOutputs& outputs, nb::handle name) {
    Node& node = outputs.node.change();
    const String text = outputNameOf(name);
    if (Output* output = node.findOutput(text))
        return nb::cast(OutputReference(outputs.node.box(), output));
    raiseMissing(text.view(), keysOf(node.outputs()));
}

bool hasOutput(const Node& node, nb::handle name) {
    const std::optional<std::string> text = nameIn(name);
    return text && std::ranges::any_of(node.outputs(), [&](const Output* output) { return output->key() == *text; });
}

bool hasChild(const Children& children, nb::handle key) {
    const Input& parent = children.input.read();
    if (nb::isinstance<InputReference>(key))
        return nb::cast<const InputReference&>(key).read().parent() == &parent;
    return parent.type() == AttrType::Object && contains(parent, key);
}

nb::object childAt(const Children& children, nb::handle key) {
    const Input& parent = children.input.read();
    if (PyUnicode_Check(key.ptr())) {
        const std::string name = textOf(key);
        if (Input* member = parent.type() == AttrType::Object ? parent.input(std::string_view(name)) : nullptr)
            return nb::cast(InputReference(children.input.box(), member));
        raiseMissing(name, keysOf(parent.children()));
    }
    const Py_ssize_t asked = PyNumber_AsSsize_t(key.ptr(), PyExc_IndexError);
    if (asked == -1 && PyErr_Occurred())
        throw nb::python_error();
    const auto size = static_cast<Py_ssize_t>(parent.size());
    const Py_ssize_t index = asked < 0 ? asked + size : asked;
    if (index < 0 || index >= size)
        raise(PyExc_IndexError, "index " + std::to_string(asked) + " of " + std::to_string(size) + " inputs");
    return nb::cast(
        InputReference(children.input.box(), const_cast<Input*>(parent.children()[static_cast<std::size_t>(index)])));
}

// The slot of `__next__`. A function of nanobind would end a walk with a C++ exception, which takes longer than the
// walk through a small node.
PyObject* nextOf(PyObject* walk) noexcept {
    if (!nb::inst_ready(walk)) { // a slot has to check what functions of nanobind do
        PyErr_SetString(PyExc_TypeError, "only node.walk() makes a Walk");
        return nullptr;
    }
    try {
        std::optional<InputReference> next = nb::inst_ptr<Walk>(walk)->next();
        return next ? nb::cast(std::move(*next)).release().ptr() : nullptr;
    } catch (nb::python_error& error) {
        error.restore();
    } catch (const std::bad_alloc&) {
        PyErr_NoMemory();
    } catch (const std::exception& error) {
        PyErr_SetString(PyExc_RuntimeError, error.what());
    }
    return nullptr;
}

const PyType_Slot walkSlots[] = {{Py_tp_iter, reinterpret_cast<void*>(&PyObject_SelfIter)},
                                 {Py_tp_iternext, reinterpret_cast<void*>(&nextOf)},
                                 {0, nullptr}};

} // namespace

void bindNamedViews(nb::module_& m) {
    auto inputViews =
        nb::class_<NodeInputs>(
            m, "NodeInputs", nb::sig("class NodeInputs(collections.abc.Mapping[str, Input])"),
            "The inputs of a node by name, in order. A view: it shows what the node has when it is asked.")
            .def("__getitem__", &inputNamed, nb::arg("name"), nb::sig("def __getitem__(self, name: str, /) -> Input"))
            .def("__len__", [](const NodeInputs& inputs) { return inputs.node.read().inputs().size(); })
            .def(
                "__contains__",
                [](const NodeInputs& inputs, nb::handle name) { return contains(inputs.node.read(), name); },
                nb::arg("name").none(), nb::sig("def __contains__(self, name: object, /) -> bool"))
            .def(
                "__iter__", [](const NodeInputs& inputs) { return nb::iter(namesOf(inputs.node.read().inputs())); },
                nb::sig("def __iter__(self) -> collections.abc.Iterator[str]"));
    defineMapping(inputViews, "Input");
    defineGet(inputViews, "Input");

    auto outputViews =
        nb::class_<NodeOutputs>(m, "NodeOutputs", nb::sig("class NodeOutputs(collections.abc.Mapping[str, Output])"),
                                "The outputs of a node by name. A view: it shows what the node has when it is asked.")
            .def("__getitem__", &outputNamed, nb::arg("name"), nb::sig("def __getitem__(self, name: str, /) -> Output"),
                 "The output of that name. Creates a missing one, unless a catalogue declares the outputs of the type.")
            .def("__len__", [](const NodeOutputs& outputs) { return outputs.node.read().outputs().size(); })
            .def(
                "__contains__",
                [](const NodeOutputs& outputs, nb::handle name) { return hasOutput(outputs.node.read(), name); },
                nb::arg("name").none(), nb::sig("def __contains__(self, name: object, /) -> bool"))
            .def(
                "__iter__", [](const NodeOutputs& outputs) { return nb::iter(namesOf(outputs.node.read().outputs())); },
                nb::sig("def __iter__(self) -> collections.abc.Iterator[str]"));
    defineMapping(outputViews, "Output");
    defineGet(outputViews, "Output");

    nb::class_<Children>(m, "Children",
                         "The members of an object, or the elements of an array, as inputs.\n\nIndexed by name or by "
                         "number; iterates over the inputs, in order.")
        .def("__getitem__", &childAt, nb::arg("key"), nb::sig("def __getitem__(self, key: str | int, /) -> Input"))
        .def("__contains__", &hasChild, nb::arg("key").none(),
             nb::sig("def __contains__(self, key: object, /) -> bool"))
        .def("__len__", [](const Children& children) { return children.input.read().size(); });

    nb::class_<Walk>(m, "Walk", nb::type_slots(walkSlots), "The inputs of a node at any depth, one after the other.");

    nb::class_<Editing>(m, "Editing", "The elements of a buffer, writable for the time of a `with` block.")
        .def("__enter__", &Editing::enter, nb::sig("def __enter__(self) -> numpy.typing.NDArray[typing.Any]"))
        .def(
            "__exit__",
            [](Editing& editing, nb::args raised) { editing.exit(raised.size() != 0 && !raised[0].is_none()); },
            nb::sig("def __exit__(self, *args: object) -> None"));
}

} // namespace vrn::python
