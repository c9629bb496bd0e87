#include "python/src/Assignment.h"
#include "python/src/Buffers.h"
#include "python/src/Mapping.h"
#include "python/src/Module.h"
#include "python/src/NamedViews.h"
#include "python/src/Values.h"
#include "scene/core/TextEncoding.h"

#include <array>

namespace vrn::python {

namespace {

nb::object valueOfInput(const InputReference& input) {
    const Input& read = input.read();
    if (read.type() == AttrType::Array || read.type() == AttrType::Object)
        return nb::cast(input);
    return valueOf(input.box(), read);
}

// Most inputs have one of a few types, whose names are kept.
nb::object typeOf(const InputReference& reference) {
    static std::array<nb::handle, vor::velmo_sdk::attrTypeCount> names{}; // guarded by the GIL
    const Input& input = reference.read();
    if (input.type() == AttrType::Buffer || input.type() == AttrType::Array)
        return str(nameOf(input));
    nb::handle& known = names[static_cast<std::size_t>(input.type())];
    if (!known.is_valid())
        known = str(nameOf(input)).release();
    return nb::borrow(known);
}

void setValue(const InputReference& input, nb::handle value) { assign(input, value); }

nb::object connectionOf(const InputReference& input) {
    Output* output = input.read().connection();
    return output ? nb::cast(OutputReference(input.box(), output)) : nb::none();
}

void connect(const InputReference& input, nb::handle output) {
    if (output.is_none())
        return input.change().disconnect();
    if (!nb::isinstance<OutputReference>(output))
        raise(PyExc_TypeError, "a connection is an Output, such as node.outputs['color'], or None");
    assign(input, output);
}

nb::object enumerationOf(const InputReference& input) {
    nb::list entries;
    for (const String& entry : input.read().enumeration())
        entries.append(str(entry));
    return nb::tuple(entries);
}

void setEnumeration(const InputReference& input, nb::handle entries) {
    vor::StringVector texts;
    for (const nb::handle entry : nb::iter(entries))
        texts.push(sceneTextOf(entry));
    input.change().setEnumeration(std::move(texts));
}

nb::object nameOfNumbers(const InputReference& input) {
    const char* name = numberName(input.read().dataType());
    return name ? nb::object(nb::str(name)) : nb::none();
}

nb::object shapeOf(const InputReference& input) {
    const Input& read = input.read();
    nb::list extents;
    extents.append(read.type() == AttrType::Buffer ? read.value().count() : read.size());
    for (const std::size_t extent : elementShape(read.dataType()))
        extents.append(extent);
    return nb::tuple(extents);
}

// The member or element with that name or index.
InputReference childOf(const InputReference& input, nb::handle key) {
    return nb::cast<InputReference>(nb::cast(Children{input})[key]);
}

void setItem(const InputReference& input, nb::handle key, nb::handle value) {
    const Input& parent = input.change();
    if (parent.type() == AttrType::Buffer)
        raise(PyExc_TypeError,
              labelOf(parent) + " is a buffer: its elements are written in a `with input.edit()` block");
    if (parent.type() == AttrType::Object && PyUnicode_Check(key.ptr()) && !contains(parent, key))
        (void)addInput(input, key, {}, value);
    else
        assign(childOf(input, key), value);
}

void deleteItem(const InputReference& input, nb::handle key) {
    const InputReference child = childOf(input, key);
    Input& parent = input.change();
    if (parent.type() == AttrType::Array)
        (void)parent.removeElement(child.read().index());
    else
        (void)parent.removeInput(child.read().key());
}

InputReference add(const InputReference& input, nb::handle name, nb::handle type, nb::handle value) {
    return addInput(input, name, inputTypeNamed(textOf(type)), value);
}

InputReference append(const InputReference& reference, nb::handle value) {
    const Input& read = reference.read();
    if (read.type() != AttrType::Array)
        raise(PyExc_TypeError, labelOf(read) + " has the type " + attrTypeName(read.type()) + ", not Array");
    Preparation prepared = value.is_none()
                               ? Preparation{}
                               : prepare(reference.box(), value, {read.elementType(), {}, {}}, labelOf(read) + "[]");
    Input& array = reference.change();
    if (array.elementType() == AttrType::Null && prepared.type.type != AttrType::Null)
        (void)array.set(AttrData::array(prepared.type.type));
    Input* element = array.appendElement();
    if (!element)
        raise(PyExc_ValueError, labelOf(array) + " has as many elements as the limits of the scene allow");
    InputReference made(reference.box(), element);
    if (!value.is_none())
        apply(std::move(prepared), *element);
    return made;
}

std::size_t lengthOf(const InputReference& input) {
    const Input& read = input.read();
    if (read.type() == AttrType::Buffer)
        return read.value().count();
    if (read.type() != AttrType::Array && read.type() != AttrType::Object)
        raise(PyExc_TypeError, labelOf(read) + " is a " + attrTypeName(read.type()) + ", which has no length");
    return read.size();
}

// The values of an array, one by one: each can run Python code.
nb::list valuesOf(const InputReference& array) {
    nb::list values;
    for (std::size_t i = 0; i < array.read().size(); ++i)
        values.append(valueOf(array.box(), *array.read().children()[i]));
    return values;
}

// Names of members, as of a mapping; values of elements, as of a sequence.
bool containsKey(const InputReference& input, nb::handle key) {
    const Input& read = input.read();
    if (read.type() == AttrType::Object)
        return contains(read, key);
    (void)lengthOf(input);
    const nb::object values = read.type() == AttrType::Array ? valuesOf(input) : arrayOf(input.box(), read);
    const int contains = PySequence_Contains(values.ptr(), key.ptr());
    if (contains < 0)
        throw nb::python_error();
    return contains != 0;
}

nb::object iterate(const InputReference& input) {
    const Input& read = input.read();
    if (read.type() == AttrType::Object)
        return nb::iter(namesOf(read.children()));
    if (read.type() == AttrType::Buffer)
        return nb::iter(arrayOf(input.box(), read));
    (void)lengthOf(input);
    return nb::iter(valuesOf(input));
}

nb::object getItem(const InputReference& input, nb::handle key) {
    const Input& read = input.read();
    if (read.type() == AttrType::Buffer)
        return arrayOf(input.box(), read)[key];
    return valueOfInput(childOf(input, key));
}

nb::object numpyArray(const InputReference& input, nb::handle dtype, nb::handle copy) {
    needNumpy();
    nb::object array = arrayOf(input.box(), input.read());
    const bool isSame = dtype.is_none() || array.attr("dtype").equal(dtype);
    if (!isSame && copy.is(nb::handle(Py_False)))
        raise(PyExc_ValueError, "an array of another dtype is a copy");
    if (!isSame)
        return array.attr("astype")(dtype);
    return copy.is(nb::handle(Py_True)) ? nb::object(array.attr("copy")()) : array;
}

nb::object dlpack(const InputReference& input, nb::kwargs options) {
    return bufferOf(input.box(), input.read()).attr("__dlpack__")(**options);
}

std::string description(const InputReference& input) {
    if (!input.isAttached())
        return "<vrn.Input, removed>";
    const Input& read = input.read();
    const auto label = vor::truncated(labelOf(read), 200);
    return "<vrn.Input " + std::string(vor::escapeForTerminal(label).view()) + ": " + nameOf(read) + ">";
}

nb::object parentOf(const InputReference& input) {
    Input* parent = input.read().parent();
    return parent ? nb::cast(InputReference(input.box(), parent)) : nb::none();
}

Adopted adopt(nb::object array) {
    if (!isArray(array) || !nb::hasattr(array, "setflags"))
        raise(PyExc_TypeError, "only numpy arrays can be adopted, because others cannot be made read-only");
    return {std::move(array)};
}

} // namespace

void bindInput(nb::module_& m) {
    nb::class_<InputReference>(
        m, "Input",
        "An input of a node, a member of an object or an element of an array.\n\n"
        "`value` is what `node[name]` gives. An input that is an object is also indexed by the names of its\n"
        "members and an array by numbers, for values; `children` has the inputs themselves. A buffer supports\n"
        "`numpy.asarray(input)` and DLPack. An input keeps its scene alive. After its removal, `is_attached` is\n"
        "false and everything else raises RemovedError. Two are equal if they are the same input.")
        .def_prop_ro(
            "name", [](const InputReference& input) { return str(input.read().name()); },
            "The name; of an element, its index.")
        .def_prop_ro(
            "label", [](const InputReference& input) { return str(input.read().label()); },
            "The path: `box.uvsets[0].name`.")
        .def_prop_ro("type", &typeOf, nb::sig("def type(self) -> str"),
                     "The type: `Real`, `Vec3`, `Object`; `Real[]` for an array of reals, `vec3f[]` for a buffer.")
        .def_prop_ro("dtype", &nameOfNumbers, nb::sig("def dtype(self) -> str | None"),
                     "The numpy type of the numbers of a buffer, such as `float32`; otherwise None.")
        .def_prop_ro("shape", &shapeOf, nb::sig("def shape(self) -> tuple[int, ...]"),
                     "The shape of the array of a buffer; of an array or object, the number of its inputs.")
        .def_prop_ro(
            "nbytes", [](const InputReference& input) { return input.read().value().bytes().size(); },
            "The bytes of a buffer.")
        .def_prop_rw(
            "value", &valueOfInput, &setValue, nb::for_getter(nb::sig("def value(self) -> Value")),
            nb::for_setter(nb::sig("def value(self, value: Assignable, /) -> None")),
            nb::for_setter(nb::arg("value").none()),
            "The value; an array or object is the input itself. Setting it follows the rules of types of the input.")
        .def_prop_rw("connection", &connectionOf, &connect,
                     nb::for_getter(nb::sig("def connection(self) -> Output | None")),
                     nb::for_setter(nb::sig("def connection(self, output: Output | None, /) -> None")),
                     nb::for_setter(nb::arg("output").none()),
                     "The output that the input is connected to, or None. The value stays.")
        .def_prop_rw(
            "enumeration", &enumerationOf, &setEnumeration,
            nb::for_getter(nb::sig("def enumeration(self) -> tuple[str, ...]")),
            nb::for_setter(nb::sig("def enumeration(self, entries: collections.abc.Iterable[str], /) -> None")),
            "The valid values of a string; empty if all are.")
        .def_prop_rw(
            "locked", [](const InputReference& input) { return input.read().isLocked(); },
            [](const InputReference& input, bool is) { input.change().setLocked(is); },
            "Whether texts cannot set the value.", nb::for_setter(nb::arg("locked")))
        .def_prop_rw(
            "link_only", [](const InputReference& input) { return input.read().isLinkOnly(); },
            [](const InputReference& input, bool is) { input.change().setLinkOnly(is); },
            "Whether texts can only connect the input.", nb::for_setter(nb::arg("link_only")))
        .def_prop_ro(
            "node", [](const InputReference& input) { return NodeReference(input.box(), input.read().node()); },
            "The node it belongs to.")
        .def_prop_ro("parent", &parentOf, nb::sig("def parent(self) -> Input | None"),
                     "The object or array that it is in, or None.")
        .def_prop_ro(
            "children",
            [](const InputReference& input) {
                (void)input.read();
                return Children{input};
            },
            "The members of an object, or the elements of an array, as inputs.")
        .def_prop_ro(
            "buffer", [](const InputReference& input) { return bufferOf(input.box(), input.read()); },
            nb::sig("def buffer(self) -> typing_extensions.Buffer"),
            "The elements of a buffer as an object with the buffer protocol and DLPack, which needs no "
            "numpy.\n\nRead-only; shares the memory and keeps it as it is.")
        .def_prop_ro("is_attached", &InputReference::isAttached, "Whether it is still part of its scene.")
        .def(
            "edit",
            [](const InputReference& input) {
                (void)input.read();
                return new Editing(input);
            },
            "The elements of a buffer in place, in a `with` block: `with input.edit() as p: p *= 2`.")
        .def("add", &add, nb::arg("name"), nb::arg("type"), nb::arg("value").none() = nb::none(),
             nb::sig("def add(self, name: str, type: str, value: Assignable = None) -> Input"),
             "Adds a member to an object; see Node.add().")
        .def("append", &append, nb::arg("value").none() = nb::none(),
             nb::sig("def append(self, value: Assignable = None) -> Input"), "Adds an element to an array.")
        .def("__getitem__", &getItem, nb::arg("key"), nb::sig("def __getitem__(self, key: str | int, /) -> Value"))
        .def("__setitem__", &setItem, nb::arg("key"), nb::arg("value").none(),
             nb::sig("def __setitem__(self, key: str | int, value: Assignable, /) -> None"))
        .def("__delitem__", &deleteItem, nb::arg("key"), nb::sig("def __delitem__(self, key: str | int, /) -> None"))
        .def("__len__", &lengthOf)
        .def("__bool__", [](const InputReference&) { return true; })
        .def("__contains__", &containsKey, nb::arg("key").none(),
             nb::sig("def __contains__(self, key: object, /) -> bool"))
        .def("__iter__", &iterate, nb::sig("def __iter__(self) -> collections.abc.Iterator[typing.Any]"))
        .def("__array__", &numpyArray, nb::arg("dtype").none() = nb::none(), nb::kw_only(),
             nb::arg("copy").none() = nb::none(),
             nb::sig("def __array__(self, dtype: typing.Any = None, *, copy: bool | None = None) -> "
                     "numpy.typing.NDArray[typing.Any]"))
        .def("__dlpack__", &dlpack, nb::sig("def __dlpack__(self, **options: typing.Any) -> typing.Any"))
        .def(
            "__dlpack_device__",
            [](const InputReference& input) { return bufferOf(input.box(), input.read()).attr("__dlpack_device__")(); },
            nb::sig("def __dlpack_device__(self) -> tuple[int, int]"))
        .def(
            "__eq__",
            [](const InputReference& a, nb::handle b) {
                return nb::isinstance<InputReference>(b) && a == nb::cast<const InputReference&>(b);
            },
            nb::arg().none())
        .def("__hash__", [](const InputReference& input) { return std::hash<const void*>()(input.address()); })
        .def("__repr__", [](const InputReference& input) { return str(description(input)); });
    nb::class_<Adopted>(m, "Adopted", "An array that a buffer takes over; see adopt().");
    m.def("adopt", &adopt, nb::arg("array"), nb::sig("def adopt(array: typing.Any) -> Adopted"),
          "Marks an array to be taken over by the buffer that it is assigned to.\n\n"
          "Its memory is not copied, so the array becomes read-only. Arrays that share its memory must not be written "
          "any\n"
          "more, either. The type of the array must be that of the buffer, in C order.\n\n"
          ">>> import numpy\n"
          ">>> points = numpy.zeros((8, 3), 'float32')\n"
          ">>> node = vrn.read('city.vrn')['box']\n"
          ">>> node['points'] = vrn.adopt(points)\n"
          ">>> numpy.shares_memory(points, node['points'])\n"
          "True");
}

} // namespace vrn::python
