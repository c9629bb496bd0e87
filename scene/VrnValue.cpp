#include "scene/VrnValue.h"

#include "scene/core/NumberLists.h"
#include "scene/core/NumberText.h"
#include "scene/core/TextEncoding.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

namespace vor::velmo_sdk::impl {

namespace {

bool isLiteral(std::string_view name) {
    const String text = name;
    return text.compareNoCase("true") == 0 || text.compareNoCase("false") == 0 || text.compareNoCase("null") == 0;
}

// As a token that is a Real: it begins with a digit or a minus and has a point.
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

// A character that the text cannot hold as it is: a control character, a quote, or no character at all.
void appendEscaped(char c, std::string& text) {
    const auto [high, low] = hexDigits(static_cast<u8>(c));
    switch (c) {
    case '"':
    case '\\':
        text.append(1, '\\').append(1, c);
        return;
    case '\n':
        text += "\\n";
        return;
    case '\t':
        text += "\\t";
        return;
    case '\r':
        text += "\\r";
        return;
    default:
        text.append("\\x").append({high, low});
    }
}

void appendQuoted(std::string_view string, std::string& text) {
    text += '"';
    while (!string.empty()) {
        const auto isPlain = [](char c) { return String::isPrintable(c) && c != '"' && c != '\\'; };
        const auto plain = static_cast<std::size_t>(std::ranges::find_if_not(string, isPlain) - string.begin());
        text += string.substr(0, plain);
        string.remove_prefix(plain);
        if (string.empty())
            break;
        const std::size_t length = static_cast<u8>(string[0]) < 0x80 ? 0 : utf8Length(string);
        if (length == 0)
            appendEscaped(string[0], text);
        else
            text += string.substr(0, length);
        string.remove_prefix(std::max<std::size_t>(length, 1));
    }
    text += '"';
}

template <class Real, class Bits> bool isForeignNaN(Real number) noexcept {
    constexpr Bits quiet = std::bit_cast<Bits>(std::numeric_limits<Real>::quiet_NaN());
    constexpr Bits sign = Bits(1) << (sizeof(Bits) * 8 - 1);
    return std::isnan(number) && (std::bit_cast<Bits>(number) & ~sign) != quiet;
}

} // namespace

bool isIdentifier(std::string_view name) {
    const auto isPart = [](char c) { return String::isLetter(c) || String::isDigit(c) || c == '_'; };
    return !name.empty() && !String::isDigit(name[0]) && std::ranges::all_of(name, isPart) && !isLiteral(name);
}

void appendLiteral(const AttrData& value, std::string& text) {
    switch (value.type()) {
    case AttrType::Bool:
        text += value.asBool() ? "true" : "false";
        return;
    case AttrType::Int:
        text += std::to_string(value.asInt());
        return;
    case AttrType::UInt: // read as a signed number, so that those above are the negative ones of the same bits
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

bool hasForeignNaN(const AttrData& value) noexcept {
    if (value.type() == AttrType::Real)
        return isForeignNaN<double, u64>(value.asReal()) ||
               (std::isnan(value.asReal()) && !std::signbit(value.asReal()));
    return std::ranges::any_of(value.components(), isForeignNaN<double, u64>) ||
           std::ranges::any_of(value.elements<float>(), isForeignNaN<float, u32>) ||
           std::ranges::any_of(value.elements<double>(), isForeignNaN<double, u64>);
}

} // namespace vor::velmo_sdk::impl
