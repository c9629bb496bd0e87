#include "convert/model/Materials.h"

#include "convert/model/Inputs.h"
#include "convert/shared/ImageKind.h"
#include "convert/shared/Transform.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace vrn::convert {

namespace {

// A constant of OpenGL; -1 if it cannot be one.
i64 readFilter(const InputReader& reader, const char* name) {
    const double filter = reader.number(name, 0);
    return filter == std::clamp(std::floor(filter), 0.0, 65535.0) ? static_cast<i64>(filter) : -1;
}

Image readImage(const InputReader& reader, const std::string& prefix, ExportContext& context) {
    Image image{.file = reader.text(prefix + "file"), .mimeType = reader.text(prefix + "mimeType"), .encoded = {}};
    const Input* encoded = reader.find(prefix + "encoded");
    if (!encoded || encoded->value().count() == 0)
        return image;
    image.encoded = encoded->value().elements<u8>();
    if (!mimeTypeOf(image.encoded)) {
        context.losses.add("encoded images that are not PNG, JPEG, WebP or KTX 2", *encoded);
        image.encoded = {};
    } else if (!image.file.empty()) {
        context.losses.add("files of textures beside embedded images", *reader.find(prefix + "file"));
    }
    return image;
}

} // namespace

u32 readTexture(ExportContext& context, const Node& node) {
    const auto [found, isNew] = context.textureIndices.emplace(&node, none);
    if (!isNew)
        return found->second;
    context.visited.insert(&node);
    const InputReader reader(node, context.losses);
    Texture texture{.source = &node};
    texture.image = readImage(reader, "", context);
    texture.wrapU = reader.text("wrapU");
    texture.wrapV = reader.text("wrapV");
    texture.filter = readFilter(reader, "filter");
    texture.magFilter = readFilter(reader, "magFilter");
    InputPatterns inputs = {"name", "file", "wrapU", "wrapV", "filter", "magFilter", "encoded"};
    if (context.target.hasScene) {
        texture.alternative = readImage(reader, "alternative.", context);
        inputs.insert({"mimeType", "alternative.mimeType", "alternative.file", "alternative.encoded",
                       "alternative.name", "alternative.extras", "imageName", "samplerName", "extras", "imageExtras",
                       "samplerExtras"});
    }
    addUnreadInputs(node, inputs, context.losses);
    if (!texture.image.exists() && !context.target.hasScene) {
        context.losses.add("textures without an image", node);
        return none;
    }
    found->second = static_cast<u32>(context.model.textures.size());
    context.model.textures.push_back(std::move(texture));
    return found->second;
}

namespace {

u32 readUvsetNumber(const InputReader& reader, const std::string& path, Losses& losses) {
    const double number = reader.clampedNumber(path, 0, 0, 65535);
    if (number != std::floor(number))
        losses.add("fractions of the numbers of uvsets", *reader.find(path));
    return static_cast<u32>(number);
}

// The texture that the input `name` is connected to. `xform` is the object that says how it lies on the mesh.
TextureUse readMap(ExportContext& context, const InputReader& reader, const char* name, const MaterialMap& map) {
    const std::string xform = map.xform;
    TextureUse use;
    const Input* input = reader.find(name);
    if (const Node* texture = linkedNode(input)) {
        use.texture = readTexture(context, *texture);
        use.offset = reader.numbers<2>(xform + ".offset", {0, 0});
        use.scale = reader.numbers<2>(xform + ".scale", {1, 1});
        use.rotation = reader.number(xform + ".rotation", 0) * radiansPerDegree;
        use.uvset = readUvsetNumber(reader, xform + ".uvset", context.losses);
        use.factor = map.factor ? reader.number(map.factorInput, 1) : 1;
        if (input->connection() && input->connection()->name() != "outColor")
            context.losses.add("connections to texture outputs other than outColor", *input);
    }
    return use;
}

std::array<double, 4> readBaseColor(const Node& node, const InputReader& reader, Losses& losses) {
    const char* name = reader.has("baseColor") ? "baseColor" : "color";
    std::array<double, 4> color = {1, 1, 1, 1};
    const Input* input = node.input(name);
    if (input && input->value().components().size() == 3)
        std::ranges::copy(reader.numbers<3>(name, {1, 1, 1}), color.begin());
    else
        color = reader.numbers<4>(name, color);
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
    const u32 colorMap = material.map(Map::BaseColor).texture;
    const bool isAlphaOfColorMap = opacity && colorMap != none && context.model.textures[colorMap].source == opacity;
    if (opacity && !isAlphaOfColorMap)
        context.losses.add("opacity maps other than the alpha of the base colour map", *reader.find("opacityMap"));
    std::string mode = reader.text("alpha.mode");
    if (mode == "opaque" || mode == "mask" || mode == "blend")
        return mode;
    if (!mode.empty())
        context.losses.add("unknown alpha modes of materials", *reader.find("alpha.mode"));
    return material.baseColor[3] < 1 || isAlphaOfColorMap ? "blend" : "opaque";
}

// Whether a map is of the core model, which more formats than glTF have.
bool isCore(const MaterialMap& map) { return &map <= &materialMaps[static_cast<std::size_t>(Map::Emission)]; }

// The inputs that readMaterial() uses. Of an input and its older name, only the one that has precedence.
InputPatterns readInputs(const InputReader& reader, const TargetFormat& target) {
    InputPatterns patterns = {"name",       "metallic",    "roughness",  "emission.color",
                              "alpha.mode", "doubleSided", "opacityMap", "alpha.cutoff"};
    for (const MaterialMap& map : materialMaps) {
        if (!isCore(map) && !target.hasScene)
            continue;
        patterns.insert(map.input);
        if (map.factor)
            patterns.insert(map.factorInput);
        for (const char* member : {".offset", ".scale", ".rotation", ".uvset"})
            patterns.insert(map.xform + std::string(member));
    }
    if (target.hasScene) {
        patterns.insert({"unlit", "extras"});
        for (const MaterialNumber& number : materialNumbers)
            patterns.insert(number.input);
    }
    patterns.erase("baseColorMap");
    patterns.insert(reader.has("baseColor") ? "baseColor" : "color");
    patterns.insert(reader.node("baseColorMap") ? "baseColorMap" : "colorMap");
    return patterns;
}

void readMaps(ExportContext& context, const InputReader& reader, Material& material) {
    for (std::size_t i = 0; i < materialMapCount; ++i)
        if (isCore(materialMaps[i]) || context.target.hasScene)
            material.maps[i] = readMap(context, reader, materialMaps[i].input, materialMaps[i]);
    if (!reader.node("baseColorMap"))
        material.map(Map::BaseColor) = readMap(context, reader, "colorMap", materialMaps[0]);
}

void readNumbers(ExportContext& context, const InputReader& reader, Material& material) {
    for (std::size_t i = 0; i < materialNumberCount; ++i) {
        const MaterialNumber& number = materialNumbers[i];
        std::array<double, 3>& values = material.numbers[i];
        values.fill(number.fallback);
        if (!context.target.hasScene)
            continue;
        if (number.components == 3)
            values = reader.numbers<3>(number.input, values);
        else
            values[0] = reader.number(number.input, number.fallback) * (number.isAngle ? radiansPerDegree : 1);
        for (std::size_t k = 0; k < number.components; ++k) {
            const double clamped = std::clamp(values[k], number.min, number.max);
            if (clamped != values[k])
                context.losses.add("numbers of materials out of range (clamped)", *reader.find(number.input));
            values[k] = clamped;
        }
    }
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
    readMaps(context, reader, material);
    readNumbers(context, reader, material);
    material.isUnlit = context.target.hasScene && reader.boolean("unlit", false);
    material.alphaMode = readAlphaMode(context, reader, material);
    material.alphaCutoff =
        reader.clampedNumber("alpha.cutoff", 0.5, 0, static_cast<double>(std::numeric_limits<float>::max()));
    addUnreadInputs(*node, readInputs(reader, context.target), context.losses);
    context.model.materials.push_back(std::move(material));
    return context.materialIndices.at(node);
}

} // namespace vrn::convert
