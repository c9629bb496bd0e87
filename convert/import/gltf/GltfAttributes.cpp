#include "convert/import/gltf/GltfAttributes.h"

#include <algorithm>
#include <cmath>
#include <draco/compression/decode.h>
#include <limits>

namespace vrn::convert {

namespace {

// The largest number of a component type of OpenGL, by which normalised integers are divided.
float divisorOf(u64 componentType) {
    switch (componentType) {
    case 5120:
        return 127;
    case 5121:
        return 255;
    case 5122:
        return 32767;
    case 5123:
        return 65535;
    default:
        return 1;
    }
}

} // namespace

class GltfAttributes::DracoMesh {
public:
    DracoMesh(GltfContext& context, const GltfValue& compression) : ids_(compression["attributes"].required()) {
        const std::string_view bytes = context.buffers.view(compression["bufferView"].required());
        draco::DecoderBuffer buffer;
        buffer.Init(bytes.data(), bytes.size());
        auto decoded = draco::Decoder().DecodeMeshFromBuffer(&buffer);
        if (!decoded.ok())
            compression.refuse("its bytes are not a valid compressed mesh: " + decoded.status().error_msg_string());
        mesh_ = std::move(decoded).value();
        if (mesh_->num_points() == 0)
            compression.refuse("the compressed mesh has no points");
    }

    [[nodiscard]] bool has(const std::string& name) const { return ids_[name.c_str()].exists(); }
    [[nodiscard]] u64 points() const { return mesh_->num_points(); }

    // The numbers of an attribute, one after another. The accessor says how to read integers.
    template <class T>
    [[nodiscard]] std::vector<T> numbers(const std::string& name, u32 components, const GltfValue& accessor) const {
        const GltfValue id = ids_[name.c_str()];
        const auto* attribute = mesh_->GetAttributeByUniqueId(static_cast<u32>(id.whole(0, none)));
        if (!attribute || attribute->num_components() != static_cast<i64>(components))
            id.refuse("the compressed mesh has no such attribute with " + std::to_string(components) + " components");
        const bool isNormalized = accessor["normalized"].boolean(false) && !attribute->normalized();
        const auto divisor =
            static_cast<T>(isNormalized ? divisorOf(accessor["componentType"].required().whole()) : 1.F);
        std::vector<T> numbers(points() * components);
        for (u32 i = 0; i < mesh_->num_points(); ++i) {
            T* element = &numbers[u64(i) * components];
            const auto place = attribute->mapped_index(draco::PointIndex(i));
            if (!attribute->ConvertValue<T>(place, static_cast<i8>(components), element))
                id.refuse("point " + std::to_string(i) + " has no value that fits the type");
            for (u32 k = 0; isNormalized && k < components; ++k)
                element[k] = std::max(element[k] / divisor, static_cast<T>(std::is_signed_v<T> ? -1 : 0));
        }
        return numbers;
    }

    [[nodiscard]] std::vector<u32> indices() const {
        std::vector<u32> indices;
        indices.reserve(u64(3) * mesh_->num_faces());
        for (draco::FaceIndex i(0); i < mesh_->num_faces(); ++i)
            for (const draco::PointIndex& point : mesh_->face(i))
                indices.push_back(point.value());
        return indices;
    }

private:
    static constexpr u64 none = ~u32(0);

    GltfValue ids_;
    std::unique_ptr<draco::Mesh> mesh_;
};

GltfAttributes::GltfAttributes(GltfContext& context, const GltfValue& primitive)
    : context_(context), primitive_(primitive), attributes_(primitive["attributes"].required()) {
    const GltfValue compression = primitive.extension("KHR_draco_mesh_compression");
    if (compression.exists())
        draco_ = std::make_unique<DracoMesh>(context, compression);
    const GltfValue points = attributes_["POSITION"];
    if (points.exists()) // some writers do not know the number of points after the compression
        vertices_ = draco_ ? draco_->points() : context.accessors.countOf(points);
    attributes_.forEachMember([&](std::string_view name, const GltfValue& accessor) {
        if (draco_ && draco_->has(std::string(name)))
            return;
        if (points.exists() && context.accessors.countOf(accessor) != vertices_)
            accessor.refuse("the attribute has " + std::to_string(context.accessors.countOf(accessor)) +
                            " elements for " + std::to_string(vertices_) + " points");
    });
}

GltfAttributes::~GltfAttributes() = default;

AttrData GltfAttributes::floats(const std::string& name, DataType type) {
    const GltfValue index = attributes_[name.c_str()];
    if (!draco_ || !draco_->has(name))
        return context_.accessors.floats(index, type);
    AttrData buffer = AttrData::buffer(type, vertices_);
    const GltfValue accessors = context_.root["accessors"];
    const std::vector<float> numbers =
        draco_->numbers<float>(name, elementLayout(type).components, accessors[index.indexIn(accessors)]);
    if (!std::ranges::all_of(numbers, [](float number) { return std::isfinite(number); }))
        index.refuse("a value of the compressed attribute is not finite");
    std::ranges::copy(numbers, buffer.elements<float>().begin());
    return buffer;
}

AttrData GltfAttributes::colors(const std::string& name) {
    const bool isOpaque = context_.accessors.componentsOf(attributes_[name.c_str()]) == 3;
    return isOpaque ? opaque(floats(name, DataType::Rgbf)) : floats(name, DataType::Rgbaf);
}

AttrData GltfAttributes::integers(const std::string& name) {
    const GltfValue index = attributes_[name.c_str()];
    const GltfValue accessors = context_.root["accessors"];
    const std::vector<u32> integers = draco_ && draco_->has(name)
                                          ? draco_->numbers<u32>(name, 4, accessors[index.indexIn(accessors)])
                                          : context_.accessors.integers(index, 4);
    AttrData buffer = AttrData::buffer(DataType::Vec4u, vertices_);
    std::ranges::copy(integers, buffer.elements<u32>().begin());
    return buffer;
}

std::optional<std::vector<u32>> GltfAttributes::indices() {
    const GltfValue index = primitive_["indices"];
    if (draco_) {
        index.ignore();
        return draco_->indices();
    }
    if (!index.exists())
        return {};
    std::vector<u32> indices = context_.accessors.integers(index, 1);
    const auto bad = std::ranges::find_if(indices, [&](u32 vertex) { return vertex >= vertices_; });
    if (bad != indices.end())
        index.refuse("element " + std::to_string(bad - indices.begin()) + " of the accessor is " +
                     std::to_string(*bad) + ", but there are only " + std::to_string(vertices_) + " points");
    return indices;
}

} // namespace vrn::convert
