// Geometries as the meshes of a glTF file: what it asks of normals, tangents, colours and weights is made so, and said
// where that changes anything.
#pragma once

#include "convert/export/GltfBuffer.h"
#include "convert/model/Model.h"

#include <map>
#include <tuple>

namespace vrn::convert {

class GltfMeshes {
public:
    GltfMeshes(const Model& model, GltfBuffer& buffer, Losses& losses);

    // The number of the mesh that shows a placement, which has a geometry; added the first time that it is asked for.
    u32 meshOf(const Placement& placement);

    // Whether the placement's skin can move its mesh: all joints of the weights are there.
    [[nodiscard]] bool hasSkin(const Placement& placement) const;

    // Materials as they are used, some also without textures, for meshes that have no coordinates for them.
    struct Look {
        u32 material;
        bool hasTextures;
        friend auto operator<=>(const Look&, const Look&) = default;
    };
    [[nodiscard]] const std::vector<Look>& looks() const noexcept { return looks_; }

    // The member `meshes`.
    void describe(JsonText& json) const;

private:
    // The accessors of a geometry, made once.
    struct Parts {
        u32 indices = none;
        std::vector<std::pair<std::string, u32>> attributes;
        u32 joints = none;
        u32 weights = none;
        u32 mostJoint = 0;
    };
    struct Mesh {
        u32 geometry;
        u32 look;
        bool hasSkin;
        friend auto operator<=>(const Mesh&, const Mesh&) = default;
    };

    Parts makeParts(const Geometry& geometry);
    void addNormals(const Geometry& geometry, Parts& parts);
    void addColors(const Geometry& geometry, Parts& parts);
    void addSkin(const Geometry& geometry, Parts& parts);
    u32 lookOf(const Placement& placement);

    const Model& model_;
    GltfBuffer& buffer_;
    Losses& losses_;
    std::vector<Parts> parts_; // of each geometry
    std::vector<Look> looks_;
    std::map<Look, u32> lookNumbers_;
    std::vector<Mesh> meshes_;
    std::map<Mesh, u32> meshNumbers_;
};

} // namespace vrn::convert
