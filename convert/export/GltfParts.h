// Writes the members of a glTF file except meshes and buffers.
#pragma once

#include "convert/export/GltfMeshes.h"
#include "convert/shared/UniqueNames.h"

namespace vrn::convert {

class GltfParts {
public:
    // Images, inverse bind matrices and animations go into `buffer`.
    GltfParts(const Model& model, GltfMeshes& meshes, GltfBuffer& buffer, Losses& losses, JsonText& json)
        : model_(model), meshes_(meshes), buffer_(buffer), losses_(losses), json_(json) {}

    void describeNodes();
    void describeMaterials();
    void describeTextures();
    void describeCameras();
    void describeSkins();
    void describeAnimations();
    void describeExtensions(); // includes the lights

private:
    // Wrap modes and minification filter of a texture, as OpenGL constants; filter 0 is unspecified.
    struct Sampler {
        u32 wrapS;
        u32 wrapT;
        u32 filter;
        friend auto operator<=>(const Sampler&, const Sampler&) = default;
    };

    // An array member with an object per item; omitted if there are no items.
    template <class Items> void list(const char* name, const Items& items, auto describeOne) {
        if (std::empty(items))
            return;
        json_.key(name).array([&] {
            for (const auto& item : items)
                json_.object([&] { describeOne(item); });
        });
    }

    [[nodiscard]] std::string uniqueName(const ModelNode& node);
    void reportDeepNodes();
    void describe(const ModelNode& node);
    void describeTransform(const ModelNode& node);
    void describe(const Material& material, bool hasTextures);
    void describe(const char* name, const TextureUse& use);
    void describe(const Light& light);
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
