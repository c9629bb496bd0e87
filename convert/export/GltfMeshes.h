// Writes geometries as glTF meshes. Normals, tangents, colours and weights that glTF does not allow are corrected or
// dropped, with a loss.
#pragma once

#include "convert/export/GltfBuffer.h"
#include "convert/export/GltfExtensions.h"
#include "convert/model/Model.h"

#include <map>
#include <set>

namespace vrn::convert {

class GltfMeshes {
public:
    GltfMeshes(const Model& model, GltfBuffer& buffer, GltfExtensions& extensions, Losses& losses);

    // The index of the mesh of a node that has a geometry; added on first use.
    u32 meshIndex(const ModelNode& node);

    // Whether the node has a skin with all joints that its mesh uses.
    [[nodiscard]] bool hasSkin(const ModelNode& node) const;

    // Adds the materials that no mesh uses.
    void addUnusedMaterials();

    // A glTF material: a material with its textures, but for those that use uvsets from a number on, which some mesh
    // does not have.
    static constexpr u32 allUvsets = none;
    struct MaterialVariant {
        u32 material;
        u32 uvsets;
        friend auto operator<=>(const MaterialVariant&, const MaterialVariant&) = default;
    };
    [[nodiscard]] const std::vector<MaterialVariant>& materials() const noexcept { return materials_; }

    // Writes `meshes`, as far as meshIndex() has added them.
    void writeJson(JsonText& json);

private:
    using Attributes = std::vector<std::pair<std::string, u32>>; // accessors by name

    // The accessors of a geometry, shared by all meshes that use it.
    struct Accessors {
        u32 indices = none;
        Attributes attributes;
        Attributes skin;
        u32 maxJoint = 0;
        std::vector<Attributes> targets;
    };
    struct Primitive {
        u32 geometry;
        u32 material;
        bool hasJoints;
        std::map<u32, std::vector<u32>> variants; // the variants in which it has each material
        friend auto operator<=>(const Primitive&, const Primitive&) = default;
    };
    using Mesh = std::vector<Primitive>;

    Accessors addAccessors(const Geometry& geometry);
    void addNormals(const Geometry& geometry, Accessors& accessors);
    void addColors(const Geometry& geometry, std::span<const float> colors, const std::string& name,
                   Accessors& accessors);
    void addSkin(const Geometry& geometry, Accessors& accessors);
    Attributes addTarget(const MorphTarget& target, std::size_t vertices);
    [[nodiscard]] bool hasJoints(const ModelNode& node, u32 geometry) const;
    u32 materialIndex(u32 material, const Geometry& geometry);
    u32 variantIndex(const MaterialVariant& variant);
    Primitive primitiveOf(const ModelNode& node, u32 index);
    void reportOwn(const Node& first, const Geometry& part);
    void writePrimitive(JsonText& json, const Primitive& primitive);

    const Model& model_;
    GltfBuffer& buffer_;
    GltfExtensions& extensions_;
    Losses& losses_;
    std::vector<Accessors> accessors_; // by geometry
    std::vector<MaterialVariant> materials_;
    std::map<MaterialVariant, u32> materialIndices_;
    std::vector<Mesh> meshes_;
    std::map<Mesh, u32> meshIndices_;
};

} // namespace vrn::convert
