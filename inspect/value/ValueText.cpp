#include "inspect/value/ValueText.h"

#include "inspect/text/Counted.h"
#include "scene/core/TextEncoding.h"

namespace vrn::inspect {

using namespace vor;
using namespace vor::velmo_sdk;

std::string escapedShort(std::string_view text, std::size_t length) {
    return std::string(escapeForTerminal(truncated(text, length)).view());
}

std::string quotedShort(std::string_view text) {
    const std::string cut = truncated(text, shortLength);
    std::string quoted = "\"";
    for (std::string_view rest = cut; !rest.empty();) {
        if (rest.starts_with('"') || rest.starts_with('\\'))
            quoted += '\\';
        rest.remove_prefix(escapeCharacter(rest, quoted));
    }
    return quoted + '"';
}

std::string dataTypeText(DataType type) { return std::string(String(dataTypeName(type)).toLower().view()); }

std::string typeText(const Input& input) {
    const auto counted = [](const std::string& type, u64 count) { return type + '[' + std::to_string(count) + ']'; };
    if (input.type() == AttrType::Buffer)
        return counted(dataTypeText(input.dataType()), input.value().count());
    if (input.type() == AttrType::Array)
        return counted(input.elementType() == AttrType::Null ? "Array" : attrTypeName(input.elementType()),
                       input.size());
    return attrTypeName(input.type());
}

std::string typeText(const impl::Node& node) { return node.isDefinition() ? "definition" : escapedShort(node.type()); }

std::string valueText(const Input& input) {
    const AttrData& value = input.value();
    switch (valueKind(input.type())) {
    case ValueKind::Null:
        return input.connection() ? std::string(input.connection()->label().view()) : "null";
    case ValueKind::Bool:
        return value.asBool() ? "true" : "false";
    case ValueKind::Int:
        return std::to_string(value.asInt());
    case ValueKind::UInt:
        return std::to_string(value.asUInt());
    case ValueKind::String:
        return value.asString();
    case ValueKind::Node:
        return input.nodeValue() ? std::string(input.nodeValue()->name().view()) : "null";
    case ValueKind::Buffer:
    case ValueKind::Array:
        return typeText(input);
    case ValueKind::Object:
        return '{' + std::string(counted(input.size(), "member").view()) + '}';
    case ValueKind::Real:
    case ValueKind::Components:
        break;
    }
    std::string numbers;
    appendNumbers(numbers, value.components());
    return numbers;
}

std::string shortValue(const Input& input) {
    return input.type() == AttrType::String ? quotedShort(input.value().asString()) : escapedShort(valueText(input));
}

// The value; empty where the type already describes it.
static std::string valueBesideType(const Input& input) {
    switch (valueKind(input.type())) {
    case ValueKind::Null:
    case ValueKind::Buffer:
    case ValueKind::Array:
    case ValueKind::Object:
        return {};
    case ValueKind::Bool:
    case ValueKind::Int:
    case ValueKind::UInt:
    case ValueKind::Real:
    case ValueKind::Components:
    case ValueKind::String:
    case ValueKind::Node:
        break;
    }
    return shortValue(input);
}

std::string describe(const Input& input, const Style& style) {
    const bool isReference = input.type() == AttrType::Node && input.nodeValue();
    const std::string value = isReference ? std::string() : valueBesideType(input);
    std::string text = style.type(input.type() == AttrType::Object ? shortValue(input) : typeText(input));
    if (!value.empty())
        text += " = " + value;
    if (isReference)
        text += " -> " + style.link(shortValue(input));
    if (const auto* source = input.connection())
        text += " -> " + style.link(escapedShort(source->label()));
    return text;
}

} // namespace vrn::inspect
