#include "convert/model/InputTypes.h"

#include "convert/shared/NodeInputs.h"

#include <algorithm>

namespace vrn::convert {

namespace {

constexpr std::string_view texts[] = {
    "name",
    "topology",
    "copyright",
    "imageName",
    "samplerName",
    "alternative.name",
    "uvsets[].name",
    "attributes[].name",
    "targets[].name",
    "channels[].path",
    "channels[].interpolation",
    "instances.attributes[].name",
};
constexpr std::string_view links[] = {
    "parent",
    "geometry",
    "material",
    "skin",
    "target",
    "worldMatrix",
    "skeleton",
    "channels[].target",
    "variants[].material",
};
constexpr std::string_view linkLists[] = {"children", "parts", "nodes", "joints"};
constexpr std::string_view buffers[] = {
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

bool isOneOf(std::string_view pattern, std::span<const std::string_view> patterns) {
    return std::ranges::find(patterns, pattern) != patterns.end();
}

bool isLink(std::string_view pattern) {
    return isOneOf(pattern, links) || pattern.ends_with("Map") || pattern.ends_with(".map");
}

bool isEmpty(const Input& input) {
    const ValueKind kind = valueKind(input.type());
    const bool isList = kind == ValueKind::Array || kind == ValueKind::Object;
    return kind == ValueKind::Null || kind == ValueKind::Node || (isList && input.children().empty());
}

bool isLinked(const Input* input) { return linkedNode(input) || isEmpty(*input); }

} // namespace

bool hasWrongType(const Input& input, std::string_view pattern) {
    if (isEmpty(input) || linkedNode(&input))
        return false;
    if (isOneOf(pattern, texts))
        return input.type() != AttrType::String;
    if (isOneOf(pattern, buffers))
        return input.type() != AttrType::Buffer;
    if (isOneOf(pattern, linkLists))
        return input.type() != AttrType::Array || !std::ranges::all_of(input.children(), isLinked);
    if (pattern == "names")
        return input.type() != AttrType::Array || std::ranges::any_of(input.children(), [](const Input* name) {
                   return !isEmpty(*name) && name->type() != AttrType::String;
               });
    return isLink(pattern);
}

} // namespace vrn::convert
