#include "convert/export/GltfMeshes.h"

#include "convert/model/Inputs.h"

#include <algorithm>
#include <cmath>

namespace vrn::convert {

namespace {

double squaredLength(std::span<const float> v) {
    double sum = 0;
    for (const float part : v)
        sum += static_cast<double>(part) * static_cast<double>(part);
    return sum;
}

bool isUnit(std::span<const float> v) { return std::abs(squaredLength(v) - 1) < 0.005; }

bool areUnit(std::span<const float> vectors, std::size_t components) {
    for (std::size_t i = 0; i < vectors.size(); i += components)
        if (!isUnit(vectors.subspan(i, 3)))
            return false;
    return true;
}

bool areSigned(std::span<const float> tangents) {
    for (std::size_t i = 3; i < tangents.size(); i += 4)
        if (std::abs(tangents[i]) != 1)
            return false;
    return true;
}

// Normals of length 1; empty if one has no direction.
std::vector<float> unitNormals(std::span<const float> normals) {
    std::vector<float> units(normals.begin(), normals.end());
    for (std::size_t i = 0; i < units.size(); i += 3) {
        const double size = std::sqrt(squaredLength(normals.subspan(i, 3)));
        if (size == 0)
            return {};
        if (!isUnit(normals.subspan(i, 3)))
            for (std::size_t k = 0; k < 3; ++k)
                units[i + k] = static_cast<float>(static_cast<double>(normals[i + k]) / size);
    }
    return units;
}

// Gives the joint of one vertex that counts twice both weights at once, and lets joints that do not count be the
// first.
void tidyJoints(std::span<u16> joints, std::span<float> weights) {
    for (std::size_t i = 0; i < 4; ++i)
        for (std::size_t k = i + 1; k < 4; ++k)
            if (joints[i] == joints[k] && weights[i] != 0 && weights[k] != 0) {
                weights[i] += weights[k];
                weights[k] = 0;
            }
    for (std::size_t i = 0; i < 4; ++i)
        if (weights[i] == 0)
            joints[i] = 0;
}

// Makes the weights of one vertex add up to 1; whether they did not.
bool balance(std::span<float> weights) {
    double sum = 0;
    double count = 0;
    bool isChanged = false;
    for (float& weight : weights) {
        isChanged |= weight < 0;
        weight = std::max(weight, 0.F);
        sum += static_cast<double>(weight);
        count += weight != 0 ? 1 : 0;
    }
    if (!isChanged && std::abs(sum - 1) <= 2e-7 * count)
        return false;
    if (sum == 0)
        weights[0] = 1;
    else
        for (float& weight : weights)
            weight = static_cast<float>(static_cast<double>(weight) / sum);
    return true;
}

u32 modeNumber(Topology topology) { return topology == Topology::Points ? 0 : topology == Topology::Lines ? 1 : 4; }

} // namespace

GltfMeshes::GltfMeshes(const Model& model, GltfBuffer& buffer, Losses& losses)
    : model_(model), buffer_(buffer), losses_(losses) {
    for (const Geometry& geometry : model.geometries)
        parts_.push_back(makeParts(geometry));
}

GltfMeshes::Parts GltfMeshes::makeParts(const Geometry& geometry) {
    using enum GltfBuffer::Use;
    Parts parts;
    parts.indices = buffer_.addIndices(geometry.indices.span());
    parts.attributes.emplace_back("POSITION", buffer_.addFloats(geometry.points.span(), 3, Vertices, true));
    addNormals(geometry, parts);
    for (std::size_t i = 0; i < geometry.uvsets.size(); ++i)
        parts.attributes.emplace_back("TEXCOORD_" + std::to_string(i),
                                      buffer_.addFloats(geometry.uvsets[i].span(), 2, Vertices));
    addColors(geometry, parts);
    if (!geometry.joints.empty())
        addSkin(geometry, parts);
    return parts;
}

void GltfMeshes::addNormals(const Geometry& geometry, Parts& parts) {
    using enum GltfBuffer::Use;
    const std::span<const float> normals = geometry.normals.span();
    bool hasNormals = !normals.empty();
    if (hasNormals && areUnit(normals, 3)) {
        parts.attributes.emplace_back("NORMAL", buffer_.addFloats(normals, 3, Vertices));
    } else if (hasNormals) {
        std::vector<float> units = unitNormals(normals);
        hasNormals = !units.empty();
        losses_.add(hasNormals ? "lengths of normals, which are 1 now" : "normals, of which some have no direction",
                    *geometry.source);
        if (hasNormals)
            parts.attributes.emplace_back("NORMAL", buffer_.addOwnFloats(std::move(units), 3, Vertices));
    }
    const std::span<const float> tangents = geometry.tangents.span();
    if (tangents.empty())
        return;
    if (hasNormals && areUnit(tangents, 4) && areSigned(tangents))
        parts.attributes.emplace_back("TANGENT", buffer_.addFloats(tangents, 4, Vertices));
    else
        losses_.add("tangents without normals, of other lengths than 1 or of no sign", *geometry.source);
}

void GltfMeshes::addColors(const Geometry& geometry, Parts& parts) {
    using enum GltfBuffer::Use;
    const std::span<const float> colors = geometry.colors.span();
    if (colors.empty())
        return;
    u32 accessor = none;
    if (std::ranges::all_of(colors, [](float part) { return part >= 0 && part <= 1; })) {
        accessor = buffer_.addFloats(colors, 4, Vertices);
    } else {
        losses_.add("colours outside of 0 to 1", *geometry.source);
        std::vector<float> clamped(colors.begin(), colors.end());
        for (float& part : clamped)
            part = std::clamp(part, 0.F, 1.F);
        accessor = buffer_.addOwnFloats(std::move(clamped), 4, Vertices);
    }
    parts.attributes.emplace_back("COLOR_0", accessor);
}

void GltfMeshes::addSkin(const Geometry& geometry, Parts& parts) {
    parts.mostJoint = *std::ranges::max_element(geometry.joints);
    if (parts.mostJoint > 0xFFFF)
        return;
    std::vector<u16> joints(geometry.joints.begin(), geometry.joints.end());
    std::vector<float> weights(geometry.weights.begin(), geometry.weights.end());
    bool isChanged = false;
    for (std::size_t i = 0; i < weights.size(); i += 4) {
        isChanged |= balance(std::span(weights).subspan(i, 4));
        tidyJoints(std::span(joints).subspan(i, 4), std::span(weights).subspan(i, 4));
    }
    if (isChanged)
        losses_.add("weights of skins that do not add up to 1, which they do now", *geometry.source);
    parts.joints = buffer_.addJoints(std::move(joints));
    parts.weights = buffer_.addOwnFloats(std::move(weights), 4, GltfBuffer::Use::Vertices);
}

bool GltfMeshes::hasSkin(const Placement& placement) const {
    if (placement.skin == none || placement.geometry == none)
        return false;
    const Parts& parts = parts_[placement.geometry];
    return parts.joints != none && parts.mostJoint < model_.skins[placement.skin].joints.size();
}

u32 GltfMeshes::lookOf(const Placement& placement) {
    const Geometry& geometry = model_.geometries[placement.geometry];
    const u32 material = placement.material != none ? placement.material : geometry.material;
    if (material == none)
        return none;
    const Material& of = model_.materials[material];
    bool hasTextures = false;
    for (const TextureUse* use :
         {&of.baseColorMap, &of.normalMap, &of.metallicRoughnessMap, &of.occlusionMap, &of.emissionMap})
        hasTextures |= use->texture != none;
    if (hasTextures && geometry.uvsets.empty()) {
        losses_.add("textures on meshes that have no uvsets", *geometry.source);
        hasTextures = false;
    }
    const auto [found, isNew] = lookNumbers_.emplace(Look{material, hasTextures}, static_cast<u32>(looks_.size()));
    if (isNew)
        looks_.push_back(found->first);
    return found->second;
}

u32 GltfMeshes::meshOf(const Placement& placement) {
    const Mesh mesh{placement.geometry, lookOf(placement), hasSkin(placement)};
    if (placement.skin != none && !mesh.hasSkin)
        losses_.add("skins that lack joints of the mesh", *placement.source);
    const auto [found, isNew] = meshNumbers_.emplace(mesh, static_cast<u32>(meshes_.size()));
    if (isNew)
        meshes_.push_back(mesh);
    return found->second;
}

void GltfMeshes::describe(JsonText& json) const {
    if (meshes_.empty())
        return;
    const auto describeOne = [&](const Mesh& mesh) {
        const Parts& parts = parts_[mesh.geometry];
        json.key("attributes").object([&] {
            for (const auto& [name, accessor] : parts.attributes)
                json.key(name.c_str()).integer(accessor);
            if (mesh.hasSkin) {
                json.key("JOINTS_0").integer(parts.joints);
                json.key("WEIGHTS_0").integer(parts.weights);
            }
        });
        json.key("indices").integer(parts.indices);
        json.key("mode").integer(modeNumber(model_.geometries[mesh.geometry].topology));
        if (mesh.look != none)
            json.key("material").integer(mesh.look);
    };
    json.key("meshes").array([&] {
        for (const Mesh& mesh : meshes_)
            json.object([&] {
                json.key("name").text(displayName(*model_.geometries[mesh.geometry].source));
                json.key("primitives").array([&] { json.object([&] { describeOne(mesh); }); });
            });
    });
}

} // namespace vrn::convert
