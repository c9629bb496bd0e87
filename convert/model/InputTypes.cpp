#include "convert/model/InputTypes.h"

#include "convert/shared/MaterialTable.h"
#include "convert/shared/NodeInputs.h"

namespace vrn::convert {

namespace {

constexpr std::string_view textInputs[] = {
    "name",
    "topology",
    "normalMode",
    "extras",
    "partExtras",
    "fileExtras",
    "imageExtras",
    "samplerExtras",
    "copyright",
    "projection",
    "kind",
    "alpha.mode",
    "file",
    "mimeType",
    "wrapU",
    "wrapV",
    "imageName",
    "samplerName",
    "alternative.name",
    "alternative.file",
    "alternative.mimeType",
    "alternative.extras",
    "names[]",
    "uvsets[].name",
    "attributes[].name",
    "targets[].name",
    "channels[].path",
    "channels[].interpolation",
    "instances.attributes[].name",
};
constexpr std::string_view booleanInputs[] = {
    "default", "doubleSided", "unlit", "attributes[].matrices", "instances.attributes[].matrices",
};
constexpr std::string_view numberInputs[] = {
    "fov",      "aspect",    "near",         "far",    "range",    "intensity",    "innerAngle", "outerAngle",
    "metallic", "roughness", "alpha.cutoff", "filter", "duration", "channelCount", "magFilter",  "variants[].variant",
};
constexpr std::string_view bufferInputs[] = {
    "points",
    "normals",
    "tangents",
    "colors",
    "triangles",
    "indices",
    "faceCounts",
    "faceIndices",
    "weights",
    "uvsets[].coords",
    "uvsets[].indices",
    "colorsets[].colors",
    "skin.joints",
    "skin.weights",
    "skin.more[].joints",
    "skin.more[].weights",
    "attributes[].values",
    "targets[].points",
    "targets[].normals",
    "targets[].tangents",
    "targets[].coords",
    "targets[].colors",
    "instances.translation",
    "instances.rotation",
    "instances.scale",
    "instances.attributes[].values",
    "channels[].times",
    "channels[].values",
    "inverseBind",
    "encoded",
    "alternative.encoded",
};
constexpr std::string_view linkInputs[] = {
    "parent",     "children[]",  "geometry",
    "parts[]",    "material",    "skin",
    "target",     "worldMatrix", "nodes[]",
    "joints[]",   "skeleton",    "channels[].target",
    "opacityMap", "colorMap",    "variants[].material",
};
struct VectorInput {
    std::string_view pattern;
    std::size_t components;
};
constexpr VectorInput vectorInputs[] = {
    {"translation", 3}, {"rotation", 4}, {"scale", 3}, {"transform", 16}, {"position", 3},   {"lookAt", 3},
    {"up", 3},          {"size", 2},     {"clip", 2},  {"direction", 3},  {"bounds.min", 3}, {"bounds.max", 3},
};

InputUse vectorOf(std::size_t components) {
    return {.taken = Taken::Components, .components = components, .most = components};
}

InputUse colorWith(std::size_t most) {
    return {.taken = Taken::Components, .components = 3, .most = most, .isColor = true};
}

void addColors(InputUses& uses) {
    uses["baseColor"] = colorWith(4);
    uses["color"] = colorWith(4); // of a light as well, which has no alpha
    uses["emission.color"] = colorWith(3);
}

void addMaterials(InputUses& uses) {
    for (const MaterialNumber& number : materialNumbers)
        uses[number.input] = number.components == 3 ? colorWith(3) : InputUse{.taken = Taken::Number};
    for (const MaterialMap& map : materialMaps) {
        const std::string xform = map.xform;
        uses[map.input] = {.taken = Taken::Link};
        uses[xform + ".offset"] = uses[xform + ".scale"] = vectorOf(2);
        uses[xform + ".rotation"] = uses[xform + ".uvset"] = {.taken = Taken::Number};
        if (map.factor)
            uses[map.factorInput] = {.taken = Taken::Number};
    }
}

InputUses makeUses() {
    InputUses uses;
    const auto add = [&](std::span<const std::string_view> patterns, Taken taken) {
        for (const std::string_view pattern : patterns)
            uses.emplace(pattern, InputUse{.taken = taken});
    };
    add(textInputs, Taken::Text);
    add(booleanInputs, Taken::Boolean);
    add(numberInputs, Taken::Number);
    add(bufferInputs, Taken::Buffer);
    add(linkInputs, Taken::Link);
    for (const VectorInput& input : vectorInputs)
        uses.emplace(input.pattern, vectorOf(input.components));
    addColors(uses);
    addMaterials(uses);
    return uses;
}

bool fits(const Input& input, const InputUse& use) {
    const AttrType type = input.type();
    switch (use.taken) {
    case Taken::Text:
        return type == AttrType::String;
    case Taken::Boolean:
        return type == AttrType::Bool;
    case Taken::Number:
        return type == AttrType::Real || type == AttrType::Int || type == AttrType::UInt;
    case Taken::Components:
        return !firstComponents(input.value(), use.components).empty();
    case Taken::Buffer:
        return type == AttrType::Buffer;
    case Taken::Link:
        return linkedNode(&input) != nullptr;
    }
    return false;
}

} // namespace

const InputUses& inputUses() {
    static const InputUses uses = makeUses();
    return uses;
}

bool hasNothing(const Input& input) {
    if (linkedNode(&input))
        return false;
    const ValueKind kind = valueKind(input.type());
    const bool isList = kind == ValueKind::Array || kind == ValueKind::Object;
    return kind == ValueKind::Null || kind == ValueKind::Node || (isList && input.children().empty());
}

bool hasWrongType(const Input& input, std::string_view pattern) {
    const auto use = inputUses().find(pattern);
    return use != inputUses().end() && !hasNothing(input) && !fits(input, use->second);
}

std::span<const double> firstComponents(const AttrData& value, std::size_t count) {
    const std::span<const double> all = value.components();
    const bool isMatrix = value.type() == AttrType::Mat3 || value.type() == AttrType::Mat4;
    return all.size() < count || (isMatrix && all.size() > count) ? std::span<const double>() : all.first(count);
}

bool hasFurtherComponents(const AttrData& value, std::size_t count, bool isColor) {
    const std::span<const double> all = value.components();
    if (firstComponents(value, count).empty() || all.size() == count)
        return false;
    const bool isAlpha = all.size() == 4 && count == 3 && (isColor || value.type() == AttrType::Rgba);
    return !isAlpha || all[3] != 1;
}

bool losesComponents(const Input& input, std::string_view pattern) {
    const auto use = inputUses().find(pattern);
    return use != inputUses().end() && use->second.taken == Taken::Components &&
           hasFurtherComponents(input.value(), use->second.most, use->second.isColor);
}

bool takesLink(std::string_view pattern) {
    const auto use = inputUses().find(pattern);
    return use != inputUses().end() && use->second.taken == Taken::Link;
}

} // namespace vrn::convert
