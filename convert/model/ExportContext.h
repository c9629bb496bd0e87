// A scene on its way into a model: what the steps of that have found so far.
#pragma once

#include "convert/model/Inputs.h"
#include "convert/model/Model.h"

#include <unordered_map>
#include <unordered_set>

namespace vrn::convert {

struct ExportContext {
    const Scene& scene;
    const Target& target;
    Losses& losses;
    Model model{};
    // Where a node stands in the lists of the model; `none` for one that had to be left out.
    std::unordered_map<const Node*, u32> placements{};
    std::unordered_map<const Node*, u32> geometries{};
    std::unordered_map<const Node*, u32> materials{};
    std::unordered_map<const Node*, u32> textures{};
    std::unordered_map<const Node*, u32> skins{};
    std::unordered_set<const Node*> carried{}; // all nodes that are in the model, whole or not

    [[nodiscard]] u32 placementOf(const Node* node) const {
        const auto found = placements.find(node);
        return node && found != placements.end() ? found->second : none;
    }

    Placement& place(const Node& node) {
        placements.emplace(&node, static_cast<u32>(model.placements.size()));
        carried.insert(&node);
        Placement& placement = model.placements.emplace_back();
        placement.source = &node;
        return placement;
    }
};

// Things at their places: groups, transforms, instances, cameras and lights, with their parents and children.
void placeNodes(ExportContext& reading);

// The geometries of all placed nodes, and those of meshes that no node places, which are shown where they are.
void readGeometries(ExportContext& reading);

// The material of a node that an input connects to or names, read once; `none` for null.
[[nodiscard]] u32 readMaterial(ExportContext& reading, const Node* node);

// Cameras and lights: at the node whose matrix they take, if they add nothing to it, or at a place of their own.
void readViews(ExportContext& reading);

// Turns the cameras and lights that have no direction of their own towards their targets.
void aimAtTargets(ExportContext& reading);

void readSkins(ExportContext& reading);
void readAnimations(ExportContext& reading);

// Where the placements stand in all, each in the order of the list.
[[nodiscard]] std::vector<Matrix> worldMatrices(const std::vector<Placement>& placements);

} // namespace vrn::convert
