#include "convert/export/GltfMaterials.h"

#include "convert/export/GltfObjects.h"
#include "convert/model/Inputs.h"
#include "convert/shared/Extension.h"
#include "convert/shared/ImageKind.h"
#include "convert/shared/Uri.h"

#include <algorithm>

namespace vrn::convert {

namespace {

bool isFallback(const MaterialNumber& number, const std::array<double, 3>& values) {
    return std::all_of(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(number.components),
                       [&](double value) { return value == number.fallback; });
}

// The texture extension for an image; null for the formats that need none.
const char* extensionFor(const Image& image) {
    const char* mime = mimeTypeOf(image.encoded);
    const std::string_view type = mime                     ? mime
                                  : image.mimeType.empty() ? mimeTypeOfExtension(extensionOf(image.file))
                                                           : image.mimeType;
    return type == "image/webp" ? "EXT_texture_webp" : type == "image/ktx2" ? "KHR_texture_basisu" : nullptr;
}

std::string textOf(const Node& node, const char* name) {
    const Input* input = node.input(name);
    return input ? input->value().asString() : "";
}

template <class Value> u32 addOnce(std::vector<Value>& list, std::map<Value, u32>& indices, const Value& value) {
    const auto [found, isNew] = indices.emplace(value, static_cast<u32>(list.size()));
    if (isNew)
        list.push_back(value);
    return found->second;
}

} // namespace

void GltfMaterials::writeMaterials() {
    meshes_.addUnusedMaterials();
    writeArray(json_, "materials", meshes_.materials(), [&](const GltfMeshes::MaterialVariant& variant) {
        writeMaterial(model_.materials[variant.material], variant.uvsets);
    });
}

void GltfMaterials::writeMaterial(const Material& material, u32 uvsets) {
    writeName(json_, *material.source);
    writeCoreModel(material, uvsets);
    writeExtensions(material, uvsets);
    writeExtras(json_, *material.source, "extras", losses_);
}

void GltfMaterials::writeCoreModel(const Material& material, u32 uvsets) {
    constexpr const char* group = "pbrMetallicRoughness";
    json_.key(group).object([&] {
        json_.key("baseColorFactor").reals(material.baseColor);
        json_.key("metallicFactor").real(material.metallic);
        json_.key("roughnessFactor").real(material.roughness);
        writeMaps(material, group, uvsets);
    });
    writeMaps(material, "", uvsets);
    json_.key("emissiveFactor").reals(material.emission);
    json_.key("alphaMode")
        .text(material.alphaMode == "mask"    ? "MASK"
              : material.alphaMode == "blend" ? "BLEND"
                                              : "OPAQUE");
    if (material.alphaMode == "mask" || material.alphaCutoff != 0.5)
        json_.key("alphaCutoff").real(material.alphaCutoff);
    json_.key("doubleSided").boolean(material.isDoubleSided);
}

void GltfMaterials::writeExtensions(const Material& material, u32 uvsets) {
    std::set<std::string> used;
    if (material.isUnlit)
        used.insert("KHR_materials_unlit");
    for (std::size_t i = 0; i < materialNumberCount; ++i)
        if (!isFallback(materialNumbers[i], material.numbers[i]))
            used.insert(materialNumbers[i].extension);
    for (std::size_t i = 0; i < materialMapCount; ++i)
        if (material.maps[i].texture != none && std::string_view(materialMaps[i].group).starts_with("KHR_"))
            used.insert(materialMaps[i].group);
    if (used.empty())
        return;
    json_.key("extensions").object([&] {
        for (const std::string& extension : used) {
            extensions_.use(extension.c_str());
            json_.key(extension).object([&] {
                for (std::size_t i = 0; i < materialNumberCount; ++i) {
                    const MaterialNumber& number = materialNumbers[i];
                    if (number.extension != extension || isFallback(number, material.numbers[i]))
                        continue;
                    json_.key(number.member);
                    if (number.components == 1)
                        json_.real(material.numbers[i][0]);
                    else
                        json_.reals(material.numbers[i]);
                }
                writeMaps(material, extension, uvsets);
            });
        }
    });
}

// The maps of a material that one object of glTF contains.
void GltfMaterials::writeMaps(const Material& material, std::string_view group, u32 uvsets) {
    for (std::size_t i = 0; i < materialMapCount; ++i) {
        const TextureUse& use = material.maps[i];
        if (materialMaps[i].group == group && use.texture != none && use.uvset < uvsets)
            writeMap(materialMaps[i], use);
    }
}

void GltfMaterials::writeMap(const MaterialMap& map, const TextureUse& use) {
    const TextureUse initial;
    json_.key(map.member).object([&] {
        json_.key("index").integer(use.texture);
        if (use.uvset != 0)
            json_.key("texCoord").integer(use.uvset);
        if (map.factor && use.factor != 1)
            json_.key(map.factor).real(use.factor);
        if (use.offset == initial.offset && use.scale == initial.scale && use.rotation == 0)
            return;
        constexpr const char* transform = "KHR_texture_transform";
        extensions_.use(transform);
        json_.key("extensions").object([&] {
            json_.key(transform).object([&] {
                json_.key("offset").reals(use.offset);
                if (use.rotation != 0)
                    json_.key("rotation").real(use.rotation);
                json_.key("scale").reals(use.scale);
            });
        });
    });
}

void GltfMaterials::writeTextures() {
    std::vector<StoredTexture> stored;
    for (const Texture& texture : model_.textures)
        stored.push_back(store(texture));
    writeArray(json_, "samplers", samplers_, [&](const Sampler& sampler) { writeSampler(sampler); });
    const StoredTexture* next = stored.data();
    writeArray(json_, "textures", model_.textures, [&](const Texture& texture) { writeTexture(texture, *next++); });
    writeArray(json_, "images", images_, [&](const StoredImage& image) { writeImage(image); });
}

GltfMaterials::StoredTexture GltfMaterials::store(const Texture& texture) {
    StoredTexture stored;
    const Sampler sampler = samplerOf(texture);
    if (sampler != Sampler{10497, 10497, 0, 0, "", ""})
        stored.sampler = addOnce(samplers_, samplerIndices_, sampler);
    const Node& source = *texture.source;
    const InputReader reader(source, losses_);
    const std::string imageName = reader.text("imageName");
    addImage(texture.image,
             {.file = {},
              .mimeType = {},
              .encoded = {},
              .name = imageName.empty() ? std::string(displayName(source).view()) : imageName,
              .extras = extrasOf(source, "imageExtras", losses_)},
             texture, stored);
    addImage(texture.alternative,
             {.file = {},
              .mimeType = {},
              .encoded = {},
              .name = reader.text("alternative.name"),
              .extras = extrasOf(source, "alternative.extras", losses_)},
             texture, stored);
    return stored;
}

GltfMaterials::Sampler GltfMaterials::samplerOf(const Texture& texture) {
    return {wrapMode(texture.wrapU, texture),       wrapMode(texture.wrapV, texture),
            filterOf(texture.filter, texture),      filterOf(texture.magFilter, texture),
            textOf(*texture.source, "samplerName"), extrasOf(*texture.source, "samplerExtras", losses_)};
}

u32 GltfMaterials::wrapMode(const std::string& name, const Texture& texture) {
    if (name == "clamp")
        return 33071;
    if (name == "mirror")
        return 33648;
    if (!name.empty() && name != "repeat")
        losses_.add("unknown wrap modes of textures", *texture.source);
    return 10497;
}

u32 GltfMaterials::filterOf(i64 filter, const Texture& texture) {
    const bool isKnown = filter == 9728 || filter == 9729 || (filter >= 9984 && filter <= 9987);
    if (filter != 0 && !isKnown)
        losses_.add("unknown filters of textures", *texture.source);
    return isKnown ? static_cast<u32>(filter) : 0;
}

// `described` has the name and the extras of the image.
void GltfMaterials::addImage(const Image& image, StoredImage described, const Texture& texture, StoredTexture& to) {
    if (!image.exists())
        return;
    described.encoded = {reinterpret_cast<const char*>(image.encoded.data()), image.encoded.size()};
    if (image.encoded.empty()) {
        described.file = image.file;
        described.mimeType = image.mimeType;
    }
    const u32 index = addOnce(images_, imageIndices_, described);
    const char* extension = extensionFor(image);
    const bool isTaken = extension ? to.extended.contains(extension) : to.source.has_value();
    if (isTaken)
        losses_.add("alternative images of the same kind as the first", *texture.source);
    else if (extension)
        to.extended.emplace(extension, index);
    else
        to.source = index;
}

void GltfMaterials::writeSampler(const Sampler& sampler) {
    if (!sampler.name.empty())
        json_.key("name").text(sampler.name);
    json_.key("wrapS").integer(sampler.wrapS);
    json_.key("wrapT").integer(sampler.wrapT);
    if (sampler.minFilter != 0)
        json_.key("minFilter").integer(sampler.minFilter);
    if (sampler.magFilter != 0)
        json_.key("magFilter").integer(sampler.magFilter);
    if (!sampler.extras.empty())
        json_.key("extras").raw(sampler.extras);
}

void GltfMaterials::writeTexture(const Texture& texture, const StoredTexture& stored) {
    writeName(json_, *texture.source);
    if (stored.sampler)
        json_.key("sampler").integer(*stored.sampler);
    if (stored.source)
        json_.key("source").integer(*stored.source);
    if (!stored.extended.empty())
        json_.key("extensions").object([&] {
            for (const auto& image : stored.extended) {
                extensions_.use(image.first.c_str(), !stored.source);
                json_.key(image.first).object([&] { json_.key("source").integer(image.second); });
            }
        });
    writeExtras(json_, *texture.source, "extras", losses_);
}

void GltfMaterials::writeImage(const StoredImage& image) {
    if (!image.name.empty())
        json_.key("name").text(image.name);
    if (image.encoded.empty()) {
        json_.key("uri").text(uriOf(image.file));
        if (!image.mimeType.empty())
            json_.key("mimeType").text(image.mimeType);
    } else {
        const std::span bytes(reinterpret_cast<const u8*>(image.encoded.data()), image.encoded.size());
        json_.key("bufferView").integer(buffer_.addBytes(std::as_bytes(bytes)));
        json_.key("mimeType").text(mimeTypeOf(bytes));
    }
    if (!image.extras.empty())
        json_.key("extras").raw(image.extras);
}

} // namespace vrn::convert
