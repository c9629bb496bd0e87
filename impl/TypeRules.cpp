#include "impl/TypeRules.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace vor::velmo_sdk::impl {

namespace {

// Groups of types that are converted alike.
enum class Kind : u8 { Bool, Integer, Real, Vector, Matrix, Other };

constexpr Kind kindOf(AttrType type) noexcept {
    switch (type) {
    case AttrType::Bool:
        return Kind::Bool;
    case AttrType::Int:
    case AttrType::UInt:
        return Kind::Integer;
    case AttrType::Real:
        return Kind::Real;
    case AttrType::Vec2:
    case AttrType::Vec3:
    case AttrType::Vec4:
    case AttrType::Pos2:
    case AttrType::Pos3:
    case AttrType::Quat:
    case AttrType::Rgba:
        return Kind::Vector;
    case AttrType::Mat3:
    case AttrType::Mat4:
        return Kind::Matrix;
    case AttrType::Null:
    case AttrType::String:
    case AttrType::Node:
    case AttrType::Buffer:
    case AttrType::Array:
    case AttrType::Object:
        break;
    }
    return Kind::Other;
}

bool isVector(AttrType type) noexcept { return kindOf(type) == Kind::Vector; }

bool isMatrix(AttrType type) noexcept { return kindOf(type) == Kind::Matrix; }

bool isInteger(AttrType type) noexcept { return kindOf(type) == Kind::Integer; }

bool isBoolOrNumber(AttrType type) noexcept {
    return type == AttrType::Bool || isInteger(type) || type == AttrType::Real;
}

Fit narrowedIf(bool isNarrowing) noexcept { return isNarrowing ? Fit::Narrowed : Fit::Converted; }

// Truncates towards zero; values out of range saturate.
template <class Integer> Integer truncate(double real) noexcept {
    using Limits = std::numeric_limits<Integer>;
    if (std::isnan(real))
        return 0;
    if (real <= static_cast<double>(Limits::min()))
        return Limits::min();
    // The largest integer is not representable as a double; the power of two above it is the first that does not fit.
    if (real >= std::ldexp(1.0, Limits::digits))
        return Limits::max();
    return static_cast<Integer>(real);
}

double toReal(const AttrData& value) noexcept {
    const AttrType type = value.type();
    if (type == AttrType::Bool)
        return value.asBool() ? 1 : 0;
    if (type == AttrType::Int)
        return static_cast<double>(value.asInt());
    return type == AttrType::UInt ? static_cast<double>(value.asUInt()) : value.asReal();
}

u64 toBits(const AttrData& value) noexcept {
    if (value.type() == AttrType::Bool)
        return value.asBool() ? 1 : 0;
    return value.type() == AttrType::Int ? static_cast<u64>(value.asInt()) : value.asUInt();
}

AttrData toInteger(const AttrData& value, AttrType to) noexcept {
    if (to == AttrType::Int)
        return AttrData::integer(value.type() == AttrType::Real ? truncate<i64>(value.asReal())
                                                                : static_cast<i64>(toBits(value)));
    return AttrData::unsignedInteger(value.type() == AttrType::Real ? truncate<u64>(value.asReal()) : toBits(value));
}

AttrData toVector(const AttrData& value, AttrType to) {
    AttrData result = AttrData::zero(to);
    const std::span<double> components = result.components();
    if (to == AttrType::Rgba)
        components[3] = 1;
    if (value.type() == AttrType::Real)
        std::ranges::fill(components.first(to == AttrType::Rgba ? 3 : components.size()), value.asReal());
    else
        std::ranges::copy_n(value.components().begin(),
                            static_cast<std::ptrdiff_t>(std::min(value.components().size(), components.size())),
                            components.begin());
    return result;
}

AttrData toMatrix(const AttrData& value, AttrType to) {
    AttrData result = AttrData::zero(to);
    static_assert(attrTypeCount == 19); // a new matrix type needs its side length here
    const std::size_t fromSide = value.type() == AttrType::Mat3 ? 3 : 4;
    const std::size_t toSide = to == AttrType::Mat3 ? 3 : 4;
    for (std::size_t row = 0; row < toSide; ++row)
        for (std::size_t column = 0; column < toSide; ++column)
            result.components()[row * toSide + column] = row < fromSide && column < fromSide
                                                             ? value.components()[row * fromSide + column]
                                                             : (row == column ? 1 : 0);
    return result;
}

} // namespace

Fit fit(AttrType value, AttrType input) noexcept {
    if (value == input)
        return Fit::Same;
    if (isVector(value) && isVector(input))
        return narrowedIf(componentCount(value) > componentCount(input));
    if (isMatrix(value) && isMatrix(input))
        return narrowedIf(value == AttrType::Mat4);
    if (value == AttrType::Bool && isBoolOrNumber(input))
        return Fit::Converted;
    if (isInteger(value) && isBoolOrNumber(input))
        return narrowedIf(input == AttrType::Bool);
    if (value == AttrType::Real && (isInteger(input) || isVector(input)))
        return narrowedIf(isInteger(input));
    return Fit::Rejected;
}

AttrData convert(const AttrData& value, AttrType to) {
    switch (kindOf(to)) {
    case Kind::Bool:
        return AttrData::boolean(toBits(value) != 0);
    case Kind::Integer:
        return toInteger(value, to);
    case Kind::Real:
        return AttrData::real(toReal(value));
    case Kind::Matrix:
        return toMatrix(value, to);
    case Kind::Vector:
    case Kind::Other:
        break;
    }
    return toVector(value, to);
}

} // namespace vor::velmo_sdk::impl
