#include "convert/model/NodeHierarchy.h"

#include "convert/model/CamerasAndLights.h"
#include "convert/model/Inputs.h"
#include "scene/Scene.h"

#include <algorithm>
#include <cmath>

namespace vrn::convert {

namespace {

const InputPatterns transformInputs = {"name",
                                       "parent",
                                       "children[]",
                                       "translation",
                                       "rotation",
                                       "scale",
                                       "transform",
                                       "geometry",
                                       "parts[]",
                                       "material",
                                       "skin",
                                       "instances.translation",
                                       "instances.rotation",
                                       "instances.scale"};

// What only formats with scenes hold.
const InputPatterns sceneTransformInputs = {"weights", "instances.attributes[].name", "instances.attributes[].values",
                                            "instances.attributes[].matrices", "extras"};

const InputPatterns& transformInputsFor(const TargetFormat& target) {
    static const InputPatterns all = transformInputs + sceneTransformInputs;
    return target.hasScene ? all : transformInputs;
}

bool hasTransform(const Node& node) {
    const String type = node.type();
    const bool isKnown = type == "instance" || type == "transform" || type == "group" || node.input("geometry");
    return isKnown && !node.isDefinition();
}

double lengthOf(const Quaternion& q) { return std::hypot(std::hypot(q[0], q[1]), std::hypot(q[2], q[3])); }

Quaternion dividedBy(const Quaternion& q, double divisor) {
    return {q[0] / divisor, q[1] / divisor, q[2] / divisor, q[3] / divisor};
}

Quaternion readRotation(const Node& node, const InputReader& reader, Losses& losses) {
    const Quaternion rotation = reader.numbers<4>("rotation", {0, 0, 0, 1});
    const double size = lengthOf(rotation);
    if (std::abs(size - 1) < 1e-3)
        return rotation;
    losses.add("lengths of rotations (set to 1)", node);
    if (size == 0)
        return {0, 0, 0, 1};
    // Scale by the largest component first: the length of a subnormal quaternion is inaccurate.
    double largest = 0;
    for (const double component : rotation)
        largest = std::max(largest, std::abs(component));
    const Quaternion scaled = dividedBy(rotation, largest);
    return dividedBy(scaled, lengthOf(scaled));
}

// Decomposes the matrix if that is exact. Also decomposes matrices with a zero scale, shear or perspective, which other
// formats reject as matrices; shear and perspective are lost.
void setMatrix(ModelNode& node, const Matrix& matrix, Losses& losses) {
    const Trs trs = decomposeTransform(matrix);
    const bool isLossy = isSheared(matrix, trs);
    const bool isFlat = trs.scale[0] == 0 || trs.scale[1] == 0 || trs.scale[2] == 0;
    if (toMatrix(trs) == matrix || isFlat || isLossy)
        node.trs = trs;
    else
        node.matrix = matrix;
    if (isLossy)
        losses.add("shear or perspective of transforms", *node.source);
}

void readTransform(ModelNode& node, Losses& losses) {
    const InputReader reader(*node.source, losses);
    node.trs.translation = reader.numbers<3>("translation", {0, 0, 0});
    node.trs.rotation = readRotation(*node.source, reader, losses);
    node.trs.scale = reader.numbers<3>("scale", {1, 1, 1});
    const Matrix matrix = reader.numbers<16>("transform", identity);
    if (matrix == identity)
        return;
    const Matrix product = multiply(toMatrix(node.trs), matrix);
    if (std::ranges::all_of(product, fitsFloat))
        setMatrix(node, product, losses);
    else
        losses.add("transforms whose product exceeds the range of a float", *node.source);
}

// The transforms with which the mesh of an instance is repeated.
void readInstances(ModelNode& node, const TargetFormat& target, Losses& losses) {
    const Input* object = node.source->input("instances");
    if (!object)
        return;
    Instances& instances = node.instances;
    bool isValid = true;
    const auto read = [&](const char* member, u32 components) {
        const Input* input = object->input(member);
        Values<float> values = readFloats(input, components, losses);
        const std::size_t count = values.size() / components;
        if (count == 0)
            return Values<float>();
        isValid &= (instances.count == 0 || count == instances.count) && allFinite(values.span());
        instances.count = count;
        return values;
    };
    instances.translations = read("translation", 3);
    instances.rotations = read("rotation", 4);
    instances.scales = read("scale", 3);
    if (const Input* attributes = target.hasScene ? object->input("attributes") : nullptr)
        for (const Input* attribute : attributes->children())
            if (std::optional<NamedValues> values = readNamedValues(*attribute, losses)) {
                if (std::ranges::find(instances.attributes, values->name, &NamedValues::name) !=
                    instances.attributes.end()) {
                    losses.add("attributes with the name of another", *attribute);
                    continue;
                }
                const std::size_t count = values->values.size() / values->components;
                isValid &= instances.count == 0 || count == instances.count;
                instances.count = count;
                instances.attributes.push_back(std::move(*values));
            }
    if (isValid)
        return;
    losses.add("instances whose transforms are not finite or differ in number", *object);
    instances = {};
}

// Links nodes to their parents. A node's own `parent` has precedence over the `children` of other nodes.
class ParentLinker {
public:
    explicit ParentLinker(ExportContext& context) : context_(context), nodes_(context.model.nodes) {}

    void link() {
        for (ModelNode& node : nodes_)
            node.parent = declaredParent(*node.source);
        for (u32 i = 0; i < nodes_.size(); ++i)
            adoptChildren(i);
        breakCycles();
        for (u32 i = 0; i < nodes_.size(); ++i)
            if (nodes_[i].parent != none)
                nodes_[nodes_[i].parent].children.push_back(i);
    }

private:
    u32 declaredParent(const Node& node) {
        for (const char* name : {"parent", "worldMatrix"}) {
            const Input* input = node.input(name);
            const Node* parent = linkedNode(input);
            const u32 index = context_.nodeIndex(parent);
            if (index != none)
                return index;
            if (parent)
                context_.losses.add("parents without a transform", *input);
        }
        return none;
    }

    void adoptChildren(u32 parent) {
        const Input* children = nodes_[parent].source->input("children");
        if (!children)
            return;
        for (const Input* input : children->children()) {
            const Node* child = linkedNode(input);
            const u32 index = context_.nodeIndex(child);
            if (index == none) {
                if (child)
                    context_.losses.add("children without a transform", *input);
            } else if (nodes_[index].parent == none && index != parent) {
                nodes_[index].parent = parent;
            } else if (nodes_[index].parent != parent) {
                context_.losses.add("further parents of nodes", *input);
            }
        }
    }

    void breakCycles() {
        std::vector<u32> visitedFrom(nodes_.size(), none);
        for (u32 start = 0; start < nodes_.size(); ++start) {
            u32 current = start;
            while (current != none && visitedFrom[current] == none) {
                visitedFrom[current] = start;
                const u32 parent = nodes_[current].parent;
                if (parent != none && visitedFrom[parent] == start) {
                    nodes_[current].parent = none;
                    context_.losses.add("parents that close a cycle", *nodes_[current].source);
                }
                current = nodes_[current].parent;
            }
        }
    }

    ExportContext& context_;
    std::vector<ModelNode>& nodes_;
};

} // namespace

void readHierarchy(ExportContext& context) {
    for (const Node& node : context.scene.nodes())
        if (hasTransform(node))
            context.addNode(node);
    if (context.target.hasScene)
        readCamerasAndLights(context);
    ParentLinker(context).link();
    for (ModelNode& node : context.model.nodes)
        if (hasTransform(*node.source)) {
            readTransform(node, context.losses);
            readInstances(node, context.target, context.losses);
            addUnreadInputs(*node.source, transformInputsFor(context.target), context.losses);
        }
    aimAtTargets(context);
}

std::vector<u32> rootNodes(const std::vector<ModelNode>& nodes) {
    std::vector<u32> roots;
    for (u32 i = 0; i < nodes.size(); ++i)
        if (nodes[i].parent == none)
            roots.push_back(i);
    return roots;
}

std::vector<Matrix> worldMatrices(const std::vector<ModelNode>& nodes) {
    std::vector<Matrix> worlds(nodes.size());
    std::vector<u32> pending = rootNodes(nodes);
    while (!pending.empty()) {
        const u32 index = pending.back();
        pending.pop_back();
        const ModelNode& node = nodes[index];
        worlds[index] = node.parent == none ? node.local() : multiply(node.local(), worlds[node.parent]);
        pending.insert(pending.end(), node.children.begin(), node.children.end());
    }
    return worlds;
}

} // namespace vrn::convert
