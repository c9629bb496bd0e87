#include "convert/model/Materials.h"

#include "convert/model/Inputs.h"
#include "convert/shared/ImageKind.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace vrn::convert {

namespace {

u32 readTexture(ExportContext& context, const Node& node) {
    const auto [found, isNew] = context.textureIndices.emplace(&node, none);
    if (!isNew)
        return found->second;
    context.visited.insert(&node);
    const InputReader reader(node, context.losses);
    Texture texture{.source = &node};
    texture.file = reader.text("file");
    texture.wrapU = reader.text("wrapU");
    texture.wrapV = reader.text("wrapV");
    const double filter = reader.number("filter", 0);
    constexpr i64 unknown = -1;
    texture.filter = filter == std::clamp(std::floor(filter), 0.0, 65535.0) ? static_cast<i64>(filter) : unknown;
    if (const Input* encoded = node.input("encoded"); encoded && encoded->value().count() != 0) {
        texture.encoded = encoded->value().elements<u8>();
        if (!isPng(texture.encoded) && !isJpeg(texture.encoded)) {
            context.losses.add("encoded images that are neither PNG nor JPEG", *encoded);
            texture.encoded = {};
        }
    }
    addUnreadInputs(node, {"name", "file", "wrapU", "wrapV", "filter", "encoded"}, context.losses);
    if (texture.file.empty() && texture.encoded.empty()) {
        context.losses.add("textures without an image", node);
        return none;
    }
    found->second = static_cast<u32>(context.model.textures.size());
    context.model.textures.push_back(std::move(texture));
    return found->second;
}

// The texture that the input `name` is connected to. `xform` is the object with its offset and scale.
TextureUse readMap(ExportContext& context, const InputReader& reader, const char* name, const std::string& xform) {
    TextureUse use;
    const Input* input = reader.find(name);
    if (const Node* texture = linkedNode(input)) {
        use.texture = readTexture(context, *texture);
        use.offset = reader.numbers<2>(xform + ".offset", {0, 0});
        use.scale = reader.numbers<2>(xform + ".scale", {1, 1});
        if (input->connection() && input->connection()->name() != "outColor")
            context.losses.add("connections to texture outputs other than outColor", *input);
    }
    return use;
}

std::array<double, 4> readBaseColor(const Node& node, const InputReader& reader, Losses& losses) {
    const char* name = reader.has("baseColor") ? "baseColor" : "color";
    std::array<double, 4> color = {1, 1, 1, 1};
    const Input* input = node.input(name);
    if (input && input->value().components().size() == 3) {
        std::ranges::copy(reader.numbers<3>(name, {1, 1, 1}), color.begin());
    } else {
        color = reader.numbers<4>(name, color);
    }
    const std::array<double, 4> unclamped = color;
    for (double& component : color)
        component = std::clamp(component, 0.0, 1.0);
    if (input && color != unclamped)
        losses.add(outsideUnitInterval, *input);
    return color;
}

Vector readEmission(const InputReader& reader, Losses& losses) {
    const Vector unclamped = reader.numbers<3>("emission.color", {0, 0, 0});
    Vector emission{};
    for (std::size_t i = 0; i < 3; ++i)
        emission[i] = std::clamp(unclamped[i], 0.0, 1.0);
    if (emission != unclamped)
        losses.add(outsideUnitInterval, *reader.find("emission.color"));
    return emission;
}

// Without an explicit mode, transparency is deduced from the alpha of the base colour and the opacity map.
std::string readAlphaMode(ExportContext& context, const InputReader& reader, const Material& material) {
    const Node* opacity = reader.node("opacityMap");
    const u32 colorMap = material.baseColorMap.texture;
    const bool isAlphaOfColorMap = opacity && colorMap != none && context.model.textures[colorMap].source == opacity;
    if (opacity && !isAlphaOfColorMap)
        context.losses.add("opacity maps other than the alpha of the base colour map", *reader.find("opacityMap"));
    std::string mode = reader.text("alpha.mode");
    if (mode == "opaque" || mode == "mask" || mode == "blend")
        return mode;
    if (!mode.empty())
        context.losses.add("unknown alpha modes", *reader.find("alpha.mode"));
    return material.baseColor[3] < 1 || isAlphaOfColorMap ? "blend" : "opaque";
}

// The inputs that readMaterial() uses. Of an input and its older name, only the one that has precedence.
InputPatterns readInputs(const InputReader& reader) {
    InputPatterns patterns = {"name",         "metallic",     "roughness",    "emission.color",
                              "emission.map", "alpha.mode",   "alpha.cutoff", "doubleSided",
                              "normalMap",    "occlusionMap", "opacityMap",   "metallicRoughnessMap"};
    for (const char* map : {"baseColor", "normal", "metallicRoughness", "occlusion", "emission"})
        for (const char* member : {"Xform.offset", "Xform.scale"})
            patterns.insert(std::string(map) + member);
    patterns.insert(reader.has("baseColor") ? "baseColor" : "color");
    patterns.insert(reader.node("baseColorMap") ? "baseColorMap" : "colorMap");
    return patterns;
}

} // namespace

u32 readMaterial(ExportContext& context, const Node* node) {
    if (!node)
        return none;
    if (!context.target.hasMaterials) {
        if (context.visited.insert(node).second)
            context.losses.add("materials", *node);
        return none;
    }
    const auto [found, isNew] = context.materialIndices.emplace(node, static_cast<u32>(context.model.materials.size()));
    if (!isNew)
        return found->second;
    context.visited.insert(node);
    const InputReader reader(*node, context.losses);
    Material material{.source = node};
    material.baseColor = readBaseColor(*node, reader, context.losses);
    material.metallic = reader.unitNumber("metallic", 0);
    material.roughness = reader.unitNumber("roughness", 1);
    material.emission = readEmission(reader, context.losses);
    material.isDoubleSided = reader.boolean("doubleSided", false);
    material.baseColorMap = reader.node("baseColorMap") ? readMap(context, reader, "baseColorMap", "baseColorXform")
                                                        : readMap(context, reader, "colorMap", "baseColorXform");
    material.normalMap = readMap(context, reader, "normalMap", "normalXform");
    material.metallicRoughnessMap = readMap(context, reader, "metallicRoughnessMap", "metallicRoughnessXform");
    material.occlusionMap = readMap(context, reader, "occlusionMap", "occlusionXform");
    material.emissionMap = readMap(context, reader, "emission.map", "emissionXform");
    material.alphaMode = readAlphaMode(context, reader, material);
    material.alphaCutoff =
        reader.clampedNumber("alpha.cutoff", 0.5, 0, static_cast<double>(std::numeric_limits<float>::max()));
    addUnreadInputs(*node, readInputs(reader), context.losses);
    context.model.materials.push_back(std::move(material));
    return context.materialIndices.at(node);
}

} // namespace vrn::convert
