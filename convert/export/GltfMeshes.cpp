#include "convert/export/GltfMeshes.h"

#include "convert/model/Inputs.h"

#include <algorithm>
#include <cmath>

namespace vrn::convert {

namespace {

double squaredLength(std::span<const float> v) {
    double sum = 0;
    for (const float component : v)
        sum += static_cast<double>(component) * static_cast<double>(component);
    return sum;
}

bool isUnit(std::span<const float> v) { return std::abs(squaredLength(v) - 1) < 0.005; }

bool areUnit(std::span<const float> vectors, std::size_t components) {
    for (std::size_t i = 0; i < vectors.size(); i += components)
        if (!isUnit(vectors.subspan(i, 3)))
            return false;
    return true;
}

bool haveSigns(std::span<const float> tangents) {
    for (std::size_t i = 3; i < tangents.size(); i += 4)
        if (std::abs(tangents[i]) != 1)
            return false;
    return true;
}

// Normalizes; empty if a normal has length 0.
std::vector<float> normalize(std::span<const float> normals) {
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

// Merges the weights of duplicate joints of a vertex, and sets joints without weight to 0, as glTF requires.
void mergeJoints(std::span<u16> joints, std::span<float> weights) {
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

// Scales the weights of a vertex to a sum of 1. Returns whether that changed them.
bool normalizeWeights(std::span<float> weights) {
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

u32 primitiveMode(Topology topology) { return topology == Topology::Points ? 0 : topology == Topology::Lines ? 1 : 4; }

} // namespace

GltfMeshes::GltfMeshes(const Model& model, GltfBuffer& buffer, Losses& losses)
    : model_(model), buffer_(buffer), losses_(losses) {
    for (const Geometry& geometry : model.geometries)
        accessors_.push_back(addAccessors(geometry));
}

GltfMeshes::Accessors GltfMeshes::addAccessors(const Geometry& geometry) {
    using enum GltfBuffer::Use;
    Accessors accessors;
    accessors.indices = buffer_.addIndices(geometry.indices.span());
    accessors.attributes.emplace_back("POSITION", buffer_.addFloats(geometry.points.span(), 3, Vertices, true));
    addNormals(geometry, accessors);
    for (std::size_t i = 0; i < geometry.uvsets.size(); ++i)
        accessors.attributes.emplace_back("TEXCOORD_" + std::to_string(i),
                                          buffer_.addFloats(geometry.uvsets[i].span(), 2, Vertices));
    addColors(geometry, accessors);
    if (!geometry.joints.empty())
        addSkin(geometry, accessors);
    return accessors;
}

void GltfMeshes::addNormals(const Geometry& geometry, Accessors& accessors) {
    using enum GltfBuffer::Use;
    const std::span<const float> normals = geometry.normals.span();
    bool hasNormals = !normals.empty();
    if (hasNormals && areUnit(normals, 3)) {
        accessors.attributes.emplace_back("NORMAL", buffer_.addFloats(normals, 3, Vertices));
    } else if (hasNormals) {
        std::vector<float> units = normalize(normals);
        hasNormals = !units.empty();
        losses_.add(hasNormals ? "lengths of normals (normalized)" : "normals of meshes with normals of length 0",
                    *geometry.source);
        if (hasNormals)
            accessors.attributes.emplace_back("NORMAL", buffer_.addOwnFloats(std::move(units), 3, Vertices));
    }
    const std::span<const float> tangents = geometry.tangents.span();
    if (tangents.empty())
        return;
    if (hasNormals && areUnit(tangents, 4) && haveSigns(tangents))
        accessors.attributes.emplace_back("TANGENT", buffer_.addFloats(tangents, 4, Vertices));
    else
        losses_.add("tangents without normals, of a length other than 1 or without a sign", *geometry.source);
}

void GltfMeshes::addColors(const Geometry& geometry, Accessors& accessors) {
    using enum GltfBuffer::Use;
    const std::span<const float> colors = geometry.colors.span();
    if (colors.empty())
        return;
    u32 accessor = none;
    if (std::ranges::all_of(colors, [](float component) { return component >= 0 && component <= 1; })) {
        accessor = buffer_.addFloats(colors, 4, Vertices);
    } else {
        losses_.add("colours outside 0 to 1 (clamped)", *geometry.source);
        std::vector<float> clamped(colors.begin(), colors.end());
        for (float& component : clamped)
            component = std::clamp(component, 0.F, 1.F);
        accessor = buffer_.addOwnFloats(std::move(clamped), 4, Vertices);
    }
    accessors.attributes.emplace_back("COLOR_0", accessor);
}

void GltfMeshes::addSkin(const Geometry& geometry, Accessors& accessors) {
    accessors.maxJoint = *std::ranges::max_element(geometry.joints);
    if (accessors.maxJoint > 0xFFFF)
        return;
    std::vector<u16> joints(geometry.joints.begin(), geometry.joints.end());
    std::vector<float> weights(geometry.weights.begin(), geometry.weights.end());
    bool isChanged = false;
    for (std::size_t i = 0; i < weights.size(); i += 4) {
        isChanged |= normalizeWeights(std::span(weights).subspan(i, 4));
        mergeJoints(std::span(joints).subspan(i, 4), std::span(weights).subspan(i, 4));
    }
    if (isChanged)
        losses_.add("skin weights that do not sum to 1 (normalized)", *geometry.source);
    accessors.joints = buffer_.addJoints(std::move(joints));
    accessors.weights = buffer_.addOwnFloats(std::move(weights), 4, GltfBuffer::Use::Vertices);
}

bool GltfMeshes::hasSkin(const ModelNode& node) const {
    if (node.skin == none || node.geometry == none)
        return false;
    const Accessors& accessors = accessors_[node.geometry];
    return accessors.joints != none && accessors.maxJoint < model_.skins[node.skin].joints.size();
}

u32 GltfMeshes::materialIndex(const ModelNode& node) {
    const Geometry& geometry = model_.geometries[node.geometry];
    const u32 material = node.material != none ? node.material : geometry.material;
    if (material == none)
        return none;
    const Material& properties = model_.materials[material];
    bool hasTextures = false;
    for (const TextureUse* use : {&properties.baseColorMap, &properties.normalMap, &properties.metallicRoughnessMap,
                                  &properties.occlusionMap, &properties.emissionMap})
        hasTextures |= use->texture != none;
    if (hasTextures && geometry.uvsets.empty()) {
        losses_.add("textures on meshes without uvsets", *geometry.source);
        hasTextures = false;
    }
    const auto [found, isNew] =
        materialIndices_.emplace(MaterialVariant{material, hasTextures}, static_cast<u32>(materials_.size()));
    if (isNew)
        materials_.push_back(found->first);
    return found->second;
}

u32 GltfMeshes::meshIndex(const ModelNode& node) {
    const Mesh mesh{node.geometry, materialIndex(node), hasSkin(node)};
    if (node.skin != none && !mesh.hasSkin)
        losses_.add("skins with fewer joints than the mesh uses", *node.source);
    const auto [found, isNew] = meshIndices_.emplace(mesh, static_cast<u32>(meshes_.size()));
    if (isNew)
        meshes_.push_back(mesh);
    return found->second;
}

void GltfMeshes::writeJson(JsonText& json) const {
    if (meshes_.empty())
        return;
    const auto writePrimitive = [&](const Mesh& mesh) {
        const Accessors& accessors = accessors_[mesh.geometry];
        json.key("attributes").object([&] {
            for (const auto& [name, accessor] : accessors.attributes)
                json.key(name.c_str()).integer(accessor);
            if (mesh.hasSkin) {
                json.key("JOINTS_0").integer(accessors.joints);
                json.key("WEIGHTS_0").integer(accessors.weights);
            }
        });
        json.key("indices").integer(accessors.indices);
        json.key("mode").integer(primitiveMode(model_.geometries[mesh.geometry].topology));
        if (mesh.material != none)
            json.key("material").integer(mesh.material);
    };
    json.key("meshes").array([&] {
        for (const Mesh& mesh : meshes_)
            json.object([&] {
                json.key("name").text(displayName(*model_.geometries[mesh.geometry].source));
                json.key("primitives").array([&] { json.object([&] { writePrimitive(mesh); }); });
            });
    });
}

} // namespace vrn::convert
