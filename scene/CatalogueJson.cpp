#include "scene/CatalogueJson.h"

#include "scene/CatalogueRules.h"
#include "scene/ExpectedJson.h"

#include <algorithm>
#include <limits>
#include <set>

namespace vor::velmo_sdk::impl {

namespace {

using Kind = JsonValue::Kind;

AttrType attrTypeOf(const JsonValue& value) {
    const std::optional<AttrType> type = attrTypeByName(textOf(value, "the name of an attribute type").view());
    if (!type)
        failAt(value,
               "unknown type " + inQuotes(value.text) + "; expected the name of an attribute type such as \"Real\"");
    return *type;
}

DataType dataTypeOf(const JsonValue& value) {
    const std::optional<DataType> type = dataTypeByName(textOf(value, "the name of an element type").view());
    if (!type)
        failAt(value,
               "unknown type " + inQuotes(value.text) + "; expected the name of an element type such as \"Vec3f\"");
    return *type;
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
        failAtKey(member, inQuotes(member.key) + " belongs to inputs of type " + attrTypeName(owner));
}

// Read first, because the other members depend on the type but may precede it.
AttrType inputTypeOf(const JsonValue& value) {
    for (const JsonValue& member : membersOf(value, "an object that describes an input"))
        if (member.key == "type")
            return attrTypeOf(member);
    failAt(value, "expected a \"type\" for input " + inQuotes(value.key));
}

constexpr char inputKeys[] =
    R"("type", "default", "enum", "dataType", "elementType", "locked", "linkOnly", "members", "optional", "accepts", )"
    R"("min", "max", "indexes", "countOf", "file", "embeddedIn" or "hierarchy")";

std::vector<InputType> inputsOf(const JsonValue& value);

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
        } else if (member.key == "members") {
            input.members = inputsOf(member);
        } else if (member.key != "type" && !readRule(member, input)) {
            failUnknownKey(member, inputKeys);
        }
    }
    expectConsistentRules(value, input);
    return input;
}

std::vector<InputType> inputsOf(const JsonValue& value) {
    std::vector<InputType> inputs;
    for (const JsonValue& input : membersOf(value, "an object of inputs by name"))
        inputs.push_back(inputOf(input));
    return inputs;
}

void addInputs(const JsonValue& value, NodeType& type) {
    for (InputType& input : inputsOf(value))
        type.addInput(std::move(input));
    expectPathsToLead(value, type);
}

void addOutputs(const JsonValue& value, NodeType& type) {
    std::set<std::string_view> names;
    expect(value, Kind::Array, "an array of output names");
    for (const JsonValue& item : value.items) {
        type.addOutput(textOf(item, "the name of an output"));
        if (!names.insert(item.text).second)
            failAt(item, "output " + inQuotes(item.text) + " is repeated; expected each name once");
    }
}

NodeType nodeTypeOf(const JsonValue& value) {
    NodeType type{String(std::string_view(value.key))};
    for (const JsonValue& member : membersOf(value, "an object that describes a node type")) {
        if (member.key == "inputs") {
            addInputs(member, type);
        } else if (member.key == "outputs") {
            addOutputs(member, type);
        } else if (member.key == "renamedInputs") {
            for (const JsonValue& name : membersOf(member, "an object of current input names by old ones"))
                type.renameInput(std::string_view(name.key), textOf(name, "the current name of an input"));
        } else if (member.key == "renamedOutputs") {
            for (const JsonValue& name : membersOf(member, "an object of current output names by old ones"))
                type.renameOutput(std::string_view(name.key), textOf(name, "the current name of an output"));
        } else if (member.key == "open") {
            type.setOpen(flagOf(member));
        } else if (member.key == "root") {
            type.setRoot(flagOf(member));
        } else {
            failUnknownKey(member, R"("inputs", "outputs", "renamedInputs", "renamedOutputs", "open" or "root")");
        }
    }
    return type;
}

Catalogue catalogueOf(const JsonValue& value) {
    Catalogue catalogue;
    for (const JsonValue& member : membersOf(value, "an object with the key \"types\"")) {
        if (member.key == "$schema") { // for editors
            (void)textOf(member, "the address of a schema");
            continue;
        }
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
