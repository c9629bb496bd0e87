#include "convert/scenes/Placement.h"

#include "convert/scenes/Roots.h"
#include "convert/shared/NodeInputs.h"
#include "convert/shared/NodeMaker.h"
#include "scene/Scene.h"

#include <algorithm>
#include <cmath>
#include <unordered_map>

namespace vrn::convert {

namespace {

// Lists the new parents of nodes in place of these nodes.
void listTops(Scene& scene, const std::unordered_map<const Node*, Node*>& tops) {
    for (Node& node : scene.nodes()) {
        if (!isSceneList(node))
            continue;
        for (Input* listed : node.input("nodes")->children())
            if (const auto found = tops.find(linkedNode(listed)); found != tops.end())
                listed->setNode(found->second);
    }
}

void scaleInput(Node& node, const char* name, double factor, Losses& losses) {
    Input* input = node.input(name);
    if (!input)
        return;
    AttrData value = input->value();
    if (value.type() == AttrType::Int) {
        const double scaled = static_cast<double>(value.asInt()) * factor;
        if (scaled != std::floor(scaled) || std::abs(scaled) > 1e15)
            return losses.add("distances in whole numbers (not scaled)", *input);
        value = AttrData::integer(static_cast<i64>(scaled));
    } else {
        for (double& component : value.components())
            component *= factor;
    }
    input->assign(std::move(value));
}

} // namespace

Matrix Placement::matrix() const {
    Matrix scaled = axes;
    for (std::size_t i = 0; i < 12; ++i)
        scaled[i] *= metres;
    return scaled;
}

Placement withOptions(Placement placement, const PlacementOptions& options) {
    if (options.up)
        placement.axes = axesWithUp(*options.up);
    placement.metres = options.metres.value_or(placement.metres) * options.factor;
    return placement;
}

Matrix axesWithUp(char axis) {
    if (axis == 'X')
        return {0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    if (axis == 'Z')
        return {1, 0, 0, 0, 0, 0, -1, 0, 0, 1, 0, 0, 0, 0, 0, 1};
    return identity;
}

Matrix axesFromUp(char axis) {
    const Matrix there = axesWithUp(axis);
    Matrix back{};
    for (std::size_t row = 0; row < 4; ++row)
        for (std::size_t column = 0; column < 4; ++column)
            back[4 * row + column] = there[4 * column + row];
    return back;
}

void place(Scene& scene, const Placement& placement, Losses& losses) {
    const Matrix matrix = placement.matrix();
    if (matrix == identity)
        return;
    const bool hasScenes = std::ranges::any_of(scene.nodes(), [](const Node& node) { return isSceneList(node); });
    NodeMaker maker(scene);
    const std::vector<Node*> roots = makeRoots(scene, maker);
    const auto makeTop = [&]() -> Node& {
        Node& top = maker.create("transform", "", "root");
        setNumbers(top, "transform", AttrType::Mat4, matrix);
        return top;
    };
    if (hasScenes) { // each root its own, because not all are in the same scenes
        std::unordered_map<const Node*, Node*> tops;
        for (Node* root : roots)
            setReference(*root, "parent", *(tops[root] = &makeTop()));
        listTops(scene, tops);
    } else {
        Node& top = makeTop();
        for (Node* root : roots)
            setReference(*root, "parent", top);
    }
    scaleDistances(scene, placement.metres, losses);
}

void scaleDistances(Scene& scene, double factor, Losses& losses) {
    if (factor == 1)
        return;
    for (Node& node : scene.nodes()) {
        if (node.type() == "camera")
            for (const char* name : {"near", "far", "clip", "size"})
                scaleInput(node, name, factor, losses);
        else if (node.type() == "light")
            scaleInput(node, "range", factor, losses);
    }
}

} // namespace vrn::convert
