// Materials and the textures that they are connected to.
#include "convert/model/ExportContext.h"
#include "convert/shared/ImageKind.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace vrn::convert {

namespace {

u32 readTexture(ExportContext& reading, const Node& node) {
    const auto [found, isNew] = reading.textures.emplace(&node, none);
    if (!isNew)
        return found->second;
    reading.carried.insert(&node);
    const InputReader reader(node, reading.losses);
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
            reading.losses.add("encoded images that are neither PNG nor JPEG", *encoded);
            texture.encoded = {};
        }
    }
    noteOthers(node, {"name", "file", "wrapU", "wrapV", "filter", "encoded"}, reading.losses);
    if (texture.file.empty() && texture.encoded.empty()) {
        reading.losses.add("textures without a file", node);
        return none;
    }
    found->second = static_cast<u32>(reading.model.textures.size());
    reading.model.textures.push_back(std::move(texture));
    return found->second;
}

// The texture that an input is connected to; `xform` is the name of an object of its offset and scale.
TextureUse readMap(ExportContext& reading, const InputReader& reader, const char* name, const std::string& xform) {
    TextureUse use;
    const Input* input = reader.find(name);
    if (const Node* texture = linkedNode(input)) {
        use.texture = readTexture(reading, *texture);
        use.offset = reader.numbers<2>(xform + ".offset", {0, 0});
        use.scale = reader.numbers<2>(xform + ".scale", {1, 1});
        if (input->connection() && input->connection()->name() != "outColor")
            reading.losses.add("connections to other outputs of textures than outColor", *input);
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
    const std::array<double, 4> given = color;
    for (double& part : color)
        part = std::clamp(part, 0.0, 1.0);
    if (input && color != given)
        losses.add("numbers outside of 0 to 1", *input);
    return color;
}

Vector readEmission(const InputReader& reader, Losses& losses) {
    const Vector given = reader.numbers<3>("emission.color", {0, 0, 0});
    Vector emission{};
    for (std::size_t i = 0; i < 3; ++i)
        emission[i] = std::clamp(given[i], 0.0, 1.0);
    if (emission != given)
        losses.add("numbers outside of 0 to 1", *reader.find("emission.color"));
    return emission;
}

// How see-through it is: said by itself, or by what makes no sense without.
std::string readAlphaMode(ExportContext& reading, const InputReader& reader, const Material& material) {
    const Node* opacity = reader.node("opacityMap");
    const u32 colors = material.baseColorMap.texture;
    const bool isOpacityInColors = opacity && colors != none && reading.model.textures[colors].source == opacity;
    if (opacity && !isOpacityInColors)
        reading.losses.add("opacity maps that are not the alpha of the colour map", *reader.find("opacityMap"));
    std::string mode = reader.text("alpha.mode");
    if (mode == "opaque" || mode == "mask" || mode == "blend")
        return mode;
    if (!mode.empty())
        reading.losses.add("unknown alpha modes", *reader.find("alpha.mode"));
    return material.baseColor[3] < 1 || isOpacityInColors ? "blend" : "opaque";
}

// The inputs that are read; of two that mean the same, only the one that counts.
Patterns carriedBy(const InputReader& reader) {
    Patterns patterns = {"name",         "metallic",     "roughness",    "emission.color",
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

u32 readMaterial(ExportContext& reading, const Node* node) {
    if (!node)
        return none;
    if (!reading.target.hasMaterials) {
        if (reading.carried.insert(node).second)
            reading.losses.add("materials", *node);
        return none;
    }
    const auto [found, isNew] = reading.materials.emplace(node, static_cast<u32>(reading.model.materials.size()));
    if (!isNew)
        return found->second;
    reading.carried.insert(node);
    const InputReader reader(*node, reading.losses);
    Material material{.source = node};
    material.baseColor = readBaseColor(*node, reader, reading.losses);
    material.metallic = reader.portion("metallic", 0);
    material.roughness = reader.portion("roughness", 1);
    material.emission = readEmission(reader, reading.losses);
    material.isDoubleSided = reader.flag("doubleSided", false);
    material.baseColorMap = reader.node("baseColorMap") ? readMap(reading, reader, "baseColorMap", "baseColorXform")
                                                        : readMap(reading, reader, "colorMap", "baseColorXform");
    material.normalMap = readMap(reading, reader, "normalMap", "normalXform");
    material.metallicRoughnessMap = readMap(reading, reader, "metallicRoughnessMap", "metallicRoughnessXform");
    material.occlusionMap = readMap(reading, reader, "occlusionMap", "occlusionXform");
    material.emissionMap = readMap(reading, reader, "emission.map", "emissionXform");
    material.alphaMode = readAlphaMode(reading, reader, material);
    material.alphaCutoff =
        reader.within("alpha.cutoff", 0.5, 0, static_cast<double>(std::numeric_limits<float>::max()));
    noteOthers(*node, carriedBy(reader), reading.losses);
    reading.model.materials.push_back(std::move(material));
    return reading.materials.at(node);
}

} // namespace vrn::convert
