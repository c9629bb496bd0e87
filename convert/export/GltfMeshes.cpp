#include "convert/export/GltfMeshes.h"

#include "convert/export/GltfInfluences.h"
#include "convert/export/GltfObjects.h"
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

u32 primitiveMode(Topology topology) { return topology == Topology::Points ? 0 : topology == Topology::Lines ? 1 : 4; }

} // namespace

GltfMeshes::GltfMeshes(const Model& model, GltfBuffer& buffer, GltfExtensions& extensions, Losses& losses)
    : model_(model), buffer_(buffer), extensions_(extensions), losses_(losses) {
    for (const Geometry& geometry : model.geometries)
        accessors_.push_back(addAccessors(geometry));
}

GltfMeshes::Accessors GltfMeshes::addAccessors(const Geometry& geometry) {
    using enum GltfBuffer::Use;
    Accessors accessors;
    const auto add = [&](const std::string& name, const Values<float>& values, u32 components) {
        accessors.attributes.emplace_back(name, buffer_.addFloats(values.span(), components, Vertices));
    };
    accessors.indices = buffer_.addIndices(geometry.indices.span());
    accessors.attributes.emplace_back("POSITION", buffer_.addFloats(geometry.points.span(), 3, Vertices, true));
    addNormals(geometry, accessors);
    for (std::size_t i = 0; i < geometry.uvsets.size(); ++i)
        add("TEXCOORD_" + std::to_string(i), geometry.uvsets[i], 2);
    addColors(geometry, geometry.colors.span(), "COLOR_0", accessors);
    for (std::size_t i = 0; i < geometry.moreColors.size(); ++i)
        addColors(geometry, geometry.moreColors[i].span(), "COLOR_" + std::to_string(i + 1), accessors);
    for (const NamedValues& attribute : geometry.attributes)
        accessors.attributes.emplace_back(attribute.name, buffer_.addAttribute(attribute, Vertices));
    for (const MorphTarget& target : geometry.targets)
        accessors.targets.push_back(addTarget(target, geometry.vertices()));
    if (!geometry.influences.empty())
        addSkin(geometry, accessors);
    return accessors;
}

GltfMeshes::Attributes GltfMeshes::addTarget(const MorphTarget& target, std::size_t vertices) {
    Attributes attributes;
    const auto add = [&](const char* name, const Values<float>& values, u32 components) {
        if (values.empty())
            return;
        const bool hasBounds = name == std::string_view("POSITION");
        attributes.emplace_back(name,
                                buffer_.addFloats(values.span(), components, GltfBuffer::Use::Vertices, hasBounds));
    };
    add("POSITION", target.points, 3);
    add("NORMAL", target.normals, 3);
    add("TANGENT", target.tangents, 3);
    add("TEXCOORD_0", target.coords, 2);
    add("COLOR_0", target.colors, target.colorComponents);
    if (attributes.empty()) // which glTF does not allow; without the target, the weights would not match
        attributes.emplace_back(
            "POSITION", buffer_.addOwnFloats(std::vector<float>(3 * vertices), 3, GltfBuffer::Use::Vertices, true));
    return attributes;
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
        losses_.add(hasNormals ? "lengths of normals (set to 1)" : "normals of meshes with normals of length 0",
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

void GltfMeshes::addColors(const Geometry& geometry, std::span<const float> colors, const std::string& name,
                           Accessors& accessors) {
    using enum GltfBuffer::Use;
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
    accessors.attributes.emplace_back(name, accessor);
}

void GltfMeshes::addSkin(const Geometry& geometry, Accessors& accessors) {
    for (const Influences& influences : geometry.influences)
        accessors.maxJoint = std::max(accessors.maxJoint, *std::ranges::max_element(influences.joints));
    if (accessors.maxJoint > 0xFFFF)
        return losses_.add("joints of meshes with numbers above 65535", *geometry.source);
    bool isChanged = false;
    std::vector<GltfInfluences> valid = validInfluences(geometry.influences, isChanged);
    if (isChanged)
        losses_.add("skin weights that do not sum to 1 (scaled)", *geometry.source);
    for (std::size_t i = 0; i < valid.size(); ++i) {
        const std::string set = std::to_string(i);
        accessors.skin.emplace_back("JOINTS_" + set, buffer_.addJoints(std::move(valid[i].joints)));
        accessors.skin.emplace_back("WEIGHTS_" + set,
                                    buffer_.addOwnFloats(std::move(valid[i].weights), 4, GltfBuffer::Use::Vertices));
    }
}

bool GltfMeshes::hasJoints(const ModelNode& node, u32 geometry) const {
    const Accessors& accessors = accessors_[geometry];
    return !accessors.skin.empty() && (node.skin == none || accessors.maxJoint < model_.skins[node.skin].joints.size());
}

bool GltfMeshes::hasSkin(const ModelNode& node) const {
    return node.skin != none && node.geometry != none && hasJoints(node, node.geometry);
}

// The material with those of its textures for which the geometry has texture coordinates.
u32 GltfMeshes::materialIndex(u32 material, const Geometry& geometry) {
    if (material == none)
        return none;
    u32 needed = 0; // uvsets
    for (const TextureUse& use : model_.materials[material].maps)
        if (use.texture != none)
            needed = std::max(needed, use.uvset + 1);
    const auto available = static_cast<u32>(geometry.uvsets.size());
    if (available < needed)
        losses_.add("textures on meshes without the uvsets for them", *geometry.source);
    return variantIndex({material, available < needed ? available : allUvsets});
}

u32 GltfMeshes::variantIndex(const MaterialVariant& variant) {
    const auto [found, isNew] = materialIndices_.emplace(variant, static_cast<u32>(materials_.size()));
    if (isNew)
        materials_.push_back(variant);
    return found->second;
}

void GltfMeshes::addUnusedMaterials() {
    for (u32 i = 0; i < model_.materials.size(); ++i) {
        const auto first = materialIndices_.lower_bound({i, 0});
        if (first == materialIndices_.end() || first->first.material != i)
            (void)variantIndex({i, allUvsets});
    }
}

GltfMeshes::Primitive GltfMeshes::primitiveOf(const ModelNode& node, u32 index) {
    const Geometry& geometry = model_.geometries[index];
    Primitive primitive{.geometry = index,
                        .material = materialIndex(node.material != none ? node.material : geometry.material, geometry),
                        .hasJoints = hasJoints(node, index),
                        .variants = {}};
    if (node.skin != none && !primitive.hasJoints)
        losses_.add("skins with fewer joints than the mesh uses", *node.source);
    for (const VariantMaterial& variant : geometry.variants)
        primitive.variants[materialIndex(variant.material, geometry)].push_back(variant.variant);
    return primitive;
}

// In glTF, a mesh has one name, one set of weights and extras of its own, here those of its first part.
void GltfMeshes::reportOwn(const Node& first, const Geometry& part) {
    if (displayName(first) != displayName(*part.source))
        losses_.add("names of parts", *part.source);
    if (!part.targetWeights.empty() || !extrasOf(*part.source, "extras", losses_).empty())
        losses_.add("extras and weights of parts", *part.source);
}

u32 GltfMeshes::meshIndex(const ModelNode& node) {
    Mesh mesh{primitiveOf(node, node.geometry)};
    const std::size_t targets = model_.geometries[node.geometry].targets.size();
    for (const u32 part : node.parts) {
        if (model_.geometries[part].targets.size() == targets) {
            mesh.push_back(primitiveOf(node, part));
            reportOwn(*model_.geometries[node.geometry].source, model_.geometries[part]);
        } else
            losses_.add("parts whose number of morph targets is not that of the first", *node.source);
    }
    const auto [found, isNew] = meshIndices_.emplace(mesh, static_cast<u32>(meshes_.size()));
    if (isNew)
        meshes_.push_back(std::move(mesh));
    return found->second;
}

void GltfMeshes::writePrimitive(JsonText& json, const Primitive& primitive) {
    const Accessors& accessors = accessors_[primitive.geometry];
    const Geometry& geometry = model_.geometries[primitive.geometry];
    const auto writeAttributes = [&](const Attributes& attributes) {
        for (const auto& [name, accessor] : attributes)
            json.key(name).integer(accessor);
    };
    json.key("attributes").object([&] {
        writeAttributes(accessors.attributes);
        if (primitive.hasJoints)
            writeAttributes(accessors.skin);
    });
    json.key("indices").integer(accessors.indices);
    json.key("mode").integer(primitiveMode(geometry.topology));
    if (primitive.material != none)
        json.key("material").integer(primitive.material);
    if (!accessors.targets.empty())
        json.key("targets").array([&] {
            for (const Attributes& target : accessors.targets)
                json.object([&] { writeAttributes(target); });
        });
    writeExtras(json, *geometry.source, "partExtras", losses_);
    if (primitive.variants.empty())
        return;
    extensions_.use("KHR_materials_variants");
    json.key("extensions").object([&] {
        json.key("KHR_materials_variants").object([&] {
            json.key("mappings").array([&] {
                for (const auto& mapping : primitive.variants)
                    json.object([&] {
                        json.key("material").integer(mapping.first);
                        json.key("variants").integers(mapping.second);
                    });
            });
        });
    });
}

void GltfMeshes::writeJson(JsonText& json) {
    if (meshes_.empty())
        return;
    json.key("meshes").array([&] {
        for (const Mesh& mesh : meshes_)
            json.object([&] {
                const Geometry& first = model_.geometries[mesh[0].geometry];
                writeName(json, *first.source);
                json.key("primitives").array([&] {
                    for (const Primitive& primitive : mesh)
                        json.object([&] { writePrimitive(json, primitive); });
                });
                if (!first.targetWeights.empty())
                    json.key("weights").numbers(first.targetWeights.span());
                writeMeshExtras(json, first, losses_);
            });
    });
}

} // namespace vrn::convert
