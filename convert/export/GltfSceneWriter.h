// Writes the members of a glTF file except meshes and buffers.
#pragma once

#include "convert/export/GltfMeshes.h"
#include "convert/shared/UniqueNames.h"

namespace vrn::convert {

class GltfSceneWriter {
public:
    // Images, inverse bind matrices and animations go into `buffer`.
    GltfSceneWriter(const Model& model, GltfMeshes& meshes, GltfBuffer& buffer, Losses& losses, JsonText& json)
        : model_(model), meshes_(meshes), buffer_(buffer), losses_(losses), json_(json) {}

    void writeNodes();
    void writeMaterials();
    void writeTextures();
    void writeCameras();
    void writeSkins();
    void writeAnimations();
    void writeExtensions(); // includes the lights

private:
    // Wrap modes and minification filter of a texture, as OpenGL constants; filter 0 is unspecified.
    struct Sampler {
        u32 wrapS;
        u32 wrapT;
        u32 filter;
        friend auto operator<=>(const Sampler&, const Sampler&) = default;
    };

    // An array member with an object per item; omitted if there are no items.
    template <class Items> void writeArray(const char* name, const Items& items, auto writeItem) {
        if (std::empty(items))
            return;
        json_.key(name).array([&] {
            for (const auto& item : items)
                json_.object([&] { writeItem(item); });
        });
    }

    [[nodiscard]] std::string uniqueName(const ModelNode& node);
    void reportDeepNodes();
    void writeNode(const ModelNode& node);
    void writeTransform(const ModelNode& node);
    void writeMaterial(const Material& material, bool hasTextures);
    void writeTexture(const char* name, const TextureUse& use);
    void writeLight(const Light& light);
    [[nodiscard]] Sampler samplerOf(const Texture& texture);

    const Model& model_;
    GltfMeshes& meshes_;
    GltfBuffer& buffer_;
    Losses& losses_;
    JsonText& json_;
    UniqueNames names_; // of nodes
    bool hasTextureTransforms_ = false;
};

} // namespace vrn::convert
