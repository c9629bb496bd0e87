// Writes geometries as glTF meshes. Normals, tangents, colours and weights that glTF does not allow are corrected or
// dropped, with a loss.
#pragma once

#include "convert/export/GltfBuffer.h"
#include "convert/model/Model.h"

#include <map>

namespace vrn::convert {

class GltfMeshes {
public:
    GltfMeshes(const Model& model, GltfBuffer& buffer, Losses& losses);

    // The index of the mesh of a node that has a geometry; added on first use.
    u32 meshIndex(const ModelNode& node);

    // Whether the node has a skin with all joints that its mesh uses.
    [[nodiscard]] bool hasSkin(const ModelNode& node) const;

    // A glTF material: a material with its textures, or without them for meshes without texture coordinates.
    struct MaterialVariant {
        u32 material;
        bool hasTextures;
        friend auto operator<=>(const MaterialVariant&, const MaterialVariant&) = default;
    };
    [[nodiscard]] const std::vector<MaterialVariant>& materials() const noexcept { return materials_; }

    // Writes `meshes`, as far as meshIndex() has added them.
    void writeJson(JsonText& json) const;

private:
    // The accessors of a geometry, shared by all meshes that use it.
    struct Accessors {
        u32 indices = none;
        std::vector<std::pair<std::string, u32>> attributes;
        u32 joints = none;
        u32 weights = none;
        u32 maxJoint = 0;
    };
    struct Mesh {
        u32 geometry;
        u32 material;
        bool hasSkin;
        friend auto operator<=>(const Mesh&, const Mesh&) = default;
    };

    Accessors addAccessors(const Geometry& geometry);
    void addNormals(const Geometry& geometry, Accessors& accessors);
    void addColors(const Geometry& geometry, Accessors& accessors);
    void addSkin(const Geometry& geometry, Accessors& accessors);
    u32 materialIndex(const ModelNode& node);

    const Model& model_;
    GltfBuffer& buffer_;
    Losses& losses_;
    std::vector<Accessors> accessors_; // by geometry
    std::vector<MaterialVariant> materials_;
    std::map<MaterialVariant, u32> materialIndices_;
    std::vector<Mesh> meshes_;
    std::map<Mesh, u32> meshIndices_;
};

} // namespace vrn::convert
