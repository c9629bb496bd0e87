#include "convert/model/Geometries.h"

#include "convert/model/Inputs.h"
#include "convert/model/Materials.h"
#include "convert/model/Meshes.h"
#include "scene/Scene.h"

namespace vrn::convert {

namespace {

const InputPatterns meshInputs = {"name",        "topology",      "bounds.min",      "bounds.max",
                                  "points",      "indices",       "triangles",       "faceCounts",
                                  "faceIndices", "normals",       "normalMode",      "tangents",
                                  "colors",      "uvsets[].name", "uvsets[].coords", "uvsets[].indices",
                                  "skin.joints", "skin.weights",  "material"};

// What only formats with scenes hold.
const InputPatterns sceneMeshInputs = {"colorsets[].colors",
                                       "skin.more[].joints",
                                       "skin.more[].weights",
                                       "attributes[].name",
                                       "attributes[].values",
                                       "attributes[].matrices",
                                       "targets[].name",
                                       "targets[].points",
                                       "targets[].normals",
                                       "targets[].tangents",
                                       "targets[].coords",
                                       "targets[].colors",
                                       "weights",
                                       "variants[].variant",
                                       "variants[].material",
                                       "extras",
                                       "partExtras"};

const InputPatterns& meshInputsFor(const TargetFormat& target) {
    static const InputPatterns all = meshInputs + sceneMeshInputs;
    return target.hasScene ? all : meshInputs;
}

u64 variantIndex(const AttrData& number) {
    if (number.type() == AttrType::UInt)
        return number.asUInt();
    return number.type() == AttrType::Int && number.asInt() >= 0 ? static_cast<u64>(number.asInt()) : none;
}

void readVariants(ExportContext& context, const Node& mesh, Geometry& geometry) {
    const Input* variants = mesh.input("variants");
    if (!variants || !context.target.hasScene)
        return;
    for (const Input* variant : variants->children()) {
        const Input* number = variant->input("variant");
        const u64 index = number ? variantIndex(number->value()) : none;
        const u32 material = readMaterial(context, linkedNode(variant->input("material")));
        if (index < context.model.variants.size() && material != none)
            geometry.variants.push_back({static_cast<u32>(index), material});
        else
            context.losses.add("variants of meshes without a material or a name", *variant);
    }
}

// The index of the geometry of a mesh, which is read on first use.
u32 geometryIndex(ExportContext& context, const Node& mesh) {
    const auto [found, isNew] = context.geometryIndices.emplace(&mesh, none);
    if (!isNew)
        return found->second;
    context.visited.insert(&mesh);
    std::optional<Geometry> geometry = readMesh(mesh, context.target, context.losses);
    if (!geometry)
        return none;
    addUnreadInputs(mesh, meshInputsFor(context.target), context.losses);
    geometry->material = readMaterial(context, linkedNode(mesh.input("material")));
    readVariants(context, mesh, *geometry);
    found->second = static_cast<u32>(context.model.geometries.size());
    context.model.geometries.push_back(std::move(*geometry));
    return found->second;
}

// The geometry that an input of an instance refers to; `none` with a loss if that is not a mesh.
u32 linkedGeometry(ExportContext& context, const Input& input) {
    const Node* mesh = linkedNode(&input);
    if (mesh && isMesh(*mesh))
        return geometryIndex(context, *mesh);
    if (mesh)
        context.losses.add("geometries that are not meshes", input);
    return none;
}

void readParts(ExportContext& context, ModelNode& node) {
    const Input* parts = node.source->input("parts");
    if (!parts)
        return;
    for (const Input* part : parts->children()) {
        const u32 geometry = linkedGeometry(context, *part);
        if (geometry == none)
            continue;
        if (node.geometry == none)
            node.geometry = geometry;
        else
            node.parts.push_back(geometry);
    }
}

void readTargetWeights(ExportContext& context, ModelNode& node) {
    const Input* weights = node.source->input("weights");
    if (!weights || !context.target.hasScene || node.geometry == none)
        return;
    node.targetWeights = readFloats(weights, 1, context.losses);
    if (node.targetWeights.size() == context.model.geometries[node.geometry].targets.size() &&
        allFinite(node.targetWeights.span()))
        return;
    context.losses.add("weights that do not match the morph targets", *weights);
    node.targetWeights = {};
}

} // namespace

void readGeometries(ExportContext& context) {
    for (ModelNode& node : context.model.nodes) {
        const Input* input = node.source->input("geometry");
        if (!linkedNode(input) && !node.source->input("parts"))
            continue;
        if (input)
            node.geometry = linkedGeometry(context, *input);
        readParts(context, node);
        readTargetWeights(context, node);
        node.material = readMaterial(context, linkedNode(node.source->input("material")));
    }
    for (const Node& mesh : context.scene.nodes()) {
        if (mesh.isDefinition() || mesh.type() != "mesh" || context.geometryIndices.contains(&mesh))
            continue;
        ModelNode node;
        node.source = &mesh;
        node.geometry = geometryIndex(context, mesh);
        if (node.geometry != none)
            context.model.nodes.push_back(std::move(node));
    }
}

} // namespace vrn::convert
