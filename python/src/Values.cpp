#include "python/src/Values.h"

#include "python/src/Buffers.h"

#include <array>

namespace vrn::python {

using vor::velmo_sdk::ValueKind;

namespace {

nb::object tupleOf(std::span<const double> numbers) {
    nb::object made = nb::steal(PyTuple_New(static_cast<Py_ssize_t>(numbers.size())));
    for (std::size_t i = 0; i < numbers.size(); ++i)
        PyTuple_SetItem(made.ptr(), static_cast<Py_ssize_t>(i), PyFloat_FromDouble(numbers[i]));
    return made;
}

// The class in vrn._values.
nb::handle classOf(AttrType type) {
    static std::array<nb::handle, vor::velmo_sdk::attrTypeCount> classes{}; // guarded by the GIL
    nb::handle& known = classes[static_cast<std::size_t>(type)];
    if (!known.is_valid())
        known = imported("vrn._values", attrTypeName(type));
    return known;
}

// An instance of such a class. Its constructor is passed over, because the numbers are right.
nb::object made(nb::handle type, const nb::object& items) {
    static const auto tupleNew = reinterpret_cast<newfunc>(PyType_GetSlot(&PyTuple_Type, Py_tp_new));
    nb::object value =
        nb::steal(tupleNew(reinterpret_cast<PyTypeObject*>(type.ptr()), nb::make_tuple(items).ptr(), nullptr));
    if (!value.is_valid())
        throw nb::python_error();
    return value;
}

nb::object componentsOf(const AttrData& value) {
    const nb::handle type = classOf(value.type());
    const std::span<const double> numbers = value.components();
    if (value.type() != AttrType::Mat3 && value.type() != AttrType::Mat4)
        return made(type, tupleOf(numbers));
    const std::size_t side = value.type() == AttrType::Mat3 ? 3 : 4;
    nb::object rows = nb::steal(PyTuple_New(static_cast<Py_ssize_t>(side)));
    for (std::size_t i = 0; i < side; ++i)
        PyTuple_SetItem(rows.ptr(), static_cast<Py_ssize_t>(i),
                        tupleOf(numbers.subspan(i * side, side)).release().ptr());
    return made(type, rows);
}

} // namespace

nb::object plainValue(const AttrData& value) {
    switch (valueKind(value.type())) {
    case ValueKind::Bool:
        return nb::bool_(value.asBool());
    case ValueKind::Int:
        return nb::int_(value.asInt());
    case ValueKind::UInt:
        return nb::int_(value.asUInt());
    case ValueKind::Real:
        return nb::float_(value.asReal());
    case ValueKind::Components:
        return componentsOf(value);
    case ValueKind::String:
        return str(value.asString());
    case ValueKind::Null:
    case ValueKind::Node:
    case ValueKind::Buffer:
    case ValueKind::Array:
    case ValueKind::Object:
        break;
    }
    return nb::none();
}

nb::object valueOf(const Box& box, const Input& constInput) {
    Input& input = const_cast<Input&>(constInput); // a reference allows changes
    switch (valueKind(input.type())) {
    case ValueKind::Null:
        return input.connection() ? nb::cast(OutputReference(box, input.connection())) : nb::none();
    case ValueKind::Node:
        if (Node* node = input.nodeValue())
            return nb::cast(NodeReference(box, node));
        return input.connection() ? nb::cast(OutputReference(box, input.connection())) : nb::none();
    case ValueKind::Buffer:
        return arrayOf(box, input);
    case ValueKind::Array:
    case ValueKind::Object:
        return nb::cast(InputReference(box, &input));
    case ValueKind::Bool:
    case ValueKind::Int:
    case ValueKind::UInt:
    case ValueKind::Real:
    case ValueKind::Components:
    case ValueKind::String:
        break;
    }
    return plainValue(input.value());
}

std::string labelOf(const Input& input) { return std::string(input.label().view()); }

} // namespace vrn::python
