#include "scene/VrnValue.h"

#include "scene/core/NumberLists.h"
#include "scene/core/NumberText.h"
#include "scene/syntax/QuotedString.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

namespace vor::velmo_sdk::impl {

namespace {

// Formats a token of type Real: it begins with a digit or a minus sign, and finite numbers have a point.
void appendReal(double value, std::string& text) {
    char buffer[realTextCapacity];
    if (std::isnan(value)) {
        text += "-nan";
    } else if (std::isinf(value)) {
        text += value < 0 ? "-inf" : "1.0e999";
    } else {
        const std::string_view number = writeReal(value, buffer);
        const std::size_t exponent = std::min(number.find('e'), number.size());
        const bool hasPoint = number.find('.') != std::string_view::npos;
        text.append(number.substr(0, exponent)).append(hasPoint ? "" : ".0").append(number.substr(exponent));
    }
}

void appendComponents(const AttrData& value, std::string& text) {
    const std::span<const double> components = value.components();
    char numbers[16 * listNumberCapacity + listSlack];
    const char* end = writeNumberList(components, numbers);
    text += String(attrTypeName(value.type())).toLower().view();
    text.append("(").append(numbers, static_cast<std::size_t>(end - numbers) - 1).append(")");
}

template <class Real, class Bits> bool losesBits(Real number) noexcept {
    constexpr Bits quiet = std::bit_cast<Bits>(std::numeric_limits<Real>::quiet_NaN());
    constexpr Bits sign = Bits(1) << (sizeof(Bits) * 8 - 1);
    return std::isnan(number) && (std::bit_cast<Bits>(number) & ~sign) != quiet;
}

} // namespace

void appendLiteral(const AttrData& value, std::string& text) {
    switch (value.type()) {
    case AttrType::Bool:
        text += value.asBool() ? "true" : "false";
        return;
    case AttrType::Int:
        text += std::to_string(value.asInt());
        return;
    case AttrType::UInt: // read as a signed number: values above its maximum are written as the negative number of the
                         // same bits
        text += std::to_string(static_cast<i64>(value.asUInt()));
        text += 'u';
        return;
    case AttrType::Real:
        return appendReal(value.asReal(), text);
    case AttrType::String:
        return appendQuoted(value.asString(), text);
    case AttrType::Object:
        text += "{}";
        return;
    case AttrType::Array:
        text += "[]";
        return;
    case AttrType::Null:
    case AttrType::Node:
    case AttrType::Buffer:
        text += "null";
        return;
    case AttrType::Vec2:
    case AttrType::Vec3:
    case AttrType::Vec4:
    case AttrType::Pos2:
    case AttrType::Pos3:
    case AttrType::Quat:
    case AttrType::Rgba:
    case AttrType::Mat3:
    case AttrType::Mat4:
        return appendComponents(value, text);
    }
}

bool losesNaNBits(const AttrData& value) noexcept {
    if (value.type() == AttrType::Real)
        return losesBits<double, u64>(value.asReal()) || (std::isnan(value.asReal()) && !std::signbit(value.asReal()));
    return std::ranges::any_of(value.components(), losesBits<double, u64>) ||
           std::ranges::any_of(value.elements<float>(), losesBits<float, u32>) ||
           std::ranges::any_of(value.elements<double>(), losesBits<double, u64>);
}

} // namespace vor::velmo_sdk::impl
