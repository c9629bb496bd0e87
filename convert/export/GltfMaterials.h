// Writes the materials, textures, images and samplers of a glTF file.
#pragma once

#include "convert/export/GltfMeshes.h"

#include <optional>
#include <string_view>

namespace vrn::convert {

class GltfMaterials {
public:
    // Embedded images go into `buffer`.
    GltfMaterials(const Model& model, GltfMeshes& meshes, GltfBuffer& buffer, GltfExtensions& extensions,
                  Losses& losses, JsonText& json)
        : model_(model), meshes_(meshes), buffer_(buffer), extensions_(extensions), losses_(losses), json_(json) {}

    void writeMaterials();
    void writeTextures();

private:
    // Wrap modes and filters as OpenGL constants; a filter of 0 is unspecified.
    struct Sampler {
        u32 wrapS;
        u32 wrapT;
        u32 minFilter;
        u32 magFilter;
        std::string name;
        std::string extras;
        friend auto operator<=>(const Sampler&, const Sampler&) = default;
    };
    struct StoredImage {
        std::string file;
        std::string mimeType;
        std::string_view encoded;
        std::string name;
        std::string extras;
        friend auto operator<=>(const StoredImage&, const StoredImage&) = default;
    };
    struct StoredTexture {
        std::optional<u32> sampler;
        std::optional<u32> source;
        std::map<std::string, u32> extended; // images by extension
    };

    void writeMaterial(const Material& material, u32 uvsets);
    void writeCoreModel(const Material& material, u32 uvsets);
    void writeExtensions(const Material& material, u32 uvsets);
    void writeMaps(const Material& material, std::string_view group, u32 uvsets);
    void writeMap(const MaterialMap& map, const TextureUse& use);
    [[nodiscard]] Sampler samplerOf(const Texture& texture);
    [[nodiscard]] u32 wrapMode(const std::string& name, const Texture& texture);
    [[nodiscard]] u32 filterOf(i64 filter, const Texture& texture);
    [[nodiscard]] StoredTexture store(const Texture& texture);
    void addImage(const Image& image, StoredImage described, const Texture& texture, StoredTexture& to);
    void writeSampler(const Sampler& sampler);
    void writeTexture(const Texture& texture, const StoredTexture& stored);
    void writeImage(const StoredImage& image);

    const Model& model_;
    GltfMeshes& meshes_;
    GltfBuffer& buffer_;
    GltfExtensions& extensions_;
    Losses& losses_;
    JsonText& json_;
    std::vector<Sampler> samplers_;
    std::map<Sampler, u32> samplerIndices_;
    std::vector<StoredImage> images_;
    std::map<StoredImage, u32> imageIndices_;
};

} // namespace vrn::convert
