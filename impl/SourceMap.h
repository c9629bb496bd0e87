// SourceMap: where a text sets the nodes and inputs of a scene.
//
//     SourceMap sources;
//     parseVrn(&scene, file, false, sources);
//     sources.positionOf(node->input("fov"))       // of the name in the last statement that sets or links it
//
// A node has the position of its declaration, an input that of the last statement with it at the end of a path. Both
// are those of the last character of the name (or index). Nodes and inputs that no statement names have none: those of
// definitions, catalogues and programs, and objects and arrays on the way to others.
//
// The map keeps no object alive. A later object may have the address, and thereby the position, of one that was
// removed; the position is then less than that of the declaration of its node. All operations are O(1).
#pragma once

#include "scene/Interfaces.h"
#include "scene/core/HashMap.h"
#include "scene/core/Log.h"

#include <optional>

namespace vor::velmo_sdk::impl {

class SourceMap {
public:
    void set(const interfaces::INode* node, TextPosition position) { nodes_.set(node, position); }
    void set(const interfaces::IInput* input, TextPosition position) { inputs_.set(input, position); }

    [[nodiscard]] std::optional<TextPosition> positionOf(const interfaces::INode* node) const noexcept {
        return found(nodes_.find(node));
    }
    [[nodiscard]] std::optional<TextPosition> positionOf(const interfaces::IInput* input) const noexcept {
        return found(inputs_.find(input));
    }

private:
    static std::optional<TextPosition> found(const TextPosition* position) noexcept {
        return position ? std::optional(*position) : std::nullopt;
    }

    ds::HashMap<const interfaces::INode*, TextPosition> nodes_;
    ds::HashMap<const interfaces::IInput*, TextPosition> inputs_;
};

} // namespace vor::velmo_sdk::impl
