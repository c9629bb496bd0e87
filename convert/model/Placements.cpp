#include "convert/model/ExportContext.h"
#include "convert/model/Meshes.h"
#include "scene/Scene.h"

#include <algorithm>
#include <cmath>

namespace vrn::convert {

namespace {

const Patterns placedInputs = {"name",  "parent",    "children", "translation", "rotation",
                               "scale", "transform", "geometry", "material",    "skin"};

bool isPlaced(const Node& node) {
    const String type = node.type();
    const bool isKnown = type == "instance" || type == "transform" || type == "group" || node.input("geometry");
    return isKnown && !node.isDefinition();
}

double lengthOf(const Quaternion& q) { return std::hypot(std::hypot(q[0], q[1]), std::hypot(q[2], q[3])); }

Quaternion dividedBy(const Quaternion& q, double divisor) {
    return {q[0] / divisor, q[1] / divisor, q[2] / divisor, q[3] / divisor};
}

Quaternion readRotation(const Node& node, const InputReader& reader, Losses& losses) {
    const Quaternion given = reader.numbers<4>("rotation", {0, 0, 0, 1});
    const double size = lengthOf(given);
    if (std::abs(size - 1) < 1e-3)
        return given;
    losses.add("the length of rotations, which is 1 now", node);
    if (size == 0)
        return {0, 0, 0, 1};
    // First by the largest part: the smallest numbers have too few digits for a length.
    double largest = 0;
    for (const double part : given)
        largest = std::max(largest, std::abs(part));
    const Quaternion scaled = dividedBy(given, largest);
    return dividedBy(scaled, lengthOf(scaled));
}

// A matrix that can be said as scaling, turning and moving without the loss of a bit is said so; if shear or
// perspective would be lost, it is said so, too, with a loss noted, because other formats refuse them.
void setMatrix(Placement& placement, const Matrix& matrix, Losses& losses) {
    constexpr double mostDifference = 1e-5;
    const Trs trs = decompose(matrix);
    const double lost = difference(toMatrix(trs), matrix);
    const bool isFlat = trs.scale[0] == 0 || trs.scale[1] == 0 || trs.scale[2] == 0;
    if (lost == 0 || isFlat || lost > mostDifference)
        placement.trs = trs;
    else
        placement.matrix = matrix;
    if (lost > mostDifference)
        losses.add("shear or perspective of transforms", *placement.source);
}

void readTransform(Placement& placement, Losses& losses) {
    const InputReader reader(*placement.source, losses);
    placement.trs.translation = reader.numbers<3>("translation", {0, 0, 0});
    placement.trs.rotation = readRotation(*placement.source, reader, losses);
    placement.trs.scale = reader.numbers<3>("scale", {1, 1, 1});
    const Matrix matrix = reader.numbers<16>("transform", identity);
    if (matrix == identity)
        return;
    const Matrix product = multiply(toMatrix(placement.trs), matrix);
    if (std::ranges::all_of(product, fitsFloat))
        setMatrix(placement, product, losses);
    else
        losses.add("transforms whose product is beyond the range of a float", *placement.source);
}

// Links the placements to their parents: what a node says of its parent comes before what others say of their
// children.
class Family {
public:
    explicit Family(ExportContext& reading) : reading_(reading), placements_(reading.model.placements) {}

    void link() {
        for (Placement& placement : placements_)
            placement.parent = ownParent(*placement.source);
        for (u32 i = 0; i < placements_.size(); ++i)
            adoptChildren(i);
        cutCircles();
        for (u32 i = 0; i < placements_.size(); ++i)
            if (placements_[i].parent != none)
                placements_[placements_[i].parent].children.push_back(i);
    }

private:
    u32 ownParent(const Node& node) {
        for (const char* name : {"parent", "worldMatrix"}) {
            const Input* input = node.input(name);
            const Node* parent = linkedNode(input);
            const u32 place = reading_.placementOf(parent);
            if (place != none)
                return place;
            if (parent)
                reading_.losses.add("parents that have no place themselves", *input);
        }
        return none;
    }

    void adoptChildren(u32 parent) {
        const Input* children = placements_[parent].source->input("children");
        if (!children)
            return;
        for (const Input* input : children->children()) {
            const Node* child = linkedNode(input);
            const u32 place = reading_.placementOf(child);
            if (place == none) {
                if (child)
                    reading_.losses.add("children that have no place themselves", *input);
            } else if (placements_[place].parent == none && place != parent) {
                placements_[place].parent = parent;
            } else if (placements_[place].parent != parent) {
                reading_.losses.add("further parents of one child", *input);
            }
        }
    }

    void cutCircles() {
        std::vector<u32> seenFrom(placements_.size(), none);
        for (u32 start = 0; start < placements_.size(); ++start) {
            u32 at = start;
            while (at != none && seenFrom[at] == none) {
                seenFrom[at] = start;
                const u32 parent = placements_[at].parent;
                if (parent != none && seenFrom[parent] == start) {
                    placements_[at].parent = none;
                    reading_.losses.add("parents that are their own children", *placements_[at].source);
                }
                at = placements_[at].parent;
            }
        }
    }

    ExportContext& reading_;
    std::vector<Placement>& placements_;
};

u32 geometryOf(ExportContext& reading, const Node& mesh) {
    const auto [found, isNew] = reading.geometries.emplace(&mesh, none);
    if (!isNew)
        return found->second;
    reading.carried.insert(&mesh);
    std::optional<Geometry> geometry = readMesh(mesh, reading.target, reading.losses);
    if (!geometry)
        return none;
    noteOthers(mesh,
               {"name", "topology", "bounds", "points", "indices", "triangles", "faceCounts", "faceIndices", "normals",
                "normalMode", "tangents", "colors", "uvsets[].name", "uvsets[].coords", "uvsets[].indices",
                "skin.joints", "skin.weights", "material"},
               reading.losses);
    geometry->material = readMaterial(reading, linkedNode(mesh.input("material")));
    found->second = static_cast<u32>(reading.model.geometries.size());
    reading.model.geometries.push_back(std::move(*geometry));
    return found->second;
}

} // namespace

void placeNodes(ExportContext& reading) {
    for (const Node& node : reading.scene.nodes())
        if (isPlaced(node))
            reading.place(node);
    if (reading.target.hasScene)
        readViews(reading);
    Family(reading).link();
    for (Placement& placement : reading.model.placements)
        if (isPlaced(*placement.source)) {
            readTransform(placement, reading.losses);
            noteOthers(*placement.source, placedInputs, reading.losses);
        }
    aimAtTargets(reading);
}

void readGeometries(ExportContext& reading) {
    for (Placement& placement : reading.model.placements) {
        const Input* input = placement.source->input("geometry");
        const Node* mesh = linkedNode(input);
        if (!mesh)
            continue;
        if (isMesh(*mesh))
            placement.geometry = geometryOf(reading, *mesh);
        else
            reading.losses.add("geometry that is no mesh", *input);
        placement.material = readMaterial(reading, linkedNode(placement.source->input("material")));
    }
    for (const Node& node : reading.scene.nodes()) {
        if (node.isDefinition() || node.type() != "mesh" || reading.geometries.contains(&node))
            continue;
        Placement placement;
        placement.source = &node;
        placement.geometry = geometryOf(reading, node);
        if (placement.geometry != none)
            reading.model.placements.push_back(std::move(placement));
    }
}

std::vector<Matrix> worldMatrices(const std::vector<Placement>& placements) {
    std::vector<Matrix> worlds(placements.size());
    std::vector<u32> open;
    for (u32 i = 0; i < placements.size(); ++i)
        if (placements[i].parent == none)
            open.push_back(i);
    while (!open.empty()) {
        const u32 at = open.back();
        open.pop_back();
        const Placement& placement = placements[at];
        worlds[at] =
            placement.parent == none ? placement.local() : multiply(placement.local(), worlds[placement.parent]);
        open.insert(open.end(), placement.children.begin(), placement.children.end());
    }
    return worlds;
}

} // namespace vrn::convert
