#include "convert/model/Geometries.h"

#include "convert/model/Inputs.h"
#include "convert/model/Materials.h"
#include "convert/model/Meshes.h"
#include "scene/Scene.h"

namespace vrn::convert {

namespace {

const InputPatterns meshInputs = {"name",        "topology",     "bounds",        "points",          "indices",
                                  "triangles",   "faceCounts",   "faceIndices",   "normals",         "normalMode",
                                  "tangents",    "colors",       "uvsets[].name", "uvsets[].coords", "uvsets[].indices",
                                  "skin.joints", "skin.weights", "material"};

// The index of the geometry of a mesh, which is read on first use.
u32 geometryIndex(ExportContext& context, const Node& mesh) {
    const auto [found, isNew] = context.geometryIndices.emplace(&mesh, none);
    if (!isNew)
        return found->second;
    context.visited.insert(&mesh);
    std::optional<Geometry> geometry = readMesh(mesh, context.target, context.losses);
    if (!geometry)
        return none;
    addUnreadInputs(mesh, meshInputs, context.losses);
    geometry->material = readMaterial(context, linkedNode(mesh.input("material")));
    found->second = static_cast<u32>(context.model.geometries.size());
    context.model.geometries.push_back(std::move(*geometry));
    return found->second;
}

} // namespace

void readGeometries(ExportContext& context) {
    for (ModelNode& node : context.model.nodes) {
        const Input* input = node.source->input("geometry");
        const Node* mesh = linkedNode(input);
        if (!mesh)
            continue;
        if (isMesh(*mesh))
            node.geometry = geometryIndex(context, *mesh);
        else
            context.losses.add("geometry that is not a mesh", *input);
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
