// All members of a glTF file but meshes and numbers.
#pragma once

#include "convert/export/GltfMeshes.h"
#include "convert/shared/UniqueNames.h"

namespace vrn::convert {

class GltfParts {
public:
    // Adds to `buffer` what goes there.
    GltfParts(const Model& model, GltfMeshes& meshes, GltfBuffer& buffer, Losses& losses, JsonText& json)
        : model_(model), meshes_(meshes), buffer_(buffer), losses_(losses), json_(json) {}

    void describeNodes();
    void describeMaterials();
    void describeTextures();
    void describeCameras();
    void describeSkins();
    void describeAnimations();
    void describeExtensions(); // the lights are one

private:
    // How a texture is repeated and shrunk; 0 is up to whoever shows it.
    struct Sampler {
        u32 wrapS;
        u32 wrapT;
        u32 filter;
        friend auto operator<=>(const Sampler&, const Sampler&) = default;
    };

    // A member of all of `things`, unless there are none.
    template <class List> void list(const char* name, const List& things, auto describeOne) {
        if (std::empty(things))
            return;
        json_.key(name).array([&] {
            for (const auto& thing : things)
                json_.object([&] { describeOne(thing); });
        });
    }

    [[nodiscard]] std::string uniqueName(const Placement& placement);
    void noteDepth();
    void describe(const Placement& placement);
    void describeTransform(const Placement& placement);
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
