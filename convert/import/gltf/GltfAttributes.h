// The attributes and indices of one primitive, wherever they are stored: in accessors, or compressed with
// KHR_draco_mesh_compression.
#pragma once

#include "convert/import/gltf/GltfContext.h"

#include <memory>
#include <optional>

namespace vrn::convert {

class GltfAttributes {
public:
    // Refuses data that is not valid, and attributes of different lengths.
    GltfAttributes(GltfContext& context, const GltfValue& primitive);
    ~GltfAttributes();
    GltfAttributes(const GltfAttributes&) = delete;
    GltfAttributes& operator=(const GltfAttributes&) = delete;

    [[nodiscard]] bool has(const std::string& name) const { return attributes_[name.c_str()].exists(); }
    [[nodiscard]] u64 vertices() const noexcept { return vertices_; }

    // The values of an attribute that exists, as of GltfAccessors.
    [[nodiscard]] AttrData floats(const std::string& name, DataType type);
    [[nodiscard]] AttrData colors(const std::string& name);
    [[nodiscard]] AttrData integers(const std::string& name);

    // In [0, vertices()); nothing if the vertices are used in their order.
    [[nodiscard]] std::optional<std::vector<u32>> indices();

private:
    class DracoMesh;

    GltfContext& context_;
    const GltfValue& primitive_;
    GltfValue attributes_;
    u64 vertices_ = 0;
    std::unique_ptr<DracoMesh> draco_; // null if the primitive is not compressed
};

} // namespace vrn::convert
