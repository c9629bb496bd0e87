#include "python/src/Assignment.h"

#include "impl/BufferType.h"
#include "impl/TypeRules.h"
#include "inspect/value/ValueText.h"
#include "python/src/Buffers.h"
#include "python/src/Names.h"
#include "python/src/PlainValues.h"
#include "python/src/Values.h"

#include <algorithm>

namespace vrn::python {

using vor::velmo_sdk::attrTypeByName;
using vor::velmo_sdk::attrTypeName;
using vor::velmo_sdk::impl::bufferType;

namespace {

// Lists and dicts can contain themselves.
class RecursionGuard {
public:
    RecursionGuard() {
        if (Py_EnterRecursiveCall(" in an assignment") != 0)
            throw nb::python_error();
    }
    ~RecursionGuard() { Py_LeaveRecursiveCall(); }
    RecursionGuard(const RecursionGuard&) = delete;
    RecursionGuard& operator=(const RecursionGuard&) = delete;
};

bool accepts(const InputType& type, AttrType value) { return type.type == AttrType::Null || type.type == value; }

template <class T> const Reference<T>& ownReference(const Box& box, nb::handle value, const char* what) {
    const auto& reference = nb::cast<const Reference<T>&>(value);
    if (reference.box() != box)
        raise(PyExc_ValueError, std::string("the ") + what + " belongs to another scene");
    (void)reference.read();
    return reference;
}

Preparation prepareNode(const Box& box, nb::handle value, const InputType& type, const std::string& label) {
    if (!accepts(type, AttrType::Node))
        raiseMismatch(label, type.type, "Node");
    return {.type = {AttrType::Node, {}, {}}, .value = ownReference<Node>(box, value, "node")};
}

Preparation prepareNone(const InputType& type, const std::string& label) {
    if (!accepts(type, AttrType::Node))
        raiseMismatch(label, type.type, "None");
    return {.type = type};
}

Preparation prepareBuffer(nb::handle value, const InputType& type, const std::string& label) {
    if (PyUnicode_Check(value.ptr()) || PyDict_Check(value.ptr()))
        raiseMismatch(label, AttrType::Buffer, pythonTypeOf(value));
    AttrData buffer = nb::isinstance<Adopted>(value) ? adoptedBuffer(nb::cast<const Adopted&>(value), type.data)
                                                     : bufferFrom(value, type.data);
    return {.type = {AttrType::Buffer, {}, buffer.dataType()}, .value = std::move(buffer)};
}

// The elements of an array without an element type have that of the first one; integers among reals are reals.
AttrType commonType(const Preparation& first, nb::handle items) {
    const bool isInteger = first.type.type == AttrType::Int || first.type.type == AttrType::UInt;
    const auto isReal = [](nb::handle item) { return PyFloat_Check(item.ptr()) != 0; };
    return isInteger && std::ranges::any_of(nb::iter(items), isReal) ? AttrType::Real : first.type.type;
}

Preparation prepareArray(const Box& box, nb::handle value, InputType type, const std::string& label) {
    if (!isSequence(value) && !isArray(value))
        raiseMismatch(label, AttrType::Array, pythonTypeOf(value));
    const nb::object items = nb::steal(PySequence_List(value.ptr())); // the sequence may be of this very array
    if (!items.is_valid())
        throw nb::python_error();
    if (nb::len(items) > box->scene.limits().maxArrayElements)
        raise(PyExc_ValueError, label + " would have more elements than the limits of the scene allow");
    type.type = AttrType::Array;
    Preparation::Members elements;
    for (const nb::handle item : nb::iter(items)) {
        auto element = std::make_unique<Preparation>(prepare(box, item, {type.elements, {}, {}}, label + "[]"));
        if (type.elements == AttrType::Null && element->type.type != AttrType::Null) {
            type.elements = commonType(*element, items);
            if (type.elements != element->type.type)
                element = std::make_unique<Preparation>(prepare(box, item, {type.elements, {}, {}}, label + "[]"));
        }
        elements.push_back({String(), std::move(element)});
    }
    return {.type = type, .value = std::move(elements)};
}

Preparation prepareObject(const Box& box, nb::handle value, const std::string& label) {
    if (!PyMapping_Check(value.ptr()) || isSequence(value))
        raiseMismatch(label, AttrType::Object, pythonTypeOf(value));
    const nb::object items = nb::steal(PyMapping_Items(value.ptr()));
    if (!items.is_valid())
        throw nb::python_error();
    Preparation::Members members;
    for (const nb::handle item : nb::iter(items)) {
        const String name = identifierOf(item[0]);
        const std::string memberLabel = label + '.' + std::string(name.view());
        members.push_back({name, std::make_unique<Preparation>(prepare(box, item[1], {}, memberLabel))});
    }
    return {.type = {AttrType::Object, {}, {}}, .value = std::move(members)};
}

// An input stands for its value; an array for a list, an object for a dict.
Preparation prepareInput(const Box& box, const InputReference& source, const InputType& type,
                         const std::string& label) {
    const Input& input = source.read();
    if (input.type() == AttrType::Buffer && accepts(type, AttrType::Buffer))
        return prepareBuffer(arrayOf(source.box(), input), type.data == DataType::Null ? inputTypeOf(input) : type,
                             label);
    nb::object value;
    if (input.type() == AttrType::Array || input.type() == AttrType::Object) {
        nb::list children;
        for (const Input* child : input.children())
            children.append(
                nb::make_tuple(str(child->name()), InputReference(source.box(), const_cast<Input*>(child))));
        value = nb::handle(reinterpret_cast<PyObject*>(&PyDict_Type))(children);
        if (input.type() == AttrType::Array)
            value = nb::list(value.attr("values")());
    } else {
        value = valueOf(source.box(), input);
    }
    return prepare(box, value, type, label);
}

// A value that determines the type itself.
Preparation prepareByValue(const Box& box, nb::handle value, const std::string& label) {
    if (nb::isinstance<Adopted>(value) || dimensionsOf(value).value_or(0) != 0)
        return prepareBuffer(value, {}, label);
    if (std::optional<AttrData> plain = plainFrom(value)) {
        const InputType type{plain->type(), {}, {}};
        return {.type = type, .value = std::move(*plain)};
    }
    if (PyList_Check(value.ptr()))
        return prepareArray(box, value, {}, label);
    if (PyDict_Check(value.ptr()))
        return prepareObject(box, value, label);
    raise(PyExc_TypeError, "a value of type " + pythonTypeOf(value) +
                               " does not tell the type of a new input: use add(), which names it");
}

void applyElements(Preparation::Members elements, AttrType type, Input& array) {
    if (!array.assign(AttrData::array(type)))
        raise(PyExc_TypeError, labelOf(array) + " has another type since");
    for (Preparation::Member& element : elements)
        apply(std::move(*element.value), *array.appendElement());
}

template <class Parent> Input* create(Parent& parent, const String& name, const InputType& type) {
    Input* input =
        type.type == AttrType::Array ? parent.createArray(name, type.elements) : parent.createInput(name, type.type);
    if (input && type.data != DataType::Null)
        (void)input->assign(AttrData::buffer(type.data));
    return input;
}

void applyMembers(Preparation::Members members, Input& object) {
    if (!object.assign(AttrData::zero(AttrType::Object)))
        raise(PyExc_TypeError, labelOf(object) + " has another type since");
    for (Preparation::Member& member : members) {
        Input* input = create(object, member.name, member.value->type);
        apply(std::move(*member.value), *input);
    }
}

} // namespace

InputType inputTypeOf(const Input& input) {
    AttrType type = input.type();
    if (type == AttrType::Null && input.isElement())
        type = input.parent()->elementType();
    return {type, input.elementType(), input.dataType()};
}

InputType inputTypeNamed(std::string_view name) {
    const bool isList = name.ends_with("[]");
    const std::string_view base = isList ? name.substr(0, name.size() - 2) : name;
    if (const std::optional<AttrType> type = attrTypeByName(base))
        return isList ? InputType{AttrType::Array, *type, {}} : InputType{*type, {}, {}};
    if (const DataType* data = bufferType(base); isList && data)
        return {AttrType::Buffer, {}, *data};
    raise(PyExc_ValueError, "unknown type '" + std::string(name) + "'; types are like Real, Real[] and vec3f[]");
}

std::string nameOf(const Input& input) {
    if (input.type() == AttrType::Buffer && input.dataType() != DataType::Null)
        return inspect::dataTypeText(input.dataType()) + "[]";
    if (input.type() == AttrType::Array && input.elementType() != AttrType::Null)
        return std::string(attrTypeName(input.elementType())) + "[]";
    return attrTypeName(input.type());
}

Preparation prepare(const Box& box, nb::handle value, const InputType& type, const std::string& label) {
    const RecursionGuard guard;
    if (nb::isinstance<OutputReference>(value))
        return {.type = type, .value = ownReference<Output>(box, value, "output")};
    if (nb::isinstance<NodeReference>(value))
        return prepareNode(box, value, type, label);
    if (nb::isinstance<InputReference>(value))
        return prepareInput(box, nb::cast<const InputReference&>(value), type, label);
    if (value.is_none())
        return prepareNone(type, label);
    switch (type.type) {
    case AttrType::Null:
        return prepareByValue(box, value, label);
    case AttrType::Buffer:
        return prepareBuffer(value, type, label);
    case AttrType::Array:
        return prepareArray(box, value, type, label);
    case AttrType::Object:
        return prepareObject(box, value, label);
    case AttrType::Node:
        raiseMismatch(label, AttrType::Node, pythonTypeOf(value));
    case AttrType::Bool:
    case AttrType::Int:
    case AttrType::UInt:
    case AttrType::Real:
    case AttrType::Vec2:
    case AttrType::Vec3:
    case AttrType::Vec4:
    case AttrType::Pos2:
    case AttrType::Pos3:
    case AttrType::Quat:
    case AttrType::Rgba:
    case AttrType::Mat3:
    case AttrType::Mat4:
    case AttrType::String:
        break;
    }
    return {.type = type, .value = plainFor(value, type.type, label)};
}

void apply(Preparation prepared, Input& input) {
    if (auto* data = std::get_if<AttrData>(&prepared.value)) {
        if (!input.assign(std::move(*data)))
            raise(PyExc_TypeError, labelOf(input) + " has another type since");
    } else if (const auto* node = std::get_if<NodeReference>(&prepared.value)) {
        input.setNode(&node->change());
    } else if (const auto* output = std::get_if<OutputReference>(&prepared.value)) {
        input.connect(&output->change());
    } else if (auto* members = std::get_if<Preparation::Members>(&prepared.value)) {
        if (prepared.type.type == AttrType::Array)
            applyElements(std::move(*members), prepared.type.elements, input);
        else
            applyMembers(std::move(*members), input);
    } else {
        input.setNode(nullptr);
        input.disconnect();
    }
}

void assign(const InputReference& reference, nb::handle value) {
    const Input& input = reference.read();
    Preparation prepared = prepare(reference.box(), value, inputTypeOf(input), labelOf(input));
    apply(std::move(prepared), reference.change());
}

template <class Parent>
InputReference addInput(const Reference<Parent>& reference, nb::handle name, const InputType& type, nb::handle value) {
    const String key = identifierOf(name);
    (void)reference.read();
    Preparation prepared =
        value.is_none() ? Preparation{.type = type} : prepare(reference.box(), value, type, textOf(name));
    Parent& parent = reference.change();
    if (parent.input(key))
        raise(PyExc_ValueError, "there is an input '" + textOf(name) + "' already");
    Input* input = create(parent, key, value.is_none() || type.type != AttrType::Null ? type : prepared.type);
    if (!input)
        raise(PyExc_TypeError, "only nodes and objects have inputs with names");
    InputReference added(reference.box(), input);
    if (!value.is_none())
        apply(std::move(prepared), *input);
    return added;
}
template InputReference addInput(const NodeReference&, nb::handle, const InputType&, nb::handle);
template InputReference addInput(const InputReference&, nb::handle, const InputType&, nb::handle);

} // namespace vrn::python
