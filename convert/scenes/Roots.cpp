#include "convert/scenes/Roots.h"

#include "convert/shared/NodeInputs.h"
#include "scene/Scene.h"

#include <algorithm>
#include <string>
#include <unordered_set>

namespace vrn::convert {

namespace {

bool hasPlace(const Node& node) {
    static constexpr std::string_view types[] = {"transform", "group", "instance", "camera", "light"};
    const auto isType = [&](std::string_view type) { return node.type() == type; };
    return !node.isDefinition() && (std::ranges::any_of(types, isType) || node.input("geometry"));
}

// The nodes that others have as children, or show.
struct Uses {
    std::unordered_set<const Node*> children{};
    std::unordered_set<const Node*> geometries{};
};

Uses usesIn(Scene& scene) {
    Uses uses;
    for (const Node& node : scene.nodes()) {
        if (const Node* geometry = linkedNode(node.input("geometry")))
            uses.geometries.insert(geometry);
        if (const Input* parts = node.input("parts"))
            for (const Input* part : parts->children())
                if (const Node* mesh = linkedNode(part))
                    uses.geometries.insert(mesh);
        if (const Input* children = node.input("children"); children && hasPlace(node))
            for (const Input* child : children->children())
                if (const Node* used = linkedNode(child))
                    uses.children.insert(used);
    }
    return uses;
}

bool isRoot(const Node& node, const Uses& uses) {
    return hasPlace(node) && !linkedNode(node.input("parent")) && !linkedNode(node.input("worldMatrix")) &&
           !uses.children.contains(&node);
}

bool isUnshownMesh(const Node& node, const Uses& uses) {
    return !node.isDefinition() && node.type() == "mesh" && !uses.geometries.contains(&node);
}

} // namespace

std::vector<Node*> makeRoots(Scene& scene, NodeMaker& maker) {
    const Uses uses = usesIn(scene);
    std::vector<Node*> roots;
    std::vector<Node*> unshown;
    for (Node& node : scene.nodes()) {
        if (isRoot(node, uses))
            roots.push_back(&node);
        else if (isUnshownMesh(node, uses))
            unshown.push_back(&node);
    }
    for (Node* mesh : unshown) {
        Node& instance = maker.create("instance", "", (std::string(mesh->name().view()) + "_instance").c_str());
        setReference(instance, "geometry", *mesh);
        roots.push_back(&instance);
    }
    return roots;
}

bool isSceneList(const Node& node) { return !node.isDefinition() && node.type() == "scene" && node.input("nodes"); }

} // namespace vrn::convert
