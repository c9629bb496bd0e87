#include "python/src/PlainValues.h"

#include "impl/TypeRules.h"
#include "python/src/Buffers.h"

#include <limits>

namespace vrn::python {

using vor::i64;
using vor::u64;
using vor::velmo_sdk::attrTypeByName;
using vor::velmo_sdk::attrTypeName;
using vor::velmo_sdk::componentCount;
using vor::velmo_sdk::ValueKind;
using vor::velmo_sdk::valueKind;
using vor::velmo_sdk::impl::convert;
using vor::velmo_sdk::impl::Fit;
using vor::velmo_sdk::impl::fit;

namespace {

// The type that an instance of a class of vrn._values states.
std::optional<AttrType> componentsTypeOf(nb::handle value) {
    if (!PyTuple_Check(value.ptr()) || Py_TYPE(value.ptr()) == &PyTuple_Type)
        return std::nullopt;
    const std::optional<AttrType> type = attrTypeByName(pythonTypeOf(value));
    if (!type || valueKind(*type) != ValueKind::Components ||
        !imported("vrn._values", attrTypeName(*type)).is(nb::handle(reinterpret_cast<PyObject*>(Py_TYPE(value.ptr())))))
        return std::nullopt;
    return type;
}

[[noreturn]] void raiseInexact(const std::string& label, AttrType to) {
    raise(PyExc_OverflowError, label + " has the type " + attrTypeName(to) + ", which cannot hold this integer");
}

// Python compares integers and floats exactly.
bool isExact(nb::handle integer, double number) {
    const nb::float_ real(number);
    const int isEqual = PyObject_RichCompareBool(integer.ptr(), real.ptr(), Py_EQ);
    if (isEqual < 0)
        throw nb::python_error();
    return isEqual == 1;
}

// Appends the numbers of a sequence; of rows, those of each. Returns whether all are exact.
bool appendNumbers(nb::handle value, std::vector<double>& numbers, int depth = 0) {
    if (depth == 2 || !isSequence(value)) {
        const double number = PyFloat_AsDouble(value.ptr());
        if (number == -1 && PyErr_Occurred())
            throw nb::python_error();
        numbers.push_back(number);
        return !PyLong_Check(value.ptr()) || isExact(value, number);
    }
    bool areExact = true;
    for (const nb::handle item : nb::iter(value))
        areExact &= appendNumbers(item, numbers, depth + 1);
    return areExact;
}

AttrData componentsFrom(nb::handle value, AttrType type, const std::string& label) {
    std::vector<double> numbers;
    if (!appendNumbers(value, numbers))
        raiseInexact(label, type);
    if (type == AttrType::Rgba && numbers.size() == 3)
        numbers.push_back(1);
    if (numbers.size() != componentCount(type))
        raise(PyExc_ValueError, label + " has the type " + attrTypeName(type) + " of " +
                                    std::to_string(componentCount(type)) + " numbers, not " +
                                    std::to_string(numbers.size()));
    return AttrData::numbers(type, numbers);
}

AttrData integerFrom(nb::handle value) {
    int overflow = 0;
    const long long number = PyLong_AsLongLongAndOverflow(value.ptr(), &overflow);
    if (number == -1 && PyErr_Occurred())
        throw nb::python_error();
    if (overflow == 0)
        return AttrData::integer(number);
    const unsigned long long large = PyLong_AsUnsignedLongLong(value.ptr());
    if (PyErr_Occurred())
        throw nb::python_error(); // OverflowError
    return AttrData::unsignedInteger(large);
}

// A scalar of any library as one of Python's own.
nb::object builtin(nb::handle value) {
    if (PyLong_Check(value.ptr()) || PyFloat_Check(value.ptr()) || isSequence(value) || PyUnicode_Check(value.ptr()))
        return nb::borrow(value);
    if (nb::hasattr(value, "dtype") && nb::hasattr(value, "item") && dimensionsOf(value).value_or(0) == 0)
        return value.attr("item")();
    nb::object made = nb::borrow(value);
    if (nb::hasattr(value, "__index__"))
        made = nb::steal(PyNumber_Index(value.ptr()));
    else if (nb::hasattr(value, "__float__") && !isArray(value))
        made = nb::steal(PyNumber_Float(value.ptr()));
    if (!made.is_valid())
        throw nb::python_error();
    return made;
}

bool isRounded(const AttrData& value) {
    if (value.type() == AttrType::Int)
        return !isExactReal(value.asInt());
    return value.type() == AttrType::UInt && !isExactReal(value.asUInt());
}

// Conversion alone would wrap between the types of integers, and round to a real number.
void checkRange(const AttrData& value, AttrType to, const std::string& label) {
    const bool isTooSmall = to == AttrType::UInt && value.type() == AttrType::Int && value.asInt() < 0;
    const bool isTooLarge =
        to == AttrType::Int && value.type() == AttrType::UInt && value.asUInt() > u64(std::numeric_limits<i64>::max());
    if (isTooSmall || isTooLarge || (valueKind(to) == ValueKind::Real && isRounded(value)))
        raiseInexact(label, to);
}

// The value in the type of an input, if the conversion can be undone.
AttrData converted(AttrData value, AttrType to, const std::string& label) {
    checkRange(value, to, label);
    switch (fit(value.type(), to)) {
    case Fit::Same:
        return value;
    case Fit::Converted:
        return convert(value, to);
    case Fit::Narrowed: {
        AttrData narrow = convert(value, to);
        if (convert(narrow, value.type()) == value)
            return narrow;
        raise(PyExc_TypeError, label + " has the type " + attrTypeName(to) + ", which cannot hold this value of type " +
                                   attrTypeName(value.type()) + " without loss");
    }
    case Fit::Rejected:
        break;
    }
    raiseMismatch(label, to, attrTypeName(value.type()));
}

} // namespace

std::string pythonTypeOf(nb::handle value) {
    return textOf(nb::handle(reinterpret_cast<PyObject*>(Py_TYPE(value.ptr()))).attr("__name__"));
}

void raiseMismatch(const std::string& label, AttrType expected, const std::string& given) {
    raise(PyExc_TypeError,
          label + " has the type " + attrTypeName(expected) + ", which cannot hold a value of type " + given);
}

bool isSequence(nb::handle value) {
    return PySequence_Check(value.ptr()) && !PyUnicode_Check(value.ptr()) && !PyBytes_Check(value.ptr()) &&
           !PyDict_Check(value.ptr());
}

std::optional<AttrData> plainFrom(nb::handle given) {
    const nb::object value = builtin(given);
    if (PyBool_Check(value.ptr()))
        return AttrData::boolean(value.is(nb::handle(Py_True)));
    if (PyLong_Check(value.ptr()))
        return integerFrom(value);
    if (PyFloat_Check(value.ptr()))
        return AttrData::real(PyFloat_AsDouble(value.ptr()));
    if (PyUnicode_Check(value.ptr()))
        return AttrData::string(sceneTextOf(value).view());
    if (const std::optional<AttrType> type = componentsTypeOf(value))
        return componentsFrom(value, *type, pythonTypeOf(value));
    return std::nullopt;
}

AttrData plainFor(nb::handle value, AttrType type, const std::string& label) {
    if (std::optional<AttrData> plain = plainFrom(value))
        return converted(std::move(*plain), type, label);
    if (valueKind(type) == ValueKind::Components && isArray(value))
        return componentsFrom(value.attr("tolist")(), type, label);
    if (valueKind(type) == ValueKind::Components && isSequence(value))
        return componentsFrom(value, type, label);
    raiseMismatch(label, type, pythonTypeOf(value));
}

} // namespace vrn::python
