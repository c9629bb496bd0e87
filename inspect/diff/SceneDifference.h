// Compares two scenes.
//
//     compareScenes(before, after, 0.001, [](const Difference& difference) { ... });
//
// Nodes and inputs are matched by name, elements by index. The order of inputs does not matter; a different order of
// the nodes is reported once. A node or input that only one scene has is one difference, including everything below it.
// Takes linear time and memory proportional to the depth of the inputs.
//
// The scenes are only read: several threads may compare the same ones. A Difference refers to them and is valid during
// the call. Exceptions of the callback propagate.
#pragma once

#include "inspect/diff/NumbersDifference.h"
#include "scene/Scene.h"

#include <functional>
#include <optional>
#include <string>

namespace vrn::inspect {

enum class Change { Removed, Added, Changed };

// What differs in a scene, a node or an input.
enum class Aspect {
    Version,
    Time,
    Comments,
    NodeOrder,
    Node,
    Input,
    Type,
    Definition,
    DataType,
    ElementType,
    Count,
    Value,
    Elements, // of a buffer
    Connection,
    Reference
};

struct Difference {
    Change change;
    Aspect aspect;
    std::string_view path{}; // of the node or input; empty for the scene

    // The old and the new value as text, where the aspect has one; nullopt where a comment, connection or reference is
    // missing.
    std::optional<std::string> before{};
    std::optional<std::string> after{};
    vor::u64 index = 0; // the first comment that differs

    // The node or input that was removed or added, or the two inputs that differ.
    const vor::velmo_sdk::impl::Node* node = nullptr;
    const vor::velmo_sdk::impl::Input* inputBefore = nullptr;
    const vor::velmo_sdk::impl::Input* inputAfter = nullptr;
    std::optional<NumbersDifference> numbers{}; // for vectors, matrices, colours and buffers
};

using DifferenceSink = std::function<void(const Difference&)>;

// Real numbers are equal if they differ by at most `tolerance`.
void compareScenes(const vor::velmo_sdk::impl::Scene& before, const vor::velmo_sdk::impl::Scene& after,
                   double tolerance, const DifferenceSink& sink);

} // namespace vrn::inspect
