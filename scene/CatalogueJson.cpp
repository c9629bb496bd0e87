#include "scene/CatalogueJson.h"

#include "scene/PositionedJson.h"
#include "scene/core/NumberText.h"
#include "scene/core/TextEncoding.h"

#include <algorithm>
#include <limits>
#include <set>

namespace vor::velmo_sdk::impl {

namespace {

using Kind = JsonValue::Kind;

std::string quoted(std::string_view text) { return "\"" + std::string(escapeForTerminal(text).view()) + "\""; }

[[noreturn]] void failAt(const JsonValue& value, const std::string& text) { throw JsonError(text, value.offset); }

[[noreturn]] void failAtKey(const JsonValue& member, const std::string& text) {
    throw JsonError(text, member.keyOffset);
}

void expect(const JsonValue& value, Kind kind, const char* what) {
    if (value.kind != kind)
        failAt(value, std::string("expected ") + what);
}

String textOf(const JsonValue& value, const char* what) {
    expect(value, Kind::String, what);
    if (value.text.find('\0') != std::string::npos)
        failAt(value, std::string("expected ") + what + " without NUL characters");
    return std::string_view(value.text);
}

bool flagOf(const JsonValue& value) {
    expect(value, Kind::Bool, "true or false");
    return value.boolean;
}

// The members of an object, whose names must be unique, not empty and free of NUL characters.
const std::vector<JsonValue>& membersOf(const JsonValue& value, const char* what) {
    expect(value, Kind::Object, what);
    std::set<std::string_view> keys;
    for (const JsonValue& member : value.items) {
        if (!keys.insert(member.key).second)
            failAtKey(member, "key " + quoted(member.key) + " is repeated; expected each key once");
        if (member.key.empty() || member.key.find('\0') != std::string::npos)
            failAtKey(member, "expected a name that is not empty and holds no NUL character");
    }
    return value.items;
}

[[noreturn]] void failUnknownKey(const JsonValue& member, const char* expected) {
    failAtKey(member, "unknown key " + quoted(member.key) + "; expected " + expected);
}

AttrType attrTypeOf(const JsonValue& value) {
    const std::optional<AttrType> type = attrTypeByName(textOf(value, "the name of an attribute type").view());
    if (!type)
        failAt(value,
               "unknown type " + quoted(value.text) + "; expected the name of an attribute type such as \"Real\"");
    return *type;
}

DataType dataTypeOf(const JsonValue& value) {
    const std::optional<DataType> type = dataTypeByName(textOf(value, "the name of an element type").view());
    if (!type)
        failAt(value,
               "unknown type " + quoted(value.text) + "; expected the name of an element type such as \"Vec3f\"");
    return *type;
}

StringVector textsOf(const JsonValue& value, const char* what) {
    expect(value, Kind::Array, what);
    StringVector texts;
    for (const JsonValue& item : value.items)
        texts.push(textOf(item, "a string"));
    return texts;
}

// A JSON number, or one of the strings "inf", "-inf" and "nan".
double realOf(const JsonValue& value) {
    if (value.isNumber())
        return value.real;
    double real = 0;
    const bool isWord = value.text == "inf" || value.text == "-inf" || value.text == "nan";
    if (value.kind != Kind::String || !isWord || !parseReal(value.text, real))
        failAt(value, "expected a number, \"inf\", \"-inf\" or \"nan\"");
    return real;
}

AttrData componentsOf(const JsonValue& value, AttrType type) {
    const u32 count = componentCount(type);
    if (value.kind != Kind::Array || value.items.size() != count)
        failAt(value, "expected an array of " + std::to_string(count) + " numbers for " + attrTypeName(type));
    AttrData data = AttrData::zero(type);
    std::ranges::transform(value.items, data.components().begin(), realOf);
    return data;
}

AttrData defaultOf(const JsonValue& value, AttrType type) {
    switch (valueKind(type)) {
    case ValueKind::Bool:
        return AttrData::boolean(flagOf(value));
    case ValueKind::Int:
        expect(value, Kind::Int, "a signed 64-bit integer");
        return AttrData::integer(value.integer);
    case ValueKind::UInt:
        if (value.kind == Kind::UInt)
            return AttrData::unsignedInteger(value.unsignedInteger);
        if (value.kind != Kind::Int || value.integer < 0)
            failAt(value, "expected an unsigned 64-bit integer");
        return AttrData::unsignedInteger(static_cast<u64>(value.integer));
    case ValueKind::Real:
        return AttrData::real(realOf(value));
    case ValueKind::String:
        return AttrData::string(textOf(value, "a string"));
    case ValueKind::Components:
        return componentsOf(value, type);
    case ValueKind::Null:
    case ValueKind::Node:
    case ValueKind::Buffer:
    case ValueKind::Array:
    case ValueKind::Object:
        break;
    }
    failAtKey(value, std::string("expected no \"default\": a ") + attrTypeName(type) + " has no literal");
}

// Checks a member that is only valid for inputs of type `owner`.
void expectOwner(const JsonValue& member, AttrType type, AttrType owner) {
    if (type != owner)
        failAtKey(member, quoted(member.key) + " belongs to inputs of type " + attrTypeName(owner));
}

// Read first, because the other members depend on the type but may precede it.
AttrType inputTypeOf(const JsonValue& value) {
    for (const JsonValue& member : membersOf(value, "an object that describes an input"))
        if (member.key == "type")
            return attrTypeOf(member);
    failAt(value, "expected a \"type\" for input " + quoted(value.key));
}

InputType inputOf(const JsonValue& value) {
    InputType input{.name = String(std::string_view(value.key)), .type = inputTypeOf(value)};
    for (const JsonValue& member : value.items) {
        if (member.key == "default") {
            input.defaultValue = defaultOf(member, input.type);
        } else if (member.key == "enum") {
            expectOwner(member, input.type, AttrType::String);
            input.enumeration = textsOf(member, "an array of strings");
        } else if (member.key == "dataType") {
            expectOwner(member, input.type, AttrType::Buffer);
            input.dataType = dataTypeOf(member);
        } else if (member.key == "elementType") {
            expectOwner(member, input.type, AttrType::Array);
            input.elementType = attrTypeOf(member);
        } else if (member.key == "locked") {
            input.isLocked = flagOf(member);
        } else if (member.key == "linkOnly") {
            input.isLinkOnly = flagOf(member);
        } else if (member.key != "type") {
            failUnknownKey(member, R"("type", "default", "enum", "dataType", "elementType", "locked" or "linkOnly")");
        }
    }
    return input;
}

void addOutputs(const JsonValue& value, NodeType& type) {
    std::set<std::string_view> names;
    expect(value, Kind::Array, "an array of output names");
    for (const JsonValue& item : value.items) {
        type.addOutput(textOf(item, "the name of an output"));
        if (!names.insert(item.text).second)
            failAt(item, "output " + quoted(item.text) + " is repeated; expected each name once");
    }
}

NodeType nodeTypeOf(const JsonValue& value) {
    NodeType type{String(std::string_view(value.key))};
    for (const JsonValue& member : membersOf(value, "an object that describes a node type")) {
        if (member.key == "inputs") {
            for (const JsonValue& input : membersOf(member, "an object of inputs by name"))
                type.addInput(inputOf(input));
        } else if (member.key == "outputs") {
            addOutputs(member, type);
        } else if (member.key == "renamedInputs") {
            for (const JsonValue& name : membersOf(member, "an object of current input names by old ones"))
                type.renameInput(std::string_view(name.key), textOf(name, "the current name of an input"));
        } else if (member.key == "renamedOutputs") {
            for (const JsonValue& name : membersOf(member, "an object of current output names by old ones"))
                type.renameOutput(std::string_view(name.key), textOf(name, "the current name of an output"));
        } else {
            failUnknownKey(member, R"("inputs", "outputs", "renamedInputs" or "renamedOutputs")");
        }
    }
    return type;
}

Catalogue catalogueOf(const JsonValue& value) {
    Catalogue catalogue;
    for (const JsonValue& member : membersOf(value, "an object with the key \"types\"")) {
        if (member.key != "types")
            failUnknownKey(member, "\"types\"");
        for (const JsonValue& type : membersOf(member, "an object of node types by name"))
            catalogue.add(nodeTypeOf(type));
    }
    return catalogue;
}

TextPosition positionOf(std::string_view text, std::size_t offset) {
    const std::string_view before = text.substr(0, offset);
    const auto lines = std::ranges::count(before, '\n');
    const std::size_t lineStart = before.rfind('\n') == std::string_view::npos ? 0 : before.rfind('\n') + 1;
    return {static_cast<i32>(lines + 1), static_cast<i32>(offset - lineStart + 1)};
}

} // namespace

Catalogue readCatalogue(std::string_view json) {
    try {
        return catalogueOf(readJson(json));
    } catch (const JsonError& error) {
        throw CatalogueError(error.what(), positionOf(json, error.offset()));
    }
}

} // namespace vor::velmo_sdk::impl
